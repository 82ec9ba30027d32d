#include "service/operations/AddItem_Transition.h"

#include "db/DBTools.h"
#include "folders/HeldGuids.h"
#include "items/CQItem.h"
#include "items/Handles.h"
#include "items/ItemGuid.h"
#include "service/operations/ExchangeSort.h"

#include <cstring>
#include <utility>

namespace {

const char* NameOf(const CQItem* pItem) { return pItem != nullptr ? pItem->GetItemName().GetString() : ""; }

bool ComesBefore(const CQItem* pLeft, const CQItem* pRight) { return std::strcmp(NameOf(pLeft), NameOf(pRight)) < 0; }

void SortByName(CQFolder& folder, CQFolder::ItemArray& items) {
    const unsigned long long nBefore = items.ModificationCount();
    std::vector<CQItem*> sorted(items.begin(), items.end());
    qfc::ExchangeSortAfterAdding(std::span(sorted), ComesBefore);
    for (int position = 0; position < items.GetSize(); ++position) {
        CQItem* const pItem = sorted[static_cast<std::size_t>(position)];
        if (items.GetAt(position) != pItem) items.SetAt(position, pItem);
    }
    qfc::HeldGuids::NoteReordered(folder, items, nBefore);
}

}  // namespace

LibraryOperation_AddItem_Transition::LibraryOperation_AddItem_Transition(const DS_Transition_Record& transition,
                                                                         ULONGLONG hGallery,
                                                                         std::vector<CString>&& folderPaths,
                                                                         CQItem* pItem, DBTools* pDBTools)
    : LibraryOperation_AddItem(hGallery, std::move(folderPaths), pItem),
      m_transition(transition),
      m_pDBTools(pDBTools) {}

int LibraryOperation_AddItem_Transition::execute() {
    if (m_pDBTools == nullptr || Item() == nullptr) return 0;
    if (m_transition.guidItem == GUID_NULL) m_transition.guidItem = qfc::GuidOfItem(*Item());
    if (LibraryOperation_AddItem::execute() == 0 || !SortFolders(*qfc::AsGallery(Gallery()))) return 0;
    return m_pDBTools->SaveTransition(m_transition) ? 1 : 0;
}

bool LibraryOperation_AddItem_Transition::SortFolders(CQGallery& gallery) const {
    for (const CString& strPath : FolderPaths()) {
        CQFolder* const pFolder = gallery.GetFolderByPath(strPath);
        if (pFolder == nullptr) continue;
        CQFolder::ItemArray* const pItems = pFolder->GetItemArray();
        if (pItems == nullptr) return false;
        SortByName(*pFolder, *pItems);
    }
    return true;
}
