#include "CommandsTest.h"

#include <algorithm>
#include <csignal>
#include <fcntl.h>
#include <optional>
#include <set>
#include <string>
#include <sys/file.h>
#include <system_error>
#include <unistd.h>

namespace qfc::test {
namespace {

namespace fs = std::filesystem;

class CommandsFaults : public CommandsTest {
protected:
    // Names so long that few lines of a report fill a narrow pipe: the program then cannot be done before it is read.
    Names ManyImages(int count) {
        m_media.MakeFolder("many");
        Names names;
        for (int i = 0; i < count; ++i) {
            char number[16];
            std::snprintf(number, sizeof number, "%04d", i);
            names.push_back(number + std::string(180, 'x') + ".ppm");
            Image("many/" + names.back(), i, 64);
        }
        return names;
    }
    static std::set<std::string> AddedNames(const std::string& out) {
        std::set<std::string> names;
        const std::string marker = "added many\\";
        for (std::size_t at = out.find(marker); at != std::string::npos; at = out.find(marker, at + 1)) {
            const std::size_t end = out.find('\n', at);
            if (end == std::string::npos) break;
            names.insert(out.substr(at + marker.size(), end - at - marker.size()));
        }
        return names;
    }
    std::set<std::string> StoredNames() const {
        const Names names = ItemsOf("many");
        return {names.begin(), names.end()};
    }
    void MakeReadOnly() const {
        fs::permissions(m_folder.Path(), fs::perms(0755));
        fs::permissions(m_media.Path(), fs::perms(0755));
        fs::permissions(Database(), fs::perms(0444));
        fs::permissions(m_library, fs::perms(0555));
    }
    static constexpr QfcWorld kUnprivileged{.unprivileged = true, .largestFile = std::nullopt, .narrowPipe = false};
    static constexpr QfcWorld kNarrow{.unprivileged = false, .largestFile = std::nullopt, .narrowPipe = true};
    static QfcWorld FullAt(long bytes) { return {.unprivileged = false, .largestFile = bytes, .narrowPipe = false}; }
};

TEST_F(CommandsFaults, ReadOnlyLibrary_EveryChangeFailsWithTheNames) {
    if (!CanRunUnprivileged()) GTEST_SKIP() << "nobody else can start the program here";
    Done({"import", Image("a.ppm"), "--folder", "A"});
    Done({"mkdir", "B"});
    const std::string fresh = Image("new.ppm", 9);
    const std::string before = ReadFile(Database());
    MakeReadOnly();
    const std::vector<std::pair<Args, std::string>> changes = {
        {{"import", fresh, "--folder", "A"}, "new.ppm"},
        {{"import", fresh, "--folder", "New"}, "new.ppm"},
        {{"mkdir", "C"}, "C"},
        {{"rmdir", "A", "--recursive"}, "A"},
        {{"mv", "A\\a.ppm", "B"}, "a.ppm"},
        {{"mv", "B", "A"}, "B"},
        {{"rename", "A\\a.ppm", "b"}, "b"},
        {{"rename", "B", "C"}, "C"},
        {{"rm", "A\\a.ppm"}, "a.ppm"},
        {{"rm", "A\\a.ppm", "--everywhere"}, "a.ppm"},
        {{"reorder", "B", "--to", "1"}, "B"},
        {{"gallery", "create", "Holidays"}, "Holidays"},
        {{"gallery", "rm", "Media"}, "A"},
        {{"clear", "--yes"}, "library"},
    };
    for (const auto& [arguments, name] : changes) {
        const QfcResult result = Qfc(arguments, kUnprivileged);
        EXPECT_EQ(result.exit, 1) << arguments.front() << ": " << result.out << result.err;
        EXPECT_NE(result.err.find(name), std::string::npos) << arguments.front() << ": " << result.err;
        EXPECT_EQ(ReadFile(Database()), before) << arguments.front();
    }
}

TEST_F(CommandsFaults, ReadOnlyLibrary_CanBeLookedAt) {
    if (!CanRunUnprivileged()) GTEST_SKIP() << "nobody else can start the program here";
    Done({"import", Image("a.ppm"), "--folder", "A"});
    MakeReadOnly();
    for (const Args& arguments :
         {Args{"tree"}, Args{"ls", "A"}, Args{"show", "A\\a.ppm"}, Args{"find", "a"}, Args{"thumbs"}, Args{"check"}}) {
        const QfcResult result = Qfc(arguments, kUnprivileged);
        EXPECT_EQ(result.exit, 0) << arguments.front() << ": " << result.err;
    }
}

TEST_F(CommandsFaults, FullDisk_CountsOnlyWhatIsStored_AndNamesTheRest) {
    Done({"mkdir", "many"});
    const Names names = ManyImages(60);
    const auto size = static_cast<long>(fs::file_size(Database()));
    const QfcResult result = Qfc({"import", Media("many")}, FullAt(size + 40000));
    EXPECT_EQ(result.exit, 1);
    const std::set<std::string> added = AddedNames(result.out);
    EXPECT_GT(added.size(), 0u) << result.out;
    EXPECT_LT(added.size(), names.size());
    EXPECT_EQ(StoredNames(), added);
    for (const std::string& name : names) {
        const bool named = result.err.find(name) != std::string::npos;
        EXPECT_NE(named, added.contains(name)) << name;
    }
    ExpectSound();
    EXPECT_EQ(Done({"import", Media("many")})["added"].size(), names.size() - added.size());
}

TEST_F(CommandsFaults, FullDisk_MoveAndRenameLeaveEverythingAsItWas) {
    Done({"import", Image("a.ppm", 0, 64), "--folder", "A"});
    Done({"mkdir", "B"});
    const std::string before = DumpOf(Database());
    for (const Args& arguments : {Args{"mv", "A\\a.ppm", "B"}, Args{"mv", "B", "A"}, Args{"rename", "A\\a.ppm", "b"},
                                  Args{"rename", "B", "C"}, Args{"rm", "A\\a.ppm"}}) {
        EXPECT_EQ(Qfc(arguments, FullAt(512)).exit, 1) << arguments.front();
        EXPECT_EQ(DumpOf(Database()), before) << arguments.front();
    }
}

TEST_F(CommandsFaults, CtrlC_FinishesWhatIsOnTheWay_AndSaysWhatWasDone) {
    ManyImages(400);
    QfcProcess process(WithLibrary({"import", Media("many")}), kNarrow);
    ASSERT_TRUE(process.ReadLine());
    process.Signal(SIGINT);
    const QfcResult result = process.Wait();
    EXPECT_EQ(result.exit, 1);
    EXPECT_NE(result.err.find("interrupted: "), std::string::npos) << result.err;
    const std::set<std::string> added = AddedNames(result.out);
    EXPECT_GT(added.size(), 0u);
    EXPECT_LT(added.size(), 400u);
    EXPECT_EQ(StoredNames(), added);
    ExpectSound();
}

TEST_F(CommandsFaults, AClosedTerminal_EndsAnImportLikeCtrlC) {
    ManyImages(400);
    QfcProcess process(WithLibrary({"import", Media("many")}), kNarrow);
    ASSERT_TRUE(process.ReadLine());
    process.Signal(SIGHUP);
    const QfcResult result = process.Wait();
    EXPECT_EQ(result.exit, 1);
    EXPECT_NE(result.err.find("interrupted: "), std::string::npos) << result.err;
    EXPECT_EQ(StoredNames(), AddedNames(result.out));
    ExpectSound();
}

TEST_F(CommandsFaults, AReaderThatLeaves_IsAFailureAndNotTheEnd) {
    ManyImages(100);
    QfcProcess process(WithLibrary({"import", Media("many")}), kNarrow);
    ASSERT_TRUE(process.ReadLine());
    process.StopReading();
    const QfcResult result = process.Wait();
    EXPECT_EQ(result.exit, 1);
    EXPECT_NE(result.err.find("cannot write to standard output"), std::string::npos) << result.err;
    ExpectSound();
}

TEST_F(CommandsFaults, ImportLibraryThatIsCutOff_LeavesNoTemporaryFiles) {
    ManyImages(300);
    const std::string other = m_folder / "other";
    ASSERT_EQ(QfcProcess({"--data-dir", other, "--quiet", "import", Media("many")}, {}).Wait().exit, 0);
    const std::string temporary = m_folder.MakeFolder("tmp");
    setenv("TMPDIR", temporary.c_str(), 1);
    for (const bool hangUp : {true, false}) {
        const Args arguments = {"--data-dir", m_folder / (hangUp ? "first" : "second"), "import-library",
                                other + "/CinelumeDatabase.db"};
        QfcProcess process(arguments, kNarrow);
        EXPECT_TRUE(process.ReadLine());
        if (hangUp) {
            process.Signal(SIGHUP);
        } else {
            process.StopReading();
        }
        EXPECT_EQ(process.Wait().exit, 1);
        EXPECT_TRUE(fs::is_empty(temporary));
    }
    unsetenv("TMPDIR");
}

TEST_F(CommandsFaults, KilledImport_LosesNothingItSaid) {
    ManyImages(400);
    QfcProcess process(WithLibrary({"import", Media("many")}), kNarrow);
    for (int i = 0; i < 20; ++i) ASSERT_TRUE(process.ReadLine());
    process.Signal(SIGKILL);
    const QfcResult result = process.Wait();
    EXPECT_EQ(result.exit, 128 + SIGKILL);
    const std::set<std::string> stored = StoredNames();
    const std::set<std::string> added = AddedNames(result.out);
    EXPECT_GE(added.size(), 20u);
    EXPECT_TRUE(std::ranges::includes(stored, added));
    ExpectSound();
    Done({"import", Media("many")});
    EXPECT_EQ(StoredNames().size(), 400u);
    ExpectSound();
}

// --- Another qfc -------------------------------------------------------------------------------------------------

// How a process that has the file open may use it; nothing when none has.
std::optional<int> AccessTo(const std::string& file) {
    std::error_code ignored;
    for (const auto& process : fs::directory_iterator("/proc", ignored)) {
        for (const auto& descriptor : fs::directory_iterator(process.path() / "fd", ignored)) {
            if (fs::read_symlink(descriptor.path(), ignored) != file) continue;
            const std::string about = ReadFile(process.path() / "fdinfo" / descriptor.path().filename());
            const std::size_t flags = about.find("flags:");
            if (flags != std::string::npos) return std::stoi(about.substr(flags + 6), nullptr, 8) & O_ACCMODE;
        }
    }
    return std::nullopt;
}

// A network file system locks exclusively nothing else.
TEST_F(CommandsFaults, LockIsOpenForWriting) {
    ManyImages(100);
    QfcProcess process(WithLibrary({"import", Media("many")}), kNarrow);
    ASSERT_TRUE(process.ReadLine());
    EXPECT_EQ(AccessTo(Database() + ".lock"), O_RDWR);
}

TEST_F(CommandsFaults, LockOfAnotherThatMayOnlyBeReadIsHeldAllTheSame) {
    if (!CanRunUnprivileged()) GTEST_SKIP() << "nobody else can start the program here";
    Done({"mkdir", "A"});
    fs::permissions(m_folder.Path(), fs::perms(0755));
    fs::permissions(m_library, fs::perms(0777));
    fs::permissions(Database(), fs::perms(0666));
    fs::permissions(Database() + ".lock", fs::perms(0444));
    const int lock = open((Database() + ".lock").c_str(), O_RDONLY | O_CLOEXEC);
    ASSERT_EQ(flock(lock, LOCK_EX | LOCK_NB), 0);
    const QfcResult refused = Qfc({"mkdir", "B"}, kUnprivileged);
    EXPECT_EQ(refused.exit, 1);
    EXPECT_EQ(refused.err, "qfc: another qfc is changing the library\n");
    close(lock);
    EXPECT_EQ(Qfc({"mkdir", "B"}, kUnprivileged).exit, 0);
}

TEST_F(CommandsFaults, WhileAnotherChangesTheLibrary_ChangesAreRefusedAndLookingIsNot) {
    Done({"import", Image("a.ppm"), "--folder", "A"});
    Done({"gallery", "create", "Own"});
    Done({"export", m_folder / "copy.db"});
    const std::string before = ReadFile(Database());
    const int lock = open((Database() + ".lock").c_str(), O_RDONLY | O_CLOEXEC);
    ASSERT_NE(lock, -1);
    ASSERT_EQ(flock(lock, LOCK_EX | LOCK_NB), 0);
    const std::vector<Args> changes = {{"import", Media("a.ppm")},
                                       {"import-library", m_folder / "copy.db"},
                                       {"mkdir", "B"},
                                       {"rmdir", "A", "--recursive"},
                                       {"mv", "A", "\\"},
                                       {"rename", "A", "B"},
                                       {"rm", "A\\a.ppm"},
                                       {"reorder", "A", "--by", "name"},
                                       {"gallery", "create", "Other"},
                                       {"gallery", "rm", "Own"},
                                       {"clear", "--yes"}};
    for (const Args& change : changes) EXPECT_EQ(Refused(change), "qfc: another qfc is changing the library\n");
    for (const Args& look : {Args{"tree"}, Args{"ls", "A"}, Args{"find", "a"}, Args{"gallery", "list"}, Args{"check"}})
        EXPECT_EQ(Qfc(look).exit, 0) << look.front();
    EXPECT_EQ(ReadFile(Database()), before);
    close(lock);
    Done({"mkdir", "B"});
    EXPECT_TRUE(fs::exists(Database() + ".lock"));
}

TEST_F(CommandsFaults, CtrlC_OfImportLibrary_SaysOnceWhatWasDone) {
    ManyImages(300);
    const std::string other = m_folder / "other";
    ASSERT_EQ(QfcProcess({"--data-dir", other, "--quiet", "import", Media("many")}, {}).Wait().exit, 0);
    const std::string later = Image("later.ppm", 7);
    ASSERT_EQ(QfcProcess({"--data-dir", other, "import", later, "--folder", "Z"}, {}).Wait().exit, 0);
    QfcProcess process(WithLibrary({"import-library", other + "/CinelumeDatabase.db"}), kNarrow);
    ASSERT_TRUE(process.ReadLine());
    process.Signal(SIGINT);
    const QfcResult result = process.Wait();
    EXPECT_EQ(result.exit, 1);
    EXPECT_NE(result.err.find("interrupted: "), std::string::npos) << result.err;
    EXPECT_EQ((result.out + result.err).find("later.ppm"), std::string::npos);
    EXPECT_EQ(result.out.find(" there already, "), std::string::npos) << result.out;
    EXPECT_EQ(result.err.find(" there already, "), result.err.rfind(" there already, "));
    ExpectSound();
}

}  // namespace
}  // namespace qfc::test
