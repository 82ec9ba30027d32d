#include "items/GalleryDocument.h"

#include "items/CQGalleryDoc.h"

#include <atomic>
#include <mutex>
#include <new>

namespace qfc {

namespace {
std::atomic<CQGalleryDoc*> g_pDocument{nullptr};
}  // namespace

CQGalleryDoc* GalleryDocument() { return CreateGalleryDocument() ? ExistingGalleryDocument() : nullptr; }

bool CreateGalleryDocument() {
    // Two threads that ask first must not make two. The document is never destroyed: galleries that are still open when
    // the process ends are not to be taken apart after the database they point at.
    static std::mutex creation;
    const std::lock_guard lock(creation);
    // Its constructor fills the slot.
    if (ExistingGalleryDocument() == nullptr) static_cast<void>(new (std::nothrow) CQGalleryDoc);
    return ExistingGalleryDocument() != nullptr;
}

CQGalleryDoc* ExistingGalleryDocument() { return g_pDocument.load(); }

void RecordGalleryDocument(CQGalleryDoc* pDocument) { g_pDocument.store(pDocument); }

void ForgetGalleryDocument(const CQGalleryDoc* pDocument) {
    auto* pExpected = const_cast<CQGalleryDoc*>(pDocument);
    g_pDocument.compare_exchange_strong(pExpected, nullptr);
}

}  // namespace qfc
