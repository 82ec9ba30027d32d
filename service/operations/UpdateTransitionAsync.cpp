#include "service/operations/UpdateTransitionAsync.h"

#include "db/DBTools.h"
#include "items/Handles.h"
#include "items/ItemTypes.h"

LibraryOperation_UpdateTransitionAsync::LibraryOperation_UpdateTransitionAsync(ULONGLONG hGallery,
                                                                               const DS_Transition_Record& transition,
                                                                               DBTools* pDBTools, CQItem* pItem,
                                                                               const GUID& guidItem)
    : m_transition(transition), m_pDBTools(pDBTools), m_pItem(pItem), m_guidItem(guidItem) {
    SetGallery(hGallery);
}

// Kept: a gallery without item of that GUID counts as updated, so that the record is stored without an item.
int LibraryOperation_UpdateTransitionAsync::execute() {
    if (m_pDBTools == nullptr || m_pItem == nullptr || Gallery() == 0) return 0;
    if (m_transition.guidItem == GUID_NULL) m_transition.guidItem = m_guidItem;
    if (qfc::AsGallery(Gallery())->UpdateItemDB(m_pItem, m_guidItem, qfc::copy_mask::kAll) == 0) return 0;
    return m_pDBTools->SaveTransition(m_transition) ? 1 : 0;
}
