#include "folders/FolderWalk.h"
#include "folders/GlobalProc.h"
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

// The walk of the texts, step by step: from the first sub-folder with NextFolder until the stop rule holds.
std::vector<CQFolder*> LiteralWalk(CQFolder& start, bool backAtStart) {
    std::vector<CQFolder*> met;
    const CQFolder* stop = backAtStart ? &start : start.NextFolder(1);
    CQFolder* folder = start.GetFirstSubFolder();
    if (folder == nullptr) return met;
    do {
        met.push_back(folder);
        folder = folder->NextFolder(0);
    } while (folder != nullptr && folder != stop);
    return met;
}

template <class Range>
std::vector<CQFolder*> Walked(Range&& range) {
    std::vector<CQFolder*> met;
    for (CQFolder* folder : range) met.push_back(folder);
    return met;
}

TEST(FolderWalk, OnRandomTrees_MeetsWhatTheLiteralWalkMeets) {
    std::mt19937 random(20240521);
    for (int round = 0; round < 60; ++round) {
        CQFolder root;
        for (CQFolder* start : GrowRandomTree(root, 1 + round % 25, random)) {
            EXPECT_EQ(Walked(SubtreeOf(*start)), LiteralWalk(*start, false));
            EXPECT_EQ(Walked(UntilBackAt(*start)), LiteralWalk(*start, true));
        }
    }
}

TEST(FolderWalk, Subtree_IsThePreOrderOfPlainRecursion) {
    std::mt19937 random(7);
    CQFolder root;
    for (CQFolder* start : GrowRandomTree(root, 60, random)) {
        std::vector<CQFolder*> expected;
        ListBelow(*start, expected);
        EXPECT_EQ(Walked(SubtreeOf(*start)), expected);
    }
}

TEST(FolderWalk, UntilBackAt_FromAnInnerFolderMeetsTheWholeTreeButItself) {
    CQFolder root;
    CQFolder* before = AddSub(root, "before");
    CQFolder* start = AddSub(root, "start");
    CQFolder* child = AddSub(*start, "child");
    CQFolder* after = AddSub(root, "after");
    EXPECT_EQ(Walked(UntilBackAt(*start)), (std::vector<CQFolder*>{child, after, &root, before}));
    EXPECT_TRUE(Walked(UntilBackAt(*after)).empty());
}

TEST(FolderWalk, UntilBackAt_FromADetachedFolderEnds) {
    CQFolder root;
    CQFolder* other = AddSub(root, "other");
    const std::unique_ptr<CQFolder> start(AddSub(root, "start"));
    CQFolder* child = AddSub(*start, "child");
    start->DetachParent(0);
    EXPECT_EQ(Walked(UntilBackAt(*start)), (std::vector<CQFolder*>{child, &root, other}));
    EXPECT_EQ(Walked(SubtreeOf(*start)), std::vector<CQFolder*>{child});
}

TEST(FolderWalk, NullEntries_ArePassedOver) {
    CQFolder root;
    CQFolder* a = AddSub(root, "A");
    root.GetFolderList()->AddHead(nullptr);
    root.GetFolderList()->AddTail(nullptr);
    EXPECT_EQ(Walked(SubtreeOf(root)), std::vector<CQFolder*>{a});
}

TEST(CQFolderTree, CopyItems_GivesNewGuidsUnlessAskedToKeepThem) {
    CQFolder source;
    CQFolder fresh;
    CQFolder kept;
    AddNew(source, 1, "clip")->SetDBID(9);
    EXPECT_EQ(fresh.CopyItems(&source, 0), 1);
    EXPECT_EQ(kept.CopyItems(&source, 1), 1);
    EXPECT_FALSE(fresh.HasItem(GuidOf(1), 0));
    EXPECT_TRUE(kept.HasItem(GuidOf(1), 0));
    CQItem* copy = kept.GetItemArray()->GetAt(0);
    EXPECT_TRUE(copy->GetItemName() == "clip");
    EXPECT_EQ(copy->GetDBID(), 0);
    EXPECT_EQ(copy->GetParentFolder(), &kept);
    EXPECT_EQ(kept.GetAdopt(), 1u);
}

