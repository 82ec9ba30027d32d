#include "CommandsTest.h"

namespace qfc::test {
namespace {

class CommandsFolders : public CommandsTest {
protected:
    std::string Count(const std::string& table) { return RawDb(Database()).Cell("select count(*) from " + table); }
};

TEST_F(CommandsFolders, MkdirMakesEveryLevel) {
    const Json made = Done({"mkdir", "A\\B\\C"});
    EXPECT_EQ(made["made"], (Json{"A", "A\\B", "A\\B\\C"}));
    EXPECT_EQ(FoldersOf("A\\B"), Names{"C"});
}

TEST_F(CommandsFolders, MkdirOfAFolderThatIsThere_Fails) {
    Done({"mkdir", "A"});
    Refused({"mkdir", "A"});
    EXPECT_EQ(Done({"mkdir", "A\\B"})["made"], Json{"A\\B"});
}

TEST_F(CommandsFolders, NewFoldersComeLast) {
    for (const char* name : {"C", "A", "B"}) Done({"mkdir", name});
    EXPECT_EQ(FoldersOf("\\"), (Names{"C", "A", "B"}));
}

TEST_F(CommandsFolders, NewFoldersComeLast_AlsoAfterOthersWereRemoved) {
    for (const char* name : {"1", "2", "3"}) Done({"mkdir", name});
    Done({"rmdir", "1"});
    Done({"rmdir", "2"});
    Done({"mkdir", "4"});
    EXPECT_EQ(FoldersOf("\\"), (Names{"3", "4"}));
}

TEST_F(CommandsFolders, RmdirRemovesAnEmptyFolder) {
    Done({"mkdir", "A\\B"});
    Done({"rmdir", "A\\B"});
    EXPECT_EQ(FoldersOf("A"), Names{});
    Refused({"rmdir", "A\\B"});
}

TEST_F(CommandsFolders, RmdirRefusesAFilledFolder) {
    Done({"import", Image("a.ppm"), "--folder", "A\\B"});
    EXPECT_NE(Refused({"rmdir", "A"}).find("--recursive"), std::string::npos);
    Refused({"rmdir", "A\\B"});
    EXPECT_EQ(ItemsOf("A\\B"), Names{"a.ppm"});
}

TEST_F(CommandsFolders, RmdirRecursive_TakesItemsAndPayloadsAlong) {
    Done({"import", Video("v.mp4"), "--folder", "A\\B"});
    Done({"mkdir", "C"});
    Done({"rmdir", "A", "--recursive"});
    EXPECT_EQ(FoldersOf("\\"), Names{"C"});
    EXPECT_EQ(Count("ITEM_TABLE"), "0");
    EXPECT_EQ(Count("CACHE_DATA_TABLE"), "0");
    ExpectSound();
}

TEST_F(CommandsFolders, RmdirRecursive_LeavesAnItemThatAnotherFolderHolds) {
    Done({"import", Image("a.ppm"), "--folder", "A"});
    const int row = Done({"mkdir", "B"})["folder"]["row"];
    RawDb(Database())
        .Exec("insert into RELATION_TABLE (PARENT_ID, ITEM_ID, ITEM_INDEX) select " + std::to_string(row) +
              ", ITEM_ID, 0 from ITEM_TABLE");
    Done({"rmdir", "A", "--recursive"});
    EXPECT_EQ(ItemsOf("B"), Names{"a.ppm"});
    EXPECT_GT(Done({"show", "B\\a.ppm"})["bitmapCache"]["bytes"], 0);
}

// Without those above it, it would have no parent.
TEST_F(CommandsFolders, RmdirRecursive_AFolderThatStaysKeepsThoseAboveIt) {
    Done({"import", Image("a.ppm"), "--folder", "A\\B\\C"});
    Done({"mkdir", "A\\D"});
    RawDb(Database())
        .Exec(
            "create trigger keep before delete on FOLDER_TABLE when old.FOLDER_NAME = 'B' "
            "begin select raise(abort, 'kept'); end");
    const QfcResult result = Qfc({"--json", "rmdir", "A", "--recursive"});
    EXPECT_EQ(result.exit, 1);
    EXPECT_EQ(result.err, "qfc: cannot remove A\\B\nqfc: 2 of 4 folders and 1 of 1 items are not seen in A any more\n");
    const Json report = Json::parse(result.out);
    EXPECT_EQ(report["halt"], "cannot remove A\\B");
    EXPECT_EQ(report["failed"], Json{"A\\B"});
    EXPECT_EQ(FoldersOf("\\"), Names{"A"});
    EXPECT_EQ(FoldersOf("A"), Names{"B"});
    EXPECT_EQ(FoldersOf("A\\B"), Names{});
    ExpectSound();
}

TEST_F(CommandsFolders, RmdirRecursive_ShowsOnATerminalHowFarItIs) {
    if (!CanMakeTerminal()) GTEST_SKIP() << "there are no terminals here";
    Done({"mkdir", "A\\B\\C"});
    ExpectSteps(QfcOnATerminal({"rmdir", "A", "--recursive"}), {"1/3 A\\B\\C", "2/3 A\\B", "3/3 A"});
}

TEST_F(CommandsFolders, RmdirRefusesTheGallery) {
    Done({"mkdir", "A"});
    Refused({"rmdir", "\\"});
    EXPECT_EQ(FoldersOf("\\"), Names{"A"});
}

// --- mv
// ---------------------------------------------------------------------------------------------------------------

TEST_F(CommandsFolders, MvMovesAFolderWithAllBelowIt_BehindTheOthers) {
    Done({"import", Image("a.ppm"), "--folder", "A\\B"});
    Done({"mkdir", "T\\First"});
    Done({"mv", "A", "T"});
    EXPECT_EQ(FoldersOf("\\"), Names{"T"});
    EXPECT_EQ(FoldersOf("T"), (Names{"First", "A"}));
    EXPECT_EQ(ItemsOf("T\\A\\B"), Names{"a.ppm"});
    ExpectSound();
}

TEST_F(CommandsFolders, MvComesLast_AlsoWhereIndexesHaveGaps) {
    for (const char* name : {"T\\1", "T\\2", "T\\3", "X"}) Done({"mkdir", name});
    Done({"rmdir", "T\\1"});
    Done({"mv", "X", "T"});
    EXPECT_EQ(FoldersOf("T"), (Names{"2", "3", "X"}));
}

TEST_F(CommandsFolders, MvToTheGallery) {
    Done({"mkdir", "A\\B"});
    Done({"mv", "A\\B", "\\"});
    EXPECT_EQ(FoldersOf("\\"), (Names{"A", "B"}));
}

TEST_F(CommandsFolders, MvNeverGoesIntoItselfOrBelow) {
    Done({"mkdir", "A\\B\\C"});
    Refused({"mv", "A", "A"});
    Refused({"mv", "A", "A\\B\\C"});
    EXPECT_EQ(FoldersOf("A\\B"), Names{"C"});
}

TEST_F(CommandsFolders, MvRefusesANameThatIsTaken) {
    Done({"mkdir", "A\\X"});
    Done({"mkdir", "X"});
    Refused({"mv", "A\\X", "\\"});
    Refused({"mv", "X", "A"});
    EXPECT_EQ(FoldersOf("\\"), (Names{"A", "X"}));
    EXPECT_EQ(FoldersOf("A"), Names{"X"});
}

TEST_F(CommandsFolders, MvToWhereItIs_Fails) {
    Done({"mkdir", "A\\B"});
    Refused({"mv", "A\\B", "A"});
}

TEST_F(CommandsFolders, NothingMovesToAnotherGallery) {
    Done({"mkdir", "A"});
    const int row = Done({"mkdir", "B", "--gallery", "Titles"})["folder"]["row"];
    Refused({"mv", "A", "#" + std::to_string(row)});
    EXPECT_EQ(FoldersOf("\\"), Names{"A"});
}

// --- Depth
// --------------------------------------------------------------------------------------------------------------

std::string Levels(int count) {
    std::string path;
    for (int i = 0; i < count; ++i) path += i == 0 ? "d" : "\\d";
    return path;
}

class CommandsDeepFolders : public CommandsFolders {
protected:
    // Makes so many folders "d", one in the other, below the one with that row; the row of the last.
    int Deepen(int row, int count) {
        const int last = std::stoi(RawDb(Database()).Cell("select max(ID) from FOLDER_TABLE"));
        RawDb(Database())
            .Exec("with recursive LEVEL(I) as (select 1 union all select I + 1 from LEVEL where I < " +
                  std::to_string(count) +
                  ") insert into FOLDER_TABLE select VERSION, PREDEFINED_ID, 'd', ADOPT_TYPE, TRUSTY_TYPE, TYPE_EXTRA, "
                  "case I when 1 then ID else I - 1 + " +
                  std::to_string(last) + " end, EXPAND_TYPE, 1, I + " + std::to_string(last) +
                  " from LEVEL join FOLDER_TABLE on ID = " + std::to_string(row));
        return last + count;
    }
    int MakeLevels(const std::string& name, int count) {
        const int row = Done({"mkdir", name})["folder"]["row"];
        return Deepen(row, count);
    }
};

TEST_F(CommandsDeepFolders, FoldersThatWouldNotBeLoadedAgainAreNotMade) {
    MakeLevels("d", 998);
    Refused({"mkdir", Levels(1001)});
    Refused({"import", Image("a.ppm"), "--folder", Levels(1001)});
    EXPECT_EQ(Done({"mkdir", Levels(1000)})["made"].size(), 1U);
    EXPECT_EQ(FoldersOf(Levels(999)), Names{"d"});
    Refused({"mkdir", Levels(1001)});
    Done({"mkdir", "e"});
    Refused({"mv", "e", Levels(1000)});
    Done({"mv", "e", Levels(999)});
    EXPECT_EQ(FoldersOf(Levels(999)), (Names{"d", "e"}));
    EXPECT_EQ(Count("FOLDER_TABLE where FOLDER_NAME = 'd'"), "1000");
}

TEST_F(CommandsDeepFolders, ManyLevelsAreNotMovedBelowMany) {
    MakeLevels("a", 600);
    MakeLevels("b", 600);
    Refused({"mv", "b", "a\\" + Levels(399)});
    Done({"mv", "b", "a\\" + Levels(398)});
    EXPECT_EQ(FoldersOf("a\\" + Levels(398)), (Names{"d", "b"}));
    EXPECT_EQ(FoldersOf("a\\" + Levels(398) + "\\b\\" + Levels(599)), Names{"d"});
}

TEST_F(CommandsDeepFolders, ImportedDirectoriesEndWhereNothingIsLoadedAgain) {
    m_media.MakeFolder("x");
    Image("x/a.ppm");
    const QfcResult result = Qfc({"import", Media("x"), "--folder", Levels(1000)});
    EXPECT_EQ(result.exit, 1);
    EXPECT_NE(result.err.find("deeper"), std::string::npos) << result.err;
    EXPECT_EQ(Count("ITEM_TABLE"), "0");
    EXPECT_EQ(Count("FOLDER_TABLE where FOLDER_NAME = 'd'"), "0");
}

TEST_F(CommandsDeepFolders, RmdirRefusesFoldersBelowThatWereNotLoaded) {
    Done({"import", Image("a.ppm"), "--folder", "First"});
    const std::string last = std::to_string(MakeLevels("d", 999));
    Deepen(std::stoi(last), 2);
    Done({"mkdir", "T"});
    const std::string before = DumpOf(Database());
    EXPECT_NE(Refused({"rmdir", "d", "--recursive"}).find("#" + last), std::string::npos);
    EXPECT_NE(Refused({"rmdir", "#" + last}).find("#" + last), std::string::npos);
    EXPECT_NE(Refused({"gallery", "rm", "Media"}).find("#" + last), std::string::npos);
    EXPECT_EQ(DumpOf(Database()), before);
    Done({"mv", "#" + last, "T"});
    EXPECT_EQ(FoldersOf("T\\d\\d"), Names{"d"});
    Done({"rmdir", "T", "--recursive"});
    EXPECT_EQ(Count("FOLDER_TABLE where FOLDER_NAME = 'd'"), "999");
    ExpectSound();
}

// --- rename and reorder
// -------------------------------------------------------------------------------------------------

TEST_F(CommandsFolders, RenameKeepsContentAndPlace) {
    Done({"import", Image("a.ppm"), "--folder", "A"});
    Done({"mkdir", "B"});
    Done({"rename", "A", "New name"});
    EXPECT_EQ(FoldersOf("\\"), (Names{"New name", "B"}));
    EXPECT_EQ(ItemsOf("New name"), Names{"a.ppm"});
}

TEST_F(CommandsFolders, RenameRefusesANameThatIsTaken) {
    Done({"mkdir", "A"});
    Done({"mkdir", "B"});
    Refused({"rename", "A", "B"});
    Done({"rename", "A", "A"});
    EXPECT_EQ(FoldersOf("\\"), (Names{"A", "B"}));
}

TEST_F(CommandsFolders, ReorderPutsAFolderAmongItsNeighbours) {
    for (const char* name : {"A", "B", "C", "D"}) Done({"mkdir", name});
    Done({"reorder", "D", "--to", "2"});
    EXPECT_EQ(FoldersOf("\\"), (Names{"A", "D", "B", "C"}));
    Done({"reorder", "A", "--to", "4"});
    EXPECT_EQ(FoldersOf("\\"), (Names{"D", "B", "C", "A"}));
    Refused({"reorder", "A", "--to", "5"});
    EXPECT_EQ(FoldersOf("\\"), (Names{"D", "B", "C", "A"}));
}

TEST_F(CommandsFolders, ReorderOfAnOnlyChildChangesNothing) {
    Done({"mkdir", "A\\B"});
    Done({"reorder", "A\\B", "--to", "1"});
    EXPECT_EQ(FoldersOf("A"), Names{"B"});
}

TEST_F(CommandsFolders, ATextThatIsAnItemAndAFolder_IsRefused) {
    Done({"import", Image("a.ppm"), "--folder", "A"});
    Done({"mkdir", "A\\a.ppm"});
    const std::string line = Refused({"rename", "A\\a.ppm", "b"});
    EXPECT_NE(line.find("#"), std::string::npos) << line;
    EXPECT_NE(line.find(GuidOf("A\\a.ppm")), std::string::npos) << line;
}

TEST_F(CommandsFolders, ChangesOfAFolderNamedLikeAKey_KeepTheMaskThatIsStored) {
    Done({"mkdir", "a--b\\x--y"});
    Done({"mkdir", "a--b\\z--z"});
    Done({"mkdir", "Other"});
    const auto masks = [&] { return RawDb(Database()).Rows("select distinct TRUSTY_TYPE from FOLDER_TABLE"); };
    const auto before = masks();
    Done({"rename", "a--b", "c--d"});
    EXPECT_EQ(masks(), before);
    Done({"reorder", "Other", "--to", "1"});
    EXPECT_EQ(masks(), before);
    Done({"mv", "c--d\\x--y", "Other"});
    Done({"mv", "c--d", "Other"});
    EXPECT_EQ(masks(), before);
}

}  // namespace
}  // namespace qfc::test
