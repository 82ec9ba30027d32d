#pragma once

#include <atomic>

class CQFolder;

namespace qfc {

// Outlives a folder as long as somebody remembers it, and tells whether it still lives: null once it is destroyed.
// Any thread may ask; what was answered is only good while the folder cannot be destroyed.
struct FolderLife {
    explicit FolderLife(CQFolder* pFolder) : folder(pFolder) {}

    std::atomic<CQFolder*> folder;
};

}  // namespace qfc