TEST(CQFolderTree, CopyItems_OfAFolderIntoItselfEnds) {
    CQFolder folder;
    AddNew(folder, 1, "clip");
    folder.CopyItems(&folder, 0);
    EXPECT_EQ(ItemNames(folder.GetItemArray()), (Texts{"clip", "clip"}));
}

struct ProcCall {
    DWORD message;
    ULONGLONG param;
    std::int64_t item;
    void* extra;
};
std::vector<ProcCall> g_procCalls;

int NoteProc(DWORD message, ULONGLONG param, std::int64_t item, void* extra) {
    g_procCalls.push_back({message, param, item, extra});
    return 0;
}

class WithProc : public testing::Test {
protected:
    WithProc() {
        g_procCalls.clear();
        SetGlobalProc(NoteProc);
    }
    ~WithProc() override { SetGlobalProc(nullptr); }
};

TEST_F(WithProc, CopyItems_AnnouncesTheCopyWhenTheSourceHasTrustyBit16) {
    CQFolder source("", 16, 0, 0);
    CQFolder target;
    AddNew(source, 1, "clip");
    target.CopyItems(&source, 0);
    ASSERT_EQ(g_procCalls.size(), 1u);
    EXPECT_EQ(g_procCalls[0].message, 0x10000u);
    EXPECT_EQ(g_procCalls[0].param, reinterpret_cast<std::uintptr_t>(&target));
    EXPECT_EQ(g_procCalls[0].item, reinterpret_cast<std::intptr_t>(target.GetItemArray()->GetAt(0)));
    EXPECT_EQ(g_procCalls[0].extra, nullptr);
}

TEST_F(WithProc, CopyItems_IsSilentWhenOnlyTheTargetHasTrustyBit16) {
    CQFolder source;
    CQFolder target("", 16, 0, 0);
    AddNew(source, 1);
    target.CopyItems(&source, 0);
    EXPECT_TRUE(g_procCalls.empty());
}

TEST(CQFolderTree, CopyRecursive_CopiesTheTreeWithNewStorageNumbers) {
    CQFolder source;
    AddNew(*AddSub(*AddSub(source, "A"), "A1"), 1, "deep");
    AddNew(*AddSub(source, "B"), 2, "b");
    AddNew(source, 3, "own");
    CQFolder target;
    EXPECT_EQ(target.CopyRecursive(&source, 1), 1);
    EXPECT_EQ(Names(target.GetFolderList()), (Texts{"A", "B"}));
    EXPECT_EQ(ItemNames(target.GetItemArray()), Texts{"own"});
    EXPECT_EQ(ItemNames(target.GetAllSubItemArray()), (Texts{"own", "deep", "b"}));
    EXPECT_EQ(target.GetFolderByPath("A\\A1")->GetParent(), target.GetFolderByName("A"));
    EXPECT_TRUE(target.SearchFolderNumRecursive(3));
    EXPECT_FALSE(target.SearchFolderNumRecursive(4));
}

TEST(CQFolderTree, CopyRecursive_IntoItsOwnSubtreeEnds) {
    CQFolder root;
    CQFolder* a = AddSub(root, "A");
    AddNew(root, 1, "own");
    EXPECT_EQ(a->CopyRecursive(&root, 0), 1);
    EXPECT_EQ(Names(a->GetFolderList()), Texts{"A"});
    EXPECT_EQ(ItemNames(a->GetItemArray()), Texts{"own"});
}

TEST(CQFolderTree, CopyRecursive_OnRandomTreesGivesTheSameShape) {
    std::mt19937 random(99);
    CQFolder source;
    GrowRandomTree(source, 80, random);
    CQFolder target;
    target.CopyRecursive(&source, 0);
    std::vector<CQFolder*> expected;
    std::vector<CQFolder*> copied;
    ListBelow(source, expected);
    ListBelow(target, copied);
    ASSERT_EQ(copied.size(), expected.size());
    for (std::size_t i = 0; i < copied.size(); ++i) {
        EXPECT_TRUE(copied[i]->GetFolderName() == expected[i]->GetFolderName());
    }
}

}  // namespace
}  // namespace qfc::test
