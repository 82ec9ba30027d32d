#pragma once

#include "db/DbRecords.h"
#include "platform/Export.h"
#include "platform/framework/CString.h"
#include "platform/framework/Guid.h"
#include "platform/framework/Types.h"
#include "service/CallbackRegistry.h"
#include "service/DatabaseGate.h"
#include "service/LibItemThumbnailInfo.h"
#include "service/OperationQueues.h"
#include "service/QFCLibCallbackParam.h"
#include "tags/TagRecords.h"

#include <atomic>
#include <functional>
#include <list>
#include <memory>
#include <mutex>
#include <vector>

class CQFolder;
class CQItem;
class DBTools;
class LibraryOperation;
struct DS_Filter_File_Record;
struct DS_Transition_Record;

namespace qfc {
class EntrySteps;
class ServicePeer;
class WorkerThread;
}  // namespace qfc

// The library service: owns the library database and runs every change to it on one worker thread. A synchronous
// function waits for the worker and answers the result; an asynchronous one returns at once, and every named callback
// is called on the worker when the operation succeeded. Results are 1 and 0 (handles and pointers: 0 on failure).
//
// A gallery or folder handle is the address of the CQGallery or CQFolder. A DBTools pointer of null means the service
// database; a session handle turned into a pointer runs the function against that library instead.
//
// Threads: any thread may call any public function. A synchronous function called while the service is stopped, or
// while another thread stops it, waits until it is started, unless it needs the service database, which is gone then;
// so call nothing for a gallery of that database once a stop may have begun. From inside a callback, which the worker
// runs, it fails at once. Items, folders and galleries handed over may be changed by others when the operation has run.
class QFCLIB_API QFCLibraryManager {
public:
    // Shallow: database, worker and mutex stay the original's, although whichever object dies first closes the mutex.
    QFCLibraryManager(const QFCLibraryManager& other);
    QFCLibraryManager& operator=(const QFCLibraryManager& other);
    // Closes the service mutex; neither stops the worker nor closes the database, which is fnStopService's work.
    ~QFCLibraryManager();

    // --- Service ---------------------------------------------------------------------------------------------------
    // Opens the database, seeding it from the template of the host folder when it is missing, and starts the worker;
    // waits, for a minute at most, while another process is making it. 0 when it runs already, when the data folder
    // does not fit the 260 bytes of the path buffer, when the database cannot be opened or the worker not be made, or
    // while another thread starts, stops or clears. A start that fails leaves what is queued as it was.
    static int fnStartService();
    // Runs the synchronous operations queued before, drops the asynchronous ones (no callback, no signal), waits for
    // functions that still use the database, closes it. 0 when the service does not run, and from inside a callback.
    // Galleries loaded from the service database are closed before.
    static int fnStopService();
    // Replaces the callback of that name. 0, nothing changed, for an empty function. Callbacks run on the worker with
    // the service locked, in the case-sensitive order of their names; they may register, unregister and queue
    // asynchronous operations, and must not wait for another thread that does.
    static int fnRegister_QFCLibCallBack(const CString& strName, std::function<int(QFCLibCallbackParam*)> fn);
    // 0 when there is no callback of that name. When it returns on another thread, the callback is not running.
    static int fnUnRegister_QFCLibCallBack(const CString& strName);
    // The file of the service database. The first answer fixes it for the life of the process; empty, and nothing
    // fixed, when the data folder cannot be had.
    static CString GetDatabasePath();
    // 1 for the service's database while the service runs; null while it does not run is 1, too.
    static int IsCurrentDBTools(const DBTools* pDBTools);
    // Opens another library beside the service's; the handle is the address of its DBTools, 0 when the file is missing
    // or cannot be opened. The caller ends the session, after closing the galleries loaded through it.
    static ULONGLONG StartDbSession4ImportLib(const CString& strPath);
    static int EndDbSession4ImportLib(ULONGLONG hSession);

    // --- Galleries and folders -------------------------------------------------------------------------------------
    // The gallery joins the gallery document, which owns it. Kept: one made on a session does so, too; it is closed
    // with fnCloseSessionGallery before the session ends.
    static ULONGLONG fnCreateGallery(int nGalleryId, CString strName, DWORD dwAdopt, DWORD dwTrusty, DWORD dwTypeExtra,
                                     DBTools* pDBTools = nullptr);
    // Loads a tree of its own at every call. Galleries of the service database join the gallery document; one of a
    // session belongs to the caller, who ends it with fnCloseSessionGallery.
    static ULONGLONG fnLoadGallery(int nGalleryId, DBTools* pDBTools = nullptr);
    // All or nothing: an unknown id among them leaves every gallery in place. Items and payloads stay behind.
    static int fnDeleteGallery(const std::vector<int> galleryIds);
    // A folder below the parent (empty path: the gallery itself), as its last child; null when the name is taken. The
    // gallery owns it. Its index is one more than the number of its siblings: where some were removed before, it may
    // stand further ahead after the next load, unless the host sets the index.
    static CQFolder* fnCreateFolder(ULONGLONG hGallery, const CString& strParentPath, const CString& strName,
                                    DWORD dwFirst, DWORD dwSecond, DWORD dwThird, DWORD dwFolderId);
    static int fnUpdateFolder(ULONGLONG hFolder, CString strName, DWORD dwAdopt, DWORD dwTrusty, DWORD dwTypeExtra,
                              DBTools* pDBTools = nullptr);
    // Removes the folder with everything below it and destroys its object; a folder without a row may not be given.
    // Kept: 1 also when the database refuses; what is stored tells (QueryFolder of its row finds nothing).
    static int fnDeleteFolder(ULONGLONG hFolder);

