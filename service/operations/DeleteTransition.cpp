#include "service/operations/DeleteTransition.h"

#include "db/DBTools.h"
#include "db/EffectRecords.h"
#include "items/Handles.h"
#include "service/operations/EffectItems.h"

namespace {

// Kept: one scan, which goes on behind each folder that it deletes, unlike that of the filters.
int Prune(CQGallery& gallery) {
    CQFolder* pFolder = gallery.GetFirstSubFolder();
    while (pFolder != nullptr && pFolder != &gallery) {
        const bool bEmpty = qfc::IsToBePruned(*pFolder);
        // Taken before the deletion; what lies below a deleted folder goes with it.
        CQFolder* const pNext = pFolder->NextFolder(bEmpty ? 1 : 0);
        if (bEmpty && pFolder->GetParentFolder()->DeleteFolderFromDb(pFolder->GetDBId()) == 0) return 0;
        pFolder = pNext;
    }
    return 1;
}

}  // namespace

LibraryOperation_DeleteTransition::LibraryOperation_DeleteTransition(
    ULONGLONG hGallery, const std::vector<DS_Transition_Record>* pTransitions, DBTools* pDBTools)
    : m_pTransitions(pTransitions), m_pDBTools(pDBTools) {
    SetGallery(hGallery);
}

int LibraryOperation_DeleteTransition::execute() {
    if (Gallery() == 0 || m_pDBTools == nullptr || m_pTransitions == nullptr) return 0;
    if (!m_pDBTools->DeleteTransitionFiles(*m_pTransitions)) return 0;
    CQGallery& gallery = *qfc::AsGallery(Gallery());
    for (const DS_Transition_Record& transition : *m_pTransitions) {
        if (transition.bInLibrary != 0) qfc::RemoveEffectItem(gallery, transition.guidItem);
    }
    return Prune(gallery);
}
