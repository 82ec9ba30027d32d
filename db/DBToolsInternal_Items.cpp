#include "db/DBToolsInternal.h"
#include "db/Sql.h"
#include "db/Statements.h"
#include "platform/text/CodePages.h"

// Items and their placements in folders.

namespace sql = qfc::sql;

bool DBToolsInternal::QueryItem(const GUID& item, CppSQLite3Query& query) {
    return Select(sql::kQueryItem, query, item);
}

bool DBToolsInternal::QueryItemByName(const CString& name, CppSQLite3Query& query) {
    return Select(sql::kQueryItemByName, query, CDBStringHelper::ASCII2UTF_8(name));
}

bool DBToolsInternal::QueryFolderItems(int nFolder, CppSQLite3Query& query) {
    return Select(sql::kQueryFolderItems, query, nFolder);
}

bool DBToolsInternal::DeleteItemRow(const GUID& item) { return Run(sql::kDeleteItem, item); }

bool DBToolsInternal::DeleteRelation(const GUID& item, int nFolder) { return Run(sql::kDeleteRelation, item, nFolder); }

bool DBToolsInternal::WriteItemRow(const qfc::ItemRow& item) {
    return Run(sql::kWriteItem, item.currentThumbFrame, item.originalThumbFrame, item.bbid, item.itemType,
               CDBStringHelper::ASCII2UTF_8(item.name), item.description, item.annotation,
               CDBStringHelper::ASCII2UTF_8(item.fileName), item.attributes, item.templatePath, item.timestamp,
               item.filmSize, item.frameSize, item.deletable, item.itemId);
}

bool DBToolsInternal::WriteRelation(const GUID& item, int nFolder, int nIndex) {
    return Run(sql::kWriteRelation, item, nFolder, nIndex);
}

bool DBToolsInternal::AddItem(const qfc::ItemRow& item, std::span<const qfc::PayloadWrite> payloads, int nFolder,
                              int nIndex) {
    return WriteItemRow(item) && WriteRelation(item.itemId, nFolder, nIndex) &&
           WriteAllCacheData(item.itemId, payloads);
}

bool DBToolsInternal::UpdateItem(const qfc::ItemRow& item, std::span<const qfc::PayloadWrite> payloads) {
    return WriteItemRow(item) && WriteAllCacheData(item.itemId, payloads);
}

bool DBToolsInternal::DeleteItemFromFolder(const GUID& item, int nFolder) {
    if (!DBToolsInternal::DeleteRelation(item, nFolder)) return false;
    bool bHeld = false;
    if (!Look(sql::kQueryItemRelations, bHeld, item)) return false;
    return bHeld || (DBToolsInternal::DeleteAllCacheData(item) && DBToolsInternal::DeleteItemRow(item));
}
