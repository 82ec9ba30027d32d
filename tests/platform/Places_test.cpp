#include "platform/os/Places.h"

#include "platform/framework/Types.h"
#include "tests/support/TempFolder.h"

#include <cstdlib>
#include <filesystem>
#include <gtest/gtest.h>
#include <string>

namespace {

using qfc::test::TempFolder;
namespace fs = std::filesystem;

// The places are fixed once per process, so each case runs in a process of its own.
struct Places : testing::Test {
    Places() {
        for (const char* name : {"QFCLIB_DATA_DIR", "QFCLIB_HOST_DIR", "XDG_DATA_HOME"}) unsetenv(name);
        setenv("HOME", folder.Path().c_str(), 1);
    }
    static std::string DataFolder() {
        char buffer[MAX_PATH];
        return GetAppDataFolder(buffer, MAX_PATH, 0, 1) == 1 ? buffer : "failed";
    }
    TempFolder folder;
};

TEST_F(Places, DataFolderIsInTheHomeFolderByDefault_AndIsMade) {
    const std::string expected = folder / ".local/share/Orvel/Cinelume/";
    EXPECT_EQ(DataFolder(), expected);
    EXPECT_TRUE(fs::is_directory(expected));
}

TEST_F(Places, DataFolderFollowsXdgDataHome_WhenThatIsAbsolute) {
    setenv("XDG_DATA_HOME", (folder / "data").c_str(), 1);
    EXPECT_EQ(DataFolder(), folder / "data/Orvel/Cinelume/");
    setenv("XDG_DATA_HOME", "relative", 1);
    EXPECT_EQ(DataFolder(), folder / ".local/share/Orvel/Cinelume/");
}

TEST_F(Places, EnvironmentGoesBeforeTheDefault_AndTheHostBeforeTheEnvironment) {
    setenv("QFCLIB_DATA_DIR", (folder / "environment").c_str(), 1);
    EXPECT_EQ(DataFolder(), folder / "environment/");
    EXPECT_TRUE(qfc::SetDataFolder((folder / "host/").c_str()));
    EXPECT_EQ(DataFolder(), folder / "host/");
    EXPECT_TRUE(fs::is_directory(folder / "host"));
}

TEST_F(Places, DataFolderThatDoesNotFitGives0) {
    ASSERT_TRUE(qfc::SetDataFolder((folder / "data").c_str()));
    const std::string expected = folder / "data/";
    std::string buffer(expected.size() + 1, 'x');
    EXPECT_EQ(GetAppDataFolder(buffer.data(), static_cast<int>(expected.size()), 0, 1), 0);
    EXPECT_EQ(buffer, std::string(expected.size() + 1, 'x'));
    EXPECT_FALSE(fs::exists(folder / "data"));
    EXPECT_EQ(GetAppDataFolder(buffer.data(), static_cast<int>(expected.size()) + 1, 0, 1), 1);
    EXPECT_EQ(buffer.c_str(), expected);
    EXPECT_EQ(GetAppDataFolder(nullptr, 260, 0, 1), 0);
    EXPECT_EQ(GetAppDataFolder(buffer.data(), -1, 0, 1), 0);
}

TEST_F(Places, RelativeFoldersCountFromTheWorkingFolderOfThatMoment) {
    fs::current_path(folder.Path());
    EXPECT_TRUE(qfc::SetDataFolder("relative"));
    fs::current_path("/");
    EXPECT_EQ(DataFolder(), folder / "relative/");
}

TEST_F(Places, HostFolderIsThatOfTheExecutable) {
    EXPECT_EQ(qfc::HostFolder(), fs::read_symlink("/proc/self/exe").parent_path().string() + "/");
}

TEST_F(Places, HostFolderCanBeChosen) {
    setenv("QFCLIB_HOST_DIR", "/opt/environment", 1);
    EXPECT_EQ(qfc::HostFolder(), "/opt/environment/");
    EXPECT_TRUE(qfc::SetHostFolder("/opt\\host"));
    EXPECT_EQ(qfc::HostFolder(), "/opt/host/");
}

TEST_F(Places, NothingMovesOnceFrozen) {
    ASSERT_TRUE(qfc::SetDataFolder((folder / "first").c_str()));
    ASSERT_TRUE(qfc::SetHostFolder("/opt/first"));
    char answer[260] = "";
    ASSERT_EQ(qfc::FreezePlaces(answer, sizeof answer), 1);
    EXPECT_EQ(answer, folder / "first/");
    EXPECT_FALSE(qfc::SetDataFolder((folder / "second").c_str()));
    EXPECT_FALSE(qfc::SetHostFolder("/opt/second"));
    EXPECT_EQ(DataFolder(), folder / "first/");
    EXPECT_EQ(qfc::HostFolder(), "/opt/first/");
}

TEST_F(Places, AnAnswerThatDoesNotFit_FreezesNothing) {
    ASSERT_TRUE(qfc::SetDataFolder((folder / "first").c_str()));
    char small[4] = "";
    EXPECT_EQ(qfc::FreezePlaces(small, sizeof small), 0);
    EXPECT_EQ(qfc::FreezePlaces(nullptr, 260), 0);
    EXPECT_TRUE(qfc::SetDataFolder((folder / "second").c_str()));
    EXPECT_EQ(DataFolder(), folder / "second/");
}

TEST_F(Places, AnAnswerThatDoesNotSuit_FreezesNothing) {
    ASSERT_TRUE(qfc::SetDataFolder((folder / "first").c_str()));
    char answer[260] = "";
    std::string asked;
    const auto refuse = [&](const char* path) {
        asked = path;
        return false;
    };
    EXPECT_EQ(qfc::FreezePlaces(answer, sizeof answer, refuse), 0);
    EXPECT_EQ(asked, folder / "first/");
    EXPECT_FALSE(std::filesystem::exists(folder / "first"));
    EXPECT_TRUE(qfc::SetDataFolder((folder / "second").c_str()));
    EXPECT_EQ(DataFolder(), folder / "second/");
}

TEST_F(Places, EmptyPathsAreRefused) {
    EXPECT_FALSE(qfc::SetDataFolder(""));
    EXPECT_FALSE(qfc::SetDataFolder(nullptr));
    EXPECT_FALSE(qfc::SetHostFolder(""));
    EXPECT_EQ(DataFolder(), folder / ".local/share/Orvel/Cinelume/");
}

}  // namespace
