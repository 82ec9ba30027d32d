#pragma once

#include "hosts/qfc/library/Galleries.h"
#include "hosts/qfc/library/Remains.h"
#include "platform/framework/Guid.h"

#include <atomic>
#include <functional>
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
    std::string halt;              // Why folders were left alone; empty when none were.
    Remains folders;               // By path, the folder itself too; without those that were left alone.
    std::size_t foldersBefore = 0;
    std::size_t foldersGone = 0;
    Remains items;  // Those that are left without a folder, or nobody knows.
    std::size_t itemsBefore = 0;
    std::size_t itemsPlaced = 0;  // Those of them that are seen in these folders still.
    Remains links;                // Of tags to items that are gone.

    bool IsDone() const { return isWhole && links.IsEmpty(); }
    bool IsInterrupted() const;
    // What to complain of; empty when all went.
    std::vector<std::string> Lines() const;
    std::string Text() const;  // The same in one line.

private:
    // "1 of 2 folders and 3 of 4 items"; empty when none went.
    std::string CountsGone() const;
};
// Is told the path of the folder that goes next.
using RemovalStep = std::function<void(const std::string& path)>;
// The folder with everything below it, one by one from below: one that does not go keeps those above it, and a folder's
// items go with it. Stopped, it leaves the folders alone that it has not begun; the first is. Objects of what went are
// gone afterwards. Throws Failure, having removed nothing, as RefuseUnseenFolders does; a look that fails afterwards
// throws nothing.
FolderRemoval RemoveFolder(Galleries& galleries, CQFolder& folder, const RemovalStep& step,
                           const std::atomic<bool>& stop);

// The item's placement in the folder, and the item itself with its last placement: its object may be gone afterwards.
// Whether the placement is still stored; nothing when the library does not tell. Throws nothing.
std::optional<bool> RemovePlacement(CQFolder& folder, const GUID& guid);

// Whether the item is stored although no folder of any gallery holds it: with its last placement it had to go. Nothing
// when the library does not tell. Throws nothing.
std::optional<bool> IsLeftBehind(Galleries& galleries, DBTools& tools, const GUID& guid);

}  // namespace qfc::host
