#include "platform/framework/Exceptions.h"
#include "tests/service/WorkerFixture.h"

#include <algorithm>
#include <atomic>
#include <gtest/gtest.h>
#include <ostream>
#include <stdexcept>
#include <thread>
#include <vector>

namespace {

using qfc::EntrySteps;
using qfc::ServicePeer;
using qfc::test::Gate;
using qfc::test::LambdaOperation;
using qfc::test::SharedLambda;
using qfc::test::WorkerFixture;

class Worker : public WorkerFixture {};

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

TEST_F(Worker, AnOperationDiesOnceItIsDone) {
    const std::weak_ptr<LambdaOperation> pOperation = QueueAsync([] { return 1; });
    AwaitEndOfPasses();
    EXPECT_TRUE(pOperation.expired());
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

}  // namespace
