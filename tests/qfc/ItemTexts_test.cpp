#include "hosts/qfc/media/ItemTexts.h"

#include <cstdio>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

namespace {

using namespace qfc::host;

constexpr std::int64_t kRecorded = 1714990830;  // 2024-05-06 10:20:30 UTC
constexpr std::int64_t kModified = 1735689599;  // 2024-12-31 23:59:59 UTC

TEST(ItemTexts, TheDescriptionIsTheRecordingThenTheModification) {
    MediaFacts facts;
    facts.recorded = kRecorded;
    facts.modified = kModified;
    EXPECT_EQ(DescriptionOf(facts), "2024 5 6 10 20 30 2024 12 31 23 59 59");
}

TEST(ItemTexts, WithoutARecordingTheModificationStandsTwice) {
    MediaFacts facts;
    facts.modified = kModified;
    EXPECT_EQ(DescriptionOf(facts), "2024 12 31 23 59 59 2024 12 31 23 59 59");
}

TEST(ItemTexts, TheDescriptionIsReadAsTwelveNumbersBySortingByDate) {
    int n[12] = {};
    EXPECT_EQ(std::sscanf(DescriptionOf({}).c_str(), "%d%d%d %d%d%d %d%d%d %d%d%d", n, n + 1, n + 2, n + 3, n + 4,
                          n + 5, n + 6, n + 7, n + 8, n + 9, n + 10, n + 11),
              12);
    EXPECT_EQ(n[0], 1970);
}

TEST(ItemTexts, TypesAreOneBitByKind) {
    EXPECT_EQ(TypeOf(MediaKind::Video), 1u);
    EXPECT_EQ(TypeOf(MediaKind::Audio), 2u);
    EXPECT_EQ(TypeOf(MediaKind::Image), 4u);
}

MediaFacts Clip() {
    MediaFacts facts;
    facts.kind = MediaKind::Video;
    facts.duration = 12.3456;
    facts.frameRate = 25;
    facts.width = 640;
    facts.height = 360;
    facts.rotation = 0;
    facts.codec = "h264";
    facts.audioCodec = "aac";
    facts.channels = 2;
    facts.sampleRate = 48000;
    facts.container = "mp4";
    facts.fileSize = 1234;
    return facts;
}

TEST(ItemTexts, TheBlackBoxIsJsonWithTheFactsThatAreKnown) {
    const auto json = nlohmann::json::parse(BlackBoxOf(Clip()));
    EXPECT_EQ(json["kind"], "video");
    EXPECT_EQ(json["duration"], 12.346);
    EXPECT_EQ(json["frame_rate"], 25.0);
    EXPECT_EQ(json["width"], 640);
    EXPECT_EQ(json["height"], 360);
    EXPECT_EQ(json["codec"], "h264");
    EXPECT_EQ(json["channels"], 2);
    EXPECT_EQ(json["sample_rate"], 48000);
    EXPECT_EQ(json["container"], "mp4");
    EXPECT_FALSE(json.contains("rotation"));
}

TEST(ItemTexts, FactsAreReadBackFromTheBlackBox) {
    const MediaFacts facts = FactsOf(BlackBoxOf(Clip()));
    EXPECT_EQ(facts.kind, MediaKind::Video);
    EXPECT_EQ(facts.duration, 12.346);
    EXPECT_EQ(facts.width, 640);
    EXPECT_EQ(facts.audioCodec, "aac");
    EXPECT_EQ(facts.fileSize, 1234u);
}

TEST(ItemTexts, ABlackBoxOfAnotherKindGivesNoFacts) {
    for (const char* text : {"", "\x01\x02\xFF", "[1]", "7", "{", "{\"width\":\"wide\",\"codec\":7}"}) {
        const MediaFacts facts = FactsOf(text);
        EXPECT_EQ(facts.width, 0) << text;
        EXPECT_EQ(facts.codec, "") << text;
    }
}

TEST(ItemTexts, TextsThatAreNoUtf8StillGiveJson) {
    MediaFacts facts;
    facts.container = "\xFF\xFE";
    EXPECT_TRUE(nlohmann::json::accept(BlackBoxOf(facts)));
}

TEST(ItemTexts, DurationsAreShownAsAClockShowsThem) {
    EXPECT_EQ(ShownDuration(0), "");
    EXPECT_EQ(ShownDuration(0.44), "0.4 s");
    EXPECT_EQ(ShownDuration(9.6), "0:10");
    EXPECT_EQ(ShownDuration(3599.4), "59:59");
    EXPECT_EQ(ShownDuration(3723), "1:02:03");
}

TEST(ItemTexts, DetailsAreTheSizeOrTheSound) {
    EXPECT_EQ(ShownDetail(Clip()), "640 \u00d7 360");
    MediaFacts sound;
    sound.kind = MediaKind::Audio;
    EXPECT_EQ(ShownDetail(sound), "");
    sound.sampleRate = 44100;
    sound.channels = 1;
    EXPECT_EQ(ShownDetail(sound), "44.1 kHz mono");
    sound.channels = 6;
    EXPECT_EQ(ShownDetail(sound), "44.1 kHz 6 channels");
}

TEST(ItemTexts, MomentsThatLieCloseTogetherHaveTenths) {
    EXPECT_EQ(qfc::host::ShownMoment(0.05, 0.1), "0:00.0");
    EXPECT_EQ(qfc::host::ShownMoment(0.9, 1.8), "0:00.9");
    EXPECT_EQ(qfc::host::ShownMoment(62.39, 1), "1:02.3");
    EXPECT_EQ(qfc::host::ShownMoment(62.99, 2), "1:02");
    EXPECT_EQ(qfc::host::ShownMoment(3723, 60), "1:02:03");
    EXPECT_EQ(qfc::host::ShownMoment(-1, 60), "0:00");
}

}  // namespace
