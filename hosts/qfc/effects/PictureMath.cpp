#include "hosts/qfc/effects/PictureMath.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>

namespace qfc::host {

namespace {

constexpr std::uint32_t kOpaque = 0xFF000000u;
constexpr unsigned kComponents[] = {16u, 8u, 0u};

std::uint32_t Component(std::uint32_t pixel, unsigned shift) { return pixel >> shift & 0xFFu; }

std::uint32_t Mixed(std::uint32_t under, std::uint32_t over, std::uint32_t weight) {
    std::uint32_t mixed = kOpaque;
    for (const unsigned shift : kComponents)
        mixed |= (Component(under, shift) * (255 - weight) + Component(over, shift) * weight + 127) / 255 << shift;
    return mixed;
}

std::uint32_t BackdropAt(Backdrop backdrop, int x, int y) {
    constexpr int kSquare = 16;
    if (backdrop == Backdrop::Black) return kOpaque;
    return (x / kSquare + y / kSquare) % 2 == 0 ? 0xFFC8C8C8u : 0xFF989898u;
}

}  // namespace

Picture Flattened(const Picture& seeThrough, Backdrop backdrop) {
    Picture flat = seeThrough;
    for (int y = 0; y < flat.height; ++y) {
        for (int x = 0; x < flat.width; ++x) {
            std::uint32_t& pixel = flat.At(x, y);
            const std::uint32_t opacity = pixel >> 24;
            if (opacity != 255) pixel = Mixed(BackdropAt(backdrop, x, y), pixel, opacity);
        }
    }
    return flat;
}

double Coverage(const Picture& seeThrough) {
    double sum = 0;
    for (const std::uint32_t pixel : seeThrough.pixels) sum += pixel >> 24;
    return seeThrough.IsEmpty() ? 0 : sum / 255 / static_cast<double>(seeThrough.pixels.size());
}

Picture OpaqueIfUnset(Picture seeThrough, const Picture& original) {
    const auto isTransparent = [](std::uint32_t pixel) { return pixel >> 24 == 0; };
    if (std::all_of(seeThrough.pixels.begin(), seeThrough.pixels.end(), isTransparent) &&
        !IsNearlyOneColour(seeThrough) && ChangeBetween(seeThrough, original).IsVisible())
        for (std::uint32_t& pixel : seeThrough.pixels) pixel |= kOpaque;
    return seeThrough;
}

Change ChangeBetween(const Picture& left, const Picture& right) {
    constexpr int kAnotherColour = 32;
    std::uint64_t sum = 0, others = 0;
    for (std::size_t i = 0; i < left.pixels.size(); ++i) {
        int most = 0;
        for (const unsigned shift : kComponents) {
            const int distance = std::abs(static_cast<int>(Component(left.pixels[i], shift)) -
                                          static_cast<int>(Component(right.pixels[i], shift)));
            sum += static_cast<std::uint64_t>(distance);
            most = std::max(most, distance);
        }
        if (most >= kAnotherColour) ++others;
    }
    const auto pixels = static_cast<double>(std::max<std::size_t>(left.pixels.size(), 1));
    return {static_cast<double>(sum) / 3 / pixels, static_cast<double>(others) / pixels};
}

bool IsNearlyOneColour(const Picture& picture) {
    constexpr double kLeastSpread = 4;
    for (const unsigned shift : kComponents) {
        double sum = 0, squares = 0;
        for (const std::uint32_t pixel : picture.pixels) {
            const double value = Component(pixel, shift);
            sum += value;
            squares += value * value;
        }
        const auto pixels = static_cast<double>(std::max<std::size_t>(picture.pixels.size(), 1));
        const double variance = squares / pixels - (sum / pixels) * (sum / pixels);
        if (variance > kLeastSpread * kLeastSpread) return false;
    }
    return true;
}

Picture Blended(const Picture& from, const Picture& to, double progress) {
    const auto weight = static_cast<std::uint32_t>(std::lround(std::clamp(progress, 0.0, 1.0) * 255));
    Picture result = from;
    for (std::size_t i = 0; i < result.pixels.size(); ++i)
        result.pixels[i] = Mixed(from.pixels[i], to.pixels[i], weight);
    return result;
}

Picture Part(const Picture& picture, int left, int top, PictureSize size) {
    Picture part(size.width, size.height);
    for (int y = 0; y < size.height; ++y)
        for (int x = 0; x < size.width; ++x) part.At(x, y) = picture.At(left + x, top + y);
    return part;
}

Picture Halved(const Picture& picture) {
    Picture half(picture.width / 2, picture.height / 2);
    for (int y = 0; y < half.height; ++y) {
        for (int x = 0; x < half.width; ++x) {
            const std::uint32_t four[] = {picture.At(2 * x, 2 * y), picture.At(2 * x + 1, 2 * y),
                                          picture.At(2 * x, 2 * y + 1), picture.At(2 * x + 1, 2 * y + 1)};
            std::uint32_t pixel = kOpaque;
            for (const unsigned shift : kComponents) {
                std::uint32_t sum = 2;
                for (const std::uint32_t one : four) sum += Component(one, shift);
                pixel |= sum / 4 << shift;
            }
            half.At(x, y) = pixel;
        }
    }
    return half;
}

Picture Faded(const Picture& picture, FadeTo side) {
    Picture faded = picture;
    for (int y = 0; y < faded.height; ++y) {
        for (int x = 0; x < faded.width; ++x) {
            const int at = side == FadeTo::Right ? x : y;
            const int last = std::max(1, (side == FadeTo::Right ? faded.width : faded.height) - 1);
            const auto opacity = static_cast<std::uint32_t>(255 - 255 * at / last);
            std::uint32_t& pixel = faded.At(x, y);
            pixel = (pixel & 0x00FFFFFFu) | opacity << 24;
        }
    }
    return faded;
}

}  // namespace qfc::host
