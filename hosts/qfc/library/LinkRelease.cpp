#include "hosts/qfc/library/LinkRelease.h"

#include "api/QFCLib.h"
#include "hosts/qfc/library/Verify.h"

#include <algorithm>
#include <functional>
#include <iterator>
#include <map>
#include <memory>
#include <set>

namespace qfc::host {
namespace {

// The library changes links of items that it is given; for those that have no object others stand in.
void WithStandIns(const std::vector<GUID>& guids, const std::function<void(const std::vector<CQItem*>&)>& act) {
    std::vector<std::unique_ptr<CQItem>> items;
    std::vector<CQItem*> pointers;
    for (const GUID& guid : guids) {
        items.push_back(std::make_unique<CQItem>());
        items.back()->SetUniqueID(guid);
        pointers.push_back(items.back().get());
    }
    act(pointers);
}

}  // namespace

std::vector<GUID> ReleaseLinks(DBTools& tools, const std::vector<GUID>& items) {
    std::map<GUID, std::vector<GUID>> links;
    std::set<GUID> linked;
    for (const GUID& item : items) {
        const auto tags = StoredLinks(tools, item);
        if (tags && tags->empty()) continue;
        const auto isStored = IsItemStored(tools, item);
        if (isStored == true) continue;
        linked.insert(item);
        if (!isStored) continue;  // It may stay, and would lose its tags.
        for (const GUID& tag : tags.value_or(std::set<GUID>{})) links[tag].push_back(item);
    }
    for (const auto& [tag, carriers] : links) UnlinkStored(carriers, {tag});
    std::vector<GUID> left;
    std::ranges::copy_if(linked, std::back_inserter(left), [&](const GUID& item) {
        const auto tags = StoredLinks(tools, item);
        return !tags || !tags->empty();
    });
    return left;
}

void LinkStored(const std::vector<GUID>& items, const std::list<GUID>& tags) {
    WithStandIns(items, [&](const auto& standIns) { QFCLibraryManager::fnInsertLibTag2Item(standIns, tags); });
}

void UnlinkStored(const std::vector<GUID>& items, const std::list<GUID>& tags) {
    WithStandIns(items, [&](const auto& standIns) { QFCLibraryManager::fnDeleteLibTagFromItem(standIns, tags); });
}

}  // namespace qfc::host
