#include "folders/FolderWalk.h"

#include "tests/folders/FolderBuilders.h"
#include "tests/support/MemoryFaults.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <memory>
#include <optional>
#include <random>
#include <vector>

namespace qfc::test {
namespace {

// The walk of the texts, step by step: from the first sub-folder with NextFolder until the stop rule holds.
std::vector<CQFolder*> LiteralWalk(CQFolder& start, bool backAtStart) {
    std::vector<CQFolder*> met;
    const CQFolder* stop = backAtStart ? &start : start.NextFolder(1);
    CQFolder* folder = start.GetFirstSubFolder();
    if (folder == nullptr) return met;
    do {
        met.push_back(folder);
        folder = folder->NextFolder(0);
    } while (folder != nullptr && folder != stop);
    return met;
}

template <class Range>
std::vector<CQFolder*> Walked(Range&& range) {
    std::vector<CQFolder*> met;
    for (CQFolder* folder : range) met.push_back(folder);
    return met;
}

TEST(FolderWalk, OnRandomTrees_MeetsWhatTheLiteralWalkMeets) {
    std::mt19937 random(20240521);
    for (int round = 0; round < 60; ++round) {
        CQFolder root;
        for (CQFolder* start : GrowRandomTree(root, 1 + round % 25, random)) {
            EXPECT_EQ(Walked(SubtreeOf(*start)), LiteralWalk(*start, false));
            EXPECT_EQ(Walked(UntilBackAt(*start)), LiteralWalk(*start, true));
        }
    }
}

TEST(FolderWalk, Subtree_IsThePreOrderOfPlainRecursion) {
    std::mt19937 random(7);
    CQFolder root;
    for (CQFolder* start : GrowRandomTree(root, 60, random)) {
        std::vector<CQFolder*> expected;
        ListBelow(*start, expected);
        EXPECT_EQ(Walked(SubtreeOf(*start)), expected);
    }
}

TEST(FolderWalk, UntilBackAt_FromAnInnerFolderMeetsTheWholeTreeButItself) {
    CQFolder root;
    CQFolder* before = AddSub(root, "before");
    CQFolder* start = AddSub(root, "start");
    CQFolder* child = AddSub(*start, "child");
    CQFolder* after = AddSub(root, "after");
    EXPECT_EQ(Walked(UntilBackAt(*start)), (std::vector<CQFolder*>{child, after, &root, before}));
    EXPECT_TRUE(Walked(UntilBackAt(*after)).empty());
}

TEST(FolderWalk, UntilBackAt_FromADetachedFolderEnds) {
    CQFolder root;
    CQFolder* other = AddSub(root, "other");
    const std::unique_ptr<CQFolder> start(AddSub(root, "start"));
    CQFolder* child = AddSub(*start, "child");
    start->DetachParent(0);
    EXPECT_EQ(Walked(UntilBackAt(*start)), (std::vector<CQFolder*>{child, &root, other}));
    EXPECT_EQ(Walked(SubtreeOf(*start)), std::vector<CQFolder*>{child});
}

TEST(FolderWalk, NullEntries_ArePassedOver) {
    CQFolder root;
    CQFolder* a = AddSub(root, "A");
    root.GetFolderList()->AddHead(nullptr);
    root.GetFolderList()->AddTail(nullptr);
    EXPECT_EQ(Walked(SubtreeOf(root)), std::vector<CQFolder*>{a});
}

// --- Searches, with memory for the walk and without ------------------------------------------------------------------

class FirstBelowOfATree : public testing::TestWithParam<bool> {
protected:
    template <class Judge>
    static CQFolder* First(CQFolder& top, Judge&& judge) {
        std::optional<MemoryFaults> faults;
        if (GetParam()) faults.emplace(1, true);
        return FirstBelow(top, judge);
    }
    // All that are met, without what is below those passed by.
    static std::vector<CQFolder*> MetBelow(CQFolder& top, const CQFolder* passedBy = nullptr) {
        std::vector<CQFolder*> met;
        met.reserve(100);
        const auto judge = [&](CQFolder& folder) {
            met.push_back(&folder);
            return &folder == passedBy ? Met::kPassBy : Met::kGoOn;
        };
        EXPECT_EQ(First(top, judge), nullptr);
        return met;
    }
};

TEST_P(FirstBelowOfATree, MeetsThePreOrderOfPlainRecursion) {
    std::mt19937 random(11);
    CQFolder root;
    for (CQFolder* start : GrowRandomTree(root, 60, random)) {
        std::vector<CQFolder*> expected;
        ListBelow(*start, expected);
        EXPECT_EQ(MetBelow(*start), expected);
        for (std::size_t i = 0; i < expected.size(); i += 5) {
            std::vector<CQFolder*> below;
            ListBelow(*expected[i], below);
            std::vector<CQFolder*> others = expected;
            std::erase_if(others, [&](CQFolder* folder) { return std::ranges::count(below, folder) != 0; });
            EXPECT_EQ(MetBelow(*start, expected[i]), others);
        }
    }
}

TEST_P(FirstBelowOfATree, GivesTheFirstThatIsFound) {
    CQFolder root;
    CQFolder* a = AddSub(root, "A");
    CQFolder* below = AddSub(*a, "below");
    CQFolder* b = AddSub(root, "B");
    const auto isNot = [](const CQFolder* other) {
        return [=](const CQFolder& folder) { return &folder == other ? Met::kGoOn : Met::kFound; };
    };
    EXPECT_EQ(First(root, isNot(nullptr)), a);
    EXPECT_EQ(First(root, isNot(a)), below);
    EXPECT_EQ(First(*b, isNot(nullptr)), nullptr);
}

TEST_P(FirstBelowOfATree, PassesOverNullEntriesAndComesBackFromFoldersPutInByHand) {
    CQFolder root;
    CQFolder* a = AddSub(root, "A");
    auto* byHand = new CQFolder;
    CQFolder* below = AddSub(*byHand, "below");
    auto* leaf = new CQFolder;
    for (CQFolder* folder : {byHand, static_cast<CQFolder*>(nullptr), leaf}) root.GetFolderList()->AddTail(folder);
    CQFolder* last = AddSub(root, "last");
    EXPECT_EQ(MetBelow(root), (std::vector<CQFolder*>{a, byHand, below, leaf, last}));
    // What the search needs to find back, it leaves; with memory it changes nothing.
    EXPECT_EQ(leaf->GetParent(), GetParam() ? &root : nullptr);
}

INSTANTIATE_TEST_SUITE_P(Memory, FirstBelowOfATree, testing::Bool());

}  // namespace
}  // namespace qfc::test
