#include "tests/service/WorkerFixture.h"

#include <atomic>
#include <gtest/gtest.h>
#include <memory>
#include <thread>
#include <vector>

namespace {

using qfc::ServicePeer;
using qfc::test::Gate;
using qfc::test::WorkerFixture;

class WorkerCallbacks : public WorkerFixture {};

TEST_F(WorkerCallbacks, AnAsyncOperationThatSucceeds_RaisesOnePassOfCallbacks) {
    int first = 0;
    int second = 0;
    Listen("first", [&](QFCLibCallbackParam*) { return ++first; });
    Listen("second", [&](QFCLibCallbackParam*) { return ++second; });
    QueueAsync([] { return -3; });
    AwaitEndOfPasses();
    EXPECT_EQ(first, 1);
    EXPECT_EQ(second, 1);
}

TEST_F(WorkerCallbacks, AnAsyncOperationThatFails_RaisesNoCallback) {
    int called = 0;
    Listen("callback", [&](QFCLibCallbackParam*) { return ++called; });
    const auto pOperation = QueueAsync([] { return 0; });
    Await(*pOperation);
    AwaitEndOfPasses();
    EXPECT_EQ(called, 0);
}

TEST_F(WorkerCallbacks, SyncOperations_RaiseNoCallback) {
    int called = 0;
    Listen("callback", [&](QFCLibCallbackParam*) { return ++called; });
    QueueSync([] { return 1; });
    AwaitEndOfPasses();
    EXPECT_EQ(called, 0);
}

TEST_F(WorkerCallbacks, TheCallbackGetsWhatTheOperationFillsIn) {
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

TEST_F(WorkerCallbacks, TheEventIsSignalledBeforeTheCallbacks) {
    std::shared_ptr<LibraryOperation> pOperation;
    DWORD dwWait = WAIT_TIMEOUT;
    Listen("callback", [&](QFCLibCallbackParam*) {
        dwWait = WaitForSingleObject(pOperation->Event(), 0);
        return 1;
    });
    {
        const Gate gate;
        pOperation = QueueAsync([] { return 1; });
    }
    AwaitEndOfPasses();
    EXPECT_EQ(dwWait, WAIT_OBJECT_0);
}

TEST_F(WorkerCallbacks, ANullRecord_RaisesNoCallback) {
    int called = 0;
    Listen("callback", [&](QFCLibCallbackParam*) { return ++called; });
    EXPECT_EQ(ServicePeer::CallAll(nullptr), 0);
    QFCLibCallbackParam param;
    EXPECT_EQ(ServicePeer::CallAll(&param), 1);
    EXPECT_EQ(called, 1);
}

TEST_F(WorkerCallbacks, CallbacksRunOnTheWorkerWithTheServiceLocked) {
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

TEST_F(WorkerCallbacks, ACallbackMayRegisterUnregisterAndQueue) {
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

TEST_F(WorkerCallbacks, ACallbackThatIsReplacedOrWithdrawn_DiesWithTheServiceUnlocked) {
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

// The callback goes on for a good while after the other thread has set out to withdraw it.
TEST_F(WorkerCallbacks, OnceWithdrawnByAnotherThread_ACallbackNeitherRunsNorIsCalledAgain) {
    std::atomic<int> called = 0;
    std::atomic<bool> inside = false;
    std::atomic<bool> withdrawing = false;
    Listen("callback", [&](QFCLibCallbackParam*) {
        inside = true;
        while (!withdrawing) std::this_thread::yield();
        for (int i = 0; i < 10000; ++i) std::this_thread::yield();
        inside = false;
        return ++called;
    });
    QueueAsync([] { return 1; });
    QueueAsync([] { return 1; });
    while (!inside) std::this_thread::yield();
    withdrawing = true;
    EXPECT_EQ(QFCLibraryManager::fnUnRegister_QFCLibCallBack("callback"), 1);
    EXPECT_FALSE(inside);
    const int nCalled = called;
    AwaitEndOfPasses();
    EXPECT_EQ(called, nCalled);
}

TEST_F(WorkerCallbacks, AnEmptyFunctionAndAnUnknownName_AreRefused) {
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

TEST_F(WorkerCallbacks, SyncCallsAndStartAndStop_AreRefusedInsideACallback) {
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

TEST_F(WorkerCallbacks, CallbacksComeAndGoWhileOthersAreCalled) {
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

}  // namespace
