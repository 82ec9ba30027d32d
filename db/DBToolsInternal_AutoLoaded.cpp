#include "db/DBToolsInternal.h"
#include "db/Sql.h"
#include "db/Statements.h"

// Tags of an item, and what was loaded into a folder by itself.

namespace sql = qfc::sql;

bool DBToolsInternal::QueryItemTags(const GUID& item, CppSQLite3Query& query) {
    return Select(sql::kQueryItemTags, query, item);
}

bool DBToolsInternal::IsItemAutoLoaded(const GUID& item, int nFolder) {
    bool bFound = false;
    return Look(sql::kQueryAutoLoadedItem, bFound, nFolder, item) && bFound;
}

bool DBToolsInternal::InsertAutoLoadedItem(const GUID& item, int nFolder) {
    return Run(sql::kWriteAutoLoaded, nFolder, item, CString());
}

bool DBToolsInternal::IsFileAutoLoaded(const CString& path, int nFolder) {
    bool bFound = false;
    return Look(sql::kQueryAutoLoadedFile, bFound, nFolder, path) && bFound;
}

bool DBToolsInternal::InsertAutoLoadedFile(const CString& path, int nFolder) {
    return Run(sql::kWriteAutoLoaded, nFolder, GUID_NULL, path);
}
