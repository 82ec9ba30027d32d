#include "platform/media/PackedDib.h"

#include <cstring>
#include <gtest/gtest.h>

namespace {

constexpr BYTE kHeader[40] = {40, 0, 0, 0, 160, 0, 0, 0, 0xA6, 0xFF, 0xFF, 0xFF, 1, 0, 24, 0, 0, 0, 0, 0,
                              1,  2, 3, 4, 5,   0, 0, 0, 6,    0,    0,    0,    7, 0, 0,  0, 8, 0, 0, 0};

TEST(DibHeader, IsReadFieldByField) {
    const auto header = qfc::ReadDibHeader(kHeader, sizeof(kHeader));
    ASSERT_TRUE(header);
    EXPECT_EQ(header->biSize, 40u);
    EXPECT_EQ(header->biWidth, 160);
    EXPECT_EQ(header->biHeight, -90);
    EXPECT_EQ(header->biPlanes, 1);
    EXPECT_EQ(header->biBitCount, 24);
    EXPECT_EQ(header->biCompression, 0u);
    EXPECT_EQ(header->biSizeImage, 0x04030201u);
    EXPECT_EQ(header->biXPelsPerMeter, 5);
    EXPECT_EQ(header->biYPelsPerMeter, 6);
    EXPECT_EQ(header->biClrUsed, 7u);
    EXPECT_EQ(header->biClrImportant, 8u);
}

TEST(DibHeader, NeedNotBeAligned) {
    BYTE shifted[41];
    std::memcpy(shifted + 1, kHeader, sizeof(kHeader));
    EXPECT_EQ(qfc::ReadDibHeader(shifted + 1, 40)->biWidth, 160);
}

TEST(DibHeader, TooFewBytesOrNone_AreNoHeader) {
    EXPECT_FALSE(qfc::ReadDibHeader(kHeader, 39));
    EXPECT_FALSE(qfc::ReadDibHeader(nullptr, 40));
}

}  // namespace
