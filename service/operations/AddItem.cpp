#include "service/operations/AddItem.h"

#include "folders/CQFolder.h"
#include "items/CQItem.h"
#include "items/Handles.h"
#include "items/ItemGuid.h"
#include "service/operations/PresetTags.h"
#include "tags/CLibTagsMgr.h"

#include <utility>

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
        const bool bAdded = pFolder->AddItemDb(m_pItem, 1) != 0;
        bHeld = bHeld || bAdded || pFolder->HasItem(qfc::GuidOfItem(*m_pItem), 0) != 0;
    }
    // The tags of an item that no folder took would belong to nothing.
    if (bHeld) qfc::ApplyPresetTags(*CLibTagsMgr::GetLibTagMgr(), *pGallery, *m_pItem);
    return 1;
}

void LibraryOperation_AddItem::FillCallbackParam(QFCLibCallbackParam& param) {
    LibraryOperation::FillCallbackParam(param);
    if (m_pItem != nullptr) param.guidItem = qfc::GuidOfItem(*m_pItem);
    if (Gallery() == 0 || m_folderPaths.empty()) return;
    const CQFolder* const pFolder = qfc::AsGallery(Gallery())->GetFolderByPath(m_folderPaths.front());
    if (pFolder != nullptr) param.nFolderId = pFolder->GetDBId();
}
