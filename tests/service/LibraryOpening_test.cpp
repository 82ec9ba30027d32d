#include "service/LibraryOpening.h"

#include "db/DBTools.h"
#include "platform/os/FolderLock.h"
#include "platform/text/CodePages.h"
#include "tests/support/ConverterFaults.h"
#include "tests/support/LibraryFixture.h"
#include "tests/support/RawDb.h"
#include "tests/support/SqlTrace.h"
#include "tests/support/SystemCalls.h"
#include "tests/support/TempFolder.h"

#include <atomic>
#include <cerrno>
#include <fstream>
#include <optional>
#include <sqlite3.h>
#include <stdexcept>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

namespace {

namespace fs = std::filesystem;
using qfc::test::RawDb;

class LibraryOpening : public qfc::test::StoppedServiceFixture {
protected:
    static fs::path Journal() { return DatabaseFile().string() + "-journal"; }
    static std::string TextOf(const fs::path& file) { return qfc::test::ReadFile(file); }
};

// --- Several processes that find no library ---

// Counts the connections that are opened in this process.
class ConnectionWatch {
public:
    ConnectionWatch() {
        s_opened = 0;
        sqlite3_auto_extension(reinterpret_cast<void (*)()>(&Note));
    }
    ~ConnectionWatch() { sqlite3_cancel_auto_extension(reinterpret_cast<void (*)()>(&Note)); }
    ConnectionWatch(const ConnectionWatch&) = delete;
    ConnectionWatch& operator=(const ConnectionWatch&) = delete;
    static int Opened() { return s_opened; }

private:
    static int Note(sqlite3*, char**, const void*) {
        ++s_opened;
        return SQLITE_OK;
    }
    static inline std::atomic<int> s_opened;
};

// The other one holds the folder while it makes the library, and its journal lies beside a file that was missing just
// before.
TEST_F(LibraryOpening, WhileAnotherMakesTheLibrary_ItsJournalIsLeftAlone) {
    MakeTemplate();
    qfc::FolderLock other(DataFolder());
    ASSERT_TRUE(other.TryLock());
    const ConnectionWatch connections;
    std::optional<RawDb> maker;
    int refused = 0;
    qfc::test::SystemCalls calls;
    calls.flock = [&](int file, int operation) {
        const int result = qfc::test::SystemCalls::RealFlock(file, operation);
        if (result == 0 || maker) return result;
        EXPECT_FALSE(fs::exists(DatabaseFile()));  // One that did not wait would have seeded.
        if (++refused < 3) return qfc::test::SystemCalls::Refuse(EWOULDBLOCK);
        maker.emplace(DatabaseFile());
        maker->Exec("PRAGMA busy_timeout = 60000; BEGIN IMMEDIATE; CREATE TABLE MINE(N)");
        return qfc::test::SystemCalls::Refuse(EWOULDBLOCK);
    };
    std::atomic<int> started = -1;
    std::thread host([&] { started = Start(); });
    // When it opens a connection beside the maker's, it is done with the files.
    while (ConnectionWatch::Opened() < 2 && started == -1) std::this_thread::yield();
    EXPECT_TRUE(maker && fs::exists(Journal()));
    EXPECT_FALSE(fs::exists(Journal().string() + ".lost"));
    if (maker) {
        EXPECT_NO_THROW(maker->Exec("COMMIT"));
    }
    host.join();
    EXPECT_EQ(started, 1);
    EXPECT_EQ(CountRows("MINE"), 0);
    EXPECT_EQ(CountRows("sqlite_master where name = 'SEED'"), 0);
}

// The other one is done with the tables, and in the middle of its first change.
TEST_F(LibraryOpening, LibraryThatCameBetweenTheLookAndTheLock_KeepsItsJournal) {
    MakeTemplate();
    const fs::path made = Scratch() / "made.db";
    ASSERT_EQ(Start(), 1);
    ASSERT_EQ(Stop(), 1);
    fs::rename(DatabaseFile(), made);
    std::optional<RawDb> maker;
    qfc::test::SystemCalls calls;
    calls.flock = [&](int file, int operation) {
        if (!maker) {
            fs::rename(made, DatabaseFile());
            maker.emplace(DatabaseFile());
            maker->Exec("BEGIN IMMEDIATE; CREATE TABLE MINE(N)");
        }
        return qfc::test::SystemCalls::RealFlock(file, operation);
    };
    EXPECT_EQ(Start(), 1);
    ASSERT_TRUE(maker);
    EXPECT_TRUE(fs::exists(Journal()));
    EXPECT_FALSE(fs::exists(Journal().string() + ".lost"));
    EXPECT_NO_THROW(maker->Exec("COMMIT"));
    EXPECT_EQ(CountRows("MINE"), 0);
}

// Looks at each commit of a new connection whether another host could take the folder.
class FolderWatch {
public:
    explicit FolderWatch(const fs::path& folder) {
        s_folder = folder;
        s_commits = s_free = 0;
        sqlite3_auto_extension(reinterpret_cast<void (*)()>(&Attach));
    }
    ~FolderWatch() { sqlite3_cancel_auto_extension(reinterpret_cast<void (*)()>(&Attach)); }
    FolderWatch(const FolderWatch&) = delete;
    FolderWatch& operator=(const FolderWatch&) = delete;
    static int Commits() { return s_commits; }
    static int TimesFree() { return s_free; }

private:
    static int Attach(sqlite3* db, char**, const void*) {
        sqlite3_commit_hook(db, &Look, nullptr);
        return SQLITE_OK;
    }
    static int Look(void*) {
        qfc::FolderLock lock(s_folder);
        ++s_commits;
        if (lock.TryLock()) ++s_free;
        return 0;
    }
    static inline fs::path s_folder;
    static inline std::atomic<int> s_commits;
    static inline std::atomic<int> s_free;
};

TEST_F(LibraryOpening, TheFolderIsHeldUntilTheTablesAreThere_AndNotLonger) {
    MakeTemplate();
    {
        const FolderWatch watch(DataFolder());
        ASSERT_EQ(Start(), 1);
        EXPECT_GT(FolderWatch::Commits(), 5);
        EXPECT_EQ(FolderWatch::TimesFree(), 0);
    }
    qfc::FolderLock lock(DataFolder());
    EXPECT_TRUE(lock.TryLock());
}

TEST_F(LibraryOpening, LibraryThatCannotBeLookedAt_KeepsItsJournal) {
    // Fixed before: under such a path nothing would be fixed, nor opened.
    ASSERT_FALSE(QFCLibraryManager::GetDatabasePath().IsEmpty());
    fs::create_symlink(DatabaseFile(), DatabaseFile());
    std::ofstream(Journal()) << "unfinished";
    EXPECT_EQ(Start(), 0);
    EXPECT_TRUE(fs::exists(Journal()));
}

TEST_F(LibraryOpening, LibraryThatIsThere_NeedsNoTurn) {
    RawDb(DatabaseFile()).Exec("create table MINE(N)");
    qfc::FolderLock other(DataFolder());
    ASSERT_TRUE(other.TryLock());
    EXPECT_EQ(Start(), 1);
    EXPECT_EQ(Stop(), 1);
    EXPECT_EQ(QFCLibraryManager::fnClearDBContent(), 1);
}

TEST_F(LibraryOpening, ClearingAMissingLibrary_MakesItWithoutTheTemplate) {
    MakeTemplate();
    EXPECT_EQ(QFCLibraryManager::fnClearDBContent(), 1);
    EXPECT_EQ(CountRows("sqlite_master where name = 'SEED'"), 0);
    EXPECT_EQ(CountRows("sqlite_master where name = 'LIB_TAG_TABLE'"), 1);
}

TEST_F(LibraryOpening, ClearingAMissingLibrary_KeepsItsJournal) {
    std::ofstream(Journal()) << "unfinished";
    EXPECT_EQ(QFCLibraryManager::fnClearDBContent(), 1);
    EXPECT_FALSE(fs::exists(Journal()));
    EXPECT_EQ(TextOf(Journal().string() + ".lost"), "unfinished");
}

// --- A library that is a link ---

// To a file on another disk that is not there, since it was moved aside, say.
class LinkedLibraryOpening : public LibraryOpening {
protected:
    void SetUp() override {
        LibraryOpening::SetUp();
        fs::create_directories(m_file.parent_path());
        fs::create_symlink("../scratch/disk/next.db", DatabaseFile());
        fs::create_symlink("real.db", m_file.parent_path() / "next.db");
    }

