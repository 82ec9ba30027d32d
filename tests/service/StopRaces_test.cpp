// What meets a stop or a start on other threads: nothing hangs, nothing is lost that was promised, and no answer is
// wrong.
#include "platform/os/Sync.h"
#include "tests/support/GateOperation.h"
#include "tests/support/LibraryFixture.h"
#include "tests/support/ServicePeer.h"
#include "tests/support/StopsAndStarts.h"

#include <atomic>
#include <gtest/gtest.h>
#include <memory>
#include <mutex>
#include <optional>
#include <thread>
#include <vector>

namespace {

using Manager = QFCLibraryManager;
using qfc::EntrySteps;
using qfc::ServicePeer;
using qfc::test::Gate;
using qfc::test::LambdaOperation;

class StopRaces : public qfc::test::StoppedServiceFixture {
protected:
    void SetUp() override {
        StoppedServiceFixture::SetUp();
        ASSERT_EQ(Manager::fnStartService(), 1);
    }

    static bool IsRunning() { return ServicePeer::Running(ServicePeer::Manager()) != 0; }
    static void AwaitStopBegun() {
        while (IsRunning()) std::this_thread::yield();
    }
    static void AwaitSyncQueued() {
        while (ServicePeer::IsSyncEmpty() != 0) std::this_thread::yield();
    }
    static void AwaitNobodyIsLetIn() {
        while (EntrySteps::DatabaseUse().Get() != nullptr) std::this_thread::yield();
    }
};

// A stop that waits for a function that uses the database, and lets it go on when told.
class StopBehindAUse {
public:
    StopBehindAUse() : m_use(std::in_place), m_stopping([] { EXPECT_EQ(Manager::fnStopService(), 1); }) {}
    ~StopBehindAUse() { Finish(); }
    StopBehindAUse(const StopBehindAUse&) = delete;
    StopBehindAUse& operator=(const StopBehindAUse&) = delete;

