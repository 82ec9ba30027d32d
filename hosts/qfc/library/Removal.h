#pragma once

#include "hosts/qfc/library/Galleries.h"
#include "hosts/qfc/library/Remains.h"
#include "platform/framework/Guid.h"

#include <optional>
#include <string>
#include <vector>

class CQFolder;

namespace qfc::host {

// Removes, then looks. Main thread.

// Throws Failure when the database has folders below this one that were not loaded, which would stay behind.
void RefuseUnseenFolders(CQFolder& folder);

struct FolderRemoval {
    std::string path;
    std::optional<bool> isStored;  // The folder itself; nothing when the library does not tell.
    bool isWhole = false;          // It went with all that was below, items that no other folder holds included.
    bool isBegun = false;          // Something of it went.
    Remains folders;               // By path, the folder itself too.
    Remains items;                 // Those that are left without a folder, or nobody knows.
    std::size_t itemsBefore = 0;
    std::size_t itemsPlaced = 0;  // Those of them that are seen in these folders still.
    Remains links;                // Of tags to items that are gone.

    bool IsDone() const { return isWhole && links.IsEmpty(); }
    // What to complain of; empty when all went.
    std::vector<std::string> Lines() const;
    std::string Text() const;  // The same in one line.
};
// The folder with everything below it; its object is gone afterwards. Throws Failure, having removed nothing, as
// RefuseUnseenFolders does; a look that fails afterwards throws nothing.
FolderRemoval RemoveFolder(Galleries& galleries, CQFolder& folder);

// The item's placement in the folder, and the item itself with its last placement: its object may be gone afterwards.
// Whether the placement is still stored; nothing when the library does not tell. Throws nothing.
std::optional<bool> RemovePlacement(CQFolder& folder, const GUID& guid);

// Whether the item is stored although no folder of any gallery holds it: with its last placement it had to go. Nothing
// when the library does not tell. Throws nothing.
std::optional<bool> IsLeftBehind(Galleries& galleries, DBTools& tools, const GUID& guid);

}  // namespace qfc::host
