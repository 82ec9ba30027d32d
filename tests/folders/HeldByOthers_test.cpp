#include "tests/folders/FolderBuilders.h"
#include "tests/items/ItemLibrary.h"

#include <gtest/gtest.h>
#include <memory>

// One object in several folders, known to no gallery's index: it ends with the last folder that has it, whatever way
// the folders lose it. The address sanitizer sees what the counters cannot.
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

}  // namespace
}  // namespace qfc::test
