#pragma once

#include "hosts/qfc/library/Galleries.h"
#include "platform/framework/Guid.h"

class CQFolder;

namespace qfc::host {

// Removes, then looks. Main thread.

// Throws Failure when the database has folders below this one that were not loaded, which would stay behind.
void RefuseUnseenFolders(CQFolder& folder);

enum class FolderRemoval {
    kDone,
    kLinksLeft,  // It is gone, but not all links of tags to its items.
    kFailed,     // Anything of it is still stored, an item that no folder holds any more included.
};
// The folder with everything below it; its object is gone afterwards. Throws Failure, having removed nothing, as
// RefuseUnseenFolders does.
FolderRemoval RemoveFolder(Galleries& galleries, CQFolder& folder);

// The item's placement in the folder, and the item itself with its last placement: its object may be gone afterwards.
// False when the placement is still stored.
bool RemovePlacement(CQFolder& folder, const GUID& guid);

// The item is stored although no folder of any gallery holds it: with its last placement it had to go.
bool IsLeftBehind(Galleries& galleries, DBTools& tools, const GUID& guid);

}  // namespace qfc::host
