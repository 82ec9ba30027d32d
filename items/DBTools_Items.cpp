// The operations of the database tools that speak of items and folders. They are defined here, in the layer that knows
// the model, so that the database floor stands and is tested alone.
#include "db/DBTools.h"
#include "folders/CQFolder.h"
#include "items/CQItem.h"
#include "items/ItemGuid.h"
#include "items/ItemRows.h"
#include "items/LackOfMemory.h"

bool DBTools::AddItemDb(CQItem* item, CQFolder* folder, int nIndex) {
    if (item == nullptr || folder == nullptr) return false;
    return qfc::UnlessMemoryEnds([&] {
        // First the payloads: a load may still correct the sizes that the row tells.
        const auto payloads = qfc::PayloadsOf(*item, *this);
        return AddItemDb(qfc::RowOf(*item), payloads, folder->GetDBId(), nIndex);
    });
}

bool DBTools::UpdateItemDB(CQItem* item) {
    if (item == nullptr) return false;
    return qfc::UnlessMemoryEnds([&] {
        const auto payloads = qfc::PayloadsOf(*item, *this);
        return UpdateItemDB(qfc::RowOf(*item), payloads);
    });
}

bool DBTools::ReOrderItemsDb(CQItem* item, CQFolder* folder, int nIndex) {
    if (item == nullptr || folder == nullptr) return false;
    return ReOrderItemsDb(qfc::GuidOfItem(*item), folder->GetDBId(), nIndex);
}

bool DBTools::UpdateCacheData(CQItem* item, int nKind, int /*nUnused*/) {
    if (item == nullptr) return false;
    return qfc::UnlessMemoryEnds(
        [&] { return UpdateCacheData(qfc::GuidOfItem(*item), qfc::PayloadOf(*item, nKind, *this)); });
}
