#include "hosts/qfc/library/LinkRelease.h"

#include "api/QFCLib.h"
#include "hosts/qfc/cli/Exit.h"
#include "hosts/qfc/library/Tags.h"
#include "hosts/qfc/library/Tree.h"
#include "hosts/qfc/library/Verify.h"

#include <algorithm>
#include <functional>
#include <map>
#include <memory>
#include <set>
#include <utility>

namespace qfc::host {
namespace {

std::list<GUID> TagsOf(const CQItem& item) {
    std::list<GUID> tags;
    item.CopyTagVec(tags);
    return tags;
}

bool IsHeldElsewhere(Galleries& galleries, const std::vector<CQFolder*>& leaving, const GUID& guid) {
    return std::ranges::any_of(galleries.All(), [&](CQGallery* gallery) {
        return std::ranges::any_of(FoldersOf(*gallery, guid), [&](CQFolder* folder) {
            return std::ranges::find(leaving, folder) == leaving.end();
        });
    });
}

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

// Tags do not lead to all of them: some links are to tags that nobody sees, or that are gone.
std::set<GUID> LinkedWithoutRow() {
    const std::string library = LibraryPath();
    std::vector<LibraryFinding> findings;
    if (!fnCheckLibrary(library.c_str(), findings)) throw Failure("cannot read " + library);
    std::set<GUID> items;
    for (const LibraryFinding& finding : findings) {
        if (finding.kind != LibraryFindingKind::kLinkWithoutItem) continue;
        if (const auto guid = GuidFromText(finding.row)) items.insert(*guid);
    }
    return items;
}

}  // namespace

LinkRelease::LinkRelease(Galleries& galleries, const std::vector<CQFolder*>& leaving,
                         const std::vector<CQItem*>& items) {
    std::map<std::vector<GUID>, std::vector<CQItem*>> groups;
    for (CQItem* item : items) {
        const std::list<GUID> tags = TagsOf(*item);
        if (tags.empty() || IsHeldElsewhere(galleries, leaving, std::as_const(*item).GetUniqueID())) continue;
        std::vector<CQItem*>& group = groups[{tags.begin(), tags.end()}];
        if (std::ranges::find(group, item) == group.end()) group.push_back(item);
    }
    for (const auto& [tags, group] : groups) {
        Taken taken{{tags.begin(), tags.end()}, {}};
        for (const CQItem* item : group) taken.items.push_back(item->GetUniqueID());
        QFCLibraryManager::fnDeleteLibTagFromItem(group, taken.tags);
        if (TagsOf(*group.front()).empty()) {
            m_taken.push_back(std::move(taken));
            continue;
        }
        GiveBack(*group.front()->fnGetDbTools());
        m_isComplete = false;
        return;
    }
}

void LinkRelease::GiveBack(DBTools& tools) {
    for (Taken& taken : m_taken) {
        std::erase_if(taken.items, [&](const GUID& guid) { return LoadFresh(tools, guid) == nullptr; });
        if (taken.items.empty()) continue;
        LinkStored(taken.items, taken.tags);
    }
    m_taken.clear();
}

void LinkStored(const std::vector<GUID>& items, const std::list<GUID>& tags) {
    WithStandIns(items, [&](const auto& standIns) { QFCLibraryManager::fnInsertLibTag2Item(standIns, tags); });
}

void UnlinkStored(const std::vector<GUID>& items, const std::list<GUID>& tags) {
    WithStandIns(items, [&](const auto& standIns) { QFCLibraryManager::fnDeleteLibTagFromItem(standIns, tags); });
}

void ReleaseAllLinks(const Session& session) {
    const Tags tags(session);
    std::map<GUID, std::vector<GUID>> links;
    for (const GUID& item : LinkedWithoutRow()) {
        for (const GUID& tag : tags.LinksOf(item)) links[tag].push_back(item);
    }
    for (const auto& [tag, linked] : links) UnlinkStored(linked, {tag});
    if (!LinkedWithoutRow().empty()) throw Failure("cannot clear the links of tags");
}

}  // namespace qfc::host
