#pragma once

#include "folders/CQFolderCtrl.h"
#include "platform/framework/Collections.h"
#include "platform/framework/Guid.h"

#include <memory>

class CQGallery;
class CQItem;
class DBTools;
struct IStorage;

namespace qfc {
class FolderLoad;
class FolderNumbers;
class FolderWalkWithoutMemory;
struct FolderLife;
class HeldGuids;
}  // namespace qfc

// A node of a gallery's tree: an ordered list of sub-folders, which it owns, and an ordered array of items, which it
// owns unless the gallery at the root does. Containers are always asked for through GetFolderList and GetItemArray, so
// a derived class may keep its own. Results are 1 and 0, pointers are null when nothing matches, names compare exactly.
//
// Threads: the tree is not locked; it belongs to one thread at a time (the worker, while the service changes it).
class QFCLIB_API CQFolder : public CObject, public CQFolderCtrl {
    DECLARE_SERIAL(CQFolder)

public:
    using FolderList = CTypedPtrList<CObList, CQFolder*>;
    using ItemArray = CTypedPtrArray<CObArray, CQItem*>;

    CQFolder();
    // Note the order: trusty, adopt, extra.
    CQFolder(const CString& strName, DWORD dwTrusty, DWORD dwAdopt, DWORD dwExtra);
    // A copy has no sub-folders and no items (CQFolder.cpp lists what it takes along). Assigning first lets go of what
    // the folder held.
    CQFolder(const CQFolder& source);
    CQFolder& operator=(const CQFolder& source);
    ~CQFolder() override;

    // --- Virtual, in this order -----------------------------------------------------------------------------------
    // Takes ownership. Sets parent and DBTools of the child; with `bAssignStorage` gives it a storage number of its
    // file root and opens its storage. 0 for null, for an ancestor of this folder, and when memory runs out.
    virtual int AddFolder(CQFolder* pChild, int bAssignStorage, int bAtTail);
    // Null until the first sub-folder comes.
    virtual FolderList* GetFolderList();
    // Null until the first item comes.
    virtual ItemArray* GetItemArray();
    // Removes all items, then each sub-folder with its content and its stored data (its own row stays). Always 1.
    virtual int RemoveSubFolder();

    // --- Fields ---------------------------------------------------------------------------------------------------
    DWORD& GetAdopt() { return m_dwAdopt; }
    DWORD& GetTrusty() { return m_dwTrusty; }
    DWORD& GetExtra() { return m_dwExtra; }
    void SetAdopt(DWORD dwAdopt) { m_dwAdopt = dwAdopt; }
    void SetTrusty(DWORD dwTrusty) { m_dwTrusty = dwTrusty; }
    int GetExpandStatus() const { return m_nExpandStatus; }
    void SetExpandStatus(int nStatus) { m_nExpandStatus = nStatus; }
    CString& GetFolderName() { return m_strFolderName; }
    const CString& GetFolderName() const { return m_strFolderName; }
    CString& GetSubject() { return m_strSubject; }
    CString& GetDescription() { return m_strDescription; }
    // Empty unless the folder is the root of a gallery file.
    const CString& GetFilePath() const { return m_strFilePath; }
    // The row number; -1 when the folder is not in the database.
    int GetDBId() const { return m_nDBId; }
    DBTools* GetDBTools() const { return m_pDBTools; }
    // 0 for null. Not owned.
    int SetDBTools(DBTools* pTools);
    // Takes the array. The one held before is let go, not freed: ask for it first.
    void SetItemArray(ItemArray* pItems);
    int GetItemsCount();
    void SetStorageNumber(DWORD dwNumber);
    // A deleted folder is never written back to its file.
    void SetDeleteFlag() { m_bDeleted = 1; }
    CQFolder* GetParent() const { return m_pParent; }
    CQFolder* GetParentFolder() const { return m_pParent; }
    int IsRoot() const { return m_pParent == nullptr; }

    // Kept: a mask of 0 never matches the adopt mask and always matches the trusty mask.
    int CanMatchAdopt(DWORD dwMask) const;
    int CanMatchTrusty(DWORD dwMask) const;
    // A folder with an id, and every direct sub-folder of the template galleries.
    int IsPredefinedFolder() const;
    // The last of names separated by "||", up to the first one that is blank.
    static CString GetNameFormImportFolder(CString strList);
    // While translation is on, the name that the translation file has for the folder, kept once found; else empty.
    // Where names are collected instead, the name is written down and the text stays empty.
    CString& GetTranslateFolderName();
    // Whether the folder may be shown as `strName`: as no other folder of its parent is. A root may have any name.
    int IsFolderNameValid(CString strName, HINSTANCE hModule);

    // --- Navigation -----------------------------------------------------------------------------------------------
    // The topmost folder when it is a CQGallery, else null.
    CQFolder* GetRoot() const;
    // The nearest folder with a file path, this one included; without one the topmost folder.
    CQFolder* GetFileRoot() const;
    CQFolder* GetFirstSubFolder();
    CQFolder* GetNextSib();
    // The next folder in pre-order. Behind the last one comes the topmost folder.
    CQFolder* NextFolder(int bSkipChildren);
    // True also for the folder itself.
    int IsSubfolderOf(const CQFolder* pOther) const;
    // Whether the address is that of a folder of this tree; it is only compared, never read through.
    int IsSubFolderValid(const CQFolder* pFolder);

