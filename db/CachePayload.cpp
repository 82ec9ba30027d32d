#include "db/CachePayload.h"

#include "platform/compress/Compression.h"

#include <algorithm>
#include <new>
#include <utility>

namespace qfc {

namespace {

// Empty when the bytes do not shrink, or there is no compressor, or no memory for its output.
std::vector<std::byte> Compressed(std::span<const std::byte> bytes) {
    try {
        std::vector<std::byte> compressed(bytes.size());
        auto length = static_cast<unsigned>(bytes.size());
        const int result = Compress(length, bytes.data(), &length, compressed.data());
        if (result != kCompressionSucceeded || length > compressed.size()) return {};
        compressed.resize(length);
        return compressed;
    } catch (const std::bad_alloc&) {
        return {};
    }
}

}  // namespace

PayloadWrite PackPayload(int kind, std::span<const std::byte> bytes) {
    PayloadWrite payload;
    payload.kind = kind;
    payload.raw = bytes;
    // The negative size makes the write report it.
    payload.rawSize = bytes.size() <= kLargestPayload ? static_cast<int>(bytes.size()) : -1;
    if (payload.rawSize <= 0) return payload;

    payload.compressed = Compressed(bytes);
    payload.compressedSize = static_cast<int>(payload.compressed.size());
    return payload;
}

bool PayloadIsSound(const StoredPayload& row) {
    if (row.rawSize <= 0 || row.rawSize > kLargestPayload || row.compressedSize < 0 || row.bytes.empty()) return false;
    const auto rawSize = static_cast<std::size_t>(row.rawSize);
    const auto compressedSize = static_cast<std::size_t>(row.compressedSize);
    if (compressedSize == 0) return row.bytes.size() <= rawSize;
    return row.bytes.size() >= compressedSize && CanUnpackTo(row.bytes.first(compressedSize), rawSize);
}

bool UnpackPayload(const StoredPayload& row, std::span<std::byte> target) {
    if (!PayloadIsSound(row) || target.size() != static_cast<std::size_t>(row.rawSize)) return false;
    if (row.compressedSize == 0) {
        const auto rest = std::copy(row.bytes.begin(), row.bytes.end(), target.begin());
        std::fill(rest, target.end(), std::byte{0});
        return true;
    }
    auto length = static_cast<unsigned>(target.size());
    const auto compressedSize = static_cast<unsigned>(row.compressedSize);
    const int result = Decompress(compressedSize, row.bytes.data(), &length, target.data());
    if (result == kCompressionNoMemory) throw std::bad_alloc();
    return result == kCompressionSucceeded && length == target.size();
}

}  // namespace qfc
