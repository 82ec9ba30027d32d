#pragma once

#include "hosts/qfc/pictures/Picture.h"

#include <cstdint>
#include <optional>
#include <span>
#include <vector>

namespace qfc::host {

// Packed device-independent bitmaps: a 40-byte header, a palette for 8 bits, then rows padded to 4 bytes. The library
// keeps thumbnails and film frames in this layout. Functions without state; any thread.

// 24 bits, B G R, the bottom row first, no palette. An empty picture gives no bytes.
std::vector<std::uint8_t> PackDib(const Picture& picture);

// Bytes that PackDib gives for a picture of this size.
std::size_t PackedDibSize(PictureSize size);

// Reads 8, 24 and 32 bits, uncompressed, bottom-up or top-down; bytes behind the last row are ignored. Nothing when the
// header or a length does not hold what it says, so hostile bytes are safe to pass.
std::optional<Picture> ReadDib(std::span<const std::uint8_t> dib);

}  // namespace qfc::host