    // --- Look-ups, first match wins -------------------------------------------------------------------------------
    CQFolder* GetFolderByName(const CString& strName);
    CQFolder* GetFolderByPath(const CString& strPath);
    // Follows `strName`, then the names at `pos` and behind it in their list.
    CQFolder* GetSubFolder(const CString& strName, POSITION pos);
    // Over the whole subtree, in pre-order.
    CQFolder* GetSubFolderByName(const CString& strName);
    // Kept: compares names, not string ids.
    CQFolder* GetSubFolderByStrID(const CString& strName);
    CQFolder* GetSubFolderByID(DWORD dwId);
    CQFolder* GetSubFolderByDisplayPath(CString strPath, HINSTANCE hModule);
    // The folder met just before the one of that name; null when that is the first one.
    CQFolder* GetPreSubFolderByName(const CString& strName);

    // --- Looking for items ----------------------------------------------------------------------------------------
    // Own items, then those of the folders met. This and the recursive tests walk until they are back at this folder:
    // on a root that is its subtree, elsewhere the whole tree but this folder (FolderWalk.h).
    CQItem* GetItemByGUID(const GUID& guid);
    // Loads the black box of every item it visits, and the film of the one it finds.
    CQItem* GetItemByItemId(int nId);
    CQItem* GetItemByItemNumber(DWORD dwNumber);
    // Kept: the recursive tests leave out this folder's own items.
    int HasItem(const GUID& guid, int bRecursive);
    int HasItemByFilePath(const CString& strPath, CQItem*& pFound, int bRecursive);
    // Kept: compares with the tail from the last separator on, so the name starts with a backslash.
    int HasItemByFileName(const CString& strName, CQItem*& pFound, int bRecursive);
    CQItem* GetBaseClipItemByItemName(const CString& strName, int bRecursive);
    // Looks for the item by name, file name or path, whichever tells items of its kind apart.
    int IsItemInFolder(CQFolder* pFolder, CQItem* pItem, CQItem*& pFound, int bRecursive);
    // Depth-first, own items first. Without sub-folders the folder's own array; else valid until the next call.
    ItemArray* GetAllSubItemArray();
    int IsItemHasTimestmap();
    int IsTagExist(const GUID& tag);

    // --- Items ----------------------------------------------------------------------------------------------------
    // Appends. An item attached before is not changed; otherwise its type joins the adopt mask and, with `bSetParent`,
    // it gets this folder as parent and a stream number of it. The folder owns it then.
    int AddItem(CQItem* pItem, int bSetParent);
    // Take the item out of the array, and with `bDelete` also out of the database or file. 0 when there is none.
    // By GUID and by id each visited item's black box is loaded first; by id and by number the rest is renumbered.
    int RemoveItem(const GUID& guid, int bDelete);
    int RemoveItem(int nId, int bDelete);
    int RemoveItem2(DWORD dwNumber, int bDelete);
    // 0 without an item array.
    int RemoveAllItems(int bDelete);
    // Ends an item that is out of the array: placement and, with the last placement, row and payloads; the streams in
    // the gallery file. The object dies with the last folder of its gallery that holds it. 0 when the database refuses.
    int DeleteItemEx(CQItem* pItem, IStorage* pStorage);
    // Makes this folder the parent of its items, and so on down the tree.
    void SetAllParent();

    // --- Tree edits -----------------------------------------------------------------------------------------------
    // Takes ownership. Neither DBTools nor storage are given. 0 when the reference is not a sub-folder.
    int Insert(CQFolder* pReference, CQFolder* pChild, int bAfter);
    // Unlinks the folder, which is the caller's then; with `bDestroyData` its stored content goes. The parent pointer
    // stays as it was.
    int DetachParent(int bDestroyData);
    // Destroys sub-folders and items. Items of another database than the current one are left alone. The root of a
    // gallery file saves its tree first; once emptied so, it is not saved again while it stays empty.
    void Clear();
    // Copies get new GUIDs unless `bKeepGuid`.
    int CopyItems(CQFolder* pSource, int bKeepGuid);
    int CopyRecursive(CQFolder* pSource, int bKeepGuid);

    // --- Paths. Each walks `strName` and the names at `pos` on, making missing folders; `pos` moves on. ------------
    int OpenOrCreateSubFolder(const CString& strName, POSITION& pos, DWORD dwItemId);
    int OpenOrCreateSubFolder(const CString& strName, POSITION& pos, DWORD dwAdopt, DWORD dwTrusty, DWORD dwExtra,
                              int bAtTail, void (*pCreated)(CQFolder*));
    int OpenOrCreateSubFolder(const CString& strName, POSITION& pos, DWORD dwAdopt, DWORD dwTrusty,
                              const CQItem* pItem);
    int OpenOrCreateSubFolder(const CString& strName, POSITION& pos, const CQItem* pItem);
    int RemoveSubFolderContents(const CString& strName, POSITION& pos);
    int CanCreate(const CString& strName);
    int CloseFolder();

