#include "hosts/qfc/media/DecodedMedia.h"

#include "tests/qfc/ExifBuilder.h"
#include "tests/qfc/MediaMaker.h"

#include <cmath>
#include <gtest/gtest.h>
#include <set>

namespace {

using namespace qfc::test;
using qfc::host::MediaKind;

class DecodedMediaTest : public testing::Test {
protected:
    static DecodedMedia Good(const std::string& path) {
        DecodedMedia media = Decode(path);
        EXPECT_EQ(media.error, "") << path;
        return media;
    }
    // Ten whole bitmaps, each of the announced size and all with one width and height.
    static void ExpectWholeFilm(const DecodedMedia& media) {
        const auto frames = FilmFrames(media);
        ASSERT_EQ(frames.size(), 10u);
        EXPECT_EQ(media.thumbnails.film.size(), 10 * std::size_t{media.thumbnails.frameSize});
        for (const auto& frame : frames) {
            const auto picture = qfc::host::ReadDib(frame);
            ASSERT_TRUE(picture);
            EXPECT_EQ(SizeOf(*picture), SizeOf(Cache(media)));
            EXPECT_EQ(frame.size(), qfc::host::PackedDibSize(SizeOf(*picture)));
        }
    }
    static std::size_t DifferentFrames(const DecodedMedia& media) {
        const auto frames = FilmFrames(media);
        return std::set(frames.begin(), frames.end()).size();
    }

