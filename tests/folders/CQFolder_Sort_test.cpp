#include "folders/ItemOrder.h"
#include "tests/folders/FolderBuilders.h"

#include <cstdio>
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

TEST(CQFolderSort, ManySubFoldersOfFewIndexes_StayInOrderAmongEqualOnes) {
    CQFolder root;
    const TiedFolders tied = ManyTiedFolders();
    for (const auto& [name, index] : tied.folders) AddSub(root, name.c_str())->SetIndex(index);
    EXPECT_EQ(root.SortSubFolder(), 1);
    EXPECT_EQ(Names(root.GetFolderList()), tied.sorted);
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

// The twelve numbers of a description, or none.
std::vector<int> ScannedDate(const CQItem& item) {
    std::vector<int> d(12);
    const int read = std::sscanf(item.GetDescription(), "%d%d%d %d%d%d %d%d%d %d%d%d", &d[0], &d[1], &d[2], &d[3],
                                 &d[4], &d[5], &d[6], &d[7], &d[8], &d[9], &d[10], &d[11]);
    return read == 12 ? d : std::vector<int>{};
}

// Three words, whose order tells the kinds apart.
std::string WordOfKind(DWORD type) {
    if (type == 2 || type == 0x80000) return "Audio";
    return type == 4 || type == 0x100000 || type == 0x800 ? "Image" : "Movie";
}

// Negative when the later item belongs in front of the earlier one, as the rule of each type tells it.
int CompareAsTold(const CQItem& earlier, const CQItem& later, DWORD type, int ascending) {
    const auto directed = [&](int result) { return ascending != 0 ? result : -result; };
    if (type == 2) return directed(WordOfKind(later.GetItemType()).compare(WordOfKind(earlier.GetItemType())));
    if (type != 1) return directed(later.GetItemName().CompareNoCase(earlier.GetItemName()));
    const auto a = ScannedDate(earlier);
    const auto b = ScannedDate(later);
    if (a.empty()) return b.empty() ? 0 : -1;
    if (b.empty()) return 1;
    if ((a[0] == 0) != (b[0] == 0)) return a[0] == 0 ? -1 : 1;
    return a == b ? 0 : directed(a < b ? 1 : -1);
}

// Inserts each item behind the last one it does not belong in front of, comparing two at a time.
std::vector<CQItem*> InsertionSorted(std::vector<CQItem*> items, DWORD type, int ascending) {
    for (std::size_t next = 1; next < items.size(); ++next) {
        CQItem* item = items[next];
        std::size_t place = next;
        while (place > 0 && CompareAsTold(*items[place - 1], *item, type, ascending) < 0) {
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

}  // namespace
}  // namespace qfc::test
