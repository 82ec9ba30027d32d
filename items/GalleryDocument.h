#pragma once

class CQGalleryDoc;

// The slot of the one process-wide gallery document. It stands here, in the lowest layer that reads it; the exported
// names above forward. Safe to call from any thread; the document says itself what may be done with it.
namespace qfc {

// The document, created on the first call; null only when it cannot be made.
CQGalleryDoc* GalleryDocument();
// True when there is a document afterwards.
bool CreateGalleryDocument();
// The document, or null when none was made yet.
CQGalleryDoc* ExistingGalleryDocument();

// Called by the document's constructor and destructor.
void RecordGalleryDocument(CQGalleryDoc* pDocument);
void ForgetGalleryDocument(const CQGalleryDoc* pDocument);

}  // namespace qfc