    const fs::path m_file = Scratch() / "disk" / "real.db";
};

TEST_F(LinkedLibraryOpening, JournalsBesideItsFileAreKept) {
    for (const char* pszSuffix : {"-journal", "-wal"}) std::ofstream(m_file.string() + pszSuffix) << pszSuffix;
    // Beside the link SQLite keeps nothing.
    std::ofstream(Journal()) << "somebody's";
    EXPECT_EQ(Start(), 1);
    for (const char* pszSuffix : {"-journal", "-wal"}) {
        EXPECT_EQ(TextOf(m_file.string() + pszSuffix + ".lost"), pszSuffix);
    }
    EXPECT_EQ(TextOf(Journal()), "somebody's");
}

TEST_F(LinkedLibraryOpening, IsSeededWhereItLeads) {
    MakeTemplate();
    EXPECT_EQ(Start(), 1);
    EXPECT_TRUE(fs::is_symlink(DatabaseFile()));
    EXPECT_TRUE(fs::is_regular_file(m_file));
    EXPECT_EQ(CountRows("SEED where N = 42"), 1);
    EXPECT_EQ(Stop(), 1);
    RawDb(m_file).Exec("update SEED set N = 43");
    EXPECT_EQ(Start(), 1);
    EXPECT_EQ(CountRows("SEED where N = 43"), 1) << "it is there now";
}

TEST_F(LinkedLibraryOpening, FolderOfItsFileIsHeld) {
    const FolderWatch watch(m_file.parent_path());
    ASSERT_EQ(Start(), 1);
    EXPECT_GT(FolderWatch::Commits(), 5);
    EXPECT_EQ(FolderWatch::TimesFree(), 0);
}

// --- How long a path may be ---

// In a child, so that this process can go on with its own path.
template <typename Host>
void ExpectInAChild(Host host) {
    const pid_t child = fork();
    if (child == 0) {
        host();
        _exit(testing::Test::HasFailure() ? 1 : 0);
    }
    int status = -1;
    ASSERT_EQ(waitpid(child, &status, 0), child);
    EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0) << "status " << status;
}

