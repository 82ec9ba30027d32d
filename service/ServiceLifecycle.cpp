#include "db/CurrentDBTools.h"
#include "db/DBTools.h"
#include "platform/os/Sync.h"
#include "platform/os/Thread.h"
#include "service/LibraryOpening.h"
#include "service/MutexLocker.h"
#include "service/QFCLibraryManager.h"

#include <memory>
#include <utility>

CString QFCLibraryManager::fnGetDBName() { return qfc::kLibraryName; }

CString QFCLibraryManager::GetDatabasePath() {
    static std::mutex guard;
    static CString strPath;  // Guarded by guard.
    const std::scoped_lock lock(guard);
    if (strPath.IsEmpty()) strPath = qfc::FixLibraryPath();
    return strPath;
}

int QFCLibraryManager::fnDoStartService() {
    // Looked at before the lock as well: a call that is refused anyway holds up nobody.
    if (m_nRunning == 1) return 0;
    const std::unique_lock transition(m_transition, std::try_to_lock);
    if (!transition.owns_lock() || m_nRunning == 1) return 0;
    const CString strPath = GetDatabasePath();
    if (strPath.IsEmpty()) return 0;
    auto pDBTools = qfc::OpenLibrary(strPath, qfc::MissingLibrary::kSeed);
    if (pDBTools == nullptr) return 0;
    // Made before anything is seen of the start: one that fails here leaves the queues, and who waits in them, alone.
    auto pWorker = std::make_unique<qfc::WorkerThread>(&fnThreadExecuteLibraryOperation, this);
    if (!pWorker->IsCreated()) return 0;
    PublishDatabase(std::move(pDBTools));
    m_nRunning = 1;
    m_databaseGate.Open();
    m_pWorker = pWorker.release();
    m_pWorker->Resume();
    return 1;
}

void QFCLibraryManager::PublishDatabase(std::unique_ptr<DBTools> pDBTools) {
    m_pDBTools = pDBTools.release();
    qfc::SetCurrentDBTools(m_pDBTools);
    m_pDBTools->AddFolderOrderIndexColumn();
}

int QFCLibraryManager::fnDoStopService() {
    // The worker would wait for its own end.
    if (IsWorkerThread() || m_nRunning == 0) return 0;
    const std::scoped_lock transition(m_transition);
    if (m_nRunning == 0) return 0;
    {
        const MutexLocker lock(m_hServiceMutex);
        m_nRunning = 0;
        // Who keeps making synchronous calls would keep the worker, and so the stop, from ending.
        m_queues.MarkEndOfSync();
    }
    if (m_pWorker != nullptr) {
        WaitForSingleObject(m_pWorker->Handle(), INFINITE);
        delete m_pWorker;
        m_pWorker = nullptr;
    }
    DropQueuedWork();
    CloseDatabase();
    return 1;
}

// A synchronous operation that is still there came after the running flag fell, without the service database. It stays
// queued for the next start, as if it had come a moment later: its caller waits for it.
void QFCLibraryManager::DropQueuedWork() {
    const MutexLocker lock(m_hServiceMutex);
    m_queues.DropAsync();
}

void QFCLibraryManager::CloseDatabase() {
    m_databaseGate.Close();
    qfc::SetCurrentDBTools(nullptr);
    delete m_pDBTools;
    m_pDBTools = nullptr;
}

int QFCLibraryManager::fnClearDBContent() {
    QFCLibraryManager& manager = GetInstance();
    if (manager.m_nRunning != 0) return 0;
    const std::unique_lock transition(manager.m_transition, std::try_to_lock);
    if (!transition.owns_lock() || manager.m_nRunning != 0) return 0;
    const CString strPath = GetDatabasePath();
    if (strPath.IsEmpty()) return 0;
    const auto pDBTools = qfc::OpenLibrary(strPath, qfc::MissingLibrary::kLeaveEmpty);
    return pDBTools != nullptr && pDBTools->ClearDatabase() ? 1 : 0;
}
