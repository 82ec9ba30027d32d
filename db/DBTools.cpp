#include "db/DBTools.h"

#include "db/DBToolsGuard.h"
#include "db/Schema.h"
#include "db/TreeRows.h"

DBTools::DBTools(const CString& path, bool& ok) : DBToolsInternal(path, ok) {}

DBTools::~DBTools() = default;

bool DBTools::InsertGallery(int nGalleryId, int nRootFolder) {
    return Guarded([&] { return DBToolsInternal::InsertGallery(nGalleryId, nRootFolder); });
}

int DBTools::GetGalleryIdByFolder(int nGalleryId) {
    return Guarded([&] { return DBToolsInternal::GetGalleryIdByFolder(nGalleryId); }, qfc::kNoFolder);
}

bool DBTools::QueryFolder(int nFolder, CppSQLite3Query& query) {
    return GuardedRows(query, [&](CppSQLite3Query& rows) { return DBToolsInternal::QueryFolder(nFolder, rows); });
}

bool DBTools::QueryChildFolders(int nParent, CppSQLite3Query& query) {
    return GuardedRows(query, [&](CppSQLite3Query& rows) { return DBToolsInternal::QueryChildFolders(nParent, rows); });
}

bool DBTools::QueryFolderItems(int nFolder, CppSQLite3Query& query) {
    return GuardedRows(query, [&](CppSQLite3Query& rows) { return DBToolsInternal::QueryFolderItems(nFolder, rows); });
}

bool DBTools::QueryItem(const GUID& item, CppSQLite3Query& query) {
    return GuardedRows(query, [&](CppSQLite3Query& rows) { return DBToolsInternal::QueryItem(item, rows); });
}

bool DBTools::QueryItemTags(const GUID& item, CppSQLite3Query& query) {
    return GuardedRows(query, [&](CppSQLite3Query& rows) { return DBToolsInternal::QueryItemTags(item, rows); });
}

bool DBTools::QueryItemByName(const CString& name, CppSQLite3Query& query) {
    return GuardedRows(query, [&](CppSQLite3Query& rows) { return DBToolsInternal::QueryItemByName(name, rows); });
}

bool DBTools::QueryCacheData(const GUID& item, int nKind, CppSQLite3Query& query) {
    return GuardedRows(query,
                       [&](CppSQLite3Query& rows) { return DBToolsInternal::QueryCacheData(item, nKind, rows); });
}

bool DBTools::QueryCacheDataByType(int nKind, CppSQLite3Query& query) {
    return GuardedRows(query,
                       [&](CppSQLite3Query& rows) { return DBToolsInternal::QueryCacheDataByType(nKind, rows); });
}

bool DBTools::DeleteCacheData(const GUID& item, int nKind) {
    return Guarded([&] { return DBToolsInternal::DeleteCacheData(item, nKind); });
}

bool DBTools::DeleteAllCacheData(const GUID& item) {
    return Guarded([&] { return DBToolsInternal::DeleteAllCacheData(item); });
}

bool DBTools::DeleteItemRow(const GUID& item) {
    return Guarded([&] { return DBToolsInternal::DeleteItemRow(item); });
}

bool DBTools::DeleteRelation(const GUID& item, int nFolder) {
    return Guarded([&] { return DBToolsInternal::DeleteRelation(item, nFolder); });
}

bool DBTools::DeleteFolderRow(int nFolder) {
    return Guarded([&] { return DBToolsInternal::DeleteFolderRow(nFolder); });
}

bool DBTools::ExportDatabase(const CString& targetPath) {
    return Guarded([&] { return DBToolsInternal::ExportDatabase(targetPath); });
}

bool DBTools::ClearDatabase() {
    return Guarded([&] { return DBToolsInternal::ClearDatabase(); });
}

bool DBTools::IsItemAutoLoaded(const GUID& item, int nFolder) {
    return Guarded([&] { return DBToolsInternal::IsItemAutoLoaded(item, nFolder); });
}

