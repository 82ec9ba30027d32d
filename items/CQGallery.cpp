#include "items/CQGallery.h"

#include "folders/FolderPath.h"
#include "folders/FolderWalk.h"
#include "folders/PathComponents.h"
#include "items/CQItem.h"

IMPLEMENT_DYNCREATE(CQGallery, CQFolder)

namespace {

constexpr DWORD kTrustyTakesItemFolders = 2;
constexpr DWORD kTrustyTakesItems = 64;

// The first direct sub-folder whose trust flags have the bit, or null.
CQFolder* FirstSubFolderTrusted(CQFolder& folder, DWORD dwBit) {
    auto* const pList = folder.GetFolderList();
    if (pList == nullptr) return nullptr;
    for (CQFolder* pChild : *pList) {
        if (pChild != nullptr && (pChild->GetTrusty() & dwBit) != 0) return pChild;
    }
    return nullptr;
}

}  // namespace

CQGallery::CQGallery() = default;

CQGallery::CQGallery(const CString& strName, DWORD dwTrusty, DWORD dwAdopt, DWORD dwExtra)
    : CQFolder(strName, dwTrusty, dwAdopt, dwExtra) {}

CQGallery::~CQGallery() { Clear(); }

CQFolder* CQGallery::GetCurrentFolder() {
    if (IsSubFolderValid(m_pCurrentFolder) != 0) return m_pCurrentFolder;
    auto* const pList = GetFolderList();
    if (pList == nullptr) return nullptr;
    m_pCurrentFolder = pList->IsEmpty() ? this : pList->GetHead();
    return m_pCurrentFolder;
}

int CQGallery::SetCurrentFolderByPath(const char* pszPath) {
    if (!qfc::SplitIntoComponents(pszPath, true)) return 0;
    const CString strFirst = qfc::TakeComponent();
    CQFolder* const pFolder = GetSubFolder(strFirst, qfc::PathPosition());
    if (pFolder == nullptr) return 0;
    m_pCurrentFolder = pFolder;
    return 1;
}

int CQGallery::GenerateActiveFolderPath() {
    const CQFolder* const pFolder = GetCurrentFolder();
    if (pFolder == nullptr) {
        m_strActiveFolderPath.Empty();
        return 0;
    }
    m_strActiveFolderPath = qfc::FolderPathText(pFolder);
    return 1;
}

int CQGallery::AddToCurrentFolder(CQFolder* /*pFolder*/) { return 1; }

CQFolder* CQGallery::GetFirstCanAddItemFolder() {
    CQFolder* const pFolder = FirstSubFolderTrusted(*this, kTrustyTakesItemFolders);
    if (pFolder == nullptr || (pFolder->GetTrusty() & kTrustyTakesItems) != 0) return pFolder;
    return FirstSubFolderTrusted(*pFolder, kTrustyTakesItems);
}

int CQGallery::GetFinalFolderCount() {
    int nLeaves = 0;
    for (CQFolder* const pFolder : qfc::SubtreeOf(*this)) {
        if (pFolder->GetFirstSubFolder() == nullptr) ++nLeaves;
    }
    return nLeaves;
}

int CQGallery::LetGallerySleep(DWORD /*dwGallery*/) { return 1; }

int CQGallery::WakeUpGallery(DWORD /*dwGallery*/) { return 1; }
