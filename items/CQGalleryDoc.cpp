#include "items/CQGalleryDoc.h"

#include "items/CQGallery.h"
#include "items/GalleryDocument.h"
#include "platform/framework/Exceptions.h"
#include "platform/os/Files.h"

#include <new>

namespace {
constexpr int kListBlockSize = 10;
constexpr const char* kTemporaryPrefix = "GAL";
}  // namespace

IMPLEMENT_DYNCREATE(CQGalleryDoc, CDocument)

BEGIN_MESSAGE_MAP(CQGalleryDoc, CDocument)
END_MESSAGE_MAP()

CQGalleryDoc::CQGalleryDoc() : m_galleryList(kListBlockSize) { qfc::RecordGalleryDocument(this); }

CQGalleryDoc::~CQGalleryDoc() {
    qfc::ForgetGalleryDocument(this);
    m_pCurrentGallery = nullptr;
    while (!m_galleryList.IsEmpty()) CloseGallery(m_galleryList.GetHead());
}

int CQGalleryDoc::AddGallery(CQGallery* pGallery) {
    const std::scoped_lock lock(m_guard);
    try {
        m_galleryList.AddTail(pGallery);
        return 1;
    } catch (CMemoryException* pException) {
        pException->Delete();
        return 0;
    } catch (const std::bad_alloc&) {
        return 0;
    }
}

int CQGalleryDoc::ChangeGallery(CQGallery* pGallery) {
    const std::scoped_lock lock(m_guard);
    m_pCurrentGallery = pGallery;
    return 1;
}

// The gallery dies outside the lock: others need not wait for it, and its end may look at the document.
int CQGalleryDoc::CloseGallery(CQGallery* pGallery) {
    if (ReleaseGallery(pGallery)) delete pGallery;
    return 1;
}

bool CQGalleryDoc::ReleaseGallery(CQGallery* pGallery) {
    const std::scoped_lock lock(m_guard);
    const auto placeOf = [&] { return m_galleryList.Find(static_cast<CObject*>(pGallery)); };
    POSITION position = placeOf();
    if (position == nullptr) return false;
    if (m_pCurrentGallery == pGallery) {
        m_pCurrentGallery = nullptr;
        m_pCurrentFolder = nullptr;
    }
    // A gallery that was added twice goes from both places.
    for (; position != nullptr; position = placeOf()) m_galleryList.RemoveAt(position);
    return true;
}

CQGallery* CQGalleryDoc::GetCurrentGallery() const {
    const std::scoped_lock lock(m_guard);
    return m_pCurrentGallery;
}

CQFolder* CQGalleryDoc::GetCurrentFolder() {
    CQGallery* const pGallery = GetCurrentGallery();
    return pGallery != nullptr ? pGallery->GetCurrentFolder() : nullptr;
}

void CQGalleryDoc::NoteCurrentFolder(CQFolder* pFolder) {
    const std::scoped_lock lock(m_guard);
    m_pCurrentFolder = pFolder;
}

CQFolder* CQGalleryDoc::GetNotedFolder() const {
    const std::scoped_lock lock(m_guard);
    return m_pCurrentFolder;
}

CString CQGalleryDoc::GeneratePath() {
    char szFolder[MAX_PATH] = "";
    const DWORD nLength = GetTempPathA(MAX_PATH, szFolder);
    char szFile[MAX_PATH] = "";
    if (nLength == 0 || nLength >= MAX_PATH || GetTempFileNameA(szFolder, kTemporaryPrefix, 0, szFile) == 0) return {};
    return szFile;
}