    // --- Sorting --------------------------------------------------------------------------------------------------
    // By index, stable. 0, nothing moved, without a list, and when memory runs out.
    int SortSubFolder();
    // Stable; see FolderConstants.h for the types. 0 for fewer than two items.
    int SortingAllItem(DWORD dwSortType, int bAscending);
    // Quicksort by several keys, not stable. Kept: without a global procedure nothing moves, whatever the keys.
    int Sorting(int* pKeys, int nKeyCount, int nFirst, int nLast);

    // --- Database; each call of the DBTools is a transaction of its own ---------------------------------------------
    // Once for a tree: what is there already is loaded beside it a second time.
    int LoadTreeFromDb();
    int LoadFolderFromDb();
    int LoadSubFoldersFromDb();
    // Kept: always 0.
    int LoadSubItemsFromDb();
    int InsertOrUpdateFolder();
    int UpdateFolderDb();
    int UpdateSubFolderIndexDB();
    int InsertOrUpdateGallery();
    // Database first, memory after. Once added the gallery owns the item; on 0 it is still the caller's. An item of
    // another library brings its payloads along, so the DBTools it has must be alive; it has this folder's afterwards,
    // also when the database refuses it.
    int AddItemDb(CQItem* pItem, int bWriteDb);
    int AddItemFromImportLib(CQItem* pItem);
    // Recursive: from every folder of the gallery that holds it, and 1.
    int RemoveItemDB(GUID guid, int bRecursive);
    int UpdateItemDB(const CQItem* pSource, const GUID& guid, DWORD dwFlags);
    // Stores the positions from `nFirst` up to, not including, `nCount` (-1: to the end).
    int ReOrderItemsDb(int nFirst, int nCount);
    // Empties the folder in database and memory; its own row stays. Always 1.
    int DeleteFolderFromDb();
    // The same for the sub-folder of that row, which is destroyed with its row. Kept: an unknown row takes the last.
    int DeleteFolderFromDb(int nRowId);

    // --- Numbers in a gallery file ----------------------------------------------------------------------------------
    DWORD GetNewItemStreamNumber();
    DWORD GetNewFolderStorageNumber();
    int SearchFolderNumRecursive(DWORD dwNumber);

    static CQFolder* m_pCurrentFolder;
    static IStorage* m_pCurrentFileStorage;
    static int m_bLoadBBNow;

protected:
    DWORD m_dwExtra = 0;
    CString m_strFilePath;
    std::unique_ptr<FolderList> m_pFolderList;
    std::unique_ptr<ItemArray> m_pItemArray;
    std::unique_ptr<ItemArray> m_pAllSubItemArray;
    CQFolder* m_pParent = nullptr;
    CString m_strTranslateName;
    CString m_strFolderName;
    CString m_strSubject;
    CString m_strDescription;
    int m_nDBId = -1;
    DWORD m_dwNextItemNumber = 0;
    DWORD m_dwStorageNumber = 0;
    IStorage* m_pStorage = nullptr;
    IStorage* m_pFileStorage = nullptr;
    IStorage* m_pSecondStorage = nullptr;
    DWORD m_dwAdopt = 0;
    DWORD m_dwTrusty = 0;
    int m_nItemsCount = 0;  // Kept: nothing counts here, GetItemsCount asks the array.
    DWORD m_dwNextFolderNumber = 0;
    int m_bDeleted = 0;
    int m_bWritable = 1;
    DBTools* m_pDBTools = nullptr;

private:
    friend class CQItem;  // Remembers its parent folder.
    friend class qfc::FolderLoad;
    friend class qfc::FolderNumbers;
    friend class qfc::FolderWalkWithoutMemory;
    friend class qfc::HeldGuids;

    ItemArray* NeedItemArray();
    FolderList* NeedFolderList();
    int RemoveAndRenumber(int nPosition, int bDelete);
    // Appends an item that the folder owns then; nothing can fail once MakeRoomForOne of the array has returned.
    void Append(ItemArray& items, CQItem& item);
    // Notes that the item's number is among those a folder has counted, and returns it.
    static DWORD CountNumberOf(CQItem& item);
    static std::shared_ptr<qfc::FolderLife> BeginLife(CQFolder& folder);
    bool SaveOwnFile();
    void DestroySubFolders();
    void LetGoOfItems();
    void EraseStoredData();
    void EmptyOfItemsInDb();
    void EndSubFolderInDb(CQFolder* pTaken, int nRowId);

    const std::shared_ptr<qfc::FolderLife> m_life = BeginLife(*this);  // What its items remember it by.
    bool m_bCleared = false;                         // Emptied after its file was saved, and not filled since.
    std::unique_ptr<qfc::FolderNumbers> m_pNumbers;  // Made when first needed: which numbers are in use.
    std::unique_ptr<qfc::HeldGuids> m_pHeldGuids;    // Made when it pays: which GUIDs the items have.
};
