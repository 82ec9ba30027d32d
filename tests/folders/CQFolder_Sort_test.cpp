#include "folders/FolderConstants.h"
#include "folders/GlobalProc.h"
#include "folders/ItemOrder.h"
#include "platform/framework/Exceptions.h"
#include "tests/folders/FolderBuilders.h"

#include <gtest/gtest.h>
#include <memory>

namespace qfc::test {
namespace {

using Texts = std::vector<std::string>;

TEST(CQFolderSort, SubFolders_AreOrderedByIndexAndStayInOrderWhenEqual) {
    CQFolder root;
    const struct {
        const char* name;
        int index;
    } rows[] = {{"a", 2}, {"b", -1}, {"c", 2}, {"d", 1}, {"e", -1}};
    for (const auto& row : rows) AddSub(root, row.name)->SetIndex(row.index);
    EXPECT_EQ(root.SortSubFolder(), 1);
    EXPECT_EQ(Names(root.GetFolderList()), (Texts{"b", "e", "d", "a", "c"}));
}

TEST(CQFolderSort, SubFolders_NullEntriesAreDroppedFromTwoEntriesOn) {
    CQFolder root;
    EXPECT_EQ(root.SortSubFolder(), 0);
    AddSub(root, "a");
    root.GetFolderList()->AddHead(nullptr);
    EXPECT_EQ(root.SortSubFolder(), 1);
    EXPECT_EQ(Names(root.GetFolderList()), Texts{"a"});
    EXPECT_EQ(root.SortSubFolder(), 1);
}

TEST(CQFolderSort, SubFolders_NullEntriesAmongUnorderedOnesAreDropped) {
    CQFolder root;
    for (const int index : {4, 2, 3, 1}) AddSub(root, std::to_string(index).c_str())->SetIndex(index);
    CQFolder::FolderList* list = root.GetFolderList();
    list->AddHead(nullptr);
    list->InsertAfter(list->FindIndex(2), nullptr);
    list->AddTail(nullptr);
    EXPECT_EQ(root.SortSubFolder(), 1);
    EXPECT_EQ(Names(list), (Texts{"1", "2", "3", "4"}));
    EXPECT_EQ(list->GetCount(), 4);
}

Texts Sorted(const std::vector<const char*>& names, DWORD type, int ascending,
             const std::vector<const char*>& descriptions = {}, const std::vector<DWORD>& types = {}) {
    CQFolder folder;
    for (std::size_t i = 0; i < names.size(); ++i) {
        CQItem* item = AddNew(folder, static_cast<unsigned>(i + 1), names[i], types.empty() ? 1 : types[i]);
        if (!descriptions.empty()) item->GetDescription() = descriptions[i];
    }
    EXPECT_EQ(folder.SortingAllItem(type, ascending), 1);
    return ItemNames(folder.GetItemArray());
}

TEST(CQFolderSort, ByName_IgnoresCaseAndIsStable) {
    EXPECT_EQ(Sorted({"b", "A", "a", "B", "_"}, 0, 1), (Texts{"_", "A", "a", "b", "B"}));
    EXPECT_EQ(Sorted({"b", "A", "a", "B"}, 0, 0), (Texts{"b", "B", "A", "a"}));
    EXPECT_EQ(Sorted({"b", "a"}, 77, 1), (Texts{"a", "b"}));
}

TEST(CQFolderSort, ByKind_UsesTheKindWords) {
    const struct {
        DWORD type;
        const char* word;
    } rows[] = {
        {2, "Audio"}, {0x80000, "Audio"},  {4, "Image"},         {0x100000, "Image"}, {0x800, "Image"},
        {1, "Movie"}, {0x400000, "Movie"}, {0x800000, "Movie"},  {64, "Movie"},       {0, "Movie"},
        {3, "Movie"}, {6, "Movie"},        {0x4000000, "Movie"},
    };
    for (const auto& row : rows) EXPECT_STREQ(KindWord(row.type), row.word) << row.type;
    EXPECT_EQ(Sorted({"movie", "image", "audio", "image 2"}, 2, 1, {}, {1, 4, 2, 0x800}),
              (Texts{"audio", "image", "image 2", "movie"}));
    EXPECT_EQ(Sorted({"audio", "movie", "image"}, 2, 0, {}, {2, 1, 4}), (Texts{"movie", "image", "audio"}));
}

constexpr const char* kEarly = "2019 1 1 0 0 0 2019 1 1 0 0 0";
constexpr const char* kLate = "2021 1 1 0 0 0 2021 1 1 0 0 0";
constexpr const char* kLater = "2021 1 1 0 0 0 2021 1 1 0 0 1";
constexpr const char* kNoYear = "0 1 1 0 0 0 2021 1 1 0 0 0";
constexpr const char* kUnreadable = "a holiday";

TEST(CQFolderSort, ByDate_ComparesTheTwelveNumbersInOrder) {
    EXPECT_EQ(Sorted({"later", "early", "late"}, 1, 1, {kLater, kEarly, kLate}), (Texts{"early", "late", "later"}));
    EXPECT_EQ(Sorted({"early", "later", "late"}, 1, 0, {kEarly, kLater, kLate}), (Texts{"later", "late", "early"}));
}

TEST(CQFolderSort, ByDate_PutsItemsWithoutADateLastInBothDirections) {
    const std::vector<const char*> texts{kUnreadable, kNoYear, kLate, kEarly, ""};
    const std::vector<const char*> names{"unreadable", "no year", "late", "early", "empty"};
    EXPECT_EQ(Sorted(names, 1, 1, texts), (Texts{"early", "late", "no year", "unreadable", "empty"}));
    EXPECT_EQ(Sorted(names, 1, 0, texts), (Texts{"late", "early", "no year", "unreadable", "empty"}));
}

TEST(CQFolderSort, DateText_NeedsTwelveNumbers) {
    const struct {
        const char* text;
        bool readable;
    } rows[] = {
        {"2024 5 6 1 2 3 4 5 6 7 8 9", true},
        {"2024 5 6 1 2 3 4 5 6 7 8 9 trailing", true},
        {"2024-05-06-10-20-30-1-2-3-4-5-6", true},
        {"  2024\t5\n6 1 2 3 4 5 6 7 8 9", true},
        {"2024 5 6 1 2 3 4 5 6 7 8", false},
        {"2024-05-06 10:20:30", false},
        {"202456", false},
        {"", false},
        {"   ", false},
        {"abc", false},
        {"1,2", false},
        {"0x10 2", false},
    };
    for (const auto& row : rows) EXPECT_EQ(ReadItemDate(row.text).has_value(), row.readable) << row.text;
    const auto limited = ReadItemDate(
        "99999999999999999999999 -99999999999999999999999 2147483647 -2147483648 "
        "2147483648 -2147483649 1 1 1 1 1 1");
    ASSERT_TRUE(limited.has_value());
    EXPECT_EQ(*limited, (ItemDate{2147483647, -2147483647 - 1, 2147483647, -2147483647 - 1, 2147483647, -2147483647 - 1,
                                  1, 1, 1, 1, 1, 1}));
    const auto read = ReadItemDate("007 08 9 -1 +2 3 4 5 6 7 8 9");
    ASSERT_TRUE(read.has_value());
    EXPECT_EQ(*read, (ItemDate{7, 8, 9, -1, 2, 3, 4, 5, 6, 7, 8, 9}));
}

TEST(CQFolderSort, SortingAllItem_NeedsTwoItems) {
    CQFolder folder;
    EXPECT_EQ(folder.SortingAllItem(0, 1), 0);
    AddNew(folder, 1);
    EXPECT_EQ(folder.SortingAllItem(0, 1), 0);
    AddNew(folder, 2);
    EXPECT_EQ(folder.SortingAllItem(0, 1), 1);
}

TEST(CQFolderSort, SortingAllItem_StoresTypeAndDirection) {
    CQFolder folder;
    AddNew(folder, 1);
    AddNew(folder, 2);
    folder.SortingAllItem(2, 1);
    DWORD type = 0;
    int order = 0;
    folder.GetSortInfo(type, order);
    EXPECT_EQ(type, 2u);
    EXPECT_EQ(order, 1);
}

// Inserts each item behind the last one it does not belong in front of, comparing as the texts say.
std::vector<CQItem*> InsertionSorted(std::vector<CQItem*> items, DWORD type, int ascending) {
    for (std::size_t next = 1; next < items.size(); ++next) {
        CQItem* item = items[next];
        std::size_t place = next;
        while (place > 0 && CompareForSort(*items[place - 1], *item, type, ascending) < 0) {
            items[place] = items[place - 1];
            --place;
        }
        items[place] = item;
    }
    return items;
}

TEST(CQFolderSort, SortItems_IsTheLiteralInsertionSort) {
    std::mt19937 random(4711);
    const char* names[] = {"a", "A", "b", "B", "_x", "ab", ""};
    const char* dates[] = {kEarly, kLate, kLater, kNoYear, kUnreadable, "", "0 0 0 0 0 0 0 0 0 0 0 0", "1 2 3"};
    const DWORD kinds[] = {1, 2, 4, 0x800, 0x80000, 0x100000, 0};
    for (int round = 0; round < 300; ++round) {
        std::vector<std::unique_ptr<CQItem>> owned;
        std::vector<CQItem*> items;
        for (std::size_t i = 0; i < random() % 40; ++i) {
            owned.emplace_back(NewItem(static_cast<unsigned>(i), names[random() % 7], kinds[random() % 7]));
            owned.back()->GetDescription() = dates[random() % 8];
            items.push_back(owned.back().get());
        }
        const DWORD type = static_cast<DWORD>(random() % 4);
        const int ascending = static_cast<int>(random() % 2);
        const auto expected = InsertionSorted(items, type, ascending);
        SortItems(items, type, ascending);
        EXPECT_EQ(items, expected) << "type " << type << " ascending " << ascending;
    }
}

int Zero(DWORD, ULONGLONG, std::int64_t, void*) { return 0; }

int CompareIds(DWORD message, ULONGLONG key, std::int64_t item, void* extra) {
    EXPECT_EQ(message, 512u);
    EXPECT_EQ(key, 3u);
    const auto* a = reinterpret_cast<CQItem*>(static_cast<std::intptr_t>(item));
    const auto* b = static_cast<CQItem*>(extra);
    return a->GetDBID() - b->GetDBID();
}

class MultiKeySort : public testing::Test {
protected:
    ~MultiKeySort() override { SetGlobalProc(nullptr); }

