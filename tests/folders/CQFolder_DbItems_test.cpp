#include "tests/folders/StoredItemsFixture.h"

#include <gtest/gtest.h>
#include <memory>

namespace qfc::test {
namespace {

using Texts = std::vector<std::string>;
using Row = RawDb::Row;

class CQFolder_DbItems : public StoredItemsFixture {};

// --- Adding ------------------------------------------------------------------------------------------------------

TEST_F(CQFolder_DbItems, AddItemDb_StoresTheItemAndItsPlaceAndTakesIt) {
    StoredItem(a, 1);
    CQItem* item = NewCounted(2, 8);
    GiveBlackBox(*item, Pattern(100));
    EXPECT_EQ(a.AddItemDb(item, 1), 1);
    EXPECT_EQ(Placements(a), (std::vector<Row>{{"'i1'", "0"}, {"'i2'", "1"}}));
    EXPECT_EQ(Count("CACHE_DATA_TABLE"), "1");
    EXPECT_EQ(item->GetParentFolder(), &a);
    EXPECT_EQ(item->fnGetDbTools(), library.Tools());
    EXPECT_EQ(a.GetAdopt() & 8u, 8u);
    EXPECT_EQ(gallery.GetItemParentList(GuidOf(2)), std::list<ULONGLONG>{reinterpret_cast<std::uintptr_t>(&a)});
}

TEST_F(CQFolder_DbItems, AddItemDb_RefusesNullAndATreeWithoutGallery) {
    EXPECT_EQ(a.AddItemDb(nullptr, 1), 0);
    CQFolder plain;
    CQItem item;
    EXPECT_EQ(plain.AddItemDb(&item, 0), 0);
    EXPECT_EQ(plain.GetItemArray(), nullptr);
}

TEST_F(CQFolder_DbItems, AddItemDb_OfAGuidTheFolderHoldsWritesNothing) {
    StoredItem(a, 1);
    const std::unique_ptr<CQItem> same(NewCounted(1));
    same->SetItemName("other name");
    const std::string before = library.Raw().Dump();
    EXPECT_EQ(a.AddItemDb(same.get(), 1), 0);
    EXPECT_EQ(library.Raw().Dump(), before);
    EXPECT_EQ(same->fnGetDbTools(), nullptr);
    EXPECT_EQ(a.GetItemsCount(), 1);
}

TEST_F(CQFolder_DbItems, AddItemDb_ThatTheDatabaseRefusesChangesNothingButTheItemsTools) {
    RefuseInserts("RELATION_TABLE");
    const std::unique_ptr<CQItem> item(NewCounted(1, 8));
    EXPECT_EQ(a.AddItemDb(item.get(), 1), 0);
    EXPECT_EQ(a.GetItemsCount(), 0);
    EXPECT_EQ(item->GetParentFolder(), nullptr);
    EXPECT_EQ(a.GetAdopt(), 0u);
    EXPECT_TRUE(gallery.GetItemParentList(GuidOf(1)).empty());
    EXPECT_EQ(item->fnGetDbTools(), library.Tools());
    EXPECT_EQ(Count("ITEM_TABLE"), "0");
}

TEST_F(CQFolder_DbItems, AddItemDb_WithoutWritingOnlyAppends) {
    CQItem* item = NewCounted(1, 8);
    EXPECT_EQ(a.AddItemDb(item, 0), 1);
    EXPECT_EQ(Count("ITEM_TABLE"), "0");
    EXPECT_EQ(item->GetParentFolder(), &a);
    EXPECT_EQ(a.GetAdopt(), 8u);
    EXPECT_TRUE(gallery.GetItemParentList(GuidOf(1)).empty());
}

TEST_F(CQFolder_DbItems, AddItemDb_ToAFolderWithoutRowWritesNothing) {
    CQFolder* unstored = AddSub(gallery, "unstored");
    const std::unique_ptr<CQItem> item(NewCounted(1));
    EXPECT_EQ(unstored->AddItemDb(item.get(), 1), 0);
    EXPECT_EQ(Count("RELATION_TABLE"), "0");
    EXPECT_EQ(unstored->GetItemsCount(), 0);
}

TEST_F(CQFolder_DbItems, AddItemDb_OfAStoredItemToASecondFolderSharesIt) {
    CQItem* item = StoredItem(a, 1);
    EXPECT_EQ(b.AddItemDb(item, 1), 1);
    EXPECT_EQ(Count("ITEM_TABLE"), "1");
    EXPECT_EQ(Count("RELATION_TABLE"), "2");
    EXPECT_EQ(item->GetParentFolder(), &b);
    EXPECT_EQ(gallery.GetItemParentList(GuidOf(1)).size(), 2u);
}

// --- Removing ----------------------------------------------------------------------------------------------------

TEST_F(CQFolder_DbItems, RemoveItemDB_TakesThePlacementAndWithTheLastOneTheItem) {
    CQItem* item = StoredItem(a, 1);
    b.AddItemDb(item, 1);
    EXPECT_EQ(b.RemoveItemDB(GuidOf(1), 0), 1);
    EXPECT_EQ(destroyed, 0);
    EXPECT_EQ(item->GetParentFolder(), &a);
    EXPECT_EQ(Count("ITEM_TABLE"), "1");
    EXPECT_EQ(a.RemoveItemDB(GuidOf(1), 0), 1);
    EXPECT_EQ(destroyed, 1);
    EXPECT_EQ(Count("ITEM_TABLE"), "0");
}

TEST_F(CQFolder_DbItems, RemoveItemDB_OfAGuidTheFolderDoesNotHoldFails) {
    EXPECT_EQ(a.RemoveItemDB(GuidOf(1), 0), 0);
    StoredItem(a, 1);
    EXPECT_EQ(a.RemoveItemDB(GuidOf(2), 0), 0);
    EXPECT_EQ(b.RemoveItemDB(GuidOf(1), 0), 0);
    EXPECT_EQ(a.GetItemsCount(), 1);
}

TEST_F(CQFolder_DbItems, RemoveItemDB_NeedsARowToolsAndAGallery) {
    CQFolder* unstored = AddSub(gallery, "unstored");
    AddNew(*unstored, 1);
    EXPECT_EQ(unstored->RemoveItemDB(GuidOf(1), 0), 0);
    CQFolder plain;
    AddNew(plain, 1);
    FolderInside::DbId(plain) = 5;
    EXPECT_EQ(plain.RemoveItemDB(GuidOf(1), 0), 0);
    plain.SetDBTools(library.Tools());
    EXPECT_EQ(plain.RemoveItemDB(GuidOf(1), 0), 0);
    EXPECT_EQ(plain.RemoveItemDB(GuidOf(1), 1), 0);
}

TEST_F(CQFolder_DbItems, RemoveItemDB_RecursiveTakesItFromEveryFolderWhereverItIsCalled) {
    CQFolder* below = AddSub(b, "below");
    below->InsertOrUpdateFolder();
    CQItem* item = StoredItem(a, 1);
    b.AddItemDb(item, 1);
    below->AddItemDb(item, 1);
    StoredItem(a, 2);
    EXPECT_EQ(below->RemoveItemDB(GuidOf(1), 1), 1);
    EXPECT_EQ(Count("RELATION_TABLE"), "1");
    EXPECT_EQ(Count("ITEM_TABLE"), "1");
    EXPECT_EQ(destroyed, 1);
    EXPECT_EQ(a.RemoveItemDB(GuidOf(77), 1), 1);
}

TEST_F(CQFolder_DbItems, RemoveItemDB_RecursiveLeavesTheRootsOwnItems) {
    CQItem* item = StoredItem(a, 1);
    ASSERT_EQ(gallery.AddItemDb(item, 1), 1);
    EXPECT_EQ(gallery.RemoveItemDB(GuidOf(1), 1), 1);
    EXPECT_EQ(gallery.GetItemsCount(), 1);
    EXPECT_EQ(a.HasItem(GuidOf(1), 0), 0);
    EXPECT_EQ(Count("RELATION_TABLE where ITEM_ID = " + BlobLiteral(GuidOf(1))), "1");
}

TEST_F(CQFolder_DbItems, RemoveItemDB_GivesTheResultOfTheDatabase) {
    StoredItem(a, 1);
    RefuseDeletes("RELATION_TABLE");
    EXPECT_EQ(a.RemoveItemDB(GuidOf(1), 0), 0);
    EXPECT_EQ(Count("RELATION_TABLE"), "1");
}

TEST_F(CQFolder_DbItems, RemoveItemDB_OfAnItemTheGalleryDoesNotKnowLeavesTheObject) {
    const std::unique_ptr<CQItem> item(NewCounted(1));
    a.AddItemDb(item.get(), 0);
    a.RemoveItemDB(GuidOf(1), 0);
    EXPECT_EQ(destroyed, 0);
    EXPECT_EQ(a.GetItemsCount(), 0);
}

TEST_F(CQFolder_DbItems, DeletingRemoval_KeepsTheRowAndPayloadsOfAnItemThatOthersHold) {
    CQItem* item = NewCounted(1);
    GiveBlackBox(*item, Pattern(500));
    a.AddItemDb(item, 1);
    b.AddItemDb(item, 1);
    EXPECT_EQ(a.RemoveItem(GuidOf(1), 1), 1);
    EXPECT_EQ(Count("ITEM_TABLE"), "1");
    EXPECT_EQ(Count("CACHE_DATA_TABLE"), "1");
    EXPECT_EQ(Count("RELATION_TABLE"), "1");
    EXPECT_EQ(destroyed, 0);
    EXPECT_EQ(b.RemoveItem(GuidOf(1), 1), 1);
    EXPECT_EQ(Count("ITEM_TABLE"), "0");
    EXPECT_EQ(Count("CACHE_DATA_TABLE"), "0");
    EXPECT_EQ(destroyed, 1);
}

TEST_F(CQFolder_DbItems, DeletingRemoval_OfARefusedPlacementGives0) {
    StoredItem(a, 1);
    RefuseDeletes("RELATION_TABLE");
    EXPECT_EQ(a.RemoveItem(GuidOf(1), 1), 0);
}

TEST_F(CQFolder_DbItems, RemovalByIdAndNumber_RenumbersWhatStoodBehind_ByGuidDoesNot) {
    for (unsigned number = 1; number <= 5; ++number) StoredItem(a, number)->SetDBID(static_cast<int>(number));
    a.RemoveItem(GuidOf(1), 1);
    EXPECT_EQ(Placements(a), (std::vector<Row>{{"'i2'", "1"}, {"'i3'", "2"}, {"'i4'", "3"}, {"'i5'", "4"}}));
    a.RemoveItem(3, 1);
    EXPECT_EQ(Placements(a), (std::vector<Row>{{"'i2'", "1"}, {"'i4'", "1"}, {"'i5'", "2"}}));
    a.RemoveItem2(0, 1);
    EXPECT_EQ(Placements(a), (std::vector<Row>{{"'i4'", "0"}, {"'i5'", "1"}}));
}

TEST_F(CQFolder_DbItems, RemovalWithoutDeleting_LeavesTheDatabaseAlone) {
    for (unsigned number = 1; number <= 3; ++number) StoredItem(a, number)->SetDBID(static_cast<int>(number));
    const std::string before = library.Raw().Dump();
    CQItem* item = a.GetItemArray()->GetAt(0);
    a.RemoveItem(1, 0);
    EXPECT_EQ(library.Raw().Dump(), before);
    EXPECT_TRUE(item->GetItemName() == "i1");
    gallery.RemoveItemFromMap(item, reinterpret_cast<std::uintptr_t>(&a));
}

TEST_F(CQFolder_DbItems, RemoveAllItems_EmptiesTheFolderInTheDatabase) {
    for (unsigned number = 1; number <= 4; ++number) StoredItem(a, number);
    StoredItem(b, 9);
    EXPECT_EQ(a.RemoveAllItems(1), 1);
    EXPECT_EQ(destroyed, 4);
    EXPECT_EQ(Count("RELATION_TABLE"), "1");
    EXPECT_EQ(Count("ITEM_TABLE"), "1");
}

// --- Updating ----------------------------------------------------------------------------------------------------

TEST_F(CQFolder_DbItems, UpdateItemDB_CopiesTheGroupsAndStoresTheFirstMatch) {
    CQItem* item = StoredItem(a, 1);
    CQItem source("renamed");
    source.GetDescription() = "described";
    EXPECT_EQ(gallery.UpdateItemDB(&source, GuidOf(1), 1), 1);
    EXPECT_TRUE(item->GetItemName() == "renamed");
    EXPECT_EQ(library.Raw().Cell("select ITEM_NAME from ITEM_TABLE"), "'renamed'");
    EXPECT_EQ(library.Raw().Cell("select DESCRIPTION from ITEM_TABLE"), "'described'");
}

TEST_F(CQFolder_DbItems, UpdateItemDB_Gives1WithoutAMatchAndLeavesOutTheFoldersOwnItems) {
    CQItem* own = NewItem(5, "own");
    gallery.AddItem(own, 1);
    CQItem source("renamed");
    EXPECT_EQ(gallery.UpdateItemDB(&source, GuidOf(5), 1), 1);
    EXPECT_TRUE(own->GetItemName() == "own");
    EXPECT_EQ(gallery.UpdateItemDB(nullptr, GuidOf(5), 1), 0);
}

TEST_F(CQFolder_DbItems, UpdateItemDB_GivesTheResultOfTheDatabase) {
    StoredItem(a, 1);
    RefuseInserts("ITEM_TABLE");
    CQItem source("renamed");
    EXPECT_EQ(gallery.UpdateItemDB(&source, GuidOf(1), 1), 0);
}

TEST_F(CQFolder_DbItems, ReOrder_StoresThePositionsOfTheRange) {
    for (unsigned number = 1; number <= 5; ++number) StoredItem(a, number);
    const auto scramble = [&] { library.Raw().Exec("update RELATION_TABLE set ITEM_INDEX = 90"); };
    const auto indexes = [&] {
        Texts texts;
        for (const Row& row : library.Raw().Rows("select ITEM_INDEX from RELATION_TABLE join ITEM_TABLE using "
                                                 "(ITEM_ID) order by ITEM_NAME")) {
            texts.push_back(row.at(0));
        }
        return texts;
    };
    const struct {
        int first;
        int count;
        Texts expected;
    } rows[] = {
        {2, -1, {"90", "90", "2", "3", "4"}},    {0, -1, {"0", "1", "2", "3", "4"}},
        {1, 3, {"90", "1", "2", "90", "90"}},    {3, 100, {"90", "90", "90", "3", "4"}},
        {5, -1, {"90", "90", "90", "90", "90"}}, {9, 12, {"90", "90", "90", "90", "90"}},
        {-3, 1, {"0", "90", "90", "90", "90"}},
    };
    for (const auto& row : rows) {
        scramble();
        EXPECT_EQ(a.ReOrderItemsDb(row.first, row.count), 1);
        EXPECT_EQ(indexes(), row.expected) << row.first << " " << row.count;
    }
}

TEST_F(CQFolder_DbItems, ReOrder_NeedsAnItemArrayAndPassesOverNulls) {
    EXPECT_EQ(a.ReOrderItemsDb(0, -1), 0);
    StoredItem(a, 1);
    a.GetItemArray()->InsertAt(0, nullptr);
    EXPECT_EQ(a.ReOrderItemsDb(0, -1), 1);
    EXPECT_EQ(Placements(a), (std::vector<Row>{{"'i1'", "1"}}));
}

TEST_F(CQFolder_DbItems, ReOrder_InAFolderWithoutRowWritesNothing) {
    CQItem* item = StoredItem(a, 1);
    CQFolder* unstored = AddSub(gallery, "unstored");
    unstored->AddItem(item, 0);
    library.Raw().Exec(
        "insert into RELATION_TABLE(PARENT_ID, ITEM_ID, ITEM_INDEX) select -1, ITEM_ID, 90 from "
        "RELATION_TABLE");
    const std::string before = library.Raw().Dump();
    EXPECT_EQ(unstored->ReOrderItemsDb(0, -1), 1);
    EXPECT_EQ(library.Raw().Dump(), before);
}

}  // namespace
}  // namespace qfc::test
