#include "tests/folders/FolderBuilders.h"
#include "tests/items/ItemLibrary.h"

#include <gtest/gtest.h>
#include <memory>
#include <new>
#include <optional>

// Who ends which object, and how often. The address and leak sanitizers see what the counters cannot.
namespace qfc::test {
namespace {

class Ownership : public testing::Test {
protected:
    Ownership() {
        tree.emplace(library.Tools());
        a = tree->pA;
        b = tree->pB;
        c = AddSub(tree->Gallery(), "C");
        EXPECT_EQ(c->InsertOrUpdateFolder(), 1);
    }
    CQGallery& Gallery() { return tree->Gallery(); }
    CQItem* NewCounted(unsigned number) {
        auto* item = new CountedItem(destroyed);
        item->SetUniqueID(GuidOf(number));
        item->SetItemName("counted");
        return item;
    }
    // The canonical object in A; a second one of the same GUID in B and C.
    CQItem* SecondObjectInTwoFolders() {
        EXPECT_EQ(a->AddItemDb(NewCounted(1), 1), 1);
        CQItem* second = NewCounted(1);
        EXPECT_EQ(b->AddItemDb(second, 1), 1);
        EXPECT_EQ(c->AddItemDb(second, 1), 1);
        return second;
    }
    void ExpectSecondLivesInC(CQItem* second) {
        ASSERT_EQ(destroyed, 0);
        EXPECT_EQ(c->GetItemArray()->GetAt(0), second);
        EXPECT_EQ(second->GetItemName(), "counted");
        EXPECT_EQ(second->GetParentFolder(), c);
    }

