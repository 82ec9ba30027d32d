#include "items/Handles.h"
#include "tests/folders/FolderBuilders.h"
#include "tests/support/MemoryFaults.h"

#include <gtest/gtest.h>
#include <list>
#include <memory>

// Items and folders end, once each, and what lives on knows where, also when there is no memory at all.
namespace qfc::test {
namespace {

// All of it fails, the first allocation included.
class NoMemory : public MemoryFaults {
public:
    NoMemory() : MemoryFaults(1, true) {}
};

class EndsWithoutMemory : public testing::Test {
protected:
    EndsWithoutMemory() { Build(); }
    void Build() {
        gallery = std::make_unique<CQGallery>();
        a = AddSub(*gallery, "A");
        b = AddSub(*gallery, "B");
        c = AddSub(*b, "C");
    }
    CQItem* NewCounted(unsigned number) {
        auto* item = new CountedItem(destroyed);
        item->SetUniqueID(GuidOf(number));
        ++made;
        return item;
    }
    CQItem* AddKnown(CQFolder& folder, CQItem* item) {
        folder.AddItem(item, 1);
        gallery->AddItem2Map(item, ToHandle(&folder));
        return item;
    }
    std::list<ULONGLONG> Parents(unsigned number) { return gallery->GetItemParentList(GuidOf(number)); }
    // Items 1 to 8 in A, each with another state, and what other folders have of them.
    void FillEveryWay() {
        AddKnown(*a, NewCounted(1));
        AddKnown(*c, AddKnown(*a, NewCounted(2)));
        c->AddItem(AddKnown(*a, NewCounted(3)), 0);
        a->AddItem(NewCounted(4), 1);
        c->AddItem(a->GetItemArray()->GetAt(3), 0);
        a->AddItem(NewCounted(5), 1);
        AddKnown(*c, NewCounted(6));
        a->AddItem(NewCounted(6), 1);
        b->AddItem(a->GetItemArray()->GetAt(5), 1);
        AddKnown(*a, NewCounted(7));
        a->AddItem(NewCounted(7), 1);
        gallery->AddItem(NewCounted(8), 1);
        a->AddItem(gallery->GetItemArray()->GetAt(0), 0);
    }

    int made = 0;
    int destroyed = 0;
    std::unique_ptr<CQGallery> gallery;
    CQFolder* a = nullptr;
    CQFolder* b = nullptr;
    CQFolder* c = nullptr;
};

TEST_F(EndsWithoutMemory, GalleryEndsEachItemOnce) {
    FillEveryWay();
    const NoMemory none;
    gallery.reset();
    EXPECT_EQ(destroyed, made);
}

TEST_F(EndsWithoutMemory, ClearedFolder_EndsWhatItAloneHasAndPassesOnTheRest) {
    FillEveryWay();
    const CQItem* shared[] = {a->GetItemArray()->GetAt(1), a->GetItemArray()->GetAt(2), a->GetItemArray()->GetAt(3)};
    {
        const NoMemory none;
        a->Clear();
        EXPECT_TRUE(none.HasFailed());
    }
    // Items 1 and 5, and both objects of 7.
    EXPECT_EQ(destroyed, 4);
    for (const CQItem* item : shared) EXPECT_EQ(item->GetParentFolder(), c);
    EXPECT_EQ(Parents(2), std::list<ULONGLONG>{ToHandle(c)});
    EXPECT_EQ(Parents(3), std::list<ULONGLONG>{ToHandle(c)});
    gallery.reset();
    EXPECT_EQ(destroyed, made);
}

TEST_F(EndsWithoutMemory, ClearedFolder_DoesTheSameWhicheverAllocationFails) {
    bool failed = true;
    for (int n = 1; failed; ++n) {
        Build();
        made = destroyed = 0;
        FillEveryWay();
        {
            const MemoryFaults faults(n);
            a->Clear();
            failed = faults.HasFailed();
        }
        EXPECT_EQ(destroyed, 4) << n;
        EXPECT_EQ(Parents(3), std::list<ULONGLONG>{ToHandle(c)}) << n;
        gallery.reset();
        EXPECT_EQ(destroyed, made) << n;
        EXPECT_TRUE(failed || n > 5);
    }
}

TEST_F(EndsWithoutMemory, RemovalOfAllItems_DoesTheSame) {
    FillEveryWay();
    {
        const NoMemory none;
        EXPECT_EQ(a->RemoveAllItems(1), 1);
    }
    EXPECT_EQ(destroyed, 4);
    EXPECT_EQ(Parents(3), std::list<ULONGLONG>{ToHandle(c)});
    gallery.reset();
    EXPECT_EQ(destroyed, made);
}

TEST_F(EndsWithoutMemory, DeletingRemoval_LeavesNothingHalfDone) {
    FillEveryWay();
    for (unsigned number = 1; number <= 3; ++number) {
        const NoMemory none;
        EXPECT_EQ(a->RemoveItem(GuidOf(number), 1), 1);
    }
    EXPECT_EQ(destroyed, 1);
    EXPECT_TRUE(Parents(1).empty());
    EXPECT_EQ(Parents(2), std::list<ULONGLONG>{ToHandle(c)});
    EXPECT_EQ(Parents(3), std::list<ULONGLONG>{ToHandle(c)});
    EXPECT_EQ(a->HasItem(GuidOf(3), 0), 0);
    EXPECT_EQ(c->HasItem(GuidOf(3), 0), 1);
}

TEST_F(EndsWithoutMemory, EmptyingInTheDatabase_EndsFoldersAndItems) {
    FillEveryWay();
    const NoMemory none;
    EXPECT_EQ(gallery->DeleteFolderFromDb(), 1);
    EXPECT_EQ(destroyed, made);
    EXPECT_EQ(gallery->GetFirstSubFolder(), nullptr);
}

// A parent of the index that is gone is told from one that is there.
TEST_F(EndsWithoutMemory, ItemWhoseNextParentIsGone_GetsTheOneBehindIt) {
    CQItem* item = AddKnown(*c, AddKnown(*b, AddKnown(*a, NewCounted(1))));
    item->SetParentFolder(a);
    gallery->RemoveItemFromMap(item, ToHandle(b));
    gallery->RemoveItemFromMap(item, ToHandle(c));
    auto gone = std::make_unique<CQFolder>();
    gallery->AddItem2Map(item, ToHandle(gone.get()));
    gallery->AddItem2Map(item, ToHandle(c));
    gone.reset();
    {
        const NoMemory none;
        EXPECT_EQ(a->RemoveItem2(item->GetNumber(), 1), 1);
    }
    EXPECT_EQ(item->GetParentFolder(), c);
}

TEST_F(EndsWithoutMemory, DeepTree_EndsWithoutIt) {
    constexpr int kDepth = 2000;
    CQFolder* deepest = c;
    for (int depth = 0; depth < kDepth; ++depth) {
        auto* child = new CQFolder;
        ASSERT_EQ(deepest->AddFolder(child, 0, 1), 1);
        deepest->AddItem(NewCounted(static_cast<unsigned>(depth)), 1);
        deepest = child;
    }
    const NoMemory none;
    gallery.reset();
    EXPECT_EQ(destroyed, kDepth);
}

}  // namespace
}  // namespace qfc::test
