#include "folders/GlobalProc.h"
#include "tests/folders/FolderBuilders.h"

#include <gtest/gtest.h>

namespace qfc::test {
namespace {

using Texts = std::vector<std::string>;

TEST(CQFolderCopy, CopyItems_GivesNewGuidsUnlessAskedToKeepThem) {
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

TEST(CQFolderCopy, CopyItems_OfAFolderIntoItselfEnds) {
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

TEST(CQFolderCopy, CopyRecursive_CopiesTheTreeWithNewStorageNumbers) {
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

TEST(CQFolderCopy, CopyRecursive_IntoItsOwnSubtreeEnds) {
    CQFolder root;
    CQFolder* a = AddSub(root, "A");
    AddNew(root, 1, "own");
    EXPECT_EQ(a->CopyRecursive(&root, 0), 1);
    EXPECT_EQ(Names(a->GetFolderList()), Texts{"A"});
    EXPECT_EQ(ItemNames(a->GetItemArray()), Texts{"own"});
}

TEST(CQFolderCopy, CopyRecursive_OnRandomTreesGivesTheSameShape) {
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