    void Fill(const std::vector<const char*>& names) {
        for (std::size_t i = 0; i < names.size(); ++i) AddNew(folder, static_cast<unsigned>(i + 1), names[i]);
    }
    Texts Result(std::vector<int> keys) {
        EXPECT_EQ(folder.Sorting(keys.data(), static_cast<int>(keys.size()), 0, folder.GetItemsCount() - 1), 1);
        return ItemNames(folder.GetItemArray());
    }

    CQFolder folder;
};

TEST_F(MultiKeySort, WithoutAGlobalProcedureNothingMoves) {
    Fill({"c", "a", "b", "a"});
    EXPECT_EQ(Result({0}), (Texts{"c", "a", "b", "a"}));
}

TEST_F(MultiKeySort, WithoutKeysNothingMoves) {
    SetGlobalProc(Zero);
    Fill({"c", "a", "b"});
    int key = 0;
    EXPECT_EQ(folder.Sorting(&key, 0, 0, 2), 1);
    EXPECT_EQ(ItemNames(folder.GetItemArray()), (Texts{"c", "a", "b"}));
}

TEST_F(MultiKeySort, NegativeKeysTellNothingApart) {
    SetGlobalProc(Zero);
    Fill({"c", "a", "b"});
    const Texts likeEqual = Result({5});
    folder.Clear();
    Fill({"c", "a", "b"});
    EXPECT_EQ(Result({-1}), likeEqual);
    EXPECT_EQ(Result({-1, 0}), (Texts{"a", "b", "c"}));
}

TEST_F(MultiKeySort, BuiltInKeysCompareWithoutCase) {
    SetGlobalProc(Zero);
    Fill({"c", "B", "a"});
    EXPECT_EQ(Result({0}), (Texts{"a", "B", "c"}));
    folder.GetItemArray()->GetAt(0)->GetDescription() = "Z";
    folder.GetItemArray()->GetAt(1)->GetDescription() = "y";
    EXPECT_EQ(Result({1}), (Texts{"c", "B", "a"}));
    folder.GetItemArray()->GetAt(0)->GetAnnotation() = "2";
    folder.GetItemArray()->GetAt(1)->GetAnnotation() = "1";
    EXPECT_EQ(Result({2}), (Texts{"a", "B", "c"}));
}

TEST_F(MultiKeySort, LaterKeysDecideAmongEqualOnes) {
    SetGlobalProc(CompareIds);
    Fill({"b", "a", "B", "A"});
    const int ids[] = {4, 3, 2, 1};
    for (int i = 0; i < 4; ++i) folder.GetItemArray()->GetAt(i)->SetDBID(ids[i]);
    EXPECT_EQ(Result({0, 3}), (Texts{"A", "a", "B", "b"}));
    EXPECT_EQ(Result({3}), (Texts{"A", "B", "a", "b"}));
}

TEST_F(MultiKeySort, ResultsOfTheRange) {
    EXPECT_EQ(folder.Sorting(nullptr, 0, 0, 5), 1);
    Fill({"b", "a", "d", "c"});
    int key = 0;
    EXPECT_EQ(folder.Sorting(&key, 1, 1, 1), 0);
    EXPECT_EQ(folder.Sorting(&key, 1, 2, 1), 0);
    SetGlobalProc(Zero);
    EXPECT_EQ(folder.Sorting(&key, 1, 2, 3), 1);
    EXPECT_EQ(ItemNames(folder.GetItemArray()), (Texts{"b", "a", "c", "d"}));
    const auto isRefused = [&](int first, int last) {
        try {
            folder.Sorting(&key, 1, first, last);
            return false;
        } catch (CInvalidArgException* exception) {
            exception->Delete();
            return true;
        }
    };
    EXPECT_TRUE(isRefused(0, 4));
    EXPECT_TRUE(isRefused(-1, 3));
}

TEST_F(MultiKeySort, RandomArraysEndUpInOrder) {
    SetGlobalProc(CompareIds);
    std::mt19937 random(5);
    for (int round = 0; round < 100; ++round) {
        CQFolder random_folder;
        const unsigned count = 2 + random() % 60;
        for (unsigned i = 0; i < count; ++i) AddNew(random_folder, i)->SetDBID(static_cast<int>(random() % 20));
        int key = 3;
        random_folder.Sorting(&key, 1, 0, static_cast<int>(count) - 1);
        const auto* items = random_folder.GetItemArray();
        for (int i = 1; i < items->GetSize(); ++i) {
            EXPECT_LE(items->GetAt(i - 1)->GetDBID(), items->GetAt(i)->GetDBID());
        }
    }
}

TEST_F(MultiKeySort, AnArrayInOrderDoesNotOverflowTheStack) {
    SetGlobalProc(CompareIds);
    for (unsigned i = 0; i < 5000; ++i) {
        CQItem* item = NewItem(i);
        item->SetDBID(static_cast<int>(i));
        folder.AddItem(item, 1);
    }
    Result({3});
    EXPECT_EQ(folder.GetItemArray()->GetAt(4999)->GetDBID(), 4999);
}

int Nonsense(DWORD, ULONGLONG, std::int64_t, void*) {
    static unsigned state = 1;
    state = state * 1664525 + 1013904223;
    return static_cast<int>(state >> 30) - 1;
}

TEST_F(MultiKeySort, AProcedureThatContradictsItselfLosesNoItem) {
    SetGlobalProc(Nonsense);
    for (unsigned i = 0; i < 200; ++i) AddNew(folder, i + 1);
    Result({3});
    for (unsigned i = 0; i < 200; ++i) EXPECT_TRUE(folder.HasItem(GuidOf(i + 1), 0)) << i;
}

}  // namespace
}  // namespace qfc::test
