#include "tags/TagFiles.h"

#include "api/names/Translation.h"
#include "tests/tags/TagTestSupport.h"

#include <vector>

namespace {

using namespace qfc::test;
namespace fs = std::filesystem;

constexpr char kMediaSection[] = "TW_DEFAULT_TAGS_MEDIA_CATEGORY";

// Writes into a current folder of its own.
class TagFileWriting : public testing::Test {
protected:
    void SetUp() override { fs::current_path(m_folder.Path()); }
    void TearDown() override {
        fs::current_path(m_before);
        qfc::SetAnsiCodePage("UTF-8");
    }
    std::string Defaults() const { return ReadFile(m_folder / "Default_Libtag.ini"); }
    std::string Presets() const { return ReadFile(m_folder / "PresetItemTag.ini"); }
    static bool WriteDefault(const qfc::CategoryRecord& record) { return qfc::WriteDefaultTagFile({&record, 1}); }
    static bool WritePreset(const qfc::PresetItemRecord& record) { return qfc::WritePresetTagFile({&record, 1}); }

    fs::path m_before = fs::current_path();
    TempFolder m_folder;
};

using TagFilePaths = HostFolderTest;

TEST_F(TagFilePaths, LieInTheFolderBesideTheHost) {
    const CString defaults = qfc::DefaultTagFilePath();
    const CString presets = qfc::PresetTagFilePath();
    EXPECT_EQ(defaults, CString((Folder() / "Orvel.dat\\Default_Libtag.ini").c_str()));
    EXPECT_EQ(presets, CString((Folder() / "Orvel.dat\\PresetItemTag.ini").c_str()));
}

TEST_F(TagFilePaths, AreFoundOutOnce) {
    const CString before = qfc::DefaultTagFilePath();
    const TempFolder other;
    ASSERT_TRUE(qfc::SetHostFolder(other.Path().c_str()));
    EXPECT_EQ(qfc::DefaultTagFilePath(), before);
    EXPECT_EQ(qfc::PresetTagFilePath().Find(other.Path().c_str()), -1);
}

// The four files of a host lie together, whatever is asked for first.
TEST(TagFilePathsDeathTest, LieWhereTheTranslationLies) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    const auto look = [] {
        qfc::SetHostFolder("/opt/first");
        const bool bFirst = qfc::TranslationFilePath().View().starts_with("/opt/first/");
        qfc::SetHostFolder("/opt/second");
        std::_Exit(bFirst && qfc::DefaultTagFilePath().View().starts_with("/opt/first/") &&
                           qfc::ArFilterFilePath().View().starts_with("/opt/first/")
                       ? 7
                       : 8);
    };
    EXPECT_EXIT(look(), testing::ExitedWithCode(7), "");
}

// A process of its own: the paths are found out only once.
TEST(TagFilePathsDeathTest, AreNoneBesideAHostTooDeepDown) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    const auto lookWithFolderOf = [](std::size_t length) {
        qfc::SetHostFolder(("/" + std::string(length - 2, 'd')).c_str());
        const bool bDefaults = !qfc::DefaultTagFilePath().IsEmpty();
        const bool bPresets = !qfc::PresetTagFilePath().IsEmpty();
        std::_Exit(bDefaults && bPresets ? 8 : bPresets ? 9 : 7);
    };
    constexpr std::size_t kLongestName = sizeof("Orvel.dat\\Default_Libtag.ini") - 1;
    EXPECT_EXIT(lookWithFolderOf(259 - kLongestName), testing::ExitedWithCode(8), "");
    EXPECT_EXIT(lookWithFolderOf(260 - kLongestName), testing::ExitedWithCode(9), "");
    EXPECT_EXIT(lookWithFolderOf(260), testing::ExitedWithCode(7), "");
}

// Kept: each tag goes before those written so far.
TEST_F(TagFileWriting, TagsStandInReverseOrder) {
    EXPECT_TRUE(WriteDefault({kMediaSection, "Colours", {"Red", "Green", "Blue"}}));
    EXPECT_EQ(Defaults(), "[TW_DEFAULT_TAGS_MEDIA_CATEGORY]\r\nColours=String@Blue;String@Green;String@Red\r\n");
}

TEST_F(TagFileWriting, OneTagHasNoSeparatorAndNoTagNoValue) {
    EXPECT_TRUE(WriteDefault({kMediaSection, "Colours", {"Red"}}));
    EXPECT_TRUE(WriteDefault({kMediaSection, "Shapes", {}}));
    EXPECT_EQ(Defaults(), "[TW_DEFAULT_TAGS_MEDIA_CATEGORY]\r\nColours=String@Red\r\nShapes=\r\n");
}

