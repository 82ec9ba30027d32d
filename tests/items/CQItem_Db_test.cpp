#include "items/CQItem.h"
#include "items/ItemTypes.h"
#include "platform/text/CodePages.h"
#include "tests/items/ItemLibrary.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <list>
#include <memory>

namespace {

using namespace qfc::test;

class CQItem_Db : public testing::Test {
protected:
    CQItem_Db() {
        m_item.SetUniqueID(GuidOf(1));
        m_item.fnSetDbTools(m_library.Tools());
    }
    void Sql(const std::string& text) { m_library.Raw().Exec(text); }
    // Columns and their values beside the GUID of item 1.
    void InsertItem(const std::string& columns, const std::string& values) {
        Sql("insert into ITEM_TABLE(" + columns + ", ITEM_ID) values(" + values + ", " + BlobLiteral(GuidOf(1)) + ")");
    }
    void InsertPayload(int nKind, const std::string& rawSize, const std::string& compressedSize,
                       const std::string& data) {
        Sql("insert into CACHE_DATA_TABLE values(" + rawSize + ", " + compressedSize + ", " + data + ", " +
            std::to_string(nKind) + ", " + BlobLiteral(GuidOf(1)) + ")");
    }
    std::string CountOf(const std::string& table) { return m_library.Raw().Cell("select count(*) from " + table); }

