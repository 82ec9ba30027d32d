#pragma once

class CQFolder;
class CQItem;

namespace qfc {

// What folders and items ask of the gallery file they are kept in. Every result is 1 or 0. Folders and items are
// borrowed for the call. Used on the thread that works on the tree.
class GalleryFile {
public:
    virtual ~GalleryFile() = default;

    // Opens, or makes, the folder's own storage in the file.
    virtual int OpenFolderStorage(CQFolder& folder) = 0;
    virtual int CloseFolderStorage(CQFolder& folder) = 0;
    virtual int DeleteFolderStorage(CQFolder& folder) = 0;
    // Writes what changed in the folder's items.
    virtual int FlushFolder(CQFolder& folder) = 0;
    // Saves the whole tree below the file's root and closes the file.
    virtual int SaveTreeAndClose(CQFolder& fileRoot) = 0;
    virtual int DeleteItemStreams(CQFolder& folder, CQItem& item) = 0;
    // Black box and bitmap cache. The item takes care that a modified one keeps what it has of them, also when this
    // throws.
    virtual int LoadBlackBox(CQItem& item) = 0;
    virtual int LoadFilm(CQItem& item) = 0;
};

// The file that the folder is kept in. Null while its file root has no path: then there is no file, nothing is to be
// done, and that counts as success.
GalleryFile* GalleryFileOf(const CQFolder& folder);

// Who answers for a file root that has a path; null for nobody. Set once at start-up, before any thread works on a
// tree.
using GalleryFileSource = GalleryFile* (*)(const CQFolder& fileRoot);
void SetGalleryFileSource(GalleryFileSource source);

}  // namespace qfc