TEST_F(TagFileWriting, WhatStandsInTheFileStays) {
    m_folder.Write("Default_Libtag.ini",
                   "; mine\r\n[TW_DEFAULT_TAGS_MEDIA_CATEGORY]\r\nColours=old\r\nShapes=String@Round\r\n");
    EXPECT_TRUE(WriteDefault({kMediaSection, "Colours", {"Red"}}));
    EXPECT_EQ(Defaults(),
              "; mine\r\n[TW_DEFAULT_TAGS_MEDIA_CATEGORY]\r\nColours=String@Red\r\nShapes=String@Round\r\n");
}

TEST_F(TagFileWriting, ItemsAreWrittenInTheOrderInWhichTheyAreRead) {
    EXPECT_TRUE(WritePreset({"Rain", "C:\\Sounds\\a.mp3", "2", {"Calm", "Wet"}}));
    EXPECT_EQ(Presets(),
              "[a.mp3@Rain]\r\nItemName=Rain\r\nFilePath=C:\\Sounds\\a.mp3\r\nGalleryID=2\r\n"
              "TagList=String@Wet;String@Calm\r\n");
}

TEST_F(TagFileWriting, SectionIsNamedByTheFileBehindTheLastBackslash) {
    EXPECT_TRUE(WritePreset({"n", "\\\\server\\share\\x.mp3", "2", {}}));
    EXPECT_TRUE(WritePreset({"n", "bare.mp3", "2", {}}));
    EXPECT_TRUE(WritePreset({"n", "/native/path/y.mp3", "2", {}}));
    EXPECT_TRUE(WritePreset({"n", "", "2", {}}));
    for (const char* section : {"[x.mp3@n]\r\n", "[bare.mp3@n]\r\n", "[y.mp3@n]\r\n", "[@n]\r\n"}) {
        EXPECT_NE(Presets().find(section), std::string::npos) << section;
    }
}

TEST_F(TagFileWriting, BackslashInsideACharacterPartsNothing) {
    ASSERT_TRUE(qfc::SetAnsiCodePage("CP932"));
    EXPECT_TRUE(WritePreset({"n", "C:\\\x83\x5C.mp3", "2", {}}));
    EXPECT_EQ(Presets().substr(0, 12), "[\x83\x5C.mp3@n]\r\n");
}

TEST_F(TagFileWriting, FailureIsFalse) {
    m_folder.MakeFolder("Default_Libtag.ini");
    m_folder.MakeFolder("PresetItemTag.ini");
    EXPECT_FALSE(WriteDefault({kMediaSection, "Colours", {"Red"}}));
    EXPECT_FALSE(WritePreset({"n", "a", "2", {}}));
}

TEST_F(TagFileWriting, NothingToWriteMakesNoFile) {
    EXPECT_TRUE(qfc::WriteDefaultTagFile({}));
    EXPECT_TRUE(qfc::WritePresetTagFile({}));
    EXPECT_TRUE(m_folder.Entries().empty());
}

// What is written is what is read, beside another host.
using TagFileRoundTrip = HostFolderTest;

TEST_F(TagFileRoundTrip, WrittenFilesAreReadBack) {
    const fs::path before = fs::current_path();
    fs::current_path(Folder() / "Orvel.dat");
    const qfc::CategoryRecord category{kMediaSection, "Colours", {"Red", "Green"}};
    const qfc::PresetItemRecord item{"Rain", "C:\\Sounds\\a.mp3", "2", {"Calm", "Wet"}};
    const bool bWritten = qfc::WriteDefaultTagFile({&category, 1}) && qfc::WritePresetTagFile({&item, 1});
    fs::current_path(before);
    ASSERT_TRUE(bWritten);
    m_pStore->GenerateCategoryTemplate();
    EXPECT_EQ(m_pStore->GetCategoryTemplate().at(1).second, std::vector<std::string>{"Colours"});
    m_pStore->GeneratePresetTagData();
    ASSERT_EQ(m_pStore->GetPresetTagData().size(), 1U);
    const CPresetItemTag& preset = m_pStore->GetPresetTagData().front();
    EXPECT_EQ(preset.m_strItemName, item.itemName);
    EXPECT_EQ(preset.m_strFilePath, item.filePath);
    EXPECT_EQ(preset.m_strGalleryId, item.galleryId);
    EXPECT_EQ(preset.m_tagList, (std::list<CString>{"String@Wet", "String@Calm"}));
}

}  // namespace
