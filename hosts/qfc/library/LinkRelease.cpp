#include "hosts/qfc/library/LinkRelease.h"

#include "api/QFCLib.h"
#include "hosts/qfc/library/Verify.h"

#include <functional>
#include <map>
#include <memory>
#include <optional>
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

// Nothing when the library does not tell. An item that is stored has its links rightly.
std::optional<bool> AreLinksLeft(DBTools& tools, const GUID& item) {
    const auto tags = StoredLinks(tools, item);
    if (tags && tags->empty()) return false;
    const auto isStored = IsItemStored(tools, item);
    if (isStored == true) return false;
    if (!isStored || !tags) return std::nullopt;
    return true;
}

}  // namespace

Remains ReleaseLinks(DBTools& tools, const std::vector<GUID>& items) {
    std::map<GUID, std::vector<GUID>> links;
    std::vector<GUID> looked;
    for (const GUID& item : items) {
        const auto tags = StoredLinks(tools, item);
        if (tags && tags->empty()) continue;
        const auto isStored = IsItemStored(tools, item);
        if (isStored == true) continue;
        looked.push_back(item);
        if (!isStored) continue;  // It may stay, and would lose its tags.
        for (const GUID& tag : tags.value_or(std::set<GUID>{})) links[tag].push_back(item);
    }
    for (const auto& [tag, carriers] : links) UnlinkStored(carriers, {tag});
    Remains remains;
    for (const GUID& item : looked) {
        const std::string name = "the links of tags to the item " + GuidToText(item);
        remains.Note(name, AreLinksLeft(tools, item));
    }
    return remains;
}

void LinkStored(const std::vector<GUID>& items, const std::list<GUID>& tags) {
    WithStandIns(items, [&](const auto& standIns) { QFCLibraryManager::fnInsertLibTag2Item(standIns, tags); });
}

void UnlinkStored(const std::vector<GUID>& items, const std::list<GUID>& tags) {
    WithStandIns(items, [&](const auto& standIns) { QFCLibraryManager::fnDeleteLibTagFromItem(standIns, tags); });
}

}  // namespace qfc::host
