#pragma once

#include "service/EntrySteps.h"
#include "service/LibraryOperation.h"
#include "service/QFCLibraryManager.h"

#include <functional>
#include <memory>
#include <mutex>
#include <utility>

namespace qfc {

// The private side of the service, for tests.
class ServicePeer {
public:
    using SharedOperation = std::shared_ptr<LibraryOperation>;

    static QFCLibraryManager& Manager() { return EntrySteps::Manager(); }
    static int Add(SharedOperation p) { return Manager().fnAddLibraryOperation(std::move(p)); }
    static int AddAsync(SharedOperation p, int nPriority) {
        return Manager().fnAddLibraryOperationAsync(std::move(p), nPriority);
    }
    static SharedOperation Take() { return Manager().fnGetLibraryOperation(); }
    static int IsSyncEmpty() { return Manager().fnIsLibraryOperationListEmpty(); }
    // Ordinary asynchronous operations that are not chosen yet.
    static std::size_t AsyncWaiting() {
        const MutexLocker lock(Manager().m_hServiceMutex);
        return Manager().m_queues.CountAsync();
    }
    static std::size_t CountSync() {
        const MutexLocker lock(Manager().m_hServiceMutex);
        return Manager().m_queues.CountSync();
    }
    static bool AwaitNextSync() { return Manager().AwaitNextSyncOperation(); }
    static int Clear() { return Manager().fnClearLibraryOperation(); }
    static void DropQueuedWork() { Manager().DropQueuedWork(); }
    static int CallAll(QFCLibCallbackParam* pParam) { return Manager().fnCallbackExec(pParam); }
    static int CallAllOf(QFCLibraryManager& manager, QFCLibCallbackParam* pParam) {
        return manager.fnCallbackExec(pParam);
    }
    static unsigned RunWorker(void* pManager) { return QFCLibraryManager::fnThreadExecuteLibraryOperation(pManager); }
    static DBTools* Database(const QFCLibraryManager& manager) { return manager.m_pDBTools; }
    static int Running(const QFCLibraryManager& manager) { return manager.m_nRunning; }
    static std::mutex& Transition() { return Manager().m_transition; }
    static void* Mutex(const QFCLibraryManager& manager) { return manager.m_hServiceMutex; }
    static WorkerThread* Worker(const QFCLibraryManager& manager) { return manager.m_pWorker; }
    static SharedOperation TakeFrom(QFCLibraryManager& manager) { return manager.m_queues.Take(); }
    static void SetMutex(QFCLibraryManager& manager, void* hMutex) { manager.m_hServiceMutex = hMutex; }
};

namespace test {

// An operation made of two functions.
class LambdaOperation : public LibraryOperation {
public:
    explicit LambdaOperation(std::function<int()> execute, std::function<void(QFCLibCallbackParam&)> fill = nullptr)
        : m_execute(std::move(execute)), m_fill(std::move(fill)) {}
    int execute() override { return m_execute(); }
    void FillCallbackParam(QFCLibCallbackParam& param) override {
        LibraryOperation::FillCallbackParam(param);
        if (m_fill) m_fill(param);
    }

private:
    std::function<int()> m_execute;
    std::function<void(QFCLibCallbackParam&)> m_fill;
};

}  // namespace test
}  // namespace qfc
