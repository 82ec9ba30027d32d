#pragma once

class CQFolder;
class CQGallery;

namespace qfc {

// Writes the gallery to its file: the one folder's changes, or with null those of the whole tree, then the tree itself.
// 1 on success, and 1 for a gallery without a file, which has nothing to write. Thread: the one that works on the tree.
int UpdateGalleryFile(CQGallery* gallery, CQFolder* folder);

}  // namespace qfc
