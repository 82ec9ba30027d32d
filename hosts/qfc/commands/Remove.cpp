#include "api/QFCLib.h"
#include "hosts/qfc/cli/Exit.h"
#include "hosts/qfc/commands/Commands.h"
#include "hosts/qfc/commands/Interrupt.h"
#include "hosts/qfc/library/ChangeLock.h"
#include "hosts/qfc/library/Find.h"
#include "hosts/qfc/library/LinkRelease.h"
#include "hosts/qfc/library/Removal.h"
#include "hosts/qfc/library/Text.h"
#include "hosts/qfc/library/Tree.h"
#include "hosts/qfc/library/Verify.h"

#include <algorithm>
#include <list>
#include <nlohmann/json.hpp>
#include <optional>

namespace qfc::host {
namespace {

struct Removed {
    std::vector<std::string> paths;
    std::vector<std::string> kept;  // What is still stored.
};

Removed RemoveHere(const FoundItem& found) {
    const std::string path = PathOf(*found.folder, *found.item);
    if (RemovePlacement(*found.folder, found.item->GetUniqueID())) return {{path}, {}};
    return {{}, {path}};
}

void RemoveFromGallery(CQGallery& gallery, const GUID& guid, Removed& removed) {
    CQItem* item = nullptr;
    if (!gallery.IsItemHasParentByGuid(guid, item)) return;
    const std::vector<CQFolder*> folders = FoldersOf(gallery, guid);
    const std::vector<std::string> paths = PathsOf(gallery, *item);
    QFCLibraryManager::fnDeleteItem(ToHandle(folders.front()), {guid}, 0);
    for (std::size_t i = 0; i < folders.size(); ++i) {
        const bool gone = IsPlaced(*gallery.GetDBTools(), folders[i]->GetDBId(), guid) == false;
        (gone ? removed.paths : removed.kept).push_back(paths[i]);
    }
}

Removed RemoveEverywhere(Galleries& galleries, const GUID& guid) {
    Removed removed;
    for (CQGallery* gallery : galleries.All()) RemoveFromGallery(*gallery, guid, removed);
    return removed;
}

bool IsLastPlacement(Galleries& galleries, const GUID& guid) {
    std::size_t placements = 0;
    for (CQGallery* gallery : galleries.All()) placements += FoldersOf(*gallery, guid).size();
    return placements <= 1;
}

// The links of tags to an item that goes are taken before it, and come back when it stays.
class TakenLinks {
public:
    // name: of the item, for a Failure.
    TakenLinks(DBTools& tools, const GUID& item, const std::string& name) : m_tools(tools), m_item(item) {
        const auto links = StoredLinks(tools, item);
        if (!links) throw Failure("cannot remove " + name + ": its tags cannot be read");
        m_tags.assign(links->begin(), links->end());
        if (m_tags.empty()) return;
        UnlinkStored({m_item}, m_tags);
        const auto left = StoredLinks(tools, item);
        if (left && left->empty()) return;
        throw Failure("cannot remove " + name + (PutBack() ? "" : "; it may have lost tags"));
    }

    // Tries twice: what kept the item from going may have passed.
    bool PutBack() const { return m_tags.empty() || PutBackOnce() || PutBackOnce(); }

private:
    bool PutBackOnce() const {
        LinkStored({m_item}, m_tags);
        const auto links = StoredLinks(m_tools, m_item);
        return links && std::includes(links->begin(), links->end(), m_tags.begin(), m_tags.end());
    }

    DBTools& m_tools;
    const GUID m_item;
    std::list<GUID> m_tags;  // Sorted.
};

}  // namespace

int Run(const RemoveItemOptions& options, const Console& console) {
    const ChangeLock lock;
    const Session session;
    Galleries galleries(session);
    const FoundItem found = FindItem(galleries, options.gallery, options.item);
    const GUID id = found.item->GetUniqueID();
    const std::string guid = GuidToText(id);
    const bool here = found.folder != nullptr && !options.everywhere;
    DBTools& tools = *found.gallery->GetDBTools();
    const Interrupt interrupt;  // An item that goes takes its links along.
    std::optional<TakenLinks> links;
    if (!here || IsLastPlacement(galleries, id)) links.emplace(tools, id, PathsOf(*found.gallery, *found.item).front());
    Removed removed = here ? RemoveHere(found) : RemoveEverywhere(galleries, id);
    const bool isLost = links && !IsItemGone(tools, id) && !links->PutBack();
    if (removed.kept.empty() && IsLeftBehind(galleries, tools, id)) removed.kept.push_back("the item " + guid);
    if (!ReleaseLinks(tools, {id}).empty()) removed.kept.push_back("the links of tags to the item " + guid);
    for (const std::string& path : removed.paths) console.Say("removed " + path);
    for (const std::string& path : removed.kept) console.Complain("cannot remove " + path);
    if (isLost) console.Complain("the item " + guid + " may have lost tags");
    console.ShowJson(
        {{"guid", guid}, {"removed", removed.paths}, {"failed", removed.kept}, {"mayHaveLostTags", isLost}});
    return removed.kept.empty() && !isLost ? kDone : kFailed;
}

}  // namespace qfc::host
