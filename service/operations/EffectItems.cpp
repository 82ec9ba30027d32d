#include "service/operations/EffectItems.h"

#include "db/EffectRecords.h"
#include "folders/FolderWalk.h"
#include "items/CQGallery.h"

#include <algorithm>

namespace qfc {

namespace {

// A deletion goes by row number: another folder of the same number, or of none, must not be taken instead.
bool IsFirstOfItsRow(const CQFolder& folder) {
    CQFolder::FolderList* const pSiblings =
        folder.GetParentFolder() != nullptr ? folder.GetParentFolder()->GetFolderList() : nullptr;
    if (pSiblings == nullptr || folder.GetDBId() == -1) return false;
    for (const CQFolder* const pSibling : *pSiblings) {
        if (pSibling != nullptr && pSibling->GetDBId() == folder.GetDBId()) return pSibling == &folder;
    }
    return false;
}

}  // namespace

bool NameItem(DS_Filter_File_Record& file, const GUID& guidItem) {
    const auto nameless = [](const FilterEntry& filter) { return filter.guidItem == GUID_NULL; };
    const auto first = std::find_if(file.filters.begin(), file.filters.end(), nameless);
    if (first == file.filters.end()) return true;
    if (std::any_of(first + 1, file.filters.end(), nameless)) return false;
    first->guidItem = guidItem;
    return true;
}

void RemoveEffectItem(CQGallery& gallery, const GUID& guidItem) {
    for (CQFolder* const pFolder : SubtreeOf(gallery)) {
        if (pFolder->HasItem(guidItem, 0) == 0) continue;
        pFolder->RemoveItemDB(guidItem, 1);
        return;
    }
}

bool IsToBePruned(CQFolder& folder) {
    if (folder.IsPredefinedFolder() != 0) return false;
    const CQFolder::ItemArray* const pItems = folder.GetAllSubItemArray();
    return (pItems == nullptr || pItems->IsEmpty()) && IsFirstOfItsRow(folder);
}

}  // namespace qfc
