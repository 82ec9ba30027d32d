#include "folders/PathComponents.h"
#include "tests/folders/FolderBuilders.h"

#include <gtest/gtest.h>

namespace qfc::test {
namespace {

using Texts = std::vector<std::string>;

TEST(CQFolderLookup, ByName_FindsTheFirstDirectChildWithCase) {
    CQFolder root;
    CQFolder* first = AddSub(root, "Clip");
    AddSub(root, "Clip");
    AddSub(*first, "Deep");
    EXPECT_EQ(root.GetFolderByName("Clip"), first);
    EXPECT_EQ(root.GetFolderByName("clip"), nullptr);
    EXPECT_EQ(root.GetFolderByName("Deep"), nullptr);
}

TEST(CQFolderLookup, ByPath_FollowsOneLevelPerComponent) {
    CQFolder root;
    CQFolder* a = AddSub(root, "A");
    CQFolder* b = AddSub(*a, "B");
    EXPECT_EQ(root.GetFolderByPath("A"), a);
    EXPECT_EQ(root.GetFolderByPath("A\\B"), b);
    EXPECT_EQ(root.GetFolderByPath("\\A\\\\B\\"), b);
    EXPECT_EQ(root.GetFolderByPath("A\\C"), nullptr);
    EXPECT_EQ(root.GetFolderByPath("B"), nullptr);
    EXPECT_EQ(root.GetFolderByPath(""), nullptr);
    EXPECT_EQ(root.GetFolderByPath("\\\\"), nullptr);
}

TEST(CQFolderLookup, SubFolder_FollowsTheNamesBehindThePosition) {
    CQFolder root;
    CQFolder* a = AddSub(root, "A");
    CQFolder* b = AddSub(*a, "B");
    SplitIntoComponents("A\\B", true);
    const CString first = TakeComponent();
    EXPECT_EQ(root.GetSubFolder(first, PathPosition()), b);
    EXPECT_EQ(root.GetSubFolder(first, nullptr), a);
    CStringList own;
    own.AddTail("C");
    EXPECT_EQ(root.GetSubFolder(first, own.GetHeadPosition()), nullptr);
    EXPECT_EQ(root.GetSubFolder("missing", own.GetHeadPosition()), nullptr);
}

TEST(CQFolderLookup, SubtreeSearches_FindTheFirstInPreOrder) {
    CQFolder root;
    CQFolder* a = AddSub(root, "A");
    CQFolder* deep = AddSub(*a, "X");
    deep->SetFolderID(5);
    CQFolder* later = AddSub(root, "X");
    later->SetFolderID(5);
    EXPECT_EQ(root.GetSubFolderByName("X"), deep);
    EXPECT_EQ(root.GetSubFolderByID(5), deep);
    EXPECT_EQ(root.GetSubFolderByName("none"), nullptr);
    EXPECT_EQ(root.GetSubFolderByID(6), nullptr);
}

TEST(CQFolderLookup, SubtreeSearches_StayInTheSubtreeOfAnInnerFolder) {
    CQFolder root;
    CQFolder* a = AddSub(root, "A");
    AddSub(*a, "A1");
    AddSub(root, "B");
    EXPECT_EQ(a->GetSubFolderByName("B"), nullptr);
    EXPECT_EQ(a->GetSubFolderByName("A"), nullptr);
    EXPECT_NE(a->GetSubFolderByName("A1"), nullptr);
}

TEST(CQFolderLookup, ByStrID_ComparesNames) {
    CQFolder root;
    AddSub(root, "other")->GetFolderStrID() = "X";
    CQFolder* named = AddSub(root, "X");
    EXPECT_EQ(root.GetSubFolderByStrID("X"), named);
}

TEST(CQFolderLookup, PreSubFolder_IsTheOneVisitedJustBefore) {
    CQFolder root;
    CQFolder* a = AddSub(root, "A");
    CQFolder* a1 = AddSub(*a, "A1");
    AddSub(root, "B");
    EXPECT_EQ(root.GetPreSubFolderByName("A"), nullptr);
    EXPECT_EQ(root.GetPreSubFolderByName("A1"), a);
    EXPECT_EQ(root.GetPreSubFolderByName("B"), a1);
    EXPECT_EQ(root.GetPreSubFolderByName("none"), nullptr);
}

class ItemTree : public testing::Test {
protected:
    ItemTree() {
        own->SetFileName("C:\\media\\own.avi");
        below->SetFileName("C:\\media\\below.avi");
        beside->SetFileName("C:\\media\\beside.avi");
    }

