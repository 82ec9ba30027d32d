#include "hosts/qfc/media/MediaProbe.h"

#include <gtest/gtest.h>

namespace {

using namespace std::string_view_literals;
using qfc::host::IsKnownByNameAlone;
using qfc::host::IsReaderCalled;
using qfc::host::IsReaderOfText;
using qfc::host::IsStillPicture;
using qfc::host::IsText;
using qfc::host::PromisedReader;
using qfc::host::ReaderUse;
using qfc::host::UseOfReader;

TEST(MediaProbe, ExtensionsPromiseAReaderWithoutCase) {
    EXPECT_EQ(PromisedReader("/a/clip.mp4"), "mov");
    EXPECT_EQ(PromisedReader("CLIP.MKV"), "matroska");
    EXPECT_EQ(PromisedReader("song.Flac"), "flac");
    EXPECT_EQ(PromisedReader("a.b.c.webp"), "webp_pipe");
    EXPECT_EQ(PromisedReader("still.avif"), "mov");
    EXPECT_EQ(PromisedReader("recording.trp"), "mpegts");
    EXPECT_EQ(PromisedReader("stereo.mk3d"), "matroska");
}

TEST(MediaProbe, OtherNamesPromiseNothing) {
    for (const char* name : {"notes.txt", "list.m3u8", "list.m3u", "mp4", ".mp4", "a.mp4/b", "", ".", "x.", "x.mp4 "})
        EXPECT_EQ(PromisedReader(name), "") << name;
}

TEST(MediaProbe, EveryPromisedReaderIsAllowed) {
    for (const char* name : {"a.mp4", "a.tga", "a.gsm", "a.svg", "a.xm", "a.ico", "a.thd", "a.y4m", "a.spc"})
        EXPECT_NE(UseOfReader(PromisedReader(name)), ReaderUse::Refused) << name;
}

TEST(MediaProbe, AReaderIsAllowedByAnyOfItsNames) {
    EXPECT_EQ(UseOfReader("mov,mp4,m4a,3gp,3g2,mj2"), ReaderUse::Film);
    EXPECT_EQ(UseOfReader("matroska,webm"), ReaderUse::Film);
    EXPECT_TRUE(IsReaderCalled("matroska,webm", "webm"));
    EXPECT_FALSE(IsReaderCalled("matroska,webm", "web"));
    EXPECT_FALSE(IsReaderCalled("matroska,webm", ""));
}

TEST(MediaProbe, ReadersThatOpenOtherFilesOrReadPlainTextAreRefused) {
    for (const char* reader : {"tty", "hls", "concat", "dash", "imf", "image2pipe", "lavfi", "subviewer", "ffmetadata",
                               "sdp", "rtsp", "webm_dash_manifest", "xbin", "bin", "srt", "rawvideo", "s16le", ""})
        EXPECT_EQ(UseOfReader(reader), ReaderUse::Refused) << reader;
}

TEST(MediaProbe, ReadersOfPicturesAreToldFromThoseOfFilms) {
    for (const char* reader : {"png_pipe", "jpeg_pipe", "gif", "apng", "ico", "image2"})
        EXPECT_EQ(UseOfReader(reader), ReaderUse::Picture) << reader;
    for (const char* reader : {"mpegts", "yuv4mpegpipe", "mjpeg"})
        EXPECT_EQ(UseOfReader(reader), ReaderUse::Film) << reader;
}

TEST(MediaProbe, OnlyAFewReadersTrustANameAlone) {
    EXPECT_TRUE(IsKnownByNameAlone(PromisedReader("a.tga")));
    EXPECT_TRUE(IsKnownByNameAlone(PromisedReader("a.gsm")));
    EXPECT_FALSE(IsKnownByNameAlone(PromisedReader("a.png")));
    EXPECT_FALSE(IsKnownByNameAlone(""));
}

TEST(MediaProbe, TextIsToldByItsControlCharacters) {
    EXPECT_TRUE(IsText("#!/bin/sh\n\techo \x1b[1mgr\xC3\xBC\xC3\x9F\x65\r\n"));
    EXPECT_TRUE(IsText(""));
    EXPECT_FALSE(IsText("RIFF\0\0\0\0"sv));
    EXPECT_FALSE(IsText("a\x01z"));
    EXPECT_TRUE(IsReaderOfText("svg_pipe"));
    EXPECT_FALSE(IsReaderOfText("mov"));
    EXPECT_FALSE(IsReaderOfText(""));
}

TEST(MediaProbe, AStillPictureInAFilmContainerIsToldByItsBrand) {
    EXPECT_TRUE(
        IsStillPicture("\0\0\0\x20"
                       "ftypavif\0\0\0\0"sv));
    EXPECT_TRUE(
        IsStillPicture("\0\0\0\x20"
                       "ftypheic"sv));
    EXPECT_FALSE(
        IsStillPicture("\0\0\0\x20"
                       "ftypisom\0\0\0\0"sv));
    EXPECT_FALSE(
        IsStillPicture("\0\0\0\x20"
                       "ftyp"sv));
    EXPECT_FALSE(IsStillPicture(""));
}

}  // namespace
