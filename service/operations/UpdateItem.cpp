#include "service/operations/UpdateItem.h"

#include "items/CQGallery.h"
#include "items/CQItem.h"
#include "items/Handles.h"

LibraryOperation_UpdateItem::LibraryOperation_UpdateItem(ULONGLONG hGallery, CQItem* pItem, DWORD dwMask,
                                                         const GUID& guidItem)
    : m_pItem(pItem), m_dwMask(dwMask), m_guidItem(guidItem) {
    SetGallery(hGallery);
}

// Kept: an update that could not be stored, and one that found no item, report success too.
int LibraryOperation_UpdateItem::execute() {
    if (Gallery() == 0 || m_pItem == nullptr) return 0;
    qfc::AsGallery(Gallery())->UpdateItemDB(m_pItem, m_guidItem, m_dwMask);
    return 1;
}
