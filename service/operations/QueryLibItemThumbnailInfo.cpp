#include "service/operations/QueryLibItemThumbnailInfo.h"

#include "db/CppSQLite3.h"
#include "db/DBTools.h"
#include "db/DbRecords.h"
#include "items/CQItem.h"

#include <optional>
#include <utility>

LibraryOperation_QueryLibItemThumbnailInfo::LibraryOperation_QueryLibItemThumbnailInfo(DBTools* pDBTools)
    : m_pDBTools(pDBTools) {}

int LibraryOperation_QueryLibItemThumbnailInfo::execute() {
    if (m_pDBTools == nullptr) return 0;
    std::vector<qfc::PayloadSize> sizes;
    if (m_pDBTools->QueryCacheSizes(qfc::kBitmapCache, sizes)) {
        for (const qfc::PayloadSize& size : sizes) Append(size.itemId, size.compressedSize);
        return 1;
    }
    // The same from the whole rows, which bring every bitmap along at once.
    CppSQLite3Query rows;
    if (!m_pDBTools->QueryCacheDataByType(qfc::kBitmapCache, rows)) return 0;
    for (; !rows.eof(); rows.nextRow()) AppendRow(rows);
    return 1;
}

// A row whose id is no GUID belongs to no item and is passed over.
void LibraryOperation_QueryLibItemThumbnailInfo::AppendRow(const CppSQLite3Query& row) {
    int nLength = 0;
    const unsigned char* const pId = row.getBlobField("ITEM_ID", nLength);
    const std::optional<GUID> guid = qfc::GuidFromBytes(pId, static_cast<std::size_t>(nLength));
    if (guid) Append(*guid, row.getIntField("COMPRESSED_SIZE"));
}

void LibraryOperation_QueryLibItemThumbnailInfo::Append(const GUID& guid, int nCompressedSize) {
    _DS_LibItemTunmbnailInfo_ info;
    info.guidItem = guid;
    info.nCompressedSize = nCompressedSize;

    CQItem item;
    item.SetUniqueID(guid);
    item.fnSetDbTools(m_pDBTools);
    item.LoadCacheDataFromDb(static_cast<DWORD>(qfc::kBitmapCache));
    info.sizeBitmapCache = item.GetBitmapCacheSize();
    item.fnLoadItemFromDb();
    info.strPath = item.GetFileName();
    info.dwItemType = item.GetItemType();
    m_thumbnails.push_back(std::move(info));
}
