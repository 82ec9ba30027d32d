#include "hosts/qfc/media/MediaProbe.h"

#include <gtest/gtest.h>

namespace {

using qfc::host::IsReaderAllowed;
using qfc::host::KindByName;
using qfc::host::MediaKind;
using qfc::host::ReaderByName;

TEST(MediaProbe, ExtensionsTellTheKindWithoutCase) {
    EXPECT_EQ(KindByName("/a/clip.mp4"), MediaKind::Video);
    EXPECT_EQ(KindByName("CLIP.MKV"), MediaKind::Video);
    EXPECT_EQ(KindByName("song.Flac"), MediaKind::Audio);
    EXPECT_EQ(KindByName("photo.JPEG"), MediaKind::Image);
    EXPECT_EQ(KindByName("a.b.c.webp"), MediaKind::Image);
}

TEST(MediaProbe, OtherNamesAreNoMedia) {
    for (const char* name :
         {"notes.txt", "drawing.svg", "list.m3u8", "list.m3u", "mp4", ".mp4", "a.mp4/b", "", ".", "x."})
        EXPECT_EQ(KindByName(name), std::nullopt) << name;
}

TEST(MediaProbe, AReaderIsAllowedByAnyOfItsNames) {
    EXPECT_TRUE(IsReaderAllowed("mov,mp4,m4a,3gp,3g2,mj2", MediaKind::Video));
    EXPECT_TRUE(IsReaderAllowed("matroska,webm", MediaKind::Audio));
    EXPECT_EQ(ReaderByName("x.webm"), "matroska");
}

TEST(MediaProbe, ReadersThatOpenOtherFilesOrReadPlainTextAreRefused) {
    for (const char* reader :
         {"tty", "hls", "concat", "dash", "image2pipe", "lavfi", "subviewer", "ffmetadata", "sdp", ""}) {
        EXPECT_FALSE(IsReaderAllowed(reader, MediaKind::Video)) << reader;
        EXPECT_FALSE(IsReaderAllowed(reader, MediaKind::Image)) << reader;
    }
}

TEST(MediaProbe, AnImageIsNotReadAsAFilmNorAFilmAsAnImage) {
    EXPECT_FALSE(IsReaderAllowed("mpegts", MediaKind::Image));
    EXPECT_FALSE(IsReaderAllowed("png_pipe", MediaKind::Video));
}

}  // namespace
