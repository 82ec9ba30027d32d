#include "hosts/qfc/pictures/Exif.h"

#include "tests/qfc/ExifBuilder.h"
#include "tests/support/TempFolder.h"

#include <gtest/gtest.h>

namespace {

using qfc::host::ReadExif;
using qfc::host::ReadExifBlock;
using qfc::test::ExifBlock;
using qfc::test::TempFolder;
using qfc::test::TiffFile;
using qfc::test::WithExif;

constexpr std::int64_t kMoment = 1714990830;  // 2024-05-06 10:20:30 UTC

qfc::host::ExifFacts Read(const std::string& block) {
    return ReadExifBlock({reinterpret_cast<const std::uint8_t*>(block.data()), block.size()});
}

TEST(Exif, OrientationsKeepTheRotationAndDropTheMirroring) {
    constexpr int kDegrees[] = {0, 0, 0, 180, 0, 270, 90, 90, 270, 0, 0};
    for (const bool bigEndian : {false, true})
        for (std::uint32_t value = 0; value < std::size(kDegrees); ++value)
            EXPECT_EQ(Read(ExifBlock({.orientation = value, .bigEndian = bigEndian})).rotation, kDegrees[value])
                << value << (bigEndian ? " big" : " little");
}

TEST(Exif, AnOrientationOfAWrongCountIsNoOrientation) {
    qfc::test::TiffBuilder tiff(false);
    tiff.Put(8, 4);
    tiff.Put(1, 2);
    tiff.PutShortEntry(0x0112, 6, 2);
    tiff.Put(0, 4);
    EXPECT_EQ(Read(std::string("Exif\0\0", 6) + tiff.Bytes()).rotation, 0);
}

TEST(Exif, AnOrientationOfAWrongTypeIsNoOrientation) {
    qfc::test::TiffBuilder tiff(false);
    tiff.Put(8, 4);
    tiff.Put(1, 2);
    tiff.PutEntry(0x0112, 4, 1, 6);
    tiff.Put(0, 4);
    EXPECT_EQ(Read(std::string("Exif\0\0", 6) + tiff.Bytes()).rotation, 0);
}

TEST(Exif, TheRecordingTimeIsReadWithItsZone) {
    EXPECT_EQ(Read(ExifBlock({.original = "2024:05:06 10:20:30", .offset = ""})).recorded, kMoment);
    EXPECT_EQ(Read(ExifBlock({.original = "2024:05:06 12:20:30", .offset = "+02:00"})).recorded, kMoment);
}

TEST(Exif, AZoneThatIsNoneIsPassedOver) {
    EXPECT_EQ(Read(ExifBlock({.original = "2024:05:06 10:20:30", .offset = "   :  "})).recorded, kMoment);
    EXPECT_EQ(Read(ExifBlock({.original = "2024:05:06 10:20:30", .offset = "garbage"})).recorded, kMoment);
}

TEST(Exif, ACameraWithoutASetClockTellsNoTime) {
    EXPECT_EQ(Read(ExifBlock({.original = "0000:00:00 00:00:00"})).recorded, std::nullopt);
    EXPECT_EQ(Read(ExifBlock({.original = "                   "})).recorded, std::nullopt);
}

TEST(Exif, JpegSegmentsAreSearchedUpToThePictureData) {
    const TempFolder folder;
    const std::string start("\xFF\xD8\xFF\xE0\x00\x04xx", 8);
    const std::string block = ExifBlock({.orientation = 6});
    EXPECT_EQ(ReadExif(folder.Write("a.jpg", start + WithExif("\xFF\xD8", block).substr(2))).rotation, 90);
    const std::string scan("\xFF\xD8\xFF\xDA\x00\x04xx", 8);
    EXPECT_EQ(ReadExif(folder.Write("b.jpg", scan + WithExif("\xFF\xD8", block).substr(2))).rotation, 0);
}

TEST(Exif, ASmallTiffIsReadWhereverItsDirectoryStands) {
    const TempFolder folder;
    EXPECT_EQ(ReadExif(folder.Write("a.tif", TiffFile(8, 4, 6, false))).rotation, 90);
    EXPECT_EQ(ReadExif(folder.Write("b.tif", TiffFile(8, 4, 8, true))).rotation, 270);
}

TEST(Exif, ADirectoryBehindManyPixelsIsReached) {
    const TempFolder folder;
    EXPECT_EQ(ReadExif(folder.Write("a.tif", TiffFile(300, 200, 3, false))).rotation, 180);
    EXPECT_EQ(ReadExif(folder.Write("b.tif", TiffFile(300, 200, 6, true))).rotation, 90);
}

TEST(Exif, OtherAndBrokenFilesSayNothing) {
    const TempFolder folder;
    EXPECT_EQ(ReadExif(folder / "missing.jpg").rotation, 0);
    EXPECT_EQ(ReadExif(folder.Write("empty.jpg", "")).rotation, 0);
    EXPECT_EQ(ReadExif(folder.Write("text.jpg", "no picture at all")).rotation, 0);
    const std::string tiff = TiffFile(300, 200, 6, false);
    EXPECT_EQ(ReadExif(folder.Write("cut.tif", tiff.substr(0, tiff.size() - 150))).rotation, 0);
}

TEST(Exif, EveryTruncationAndEveryFlippedByteOfABlockIsHarmless) {
    const std::string block = ExifBlock({.orientation = 6, .original = "2024:05:06 10:20:30", .offset = "+02:00"});
    for (std::size_t length = 0; length < block.size(); ++length) Read(block.substr(0, length));
    for (std::size_t at = 0; at < block.size(); ++at) {
        for (const char value : {'\x00', '\x7F', '\xFF'}) {
            std::string damaged = block;
            damaged[at] = value;
            const int rotation = Read(damaged).rotation;
            EXPECT_TRUE(rotation == 0 || rotation == 90 || rotation == 180 || rotation == 270) << at;
        }
    }
}

}  // namespace
