#include "folders/FolderPath.h"

#include "api/names/PathRules.h"
#include "folders/CQFolder.h"

namespace qfc {

CString FolderPathText(const CQFolder* folder) {
    CString path;
    for (; folder != nullptr && !folder->IsRoot(); folder = folder->GetParent()) {
        path = CString(kPathSeparator, 1) + folder->GetFolderName() + path;
    }
    return path;
}

}  // namespace qfc
