#include "hosts/qfc/library/Removal.h"

#include "api/QFCLib.h"
#include "hosts/qfc/library/Tree.h"
#include "hosts/qfc/library/Verify.h"

#include <algorithm>

namespace qfc::host {
namespace {

bool IsNothingLeft(DBTools& tools, int row) {
    const auto items = StoredItems(tools, row);
    return IsFolderGone(tools, row) && items && items->empty();
}

}  // namespace

bool RemoveFolder(CQFolder& folder) {
    // A folder without a row may not be given to the library: it would take the last one of its parent instead.
    if (folder.GetDBId() == -1 || folder.GetDBTools() == nullptr) return false;
    DBTools& tools = *folder.GetDBTools();
    std::vector<int> rows;
    for (const CQFolder* part : WholeTree(folder)) rows.push_back(part->GetDBId());
    QFCLibraryManager::fnDeleteFolder(ToHandle(&folder));
    return std::ranges::all_of(rows, [&](int row) { return IsNothingLeft(tools, row); });
}

bool RemovePlacement(CQFolder& folder, const GUID& guid) {
    if (folder.GetDBTools() == nullptr) return false;
    const GUID removed = guid;  // The reference may point into the item.
    QFCLibraryManager::fnDeleteItem(ToHandle(&folder), {removed}, 1);
    return !folder.HasItem(removed, 0) && IsPlaced(*folder.GetDBTools(), folder.GetDBId(), removed) == false;
}

}  // namespace qfc::host
