#pragma once

class CQFolder;
class CQGallery;

namespace qfc {

// The folder itself when it has no parent.
CQFolder& TopmostOf(const CQFolder& folder);

// The gallery at the root of the folder's tree, or null.
CQGallery* GalleryOf(const CQFolder& folder);

}  // namespace qfc
