#include "TagCommandsTest.h"

namespace qfc::test {
namespace {

namespace fs = std::filesystem;

class CommandsTagFaults : public TagCommandsTest {
protected:
    // From now on the database does that to rows of the table only by failing.
    void Refuse(const std::string& event, const std::string& table, const std::string& when = "1") const {
        Exec("create trigger refuse_" + event + "_" + table + " before " + event + " on " + table + " when " + when +
             " begin select raise(abort, 'refused'); end");
    }
    void Allow(const std::string& event, const std::string& table) const {
        Exec("drop trigger refuse_" + event + "_" + table);
    }
    // All rows about tags, in no order: what was put back stands at the end of its table.
    std::vector<RawDb::Row> TagRows() const {
        std::vector<RawDb::Row> all;
        for (const char* table : {"LIB_TAG_TABLE", "LIB_TAG_CATEGORY_TABLE", "TAG_ITEM_RELATION_TABLE"}) {
            const auto rows = RawDb(Database()).Rows(std::string("select * from ") + table + " order by 1, 2");
            all.insert(all.end(), rows.begin(), rows.end());
        }
        return all;
    }
    // a carries Sea, b carries Shore and Sea; all in "My tags".
    void TagSome() const {
        ImportAbc();
        for (const char* tag : {"Beach", "Sea", "Shore"}) Done({"tag", "create", tag});
        Done({"tag", "add", "Sea", "F\\a.ppm", "F\\b.ppm"});
        Done({"tag", "add", "Shore", "F\\b.ppm"});
    }
    // Both galleries have a tag of the name, and an item with it.
    void TagTwoGalleries() const {
        TagSome();
        Done({"import", Sound("s.wav"), "--folder", "S", "--gallery", "Sounds"});
        Done({"tag", "create", "Sea", "--gallery", "Sounds"});
        Done({"tag", "add", "Sea", "S\\s.wav", "--gallery", "Sounds"});
    }
    std::string GuidOfTag(const std::string& name, int gallery) const {
        for (const Json& category : Done({"tag", "list", "--gallery", std::to_string(gallery)})) {
            for (const Json& tag : category["tags"]) {
                if (tag["name"] == name) return tag["guid"];
            }
        }
        return {};
    }
    // Fails, says so, and changes nothing.
    std::string ExpectUndone(const Args& change) const {
        const auto before = TagRows();
        const std::string error = Refused(change);
        EXPECT_EQ(TagRows(), before) << change[1] << ": " << error;
        const Json report = Document(change, 1);
        EXPECT_TRUE(report.contains("error")) << report;
        EXPECT_EQ(TagRows(), before) << change[1];
        return error;
    }
    static std::string IsOfGallery(const std::string& row, int gallery) {
        return row + ".CATEGORY_GUID in (select CATEGORY_GUID from LIB_TAG_CATEGORY_TABLE where CATEGORY_GALLERY = " +
               std::to_string(gallery) + ")";
    }
    static bool Contains(const std::string& text, const std::string& part) {
        return text.find(part) != std::string::npos;
    }
};

// --- Each step alone fails -----------------------------------------------------------------------------------------

TEST_F(CommandsTagFaults, WhenNothingCanBeWritten_NothingIsDone) {
    WriteHost("Default_Libtag.ini", "[TW_DEFAULT_TAGS_MEDIA_CATEGORY]\r\nPlaces=String@Hill\r\n");
    TagSome();
    for (const char* table : {"LIB_TAG_TABLE", "LIB_TAG_CATEGORY_TABLE", "TAG_ITEM_RELATION_TABLE"}) {
        for (const char* event : {"insert", "update", "delete"}) Refuse(event, table);
    }
    const std::string before = DumpOf(Database());
    const std::vector<Args> changes = {{"tag", "create", "New"},
                                       {"tag", "create", "New", "--category", "Fresh"},
                                       {"tag", "rename", "Sea", "Ocean"},
                                       {"tag", "check", "Sea"},
                                       {"tag", "delete", "Sea"},
                                       {"tag", "add", "Beach", "F\\a.ppm"},
                                       {"tag", "remove", "Sea", "F\\a.ppm"},
                                       {"tag", "merge", "Sea", "Beach"},
                                       {"tag", "category", "create", "Fresh"},
                                       {"tag", "category", "rename", "My tags", "Other"},
                                       {"tag", "category", "delete", "My tags"},
                                       {"tag", "defaults"}};
    for (const Args& change : changes) {
        ExpectUndone(change);
        EXPECT_EQ(DumpOf(Database()), before) << change[1];
    }
    EXPECT_EQ(Refused({"tag", "defaults"}), "qfc: cannot store the default tags\n");
}

TEST_F(CommandsTagFaults, Create_TheCategoryGoesInAndTheTagDoesNot) {
    TagSome();
    Refuse("insert", "LIB_TAG_TABLE");
    EXPECT_EQ(ExpectUndone({"tag", "create", "New", "--category", "Fresh"}), "qfc: cannot make the tag New\n");
    Allow("insert", "LIB_TAG_TABLE");
    Refuse("insert", "LIB_TAG_CATEGORY_TABLE");
    ExpectUndone({"tag", "create", "New", "--category", "Fresh"});
}

TEST_F(CommandsTagFaults, Delete_TheLinksGoAndTheTagDoesNot) {
    TagSome();
    Refuse("delete", "LIB_TAG_TABLE");
    EXPECT_EQ(ExpectUndone({"tag", "delete", "Sea"}), "qfc: cannot delete Media:My tags/Sea\n");
    Allow("delete", "LIB_TAG_TABLE");
    Refuse("delete", "TAG_ITEM_RELATION_TABLE");
    ExpectUndone({"tag", "delete", "Sea"});
}

TEST_F(CommandsTagFaults, Merge_TheLinksChangeAndTheSourceDoesNotGo) {
    TagSome();
    Refuse("delete", "LIB_TAG_TABLE");
    EXPECT_EQ(ExpectUndone({"tag", "merge", "Sea", "Shore"}), "qfc: cannot merge into Media:My tags/Shore\n");
    Allow("delete", "LIB_TAG_TABLE");
    Refuse("insert", "TAG_ITEM_RELATION_TABLE");
    Refuse("update", "TAG_ITEM_RELATION_TABLE");
    ExpectUndone({"tag", "merge", "Sea", "Shore"});
}

TEST_F(CommandsTagFaults, CategoryDelete_TheTagsGoAndTheCategoryDoesNot) {
    TagSome();
    Exec("update LIB_TAG_TABLE set TAG_CHECKED = 1, TAG_PICTURE_SIZE = 3, TAG_PICTURE_DATA = X'010203'");
    // A link of an item that is not there is a link, too.
    Exec("insert into TAG_ITEM_RELATION_TABLE select X'00112233445566778899AABBCCDDEEFF', TAG_GUID from LIB_TAG_TABLE");
    Refuse("delete", "LIB_TAG_CATEGORY_TABLE");
    EXPECT_EQ(ExpectUndone({"tag", "category", "delete", "My tags"}), "qfc: cannot delete Media:My tags\n");
    EXPECT_EQ(TagsOf("F\\b.ppm"), (Names{"Sea", "Shore"}));
}

TEST_F(CommandsTagFaults, CategoryDelete_OneOfItsTagsDoesNotGo) {
    TagSome();
    Refuse("delete", "LIB_TAG_TABLE", "old.TAG_NAME = 'Shore'");
    EXPECT_EQ(ExpectUndone({"tag", "category", "delete", "My tags"}), "qfc: cannot delete the tags of Media:My tags\n");
}

TEST_F(CommandsTagFaults, CategoryDelete_WhatCannotComeBackIsNamed) {
    TagSome();
    Refuse("delete", "LIB_TAG_CATEGORY_TABLE");
    Refuse("insert", "TAG_ITEM_RELATION_TABLE");
    EXPECT_EQ(Refused({"tag", "category", "delete", "My tags"}),
              "qfc: cannot delete Media:My tags; changed are Media:My tags/Sea, Media:My tags/Shore\n");
    EXPECT_EQ(Sql("select count(*) from LIB_TAG_TABLE"), "3");
}

TEST_F(CommandsTagFaults, Defaults_OneOfTheTablesTakesNothing) {
    WriteHost("Default_Libtag.ini", "[TW_DEFAULT_TAGS_MEDIA_CATEGORY]\r\nPlaces=String@Hill\r\n");
    TagSome();
    for (const char* table : {"LIB_TAG_TABLE", "LIB_TAG_CATEGORY_TABLE"}) {
        Refuse("insert", table);
        EXPECT_EQ(ExpectUndone({"tag", "defaults"}), "qfc: cannot store the default tags\n");
        Allow("insert", table);
    }
}

// --- Tags of two galleries, one of which does not change -----------------------------------------------------------

TEST_F(CommandsTagFaults, DeletingOverTwoGalleries_AllOrNone) {
    TagTwoGalleries();
    const std::string media = GuidOfTag("Sea", 1), sounds = GuidOfTag("Sea", 2);
    for (const int gallery : {1, 2}) {
        Refuse("delete", "LIB_TAG_TABLE", IsOfGallery("old", gallery));
        EXPECT_TRUE(Contains(ExpectUndone({"tag", "delete", media, sounds}), "My tags/Sea"));
        Allow("delete", "LIB_TAG_TABLE");
    }
    const Json report = Done({"tag", "delete", media, sounds});
    EXPECT_EQ(report["deleted"].size(), 2u);
    EXPECT_EQ(report["items"].size(), 3u);
}

TEST_F(CommandsTagFaults, CheckingOverTwoGalleries_AllOrNone) {
    TagTwoGalleries();
    const std::string media = GuidOfTag("Sea", 1), sounds = GuidOfTag("Sea", 2);
    for (const int gallery : {1, 2}) {
        Refuse("insert", "LIB_TAG_TABLE", "new.TAG_CHECKED = 1 and " + IsOfGallery("new", gallery));
        Refuse("update", "LIB_TAG_TABLE", "new.TAG_CHECKED = 1 and " + IsOfGallery("new", gallery));
        ExpectUndone({"tag", "check", media, sounds});
        Allow("insert", "LIB_TAG_TABLE");
        Allow("update", "LIB_TAG_TABLE");
    }
    EXPECT_EQ(Done({"tag", "check", media, sounds})["tags"].size(), 2u);
}

TEST_F(CommandsTagFaults, TaggingItemsOfTwoGalleries_AllOrNone) {
    TagTwoGalleries();
    const std::string sound = Done({"show", "S\\s.wav", "--gallery", "Sounds"})["guid"];
    const std::string refused = "(select ITEM_ID from ITEM_TABLE where ITEM_NAME = '";
    for (const char* name : {"c.ppm", "s.wav"}) {
        Done({"tag", "remove", "Sea", sound});
        Refuse("insert", "TAG_ITEM_RELATION_TABLE", "new.ITEM_GUID = " + refused + name + "')");
        ExpectUndone({"tag", "add", "Sea", "F\\c.ppm", sound});
        Allow("insert", "TAG_ITEM_RELATION_TABLE");
        Done({"tag", "add", "Sea", sound});
        Refuse("delete", "TAG_ITEM_RELATION_TABLE",
               "old.ITEM_GUID = " + refused + (name == std::string("s.wav") ? name : "a.ppm") + "')");
        ExpectUndone({"tag", "remove", "Sea", "F\\a.ppm", sound});
        Allow("delete", "TAG_ITEM_RELATION_TABLE");
    }
    EXPECT_EQ(Done({"tag", "remove", "Sea", "F\\a.ppm", sound})["items"].size(), 2u);
}

// --- Read-only -----------------------------------------------------------------------------------------------------

TEST_F(CommandsTagFaults, ReadOnlyLibrary_TagsAreShownAndNotChanged) {
    if (!CanRunUnprivileged()) GTEST_SKIP() << "nobody else can start the program here";
    WriteHost("Default_Libtag.ini", "[TW_DEFAULT_TAGS_MEDIA_CATEGORY]\r\nPlaces=String@Hill\r\n");
    fs::permissions(m_host.Path(), fs::perms(0755));
    fs::permissions(m_host / "Orvel.dat", fs::perms(0755));
    TagSome();
    Done({"gallery", "create", "Own"});
    Done({"import", Image("d.ppm", 4), "--gallery", "Own"});
    Done({"tag", "create", "Mine", "--gallery", "Own"});
    Done({"tag", "add", "Mine", "Imported\\d.ppm", "--gallery", "Own"});
    const std::string before = ReadFile(Database());
    fs::permissions(m_folder.Path(), fs::perms(0755));
    fs::permissions(Database(), fs::perms(0444));
    fs::permissions(m_library, fs::perms(0555));
    const QfcWorld nobody{.unprivileged = true, .largestFile = std::nullopt, .narrowPipe = false};
    EXPECT_EQ(Qfc({"tag", "list"}, nobody).exit, 0);
    const std::vector<std::pair<Args, std::string>> changes = {
        {{"tag", "create", "New"}, "cannot make the tag New"},
        {{"tag", "create", "New", "--category", "Fresh"}, "cannot make the tag New"},
        {{"tag", "rename", "Sea", "Ocean"}, "cannot rename Media:My tags/Sea"},
        {{"tag", "check", "Sea"}, "cannot check Media:My tags/Sea"},
        {{"tag", "delete", "Sea", "Mine"}, "cannot delete Media:My tags/Sea"},
        {{"tag", "add", "Beach", "F\\a.ppm"}, "cannot add Beach"},
        {{"tag", "remove", "Sea", "F\\a.ppm"}, "cannot remove Sea"},
        {{"tag", "merge", "Sea", "Beach"}, "cannot merge into Media:My tags/Beach"},
        {{"tag", "category", "create", "Fresh"}, "cannot make the category Fresh"},
        {{"tag", "category", "rename", "Media:My tags", "Other"}, "cannot rename Media:My tags"},
        {{"tag", "category", "delete", "Media:My tags"}, "cannot delete the tags of Media:My tags"},
        {{"tag", "defaults"}, "cannot store the default tags"},
        {{"rm", "F\\a.ppm"}, "cannot remove F\\a.ppm"},
        {{"rm", "F\\b.ppm", "--everywhere"}, "cannot remove F\\b.ppm"},
        {{"rmdir", "F", "--recursive"}, "cannot remove F"},
        {{"gallery", "rm", "Own"}, "cannot remove the gallery Own: the folder Imported stays"},
    };
    for (const auto& [arguments, error] : changes) {
        const QfcResult result = Qfc(arguments, nobody);
        EXPECT_EQ(result.exit, 1) << arguments[0] << ": " << result.out;
        EXPECT_EQ(result.err, "qfc: " + error + "\n");
    }
    EXPECT_EQ(ReadFile(Database()), before);
}

TEST_F(CommandsTagFaults, AnItemWhoseTagsCannotBeTaken_Stays) {
    TagSome();
    const std::vector<RawDb::Row> before = TagRows();
    Refuse("delete", "TAG_ITEM_RELATION_TABLE");
    EXPECT_EQ(Refused({"rm", "F\\a.ppm"}), "qfc: cannot remove F\\a.ppm\n");
    EXPECT_EQ(ItemsOf("F"), (Names{"a.ppm", "b.ppm", "c.ppm"}));
    EXPECT_EQ(TagRows(), before);
}

TEST_F(CommandsTagFaults, AnItemThatCannotGo_KeepsItsTags) {
    TagSome();
    const Names before = TagsOf("F\\a.ppm");
    Refuse("delete", "RELATION_TABLE");
    EXPECT_EQ(Refused({"rm", "F\\a.ppm"}), "qfc: cannot remove F\\a.ppm\n");
    EXPECT_EQ(TagsOf("F\\a.ppm"), before);
}

TEST_F(CommandsTagFaults, LinksThatStayBehindARemovedFolder_AreReported) {
    TagSome();
    Refuse("delete", "TAG_ITEM_RELATION_TABLE");
    EXPECT_EQ(Refused({"rmdir", "F", "--recursive"}),
              "qfc: F is removed, but links of tags to its items are left; check lists them\n");
}

}  // namespace
}  // namespace qfc::test
