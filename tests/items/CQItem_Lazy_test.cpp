#include "items/CQItem.h"
#include "items/ItemTypes.h"
#include "tests/items/ItemLibrary.h"

#include <gtest/gtest.h>
#include <memory>

namespace {

using namespace qfc::test;

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
