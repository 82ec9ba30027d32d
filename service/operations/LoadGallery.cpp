#include "service/operations/LoadGallery.h"

#include "db/CurrentDBTools.h"
#include "folders/GalleryEnd.h"
#include "items/CQGallery.h"
#include "items/CQGalleryDoc.h"
#include "items/GalleryDocument.h"
#include "items/Handles.h"

#include <memory>

namespace {

// Of a session's gallery nobody else knows the items.
struct EndWithItems {
    void operator()(CQGallery* pGallery) const { qfc::DestroyWithItems(pGallery); }
};

}  // namespace

LibraryOperation_LoadGallery::LibraryOperation_LoadGallery(int nGalleryId, DBTools* pDBTools)
    : m_nGalleryId(nGalleryId), m_pDBTools(pDBTools) {}

int LibraryOperation_LoadGallery::execute() {
    if (m_pDBTools == nullptr) return 0;
    std::unique_ptr<CQGallery, EndWithItems> pGallery(new CQGallery);
    pGallery->SetFolderID(static_cast<DWORD>(m_nGalleryId));
    pGallery->SetDBTools(m_pDBTools);
    if (!pGallery->LoadTreeFromDb()) return 0;

    if (qfc::IsCurrentDBTools(m_pDBTools)) {
        CQGalleryDoc* const pDocument = qfc::GalleryDocument();
        if (pDocument == nullptr || pDocument->AddGallery(pGallery.get()) == 0) return 0;
    }
    m_hLoaded = qfc::ToHandle(pGallery.release());
    return 1;
}
