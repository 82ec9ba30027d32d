#include "service/operations/AddItem.h"

#include "folders/CQFolder.h"
#include "items/CQItem.h"
#include "items/Handles.h"

#include <utility>

LibraryOperation_AddItem::LibraryOperation_AddItem(ULONGLONG hGallery, std::vector<CString>&& folderPaths,
                                                   CQItem* pItem)
    : m_folderPaths(std::move(folderPaths)), m_pItem(pItem) {
    SetGallery(hGallery);
}

int LibraryOperation_AddItem::execute() {
    if (Gallery() == 0 || m_folderPaths.empty() || m_pItem == nullptr) return 0;
    for (const CString& strPath : m_folderPaths) {
        CQFolder* const pFolder = qfc::AsGallery(Gallery())->GetFolderByPath(strPath);
        if (pFolder != nullptr) pFolder->AddItemDb(m_pItem, 1);
    }
    return 1;
}

void LibraryOperation_AddItem::FillCallbackParam(QFCLibCallbackParam& param) {
    LibraryOperation::FillCallbackParam(param);
    if (m_pItem != nullptr) param.guidItem = m_pItem->GetUniqueID();
    if (Gallery() == 0 || m_folderPaths.empty()) return;
    const CQFolder* const pFolder = qfc::AsGallery(Gallery())->GetFolderByPath(m_folderPaths.front());
    if (pFolder != nullptr) param.nFolderId = pFolder->GetDBId();
}
