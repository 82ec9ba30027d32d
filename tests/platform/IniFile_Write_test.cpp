#include "platform/os/LastError.h"
#include "tests/platform/IniTest.h"
#include "tests/support/MemoryFaults.h"

#include <csignal>
#include <gmock/gmock.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

namespace {

using qfc::test::IniWrite;
using testing::UnorderedElementsAre;
namespace fs = std::filesystem;

std::string Utf16(std::u16string_view text) {
    std::string bytes = "\xFF\xFE";
    for (const char16_t unit : text) {
        bytes += static_cast<char>(unit & 0xFF);
        bytes += static_cast<char>(unit >> 8);
    }
    return bytes;
}

TEST_F(IniWrite, MakesTheFile) {
    EXPECT_EQ(Write("Section", "key", "value"), 1);
    EXPECT_EQ(File(), "[Section]\r\nkey=value\r\n");
    EXPECT_EQ(Value("section", "KEY"), "value");
    EXPECT_THAT(folder.Entries(), UnorderedElementsAre("file.ini", "file.ini.lock"));
}

TEST_F(IniWrite, MakesNoFolder) {
    EXPECT_EQ(WritePrivateProfileStringA("S", "k", "v", (folder / "none/x.ini").c_str()), 0);
    EXPECT_FALSE(fs::exists(folder / "none"));
    EXPECT_EQ(GetLastError(), ERROR_FILE_NOT_FOUND);
}

TEST_F(IniWrite, ReplacesAValueWhereItStands_EveryOtherByteStays) {
    EXPECT_EQ(Over("junk\n;c\r\n [ Sec ] x\n\tKey \t=  old  \r\rother=1", "sec", "KEY", "new"),
              "junk\n;c\r\n [ Sec ] x\n\tKey \t=  new  \r\rother=1");
    EXPECT_EQ(Over("[S]\nk=\nl=1", "S", "k", "v"), "[S]\nk=v\nl=1");
    EXPECT_EQ(Over("[S]\nk=\"old\"\n", "S", "k", "v"), "[S]\nk=v\n");
    EXPECT_EQ(Over("[S]\nk=old", "S", "k", ""), "[S]\nk=");
}

TEST_F(IniWrite, ReplacesTheFirstOfDuplicates) {
    EXPECT_EQ(Over("[S]\nk=1\nk=2\n[S]\nk=3\n", "S", "k", "new"), "[S]\nk=new\nk=2\n[S]\nk=3\n");
}

TEST_F(IniWrite, NewKeyComesBehindTheLastOfItsSection) {
    EXPECT_EQ(Over("[S]\na=1\nkeyless\n; comment\n\n[T]\n", "S", "b", "2"),
              "[S]\na=1\nkeyless\nb=2\r\n; comment\n\n[T]\n");
    EXPECT_EQ(Over("[S]\n;comment\n[T]\n", "S", "b", "2"), "[S]\nb=2\r\n;comment\n[T]\n");
}

TEST_F(IniWrite, NewSectionComesAtTheEnd) { EXPECT_EQ(Over("[S]\na=1\n", "T", "b", "2"), "[S]\na=1\n[T]\r\nb=2\r\n"); }

TEST_F(IniWrite, LastLineWithoutBreakGetsOneWhenMoreFollows) {
    EXPECT_EQ(Over("[S]\na=1", "T", "b", "2"), "[S]\na=1\r\n[T]\r\nb=2\r\n");
    EXPECT_EQ(Over("[S]\na=1", "S", "b", "2"), "[S]\na=1\r\nb=2\r\n");
    EXPECT_EQ(Over("[S]", "S", "b", "2"), "[S]\r\nb=2\r\n");
}

TEST_F(IniWrite, ValueIsWrittenUntrimmedAndWithoutQuoting_SoItReadsBackChanged) {
    EXPECT_EQ(Over("", "S", "k", " \"x\" "), "[S]\r\nk= \"x\" \r\n");
    EXPECT_EQ(Value("S", "k"), "x");
}

TEST_F(IniWrite, BlanksAroundTheNamesGo) {
    EXPECT_EQ(Over("", " S ", " k ", "v"), "[S]\r\nk=v\r\n");
    EXPECT_EQ(Over("[S]\nk=1\n", " s ", " K ", "2"), "[S]\nk=2\n");
}

TEST_F(IniWrite, BracketInASectionNameIsWrittenButNotFoundAgain) {
    EXPECT_EQ(Over("", "a]b", "k", "v"), "[a]b]\r\nk=v\r\n");
    EXPECT_EQ(Value("a]b", "k"), "none");
    EXPECT_EQ(Value("a", "k"), "v");
}

TEST_F(IniWrite, NullValueRemovesTheKey_TheEmptySectionStays) {
    EXPECT_EQ(Over("[S]\na=1\n", "S", "A", nullptr), "[S]\n");
    EXPECT_EQ(Over("[S]\na=1\r\n;c\nb=2", "S", "b", nullptr), "[S]\na=1\r\n;c\n");
    EXPECT_EQ(Over("[S]\na=1\na=2\n", "S", "a", nullptr), "[S]\na=2\n");
}

TEST_F(IniWrite, NullKeyRemovesTheSection_ItsCommentsStay) {
    EXPECT_EQ(Over("[A]\nx=1\n[S]\n;one\na=1\nkeyless\n\n;two\n[B]\ny=2\n", "s", nullptr, nullptr),
              "[A]\nx=1\n;one\n\n;two\n[B]\ny=2\n");
    EXPECT_EQ(Over("[S]\na=1\n", "S", nullptr, "v"), "");
}

TEST_F(IniWrite, RemovingWhatIsNotThereSucceedsAndChangesNothing) {
    EXPECT_EQ(Write("S", "k", nullptr), 1);
    EXPECT_EQ(Write("S", nullptr, nullptr), 1);
    EXPECT_FALSE(fs::exists(path));
    EXPECT_EQ(Over("[S]\na=1", "S", "k", nullptr), "[S]\na=1");
    EXPECT_EQ(Over("[S]\na=1", "T", "k", nullptr), "[S]\na=1");
    EXPECT_EQ(Over("[S]\na=1", "T", nullptr, nullptr), "[S]\na=1");
}

// What a write of the same must leave: nothing is written, so nothing is replaced, and nobody was waited for.
TEST_F(IniWrite, WhatChangesNothingWritesNothing) {
    File("[S]\na=1");
    struct stat before;
    ASSERT_EQ(stat(path.c_str(), &before), 0);
    EXPECT_EQ(Write("S", "a", "1"), 1);
    EXPECT_EQ(Write("S", "k", nullptr), 1);
    EXPECT_EQ(Write("T", nullptr, nullptr), 1);
    struct stat after;
    ASSERT_EQ(stat(path.c_str(), &after), 0);
    EXPECT_EQ(after.st_ino, before.st_ino);
    EXPECT_THAT(folder.Entries(), UnorderedElementsAre("file.ini"));
}

TEST_F(IniWrite, NullSectionAndMissingPathFail) {
    EXPECT_EQ(Write(nullptr, "k", "v"), 0);
    EXPECT_EQ(GetLastError(), ERROR_INVALID_PARAMETER);
    EXPECT_EQ(WritePrivateProfileStringA("S", "k", "v", nullptr), 0);
    EXPECT_EQ(WritePrivateProfileStringA("S", "k", "v", ""), 0);
    EXPECT_THAT(folder.Entries(), UnorderedElementsAre());
}

TEST_F(IniWrite, Utf16FileStaysOne) {
    File(Utf16(u"; \xD800 alone\r\n[Gro\u00DFe]\r\na=1\r\n") + "x");
    EXPECT_EQ(Write("GRO\u00DFE", "a", "\u00E9\U0001F600"), 1);
    EXPECT_EQ(Write("New", "b", "2"), 1);
    EXPECT_EQ(File(), Utf16(u"; \xD800 alone\r\n[Gro\u00DFe]\r\na=\u00E9\U0001F600\r\n[New]\r\nb=2\r\n") + "x");
}

TEST_F(IniWrite, Utf16FileTakesTextsOfTheCodePage) {
    ASSERT_TRUE(qfc::SetAnsiCodePage("CP1252"));
    File(Utf16(u"[S]\r\n"));
    EXPECT_EQ(Write("S", "\xE9", "\x80"), 1);
    EXPECT_EQ(File(), Utf16(u"[S]\r\n\u00E9=\u20AC\r\n"));
    EXPECT_EQ(Value("S", "\xC9"), "\x80");
}

TEST_F(IniWrite, LinkStaysALink_PermissionsStay) {
    const std::string real = folder.Write("real.ini", "[S]\na=1\n");
    ASSERT_EQ(chmod(real.c_str(), 0640), 0);
    fs::create_symlink("real.ini", path);
    EXPECT_EQ(Write("S", "a", "2"), 1);
    EXPECT_TRUE(fs::is_symlink(path));
    EXPECT_EQ(qfc::test::ReadFile(real), "[S]\na=2\n");
    struct stat status;
    ASSERT_EQ(stat(real.c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 0777, 0640u);
}

TEST_F(IniWrite, FileIsMadeWhereADanglingLinkPointsTo) {
    folder.MakeFolder("sub");
    fs::create_symlink("sub/next.ini", path);
    fs::create_symlink(folder / "real.ini", folder / "sub/next.ini");
    EXPECT_EQ(Write("S", "a", "1"), 1);
    EXPECT_TRUE(fs::is_symlink(path));
    EXPECT_TRUE(fs::is_symlink(folder / "sub/next.ini"));
    EXPECT_EQ(qfc::test::ReadFile(folder / "real.ini"), "[S]\r\na=1\r\n");
    EXPECT_EQ(Value("S", "a"), "1");
    EXPECT_THAT(folder.Entries(), UnorderedElementsAre("file.ini", "real.ini", "real.ini.lock", "sub"));
}

TEST_F(IniWrite, LinkToItselfIsNoProfile) {
    fs::create_symlink("file.ini", path);
    EXPECT_EQ(Write("S", "a", "1"), 0);
    EXPECT_TRUE(fs::is_symlink(path));
}

TEST_F(IniWrite, ReadOnlyFileIsNotReplaced) {
    File("[S]\na=1\n");
    ASSERT_EQ(chmod(path.c_str(), 0444), 0);
    EXPECT_EQ(Write("S", "a", "2"), 0);
    EXPECT_EQ(GetLastError(), ERROR_ACCESS_DENIED);
    EXPECT_EQ(File(), "[S]\na=1\n");
}

TEST_F(IniWrite, FolderOfThatNameIsNoProfile) {
    fs::create_directory(path);
    EXPECT_EQ(Write("S", "a", "2"), 0);
    EXPECT_TRUE(fs::is_directory(path));
}

TEST_F(IniWrite, FailedWriteLeavesTheOldFileAndNoTrace) {
    const std::string before = "[S]\na=" + std::string(60000, 'x') + "\n";
    File(before);
    rlimit limit{};
    getrlimit(RLIMIT_FSIZE, &limit);
    const auto handler = std::signal(SIGXFSZ, SIG_IGN);
    const rlimit small{30000, limit.rlim_max};
    setrlimit(RLIMIT_FSIZE, &small);
    const int written = Write("S", "b", "2");
    setrlimit(RLIMIT_FSIZE, &limit);
    std::signal(SIGXFSZ, handler);
    EXPECT_EQ(written, 0);
    EXPECT_EQ(File(), before);
    EXPECT_THAT(folder.Entries(), UnorderedElementsAre("file.ini", "file.ini.lock"));
}

TEST_F(IniWrite, RestOfACrashedWriterIsNoObstacle) {
    folder.Write("file.ini.new", "half");
    EXPECT_EQ(Write("S", "a", "1"), 1);
    EXPECT_EQ(File(), "[S]\r\na=1\r\n");
    EXPECT_THAT(folder.Entries(), UnorderedElementsAre("file.ini", "file.ini.lock"));
}

TEST_F(IniWrite, ReaderThatHasTheFileOpenKeepsTheOldOne) {
    File("[S]\na=1\n");
    std::ifstream reader(path);
    EXPECT_EQ(Write("S", "a", "2"), 1);
    EXPECT_EQ(std::string(std::istreambuf_iterator<char>(reader), {}), "[S]\na=1\n");
    EXPECT_EQ(Value("S", "a"), "2");
}

TEST_F(IniWrite, EveryWriteIsReadAtOnce) {
    for (int i = 0; i < 200; ++i) {
        const std::string value = std::to_string(100 + i);
        ASSERT_EQ(Write("S", "k", value.c_str()), 1);
        ASSERT_EQ(Value("S", "k"), value);
    }
}

TEST_F(IniWrite, ThreadsLoseNothing) {
    std::vector<std::thread> writers;
    for (int t = 0; t < 4; ++t) {
        writers.emplace_back([this, t] {
            for (int i = 0; i < 25; ++i) {
                const std::string key = "t" + std::to_string(t) + "-" + std::to_string(i);
                EXPECT_EQ(Write("S", key.c_str(), "x"), 1);
                EXPECT_EQ(Value("S", key.c_str()), "x");
            }
        });
    }
    for (std::thread& writer : writers) writer.join();
    EXPECT_EQ(qfc::ReadProfileSection("S", path).size(), 100u);
}

TEST_F(IniWrite, ProcessesLoseNothing_ReadersSeeWholeFiles) {
    File("[First]\nkey=value\n");
    std::vector<pid_t> children;
    for (int child = 0; child < 3; ++child) {
        const pid_t pid = fork();
        if (pid == 0) {
            int failed = 0;
            for (int i = 0; i < 20; ++i) {
                const std::string key = "c" + std::to_string(child) + "-" + std::to_string(i);
                if (Write("S", key.c_str(), "x") != 1 || Value("First", "key") != "value") failed = 1;
            }
            _exit(failed);
        }
        children.push_back(pid);
    }
    for (const pid_t pid : children) {
        int status = -1;
        ASSERT_EQ(waitpid(pid, &status, 0), pid);
        EXPECT_EQ(status, 0);
    }
    EXPECT_EQ(qfc::ReadProfileSection("S", path).size(), 60u);
}

TEST_F(IniWrite, HundredThousandLinesKeepEveryOtherByte) {
    std::string before = "[S]\n";
    for (int i = 0; i < 100000; ++i) before += "key" + std::to_string(i) + "=" + std::to_string(i) + "\n";
    File(before);
    EXPECT_EQ(Write("S", "key50000", "new"), 1);
    const std::string line = "key50000=50000\n";
    std::string expected = before;
    expected.replace(expected.find(line), line.size(), "key50000=new\n");
    EXPECT_TRUE(File() == expected);
}

// Fails each allocation of `call` in turn, each time behind `prepare`, until it comes through. How many there were.
template <class Prepare, class Call>
int FailEachAllocation(const Prepare& prepare, const Call& call) {
    for (int n = 1;; ++n) {
        prepare();
        const qfc::test::MemoryFaults faults(n);
        call(faults);
        if (!faults.HasFailed()) return n - 1;
    }
}

TEST_F(IniWrite, WithoutMemoryTheOldFileOrTheNewOneStays) {
    const int failed = FailEachAllocation([&] { File("[S]\na=1\n"); },
                                          [&](const qfc::test::MemoryFaults& faults) {
                                              SetLastError(ERROR_SUCCESS);
                                              const int written = Write("S", "a", "2");
                                              EXPECT_EQ(written, faults.HasFailed() ? 0 : 1);
                                              EXPECT_EQ(GetLastError() == ERROR_NOT_ENOUGH_MEMORY, faults.HasFailed());
                                          });
    EXPECT_GE(failed, 5);
    EXPECT_EQ(File(), "[S]\na=2\n");
}

TEST_F(IniWrite, WithoutMemoryNothingIsRead) {
    char buffer[32];
    const auto answers = [&](DWORD length, char first, DWORD expected) {
        return length == expected ? buffer[0] == first : length == 0 && buffer[0] == '\0';
    };
    const int failed = FailEachAllocation(
        [&] { File("[S]\na=1\n"); },
        [&](const qfc::test::MemoryFaults& faults) {
            const bool read = GetPrivateProfileStringA("S", "a", "none ", buffer, sizeof(buffer), path.c_str()) == 1;
            EXPECT_STREQ(buffer, read ? "1" : "none");
            EXPECT_TRUE(read || faults.HasFailed());
            EXPECT_TRUE(answers(GetPrivateProfileSectionNamesA(buffer, sizeof(buffer), path.c_str()), 'S', 2));
            EXPECT_TRUE(answers(GetPrivateProfileSectionA("S", buffer, sizeof(buffer), path.c_str()), 'a', 4));
        });
    EXPECT_GE(failed, 5);
}

}  // namespace
