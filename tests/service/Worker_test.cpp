#include "platform/framework/Exceptions.h"
#include "platform/os/Sync.h"
#include "tests/support/GateOperation.h"
#include "tests/support/LibraryFixture.h"
#include "tests/support/ServicePeer.h"

#include <atomic>
#include <future>
#include <gtest/gtest.h>
#include <ostream>
#include <stdexcept>
#include <thread>
#include <utility>
#include <vector>

namespace {

using qfc::EntrySteps;
using qfc::ServicePeer;
using qfc::test::Gate;
using qfc::test::LambdaOperation;
using SharedLambda = std::shared_ptr<LambdaOperation>;

class Worker : public qfc::test::StoppedServiceFixture {
protected:
    void SetUp() override {
        StoppedServiceFixture::SetUp();
        ASSERT_EQ(QFCLibraryManager::fnStartService(), 1);
    }

    static SharedLambda QueueSync(std::function<int()> execute) {
        auto pOperation = std::make_shared<LambdaOperation>(std::move(execute));
        EXPECT_EQ(ServicePeer::Add(pOperation), 1);
        return pOperation;
    }
    static SharedLambda QueueAsync(std::function<int()> execute, int nPriority = 0,
                                   std::function<void(QFCLibCallbackParam&)> fill = nullptr) {
        auto pOperation = std::make_shared<LambdaOperation>(std::move(execute), std::move(fill));
        pOperation->SetAsync();
        EXPECT_EQ(ServicePeer::AddAsync(pOperation, nPriority), 1);
        return pOperation;
    }
    static void Await(const LibraryOperation& operation) {
        EXPECT_EQ(WaitForSingleObject(operation.Event(), INFINITE), WAIT_OBJECT_0);
    }
    // Returns when everything queued before is over, callbacks included: each kind is served in order of arrival.
    static void AwaitEndOfPasses() {
        for (const int nPriority : {0, 1}) Await(*QueueAsync([] { return 0; }, nPriority));
    }

    std::function<int()> Note(const std::string& mark) {
        return [this, mark] {
            m_order += mark + " ";
            return 1;
        };
    }