bool DBTools::InsertAutoLoadedItem(const GUID& item, int nFolder) {
    return Guarded([&] { return DBToolsInternal::InsertAutoLoadedItem(item, nFolder); });
}

bool DBTools::IsFileAutoLoaded(const CString& path, int nFolder) {
    return Guarded([&] { return DBToolsInternal::IsFileAutoLoaded(path, nFolder); });
}

bool DBTools::InsertAutoLoadedFile(const CString& path, int nFolder) {
    return Guarded([&] { return DBToolsInternal::InsertAutoLoadedFile(path, nFolder); });
}

bool DBTools::InsertOrUpdateFolder(const CString& version, int nPredefinedId, const CString& name, int nAdopt,
                                   int nTrusty, int nExtra, int nParent, int nExpand, int nOrder, int& nFolder) {
    int nWritten = nFolder;
    const bool bWritten = Guarded([&] {
        return DBToolsInternal::InsertOrUpdateFolder(
            {version, nPredefinedId, name, nAdopt, nTrusty, nExtra, nParent, nExpand, nOrder}, nWritten);
    });
    if (bWritten) nFolder = nWritten;
    return bWritten;
}

bool DBTools::AddItemDb(const qfc::ItemRow& item, std::span<const qfc::PayloadWrite> payloads, int nFolder,
                        int nIndex) {
    return Guarded([&] { return DBToolsInternal::AddItem(item, payloads, nFolder, nIndex); });
}

bool DBTools::UpdateItemDB(const qfc::ItemRow& item, std::span<const qfc::PayloadWrite> payloads) {
    return Guarded([&] { return DBToolsInternal::UpdateItem(item, payloads); });
}

bool DBTools::UpdateCacheData(const GUID& item, const qfc::PayloadWrite& payload) {
    return Guarded([&] { return DBToolsInternal::WriteCacheData(item, payload); });
}

bool DBTools::ReOrderItemsDb(const GUID& item, int nFolder, int nIndex) {
    return Guarded([&] { return DBToolsInternal::WriteRelation(item, nFolder, nIndex); });
}

bool DBTools::DeleteItemFromFolder(const GUID& item, int nFolder) {
    return Guarded([&] { return DBToolsInternal::DeleteItemFromFolder(item, nFolder); });
}

bool DBTools::DeleteFolderTrees(std::span<const int> galleryIds) {
    return Guarded([&] { return DBToolsInternal::DeleteFolderTrees(galleryIds); });
}

int DBTools::AddFolderOrderIndexColumn() {
    const auto add = [&] { return DBToolsInternal::AddFolderOrderIndexColumn(); };
    if (Guarded(add) != 0) return 1;
    if (!HasShortcuts()) return 0;
    // It looks before it writes: beside another writer that is refused at once, where a writer waits for its turn. The
    // look comes first all the same, since mostly there is nothing to write.
    return Guarded([&] { return HasConnection() && qfc::schema::TakeTurnAtFolders(Connection()) ? add() : 0; });
}

bool DBTools::QueryGalleries(std::vector<qfc::StoredGallery>& galleries) {
    std::vector<qfc::StoredGallery> found;
    const bool bRead = Guarded([&] { return DBToolsInternal::QueryGalleries(found); });
    if (bRead) galleries = std::move(found);
    return bRead;
}

bool DBTools::QueryTree(int nRoot, qfc::TreeRows& rows) {
    qfc::TreeRows found;
    const bool bRead = Guarded([&] { return DBToolsInternal::QueryTree(nRoot, found); });
    if (bRead) rows = std::move(found);
    return bRead;
}

bool DBTools::QueryCacheSizes(int nKind, std::vector<qfc::PayloadSize>& sizes) {
    std::vector<qfc::PayloadSize> found;
    const bool bRead = Guarded([&] { return DBToolsInternal::QueryCacheSizes(nKind, found); });
    if (bRead) sizes = std::move(found);
    return bRead;
}
