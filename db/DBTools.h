#pragma once

#include "db/DBToolsInternal.h"

#include <list>
#include <mutex>
#include <span>
#include <thread>
#include <type_traits>
#include <vector>

class CLibTagsMgr;
class CQFolder;
class CQItem;
struct CLibTag;
struct CTagCategory;

// The only path to the library database. Every operation takes the object's mutex, without time limit, and is one
// transaction: true means that its changes are on disk, false that nothing changed (docs/reliability.md names the one
// failure of a disk that hides a change behind a false). An operation whose BEGIN or END did not take, or whose
// transaction SQLite rolled back on the way, reports false whatever its statements said.
// Queries come back detached, standing on their first row: they hold neither the file nor the mutex.
// Any thread may call any operation; never from inside another one (asserted in debug builds, refused otherwise).
class QFCLIB_API DBTools : public DBToolsInternal {
public:
    // As DBToolsInternal: ok tells whether the file could be opened and has all its tables.
    DBTools(const CString& path, bool& ok);

    ~DBTools() override;
    bool InsertGallery(int nGalleryId, int nRootFolder) override;
    bool LoadFilterFiles(std::vector<DS_Filter_File_Record>& files) override;
    bool LoadTransitions(std::vector<DS_Transition_Record>& transitions) override;
    int GetGalleryIdByFolder(int nGalleryId) override;
    bool QueryFolder(int nFolder, CppSQLite3Query& query) override;
    bool QueryChildFolders(int nParent, CppSQLite3Query& query) override;
    bool QueryFolderItems(int nFolder, CppSQLite3Query& query) override;
    bool QueryItem(const GUID& item, CppSQLite3Query& query) override;
    bool QueryItemTags(const GUID& item, CppSQLite3Query& query) override;
    bool QueryItemByName(const CString& name, CppSQLite3Query& query) override;
    bool QueryCacheData(const GUID& item, int nKind, CppSQLite3Query& query) override;
    bool QueryCacheDataByType(int nKind, CppSQLite3Query& query) override;
    bool DeleteCacheData(const GUID& item, int nKind) override;
    bool DeleteAllCacheData(const GUID& item) override;
    bool DeleteItemRow(const GUID& item) override;
    bool DeleteRelation(const GUID& item, int nFolder) override;
    bool DeleteFolderRow(int nFolder) override;
    bool ExportDatabase(const CString& targetPath) override;
    bool ClearDatabase() override;
    bool IsItemAutoLoaded(const GUID& item, int nFolder) override;
    bool InsertAutoLoadedItem(const GUID& item, int nFolder) override;
    bool IsFileAutoLoaded(const CString& path, int nFolder) override;
    bool InsertAutoLoadedFile(const CString& path, int nFolder) override;
    // nFolder -1 inserts a row and receives its number; any other number updates that row and stays. On false the
    // number is as it was.
    virtual bool InsertOrUpdateFolder(const CString& version, int nPredefinedId, const CString& name, int nAdopt,
                                      int nTrusty, int nExtra, int nParent, int nExpand, int nOrder, int& nFolder);

    // Writes the item's row, its placement in the folder and its payloads, in the order of kinds 1, 2, 0. A kind
    // without payload, or with one of size 0, keeps the row it has.
    bool AddItemDb(const qfc::ItemRow& item, std::span<const qfc::PayloadWrite> payloads, int nFolder, int nIndex);
    bool UpdateItemDB(const qfc::ItemRow& item, std::span<const qfc::PayloadWrite> payloads);
    // False, and nothing written, for a kind other than 0, 1 and 2; true, and nothing written, for a size of 0.
    bool UpdateCacheData(const GUID& item, const qfc::PayloadWrite& payload);
    // Places the item at the index, replacing the placement it may have in that folder.
    bool ReOrderItemsDb(const GUID& item, int nFolder, int nIndex);

    // The same on items and folders of the model: their payloads are fetched and compressed before the guard is taken.
    // 0 is the bitmap cache, 1 the black box, 2 the film.
    bool AddItemDb(CQItem* item, CQFolder* folder, int nIndex);
    bool UpdateItemDB(CQItem* item);
    bool ReOrderItemsDb(CQItem* item, CQFolder* folder, int nIndex);
    bool UpdateCacheData(CQItem* item, int nKind, int nUnused = 0);

