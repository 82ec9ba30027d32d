#include "hosts/qfc/pictures/Dib.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <limits>
#include <random>
#include <span>

namespace {

using qfc::host::PackDib;
using qfc::host::PackedDibSize;
using qfc::host::Picture;
using qfc::host::ReadDib;
using Bytes = std::vector<std::uint8_t>;

void Put(Bytes& bytes, std::size_t at, std::uint32_t value, int count) {
    for (int i = 0; i < count; ++i) bytes[at + static_cast<std::size_t>(i)] = static_cast<std::uint8_t>(value >> 8 * i);
}

Bytes Header(std::int32_t width, std::int32_t height, unsigned bits, std::size_t size) {
    Bytes bytes(size);
    Put(bytes, 0, 40, 4);
    Put(bytes, 4, static_cast<std::uint32_t>(width), 4);
    Put(bytes, 8, static_cast<std::uint32_t>(height), 4);
    Put(bytes, 12, 1, 2);
    Put(bytes, 14, bits, 2);
    return bytes;
}

TEST(Dib, PackedRowsStartAtTheBottomAndArePaddedToFour) {
    Picture picture(1, 2);
    picture.At(0, 0) = 0xFF112233;
    picture.At(0, 1) = 0xFF445566;
    const Bytes dib = PackDib(picture);
    ASSERT_EQ(dib.size(), 48u);
    EXPECT_EQ(PackedDibSize({1, 2}), 48u);
    Bytes expected = Header(1, 2, 24, 48);
    Put(expected, 20, 8, 4);
    Put(expected, 40, 0x00445566, 4);
    Put(expected, 44, 0x00112233, 4);
    EXPECT_EQ(dib, expected);
}

TEST(Dib, APackedPictureIsReadBackAsItWas) {
    std::mt19937 random(7);
    for (const int width : {1, 2, 3, 4, 5, 160}) {
        Picture picture(width, 7);
        for (auto& pixel : picture.pixels) pixel = 0xFF000000u | random();
        const auto read = ReadDib(PackDib(picture));
        ASSERT_TRUE(read) << width;
        EXPECT_EQ(read->width, width);
        EXPECT_EQ(read->height, 7);
        EXPECT_EQ(read->pixels, picture.pixels) << width;
    }
}

TEST(Dib, AnEmptyPictureGivesNoBytes) { EXPECT_TRUE(PackDib(Picture{}).empty()); }

TEST(Dib, EightBitsAreReadThroughThePalette) {
    Bytes dib = Header(2, 1, 8, 40 + 1024 + 4);
    Put(dib, 40 + 4 * 9, 0x00A0B0C0, 4);
    dib[40 + 1024] = 9;
    const auto picture = ReadDib(dib);
    ASSERT_TRUE(picture);
    EXPECT_EQ(picture->At(0, 0), 0xFFA0B0C0u);
    EXPECT_EQ(picture->At(1, 0), 0xFF000000u);
}

TEST(Dib, AShorterPaletteEndsWhereTheHeaderSays) {
    Bytes dib = Header(2, 1, 8, 40 + 2 * 4 + 4);
    Put(dib, 32, 2, 4);
    Put(dib, 44, 0x00FFFFFF, 4);
    dib[48] = 1;
    dib[49] = 200;  // no such entry
    const auto picture = ReadDib(dib);
    ASSERT_TRUE(picture);
    EXPECT_EQ(picture->At(0, 0), 0xFFFFFFFFu);
    EXPECT_EQ(picture->At(1, 0), 0xFF000000u);
}

TEST(Dib, ThirtyTwoBitsAreReadWithoutTheFourthByte) {
    Bytes dib = Header(1, 1, 32, 44);
    Put(dib, 40, 0x12345678, 4);
    EXPECT_EQ(ReadDib(dib)->At(0, 0), 0xFF345678u);
}

TEST(Dib, ANegativeHeightStartsAtTheTop) {
    Bytes dib = Header(1, -2, 32, 48);
    Put(dib, 40, 1, 4);
    Put(dib, 44, 2, 4);
    const auto picture = ReadDib(dib);
    ASSERT_TRUE(picture);
    EXPECT_EQ(picture->height, 2);
    EXPECT_EQ(picture->At(0, 0), 0xFF000001u);
}

TEST(Dib, OneByteTooFewIsRefusedAndMoreAreIgnored) {
    const Bytes dib = PackDib(Picture(3, 3));
    Bytes longer(dib.size() + 1);
    std::ranges::copy(dib, longer.begin());
    EXPECT_TRUE(ReadDib(longer));
    EXPECT_FALSE(ReadDib(std::span(dib).first(dib.size() - 1)));
}

TEST(Dib, HeadersThatLieAreRefused) {
    EXPECT_FALSE(ReadDib({}));
    EXPECT_FALSE(ReadDib(Bytes(39)));
    EXPECT_FALSE(ReadDib(Header(0, 1, 24, 100)));
    EXPECT_FALSE(ReadDib(Header(-1, 1, 24, 100)));
    EXPECT_FALSE(ReadDib(Header(1, 0, 24, 100)));
    EXPECT_FALSE(ReadDib(Header(1, 1, 16, 100)));
    EXPECT_FALSE(ReadDib(Header(0x7FFFFFFF, 0x7FFFFFFF, 32, 100)));
    EXPECT_FALSE(ReadDib(Header(1, std::numeric_limits<std::int32_t>::min(), 24, 100)));
    Bytes compressed = Header(1, 1, 24, 100);
    Put(compressed, 16, 1, 4);
    EXPECT_FALSE(ReadDib(compressed));
    Bytes palette = Header(1, 1, 8, 2000);
    Put(palette, 32, 257, 4);
    EXPECT_FALSE(ReadDib(palette));
}

}  // namespace
