#pragma once

#include "db/CppSQLite3.h"
#include "db/DbRecords.h"
#include "platform/Export.h"
#include "platform/framework/CString.h"
#include "platform/framework/Guid.h"

#include <atomic>
#include <memory>
#include <span>
#include <vector>

struct CLibTag;
struct CTagCategory;
struct DS_Filter_File_Record;
struct DS_Transition_Record;

namespace qfc {
struct TreeRows;
}

// The operations on the library database, one method per operation, without lock and without transaction: DBTools adds
// both and is what everybody uses. Each method compiles its statement, binds, runs and finalises it; an exception of
// the access layer becomes false. Without a connection every method answers false (0 for numbers) and touches nothing.
// Queries come back standing on their first row. Not safe for several threads.
class QFCLIB_API DBToolsInternal {
public:
    // Opens or creates the file at the path (ANSI code page) and makes every missing table. ok turns false when that
    // fails; the object stays, and the caller decides what becomes of it.
    DBToolsInternal(const CString& path, bool& ok);

    // The order of the virtual operations is part of the interface.
    virtual ~DBToolsInternal();
    virtual bool InsertGallery(int nGalleryId, int nRootFolder);
    // What is filled in stays when the query fails on the way; what was in the list before never does.
    virtual bool LoadFilterFiles(std::vector<DS_Filter_File_Record>& files);
    virtual bool LoadTransitions(std::vector<DS_Transition_Record>& transitions);
    // The row number of the gallery's root folder; -1 when there is none or the query fails.
    virtual int GetGalleryIdByFolder(int nGalleryId);
    virtual bool QueryFolder(int nFolder, CppSQLite3Query& query);
    virtual bool QueryChildFolders(int nParent, CppSQLite3Query& query);
    virtual bool QueryFolderItems(int nFolder, CppSQLite3Query& query);
    virtual bool QueryItem(const GUID& item, CppSQLite3Query& query);
    virtual bool QueryItemTags(const GUID& item, CppSQLite3Query& query);
    virtual bool QueryItemByName(const CString& name, CppSQLite3Query& query);
    virtual bool QueryCacheData(const GUID& item, int nKind, CppSQLite3Query& query);
    virtual bool QueryCacheDataByType(int nKind, CppSQLite3Query& query);
    virtual bool DeleteCacheData(const GUID& item, int nKind);
    virtual bool DeleteAllCacheData(const GUID& item);
    virtual bool DeleteItemRow(const GUID& item);
    virtual bool DeleteRelation(const GUID& item, int nFolder);
    virtual bool DeleteFolderRow(int nFolder);
    virtual bool ExportDatabase(const CString& targetPath);
    virtual bool ClearDatabase();
    virtual bool IsItemAutoLoaded(const GUID& item, int nFolder);
    virtual bool InsertAutoLoadedItem(const GUID& item, int nFolder);
    virtual bool IsFileAutoLoaded(const CString& path, int nFolder);
    virtual bool InsertAutoLoadedFile(const CString& path, int nFolder);

    DBToolsInternal(const DBToolsInternal&) = delete;
    DBToolsInternal& operator=(const DBToolsInternal&) = delete;

    // Shortcuts are narrower or fewer statements with the same effect as the given ones; on at first. Off, exactly the
    // given statements are sent. For tests.
    void SetShortcuts(bool bOn) { m_bShortcuts = bOn; }

protected:
    bool HasShortcuts() const { return m_bShortcuts; }

    // nFolder: -1 inserts and receives the new row number; any other number updates that row.
    bool InsertOrUpdateFolder(const qfc::FolderRow& row, int& nFolder);
    bool AddItem(const qfc::ItemRow& item, std::span<const qfc::PayloadWrite> payloads, int nFolder, int nIndex);
    bool UpdateItem(const qfc::ItemRow& item, std::span<const qfc::PayloadWrite> payloads);
    bool WriteItemRow(const qfc::ItemRow& item);
    bool WriteRelation(const GUID& item, int nFolder, int nIndex);
    bool WriteCacheData(const GUID& item, const qfc::PayloadWrite& payload);
    bool DeleteItemFromFolder(const GUID& item, int nFolder);
    bool DeleteFolderTrees(std::span<const int> galleryIds);
    int AddFolderOrderIndexColumn();
    bool QueryGalleries(std::vector<qfc::StoredGallery>& galleries);
    bool QueryTree(int nRoot, qfc::TreeRows& rows);
    bool QueryCacheSizes(int nKind, std::vector<qfc::PayloadSize>& sizes);
    bool WriteFilterFile(const DS_Filter_File_Record& file);
    bool DeleteFilterFileRows(const CString& fileName);
    bool DeleteFilterFileRows(std::span<const DS_Filter_File_Record> files);
    bool WriteTransition(const DS_Transition_Record& transition);
    bool DeleteTransitionRows(const CString& fileName);
    bool DeleteTransitionRows(std::span<const DS_Transition_Record> transitions);
    bool ClearEffects();
    bool ReadTags(std::vector<CTagCategory>& categories);
    bool WriteCategory(const CTagCategory& category);
    bool WriteCategoryWithTags(const CTagCategory& category);
    bool WriteTag(const CLibTag& tag);
    bool DeleteCategoryRow(const GUID& category);
    bool DeleteTagWithLinks(const GUID& tag);
    bool WriteTagLink(const GUID& item, const GUID& tag);
    bool DeleteTagLink(const GUID& item, const GUID& tag);
    bool MoveTagLinks(const GUID& source, const GUID& target);
    bool QueryTagLinks(const GUID& tag, CppSQLite3Query& query);

    bool HasConnection() const { return m_pDB != nullptr; }
    CppSQLite3DB& Connection() { return *m_pDB; }

private:
    // Sent before an operation that reads and then writes, as one of sql::kTakeTurn...
    bool TakeTurn(const char* sql);
    bool WriteAllCacheData(const GUID& item, std::span<const qfc::PayloadWrite> payloads);
    bool GatherTrees(std::span<const int> galleryIds, std::vector<int>& folders);
    bool ReadFilters(DS_Filter_File_Record& file);
    bool ReadFiltersOfEach(std::vector<DS_Filter_File_Record>& files);
    bool ReadFiltersOfAll(std::vector<DS_Filter_File_Record>& files);
    bool AskWhetherKept(const CString& text, bool& bKept);
    bool KeepsText(const CString& text);
    template <typename Record>
    bool RunForNames(const char* sql, std::span<const Record> records);
    bool ReadEffectItems(std::vector<GUID>& items);
    bool ReadChildren(int nParent, std::vector<int>& children);

    // The one statement pattern; defined in db/Statements.h.
    template <typename Work>
    bool Attempt(Work&& work);
    template <typename... Values>
    bool Run(const char* sql, const Values&... values);
    template <typename... Values>
    bool Select(const char* sql, CppSQLite3Query& query, const Values&... values);
    template <typename... Values>
    bool Look(const char* sql, bool& bFound, const Values&... values);

    std::unique_ptr<CppSQLite3DB> m_pDB;  // Absent when opening failed.
    int m_nErrorCode = 0;                 // Of the last exception; kept for the debugger's eye only.
    std::atomic<bool> m_bShortcuts = true;
};
