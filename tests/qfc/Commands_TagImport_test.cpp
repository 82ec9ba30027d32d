#include "TagCommandsTest.h"

#include <algorithm>

namespace qfc::test {
namespace {

// import-library and the tags of the other library.
class CommandsTagImport : public TagCommandsTest {
protected:
    Json Other(const Args& arguments) const {
        const Args onOther = Joined({"--data-dir", m_folder / "other", "--json"}, arguments);
        const QfcResult result = QfcProcess(onOther, {}).Wait();
        EXPECT_EQ(result.exit, 0) << arguments[0] << ": " << result.err;
        return Json::parse(result.out, nullptr, false);
    }
    std::string OtherDatabase() const { return m_folder / "other/CinelumeDatabase.db"; }
    Json ImportOther(int exit = 0) const { return Document({"import-library", OtherDatabase()}, exit); }
    // F holds a with Beach and Sea, and b with Sea; Beach is of "Places", Sea of "My tags".
    void TagOther() const {
        Other({"import", Image("a.ppm", 1), Image("b.ppm", 2), Image("c.ppm", 3), "--folder", "F"});
        Other({"tag", "create", "Beach", "--category", "Places"});
        Other({"tag", "create", "Sea"});
        Other({"tag", "add", "Beach", "Sea", "--", "F\\a.ppm"});
        Other({"tag", "add", "Sea", "F\\b.ppm"});
    }
    Names Listed(const Args& more = {}) const {
        Names names;
        const QfcResult listed = Qfc(Joined({"--json", "tag", "list"}, more));
        for (const Json& category : Json::parse(listed.out)) {
            for (const Json& tag : category["tags"]) {
                names.push_back(std::to_string(tag["galleryId"].get<int>()) + ":" +
                                category["name"].get<std::string>() + "/" + tag["name"].get<std::string>());
            }
        }
        std::ranges::sort(names);
        return names;
    }
};

TEST_F(CommandsTagImport, CategoriesTagsAndLinksComeAlong) {
    TagOther();
    Other({"tag", "category", "create", "Empty"});
    Other({"tag", "check", "Beach"});
    RawDb(OtherDatabase())
        .Exec(
            "update LIB_TAG_TABLE set TAG_TYPE = 1, TAG_PICTURE_SIZE = 3, TAG_PICTURE_DATA = X'010203', "
            "TAG_DELETABLE = 0 where TAG_NAME = 'Beach'");
    const std::string rows =
        "select TAG_NAME, TAG_TYPE, TAG_CHECKED, TAG_DELETABLE, hex(TAG_PICTURE_DATA), hex(TAG_GUID), "
        "hex(CATEGORY_GUID) from LIB_TAG_TABLE order by TAG_NAME";
    const Json report = ImportOther();
    EXPECT_EQ(report["tagsMade"].size(), 2u) << report;
    EXPECT_EQ(report["tagged"], (Json{"Media: F\\a.ppm", "Media: F\\b.ppm"}));
    EXPECT_EQ(TagsOf("F\\a.ppm"), (Names{"Beach", "Sea"}));
    EXPECT_EQ(TagsOf("F\\b.ppm"), Names{"Sea"});
    EXPECT_EQ(TagsOf("F\\c.ppm"), Names{});
    EXPECT_EQ(RawDb(Database()).Rows(rows), RawDb(OtherDatabase()).Rows(rows));
    EXPECT_EQ(Sql("select count(*) from LIB_TAG_CATEGORY_TABLE"), "3");
    ExpectSound();
}

TEST_F(CommandsTagImport, TheSummaryTellsOfThem) {
    TagOther();
    const QfcResult result = Qfc({"import-library", OtherDatabase()});
    EXPECT_EQ(result.exit, 0) << result.err;
    for (const char* line : {"made the tag Media:Places/Beach\n", "tagged Media: F\\b.ppm\n",
                             "3 items added, 0 there already, 1 folder made, 2 tags made, 2 items tagged\n"}) {
        EXPECT_NE(result.out.find(line), std::string::npos) << result.out;
    }
}

TEST_F(CommandsTagImport, ATagOrCategoryOfTheSameName_StandsForTheOthers) {
    TagOther();
    Other({"tag", "create", "Dune", "--category", "places"});
    Done({"tag", "create", "BEACH", "--category", "PLACES"});
    Done({"tag", "create", "sea", "--category", "Water"});
    ImportOther();
    EXPECT_EQ(TagsOf("F\\a.ppm"), (Names{"BEACH", "sea"}));
    EXPECT_EQ(Listed(), (Names{"1:PLACES/BEACH", "1:PLACES/Dune", "1:Water/sea"}));
}

TEST_F(CommandsTagImport, Again_ChangesNothing_WhateverWasRenamedHere) {
    TagOther();
    ImportOther();
    Done({"tag", "rename", "Sea", "Ocean"});
    Done({"tag", "category", "rename", "Places", "Spots"});
    const std::string before = DumpOf(Database());
    const Json report = ImportOther();
    EXPECT_TRUE(report["tagsMade"].empty()) << report;
    EXPECT_TRUE(report["tagged"].empty()) << report;
    EXPECT_EQ(DumpOf(Database()), before);
    EXPECT_EQ(Listed(), (Names{"1:My tags/Ocean", "1:Spots/Beach"}));
}

TEST_F(CommandsTagImport, ItemsThatAreThereAlready_GetTheTagsTheyLack) {
    TagOther();
    ImportOther();
    Done({"tag", "create", "Mine"});
    Done({"tag", "add", "Mine", "F\\b.ppm"});
    Done({"tag", "remove", "Sea", "F\\b.ppm"});
    Done({"tag", "category", "delete", "Places"});
    const Json report = ImportOther();
    EXPECT_EQ(report["already"].size(), 3u);
    EXPECT_EQ(report["tagged"].size(), 2u);
    EXPECT_EQ(TagsOf("F\\a.ppm"), (Names{"Beach", "Sea"}));
    EXPECT_EQ(TagsOf("F\\b.ppm"), (Names{"Mine", "Sea"}));
}

TEST_F(CommandsTagImport, AnItemThatIsInAnotherFolderHere_GetsThem) {
    TagOther();
    ImportOther();
    Done({"mkdir", "G"});
    Done({"mv", "F\\a.ppm", "G"});
    RawDb(Database()).Exec("delete from TAG_ITEM_RELATION_TABLE");
    RawDb(OtherDatabase()).Exec("update ITEM_TABLE set FILE_NAME = '/elsewhere' || FILE_NAME");
    const Json report = ImportOther(1);
    EXPECT_EQ(report["added"].size(), 0u);
    EXPECT_EQ(report["elsewhere"], (Json{{{"wanted", "Media: F\\a.ppm"}, {"there", {"Media: G\\a.ppm"}}}}));
    EXPECT_EQ(TagsOf("G\\a.ppm"), (Names{"Beach", "Sea"}));
}

TEST_F(CommandsTagImport, TagsOfOneNameInTwoCategories_StayTwo) {
    TagOther();
    // What another program may store.
    RawDb(OtherDatabase()).Exec("update LIB_TAG_TABLE set TAG_NAME = 'Sea'");
    Done({"tag", "create", "Sea", "--category", "Water"});
    for (int i = 0; i < 2; ++i) {
        ImportOther();
        EXPECT_EQ(Listed(), (Names{"1:My tags/Sea", "1:Places/Sea", "1:Water/Sea"}));
        EXPECT_EQ(TagsOf("F\\a.ppm").size(), 2u);
        EXPECT_EQ(TagsOf("F\\b.ppm").size(), 1u);
    }
}

TEST_F(CommandsTagImport, TagsOfOwnGalleriesComeToTheGalleryOfTheName) {
    Other({"gallery", "create", "First"});
    Other({"gallery", "create", "Holidays"});
    Other({"import", Image("a.ppm"), "--gallery", "Holidays"});
    Other({"tag", "create", "Sun", "--gallery", "Holidays"});
    Other({"tag", "create", "Loud", "--gallery", "Sounds"});
    Other({"tag", "add", "Sun", "Loud", "--gallery", "Holidays", "--", "Imported\\a.ppm"});
    Done({"gallery", "create", "Holidays"});
    ImportOther();
    EXPECT_EQ(Listed(), (Names{"100:My tags/Sun", "2:My tags/Loud"}));
    EXPECT_EQ(TagsOf("Imported\\a.ppm", {"--gallery", "Holidays"}), (Names{"Loud", "Sun"}));
}

TEST_F(CommandsTagImport, TagsOfAGalleryThatIsGone_AreNamedAndLeftOut) {
    Other({"gallery", "create", "First"});
    Other({"tag", "create", "Sun", "--gallery", "First"});
    Other({"mkdir", "F"});
    RawDb(OtherDatabase()).Exec("delete from GALLERY_TABLE where GALLERY_FOLDER_ID = 100");
    const Json report = ImportOther(1);
    EXPECT_EQ(report["failed"], Json{"the tags of 100:My tags, whose gallery is not there"});
    EXPECT_EQ(Listed(), Names{});
}

TEST_F(CommandsTagImport, AGalleryThatCannotCome_IsNamedAndTheRestComesWithItsTags) {
    TagOther();
    Other({"gallery", "create", "Own"});
    Other({"import", Image("d.ppm", 4), "--gallery", "Own"});
    Other({"tag", "create", "Mine", "--gallery", "Own"});
    Other({"gallery", "create", "Zoo"});
    Other({"tag", "create", "Lion", "--gallery", "Zoo"});
    Done({"gallery", "create", "Own"});
    Done({"gallery", "create", "Twin"});
    Exec("update FOLDER_TABLE set FOLDER_NAME = 'Own' where FOLDER_NAME = 'Twin'");
    const Json report = ImportOther(1);
    EXPECT_EQ(report["added"].size(), 3u);
    EXPECT_EQ(report["tagged"], (Json{"Media: F\\a.ppm", "Media: F\\b.ppm"}));
    EXPECT_EQ(report["failed"], (Json{"the gallery Own", "the tags of 100:My tags, whose gallery cannot come"}));
    EXPECT_EQ(TagsOf("F\\a.ppm"), (Names{"Beach", "Sea"}));
    EXPECT_EQ(Listed(), (Names{"102:My tags/Lion", "1:My tags/Sea", "1:Places/Beach"}));
    EXPECT_EQ(Sql("select count(*) from ITEM_TABLE"), "3");
    const QfcResult again = Qfc({"import-library", OtherDatabase()});
    EXPECT_EQ(again.exit, 1);
    EXPECT_NE(again.err.find("the gallery Own: several galleries are called Own; name one by its id: 100, 101\n"),
              std::string::npos)
        << again.err;
}

// The ordinary way back from a backup.
TEST_F(CommandsTagImport, ClearAndTheOwnExport_GiveOwnGalleriesTheirTagsBack) {
    ImportAbc();
    Done({"gallery", "create", "Own"});
    Done({"import", Image("d.ppm", 4), "--gallery", "Own"});
    Done({"tag", "create", "Beach"});
    Done({"tag", "create", "Secret", "--gallery", "Own"});
    Done({"tag", "add", "Beach", "Secret", "--gallery", "Own", "--", "Imported\\d.ppm"});
    const std::string backup = m_folder / "backup.db";
    Done({"export", backup});
    const Json galleries = Done({"gallery", "list"});
    const Names tags = Listed();
    Done({"clear", "--yes"});
    EXPECT_EQ(Listed(), Names{"1:My tags/Beach"});
    for (int i = 0; i < 2; ++i) {
        Done({"import-library", backup});
        EXPECT_EQ(Done({"gallery", "list"}), galleries);
        EXPECT_EQ(Listed(), tags);
        EXPECT_EQ(TagsOf("Imported\\d.ppm", {"--gallery", "Own"}), (Names{"Beach", "Secret"}));
    }
    EXPECT_EQ(Listed({"--gallery", "100"}), Names{"100:My tags/Secret"});
    ExpectSound();
}

TEST_F(CommandsTagImport, AGuidThatStandsForSomethingElseHere_StaysWhatItIs) {
    TagOther();
    const std::string guid = Done({"tag", "create", "Loud", "--gallery", "Sounds"})["guid"];
    Exec("update LIB_TAG_TABLE set TAG_GUID = X'00112233445566778899AABBCCDDEEFF'");
    RawDb other(OtherDatabase());
    other.Exec(
        "update TAG_ITEM_RELATION_TABLE set TAGS_GUID = X'00112233445566778899AABBCCDDEEFF' where TAGS_GUID = "
        "(select TAG_GUID from LIB_TAG_TABLE where TAG_NAME = 'Sea')");
    other.Exec("update LIB_TAG_TABLE set TAG_GUID = X'00112233445566778899AABBCCDDEEFF' where TAG_NAME = 'Sea'");
    ImportOther();
    EXPECT_EQ(Listed(), (Names{"1:My tags/Sea", "1:Places/Beach", "2:My tags/Loud"}));
    EXPECT_EQ(TagsOf("F\\b.ppm"), Names{"Sea"});
    EXPECT_NE(Done({"show", "F\\b.ppm"})["tags"][0]["guid"], guid);
}

TEST_F(CommandsTagImport, WhatCannotBeStoredIsNamed_AndTheNextImportMendsIt) {
    TagOther();
    Done({"mkdir", "F"});
    RefuseWrites(Database(), "LIB_TAG_TABLE");
    Json report = ImportOther(1);
    EXPECT_EQ(report["added"].size(), 3u);
    EXPECT_EQ(report["failed"], (Json{"the tags of Media:Places", "the tags of Media:My tags"}));
    EXPECT_EQ(Sql("select count(*) from LIB_TAG_CATEGORY_TABLE"), "0");
    for (const char* event : {"insert", "update"}) Exec(std::string("drop trigger REFUSE_") + event + "_LIB_TAG_TABLE");
    RefuseWrites(Database(), "TAG_ITEM_RELATION_TABLE");
    report = ImportOther(1);
    EXPECT_EQ(report["tagsMade"].size(), 2u);
    EXPECT_EQ(report["failed"], (Json{"the tags of Media: F\\a.ppm", "the tags of Media: F\\b.ppm"}));
    for (const char* event : {"insert", "update"}) {
        Exec(std::string("drop trigger REFUSE_") + event + "_TAG_ITEM_RELATION_TABLE");
    }
    EXPECT_EQ(ImportOther()["tagged"].size(), 2u);
    EXPECT_EQ(TagsOf("F\\a.ppm"), (Names{"Beach", "Sea"}));
}

}  // namespace
}  // namespace qfc::test
