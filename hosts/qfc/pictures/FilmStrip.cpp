#include "hosts/qfc/pictures/FilmStrip.h"

#include "hosts/qfc/pictures/Canvas.h"
#include "hosts/qfc/pictures/Palette.h"

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

void PaintHoles(Drawing& drawing, Box strip) {
    const int holes = std::max(1, static_cast<int>(strip.width / kHoleStep));
    const double step = strip.width / holes;
    for (int i = 0; i < holes; ++i) {
        const double x = strip.x + step * i + (step - kHoleWidth) / 2;
        drawing.FillBox({x, strip.y + 6, kHoleWidth, kHoleHeight}, 3, palette::kPerforation);
        drawing.FillBox({x, strip.y + strip.height - 6 - kHoleHeight, kHoleWidth, kHoleHeight}, 3,
                        palette::kPerforation);
    }
}

// The title, and at the other end what else there is to say; the title gets all the room when it needs it.
void PaintTitle(Drawing& drawing, const FilmStrip& strip, Box line) {
    const TextStyle quiet = {.size = 10, .colour = palette::kQuietPrint, .align = Align::Right};
    drawing.DrawText(strip.title, line, {.size = 10, .colour = palette::kPrint, .bold = true});
    const double title = drawing.TextWidth(strip.title, {.size = 10, .colour = palette::kPrint, .bold = true});
    const double detail = drawing.TextWidth(strip.detail, quiet);
    if (title + kFrameGap + detail <= line.width) drawing.DrawText(strip.detail, line, quiet);
}

void PaintFrame(Drawing& drawing, const FilmStrip& strip, std::size_t number, Box cell) {
    const Picture& frame = strip.frames[number];
    const Box shown = {cell.x + static_cast<int>(cell.width - frame.width) / 2,
                       cell.y + static_cast<int>(cell.height - frame.height) / 2, double(frame.width),
                       double(frame.height)};
    drawing.DrawPicture(frame, shown, 3);
    drawing.OutlineBox(shown, 3, 1, palette::EdgeOf(frame));
    const Box below = {cell.x, cell.y + cell.height + 3, cell.width, 15};
    drawing.DrawText(fmt::format("{}", number + 1), below, {.size = 10, .colour = palette::kPrint, .bold = true});
    if (number >= strip.captions.size()) return;
    drawing.DrawText(strip.captions[number], below,
                     {.size = 10, .colour = palette::kQuietPrint, .align = Align::Right});
}

// One strip with the frames from `first` on.
void PaintStrip(Drawing& drawing, const FilmStrip& strip, std::size_t first, int y) {
    const PictureSize size = FrameSize(strip);
    const std::size_t last = std::min(first + kFramesPerStrip, strip.frames.size());
    const Box body = {kMargin, double(y), double(StripWidth(last - first, size.width)), size.height + 2.0 * kEdge};
    drawing.Shadow(body, 3, 8);
    drawing.FillGradient(body, 3, palette::kCelluloidTop, palette::kCelluloidBottom);
    PaintHoles(drawing, body);
    PaintTitle(drawing, strip, {body.x + kFrameGap, body.y + 22, body.width - 2 * kFrameGap, 15});
    for (std::size_t i = first; i < last; ++i) {
        PaintFrame(
            drawing, strip, i,
            {body.x + StripWidth(i - first, size.width), body.y + kEdge, double(size.width), double(size.height)});
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

void DrawFilmStrip(const FilmStrip& strip, Drawing& drawing) {
    const int step = FrameSize(strip).height + 2 * kEdge + kStripGap;
    for (std::size_t i = 0; i < Strips(strip); ++i)
        PaintStrip(drawing, strip, i * kFramesPerStrip, kMargin + static_cast<int>(i) * step);
}

void WriteFilmStrip(const FilmStrip& strip, const std::string& path) {
    if (strip.frames.empty()) throw PictureError("there are no frames to draw");
    Canvas canvas(FilmStripSize(strip), palette::kGround);
    DrawFilmStrip(strip, canvas);
    canvas.SavePng(path);
}

}  // namespace qfc::host
