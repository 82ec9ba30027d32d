#include "TagCommandsTest.h"

#include <algorithm>
#include <csignal>

namespace qfc::test {
namespace {

namespace fs = std::filesystem;

class CommandsImportTags : public TagCommandsTest {
protected:
    void WritePresets(const std::string& tags) const {
        WriteHost("Default_Libtag.ini", "[TW_DEFAULT_TAGS_MEDIA_CATEGORY]\r\nPlaces=String@Beach;String@Sea\r\n");
        WriteHost("PresetItemTag.ini",
                  "[a.ppm@a.ppm]\r\nItemName=a.ppm\r\nFilePath=C:\\demo\\a.ppm\r\nGalleryID=1\r\n"
                  "TagList=" +
                      tags + "\r\n");
    }
};

// --- Presets -------------------------------------------------------------------------------------------------------

TEST_F(CommandsImportTags, AnImportedItemThatAPresetNames_HasItsTags) {
    WritePresets("String@Beach;String@Sea;String@Unknown");
    Done({"tag", "defaults"});
    ImportAbc();
    EXPECT_EQ(TagsOf("F\\a.ppm"), (Names{"Beach", "Sea"}));
    EXPECT_EQ(TagsOf("F\\b.ppm"), Names{});
    ExpectSound();
}

TEST_F(CommandsImportTags, WithoutTheDefaultTags_PresetsGiveNone) {
    WritePresets("String@Beach");
    ImportAbc();
    EXPECT_EQ(TagsOf("F\\a.ppm"), Names{});
}

TEST_F(CommandsImportTags, PresetsFindTranslatedTags) {
    WritePresets("String@Beach");
    WriteHost("qvTWTranslateData.dat", "[TW_TAG_TRANSLATE]\r\nBeach=Plage\r\n");
    Done({"--translate", "on", "tag", "defaults"});
    ImportAbc();
    EXPECT_EQ(TagsOf("F\\a.ppm"), Names{"Plage"});
}

// --- import --auto -------------------------------------------------------------------------------------------------

Names Sorted(Names names) {
    std::ranges::sort(names);
    return names;
}

TEST_F(CommandsImportTags, WhatTheUserRemoved_DoesNotComeBackByItself) {
    m_media.MakeFolder("d");
    Image("d/a.ppm", 1);
    Image("d/b.ppm", 2);
    EXPECT_EQ(Done({"import", "--auto", Media("d")})["added"].size(), 2u);
    Done({"rm", "d\\a.ppm"});
    Image("d/c.ppm", 3);
    const Json again = Done({"import", "--auto", Media("d")});
    EXPECT_EQ(NamesIn(again["added"]), Names{"c.ppm"});
    EXPECT_EQ(again["already"].size(), 1u);
    EXPECT_EQ(again["importedBefore"], Json{fs::canonical(Media("d/a.ppm")).string()});
    EXPECT_EQ(Sorted(ItemsOf("d")), (Names{"b.ppm", "c.ppm"}));
    Done({"import", Media("d")});
    EXPECT_EQ(Sorted(ItemsOf("d")), (Names{"a.ppm", "b.ppm", "c.ppm"}));
}

TEST_F(CommandsImportTags, AutoRemembersByGallery) {
    const std::string sound = Sound("s.wav");
    Done({"import", "--auto", sound});
    Done({"rm", "Imported\\s.wav"});
    EXPECT_EQ(Done({"import", "--auto", sound, "--gallery", "Sounds"})["added"].size(), 1u);
    EXPECT_TRUE(Done({"import", "--auto", sound})["added"].empty());
}

TEST_F(CommandsImportTags, AutoRemembersForAllFoldersOfAGallery) {
    const std::string image = Image("a.ppm");
    Done({"import", "--auto", image, "--folder", "A\\B"});
    Done({"rm", "A\\B\\a.ppm"});
    EXPECT_TRUE(Done({"import", "--auto", image, "--folder", "C"})["added"].empty());
}

TEST_F(CommandsImportTags, AutoRemembersWhatStandsThereAlready) {
    const std::string image = Image("a.ppm");
    Done({"import", image});
    Done({"import", "--auto", image});
    Done({"rm", "Imported\\a.ppm"});
    EXPECT_TRUE(Done({"import", "--auto", image})["added"].empty());
}

TEST_F(CommandsImportTags, WithoutAuto_NothingIsRemembered) {
    Done({"import", Image("a.ppm")});
    Done({"rm", "Imported\\a.ppm"});
    EXPECT_EQ(Done({"import", "--auto", Media("a.ppm")})["added"].size(), 1u);
}

TEST_F(CommandsImportTags, WhatIsNotStored_IsNotRemembered) {
    Done({"mkdir", "F"});
    RefuseWrites(Database(), "ITEM_TABLE");
    const Json report = Document({"import", "--auto", Image("a.ppm"), "--folder", "F"}, 1);
    EXPECT_EQ(report["notStored"].size(), 1u);
    EXPECT_EQ(Sql("select count(*) from ITEM_AUTO_LOADED_TABLE"), "0");
}

TEST_F(CommandsImportTags, WhatCannotBeRemembered_IsSaid) {
    Done({"mkdir", "F"});
    RefuseWrites(Database(), "ITEM_AUTO_LOADED_TABLE");
    const Json report = Document({"import", "--auto", Image("a.ppm"), "--folder", "F"}, 1);
    EXPECT_EQ(report["added"].size(), 1u);
    EXPECT_EQ(report["notRemembered"].size(), 1u);
}

TEST_F(CommandsImportTags, AfterAClear_WhatWasRememberedComesAgain) {
    const std::string image = Image("a.ppm");
    Done({"import", "--auto", image});
    Done({"clear", "--yes"});
    EXPECT_EQ(NamesIn(Done({"import", "--auto", image})["added"]), Names{"a.ppm"});
}

TEST_F(CommandsImportTags, CtrlC_RemembersExactlyWhatWasAdded) {
    m_media.MakeFolder("many");
    // Names so long that few lines of the report fill a narrow pipe.
    for (int i = 0; i < 200; ++i) Image("many/" + std::to_string(1000 + i) + std::string(180, 'x') + ".ppm", i, 64);
    const QfcWorld narrow{.unprivileged = false, .largestFile = std::nullopt, .narrowPipe = true};
    QfcProcess process(WithLibrary({"import", "--auto", Media("many")}), narrow);
    EXPECT_TRUE(process.ReadLine());
    process.Signal(SIGINT);
    EXPECT_EQ(process.Wait().exit, 1);
    const auto remembered = RawDb(Database()).Rows("select FILE_PATH from ITEM_AUTO_LOADED_TABLE order by 1");
    EXPECT_GE(remembered.size(), 1u);
    EXPECT_LT(remembered.size(), 200u);
    // Paths are remembered in lower case.
    EXPECT_TRUE(remembered == RawDb(Database()).Rows("select lower(FILE_NAME) from ITEM_TABLE order by 1"));
    const Json again = Done({"import", "--auto", Media("many")});
    EXPECT_EQ(again["added"].size(), 200u - remembered.size());
    EXPECT_EQ(again["already"].size(), remembered.size());
}

// --- Directories with telling names --------------------------------------------------------------------------------

TEST_F(CommandsImportTags, DirectoriesThatLookEncoded_AreShownAsTheyAreCalled) {
    const Names odd = {"a--b", "--c", "||5||x", "||-4||y", "x--||3||z", "日--本"};
    for (const std::string& name : odd) {
        m_media.MakeFolder(name + "/in--side");
        Image(name + "/in--side/a.ppm", static_cast<int>(name.size()));
    }
    Args import = {"import"};
    for (const std::string& name : odd) import.push_back(Media(name));
    const Json report = Done(import);
    ASSERT_EQ(report["added"].size(), odd.size());
    for (std::size_t i = 0; i < odd.size(); ++i) EXPECT_EQ(report["added"][i]["folder"], odd[i] + "\\in--side");
    EXPECT_EQ(FoldersOf("\\"), odd);
    for (const std::string& name : odd) {
        const Json listed = Done({"ls", "--", name + "\\in--side"});
        EXPECT_EQ(NamesIn(listed["items"]), Names{"a.ppm"}) << name;
    }
    EXPECT_EQ(Sql("select count(*) from FOLDER_TABLE where FOLDER_NAME like '||5||Media||%'"), "12");
    EXPECT_EQ(Done(import)["already"].size(), odd.size());
    ExpectSound();
}

TEST_F(CommandsImportTags, AnotherImportFindsTheEncodedFolder) {
    m_media.MakeFolder("a--b");
    Image("a--b/a.ppm", 1);
    Done({"import", Media("a--b")});
    Image("a--b/b.ppm", 2);
    Done({"import", Media("a--b")});
    EXPECT_EQ(FoldersOf("\\"), Names{"a--b"});
    EXPECT_EQ(ItemsOf("a--b"), (Names{"a.ppm", "b.ppm"}));
    Done({"mkdir", "Other"});
    Done({"mv", "a--b\\a.ppm", "Other"});
    Done({"mv", "Other\\a.ppm", "a--b"});
    Names items = ItemsOf("a--b");
    std::ranges::sort(items);
    EXPECT_EQ(items, (Names{"a.ppm", "b.ppm"}));
}

}  // namespace
}  // namespace qfc::test
