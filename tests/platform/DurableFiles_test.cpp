#include "platform/os/Files.h"
#include "platform/os/LastError.h"
#include "tests/support/SystemCalls.h"
#include "tests/support/TempFolder.h"

#include <cerrno>
#include <csignal>
#include <functional>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/resource.h>

namespace {

using qfc::test::ReadFile;
using qfc::test::SystemCalls;
using qfc::test::TempFolder;
using testing::UnorderedElementsAre;
namespace fs = std::filesystem;

TEST(CopyFileDurably, CopiesFilesLargerThanItsBuffer) {
    const TempFolder folder;
    std::string content;
    for (int i = 0; i < 200000; ++i) content += static_cast<char>(i * 7 / 3);
    const std::string source = folder.Write("source", content);
    ASSERT_TRUE(qfc::CopyFileDurably(source, folder / "target"));
    EXPECT_EQ(ReadFile(folder / "target"), content);
    EXPECT_THAT(folder.Entries(), UnorderedElementsAre("source", "target"));
}

TEST(CopyFileDurably, ReadersOfTheOldTargetKeepIt) {
    const TempFolder folder;
    const std::string source = folder.Write("source", "new");
    const std::string target = folder.Write("target", "old");
    std::ifstream reader(target);
    ASSERT_TRUE(qfc::CopyFileDurably(source, target));
    std::string text;
    reader >> text;
    EXPECT_EQ(text, "old");
    EXPECT_EQ(ReadFile(target), "new");
}

TEST(CopyFileDurably, FailureLeavesTheOldTargetAndNoTrace) {
    const TempFolder folder;
    const std::string target = folder.Write("target", "old");
    EXPECT_FALSE(qfc::CopyFileDurably(folder / "missing", target));
    EXPECT_FALSE(qfc::CopyFileDurably(folder.MakeFolder("sub"), target));
    EXPECT_FALSE(qfc::CopyFileDurably(target, folder / "sub"));
    EXPECT_EQ(ReadFile(target), "old");
    EXPECT_THAT(folder.Entries(), UnorderedElementsAre("target", "sub"));
    EXPECT_TRUE(fs::is_empty(folder / "sub"));
}

TEST(CopyFileDurably, WriteThatFailsHalfwayLeavesNoTrace) {
    const TempFolder folder;
    const std::string source = folder.Write("source", std::string(200000, 'x'));
    const std::string target = folder.Write("target", "old");
    rlimit before{};
    getrlimit(RLIMIT_FSIZE, &before);
    const auto handler = std::signal(SIGXFSZ, SIG_IGN);
    const rlimit small{100000, before.rlim_max};
    setrlimit(RLIMIT_FSIZE, &small);
    const bool copied = qfc::CopyFileDurably(source, target);
    setrlimit(RLIMIT_FSIZE, &before);
    std::signal(SIGXFSZ, handler);
    EXPECT_FALSE(copied);
    EXPECT_EQ(ReadFile(target), "old");
    EXPECT_THAT(folder.Entries(), UnorderedElementsAre("source", "target"));
}

TEST(WriteFileDurably, MakesAndReplacesTheFile) {
    const TempFolder folder;
    ASSERT_TRUE(qfc::WriteFileDurably(folder / "target", "one"));
    ASSERT_TRUE(qfc::WriteFileDurably(folder / "target", std::string("t\0o", 3)));
    EXPECT_EQ(ReadFile(folder / "target"), std::string("t\0o", 3));
    EXPECT_THAT(folder.Entries(), UnorderedElementsAre("target"));
}

TEST(WriteFileDurably, FailureLeavesNoTrace) {
    const TempFolder folder;
    EXPECT_FALSE(qfc::WriteFileDurably(folder / "missing/target", "x"));
    folder.MakeFolder("sub/inner");
    EXPECT_FALSE(qfc::WriteFileDurably(folder / "sub", "x"));
    EXPECT_THAT(folder.Entries(), UnorderedElementsAre("sub"));
}

TEST(RenameDurably, ReplacesTheTarget) {
    const TempFolder folder;
    const std::string from = folder.Write("from", "new");
    const std::string to = folder.Write("to", "old");
    EXPECT_TRUE(qfc::RenameDurably(from, to));
    EXPECT_EQ(ReadFile(to), "new");
    EXPECT_THAT(folder.Entries(), UnorderedElementsAre("to"));
}

TEST(RenameDurably, FailsWithoutSourceOrTargetFolder) {
    const TempFolder folder;
    const std::string from = folder.Write("from", "x");
    EXPECT_FALSE(qfc::RenameDurably(folder / "missing", folder / "to"));
    EXPECT_FALSE(qfc::RenameDurably(from, folder / "missing/to"));
    EXPECT_EQ(GetLastError(), ERROR_FILE_NOT_FOUND);
    EXPECT_THAT(folder.Entries(), UnorderedElementsAre("from"));
}

TEST(RenameDurablyToNew, LeavesWhatIsThere) {
    const TempFolder folder;
    const std::string from = folder.Write("from", "new");
    const std::string to = folder.Write("to", "old");
    EXPECT_FALSE(qfc::RenameDurablyToNew(from, to));
    EXPECT_EQ(GetLastError(), ERROR_FILE_EXISTS);
    EXPECT_EQ(ReadFile(to), "old");
    EXPECT_TRUE(qfc::RenameDurablyToNew(from, folder / "other"));
    EXPECT_EQ(ReadFile(folder / "other"), "new");
    EXPECT_FALSE(qfc::RenameDurablyToNew(from, folder / "third"));
    EXPECT_FALSE(qfc::RenameDurablyToNew(to, folder / "missing/to"));
    EXPECT_THAT(folder.Entries(), UnorderedElementsAre("other", "to"));
}

// --- File systems whose rename knows no flags ---

class WithoutRenameFlags : public testing::Test {
protected:
    void SetUp() override {
        m_calls.rename = [this](const char* from, const char* to, unsigned flags) {
            if (flags == 0) return SystemCalls::RealRename(from, to, flags);
            m_meanwhile();
            return SystemCalls::Refuse(EINVAL);
        };
    }
    void RefuseLinks(int error) {
        m_calls.link = [error](const char*, const char*) { return SystemCalls::Refuse(error); };
    }

