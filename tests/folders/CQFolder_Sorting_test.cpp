#include "folders/FolderConstants.h"
#include "folders/GlobalProc.h"
#include "platform/framework/Exceptions.h"
#include "tests/folders/FolderBuilders.h"

#include <gtest/gtest.h>
#include <random>
#include <utility>

// Sorting by several keys.
namespace qfc::test {
namespace {

using Texts = std::vector<std::string>;

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

TEST_F(MultiKeySort, MovesEveryItemAsTheRecursiveSortDoes) {
    std::mt19937 random(5);
    SetGlobalProc(Zero);
    for (int round = 0; round < 300; ++round) {
        CQFolder filled;
        const int count = 2 + static_cast<int>(random() % 12);
        for (int i = 0; i < count; ++i) {
            AddNew(filled, static_cast<unsigned>(i), ("n" + std::to_string(random() % 4)).c_str());
        }
        const int first = static_cast<int>(random() % static_cast<unsigned>(count - 1));
        const int last = first + 1 + static_cast<int>(random() % static_cast<unsigned>(count - 1 - first));
        std::vector<CQItem*> expected(filled.GetItemArray()->begin(), filled.GetItemArray()->end());
        QuickSort(expected, first, last);
        int keys[] = {kKeyName};
        ASSERT_EQ(filled.Sorting(keys, 1, first, last), 1);
        const std::vector<CQItem*> sorted(filled.GetItemArray()->begin(), filled.GetItemArray()->end());
        ASSERT_EQ(sorted, expected) << "round " << round << ", " << first << " to " << last;
    }
}

}  // namespace
}  // namespace qfc::test
