#include "service/operations/DeleteItem.h"

#include "folders/CQFolder.h"
#include "items/CQGallery.h"
#include "items/Handles.h"

#include <utility>

LibraryOperation_DeleteItem::LibraryOperation_DeleteItem(CQFolder* pFolder, std::vector<GUID>&& items, DWORD dwMode)
    : m_pFolder(pFolder), m_items(std::move(items)), m_dwMode(dwMode) {}

// Kept: hosts get 0 also when everything was removed.
int LibraryOperation_DeleteItem::execute() {
    if (m_pFolder == nullptr || m_items.empty()) return 0;
    auto* const pGallery = DYNAMIC_DOWNCAST(CQGallery, m_pFolder->GetRoot());
    if (pGallery == nullptr) return 0;
    for (const GUID& guid : m_items) {
        if (m_dwMode != 0) {
            m_pFolder->RemoveItem(guid, static_cast<int>(m_dwMode));
            continue;
        }
        for (const ULONGLONG hFolder : pGallery->GetItemParentList(guid)) {
            // Only compared: a folder may be gone without the gallery's index having been told.
            CQFolder* const pHolder = qfc::AsFolder(hFolder);
            if (pGallery->IsSubFolderValid(pHolder)) pHolder->RemoveItemDB(guid, 1);
        }
    }
    return 0;
}
