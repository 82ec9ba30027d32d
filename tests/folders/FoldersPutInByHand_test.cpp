#include "items/Handles.h"
#include "tests/folders/FolderBuilders.h"
#include "tests/items/ItemLibrary.h"
#include "tests/support/MemoryFaults.h"

#include <gtest/gtest.h>
#include <memory>
#include <optional>

// Folders whose parent is not the one in whose list they stand: put into the list by hand, or assigned from a folder
// below another parent. Where a folder stands decides what goes with what, with memory and without.
namespace qfc::test {
namespace {

struct Way {
    const char* name;
    void (*end)(CQFolder&);
};

// All ways in which a folder loses what it has and what is below it.
const Way kWays[] = {
    {"Clear", [](CQFolder& folder) { folder.Clear(); }},
    {"RemoveSubFolder", [](CQFolder& folder) { EXPECT_EQ(folder.RemoveSubFolder(), 1); }},
    {"DeleteFolderFromDb", [](CQFolder& folder) { EXPECT_EQ(folder.DeleteFolderFromDb(), 1); }},
};

class FoldersPutInByHand : public testing::TestWithParam<bool> {
protected:
    FoldersPutInByHand() { Build(); }
    void Build() {
        made = destroyed = 0;
        gallery = std::make_unique<CQGallery>();
        a = AddSub(*gallery, "A");
        b = AddSub(*gallery, "B");
    }
    CQItem* NewCounted(unsigned number) {
        auto* item = new CountedItem(destroyed);
        item->SetUniqueID(GuidOf(number));
        ++made;
        return item;
    }
    // Has no parent.
    static CQFolder* PutInto(CQFolder& parent, bool atTail = true) {
        auto* folder = new CQFolder;
        atTail ? parent.GetFolderList()->AddTail(folder) : parent.GetFolderList()->AddHead(folder);
        return folder;
    }
    CQItem* InBoth(CQFolder& first, CQFolder& second) {
        CQItem* item = NewCounted(1);
        second.AddItem(item, 0);
        first.AddItem(item, 1);
        return item;
    }
    // While it lives there is no memory, when the parameter says so.
    struct Lack {
        explicit Lack(bool lacks) {
            if (lacks) faults.emplace(1, true);
        }
        std::optional<MemoryFaults> faults;
    };
    void ExpectItLivesIn(CQFolder& folder, const CQItem* item) {
        ASSERT_EQ(destroyed, 0);
        ASSERT_EQ(folder.GetItemsCount(), 1);
        EXPECT_EQ(folder.GetItemArray()->GetAt(0), item);
        EXPECT_EQ(item->GetParentFolder(), &folder);
    }

