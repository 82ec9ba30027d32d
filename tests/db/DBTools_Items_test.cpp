#include "platform/text/CodePages.h"
#include "tests/db/DbTestSupport.h"
#include "tests/support/SqlTrace.h"

#include <filesystem>
#include <iterator>

namespace {

using namespace qfc::test;
using qfc::ItemRow;
using qfc::PackPayload;
using qfc::PayloadWrite;

class DBToolsItems : public LibraryTest {
protected:
    std::vector<std::string> Placements(int folder) {
        CppSQLite3Query query;
        EXPECT_TRUE(m_tools->QueryFolderItems(folder, query));
        std::vector<std::string> placements;
        for (; !query.eof(); query.nextRow()) {
            int length = 0;
            const auto* guid = query.getBlobField("ITEM_ID", length);
            placements.push_back(std::to_string(guid[0]) + "@" + query.getStringField("ITEM_INDEX"));
        }
        return placements;
    }
};

TEST_F(DBToolsItems, EveryValueGoesToItsColumn) {
    ItemRow item;
    item.currentThumbFrame = 1;
    item.originalThumbFrame = 2;
    item.bbid = 3;
    item.itemType = 4;
    item.name = "five";
    item.description = "six";
    item.annotation = "seven";
    item.fileName = "eight";
    item.attributes = 9;
    item.templatePath = "ten";
    item.timestamp = -11;
    item.filmSize = 12;
    item.frameSize = 13;
    item.deletable = 14;
    item.itemId = MakeGuid(15);
    ASSERT_TRUE(m_tools->UpdateItemDB(item, {}));
    // In the table FRAME_SIZE stands before FILM_SIZE.
    EXPECT_EQ(RawDb(m_path).Rows("select * from ITEM_TABLE"),
              (std::vector<RawDb::Row>{{"1", "2", "3", "4", "'five'", "'six'", "'seven'", "'eight'", "9", "'ten'",
                                        "-11", "13", "12", "14", Literal(MakeGuid(15))}}));
}

TEST_F(DBToolsItems, ItemIsFoundByItsGuid) {
    ASSERT_TRUE(AddItem(1, 1));
    CppSQLite3Query query;
    ASSERT_TRUE(m_tools->QueryItem(MakeGuid(1), query));
    ASSERT_FALSE(query.eof());
    EXPECT_STREQ(query.getStringField("ITEM_NAME"), "clip");
    ASSERT_TRUE(m_tools->QueryItem(MakeGuid(2), query));
    EXPECT_TRUE(query.eof());
}

TEST_F(DBToolsItems, ItemIsFoundByItsName) {
    ASSERT_TRUE(m_tools->UpdateItemDB(MakeItem(1, "Größe"), {}));
    CppSQLite3Query query;
    ASSERT_TRUE(m_tools->QueryItemByName("Größe", query));
    EXPECT_FALSE(query.eof());
    ASSERT_TRUE(m_tools->QueryItemByName("größe", query));
    EXPECT_TRUE(query.eof());
}

TEST_F(DBToolsItems, AddedItemHasRowPlacementAndPayload) {
    const int folder = AddFolder("a", AddGallery(1));
    EXPECT_TRUE(AddItem(1, folder, 7, Repeated(1000, 5)));
    EXPECT_EQ(Count("ITEM_TABLE"), "1");
    EXPECT_EQ(RawDb(m_path).Rows("select * from RELATION_TABLE"),
              (std::vector<RawDb::Row>{{std::to_string(folder), Literal(MakeGuid(1)), "7"}}));
    EXPECT_EQ(Cell("select CACHE_DATA_TYPE || ':' || PRE_COMPRESSED_SIZE from CACHE_DATA_TABLE"), "'1:1000'");
}

TEST_F(DBToolsItems, AddIsOneTransactionOfRowPlacementAndKindsOneTwoZero) {
    m_tools.reset();
    SqlTrace trace;
    Open();
    trace.Clear();
    const Bytes bytes = Repeated(100, 1);
    const PayloadWrite payloads[] = {PackPayload(0, bytes), PackPayload(1, bytes), PackPayload(2, bytes)};
    ASSERT_TRUE(m_tools->AddItemDb(MakeItem(1), payloads, 1, 0));
    const char* const cache =
        "REPLACE into CACHE_DATA_TABLE( PRE_COMPRESSED_SIZE, COMPRESSED_SIZE, COMPRESSED_DATA, CACHE_DATA_TYPE, "
        "ITEM_ID) values (?, ?, ?, ?, ?)";
    const std::vector<std::string> expected{
        "BEGIN TRANSACTION;",
        "REPLACE into ITEM_TABLE( CUR_THUMB_FRAME_NUM, ORG_THUMB_FRAME_NUM, BBID, ITEM_TYPE, ITEM_NAME, DESCRIPTION, "
        "ANNOTATION, FILE_NAME, ATTRIB, TEMPLATE_PATH, TIMESTAMP, FILM_SIZE, FRAME_SIZE, DELETABLE, ITEM_ID) values "
        "(?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?)",
        "REPLACE into RELATION_TABLE( ITEM_ID, PARENT_ID, ITEM_INDEX) values (?, ?, ?)",
        cache,
        cache,
        cache,
        "END TRANSACTION;",
    };
    EXPECT_EQ(trace.Statements(), expected);
    m_tools.reset();
    EXPECT_EQ(Cell("select group_concat(CACHE_DATA_TYPE) from (select * from CACHE_DATA_TABLE order by rowid)"),
              "'1,2,0'");
}

TEST_F(DBToolsItems, UpdateWritesTheRowAndNoPlacement) {
    ASSERT_TRUE(AddItem(1, 1));
    EXPECT_TRUE(m_tools->UpdateItemDB(MakeItem(1, "renamed"), {}));
    EXPECT_EQ(Cell("select ITEM_NAME from ITEM_TABLE"), "'renamed'");
    EXPECT_EQ(Count("RELATION_TABLE"), "1");
    EXPECT_EQ(Count("ITEM_TABLE"), "1");
}

TEST_F(DBToolsItems, UpdateKeepsThePayloadsThatAreNotGiven) {
    ASSERT_TRUE(AddItem(1, 1, 0, Repeated(1000, 5)));
    EXPECT_TRUE(m_tools->UpdateItemDB(MakeItem(1, "renamed"), {}));
    EXPECT_EQ(Cell("select PRE_COMPRESSED_SIZE from CACHE_DATA_TABLE"), "1000");
}

TEST_F(DBToolsItems, FailedPayloadTakesRowAndPlacementBack) {
    PayloadWrite lying = PackPayload(qfc::kFilm, Repeated(10, 1));
    lying.raw = {};
    lying.compressed.clear();
    const std::string before = DumpOf(m_path);
    EXPECT_FALSE(m_tools->AddItemDb(MakeItem(1), {&lying, 1}, 1, 0));
    EXPECT_EQ(DumpOf(m_path), before);
}

TEST_F(DBToolsItems, UnknownKindTakesTheWholeAddBack) {
    const Bytes bytes = Repeated(10, 1);
    const PayloadWrite payloads[] = {PackPayload(1, bytes), PackPayload(3, bytes)};
    const std::string before = DumpOf(m_path);
    EXPECT_FALSE(m_tools->AddItemDb(MakeItem(1), payloads, 1, 0));
    EXPECT_EQ(DumpOf(m_path), before);
}

TEST_F(DBToolsItems, FolderItemsComeInAscendingIndex) {
    ASSERT_TRUE(AddItem(1, 5, 2));
    ASSERT_TRUE(AddItem(2, 5, 0));
    ASSERT_TRUE(AddItem(3, 5, 1));
    ASSERT_TRUE(AddItem(4, 6, 0));
    EXPECT_EQ(Placements(5), (std::vector<std::string>{"2@0", "3@1", "1@2"}));
}

TEST_F(DBToolsItems, EqualIndexesComeInTheOrderOfTheirGuids) {
    ASSERT_TRUE(AddItem(9, 5, 0));
    ASSERT_TRUE(AddItem(4, 5, 0));
    EXPECT_EQ(Placements(5), (std::vector<std::string>{"4@0", "9@0"}));
}

TEST_F(DBToolsItems, ReorderMovesThePlacementItHas) {
    ASSERT_TRUE(AddItem(1, 5, 0));
    ASSERT_TRUE(AddItem(2, 5, 1));
    EXPECT_TRUE(m_tools->ReOrderItemsDb(MakeGuid(1), 5, 2));
    EXPECT_EQ(Placements(5), (std::vector<std::string>{"2@1", "1@2"}));
}

TEST_F(DBToolsItems, ReorderPlacesAnItemThatTheFolderDidNotHold) {
    ASSERT_TRUE(AddItem(1, 5, 0));
    EXPECT_TRUE(m_tools->ReOrderItemsDb(MakeGuid(1), 6, 0));
    EXPECT_EQ(Placements(5).size(), 1U);
    EXPECT_EQ(Placements(6).size(), 1U);
}

TEST_F(DBToolsItems, ItemHeldByTwoFolders_KeepsItsRowUntilTheSecondRemoval) {
    ASSERT_TRUE(AddItem(1, 5, 0, Repeated(1000, 5)));
    ASSERT_TRUE(AddItem(1, 6, 0));
    ASSERT_TRUE(AddItem(2, 6, 1, Repeated(1000, 5)));
    EXPECT_TRUE(m_tools->DeleteItemFromFolder(MakeGuid(1), 5));
    EXPECT_EQ(Count("ITEM_TABLE"), "2");
    EXPECT_EQ(Count("CACHE_DATA_TABLE"), "2");
    EXPECT_TRUE(m_tools->DeleteItemFromFolder(MakeGuid(1), 6));
    EXPECT_EQ(Cell("select group_concat(quote(ITEM_ID)) from ITEM_TABLE").substr(1, 35), Literal(MakeGuid(2)));
    EXPECT_EQ(Count("CACHE_DATA_TABLE"), "1");
    EXPECT_EQ(Count("RELATION_TABLE"), "1");
}

// The placement was not there, and no other is: the item goes all the same.
TEST_F(DBToolsItems, RemovalFromAFolderThatDoesNotHoldItStillLooksForOthers) {
    ASSERT_TRUE(AddItem(1, 5));
    EXPECT_TRUE(m_tools->DeleteItemFromFolder(MakeGuid(1), 77));
    EXPECT_EQ(Count("ITEM_TABLE"), "1");
    ASSERT_TRUE(m_tools->DeleteRelation(MakeGuid(1), 5));
    EXPECT_TRUE(m_tools->DeleteItemFromFolder(MakeGuid(1), 77));
    EXPECT_EQ(Count("ITEM_TABLE"), "0");
}

TEST_F(DBToolsItems, FailedRemovalRollsThePlacementBack) {
    ASSERT_TRUE(AddItem(1, 5, 0, Repeated(1000, 5)));
    Exec("CREATE TRIGGER STOP BEFORE DELETE ON ITEM_TABLE BEGIN SELECT RAISE(FAIL, 'no'); END");
    const std::string before = DumpOf(m_path);
    EXPECT_FALSE(m_tools->DeleteItemFromFolder(MakeGuid(1), 5));
    EXPECT_EQ(DumpOf(m_path), before);
}

TEST_F(DBToolsItems, SingleDeletionsTakeTheirOwnRowOnly) {
    ASSERT_TRUE(AddItem(1, 5, 0, Repeated(1000, 5)));
    EXPECT_TRUE(m_tools->DeleteItemRow(MakeGuid(1)));
    EXPECT_EQ(Count("ITEM_TABLE"), "0");
    EXPECT_EQ(Count("RELATION_TABLE"), "1");
    EXPECT_TRUE(m_tools->DeleteRelation(MakeGuid(1), 5));
    EXPECT_EQ(Count("RELATION_TABLE"), "0");
    EXPECT_EQ(Count("CACHE_DATA_TABLE"), "1");
    EXPECT_TRUE(m_tools->DeleteItemRow(MakeGuid(1)));
}

TEST_F(DBToolsItems, GuidsOfOtherLengthsAndTypesAreNoneOfOurs) {
    Exec("INSERT INTO ITEM_TABLE(ITEM_NAME, ITEM_ID) VALUES('null', NULL), ('text', 'abc'), ('short', x'0102')");
    CppSQLite3Query query;
    ASSERT_TRUE(m_tools->QueryItem(GUID_NULL, query));
    EXPECT_TRUE(query.eof());
    ASSERT_TRUE(m_tools->QueryItemByName("short", query));
    int length = 0;
    query.getBlobField("ITEM_ID", length);
    EXPECT_EQ(length, 2);
}

// Names are converted at this border, the other texts are not.
class DBToolsItemsInLatin1 : public DBToolsItems {
protected:
    void SetUp() override {
        ASSERT_TRUE(qfc::SetAnsiCodePage("CP1252"));
        DBToolsItems::SetUp();
    }
    void TearDown() override { qfc::SetAnsiCodePage("UTF-8"); }
};

TEST_F(DBToolsItemsInLatin1, ItemAndFileNamesAreStoredAsUtf8) {
    ItemRow item = MakeItem(1, "M\xFCll");
    item.fileName = "C:\\M\xFCll.avi";
    ASSERT_TRUE(m_tools->UpdateItemDB(item, {}));
    EXPECT_EQ(Cell("select ITEM_NAME from ITEM_TABLE"), "'Müll'");
    EXPECT_EQ(Cell("select FILE_NAME from ITEM_TABLE"), "'C:\\Müll.avi'");
    CppSQLite3Query query;
    ASSERT_TRUE(m_tools->QueryItemByName("M\xFCll", query));
    EXPECT_FALSE(query.eof());
}

TEST_F(DBToolsItemsInLatin1, OtherTextsAreStoredAsGiven) {
    ItemRow item = MakeItem(1);
    item.description = "ü";  // Valid UTF-8, two characters in this code page.
    item.annotation = "ö";
    item.templatePath = "ä";
    ASSERT_TRUE(m_tools->UpdateItemDB(item, {}));
    EXPECT_EQ(RawDb(m_path).Rows("select DESCRIPTION, ANNOTATION, TEMPLATE_PATH from ITEM_TABLE"),
              (std::vector<RawDb::Row>{{"'ü'", "'ö'", "'ä'"}}));
}

TEST_F(DBToolsItemsInLatin1, FolderNameIsConvertedAndItsVersionIsNot) {
    int folder = -1;
    ASSERT_TRUE(m_tools->InsertOrUpdateFolder("ü", 0, "\xFC", 0, 0, 0, -1, 0, 0, folder));
    EXPECT_EQ(RawDb(m_path).Rows("select VERSION, FOLDER_NAME from FOLDER_TABLE"),
              (std::vector<RawDb::Row>{{"'ü'", "'ü'"}}));
    ASSERT_TRUE(m_tools->InsertGallery(1, folder));
    std::vector<qfc::StoredGallery> galleries;
    ASSERT_TRUE(m_tools->QueryGalleries(galleries));
    EXPECT_EQ(galleries.at(0).name, "\xFC");
}

}  // namespace
