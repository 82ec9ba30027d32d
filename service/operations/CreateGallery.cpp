#include "service/operations/CreateGallery.h"

#include "items/CQGallery.h"
#include "items/CQGalleryDoc.h"
#include "items/GalleryDocument.h"
#include "items/Handles.h"

#include <memory>

LibraryOperation_CreateGallery::LibraryOperation_CreateGallery(int nGalleryId, const CString& strName, DWORD dwAdopt,
                                                               DWORD dwTrusty, DWORD dwTypeExtra, DBTools* pDBTools)
    : m_nGalleryId(nGalleryId),
      m_strName(strName),
      m_dwAdopt(dwAdopt),
      m_dwTrusty(dwTrusty),
      m_dwTypeExtra(dwTypeExtra),
      m_pDBTools(pDBTools) {}

int LibraryOperation_CreateGallery::execute() {
    if (m_pDBTools == nullptr) return 0;
    auto pGallery = std::make_unique<CQGallery>();
    pGallery->SetFolderID(static_cast<DWORD>(m_nGalleryId));
    pGallery->GetFolderName() = m_strName;
    pGallery->SetAdopt(m_dwAdopt);
    pGallery->SetTrusty(m_dwTrusty);
    pGallery->GetExtra() = m_dwTypeExtra;
    pGallery->SetDBTools(m_pDBTools);
    if (!pGallery->InsertOrUpdateFolder() || !pGallery->InsertOrUpdateGallery()) return 0;

    CQGalleryDoc* const pDocument = qfc::GalleryDocument();
    if (pDocument == nullptr || pDocument->AddGallery(pGallery.get()) == 0) return 0;
    m_hCreated = qfc::ToHandle(pGallery.release());
    return 1;
}