    CurrentLibrary m_library;
    CQItem m_item;
};

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

// --- Payloads: into the item ---------------------------------------------------------------------------------------

class CQItem_DbPayloads : public CQItem_Db {
protected:
    // Stores the three payloads of a filled item and gives a fresh one, as after a restart.
    std::unique_ptr<CQItem> Restarted() {
        const std::unique_ptr<CQItem> pItem(NewFilledItem(1));
        EXPECT_TRUE(m_library.Tools()->UpdateItemDB(pItem.get()));
        auto pFresh = std::make_unique<CQItem>();
        pFresh->SetUniqueID(GuidOf(1));
        pFresh->fnSetDbTools(m_library.Tools());
        EXPECT_EQ(pFresh->fnLoadItemFromDb(), 1);
        return pFresh;
    }
};

TEST_F(CQItem_DbPayloads, EveryKind_ComesBackAsStored) {
    const std::unique_ptr<CQItem> pStored(NewFilledItem(1));
    const auto pItem = Restarted();
    for (const int nKind : {qfc::kBitmapCache, qfc::kBlackBox, qfc::kFilm}) {
        EXPECT_TRUE(pItem->PayloadInMemory(nKind).empty());
        EXPECT_EQ(pItem->LoadCacheDataFromDb(static_cast<DWORD>(nKind)), 1) << "kind " << nKind;
        EXPECT_EQ(InMemory(*pItem, nKind), InMemory(*pStored, nKind)) << "kind " << nKind;
    }
    EXPECT_EQ(pItem->GetBlackBoxSize(), 3000u);
    EXPECT_EQ(pItem->GetCacheSize(), pStored->GetCacheSize());
    EXPECT_EQ(pItem->GetFilmSize(), 900u);
    EXPECT_EQ(pItem->IsModified(), 0);
}

TEST_F(CQItem_DbPayloads, LoadedBuffers_ComeFromTheAllocatorsThatFreeThem) {
    const auto pItem = Restarted();
    for (const DWORD dwKind : {0u, 1u, 2u}) ASSERT_EQ(pItem->LoadCacheDataFromDb(dwKind), 1);
    EXPECT_NE(GlobalHandle(pItem->GetCache()), nullptr);
    EXPECT_NE(GlobalHandle(pItem->GetFilm()), nullptr);
    // A black box is freed by delete[]: the address sanitizer speaks up when it is no such array.
    const qfc::PlainBlock taken(pItem->DetachBlackBox(), 3000);
    EXPECT_TRUE(taken);
}

TEST_F(CQItem_DbPayloads, UnknownKind_IsZero) {
    InsertPayload(3, "1", "0", "X'00'");
    EXPECT_EQ(m_item.LoadCacheDataFromDb(3), 0);
    EXPECT_EQ(m_item.LoadCacheDataFromDb(0xFFFFFFFF), 0);
}

TEST_F(CQItem_DbPayloads, MissingRow_LeavesTheMembers) {
    GiveBlackBox(m_item, Pattern(10));
    EXPECT_EQ(m_item.LoadCacheDataFromDb(1), 0);
    EXPECT_EQ(InMemory(m_item, qfc::kBlackBox), Pattern(10));
    EXPECT_EQ(m_item.GetBlackBoxSize(), 10u);
}

TEST_F(CQItem_DbPayloads, AnnouncedSizeZero_AnswersOneAndAllocatesNothing) {
    InsertPayload(1, "0", "0", "X'0011'");
    EXPECT_EQ(m_item.LoadCacheDataFromDb(1), 1);
    EXPECT_TRUE(m_item.PayloadInMemory(qfc::kBlackBox).empty());
    EXPECT_EQ(m_item.GetBlackBoxSize(), 0u);
}

TEST_F(CQItem_DbPayloads, RowWithoutBytes_IsZero) {
    InsertPayload(1, "10", "0", "X''");
    EXPECT_EQ(m_item.LoadCacheDataFromDb(1), 0);
    EXPECT_EQ(m_item.GetBlackBoxSize(), 0u);
    Sql("update CACHE_DATA_TABLE set COMPRESSED_DATA = NULL");
    EXPECT_EQ(m_item.LoadCacheDataFromDb(1), 0);
    EXPECT_EQ(m_item.GetBlackBox(), nullptr);
}

TEST_F(CQItem_DbPayloads, RawBytes_AreTakenAsTheyAre) {
    InsertPayload(1, "4", "0", "X'01020304'");
    EXPECT_EQ(m_item.LoadCacheDataFromDb(1), 1);
    EXPECT_EQ(InMemory(m_item, qfc::kBlackBox), (ByteVector{1, 2, 3, 4}));
}

TEST_F(CQItem_DbPayloads, NullSize_CountsAsThatOfTheBlackBoxWhateverTheKind) {
    InsertPayload(0, "NULL", "0", "X'01020304'");
    GiveBlackBox(m_item, Pattern(4));
    EXPECT_EQ(m_item.LoadCacheDataFromDb(0), 1);
    EXPECT_EQ(InMemory(m_item, qfc::kBitmapCache), (ByteVector{1, 2, 3, 4}));
}

TEST_F(CQItem_DbPayloads, NullSizeWithoutBlackBox_LoadsNothing) {
    InsertPayload(0, "NULL", "0", "X'01020304'");
    EXPECT_EQ(m_item.LoadCacheDataFromDb(0), 1);
    EXPECT_EQ(m_item.GetCache(), nullptr);
}

struct LyingRow {
    const char* pszWhat;
    std::string rawSize;
    std::string compressedSize;
    std::string data;
};

TEST_F(CQItem_DbPayloads, RowsThatLieAboutTheirSizes_EmptyThePayload) {
    const std::string bytes = BlobLiteral(Pattern(64));
    const LyingRow rows[] = {{"more raw bytes than announced", "4", "0", bytes},
                             {"negative size", "-1", "0", bytes},
                             {"smallest size", "-2147483648", "0", bytes},
                             {"negative compressed size", "64", "-5", bytes},
                             {"compressed size beyond the bytes", "64", "65", bytes},
                             {"huge compressed size", "64", "2147483647", bytes},
                             {"bytes that are not compressed", "64", "64", bytes},
                             {"size of more than 32 bits", "4294967300", "0", bytes},
                             {"text instead of bytes", "2", "0", "'some text'"}};
    for (const LyingRow& row : rows) {
        for (const int nKind : {0, 1, 2}) {
            Sql("delete from CACHE_DATA_TABLE");
            InsertPayload(nKind, row.rawSize, row.compressedSize, row.data);
            GiveBlackBox(m_item, Pattern(8));
            GiveCache(m_item, Dib24(1, 1));
            GiveFilm(m_item, Pattern(8), 4);
            EXPECT_EQ(m_item.LoadCacheDataFromDb(static_cast<DWORD>(nKind)), 0) << row.pszWhat << ", kind " << nKind;
            EXPECT_TRUE(m_item.PayloadInMemory(nKind).empty()) << row.pszWhat << ", kind " << nKind;
            const unsigned sizes[] = {m_item.GetCacheSize(), m_item.GetBlackBoxSize(), m_item.GetFilmSize()};
            EXPECT_EQ(sizes[nKind], 0u) << row.pszWhat << ", kind " << nKind;
        }
    }
}

TEST_F(CQItem_DbPayloads, CompressedPayloadOfAnotherSizeThanAnnounced_IsRefused) {
    const auto pItem = Restarted();
    for (const char* pszSize : {"2999", "3001", "1", "2147483647"}) {
        Sql(std::string("update CACHE_DATA_TABLE set PRE_COMPRESSED_SIZE = ") + pszSize + " where CACHE_DATA_TYPE = 1");
        EXPECT_EQ(pItem->LoadCacheDataFromDb(1), 0) << pszSize;
        EXPECT_TRUE(pItem->PayloadInMemory(qfc::kBlackBox).empty());
    }
}

TEST_F(CQItem_DbPayloads, SmallerBufferInMemory_IsReplacedNotOverrun) {
    const auto pItem = Restarted();
    GiveBlackBox(*pItem, Pattern(3, 9));
    EXPECT_EQ(pItem->LoadCacheDataFromDb(1), 1);
    EXPECT_EQ(InMemory(*pItem, qfc::kBlackBox), Pattern(3000, 1));
}

TEST_F(CQItem_DbPayloads, LargerBufferInMemory_IsReused) {
    InsertPayload(1, "4", "0", "X'01020304'");
    GiveBlackBox(m_item, Pattern(100));
    const void* const pBefore = m_item.GetBlackBox();
    EXPECT_EQ(m_item.LoadCacheDataFromDb(1), 1);
    EXPECT_EQ(m_item.GetBlackBox(), pBefore);
    EXPECT_EQ(m_item.GetBlackBoxSize(), 4u);
    EXPECT_EQ(InMemory(m_item, qfc::kBlackBox), (ByteVector{1, 2, 3, 4}));
}

// --- Payloads: into a buffer of the caller -------------------------------------------------------------------------

TEST_F(CQItem_DbPayloads, IntoNoBuffer_OneIsAllocatedByKind) {
    const auto pItem = Restarted();
    unsigned nSize = 0;
    void* pData = nullptr;
    ASSERT_EQ(pItem->LoadCacheDataFromDb(nSize, &pData, 1), 1);
    const qfc::PlainBlock blackBox(pData, nSize);
    EXPECT_EQ(nSize, 3000u);
    EXPECT_EQ(ByteVector(blackBox.data(), blackBox.data() + nSize), Pattern(3000, 1));

    nSize = 0;
    pData = nullptr;
    ASSERT_EQ(pItem->LoadCacheDataFromDb(nSize, &pData, 2), 1);
    const qfc::GlobalBlock film(pData, nSize);
    EXPECT_EQ(nSize, 900u);
    EXPECT_TRUE(pItem->PayloadInMemory(qfc::kFilm).empty());
}

TEST_F(CQItem_DbPayloads, IntoALargeEnoughBuffer_ItIsReused) {
    InsertPayload(1, "4", "0", "X'01020304'");
    const qfc::PlainBlock buffer(10);
    unsigned nSize = 10;
    void* pData = buffer.data();
    EXPECT_EQ(m_item.LoadCacheDataFromDb(nSize, &pData, 1), 1);
    EXPECT_EQ(pData, buffer.data());
    EXPECT_EQ(nSize, 4u);
    EXPECT_EQ(ByteVector(buffer.data(), buffer.data() + 4), (ByteVector{1, 2, 3, 4}));
}

TEST_F(CQItem_DbPayloads, IntoATooSmallBuffer_ItIsReplaced) {
    const auto pItem = Restarted();
    unsigned nSize = 2;
    void* pData = qfc::AllocPlainBlock(2);
    ASSERT_EQ(pItem->LoadCacheDataFromDb(nSize, &pData, 1), 1);
    const qfc::PlainBlock blackBox(pData, nSize);
    EXPECT_EQ(ByteVector(blackBox.data(), blackBox.data() + nSize), Pattern(3000, 1));
}

TEST_F(CQItem_DbPayloads, WithoutRow_BufferAndSizeAreLeftAlone) {
    BYTE byte = 7;
    unsigned nSize = 1;
    void* pData = &byte;
    EXPECT_EQ(m_item.LoadCacheDataFromDb(nSize, &pData, 1), 0);
    EXPECT_EQ(pData, &byte);
    EXPECT_EQ(nSize, 1u);
    EXPECT_EQ(m_item.LoadCacheDataFromDb(nSize, nullptr, 1), 0);
}

TEST_F(CQItem_DbPayloads, AnnouncedBytesThatAreMissing_LeaveTheSizeAnnounced) {
    InsertPayload(1, "10", "0", "X''");
    unsigned nSize = 0;
    void* pData = nullptr;
    EXPECT_EQ(m_item.LoadCacheDataFromDb(nSize, &pData, 1), 0);
    EXPECT_EQ(pData, nullptr);
    EXPECT_EQ(nSize, 10u);
}

TEST_F(CQItem_DbPayloads, CorruptBytes_EndTheCallersBuffer) {
    InsertPayload(1, "64", "64", BlobLiteral(Pattern(64)));
    unsigned nSize = 64;
    void* pData = qfc::AllocPlainBlock(64);
    EXPECT_EQ(m_item.LoadCacheDataFromDb(nSize, &pData, 1), 0);
    EXPECT_EQ(pData, nullptr);
    EXPECT_EQ(nSize, 0u);
}

// --- Films -------------------------------------------------------------------------------------------------------

TEST_F(CQItem_DbPayloads, FilmRowWithoutFrameSize_IsRefusedAndDividesNothing) {
    InsertItem("FILM_SIZE, FRAME_SIZE, ATTRIB", "4, 0, 1");
    InsertPayload(2, "4", "0", "X'01020304'");
    ASSERT_EQ(m_item.fnLoadItemFromDb(), 1);
    EXPECT_EQ(m_item.LoadCacheDataFromDb(2), 0);
    EXPECT_EQ(m_item.GetFilm(), nullptr);
    EXPECT_EQ(m_item.GetTotalFilmFrame(), 0u);
    EXPECT_EQ(m_item.GetFilmFrame(0), nullptr);
}

TEST_F(CQItem_DbPayloads, FilmThatDoesNotCoverAFrame_IsRefused) {
    for (const char* pszFrameSize : {"5", "-1", "2147483647"}) {
        Sql("delete from ITEM_TABLE; delete from CACHE_DATA_TABLE");
        InsertItem("FILM_SIZE, FRAME_SIZE, ATTRIB", std::string("4, ") + pszFrameSize + ", 1");
        InsertPayload(2, "4", "0", "X'01020304'");
        ASSERT_EQ(m_item.fnLoadItemFromDb(), 1);
        EXPECT_EQ(m_item.LoadCacheDataFromDb(2), 0) << pszFrameSize;
        EXPECT_EQ(m_item.GetFilm(), nullptr) << pszFrameSize;
        EXPECT_EQ(m_item.GetFilmFrame(1), nullptr) << pszFrameSize;
    }
}

TEST_F(CQItem_DbPayloads, FilmSizeOfTheRow_DoesNotOutgrowTheBytesInMemory) {
    InsertItem("FILM_SIZE, FRAME_SIZE, ATTRIB", "1000000, 4, 1");
    GiveFilm(m_item, Pattern(8), 4);
    ASSERT_EQ(m_item.fnLoadItemFromDb(), 1);
    EXPECT_EQ(m_item.GetFilmSize(), 8u);
    EXPECT_EQ(m_item.GetFilmFrame(100), m_item.GetFilm() + 8);
    const CQItem copy(m_item);
    EXPECT_EQ(InMemory(copy, qfc::kFilm), Pattern(8));
}

// --- Lazy loading --------------------------------------------------------------------------------------------------

class CQItem_Lazy : public testing::Test {
protected:
    CQItem_Lazy() {
        StoredTree tree(m_library.Tools());
        EXPECT_EQ(tree.pA->AddItemDb(NewFilledItem(1), 1), 1);
    }
    CurrentLibrary m_library;
};

TEST_F(CQItem_Lazy, BlackBox_IsLoadedWithTheCacheWhenAsked) {
    LoadedTree tree(m_library.Tools());
    CQItem* const pItem = tree.Item(1);
    ASSERT_NE(pItem, nullptr);
    EXPECT_EQ(pItem->IsExistInGalleryItemMap(), 1);
    EXPECT_EQ(pItem->GetBlackBoxSize(), 0u);
    EXPECT_NE(pItem->GetBlackBox(), nullptr);
    EXPECT_EQ(InMemory(*pItem, qfc::kBlackBox), Pattern(3000, 1));
    EXPECT_EQ(InMemory(*pItem, qfc::kBitmapCache), Dib24(10, 10));
}

TEST_F(CQItem_Lazy, BitmapCacheSize_LoadsNothing) {
    LoadedTree tree(m_library.Tools());
    EXPECT_EQ(tree.Item(1)->GetBitmapCacheSize().cx, -1);
    EXPECT_EQ(tree.Item(1)->GetBitmapCacheSize().cy, -1);
    ASSERT_EQ(tree.Item(1)->TryLoadBB(), 1);
    EXPECT_EQ(tree.Item(1)->GetBitmapCacheSize().cx, 10);
}

TEST_F(CQItem_Lazy, Film_IsLoadedWhenItsFramesAreAsked) {
    LoadedTree tree(m_library.Tools());
    CQItem* const pItem = tree.Item(1);
    EXPECT_EQ(pItem->GetFilm(), nullptr);
    EXPECT_EQ(pItem->GetTotalFilmFrame(), 3u);
    EXPECT_EQ(InMemory(*pItem, qfc::kFilm), Pattern(900, 2));
    EXPECT_EQ(pItem->GetFilmFrame(1), pItem->GetFilm() + 300);
}

TEST_F(CQItem_Lazy, FilmWithoutItsAttributeBit_IsNotLoaded) {
    LoadedTree tree(m_library.Tools());
    CQItem* const pItem = tree.Item(1);
    pItem->GetAttrib() = 0;
    EXPECT_EQ(pItem->TryLoadFilm(), 1);
    EXPECT_EQ(pItem->GetFilm(), nullptr);
    EXPECT_EQ(pItem->GetFilmFrame(0), nullptr);
    EXPECT_EQ(pItem->GetTotalFilmFrame(), 3u);  // What the row announces.
}

TEST_F(CQItem_Lazy, OneOfTwoPayloadsMissing_MakesTheLoadFail) {
    m_library.Raw().Exec("delete from CACHE_DATA_TABLE where CACHE_DATA_TYPE = 1");
    LoadedTree tree(m_library.Tools());
    CQItem* const pItem = tree.Item(1);
    EXPECT_EQ(pItem->TryLoadBB(), 0);
    EXPECT_EQ(InMemory(*pItem, qfc::kBitmapCache), Dib24(10, 10));
    EXPECT_EQ(pItem->TryLoadBB(), 1);
}

TEST_F(CQItem_Lazy, CorruptBlackBox_LeavesItNullButBringsTheCache) {
    m_library.Raw().Exec("update CACHE_DATA_TABLE set PRE_COMPRESSED_SIZE = 7 where CACHE_DATA_TYPE = 1");
    LoadedTree tree(m_library.Tools());
    CQItem* const pItem = tree.Item(1);
    EXPECT_EQ(pItem->GetBlackBox(), nullptr);
    EXPECT_NE(pItem->GetCache(), nullptr);
}

TEST_F(CQItem_Lazy, EqualFilmsOfTwoUnloadedItems_AreComparedByTheirBytes) {
    {
        LoadedTree tree(m_library.Tools());
        std::unique_ptr<CQItem> pOther(NewFilledItem(1));
        pOther->SetUniqueID(GuidOf(2));
        pOther->SetItemName("Item 1");
        ASSERT_EQ(tree.pA->AddItemDb(pOther.release(), 1), 1);
        std::unique_ptr<CQItem> pThird(NewFilledItem(1));
        pThird->SetUniqueID(GuidOf(3));
        GiveFilm(*pThird, Pattern(900, 77), 300);
        ASSERT_EQ(tree.pA->AddItemDb(pThird.release(), 1), 1);
    }
    LoadedTree tree(m_library.Tools());
    EXPECT_EQ(tree.Item(1)->Equals(tree.Item(2)), 1);
    EXPECT_EQ(tree.Item(1)->Equals(tree.Item(3)), 0);
}

}  // namespace
