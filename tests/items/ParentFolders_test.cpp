#include "items/ItemTypes.h"
#include "tests/folders/FolderBuilders.h"
#include "tests/items/ItemLibrary.h"

#include <gtest/gtest.h>
#include <memory>

// The parent of an item never outlives its folder: whatever way the folder ends, and whatever way it let the item go
// before. The address sanitizer sees what the assertions cannot.
namespace qfc::test {
namespace {

class ParentFolders : public testing::Test {
protected:
    void EndFolderA() {
        a->DetachParent(0);
        delete a;
    }
    // All of them ask the parent.
    static void ExpectNothingToLoad(CQItem& item) {
        EXPECT_EQ(item.GetParentFolder(), nullptr);
        EXPECT_EQ(item.IsExistInGalleryItemMap(), 0);
        EXPECT_EQ(item.TryLoadBB(), 0);
        EXPECT_EQ(item.GetBlackBox(), nullptr);
        item.GetAttrib() |= 1;
        EXPECT_EQ(item.TryLoadFilm(), 0);
        EXPECT_EQ(item.GetFilmFrame(0), nullptr);
    }

    CurrentLibrary library;
    StoredTree tree{library.Tools()};
    CQFolder* a = tree.pA;
    CQFolder* b = tree.pB;
};

TEST_F(ParentFolders, ItemTakenOutWithoutDeleting_HasNoParentOnceItsFolderIsDestroyed) {
    ASSERT_EQ(a->AddItemDb(new CQItem("x"), 1), 1);
    CQItem* item = a->GetItemArray()->GetAt(0);
    const GUID guid = std::as_const(*item).GetUniqueID();
    ASSERT_EQ(a->RemoveItem(guid, 0), 1);
    EXPECT_EQ(item->GetParentFolder(), a);  // As long as it lives: nobody else has the item.
    EndFolderA();
    CQItem* known = nullptr;
    ASSERT_EQ(tree.Gallery().IsItemHasParentByGuid(guid, known), 1);
    ASSERT_EQ(known, item);
    ExpectNothingToLoad(*item);
}

TEST_F(ParentFolders, ItemTakenOutByHand_HasNoParentOnceItsFolderIsDestroyed) {
    const std::unique_ptr<CQItem> item(AddNew(*a, 1));
    a->GetItemArray()->RemoveAll();
    EndFolderA();
    ExpectNothingToLoad(*item);
}

TEST_F(ParentFolders, ItemOfNoArray_HasNoParentOnceTheFolderItWasGivenIsDestroyed) {
    CQItem item;
    {
        CQFolder folder;
        item.SetParentFolder(&folder);
        EXPECT_EQ(item.GetParentFolder(), &folder);
    }
    ExpectNothingToLoad(item);
    // Also when another folder comes to stand at the same address.
    alignas(CQFolder) std::byte place[sizeof(CQFolder)];
    auto* folder = new (place) CQFolder;
    item.SetParentFolder(folder);
    folder->~CQFolder();
    folder = new (place) CQFolder;
    EXPECT_EQ(item.GetParentFolder(), nullptr);
    folder->~CQFolder();
}

TEST_F(ParentFolders, ItemsOfAnotherLibrary_AreLeftWithoutParentWhenTheirFolderIsCleared) {
    const std::unique_ptr<CQItem> item(AddNew(*a, 1));
    SetCurrentDBTools(nullptr);
    EndFolderA();
    SetCurrentDBTools(library.Tools());
    ExpectNothingToLoad(*item);
}

TEST_F(ParentFolders, ItemTakenOutWithoutDeletingThatAnotherFolderHas_GetsThatOneAsItsParent) {
    for (const int way : {0, 1, 2}) {
        CQItem* item = NewFilledItem(static_cast<unsigned>(way) + 1);
        item->SetDBID(way + 1);
        ASSERT_EQ(b->AddItemDb(item, 1), 1);
        ASSERT_EQ(a->AddItemDb(item, 1), 1);
        ASSERT_EQ(item->GetParentFolder(), a);
        if (way == 0) {
            ASSERT_EQ(a->RemoveItem(GuidOf(1), 0), 1);
        } else if (way == 1) {
            ASSERT_EQ(a->RemoveItem(2, 0), 1);
        } else {
            ASSERT_EQ(a->RemoveItem2(item->GetNumber(), 0), 1);
        }
        EXPECT_EQ(item->GetParentFolder(), b) << way;
    }
    EndFolderA();
    EXPECT_EQ(b->GetItemArray()->GetAt(0)->TryLoadBB(), 1);
}

// The index knows it for A alone, or not at all; B has it all the same.
TEST_F(ParentFolders, ItemTakenOutWithoutDeletingThatAFolderBesideTheIndexHas_GetsThatOneAsItsParent) {
    for (const bool known : {true, false}) {
        for (const int way : {0, 1, 2}) {
            CQItem* item = NewFilledItem(known ? 1 : 2);
            item->SetDBID(7);
            ASSERT_EQ(a->AddItemDb(item, known ? 1 : 0), 1);
            ASSERT_EQ(b->AddItem(item, 0), 1);
            const int removed = way == 0   ? a->RemoveItem(std::as_const(*item).GetUniqueID(), 0)
                                : way == 1 ? a->RemoveItem(7, 0)
                                           : a->RemoveItem2(item->GetNumber(), 0);
            ASSERT_EQ(removed, 1);
            EXPECT_EQ(item->GetParentFolder(), b) << known << way;
            ASSERT_EQ(b->RemoveAllItems(1), 1);
        }
    }
}

TEST_F(ParentFolders, ItemTakenOutWithoutDeletingThatAFolderBesideTheIndexHas_IsStillLoadedOnceItsFolderIsDestroyed) {
    ASSERT_EQ(a->AddItemDb(NewFilledItem(1), 1), 1);
    LoadedTree loaded(library.Tools());
    CQItem* item = loaded.Item(1);
    ASSERT_EQ(loaded.pB->AddItem(item, 0), 1);
    ASSERT_EQ(loaded.pA->RemoveItem2(item->GetNumber(), 0), 1);
    loaded.pA->DetachParent(0);
    delete loaded.pA;
    EXPECT_EQ(item->TryLoadBB(), 1);
    EXPECT_EQ(InMemory(*item, kBlackBox), Pattern(3000, 1));
}

TEST_F(ParentFolders, ItemTakenOutWithoutDeletingThatStandsInItsFolderOnceMore_KeepsItsParent) {
    CQItem* item = NewFilledItem(1);
    ASSERT_EQ(a->AddItem(item, 1), 1);
    ASSERT_EQ(a->AddItem(item, 0), 1);
    ASSERT_EQ(b->AddItem(item, 0), 1);
    ASSERT_EQ(a->RemoveItem2(item->GetNumber(), 0), 1);
    EXPECT_EQ(item->GetParentFolder(), a);
    ASSERT_EQ(a->RemoveItem2(item->GetNumber(), 0), 1);
    EXPECT_EQ(item->GetParentFolder(), b);
}

TEST_F(ParentFolders, UnknownItemRemovedFromTheDatabase_GetsTheOtherFolderThatHasItAsItsParent) {
    CQItem* item = NewFilledItem(1);
    ASSERT_EQ(a->AddItemDb(item, 0), 1);
    ASSERT_EQ(b->AddItem(item, 0), 1);
    a->RemoveItemDB(GuidOf(1), 0);
    EXPECT_EQ(a->GetItemsCount(), 0);
    EXPECT_EQ(item->GetParentFolder(), b);
}

// A parent of the index that no longer has the item would take it along when it ends.
TEST_F(ParentFolders, ItemThatLosesItsParent_GetsAFolderThatHasItNotOneThatHadIt) {
    CQFolder* c = AddSub(tree.Gallery(), "C");
    ASSERT_EQ(c->InsertOrUpdateFolder(), 1);
    for (const bool known : {true, false}) {
        CQItem* item = NewFilledItem(known ? 1 : 2);
        for (CQFolder* folder : {b, c, a}) ASSERT_EQ(folder->AddItemDb(item, folder != c || known ? 1 : 0), 1);
        ASSERT_EQ(b->RemoveItem2(item->GetNumber(), 0), 1);
        ASSERT_EQ(item->GetParentFolder(), a);
        ASSERT_EQ(a->RemoveItem2(item->GetNumber(), 1), 1);
        EXPECT_EQ(item->GetParentFolder(), c) << known;
    }
}

// What is loaded lazily is still found.
TEST_F(ParentFolders, ItemsOfAFolderEmptiedWithoutDeleting_GetTheOtherFolderThatHasThemAsTheirParent) {
    for (const unsigned number : {1u, 2u, 3u}) {
        CQItem* item = NewFilledItem(number);
        ASSERT_EQ(b->AddItemDb(item, 1), 1);
        ASSERT_EQ(a->AddItemDb(item, 1), 1);
    }
    ASSERT_EQ(a->RemoveAllItems(0), 1);
    EndFolderA();
    for (CQItem* item : *b->GetItemArray()) {
        EXPECT_EQ(item->GetParentFolder(), b);
        EXPECT_EQ(item->TryLoadBB(), 1);
    }
}

TEST_F(ParentFolders, ItemOfAnotherLibraryThatAnotherFolderHas_GetsThatOneAsItsParentWhenItsFolderEnds) {
    CQItem* item = NewFilledItem(1);
    ASSERT_EQ(b->AddItemDb(item, 1), 1);
    ASSERT_EQ(a->AddItemDb(item, 1), 1);
    SetCurrentDBTools(nullptr);
    EndFolderA();
    EXPECT_EQ(item->GetParentFolder(), b);
    EXPECT_EQ(item->TryLoadBB(), 1);
    SetCurrentDBTools(library.Tools());
}

TEST_F(ParentFolders, SharedItemWhoseFolderIsGone_GetsTheFolderThatLoadsItAsItsParent) {
    CQItem* item = NewFilledItem(1);
    ASSERT_EQ(a->AddItemDb(item, 1), 1);
    ASSERT_EQ(library.Tools()->ReOrderItemsDb(item, b, 0), true);
    ASSERT_EQ(a->RemoveItem(GuidOf(1), 0), 1);
    EndFolderA();
    ASSERT_EQ(item->GetParentFolder(), nullptr);
    b->LoadSubItemsFromDb();
    ASSERT_EQ(b->GetItemsCount(), 1);
    EXPECT_EQ(b->GetItemArray()->GetAt(0), item);
    EXPECT_EQ(item->GetParentFolder(), b);
}

// What a host does when it has changed items in between, as the host guide says.
TEST_F(ParentFolders, FolderThatIsPutBack_GetsItsItemsBackWithSetAllParent) {
    CQItem* item = NewFilledItem(1);
    ASSERT_EQ(b->AddItemDb(item, 1), 1);
    ASSERT_EQ(a->AddItemDb(item, 1), 1);
    ASSERT_EQ(b->DetachParent(0), 1);
    ASSERT_EQ(a->RemoveItem(GuidOf(1), 1), 1);
    ASSERT_EQ(item->GetParentFolder(), nullptr);
    ASSERT_EQ(tree.Gallery().AddFolder(b, 0, 1), 1);
    EXPECT_EQ(item->GetParentFolder(), nullptr);
    b->SetAllParent();
    EXPECT_EQ(item->GetParentFolder(), b);
    EXPECT_EQ(item->TryLoadBB(), 1);
}

TEST_F(ParentFolders, FolderThatTookAnItemAsItsOwn_IsStillItsParentWhileItLives) {
    CQItem item;
    item.SetParentFolder(a);
    EXPECT_EQ(item.GetParentFolder(), a);
    item.SetParentFolder(nullptr);
    EXPECT_EQ(item.GetParentFolder(), nullptr);
}

}  // namespace
}  // namespace qfc::test
