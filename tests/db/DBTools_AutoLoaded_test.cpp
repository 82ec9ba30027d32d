#include "platform/text/CodePages.h"
#include "tests/db/DbTestSupport.h"
#include "tests/support/SqlTrace.h"

namespace {

using namespace qfc::test;

using DBToolsAutoLoaded = LibraryTest;

TEST_F(DBToolsAutoLoaded, ItemRowHasAnEmptyPath) {
    EXPECT_TRUE(m_tools->InsertAutoLoadedItem(MakeGuid(1), 5));
    EXPECT_EQ(RawDb(m_path).Rows("select * from ITEM_AUTO_LOADED_TABLE"),
              (std::vector<RawDb::Row>{{"5", Literal(MakeGuid(1)), "''"}}));
}

TEST_F(DBToolsAutoLoaded, FileRowHasTheZeroGuid) {
    EXPECT_TRUE(m_tools->InsertAutoLoadedFile("C:\\a.flt", 5));
    EXPECT_EQ(RawDb(m_path).Rows("select * from ITEM_AUTO_LOADED_TABLE"),
              (std::vector<RawDb::Row>{{"5", "X'00000000000000000000000000000000'", "'C:\\a.flt'"}}));
}

TEST_F(DBToolsAutoLoaded, ItemIsKnownInItsFolderOnly) {
    ASSERT_TRUE(m_tools->InsertAutoLoadedItem(MakeGuid(1), 5));
    EXPECT_TRUE(m_tools->IsItemAutoLoaded(MakeGuid(1), 5));
    EXPECT_FALSE(m_tools->IsItemAutoLoaded(MakeGuid(1), 6));
    EXPECT_FALSE(m_tools->IsItemAutoLoaded(MakeGuid(2), 5));
}

TEST_F(DBToolsAutoLoaded, FileIsKnownInItsFolderOnly) {
    ASSERT_TRUE(m_tools->InsertAutoLoadedFile("a", 5));
    EXPECT_TRUE(m_tools->IsFileAutoLoaded("a", 5));
    EXPECT_FALSE(m_tools->IsFileAutoLoaded("a", 6));
    EXPECT_FALSE(m_tools->IsFileAutoLoaded("A", 5));
}

// Kept: the path is bound as given, where names are converted to UTF-8.
TEST_F(DBToolsAutoLoaded, PathIsStoredAndLookedForWithoutConversion) {
    ASSERT_TRUE(qfc::SetAnsiCodePage("CP1252"));
    const char* const kPath = "C:\\\xC3\xBC.flt";
    const bool inserted = m_tools->InsertAutoLoadedFile(kPath, 5);
    const bool known = m_tools->IsFileAutoLoaded(kPath, 5);
    qfc::SetAnsiCodePage("UTF-8");
    EXPECT_TRUE(inserted);
    EXPECT_TRUE(known);
    EXPECT_EQ(Cell("select FILE_PATH from ITEM_AUTO_LOADED_TABLE"), "'C:\\ü.flt'");
    EXPECT_TRUE(m_tools->IsFileAutoLoaded(kPath, 5));
}

// Kept: bound as given, and a library made without template holds texts as UTF-16, where each byte that forms no
// character becomes the same substitute.
TEST_F(DBToolsAutoLoaded, InALibraryOfUtf16_PathsThatDifferInSuchBytesAloneAreOne) {
    ASSERT_TRUE(m_tools->InsertAutoLoadedFile("/m/b\xE4r.wav", 5));
    EXPECT_TRUE(m_tools->IsFileAutoLoaded("/m/b\xE4r.wav", 5));
    EXPECT_TRUE(m_tools->IsFileAutoLoaded("/m/b\xF6r.wav", 5));
    EXPECT_FALSE(m_tools->IsFileAutoLoaded("/m/c\xE4r.wav", 5));
}

TEST_F(DBToolsAutoLoaded, InALibraryOfUtf8_PathsAreKeptByteForByteWhateverTheyAre) {
    m_tools.reset();
    m_path = m_folder / "utf8.db";
    RawDb(m_path).Exec("PRAGMA encoding = 'UTF-8'; CREATE TABLE made(a); DROP TABLE made");
    Open();
    EXPECT_TRUE(m_tools->InsertAutoLoadedFile("/m/b\xE4r.wav", 5));
    EXPECT_TRUE(m_tools->IsFileAutoLoaded("/m/b\xE4r.wav", 5));
    EXPECT_FALSE(m_tools->IsFileAutoLoaded("/m/b\xF6r.wav", 5));
    EXPECT_TRUE(m_tools->InsertAutoLoadedFile("/m/b\xF6r.wav", 5));
    EXPECT_EQ(Count("ITEM_AUTO_LOADED_TABLE"), "2");
}

TEST_F(DBToolsAutoLoaded, TwoFilesOfOneFolderAreTwoRows) {
    EXPECT_TRUE(m_tools->InsertAutoLoadedFile("a", 5));
    EXPECT_TRUE(m_tools->InsertAutoLoadedFile("b", 5));
    EXPECT_EQ(Count("ITEM_AUTO_LOADED_TABLE"), "2");
}

TEST_F(DBToolsAutoLoaded, SameRowTwiceIsOneRow) {
    EXPECT_TRUE(m_tools->InsertAutoLoadedFile("a", 5));
    EXPECT_TRUE(m_tools->InsertAutoLoadedFile("a", 5));
    EXPECT_TRUE(m_tools->InsertAutoLoadedItem(MakeGuid(1), 5));
    EXPECT_TRUE(m_tools->InsertAutoLoadedItem(MakeGuid(1), 5));
    EXPECT_EQ(Count("ITEM_AUTO_LOADED_TABLE"), "2");
}

TEST_F(DBToolsAutoLoaded, FailureIsFalseLikeAbsence) {
    Exec("DROP TABLE ITEM_AUTO_LOADED_TABLE");
    EXPECT_FALSE(m_tools->IsItemAutoLoaded(MakeGuid(1), 5));
    EXPECT_FALSE(m_tools->IsFileAutoLoaded("a", 5));
    EXPECT_FALSE(m_tools->InsertAutoLoadedItem(MakeGuid(1), 5));
    EXPECT_FALSE(m_tools->InsertAutoLoadedFile("a", 5));
}

TEST_F(DBToolsAutoLoaded, TagsOfAnItemComeAsRows) {
    Exec("INSERT INTO TAG_ITEM_RELATION_TABLE VALUES(" + Literal(MakeGuid(1)) + ", " + Literal(MakeGuid(8)) + "), (" +
         Literal(MakeGuid(1)) + ", x'01'), (" + Literal(MakeGuid(2)) + ", " + Literal(MakeGuid(9)) + ")");
    CppSQLite3Query query;
    ASSERT_TRUE(m_tools->QueryItemTags(MakeGuid(1), query));
    std::vector<int> lengths;
    for (; !query.eof(); query.nextRow()) {
        int length = 0;
        query.getBlobField("TAGS_GUID", length);
        lengths.push_back(length);
    }
    EXPECT_EQ(lengths, (std::vector<int>{1, 16}));
    ASSERT_TRUE(m_tools->QueryItemTags(MakeGuid(3), query));
    EXPECT_TRUE(query.eof());
}

}  // namespace
