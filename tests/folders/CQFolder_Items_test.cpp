#include "tests/folders/FolderBuilders.h"

#include <gtest/gtest.h>
#include <memory>

namespace qfc::test {
namespace {

using Texts = std::vector<std::string>;

TEST(CQFolderItems, AddItem_AppendsAndAttaches) {
    CQFolder folder;
    CQItem* first = NewItem(1, "one", 4);
    CQItem* second = NewItem(2, "two", 64);
    EXPECT_EQ(folder.AddItem(first, 1), 1);
    EXPECT_EQ(folder.AddItem(second, 1), 1);
    EXPECT_EQ(ItemNames(folder.GetItemArray()), (Texts{"one", "two"}));
    EXPECT_EQ(folder.GetAdopt(), 68u);
    EXPECT_EQ(first->GetParentFolder(), &folder);
    EXPECT_EQ(first->GetNumber(), 0u);
    EXPECT_EQ(second->GetNumber(), 1u);
}

TEST(CQFolderItems, AddItem_OfAnAttachedItemOnlyAppends) {
    CQFolder root;
    CQFolder* first = AddSub(root, "A");
    CQFolder* second = AddSub(root, "B");
    AddNew(*second, 1);
    CQItem* item = AddNew(*first, 2, "shared", 8);
    EXPECT_EQ(second->AddItem(item, 1), 1);
    EXPECT_EQ(second->GetItemsCount(), 2);
    EXPECT_EQ(item->GetParentFolder(), first);
    EXPECT_EQ(item->GetNumber(), 0u);
    EXPECT_EQ(second->GetAdopt(), 1u);
}

TEST(CQFolderItems, AddItem_OfAnAttachedItemStillDrawsANumber) {
    CQFolder root;
    CQFolder* first = AddSub(root, "A");
    CQFolder* second = AddSub(root, "B");
    CQItem* item = AddNew(*first, 1);
    second->AddItem(item, 1);
    EXPECT_EQ(FolderInside::NextItemNumber(*second), 1u);
}

TEST(CQFolderItems, AddItem_WithoutParentTakesTheTypeButLeavesTheItemUnattached) {
    CQFolder root;
    CQFolder* first = AddSub(root, "A");
    CQFolder* second = AddSub(root, "B");
    CQItem* item = NewItem(1, "", 8);
    first->AddItem(item, 0);
    EXPECT_EQ(first->GetAdopt(), 8u);
    EXPECT_EQ(item->GetParentFolder(), nullptr);
    second->AddItem(item, 1);
    EXPECT_EQ(item->GetParentFolder(), second);
}

TEST(CQFolderItems, AddItem_OfNullGives0) {
    CQFolder folder;
    EXPECT_EQ(folder.AddItem(nullptr, 1), 0);
    EXPECT_EQ(folder.GetItemsCount(), 0);
}

TEST(CQFolderItems, RemoveItem_WithoutDeletingLeavesTheItemAlive) {
    int destroyed = 0;
    CQFolder folder;
    const std::unique_ptr<CQItem> item(new CountedItem(destroyed));
    folder.AddItem(item.get(), 1);
    EXPECT_EQ(folder.RemoveItem(item->GetUniqueID(), 0), 1);
    EXPECT_EQ(destroyed, 0);
    EXPECT_EQ(folder.GetItemsCount(), 0);
    EXPECT_EQ(folder.RemoveItem(item->GetUniqueID(), 0), 0);
}

TEST(CQFolderItems, RemoveItem_ByGuidThatIsTheItemsOwnDestroysIt) {
    int destroyed = 0;
    CQFolder folder;
    auto* item = new CountedItem(destroyed);
    folder.AddItem(item, 1);
    EXPECT_EQ(folder.RemoveItem(item->GetUniqueID(), 1), 1);
    EXPECT_EQ(destroyed, 1);
}

TEST(CQFolderItems, RemoveItem_ByIdAndByNumberTakeTheFirstMatch) {
    CQFolder folder;
    AddNew(folder, 1, "one")->SetDBID(7);
    AddNew(folder, 2, "two")->SetDBID(7);
    AddNew(folder, 3, "three");
    EXPECT_EQ(folder.RemoveItem(7, 1), 1);
    EXPECT_EQ(folder.RemoveItem(9, 1), 0);
    EXPECT_EQ(folder.RemoveItem2(2, 1), 1);
    EXPECT_EQ(folder.RemoveItem2(2, 1), 0);
    EXPECT_EQ(ItemNames(folder.GetItemArray()), Texts{"two"});
}

TEST(CQFolderItems, RemoveItem_FromAFolderWithoutItemsGives0) {
    CQFolder folder;
    EXPECT_EQ(folder.RemoveItem(GuidOf(1), 1), 0);
    EXPECT_EQ(folder.RemoveItem(1, 1), 0);
    EXPECT_EQ(folder.RemoveItem2(1, 1), 0);
}

TEST(CQFolderItems, RemoveAllItems_NeedsAnItemArray) {
    CQFolder folder;
    EXPECT_EQ(folder.RemoveAllItems(1), 0);
    AddNew(folder, 1);
    EXPECT_EQ(folder.RemoveAllItems(1), 1);
    EXPECT_EQ(folder.RemoveAllItems(1), 1);
}

TEST(CQFolderItems, RemoveAllItems_WithoutDeletingLeavesTheItemsAlive) {
    int destroyed = 0;
    CQFolder folder;
    const std::unique_ptr<CQItem> item(new CountedItem(destroyed));
    folder.AddItem(item.get(), 1);
    EXPECT_EQ(folder.RemoveAllItems(0), 1);
    EXPECT_EQ(destroyed, 0);
    EXPECT_EQ(folder.GetItemsCount(), 0);
}

TEST(CQFolderItems, RemoveAllItems_DestroysEachAndClosesTheStorage) {
    RecordedFile file;
    int destroyed = 0;
    OpenFolder folder("F", 0, 0, 0);
    folder.m_strFilePath = "C:\\file";
    folder.AddItem(new CountedItem(destroyed), 1);
    folder.AddItem(new CountedItem(destroyed), 1);
    folder.GetItemArray()->Add(nullptr);
    folder.RemoveAllItems(1);
    EXPECT_EQ(destroyed, 2);
    EXPECT_EQ(file.calls, (Texts{"streams F ", "streams F ", "close F"}));
    folder.m_strFilePath.Empty();
}

TEST(CQFolderItems, DeleteItemEx_GivesWhatTheGalleryFileAnswers) {
    RecordedFile file;
    OpenFolder folder("F", 0, 0, 0);
    EXPECT_EQ(folder.DeleteItemEx(NewItem(1), nullptr), 1);
    EXPECT_TRUE(file.calls.empty());
    folder.m_strFilePath = "C:\\file";
    file.result = 0;
    EXPECT_EQ(folder.DeleteItemEx(NewItem(1, "clip"), nullptr), 0);
    EXPECT_EQ(file.calls, Texts{"streams F clip"});
    EXPECT_EQ(folder.DeleteItemEx(nullptr, nullptr), 0);
    folder.m_strFilePath.Empty();
}

class SharedItem : public testing::Test {
protected:
    SharedItem() {
        for (CQFolder* folder : {a, b, c}) {
            folder->AddItem(item, folder == a);
            gallery.AddItem2Map(item, reinterpret_cast<std::uintptr_t>(folder));
        }
    }