    TempFolder m_folder;
    const std::string m_from = m_folder.Write("from", "new");
    const std::string m_to = m_folder / "to";
    SystemCalls m_calls;
    // What another process does just before the name is given.
    std::function<void()> m_meanwhile = [] {};
};

TEST_F(WithoutRenameFlags, FileGetsItsNewName) {
    EXPECT_TRUE(qfc::RenameDurablyToNew(m_from, m_to));
    EXPECT_EQ(ReadFile(m_to), "new");
    EXPECT_THAT(m_folder.Entries(), UnorderedElementsAre("to"));
}

TEST_F(WithoutRenameFlags, FileGetsItsNewNameAlsoWhereThereAreNoSecondNames) {
    RefuseLinks(EPERM);
    EXPECT_TRUE(qfc::RenameDurablyToNew(m_from, m_to));
    EXPECT_EQ(ReadFile(m_to), "new");
    EXPECT_THAT(m_folder.Entries(), UnorderedElementsAre("to"));
}

TEST_F(WithoutRenameFlags, NameThatIsTakenIsNotGivenOnceMore) {
    for (const bool links : {true, false}) {
        if (!links) RefuseLinks(EPERM);
        m_folder.Write("to", "old");
        EXPECT_FALSE(qfc::RenameDurablyToNew(m_from, m_to));
        EXPECT_EQ(GetLastError(), ERROR_FILE_EXISTS);
        EXPECT_EQ(ReadFile(m_to), "old");
        EXPECT_EQ(ReadFile(m_from), "new");
        fs::remove(m_to);
        // A link that leads nowhere has the name, too.
        fs::create_symlink("nowhere", m_to);
        EXPECT_FALSE(qfc::RenameDurablyToNew(m_from, m_to));
        EXPECT_TRUE(fs::is_symlink(m_to));
        EXPECT_EQ(ReadFile(m_from), "new");
        fs::remove(m_to);
    }
}

// A look at the name would be too early.
TEST_F(WithoutRenameFlags, NameThatIsTakenThisMomentIsNotGivenOnceMore) {
    m_calls.link = [this](const char* from, const char* to) {
        m_folder.Write("to", "another's");
        return SystemCalls::RealLink(from, to);
    };
    EXPECT_FALSE(qfc::RenameDurablyToNew(m_from, m_to));
    EXPECT_EQ(ReadFile(m_to), "another's");
    EXPECT_EQ(ReadFile(m_from), "new");
}

TEST_F(WithoutRenameFlags, CopyReplacesNoFileThatCameMeanwhile) {
    for (const bool links : {true, false}) {
        if (!links) RefuseLinks(EPERM);
        m_meanwhile = [this] { m_folder.Write("to", "another's"); };
        EXPECT_EQ(CopyFileA(m_from.c_str(), m_to.c_str(), 1), 0);
        EXPECT_EQ(GetLastError(), ERROR_FILE_EXISTS);
        EXPECT_EQ(ReadFile(m_to), "another's");
        EXPECT_THAT(m_folder.Entries(), UnorderedElementsAre("from", "to"));
        fs::remove(m_to);
    }
}

TEST_F(WithoutRenameFlags, CopiesAreMadeAndReplaceWhatTheyMay) {
    for (const bool links : {true, false}) {
        if (!links) RefuseLinks(EPERM);
        EXPECT_EQ(CopyFileA(m_from.c_str(), m_to.c_str(), 1), 1);
        EXPECT_EQ(ReadFile(m_to), "new");
        m_folder.Write("to", "old");
        EXPECT_EQ(CopyFileA(m_from.c_str(), m_to.c_str(), 0), 1);
        EXPECT_EQ(ReadFile(m_to), "new");
        EXPECT_THAT(m_folder.Entries(), UnorderedElementsAre("from", "to"));
        fs::remove(m_to);
    }
}

TEST(FolderOf, EndsBehindTheLastSlash) {
    EXPECT_EQ(qfc::FolderOf("/a/b"), "/a/");
    EXPECT_EQ(qfc::FolderOf("/a/"), "/a/");
    EXPECT_EQ(qfc::FolderOf("/a"), "/");
    EXPECT_EQ(qfc::FolderOf("a"), "./");
}

TEST(MakeFolders, MakesAllThatAreMissing) {
    const TempFolder folder;
    EXPECT_TRUE(qfc::MakeFolders(folder / "a/b/c/"));
    EXPECT_TRUE(fs::is_directory(folder / "a/b/c"));
    EXPECT_TRUE(qfc::MakeFolders(folder / "a/b/c"));
}

TEST(MakeFolders, FailsWhereAFileIsInTheWay) {
    const TempFolder folder;
    folder.Write("file", "");
    EXPECT_FALSE(qfc::MakeFolders(folder / "file"));
    EXPECT_FALSE(qfc::MakeFolders(folder / "file/sub"));
}

}  // namespace
