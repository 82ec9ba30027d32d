#include "hosts/qfc/library/Removal.h"

#include "api/QFCLib.h"
#include "hosts/qfc/cli/Exit.h"
#include "hosts/qfc/library/LinkRelease.h"
#include "hosts/qfc/library/Tree.h"
#include "hosts/qfc/library/Verify.h"

#include <algorithm>
#include <set>

namespace qfc::host {
namespace {

bool IsNothingLeft(DBTools& tools, int row) {
    const auto items = StoredItems(tools, row);
    return IsFolderGone(tools, row) && items && items->empty();
}

}  // namespace

void RefuseUnseenFolders(CQFolder& folder) {
    const std::vector<CQFolder*> parts = WholeTree(folder);
    std::set<int> rows;
    for (const CQFolder* part : parts) rows.insert(part->GetDBId());
    for (const CQFolder* part : parts) {
        if (part->GetDBId() == -1 || part->GetDBTools() == nullptr) continue;  // The number above every gallery.
        const auto children = StoredSubFolders(*part->GetDBTools(), part->GetDBId());
        if (!children) throw Failure("cannot look below " + PathOf(*part));
        if (std::ranges::all_of(*children, [&](int row) { return rows.contains(row); })) continue;
        throw Failure("cannot remove the folder #" + std::to_string(part->GetDBId()) +
                      ": below it are others that were not loaded, maybe too deep; move it up first");
    }
}

FolderRemoval RemoveFolder(Galleries& galleries, CQFolder& folder) {
    // A folder without a row may not be given to the library: it would take the last one of its parent instead.
    if (folder.GetDBId() == -1 || folder.GetDBTools() == nullptr) return FolderRemoval::kFailed;
    RefuseUnseenFolders(folder);
    DBTools& tools = *folder.GetDBTools();
    std::set<int> rows;
    std::set<GUID> guids;
    for (CQFolder* part : WholeTree(folder)) {
        rows.insert(part->GetDBId());
        for (const CQItem* item : Items(*part)) guids.insert(item->GetUniqueID());
    }
    QFCLibraryManager::fnDeleteFolder(ToHandle(&folder));
    const bool isLinked = !ReleaseLinks(tools, {guids.begin(), guids.end()}).empty();
    const bool isGone =
        std::ranges::all_of(rows, [&](int row) { return IsNothingLeft(tools, row); }) &&
        std::ranges::none_of(guids, [&](const GUID& guid) { return IsLeftBehind(galleries, tools, guid); });
    if (!isGone) return FolderRemoval::kFailed;
    return isLinked ? FolderRemoval::kLinksLeft : FolderRemoval::kDone;
}

bool RemovePlacement(CQFolder& folder, const GUID& guid) {
    if (folder.GetDBTools() == nullptr) return false;
    const GUID removed = guid;  // The reference may point into the item.
    QFCLibraryManager::fnDeleteItem(ToHandle(&folder), {removed}, 1);
    return !StandsIn(folder, removed) && IsPlaced(*folder.GetDBTools(), folder.GetDBId(), removed) == false;
}

bool IsLeftBehind(Galleries& galleries, DBTools& tools, const GUID& guid) {
    // Most are gone, which one look tells; only for the others every gallery is loaded.
    if (IsItemGone(tools, guid)) return false;
    return std::ranges::none_of(galleries.All(),
                                [&](CQGallery* gallery) { return !FoldersOf(*gallery, guid).empty(); });
}

}  // namespace qfc::host
