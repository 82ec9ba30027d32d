#include "service/operations/UpdateFolder.h"

#include "folders/CQFolder.h"

LibraryOperation_UpdateFolder::LibraryOperation_UpdateFolder(const CString& strName, DWORD dwAdopt, DWORD dwTrusty,
                                                             DWORD dwTypeExtra, DBTools* pDBTools, CQFolder* pFolder)
    : m_strName(strName),
      m_dwAdopt(dwAdopt),
      m_dwTrusty(dwTrusty),
      m_dwTypeExtra(dwTypeExtra),
      m_pDBTools(pDBTools),
      m_pFolder(pFolder) {}

int LibraryOperation_UpdateFolder::execute() {
    if (m_pFolder == nullptr) return 0;
    m_pFolder->GetFolderName() = m_strName;
    m_pFolder->SetAdopt(m_dwAdopt);
    m_pFolder->SetTrusty(m_dwTrusty);
    m_pFolder->GetExtra() = m_dwTypeExtra;
    m_pFolder->SetDBTools(m_pDBTools);
    return m_pFolder->InsertOrUpdateFolder();
}
