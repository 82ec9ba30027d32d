#include "db/CurrentDBTools.h"
#include "items/CQGallery.h"
#include "items/Handles.h"
#include "tests/items/ItemBuilders.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <memory>

namespace {

using namespace qfc::test;
using testing::ElementsAre;
using testing::IsEmpty;

constexpr ULONGLONG kA = 100;
constexpr ULONGLONG kB = 200;

class CQGallery_ItemMap : public testing::Test {
protected:
    CountedItem* NewItem(unsigned nNumber, int& nDestroyed) {
        auto* const pItem = new CountedItem(nDestroyed);
        pItem->SetUniqueID(GuidOf(nNumber));
        return pItem;
    }

    int m_nDestroyed = 0;
    CQGallery m_gallery;
    CountedItem* m_pItem = NewItem(1, m_nDestroyed);
};

TEST_F(CQGallery_ItemMap, NullItem_IsRefused) {
    EXPECT_EQ(m_gallery.AddItem2Map(nullptr, kA), 0);
    EXPECT_EQ(m_gallery.RemoveItemFromMap(nullptr, kA), 0);
    delete m_pItem;
}

TEST_F(CQGallery_ItemMap, AddedItem_IsFoundByItsGuid) {
    EXPECT_EQ(m_gallery.AddItem2Map(m_pItem, kA), 1);
    CQItem* pFound = nullptr;
    EXPECT_EQ(m_gallery.IsItemHasParentByGuid(GuidOf(1), pFound), 1);
    EXPECT_EQ(pFound, m_pItem);
}

TEST_F(CQGallery_ItemMap, UnknownGuid_LeavesTheOutputUntouched) {
    CQItem* pFound = m_pItem;
    EXPECT_EQ(m_gallery.IsItemHasParentByGuid(GuidOf(1), pFound), 0);
    EXPECT_EQ(pFound, m_pItem);
    EXPECT_THAT(m_gallery.GetItemParentList(GuidOf(1)), IsEmpty());
    EXPECT_EQ(m_gallery.RemoveItemFromMap(m_pItem, kA), 0);
    EXPECT_EQ(m_nDestroyed, 0);
    delete m_pItem;
}

TEST_F(CQGallery_ItemMap, ParentsAAndBAndA_StayAllThree) {
    for (const ULONGLONG hParent : {kA, kB, kA}) m_gallery.AddItem2Map(m_pItem, hParent);
    EXPECT_THAT(m_gallery.GetItemParentList(GuidOf(1)), ElementsAre(kA, kB, kA));
}

TEST_F(CQGallery_ItemMap, SameParentTwiceInARow_StandsOnce) {
    m_gallery.AddItem2Map(m_pItem, kA);
    EXPECT_EQ(m_gallery.AddItem2Map(m_pItem, kA), 1);
    EXPECT_THAT(m_gallery.GetItemParentList(GuidOf(1)), ElementsAre(kA));
}

TEST_F(CQGallery_ItemMap, ParentList_IsACopy) {
    m_gallery.AddItem2Map(m_pItem, kA);
    auto parents = m_gallery.GetItemParentList(GuidOf(1));
    parents.clear();
    EXPECT_THAT(m_gallery.GetItemParentList(GuidOf(1)), ElementsAre(kA));
}

TEST_F(CQGallery_ItemMap, SecondObjectOfAGuid_DoesNotReplaceTheFirst) {
    int nSecondDestroyed = 0;
    auto* const pSecond = NewItem(1, nSecondDestroyed);
    m_gallery.AddItem2Map(m_pItem, kA);
    m_gallery.AddItem2Map(pSecond, kB);
    CQItem* pFound = nullptr;
    m_gallery.IsItemHasParentByGuid(GuidOf(1), pFound);
    EXPECT_EQ(pFound, m_pItem);
    EXPECT_THAT(m_gallery.GetItemParentList(GuidOf(1)), ElementsAre(kA, kB));
    m_gallery.RemoveItemFromMap(pSecond, kB);
}

TEST_F(CQGallery_ItemMap, CanonicalItemRemovedFromOneOfTwoParents_Lives) {
    m_gallery.AddItem2Map(m_pItem, kA);
    m_gallery.AddItem2Map(m_pItem, kB);
    EXPECT_EQ(m_gallery.RemoveItemFromMap(m_pItem, kA), 1);
    EXPECT_EQ(m_nDestroyed, 0);
    EXPECT_THAT(m_gallery.GetItemParentList(GuidOf(1)), ElementsAre(kB));
}

TEST_F(CQGallery_ItemMap, RemovedParent_GoesWhereverItStands) {
    for (const ULONGLONG hParent : {kA, kB, kA}) m_gallery.AddItem2Map(m_pItem, hParent);
    m_gallery.RemoveItemFromMap(m_pItem, kA);
    EXPECT_THAT(m_gallery.GetItemParentList(GuidOf(1)), ElementsAre(kB));
}

TEST_F(CQGallery_ItemMap, LastParentRemoved_DestroysTheItemAndForgetsIt) {
    m_gallery.AddItem2Map(m_pItem, kA);
    EXPECT_EQ(m_gallery.RemoveItemFromMap(m_pItem, kA), 1);
    EXPECT_EQ(m_nDestroyed, 1);
    CQItem* pFound = nullptr;
    EXPECT_EQ(m_gallery.IsItemHasParentByGuid(GuidOf(1), pFound), 0);
}

TEST_F(CQGallery_ItemMap, ParentThatDoesNotHoldTheItem_RemovesNothing) {
    m_gallery.AddItem2Map(m_pItem, kA);
    EXPECT_EQ(m_gallery.RemoveItemFromMap(m_pItem, kB), 1);
    EXPECT_EQ(m_nDestroyed, 0);
    EXPECT_THAT(m_gallery.GetItemParentList(GuidOf(1)), ElementsAre(kA));
}

TEST_F(CQGallery_ItemMap, SecondObjectRemoved_DiesAtOnceThoughParentsRemain) {
    int nSecondDestroyed = 0;
    auto* const pSecond = NewItem(1, nSecondDestroyed);
    m_gallery.AddItem2Map(m_pItem, kA);
    m_gallery.AddItem2Map(pSecond, kB);
    EXPECT_EQ(m_gallery.RemoveItemFromMap(pSecond, kB), 1);
    EXPECT_EQ(nSecondDestroyed, 1);
    EXPECT_EQ(m_nDestroyed, 0);
    EXPECT_THAT(m_gallery.GetItemParentList(GuidOf(1)), ElementsAre(kA));
}

TEST_F(CQGallery_ItemMap, SecondObjectRemovedWithTheLastParent_TakesTheCanonicalItemAlong) {
    int nSecondDestroyed = 0;
    auto* const pSecond = NewItem(1, nSecondDestroyed);
    m_gallery.AddItem2Map(m_pItem, kA);
    EXPECT_EQ(m_gallery.RemoveItemFromMap(pSecond, kA), 1);
    EXPECT_EQ(nSecondDestroyed, 1);
    EXPECT_EQ(m_nDestroyed, 1);
}

TEST(CQGallery_End, ItemInThreeFolders_IsDestroyedOnce) {
    int nDestroyed = 0;
    {
        CQGallery gallery;
        auto* const pItem = new CountedItem(nDestroyed);
        for (const char* pszName : {"a", "b", "c"}) {
            CQFolder* const pFolder = AddSub(gallery, pszName);
            pFolder->AddItem(pItem, 1);
            gallery.AddItem2Map(pItem, qfc::ToHandle(pFolder));
        }
    }
    EXPECT_EQ(nDestroyed, 1);
}

TEST(CQGallery_End, ItemInNestedFolders_IsDestroyedOnce) {
    int nDestroyed = 0;
    {
        CQGallery gallery;
        CQFolder* const pOuter = AddSub(gallery, "outer");
        CQFolder* const pInner = AddSub(*pOuter, "inner");
        auto* const pItem = new CountedItem(nDestroyed);
        for (CQFolder* pFolder : {pInner, pOuter}) {
            pFolder->AddItem(pItem, 1);
            gallery.AddItem2Map(pItem, qfc::ToHandle(pFolder));
        }
    }
    EXPECT_EQ(nDestroyed, 1);
}

TEST(CQGallery_End, ItemsOutsideTheMap_AreDestroyedToo) {
    int nDestroyed = 0;
    {
        CQGallery gallery;
        AddSub(gallery, "a")->AddItem(new CountedItem(nDestroyed), 1);
        gallery.AddItem(new CountedItem(nDestroyed), 1);
    }
    EXPECT_EQ(nDestroyed, 2);
}

TEST(CQGallery_End, ItemsThatTheTreeLeavesAlone_GoWithTheMap) {
    int nDestroyed = 0;
    int nOther = 0;
    {
        CQGallery gallery;
        CQFolder* const pFolder = AddSub(gallery, "a");
        pFolder->SetDBTools(reinterpret_cast<DBTools*>(&nOther));
        ASSERT_FALSE(qfc::IsCurrentDBTools(pFolder->GetDBTools()));
        auto* const pItem = new CountedItem(nDestroyed);
        pFolder->AddItem(pItem, 1);
        gallery.AddItem2Map(pItem, qfc::ToHandle(pFolder));
    }
    EXPECT_EQ(nDestroyed, 1);
}

TEST(CQGallery_End, SharedItem_StillKnowsItsGalleryWhenItsFirstFolderIsGone) {
    int nDestroyed = 0;
    CQGallery gallery;
    CQFolder* const pFirst = AddSub(gallery, "first");
    CQFolder* const pSecond = AddSub(gallery, "second");
    auto* const pItem = new CountedItem(nDestroyed);
    for (CQFolder* pFolder : {pFirst, pSecond}) {
        pFolder->AddItem(pItem, 1);
        gallery.AddItem2Map(pItem, qfc::ToHandle(pFolder));
    }
    pItem->SetParentFolder(pFirst);
    ASSERT_EQ(pFirst->DetachParent(0), 1);
    delete pFirst;
    EXPECT_EQ(nDestroyed, 0);
    EXPECT_EQ(pItem->IsExistInGalleryItemMap(), 1);
}

TEST(Handles, GalleryAndItsFolderBase_HaveOneHandle) {
    CQGallery gallery;
    CQFolder* const pBase = &gallery;
    EXPECT_EQ(qfc::ToHandle(&gallery), qfc::ToHandle(pBase));
    EXPECT_EQ(qfc::ToHandle(&gallery), reinterpret_cast<std::uintptr_t>(&gallery));
}

TEST(Handles, HandlesLeadBack) {
    CQGallery gallery;
    CQFolder folder;
    EXPECT_EQ(qfc::AsGallery(qfc::ToHandle(&gallery)), &gallery);
    EXPECT_EQ(qfc::AsFolder(qfc::ToHandle(&gallery)), &gallery);
    EXPECT_EQ(qfc::AsFolder(qfc::ToHandle(&folder)), &folder);
}

TEST(Handles, Null_IsZeroBothWays) {
    EXPECT_EQ(qfc::ToHandle(nullptr), 0u);
    EXPECT_EQ(qfc::AsFolder(0), nullptr);
    EXPECT_EQ(qfc::AsGallery(0), nullptr);
}

}  // namespace
