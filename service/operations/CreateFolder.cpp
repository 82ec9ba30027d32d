#include "service/operations/CreateFolder.h"

#include "folders/CQFolder.h"
#include "items/Handles.h"

#include <memory>

LibraryOperation_CreateFolder::LibraryOperation_CreateFolder(ULONGLONG hGallery, const CString& strParentPath,
                                                             const CString& strName, DWORD dwFirst, DWORD dwSecond,
                                                             DWORD dwThird, DWORD dwFolderId, DWORD dwOrderIndex)
    : m_strParentPath(strParentPath),
      m_strName(strName),
      m_dwFirst(dwFirst),
      m_dwSecond(dwSecond),
      m_dwThird(dwThird),
      m_dwFolderId(dwFolderId),
      m_dwOrderIndex(dwOrderIndex) {
    SetGallery(hGallery);
}

int LibraryOperation_CreateFolder::execute() {
    CQFolder* const pParent = FindParent();
    if (pParent == nullptr || pParent->GetFolderByName(m_strName) != nullptr) return 0;

    // The constructor takes trusty, adopt and extra: the second attribute comes first.
    auto pFolder = std::make_unique<CQFolder>(m_strName, m_dwSecond, m_dwFirst, m_dwThird);
    pFolder->SetIndex(IndexBelow(*pParent));
    pFolder->SetFolderID(m_dwFolderId);
    if (!pParent->AddFolder(pFolder.get(), 1, 1)) return 0;
    pFolder->GetFolderName() = m_strName;
    if (!pFolder->InsertOrUpdateFolder()) {
        pParent->GetFolderList()->RemoveTail();
        return 0;
    }
    m_pCreated = pFolder.release();
    return 1;
}

CQFolder* LibraryOperation_CreateFolder::FindParent() const {
    if (Gallery() == 0 || m_strName.IsEmpty()) return nullptr;
    CQGallery* const pGallery = qfc::AsGallery(Gallery());
    return m_strParentPath.IsEmpty() ? pGallery : pGallery->GetFolderByPath(m_strParentPath);
}

int LibraryOperation_CreateFolder::IndexBelow(CQFolder& parent) const {
    if (m_dwOrderIndex != kBehindSiblings) return static_cast<int>(m_dwOrderIndex);
    // Kept: where siblings were removed, others may have that index or a higher one, and come behind at the next load.
    const auto* const pSiblings = parent.GetFolderList();
    return (pSiblings != nullptr ? static_cast<int>(pSiblings->GetCount()) : 0) + 1;
}
