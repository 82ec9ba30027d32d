#include "items/CQItem.h"
#include "items/ItemTypes.h"
#include "tests/items/ItemLibrary.h"

#include <gtest/gtest.h>
#include <memory>

namespace {

using namespace qfc::test;

// --- Payloads: into the item ---------------------------------------------------------------------------------------

class CQItem_DbPayloads : public StoredPayloadsFixture {};

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

TEST_F(CQItem_DbPayloads, EmptyFilmRowWithoutFrameSize_AnswersOne) {
    InsertItem("FILM_SIZE, FRAME_SIZE, ATTRIB", "0, 0, 1");
    InsertPayload(2, "0", "0", "X'01'");
    ASSERT_EQ(m_item.fnLoadItemFromDb(), 1);
    EXPECT_EQ(m_item.LoadCacheDataFromDb(2), 1);
    EXPECT_EQ(m_item.GetFilm(), nullptr);
}

TEST_F(CQItem_DbPayloads, RefusedShortFilm_LeavesNoSize) {
    InsertItem("FILM_SIZE, FRAME_SIZE, ATTRIB", "4, 5, 1");
    InsertPayload(2, "4", "0", "X'01020304'");
    ASSERT_EQ(m_item.fnLoadItemFromDb(), 1);
    EXPECT_EQ(m_item.GetFilmSize(), 4u);
    EXPECT_EQ(m_item.LoadCacheDataFromDb(2), 0);
    EXPECT_EQ(m_item.GetFilmSize(), 0u);
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

}  // namespace
