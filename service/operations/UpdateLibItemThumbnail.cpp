#include "service/operations/UpdateLibItemThumbnail.h"

#include "db/DBTools.h"
#include "db/DbRecords.h"

LibraryOperation_UpdateLibItemThumbnail::LibraryOperation_UpdateLibItemThumbnail(CQItem* pItem, DBTools* pDBTools)
    : m_pItem(pItem), m_pDBTools(pDBTools) {}

int LibraryOperation_UpdateLibItemThumbnail::execute() {
    return m_pDBTools != nullptr && m_pDBTools->UpdateCacheData(m_pItem, qfc::kBitmapCache) ? 1 : 0;
}
