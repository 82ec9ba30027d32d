#include "api/GalleryApi.h"

#include "folders/GlobalProc.h"
#include "items/GalleryDocument.h"

#include <type_traits>

// Spelled out above for hosts, which see no header of the slot.
static_assert(std::is_same_v<QFCGlobalProc, qfc::GlobalProc>);

int CreateGalleryDoc() { return qfc::CreateGalleryDocument() ? 1 : 0; }

CQGalleryDoc* GetGalleryDoc() { return qfc::GalleryDocument(); }

void RegisterGlobalProc(QFCGlobalProc proc) { qfc::SetGlobalProc(proc); }
