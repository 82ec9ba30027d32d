#include "tests/service/EntriesTagsTest.h"

#include <ctime>
#include <filesystem>
#include <gtest/gtest.h>
#include <string>
#include <utility>
#include <vector>

namespace {

using Manager = QFCLibraryManager;
using qfc::test::RawDb;

class EntriesDefaultTags : public qfc::test::EntriesTags {
protected:
    void SetUp() override {
        EntriesTags::SetUp();
        WriteDefaults(
            "[TW_DEFAULT_TAGS_MEDIA_CATEGORY]\nScene=String@Day;String@Night\nFace=\n"
            "[TW_DEFAULT_TAGS_SOUNDS_CATEGORY]\nMood=String@Calm\n");
    }
};

TEST_F(EntriesDefaultTags, AreStoredBesideTheOthers_AndAreAllTheStoreHolds) {
    EXPECT_EQ(Manager::fnCreateDefaultTag(), 1);
    EXPECT_EQ(StoreText(), "Scene(Day Night) Face() ");
    EXPECT_EQ(StoreText(kSounds), "Mood(Calm) ");
    EXPECT_EQ(CountRows("LIB_TAG_CATEGORY_TABLE"), 5);
    EXPECT_EQ(CountRows("LIB_TAG_TABLE"), 7);
    EXPECT_EQ(CountRows("LIB_TAG_CATEGORY_TABLE where CATEGORY_NAME = 'Face' and CATEGORY_TYPE = 3"), 1);
}

TEST_F(EntriesDefaultTags, ADateIsTheDayOnWhichTheyAreMade) {
    WriteDefaults("[TW_DEFAULT_TAGS_MEDIA_CATEGORY]\nShot=Date@x\n");
    const auto today = [] {
        const std::time_t now = std::time(nullptr);
        std::tm day{};
        localtime_r(&now, &day);
        char text[32];
        std::strftime(text, sizeof text, "%Y-%m-%d~%Y-%m-%d", &day);
        return "'" + std::string(text) + "'";
    };
    const std::string before = today();
    ASSERT_EQ(Manager::fnCreateDefaultTag(), 1);
    const std::string stored =
        RawDb(DatabaseFile()).Cell("select TAG_NAME from LIB_TAG_TABLE where TAG_NAME like '%~%'");
    EXPECT_TRUE(stored == before || stored == today()) << stored;
}

TEST_F(EntriesDefaultTags, MadeTwice_AddNoRows) {
    const auto stored = [] {
        RawDb db(DatabaseFile());
        return std::pair(db.Rows("select * from LIB_TAG_CATEGORY_TABLE order by CATEGORY_GUID"),
                         db.Rows("select * from LIB_TAG_TABLE order by TAG_GUID"));
    };
    ASSERT_EQ(Manager::fnCreateDefaultTag(), 1);
    const auto before = stored();
    const std::string store = StoreText() + StoreText(kSounds);
    EXPECT_EQ(Manager::fnCreateDefaultTag(), 1);
    EXPECT_EQ(stored(), before);
    EXPECT_EQ(StoreText() + StoreText(kSounds), store);
}

TEST_F(EntriesDefaultTags, BringTemplateAndPresetsAlong) {
    WritePresets(
        "[rain.wav@Defaults bring me]\nItemName=Defaults bring me\nFilePath=rain.wav\nGalleryID=1\nTagList=\n");
    ASSERT_EQ(Manager::fnCreateDefaultTag(), 1);
    ASSERT_FALSE(Store().GetPresetTagData().empty());
    EXPECT_EQ(Store().GetPresetTagData().back().m_strItemName, "Defaults bring me");
    const auto& categories = Store().GetCategoryTemplate();
    ASSERT_EQ(categories.count(kMedia), 1u);
    EXPECT_EQ(categories.at(kMedia).second, (std::vector<std::string>{"Scene", "Face"}));
}

TEST_F(EntriesDefaultTags, WithoutTheFile_NothingIsWiped) {
    std::filesystem::remove(HostFolder() / "Orvel.dat" / "Default_Libtag.ini");
    WritePresets("[a.wav@Nobody reads me]\nItemName=Nobody reads me\nFilePath=a.wav\nGalleryID=1\nTagList=\n");
    const std::string before = Everything();
    const std::size_t presets = Store().GetPresetTagData().size();
    EXPECT_EQ(Manager::fnCreateDefaultTag(), 1);
    EXPECT_EQ(Everything(), before);
    EXPECT_EQ(Store().GetPresetTagData().size(), presets);
}

TEST_F(EntriesDefaultTags, WithoutCategoriesInTheFile_NothingIsWiped) {
    WriteDefaults("[TW_DEFAULT_TAGS_MEDIA_CATEGORY]\n");
    const std::string before = Everything();
    EXPECT_EQ(Manager::fnCreateDefaultTag(), 1);
    EXPECT_EQ(Everything(), before);
}

TEST_F(EntriesDefaultTags, LoadedInAnotherProcess_AreTheSame) {
    ASSERT_EQ(Manager::fnCreateDefaultTag(), 1);
    const std::vector<CTagCategory> made = Store().GetTagsData(kMedia);
    EmptyStore();
    Restart();
    ASSERT_EQ(Manager::fnLoadLibTag(), 1);
    for (const CTagCategory& category : made) {
        EXPECT_TRUE(Store().IsTagCategoryExisted(kMedia, category.m_guid)) << category.m_strName;
        for (const CLibTag& tag : category.m_tags)
            EXPECT_TRUE(Store().IsTagExisted(kMedia, tag.m_guid)) << tag.m_strName;
    }
}

}  // namespace
