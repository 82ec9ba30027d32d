#include "hosts/qfc/pictures/Picture.h"

#include <gtest/gtest.h>

namespace {

using qfc::host::FittedSize;
using qfc::host::Picture;
using qfc::host::PictureSize;
using qfc::host::ThumbnailSize;
using qfc::host::Turn;
using qfc::host::Turned;

// Two wide and three high:  1 2 / 3 4 / 5 6
Picture Numbers() {
    Picture picture(2, 3);
    for (std::uint32_t i = 0; i < 6; ++i) picture.pixels[i] = i + 1;
    return picture;
}

using Pixels = std::vector<std::uint32_t>;

TEST(Picture, TurnsAreClockwiseAsSeen) {
    const Picture quarter = Turned(Numbers(), Turn::Clockwise(90));
    EXPECT_EQ(quarter.width, 3);
    EXPECT_EQ(quarter.height, 2);
    EXPECT_EQ(quarter.pixels, (Pixels{5, 3, 1, 6, 4, 2}));
    EXPECT_EQ(Turned(Numbers(), Turn::Clockwise(180)).pixels, (Pixels{6, 5, 4, 3, 2, 1}));
    EXPECT_EQ(Turned(Numbers(), Turn::Clockwise(270)).pixels, (Pixels{2, 4, 6, 1, 3, 5}));
}

TEST(Picture, AnyOtherAngleIsNoTurn) {
    for (const int degrees : {0, 45, 360, -90})
        EXPECT_EQ(Turned(Numbers(), Turn::Clockwise(degrees)).pixels, Numbers().pixels);
}

TEST(Picture, MirroringKeepsTheSides) {
    EXPECT_EQ(Turned(Numbers(), Turn{-1, 0, 0, 1}).pixels, (Pixels{2, 1, 4, 3, 6, 5}));
    EXPECT_EQ(Turned(Numbers(), Turn{1, 0, 0, -1}).pixels, (Pixels{5, 6, 3, 4, 1, 2}));
}

TEST(Picture, FittingKeepsTheShapeAndRoundsUp) {
    EXPECT_EQ(FittedSize({200, 100}, {100, 100}), (PictureSize{100, 50}));
    EXPECT_EQ(FittedSize({100, 200}, {100, 100}), (PictureSize{50, 100}));
    EXPECT_EQ(FittedSize({160, 120}, {160, 120}), (PictureSize{160, 120}));
    EXPECT_EQ(FittedSize({3, 1}, {100, 100}), (PictureSize{100, 34}));
    EXPECT_EQ(FittedSize({30000, 1}, {100, 100}), (PictureSize{100, 1}));
}

TEST(Picture, ThumbnailsAreNeverLargerThanTheirSourceUnlessItIsTiny) {
    EXPECT_EQ(ThumbnailSize({1920, 1080}, 160), (PictureSize{160, 90}));
    EXPECT_EQ(ThumbnailSize({1080, 1920}, 160), (PictureSize{90, 160}));
    EXPECT_EQ(ThumbnailSize({120, 80}, 160), (PictureSize{120, 80}));
    EXPECT_EQ(ThumbnailSize({16, 8}, 160), (PictureSize{160, 80}));
    EXPECT_EQ(ThumbnailSize({1, 1}, 160), (PictureSize{160, 160}));
    EXPECT_EQ(ThumbnailSize({39, 39}, 160), (PictureSize{156, 156}));
}

}  // namespace
