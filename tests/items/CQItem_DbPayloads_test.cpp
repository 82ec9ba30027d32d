#include "items/CQItem.h"
#include "items/ItemTypes.h"
#include "tests/items/ItemLibrary.h"

#include <gtest/gtest.h>
#include <memory>

namespace {

using namespace qfc::test;

// --- Payloads: into the item ---------------------------------------------------------------------------------------

class CQItem_DbPayloads : public ItemRowFixture {
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

TEST_F(CQItem_Lazy, BlackBoxOfAnItemWhoseCacheIsInMemory_IsNotLoaded) {
    LoadedTree tree(m_library.Tools());
    CQItem* const pItem = tree.Item(1);
    ASSERT_EQ(pItem->LoadCacheDataFromDb(static_cast<DWORD>(qfc::kBitmapCache)), 1);
    EXPECT_EQ(pItem->GetBlackBox(), nullptr);
}

TEST_F(CQItem_Lazy, DetachedBlackBox_IsLoadedBeforeItIsHandedOut) {
    LoadedTree tree(m_library.Tools());
    const qfc::PlainBlock taken(tree.Item(1)->DetachBlackBox(), 3000);
    ASSERT_TRUE(taken);
    EXPECT_EQ(ByteVector(taken.data(), taken.data() + 3000), Pattern(3000, 1));
    EXPECT_EQ(tree.Item(1)->GetBlackBoxSize(), 0u);
    EXPECT_EQ(tree.Item(1)->IsModified(), 1);
}

TEST_F(CQItem_Lazy, CorruptBlackBox_LeavesItNullButBringsTheCache) {
    m_library.Raw().Exec("update CACHE_DATA_TABLE set PRE_COMPRESSED_SIZE = 7 where CACHE_DATA_TYPE = 1");
    LoadedTree tree(m_library.Tools());
    CQItem* const pItem = tree.Item(1);
    EXPECT_EQ(pItem->GetBlackBox(), nullptr);
    EXPECT_NE(pItem->GetCache(), nullptr);
}

TEST_F(CQItem_Lazy, UnstoredBlackBox_IsNotLoadedOver) {
    LoadedTree tree(m_library.Tools());
    CQItem* const pItem = tree.Item(1);
    GiveBlackBox(*pItem, Pattern(50, 9));
    EXPECT_EQ(pItem->TryLoadBB(), 1);
    EXPECT_EQ(InMemory(*pItem, qfc::kBlackBox), Pattern(50, 9));
    EXPECT_EQ(pItem->GetBlackBoxSize(), 50u);
    EXPECT_EQ(InMemory(*pItem, qfc::kBitmapCache), Dib24(10, 10));
}

TEST_F(CQItem_Lazy, UnstoredBlackBox_IsStoredByTheUpdateOfItsGallery) {
    {
        LoadedTree tree(m_library.Tools());
        CQItem* const pItem = tree.Item(1);
        GiveBlackBox(*pItem, Pattern(50, 9));
        ASSERT_EQ(tree.Gallery().UpdateItemDB(pItem, GuidOf(1), qfc::copy_mask::kBlackBox), 1);
    }
    LoadedTree tree(m_library.Tools());
    EXPECT_NE(tree.Item(1)->GetBlackBox(), nullptr);
    EXPECT_EQ(InMemory(*tree.Item(1), qfc::kBlackBox), Pattern(50, 9));
}

TEST_F(CQItem_Lazy, CorruptRow_TakesNoGoodBlackBoxFromMemory) {
    LoadedTree tree(m_library.Tools());
    CQItem* const pItem = tree.Item(1);
    ASSERT_EQ(pItem->LoadCacheDataFromDb(static_cast<DWORD>(qfc::kBlackBox)), 1);
    m_library.Raw().Exec("update CACHE_DATA_TABLE set PRE_COMPRESSED_SIZE = 7 where CACHE_DATA_TYPE = 1");
    EXPECT_EQ(pItem->TryLoadBB(), 0);
    EXPECT_EQ(InMemory(*pItem, qfc::kBlackBox), Pattern(3000, 1));
    EXPECT_EQ(pItem->GetBlackBoxSize(), 3000u);
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