    std::string m_order;  // Written by the worker; read behind its last operation.
};

TEST_F(Worker, TenOrdinaryAndTenDeferred_RunFourToOne) {
    {
        Gate gate;
        for (int i = 1; i <= 10; ++i) QueueAsync(Note("D" + std::to_string(i)), 1);
        for (int i = 1; i <= 10; ++i) QueueAsync(Note("O" + std::to_string(i)), 0);
    }
    const SharedLambda pLast = QueueAsync(Note("last"), 1);
    Await(*pLast);
    EXPECT_EQ(m_order, "O1 O2 O3 O4 D1 O5 O6 O7 O8 D2 O9 O10 D3 D4 D5 D6 D7 D8 D9 D10 last ");
}

TEST_F(Worker, ASyncOperationQueuedWhileAsyncWorkIsChosen_RunsNext) {
    SharedLambda pLast;
    {
        Gate outer;
        QueueAsync([this] {
            m_order += "O1 ";
            QueueSync(Note("S"));  // The others are chosen already.
            return 1;
        });
        QueueAsync(Note("O2"));
        pLast = QueueAsync(Note("O3"));
    }
    Await(*pLast);
    EXPECT_EQ(m_order, "O1 S O2 O3 ");
}

TEST_F(Worker, TheResultIsStoredBeforeTheEventIsSignalled) {
    const SharedLambda pSync = QueueSync([] { return 17; });
    Await(*pSync);
    EXPECT_EQ(pSync->Result(), 17);
    const SharedLambda pFailed = QueueAsync([] { return 0; });
    Await(*pFailed);
    EXPECT_EQ(pFailed->Result(), 0);
}

TEST_F(Worker, AnAsyncOperationThatSucceeds_RaisesOnePassOfCallbacks) {
    int first = 0;
    int second = 0;
    Listen("first", [&](QFCLibCallbackParam*) { return ++first; });
    Listen("second", [&](QFCLibCallbackParam*) { return ++second; });
    QueueAsync([] { return -3; });
    AwaitEndOfPasses();
    EXPECT_EQ(first, 1);
    EXPECT_EQ(second, 1);
}

TEST_F(Worker, AnAsyncOperationThatFails_RaisesNoCallback) {
    int called = 0;
    Listen("callback", [&](QFCLibCallbackParam*) { return ++called; });
    const SharedLambda pOperation = QueueAsync([] { return 0; });
    Await(*pOperation);
    AwaitEndOfPasses();
    EXPECT_EQ(called, 0);
}

TEST_F(Worker, SyncOperations_RaiseNoCallback) {
    int called = 0;
    Listen("callback", [&](QFCLibCallbackParam*) { return ++called; });
    QueueSync([] { return 1; });
    AwaitEndOfPasses();
    EXPECT_EQ(called, 0);
}

TEST_F(Worker, TheCallbackGetsWhatTheOperationFillsIn) {
    QFCLibCallbackParam seen;
    Listen("callback", [&](QFCLibCallbackParam* pParam) {
        seen = *pParam;
        return 1;
    });
    QueueAsync([] { return 1; }, 0, [](QFCLibCallbackParam& param) { param.nFolderId = 12; });
    AwaitEndOfPasses();
    EXPECT_EQ(seen.nFolderId, 12);
    EXPECT_EQ(seen.hGallery, 0u);
}

struct Throwing {
    const char* what;
    void (*raise)();
    friend void PrintTo(const Throwing& throwing, std::ostream* out) { *out << throwing.what; }
};
class WorkerThrows : public Worker, public testing::WithParamInterface<Throwing> {};

TEST_P(WorkerThrows, AnExecuteThatThrows_GivesZeroAndTheWorkerGoesOn) {
    int called = 0;
    Listen("callback", [&](QFCLibCallbackParam*) { return ++called; });
    const auto raise = [] {
        GetParam().raise();
        return 1;
    };
    EXPECT_EQ(qfc::ResultOf(EntrySteps::RunSync<LambdaOperation>(raise)), 0);
    const SharedLambda pAsync = QueueAsync(raise);
    Await(*pAsync);
    EXPECT_EQ(pAsync->Result(), 0);
    EXPECT_EQ(qfc::ResultOf(EntrySteps::RunSync<LambdaOperation>([] { return 5; })), 5);
    EXPECT_EQ(called, 0);
}

TEST_P(WorkerThrows, ACallbackThatThrows_EndsItsPassAndTheWorkerGoesOn) {
    std::string called;
    Listen("a", [&](QFCLibCallbackParam*) {
        called += "a";
        return 1;
    });
    Listen("b", [](QFCLibCallbackParam*) {
        GetParam().raise();
        return 1;
    });
    Listen("c", [&](QFCLibCallbackParam*) {
        called += "c";
        return 1;
    });
    QueueAsync([] { return 1; });
    AwaitEndOfPasses();
    QFCLibraryManager::fnUnRegister_QFCLibCallBack("b");  // The service is not left locked.
    QueueAsync([] { return 1; });
    AwaitEndOfPasses();
    EXPECT_EQ(called, "aac");
}

TEST_P(WorkerThrows, AFillThatThrows_CostsOnlyItsCallbacks) {
    int called = 0;
    Listen("callback", [&](QFCLibCallbackParam*) { return ++called; });
    const SharedLambda pOperation = QueueAsync([] { return 1; }, 0, [](QFCLibCallbackParam&) { GetParam().raise(); });
    Await(*pOperation);
    AwaitEndOfPasses();
    EXPECT_EQ(pOperation->Result(), 1);
    EXPECT_EQ(called, 0);
}

INSTANTIATE_TEST_SUITE_P(Kinds, WorkerThrows,
                         testing::Values(Throwing{"Standard", [] { throw std::runtime_error("on purpose"); }},
                                         Throwing{"Framework", [] { AfxThrowInvalidArgException(); }},
                                         Throwing{"Memory", [] { AfxThrowMemoryException(); }},
                                         Throwing{"Number", [] { throw 7; }}),
                         [](const auto& named) { return named.param.what; });

TEST_F(Worker, AWrongOrMissingOperation_IsNotQueued) {
    EXPECT_EQ(ServicePeer::Add(nullptr), 0);
    EXPECT_EQ(ServicePeer::AddAsync(nullptr, 0), 0);

    auto pAsync = std::make_shared<LambdaOperation>([] { return 1; });
    pAsync->SetAsync();
    EXPECT_EQ(ServicePeer::Add(pAsync), 0);
    EXPECT_EQ(pAsync.use_count(), 1);

    auto pSync = std::make_shared<LambdaOperation>([] { return 1; });
    EXPECT_EQ(ServicePeer::AddAsync(pSync, 0), 0);
    EXPECT_EQ(ServicePeer::AddAsync(pSync, 1), 0);
    EXPECT_EQ(pSync.use_count(), 1);

    AwaitEndOfPasses();
    EXPECT_EQ(WaitForSingleObject(pSync->Event(), 0), WAIT_TIMEOUT);
}

TEST_F(Worker, ANullRecord_RaisesNoCallback) {
    int called = 0;
    Listen("callback", [&](QFCLibCallbackParam*) { return ++called; });
    EXPECT_EQ(ServicePeer::CallAll(nullptr), 0);
    QFCLibCallbackParam param;
    EXPECT_EQ(ServicePeer::CallAll(&param), 1);
    EXPECT_EQ(called, 1);
}

TEST_F(Worker, AnOperationDiesOnceItIsDone) {
    const std::weak_ptr<LambdaOperation> pOperation = QueueAsync([] { return 1; });
    AwaitEndOfPasses();
    EXPECT_TRUE(pOperation.expired());
}

TEST_F(Worker, CallbacksRunOnTheWorkerWithTheServiceLocked) {
    std::thread::id worker;
    std::thread::id callback;
    DWORD dwWait = WAIT_OBJECT_0;
    Listen("callback", [&](QFCLibCallbackParam*) {
        callback = std::this_thread::get_id();
        std::thread([&] { dwWait = WaitForSingleObject(ServicePeer::Mutex(ServicePeer::Manager()), 0); }).join();
        return 1;
    });
    QueueAsync([&] {
        worker = std::this_thread::get_id();
        return 1;
    });
    AwaitEndOfPasses();
    EXPECT_EQ(callback, worker);
    EXPECT_NE(callback, std::this_thread::get_id());
    EXPECT_EQ(dwWait, WAIT_TIMEOUT);
}

TEST_F(Worker, ACallbackMayRegisterUnregisterAndQueue) {
    std::string called;
    Listen("late", [&](QFCLibCallbackParam*) {
        called += "late ";
        return 1;
    });
    Listen("early", [&](QFCLibCallbackParam*) {
        called += "early ";
        EXPECT_EQ(QFCLibraryManager::fnUnRegister_QFCLibCallBack("early"), 1);
        EXPECT_EQ(QFCLibraryManager::fnUnRegister_QFCLibCallBack("late"), 1);
        Listen("new", [&](QFCLibCallbackParam*) {
            called += "new ";
            return 1;
        });
        QueueAsync([] { return 1; });
        return 1;
    });
    QueueAsync([] { return 1; });
    AwaitEndOfPasses();
    AwaitEndOfPasses();  // What the callback queued.
    EXPECT_EQ(called, "early new new ");
}

// Dies with the callback that holds it, and tells whether another thread could have had the service then.
class LastWords {
public:
    explicit LastWords(std::vector<DWORD>& waits) : m_waits(waits) {}
    ~LastWords() {
        std::thread([this] {
            const HANDLE hMutex = ServicePeer::Mutex(ServicePeer::Manager());
            m_waits.push_back(WaitForSingleObject(hMutex, 0));
            ReleaseMutex(hMutex);
        }).join();
    }
    LastWords(const LastWords&) = delete;
    LastWords& operator=(const LastWords&) = delete;

private:
    std::vector<DWORD>& m_waits;
};

TEST_F(Worker, ACallbackThatIsReplacedOrWithdrawn_DiesWithTheServiceUnlocked) {
    std::vector<DWORD> waits;
    const auto callback = [&waits] {
        return [pHeld = std::make_shared<LastWords>(waits)](QFCLibCallbackParam*) { return 1; };
    };
    ASSERT_EQ(QFCLibraryManager::fnRegister_QFCLibCallBack("name", callback()), 1);
    ASSERT_EQ(QFCLibraryManager::fnRegister_QFCLibCallBack("name", callback()), 1);
    EXPECT_EQ(waits, (std::vector<DWORD>{WAIT_OBJECT_0}));
    ASSERT_EQ(QFCLibraryManager::fnUnRegister_QFCLibCallBack("name"), 1);
    EXPECT_EQ(waits, (std::vector<DWORD>{WAIT_OBJECT_0, WAIT_OBJECT_0}));
}

TEST_F(Worker, AnEmptyFunctionAndAnUnknownName_AreRefused) {
    int called = 0;
    Listen("name", [&](QFCLibCallbackParam*) { return ++called; });
    EXPECT_EQ(QFCLibraryManager::fnRegister_QFCLibCallBack("name", nullptr), 0);
    EXPECT_EQ(QFCLibraryManager::fnRegister_QFCLibCallBack("other", {}), 0);
    EXPECT_EQ(QFCLibraryManager::fnUnRegister_QFCLibCallBack("other"), 0);
    EXPECT_EQ(QFCLibraryManager::fnUnRegister_QFCLibCallBack("Name"), 0);
    QueueAsync([] { return 1; });
    AwaitEndOfPasses();
    EXPECT_EQ(called, 1);
}

TEST_F(Worker, SyncCallsAndStartAndStop_AreRefusedInsideACallback) {
    int deleted = -1;
    int started = -1;
    int stopped = -1;
    ULONGLONG hCreated = 1;
    Listen("callback", [&](QFCLibCallbackParam*) {
        deleted = QFCLibraryManager::fnDeleteGallery({1});
        hCreated = QFCLibraryManager::fnCreateGallery(1, "Media", 0, 0, 0);
        started = QFCLibraryManager::fnStartService();
        stopped = QFCLibraryManager::fnStopService();
        return 1;
    });
    QueueAsync([] { return 1; });
    AwaitEndOfPasses();
    EXPECT_EQ(deleted, 0);
    EXPECT_EQ(hCreated, 0u);
    EXPECT_EQ(started, 0);
    EXPECT_EQ(stopped, 0);
    EXPECT_EQ(QFCLibraryManager::fnStopService(), 1);
}

// Stops the service while the worker is held, so that what is queued is queued when the flag falls.
void StopBehind(Gate& gate) {
    std::thread stopping([] { EXPECT_EQ(QFCLibraryManager::fnStopService(), 1); });
    while (ServicePeer::Running(ServicePeer::Manager()) != 0) std::this_thread::yield();
    gate.Open();
    stopping.join();
}

TEST_F(Worker, AtStop_SyncOperationsRunAndAsyncOnesAreDropped) {
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

TEST_F(Worker, ADroppedAsyncOperation_IsNotRunByTheNextStart) {
    Gate gate;
    const SharedLambda pDropped = QueueAsync(Note("dropped"));
    StopBehind(gate);
    ASSERT_EQ(QFCLibraryManager::fnStartService(), 1);
    Await(*QueueAsync(Note("next"), 1));
    EXPECT_EQ(m_order, "next ");
}

TEST_F(Worker, WhatIsQueuedWhileStopped_RunsAfterTheNextStart) {
    ASSERT_EQ(QFCLibraryManager::fnStopService(), 1);
    const SharedLambda pAsync = QueueAsync(Note("async"));
    const SharedLambda pSync = QueueSync(Note("sync"));
    EXPECT_EQ(ServicePeer::IsSyncEmpty(), 0);
    ASSERT_EQ(QFCLibraryManager::fnStartService(), 1);
    Await(*pAsync);
    EXPECT_EQ(m_order, "sync async ");
}

TEST_F(Worker, ASyncCallWhileStopped_WaitsForTheNextStart) {
    ASSERT_EQ(QFCLibraryManager::fnStopService(), 1);
    std::thread host([] { EXPECT_EQ(QFCLibraryManager::fnDeleteFolder(0), 0); });
    while (ServicePeer::IsSyncEmpty() != 0) std::this_thread::yield();
    ASSERT_EQ(QFCLibraryManager::fnStartService(), 1);
    host.join();
}

TEST_F(Worker, Clear_DropsEveryList) {
    ASSERT_EQ(QFCLibraryManager::fnStopService(), 1);
    QueueSync([] { return 1; });
    QueueAsync([] { return 1; });
    QueueAsync([] { return 1; }, 1);
    EXPECT_EQ(ServicePeer::Clear(), 1);
    EXPECT_EQ(ServicePeer::Take(), nullptr);
    EXPECT_EQ(ServicePeer::IsSyncEmpty(), 1);
}

TEST_F(Worker, ManyThreadsCallingAtOnce_EachGetTheirOwnResult) {
    std::vector<std::thread> hosts;
    for (int host = 0; host < 4; ++host) {
        hosts.emplace_back([host] {
            for (int call = 1; call <= 100; ++call) {
                const int nExpected = host * 1000 + call;
                ASSERT_EQ(qfc::ResultOf(EntrySteps::RunSync<LambdaOperation>([=] { return nExpected; })), nExpected);
            }
        });
    }
    for (std::thread& host : hosts) host.join();
}

TEST_F(Worker, OperationsNeverRunSideBySide) {
    std::atomic<int> inside = 0;
    std::atomic<int> most = 0;
    auto enter = [&] {
        most = std::max(most.load(), ++inside);
        std::this_thread::yield();
        --inside;
        return 1;
    };
    std::vector<std::thread> hosts;
    for (int host = 0; host < 4; ++host) {
        hosts.emplace_back([&, host] {
            for (int call = 0; call < 50; ++call) {
                QueueAsync(enter, host % 2);
                EntrySteps::RunSync<LambdaOperation>(enter);
            }
        });
    }
    for (std::thread& host : hosts) host.join();
    AwaitEndOfPasses();
    EXPECT_EQ(most, 1);
}

TEST_F(Worker, CallbacksComeAndGoWhileOthersAreCalled) {
    std::atomic<bool> done = false;
    std::thread host([&] {
        for (int round = 0; !done; ++round) {
            const CString strName(round % 2 ? "odd" : "even");
            QFCLibraryManager::fnRegister_QFCLibCallBack(strName, [](QFCLibCallbackParam*) { return 1; });
            QFCLibraryManager::fnUnRegister_QFCLibCallBack(strName);
        }
    });
    for (int i = 0; i < 200; ++i) QueueAsync([] { return 1; }, i % 2);
    AwaitEndOfPasses();
    done = true;
    host.join();
}

TEST_F(Worker, TheLookoutBetweenSyncCalls_SeesSyncOperationsOnlyAndTakesNone) {
    ASSERT_EQ(QFCLibraryManager::fnStopService(), 1);
    const SharedLambda pDeferred = QueueAsync([] { return 1; }, 1);
    const SharedLambda pOrdinary = QueueAsync([] { return 1; });
    EXPECT_FALSE(ServicePeer::AwaitNextSync());
    const SharedLambda pSync = QueueSync([] { return 1; });
    EXPECT_TRUE(ServicePeer::AwaitNextSync());
    for (const SharedLambda& p : {pSync, pOrdinary, pDeferred}) EXPECT_EQ(ServicePeer::Take(), p);
    EXPECT_EQ(ServicePeer::Take(), nullptr);
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
TEST_F(Worker, StartAndStopUnderLoad_LoseNothingAndHangNowhere) {
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
