#include "platform/text/CodePages.h"
#include "tests/db/EffectLibrary.h"

#include <limits>

namespace {

using namespace qfc::test;
using qfc::FilterEntry;

using DBToolsFilterFiles = EffectLibraryTest;

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

TEST_F(DBToolsFilterFiles, TheInLibraryFlagIsCopiedAndNotStored) {
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

// --- Saving
// ------------------------------------------------------------------------------------------------------------

TEST_F(DBToolsFilterFiles, AFilterFileComesBackByteForByte) {
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

TEST_F(DBToolsFilterFiles, RowsHoldWhatTheStatementsName) {
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

TEST_F(DBToolsFilterFiles, ShortBlocksAreFilledUpWithZeros) {
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

TEST_F(DBToolsFilterFiles, LongBlocksAreCut) {
    DS_Filter_File_Record file = MakeFile("a.so", {});
    file.filters = {MakeFilter(1, 9, 1000)};
    ASSERT_TRUE(m_tools->SaveFilterFile(file));
    EXPECT_EQ(Files().at(0).filters.at(0).descriptor, Filled(8, 1));
    EXPECT_EQ(Files().at(0).filters.at(0).table, Filled(456, 101));
}

TEST_F(DBToolsFilterFiles, TheFilterCountIsReturnedAsStored) {
    DS_Filter_File_Record file = MakeFile("a.so", {1});
    for (const int count : {0, 7, -3, std::numeric_limits<int>::max()}) {
        file.nFilterCount = count;
        ASSERT_TRUE(m_tools->SaveFilterFile(file));
        EXPECT_EQ(Files().at(0).nFilterCount, count);
        EXPECT_EQ(Files().at(0).filters.size(), 1u);
    }
}

TEST_F(DBToolsFilterFiles, AFileWithoutFiltersIsAFile) {
    ASSERT_TRUE(m_tools->SaveFilterFile(MakeFile("broken.so", {})));
    ASSERT_EQ(Files().size(), 1u);
    EXPECT_EQ(Files()[0].nFilterCount, 0);
    EXPECT_TRUE(Files()[0].filters.empty());
}

TEST_F(DBToolsFilterFiles, AFilterSavedUnderAnotherFileMovesThere) {
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

TEST_F(DBToolsFilterFiles, SavingAgainReplacesAndLeavesOtherFiltersOfTheFile) {
    ASSERT_TRUE(m_tools->SaveFilterFile(MakeFile("a.so", {1, 2})));
    DS_Filter_File_Record changed = MakeFile("a.so", {1});
    changed.filters[0].descriptor = Filled(8, 55);
    ASSERT_TRUE(m_tools->SaveFilterFile(changed));
    EXPECT_EQ(Count("FLT_FILE_TABLE"), "1");
    EXPECT_EQ(Count("FLT_TABLE"), "2");
    EXPECT_EQ(Cell("select DSORVFT_DATA from FLT_TABLE where ITEM_ID = " + Literal(MakeGuid(1))), Hex(Filled(8, 55)));
}

TEST_F(DBToolsFilterFiles, ASaveWhoseSecondFilterIsRefusedLeavesNothing) {
    Exec("create trigger REFUSE before insert on FLT_TABLE when new.ITEM_ID = " + Literal(MakeGuid(2)) +
         " begin select raise(fail, 'refused'); end");
    EXPECT_FALSE(m_tools->SaveFilterFile(MakeFile("a.so", {1, 2, 3})));
    EXPECT_EQ(Count("FLT_FILE_TABLE"), "0");
    EXPECT_EQ(Count("FLT_TABLE"), "0");
}

// --- Transitions
// -------------------------------------------------------------------------------------------------------

TEST_F(DBToolsFilterFiles, ATransitionComesBackByteForByteInItsOwnLength) {
    for (const std::size_t length : {std::size_t{1}, std::size_t{77}, std::size_t{500000}}) {
        ASSERT_TRUE(m_tools->SaveTransition(MakeTransition("/fx/mix.so", 5, length)));
        const Transitions transitions = AllTransitions();
        ASSERT_EQ(transitions.size(), 1u);
        EXPECT_EQ(transitions[0].strFileName, "/fx/mix.so");
        EXPECT_EQ(transitions[0].descriptor, Filled(length, 5));
        EXPECT_EQ(transitions[0].guidItem, MakeGuid(5));
    }
}

TEST_F(DBToolsFilterFiles, ATransitionWithoutBytesIsStoredAndNotReturned) {
    EXPECT_TRUE(m_tools->SaveTransition(MakeTransition("a.so", 1, 0)));
    Exec("insert into TRANSITION_TABLE values('b.so', NULL, " + Literal(MakeGuid(2)) + ")");
    EXPECT_EQ(Count("TRANSITION_TABLE"), "2");
    EXPECT_TRUE(AllTransitions().empty());
}

// --- Names of files -----------------------------------------------------------------------------------------------

// They are no shown names: whatever the code page, they are neither converted nor looked for in converted form.
class DBToolsEffectNamesInLatin1 : public EffectLibraryTest {
protected:
    void SetUp() override {
        ASSERT_TRUE(qfc::SetAnsiCodePage("CP1252"));
        EffectLibraryTest::SetUp();
    }
    void TearDown() override { qfc::SetAnsiCodePage("UTF-8"); }
};

TEST_F(DBToolsEffectNamesInLatin1, AreStoredReadAndFoundAsGiven) {
    const char* const name = "/fx/\xC3\xA4.so";  // One character in UTF-8, two in this code page.
    ASSERT_TRUE(m_tools->SaveFilterFile(MakeFile(name, {1})));
    ASSERT_TRUE(m_tools->SaveTransition(MakeTransition(name, 2)));
    for (const char* table : {"FLT_FILE_TABLE", "FLT_TABLE", "TRANSITION_TABLE"}) {
        EXPECT_EQ(Cell(std::string("select FILE_NAME from ") + table), "'/fx/\xC3\xA4.so'") << table;
    }
    EXPECT_EQ(Files().at(0).strFileName, name);
    EXPECT_EQ(Files().at(0).filters.size(), 1u);
    EXPECT_EQ(AllTransitions().at(0).strFileName, name);
    EXPECT_TRUE(m_tools->DeleteFilterFile(name));
    EXPECT_TRUE(m_tools->DeleteTransitionFile(name));
    for (const char* table : {"FLT_FILE_TABLE", "FLT_TABLE", "TRANSITION_TABLE"}) EXPECT_EQ(Count(table), "0") << table;
}

using DBToolsEffectNames = EffectLibraryTest;

// A library made without template holds texts as UTF-16. Two such names would become one, and so would their records.
TEST_F(DBToolsEffectNames, ThatTheFileWouldChange_AreRefusedAndNothingIsWritten) {
    for (const char* name : {"/fx/\xE4.so", "/fx/\xF6.so", "\xC3", "/fx/\xED\xA0\x80", "\xEF\xBF\xBF"}) {
        EXPECT_FALSE(m_tools->SaveFilterFile(MakeFile(name, {1}))) << name;
        EXPECT_FALSE(m_tools->SaveTransition(MakeTransition(name, 2))) << name;
    }
    for (const char* table : {"FLT_FILE_TABLE", "FLT_TABLE", "TRANSITION_TABLE"}) EXPECT_EQ(Count(table), "0") << table;
}

// Its substitute is the name of another one.
TEST_F(DBToolsEffectNames, ThatTheFileWouldChange_TakeNoOtherRecordAlong) {
    for (const bool bShortcuts : {true, false}) {
        m_tools->SetShortcuts(bShortcuts);
        ASSERT_TRUE(m_tools->SaveFilterFile(MakeFile("a\xEF\xBF\xBD.so", {1})));
        ASSERT_TRUE(m_tools->SaveTransition(MakeTransition("a\xEF\xBF\xBD.so", 2)));
        ASSERT_TRUE(m_tools->SaveFilterFile(MakeFile("b.so", {3})));
        ASSERT_TRUE(m_tools->SaveTransition(MakeTransition("b.so", 4)));
        EXPECT_TRUE(m_tools->DeleteFilterFile("a\xFF.so"));
        EXPECT_TRUE(m_tools->DeleteTransitionFile("a\xFF.so"));
        EXPECT_TRUE(m_tools->DeleteFilterFiles(std::vector{MakeFile("a\xFF.so", {}), MakeFile("b.so", {})}));
        EXPECT_TRUE(
            m_tools->DeleteTransitionFiles(std::vector{MakeTransition("a\xFE.so", 2), MakeTransition("b.so", 4)}));
        EXPECT_TRUE(m_tools->DeleteFilterFiles(std::vector{MakeFile("a\xFF.so", {}), MakeFile("a\xFE.so", {})}));
        ASSERT_EQ(Files().size(), 1u);
        EXPECT_EQ(Files()[0].filters.size(), 1u);
        EXPECT_EQ(AllTransitions().size(), 1u);
    }
}

TEST_F(DBToolsEffectNames, OfOtherCharacters_AreKept) {
    for (const char* name : {"/fx/\xF0\x9F\x8E\x9E.so", "\xEF\xBF\xBD", "\xE2\x82\xAC", "a\x01", ""}) {
        ASSERT_TRUE(m_tools->SaveFilterFile(MakeFile(name, {1}))) << name;
        EXPECT_EQ(Files().at(0).strFileName, name);
        EXPECT_EQ(Files().at(0).filters.size(), 1u) << name;
        ASSERT_TRUE(m_tools->DeleteFilterFile(name));
    }
}

TEST_F(DBToolsEffectNames, InALibraryOfUtf8_AreKeptByteForByteWhateverTheyAre) {
    OpenInUtf8();
    for (const int number : {1, 2}) {
        const char* const name = number == 1 ? "/fx/\xE4.so" : "/fx/\xF6.so";
        ASSERT_TRUE(m_tools->SaveFilterFile(MakeFile(name, {number})));
        ASSERT_TRUE(m_tools->SaveTransition(MakeTransition(name, number)));
    }
    ASSERT_EQ(Files().size(), 2u);
    EXPECT_TRUE(m_tools->DeleteFilterFile("/fx/\xE4.so"));
    EXPECT_TRUE(m_tools->DeleteTransitionFile("/fx/\xE4.so"));
    ASSERT_EQ(Files().size(), 1u);
    EXPECT_EQ(Files()[0].strFileName, "/fx/\xF6.so");
    ASSERT_EQ(Files()[0].filters.size(), 1u);
    EXPECT_EQ(Files()[0].filters[0].guidItem, MakeGuid(2));
    ASSERT_EQ(AllTransitions().size(), 1u);
    EXPECT_EQ(AllTransitions()[0].strFileName, "/fx/\xF6.so");
}

}  // namespace
