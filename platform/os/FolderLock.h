#pragma once

#include "platform/os/Descriptor.h"

#include <string>

namespace qfc {

// Keeps out everybody else who locks the same folder, in this process and in others; no file is made for it. The lock
// ends with the object or the process. Each object belongs to one thread at a time.
class FolderLock {
public:
    // Takes nothing yet. A native path.
    explicit FolderLock(const std::string& folder);

    // False while somebody else holds it. True also where the system cannot lock the folder: nobody is kept out then.
    bool TryLock();

private:
    Descriptor m_folder;
};

}  // namespace qfc
