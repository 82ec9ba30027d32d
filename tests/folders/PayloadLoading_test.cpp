#include "folders/FolderConstants.h"
#include "folders/GlobalProc.h"
#include "items/ItemTypes.h"
#include "tests/folders/FolderBuilders.h"
#include "tests/items/ItemLibrary.h"

#include <gtest/gtest.h>
#include <memory>
#include <random>

// Which payloads folder operations bring into memory, and how far a failing load gets.
namespace qfc::test {
namespace {

using Texts = std::vector<std::string>;

// Items 1, 2, 3 with all payloads in folder A, loaded anew: database id and number tell them apart.
class PayloadLoading : public testing::Test {
protected:
    PayloadLoading() {
        {
            StoredTree stored(library.Tools());
            for (unsigned number = 1; number <= 3; ++number) {
                CQItem* item = NewFilledItem(number);
                item->SetDBID(static_cast<int>(number));
                EXPECT_EQ(stored.pA->AddItemDb(item, 1), 1);
            }
        }
        tree = std::make_unique<LoadedTree>(library.Tools());
        for (unsigned number = 1; number <= 3; ++number) items.push_back(tree->Item(number));
    }
    // Per item: "b" for a black box in memory, "f" for a film.
    Texts Loaded() const {
        Texts texts;
        for (const CQItem* item : items) {
            texts.emplace_back(std::string(item->PayloadInMemory(kBlackBox).empty() ? "" : "b") +
                               (item->PayloadInMemory(kFilm).empty() ? "" : "f"));
        }
        return texts;
    }

