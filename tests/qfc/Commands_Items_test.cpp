#include "CommandsTest.h"

namespace qfc::test {
namespace {

class CommandsItems : public CommandsTest {
protected:
    std::string Count(const std::string& table) { return RawDb(Database()).Cell("select count(*) from " + table); }
    // Places every item of the library in the folder as well.
    void ShareInto(const std::string& folder) {
        const int row = Done({"ls", folder})["row"];
        RawDb(Database())
            .Exec("insert or ignore into RELATION_TABLE (PARENT_ID, ITEM_ID, ITEM_INDEX) select " +
                  std::to_string(row) + ", ITEM_ID, 0 from ITEM_TABLE");
    }
    void ImportAbc() { Done({"import", Image("c.ppm", 3), Image("a.ppm", 1), Image("b.ppm", 2), "--folder", "F"}); }
};

// --- mv
// ---------------------------------------------------------------------------------------------------------------

TEST_F(CommandsItems, MvMovesAnItemWithItsPayloads) {
    Done({"import", Video("v.mp4"), "--folder", "A"});
    Done({"mkdir", "B"});
    const Json before = Done({"show", "A\\v.mp4"});
    Done({"mv", "A\\v.mp4", "B"});
    EXPECT_EQ(ItemsOf("A"), Names{});
    Json after = Done({"show", "B\\v.mp4"});
    after["paths"] = before["paths"];
    EXPECT_EQ(after, before);
    EXPECT_EQ(Count("RELATION_TABLE"), "1");
    ExpectSound();
}

TEST_F(CommandsItems, MvByGuid) {
    Done({"import", Image("a.ppm"), "--folder", "A"});
    Done({"mkdir", "B"});
    Done({"mv", GuidOf("A\\a.ppm"), "B"});
    EXPECT_EQ(ItemsOf("B"), Names{"a.ppm"});
}

TEST_F(CommandsItems, MvByGuid_FindsTheTargetInTheItemsGallery) {
    Done({"import", Sound("s.wav"), "--folder", "A", "--gallery", "Sounds"});
    Done({"mkdir", "B", "--gallery", "Sounds"});
    const std::string guid = Done({"show", "A\\s.wav", "--gallery", "Sounds"})["guid"];
    Done({"mv", guid, "B"});
    EXPECT_EQ(ItemsOf("B", {"--gallery", "Sounds"}), Names{"s.wav"});
}

TEST_F(CommandsItems, MvOfOnePlacementLeavesTheOther) {
    Done({"import", Image("a.ppm"), "--folder", "A"});
    for (const char* folder : {"B", "C"}) Done({"mkdir", folder});
    ShareInto("B");
    Refused({"mv", GuidOf("A\\a.ppm"), "C"});
    Done({"mv", "A\\a.ppm", "C"});
    EXPECT_EQ(ItemsOf("A"), Names{});
    EXPECT_EQ(ItemsOf("B"), Names{"a.ppm"});
    EXPECT_EQ(ItemsOf("C"), Names{"a.ppm"});
}

TEST_F(CommandsItems, MvRefusesANameThatIsTaken) {
    m_media.MakeFolder("d");
    Done({"import", Image("a.ppm", 1), "--folder", "A"});
    Done({"import", Image("d/a.ppm", 2), "--folder", "B"});
    const std::string before = DumpOf(Database());
    Refused({"mv", "A\\a.ppm", "B"});
    EXPECT_EQ(DumpOf(Database()), before);
}

TEST_F(CommandsItems, MvRefusesTheFolderThatHoldsIt_TheGallery_AndAMissingTarget) {
    Done({"import", Image("a.ppm"), "--folder", "A"});
    const std::string before = DumpOf(Database());
    Refused({"mv", "A\\a.ppm", "A"});
    Refused({"mv", "A\\a.ppm", "\\"});
    Refused({"mv", "A\\a.ppm", "Nowhere"});
    EXPECT_EQ(DumpOf(Database()), before);
}

// --- rename
// -----------------------------------------------------------------------------------------------------------

TEST_F(CommandsItems, RenameChangesTheNameAlone) {
    Done({"import", Video("v.mp4"), "--folder", "A"});
    const Json before = Done({"show", "A\\v.mp4"});
    Done({"rename", "A\\v.mp4", "Day one"});
    Json after = Done({"show", "A\\Day one"});
    EXPECT_EQ(after["name"], "Day one");
    after["name"] = before["name"];
    after["paths"] = before["paths"];
    EXPECT_EQ(after, before);
}

TEST_F(CommandsItems, RenameOfAVideo_KeepsItsFilm) {
    Done({"import", Video("v.mp4"), "--folder", "A"});
    const std::string payloads = "select CACHE_DATA_TYPE, hex(COMPRESSED_DATA) from CACHE_DATA_TABLE order by 1";
    const auto before = RawDb(Database()).Rows(payloads);
    ASSERT_EQ(before.size(), 3u);
    Done({"rename", "A\\v.mp4", "movie"});
    EXPECT_EQ(RawDb(Database()).Rows(payloads), before);
    EXPECT_EQ(Done({"show", "A\\movie"})["film"]["frames"], 10);
}

TEST_F(CommandsItems, ShowOfAnItemWithAPayloadThatCannotBeRead_ShowsTheRestAndSaysSo) {
    Done({"import", Video("v.mp4"), "--folder", "A"});
    const char* const payloads[] = {"bitmap cache", "black box", "film"};
    for (int kind = 0; kind < 3; ++kind) {
        const std::string row = "CACHE_DATA_TABLE set COMPRESSED_DATA = ";
        const std::string where = " where CACHE_DATA_TYPE = " + std::to_string(kind);
        const std::string kept = RawDb(Database()).Cell("select COMPRESSED_DATA from CACHE_DATA_TABLE" + where);
        RawDb(Database()).Exec("update " + row + "x'00'" + where);
        const QfcResult result = Qfc({"show", "A\\v.mp4"});
        EXPECT_EQ(result.exit, 1);
        EXPECT_EQ(result.err, std::string("qfc: cannot read the ") + payloads[kind] + " of the item\n");
        EXPECT_NE(result.out.find("v.mp4"), std::string::npos);
        EXPECT_EQ(Document({"show", "A\\v.mp4"}, 1)["unreadable"], Json{payloads[kind]});
        RawDb(Database()).Exec("update " + row + kept + where);
    }
    EXPECT_EQ(Qfc({"show", "A\\v.mp4"}).exit, 0);
}

TEST_F(CommandsItems, RenameOfASharedItem_ShowsInEveryFolder) {
    Done({"import", Image("a.ppm"), "--folder", "A"});
    Done({"mkdir", "B"});
    ShareInto("B");
    Done({"rename", "A\\a.ppm", "b"});
    EXPECT_EQ(ItemsOf("B"), Names{"b"});
}

TEST_F(CommandsItems, RenameRefusesANameThatIsTaken) {
    ImportAbc();
    const std::string before = DumpOf(Database());
    Refused({"rename", "F\\a.ppm", "b.ppm"});
    EXPECT_EQ(DumpOf(Database()), before);
    Done({"rename", "F\\a.ppm", "a.ppm"});
}

// --- rm
// ---------------------------------------------------------------------------------------------------------------

TEST_F(CommandsItems, RmByPath_RemovesThisPlacement) {
    Done({"import", Image("a.ppm"), "--folder", "A"});
    Done({"mkdir", "B"});
    ShareInto("B");
    Done({"rm", "A\\a.ppm"});
    EXPECT_EQ(ItemsOf("A"), Names{});
    EXPECT_EQ(ItemsOf("B"), Names{"a.ppm"});
    EXPECT_GT(Done({"show", "B\\a.ppm"})["bitmapCache"]["bytes"], 0);
}

TEST_F(CommandsItems, RmOfTheLastPlacement_TakesItemAndPayloadsAlong) {
    Done({"import", Video("v.mp4"), "--folder", "A"});
    Done({"rm", "A\\v.mp4"});
    EXPECT_EQ(Count("ITEM_TABLE"), "0");
    EXPECT_EQ(Count("CACHE_DATA_TABLE"), "0");
    EXPECT_EQ(FoldersOf("\\"), Names{"A"});
}

TEST_F(CommandsItems, RmByGuid_RemovesAllPlacements) {
    Done({"import", Image("a.ppm"), "--folder", "A"});
    Done({"mkdir", "B"});
    ShareInto("B");
    EXPECT_EQ(Done({"rm", GuidOf("A\\a.ppm")})["removed"], (Json{"A\\a.ppm", "B\\a.ppm"}));
    EXPECT_EQ(Count("RELATION_TABLE"), "0");
    EXPECT_EQ(Count("ITEM_TABLE"), "0");
}

TEST_F(CommandsItems, RmEverywhere_RemovesAllPlacementsInAllGalleries) {
    Done({"import", Image("a.ppm"), "--folder", "A"});
    const int row = Done({"mkdir", "B", "--gallery", "Overlays"})["folder"]["row"];
    RawDb(Database())
        .Exec("insert into RELATION_TABLE (PARENT_ID, ITEM_ID, ITEM_INDEX) select " + std::to_string(row) +
              ", ITEM_ID, 0 from ITEM_TABLE");
    Done({"rm", "A\\a.ppm", "--everywhere"});
    EXPECT_EQ(ItemsOf("B", {"--gallery", "Overlays"}), Names{});
    EXPECT_EQ(Count("ITEM_TABLE"), "0");
}

TEST_F(CommandsItems, RmOfNothing_Fails) {
    ImportAbc();
    Refused({"rm", "F\\d.ppm"});
    EXPECT_EQ(Refused({"rm", "F"}), "qfc: no item F in the gallery Media; it is a folder\n");
    EXPECT_EQ(ItemsOf("F").size(), 3u);
}

// --- reorder -----------------------------------------------------------------------------------------------------

TEST_F(CommandsItems, ReorderByName_IsStored) {
    ImportAbc();
    EXPECT_EQ(ItemsOf("F"), (Names{"c.ppm", "a.ppm", "b.ppm"}));
    Done({"reorder", "F", "--by", "name"});
    EXPECT_EQ(ItemsOf("F"), (Names{"a.ppm", "b.ppm", "c.ppm"}));
    Done({"reorder", "F", "--by", "name", "--desc"});
    EXPECT_EQ(ItemsOf("F"), (Names{"c.ppm", "b.ppm", "a.ppm"}));
}

TEST_F(CommandsItems, ReorderByKindAndDate) {
    Done({"import", Video("v.mp4"), Image("i.ppm"), Sound("s.wav"), "--folder", "F"});
    Done({"reorder", "F", "--by", "kind"});
    EXPECT_EQ(ItemsOf("F"), (Names{"s.wav", "i.ppm", "v.mp4"}));
    Done({"reorder", "F", "--by", "date"});
    EXPECT_EQ(ItemsOf("F"), ItemsOf("F", {"--sort", "date"}));
}

TEST_F(CommandsItems, ReorderPutsAnItemInItsPlace) {
    ImportAbc();
    Done({"reorder", "F\\c.ppm", "--to", "3"});
    EXPECT_EQ(ItemsOf("F"), (Names{"a.ppm", "b.ppm", "c.ppm"}));
    Done({"reorder", GuidOf("F\\c.ppm"), "--to", "2"});
    EXPECT_EQ(ItemsOf("F"), (Names{"a.ppm", "c.ppm", "b.ppm"}));
    Refused({"reorder", "F\\c.ppm", "--to", "4"});
}

TEST_F(CommandsItems, ReorderAfterARemoval) {
    ImportAbc();
    Done({"import", Image("d.ppm", 4), "--folder", "F"});
    Done({"rm", "F\\c.ppm"});
    Done({"import", Image("e.ppm", 5), "--folder", "F"});
    Done({"reorder", "F\\e.ppm", "--to", "1"});
    EXPECT_EQ(ItemsOf("F"), (Names{"e.ppm", "a.ppm", "b.ppm", "d.ppm"}));
}

TEST_F(CommandsItems, WhatIsAddedAfterRemovals_ComesLast) {
    Args import = {"import", "--folder", "F"};
    for (int i = 1; i <= 6; ++i) import.push_back(Image(std::to_string(i) + ".ppm", i));
    Done(import);
    const Names before = ItemsOf("F");
    ASSERT_EQ(before.size(), 6U);
    for (const int gone : {0, 2, 3}) Done({"rm", "F\\" + before[static_cast<std::size_t>(gone)]});
    Done({"import", Image("7.ppm", 7), "--folder", "F"});
    EXPECT_EQ(ItemsOf("F"), (Names{before[1], before[4], before[5], "7.ppm"}));
    for (const int gone : {1, 4}) Done({"rm", "F\\" + before[static_cast<std::size_t>(gone)]});
    Done({"import", Image("8.ppm", 8), "--folder", "G"});
    Done({"mv", "G\\8.ppm", "F"});
    EXPECT_EQ(ItemsOf("F"), (Names{before[5], "7.ppm", "8.ppm"}));
    Done({"rm", "F\\" + before[5]});
    Done({"import", Image("9.ppm", 9), "--folder", "F"});
    EXPECT_EQ(ItemsOf("F"), (Names{"7.ppm", "8.ppm", "9.ppm"}));
    ExpectSound();
}

TEST_F(CommandsItems, AnImportWithoutRemovals_WritesNoOrder) {
    Done({"import", Image("a.ppm", 1), Image("b.ppm", 2), "--folder", "F"});
    RawDb(Database())
        .Exec(
            "create trigger no_order before insert on RELATION_TABLE when exists (select 1 from "
            "RELATION_TABLE where PARENT_ID = new.PARENT_ID and ITEM_ID = new.ITEM_ID) "
            "begin update ITEM_TABLE set ITEM_NAME = 'written again'; end");
    Done({"import", Image("c.ppm", 3), "--folder", "F"});
    Names items = ItemsOf("F");
    std::ranges::sort(items);
    EXPECT_EQ(items, (Names{"a.ppm", "b.ppm", "c.ppm"}));
}

TEST_F(CommandsItems, WhatIsAddedAfterRemovals_GetsOtherNumbers_AndNothingElseDoes) {
    ImportAbc();
    Done({"rm", "F\\a.ppm"});
    Done({"import", Image("d.ppm", 4), "--folder", "F"});
    EXPECT_EQ(
        RawDb(Database())
            .Cell("select group_concat(ITEM_NAME || ' ' || ITEM_INDEX) from (select * from RELATION_TABLE natural "
                  "join ITEM_TABLE order by ITEM_INDEX)"),
        "'c.ppm 0,b.ppm 2,d.ppm 3'");
}

TEST_F(CommandsItems, AnOrderThatIsNotStored_IsNotDone) {
    ImportAbc();
    Done({"import", Image("e.ppm", 5), "--folder", "G"});
    Done({"rm", "F\\a.ppm"});
    RawDb(Database())
        .Exec(
            "create trigger keep before insert on RELATION_TABLE when exists (select 1 from RELATION_TABLE where "
            "PARENT_ID = new.PARENT_ID and ITEM_ID = new.ITEM_ID) begin select raise(abort, 'kept'); end");
    const Json imported = Document({"import", Image("d.ppm", 4), "--folder", "F"}, 1);
    EXPECT_EQ(imported["added"].size(), 1U);
    EXPECT_EQ(imported["notLast"], Json{"F"});
    EXPECT_EQ(Refused({"mv", "G\\e.ppm", "F"}), "qfc: cannot put the item last in F\n");
    Names items = ItemsOf("F");
    std::ranges::sort(items);
    EXPECT_EQ(items, (Names{"b.ppm", "c.ppm", "d.ppm", "e.ppm"}));
}

TEST_F(CommandsItems, AFolderThatCannotBePutLast_IsNotDone) {
    for (const char* folder : {"A", "B", "C"}) Done({"mkdir", folder});
    Done({"rmdir", "A"});
    RawDb(Database()).Exec("create trigger keep before update on FOLDER_TABLE begin select raise(abort, 'kept'); end");
    const Json made = Document({"mkdir", "D"}, 1);
    EXPECT_EQ(made["made"], Json{"D"});
    EXPECT_EQ(made["notLast"], Json{"D"});
    Done({"rmdir", "B"});
    EXPECT_EQ(Refused({"import", Image("a.ppm"), "--folder", "E"}), "qfc: cannot put the folder last: E\n");
}

TEST_F(CommandsItems, BehindTheLargestNumberNothingCanBePut) {
    Done({"mkdir", "A"});
    Done({"mkdir", "B\\Below"});
    RawDb(Database()).Exec("update FOLDER_TABLE set ORDER_INDEX = 2147483647 where FOLDER_NAME = 'A'");
    EXPECT_EQ(Document({"mkdir", "C"}, 1)["notLast"], Json{"C"});
    EXPECT_EQ(Refused({"import", Image("a.ppm"), "--folder", "D"}), "qfc: cannot put the folder last: D\n");
    EXPECT_NE(Refused({"mv", "B\\Below", "\\"}).find("reorder its folders first"), std::string::npos);
    EXPECT_EQ(RawDb(Database()).Cell("select min(ORDER_INDEX) >= -1 from FOLDER_TABLE"), "1");
    Done({"reorder", "A", "--to", "1"});
    Done({"mv", "B\\Below", "\\"});
    EXPECT_EQ(FoldersOf("\\").back(), "Below");
}

TEST_F(CommandsItems, ReorderOfAFolderWithoutItems_SaysThatThereIsNothingToOrder) {
    Done({"mkdir", "Only\\Folders"});
    EXPECT_NE(Refused({"reorder", "Only", "--by", "name"}).find("no items"), std::string::npos);
    EXPECT_NE(Refused({"reorder", "Only\\Folders", "--by", "name"}).find("no items"), std::string::npos);
}

TEST_F(CommandsItems, AnItemThatStaysBehindItsLastPlacement_IsNotCountedAsRemoved) {
    Done({"import", Image("a.ppm"), "--folder", "A"});
    RawDb(Database()).Exec("create trigger keep before delete on ITEM_TABLE begin select raise(ignore); end");
    const Json report = Document({"rm", "A\\a.ppm"}, 1);
    EXPECT_EQ(report["failed"].size(), 1u);
}

TEST_F(CommandsItems, RmdirIsNotDone_WhenAnItemStaysBehindItsLastPlacement) {
    Done({"import", Image("a.ppm"), "--folder", "A\\B"});
    RawDb(Database()).Exec("create trigger keep before delete on ITEM_TABLE begin select raise(ignore); end");
    const QfcResult result = Qfc({"rmdir", "A", "--recursive"});
    EXPECT_EQ(result.exit, 1);
    EXPECT_EQ(result.out, "removed A\n");
    EXPECT_NE(result.err.find("A\\B\\a.ppm "), std::string::npos) << result.err;
    EXPECT_NE(result.err.find("is left without a folder; check lists it\n"), std::string::npos) << result.err;
    EXPECT_EQ(Count("ITEM_TABLE"), "1");
}

TEST_F(CommandsItems, RmdirOfSharedItemsThatDoesNotEnd_SaysThatTheirPlacesAreGone) {
    Done({"import", Image("a.ppm", 1), "--folder", "A"});
    const int row = Done({"mkdir", "B"})["folder"]["row"];
    RawDb(Database())
        .Exec("insert into RELATION_TABLE select " + std::to_string(row) +
              ", ITEM_ID, 0 from ITEM_TABLE;"
              "create trigger keep before delete on FOLDER_TABLE begin select raise(abort, 'stays'); end");
    const QfcResult result = Qfc({"rmdir", "A", "--recursive"});
    EXPECT_EQ(result.exit, 1);
    const bool isPlaced = Count("RELATION_TABLE where PARENT_ID <> " + std::to_string(row)) == "1";
    EXPECT_EQ(result.err == "qfc: cannot remove A\n", isPlaced) << result.err;
}

TEST_F(CommandsItems, RmdirLeavesItemsThatStandElsewhere) {
    Done({"import", Image("a.ppm", 1), "--folder", "A"});
    const int row = Done({"mkdir", "B", "--gallery", "Overlays"})["folder"]["row"];
    RawDb(Database())
        .Exec("insert into RELATION_TABLE (PARENT_ID, ITEM_ID, ITEM_INDEX) select " + std::to_string(row) +
              ", ITEM_ID, 0 from ITEM_TABLE");
    Done({"rmdir", "A", "--recursive"});
    EXPECT_EQ(ItemsOf("B", {"--gallery", "Overlays"}), Names{"a.ppm"});
    ExpectSound();
}

}  // namespace
}  // namespace qfc::test