// A folder of so many bytes, its closing slash included.
std::string FolderOfLength(const fs::path& parent, std::size_t length) {
    std::string folder = parent.string() + "/";
    while (folder.size() + 101 < length) folder += std::string(99, 'a') + "/";
    return folder + std::string(length - folder.size() - 1, 'b') + "/";
}

// The file's name has 19 bytes, and a path may have 260.
TEST_F(LibraryOpening, FoldersWhosePathToTheLibraryIsTooLong_FailTheStartAndFixNothing) {
    if (!qfc::SetDataFolder(DataFolder().c_str())) GTEST_SKIP() << "the path is fixed once a process";
    ExpectInAChild([] {
        for (std::size_t length = 242; length <= 262; ++length) {
            const std::string folder = FolderOfLength(Scratch(), length);
            ASSERT_EQ(folder.size(), length);
            ASSERT_TRUE(qfc::SetDataFolder(folder.c_str())) << length;
            EXPECT_EQ(Start(), 0) << length;
            EXPECT_TRUE(QFCLibraryManager::GetDatabasePath().IsEmpty()) << length;
            EXPECT_EQ(QFCLibraryManager::fnClearDBContent(), 0) << length;
            EXPECT_FALSE(fs::exists(folder)) << length;
        }
        const std::string longest = FolderOfLength(Scratch(), 241);
        ASSERT_TRUE(qfc::SetDataFolder(longest.c_str()));
        EXPECT_EQ(Start(), 1);
        EXPECT_EQ(QFCLibraryManager::GetDatabasePath().GetLength(), 260);
        EXPECT_TRUE(fs::exists(longest + "CinelumeDatabase.db"));
        EXPECT_FALSE(qfc::SetDataFolder(Scratch().c_str()));
        EXPECT_EQ(Stop(), 1);
    });
}

// It is the buffer for the folder that ends here: of two bytes each, the path has far fewer units than bytes.
TEST_F(LibraryOpening, FoldersOfManyBytesAndFewUnits_MayFillTheBufferOfTheFolder) {
    if (!qfc::SetDataFolder(DataFolder().c_str())) GTEST_SKIP() << "the path is fixed once a process";
    ExpectInAChild([] {
        std::string wide;
        for (int i = 0; i < 80; ++i) wide += "\xC3\xA4";
        const fs::path parent = Scratch() / wide;
        for (const std::size_t length : {261, 260}) {
            ASSERT_TRUE(qfc::SetDataFolder(FolderOfLength(parent, length).c_str()));
            EXPECT_EQ(Start(), 0) << length;
        }
        ASSERT_TRUE(qfc::SetDataFolder(FolderOfLength(parent, 259).c_str()));
        EXPECT_EQ(Start(), 1);
        EXPECT_EQ(QFCLibraryManager::GetDatabasePath().GetLength(), 278);
        EXPECT_EQ(Stop(), 1);
    });
}

