#include "db/CurrentDBTools.h"
#include "db/DBTools.h"
#include "platform/os/Files.h"
#include "platform/os/Places.h"
#include "platform/os/Sync.h"
#include "platform/os/Thread.h"
#include "service/MutexLocker.h"
#include "service/QFCLibraryManager.h"

#include <array>
#include <list>
#include <memory>
#include <utility>

namespace {

constexpr const char* kDatabaseName = "CinelumeDatabase.db";

CString TemplatePath() {
    CString strTemplate;
    strTemplate.Format("%sOrvel.dat\\%s", qfc::HostFolder().c_str(), kDatabaseName);
    return strTemplate;
}

CString AnswerDatabasePath() {
    std::array<char, MAX_PATH> folder{};
    if (!qfc::FreezePlaces(folder.data(), MAX_PATH)) return {};
    CString strPath;
    strPath.Format("%s%s", folder.data(), kDatabaseName);
    return strPath;
}

}  // namespace

CString QFCLibraryManager::fnGetDBName() { return kDatabaseName; }

CString QFCLibraryManager::GetDatabasePath() {
    static std::mutex guard;
    static CString strPath;  // Guarded by guard.
    const std::scoped_lock lock(guard);
    if (strPath.IsEmpty()) strPath = AnswerDatabasePath();
    return strPath;
}

int QFCLibraryManager::fnDoStartService() {
    // Looked at before the lock as well: a call that is refused anyway holds up nobody.
    if (m_nRunning == 1) return 0;
    const std::unique_lock transition(m_transition, std::try_to_lock);
    if (!transition.owns_lock() || m_nRunning == 1) return 0;
    const CString strPath = GetDatabasePath();
    if (strPath.IsEmpty()) return 0;
    if (!PathFileExistsA(strPath)) SeedDatabase(strPath);
    bool bOpened = true;
    auto pDBTools = std::make_unique<DBTools>(strPath, bOpened);
    if (!bOpened) return 0;
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

// Whatever goes wrong is ignored: the database then starts empty. Another process may have made the file since it was
// looked for; its library is not to be replaced.
void QFCLibraryManager::SeedDatabase(const CString& strPath) {
    const CString strTemplate = TemplatePath();
    if (!PathFileExistsA(strTemplate)) return;
    // What a lost library left behind would be taken for the unfinished business of the seed.
    for (const char* pszJournal : {"-journal", "-wal"}) DeleteFileA(strPath + pszJournal);
    CopyFileA(strTemplate, strPath, 1);
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

// A synchronous operation that is still there came when the worker had ended, without the service database. It stays
// queued for the next start, as if it had come a moment later: its caller waits for it.
void QFCLibraryManager::DropQueuedWork() {
    const MutexLocker lock(m_hServiceMutex);
    std::list<SharedOperation> late = m_queues.TakeAllSync();
    fnClearLibraryOperation();
    for (SharedOperation& pOperation : late) m_queues.PushSync(std::move(pOperation));
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
    bool bOpened = true;
    DBTools database(strPath, bOpened);
    return bOpened && database.ClearDatabase() ? 1 : 0;
}
