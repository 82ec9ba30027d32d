#include "service/operations/UpdateFilterOptionAsync.h"

#include "db/DBTools.h"
#include "items/Handles.h"
#include "items/ItemTypes.h"
#include "service/operations/EffectItems.h"

LibraryOperation_UpdateFilterOptionAsync::LibraryOperation_UpdateFilterOptionAsync(ULONGLONG hGallery,
                                                                                   const DS_Filter_File_Record& file,
                                                                                   DWORD dwOption, DBTools* pDBTools,
                                                                                   CQItem* pItem, const GUID& guidItem)
    : m_file(file), m_dwOption(dwOption), m_pDBTools(pDBTools), m_pItem(pItem), m_guidItem(guidItem) {
    SetGallery(hGallery);
}

// Kept: a gallery without item of that GUID counts as updated, so that the record is stored without an item.
int LibraryOperation_UpdateFilterOptionAsync::execute() {
    if (m_pDBTools == nullptr || m_pItem == nullptr || Gallery() == 0) return 0;
    if (!qfc::NameItem(m_file, m_guidItem)) return 0;
    if (qfc::AsGallery(Gallery())->UpdateItemDB(m_pItem, m_guidItem, qfc::copy_mask::kAll) == 0) return 0;
    return m_pDBTools->SaveFilterFile(m_file) ? 1 : 0;
}
