#include "folders/HeldGuids.h"
#include "tests/folders/FolderBuilders.h"
#include "tests/items/ItemLibrary.h"
#include "tests/support/MemoryFaults.h"

#include <gtest/gtest.h>
#include <memory>
#include <new>
#include <string>
#include <vector>

// Trees while memory runs out: what could not be done leaves everything as it was.
namespace qfc::test {
namespace {

using Texts = std::vector<std::string>;

class TreeWithoutMemory : public testing::Test {
protected:
    // Lets the n-th allocation of the call fail, for every n until none fails any more. Returns how many failed.
    template <class Call, class Check>
    static int FailEach(Call&& call, Check&& checkFailed) {
        for (int n = 1;; ++n) {
            int result = -1;
            bool failed = false;
            {
                const MemoryFaults faults(n);
                result = call();
                failed = faults.HasFailed();
            }
            if (!failed) {
                EXPECT_EQ(result, 1);
                return n - 1;
            }
            EXPECT_EQ(result, 0) << "allocation " << n;
            checkFailed();
        }
    }
};

TEST_F(TreeWithoutMemory, Insert_Gives0AndChangesNothing) {
    for (const int after : {0, 1}) {
        CQFolder root;
        CQFolder* reference = AddSub(root, "A");
        AddSub(root, "B");
        auto child = std::make_unique<CQFolder>("child", 0, 0, 0);
        const Texts before = Names(root.GetFolderList());
        const int failed = FailEach([&] { return root.Insert(reference, child.get(), after); },
                                    [&] {
                                        EXPECT_EQ(Names(root.GetFolderList()), before);
                                        EXPECT_EQ(child->GetParent(), nullptr);
                                    });
        EXPECT_GE(failed, 1);
        EXPECT_EQ(child.release()->GetParent(), &root);
        EXPECT_EQ(root.GetFolderList()->GetCount(), 3);
    }
}

TEST_F(TreeWithoutMemory, AddFolder_Gives0AndLeavesTheChildAsItWas) {
    CQFolder former;
    CQFolder root;
    root.SetDBTools(reinterpret_cast<DBTools*>(std::uintptr_t{64}));
    auto child = std::make_unique<CQFolder>("child", 0, 0, 0);
    child->SetStorageNumber(77);
    const int failed = FailEach([&] { return root.AddFolder(child.get(), 1, 1); },
                                [&] {
                                    EXPECT_EQ(root.GetFirstSubFolder(), nullptr);
                                    EXPECT_EQ(child->GetParent(), nullptr);
                                    EXPECT_EQ(child->GetDBTools(), nullptr);
                                    EXPECT_EQ(FolderInside::StorageNumber(*child), 77u);
                                });
    EXPECT_GE(failed, 2);
    EXPECT_EQ(child.release()->GetParent(), &root);
}

TEST_F(TreeWithoutMemory, AddFolder_LeavesAClearedRootAsItWas) {
    RecordedFile file;
    {
        CQFolder root("r", 0, 0, 0);
        FolderInside::FilePath(root) = "lib.gal";
        AddSub(root, "A");
        root.Clear();
        file.calls.clear();
        const CQFolder former;
        auto child = std::make_unique<CQFolder>("child", 0, 0, 0);
        bool failed = true;
        for (int n = 1; failed; ++n) {
            {
                const MemoryFaults faults(n);
                const int added = root.AddFolder(child.get(), 1, 1);
                failed = faults.HasFailed();
                ASSERT_EQ(added, failed ? 0 : 1);
            }
            // Its emptied tree is not what the file is to hold.
            if (failed) root.Clear();
            EXPECT_EQ(file.calls, failed ? Texts{} : Texts{"open child"}) << n;
        }
        static_cast<void>(child.release());
        file.calls.clear();
    }
    EXPECT_EQ(file.calls, (Texts{"flush child", "save r"}));
}

// Its buffer for the sort is a help: only the list of the folders must be had.
TEST_F(TreeWithoutMemory, SortSubFolder_SortsOrGives0AndLeavesTheOrder) {
    bool failed = true;
    for (int n = 1; failed; ++n) {
        CQFolder root;
        for (const int index : {3, 1, 2}) AddSub(root, std::to_string(index).c_str())->SetIndex(index);
        root.GetFolderList()->InsertAfter(root.GetFolderList()->GetHeadPosition(), nullptr);
        int sorted = -1;
        {
            const MemoryFaults faults(n);
            sorted = root.SortSubFolder();
            failed = faults.HasFailed();
        }
        if (n == 1 || !failed) {
            EXPECT_EQ(sorted, n == 1 ? 0 : 1);
        }
        EXPECT_EQ(Names(root.GetFolderList()), sorted ? (Texts{"1", "2", "3"}) : (Texts{"3", "-", "1", "2"})) << n;
    }
}

// What is loaded in another order would be stored in it.
TEST_F(TreeWithoutMemory, Load_GivesNoWholeTreeUnsorted) {
    CurrentLibrary library;
    {
        StoredTree tree(library.Tools());
        tree.pA->SetIndex(1);
        tree.pB->SetIndex(0);
        for (CQFolder* folder : {tree.pA, tree.pB}) ASSERT_EQ(folder->InsertOrUpdateFolder(), 1);
    }
    int failures = 0;
    for (bool failed = true; failed; ++failures) {
        CQGallery gallery;
        gallery.SetFolderID(1);
        gallery.SetDBTools(library.Tools());
        int loaded = 0;
        {
            const MemoryFaults faults(failures + 1);
            try {
                loaded = gallery.LoadTreeFromDb();
            } catch (const std::bad_alloc&) {
            }
            failed = faults.HasFailed();
        }
        const Texts names = Names(gallery.GetFolderList());
        if (loaded != 0 && names.size() == 2) {
            EXPECT_EQ(names, (Texts{"B", "A"})) << failures;
        }
        EXPECT_TRUE(failed || names.size() == 2);
    }
    EXPECT_GE(failures, 20);
}

TEST_F(TreeWithoutMemory, IsSubFolderValid_AnswersAllTheSame) {
    CQFolder root;
    CQFolder* start = AddSub(root, "start");
    root.GetFolderList()->AddHead(nullptr);
    root.GetFolderList()->AddHead(new CQFolder);  // Has no parent.
    CQFolder* below = AddSub(*start, "below");
    CQFolder* behind = AddSub(root, "behind");
    const CQFolder stranger;
    for (CQFolder* folder : {&root, start, below, behind}) {
        const MemoryFaults none(1, true);
        EXPECT_EQ(root.IsSubFolderValid(folder), 1);
        EXPECT_EQ(start->IsSubFolderValid(folder), 1);
        EXPECT_EQ(folder->IsSubFolderValid(&stranger), 0);
        EXPECT_TRUE(none.HasFailed());
    }
}

// The set of GUIDs is a help: without memory for it the items are compared.
TEST_F(TreeWithoutMemory, LookingForAGuid_AnswersAllTheSame) {
    CQFolder folder;
    for (unsigned i = 0; i < 100; ++i) AddNew(folder, i);
    int failures = 0;
    for (int n = 0; n < 200; ++n) {
        const MemoryFaults faults(1 + n % 7, n % 2 == 0);
        EXPECT_TRUE(HeldGuids::HasBeforeAdd(folder, GuidOf(7)));
        EXPECT_FALSE(HeldGuids::HasBeforeAdd(folder, GuidOf(100)));
        failures += faults.HasFailed() ? 1 : 0;
    }
    EXPECT_GE(failures, 1);
}

}  // namespace
}  // namespace qfc::test
