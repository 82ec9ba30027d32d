#include "db/CachePayload.h"

#include "platform/compress/Compression.h"

#include <algorithm>
#include <climits>

namespace qfc {

PayloadWrite PackPayload(int kind, std::span<const std::byte> bytes) {
    PayloadWrite payload;
    payload.kind = kind;
    payload.raw = bytes;
    // No row can hold more; the negative size makes the write report it.
    payload.rawSize = bytes.size() <= INT_MAX ? static_cast<int>(bytes.size()) : -1;
    if (payload.rawSize <= 0) return payload;

    std::vector<std::byte> compressed(bytes.size());
    auto length = static_cast<unsigned>(bytes.size());
    const int result = Compress(length, bytes.data(), &length, compressed.data());
    if (result != kCompressionSucceeded || length == 0 || length > compressed.size()) return payload;
    compressed.resize(length);
    payload.compressedSize = static_cast<int>(length);
    payload.compressed = std::move(compressed);
    return payload;
}

bool PayloadIsSound(const StoredPayload& row) {
    if (row.rawSize <= 0 || row.compressedSize < 0 || row.bytes.empty()) return false;
    const auto rawSize = static_cast<std::size_t>(row.rawSize);
    const auto compressedSize = static_cast<std::size_t>(row.compressedSize);
    if (compressedSize == 0) return row.bytes.size() <= rawSize;
    return row.bytes.size() >= compressedSize && AnnouncedSize(row.bytes.first(compressedSize)) == rawSize;
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
    return result == kCompressionSucceeded && length == target.size();
}

}  // namespace qfc
