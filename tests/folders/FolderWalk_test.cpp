#include "folders/FolderWalk.h"

#include "tests/folders/FolderBuilders.h"

#include <gtest/gtest.h>
#include <memory>

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

}  // namespace
}  // namespace qfc::test