    int destroyed = 0;
    CurrentLibrary library;
    std::optional<StoredTree> tree;
    CQFolder* a = nullptr;
    CQFolder* b = nullptr;
    CQFolder* c = nullptr;
};

// --- A second object of a known GUID -------------------------------------------------------------------------------

TEST_F(Ownership, SecondObjectInTwoFolders_OutlivesItsRemovalFromOne) {
    CQItem* second = SecondObjectInTwoFolders();
    EXPECT_EQ(b->RemoveItemDB(GuidOf(1), 0), 1);
    ExpectSecondLivesInC(second);
    EXPECT_EQ(c->RemoveItemDB(GuidOf(1), 0), 1);
    EXPECT_EQ(destroyed, 1);
    EXPECT_EQ(a->RemoveItemDB(GuidOf(1), 0), 1);
    EXPECT_EQ(destroyed, 2);
}

TEST_F(Ownership, SecondObjectInTwoFolders_OutlivesADeletingRemovalFromOne) {
    CQItem* second = SecondObjectInTwoFolders();
    EXPECT_EQ(b->RemoveItem(GuidOf(1), 1), 1);
    ExpectSecondLivesInC(second);
    EXPECT_EQ(c->RemoveItem(GuidOf(1), 1), 1);
    EXPECT_EQ(destroyed, 1);
}

TEST_F(Ownership, SecondObjectInTwoFolders_OutlivesTheClearingOfOne) {
    CQItem* second = SecondObjectInTwoFolders();
    second->SetParentFolder(b);
    b->Clear();
    ExpectSecondLivesInC(second);
    c->Clear();
    EXPECT_EQ(destroyed, 1);
}

TEST_F(Ownership, SecondObjectInTwoFolders_OutlivesTheCanonicalOne) {
    CQItem* second = SecondObjectInTwoFolders();
    EXPECT_EQ(b->RemoveItemDB(GuidOf(1), 0), 1);
    EXPECT_EQ(a->RemoveItemDB(GuidOf(1), 0), 1);
    EXPECT_EQ(destroyed, 0);  // The canonical object stays the gallery's while a parent is left.
    EXPECT_EQ(second->GetItemName(), "counted");
    tree.reset();
    EXPECT_EQ(destroyed, 2);
}

TEST_F(Ownership, SecondObjectInTwoFolders_IsEndedOnceWithTheGallery) {
    SecondObjectInTwoFolders();
    tree.reset();
    EXPECT_EQ(destroyed, 2);
}

TEST_F(Ownership, SecondObjectThatTakesTheCanonicalOneAlong_LeavesNobodyLookingAtIt) {
    CQItem* second = NewCounted(1);
    a->AddItem(second, 1);
    CQItem* canonical = NewCounted(1);
    b->AddItem(canonical, 1);
    Gallery().AddItem2Map(canonical, reinterpret_cast<std::uintptr_t>(a));
    tree.reset();
    EXPECT_EQ(destroyed, 2);
}

// --- One object twice in one array ---------------------------------------------------------------------------------

class TwiceInOneFolder : public Ownership {
protected:
    // The object at 0 and 2, another at 1.
    void Fill(bool known) {
        CQItem* item = NewCounted(1);
        a->AddItem(item, 1);
        a->AddItem(NewCounted(2), 1);
        a->AddItem(item, 1);
        item->SetDBID(5);
        if (!known) return;
        Gallery().AddItem2Map(item, reinterpret_cast<std::uintptr_t>(a));
        Gallery().AddItem2Map(a->GetItemArray()->GetAt(1), reinterpret_cast<std::uintptr_t>(a));
    }
};

TEST_F(TwiceInOneFolder, RemovalOfAllItems_EndsItOnce) {
    for (const bool known : {false, true}) {
        destroyed = 0;
        Fill(known);
        EXPECT_EQ(a->RemoveAllItems(1), 1);
        EXPECT_EQ(destroyed, 2);
    }
}

TEST_F(TwiceInOneFolder, DeletingRemoval_TakesEveryPlaceOfIt) {
    for (const bool known : {false, true}) {
        for (const int way : {0, 1, 2}) {
            destroyed = 0;
            Fill(known);
            if (way == 0) a->RemoveItem(GuidOf(1), 1);
            if (way == 1) a->RemoveItem(5, 1);
            if (way == 2) a->RemoveItem2(a->GetItemArray()->GetAt(0)->GetNumber(), 1);
            EXPECT_EQ(destroyed, 1);
            ASSERT_EQ(a->GetItemsCount(), 1) << way;
            EXPECT_TRUE(a->GetItemArray()->GetAt(0)->GetUniqueID() == GuidOf(2));
            a->RemoveAllItems(1);
        }
    }
}

TEST_F(TwiceInOneFolder, RemovalFromTheDatabase_TakesEveryPlaceOfIt) {
    Fill(true);
    a->RemoveItemDB(GuidOf(1), 0);
    EXPECT_EQ(destroyed, 1);
    EXPECT_EQ(a->GetItemsCount(), 1);
}

TEST_F(TwiceInOneFolder, EmptyingInTheDatabase_EndsItOnce) {
    for (const bool known : {false, true}) {
        destroyed = 0;
        Fill(known);
        EXPECT_EQ(a->DeleteFolderFromDb(), 1);
        EXPECT_EQ(destroyed, 2);
        EXPECT_EQ(a->GetItemsCount(), 0);
    }
}

TEST_F(Ownership, EmptyingInTheDatabase_EndsAnObjectOfTwoFoldersOnce) {
    CQFolder* below = AddSub(*a, "below");
    CQItem* item = NewCounted(1);
    a->AddItem(item, 1);
    below->AddItem(item, 1);
    EXPECT_EQ(a->DeleteFolderFromDb(), 1);
    EXPECT_EQ(destroyed, 1);
}

// --- Galleries whose items are in no map ---------------------------------------------------------------------------

TEST_F(Ownership, EmptyingInTheDatabase_EndsItemsTheGalleryDoesNotKnow) {
    const CQItem stored("stored");
    a->AddItem(NewCounted(1), 1);
    a->AddItem(NewCounted(2), 1);
    EXPECT_EQ(Gallery().DeleteFolderFromDb(a->GetDBId()), 1);
    EXPECT_EQ(destroyed, 2);
}

TEST_F(Ownership, FolderOfAnotherLibrarysGallery_IsDeletedWithItsItems) {
    LibraryFile other("other.db");
    {
        StoredTree stored(other.Tools());
        ASSERT_EQ(stored.pA->AddItemDb(NewFilledItem(1), 1), 1);
    }
    LoadedTree loaded(other.Tools());
    ASSERT_EQ(loaded.pA->GetItemsCount(), 1);
    EXPECT_EQ(loaded.Gallery().DeleteFolderFromDb(loaded.pA->GetDBId()), 1);
    EXPECT_EQ(other.Raw().Cell("select count(*) from ITEM_TABLE"), "0");
}

// --- Assigning -----------------------------------------------------------------------------------------------------

TEST(FolderAssignment, OfAFolderBelow_TakesItsFieldsAndKeepsThePlace) {
    CQFolder root("root", 0, 0, 0);
    CQFolder* target = AddSub(root, "target");
    CQFolder* source = AddSub(*AddSub(*target, "between"), "source", 6);
    source->SetAdopt(9);
    *target = *source;
    EXPECT_EQ(target->GetFolderName(), "source");
    EXPECT_EQ(target->GetTrusty(), 6u);
    EXPECT_EQ(target->GetAdopt(), 9u);
    EXPECT_EQ(target->GetParent(), &root);
    EXPECT_EQ(target->GetFirstSubFolder(), nullptr);
}

// --- Memory that runs out ------------------------------------------------------------------------------------------

// Has no memory for its list.
class FolderWithoutMemory : public CQFolder {
public:
    using CQFolder::CQFolder;
    FolderList* GetFolderList() override {
        if (m_bExhausted) throw std::bad_alloc();
        return CQFolder::GetFolderList();
    }
    bool m_bExhausted = true;
};

TEST(FolderMemory, AddFolder_ThatHasNoneForTheListGives0) {
    FolderWithoutMemory parent;
    CQFolder child;
    EXPECT_EQ(parent.AddFolder(&child, 1, 1), 0);
    EXPECT_EQ(child.GetParent(), nullptr);
    parent.m_bExhausted = false;
}

TEST(FolderMemory, AddFolder_ThatHasNoneForTheNumberLeavesTheChildAsItWas) {
    CQFolder former;
    CQFolder parent;
    DBTools* const tools = reinterpret_cast<DBTools*>(&former);  // Only compared.
    FolderWithoutMemory child;
    child.SetDBTools(tools);
    child.SetStorageNumber(7);
    // Adding asks the child for its list once it is linked.
    EXPECT_EQ(parent.AddFolder(&child, 1, 1), 0);
    EXPECT_EQ(child.GetParent(), nullptr);
    EXPECT_EQ(child.GetDBTools(), tools);
    EXPECT_EQ(FolderInside::StorageNumber(child), 7u);
    EXPECT_TRUE(parent.GetFolderList() == nullptr || parent.GetFolderList()->IsEmpty());
    child.m_bExhausted = false;
    child.SetDBTools(tools);
}

// --- Items of another library's gallery ----------------------------------------------------------------------------

TEST(OwnershipElsewhere, ItemOfAFolderWithoutRowThatIsEmptied_FollowsTheFolderThatHasItToo) {
    const CurrentLibrary library;
    LibraryFile other("other.db");
    StoredTree tree(other.Tools());
    CQFolder* const without = AddSub(*tree.pA, "without a row");
    const std::unique_ptr<CQItem> item(NewItem(1, "shared"));
    ASSERT_EQ(without->AddItem(item.get(), 1), 1);
    ASSERT_EQ(tree.pB->AddItem(item.get(), 0), 1);
    ASSERT_EQ(item->GetParentFolder(), without);
    const std::unique_ptr<CQFolder> detached(tree.pA);
    tree.pA->DetachParent(1);
    EXPECT_EQ(item->GetParentFolder(), tree.pB);
}

}  // namespace
}  // namespace qfc::test
