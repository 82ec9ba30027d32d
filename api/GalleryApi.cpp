#include "api/GalleryApi.h"

#include "folders/GlobalProc.h"
#include "items/GalleryDocument.h"

int CreateGalleryDoc() { return qfc::CreateGalleryDocument() ? 1 : 0; }

CQGalleryDoc* GetGalleryDoc() { return qfc::GalleryDocument(); }

void RegisterGlobalProc(QFCGlobalProc proc) { qfc::SetGlobalProc(proc); }
