#include "hosts/qfc/library/Placement.h"

#include "api/QFCLib.h"
#include "hosts/qfc/cli/Exit.h"
#include "hosts/qfc/library/Text.h"
#include "hosts/qfc/library/Tree.h"

namespace qfc::host {

CQFolder& PlacementOf(const FoundItem& found) {
    if (found.folder != nullptr) return *found.folder;
    const std::vector<CQFolder*> folders = FoldersOf(*found.gallery, found.item->GetUniqueID());
    if (folders.size() == 1) return *folders.front();
    std::string paths;
    for (const CQFolder* folder : folders) paths += (paths.empty() ? "" : ", ") + PathOf(*folder, *found.item);
    throw Failure("several folders hold the item; name one by its path: " + paths);
}

void RefuseItemClash(CQFolder& folder, const CQItem& item, const std::string& name) {
    for (const CQItem* other : Items(folder)) {
        if (!other->IsSameItem(&item) && ToText(other->GetItemName()) == name) {
            throw Failure("there is an item " + PathOf(folder, *other) + " already");
        }
    }
}

}  // namespace qfc::host
