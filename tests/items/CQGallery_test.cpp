#include "items/CQGallery.h"

#include "tests/items/ItemBuilders.h"

#include <gtest/gtest.h>
#include <memory>

namespace {

using namespace qfc::test;

// A gallery whose sub-folder list exists and is empty.
class GalleryWithEmptyList : public CQGallery {
public:
    GalleryWithEmptyList() {
        CQFolder* const pFolder = AddSub(*this, "gone");
        pFolder->DetachParent(0);
        delete pFolder;
    }
};

TEST(CQGallery, NewGallery_IsAnEmptyRoot) {
    CQGallery gallery;
    EXPECT_TRUE(gallery.GetFolderName().IsEmpty());
    EXPECT_EQ(gallery.GetFolderList(), nullptr);
    EXPECT_TRUE(gallery.GetActiveFolderPath().IsEmpty());
    EXPECT_EQ(gallery.GetRoot(), &gallery);
    EXPECT_EQ(gallery.GetDBId(), -1);
}

TEST(CQGallery, NamedGallery_TakesTheMasksInTheFoldersOrder) {
    CQGallery gallery("Media", 5, 6, 7);
    EXPECT_EQ(gallery.GetFolderName(), "Media");
    EXPECT_EQ(gallery.GetTrusty(), 5u);
    EXPECT_EQ(gallery.GetAdopt(), 6u);
    EXPECT_EQ(gallery.GetExtra(), 7u);
}

TEST(CQGallery, RuntimeClass_MakesGalleriesThatAreFolders) {
    const std::unique_ptr<CObject> pMade(CQGallery::CreateObject());
    EXPECT_NE(DYNAMIC_DOWNCAST(CQGallery, pMade.get()), nullptr);
    EXPECT_NE(DYNAMIC_DOWNCAST(CQFolder, pMade.get()), nullptr);
    EXPECT_STREQ(CQGallery::GetThisClass()->m_lpszClassName, "CQGallery");
}

TEST(CQGallery, FunctionsThatDoNothing_AnswerOne) {
    CQGallery gallery;
    CQFolder folder;
    EXPECT_EQ(gallery.AddToCurrentFolder(&folder), 1);
    EXPECT_EQ(gallery.GetFolderList(), nullptr);
    EXPECT_EQ(CQGallery::LetGallerySleep(1), 1);
    EXPECT_EQ(CQGallery::WakeUpGallery(1), 1);
}

TEST(CQGallery_CurrentFolder, WithoutAList_ThereIsNone) {
    CQGallery gallery;
    EXPECT_EQ(gallery.GetCurrentFolder(), nullptr);
}

TEST(CQGallery_CurrentFolder, WithoutAList_TheNotedOneIsKeptAndCountsOnceItIsInTheTree) {
    CQGallery gallery;
    auto pLater = std::make_unique<CQFolder>("later", 0, 0, 0);
    gallery.SetCurrentFolder(pLater.get(), 0);
    EXPECT_EQ(gallery.GetCurrentFolder(), nullptr);
    AddSub(gallery, "first");
    CQFolder* const pAdded = pLater.release();
    gallery.AddFolder(pAdded, 0, 1);
    EXPECT_EQ(gallery.GetCurrentFolder(), pAdded);
}

TEST(CQGallery_CurrentFolder, WithAnEmptyList_TheGalleryIsItsOwn) {
    GalleryWithEmptyList gallery;
    ASSERT_NE(gallery.GetFolderList(), nullptr);
    EXPECT_EQ(gallery.GetCurrentFolder(), &gallery);
}

TEST(CQGallery_CurrentFolder, NothingChosen_TheFirstSubFolderIs) {
    CQGallery gallery;
    CQFolder* const pFirst = AddSub(gallery, "first");
    AddSub(gallery, "second");
    EXPECT_EQ(gallery.GetCurrentFolder(), pFirst);
}

TEST(CQGallery_CurrentFolder, ChosenFolder_StaysWhileItIsInTheTree) {
    CQGallery gallery;
    AddSub(gallery, "first");
    CQFolder* const pDeep = AddSub(*AddSub(gallery, "second"), "deep");
    EXPECT_EQ(gallery.SetCurrentFolder(pDeep, 0), 1);
    EXPECT_EQ(gallery.GetCurrentFolder(), pDeep);
}

TEST(CQGallery_CurrentFolder, DestroyedFolder_IsReplacedByTheFirst) {
    CQGallery gallery;
    CQFolder* const pFirst = AddSub(gallery, "first");
    CQFolder* const pSecond = AddSub(gallery, "second");
    gallery.SetCurrentFolder(pSecond, 0);
    pSecond->DetachParent(0);
    delete pSecond;
    EXPECT_EQ(gallery.GetCurrentFolder(), pFirst);
}

TEST(CQGallery_CurrentFolder, DestroyedFolder_IsNotFlushed) {
    CQGallery gallery;
    CQFolder* const pFirst = AddSub(gallery, "first");
    CQFolder* const pSecond = AddSub(gallery, "second");
    gallery.SetCurrentFolder(pSecond, 0);
    pSecond->DetachParent(0);
    delete pSecond;
    EXPECT_EQ(gallery.SetCurrentFolder(pFirst, 1), 1);
    EXPECT_EQ(gallery.GetCurrentFolder(), pFirst);
}

TEST(CQGallery_CurrentFolder, FolderOfAnotherTree_IsNotKept) {
    CQGallery gallery;
    CQFolder* const pFirst = AddSub(gallery, "first");
    CQFolder other;
    gallery.SetCurrentFolder(&other, 0);
    EXPECT_EQ(gallery.GetCurrentFolder(), pFirst);
}

TEST(CQGallery_CurrentFolder, SetToNull_TheFirstIsTakenAgain) {
    CQGallery gallery;
    CQFolder* const pFirst = AddSub(gallery, "first");
    gallery.SetCurrentFolder(AddSub(gallery, "second"), 0);
    gallery.SetCurrentFolderNull();
    EXPECT_EQ(gallery.GetCurrentFolder(), pFirst);
}

TEST(CQGallery_CurrentFolder, Setting_RebuildsTheActivePath) {
    CQGallery gallery;
    CQFolder* const pInner = AddSub(*AddSub(gallery, "A"), "B");
    gallery.SetCurrentFolder(pInner, 0);
    EXPECT_EQ(gallery.GetActiveFolderPath(), "\\A\\B");
}

TEST(CQGallery_CurrentFolder, ActivePathWithoutACurrentFolder_IsEmpty) {
    CQGallery gallery;
    EXPECT_EQ(gallery.GenerateActiveFolderPath(), 0);
    EXPECT_TRUE(gallery.GetActiveFolderPath().IsEmpty());
}

TEST(CQGallery_CurrentFolder, ActivePathOfTheGalleryItself_IsEmptyAndCounts) {
    GalleryWithEmptyList gallery;
    EXPECT_EQ(gallery.GenerateActiveFolderPath(), 1);
    EXPECT_TRUE(gallery.GetActiveFolderPath().IsEmpty());
}

TEST(CQGallery_CurrentFolder, SetByPath_FollowsTheComponents) {
    CQGallery gallery;
    CQFolder* const pOuter = AddSub(gallery, "A");
    CQFolder* const pInner = AddSub(*pOuter, "B");
    EXPECT_EQ(gallery.SetCurrentFolderByPath("\\A\\\\B\\"), 1);
    EXPECT_EQ(gallery.GetCurrentFolder(), pInner);
    EXPECT_EQ(gallery.SetCurrentFolderByPath("A"), 1);
    EXPECT_EQ(gallery.GetCurrentFolder(), pOuter);
}

TEST(CQGallery_CurrentFolder, SetByPath_LeavesTheActivePathAlone) {
    CQGallery gallery;
    AddSub(*AddSub(gallery, "A"), "B");
    gallery.GenerateActiveFolderPath();
    gallery.SetCurrentFolderByPath("A\\B");
    EXPECT_EQ(gallery.GetActiveFolderPath(), "\\A");
}

TEST(CQGallery_CurrentFolder, PathThatNamesNoFolder_KeepsTheCurrentOne) {
    CQGallery gallery;
    AddSub(gallery, "A");
    CQFolder* const pSecond = AddSub(gallery, "B");
    gallery.SetCurrentFolder(pSecond, 0);
    for (const char* pszPath : {"C", "A\\C", "b", "", "\\"}) {
        EXPECT_EQ(gallery.SetCurrentFolderByPath(pszPath), 0) << pszPath;
        EXPECT_EQ(gallery.GetCurrentFolder(), pSecond) << pszPath;
    }
    EXPECT_EQ(gallery.SetCurrentFolderByPath(nullptr), 0);
}

TEST(CQGallery_Tree, FolderForItems_IsTheFirstTrustedWithBothBits) {
    CQGallery gallery;
    AddSub(gallery, "no", 64);
    CQFolder* const pBoth = AddSub(gallery, "both", 2 | 64);
    AddSub(gallery, "later", 2 | 64);
    EXPECT_EQ(gallery.GetFirstCanAddItemFolder(), pBoth);
}

TEST(CQGallery_Tree, FolderForItemsWithoutTheSecondBit_IsItsFirstChildWithIt) {
    CQGallery gallery;
    CQFolder* const pFirst = AddSub(gallery, "first", 2);
    AddSub(gallery, "both", 2 | 64);
    AddSub(*pFirst, "no", 2);
    CQFolder* const pChild = AddSub(*pFirst, "yes", 64 | 1);
    AddSub(*pFirst, "later", 64);
    EXPECT_EQ(gallery.GetFirstCanAddItemFolder(), pChild);
}

TEST(CQGallery_Tree, NoFolderForItems_IsNull) {
    CQGallery empty;
    EXPECT_EQ(empty.GetFirstCanAddItemFolder(), nullptr);
    CQGallery untrusted;
    AddSub(untrusted, "a", 64);
    EXPECT_EQ(untrusted.GetFirstCanAddItemFolder(), nullptr);
    CQGallery childless;
    AddSub(childless, "a", 2);
    AddSub(childless, "b", 2 | 64);
    EXPECT_EQ(childless.GetFirstCanAddItemFolder(), nullptr);
}

TEST(CQGallery_Tree, LeafCount_CountsFoldersWithoutSubFolders) {
    CQGallery gallery;
    CQFolder* const pA = AddSub(gallery, "A");
    AddSub(*pA, "A1");
    AddSub(*AddSub(*pA, "A2"), "A2x");
    AddSub(gallery, "B");
    EXPECT_EQ(gallery.GetFinalFolderCount(), 3);
}

TEST(CQGallery_Tree, LeafCountWithoutSubFolders_IsZero) {
    CQGallery gallery;
    EXPECT_EQ(gallery.GetFinalFolderCount(), 0);
    GalleryWithEmptyList emptied;
    EXPECT_EQ(emptied.GetFinalFolderCount(), 0);
}

}  // namespace
