#include "items/Handles.h"
#include "tests/folders/FolderBuilders.h"
#include "tests/items/ItemLibrary.h"

#include <gtest/gtest.h>
#include <list>
#include <memory>

// One object in several folders, known to no gallery's index or to the index for some of them only: it ends with the
// last folder that has it, whatever way the folders lose it. The address sanitizer sees what the counters cannot.
namespace qfc::test {
namespace {

class HeldByOthers : public testing::Test {
protected:
    CQItem* NewCounted(unsigned number) {
        auto* item = new CountedItem(destroyed);
        item->SetUniqueID(GuidOf(number));
        item->SetItemName("counted");
        return item;
    }
    // In both, with `a` as its parent.
    CQItem* InBoth(CQFolder& a, CQFolder& b) {
        CQItem* item = NewCounted(1);
        b.AddItem(item, 0);
        a.AddItem(item, 1);
        EXPECT_EQ(item->GetParentFolder(), &a);
        return item;
    }
    void ExpectItLivesIn(CQFolder& folder, const CQItem* item) {
        ASSERT_EQ(destroyed, 0);
        EXPECT_EQ(folder.GetItemArray()->GetAt(0), item);
        EXPECT_EQ(item->GetItemName(), "counted");
        EXPECT_EQ(item->GetParentFolder(), &folder);
    }

    int destroyed = 0;
};

// --- Without a gallery ---------------------------------------------------------------------------------------------

class HeldInAPlainTree : public HeldByOthers {
protected:
    CQFolder root;
    CQFolder* a = AddSub(root, "A");
    CQFolder* b = AddSub(root, "B");
};

TEST_F(HeldInAPlainTree, RemoveSubFolder_EndsItOnce) {
    InBoth(*a, *b);
    EXPECT_EQ(root.RemoveSubFolder(), 1);
    EXPECT_EQ(destroyed, 1);
}

TEST_F(HeldInAPlainTree, RemoveSubFolderOfARootThatHasItToo_EndsItOnce) {
    root.AddItem(InBoth(*a, *b), 0);
    EXPECT_EQ(root.RemoveSubFolder(), 1);
    EXPECT_EQ(destroyed, 1);
}

TEST_F(HeldInAPlainTree, RemoveSubFolderOfOne_LeavesItToTheOther) {
    const CQItem* item = InBoth(*a, *b);
    EXPECT_EQ(a->RemoveSubFolder(), 1);
    ExpectItLivesIn(*b, item);
}

TEST_F(HeldInAPlainTree, DeletingRemoval_LeavesItToTheOther) {
    for (const int way : {0, 1, 2}) {
        destroyed = 0;
        CQItem* item = InBoth(*a, *b);
        item->SetDBID(5);
        const int removed = way == 0   ? a->RemoveItem(GuidOf(1), 1)
                            : way == 1 ? a->RemoveItem(5, 1)
                                       : a->RemoveItem2(item->GetNumber(), 1);
        EXPECT_EQ(removed, 1);
        ExpectItLivesIn(*b, item);
        EXPECT_EQ(b->RemoveItem(GuidOf(1), 1), 1);
        EXPECT_EQ(destroyed, 1);
    }
}

TEST_F(HeldInAPlainTree, RemoveAllItemsOfOne_LeavesThemToTheOther) {
    const CQItem* item = InBoth(*a, *b);
    for (unsigned number = 2; number <= 4; ++number) {
        CQItem* other = NewCounted(number);
        a->AddItem(other, 1);
        if (number != 3) b->AddItem(other, 0);
    }
    EXPECT_EQ(a->RemoveAllItems(1), 1);
    EXPECT_EQ(destroyed, 1);
    ASSERT_EQ(b->GetItemsCount(), 3);
    for (const CQItem* left : *b->GetItemArray()) EXPECT_EQ(left->GetParentFolder(), b);
    EXPECT_EQ(b->GetItemArray()->GetAt(0), item);
    EXPECT_EQ(b->RemoveAllItems(1), 1);
    EXPECT_EQ(destroyed, 4);
}

TEST_F(HeldInAPlainTree, RemoveAllItemsOfAFolder_LeavesThemToAFolderBelow) {
    CQFolder* below = AddSub(*a, "below");
    const CQItem* item = InBoth(*a, *below);
    EXPECT_EQ(a->RemoveAllItems(1), 1);
    ExpectItLivesIn(*below, item);
}

TEST_F(HeldInAPlainTree, RemoveAllItemsOfAFolder_LeavesThemToTheRoot) {
    const CQItem* item = InBoth(*a, root);
    EXPECT_EQ(a->RemoveAllItems(1), 1);
    ExpectItLivesIn(root, item);
}

TEST_F(HeldInAPlainTree, ClearingOne_LeavesItToTheOther) {
    const CQItem* item = InBoth(*a, *b);
    a->Clear();
    ExpectItLivesIn(*b, item);
    b->Clear();
    EXPECT_EQ(destroyed, 1);
}

TEST_F(HeldInAPlainTree, EndOfOne_LeavesItToTheOther) {
    const CQItem* item = InBoth(*a, *b);
    a->DetachParent(0);
    delete a;
    ExpectItLivesIn(*b, item);
}

TEST_F(HeldInAPlainTree, ClearingTheRoot_EndsItOnce) {
    InBoth(*a, *b);
    root.Clear();
    EXPECT_EQ(destroyed, 1);
}

TEST_F(HeldInAPlainTree, ClearingAFolderThatHasItWithOneBelow_EndsItOnce) {
    InBoth(*a, *AddSub(*a, "below"));
    a->Clear();
    EXPECT_EQ(destroyed, 1);
}

// --- In a gallery that does not know it ----------------------------------------------------------------------------

class HeldOutsideTheIndex : public HeldByOthers {
protected:
    void AddWithoutWriting(CQFolder& folder, CQItem* item) { EXPECT_EQ(folder.AddItemDb(item, 0), 1); }
    static void SwapFirstTwo(CQFolder& folder) {
        CQItem* first = folder.GetItemArray()->GetAt(0);
        folder.GetItemArray()->SetAt(0, folder.GetItemArray()->GetAt(1));
        folder.GetItemArray()->SetAt(1, first);
    }
    std::string Count(const std::string& table) { return library.Raw().Cell("select count(*) from " + table); }
    void Place(unsigned number, const CQFolder& folder) {
        library.Raw().Exec("insert into RELATION_TABLE(PARENT_ID, ITEM_ID, ITEM_INDEX) values(" +
                           std::to_string(folder.GetDBId()) + ", " + BlobLiteral(GuidOf(number)) + ", 0)");
    }