    CQFolder root{"root", 0, 0, 0};
    CQFolder* a = AddSub(root, "A");
    CQFolder* a1 = AddSub(*a, "A1");
    CQFolder* b = AddSub(root, "B");
    CQItem* own = AddNew(root, 1, "own");
    CQItem* inA = AddNew(*a, 2, "in A");
    CQItem* below = AddNew(*a1, 3, "below");
    CQItem* beside = AddNew(*b, 4, "beside");
};

TEST_F(ItemTree, ByGuid_SearchesOwnItemsThenTheTree) {
    EXPECT_EQ(root.GetItemByGUID(GuidOf(1)), own);
    EXPECT_EQ(root.GetItemByGUID(GuidOf(3)), below);
    EXPECT_EQ(root.GetItemByGUID(GuidOf(9)), nullptr);
    // From an inner folder the walk goes on until it is back there.
    EXPECT_EQ(a->GetItemByGUID(GuidOf(4)), beside);
    EXPECT_EQ(a->GetItemByGUID(GuidOf(1)), own);
    EXPECT_EQ(b->GetItemByGUID(GuidOf(3)), nullptr);
}

TEST_F(ItemTree, HasItem_RecursiveLeavesOutTheFoldersOwnItems) {
    EXPECT_TRUE(root.HasItem(GuidOf(1), 0));
    EXPECT_FALSE(root.HasItem(GuidOf(1), 1));
    EXPECT_FALSE(root.HasItem(GuidOf(3), 0));
    EXPECT_TRUE(root.HasItem(GuidOf(3), 1));
    EXPECT_FALSE(a->HasItem(GuidOf(2), 1));
    EXPECT_TRUE(a->HasItem(GuidOf(4), 1));
    EXPECT_TRUE(a->HasItem(GuidOf(1), 1));
    EXPECT_FALSE(b->HasItem(GuidOf(3), 1));
}

TEST_F(ItemTree, ByFilePath_HasTheSameRuleAndSetsFoundOnSuccessOnly) {
    CQItem* found = nullptr;
    EXPECT_FALSE(root.HasItemByFilePath("C:\\media\\own.avi", found, 1));
    EXPECT_EQ(found, nullptr);
    EXPECT_TRUE(root.HasItemByFilePath("C:\\media\\own.avi", found, 0));
    EXPECT_EQ(found, own);
    EXPECT_TRUE(root.HasItemByFilePath("C:\\media\\below.avi", found, 1));
    EXPECT_EQ(found, below);
    EXPECT_FALSE(root.HasItemByFilePath("c:\\media\\below.avi", found, 1));
    EXPECT_EQ(found, below);
}

TEST_F(ItemTree, ByFileName_TakesTheNameWithItsBackslash) {
    CQItem* found = nullptr;
    EXPECT_FALSE(root.HasItemByFileName("below.avi", found, 1));
    EXPECT_TRUE(root.HasItemByFileName("\\below.avi", found, 1));
    EXPECT_EQ(found, below);
    EXPECT_FALSE(root.HasItemByFileName("C:\\media\\below.avi", found, 1));
    EXPECT_FALSE(root.HasItemByFileName("\\own.avi", found, 1));
    EXPECT_TRUE(root.HasItemByFileName("\\own.avi", found, 0));
}

TEST_F(ItemTree, ByFileName_ComparesAPathWithoutSeparatorWhole) {
    CQItem* found = nullptr;
    below->SetFileName("clip.avi");
    EXPECT_TRUE(root.HasItemByFileName("clip.avi", found, 1));
    EXPECT_FALSE(root.HasItemByFileName("\\clip.avi", found, 1));
}

TEST_F(ItemTree, ByFileName_CutsANativePathAtItsLastSlash) {
    CQItem* found = nullptr;
    below->SetFileName("/home/me/clip.avi");
    EXPECT_TRUE(root.HasItemByFileName("\\clip.avi", found, 1));
    EXPECT_TRUE(root.HasItemByFileName("/clip.avi", found, 1));
    EXPECT_FALSE(root.HasItemByFileName("clip.avi", found, 1));
    below->SetFileName("C:\\odd/clip.avi");
    EXPECT_FALSE(root.HasItemByFileName("\\clip.avi", found, 1));
    EXPECT_TRUE(root.HasItemByFileName("\\odd/clip.avi", found, 1));
}

TEST_F(ItemTree, ByItemId_FindsTheFirstOfThisFolder) {
    CQItem* second = AddNew(root, 5, "second");
    own->SetDBID(7);
    second->SetDBID(7);
    below->SetDBID(8);
    EXPECT_EQ(root.GetItemByItemId(7), own);
    EXPECT_EQ(root.GetItemByItemId(8), nullptr);
}

TEST_F(ItemTree, ByItemNumber_FindsTheFirstOfThisFolder) {
    CQItem* second = AddNew(root, 5, "second");
    EXPECT_EQ(root.GetItemByItemNumber(0), own);
    EXPECT_EQ(root.GetItemByItemNumber(1), second);
    EXPECT_EQ(root.GetItemByItemNumber(2), nullptr);
}

TEST_F(ItemTree, AllSubItems_AreDepthFirstWithOwnItemsFirst) {
    EXPECT_EQ(ItemNames(root.GetAllSubItemArray()), (Texts{"own", "in A", "below", "beside"}));
    AddNew(*a, 5, "later");
    EXPECT_EQ(ItemNames(root.GetAllSubItemArray()), (Texts{"own", "in A", "later", "below", "beside"}));
}

TEST_F(ItemTree, AllSubItems_WithoutSubFoldersIsTheFoldersOwnArray) {
    EXPECT_EQ(b->GetAllSubItemArray(), b->GetItemArray());
    CQFolder empty;
    EXPECT_EQ(empty.GetAllSubItemArray(), nullptr);
    delete AddSub(*b, "gone");
    b->GetFolderList()->RemoveAll();
    EXPECT_EQ(b->GetAllSubItemArray(), b->GetItemArray());
}

TEST_F(ItemTree, BaseClips_AreFoundByName) {
    EXPECT_EQ(root.GetBaseClipItemByItemName("own", 0), own);
    EXPECT_EQ(root.GetBaseClipItemByItemName("own", 1), own);
    EXPECT_EQ(root.GetBaseClipItemByItemName("below", 0), nullptr);
    EXPECT_EQ(root.GetBaseClipItemByItemName("below", 1), below);
    EXPECT_EQ(root.GetBaseClipItemByItemName("Below", 1), nullptr);
}

TEST_F(ItemTree, Timestamps_AreLookedForInTheWholeSubtree) {
    EXPECT_FALSE(root.IsItemHasTimestmap());
    below->fnSetTimeStamp(ULONGLONG{1} << 40);
    EXPECT_TRUE(root.IsItemHasTimestmap());
    EXPECT_FALSE(b->IsItemHasTimestmap());
    EXPECT_FALSE(CQFolder().IsItemHasTimestmap());
}

TEST_F(ItemTree, Tags_AreLookedForInTheWholeSubtree) {
    EXPECT_FALSE(root.IsTagExist(GuidOf(50)));
    beside->AddLibTag(GuidOf(50));
    EXPECT_TRUE(root.IsTagExist(GuidOf(50)));
    EXPECT_FALSE(a->IsTagExist(GuidOf(50)));
}

TEST_F(ItemTree, IsItemInFolder_MatchesByFullPathOutsideTheTemplates) {
    CQItem wanted("other name");
    CQItem* found = nullptr;
    wanted.SetFileName("C:\\media\\below.avi");
    EXPECT_TRUE(root.IsItemInFolder(&root, &wanted, found, 1));
    EXPECT_EQ(found, below);
    wanted.SetFileName("D:\\elsewhere\\below.avi");
    EXPECT_FALSE(root.IsItemInFolder(&root, &wanted, found, 1));
    EXPECT_FALSE(root.IsItemInFolder(nullptr, &wanted, found, 1));
    EXPECT_FALSE(root.IsItemInFolder(&root, nullptr, found, 1));
}

TEST_F(ItemTree, IsItemInFolder_MatchesBaseClipsByName) {
    CQItem wanted("below");
    CQItem* found = nullptr;
    wanted.SetFileName("BaseClip");
    EXPECT_TRUE(root.IsItemInFolder(&root, &wanted, found, 1));
    EXPECT_EQ(found, below);
    EXPECT_FALSE(root.IsItemInFolder(&root, &wanted, found, 0));
}

TEST(CQFolderLookup, IsItemInFolder_MatchesByFileNameInTheTemplateGalleries) {
    for (const DWORD id : {3u, 12u}) {
        CQGallery gallery;
        gallery.SetFolderID(id);
        CQFolder* folder = AddSub(gallery, "A");
        CQItem* item = AddNew(*folder, 1);
        item->SetFileName("C:\\one\\clip.avi");
        CQItem wanted("x");
        CQItem* found = nullptr;
        wanted.SetFileName("D:\\two\\clip.avi");
        EXPECT_TRUE(gallery.IsItemInFolder(&gallery, &wanted, found, 1)) << id;
        EXPECT_EQ(found, item);
        wanted.SetFileName("/native/clip.avi");
        EXPECT_TRUE(gallery.IsItemInFolder(folder, &wanted, found, 0)) << id;
    }
}

TEST(CQFolderLookup, IsItemInFolder_MatchesBaseClipsByNameInTheTemplateGalleriesAsWell) {
    for (const DWORD id : {3u, 12u}) {
        CQGallery gallery;
        gallery.SetFolderID(id);
        CQFolder* folder = AddSub(gallery, "A");
        AddNew(*folder, 1, "another name")->SetFileName("BaseClip");
        CQItem* item = AddNew(*folder, 2, "title");
        item->SetFileName("C:\\one\\clip.avi");
        CQItem wanted("title");
        wanted.SetFileName("BaseClip");
        CQItem* found = nullptr;
        EXPECT_TRUE(gallery.IsItemInFolder(folder, &wanted, found, 0)) << id;
        EXPECT_EQ(found, item) << id;
        wanted.SetItemName("no such name");
        found = nullptr;
        EXPECT_FALSE(gallery.IsItemInFolder(&gallery, &wanted, found, 1)) << id;
        EXPECT_EQ(found, nullptr);
    }
}

}  // namespace
}  // namespace qfc::test