    // --- Items -----------------------------------------------------------------------------------------------------
    // Adds the item to every named folder; paths that name no folder are skipped. 1 says only that gallery, paths and
    // item were given: an item is stored when the folder then holds it (HasItem). The gallery owns an item that a
    // folder holds, otherwise it stays the caller's.
    static int fnAddItem(ULONGLONG hGallery, std::vector<CString> folderPaths, CQItem* pItem);
    // 1 once queued, whatever becomes of it. The item is borrowed until its callback, or until the service has stopped.
    // An add queued while the service is stopped runs after the next start, and one that meets a stop is dropped or
    // does so, too; item, gallery and its database must live until then, so this is only for galleries of sessions.
    static int fnAddItemAsync(ULONGLONG hGallery, std::vector<CString> folderPaths, CQItem* pItem, int nPriority);
    // Mode 0 removes the items from every folder that holds them, another mode from this folder only.
    // The result is always 0.
    static int fnDeleteItem(ULONGLONG hFolder, std::vector<GUID> items, int nMode);
    // Copies the groups of the mask from pItem into the gallery's item of that GUID and stores it. 1 whether or
    // not it could be stored.
    static int fnUpdateItem(ULONGLONG hGallery, CQItem* pItem, GUID guidItem, DWORD dwMask);
    // Stores the item's bitmap cache. Kept: 1 also without one in memory; nothing is written then.
    static int fnUpdateLibItemThumbnail(CQItem* pItem);
    // Replaces the contents of the vector. 1 also when the query failed or ended early.
    static int fnQueryLibItemThumbnailInfo(std::vector<_DS_LibItemTunmbnailInfo_>& thumbnails);

    // --- Filters and transitions -------------------------------------------------------------------------------------
    // Adds the item as fnAddItemAsync does, and stores its record in the service database: the callback says that the
    // record is stored. From the beginning of a stop until the database is closed 0, nothing queued; while the service
    // is stopped it is queued without a database: 1, and nothing is added when the next start runs it. The option value
    // is carried along, not stored. Of the entries of a record one may name no item: it is the added one's.
    static int fnAddItemAsync_Filter(const DS_Filter_File_Record& file, unsigned int nOption, ULONGLONG hGallery,
                                     std::vector<CString> folderPaths, CQItem* pItem, int nPriority);
    // Puts the items of the folders in the order of their names as well; that order is not stored.
    static int fnAddItemAsync_Transition(const DS_Transition_Record& transition, ULONGLONG hGallery,
                                         std::vector<CString> folderPaths, CQItem* pItem, int nPriority);
    // Copies everything from pItem into the gallery's item of that GUID, stores it and the record. These two run behind
    // the asynchronous work of priority 0, raise callbacks, and wait for their result: 0 when a stop drops them, too.
    // 1 says that the record is stored; the item is only if the gallery has it, which nothing here tells.
    static int fnUpdateFilterOptionAsync(ULONGLONG hGallery, CQItem* pItem, const GUID& guidItem,
                                         const DS_Filter_File_Record& file, unsigned int nOption);
    static int fnUpdateTransitionAsync(ULONGLONG hGallery, CQItem* pItem, const GUID& guidItem,
                                       const DS_Transition_Record& transition);
    // Deletes the files of the records from the store, all or none; then the items of the records that are in the
    // library from every folder of the gallery, and each folder that is empty with all below it and not predefined.
    static int fnDeleteFilter(const std::vector<DS_Filter_File_Record> files, ULONGLONG hGallery);
    static int fnDeleteTransition(const std::vector<DS_Transition_Record> transitions, ULONGLONG hGallery);

