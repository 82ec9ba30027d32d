#include "hosts/qfc/pictures/FilmStrip.h"

#include "hosts/qfc/pictures/Canvas.h"
#include "tests/qfc/MediaMaker.h"

#include <gmock/gmock.h>

namespace {

using namespace qfc::test;
using qfc::host::FilmStrip;
using qfc::host::FilmStripSize;
using qfc::host::WriteFilmStrip;

FilmStrip Strip(std::size_t frames) {
    FilmStrip strip;
    strip.title = "clip.mp4";
    for (std::size_t i = 0; i < frames; ++i)
        strip.frames.emplace_back(160, 90, 0xFF000000u | static_cast<std::uint32_t>(0x101010 + i * 0x050301));
    return strip;
}

TEST(FilmStrip, FramesStandSideBySideInTheirOrder) {
    const TempFolder folder;
    const FilmStrip strip = Strip(10);
    WriteFilmStrip(strip, folder / "film.png");
    const Picture drawn = ReadImage(folder / "film.png");
    EXPECT_EQ(SizeOf(drawn), FilmStripSize(strip));
    EXPECT_GT(drawn.width, 1600);
    int last = -101;
    for (const Picture& frame : strip.frames) {
        int x = std::max(0, last + 1);
        while (x < drawn.width && drawn.At(x, drawn.height / 2) != frame.At(0, 0)) ++x;
        EXPECT_LT(x, drawn.width);
        EXPECT_GT(x, last + 100);
        last = x;
    }
}

TEST(FilmStrip, PerforationsShowAboveAndBelow) {
    const TempFolder folder;
    WriteFilmStrip(Strip(3), folder / "film.png");
    const Picture drawn = ReadImage(folder / "film.png");
    for (const int y : {24 + 12, drawn.height - 24 - 12}) {
        int holes = 0;
        for (int x = 1; x < drawn.width; ++x) holes += drawn.At(x, y) == 0xFF15181D && drawn.At(x - 1, y) != 0xFF15181D;
        EXPECT_GT(holes, 15);
    }
}

TEST(FilmStrip, ManyFramesMakeSeveralStrips) {
    EXPECT_GT(FilmStripSize(Strip(21)).height, FilmStripSize(Strip(20)).height);
    EXPECT_EQ(FilmStripSize(Strip(100)).width, FilmStripSize(Strip(20)).width);
}

TEST(FilmStrip, FramesOfDifferentSizesAreCentred) {
    const TempFolder folder;
    FilmStrip strip = Strip(2);
    strip.frames.push_back(Picture(20, 160, 0xFF00FF00u));
    strip.captions = {"0:01"};
    WriteFilmStrip(strip, folder / "film.png");
    EXPECT_EQ(SizeOf(ReadImage(folder / "film.png")), FilmStripSize(strip));
}

TEST(FilmStrip, NoFramesAreRefused) {
    const TempFolder folder;
    EXPECT_THROW(WriteFilmStrip({}, folder / "film.png"), qfc::host::PictureError);
    EXPECT_THAT(folder.Entries(), testing::IsEmpty());
}

}  // namespace