    DBTools* Database() const { return m_use->Get(); }
    void Finish() {
        m_use.reset();
        if (m_stopping.joinable()) m_stopping.join();
    }

private:
    std::optional<EntrySteps::DatabaseUse> m_use;
    std::thread m_stopping;
};

// --- Functions that use the database on threads of their own ---------------------------------------------------------

TEST_F(StopRaces, AStop_LetsNobodyInAnyMoreAndWaitsForThoseInside) {
    StopBehindAUse stop;
    AwaitNobodyIsLetIn();
    std::vector<qfc::StoredGallery> galleries;
    EXPECT_EQ(Manager::fnListGalleries(galleries), 0);
    EXPECT_TRUE(stop.Database()->QueryGalleries(galleries));  // Still open.
    stop.Finish();
    EXPECT_EQ(ServicePeer::Database(ServicePeer::Manager()), nullptr);
}

TEST_F(StopRaces, AStop_EndsHoweverManyKeepUsingTheDatabase) {
    std::atomic<bool> done = false;
    std::vector<std::thread> hosts;
    for (int host = 0; host < 4; ++host) {
        hosts.emplace_back([&] {
            std::vector<qfc::StoredGallery> galleries;
            while (!done) Manager::fnListGalleries(galleries);
        });
    }
    for (int cycle = 0; cycle < 5; ++cycle) {
        EXPECT_EQ(Manager::fnStopService(), 1);
        EXPECT_EQ(Manager::fnStartService(), 1);
    }
    done = true;
    for (std::thread& host : hosts) host.join();
}

TEST_F(StopRaces, ASession_IsUsedWithoutHoldingUpTheStop) {
    const std::string file = (Scratch() / "foreign.db").string();
    ASSERT_EQ(Manager::fnExportDB(file.c_str()), 1);
    const ULONGLONG hSession = Manager::StartDbSession4ImportLib(file.c_str());
    auto* const pSession = reinterpret_cast<DBTools*>(static_cast<std::uintptr_t>(hSession));
    {
        const EntrySteps::DatabaseUse use(pSession);
        EXPECT_EQ(use.Get(), pSession);
        EXPECT_EQ(Manager::fnStopService(), 1);
    }
    EXPECT_EQ(Manager::EndDbSession4ImportLib(hSession), 1);
}

// --- Starts, stops and clears at once --------------------------------------------------------------------------------

// Who holds the lock goes on for a good while after the stop has set out.
TEST_F(StopRaces, AStopThatMeetsTheEndOfAStart_WaitsForIt) {
    std::unique_lock start(ServicePeer::Transition());
    std::atomic<bool> setOut = false;
    std::thread stopping([&] {
        setOut = true;
        EXPECT_EQ(Manager::fnStopService(), 1);
    });
    while (!setOut) std::this_thread::yield();
    for (int i = 0; i < 10000; ++i) std::this_thread::yield();
    start.unlock();
    stopping.join();
    EXPECT_FALSE(IsRunning());
}

TEST_F(StopRaces, AStartOrAClearThatMeetsAStop_DoesNotWait) {
    ASSERT_EQ(Manager::fnStopService(), 1);
    const std::unique_lock stop(ServicePeer::Transition());
    std::thread([] { EXPECT_EQ(Manager::fnStartService(), 0); }).join();
    std::thread([] { EXPECT_EQ(Manager::fnClearDBContent(), 0); }).join();
}

TEST_F(StopRaces, AStopOfARunningService_IsNotRefusedForACallThatIsRefusedItself) {
    std::atomic<bool> done = false;
    std::thread clearing([&] {
        while (!done) Manager::fnClearDBContent();
    });
    for (int cycle = 0; cycle < 25; ++cycle) {
        std::this_thread::yield();
        ASSERT_EQ(Manager::fnStopService(), 1) << cycle;
        while (Manager::fnStartService() == 0) std::this_thread::yield();  // The clear really clears now.
    }
    done = true;
    clearing.join();
}

// The others start the service whenever it stands, so every stop meets a start that has just made it run.
TEST_F(StopRaces, AStopOfAServiceThatHasJustStarted_IsNotRefused) {
    std::atomic<bool> done = false;
    std::vector<std::thread> hosts;
    for (int host = 0; host < 2; ++host) {
        hosts.emplace_back([&] {
            while (!done) Manager::fnStartService();
        });
    }
    for (int cycle = 0; cycle < 20; ++cycle) {
        while (!IsRunning()) std::this_thread::yield();
        ASSERT_EQ(Manager::fnStopService(), 1) << cycle;
    }
    done = true;
    for (std::thread& host : hosts) host.join();
}

TEST_F(StopRaces, AStartWhileTheServiceIsBeingStopped_IsRefused) {
    StopBehindAUse stop;
    AwaitNobodyIsLetIn();
    EXPECT_EQ(Manager::fnStartService(), 0);
    EXPECT_EQ(Manager::fnStopService(), 0);
    EXPECT_EQ(Manager::fnClearDBContent(), 0);
    stop.Finish();
    EXPECT_EQ(Manager::fnStartService(), 1);
}

// --- Synchronous calls -----------------------------------------------------------------------------------------------

TEST_F(StopRaces, ASyncCallQueuedBeforeTheStop_RunsWithTheDatabase) {
    Gate gate;
    ULONGLONG hCreated = 0;
    std::thread host([&] { hCreated = Manager::fnCreateGallery(5, "Titles", 0, 0, 0); });
    AwaitSyncQueued();
    std::thread stopping([] { EXPECT_EQ(Manager::fnStopService(), 1); });
    AwaitStopBegun();
    gate.Open();
    host.join();
    stopping.join();
    EXPECT_NE(hCreated, 0u);
    EXPECT_EQ(CountRows("GALLERY_TABLE"), 1);
}

TEST_F(StopRaces, ASyncCallThatNeedsTheDatabase_IsRefusedOnceTheStopHasBegun) {
    Gate gate;
    std::thread stopping([] { EXPECT_EQ(Manager::fnStopService(), 1); });
    AwaitStopBegun();
    std::vector<_DS_LibItemTunmbnailInfo_> thumbnails;
    EXPECT_EQ(Manager::fnCreateGallery(5, "Titles", 0, 0, 0), 0u);
    EXPECT_EQ(Manager::fnLoadGallery(1), 0u);
    EXPECT_EQ(Manager::fnDeleteGallery({1}), 0);
    EXPECT_EQ(Manager::fnQueryLibItemThumbnailInfo(thumbnails), 0);
    EXPECT_NE(ServicePeer::IsSyncEmpty(), 0);
    gate.Open();
    stopping.join();
}

TEST_F(StopRaces, ASyncOperationQueuedOnceTheStopHasBegun_IsLeftToTheNextStart) {
    std::string order;
    const auto queue = [&order](const char* pszMark) {
        auto p = std::make_shared<LambdaOperation>([&order, pszMark] {
            order += pszMark;
            return 1;
        });
        EXPECT_EQ(ServicePeer::Add(p), 1);
        return p;
    };
    Gate gate;
    for (const char* pszMark : {"first ", "second "}) queue(pszMark);
    std::thread stopping([] { EXPECT_EQ(Manager::fnStopService(), 1); });
    AwaitStopBegun();
    const auto late = queue("late ");
    gate.Open();
    stopping.join();
    EXPECT_EQ(order, "first second ");
    EXPECT_EQ(WaitForSingleObject(late->Event(), 0), WAIT_TIMEOUT);
    ASSERT_EQ(Manager::fnStartService(), 1);
    EXPECT_EQ(WaitForSingleObject(late->Event(), INFINITE), WAIT_OBJECT_0);
    EXPECT_EQ(order, "first second late ");
    // What comes after that start has no end before the next stop.
    for (const char* pszMark : {"a ", "b "}) WaitForSingleObject(queue(pszMark)->Event(), INFINITE);
    EXPECT_EQ(order, "first second late a b ");
}

// Each operation lasts until the other host's is queued, so the worker never finds nothing to do.
TEST_F(StopRaces, AStop_EndsHoweverManyKeepMakingSyncCalls) {
    constexpr int kFarTooMany = 50;
    std::atomic<bool> done = false;
    std::atomic<int> inTheStop = 0;
    const auto untilTheNext = [&] {
        if (!IsRunning() && ++inTheStop == kFarTooMany) done = true;
        while (!done && ServicePeer::IsSyncEmpty() != 0) std::this_thread::yield();
        return 1;
    };
    std::atomic<int> answered = 0;
    std::vector<std::thread> hosts;
    for (int host = 0; host < 2; ++host) {
        hosts.emplace_back([&] {
            for (; !done; ++answered) EntrySteps::RunSync<LambdaOperation>(untilTheNext);
        });
    }
    while (answered < 10) std::this_thread::yield();
    EXPECT_EQ(Manager::fnStopService(), 1);
    EXPECT_LT(inTheStop, kFarTooMany);
    done = true;
    EXPECT_EQ(Manager::fnStartService(), 1);
    for (std::thread& host : hosts) host.join();
}

TEST_F(StopRaces, ASyncCallWhileTheWorkerIsEnding_IsRunByItOrByTheNextStart) {
    qfc::test::CallAgainstStopsAndStarts([] { EXPECT_EQ(Manager::fnDeleteFolder(0), 0); });
}

TEST_F(StopRaces, ASyncCallBehindTheEndOfTheWorker_WaitsForTheNextStart) {
    StopBehindAUse stop;
    AwaitNobodyIsLetIn();  // The worker has ended.
    std::thread host([] { EXPECT_EQ(Manager::fnDeleteFolder(0), 0); });
    AwaitSyncQueued();
    stop.Finish();
    EXPECT_EQ(ServicePeer::IsSyncEmpty(), 0);
    EXPECT_EQ(Manager::fnStartService(), 1);
    host.join();
}

// Of a session, or of no database at all: the one of the service is gone.
TEST_F(StopRaces, CallsWithAnotherDatabaseOrNoneBehindTheEndOfTheWorker_WaitForTheNextStart) {
    const std::string file = (Scratch() / "foreign.db").string();
    ASSERT_EQ(Manager::fnExportDB(file.c_str()), 1);
    const ULONGLONG hSession = Manager::StartDbSession4ImportLib(file.c_str());
    auto* const pSession = reinterpret_cast<DBTools*>(static_cast<std::uintptr_t>(hSession));
    StopBehindAUse stop;
    AwaitNobodyIsLetIn();
    ULONGLONG hCreated = 0;
    std::thread withSession([&] { hCreated = Manager::fnCreateGallery(5, "Titles", 0, 0, 0, pSession); });
    AwaitSyncQueued();
    std::vector<_DS_LibItemTunmbnailInfo_> thumbnails(1);
    int nQueried = -1;
    std::thread withNone([&] { nQueried = Manager::fnQueryLibItemThumbnailInfo(thumbnails); });
    while (ServicePeer::CountSync() != 2) std::this_thread::yield();
    stop.Finish();
    EXPECT_EQ(ServicePeer::CountSync(), 2u);
    EXPECT_EQ(Manager::fnStartService(), 1);
    withSession.join();
    withNone.join();
    EXPECT_NE(hCreated, 0u);
    EXPECT_EQ(nQueried, 1);
    EXPECT_TRUE(thumbnails.empty());
    EXPECT_EQ(Manager::fnCloseSessionGallery(hCreated), 1);
    EXPECT_EQ(Manager::EndDbSession4ImportLib(hSession), 1);
    EXPECT_EQ(CountRows("GALLERY_TABLE"), 0);
}

TEST_F(StopRaces, TheClearOfAStop_KeepsLateSyncOperationsInTheirOrderAndDropsAllElse) {
    ASSERT_EQ(Manager::fnStopService(), 1);
    std::string order;
    std::vector<std::shared_ptr<LambdaOperation>> dropped;
    const auto queue = [&](const char* pszMark, bool bAsync, int nPriority = 0) {
        auto p = std::make_shared<LambdaOperation>([&order, pszMark] {
            order += pszMark;
            return 1;
        });
        if (bAsync) p->SetAsync();
        EXPECT_EQ(bAsync ? ServicePeer::AddAsync(p, nPriority) : ServicePeer::Add(p), 1);
        return p;
    };
    const auto first = queue("first ", false);
    for (const int nPriority : {0, 1}) dropped.push_back(queue("dropped ", true, nPriority));
    const auto second = queue("second ", false);
    ServicePeer::DropQueuedWork();
    for (const auto& p : dropped) EXPECT_EQ(p.use_count(), 1);
    ASSERT_EQ(Manager::fnStartService(), 1);
    EXPECT_EQ(WaitForSingleObject(second->Event(), INFINITE), WAIT_OBJECT_0);
    ASSERT_EQ(Manager::fnStopService(), 1);
    EXPECT_EQ(order, "first second ");
}

}  // namespace
