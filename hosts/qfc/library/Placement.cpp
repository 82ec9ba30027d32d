#include "hosts/qfc/library/Placement.h"

#include "api/QFCLib.h"
#include "hosts/qfc/cli/Exit.h"
#include "hosts/qfc/library/Text.h"
#include "hosts/qfc/library/Tree.h"
#include "hosts/qfc/library/Verify.h"

#include <algorithm>
#include <functional>
#include <limits>
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

// Without items that the database does not have there: writing their number would place them.
std::vector<StoredPlacement> InTreeOrder(CQFolder& folder, const std::vector<StoredPlacement>& placements) {
    std::map<GUID, int> numbers;
    for (const StoredPlacement& placement : placements) numbers[placement.item] = placement.number;
    std::vector<StoredPlacement> order;
    for (const CQItem* item : Items(folder)) {
        const auto number = numbers.extract(item->GetUniqueID());
        if (!number.empty()) order.push_back({number.key(), number.mapped()});
    }
    return order;
}

bool IsInOrder(const std::vector<StoredPlacement>& order) {
    return std::ranges::adjacent_find(order, std::greater_equal<>(), &StoredPlacement::number) == order.end();
}

// What keeps a look from seeing anything may have passed.
std::optional<std::vector<StoredPlacement>> LookTwice(DBTools& tools, int folderRow) {
    auto placements = StoredPlacements(tools, folderRow);
    return placements ? std::move(placements) : StoredPlacements(tools, folderRow);
}

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
    if (!RestoreTrusty(folder)) return false;
    QFCLibraryManager::fnUpdateFolder(ToHandle(&folder), folder.GetFolderName(), folder.GetAdopt(), folder.GetTrusty(),
                                      folder.GetExtra());
    const auto stored = LoadStoredFolder(*folder.GetDBTools(), folder.GetDBId());
    return stored && stored->parentRow == folder.GetParent()->GetDBId() && stored->index == folder.GetIndex();
}

bool MendItemOrder(CQFolder& folder) {
    DBTools& tools = *folder.GetDBTools();
    const auto placements = LookTwice(tools, folder.GetDBId());
    if (!placements) return false;
    std::vector<StoredPlacement> order = InTreeOrder(folder, *placements);
    if (IsInOrder(order)) return true;
    for (std::size_t i = 1; i < order.size(); ++i) {
        if (order[i].number > order[i - 1].number) continue;
        if (order[i - 1].number == std::numeric_limits<int>::max()) return false;
        order[i].number = order[i - 1].number + 1;
        if (!tools.ReOrderItemsDb(order[i].item, folder.GetDBId(), order[i].number)) return false;
    }
    const auto stored = LookTwice(tools, folder.GetDBId());
    return stored && IsInOrder(InTreeOrder(folder, *stored));
}

}  // namespace qfc::host
