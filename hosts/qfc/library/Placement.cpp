#include "hosts/qfc/library/Placement.h"

#include "api/QFCLib.h"
#include "hosts/qfc/cli/Exit.h"
#include "hosts/qfc/library/Text.h"
#include "hosts/qfc/library/Tree.h"
#include "hosts/qfc/library/Verify.h"

#include <algorithm>
#include <functional>
#include <map>

namespace qfc::host {
namespace {

// The two names of an item or a folder. A path may use either, so neighbours share none.
struct Called {
    std::string stored;
    std::string shown;

    bool Clashes(const Called& other) const {
        return stored == other.stored || stored == other.shown || shown == other.stored || shown == other.shown;
    }
};

}  // namespace

CQFolder& PlacementOf(const FoundItem& found) {
    if (found.folder != nullptr) return *found.folder;
    const std::vector<CQFolder*> folders = FoldersOf(*found.gallery, found.item->GetUniqueID());
    if (folders.size() == 1) return *folders.front();
    std::string paths;
    for (const CQFolder* folder : folders) paths += (paths.empty() ? "" : ", ") + PathOf(*folder, *found.item);
    throw Failure("several folders hold the item; name one by its path: " + paths);
}

void RefuseItemClash(CQFolder& folder, const CQItem& item, const std::string& name) {
    const Called called{name, ShownAs(item, name)};
    for (const CQItem* other : Items(folder)) {
        if (other->IsSameItem(&item) || !called.Clashes({ToText(other->GetItemName()), ShownName(*other)})) continue;
        throw Failure("there is an item " + PathOf(folder, *other) + " already");
    }
}

void RefuseFolderClash(CQFolder& parent, const CQFolder& folder, const std::string& name) {
    const Called called{name, ShownAs(folder, name)};
    for (CQFolder* other : SubFolders(parent)) {
        if (other == &folder || !called.Clashes({ToText(other->GetFolderName()), ShownName(*other)})) continue;
        throw Failure("there is a folder " + PathOf(*other) + " already");
    }
}

void RequireReachable(CQGallery& gallery, const CQFolder& folder) {
    if (gallery.GetFolderByPath(ToCString(StoredPathOf(folder))) == &folder) return;
    throw Failure(PathOf(folder) + " cannot be reached by its path; rename it first");
}

bool StoreFolder(CQFolder& folder) {
    RestoreTrusty(folder);
    QFCLibraryManager::fnUpdateFolder(ToHandle(&folder), folder.GetFolderName(), folder.GetAdopt(), folder.GetTrusty(),
                                      folder.GetExtra());
    const auto stored = LoadStoredFolder(*folder.GetDBTools(), folder.GetDBId());
    return stored && stored->parentRow == folder.GetParent()->GetDBId() && stored->index == folder.GetIndex();
}

void MendItemOrder(CQFolder& folder) {
    const auto placements = StoredPlacements(*folder.GetDBTools(), folder.GetDBId());
    if (!placements) return;
    std::map<GUID, int> numbers;
    for (const StoredPlacement& placement : *placements) numbers[placement.item] = placement.number;
    std::vector<int> order;
    for (const CQItem* item : Items(folder)) {
        const auto number = numbers.find(item->GetUniqueID());
        // Writing the order would place it.
        if (number == numbers.end()) return;
        order.push_back(number->second);
    }
    if (std::ranges::adjacent_find(order, std::greater_equal<>()) == order.end()) return;
    int first = 0;
    while (order[static_cast<std::size_t>(first)] == first) ++first;
    folder.ReOrderItemsDb(first, -1);
}

}  // namespace qfc::host
