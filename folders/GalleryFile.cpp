#include "folders/GalleryFile.h"

#include "folders/CQFolder.h"

#include <atomic>

namespace qfc {

namespace {
std::atomic<GalleryFileSource> g_source = nullptr;
}

GalleryFile* GalleryFileOf(const CQFolder& folder) {
    const CQFolder* fileRoot = folder.GetFileRoot();
    const GalleryFileSource source = g_source;
    return source != nullptr && !fileRoot->GetFilePath().IsEmpty() ? source(*fileRoot) : nullptr;
}

void SetGalleryFileSource(GalleryFileSource source) { g_source = source; }

}  // namespace qfc
