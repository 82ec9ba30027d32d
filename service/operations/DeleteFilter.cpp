#include "service/operations/DeleteFilter.h"

#include "db/DBTools.h"
#include "db/EffectRecords.h"
#include "folders/FolderWalk.h"
#include "items/Handles.h"
#include "service/operations/EffectItems.h"

namespace {

CQFolder* FirstToBePruned(CQGallery& gallery) {
    for (CQFolder* const pFolder : qfc::SubtreeOf(gallery)) {
        if (qfc::IsToBePruned(*pFolder)) return pFolder;
    }
    return nullptr;
}

// Kept: after each deletion the scan begins anew, unlike that of the transitions.
int Prune(CQGallery& gallery) {
    while (CQFolder* const pFolder = FirstToBePruned(gallery)) {
        if (pFolder->GetParentFolder()->DeleteFolderFromDb(pFolder->GetDBId()) == 0) return 0;
    }
    return 1;
}

}  // namespace

LibraryOperation_DeleteFilter::LibraryOperation_DeleteFilter(ULONGLONG hGallery,
                                                             const std::vector<DS_Filter_File_Record>* pFiles,
                                                             DBTools* pDBTools)
    : m_pFiles(pFiles), m_pDBTools(pDBTools) {
    SetGallery(hGallery);
}

int LibraryOperation_DeleteFilter::execute() {
    if (Gallery() == 0 || m_pDBTools == nullptr || m_pFiles == nullptr) return 0;
    if (!m_pDBTools->DeleteFilterFiles(*m_pFiles)) return 0;
    CQGallery& gallery = *qfc::AsGallery(Gallery());
    for (const DS_Filter_File_Record& file : *m_pFiles) {
        if (file.bInLibrary == 0) continue;
        for (const qfc::FilterEntry& filter : file.filters) qfc::RemoveEffectItem(gallery, filter.guidItem);
    }
    return Prune(gallery);
}
