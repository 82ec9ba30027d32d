#include "platform/compress/Compression.h"

#include <limits>
#include <memory>
#include <mutex>
#include <utility>
#include <zstd.h>

namespace qfc {
namespace {

constexpr int kLevel = 3;
constexpr int kFailed = 0;

struct ContextDeleter {
    void operator()(ZSTD_CCtx* context) const { ZSTD_freeCCtx(context); }
    void operator()(ZSTD_DCtx* context) const { ZSTD_freeDCtx(context); }
};

using Compressor = std::unique_ptr<ZSTD_CCtx, ContextDeleter>;
using Decompressor = std::unique_ptr<ZSTD_DCtx, ContextDeleter>;

Compressor NewCompressor() {
    Compressor context(ZSTD_createCCtx());
    if (context == nullptr) return nullptr;
    ZSTD_CCtx_setParameter(context.get(), ZSTD_c_compressionLevel, kLevel);
    ZSTD_CCtx_setParameter(context.get(), ZSTD_c_checksumFlag, 1);
    ZSTD_CCtx_setParameter(context.get(), ZSTD_c_contentSizeFlag, 1);
    return context;
}

bool IsUsable(unsigned sourceLength, const void* source, const unsigned* destinationLength, const void* destination) {
    return destinationLength != nullptr && (source != nullptr || sourceLength == 0) &&
           (destination != nullptr || *destinationLength == 0);
}

int Finish(std::size_t result, unsigned* destinationLength) {
    if (ZSTD_isError(result)) return kFailed;
    *destinationLength = static_cast<unsigned>(result);
    return kCompressionSucceeded;
}

// Contexts are expensive to make: each thread keeps its own. One that could not be made is tried again next time.
int ZstdCompress(unsigned sourceLength, const void* source, unsigned* destinationLength, void* destination) {
    thread_local Compressor context;
    if (!IsUsable(sourceLength, source, destinationLength, destination)) return kFailed;
    if (context == nullptr) context = NewCompressor();
    if (context == nullptr) return kCompressionNoMemory;
    return Finish(ZSTD_compress2(context.get(), destination, *destinationLength, source, sourceLength),
                  destinationLength);
}

int ZstdDecompress(unsigned sourceLength, const void* source, unsigned* destinationLength, void* destination) {
    thread_local Decompressor context;
    if (!IsUsable(sourceLength, source, destinationLength, destination)) return kFailed;
    if (context == nullptr) context.reset(ZSTD_createDCtx());
    if (context == nullptr) return kCompressionNoMemory;
    return Finish(ZSTD_decompressDCtx(context.get(), destination, *destinationLength, source, sourceLength),
                  destinationLength);
}

// A frame announces its size, and spends at least four bytes on each block of 128 KB.
bool ZstdCanUnpackTo(unsigned sourceLength, const void* source, std::uint64_t size) {
    constexpr std::uint64_t kBlockSize = 131072;
    constexpr std::uint64_t kSmallestBlock = 4;
    const unsigned long long announced = ZSTD_getFrameContentSize(source, sourceLength);
    if (announced == ZSTD_CONTENTSIZE_UNKNOWN || announced == ZSTD_CONTENTSIZE_ERROR || announced != size) return false;
    return size / kBlockSize * kSmallestBlock <= sourceLength;
}

struct BindingSlot {
    std::mutex mutex;
    CompressionBinding binding{&ZstdCompress, &ZstdDecompress, &ZstdCanUnpackTo};
};

BindingSlot& TheSlot() {
    static BindingSlot slot;
    return slot;
}

CompressionBinding CurrentBinding() {
    BindingSlot& slot = TheSlot();
    const std::lock_guard lock(slot.mutex);
    return slot.binding;
}

}  // namespace

int Compress(unsigned sourceLength, const void* source, unsigned* destinationLength, void* destination) {
    const auto compress = CurrentBinding().compress;
    return compress != nullptr ? compress(sourceLength, source, destinationLength, destination) : kCompressionMissing;
}

int Decompress(unsigned sourceLength, const void* source, unsigned* destinationLength, void* destination) {
    const auto decompress = CurrentBinding().decompress;
    return decompress != nullptr ? decompress(sourceLength, source, destinationLength, destination)
                                 : kCompressionMissing;
}

CompressionBinding SetCompressionBinding(CompressionBinding binding) {
    BindingSlot& slot = TheSlot();
    const std::lock_guard lock(slot.mutex);
    return std::exchange(slot.binding, binding);
}

bool CanUnpackTo(std::span<const std::byte> compressed, std::uint64_t size) {
    const auto canUnpackTo = CurrentBinding().canUnpackTo;
    const bool isAddressable = compressed.size() <= std::numeric_limits<unsigned>::max();
    if (canUnpackTo == nullptr || !isAddressable) return isAddressable;
    return canUnpackTo(static_cast<unsigned>(compressed.size()), compressed.data(), size);
}

}  // namespace qfc
