#include "db/Cells.h"
#include "db/Columns.h"
#include "db/DBToolsInternal.h"
#include "db/Sql.h"
#include "db/Statements.h"

#include <utility>

// Payload rows.

namespace sql = qfc::sql;
namespace column = qfc::column;

namespace {

bool IsKnownKind(int nKind) { return nKind >= qfc::kBitmapCache && nKind <= qfc::kFilm; }

// Whether the bytes are there as the sizes say: a size without bytes must never become a row.
bool IsWhole(const qfc::PayloadWrite& payload) {
    const int nStored = payload.compressedSize != 0 ? payload.compressedSize : payload.rawSize;
    return nStored > 0 && payload.rawSize <= qfc::kLargestPayload &&
           payload.Stored().size() == static_cast<std::size_t>(nStored);
}

}  // namespace

bool DBToolsInternal::QueryCacheData(const GUID& item, int nKind, CppSQLite3Query& query) {
    return Select(sql::kQueryCacheData, query, item, nKind);
}

bool DBToolsInternal::QueryCacheDataByType(int nKind, CppSQLite3Query& query) {
    return Select(sql::kQueryCacheDataByType, query, nKind);
}

bool DBToolsInternal::QueryCacheSizes(int nKind, std::vector<qfc::PayloadSize>& sizes) {
    if (!m_bShortcuts) return false;
    return Attempt([&] {
        std::vector<qfc::PayloadSize> found;
        CppSQLite3Query query = qfc::statement::Compile(Connection(), sql::kQueryCacheSizes, nKind).execQuery();
        for (; !query.eof(); query.nextRow()) {
            const auto guid = qfc::cell::Guid(query, query.fieldIndex(column::kItemId));
            if (guid) found.push_back({*guid, query.getIntField(column::kCompressedSize)});
        }
        sizes = std::move(found);
    });
}

bool DBToolsInternal::DeleteCacheData(const GUID& item, int nKind) { return Run(sql::kDeleteCacheData, item, nKind); }

// The given statement has no usable key and reads through every blob of the table. While all rows are of the known
// kinds, deleting by kind and item takes the same rows through the key. The deletion comes before the look: a reader
// that turns writer in the middle of its transaction is refused at once where a writer waits for its turn.
bool DBToolsInternal::DeleteAllCacheData(const GUID& item) {
    if (!m_bShortcuts) return Run(sql::kDeleteAllCacheData, item);
    bool bOddKinds = false;
    if (!Run(sql::kDeleteKnownCacheKinds, item) || !Look(sql::kProbeOddCacheKinds, bOddKinds)) return false;
    return !bOddKinds || Run(sql::kDeleteAllCacheData, item);
}

bool DBToolsInternal::WriteCacheData(const GUID& item, const qfc::PayloadWrite& payload) {
    if (!HasConnection() || !IsKnownKind(payload.kind)) return false;
    if (payload.rawSize == 0) return true;
    return IsWhole(payload) &&
           Run(sql::kWriteCacheData, payload.rawSize, payload.compressedSize, payload.Stored(), payload.kind, item);
}

bool DBToolsInternal::WriteAllCacheData(const GUID& item, std::span<const qfc::PayloadWrite> payloads) {
    for (const qfc::PayloadWrite& payload : payloads) {
        if (!IsKnownKind(payload.kind)) return false;
    }
    for (const int nKind : qfc::kPayloadWriteOrder) {
        for (const qfc::PayloadWrite& payload : payloads) {
            if (payload.kind == nKind && !WriteCacheData(item, payload)) return false;
        }
    }
    return true;
}
