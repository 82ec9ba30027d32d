#include "platform/media/PackedDib.h"

#include <cstring>

namespace qfc {

std::optional<BITMAPINFOHEADER> ReadDibHeader(const void* bytes, std::size_t size) {
    if (bytes == nullptr || size < sizeof(BITMAPINFOHEADER)) return std::nullopt;
    BITMAPINFOHEADER header;
    std::memcpy(&header, bytes, sizeof(header));
    return header;
}

}  // namespace qfc
