#include "service/QFCLibraryManager.h"

#include "db/CurrentDBTools.h"
#include "platform/os/Sync.h"
#include "service/LibraryOperation.h"
#include "service/MutexLocker.h"

#include <utility>

QFCLibraryManager::QFCLibraryManager() : m_hServiceMutex(CreateMutexA(nullptr, 0, nullptr)) {}

QFCLibraryManager::~QFCLibraryManager() {
    if (m_hServiceMutex != nullptr) CloseHandle(m_hServiceMutex);
}

// Kept: database, worker and mutex are copied as addresses; the two locks of the lifecycle are never copied.
QFCLibraryManager::QFCLibraryManager(const QFCLibraryManager& other)
    : m_pDBTools(other.m_pDBTools),
      m_nRunning(other.m_nRunning.load()),
      m_pWorker(other.m_pWorker),
      m_queues(other.m_queues),
      m_hServiceMutex(other.m_hServiceMutex),
      m_callbacks(other.m_callbacks) {}

QFCLibraryManager& QFCLibraryManager::operator=(const QFCLibraryManager& other) {
    m_pDBTools = other.m_pDBTools;
    m_nRunning = other.m_nRunning.load();
    m_pWorker = other.m_pWorker;
    m_queues = other.m_queues;
    m_hServiceMutex = other.m_hServiceMutex;
    m_callbacks = other.m_callbacks;
    return *this;
}

QFCLibraryManager& QFCLibraryManager::GetInstance() {
    static QFCLibraryManager libraryManagerInstance;
    return libraryManagerInstance;
}

int QFCLibraryManager::fnStartService() { return GetInstance().fnDoStartService(); }

int QFCLibraryManager::fnStopService() { return GetInstance().fnDoStopService(); }

int QFCLibraryManager::fnRegister_QFCLibCallBack(const CString& strName, std::function<int(QFCLibCallbackParam*)> fn) {
    return GetInstance().fnDoRegister_QFCLibCallBack(strName, std::move(fn));
}

int QFCLibraryManager::fnUnRegister_QFCLibCallBack(const CString& strName) {
    return GetInstance().fnDoUnRegister_QFCLibCallBack(strName);
}

int QFCLibraryManager::IsCurrentDBTools(const DBTools* pDBTools) { return qfc::IsCurrentDBTools(pDBTools) ? 1 : 0; }

int QFCLibraryManager::fnDoRegister_QFCLibCallBack(const CString& strName,
                                                   std::function<int(QFCLibCallbackParam*)> fn) {
    // Declared before the lock and so gone after it: what a callback holds may wait for the service when it dies.
    std::shared_ptr<const qfc::CallbackRegistry::Callback> pFormer;
    const MutexLocker lock(m_hServiceMutex);
    pFormer = m_callbacks.Find(strName);
    return m_callbacks.Register(strName, std::move(fn)) ? 1 : 0;
}

int QFCLibraryManager::fnDoUnRegister_QFCLibCallBack(const CString& strName) {
    std::shared_ptr<const qfc::CallbackRegistry::Callback> pFormer;  // Dies after the lock, too.
    const MutexLocker lock(m_hServiceMutex);
    pFormer = m_callbacks.Find(strName);
    return m_callbacks.Unregister(strName) ? 1 : 0;
}

int QFCLibraryManager::fnAddLibraryOperation(SharedOperation pOperation) {
    if (pOperation == nullptr || pOperation->IsAsync()) return 0;
    const MutexLocker lock(m_hServiceMutex);
    m_queues.PushSync(std::move(pOperation));
    return 1;
}

int QFCLibraryManager::fnAddLibraryOperationAsync(SharedOperation pOperation, int nPriority) {
    if (pOperation == nullptr || !pOperation->IsAsync()) return 0;
    const MutexLocker lock(m_hServiceMutex);
    m_queues.PushAsync(std::move(pOperation), nPriority != 0);
    return 1;
}

QFCLibraryManager::SharedOperation QFCLibraryManager::fnGetLibraryOperation() {
    const MutexLocker lock(m_hServiceMutex);
    return m_queues.Take();
}

int QFCLibraryManager::fnIsLibraryOperationListEmpty() {
    const MutexLocker lock(m_hServiceMutex);
    return m_queues.IsSyncEmpty() ? 1 : 0;
}

int QFCLibraryManager::fnClearLibraryOperation() {
    const MutexLocker lock(m_hServiceMutex);
    m_queues.Clear();
    return 1;
}

int QFCLibraryManager::fnCallbackExec(QFCLibCallbackParam* pParam) {
    if (pParam == nullptr) return 0;
    const MutexLocker lock(m_hServiceMutex);
    m_callbacks.CallAll(pParam);
    return 1;
}
