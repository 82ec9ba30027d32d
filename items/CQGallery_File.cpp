#include "folders/FolderWalk.h"
#include "folders/GalleryFile.h"
#include "items/CQGallery.h"
#include "items/CQGalleryDoc.h"
#include "items/GalleryDocument.h"
#include "items/GalleryUpdate.h"

#include <vector>

namespace {

bool HasOwnFile(const CQFolder* pFolder) { return pFolder != nullptr && !pFolder->GetFilePath().IsEmpty(); }

std::vector<CQFolder*> SubFoldersWithFiles(CQFolder::FolderList& list) {
    std::vector<CQFolder*> found;
    for (CQFolder* pFolder : list) {
        if (HasOwnFile(pFolder)) found.push_back(pFolder);
    }
    return found;
}

}  // namespace

int CQGallery::SetCurrentFolder(CQFolder* pFolder, int bFlush) {
    if (bFlush != 0) FlushCurrentFolder();
    m_pCurrentFolder = pFolder;
    GenerateActiveFolderPath();
    return 1;
}

void CQGallery::FlushCurrentFolder() {
    // The noted folder may be gone; only an address that is still in the tree is a folder.
    if (IsSubFolderValid(m_pCurrentFolder) == 0) return;
    if (auto* const pFile = qfc::GalleryFileOf(*m_pCurrentFolder)) pFile->FlushFolder(*m_pCurrentFolder);
}

int CQGallery::IsFileInUse(const CString& strPath) {
    if (GetFilePath() == strPath) return 1;
    auto* const pList = GetFolderList();
    if (pList == nullptr) return 0;
    for (const CQFolder* pFolder : *pList) {
        if (pFolder != nullptr && pFolder->GetFilePath() == strPath) return 1;
    }
    return 0;
}

int CQGallery::UnlinkAll() {
    auto* const pList = GetFolderList();
    if (pList == nullptr) return 1;
    const auto linked = SubFoldersWithFiles(*pList);
    if (linked.empty()) return 1;

    auto* const pDocument = qfc::ExistingGalleryDocument();
    if (pDocument != nullptr && pDocument->GetCurrentGallery() == this) {
        SetCurrentFolderNull();
        pDocument->NoteCurrentFolder(nullptr);
    }
    for (CQFolder* pFolder : linked) {
        pList->RemoveAt(pList->Find(pFolder));
        delete pFolder;
    }
    return qfc::UpdateGalleryFile(this, nullptr);
}

int qfc::UpdateGalleryFile(CQGallery* gallery, CQFolder* folder) {
    if (gallery == nullptr) return 0;
    auto* const pFile = GalleryFileOf(*gallery);
    if (pFile == nullptr) return 1;
    if (folder != nullptr) {
        pFile->FlushFolder(*folder);
    } else {
        for (CQFolder* const pEach : SubtreeOf(*gallery)) pFile->FlushFolder(*pEach);
    }
    return pFile->SaveTreeAndClose(*gallery);
}