    int destroyed = 0;
    CQGallery gallery;
    CQFolder* a = AddSub(gallery, "A");
    CQFolder* b = AddSub(gallery, "B");
    CQFolder* c = AddSub(gallery, "C");
    CountedItem* item = new CountedItem(destroyed);
};

TEST_F(SharedItem, DiesWithTheLastFolderThatHoldsIt) {
    const GUID guid = item->GetUniqueID();
    a->RemoveItem(guid, 1);
    b->RemoveItem(guid, 1);
    EXPECT_EQ(destroyed, 0);
    c->RemoveItem(guid, 1);
    EXPECT_EQ(destroyed, 1);
}

TEST_F(SharedItem, WhoseParentLetsGoGetsTheNextHolderAsParent) {
    EXPECT_EQ(item->GetParentFolder(), a);
    a->RemoveItem(item->GetUniqueID(), 1);
    EXPECT_EQ(item->GetParentFolder(), b);
}

TEST_F(SharedItem, WhoseParentIsDestroyedGetsTheNextHolderAsParent) {
    a->DetachParent(0);
    delete a;
    EXPECT_EQ(item->GetParentFolder(), b);
    EXPECT_TRUE(item->IsExistInGalleryItemMap());
}

TEST_F(SharedItem, NeverGetsAHolderAsParentThatIsGone) {
    // Taken out of B by hand: the gallery still lists B as a holder.
    b->RemoveItem(item->GetUniqueID(), 0);
    b->DetachParent(0);
    delete b;
    a->DetachParent(0);
    delete a;
    EXPECT_EQ(item->GetParentFolder(), c);
}

}  // namespace
}  // namespace qfc::test