    MediaMaker m_maker;
};

TEST_F(DecodedMediaTest, AVideoWithSoundGivesAllItsFacts) {
    const std::string path = m_maker.Make(
        "clip.mp4",
        "-f lavfi -i testsrc2=s=320x180:r=25:d=4 -f lavfi -i sine=f=440:d=4:r=44100 -c:v libx264 -preset "
        "ultrafast -pix_fmt yuv420p -c:a aac -ac 2 -shortest -metadata creation_time=2021-05-14T09:30:00Z");
    const DecodedMedia media = Good(path);
    EXPECT_EQ(media.type, 1u);
    EXPECT_EQ(media.facts.kind, MediaKind::Video);
    EXPECT_NEAR(media.facts.duration, 4, 0.1);
    EXPECT_EQ(media.facts.frameRate, 25);
    EXPECT_EQ(media.facts.width, 320);
    EXPECT_EQ(media.facts.height, 180);
    EXPECT_EQ(media.facts.codec, "h264");
    EXPECT_EQ(media.facts.audioCodec, "aac");
    EXPECT_EQ(media.facts.channels, 2);
    EXPECT_EQ(media.facts.sampleRate, 44100);
    EXPECT_EQ(media.facts.container, "mp4");
    EXPECT_EQ(media.facts.fileSize, std::filesystem::file_size(path));
    EXPECT_TRUE(media.description.starts_with("2021 5 14 9 30 0 ")) << media.description;
    EXPECT_NE(media.blackBox.find("\"codec\":\"h264\""), std::string::npos);
}

TEST_F(DecodedMediaTest, AVideoHasAFilmOfTenDifferentFrames) {
    const DecodedMedia media = Good(m_maker.Video("clip.avi"));
    ExpectWholeFilm(media);
    EXPECT_EQ(DifferentFrames(media), 10u);
    EXPECT_EQ(SizeOf(Cache(media)), (PictureSize{160, 90}));
}

TEST_F(DecodedMediaTest, FramesDifferThoughAllButTheFirstLackAKeyFrame) {
    const DecodedMedia media =
        Good(m_maker.Video("clip.mkv", "-c:v libx264 -preset ultrafast -pix_fmt yuv420p -g 1000 -sc_threshold 0", 8));
    ExpectWholeFilm(media);
    EXPECT_EQ(DifferentFrames(media), 10u);
}

// Brightness grows with time, so the order of the frames can be seen.
TEST_F(DecodedMediaTest, FramesComeFromPlacesSpreadOverTheWholeClipInTheirOrder) {
    for (const char* encoding : {"-c:v mpeg4 -q:v 2 -g 250", "-c:v mpeg4 -q:v 2 -g 12", "-c:v mjpeg -q:v 2"}) {
        const DecodedMedia media = Good(m_maker.Make(
            "grow.avi",
            std::string("-f lavfi -i color=black:s=64x64:r=25:d=20,format=gray,geq=lum='16+200*T/20' ") + encoding));
        int last = -1;
        for (const auto& frame : FilmFrames(media)) {
            const int light = static_cast<int>(qfc::host::ReadDib(frame)->At(32, 32) & 0xFF);
            EXPECT_GT(light, last + 8) << encoding;
            last = light;
        }
        EXPECT_GT(last, 190) << encoding;
    }
}

TEST_F(DecodedMediaTest, AClipOfThreeFramesShowsEachAndStillHasTen) {
    const DecodedMedia media = Good(m_maker.Video("short.avi", "-c:v mjpeg", 0.12));
    ExpectWholeFilm(media);
    EXPECT_EQ(DifferentFrames(media), 3u);
}

TEST_F(DecodedMediaTest, AClipOfOneFrameIsAFilmOfThatFrame) {
    const DecodedMedia media = Good(m_maker.Video("one.avi", "-c:v mjpeg -frames:v 1", 1));
    ExpectWholeFilm(media);
    EXPECT_EQ(DifferentFrames(media), 1u);
}

TEST_F(DecodedMediaTest, ARawStreamWithoutALengthGetsOneByReadingIt) {
    const DecodedMedia media = Good(m_maker.Video("raw.m2v", "-c:v mpeg2video -b:v 200k", 6));
    ExpectWholeFilm(media);
    EXPECT_EQ(DifferentFrames(media), 10u);
    EXPECT_NEAR(media.facts.duration, 6, 0.2);
}

TEST_F(DecodedMediaTest, TheShownFrameIsNotTheBlackBeginning) {
    const DecodedMedia media =
        Good(m_maker.Make("fade.avi", "-f lavfi -i testsrc2=s=320x180:r=25:d=10 -vf fade=in:0:100 -c:v mpeg4 -q:v 5"));
    EXPECT_GT(media.thumbnails.shownFrame, 0u);
    EXPECT_EQ(media.thumbnails.cache, FilmFrames(media)[media.thumbnails.shownFrame]);
}

TEST_F(DecodedMediaTest, AVideoIsTurnedAsItsDisplayMatrixDemands) {
    const std::string plain =
        m_maker.Make("plain.mp4",
                     "-f lavfi -i color=blue:s=320x180:r=25:d=2 -vf drawbox=w=160:h=180:color=red:t=fill -c:v libx264 "
                     "-preset ultrafast -pix_fmt yuv420p");
    // The number is what this ffmpeg makes of it: 270 turns clockwise by a quarter, so that what was left is on top.
    for (const auto& [number, top] : {std::pair{"270", 0xFF0000u}, std::pair{"90", 0x0000FFu}}) {
        const DecodedMedia media =
            Good(m_maker.Make("turned.mp4", "-i '" + plain + "' -c copy -metadata:s:v rotate=" + std::string(number)));
        EXPECT_EQ(media.facts.width, 180);
        EXPECT_EQ(media.facts.height, 320);
        const Picture picture = Cache(media);
        ASSERT_EQ(SizeOf(picture), (PictureSize{90, 160}));
        EXPECT_TRUE(IsNear(picture.At(45, 30), top)) << number << std::hex << picture.At(45, 30);
        EXPECT_TRUE(IsNear(picture.At(45, 130), top ^ 0xFF00FFu)) << number << std::hex << picture.At(45, 130);
        ExpectWholeFilm(media);
    }
}

TEST_F(DecodedMediaTest, AVideoUpsideDownKeepsItsSides) {
    const std::string plain =
        m_maker.Make("plain.mp4",
                     "-f lavfi -i color=blue:s=320x180:r=25:d=2 -vf drawbox=w=160:h=180:color=red:t=fill -c:v libx264 "
                     "-preset ultrafast -pix_fmt yuv420p");
    const DecodedMedia media = Good(m_maker.Make("turned.mp4", "-i '" + plain + "' -c copy -metadata:s:v rotate=180"));
    EXPECT_EQ(media.facts.width, 320);
    const Picture picture = Cache(media);
    ASSERT_EQ(SizeOf(picture), (PictureSize{160, 90}));
    EXPECT_TRUE(IsNear(picture.At(30, 45), 0x0000FF)) << std::hex << picture.At(30, 45);
}

TEST_F(DecodedMediaTest, PixelsThatAreNotSquareAreMadeSo) {
    const DecodedMedia media = Good(m_maker.Video("wide.mkv", "-vf setsar=2 -c:v mpeg4", 1, "160x180"));
    EXPECT_EQ(media.facts.width, 320);
    EXPECT_EQ(SizeOf(Cache(media)), (PictureSize{160, 90}));
}

TEST_F(DecodedMediaTest, ASoundGetsAWaveformAndNoFilm) {
    for (const char* name :
         {"sound.wav", "sound.flac", "sound.ogg", "sound.mp3", "sound.opus", "sound.m4a", "sound.aiff"}) {
        const DecodedMedia media = Good(m_maker.Make(name, "-f lavfi -i sine=f=440:d=2 -ac 2"));
        EXPECT_EQ(media.type, 2u) << name;
        EXPECT_NEAR(media.facts.duration, 2, 0.1) << name;
        EXPECT_EQ(media.facts.channels, 2) << name;
        EXPECT_EQ(media.facts.width, 0) << name;
        EXPECT_EQ(SizeOf(Cache(media)), (PictureSize{160, 90})) << name;
        EXPECT_TRUE(media.thumbnails.film.empty()) << name;
        EXPECT_EQ(media.thumbnails.frameSize, 0u) << name;
    }
}

TEST_F(DecodedMediaTest, CoverArtDoesNotMakeASoundAVideo) {
    const DecodedMedia media =
        Good(m_maker.Make("song.mp3",
                          "-f lavfi -i sine=d=2 -f lavfi -i color=red:s=64x64:d=0.04 -map 0 -map 1 -frames:v 1 -c:v "
                          "mjpeg -disposition:v attached_pic -id3v2_version 3"));
    EXPECT_EQ(media.facts.kind, MediaKind::Audio);
    EXPECT_EQ(media.type, 2u);
    EXPECT_TRUE(media.thumbnails.film.empty());
}

TEST_F(DecodedMediaTest, SoundAloneInAVideoContainerIsASound) {
    EXPECT_EQ(Good(m_maker.Make("talk.mp4", "-f lavfi -i sine=d=1 -c:a aac")).type, 2u);
}

TEST_F(DecodedMediaTest, ALongSoundIsLookedAtAllOverItsLength) {
    // Silent but for its last tenth.
    const DecodedMedia media =
        Good(m_maker.Make("long.wav", "-f lavfi -i \"aevalsrc='if(gt(t,900),0.8*sin(2000*t),0)':d=1000:s=4000\""));
    EXPECT_NEAR(media.facts.duration, 1000, 1);
    const Picture picture = Cache(media);
    EXPECT_NE(picture.At(155, 20), picture.At(100, 20));
    EXPECT_EQ(picture.At(20, 20), picture.At(100, 20));
}

TEST_F(DecodedMediaTest, ImagesOfEveryKindAreRead) {
    for (const char* name : {"a.jpg", "a.png", "a.tiff", "a.webp", "a.bmp", "a.gif", "a.tga", "a.ppm", "a.jp2", "a.pcx",
                             "a.sgi", "a.xbm", "a.PNG", "a.jls", "a.apng", "a.dpx"}) {
        const DecodedMedia media = Good(m_maker.Image(name));
        EXPECT_EQ(media.type, 4u) << name;
        EXPECT_EQ(media.facts.width, 320) << name;
        EXPECT_EQ(media.facts.height, 180) << name;
        EXPECT_EQ(media.facts.duration, 0) << name;
        EXPECT_EQ(media.facts.frameRate, 0) << name;
        EXPECT_EQ(SizeOf(Cache(media)), (PictureSize{160, 90})) << name;
        EXPECT_TRUE(media.thumbnails.film.empty()) << name;
    }
}

TEST_F(DecodedMediaTest, ThumbnailsHaveTheColoursOfTheirPicture) {
    for (const char* name : {"red.png", "red.jpg", "red.bmp", "red.webp", "red.tif"}) {
        const Picture picture = Cache(Good(m_maker.Make(name, "-f lavfi -i color=0xE02040:s=200x100 -frames:v 1")));
        EXPECT_TRUE(IsNear(picture.At(80, 40), 0xE02040, 12)) << name << std::hex << picture.At(80, 40);
    }
}

TEST_F(DecodedMediaTest, TheCacheIsA24BitBitmapWithItsBottomRowFirst) {
    const DecodedMedia media = Good(
        m_maker.Make("halves.png", "-f lavfi -i color=black:s=102x50 -frames:v 1 -vf drawbox=h=25:color=white:t=fill"));
    const auto& dib = media.thumbnails.cache;
    ASSERT_EQ(dib.size(), 40u + 308u * 50u);
    EXPECT_EQ(dib[0], 40);
    EXPECT_EQ(dib[4], 102);
    EXPECT_EQ(dib[8], 50);
    EXPECT_EQ(dib[14], 24);
    EXPECT_LT(dib[40], 20);              // the first row in memory is the lowest
    EXPECT_GT(dib[40 + 308 * 49], 235);  // the last is the highest
}

TEST_F(DecodedMediaTest, AJpegStaysAsStoredAndItsFactsTellTheTurn) {
    const std::string plain = ReadFile(m_maker.Image("plain.jpg"));
    const std::string path = m_maker.Folder().Write(
        "turned.jpg", WithExif(plain, ExifBlock({.orientation = 6, .original = "2020:02:19 16:35:05"})));
    const DecodedMedia media = Good(path);
    EXPECT_EQ(SizeOf(Cache(media)), (PictureSize{160, 90}));
    EXPECT_EQ(media.facts.rotation, 90);
    EXPECT_EQ(media.facts.width, 180);
    EXPECT_EQ(media.facts.height, 320);
    EXPECT_TRUE(media.description.starts_with("2020 2 19 16 35 5 ")) << media.description;
}

TEST_F(DecodedMediaTest, ATiffStaysAsStoredToo) {
    const DecodedMedia media = Good(m_maker.Folder().Write("turned.tif", TiffFile(320, 180, 8, false)));
    EXPECT_EQ(SizeOf(Cache(media)), (PictureSize{160, 90}));
    EXPECT_EQ(media.facts.rotation, 270);
    EXPECT_EQ(media.facts.width, 180);
}

TEST_F(DecodedMediaTest, WhatIsTransparentShowsChequers) {
    const Picture picture =
        Cache(Good(m_maker.Make("clear.png", "-f lavfi -i color=red@0:s=200x200,format=rgba -frames:v 1")));
    std::set<std::uint32_t> colours(picture.pixels.begin(), picture.pixels.end());
    EXPECT_TRUE(colours.contains(0xFF9DA5AF));
    EXPECT_TRUE(colours.contains(0xFF89919B));
}

TEST_F(DecodedMediaTest, SizesOfOnePixelAndExtremeShapesWork) {
    for (const char* size : {"1x1", "1x300", "300x1", "3x5", "4000x2", "2x4000", "161x1"}) {
        const DecodedMedia media =
            Good(m_maker.Make("a.png", "-f lavfi -i testsrc2=s=64x64 -frames:v 1 -s " + std::string(size)));
        const Picture picture = Cache(media);
        EXPECT_FALSE(picture.IsEmpty()) << size;
        EXPECT_LE(std::max(picture.width, picture.height), 160) << size;
    }
}

TEST_F(DecodedMediaTest, WithoutARecordingTimeTheModificationStandsTwice) {
    const std::string path = m_maker.Image("a.png");
    const auto time = std::chrono::file_clock::from_sys(std::chrono::sys_seconds{std::chrono::seconds{1714990830}});
    std::filesystem::last_write_time(path, time);
    const DecodedMedia media = Good(path);
    EXPECT_EQ(media.facts.modified, 1714990830);
    EXPECT_EQ(media.description, "2024 5 6 10 20 30 2024 5 6 10 20 30");
}

TEST_F(DecodedMediaTest, AWrongExtensionOfTheSameKindDoesNotMatter) {
    const std::string png = m_maker.Image("real.png");
    std::filesystem::rename(png, m_maker.Folder() / "wrong.jpg");
    EXPECT_EQ(Good(m_maker.Folder() / "wrong.jpg").facts.codec, "png");
    const std::string mkv = m_maker.Video("real.mkv", "-c:v mpeg4", 0.5);
    std::filesystem::rename(mkv, m_maker.Folder() / "wrong.mp4");
    EXPECT_EQ(Good(m_maker.Folder() / "wrong.mp4").facts.container, "matroska");
}

TEST_F(DecodedMediaTest, NamesWithPatternsAndColonsAreNamesLikeAnyOther) {
    for (const char* name : {"shot%03d.jpg", "shot%03d.tga", "a*?.png", "http:x.png", "concat:a|b.jpg", "-i.png"})
        EXPECT_EQ(Good(m_maker.Folder().Write(
                           name, ReadFile(m_maker.Image(std::string("plain") +
                                                        std::string(name).substr(std::string(name).rfind('.'))))))
                      .type,
                  4u)
            << name;
}

TEST_F(DecodedMediaTest, TheContentTellsTheKindWhateverTheNameSays) {
    const auto called = [&](const std::string& source, const std::string& name) {
        return Good(m_maker.Folder().Write(name, ReadFile(source)));
    };
    const std::string image = m_maker.Image("i.jpg");
    const std::string video = m_maker.Video("v.mp4", "-c:v mpeg4", 0.5);
    const std::string sound = m_maker.Make("s.flac", "-f lavfi -i sine=d=1");
    for (const char* name : {"image.mp4", "image", "image.txt", "image.unknown", ".image"})
        EXPECT_EQ(called(image, name).type, 4u) << name;
    for (const char* name : {"video.jpg", "video", "video.txt", "video.flac", "video.tga"})
        EXPECT_EQ(called(video, name).type, 1u) << name;
    for (const char* name : {"sound.png", "sound", "sound.log"}) EXPECT_EQ(called(sound, name).type, 2u) << name;
    EXPECT_EQ(called(m_maker.Image("moving.gif"), "gif.mp4").type, 4u);
}

TEST_F(DecodedMediaTest, AnAvifIsAnImage_UnderAnyName) {
    const std::string still = m_maker.Image("a.avif", "320x180", "-c:v libaom-av1 -cpu-used 8 -still-picture 1");
    const std::string other = m_maker.Folder().Write("other", ReadFile(still));
    for (const std::string& path : {still, other}) {
        const DecodedMedia media = Good(path);
        EXPECT_EQ(media.type, 4u) << path;
        EXPECT_EQ(media.facts.width, 320) << path;
        EXPECT_TRUE(media.thumbnails.film.empty()) << path;
    }
}

TEST_F(DecodedMediaTest, RecordingsAndStereoFilmsAreVideos) {
    EXPECT_EQ(Good(m_maker.Video("a.trp", "-c:v mpeg2video -f mpegts", 1)).type, 1u);
    EXPECT_EQ(Good(m_maker.Video("a.mk3d", "-c:v mpeg4 -f matroska", 1)).type, 1u);
}

TEST_F(DecodedMediaTest, DrawingsInTextAreImages_WhenTheirNamePromisesIt) {
    const std::string svg =
        "<svg xmlns='http://www.w3.org/2000/svg' width='64' height='32'><rect width='64' height='32' "
        "fill='#E02040'/></svg>";
    const DecodedMedia media = Good(m_maker.Folder().Write("a.svg", svg));
    EXPECT_EQ(media.type, 4u);
    EXPECT_EQ(media.facts.width, 64);
    EXPECT_TRUE(IsNear(Cache(media).At(20, 20), 0xE02040));
    EXPECT_EQ(Good(m_maker.Folder().Write("a.ppm", "P3\n2 1\n255\n255 0 0 0 255 0\n")).type, 4u);
    EXPECT_FALSE(Decode(m_maker.Folder().Write("drawing", svg)).isMedia);
    EXPECT_FALSE(Decode(m_maker.Folder().Write("list.txt", "P3\n2 1\n255\n255 0 0 0 255 0\n")).isMedia);
}

TEST_F(DecodedMediaTest, SoundsThatOnlyTheirNameTellsAreRead) {
    for (const char* name : {"a.g722", "a.sln"}) {
        const std::string raw = std::string("-f lavfi -i sine=d=1 -ar 16000 -ac 1") +
                                (name == std::string("a.sln") ? " -c:a pcm_s16le -f s16le" : "");
        EXPECT_EQ(Good(m_maker.Make(name, raw)).type, 2u) << name;
    }
}

}  // namespace
