#include "items/CQItem.h"
#include "platform/text/CodePages.h"
#include "tests/support/HostPlaces.h"

#include <gtest/gtest.h>

namespace qfc::test {
namespace {

constexpr const char* kTranslations =
    "[TW_ITEMTYPE_VIDEO]\nName=Video\n[TW_ITEMTYPE_TX]\nName=Transition\n[TW_ITEMTYPE_VIDEO_FILTER]\nName=Picture "
    "filter\n"
    "[TW_ITEMTYPE_AUDIO_FILTER]\nName=Sound filter\n[TW_ITEMTYPE_SPEED]\nName=Speed\n";

struct CQItemTranslation : testing::Test {
    CQItemTranslation() { item.SetItemType(64); }

    HostPlaces places;
    CQItem item{"Name"};
};

TEST_F(CQItemTranslation, MakesTheTranslationTheNameOfTheFiveTypes) {
    places.TurnTranslationOn();
    places.Translations(kTranslations);
    const struct {
        DWORD type;
        const char* name;
    } rows[] = {{1, "Video"}, {64, "Transition"}, {128, "Picture filter"}, {256, "Sound filter"}, {67108864, "Speed"}};
    for (const auto& row : rows) {
        CQItem one("Name");
        one.SetItemType(row.type);
        EXPECT_EQ(one.fnTranslateItemName(), 1);
        EXPECT_STREQ(one.GetItemName(), row.name);
        EXPECT_STREQ(one.GetTranslateItemName(), row.name);
        EXPECT_EQ(one.IsModified(), 0);
    }
}

TEST_F(CQItemTranslation, LeavesOtherTypesAlone) {
    places.TurnTranslationOn();
    places.Translations(kTranslations);
    for (const DWORD type : {0u, 2u, 65u}) {
        item.SetItemType(type);
        EXPECT_EQ(item.fnTranslateItemName(), 0);
        EXPECT_STREQ(item.GetItemName(), "Name");
        EXPECT_STREQ(item.GetTranslateItemName(), "");
    }
}

TEST_F(CQItemTranslation, DoesNothingWhileTranslationIsOff) {
    places.Translations(kTranslations);
    EXPECT_EQ(item.fnTranslateItemName(), 0);
    EXPECT_STREQ(item.GetItemName(), "Name");
}

TEST_F(CQItemTranslation, NameThatIsNotFoundStays) {
    places.TurnTranslationOn();
    places.Translations(kTranslations);
    item.SetItemName("Unknown");
    EXPECT_EQ(item.fnTranslateItemName(), 0);
    EXPECT_STREQ(item.GetItemName(), "Unknown");
    EXPECT_STREQ(item.GetTranslateItemName(), "");
}

TEST_F(CQItemTranslation, TranslatedNameIsThatOfTheLastLookUp) {
    places.TurnTranslationOn();
    places.Translations(kTranslations);
    ASSERT_EQ(item.fnTranslateItemName(), 1);
    EXPECT_EQ(item.fnTranslateItemName(), 0);
    EXPECT_STREQ(item.GetItemName(), "Transition");
    EXPECT_STREQ(item.GetTranslateItemName(), "");
}

TEST_F(CQItemTranslation, IsConvertedToTheCodePage) {
    places.TurnTranslationOn();
    places.Translations("[TW_ITEMTYPE_TX]\nName=Größe\n");
    ASSERT_TRUE(SetAnsiCodePage("CP1252"));
    EXPECT_EQ(item.fnTranslateItemName(), 1);
    EXPECT_STREQ(item.GetItemName(),
                 "Gr\xF6\xDF"
                 "e");
}

TEST_F(CQItemTranslation, CopyHasNone) {
    places.TurnTranslationOn();
    places.Translations(kTranslations);
    item.fnTranslateItemName();
    const CQItem copy(item);
    EXPECT_STREQ(copy.GetItemName(), "Transition");
    EXPECT_STREQ(copy.GetTranslateItemName(), "");
}

TEST_F(CQItemTranslation, Collecting_WritesTheNameAndLeavesItAlone) {
    places.TurnCollectingOn();
    places.Translations("[TW_ITEMTYPE_TX]\nName=Transition\n");
    EXPECT_EQ(item.fnTranslateItemName(), 1);
    EXPECT_STREQ(item.GetItemName(), "Name");
    EXPECT_STREQ(item.GetTranslateItemName(), "");
    EXPECT_EQ(ReadFile(places.TranslationFile()), "[TW_ITEMTYPE_TX]\nName=Name\n");
}

TEST_F(CQItemTranslation, Collecting_MeansNothingWhileTranslationIsOff) {
    places.ApplicationIni("[USERMODE]\nCreateTWTranslateData=1\n");
    EXPECT_EQ(item.fnTranslateItemName(), 0);
    EXPECT_FALSE(std::filesystem::exists(places.TranslationFile()));
}

TEST_F(CQItemTranslation, Collecting_LeavesOutVideosAndSpeeds) {
    places.TurnCollectingOn();
    for (const DWORD type : {1u, 67108864u, 2u}) {
        item.SetItemType(type);
        EXPECT_EQ(item.fnTranslateItemName(), 0);
    }
    EXPECT_FALSE(std::filesystem::exists(places.TranslationFile()));
}

}  // namespace
}  // namespace qfc::test
