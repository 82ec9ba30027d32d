#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

namespace qfc {

inline constexpr int kCompressionSucceeded = 1;
inline constexpr int kCompressionMissing = 1154;
inline constexpr int kCompressionNoMemory = -1;

// The compressor as two functions: source length, source, capacity in and length out, destination; 1 on success. They
// may be called from any thread at once. An entry may be null. The third says whether compressed bytes can be what the
// compressor made of `size` bytes, judged from their header alone; without it every size is taken for possible.
struct CompressionBinding {
    int (*compress)(unsigned sourceLength, const void* source, unsigned* destinationLength, void* destination);
    int (*decompress)(unsigned sourceLength, const void* source, unsigned* destinationLength, void* destination);
    bool (*canUnpackTo)(unsigned sourceLength, const void* source, std::uint64_t size) = nullptr;
};

// Call the binding in force. 1 on success, kCompressionMissing when it has no such entry, kCompressionNoMemory when it
// could not begin, another number otherwise: the output does not fit the capacity, or the input is not what Compress
// wrote. The length is set only on success.
int Compress(unsigned sourceLength, const void* source, unsigned* destinationLength, void* destination);
int Decompress(unsigned sourceLength, const void* source, unsigned* destinationLength, void* destination);

// Replaces the binding (zstd at first) and returns the one before. Calls under way finish with the old one.
CompressionBinding SetCompressionBinding(CompressionBinding binding);

// Asks the binding in force. Lets a reader refuse a lying row before it takes memory for it.
bool CanUnpackTo(std::span<const std::byte> compressed, std::uint64_t size);

}  // namespace qfc
