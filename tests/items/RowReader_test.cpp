#include "items/RowReader.h"

#include "tests/items/ItemLibrary.h"

#include <gtest/gtest.h>

namespace {

using namespace qfc::test;

class RowReader : public testing::Test {
protected:
    // The one relation row of a folder, read through a query of the library.
    CppSQLite3Query Query(const std::string& itemId) {
        m_library.Raw().Exec("insert into RELATION_TABLE values(5, " + itemId + ", 3)");
        CppSQLite3Query query;
        EXPECT_TRUE(m_library.Tools()->QueryFolderItems(5, query));
        return query;
    }
    LibraryFile m_library;
};

TEST_F(RowReader, PresentColumn_IsRead) {
    auto query = Query(BlobLiteral(GuidOf(1)));
    const qfc::RowReader row(query);
    EXPECT_FALSE(row.AtEnd());
    EXPECT_EQ(row.Int("PARENT_ID", 0), 5);
    EXPECT_EQ(row.Text("ITEM_INDEX", ""), "3");
    EXPECT_EQ(row.Guid("ITEM_ID"), GuidOf(1));
}

TEST_F(RowReader, MissingColumn_GivesTheDefault) {
    auto query = Query(BlobLiteral(GuidOf(1)));
    const qfc::RowReader row(query);
    EXPECT_EQ(row.Int("ORDER_INDEX", -7), -7);
    EXPECT_EQ(row.Text("NAME", "default"), "default");
    EXPECT_EQ(row.NameText("NAME", "default"), "default");
    EXPECT_TRUE(row.Blob("DATA").empty());
    EXPECT_EQ(row.Guid("DATA"), std::nullopt);
}

TEST_F(RowReader, ColumnNames_MatchWithCase) {
    auto query = Query(BlobLiteral(GuidOf(1)));
    EXPECT_EQ(qfc::RowReader(query).Int("parent_id", -1), -1);
}

TEST_F(RowReader, GuidsOfAnotherLengthOrKind_AreNone) {
    for (const char* pszItem : {"X'00112233'", "X'00112233445566778899AABBCCDDEEFF00'", "X''", "'text'", "12"}) {
        auto query = Query(pszItem);
        EXPECT_EQ(qfc::RowReader(query).Guid("ITEM_ID"), std::nullopt) << pszItem;
        m_library.Raw().Exec("delete from RELATION_TABLE");
    }
}

TEST_F(RowReader, TextOfSixteenBytes_CountsAsGuid) {
    auto query = Query("'sixteen bytes ok'");
    EXPECT_NE(qfc::RowReader(query).Guid("ITEM_ID"), std::nullopt);
}

TEST_F(RowReader, CursorPastItsRows_IsAtTheEndAndGivesDefaults) {
    auto query = Query(BlobLiteral(GuidOf(1)));
    qfc::RowReader row(query);
    row.Next();
    EXPECT_TRUE(row.AtEnd());
    EXPECT_NO_THROW(row.Next());
    EXPECT_TRUE(row.AtEnd());
}

TEST_F(RowReader, QueryWithoutStatement_IsAtTheEndAndGivesDefaults) {
    CppSQLite3Query query;
    qfc::RowReader row(query);
    EXPECT_TRUE(row.AtEnd());
    EXPECT_NO_THROW(row.Next());
    EXPECT_EQ(row.Int("PARENT_ID", 9), 9);
}

TEST_F(RowReader, NullCells_GiveTheDefault) {
    m_library.Raw().Exec("insert into FOLDER_TABLE(ID) values(4)");
    CppSQLite3Query query;
    ASSERT_TRUE(m_library.Tools()->QueryFolder(4, query));
    const qfc::RowReader row(query);
    EXPECT_EQ(row.Int("ADOPT_TYPE", -1), -1);
    EXPECT_EQ(row.Text("VERSION", "none"), "none");
    EXPECT_EQ(row.NameText("FOLDER_NAME", "none"), "none");
}

}  // namespace
