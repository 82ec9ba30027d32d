#include "tests/service/WorkerFixture.h"

#include <atomic>
#include <gtest/gtest.h>
#include <thread>
#include <utility>
#include <vector>

namespace {

using qfc::EntrySteps;
using qfc::ServicePeer;
using qfc::test::Gate;
using qfc::test::LambdaOperation;
using qfc::test::SharedLambda;
using qfc::test::WorkerFixture;

class WorkerStop : public WorkerFixture {};

// Stops the service while the worker is held, so that what is queued is queued when the flag falls.
void StopBehind(Gate& gate) {
    std::thread stopping([] { EXPECT_EQ(QFCLibraryManager::fnStopService(), 1); });
    while (ServicePeer::Running(ServicePeer::Manager()) != 0) std::this_thread::yield();
    gate.Open();
    stopping.join();
}

TEST_F(WorkerStop, AtStop_SyncOperationsRunAndAsyncOnesAreDropped) {
    int called = 0;
    Listen("callback", [&](QFCLibCallbackParam*) { return ++called; });
    Gate gate;
    const SharedLambda pOrdinary = QueueAsync(Note("O"));
    const SharedLambda pDeferred = QueueAsync(Note("D"), 1);
    const SharedLambda pFirst = QueueSync(Note("S1"));
    const SharedLambda pSecond = QueueSync(Note("S2"));
    StopBehind(gate);

    EXPECT_EQ(m_order, "S1 S2 ");
    EXPECT_EQ(called, 0);
    for (const SharedLambda& p : {pFirst, pSecond}) EXPECT_EQ(WaitForSingleObject(p->Event(), 0), WAIT_OBJECT_0);
    for (const SharedLambda* p : {&pOrdinary, &pDeferred}) {
        EXPECT_EQ(WaitForSingleObject((*p)->Event(), 0), WAIT_TIMEOUT);
        EXPECT_EQ(p->use_count(), 1);
    }
}

// The first of the batch sees the flag fall, so the others are chosen already.
TEST_F(WorkerStop, AtStop_AsyncOperationsThatAreChosenAlreadyAreDroppedToo) {
    std::vector<SharedLambda> dropped;
    std::atomic<bool> chosen = false;
    {
        const Gate gate;
        QueueAsync([&] {
            chosen = true;
            dropped.push_back(QueueAsync(Note("behind the batch")));
            while (ServicePeer::Running(ServicePeer::Manager()) != 0) std::this_thread::yield();
            return 0;
        });
        for (const int nPriority : {0, 1}) dropped.push_back(QueueAsync(Note("chosen"), nPriority));
    }
    while (!chosen) std::this_thread::yield();
    EXPECT_EQ(QFCLibraryManager::fnStopService(), 1);
    EXPECT_EQ(dropped.size(), 3u);
    for (const SharedLambda& p : dropped) {
        EXPECT_EQ(WaitForSingleObject(p->Event(), 0), WAIT_TIMEOUT);
        EXPECT_EQ(p.use_count(), 1);
    }
    ASSERT_EQ(QFCLibraryManager::fnStartService(), 1);
    AwaitEndOfPasses();
    EXPECT_EQ(m_order, "");
}

TEST_F(WorkerStop, ADroppedAsyncOperation_IsNotRunByTheNextStart) {
    Gate gate;
    const SharedLambda pDropped = QueueAsync(Note("dropped"));
    StopBehind(gate);
    ASSERT_EQ(QFCLibraryManager::fnStartService(), 1);
    Await(*QueueAsync(Note("next"), 1));
    EXPECT_EQ(m_order, "next ");
}

TEST_F(WorkerStop, WhatIsQueuedWhileStopped_RunsAfterTheNextStart) {
    ASSERT_EQ(QFCLibraryManager::fnStopService(), 1);
    const SharedLambda pAsync = QueueAsync(Note("async"));
    const SharedLambda pSync = QueueSync(Note("sync"));
    EXPECT_EQ(ServicePeer::IsSyncEmpty(), 0);
    ASSERT_EQ(QFCLibraryManager::fnStartService(), 1);
    Await(*pAsync);
    EXPECT_EQ(m_order, "sync async ");
}

TEST_F(WorkerStop, ASyncCallWhileStopped_WaitsForTheNextStart) {
    ASSERT_EQ(QFCLibraryManager::fnStopService(), 1);
    std::thread host([] { EXPECT_EQ(QFCLibraryManager::fnDeleteFolder(0), 0); });
    while (ServicePeer::IsSyncEmpty() != 0) std::this_thread::yield();
    ASSERT_EQ(QFCLibraryManager::fnStartService(), 1);
    host.join();
}

TEST_F(WorkerStop, Clear_DropsEveryList) {
    ASSERT_EQ(QFCLibraryManager::fnStopService(), 1);
    QueueSync([] { return 1; });
    QueueAsync([] { return 1; });
    QueueAsync([] { return 1; }, 1);
    EXPECT_EQ(ServicePeer::Clear(), 1);
    EXPECT_EQ(ServicePeer::Take(), nullptr);
    EXPECT_EQ(ServicePeer::IsSyncEmpty(), 1);
}

struct Tally {
    std::atomic<int> queued = 0;
    std::atomic<int> executed = 0;
    std::atomic<int> dropped = 0;
};

class TalliedOperation : public LibraryOperation {
public:
    explicit TalliedOperation(Tally& tally) : m_tally(tally) { SetAsync(); }
    ~TalliedOperation() override {
        if (!m_executed) ++m_tally.dropped;
    }
    int execute() override {
        EXPECT_FALSE(std::exchange(m_executed, true));
        return ++m_tally.executed;
    }

private:
    Tally& m_tally;
    bool m_executed = false;
};

// Full queues at every stop: each operation is executed once or dropped, and nothing is left over.
TEST_F(WorkerStop, StartAndStopUnderLoad_LoseNothingAndHangNowhere) {
    Tally tally;
    std::atomic<bool> done = false;
    const auto load = [&](int nPriority) {
        while (!done) {
            tally.queued += ServicePeer::AddAsync(std::make_shared<TalliedOperation>(tally), nPriority);
            std::this_thread::yield();
        }
    };
    std::thread hosts[] = {std::thread(load, 0), std::thread(load, 1)};
    for (int cycle = 0; cycle < 20; ++cycle) {
        EntrySteps::RunSync<LambdaOperation>([] { return 1; });
        ASSERT_EQ(QFCLibraryManager::fnStopService(), 1);
        const int nAtStop = tally.executed;
        std::this_thread::yield();
        EXPECT_EQ(tally.executed, nAtStop);
        ASSERT_EQ(QFCLibraryManager::fnStartService(), 1);
    }
    done = true;
    for (std::thread& host : hosts) host.join();
    AwaitEndOfPasses();
    EXPECT_EQ(tally.executed + tally.dropped, tally.queued);
    EXPECT_EQ(ServicePeer::Take(), nullptr);
}

}  // namespace
