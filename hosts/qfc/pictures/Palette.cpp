#include "hosts/qfc/pictures/Palette.h"

namespace qfc::host::palette {

namespace {

constexpr int kDarkest = 64;  // mean brightness of a border, of 255, up to which it needs help

int Brightness(std::uint32_t pixel) {
    return static_cast<int>((299 * (pixel >> 16 & 0xFF) + 587 * (pixel >> 8 & 0xFF) + 114 * (pixel & 0xFF)) / 1000);
}

}  // namespace

Colour EdgeOf(const Picture& picture) {
    if (picture.IsEmpty()) return kPictureEdge;
    const int right = picture.width - 1;
    const int bottom = picture.height - 1;
    std::int64_t sum = 0;
    for (int x = 0; x <= right; ++x) sum += Brightness(picture.At(x, 0)) + Brightness(picture.At(x, bottom));
    for (int y = 0; y <= bottom; ++y) sum += Brightness(picture.At(0, y)) + Brightness(picture.At(right, y));
    const std::int64_t pixels = 2 * (std::int64_t{picture.width} + picture.height);
    return sum <= kDarkest * pixels ? kDarkPictureEdge : kPictureEdge;
}

}  // namespace qfc::host::palette
