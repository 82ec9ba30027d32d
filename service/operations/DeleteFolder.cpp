#include "service/operations/DeleteFolder.h"

#include "folders/CQFolder.h"

LibraryOperation_DeleteFolder::LibraryOperation_DeleteFolder(CQFolder* pFolder) : m_pFolder(pFolder) {}

int LibraryOperation_DeleteFolder::execute() {
    if (m_pFolder == nullptr || m_pFolder->GetParentFolder() == nullptr) return 0;
    return m_pFolder->GetParentFolder()->DeleteFolderFromDb(m_pFolder->GetDBId());
}
