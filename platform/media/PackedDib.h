#pragma once

#include "platform/Export.h"
#include "platform/framework/Types.h"

#include <cstddef>
#include <cstdint>
#include <optional>

// Header of a packed bitmap, as it stands at the start of bitmap caches and film frames.
struct BITMAPINFOHEADER {
    DWORD biSize;
    LONG biWidth;
    LONG biHeight;  // negative when the first row is the top one
    WORD biPlanes;
    WORD biBitCount;
    DWORD biCompression;
    DWORD biSizeImage;
    LONG biXPelsPerMeter;
    LONG biYPelsPerMeter;
    DWORD biClrUsed;
    DWORD biClrImportant;
};
static_assert(sizeof(BITMAPINFOHEADER) == 40, "stored as its 40 bytes");

namespace qfc {

// Copies the header out of the buffer, which need not be aligned. Empty when there are fewer than 40 bytes; what the
// fields say is not judged.
QFCLIB_API std::optional<BITMAPINFOHEADER> ReadDibHeader(const void* bytes, std::size_t size);

}  // namespace qfc
