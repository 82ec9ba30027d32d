#include "db/EffectRecords.h"
#include "db/Sql.h"
#include "tests/db/DbTestSupport.h"
#include "tests/support/SqlTrace.h"

#include <algorithm>
#include <set>

namespace {

using namespace qfc::test;
using qfc::FilterEntry;
using Block = std::vector<BYTE>;
using Filters = std::vector<DS_Filter_File_Record>;
using Transitions = std::vector<DS_Transition_Record>;

Block Filled(std::size_t count, int value) { return Block(count, static_cast<BYTE>(value)); }

FilterEntry MakeFilter(int number, std::size_t descriptor = 8, std::size_t table = 456) {
    return {Filled(descriptor, number), Filled(table, number + 100), MakeGuid(number)};
}

DS_Filter_File_Record MakeFile(const char* name, std::initializer_list<int> numbers) {
    DS_Filter_File_Record file;
    file.strFileName = name;
    file.nFilterCount = static_cast<int>(numbers.size());
    for (const int number : numbers) file.filters.push_back(MakeFilter(number));
    return file;
}

DS_Transition_Record MakeTransition(const char* name, int number, std::size_t length = 77) {
    DS_Transition_Record transition;
    transition.strFileName = name;
    transition.descriptor = Filled(length, number);
    transition.guidItem = MakeGuid(number);
    return transition;
}

std::string Hex(const Block& block) {
    static constexpr char kDigits[] = "0123456789ABCDEF";
    std::string text = "X'";
    for (const BYTE byte : block) text += {kDigits[byte >> 4], kDigits[byte & 15]};
    return text + "'";
}

class DBToolsEffects : public LibraryTest {
protected:
    // Seen through a connection of its own.
    Filters Files() {
        Filters files;
        EXPECT_TRUE(m_tools->LoadFilterFiles(files));
        return files;
    }
    Transitions AllTransitions() {
        Transitions transitions;
        EXPECT_TRUE(m_tools->LoadTransitions(transitions));
        return transitions;
    }
    void RefuseWrites(const std::string& table) { qfc::test::RefuseWrites(m_path, table); }
    void RefuseDeletes(const std::string& table) {
        Exec("create trigger REFUSE_" + table + " before delete on " + table +
             " begin select raise(fail, 'refused'); end");
    }
};

// --- Records -----------------------------------------------------------------------------------------------------

TEST(EffectRecords, ACopyOwnsBlocksOfItsOwn) {
    DS_Filter_File_Record file = MakeFile("a.so", {1});
    const DS_Filter_File_Record copy = file;
    file.filters[0].descriptor[0] = 99;
    file.filters[0].table.clear();
    EXPECT_EQ(copy.filters[0].descriptor, Filled(8, 1));
    EXPECT_EQ(copy.filters[0].table, Filled(456, 101));
    DS_Transition_Record transition = MakeTransition("a.so", 1);
    const DS_Transition_Record twin = transition;
    transition.descriptor[0] = 99;
    EXPECT_EQ(twin.descriptor, Filled(77, 1));
}

TEST(EffectRecords, BelongToTheLibraryUnlessTheHostSaysOtherwise) {
    EXPECT_EQ(DS_Filter_File_Record().bInLibrary, 1);
    EXPECT_EQ(DS_Transition_Record().bInLibrary, 1);
}

TEST_F(DBToolsEffects, TheInLibraryFlagIsCopiedAndNotStored) {
    DS_Filter_File_Record file = MakeFile("a.so", {1});
    DS_Transition_Record transition = MakeTransition("b.so", 2);
    file.bInLibrary = transition.bInLibrary = 0;
    EXPECT_EQ(DS_Filter_File_Record(file).bInLibrary, 0);
    EXPECT_EQ(DS_Transition_Record(transition).bInLibrary, 0);
    ASSERT_TRUE(m_tools->SaveFilterFile(file));
    ASSERT_TRUE(m_tools->SaveTransition(transition));
    EXPECT_EQ(Files().at(0).bInLibrary, 1);
    EXPECT_EQ(AllTransitions().at(0).bInLibrary, 1);
}

// --- Filter files ------------------------------------------------------------------------------------------------

TEST_F(DBToolsEffects, AFilterFileComesBackByteForByte) {
    ASSERT_TRUE(m_tools->SaveFilterFile(MakeFile("/fx/a.so", {1, 2})));
    const Filters files = Files();
    ASSERT_EQ(files.size(), 1u);
    EXPECT_EQ(files[0].strFileName, "/fx/a.so");
    EXPECT_EQ(files[0].nFilterCount, 2);
    ASSERT_EQ(files[0].filters.size(), 2u);
    for (int number = 1; number <= 2; ++number) {
        const FilterEntry& filter = files[0].filters[static_cast<std::size_t>(number - 1)];
        EXPECT_EQ(filter.descriptor, Filled(8, number));
        EXPECT_EQ(filter.table, Filled(456, number + 100));
        EXPECT_EQ(filter.guidItem, MakeGuid(number));
    }
}

TEST_F(DBToolsEffects, RowsHoldWhatTheStatementsName) {
    ASSERT_TRUE(m_tools->SaveFilterFile(MakeFile("a.so", {1})));
    ASSERT_TRUE(m_tools->SaveTransition(MakeTransition("b.so", 2, 3)));
    EXPECT_EQ(Cell("select FILE_NAME from FLT_FILE_TABLE"), "'a.so'");
    EXPECT_EQ(Cell("select FILTER_COUNT from FLT_FILE_TABLE"), "1");
    EXPECT_EQ(Cell("select DSORVFT_DATA from FLT_TABLE"), Hex(Filled(8, 1)));
    EXPECT_EQ(Cell("select DSVFTABLE_DATA from FLT_TABLE"), Hex(Filled(456, 101)));
    EXPECT_EQ(Cell("select FILE_NAME from FLT_TABLE"), "'a.so'");
    EXPECT_EQ(Cell("select ITEM_ID from FLT_TABLE"), Literal(MakeGuid(1)));
    EXPECT_EQ(Cell("select FILE_NAME from TRANSITION_TABLE"), "'b.so'");
    EXPECT_EQ(Cell("select DSORVFX_DATA from TRANSITION_TABLE"), Hex(Filled(3, 2)));
    EXPECT_EQ(Cell("select ITEM_ID from TRANSITION_TABLE"), Literal(MakeGuid(2)));
}

// Names of effect files are no shown names: they are bound as given, whatever the code page.
TEST_F(DBToolsEffects, FileNamesAreStoredAsGiven) {
    ASSERT_TRUE(m_tools->SaveFilterFile(MakeFile("/fx/\xC3\xA4 b.so", {1})));
    EXPECT_EQ(Cell("select hex(cast(FILE_NAME as blob)) from FLT_TABLE where FILE_NAME = '/fx/\xC3\xA4 b.so'").empty(),
              false);
    EXPECT_EQ(Files().at(0).strFileName, "/fx/\xC3\xA4 b.so");
    EXPECT_EQ(Files().at(0).filters.size(), 1u);
}

TEST_F(DBToolsEffects, ShortBlocksAreFilledUpWithZeros) {
    DS_Filter_File_Record file = MakeFile("a.so", {});
    file.filters = {MakeFilter(1, 3, 10), MakeFilter(2, 0, 0)};
    ASSERT_TRUE(m_tools->SaveFilterFile(file));
    const Filters files = Files();
    ASSERT_EQ(files.at(0).filters.size(), 2u);
    Block descriptor = Filled(3, 1);
    descriptor.resize(8);
    Block table = Filled(10, 101);
    table.resize(456);
    EXPECT_EQ(files[0].filters[0].descriptor, descriptor);
    EXPECT_EQ(files[0].filters[0].table, table);
    EXPECT_EQ(files[0].filters[1].descriptor, Block(8));
    EXPECT_EQ(files[0].filters[1].table, Block(456));
}

TEST_F(DBToolsEffects, LongBlocksAreCut) {
    DS_Filter_File_Record file = MakeFile("a.so", {});
    file.filters = {MakeFilter(1, 9, 1000)};
    ASSERT_TRUE(m_tools->SaveFilterFile(file));
    EXPECT_EQ(Files().at(0).filters.at(0).descriptor, Filled(8, 1));
    EXPECT_EQ(Files().at(0).filters.at(0).table, Filled(456, 101));
}

TEST_F(DBToolsEffects, TheFilterCountIsReturnedAsStored) {
    DS_Filter_File_Record file = MakeFile("a.so", {1});
    for (const int count : {0, 7, -3, std::numeric_limits<int>::max()}) {
        file.nFilterCount = count;
        ASSERT_TRUE(m_tools->SaveFilterFile(file));
        EXPECT_EQ(Files().at(0).nFilterCount, count);
        EXPECT_EQ(Files().at(0).filters.size(), 1u);
    }
}

TEST_F(DBToolsEffects, AFileWithoutFiltersIsAFile) {
    ASSERT_TRUE(m_tools->SaveFilterFile(MakeFile("broken.so", {})));
    ASSERT_EQ(Files().size(), 1u);
    EXPECT_EQ(Files()[0].nFilterCount, 0);
    EXPECT_TRUE(Files()[0].filters.empty());
}

TEST_F(DBToolsEffects, AFilterSavedUnderAnotherFileMovesThere) {
    ASSERT_TRUE(m_tools->SaveFilterFile(MakeFile("a.so", {1, 2})));
    ASSERT_TRUE(m_tools->SaveFilterFile(MakeFile("b.so", {2})));
    const Filters files = Files();
    ASSERT_EQ(files.size(), 2u);
    ASSERT_EQ(files[0].filters.size(), 1u);
    EXPECT_EQ(files[0].filters[0].guidItem, MakeGuid(1));
    EXPECT_EQ(files[0].nFilterCount, 2);
    ASSERT_EQ(files[1].filters.size(), 1u);
    EXPECT_EQ(files[1].filters[0].guidItem, MakeGuid(2));
}

TEST_F(DBToolsEffects, SavingAgainReplacesAndLeavesOtherFiltersOfTheFile) {
    ASSERT_TRUE(m_tools->SaveFilterFile(MakeFile("a.so", {1, 2})));
    DS_Filter_File_Record changed = MakeFile("a.so", {1});
    changed.filters[0].descriptor = Filled(8, 55);
    ASSERT_TRUE(m_tools->SaveFilterFile(changed));
    EXPECT_EQ(Count("FLT_FILE_TABLE"), "1");
    EXPECT_EQ(Count("FLT_TABLE"), "2");
    EXPECT_EQ(Cell("select DSORVFT_DATA from FLT_TABLE where ITEM_ID = " + Literal(MakeGuid(1))), Hex(Filled(8, 55)));
}

TEST_F(DBToolsEffects, RowsWithAnAbsentOrEmptyBlockAreNotReturned) {
    ASSERT_TRUE(m_tools->SaveFilterFile(MakeFile("a.so", {1, 2, 3, 4, 5})));
    const auto damage = [&](int number, const char* change) {
        Exec(std::string("update FLT_TABLE set ") + change + " where ITEM_ID = " + Literal(MakeGuid(number)));
    };
    damage(1, "DSVFTABLE_DATA = X''");
    damage(2, "DSVFTABLE_DATA = NULL");
    damage(3, "DSORVFT_DATA = X''");
    damage(4, "DSORVFT_DATA = NULL");
    ASSERT_EQ(Files().size(), 1u);
    EXPECT_EQ(Files()[0].nFilterCount, 5);
    ASSERT_EQ(Files()[0].filters.size(), 1u);
    EXPECT_EQ(Files()[0].filters[0].guidItem, MakeGuid(5));
}

TEST_F(DBToolsEffects, BlocksOfAnyStoredLengthComeBack) {
    Exec(
        "insert into FLT_FILE_TABLE values('a.so', 1);"
        "insert into FLT_TABLE values(X'01', zeroblob(70000), 'a.so', " +
        Literal(MakeGuid(1)) + ")");
    EXPECT_EQ(Files().at(0).filters.at(0).descriptor, Block{1});
    EXPECT_EQ(Files().at(0).filters.at(0).table, Block(70000));
}

TEST_F(DBToolsEffects, NullCellsReadAsEmptyAndZero) {
    Exec(
        "insert into FLT_FILE_TABLE values(NULL, NULL);"
        "insert into TRANSITION_TABLE values(NULL, X'01', " +
        Literal(MakeGuid(1)) + ")");
    ASSERT_EQ(Files().size(), 1u);
    EXPECT_EQ(Files()[0].strFileName, "");
    EXPECT_EQ(Files()[0].nFilterCount, 0);
    EXPECT_EQ(AllTransitions().at(0).strFileName, "");
}

TEST_F(DBToolsEffects, RowsWhoseItemIsNoGuidAreNotReturned) {
    Exec(
        "insert into FLT_FILE_TABLE values('a.so', 3);"
        "insert into FLT_TABLE values(X'01', X'02', 'a.so', X'0102');"
        "insert into FLT_TABLE values(X'01', X'02', 'a.so', NULL);"
        "insert into FLT_TABLE values(X'01', X'02', 'a.so', 7);"
        "insert into TRANSITION_TABLE values('b.so', X'01', X'00112233445566778899AABBCCDDEEFF00');"
        "insert into TRANSITION_TABLE values('b.so', X'01', NULL)");
    EXPECT_TRUE(Files().at(0).filters.empty());
    EXPECT_TRUE(AllTransitions().empty());
}

TEST_F(DBToolsEffects, LoadsEmptyTheListFirst) {
    Filters files{MakeFile("stale", {1})};
    Transitions transitions{MakeTransition("stale", 1)};
    EXPECT_TRUE(m_tools->LoadFilterFiles(files));
    EXPECT_TRUE(m_tools->LoadTransitions(transitions));
    EXPECT_TRUE(files.empty());
    EXPECT_TRUE(transitions.empty());
}

TEST_F(DBToolsEffects, ALoadSendsOneQueryForTheFilesAndOneForEach) {
    m_tools.reset();
    const SqlTrace trace;
    Open();
    for (const char* name : {"a.so", "b.so"}) ASSERT_TRUE(m_tools->SaveFilterFile(MakeFile(name, {})));
    const int begins = trace.CountStartingWith("BEGIN");
    Files();
    EXPECT_EQ(trace.Count("Select * from FLT_FILE_TABLE"), 1);
    EXPECT_EQ(trace.Count("Select * from FLT_TABLE where FILE_NAME = ?"), 2);
    EXPECT_EQ(trace.CountStartingWith("BEGIN"), begins + 1);
}

// --- Failures -----------------------------------------------------------------------------------------------------

TEST_F(DBToolsEffects, ALoadThatFailsOnItsWayLeavesWhatWasAppended) {
    ASSERT_TRUE(m_tools->SaveFilterFile(MakeFile("a.so", {1})));
    for (const char* name : {"b.so", "c.so"}) ASSERT_TRUE(m_tools->SaveFilterFile(MakeFile(name, {})));
    Exec("drop table FLT_TABLE");
    Filters files{MakeFile("stale", {9})};
    EXPECT_FALSE(m_tools->LoadFilterFiles(files));
    ASSERT_EQ(files.size(), 3u);
    EXPECT_EQ(files[0].strFileName, "a.so");
    EXPECT_TRUE(files[0].filters.empty());
}

TEST_F(DBToolsEffects, ALoadThatFailsAtItsFirstQueryLeavesAnEmptyList) {
    Exec("drop table FLT_FILE_TABLE; drop table TRANSITION_TABLE");
    Filters files{MakeFile("stale", {9})};
    Transitions transitions{MakeTransition("stale", 9)};
    EXPECT_FALSE(m_tools->LoadFilterFiles(files));
    EXPECT_FALSE(m_tools->LoadTransitions(transitions));
    EXPECT_TRUE(files.empty());
    EXPECT_TRUE(transitions.empty());
}

TEST_F(DBToolsEffects, ASaveWhoseSecondFilterIsRefusedLeavesNothing) {
    Exec("create trigger REFUSE before insert on FLT_TABLE when new.ITEM_ID = " + Literal(MakeGuid(2)) +
         " begin select raise(fail, 'refused'); end");
    EXPECT_FALSE(m_tools->SaveFilterFile(MakeFile("a.so", {1, 2, 3})));
    EXPECT_EQ(Count("FLT_FILE_TABLE"), "0");
    EXPECT_EQ(Count("FLT_TABLE"), "0");
}

TEST_F(DBToolsEffects, ADeletionWhoseFiltersAreRefusedKeepsTheFileToo) {
    ASSERT_TRUE(m_tools->SaveFilterFile(MakeFile("a.so", {1})));
    RefuseDeletes("FLT_TABLE");
    EXPECT_FALSE(m_tools->DeleteFilterFile("a.so"));
    EXPECT_EQ(Count("FLT_FILE_TABLE"), "1");
    EXPECT_EQ(Count("FLT_TABLE"), "1");
}

TEST_F(DBToolsEffects, SeveralFilesAreDeletedTogetherOrNotAtAll) {
    const Filters files{MakeFile("a.so", {1}), MakeFile("b.so", {2})};
    const Transitions transitions{MakeTransition("c.so", 3), MakeTransition("d.so", 4)};
    for (const auto& file : files) ASSERT_TRUE(m_tools->SaveFilterFile(file));
    for (const auto& transition : transitions) ASSERT_TRUE(m_tools->SaveTransition(transition));
    for (const std::string table : {"FLT_FILE_TABLE", "TRANSITION_TABLE"}) {
        Exec("create trigger REFUSE_" + table + " before delete on " + table +
             " when old.FILE_NAME in ('b.so', 'd.so') begin select raise(fail, 'refused'); end");
    }
    EXPECT_FALSE(m_tools->DeleteFilterFiles(files));
    EXPECT_FALSE(m_tools->DeleteTransitionFiles(transitions));
    EXPECT_EQ(Count("FLT_TABLE"), "2");
    EXPECT_EQ(Count("TRANSITION_TABLE"), "2");
    Exec("drop trigger REFUSE_FLT_FILE_TABLE; drop trigger REFUSE_TRANSITION_TABLE");
    EXPECT_TRUE(m_tools->DeleteFilterFiles(files));
    EXPECT_TRUE(m_tools->DeleteTransitionFiles(transitions));
    EXPECT_EQ(Count("FLT_FILE_TABLE"), "0");
    EXPECT_EQ(Count("FLT_TABLE"), "0");
    EXPECT_EQ(Count("TRANSITION_TABLE"), "0");
}

TEST_F(DBToolsEffects, WithoutConnectionEverythingFails) {
    bool ok = true;
    DBTools tools(CString((m_folder / "missing/library.db").c_str()), ok);
    ASSERT_FALSE(ok);
    Filters files{MakeFile("stale", {1})};
    Transitions transitions{MakeTransition("stale", 1)};
    EXPECT_FALSE(tools.LoadFilterFiles(files));
    EXPECT_FALSE(tools.LoadTransitions(transitions));
    EXPECT_FALSE(tools.SaveFilterFile(MakeFile("a.so", {1})));
    EXPECT_FALSE(tools.SaveTransition(MakeTransition("a.so", 1)));
    EXPECT_FALSE(tools.DeleteFilterFile("a.so"));
    EXPECT_FALSE(tools.DeleteTransitionFile("a.so"));
    EXPECT_FALSE(tools.DeleteFilterFiles({}));
    EXPECT_FALSE(tools.DeleteTransitionFiles({}));
    EXPECT_FALSE(tools.ClearFiltersAndTransitions());
}

// --- Deleting a file ----------------------------------------------------------------------------------------------

TEST_F(DBToolsEffects, DeletingAFileTakesItsRowAndItsFiltersOnly) {
    ASSERT_TRUE(m_tools->SaveFilterFile(MakeFile("a.so", {1, 2})));
    ASSERT_TRUE(m_tools->SaveFilterFile(MakeFile("b.so", {3})));
    ASSERT_TRUE(AddItem(1, AddGallery(6)));
    EXPECT_TRUE(m_tools->DeleteFilterFile("a.so"));
    ASSERT_EQ(Files().size(), 1u);
    EXPECT_EQ(Files()[0].strFileName, "b.so");
    EXPECT_EQ(Count("FLT_TABLE"), "1");
    EXPECT_EQ(Count("ITEM_TABLE"), "1");
}

TEST_F(DBToolsEffects, DeletingAnUnknownFileIsTrueAndChangesNothing) {
    ASSERT_TRUE(m_tools->SaveFilterFile(MakeFile("a.so", {1})));
    ASSERT_TRUE(m_tools->SaveTransition(MakeTransition("a.so", 2)));
    EXPECT_TRUE(m_tools->DeleteFilterFile("A.SO"));
    EXPECT_TRUE(m_tools->DeleteTransitionFile("A.SO"));
    EXPECT_EQ(Count("FLT_TABLE"), "1");
    EXPECT_EQ(Count("TRANSITION_TABLE"), "1");
}

// --- Transitions --------------------------------------------------------------------------------------------------

TEST_F(DBToolsEffects, ATransitionComesBackByteForByteInItsOwnLength) {
    for (const std::size_t length : {std::size_t{1}, std::size_t{77}, std::size_t{500000}}) {
        ASSERT_TRUE(m_tools->SaveTransition(MakeTransition("/fx/mix.so", 5, length)));
        const Transitions transitions = AllTransitions();
        ASSERT_EQ(transitions.size(), 1u);
        EXPECT_EQ(transitions[0].strFileName, "/fx/mix.so");
        EXPECT_EQ(transitions[0].descriptor, Filled(length, 5));
        EXPECT_EQ(transitions[0].guidItem, MakeGuid(5));
    }
}

TEST_F(DBToolsEffects, ATransitionWithoutBytesIsStoredAndNotReturned) {
    EXPECT_TRUE(m_tools->SaveTransition(MakeTransition("a.so", 1, 0)));
    Exec("insert into TRANSITION_TABLE values('b.so', NULL, " + Literal(MakeGuid(2)) + ")");
    EXPECT_EQ(Count("TRANSITION_TABLE"), "2");
    EXPECT_TRUE(AllTransitions().empty());
}

TEST_F(DBToolsEffects, DeletingATransitionFileTakesEveryTransitionOfIt) {
    for (const int number : {1, 2}) ASSERT_TRUE(m_tools->SaveTransition(MakeTransition("a.so", number)));
    ASSERT_TRUE(m_tools->SaveTransition(MakeTransition("b.so", 3)));
    EXPECT_TRUE(m_tools->DeleteTransitionFile("a.so"));
    ASSERT_EQ(AllTransitions().size(), 1u);
    EXPECT_EQ(AllTransitions()[0].guidItem, MakeGuid(3));
}

// --- Clearing -----------------------------------------------------------------------------------------------------

TEST_F(DBToolsEffects, ClearingEmptiesTheTablesAndTakesTheItems) {
    const int folder = AddGallery(6);
    for (const int number : {1, 2, 3, 4}) ASSERT_TRUE(AddItem(number, folder, number, Noise(500)));
    ASSERT_TRUE(m_tools->SaveFilterFile(MakeFile("a.so", {1, 2})));
    ASSERT_TRUE(m_tools->SaveTransition(MakeTransition("b.so", 3)));
    EXPECT_TRUE(m_tools->ClearFiltersAndTransitions());
    for (const char* table : {"FLT_FILE_TABLE", "FLT_TABLE", "TRANSITION_TABLE"}) EXPECT_EQ(Count(table), "0");
    EXPECT_EQ(Count("ITEM_TABLE"), "1");
    EXPECT_EQ(Cell("select ITEM_ID from ITEM_TABLE"), Literal(MakeGuid(4)));
    EXPECT_EQ(Count("CACHE_DATA_TABLE"), "1");
    EXPECT_EQ(Count("RELATION_TABLE"), "4");  // Placements are not touched.
}

TEST_F(DBToolsEffects, ClearingPassesOverIdsThatAreNone) {
    Exec(
        "insert into FLT_TABLE values(X'01', X'02', 'a.so', X'0102');"
        "insert into TRANSITION_TABLE values('b.so', X'01', NULL)");
    EXPECT_TRUE(m_tools->ClearFiltersAndTransitions());
    EXPECT_EQ(Count("FLT_TABLE"), "0");
    EXPECT_EQ(Count("TRANSITION_TABLE"), "0");
}

TEST_F(DBToolsEffects, ClearingSendsItsStepsInTheirOrder) {
    ASSERT_TRUE(m_tools->SaveFilterFile(MakeFile("a.so", {1})));
    m_tools.reset();
    const SqlTrace trace;
    Open();
    m_tools->SetShortcuts(false);
    const std::size_t before = trace.Statements().size();
    ASSERT_TRUE(m_tools->ClearFiltersAndTransitions());
    std::vector<std::string> sent = trace.Statements();
    sent.erase(sent.begin(), sent.begin() + static_cast<std::ptrdiff_t>(before));
    EXPECT_EQ(sent,
              (std::vector<std::string>{"BEGIN TRANSACTION;", "Select * from TRANSITION_TABLE",
                                        "Select * from FLT_TABLE", "Delete from CACHE_DATA_TABLE where ITEM_ID = ?",
                                        "Delete from ITEM_TABLE where ITEM_ID = ?", "DELETE FROM TRANSITION_TABLE",
                                        "DELETE FROM FLT_TABLE;", "DELETE FROM FLT_FILE_TABLE;", "END TRANSACTION;"}));
}

TEST_F(DBToolsEffects, ARefusedClearingChangesNothing) {
    ASSERT_TRUE(AddItem(1, AddGallery(6), 0, Noise(500)));
    ASSERT_TRUE(m_tools->SaveFilterFile(MakeFile("a.so", {1})));
    RefuseDeletes("FLT_FILE_TABLE");
    const std::string before = DumpOf(m_path);
    EXPECT_FALSE(m_tools->ClearFiltersAndTransitions());
    EXPECT_EQ(DumpOf(m_path), before);
}

}  // namespace
