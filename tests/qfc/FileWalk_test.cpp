#include "hosts/qfc/media/FileWalk.h"

#include "tests/support/TempFolder.h"

#include <algorithm>
#include <atomic>
#include <filesystem>
#include <gmock/gmock.h>

namespace {

namespace fs = std::filesystem;
using qfc::host::Walk;
using qfc::host::WalkedFile;
using qfc::host::WalkFiles;
using qfc::test::TempFolder;
using testing::ElementsAre;
using testing::IsEmpty;

class FileWalkTest : public testing::Test {
protected:
    Walk Go(const std::vector<std::string>& names) const {
        std::vector<std::string> paths;
        for (const std::string& name : names) paths.push_back(m_folder / name);
        return WalkFiles(paths);
    }
    // "folder|folder|name" of each file met.
    static std::vector<std::string> Shown(const Walk& walk) {
        std::vector<std::string> shown;
        for (const WalkedFile& file : walk.files) {
            std::string text;
            for (const std::string& folder : file.folders) text += folder + "|";
            shown.push_back(text + file.name);
        }
        return shown;
    }
    std::string Write(const std::string& name) const {
        fs::create_directories(fs::path(m_folder / name).parent_path());
        return m_folder.Write(name, "x");
    }

    TempFolder m_folder;
};

TEST_F(FileWalkTest, FilesComeBeforeDirectoriesBothInTheOrderOfTheirBytes) {
    for (const char* name : {"top/b", "top/a/z", "top/c", "top/B", "top/a/y/x", "top/A/w"}) Write(name);
    EXPECT_THAT(Shown(Go({"top"})), ElementsAre("top|B", "top|b", "top|c", "top|A|w", "top|a|z", "top|a|y|x"));
}

TEST_F(FileWalkTest, AFileNamedByItselfHasNoFolder) {
    const std::string path = Write("top/b.jpg");
    const Walk walk = Go({"top/b.jpg"});
    ASSERT_EQ(walk.files.size(), 1u);
    EXPECT_EQ(walk.files[0].path, fs::canonical(path));
    EXPECT_EQ(walk.files[0].name, "b.jpg");
    EXPECT_THAT(walk.files[0].folders, IsEmpty());
}

TEST_F(FileWalkTest, ThePlaceOfTheArgumentsIsKept) {
    Write("two/f");
    Write("one/f");
    EXPECT_THAT(Shown(Go({"two", "one"})), ElementsAre("two|f", "one|f"));
}

TEST_F(FileWalkTest, AFileIsMetOnceHoweverOftenItIsNamedOrLinked) {
    const std::string path = Write("top/a");
    fs::create_symlink(path, m_folder / "top/link");
    fs::create_symlink(m_folder / "top", m_folder / "other");
    EXPECT_THAT(Shown(Go({"top/../top/a", "top", "other", "top/link"})), ElementsAre("a"));
}

TEST_F(FileWalkTest, ALinkedFileHasTheIdentityOfItsTarget) {
    const std::string path = Write("elsewhere/real.jpg");
    m_folder.MakeFolder("top");
    fs::create_symlink(path, m_folder / "top/link.jpg");
    const Walk walk = Go({"top"});
    ASSERT_EQ(walk.files.size(), 1u);
    EXPECT_EQ(walk.files[0].path, fs::canonical(path));
    EXPECT_EQ(walk.files[0].name, "link.jpg");
}

TEST_F(FileWalkTest, LoopsOfLinksEnd) {
    Write("top/a/f");
    fs::create_directory_symlink(m_folder / "top", m_folder / "top/a/up");
    fs::create_symlink("round", m_folder / "top/round");
    const Walk walk = Go({"top"});
    EXPECT_THAT(Shown(walk), ElementsAre("top|a|f"));
    ASSERT_EQ(walk.problems.size(), 1u);
    EXPECT_THAT(walk.problems[0].path, testing::EndsWith("top/round"));
}

TEST_F(FileWalkTest, ABackslashInANameBecomesAnUnderscoreInFoldersAlone) {
    Write("to\\p/in\\ner/fi\\le");
    EXPECT_THAT(Shown(Go({"to\\p"})), ElementsAre("to_p|in_ner|fi\\le"));
}

TEST_F(FileWalkTest, ADirectoryNamedByDotsHasItsOwnName) {
    Write("top/a/f");
    EXPECT_THAT(Shown(Go({"top/a/.."})), ElementsAre("top|a|f"));
}

TEST_F(FileWalkTest, WhatIsNotThereIsReportedAndTheRestIsWalked) {
    Write("top/f");
    const Walk walk = Go({"missing", "top"});
    EXPECT_THAT(Shown(walk), ElementsAre("top|f"));
    ASSERT_EQ(walk.problems.size(), 1u);
    EXPECT_EQ(walk.problems[0].path, m_folder / "missing");
    EXPECT_FALSE(walk.problems[0].text.empty());
}

TEST_F(FileWalkTest, NothingIsMetOnceTheFlagIsUp) {
    Write("top/f");
    const std::atomic<bool> cancelled{true};
    const std::vector<std::string> paths = {m_folder / "top"};
    EXPECT_THAT(WalkFiles(paths, &cancelled).files, IsEmpty());
}

}  // namespace