    CurrentLibrary library;
    std::unique_ptr<LoadedTree> tree;
    std::vector<CQItem*> items;
};

TEST_F(PayloadLoading, Load_BringsNone) { EXPECT_EQ(Loaded(), (Texts{"", "", ""})); }

TEST_F(PayloadLoading, ItemById_LoadsEveryVisitedBlackBoxAndTheFilmOfTheOneFound) {
    EXPECT_EQ(tree->pA->GetItemByItemId(2), items[1]);
    EXPECT_EQ(Loaded(), (Texts{"b", "bf", ""}));
}

TEST_F(PayloadLoading, ItemByIdWithoutItsAttributeBit_LoadsNoFilm) {
    items[1]->GetAttrib() = 0;
    EXPECT_EQ(tree->pA->GetItemByItemId(2), items[1]);
    EXPECT_EQ(Loaded(), (Texts{"b", "b", ""}));
}

TEST_F(PayloadLoading, ItemByNumber_LoadsTheOneFoundOnly) {
    EXPECT_EQ(tree->pA->GetItemByItemNumber(items[1]->GetNumber()), items[1]);
    EXPECT_EQ(Loaded(), (Texts{"", "bf", ""}));
}

TEST_F(PayloadLoading, RemovalByGuid_LoadsEveryVisitedBlackBox) {
    EXPECT_EQ(tree->pA->RemoveItem(GuidOf(2), 0), 1);
    EXPECT_EQ(Loaded(), (Texts{"b", "b", ""}));
}

TEST_F(PayloadLoading, RemovalById_LoadsEveryVisitedBlackBox) {
    EXPECT_EQ(tree->pA->RemoveItem(2, 0), 1);
    EXPECT_EQ(Loaded(), (Texts{"b", "b", ""}));
}

TEST_F(PayloadLoading, RemovalByNumber_LoadsNothing) {
    EXPECT_EQ(tree->pA->RemoveItem2(items[1]->GetNumber(), 0), 1);
    EXPECT_EQ(Loaded(), (Texts{"", "", ""}));
}

TEST_F(PayloadLoading, Sorting_LoadsEveryBlackBox) {
    EXPECT_EQ(tree->pA->SortingAllItem(0, 1), 1);
    EXPECT_EQ(Loaded(), (Texts{"b", "b", "b"}));
}

TEST_F(PayloadLoading, Update_LoadsTheBlackBoxOfTheMatch) {
    CQItem source("renamed");
    EXPECT_EQ(tree->Gallery().UpdateItemDB(&source, GuidOf(2), copy_mask::kCache), 1);
    EXPECT_EQ(Loaded(), (Texts{"", "b", ""}));
}

TEST_F(PayloadLoading, CopiedItems_BringBlackBoxAndFilm) {
    CQFolder target;
    EXPECT_EQ(target.CopyItems(tree->pA, 0), 1);
    EXPECT_EQ(Loaded(), (Texts{"bf", "bf", "bf"}));
    ASSERT_EQ(target.GetItemsCount(), 3);
    for (int position = 0; position < 3; ++position) {
        const CQItem* copy = target.GetItemArray()->GetAt(position);
        const CQItem* source = items[static_cast<std::size_t>(position)];
        for (const int kind : {kBitmapCache, kBlackBox, kFilm})
            EXPECT_EQ(InMemory(*copy, kind), InMemory(*source, kind));
    }
}

// --- Rows that are missing -----------------------------------------------------------------------------------------

TEST_F(PayloadLoading, RecursiveRemoval_LeavesTheRootsOwnItems) {
    CQGallery& gallery = tree->Gallery();
    ASSERT_EQ(gallery.AddItemDb(items[0], 1), 1);
    EXPECT_EQ(gallery.RemoveItemDB(GuidOf(1), 1), 1);
    EXPECT_EQ(gallery.GetItemsCount(), 1);
    EXPECT_EQ(tree->pA->HasItem(GuidOf(1), 0), 0);
    EXPECT_EQ(library.Raw().Cell("select count(*) from RELATION_TABLE where ITEM_ID = " + BlobLiteral(GuidOf(1))), "1");
}

TEST_F(PayloadLoading, TreeOfAnUnknownGallery_KeepsTheNegativeAnswer) {
    CQGallery other;
    other.SetFolderID(77);
    other.SetDBTools(library.Tools());
    FolderInside::DbId(other) = 5;
    EXPECT_EQ(other.LoadTreeFromDb(), 0);
    EXPECT_LT(other.GetDBId(), 0);
}

// --- Quicksort -----------------------------------------------------------------------------------------------------

int NothingToTell(DWORD, ULONGLONG, std::int64_t, void*) { return 0; }

// The sort as it is told: recursively, on names.
void QuickSort(std::vector<CQItem*>& v, int first, int last) {
    const auto compare = [](CQItem* a, CQItem* b) { return a->GetItemName().CompareNoCase(b->GetItemName()); };
    const auto at = [&](int i) -> CQItem*& { return v[static_cast<std::size_t>(i)]; };
    if (compare(at(first), at(last)) > 0) std::swap(at(first), at(last));
    CQItem* pivot = at(first);
    int i = first;
    int j = last + 1;
    do {
        do ++i;
        while (i < last && compare(at(i), pivot) < 0);
        do --j;
        while (j > first && compare(at(j), pivot) > 0);
        if (i < j) std::swap(at(i), at(j));
    } while (i < j);
    if (first != j) std::swap(at(first), at(j));
    if (first < j - 1) QuickSort(v, first, j - 1);
    if (j + 1 < last) QuickSort(v, j + 1, last);
}

TEST(QuickSortOfItems, MovesEveryItemAsTheRecursiveSortDoes) {
    std::mt19937 random(5);
    SetGlobalProc(NothingToTell);
    for (int round = 0; round < 300; ++round) {
        CQFolder folder;
        const int count = 2 + static_cast<int>(random() % 12);
        for (int i = 0; i < count; ++i) {
            AddNew(folder, static_cast<unsigned>(i), ("n" + std::to_string(random() % 4)).c_str());
        }
        const int first = static_cast<int>(random() % static_cast<unsigned>(count - 1));
        const int last = first + 1 + static_cast<int>(random() % static_cast<unsigned>(count - 1 - first));
        std::vector<CQItem*> expected(folder.GetItemArray()->begin(), folder.GetItemArray()->end());
        QuickSort(expected, first, last);
        int keys[] = {kKeyName};
        ASSERT_EQ(folder.Sorting(keys, 1, first, last), 1);
        const std::vector<CQItem*> sorted(folder.GetItemArray()->begin(), folder.GetItemArray()->end());
        ASSERT_EQ(sorted, expected) << "round " << round << ", " << first << " to " << last;
    }
    SetGlobalProc(nullptr);
}

}  // namespace
}  // namespace qfc::test
