#include "db/DBTools.h"
#include "platform/framework/Exceptions.h"
#include "platform/os/Sync.h"
#include "service/LibraryOperation.h"
#include "service/MutexLocker.h"
#include "service/QFCLibraryManager.h"

#include <chrono>
#include <thread>

namespace {

constexpr DWORD kIdlePause = 10;  // Milliseconds.
constexpr std::chrono::microseconds kSyncLookout{500};

thread_local bool t_bWorker = false;

// Runs the work and keeps what it throws from ending the worker; false when it threw.
template <typename Work>
bool Contained(Work&& work) {
    try {
        work();
        return true;
    } catch (CException* pException) {
        pException->Delete();
    } catch (...) {
    }
    return false;
}

}  // namespace

bool QFCLibraryManager::IsWorkerThread() { return t_bWorker; }

unsigned int QFCLibraryManager::fnThreadExecuteLibraryOperation(void* pArgument) {
    if (pArgument == nullptr) return 1;
    auto& manager = *static_cast<QFCLibraryManager*>(pArgument);
    t_bWorker = true;
    bool bServedSync = false;
    while (manager.m_nRunning != 0 || !manager.IsSyncDone()) {
        const SharedOperation pOperation = manager.fnGetLibraryOperation();
        if (pOperation != nullptr) {
            manager.RunOperation(*pOperation);
            bServedSync = !pOperation->IsAsync();
        } else if (!bServedSync || !manager.AwaitNextSyncOperation()) {
            bServedSync = false;
            // What a refused ROLLBACK left open keeps other processes out for as long as nothing is asked for here.
            if (manager.m_pDBTools != nullptr) manager.m_pDBTools->FinishPending();
            Sleep(kIdlePause);
        }
    }
    return 0;
}

bool QFCLibraryManager::IsSyncDone() {
    const MutexLocker lock(m_hServiceMutex);
    return m_queues.IsSyncDone();
}

void QFCLibraryManager::RunOperation(LibraryOperation& operation) {
    operation.SetResult(0);
    Contained([&] { operation.SetResult(operation.execute()); });
    SetEvent(operation.Event());
    operation.NoteExecuted();
    if (!operation.IsAsync() || operation.Result() == 0) return;
    Contained([&] {
        QFCLibCallbackParam param;
        operation.FillCallbackParam(param);
        fnCallbackExec(&param);
    });
}

// A caller that makes one synchronous call after another comes back at once, long before the idle pause would be over.
// Only its list is looked at: taking asynchronous operations this early would spoil their order while a host is still
// queueing them.
bool QFCLibraryManager::AwaitNextSyncOperation() {
    const auto deadline = std::chrono::steady_clock::now() + kSyncLookout;
    while (std::chrono::steady_clock::now() < deadline) {
        if (!fnIsLibraryOperationListEmpty()) return true;
        std::this_thread::yield();
    }
    return false;
}
