#include "items/CQItem.h"
#include "platform/text/CodePages.h"
#include "tests/items/ItemLibrary.h"
#include "tests/support/SqlTrace.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <list>
#include <memory>
#include <string>
#include <vector>

namespace {

using namespace qfc::test;

class CQItem_Db : public ItemRowFixture {};

// --- The row -----------------------------------------------------------------------------------------------------

TEST_F(CQItem_Db, EveryColumn_FillsItsField) {
    InsertItem(
        "CUR_THUMB_FRAME_NUM, ORG_THUMB_FRAME_NUM, BBID, ITEM_TYPE, ITEM_NAME, DESCRIPTION, ANNOTATION, FILE_NAME,"
        " ATTRIB, TEMPLATE_PATH, TIMESTAMP, FRAME_SIZE, FILM_SIZE, DELETABLE",
        "11, 12, 13, 14, 'name', 'desc', 'note', 'C:\\a.avi', 15, 'template', 16, 17, 34, 18");
    ASSERT_EQ(m_item.fnLoadItemFromDb(), 1);
    EXPECT_EQ(m_item.GetCurThumbFrameNum(), 11u);
    EXPECT_EQ(m_item.GetOrgThumbFrameNum(), 12u);
    EXPECT_EQ(m_item.GetDBID(), 13);
    EXPECT_EQ(m_item.GetItemType(), 14u);
    EXPECT_EQ(m_item.GetItemName(), "name");
    EXPECT_EQ(m_item.GetDescription(), "desc");
    EXPECT_EQ(m_item.GetAnnotation(), "note");
    EXPECT_EQ(m_item.GetFileName(), "C:\\a.avi");
    EXPECT_EQ(m_item.GetAttrib(), 15u);
    EXPECT_EQ(m_item.fnGetTimeStamp(), 16u);
    EXPECT_EQ(m_item.GetFrameSize(), 17u);
    EXPECT_EQ(m_item.GetFilmSize(), 34u);
    EXPECT_EQ(m_item.GetIsDeletable(), 18);
    EXPECT_EQ(m_item.IsModified(), 0);
}

TEST_F(CQItem_Db, TemplatePath_IsNotReadBack) {
    InsertItem("TEMPLATE_PATH", "'stored'");
    m_item.SetTemplatePath("kept");
    ASSERT_EQ(m_item.fnLoadItemFromDb(), 1);
    EXPECT_EQ(m_item.GetTemplatePath(), "kept");
}

// Kept: what was not read back is written all the same.
TEST_F(CQItem_Db, TemplatePath_IsWrittenEmptyByAnUpdateOfALoadedItem) {
    InsertItem("ITEM_NAME, TEMPLATE_PATH", "'kept', 'stored'");
    ASSERT_EQ(m_item.fnLoadItemFromDb(), 1);
    ASSERT_EQ(m_item.UpdateItemDB(), 1);
    EXPECT_EQ(m_library.Raw().Cell("select TEMPLATE_PATH from ITEM_TABLE"), "''");
    EXPECT_EQ(m_library.Raw().Cell("select ITEM_NAME from ITEM_TABLE"), "'kept'");
}

TEST_F(CQItem_Db, NullColumns_LeaveTheFieldsButTheTimestampIsZero) {
    InsertItem("BBID", "NULL");
    const std::unique_ptr<CQItem> pItem(NewFilledItem(1));
    pItem->fnSetDbTools(m_library.Tools());
    ASSERT_EQ(pItem->fnLoadItemFromDb(), 1);
    EXPECT_EQ(pItem->GetDBID(), 77);
    EXPECT_EQ(pItem->GetItemName(), "Item 1");
    EXPECT_EQ(pItem->GetDescription(), "2020 1 2 3 4 5 2020 1 2 3 4 6");
    EXPECT_EQ(pItem->GetFileName(), "C:\\media\\clip.avi");
    EXPECT_EQ(pItem->GetItemType(), 1u);
    EXPECT_EQ(pItem->GetFrameSize(), 300u);
    EXPECT_EQ(pItem->GetIsDeletable(), 1);
    EXPECT_EQ(pItem->fnGetTimeStamp(), 0u);
    EXPECT_EQ(pItem->GetCurThumbFrameNum(), 4u);
    EXPECT_EQ(pItem->GetOrgThumbFrameNum(), 5u);
    EXPECT_EQ(pItem->GetAnnotation(), "a note");
    EXPECT_EQ(pItem->GetAttrib(), 1u);
    pItem->ChangeFilm(nullptr, 500, 100);
    ASSERT_EQ(pItem->fnLoadItemFromDb(), 1);
    EXPECT_EQ(pItem->GetFilmSize(), 500u);
    EXPECT_EQ(pItem->GetFrameSize(), 100u);
}

TEST_F(CQItem_Db, MissingColumns_LeaveTheFields) {
    Sql("drop table ITEM_TABLE; create table ITEM_TABLE(ITEM_NAME TEXT, ITEM_ID BLOB PRIMARY KEY)");
    InsertItem("ITEM_NAME", "'only'");
    m_item.fnSetTimeStamp(5);
    m_item.GetDescription() = "kept";
    ASSERT_EQ(m_item.fnLoadItemFromDb(), 1);
    EXPECT_EQ(m_item.GetItemName(), "only");
    EXPECT_EQ(m_item.GetDescription(), "kept");
    EXPECT_EQ(m_item.fnGetTimeStamp(), 0u);
}

TEST_F(CQItem_Db, MissingRow_ChangesNothing) {
    m_item.SetItemName("kept");
    EXPECT_EQ(m_item.fnLoadItemFromDb(), 0);
    EXPECT_EQ(m_item.GetItemName(), "kept");
}

TEST_F(CQItem_Db, LargeTimestamp_ComesBackSignExtended) {
    InsertItem("TIMESTAMP", "3000000000");
    ASSERT_EQ(m_item.fnLoadItemFromDb(), 1);
    EXPECT_EQ(m_item.fnGetTimeStamp(), 0xFFFFFFFFB2D05E00u);
}

TEST_F(CQItem_Db, LargeTimestampOfAnItem_IsStoredInThirtyTwoBits) {
    m_item.fnSetTimeStamp(0x1'0000'0005);
    ASSERT_EQ(m_item.UpdateItemDB(), 1);
    EXPECT_EQ(m_library.Raw().Cell("select TIMESTAMP from ITEM_TABLE"), "5");
    m_item.fnSetTimeStamp(3'000'000'000);
    ASSERT_EQ(m_item.UpdateItemDB(), 1);
    EXPECT_EQ(m_library.Raw().Cell("select TIMESTAMP from ITEM_TABLE"), "-1294967296");
    ASSERT_EQ(m_item.fnLoadItemFromDb(), 1);
    EXPECT_EQ(m_item.fnGetTimeStamp(), 0xFFFFFFFFB2D05E00u);
}

class AnsiCodePage {
public:
    explicit AnsiCodePage(const char* pszName) { EXPECT_TRUE(qfc::SetAnsiCodePage(pszName)); }
    ~AnsiCodePage() { qfc::SetAnsiCodePage("UTF-8"); }
};

TEST_F(CQItem_Db, NonAsciiText_IsConvertedInNamesAndTakenAsStoredElsewhere) {
    const AnsiCodePage page("CP1252");
    const std::string bytes = "'\xC3\xBC'";
    InsertItem("ITEM_NAME, FILE_NAME, DESCRIPTION, ANNOTATION", bytes + ", " + bytes + ", " + bytes + ", " + bytes);
    ASSERT_EQ(m_item.fnLoadItemFromDb(), 1);
    EXPECT_EQ(m_item.GetItemName(), "\xFC");
    EXPECT_EQ(m_item.GetFileName(), "\xFC");
    EXPECT_EQ(m_item.GetDescription(), "\xC3\xBC");
    EXPECT_EQ(m_item.GetAnnotation(), "\xC3\xBC");
}

TEST_F(CQItem_Db, WithoutTools_EveryOperationIsZero) {
    m_item.fnSetDbTools(nullptr);
    unsigned nSize = 0;
    void* pData = nullptr;
    EXPECT_EQ(m_item.fnLoadItemFromDb(), 0);
    EXPECT_EQ(m_item.UpdateItemDB(), 0);
    EXPECT_EQ(m_item.IsItemInSql(), 0);
    EXPECT_EQ(m_item.DeleteItemDataFromDb(), 0);
    EXPECT_EQ(m_item.DeleteRelationFromDb(1), 0);
    EXPECT_EQ(m_item.DeleteCacheDataFromDb(0), 0);
    EXPECT_EQ(m_item.LoadCacheDataFromDb(nSize, &pData, 1), 0);
    EXPECT_EQ(m_item.LoadCacheDataFromDb(1), 0);
    EXPECT_EQ(m_item.LoadLibTagFromDB(), 0);
}

TEST_F(CQItem_Db, WithoutConnection_EveryOperationIsZero) {
    bool bOk = true;
    DBTools closed("/nonexistent/folder/library.db", bOk);
    ASSERT_FALSE(bOk);
    m_item.fnSetDbTools(&closed);
    EXPECT_EQ(m_item.fnLoadItemFromDb(), 0);
    EXPECT_EQ(m_item.UpdateItemDB(), 0);
    EXPECT_EQ(m_item.LoadCacheDataFromDb(1), 0);
    EXPECT_EQ(m_item.LoadLibTagFromDB(), 0);
    EXPECT_EQ(m_item.DeleteItemDb(1), 1);
}

TEST_F(CQItem_Db, IsItemInSql_AsksByName) {
    InsertItem("ITEM_NAME", "'Sunset'");
    CQItem other("Sunset");
    other.fnSetDbTools(m_library.Tools());
    EXPECT_EQ(other.IsItemInSql(), 1);
    EXPECT_EQ(m_item.IsItemInSql(), 0);
}

TEST_F(CQItem_Db, IsItemInSql_WithAQueryThatFailsIsZero) {
    InsertItem("ITEM_NAME", "'Sunset'");
    m_item.SetItemName("Sunset");
    ASSERT_EQ(m_item.IsItemInSql(), 1);
    Sql("drop table ITEM_TABLE");
    EXPECT_EQ(m_item.IsItemInSql(), 0);
}

// The name is asked for as it is stored.
TEST_F(CQItem_Db, IsItemInSql_ConvertsTheNameFromTheCodePage) {
    InsertItem("ITEM_NAME", "'\xC3\xBC'");
    const AnsiCodePage page("CP1252");
    m_item.SetItemName("\xFC");
    EXPECT_EQ(m_item.IsItemInSql(), 1);
    m_item.SetItemName("\xC3\xBC");
    EXPECT_EQ(m_item.IsItemInSql(), 0);
}

// --- Removing ----------------------------------------------------------------------------------------------------

TEST_F(CQItem_Db, DeletedRelation_IsThatOfTheFolderOnly) {
    for (const char* pszParent : {"5", "6"}) {
        Sql(std::string("insert into RELATION_TABLE values(") + pszParent + ", " + BlobLiteral(GuidOf(1)) + ", 0)");
    }
    EXPECT_EQ(m_item.DeleteRelationFromDb(5), 1);
    EXPECT_EQ(m_library.Raw().Cell("select group_concat(PARENT_ID) from RELATION_TABLE"), "'6'");
}

TEST_F(CQItem_Db, DeletingOneKindOfCacheData_LeavesNoneOfAnyKind) {
    for (const int nRequested : {2, 0, 1, -1, 9}) {
        for (const int nKind : {0, 1, 2, 7}) InsertPayload(nKind, "1", "0", "X'00'");
        EXPECT_EQ(m_item.DeleteCacheDataFromDb(nRequested), 1);
        EXPECT_EQ(CountOf("CACHE_DATA_TABLE"), "0") << "kind " << nRequested;
    }
}

TEST_F(CQItem_Db, DeletingItemData_LeavesOtherItems) {
    InsertItem("ITEM_NAME", "'one'");
    Sql("insert into ITEM_TABLE(ITEM_ID) values(" + BlobLiteral(GuidOf(2)) + ")");
    EXPECT_EQ(m_item.DeleteItemDataFromDb(), 1);
    EXPECT_EQ(CountOf("ITEM_TABLE"), "1");
}

TEST_F(CQItem_Db, DeletedItem_LosesRelationPayloadsAndRow) {
    InsertItem("ITEM_NAME", "'one'");
    InsertPayload(0, "1", "0", "X'00'");
    Sql("insert into RELATION_TABLE values(5, " + BlobLiteral(GuidOf(1)) + ", 0)");
    EXPECT_EQ(m_item.DeleteItemDb(5), 1);
    EXPECT_EQ(CountOf("ITEM_TABLE"), "0");
    EXPECT_EQ(CountOf("RELATION_TABLE"), "0");
    EXPECT_EQ(CountOf("CACHE_DATA_TABLE"), "0");
}

// What is really sent, without the begins and ends.
class CQItem_DbStatements : public CQItem_Db {
protected:
    CQItem_DbStatements() {
        m_item.fnSetDbTools(m_traced.Tools());
        m_traced.Tools()->SetShortcuts(false);
        m_trace.Clear();
    }
    std::vector<std::string> Sent() {
        auto sent = m_trace.Statements();
        std::erase_if(sent, [](const std::string& text) { return text.ends_with("TRANSACTION;"); });
        m_trace.Clear();
        return sent;
    }
    static constexpr const char* kOneKind = "Delete from CACHE_DATA_TABLE where ITEM_ID = ? AND CACHE_DATA_TYPE = ?";
    static constexpr const char* kEveryKind = "Delete from CACHE_DATA_TABLE where ITEM_ID = ?";

    SqlTrace m_trace;  // Before the library that it traces is opened.
    LibraryFile m_traced{"traced.db"};
};

TEST_F(CQItem_DbStatements, DeletingAKnownKind_DeletesThatKindFirstAndThenAll) {
    for (const int nKind : {0, 1, 2}) {
        EXPECT_EQ(m_item.DeleteCacheDataFromDb(nKind), 1);
        EXPECT_THAT(Sent(), testing::ElementsAre(kOneKind, kEveryKind)) << nKind;
    }
    for (const int nKind : {-1, 3}) {
        EXPECT_EQ(m_item.DeleteCacheDataFromDb(nKind), 1);
        EXPECT_THAT(Sent(), testing::ElementsAre(kEveryKind)) << nKind;
    }
}

TEST_F(CQItem_DbStatements, DeletingAnItem_IsRelationThenPayloadsThenRow) {
    EXPECT_EQ(m_item.DeleteItemDb(5), 1);
    EXPECT_THAT(Sent(), testing::ElementsAre("Delete from RELATION_TABLE where ITEM_ID = ? AND PARENT_ID = ?",
                                             kEveryKind, "Delete from ITEM_TABLE where ITEM_ID = ?"));
}

TEST_F(CQItem_Db, DeletingAnItemWithoutRow_AnswersOne) { EXPECT_EQ(m_item.DeleteItemDb(5), 1); }

// --- Tags ----------------------------------------------------------------------------------------------------------

TEST_F(CQItem_Db, StoredTags_JoinTheItemsOwnWithoutDoubles) {
    for (const unsigned nTag : {20u, 21u}) {
        Sql("insert into TAG_ITEM_RELATION_TABLE values(" + BlobLiteral(GuidOf(1)) + ", " + BlobLiteral(GuidOf(nTag)) +
            ")");
    }
    m_item.AddLibTag(GuidOf(21));
    EXPECT_EQ(m_item.LoadLibTagFromDB(), 1);
    std::list<GUID> tags;
    m_item.CopyTagVec(tags);
    EXPECT_THAT(tags, testing::UnorderedElementsAre(GuidOf(20), GuidOf(21)));
}

TEST_F(CQItem_Db, StoredTags_ComeBehindTheItemsOwnInTheOrderOfTheRows) {
    // The key of the table would give another order; without it the rows stand as they were written.
    Sql("drop table TAG_ITEM_RELATION_TABLE; create table TAG_ITEM_RELATION_TABLE(ITEM_GUID BLOB, TAGS_GUID BLOB)");
    for (const unsigned nTag : {30u, 10u, 5u, 20u, 10u}) {
        Sql("insert into TAG_ITEM_RELATION_TABLE values(" + BlobLiteral(GuidOf(1)) + ", " + BlobLiteral(GuidOf(nTag)) +
            ")");
    }
    m_item.AddLibTag(GuidOf(5));
    m_item.AddLibTag(GuidOf(40));
    EXPECT_EQ(m_item.LoadLibTagFromDB(), 1);
    std::list<GUID> tags;
    m_item.CopyTagVec(tags);
    EXPECT_THAT(tags, testing::ElementsAre(GuidOf(5), GuidOf(40), GuidOf(30), GuidOf(10), GuidOf(20)));
}

TEST_F(CQItem_Db, TagsOfAWrongLength_AreSkipped) {
    for (const char* pszTag : {"NULL", "X'0011'", "X'00112233445566778899AABBCCDDEEFF00'", "'text'", "17"}) {
        Sql("insert into TAG_ITEM_RELATION_TABLE values(" + BlobLiteral(GuidOf(1)) + ", " + pszTag + ")");
    }
    Sql("insert into TAG_ITEM_RELATION_TABLE values(" + BlobLiteral(GuidOf(1)) + ", " + BlobLiteral(GuidOf(20)) + ")");
    EXPECT_EQ(m_item.LoadLibTagFromDB(), 1);
    std::list<GUID> tags;
    m_item.CopyTagVec(tags);
    EXPECT_THAT(tags, testing::ElementsAre(GuidOf(20)));
}

TEST_F(CQItem_Db, NoTags_AnswersOne) { EXPECT_EQ(m_item.LoadLibTagFromDB(), 1); }

TEST_F(CQItem_Db, TagQueryThatFails_AnswersZero) {
    Sql("drop table TAG_ITEM_RELATION_TABLE");
    EXPECT_EQ(m_item.LoadLibTagFromDB(), 0);
}

}  // namespace
