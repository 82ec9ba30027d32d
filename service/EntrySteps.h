#pragma once

#include "db/CurrentDBTools.h"
#include "platform/os/Sync.h"
#include "service/LibraryOperation.h"
#include "service/MutexLocker.h"
#include "service/QFCLibraryManager.h"

#include <memory>
#include <utility>

namespace qfc {

// The steps every entry function takes, written once: make the operation, queue it, wait for it, hand it back to be
// read. Any thread.
class EntrySteps {
public:
    // The database to work on: the chosen one, else the service's, which is not closed before this is released or dies.
    class DatabaseUse {
    public:
        explicit DatabaseUse(DBTools* pChosen = nullptr) : m_pDBTools(pChosen) {
            if (pChosen != nullptr && !IsCurrentDBTools(pChosen)) return;
            m_bInside = Manager().m_databaseGate.Enter();
            m_pDBTools = m_bInside ? Manager().m_pDBTools : nullptr;
        }
        ~DatabaseUse() { Release(); }
        DatabaseUse(const DatabaseUse&) = delete;
        DatabaseUse& operator=(const DatabaseUse&) = delete;

        // Null when there is neither.
        DBTools* Get() const { return m_pDBTools; }
        // Whether it is the service's; until released.
        bool IsOfService() const { return m_bInside; }
        void Release() {
            if (std::exchange(m_bInside, false)) Manager().m_databaseGate.Leave();
        }

    private:
        bool m_bInside = false;
        DBTools* m_pDBTools;
    };

    // The operation once the worker has run it; null when it was refused or could not be waited for. The arguments are
    // those of the operation's constructor.
    template <typename Operation, typename... Args>
    static std::shared_ptr<Operation> RunSync(Args&&... args) {
        const auto pOperation = std::make_shared<Operation>(std::forward<Args>(args)...);
        return QueueSync(pOperation) && AwaitEvent(*pOperation) ? pOperation : nullptr;
    }

    // The same for an operation that has the database among its arguments. It is refused, too, when that is the
    // service's and a stop has begun: what is queued before the worker runs, and so none outlives the database.
    template <typename Operation, typename... Args>
    static std::shared_ptr<Operation> RunSyncOn(DatabaseUse& database, Args&&... args) {
        const auto pOperation = std::make_shared<Operation>(std::forward<Args>(args)...);
        const bool bQueued = database.IsOfService() ? QueueSyncWhileRunning(pOperation) : QueueSync(pOperation);
        database.Release();
        return bQueued && AwaitEvent(*pOperation) ? pOperation : nullptr;
    }

    // 1 once queued.
    template <typename Operation, typename... Args>
    static int RunAsync(int nPriority, Args&&... args) {
        const auto pOperation = std::make_shared<Operation>(std::forward<Args>(args)...);
        pOperation->SetAsync();
        return Manager().fnAddLibraryOperationAsync(pOperation, nPriority);
    }

    // 1 once queued. With the service's database among the arguments it is refused once a stop has begun: what was
    // queued before is executed, or dropped, while that is open.
    template <typename Operation, typename... Args>
    static int RunAsyncOn(DatabaseUse& database, int nPriority, Args&&... args) {
        const auto pOperation = std::make_shared<Operation>(std::forward<Args>(args)...);
        return QueueAsyncOn(database, pOperation, nPriority) ? 1 : 0;
    }

    // Queues behind the ordinary asynchronous work, with callbacks, and waits all the same. 0 when it was refused, and
    // when a stop dropped it.
    template <typename Operation, typename... Args>
    static int RunAsyncAndWait(DatabaseUse& database, Args&&... args) {
        if (QFCLibraryManager::IsWorkerThread()) return 0;
        const auto pOperation = std::make_shared<Operation>(std::forward<Args>(args)...);
        if (!QueueAsyncOn(database, pOperation, 0)) return 0;
        return pOperation->AwaitEnd() ? pOperation->Result() : 0;
    }

    static QFCLibraryManager& Manager() { return QFCLibraryManager::GetInstance(); }

private:
    // The worker may not wait for itself: a synchronous call from inside a callback is refused. So is one whose end
    // nobody could wait for, before the worker can take it.
    static bool QueueSync(const std::shared_ptr<LibraryOperation>& pOperation) {
        if (QFCLibraryManager::IsWorkerThread() || pOperation->Event() == nullptr) return false;
        return Manager().fnAddLibraryOperation(pOperation) != 0;
    }
    static bool QueueSyncWhileRunning(const std::shared_ptr<LibraryOperation>& pOperation) {
        const MutexLocker lock(Manager().m_hServiceMutex);
        return Manager().m_nRunning != 0 && QueueSync(pOperation);
    }
    static bool QueueAsyncOn(DatabaseUse& database, const std::shared_ptr<LibraryOperation>& pOperation,
                             int nPriority) {
        pOperation->SetAsync();
        const MutexLocker lock(Manager().m_hServiceMutex);
        const bool bQueued = (!database.IsOfService() || Manager().m_nRunning != 0) &&
                             Manager().fnAddLibraryOperationAsync(pOperation, nPriority) != 0;
        database.Release();
        return bQueued;
    }
    static bool AwaitEvent(const LibraryOperation& operation) {
        return WaitForSingleObject(operation.Event(), INFINITE) == WAIT_OBJECT_0;
    }
};

// The result of an operation that was waited for; 0 when it was refused.
inline int ResultOf(const std::shared_ptr<const LibraryOperation>& pOperation) {
    return pOperation != nullptr ? pOperation->Result() : 0;
}

}  // namespace qfc
