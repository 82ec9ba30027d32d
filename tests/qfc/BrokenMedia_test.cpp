#include "tests/qfc/MediaMaker.h"

#include <atomic>
#include <gtest/gtest.h>
#include <random>
#include <sys/stat.h>

namespace {

using namespace qfc::test;

class BrokenMediaTest : public testing::Test {
protected:
    DecodedMedia DecodeContent(const std::string& name, const std::string& content) const {
        return Decode(m_maker.Folder().Write(name, content));
    }
    // Either an error in words, or payloads that hold what they announce.
    static void ExpectSound(const DecodedMedia& media, const std::string& hint) {
        if (!media.IsGood()) {
            EXPECT_TRUE(media.thumbnails.cache.empty()) << hint;
            EXPECT_EQ(media.error.find('\n'), std::string::npos) << hint;
            return;
        }
        EXPECT_FALSE(Cache(media).IsEmpty()) << hint;
        if (media.type != 1) return;
        const auto frames = FilmFrames(media);
        EXPECT_EQ(frames.size(), 10u) << hint;
        for (const auto& frame : frames) EXPECT_TRUE(qfc::host::ReadDib(frame)) << hint;
    }

    MediaMaker m_maker;
};

TEST_F(BrokenMediaTest, TextIsNoMediaWhateverItsNameSays) {
    const std::string text(5000, 'a');
    for (const char* name : {"a.txt", "a.mp4", "a.avi", "a.mp3", "a.wav", "a.jpg", "a.png", "a.tga", "a.mkv", "a.mpg"})
        EXPECT_FALSE(DecodeContent(name, "This is a text.\n" + text).IsGood()) << name;
}

TEST_F(BrokenMediaTest, WhatIsMediaNeitherByNameNorByContent_IsToldFromBrokenMedia) {
    const std::string text = "This is a text.\n" + std::string(5000, 'a');
    EXPECT_TRUE(DecodeContent("broken.mp4", text).isMedia);
    EXPECT_TRUE(DecodeContent("empty.jpg", "").isMedia);
    for (const char* name : {"notes.txt", "notes", "notes.unknown", "README.md"}) {
        EXPECT_FALSE(DecodeContent(name, text).isMedia) << name;
        EXPECT_FALSE(DecodeContent(name, "").isMedia) << name;
        EXPECT_FALSE(DecodeContent(name, std::string(5000, '\0')).isMedia) << name;
    }
}

TEST_F(BrokenMediaTest, ACompressedTextIsNoMusic) {
    const std::string gzip("\x1F\x8B\x08\0\0\0\0\0\0\x03\xCB\x48\xCD\xC9\xC9\x07\0\x86\xA6\x10\x36\x05\0\0\0", 25);
    for (const char* name : {"changelog.gz", "changelog"})
        EXPECT_FALSE(DecodeContent(name, gzip + std::string(20000, '\x55')).isMedia) << name;
}

TEST_F(BrokenMediaTest, TextsPlaylistsAndScriptsAreNoMedia_WhateverTheyAreCalled) {
    const std::string real = m_maker.Video("real.ts", "-c:v mpeg2video", 1);
    const std::vector<std::string> contents = {
        "ffconcat version 1.0\nfile 'real.ts'\n",
        "#EXTM3U\n#EXT-X-TARGETDURATION:1\n#EXTINF:1,\nreal.ts\n#EXT-X-ENDLIST\n",
        "<?xml version='1.0'?><MPD xmlns='urn:mpeg:dash:schema:mpd:2011' "
        "profiles='urn:mpeg:dash:profile:isoff-live:2011'/>",
        "v=0\no=- 0 0 IN IP4 127.0.0.1\ns=x\nc=IN IP4 127.0.0.1\nm=video 5004 RTP/AVP 96\n",
        "#!/bin/sh\necho hello\n",
        "1\n00:00:01,000 --> 00:00:02,000\nA subtitle\n",
        ";FFMETADATA1\ntitle=x\n",
        "\x1b[1mcoloured letters\x1b[0m\n",
    };
    for (const std::string& content : contents) {
        for (const char* name : {"a", "a.txt", "a.m3u8", "a.sdp", "a.nfo", "a.mpd"})
            EXPECT_FALSE(DecodeContent(name, content).isMedia) << name << ": " << content;
        for (const char* name : {"a.mp4", "a.ts", "a.tga", "a.svg", "a.gsm"})
            EXPECT_FALSE(DecodeContent(name, content).IsGood()) << name << ": " << content;
    }
}

TEST_F(BrokenMediaTest, AnEmptyFileIsNamedSo) {
    EXPECT_EQ(DecodeContent("a.mp4", "").error, "the file is empty");
    EXPECT_EQ(DecodeContent("a.jpg", "").error, "the file is empty");
}

TEST_F(BrokenMediaTest, ZerosAndNoiseAreNoMedia) {
    std::mt19937 random(3);
    std::string noise(100000, '\0');
    for (const char* name : {"z.mp4", "z.jpg", "z.wav", "z.mkv"})
        EXPECT_FALSE(DecodeContent(name, noise).IsGood()) << name;
    for (char& c : noise) c = static_cast<char>(random());
    for (const char* name : {"n.mp4", "n.jpg", "n.wav", "n.mkv"})
        EXPECT_FALSE(DecodeContent(name, noise).IsGood()) << name;
}

TEST_F(BrokenMediaTest, WhatIsNoFileIsRefusedWithoutWaiting) {
    const std::string pipe = m_maker.Folder() / "pipe.mp4";
    ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
    EXPECT_EQ(Decode(pipe).error, "not a regular file");
    EXPECT_EQ(Decode(m_maker.Folder().MakeFolder("folder.mp4")).error, "not a regular file");
    EXPECT_EQ(Decode(m_maker.Folder() / "missing.mp4").error, "no such file");
}

TEST_F(BrokenMediaTest, APlaylistOpensNoOtherFile) {
    const std::string real = m_maker.Video("real.ts", "-c:v mpeg2video", 1);
    EXPECT_FALSE(DecodeContent("a.mp4", "ffconcat version 1.0\nfile 'real.ts'\n").IsGood());
    EXPECT_FALSE(
        DecodeContent("b.ts", "#EXTM3U\n#EXT-X-TARGETDURATION:1\n#EXTINF:1,\nreal.ts\n#EXT-X-ENDLIST\n").IsGood());
}

TEST_F(BrokenMediaTest, AFilmThatBreaksOffShowsWhatThereIs) {
    const std::string whole = ReadFile(
        m_maker.Video("whole.mp4", "-c:v libx264 -preset ultrafast -pix_fmt yuv420p -movflags +faststart", 10));
    const DecodedMedia media = DecodeContent("cut.mp4", whole.substr(0, whole.size() * 4 / 10));
    EXPECT_EQ(media.error, "");
    ExpectSound(media, "cut.mp4");
    EXPECT_NE(FilmFrames(media).front(), FilmFrames(media).back());
}

TEST_F(BrokenMediaTest, AFilmWithoutItsDirectoryIsAnError) {
    const std::string whole = ReadFile(m_maker.Video("whole.mp4", "-c:v mpeg4", 2));
    EXPECT_FALSE(DecodeContent("cut.mp4", whole.substr(0, whole.size() / 2)).IsGood());
}

TEST_F(BrokenMediaTest, AnImageThatAnnouncesABoundlessSizeIsAnError) {
    std::string bmp = ReadFile(m_maker.Image("a.bmp", "16x16"));
    for (const std::size_t at : {std::size_t{18}, std::size_t{22}})
        bmp.replace(at, 4, std::string("\xFF\xFF\x00\x00", 4));
    EXPECT_FALSE(DecodeContent("huge.bmp", bmp).IsGood());
}

TEST_F(BrokenMediaTest, WorkThatIsOutOfTimeEnds) {
    for (const std::string& path :
         {m_maker.Video("a.mp4"), m_maker.Image("a.png"), m_maker.Make("a.wav", "-f lavfi -i sine=d=2")}) {
        const DecodedMedia media = qfc::host::DecodeMedia(path, qfc::host::TimeLimit(std::chrono::seconds(0)));
        EXPECT_FALSE(media.IsGood()) << path;
        EXPECT_TRUE(media.thumbnails.cache.empty()) << path;
    }
}

TEST_F(BrokenMediaTest, WorkThatIsCancelledEnds) {
    const std::atomic<bool> cancelled{true};
    const DecodedMedia media =
        qfc::host::DecodeMedia(m_maker.Video("a.mp4"), qfc::host::TimeLimit(std::chrono::seconds(60), &cancelled));
    EXPECT_FALSE(media.IsGood());
}

struct Sample {
    const char* name;
    const char* arguments;
};

class DamagedMediaTest : public BrokenMediaTest, public testing::WithParamInterface<Sample> {
protected:
    std::string Whole() const { return ReadFile(m_maker.Make(GetParam().name, GetParam().arguments)); }
    std::string NameOf(int number) const { return std::to_string(number) + "-" + GetParam().name; }
};

TEST_P(DamagedMediaTest, EveryTruncationGivesAnErrorOrWholePayloads) {
    const std::string whole = Whole();
    constexpr int kSteps = 40;
    for (int i = 0; i < kSteps; ++i) {
        const std::size_t length =
            i < 10 ? static_cast<std::size_t>(i * 4 + 1) : whole.size() * static_cast<std::size_t>(i) / kSteps;
        ExpectSound(DecodeContent(NameOf(i), whole.substr(0, length)), NameOf(i));
    }
}

TEST_P(DamagedMediaTest, FlippedBytesGiveAnErrorOrWholePayloads) {
    const std::string whole = Whole();
    std::mt19937 random(11);
    for (int i = 0; i < 40; ++i) {
        std::string damaged = whole;
        // Damage in the first bytes hits headers, elsewhere the pictures and samples.
        const std::size_t reach = i % 2 == 0 ? std::min<std::size_t>(400, whole.size()) : whole.size();
        for (int n = 0; n < 1 + i / 4; ++n) damaged[random() % reach] = static_cast<char>(random());
        ExpectSound(DecodeContent(NameOf(i), damaged), NameOf(i));
    }
}

INSTANTIATE_TEST_SUITE_P(
    Formats, DamagedMediaTest,
    testing::Values(Sample{"v.mp4",
                           "-f lavfi -i testsrc2=s=64x48:r=10:d=4 -f lavfi -i sine=d=4 -c:v libx264 -preset ultrafast "
                           "-pix_fmt yuv420p -c:a aac -movflags +faststart"},
                    Sample{"v.avi", "-f lavfi -i testsrc2=s=64x48:r=10:d=4 -c:v mpeg4"},
                    Sample{"v.mkv", "-f lavfi -i testsrc2=s=64x48:r=10:d=4 -c:v mpeg4"},
                    Sample{"v.mpg", "-f lavfi -i testsrc2=s=64x48:r=25:d=4 -c:v mpeg2video"},
                    Sample{"v.webm", "-f lavfi -i testsrc2=s=64x48:r=10:d=2 -c:v libvpx -deadline realtime"},
                    Sample{"a.ogg", "-f lavfi -i sine=d=1 -c:a libvorbis"}, Sample{"a.mp3", "-f lavfi -i sine=d=1"},
                    Sample{"a.wav", "-f lavfi -i sine=d=1"}, Sample{"a.flac", "-f lavfi -i sine=d=1"},
                    Sample{"i.jpg", "-f lavfi -i testsrc2=s=64x48 -frames:v 1"},
                    Sample{"i.png", "-f lavfi -i testsrc2=s=64x48 -frames:v 1"},
                    Sample{"i.gif", "-f lavfi -i testsrc2=s=64x48 -frames:v 2"},
                    Sample{"i.tif", "-f lavfi -i testsrc2=s=64x48 -frames:v 1"},
                    Sample{"i.webp", "-f lavfi -i testsrc2=s=64x48 -frames:v 1"},
                    Sample{"i.bmp", "-f lavfi -i testsrc2=s=64x48 -frames:v 1"},
                    Sample{"i.tga", "-f lavfi -i testsrc2=s=64x48 -frames:v 1"}),
    [](const auto& parameter) {
        std::string name = parameter.param.name;
        name[1] = '_';
        return name;
    });

}  // namespace
