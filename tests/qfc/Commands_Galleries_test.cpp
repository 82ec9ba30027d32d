#include "CommandsTest.h"

namespace qfc::test {
namespace {

class CommandsGalleries : public CommandsTest {
protected:
    std::string Count(const std::string& table) { return RawDb(Database()).Cell("select count(*) from " + table); }
};

TEST_F(CommandsGalleries, OwnGalleriesGetTheNextFreeIdFrom100) {
    EXPECT_EQ(Done({"gallery", "create", "Holidays"})["id"], 100);
    EXPECT_EQ(Done({"gallery", "create", "Work"})["id"], 101);
    Done({"gallery", "rm", "Holidays"});
    EXPECT_EQ(Done({"gallery", "create", "Home"})["id"], 100);
}

TEST_F(CommandsGalleries, APredefinedNameGetsItsOwnId) {
    EXPECT_EQ(Done({"gallery", "create", "AR Stickers"})["id"], 16);
    Refused({"gallery", "create", "AR Stickers"});
}

TEST_F(CommandsGalleries, ANameIsTakenOnce) {
    Done({"gallery", "create", "Holidays"});
    Refused({"gallery", "create", "Holidays"});
    EXPECT_EQ(Done({"gallery", "list"}).size(), 1u);
}

TEST_F(CommandsGalleries, EveryPredefinedGalleryIsKnownByIdAndName) {
    const std::vector<std::pair<int, std::string>> predefined = {
        {1, "Media"},         {2, "Sounds"},     {3, "Templates"},    {4, "Transitions"}, {5, "Titles"},
        {6, "Filters"},       {8, "Overlays"},   {9, "Motion Paths"}, {10, "Media H5"},   {11, "Sounds H5"},
        {12, "Templates H5"}, {13, "Titles H5"}, {14, "Overlays H5"}, {15, "Speed"},      {16, "AR Stickers"}};
    for (const auto& [id, name] : predefined) {
        EXPECT_EQ(Done({"tree", "--gallery", std::to_string(id)})["name"], name);
        EXPECT_EQ(Done({"tree", "--gallery", name})["id"], id);
    }
    Refused({"tree", "--gallery", "7"});
    Refused({"tree", "--gallery", "17"});
    Refused({"tree", "--gallery", "media"});
}

TEST_F(CommandsGalleries, ListGivesTheStoredOnes) {
    Refused({"gallery", "list"});
    Done({"mkdir", "A", "--gallery", "Titles"});
    Done({"gallery", "create", "Holidays"});
    EXPECT_EQ(Done({"gallery", "list"}), (Json{{{"id", 5}, {"name", "Titles"}}, {{"id", 100}, {"name", "Holidays"}}}));
}

TEST_F(CommandsGalleries, AnOwnGalleryIsNamedByIdOrName) {
    Done({"gallery", "create", "Holidays"});
    Done({"import", Image("a.ppm"), "--gallery", "Holidays"});
    EXPECT_EQ(ItemsOf("Imported", {"--gallery", "100"}), Names{"a.ppm"});
}

TEST_F(CommandsGalleries, RemovingAGalleryTakesItemsAndPayloadsAlong) {
    Done({"import", Video("v.mp4"), "--folder", "A\\B"});
    EXPECT_EQ(Qfc({"gallery", "rm", "Media"}).out, "removed the gallery Media with 1 item\n");
    for (const char* table : {"GALLERY_TABLE", "FOLDER_TABLE", "ITEM_TABLE", "RELATION_TABLE", "CACHE_DATA_TABLE"}) {
        EXPECT_EQ(Count(table), "0") << table;
    }
    ExpectSound();
}

TEST_F(CommandsGalleries, RemovingOneGalleryLeavesTheOthers) {
    Done({"import", Image("a.ppm")});
    Done({"gallery", "create", "Holidays"});
    Done({"import", Image("b.ppm", 1), "--gallery", "Holidays"});
    Done({"gallery", "rm", "Holidays"});
    EXPECT_EQ(ItemsOf("Imported"), Names{"a.ppm"});
    EXPECT_EQ(Count("ITEM_TABLE"), "1");
}

TEST_F(CommandsGalleries, RemovingAGalleryThatIsNotStored_Fails) {
    Refused({"gallery", "rm", "Media"});
    Refused({"gallery", "rm", "Nowhere"});
}

TEST_F(CommandsGalleries, AnEmptyTextIsNoGallery_AndNothingIsRemoved) {
    Done({"import", Image("a.ppm"), "--folder", "A"});
    const std::string before = DumpOf(Database());
    Refused({"gallery", "rm", ""}, 2);
    Refused({"rmdir", "A", "--recursive", "--gallery", ""}, 2);
    Refused({"mkdir", "B", "--gallery", ""}, 2);
    EXPECT_EQ(DumpOf(Database()), before);
}

TEST_F(CommandsGalleries, ARemovedPredefinedGalleryIsMadeAgainOnUse) {
    Done({"mkdir", "A"});
    Done({"gallery", "rm", "1"});
    Done({"mkdir", "B"});
    EXPECT_EQ(FoldersOf("\\"), Names{"B"});
}

// --- Tags of own galleries -----------------------------------------------------------------------------------------

TEST_F(CommandsGalleries, RmTakesTheTagsOfAnOwnGallery_SoThatTheNextHasNone) {
    Done({"gallery", "create", "A"});
    Done({"import", Image("a.ppm")});
    const std::string guid = GuidOf("Imported\\a.ppm");
    Done({"tag", "create", "secret", "--gallery", "A"});
    Done({"tag", "create", "fixed", "--gallery", "A", "--category", "Kept"});
    Done({"tag", "category", "create", "Empty", "--gallery", "A"});
    Done({"tag", "create", "other"});
    Done({"tag", "add", "secret", "fixed", "other", "--", guid});
    RawDb(Database()).Exec("update LIB_TAG_TABLE set TAG_DELETABLE = 0 where TAG_NAME = 'fixed'");
    RawDb(Database()).Exec("update LIB_TAG_CATEGORY_TABLE set CATEGORY_DELETABLE = 0 where CATEGORY_NAME = 'Kept'");
    EXPECT_EQ(Done({"gallery", "rm", "A"}),
              (Json{{"removed", {{"id", 100}, {"name", "A"}, {"items", 0}, {"tags", 2}}}}));
    EXPECT_EQ(Done({"gallery", "create", "B"})["id"], 100);
    EXPECT_EQ(Document({"tag", "list", "--gallery", "B"}, 1), Json::array());
    EXPECT_EQ(RawDb(Database()).Cell("select count(*) from LIB_TAG_TABLE"), "1");
    EXPECT_EQ(RawDb(Database()).Cell("select count(*) from LIB_TAG_CATEGORY_TABLE"), "1");
    EXPECT_EQ(Done({"show", guid})["tags"].size(), 1u);
    ExpectSound();
}

TEST_F(CommandsGalleries, ItemsThatAnotherGalleryHolds_AreNotCountedAsRemoved) {
    Done({"import", Image("a.ppm"), "--folder", "A"});
    const int row = Done({"mkdir", "B", "--gallery", "Overlays"})["folder"]["row"];
    RawDb(Database()).Exec("insert into RELATION_TABLE select " + std::to_string(row) + ", ITEM_ID, 0 from ITEM_TABLE");
    EXPECT_EQ(Done({"gallery", "rm", "Overlays"})["removed"]["items"], 0);
    EXPECT_EQ(Done({"gallery", "rm", "Media"})["removed"]["items"], 1);
}

// As other programs, or damage, may leave it.
TEST_F(CommandsGalleries, AGalleryWithoutAFolder_IsInNobodysWayAndCanBeRemoved) {
    Done({"import", Image("a.ppm"), "--folder", "A"});
    Done({"tag", "create", "Sea"});
    // The second as a gallery is left that was cut off while it was made.
    RawDb(Database())
        .Exec("insert into GALLERY_TABLE values(105, 999); insert into FOLDER_TABLE (PARENT_ID) values (-1)");
    EXPECT_EQ(Qfc({"find", "a"}).exit, 0);
    EXPECT_EQ(Qfc({"tag", "list"}).exit, 0);
    EXPECT_EQ(Qfc({"rm", "A\\a.ppm"}).exit, 0);
    EXPECT_EQ(Refused({"tree", "--gallery", "105"}), "qfc: cannot load the gallery 105\n");
    EXPECT_EQ(Qfc({"gallery", "rm", "105"}).out,
              "removed the gallery 105, which had no folder; if it has tags, they stay\n");
    EXPECT_EQ(Count("GALLERY_TABLE"), "1");
}

// What stands below the folder that is gone would go without a word.
TEST_F(CommandsGalleries, AGalleryThatLostItsFolderOnly_IsNotPassedOverAndNotRemoved) {
    Done({"import", Image("a.ppm"), "--folder", "A"});
    RawDb(Database()).Exec("delete from FOLDER_TABLE where PARENT_ID = -1");
    for (const char* damage : {"", "update RELATION_TABLE set PARENT_ID = 1; delete from FOLDER_TABLE"}) {
        RawDb(Database()).Exec(damage);  // Folders below it, then items in it.
        const std::string before = ReadFile(Database());
        EXPECT_EQ(Refused({"find", "a"}), "qfc: cannot load the gallery 1\n");
        EXPECT_EQ(Refused({"gallery", "rm", "Media"}), "qfc: cannot load the gallery Media\n");
        EXPECT_EQ(ReadFile(Database()), before);
    }
}

// Below that number stand the folders of all galleries, and none of them is this one's.
TEST_F(CommandsGalleries, AGalleryWhoseFolderIsNoRowNumber_IsInNobodysWay) {
    Done({"import", Image("a.ppm"), "--folder", "A"});
    for (const char* root : {"-1", "NULL", "'abc'", "99999999999", "x'00'"}) {
        RawDb(Database()).Exec(std::string("insert into GALLERY_TABLE values(105, ") + root + ")");
        EXPECT_EQ(Qfc({"find", "a"}).exit, 0) << root;
        EXPECT_EQ(Qfc({"tag", "list"}).exit, 1) << root;  // There are none.
        EXPECT_NE(Refused({"gallery", "rm", "105"}).find("cannot remove the gallery 105"), std::string::npos) << root;
        RawDb(Database()).Exec("delete from GALLERY_TABLE where GALLERY_FOLDER_ID = 105");
    }
}

// It is still there, only nobody names it.
TEST_F(CommandsGalleries, AGalleryWhoseFolderNobodyNames_IsNotPassedOver) {
    Done({"import", Image("a.ppm"), "--folder", "A"});
    Done({"gallery", "create", "Own"});
    for (const char* root : {"-1", "999"}) {
        RawDb(Database())
            .Exec(std::string("update GALLERY_TABLE set GALLERY_ID = ") + root + " where GALLERY_FOLDER_ID = 1");
        EXPECT_EQ(Refused({"find", "a"}), "qfc: cannot load the gallery 1\n");
        EXPECT_EQ(Refused({"gallery", "rm", "1"}), "qfc: cannot load the gallery 1\n");
    }
}

TEST_F(CommandsGalleries, RmShowsOnATerminalHowFarItIs) {
    if (!CanMakeTerminal()) GTEST_SKIP() << "there are no terminals here";
    Done({"mkdir", "A\\B"});
    Done({"mkdir", "C"});
    ExpectSteps(QfcOnATerminal({"gallery", "rm", "Media"}), {"1/3 A\\B", "2/3 A", "3/3 C"});
}

// Every row of the id would go, and with them the only way to the folders of the others.
TEST_F(CommandsGalleries, AGalleryThatIsStoredTwice_IsNotRemoved) {
    Done({"gallery", "create", "Own"});
    Done({"import", Image("a.ppm"), "--folder", "H", "--gallery", "Own"});
    const std::string first =
        RawDb(Database()).Cell("select GALLERY_ID from GALLERY_TABLE where GALLERY_FOLDER_ID = 100");
    for (const char* other : {"999", "(select ID from FOLDER_TABLE where FOLDER_NAME = 'H')"}) {
        for (const char* before : {"", "-"}) {
            RawDb(Database())
                .Exec(
                    "delete from GALLERY_TABLE where GALLERY_FOLDER_ID = 100; insert into GALLERY_TABLE values(100, " +
                    (*before != '\0' ? other : first) + "), (100, " + (*before != '\0' ? first : other) + ")");
            const std::string file = ReadFile(Database());
            EXPECT_EQ(Refused({"gallery", "rm", "100"}), "qfc: the id 100 is stored 2 times; check lists it\n");
            EXPECT_EQ(ReadFile(Database()), file);
        }
    }
}

// As "clear" does.
TEST_F(CommandsGalleries, RmTakesTheTagsOfEveryGalleryThatIsNotPredefined) {
    for (const char* id : {"7", "17", "99"}) {
        Done({"gallery", "create", "Odd"});
        Done({"tag", "create", "Loud", "--gallery", "Odd"});
        RawDb db(Database());
        db.Exec(std::string("update GALLERY_TABLE set GALLERY_FOLDER_ID = ") + id);
        db.Exec(std::string("update FOLDER_TABLE set PREDEFINED_ID = ") + id);
        db.Exec(std::string("update LIB_TAG_CATEGORY_TABLE set CATEGORY_GALLERY = ") + id);
        EXPECT_EQ(Done({"gallery", "rm", "Odd"})["removed"]["tags"], 1) << id;
        EXPECT_EQ(Count("LIB_TAG_TABLE"), "0") << id;
    }
}

TEST_F(CommandsGalleries, RmKeepsTheTagsOfAPredefinedGallery) {
    Done({"import", Sound("s.wav"), "--gallery", "Sounds"});
    Done({"tag", "create", "Loud", "--gallery", "Sounds"});
    EXPECT_EQ(Done({"gallery", "rm", "Sounds"})["removed"]["tags"], 0);
    EXPECT_EQ(Done({"tag", "list", "--gallery", "Sounds"}).size(), 1u);
}

// Which tables refuse to give rows up.
class CommandsGalleryTagsThatStay : public CommandsGalleries, public ::testing::WithParamInterface<const char*> {};

TEST_P(CommandsGalleryTagsThatStay, RmPutsThemBackWithTheirLinks_AndSaysWhatWent) {
    Done({"import", Image("a.ppm")});
    const std::string guid = GuidOf("Imported\\a.ppm");
    Done({"gallery", "create", "A"});
    Done({"import", Image("b.ppm", 1), "--gallery", "A", "--folder", "X"});
    Done({"tag", "create", "secret", "--gallery", "A"});
    Done({"tag", "add", "secret", "--", guid});
    const std::string tags = RawDb(Database()).Cell("select hex(TAG_GUID) from LIB_TAG_TABLE");
    RawDb(Database())
        .Exec(std::string("create trigger keep before delete on ") + GetParam() +
              " begin select raise(abort, 'kept'); end");
    const Json report = Document({"gallery", "rm", "A"}, 1);
    EXPECT_EQ(report["error"], "cannot remove the gallery A: the tags of My tags stay");
    EXPECT_EQ(report["removed"], (Json{{"folders", {"X"}}, {"tags", Json::array()}}));
    EXPECT_EQ(report["kept"], (Json{{"folders", Json::array()}, {"tags", {"My tags"}}}));
    EXPECT_EQ(Count("FOLDER_TABLE where FOLDER_NAME = 'X'"), "0");
    EXPECT_EQ(Done({"gallery", "list"}).size(), 2u);
    EXPECT_EQ(RawDb(Database()).Cell("select hex(TAG_GUID) from LIB_TAG_TABLE"), tags);
    EXPECT_EQ(Done({"show", guid})["tags"][0]["name"], "secret");
    EXPECT_EQ(Refused({"gallery", "rm", "A"}), "qfc: cannot remove the gallery A: the tags of My tags stay\n");
    RawDb(Database()).Exec("drop trigger keep");
    Done({"gallery", "rm", "A"});
    EXPECT_EQ(Count("LIB_TAG_TABLE"), "0");
    ExpectSound();
}

INSTANTIATE_TEST_SUITE_P(Tables, CommandsGalleryTagsThatStay,
                         ::testing::Values("LIB_TAG_TABLE", "LIB_TAG_CATEGORY_TABLE"));

TEST_F(CommandsGalleries, RmThatComesToAHalt_SaysWhatWentAndWhatIsStillThere) {
    Done({"import", Image("a.ppm"), "--folder", "A"});
    Done({"import", Image("b.ppm", 1), "--folder", "B"});
    Done({"mkdir", "C"});
    RawDb(Database())
        .Exec(
            "create trigger keep before delete on FOLDER_TABLE when old.FOLDER_NAME = 'B' "
            "begin select raise(abort, 'kept'); end");
    EXPECT_EQ(
        Refused({"gallery", "rm", "Media"}),
        "qfc: cannot remove the gallery Media: cannot remove B; 1 of 1 items are not seen in B any more; removed: "
        "the folder A; still there: the gallery, the folder B, the folder C\n");
    EXPECT_EQ(Count("FOLDER_TABLE where FOLDER_NAME in ('B', 'C')"), "2");
}

TEST_F(CommandsGalleries, CreatePassesOverIdsWithTagsOfAGalleryThatIsGone) {
    Done({"gallery", "create", "A"});
    Done({"tag", "create", "secret", "--gallery", "A"});
    RawDb(Database()).Exec("delete from GALLERY_TABLE");
    EXPECT_EQ(Done({"gallery", "create", "B"})["id"], 101);
    EXPECT_EQ(Done({"tag", "list"})[0]["galleryId"], 100);
}

}  // namespace
}  // namespace qfc::test
