#include "db/CurrentDBTools.h"
#include "platform/os/Sync.h"
#include "tests/support/GateOperation.h"
#include "tests/support/LibraryFixture.h"
#include "tests/support/NoMoreThreads.h"
#include "tests/support/RawDb.h"
#include "tests/support/ServicePeer.h"

#include <atomic>
#include <fstream>
#include <gtest/gtest.h>
#include <thread>

namespace {

namespace fs = std::filesystem;
using qfc::ServicePeer;
using qfc::test::RawDb;

class ServiceLifecycle : public qfc::test::StoppedServiceFixture {
protected:
    static void WriteGarbage(const fs::path& file) { std::ofstream(file, std::ios::binary) << std::string(8192, 'x'); }
    static void ExpectSharedState(const QFCLibraryManager& copy, const QFCLibraryManager& original) {
        EXPECT_NE(ServicePeer::Database(copy), nullptr);
        EXPECT_EQ(ServicePeer::Database(copy), ServicePeer::Database(original));
        EXPECT_NE(ServicePeer::Worker(copy), nullptr);
        EXPECT_EQ(ServicePeer::Worker(copy), ServicePeer::Worker(original));
        EXPECT_EQ(ServicePeer::Running(copy), 1);
        EXPECT_NE(ServicePeer::Mutex(copy), nullptr);
        EXPECT_EQ(ServicePeer::Mutex(copy), ServicePeer::Mutex(original));
    }
    static void ExpectStopped() {
        EXPECT_EQ(ServicePeer::Running(ServicePeer::Manager()), 0);
        EXPECT_EQ(ServicePeer::Database(ServicePeer::Manager()), nullptr);
        EXPECT_EQ(ServicePeer::Worker(ServicePeer::Manager()), nullptr);
    }
};

TEST_F(ServiceLifecycle, StartedTwice_TheSecondIsRefused) {
    EXPECT_EQ(Start(), 1);
    QFCLibraryManager& manager = ServicePeer::Manager();
    DBTools* const pDatabase = ServicePeer::Database(manager);
    const qfc::WorkerThread* const pWorker = ServicePeer::Worker(manager);
    {
        const qfc::test::Gate gate;
        const auto pQueued = std::make_shared<qfc::test::LambdaOperation>([] { return 1; });
        ServicePeer::Add(pQueued);
        EXPECT_EQ(Start(), 0);
        EXPECT_EQ(ServicePeer::Database(manager), pDatabase);
        EXPECT_EQ(ServicePeer::Worker(manager), pWorker);
        EXPECT_EQ(ServicePeer::Running(manager), 1);
        EXPECT_EQ(ServicePeer::TakeFrom(manager), pQueued);
    }
    EXPECT_EQ(Stop(), 1);
}

TEST_F(ServiceLifecycle, StoppedWhileStopped_IsRefused) {
    EXPECT_EQ(Stop(), 0);
    EXPECT_EQ(Start(), 1);
    EXPECT_EQ(Stop(), 1);
    EXPECT_EQ(Stop(), 0);
    ExpectStopped();
}

TEST_F(ServiceLifecycle, CanBeStartedAgain_OnTheSameFile) {
    const CString strPath = QFCLibraryManager::GetDatabasePath();
    for (int cycle = 0; cycle < 5; ++cycle) {
        ASSERT_EQ(Start(), 1);
        EXPECT_EQ(QFCLibraryManager::GetDatabasePath(), strPath);
        ASSERT_EQ(Stop(), 1);
    }
    EXPECT_EQ(CountRows("sqlite_master where name = 'ITEM_TABLE'"), 1);
}

TEST_F(ServiceLifecycle, TheLibraryLiesInTheDataFolder) {
    EXPECT_EQ(std::string(QFCLibraryManager::GetDatabasePath()), DatabaseFile().string());
    EXPECT_EQ(QFCLibraryManager::fnGetDBName(), "CinelumeDatabase.db");
}

TEST_F(ServiceLifecycle, OnceThePathWasAnswered_TheFoldersStayWhereTheyAre) {
    const CString strPath = QFCLibraryManager::GetDatabasePath();
    EXPECT_FALSE(qfc::SetDataFolder(Scratch().c_str()));
    EXPECT_FALSE(qfc::SetHostFolder(Scratch().c_str()));
    EXPECT_EQ(QFCLibraryManager::GetDatabasePath(), strPath);
}

TEST_F(ServiceLifecycle, ADataFolderLongerThanThePathBuffer_FailsTheStartAndFixesNothing) {
    const fs::path longFolder = Scratch() / std::string(120, 'a') / std::string(120, 'b');
    if (!qfc::SetDataFolder(longFolder.c_str())) GTEST_SKIP() << "needs a process of its own";
    EXPECT_EQ(Start(), 0);
    EXPECT_TRUE(QFCLibraryManager::GetDatabasePath().IsEmpty());
    EXPECT_EQ(QFCLibraryManager::fnClearDBContent(), 0);
    ExpectStopped();
    ASSERT_TRUE(qfc::SetDataFolder(DataFolder().c_str()));
    EXPECT_EQ(Start(), 1);
}

TEST_F(ServiceLifecycle, AFileThatIsNoDatabase_FailsTheStart) {
    WriteGarbage(DatabaseFile());
    EXPECT_EQ(Start(), 0);
    ExpectStopped();
    EXPECT_EQ(qfc::CurrentDBTools(), nullptr);
    fs::remove(DatabaseFile());
    EXPECT_EQ(Start(), 1);
}

TEST_F(ServiceLifecycle, ALibraryThatCannotBeOpened_FailsTheStart) {
    fs::create_directories(DatabaseFile());
    EXPECT_EQ(Start(), 0);
    ExpectStopped();
    EXPECT_EQ(Stop(), 0);
}

TEST_F(ServiceLifecycle, WithoutAWorker_TheStartFailsAndLeavesNothingBehind) {
    {
        const qfc::test::NoMoreThreads none;
        EXPECT_EQ(Start(), 0);
    }
    ExpectStopped();
    EXPECT_EQ(qfc::CurrentDBTools(), nullptr);
    EXPECT_EQ(Start(), 1);
}

TEST_F(ServiceLifecycle, AStartThatFails_LeavesWhatIsQueuedAsItWas) {
    std::thread host([] { EXPECT_EQ(QFCLibraryManager::fnDeleteFolder(0), 0); });
    while (ServicePeer::IsSyncEmpty() != 0) std::this_thread::yield();
    {
        const qfc::test::NoMoreThreads none;
        EXPECT_EQ(Start(), 0);
    }
    WriteGarbage(DatabaseFile());
    EXPECT_EQ(Start(), 0);
    EXPECT_EQ(ServicePeer::IsSyncEmpty(), 0);
    fs::remove(DatabaseFile());
    EXPECT_EQ(Start(), 1);
    host.join();
}

TEST_F(ServiceLifecycle, ALibraryOfBeforeFoldersHadAnOrder_IsMigrated) {
    RawDb(DatabaseFile())
        .Exec(
            "CREATE TABLE FOLDER_TABLE( VERSION TEXT, PREDEFINED_ID INTEGER, FOLDER_NAME TEXT, ADOPT_TYPE INTEGER, "
            "TRUSTY_TYPE INTEGER, TYPE_EXTRA INTEGER, PARENT_ID INTEGER, EXPAND_TYPE INTEGER, "
            "ID INTEGER PRIMARY KEY AUTOINCREMENT);"
            "INSERT INTO FOLDER_TABLE(FOLDER_NAME, PARENT_ID) VALUES('Old', -1)");
    ASSERT_EQ(Start(), 1);
    EXPECT_EQ(CountRows("FOLDER_TABLE where ORDER_INDEX = -1 and FOLDER_NAME = 'Old'"), 1);
}

// A view takes no column.
TEST_F(ServiceLifecycle, ALibraryThatCannotBeMigrated_IsOpenedAllTheSame_AndMigratedByALaterStart) {
    const char kColumns[] =
        "(VERSION TEXT, PREDEFINED_ID INTEGER, FOLDER_NAME TEXT, ADOPT_TYPE INTEGER, TRUSTY_TYPE INTEGER, "
        "TYPE_EXTRA INTEGER, PARENT_ID INTEGER, EXPAND_TYPE INTEGER, ID INTEGER PRIMARY KEY AUTOINCREMENT)";
    RawDb(DatabaseFile())
        .Exec(std::string("CREATE TABLE OLD") + kColumns +
              "; INSERT INTO OLD(FOLDER_NAME, PARENT_ID) VALUES('Old', -1); CREATE VIEW FOLDER_TABLE as select * from "
              "OLD");
    EXPECT_EQ(Start(), 1);
    EXPECT_EQ(CountRows("FOLDER_TABLE where FOLDER_NAME = 'Old'"), 1);
    EXPECT_EQ(Stop(), 1);
    RawDb(DatabaseFile()).Exec("DROP VIEW FOLDER_TABLE; ALTER TABLE OLD RENAME TO FOLDER_TABLE");
    EXPECT_EQ(Start(), 1);
    EXPECT_EQ(CountRows("FOLDER_TABLE where ORDER_INDEX = -1 and FOLDER_NAME = 'Old'"), 1);
}

// Kept: while there is none, null is what the current one equals.
TEST_F(ServiceLifecycle, TheServiceDatabaseIsTheCurrentOne_OnlyWhileStarted) {
    EXPECT_EQ(QFCLibraryManager::IsCurrentDBTools(nullptr), 1);
    ASSERT_EQ(Start(), 1);
    const DBTools* const pDatabase = ServicePeer::Database(ServicePeer::Manager());
    EXPECT_EQ(QFCLibraryManager::IsCurrentDBTools(pDatabase), 1);
    EXPECT_EQ(QFCLibraryManager::IsCurrentDBTools(nullptr), 0);
    ASSERT_EQ(Stop(), 1);
    EXPECT_EQ(QFCLibraryManager::IsCurrentDBTools(pDatabase), 0);
    EXPECT_EQ(QFCLibraryManager::IsCurrentDBTools(nullptr), 1);
}

TEST_F(ServiceLifecycle, StartedByManyThreadsAtOnce_StartsOnce) {
    for (int round = 0; round < 10; ++round) {
        std::atomic<int> started = 0;
        std::atomic<int> stopped = 0;
        auto all = [](auto&& work) {
            std::vector<std::thread> threads;
            for (int i = 0; i < 4; ++i) threads.emplace_back(work);
            for (std::thread& thread : threads) thread.join();
        };
        all([&] { started += Start(); });
        ASSERT_EQ(started, 1);
        all([&] { stopped += Stop(); });
        ASSERT_EQ(stopped, 1);
        ExpectStopped();
    }
}

TEST_F(ServiceLifecycle, TheWorkerProcedureWithoutAManager_ReturnsAtOnce) {
    EXPECT_EQ(ServicePeer::RunWorker(nullptr), 1u);
}

TEST_F(ServiceLifecycle, TheWorkerProcedureOfAStoppedManager_RunsWhatIsLeftOfTheSyncQueueAndEnds) {
    int executed = 0;
    const auto pSync = std::make_shared<qfc::test::LambdaOperation>([&] { return ++executed; });
    ServicePeer::Add(pSync);
    std::thread worker([] { EXPECT_EQ(ServicePeer::RunWorker(&ServicePeer::Manager()), 0u); });
    worker.join();
    EXPECT_EQ(executed, 1);
    EXPECT_EQ(WaitForSingleObject(pSync->Event(), 0), WAIT_OBJECT_0);
}

TEST_F(ServiceLifecycle, ACopyOfTheManager_SharesEverythingWithTheOriginal) {
    ASSERT_EQ(Start(), 1);
    const qfc::test::Gate gate;  // The worker looks at no queue meanwhile.
    QFCLibraryManager& original = ServicePeer::Manager();
    const auto pQueued = std::make_shared<qfc::test::LambdaOperation>([] { return 1; });
    ServicePeer::Add(pQueued);

    QFCLibraryManager copy(original);
    ExpectSharedState(copy, original);
    EXPECT_EQ(ServicePeer::TakeFrom(copy), pQueued);
    EXPECT_EQ(ServicePeer::TakeFrom(copy), nullptr);

    copy = original;
    ExpectSharedState(copy, original);
    EXPECT_EQ(ServicePeer::TakeFrom(copy), pQueued);
    EXPECT_EQ(ServicePeer::TakeFrom(original), pQueued);
    ServicePeer::SetMutex(copy, nullptr);  // Leaves it to the original.
}

TEST_F(ServiceLifecycle, AnAssignedManager_TakesOverTheStateOfTheOther) {
    QFCLibraryManager copy(ServicePeer::Manager());
    ASSERT_EQ(Start(), 1);
    const qfc::test::Gate gate;
    copy = ServicePeer::Manager();
    ExpectSharedState(copy, ServicePeer::Manager());
    ServicePeer::SetMutex(copy, nullptr);
}

TEST_F(ServiceLifecycle, ACopyOfTheManager_HasTheCallbacksOfItsOwn) {
    std::string called;
    const auto note = [&called](const char* pszMark) {
        return [&called, pszMark](QFCLibCallbackParam*) {
            called += pszMark;
            return 1;
        };
    };
    Listen("a", note("a"));
    Listen("b", note("b"));
    QFCLibCallbackParam param;
    QFCLibraryManager copy(ServicePeer::Manager());
    QFCLibraryManager::fnUnRegister_QFCLibCallBack("a");
    EXPECT_EQ(ServicePeer::CallAllOf(copy, &param), 1);
    EXPECT_EQ(called, "ab");
    copy = ServicePeer::Manager();
    EXPECT_EQ(ServicePeer::CallAllOf(copy, &param), 1);
    EXPECT_EQ(called, "abb");
    ServicePeer::SetMutex(copy, nullptr);
}

TEST_F(ServiceLifecycle, ACopyOfTheManager_ClosesTheSharedMutexWhenItDies) {
    const HANDLE hMutex = ServicePeer::Mutex(ServicePeer::Manager());
    { const QFCLibraryManager copy(ServicePeer::Manager()); }
    EXPECT_EQ(WaitForSingleObject(hMutex, 0), WAIT_FAILED);
    ServicePeer::SetMutex(ServicePeer::Manager(), CreateMutexA(nullptr, 0, nullptr));
}

}  // namespace
