#include "platform/os/Files.h"

#include "platform/framework/CString.h"
#include "platform/os/LastError.h"
#include "tests/support/TempFolder.h"

#include <cstring>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

using qfc::test::ReadFile;
using qfc::test::TempFolder;
namespace fs = std::filesystem;

CString Text(const std::string& text) { return CString(text); }

TEST(PathFileExists, IsTrueForFilesAndFolders) {
    const TempFolder folder;
    EXPECT_EQ(PathFileExistsA(Text(folder.Path())), 1);
    EXPECT_EQ(PathFileExistsA(Text(folder.Write("file", ""))), 1);
    EXPECT_EQ(PathFileExistsA(Text(folder / "missing")), 0);
    EXPECT_EQ(GetLastError(), ERROR_FILE_NOT_FOUND);
    EXPECT_EQ(PathFileExistsA(""), 0);
    EXPECT_EQ(PathFileExistsA(nullptr), 0);
}

TEST(PathFileExists, TakesBackslashes) {
    const TempFolder folder;
    folder.MakeFolder("sub");
    folder.Write("sub/file", "");
    EXPECT_EQ(PathFileExistsA(Text(folder.Path() + "\\sub\\file")), 1);
}

TEST(CopyFile, OverwritesUnlessToldNotTo) {
    const TempFolder folder;
    const std::string source = folder.Write("source", "new");
    const std::string target = folder.Write("target", "old content");
    EXPECT_EQ(CopyFileA(Text(source), Text(target), 1), 0);
    EXPECT_EQ(GetLastError(), ERROR_FILE_EXISTS);
    EXPECT_EQ(ReadFile(target), "old content");
    EXPECT_EQ(CopyFileA(Text(source), Text(target), 0), 1);
    EXPECT_EQ(ReadFile(target), "new");
}

TEST(CopyFile, OfAReadOnlySourceIsWritable) {
    const TempFolder folder;
    const std::string source = folder.Write("source", "x");
    fs::permissions(source, fs::perms::owner_read);
    ASSERT_EQ(CopyFileA(Text(source), Text(folder / "target"), 0), 1);
    EXPECT_NE(fs::status(folder / "target").permissions() & fs::perms::owner_write, fs::perms::none);
}

TEST(CopyFile, ReadOnlyTargetStays) {
    const TempFolder folder;
    const std::string source = folder.Write("source", "new");
    const std::string target = folder.Write("target", "old");
    fs::permissions(target, fs::perms::owner_read);
    EXPECT_EQ(CopyFileA(Text(source), Text(target), 0), 0);
    EXPECT_EQ(GetLastError(), ERROR_ACCESS_DENIED);
    EXPECT_EQ(ReadFile(target), "old");
}

TEST(CopyFile, FailsWithoutSourceOrTargetFolder) {
    const TempFolder folder;
    const std::string source = folder.Write("source", "x");
    EXPECT_EQ(CopyFileA(Text(folder / "missing"), Text(folder / "target"), 0), 0);
    EXPECT_EQ(CopyFileA(Text(source), Text(folder / "missing/target"), 0), 0);
    EXPECT_EQ(CopyFileA(Text(folder.MakeFolder("sub")), Text(folder / "target"), 0), 0);
    EXPECT_EQ(CopyFileA(Text(source), Text(folder / "sub"), 0), 0);
    EXPECT_EQ(CopyFileA(nullptr, Text(folder / "target"), 0), 0);
    EXPECT_THAT(folder.Entries(), testing::UnorderedElementsAre("source", "sub"));
}

TEST(CopyFile, ReplacesWhatALinkPointsTo) {
    const TempFolder folder;
    const std::string source = folder.Write("source", "new");
    const std::string real = folder.Write("real", "old");
    fs::create_symlink(real, folder / "link");
    ASSERT_EQ(CopyFileA(Text(source), Text(folder / "link"), 0), 1);
    EXPECT_TRUE(fs::is_symlink(folder / "link"));
    EXPECT_EQ(ReadFile(real), "new");
}

TEST(CopyFile, ComesWhereALinkLeadsThatLeadsNowhereYet) {
    const TempFolder folder;
    const std::string source = folder.Write("source", "new");
    folder.MakeFolder("sub");
    fs::create_symlink("sub/next", folder / "link");
    fs::create_symlink("../real", folder / "sub/next");
    ASSERT_EQ(CopyFileA(Text(source), Text(folder / "link"), 1), 1);
    EXPECT_TRUE(fs::is_symlink(folder / "link"));
    EXPECT_TRUE(fs::is_symlink(folder / "sub/next"));
    EXPECT_EQ(ReadFile(folder / "real"), "new");
}

