#include "platform/os/Files.h"
#include "platform/text/CodePages.h"
#include "tests/support/TempFolder.h"

#include <gtest/gtest.h>

namespace {

using qfc::test::TempFolder;

TEST(NativePath, BackslashesBecomeSlashes) {
    EXPECT_EQ(qfc::NativePath("missing\\sub\\file.db"), "missing/sub/file.db");
    EXPECT_EQ(qfc::NativePath("missing/sub\\file.db"), "missing/sub/file.db");
    EXPECT_EQ(qfc::NativePath("plain"), "plain");
    EXPECT_EQ(qfc::NativePath(""), "");
    EXPECT_EQ(qfc::NativePath(nullptr), "");
}

TEST(NativePath, ThatExistsLiterallyIsTakenAsItIs) {
    const TempFolder folder;
    const std::string odd = folder.Write("a\\b", "");
    EXPECT_EQ(qfc::NativePath(odd.c_str()), odd);
}

TEST(NativePath, NewFileInAFolderThatExistsLiterallyIsLiteral) {
    const TempFolder folder;
    const std::string odd = folder.MakeFolder("a\\b");
    EXPECT_EQ(qfc::NativePath((odd + "/new.db").c_str()), odd + "/new.db");
    EXPECT_EQ(qfc::NativePath((odd + "/sub\\new.db").c_str()), folder / "a/b/sub/new.db");
}

TEST(NativePath, FindsTheApplicationFolderInEitherSpelling) {
    for (const std::string there : {"Orvel.dat", "orvel.dat"}) {
        const TempFolder folder;
        folder.MakeFolder(there);
        folder.Write(there + "/x.db", "");
        for (const std::string asked : {"Orvel.dat", "orvel.dat"}) {
            EXPECT_EQ(qfc::NativePath((folder.Path() + "/" + asked + "\\x.db").c_str()), folder / there + "/x.db");
            EXPECT_EQ(qfc::NativePath((folder / asked).c_str()), folder / there);
            // Also for a file that is not there yet.
            EXPECT_EQ(qfc::NativePath((folder / asked + "/new").c_str()), folder / there + "/new");
        }
    }
}

TEST(NativePath, WithBothSpellingsTheOneAskedForCounts) {
    const TempFolder folder;
    folder.MakeFolder("Orvel.dat");
    folder.MakeFolder("orvel.dat");
    EXPECT_EQ(qfc::NativePath((folder / "orvel.dat\\x").c_str()), folder / "orvel.dat/x");
    EXPECT_EQ(qfc::NativePath((folder / "Orvel.dat\\x").c_str()), folder / "Orvel.dat/x");
}

TEST(NativePath, OtherNamesKeepTheirCase) {
    const TempFolder folder;
    folder.MakeFolder("Other.dat");
    EXPECT_EQ(qfc::NativePath((folder / "other.dat/x").c_str()), folder / "other.dat/x");
    EXPECT_EQ(qfc::NativePath((folder / "MyOrvel.dat/x").c_str()), folder / "MyOrvel.dat/x");
}

TEST(NativePath, IsUtf8WhateverTheCodePage) {
    ASSERT_TRUE(qfc::SetAnsiCodePage("CP1252"));
    EXPECT_EQ(qfc::NativePath("missing\\caf\xE9"), "missing/café");
    ASSERT_TRUE(qfc::SetAnsiCodePage("UTF-8"));
}

}  // namespace
