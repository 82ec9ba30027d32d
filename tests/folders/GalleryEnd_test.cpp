#include "folders/GalleryEnd.h"

#include "items/CQGalleryDoc.h"
#include "tests/folders/FolderBuilders.h"
#include "tests/items/ItemLibrary.h"
#include "tests/support/MemoryFaults.h"

#include <gtest/gtest.h>
#include <memory>

// A gallery that ends with all of its items, those of another database included: each object once.
namespace qfc::test {
namespace {

class GalleryEnd : public testing::Test {
protected:
    GalleryEnd() {
        gallery->SetDBTools(other.Tools());
        a = AddSub(*gallery, "A");
        b = AddSub(*gallery, "B");
    }
    CQItem* NewCounted(unsigned number) {
        auto* item = new CountedItem(destroyed);
        item->SetUniqueID(GuidOf(number));
        return item;
    }

    int destroyed = 0;
    CurrentLibrary library;
    LibraryFile other{"other.db"};
    CQGallery* gallery = new CQGallery;
    CQFolder* a = nullptr;
    CQFolder* b = nullptr;
};

TEST_F(GalleryEnd, ItemsOfAnotherDatabase_EndToo) {
    gallery->AddItem(NewCounted(1), 1);
    a->AddItem(NewCounted(2), 1);
    AddSub(*a, "below")->AddItem(NewCounted(3), 1);
    DestroyWithItems(gallery);
    EXPECT_EQ(destroyed, 3);
}

TEST_F(GalleryEnd, ItemOfTwoFolders_EndsOnce) {
    CQItem* item = NewCounted(1);
    a->AddItem(item, 1);
    a->AddItem(item, 1);
    b->AddItem(item, 0);
    DestroyWithItems(gallery);
    EXPECT_EQ(destroyed, 1);
}

TEST_F(GalleryEnd, ItemOfAFolderThatEndsItsItemsAndOfOneThatDoesNot_EndsOnce) {
    for (const bool first : {false, true}) {
        destroyed = 0;
        auto* mixed = new CQGallery;
        CQFolder* current = AddSub(*mixed, "current");
        CQFolder* foreign = new CQFolder("foreign", 0, 0, 0);
        mixed->AddFolder(foreign, 0, first ? 0 : 1);
        current->SetDBTools(library.Tools());
        foreign->SetDBTools(other.Tools());
        CQItem* item = NewCounted(1);
        current->AddItem(item, 1);
        foreign->AddItem(item, 0);
        DestroyWithItems(mixed);
        EXPECT_EQ(destroyed, 1) << first;
    }
    delete gallery;
}

TEST_F(GalleryEnd, ItemThatTheIndexKnows_EndsOnce) {
    CQItem* item = NewCounted(1);
    a->AddItem(item, 1);
    b->AddItem(item, 0);
    gallery->AddItem2Map(item, reinterpret_cast<std::uintptr_t>(a));
    // Known for a folder that has it no longer, too.
    CQItem* left = NewCounted(2);
    b->AddItem(left, 1);
    gallery->AddItem2Map(left, reinterpret_cast<std::uintptr_t>(a));
    gallery->AddItem2Map(left, reinterpret_cast<std::uintptr_t>(b));
    DestroyWithItems(gallery);
    EXPECT_EQ(destroyed, 2);
}

TEST_F(GalleryEnd, SecondObjectOfAKnownItem_EndsOnce) {
    CQItem* item = NewCounted(1);
    a->AddItem(item, 1);
    gallery->AddItem2Map(item, reinterpret_cast<std::uintptr_t>(a));
    CQItem* second = NewCounted(1);
    a->AddItem(second, 1);
    b->AddItem(second, 1);
    DestroyWithItems(gallery);
    EXPECT_EQ(destroyed, 2);
}

TEST_F(GalleryEnd, NeedsNoMemory) {
    for (unsigned number = 0; number < 10; ++number) {
        CQItem* item = NewCounted(number);
        a->AddItem(item, 1);
        if (number % 2 == 0) b->AddItem(item, 0);
        if (number % 3 == 0) gallery->AddItem2Map(item, reinterpret_cast<std::uintptr_t>(a));
    }
    const MemoryFaults none(1, true);
    DestroyWithItems(gallery);
    EXPECT_EQ(destroyed, 10);
}

// What the host does with them is its own business otherwise.
TEST_F(GalleryEnd, ItemsOfAnotherDatabase_AreLeftAloneByAnOrdinaryEnd) {
    const std::unique_ptr<CQItem> item(NewCounted(1));
    a->AddItem(item.get(), 1);
    delete gallery;
    EXPECT_EQ(destroyed, 0);
}

TEST_F(GalleryEnd, GalleryOfTheDocument_LeavesTheDocument) {
    CQGalleryDoc document;
    ASSERT_EQ(document.AddGallery(gallery), 1);
    a->AddItem(NewCounted(1), 1);
    DestroyWithItems(gallery);
    EXPECT_EQ(destroyed, 1);
    EXPECT_TRUE(document.GetGalleryList().IsEmpty());
}

}  // namespace
}  // namespace qfc::test
