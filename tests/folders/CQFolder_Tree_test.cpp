#include "folders/TreeChanges.h"
#include "tests/folders/FolderBuilders.h"

#include <gtest/gtest.h>
#include <memory>

namespace qfc::test {
namespace {

using Texts = std::vector<std::string>;

TEST(CQFolderTree, AddFolder_PutsAtHeadOrTail) {
    CQFolder root;
    root.AddFolder(new CQFolder("A", 0, 0, 0), 0, 1);
    root.AddFolder(new CQFolder("B", 0, 0, 0), 0, 1);
    root.AddFolder(new CQFolder("C", 0, 0, 0), 0, 0);
    EXPECT_EQ(Names(root.GetFolderList()), (Texts{"C", "A", "B"}));
}

TEST(CQFolderTree, AddFolder_GivesParentAndDBTools) {
    CQFolder root;
    auto* tools = reinterpret_cast<DBTools*>(std::uintptr_t{64});
    root.SetDBTools(tools);
    CQFolder* child = AddSub(root, "A");
    EXPECT_EQ(child->GetParent(), &root);
    EXPECT_EQ(child->GetParentFolder(), &root);
    EXPECT_EQ(child->GetDBTools(), tools);
    EXPECT_FALSE(child->IsRoot());
}

TEST(CQFolderTree, AddFolder_SetsTheTreeModifiedFlag) {
    SetTreeModified(false);
    CQFolder root;
    AddSub(root, "A");
    EXPECT_TRUE(IsTreeModified());
}

TEST(CQFolderTree, AddFolder_RefusesNullItselfAndAncestors) {
    CQFolder root;
    CQFolder* child = AddSub(*AddSub(root, "A"), "B");
    EXPECT_EQ(root.AddFolder(nullptr, 0, 1), 0);
    EXPECT_EQ(root.AddFolder(&root, 0, 1), 0);
    EXPECT_EQ(child->AddFolder(&root, 0, 1), 0);
    EXPECT_EQ(child->GetFolderList(), nullptr);
}

TEST(CQFolderTree, AddFolder_OpensTheChildsStorageInTheGalleryFile) {
    RecordedFile file;
    OpenFolder root("root", 0, 0, 0);
    root.m_strFilePath = "C:\\file";
    root.AddFolder(new CQFolder("A", 0, 0, 0), 1, 1);
    root.AddFolder(new CQFolder("B", 0, 0, 0), 0, 1);
    EXPECT_EQ(file.calls, Texts{"open A"});
    root.m_strFilePath.Empty();
}

TEST(CQFolderTree, Insert_PutsBeforeOrAfterTheReferenceAndSetsOnlyTheParent) {
    CQFolder root;
    root.SetDBTools(reinterpret_cast<DBTools*>(std::uintptr_t{64}));
    CQFolder* a = AddSub(root, "A");
    auto* before = new CQFolder("before", 0, 0, 0);
    auto* after = new CQFolder("after", 0, 0, 0);
    EXPECT_EQ(root.Insert(a, before, 0), 1);
    EXPECT_EQ(root.Insert(a, after, 1), 1);
    EXPECT_EQ(Names(root.GetFolderList()), (Texts{"before", "A", "after"}));
    EXPECT_EQ(before->GetParent(), &root);
    EXPECT_EQ(before->GetDBTools(), nullptr);
    EXPECT_FALSE(root.SearchFolderNumRecursive(1));
}

TEST(CQFolderTree, Insert_WithoutTheReferenceInTheListGives0) {
    CQFolder root;
    CQFolder stranger;
    CQFolder child;
    EXPECT_EQ(root.Insert(&stranger, &child, 1), 0);
    AddSub(root, "A");
    EXPECT_EQ(root.Insert(&stranger, &child, 1), 0);
    EXPECT_EQ(root.Insert(nullptr, &child, 1), 0);
    EXPECT_EQ(child.GetParent(), nullptr);
}

TEST(CQFolderTree, DetachParent_UnlinksAndLeavesTheParentPointer) {
    CQFolder root;
    const std::unique_ptr<CQFolder> child(AddSub(root, "A"));
    EXPECT_EQ(child->DetachParent(0), 1);
    EXPECT_TRUE(root.GetFolderList()->IsEmpty());
    EXPECT_EQ(child->GetParent(), &root);
    EXPECT_EQ(child->DetachParent(0), 0);
    EXPECT_EQ(root.DetachParent(0), 0);
}

TEST(CQFolderTree, DetachParent_WithDataDeletesTheStorageOfAFolderWithoutARow) {
    RecordedFile file;
    OpenFolder root("root", 0, 0, 0);
    root.m_strFilePath = "C:\\file";
    const std::unique_ptr<CQFolder> child(AddSub(root, "A"));
    child->DetachParent(1);
    EXPECT_EQ(file.calls, Texts{"delete A"});
    root.m_strFilePath.Empty();
}

// Tells which folder's slot was called.
class NotingFolder : public CQFolder {
public:
    NotingFolder(const char* name, Texts& calls) : CQFolder(name, 0, 0, 0), m_calls(calls) {}
    int RemoveSubFolder() override {
        m_calls.emplace_back(GetFolderName().View());
        return CQFolder::RemoveSubFolder();
    }

private:
    Texts& m_calls;
};

TEST(CQFolderTree, RemoveSubFolder_GoesThroughTheVirtualSlotOfEveryFolder) {
    Texts calls;
    int destroyed = 0;
    CQFolder root;
    auto* a = new NotingFolder("A", calls);
    auto* below = new NotingFolder("below", calls);
    auto* b = new NotingFolder("B", calls);
    root.AddFolder(a, 0, 1);
    a->AddFolder(below, 0, 1);
    root.AddFolder(b, 0, 1);
    below->AddItem(new CountedItem(destroyed), 1);
    root.AddItem(new CountedItem(destroyed), 1);
    EXPECT_EQ(root.RemoveSubFolder(), 1);
    EXPECT_EQ(calls, (Texts{"A", "below", "B"}));
    EXPECT_EQ(destroyed, 2);
    EXPECT_TRUE(root.GetFolderList()->IsEmpty());
    EXPECT_EQ(root.GetItemsCount(), 0);
}

TEST(CQFolderTree, RemoveSubFolder_OrderOfRequestsToTheGalleryFile) {
    RecordedFile file;
    OpenFolder root("root", 0, 0, 0);
    root.m_strFilePath = "C:\\file";
    AddNew(*AddSub(root, "A"), 1, "clip");
    AddSub(root, "B");
    root.RemoveSubFolder();
    EXPECT_EQ(file.calls, (Texts{"streams A clip", "close A", "delete A", "delete B"}));
    root.m_strFilePath.Empty();
}

TEST(CQFolderTree, Root_IsTheTopmostFolderOnlyWhenThatIsAGallery) {
    CQGallery gallery;
    CQFolder* deep = AddSub(*AddSub(gallery, "A"), "B");
    EXPECT_EQ(deep->GetRoot(), &gallery);
    EXPECT_EQ(gallery.GetRoot(), &gallery);
    CQFolder plain;
    EXPECT_EQ(AddSub(plain, "A")->GetRoot(), nullptr);
    EXPECT_EQ(plain.GetRoot(), nullptr);
}

TEST(CQFolderTree, FileRoot_IsTheNearestWithAPathElseTheTopmost) {
    CQFolder root;
    CQFolder* a = AddSub(root, "A");
    CQFolder* b = AddSub(*a, "B");
    EXPECT_EQ(b->GetFileRoot(), &root);
    FolderInside::FilePath(*a) = "C:\\file";
    EXPECT_EQ(b->GetFileRoot(), a);
    EXPECT_EQ(a->GetFileRoot(), a);
    FolderInside::FilePath(*a).Empty();
}

TEST(CQFolderTree, Siblings_FollowTheParentsList) {
    CQFolder root;
    EXPECT_EQ(root.GetFirstSubFolder(), nullptr);
    CQFolder* a = AddSub(root, "A");
    CQFolder* b = AddSub(root, "B");
    EXPECT_EQ(root.GetFirstSubFolder(), a);
    EXPECT_EQ(a->GetNextSib(), b);
    EXPECT_EQ(b->GetNextSib(), nullptr);
    EXPECT_EQ(root.GetNextSib(), nullptr);
}

TEST(CQFolderTree, NextFolder_WalksInPreOrderAndReturnsToTheRoot) {
    CQFolder root;
    CQFolder* a = AddSub(root, "A");
    CQFolder* a1 = AddSub(*a, "A1");
    CQFolder* b = AddSub(root, "B");
    EXPECT_EQ(root.NextFolder(0), a);
    EXPECT_EQ(a->NextFolder(0), a1);
    EXPECT_EQ(a->NextFolder(1), b);
    EXPECT_EQ(a1->NextFolder(0), b);
    EXPECT_EQ(b->NextFolder(0), &root);
    EXPECT_EQ(root.NextFolder(1), &root);
    EXPECT_EQ(CQFolder().NextFolder(0)->GetParent(), nullptr);
}

TEST(CQFolderTree, IsSubfolderOf_IsTrueForItselfAndItsAncestors) {
    CQFolder root;
    CQFolder* a = AddSub(root, "A");
    CQFolder* b = AddSub(root, "B");
    EXPECT_TRUE(a->IsSubfolderOf(&root));
    EXPECT_TRUE(a->IsSubfolderOf(a));
    EXPECT_FALSE(a->IsSubfolderOf(b));
    EXPECT_FALSE(root.IsSubfolderOf(a));
    EXPECT_FALSE(a->IsSubfolderOf(nullptr));
}

TEST(CQFolderTree, IsSubFolderValid_KnowsTheFoldersOfTheTreeByAddressOnly) {
    CQGallery gallery;
    CQFolder* a = AddSub(gallery, "A");
    CQFolder* deep = AddSub(*a, "B");
    EXPECT_TRUE(gallery.IsSubFolderValid(deep));
    EXPECT_TRUE(gallery.IsSubFolderValid(&gallery));
    EXPECT_TRUE(deep->IsSubFolderValid(a));
    EXPECT_FALSE(gallery.IsSubFolderValid(nullptr));
    // Nothing lives there: reading it would crash.
    EXPECT_FALSE(gallery.IsSubFolderValid(reinterpret_cast<CQFolder*>(std::uintptr_t{8})));
    a->DetachParent(0);
    EXPECT_FALSE(gallery.IsSubFolderValid(deep));
    delete a;
    EXPECT_FALSE(gallery.IsSubFolderValid(a));
}

TEST(CQFolderTree, SetAllParent_ReachesEveryItemBelow) {
    CQFolder root;
    CQFolder* a = AddSub(root, "A");
    CQItem* own = AddNew(root, 1);
    CQItem* below = AddNew(*a, 2);
    own->SetParentFolder(nullptr);
    below->SetParentFolder(nullptr);
    root.SetAllParent();
    EXPECT_EQ(own->GetParentFolder(), &root);
    EXPECT_EQ(below->GetParentFolder(), a);
}

}  // namespace
}  // namespace qfc::test
