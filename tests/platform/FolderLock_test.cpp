#include "platform/os/FolderLock.h"

#include "tests/support/TempFolder.h"

#include <gtest/gtest.h>

namespace {

using qfc::FolderLock;

TEST(FolderLock, KeepsOthersOutUntilItEnds) {
    const qfc::test::TempFolder folder;
    FolderLock other(folder.Path());
    {
        FolderLock first(folder.Path());
        EXPECT_TRUE(first.TryLock());
        EXPECT_TRUE(first.TryLock()) << "its own lock is in nobody's way";
        EXPECT_FALSE(other.TryLock());
    }
    EXPECT_TRUE(other.TryLock());
    EXPECT_TRUE(folder.Entries().empty());
}

TEST(FolderLock, IsTakenByNobodyWhoNeverTried) {
    const qfc::test::TempFolder folder;
    const FolderLock idle(folder.Path());
    FolderLock other(folder.Path());
    EXPECT_TRUE(other.TryLock());
}

TEST(FolderLock, OfAMissingFolderKeepsNobodyOut) {
    const qfc::test::TempFolder folder;
    FolderLock first(folder / "missing");
    FolderLock second(folder / "missing");
    EXPECT_TRUE(first.TryLock());
    EXPECT_TRUE(second.TryLock());
}

}  // namespace