    CurrentLibrary library;
    StoredTree tree{library.Tools()};
    CQFolder& a = *tree.pA;
    CQFolder& b = *tree.pB;
};

TEST_F(HeldOutsideTheIndex, DeletingOneFolder_LeavesItToTheOther) {
    CQItem* item = NewCounted(1);
    AddWithoutWriting(b, item);
    AddWithoutWriting(a, item);
    EXPECT_EQ(tree.Gallery().DeleteFolderFromDb(a.GetDBId()), 1);
    ExpectItLivesIn(b, item);
    EXPECT_EQ(tree.Gallery().DeleteFolderFromDb(b.GetDBId()), 1);
    EXPECT_EQ(destroyed, 1);
}

TEST_F(HeldOutsideTheIndex, EmptyingBothInTheDatabase_TakesBothPlacementsAndEndsItOnce) {
    CQItem* item = NewCounted(1);
    AddWithoutWriting(b, item);
    AddWithoutWriting(a, item);
    Place(1, a);
    Place(1, b);
    EXPECT_EQ(tree.Gallery().DeleteFolderFromDb(), 1);
    EXPECT_EQ(Count("RELATION_TABLE"), "0");
    EXPECT_EQ(destroyed, 1);
}

TEST_F(HeldOutsideTheIndex, RemoveSubFolder_TakesBothPlacementsAndEndsItOnce) {
    CQItem* item = NewCounted(1);
    AddWithoutWriting(b, item);
    AddWithoutWriting(a, item);
    Place(1, a);
    Place(1, b);
    EXPECT_EQ(tree.Gallery().RemoveSubFolder(), 1);
    EXPECT_EQ(Count("RELATION_TABLE"), "0");
    EXPECT_EQ(destroyed, 1);
}

// --- Known to the index --------------------------------------------------------------------------------------------

TEST_F(HeldOutsideTheIndex, KnownItemOfTheRoot_HasTheRootAsItsParentOnceItsFolderIsCleared) {
    CQItem* item = NewCounted(1);
    ASSERT_EQ(tree.Gallery().AddItemDb(item, 1), 1);
    ASSERT_EQ(a.AddItemDb(item, 1), 1);
    a.Clear();
    ExpectItLivesIn(tree.Gallery(), item);
}

// The index knows it for A alone, B has it all the same.
class HeldBesideTheIndex : public HeldOutsideTheIndex {
protected:
    CQItem* InIndexForA(unsigned number = 1) {
        CQItem* item = NewCounted(number);
        EXPECT_EQ(a.AddItemDb(item, 1), 1);
        EXPECT_EQ(b.AddItem(item, 0), 1);
        EXPECT_EQ(Parents(number), std::list<ULONGLONG>{ToHandle(&a)});
        return item;
    }
    std::list<ULONGLONG> Parents(unsigned number) { return tree.Gallery().GetItemParentList(GuidOf(number)); }
    void ExpectOnlyBIsLeft(const CQItem* item) {
        ExpectItLivesIn(b, item);
        EXPECT_EQ(Parents(1), std::list<ULONGLONG>{ToHandle(&b)});
        EXPECT_EQ(b.RemoveItem(GuidOf(1), 1), 1);
        EXPECT_EQ(destroyed, 1);
    }
};

TEST_F(HeldBesideTheIndex, DeletingRemoval_LeavesItToTheOther) {
    const CQItem* item = InIndexForA();
    EXPECT_EQ(a.RemoveItem(GuidOf(1), 1), 1);
    ExpectOnlyBIsLeft(item);
}

TEST_F(HeldBesideTheIndex, RemovalFromTheDatabase_LeavesItToTheOther) {
    const CQItem* item = InIndexForA();
    EXPECT_EQ(a.RemoveItemDB(GuidOf(1), 0), 1);
    ExpectOnlyBIsLeft(item);
}

TEST_F(HeldBesideTheIndex, ClearingOne_LeavesItToTheOther) {
    const CQItem* item = InIndexForA();
    a.Clear();
    ExpectOnlyBIsLeft(item);
}

TEST_F(HeldBesideTheIndex, DeletingOneFolder_LeavesItToTheOther) {
    const CQItem* item = InIndexForA();
    EXPECT_EQ(tree.Gallery().DeleteFolderFromDb(a.GetDBId()), 1);
    ExpectOnlyBIsLeft(item);
}

TEST_F(HeldBesideTheIndex, RemoveAllItemsOfOne_LeavesEachToTheOther) {
    for (unsigned number = 1; number <= 3; ++number) InIndexForA(number);
    EXPECT_EQ(a.RemoveAllItems(1), 1);
    EXPECT_EQ(destroyed, 0);
    ASSERT_EQ(b.GetItemsCount(), 3);
    for (const CQItem* item : *b.GetItemArray()) EXPECT_EQ(item->GetParentFolder(), &b);
    EXPECT_EQ(b.RemoveAllItems(1), 1);
    EXPECT_EQ(destroyed, 3);
}

TEST_F(HeldBesideTheIndex, ClearingTheGallery_EndsItOnce) {
    InIndexForA();
    tree.Gallery().Clear();
    EXPECT_EQ(destroyed, 1);
}

// Also when it is no longer the object that the folder loses.
TEST_F(HeldBesideTheIndex, SecondObjectThatIsTheLastOfItsFolder_LeavesTheFirstToTheOther) {
    const CQItem* item = InIndexForA();
    a.RemoveItem(GuidOf(1), 0);
    int secondDestroyed = 0;
    auto* second = new CountedItem(secondDestroyed);
    second->SetUniqueID(GuidOf(1));
    a.AddItem(second, 1);
    EXPECT_EQ(a.RemoveItem(GuidOf(1), 1), 1);
    EXPECT_EQ(secondDestroyed, 1);
    ExpectOnlyBIsLeft(item);
}

TEST_F(HeldOutsideTheIndex, SecondObjectOfAFolderThatHasTheFirst_DiesAlone) {
    for (const int way : {0, 1}) {
        destroyed = 0;
        CQItem* item = NewCounted(1);
        ASSERT_EQ(a.AddItemDb(item, 1), 1);
        CQItem* second = NewCounted(1);
        a.AddItem(second, 1);
        second->SetDBID(7);
        // The removal from the database takes the first of that GUID that it meets.
        if (way == 1) SwapFirstTwo(a);
        EXPECT_EQ(way == 0 ? a.RemoveItem(7, 1) : a.RemoveItemDB(GuidOf(1), 0), 1);
        EXPECT_EQ(destroyed, 1);
        ASSERT_EQ(a.GetItemsCount(), 1);
        EXPECT_EQ(a.GetItemArray()->GetAt(0), item);
        EXPECT_EQ(item->GetParentFolder(), &a);
        EXPECT_EQ(tree.Gallery().GetItemParentList(GuidOf(1)), std::list<ULONGLONG>{ToHandle(&a)});
        EXPECT_EQ(a.RemoveItem(GuidOf(1), 1), 1);
        EXPECT_EQ(destroyed, 2);
    }
}

TEST_F(HeldOutsideTheIndex, ClearingAFolderThatHasTwoObjectsOfAGuid_EndsEachOnce) {
    CQItem* item = NewCounted(1);
    ASSERT_EQ(a.AddItemDb(item, 1), 1);
    a.AddItem(NewCounted(1), 1);
    SwapFirstTwo(a);
    a.Clear();
    EXPECT_EQ(destroyed, 2);
    EXPECT_TRUE(tree.Gallery().GetItemParentList(GuidOf(1)).empty());
}

}  // namespace
}  // namespace qfc::test