TEST(WithoutLinks, IsTheFileThatIsMeant_ThereOrNot) {
    const TempFolder folder;
    EXPECT_EQ(qfc::WithoutLinks(folder / "missing"), folder / "missing");
    fs::create_symlink(folder / "real", folder / "one");
    fs::create_symlink("one", folder / "two");
    EXPECT_EQ(qfc::WithoutLinks(folder / "two"), folder / "real");
    folder.Write("real", "");
    EXPECT_EQ(qfc::WithoutLinks(folder / "two"), folder / "real");
    EXPECT_EQ(qfc::WithoutLinks("bare"), "bare");
}

TEST(WithoutLinks, EndsInACircle) {
    const TempFolder folder;
    fs::create_symlink("b", folder / "a");
    fs::create_symlink("a", folder / "b");
    EXPECT_TRUE(fs::is_symlink(qfc::WithoutLinks(folder / "a")));
}

TEST(DeleteFile, RemovesFilesOnly) {
    const TempFolder folder;
    const std::string file = folder.Write("file", "");
    EXPECT_EQ(DeleteFileA(Text(file)), 1);
    EXPECT_EQ(DeleteFileA(Text(file)), 0);
    EXPECT_EQ(GetLastError(), ERROR_FILE_NOT_FOUND);
    EXPECT_EQ(DeleteFileA(Text(folder.MakeFolder("sub"))), 0);
    EXPECT_EQ(DeleteFileA(nullptr), 0);
}

TEST(TempPath, EndsWithASeparator_OrTellsTheSizeItNeeds) {
    ASSERT_EQ(setenv("TMPDIR", "/var/tmp", 1), 0);
    char buffer[MAX_PATH];
    EXPECT_EQ(GetTempPathA(MAX_PATH, buffer), 9u);
    EXPECT_STREQ(buffer, "/var/tmp/");
    std::strcpy(buffer, "kept");
    EXPECT_EQ(GetTempPathA(9, buffer), 10u);
    EXPECT_EQ(GetTempPathA(0, nullptr), 10u);
    EXPECT_STREQ(buffer, "kept");
    unsetenv("TMPDIR");
    EXPECT_EQ(GetTempPathA(MAX_PATH, buffer), 5u);
    EXPECT_STREQ(buffer, "/tmp/");
}

TEST(TempFileName, MakesAnEmptyFileOfTheRightName) {
    const TempFolder folder;
    char buffer[MAX_PATH];
    const UINT number = GetTempFileNameA(Text(folder.Path()), "GALLERY", 0, buffer);
    EXPECT_NE(number, 0u);
    EXPECT_LE(number, 0xFFFFu);
    char expected[32];
    std::snprintf(expected, sizeof(expected), "/GAL%X.tmp", number);
    EXPECT_EQ(std::string(buffer), folder.Path() + expected);
    EXPECT_EQ(fs::file_size(buffer), 0u);
}

TEST(TempFileName, NamesAreNeverTakenTwice) {
    const TempFolder folder;
    char first[MAX_PATH];
    char second[MAX_PATH];
    ASSERT_NE(GetTempFileNameA(Text(folder.Path() + "/"), "GAL", 0, first), 0u);
    ASSERT_NE(GetTempFileNameA(Text(folder.Path() + "/"), "GAL", 0, second), 0u);
    EXPECT_STRNE(first, second);
    EXPECT_EQ(folder.Entries().size(), 2u);
}

TEST(TempFileName, GivenNumberOnlyFormsTheName) {
    const TempFolder folder;
    char buffer[MAX_PATH];
    EXPECT_EQ(GetTempFileNameA(Text(folder.Path()), "GAL", 0x1ABCD, buffer), 0xABCDu);
    EXPECT_EQ(std::string(buffer), folder / "GALABCD.tmp");
    EXPECT_EQ(GetTempFileNameA(Text(folder.Path()), "G", 0xF, buffer), 0xFu);
    EXPECT_EQ(std::string(buffer), folder / "GF.tmp");
    EXPECT_TRUE(folder.Entries().empty());
}

TEST(TempFileName, FailsForAFolderThatIsMissingOrTooLong) {
    const TempFolder folder;
    char buffer[MAX_PATH];
    EXPECT_EQ(GetTempFileNameA(Text(folder / "missing"), "GAL", 0, buffer), 0u);
    EXPECT_EQ(GetTempFileNameA(CString('x', MAX_PATH - 13), "GAL", 1, buffer), 0u);
    EXPECT_EQ(GetTempFileNameA(CString('x', MAX_PATH - 14), "GAL", 0xFFFF, buffer), 0xFFFFu);
    EXPECT_EQ(std::strlen(buffer), MAX_PATH - 14 + std::strlen("/GALFFFF.tmp"));
    EXPECT_EQ(GetTempFileNameA("", "GAL", 0, buffer), 0u);
    EXPECT_EQ(GetTempFileNameA(nullptr, "GAL", 0, buffer), 0u);
    EXPECT_EQ(GetTempFileNameA("/tmp", "GAL", 0, nullptr), 0u);
}

}  // namespace
