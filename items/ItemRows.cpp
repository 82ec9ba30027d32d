#include "items/ItemRows.h"

#include "db/CachePayload.h"
#include "db/DBTools.h"
#include "items/CQItem.h"
#include "items/ItemTypes.h"

#include <cstdint>
#include <utility>

namespace qfc {

namespace {

void BringIntoMemory(CQItem& item, int nKind, const DBTools& target) {
    if (item.fnGetDbTools() != &target) FetchPayload(item, nKind);
}

PayloadWrite Packed(const CQItem& item, int nKind) {
    const auto bytes = item.PayloadInMemory(nKind);
    if (!bytes.empty()) return PackPayload(nKind, bytes);
    PayloadWrite nothing;
    nothing.kind = nKind;
    return nothing;
}

}  // namespace

void FetchPayload(CQItem& item, int nKind) {
    if (!item.PayloadInMemory(nKind).empty()) return;
    if (item.fnGetDbTools() != nullptr) {
        item.LoadCacheDataFromDb(static_cast<DWORD>(nKind));
    } else if (nKind == kFilm) {
        item.TryLoadFilm();
    } else if (nKind == kBlackBox && item.GetBlackBoxSize() != 0 && item.GetCache() != nullptr) {
        // The bitmap in memory is enough for TryLoadBB, also when the black box is still in the gallery file.
        item.LoadFromGalleryFile(kBitmapCache);
    } else {
        item.TryLoadBB();
    }
}

ItemRow RowOf(const CQItem& item) {
    ItemRow row;
    row.currentThumbFrame = static_cast<int>(item.GetCurThumbFrameNum());
    row.originalThumbFrame = static_cast<int>(item.GetOrgThumbFrameNum());
    row.bbid = item.GetDBID();
    row.itemType = static_cast<int>(item.GetItemType());
    row.name = item.GetItemName();
    row.description = item.GetDescription();
    row.annotation = item.GetAnnotation();
    row.fileName = item.GetFileName();
    row.attributes = static_cast<int>(item.GetAttrib());
    row.templatePath = item.GetTemplatePath();
    row.timestamp = static_cast<int>(static_cast<DWORD>(item.fnGetTimeStamp()));
    row.filmSize = static_cast<int>(item.GetFilmSize());
    row.frameSize = static_cast<int>(item.GetFrameSize());
    row.deletable = item.GetIsDeletable();
    row.itemId = item.GetUniqueID();
    return row;
}

void FillFromRow(CQItem& item, ItemRow row) {
    item.m_dwCurThumbFrameNum = static_cast<DWORD>(row.currentThumbFrame);
    item.m_dwOrgThumbFrameNum = static_cast<DWORD>(row.originalThumbFrame);
    item.m_nDBId = row.bbid;
    item.m_dwItemType = static_cast<DWORD>(row.itemType);
    item.m_strItemName = std::move(row.name);
    item.m_strDescription = std::move(row.description);
    item.m_strAnnotation = std::move(row.annotation);
    item.m_strFileName = std::move(row.fileName);
    // Kept: the template path is written with the row, but never read back.
    item.m_dwAttrib = static_cast<DWORD>(row.attributes);
    // Kept: the timestamp passes through 32 signed bits.
    item.m_ullTimeStamp = static_cast<ULONGLONG>(std::int64_t{row.timestamp});
    item.m_bDeletable = row.deletable;
    const auto dwFilmSize = static_cast<DWORD>(row.filmSize);
    const auto dwFrameSize = static_cast<DWORD>(row.frameSize);
    const bool bOtherFilm = item.m_film && (item.m_film.size() != dwFilmSize || item.m_dwFrameSize != dwFrameSize);
    // A film that was given to the item and not stored keeps its sizes; any other goes when the row tells of another.
    if (bOtherFilm && item.m_bModified != 0) return;
    if (bOtherFilm) item.m_film.reset();
    item.m_dwFilmSize = dwFilmSize;
    item.m_dwFrameSize = dwFrameSize;
}

PayloadWrite PayloadOf(CQItem& item, int nKind, const DBTools& target) {
    BringIntoMemory(item, nKind, target);
    return Packed(item, nKind);
}

std::vector<PayloadWrite> PayloadsOf(CQItem& item, const DBTools& target) {
    // All are fetched before the first is packed: fetching one kind may replace the bytes of another.
    for (const int nKind : kPayloadWriteOrder) BringIntoMemory(item, nKind, target);
    std::vector<PayloadWrite> payloads;
    for (const int nKind : kPayloadWriteOrder) payloads.push_back(Packed(item, nKind));
    return payloads;
}

}  // namespace qfc
