#pragma once

#include "platform/Export.h"
#include "platform/framework/CDocument.h"
#include "platform/framework/Collections.h"

#include <mutex>

class CQFolder;
class CQGallery;

// The process-wide document: owns the open galleries and knows which one is current. Constructing one records it as
// the document that GetGalleryDoc hands out. int results are 1 and 0.
//
// Threads: from any thread galleries may be added, taken off and closed, and the addresses of what is current be asked
// for. All else, GetCurrentFolder too, which looks into the gallery, is used from one thread at a time, and the list is
// walked only while nobody adds or closes: the service adds every gallery that it makes, and loads from its own
// database.
class QFCLIB_API CQGalleryDoc : public CDocument {
    DECLARE_DYNCREATE(CQGalleryDoc)

public:
    using GalleryList = CTypedPtrList<CObList, CQGallery*>;

    CQGalleryDoc();
    CQGalleryDoc(const CQGalleryDoc&) = delete;
    CQGalleryDoc& operator=(const CQGalleryDoc&) = delete;
    // Destroys the galleries that are still open.
    ~CQGalleryDoc() override;

    // Takes ownership. Does not change the current gallery. 0 when memory runs out.
    int AddGallery(CQGallery* pGallery);
    // Makes the gallery current, listed or not. Always 1.
    int ChangeGallery(CQGallery* pGallery);
    // Destroys the gallery with its tree and items. A gallery that is not listed is left alone. Always 1.
    int CloseGallery(CQGallery* pGallery);
    // Takes the gallery off the list: it is the caller's then. False when it is not listed.
    bool ReleaseGallery(CQGallery* pGallery);
    CQGallery* GetCurrentGallery() const;
    // The current gallery's current folder; null without a current gallery.
    CQFolder* GetCurrentFolder();
    // The open galleries, in the order added.
    const GalleryList& GetGalleryList() const { return m_galleryList; }
    // Makes an empty temporary file and answers its name; an empty text when that fails.
    CString GeneratePath();

    // The folder noted when a gallery was made current; borrowed, never read through.
    void NoteCurrentFolder(CQFolder* pFolder);
    CQFolder* GetNotedFolder() const;

    DECLARE_MESSAGE_MAP()

private:
    mutable std::mutex m_guard;  // While the list or what is current changes.
    GalleryList m_galleryList;
    CQFolder* m_pCurrentFolder = nullptr;
    CQGallery* m_pCurrentGallery = nullptr;
};
