#include "service/operations/AddItem_Filter.h"

#include "db/DBTools.h"
#include "items/ItemGuid.h"
#include "service/operations/EffectItems.h"

#include <utility>

LibraryOperation_AddItem_Filter::LibraryOperation_AddItem_Filter(const DS_Filter_File_Record& file, DWORD dwOption,
                                                                 ULONGLONG hGallery, std::vector<CString>&& folderPaths,
                                                                 CQItem* pItem, DBTools* pDBTools)
    : LibraryOperation_AddItem(hGallery, std::move(folderPaths), pItem),
      m_file(file),
      m_dwOption(dwOption),
      m_pDBTools(pDBTools) {}

int LibraryOperation_AddItem_Filter::execute() {
    if (m_pDBTools == nullptr || Item() == nullptr) return 0;
    if (!qfc::NameItem(m_file, qfc::GuidOfItem(*Item()))) return 0;
    if (LibraryOperation_AddItem::execute() == 0) return 0;
    return m_pDBTools->SaveFilterFile(m_file) ? 1 : 0;
}
