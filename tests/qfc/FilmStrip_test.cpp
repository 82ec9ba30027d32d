#include "hosts/qfc/pictures/FilmStrip.h"

#include "hosts/qfc/pictures/Canvas.h"
#include "hosts/qfc/pictures/Palette.h"
#include "tests/qfc/MediaMaker.h"
#include "tests/qfc/RecordedDrawing.h"

#include <gmock/gmock.h>

namespace {

using namespace qfc::test;
using qfc::host::Align;
using qfc::host::DrawFilmStrip;
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

TEST(FilmStrip, EveryFrameHasItsNumberAndItsMomentBelow) {
    FilmStrip strip = Strip(3);
    strip.detail = "640 x 360, 0:09";
    strip.captions = {"0:01.5", "0:04.5", "0:07.5"};
    RecordedDrawing drawn;
    DrawFilmStrip(strip, drawn);
    EXPECT_THAT(drawn.Words(),
                testing::ElementsAre("clip.mp4", "640 x 360, 0:09", "1", "0:01.5", "2", "0:04.5", "3", "0:07.5"));
    for (std::size_t i = 0; i < 3; ++i) {
        const auto moment = drawn.Find(strip.captions[i]);
        const auto& frame = drawn.pictures[i];
        EXPECT_EQ(moment.box.x, frame.x);
        EXPECT_EQ(moment.box.width, frame.width);
        EXPECT_GT(moment.box.y, frame.y + frame.height);
        EXPECT_EQ(moment.style.align, Align::Right);
    }
    EXPECT_LT(drawn.Find("clip.mp4").box.y, drawn.pictures[0].y);
}

TEST(FilmStrip, MomentsMayBeMissing) {
    FilmStrip strip = Strip(2);
    strip.captions = {"0:01"};
    RecordedDrawing drawn;
    DrawFilmStrip(strip, drawn);
    EXPECT_THAT(drawn.Words(), testing::ElementsAre("clip.mp4", "1", "0:01", "2"));
}

TEST(FilmStrip, ALongTitleGetsTheWholeLine) {
    FilmStrip strip = Strip(1);
    strip.title = std::string(200, 't');
    strip.detail = "640 x 360";
    RecordedDrawing drawn;
    DrawFilmStrip(strip, drawn);
    EXPECT_THAT(drawn.Words(), testing::ElementsAre(strip.title, "1"));
}

TEST(FilmStrip, EveryStripOfAManyFramedFilmHasTheTitleAndItsOwnNumbers) {
    RecordedDrawing drawn;
    DrawFilmStrip(Strip(25), drawn);
    EXPECT_EQ(std::ranges::count(drawn.Words(), "clip.mp4"), 2);
    EXPECT_GT(drawn.Find("21").box.y, drawn.Find("20").box.y);
    EXPECT_EQ(drawn.Find("21").box.x, drawn.Find("1").box.x);
}

TEST(FilmStrip, DarkFramesGetAnEdgeThatShows) {
    FilmStrip strip = Strip(0);
    strip.frames = {Picture(160, 90, 0xFF000000u), Picture(160, 90, 0xFFFFFFFFu)};
    RecordedDrawing drawn;
    DrawFilmStrip(strip, drawn);
    ASSERT_EQ(drawn.outlines.size(), 2u);
    EXPECT_EQ(drawn.outlines[0].colour.opacity, qfc::host::palette::kDarkPictureEdge.opacity);
    EXPECT_EQ(drawn.outlines[1].colour.opacity, qfc::host::palette::kPictureEdge.opacity);
}

}  // namespace
