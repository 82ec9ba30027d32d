#include "service/operations/LoadGallery.h"

#include "db/CurrentDBTools.h"
#include "items/CQGallery.h"
#include "items/CQGalleryDoc.h"
#include "items/GalleryDocument.h"
#include "items/Handles.h"

#include <memory>

LibraryOperation_LoadGallery::LibraryOperation_LoadGallery(int nGalleryId, DBTools* pDBTools)
    : m_nGalleryId(nGalleryId), m_pDBTools(pDBTools) {}

int LibraryOperation_LoadGallery::execute() {
    if (m_pDBTools == nullptr) return 0;
    auto pGallery = std::make_unique<CQGallery>();
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
