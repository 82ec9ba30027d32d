#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace qfc::host {

// How a picture is turned and mirrored: a pixel at (x, y), y pointing down, goes to (a*x + c*y, b*x + d*y), moved so
// that the result starts at (0, 0). Each factor is -1, 0 or 1. A plain value.
struct Turn {
    int a = 1, b = 0, c = 0, d = 1;

    // Clockwise as seen by the viewer. Anything but 90, 180 and 270 is no turn.
    static Turn Clockwise(int degrees);
    bool IsNone() const { return a == 1 && b == 0 && c == 0 && d == 1; }
    bool SwapsSides() const { return a == 0; }
};

// An opaque picture in memory: rows from the top down, each pixel 0xFFRRGGBB. A plain value; any thread may hold one.
struct Picture {
    int width = 0;
    int height = 0;
    std::vector<std::uint32_t> pixels;

    Picture() = default;
    Picture(int w, int h, std::uint32_t colour = 0xFF000000u);

    bool IsEmpty() const { return pixels.empty(); }
    std::uint32_t& At(int x, int y) { return pixels[Index(x, y)]; }
    std::uint32_t At(int x, int y) const { return pixels[Index(x, y)]; }

private:
    std::size_t Index(int x, int y) const {
        return static_cast<std::size_t>(y) * static_cast<std::size_t>(width) + static_cast<std::size_t>(x);
    }
};

Picture Turned(const Picture& source, Turn turn);

struct PictureSize {
    int width = 0;
    int height = 0;
    bool operator==(const PictureSize&) const = default;
};

// The largest size of the source's shape within the cell, each side at least 1; the shorter side rounds up.
PictureSize FittedSize(PictureSize source, PictureSize cell);

// What a thumbnail of the source measures: its longest side is `longest`, or its own when that is less. A source so
// tiny that nobody would see it grows by a whole factor.
PictureSize ThumbnailSize(PictureSize source, int longest);

}  // namespace qfc::host