    // --- Tags ------------------------------------------------------------------------------------------------------
    // Each is 0, and nothing is queued, while the service is stopped. What the operations cannot do leaves database,
    // tag store and items as they were; the result is 1 then, too: look at the store or the items. The key is the
    // gallery's id, under which CLibTagsMgr files categories and tags.
    static int fnCreateDefaultTag();  // The store then holds the default tags alone; stored ones stay stored.
    static int fnLoadLibTag();        // Appends to the store: once a process.
    // With the tags in them. Zero as a tag's category means the one that it is in.
    static int fnUpdateTagCategory(DWORD dwKey, const std::vector<CTagCategory> categories);
    static int fnDeleteTagCategory(DWORD dwKey, const std::vector<CTagCategory> categories);  // Their tags stay stored.
    static int fnUpdateTag(DWORD dwKey, const std::list<CLibTag> tags);
    // Deleted and merged tags leave database and store; items in memory keep them until RemoveLibTag.
    static int fnDeleteTag(DWORD dwKey, const std::list<CLibTag> tags);
    static int fnInsertLibTag2Item(const std::vector<CQItem*> items, const std::list<GUID> tags);
    static int fnDeleteLibTagFromItem(const std::vector<CQItem*> items, const std::list<GUID> tags);
    static int fnMergeFaceTag(DWORD dwKey, const GUID& target, const std::list<GUID> sources);

    // --- Database, on the calling thread ---------------------------------------------------------------------------
    // Writes a copy of the service database; needs the service started. A failed export leaves a partial file.
    static int fnExportDB(const char* pszTargetPath);
    // Drops everything but the tags. 0 while the service runs, or another thread starts, stops or clears.
    static int fnClearDBContent();
    static CString fnGetDBName();
    // What was loaded automatically into a folder, by item or by path in any case. Kept: spelt so.
    static int fnAddItemIntoAutoLodedTable(GUID guidItem, int nFolderId);
    static int fnIsItemInAutoLoadedTable(GUID guidItem, int nFolderId);
    static int fnAddItemIntoAutoLodedByPathTable(const char* pszFilePath, int nFolderId);
    static int fnIsItemInAutoLoadedByPathTable(const char* pszFilePath, int nFolderId);
    // Lists the galleries stored in the database, by gallery id. 0 on failure, the list is then as it was.
    static int fnListGalleries(std::vector<qfc::StoredGallery>& galleries, DBTools* pDBTools = nullptr);
    // Destroys a gallery of a session with the items its folders hold. 0, nothing done, for 0 and for a gallery of the
    // service database, which the document closes.
    static int fnCloseSessionGallery(ULONGLONG hGallery);

private:
    friend class qfc::EntrySteps;
    friend class qfc::ServicePeer;  // For tests.

    using SharedOperation = std::shared_ptr<LibraryOperation>;

    QFCLibraryManager();
    static QFCLibraryManager& GetInstance();

    int fnDoStartService();
    int fnDoStopService();
    int fnDoRegister_QFCLibCallBack(const CString& strName, std::function<int(QFCLibCallbackParam*)> fn);
    int fnDoUnRegister_QFCLibCallBack(const CString& strName);

    // Each takes only operations of its own kind; 0, and the reference is dropped, for others and for null.
    int fnAddLibraryOperation(SharedOperation pOperation);
    int fnAddLibraryOperationAsync(SharedOperation pOperation, int nPriority);
    SharedOperation fnGetLibraryOperation();
    // Looks at the synchronous operations only.
    int fnIsLibraryOperationListEmpty();
    int fnClearLibraryOperation();
    // 0 for null. Holds the service mutex for the whole pass; lets exceptions of callbacks through.
    int fnCallbackExec(QFCLibCallbackParam* pParam);

    // The worker: service/Worker.cpp.
    static unsigned int fnThreadExecuteLibraryOperation(void* pManager);
    // Whether a stopping worker may end: what comes after the fall of the flag is not for it.
    bool IsSyncDone();
    void RunOperation(LibraryOperation& operation);
    bool AwaitNextSyncOperation();
    static bool IsWorkerThread();

    void PublishDatabase(std::unique_ptr<DBTools> pDBTools);
    void CloseDatabase();
    void DropQueuedWork();

    // Written under m_transition while there is no worker and nobody inside m_databaseGate; read by these.
    DBTools* m_pDBTools = nullptr;
    // Any thread may look. Falls under m_hServiceMutex: what was queued with the database before is run with it.
    std::atomic<int> m_nRunning = 0;
    qfc::WorkerThread* m_pWorker = nullptr;  // Under m_transition only.

    qfc::OperationQueues m_queues;  // Guarded by m_hServiceMutex.
    void* m_hServiceMutex;
    qfc::CallbackRegistry m_callbacks;  // Guarded by m_hServiceMutex.

    // Entered by who uses or hands on the database. Whoever holds m_hServiceMutex may enter, whoever is inside may take
    // m_hServiceMutex: the only one to wait for the gate is a stop, without the mutex and when the worker has ended.
    qfc::DatabaseGate m_databaseGate;
    // Held while the service starts, stops or is cleared; taken before m_hServiceMutex. Only a stop waits for it.
    std::mutex m_transition;
};
