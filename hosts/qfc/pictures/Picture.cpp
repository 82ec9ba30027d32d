#include "hosts/qfc/pictures/Picture.h"

#include <algorithm>

namespace qfc::host {

namespace {

constexpr int kTinySide = 40;

int CeilOfRatio(std::int64_t product, std::int64_t divisor) {
    return static_cast<int>(std::max<std::int64_t>(1, (product + divisor - 1) / divisor));
}

}  // namespace

Turn Turn::Clockwise(int degrees) {
    switch (degrees) {
        case 90:
            return {0, 1, -1, 0};
        case 180:
            return {-1, 0, 0, -1};
        case 270:
            return {0, -1, 1, 0};
        default:
            return {};
    }
}

Picture::Picture(int w, int h, std::uint32_t colour)
    : width(w), height(h), pixels(static_cast<std::size_t>(w) * static_cast<std::size_t>(h), colour) {}

Picture Turned(const Picture& source, Turn turn) {
    if (turn.IsNone() || source.IsEmpty()) return source;
    Picture result(turn.SwapsSides() ? source.height : source.width, turn.SwapsSides() ? source.width : source.height);
    const int lastX = source.width - 1;
    const int lastY = source.height - 1;
    const int moveX = -(std::min(0, turn.a * lastX) + std::min(0, turn.c * lastY));
    const int moveY = -(std::min(0, turn.b * lastX) + std::min(0, turn.d * lastY));
    for (int y = 0; y < source.height; ++y)
        for (int x = 0; x < source.width; ++x)
            result.At(turn.a * x + turn.c * y + moveX, turn.b * x + turn.d * y + moveY) = source.At(x, y);
    return result;
}

PictureSize FittedSize(PictureSize source, PictureSize cell) {
    const std::int64_t wide = std::int64_t{cell.width} * source.height;
    const std::int64_t tall = std::int64_t{cell.height} * source.width;
    if (tall < wide) return {CeilOfRatio(tall, source.height), cell.height};
    if (wide < tall) return {cell.width, CeilOfRatio(wide, source.width)};
    return cell;
}

PictureSize ThumbnailSize(PictureSize source, int longest) {
    const int side = std::max(source.width, source.height);
    if (side > longest) return FittedSize(source, {longest, longest});
    if (side >= kTinySide) return source;
    const int factor = longest / side;
    return {source.width * factor, source.height * factor};
}

}  // namespace qfc::host
