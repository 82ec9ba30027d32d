#pragma once

#include "platform/os/Sync.h"
#include "service/LibraryOperation.h"
#include "service/QFCLibraryManager.h"

#include <memory>
#include <shared_mutex>
#include <utility>

namespace qfc {

// The steps every entry function takes, written once: make the operation, queue it, wait for it, hand it back to be
// read. Any thread.
class EntrySteps {
public:
    // The database to work on: the chosen one, else the service's, which is not closed before this is released or dies.
    class DatabaseUse {
    public:
        explicit DatabaseUse(DBTools* pChosen = nullptr)
            : m_lock(Manager().m_databaseGate), m_pDBTools(pChosen != nullptr ? pChosen : Manager().m_pDBTools) {}

        // Null when there is neither.
        DBTools* Get() const { return m_pDBTools; }
        void Release() { m_lock.unlock(); }

    private:
        std::shared_lock<std::shared_mutex> m_lock;
        DBTools* m_pDBTools;
    };

    // The operation once the worker has run it; null when it was refused or could not be waited for. The arguments are
    // those of the operation's constructor.
    template <typename Operation, typename... Args>
    static std::shared_ptr<Operation> RunSync(Args&&... args) {
        const auto pOperation = std::make_shared<Operation>(std::forward<Args>(args)...);
        return QueueSync(pOperation) && AwaitEvent(*pOperation) ? pOperation : nullptr;
    }

    // The same for an operation that has the database among its arguments. From the queue on the service itself sees to
    // it that the operation does not outlive the database.
    template <typename Operation, typename... Args>
    static std::shared_ptr<Operation> RunSyncOn(DatabaseUse& database, Args&&... args) {
        const auto pOperation = std::make_shared<Operation>(std::forward<Args>(args)...);
        const bool bQueued = QueueSync(pOperation);
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

    static QFCLibraryManager& Manager() { return QFCLibraryManager::GetInstance(); }

private:
    // The worker may not wait for itself: a synchronous call from inside a callback is refused. So is one whose end
    // nobody could wait for, before the worker can take it.
    static bool QueueSync(const std::shared_ptr<LibraryOperation>& pOperation) {
        if (QFCLibraryManager::IsWorkerThread() || pOperation->Event() == nullptr) return false;
        return Manager().fnAddLibraryOperation(pOperation) != 0;
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