// Few units and few bytes of the code page, but three of UTF-8 for each: more than SQLite's file system takes.
TEST_F(LibraryOpening, DataFolderOfTooManyBytesInUtf8_FailsTheStartAndFixesNothing) {
    if (!qfc::SetDataFolder(DataFolder().c_str())) GTEST_SKIP() << "the path is fixed once a process";
    ExpectInAChild([] {
        ASSERT_TRUE(qfc::SetAnsiCodePage("CP874"));
        const std::string folder = Scratch().string() + "/" + std::string(84, '\xA1') + "/" + std::string(84, '\xA1');
        ASSERT_LT(folder.size(), 240U);
        ASSERT_TRUE(qfc::SetDataFolder(folder.c_str()));
        EXPECT_EQ(Start(), 0);
        EXPECT_TRUE(QFCLibraryManager::GetDatabasePath().IsEmpty());
        ASSERT_TRUE(qfc::SetDataFolder((Scratch() / std::string(84, '\xA1')).c_str()));
        EXPECT_EQ(Start(), 1);
        EXPECT_EQ(Stop(), 1);
    });
}

// Whether the folder is settled by then or not.
TEST_F(LibraryOpening, DataFolderThatCannotBeConvertedForALackOfMemory_FailsTheStartAndMakesNothing) {
    if (!qfc::SetDataFolder(DataFolder().c_str())) GTEST_SKIP() << "the path is fixed once a process";
    ExpectInAChild([] {
        ASSERT_TRUE(qfc::SetAnsiCodePage("CP1252"));
        ASSERT_TRUE(qfc::SetDataFolder((Scratch() / "caf\xE9").c_str()));
        const auto library = Scratch() / "caf\xC3\xA9/CinelumeDatabase.db";
        for (const bool isPathKnown : {false, true}) {
            EXPECT_FALSE(isPathKnown && QFCLibraryManager::GetDatabasePath().IsEmpty());
            qfc::test::OnNewThread([&] {
                const qfc::test::ConverterFaults faults;
                EXPECT_THROW(Start(), std::bad_alloc);
                EXPECT_THROW(QFCLibraryManager::fnClearDBContent(), std::bad_alloc);
                EXPECT_GT(faults.Refused(), 0);
            });
            EXPECT_FALSE(fs::exists(library));
        }
        EXPECT_EQ(Start(), 1);
        EXPECT_TRUE(fs::exists(library));
        EXPECT_EQ(Stop(), 1);
    });
}

TEST_F(LibraryOpening, DataFolderThatIsNoText_FailsTheStartAndFixesNothing) {
    MakeTemplate();
    if (!qfc::SetDataFolder(DataFolder().c_str())) GTEST_SKIP() << "the path is fixed once a process";
    ExpectInAChild([] {
        ASSERT_TRUE(qfc::SetDataFolder((Scratch() / "caf\xE9").c_str()));
        EXPECT_EQ(Start(), 0);
        EXPECT_FALSE(fs::exists(Scratch() / "caf\xE9"));
        EXPECT_TRUE(qfc::SetDataFolder((Scratch() / "caf\xC3\xA9").c_str()));
        EXPECT_EQ(Start(), 1);
        EXPECT_EQ(Stop(), 1);
    });
}

// --- What was left open ---

bool CanBeginToWrite(const fs::path& file) {
    try {
        RawDb(file).Exec("BEGIN IMMEDIATE; ROLLBACK");
        return true;
    } catch (const std::runtime_error&) {
        return false;
    }
}

TEST_F(LibraryOpening, TransactionThatWasLeftOpen_IsEndedByTheIdleWorker) {
    const qfc::test::SqlTrace trace;
    ASSERT_EQ(Start(), 1);
    ASSERT_EQ(sqlite3_exec(trace.Connection(), "BEGIN IMMEDIATE; INSERT INTO GALLERY_TABLE VALUES(1, 1)", nullptr,
                           nullptr, nullptr),
              SQLITE_OK);
    // Without the worker's help nobody would ever come through.
    bool ended = false;
    const auto end = std::chrono::steady_clock::now() + std::chrono::minutes(1);
    while (!ended && std::chrono::steady_clock::now() < end) {
        ended = CanBeginToWrite(DatabaseFile());
        std::this_thread::yield();
    }
    ASSERT_TRUE(ended) << "the worker has not ended the transaction within a minute";
    EXPECT_EQ(CountRows("GALLERY_TABLE"), 0);
}

}  // namespace
