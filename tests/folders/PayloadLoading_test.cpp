#include "items/ItemTypes.h"
#include "tests/folders/FolderBuilders.h"
#include "tests/items/ItemLibrary.h"

#include <gtest/gtest.h>
#include <memory>

// Which payloads folder operations bring into memory.
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

}  // namespace
}  // namespace qfc::test
