#include "hosts/qfc/pictures/FilmStrip.h"

#include "hosts/qfc/pictures/Canvas.h"

#include <algorithm>
#include <fmt/format.h>

namespace qfc::host {

namespace {

// Measures in pixels.
constexpr int kMargin = 24;
constexpr int kFrameGap = 10;
constexpr int kEdge = 40;  // of the strip above and below the frames: perforation and print
constexpr int kStripGap = 20;
constexpr std::size_t kFramesPerStrip = 20;
constexpr double kHoleWidth = 10;
constexpr double kHoleHeight = 13;
constexpr double kHoleStep = 21.25;

constexpr Colour kGround = {0x15181D};
constexpr Colour kHole = {0x15181D};
constexpr Colour kStripTop = {0x3A322A};
constexpr Colour kStripBottom = {0x2A241E};
constexpr Colour kPrint = {0xE8A33D};

PictureSize FrameSize(const FilmStrip& strip) {
    PictureSize size = {1, 1};
    for (const Picture& frame : strip.frames) {
        size.width = std::max(size.width, frame.width);
        size.height = std::max(size.height, frame.height);
    }
    return size;
}

std::size_t Strips(const FilmStrip& strip) { return (strip.frames.size() + kFramesPerStrip - 1) / kFramesPerStrip; }

int StripWidth(std::size_t frames, int frameWidth) {
    return static_cast<int>(frames) * (frameWidth + kFrameGap) + kFrameGap;
}

void PaintHoles(Canvas& canvas, Box strip) {
    const int holes = std::max(1, static_cast<int>(strip.width / kHoleStep));
    const double step = strip.width / holes;
    for (int i = 0; i < holes; ++i) {
        const double x = strip.x + step * i + (step - kHoleWidth) / 2;
        canvas.FillBox({x, strip.y + 6, kHoleWidth, kHoleHeight}, 3, kHole);
        canvas.FillBox({x, strip.y + strip.height - 6 - kHoleHeight, kHoleWidth, kHoleHeight}, 3, kHole);
    }
}

// One strip with the frames from `first` on.
void PaintStrip(Canvas& canvas, const FilmStrip& strip, std::size_t first, int y) {
    const PictureSize size = FrameSize(strip);
    const std::size_t last = std::min(first + kFramesPerStrip, strip.frames.size());
    const Box body = {kMargin, double(y), double(StripWidth(last - first, size.width)), size.height + 2.0 * kEdge};
    canvas.Shadow(body, 3, 8);
    canvas.FillGradient(body, 3, kStripTop, kStripBottom);
    PaintHoles(canvas, body);
    const TextStyle print = {.size = 10, .colour = kPrint, .bold = true};
    canvas.DrawText(strip.title, {body.x + kFrameGap, body.y + 22, body.width - 2 * kFrameGap, 15}, print);
    for (std::size_t i = first; i < last; ++i) {
        const Picture& frame = strip.frames[i];
        const Box cell = {body.x + StripWidth(i - first, size.width), body.y + kEdge, double(size.width),
                          double(size.height)};
        const Box shown = {cell.x + (size.width - frame.width) / 2, cell.y + (size.height - frame.height) / 2,
                           double(frame.width), double(frame.height)};
        canvas.DrawPicture(frame, shown, 3);
        const Box below = {cell.x, cell.y + cell.height + 3, cell.width, 15};
        canvas.DrawText(fmt::format("{}", i + 1), below, print);
        TextStyle right = print;
        right.align = Align::Right;
        right.bold = false;
        if (i < strip.captions.size()) canvas.DrawText(strip.captions[i], below, right);
    }
}

}  // namespace

PictureSize FilmStripSize(const FilmStrip& strip) {
    const PictureSize frame = FrameSize(strip);
    const int strips = static_cast<int>(Strips(strip));
    const std::size_t widest = std::min(strip.frames.size(), kFramesPerStrip);
    return {2 * kMargin + StripWidth(widest, frame.width),
            2 * kMargin + strips * (frame.height + 2 * kEdge) + std::max(0, strips - 1) * kStripGap};
}

void WriteFilmStrip(const FilmStrip& strip, const std::string& path) {
    if (strip.frames.empty()) throw PictureError("there are no frames to draw");
    Canvas canvas(FilmStripSize(strip), kGround);
    const int step = FrameSize(strip).height + 2 * kEdge + kStripGap;
    for (std::size_t i = 0; i < Strips(strip); ++i)
        PaintStrip(canvas, strip, i * kFramesPerStrip, kMargin + static_cast<int>(i) * step);
    canvas.SavePng(path);
}

}  // namespace qfc::host
