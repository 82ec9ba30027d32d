#include "items/ItemRows.h"

#include "db/CachePayload.h"
#include "db/DBTools.h"
#include "items/CQItem.h"
#include "items/ItemTypes.h"

#include <cstdint>

namespace qfc {

namespace {

void BringIntoMemory(CQItem& item, int nKind) {
    if (item.fnGetDbTools() != nullptr) {
        item.LoadCacheDataFromDb(static_cast<DWORD>(nKind));
    } else if (nKind == kFilm) {
        item.TryLoadFilm();
    } else {
        item.TryLoadBB();
    }
}

}  // namespace

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

void FillFromRow(CQItem& item, const ItemRow& row) {
    item.GetCurThumbFrameNum() = static_cast<DWORD>(row.currentThumbFrame);
    item.GetOrgThumbFrameNum() = static_cast<DWORD>(row.originalThumbFrame);
    item.SetDBID(row.bbid);
    item.SetItemType(static_cast<DWORD>(row.itemType));
    item.SetItemName(row.name);
    item.GetDescription() = row.description;
    item.GetAnnotation() = row.annotation;
    item.SetFileName(row.fileName);
    item.GetAttrib() = static_cast<DWORD>(row.attributes);
    // Kept: the timestamp passes through 32 signed bits.
    item.fnSetTimeStamp(static_cast<ULONGLONG>(std::int64_t{row.timestamp}));
    item.ChangeFilm(nullptr, static_cast<unsigned>(row.filmSize), static_cast<unsigned>(row.frameSize));
    item.fnSetDeletable(row.deletable);
}

PayloadWrite PayloadOf(CQItem& item, int nKind, const DBTools& target) {
    if (item.PayloadInMemory(nKind).empty() && item.fnGetDbTools() != &target) BringIntoMemory(item, nKind);
    const auto bytes = item.PayloadInMemory(nKind);
    if (!bytes.empty()) return PackPayload(nKind, bytes);
    PayloadWrite nothing;
    nothing.kind = nKind;
    return nothing;
}

std::vector<PayloadWrite> PayloadsOf(CQItem& item, const DBTools& target) {
    std::vector<PayloadWrite> payloads;
    for (const int nKind : kPayloadWriteOrder) {
        payloads.push_back(PayloadOf(item, nKind, target));
    }
    return payloads;
}

}  // namespace qfc