    // Removes the placement and, when no folder holds the item any more, its payloads and its row.
    bool DeleteItemFromFolder(const GUID& item, int nFolder);
    // Removes the galleries, all their folders and the placements in them; items stay. False for an unknown gallery,
    // and then nothing is removed of the others either.
    bool DeleteFolderTrees(std::span<const int> galleryIds);
    // Gives the folder table of an old file its order column; 1 also when it has it already, 0 on failure.
    int AddFolderOrderIndexColumn();
    // Rolls back what an operation had to leave open because its ROLLBACK was refused: until then other processes find
    // the file locked. Every operation and the end of the object do so first; this is for the time between. Nothing
    // happens while an operation is under way.
    void FinishPending();
    // Lists the stored galleries by gallery id, those of one id in the order of their rows: the first is the one that
    // is loaded. Rows whose id is none are left out. On false the list is as it was.
    bool QueryGalleries(std::vector<qfc::StoredGallery>& galleries);
    // A shortcut: reads at once what loading the tree below the folder would ask for row by row. False when shortcuts
    // are off, and when the rows are too odd for it: ask for them one by one then.
    bool QueryTree(int nRoot, qfc::TreeRows& rows);
    // A shortcut: QueryCacheDataByType without the bytes, in the same order, and without rows whose id is no GUID.
    // False when shortcuts are off: ask for the rows then. On false the list is as it was.
    bool QueryCacheSizes(int nKind, std::vector<qfc::PayloadSize>& sizes);

    // Effects. Writes the file's row and those of the filters given; others of the file stay. A filter that stood under
    // another file moves to this one: its key is its item. False, as for a transition, for a name of a file that the
    // library could not give back.
    bool SaveFilterFile(const DS_Filter_File_Record& file);
    // The file's row and those of its filters.
    bool DeleteFilterFile(const CString& fileName);
    bool SaveTransition(const DS_Transition_Record& transition);
    // Every transition of the file.
    bool DeleteTransitionFile(const CString& fileName);
    // Empties the store and takes row and payloads of every item in it; placements in folders stay.
    bool ClearFiltersAndTransitions();
    // The same for many in one transaction: all of it or nothing. Only the file names count. True for nothing to do.
    bool DeleteFilterFiles(std::span<const DS_Filter_File_Record> files);
    bool DeleteTransitionFiles(std::span<const DS_Transition_Record> transitions);

    // Tags. Appends every stored category with its tags; rows without a usable GUID, and tags without a category, are
    // left out. On false nothing was appended.
    bool LoadTags(std::vector<CTagCategory>& categories);
    // The same into the store, which is entered after the database was left.
    bool LoadTags(CLibTagsMgr& manager);
    // Writes the categories and the tags in them.
    bool SaveCategoriesAndTags(const std::list<CTagCategory>& categories);
    // The category's own row; its tags are not looked at.
    bool UpdateCategory(const CTagCategory& category);
    bool UpdateTag(const CLibTag& tag);
    // The category's own row; its tags and their links stay.
    bool DeleteCategory(const GUID& category);
    // The tag and its links to items.
    bool DeleteTag(const GUID& tag);
    bool InsertTag2Item(const GUID& item, const GUID& tag);
    bool DeleteTagFromItem(const GUID& item, const GUID& tag);
    // Every item of the source gets the target instead, and the source is gone. A tag is not merged into itself: true,
    // and nothing happens.
    bool MergeTag(const GUID& source, const GUID& target);
    // The links of the tag: which items carry it.
    bool QueryTagItems(const GUID& tag, CppSQLite3Query& query);

    // The same for many in one transaction: all of it or nothing. True for nothing to do.
    bool UpdateCategories(std::span<const CTagCategory> categories);  // With the tags given in them.
    bool UpdateTags(const std::list<CLibTag>& tags);
    bool DeleteCategories(std::span<const GUID> categories);
    bool DeleteTags(std::span<const GUID> tags);
    // Every tag to, or from, every item.
    bool InsertTags2Items(std::span<const GUID> items, std::span<const GUID> tags);
    bool DeleteTagsFromItems(std::span<const GUID> items, std::span<const GUID> tags);
    bool MergeTags(std::span<const GUID> sources, const GUID& target);

private:
    class Guard;  // db/DBToolsGuard.h

    template <typename Operation, typename Result = std::invoke_result_t<Operation>>
    Result Guarded(Operation&& operation, Result refused = Result{});
    template <typename Values, typename Operation>
    bool GuardedEach(const Values& values, Operation&& operation);
    template <typename Operation>
    bool GuardedRows(CppSQLite3Query& query, Operation&& operation);

    std::mutex m_mutex;
    std::atomic<std::thread::id> m_owner;  // Who holds the mutex; written by its holder only.
    bool m_bLastResult = false;            // Guarded by m_mutex: the result of the operation under the guard.
};
