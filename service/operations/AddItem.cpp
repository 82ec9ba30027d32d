#include "service/operations/AddItem.h"

#include "folders/CQFolder.h"
#include "items/CQItem.h"
#include "items/Handles.h"
#include "items/ItemGuid.h"
#include "service/operations/PresetTags.h"
#include "tags/CLibTagsMgr.h"

#include <algorithm>
#include <utility>

namespace {

// Not another object of the same GUID.
bool Holds(CQFolder& folder, const CQItem& item) {
    if (folder.HasItem(qfc::GuidOfItem(item), 0) == 0) return false;
    const auto* const pItems = folder.GetItemArray();
    return pItems != nullptr && std::find(pItems->begin(), pItems->end(), &item) != pItems->end();
}

// The index knows one object of a GUID, and none that a session loaded; others know their folder.
bool Holds(CQGallery& gallery, const CQItem& item) {
    CQItem* pKnown = nullptr;
    if (gallery.IsItemHasParentByGuid(qfc::GuidOfItem(item), pKnown) != 0 && pKnown == &item) return true;
    CQFolder* const pParent = item.GetParentFolder();
    return pParent != nullptr && gallery.IsSubFolderValid(pParent) != 0 && Holds(*pParent, item);
}

}  // namespace

LibraryOperation_AddItem::LibraryOperation_AddItem(ULONGLONG hGallery, std::vector<CString>&& folderPaths,
                                                   CQItem* pItem)
    : m_folderPaths(std::move(folderPaths)), m_pItem(pItem) {
    SetGallery(hGallery);
}

int LibraryOperation_AddItem::execute() {
    if (Gallery() == 0 || m_folderPaths.empty() || m_pItem == nullptr) return 0;
    CQGallery* const pGallery = qfc::AsGallery(Gallery());
    bool bHeld = false;
    for (const CString& strPath : m_folderPaths) {
        CQFolder* const pFolder = pGallery->GetFolderByPath(strPath);
        if (pFolder == nullptr) continue;
        if (pFolder->AddItemDb(m_pItem, 1) != 0 || (!bHeld && Holds(*pFolder, *m_pItem))) bHeld = true;
    }
    // The tags of an item that no folder took would belong to nothing, or to another library.
    if (bHeld || Holds(*pGallery, *m_pItem)) qfc::ApplyPresetTags(*CLibTagsMgr::GetLibTagMgr(), *pGallery, *m_pItem);
    return 1;
}

void LibraryOperation_AddItem::FillCallbackParam(QFCLibCallbackParam& param) {
    LibraryOperation::FillCallbackParam(param);
    if (m_pItem != nullptr) param.guidItem = qfc::GuidOfItem(*m_pItem);
    if (Gallery() == 0 || m_folderPaths.empty()) return;
    const CQFolder* const pFolder = qfc::AsGallery(Gallery())->GetFolderByPath(m_folderPaths.front());
    if (pFolder != nullptr) param.nFolderId = pFolder->GetDBId();
}