    int made = 0;
    int destroyed = 0;
    std::unique_ptr<CQGallery> gallery;
    CQFolder* a = nullptr;
    CQFolder* b = nullptr;
};

TEST_P(FoldersPutInByHand, LeafBeforeTheFolderThatHasAnItemToo_DoesNotHideIt) {
    PutInto(*gallery, false);
    const CQItem* item = InBoth(*a, *b);
    a->DetachParent(0);
    {
        const Lack lack(GetParam());
        delete a;
    }
    ExpectItLivesIn(*b, item);
}

TEST_P(FoldersPutInByHand, NullEntryBeforeTheFolderThatHasAnItemToo_DoesNotHideIt) {
    gallery->GetFolderList()->AddHead(nullptr);
    gallery->GetFolderList()->InsertBefore(gallery->GetFolderList()->GetTailPosition(), nullptr);
    const CQItem* item = InBoth(*a, *b);
    a->DetachParent(0);
    {
        const Lack lack(GetParam());
        delete a;
    }
    ExpectItLivesIn(*b, item);
}

TEST_P(FoldersPutInByHand, FolderBelowOneThatHasAnItemToo_KeepsIt) {
    AddSub(*b, "first");
    CQFolder* below = AddSub(*PutInto(*b), "below");
    const CQItem* item = InBoth(*a, *below);
    {
        const Lack lack(GetParam());
        a->Clear();
    }
    ExpectItLivesIn(*below, item);
}

TEST_P(FoldersPutInByHand, LeafBelowAFolderThatGoes_EndsItsItemsWithIt) {
    for (const Way& way : kWays) {
        Build();
        AddSub(*a, "first");
        CQFolder* leaf = PutInto(*a);
        for (unsigned number = 1; number <= 3; ++number) {
            CQItem* item = NewCounted(number);
            a->AddItem(item, 1);
            leaf->AddItem(item, 0);
        }
        {
            const Lack lack(GetParam());
            way.end(*a);
        }
        EXPECT_EQ(destroyed, 3) << way.name;
    }
}

TEST_P(FoldersPutInByHand, KnownItemThatOnlyALeafHas_LeavesTheIndexAndEndsOnce) {
    for (const Way& way : kWays) {
        for (const bool filled : {false, true}) {
            Build();
            AddSub(*a, "first");
            CQFolder* leaf = PutInto(*a);
            if (filled) AddSub(*leaf, "below");
            CQItem* item = NewCounted(1);
            leaf->AddItem(item, 1);
            gallery->AddItem2Map(item, ToHandle(leaf));
            {
                const Lack lack(GetParam());
                way.end(*a);
            }
            EXPECT_EQ(destroyed, 1) << way.name;
            EXPECT_TRUE(gallery->GetItemParentList(GuidOf(1)).empty()) << way.name;
            gallery.reset();
            EXPECT_EQ(destroyed, 1) << way.name;
        }
    }
}

TEST_P(FoldersPutInByHand, FolderDeletedByItsRow_LeavesWhatAnotherHasToo) {
    CQFolder* leaf = PutInto(*gallery);
    FolderInside::DbId(*leaf) = 7;
    const CQItem* item = InBoth(*leaf, *b);
    {
        const Lack lack(GetParam());
        EXPECT_EQ(gallery->DeleteFolderFromDb(7), 1);
    }
    EXPECT_EQ(gallery->GetFolderList()->GetCount(), 2);
    ExpectItLivesIn(*b, item);
}

// --- Assigned from a folder below another parent ---------------------------------------------------------------------

class FoldersOfAnotherParent : public FoldersPutInByHand {
protected:
    // Stands below A and has B as its parent.
    CQFolder* Assigned() {
        CQFolder* folder = AddSub(*a, "assigned");
        *folder = *AddSub(*b, "source");
        EXPECT_EQ(folder->GetParent(), b);
        return folder;
    }
};

TEST_P(FoldersOfAnotherParent, KeepTheirItemsWhenThatOneIsCleared) {
    CQFolder* assigned = Assigned();
    const CQItem* item = InBoth(*b, *assigned);
    {
        const Lack lack(GetParam());
        b->Clear();
    }
    ExpectItLivesIn(*assigned, item);
}

TEST_P(FoldersOfAnotherParent, GoWithTheFolderBelowWhichTheyStand) {
    for (const Way& way : kWays) {
        Build();
        for (int i = 0; i < 2; ++i) InBoth(*a, *Assigned());
        {
            const Lack lack(GetParam());
            way.end(*a);
        }
        EXPECT_EQ(destroyed, 2) << way.name;
        EXPECT_EQ(a->GetFirstSubFolder(), nullptr) << way.name;
    }
}

TEST_P(FoldersOfAnotherParent, GoAlsoWhenThatOneIsGone) {
    for (const Way& way : kWays) {
        Build();
        InBoth(*a, *Assigned());
        b->DetachParent(0);
        delete b;
        {
            const Lack lack(GetParam());
            way.end(*a);
        }
        EXPECT_EQ(destroyed, 1) << way.name;
    }
}

INSTANTIATE_TEST_SUITE_P(Memory, FoldersPutInByHand, testing::Bool());
INSTANTIATE_TEST_SUITE_P(Memory, FoldersOfAnotherParent, testing::Bool());

}  // namespace
}  // namespace qfc::test
