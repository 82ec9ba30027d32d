#include "api/QFCLib.h"
#include "hosts/qfc/cli/Exit.h"
#include "hosts/qfc/commands/Commands.h"
#include "hosts/qfc/commands/Interrupt.h"
#include "hosts/qfc/library/ChangeLock.h"
#include "hosts/qfc/library/Find.h"
#include "hosts/qfc/library/LinkRelease.h"
#include "hosts/qfc/library/Removal.h"
#include "hosts/qfc/library/Tags.h"
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
    Remains remains;

    void Note(const std::string& path, std::optional<bool> isStored) {
        if (isStored == false) paths.push_back(path);
        remains.Note(path, isStored);
    }
};

void RemoveHere(const FoundItem& found, Removed& removed) {
    const std::string path = PathOf(*found.folder, *found.item);
    removed.Note(path, RemovePlacement(*found.folder, found.item->GetUniqueID()));
}

void RemoveFromGallery(CQGallery& gallery, const GUID& guid, Removed& removed) {
    CQItem* item = nullptr;
    if (!gallery.IsItemHasParentByGuid(guid, item)) return;
    const std::vector<CQFolder*> folders = FoldersOf(gallery, guid);
    const std::vector<std::string> paths = PathsOf(gallery, *item);
    QFCLibraryManager::fnDeleteItem(ToHandle(folders.front()), {guid}, 0);
    for (std::size_t i = 0; i < folders.size(); ++i) {
        removed.Note(paths[i], IsPlaced(*gallery.GetDBTools(), folders[i]->GetDBId(), guid));
    }
}

std::size_t CountPlacements(const std::vector<CQGallery*>& galleries, const GUID& guid) {
    std::size_t placements = 0;
    for (CQGallery* gallery : galleries) placements += FoldersOf(*gallery, guid).size();
    return placements;
}

// By name where they can be read.
std::vector<std::string> NamesOf(const Session& session, const std::list<GUID>& tags) {
    std::vector<std::string> names;
    std::optional<Tags> stored;
    try {
        stored.emplace(session);
    } catch (const Failure&) {  // Their GUIDs do.
    }
    for (const GUID& tag : tags) {
        const auto found = stored ? stored->ByGuid(tag) : std::nullopt;
        names.push_back(found ? QualifiedName(*found) : GuidToText(tag));
    }
    return names;
}

// The links of tags to an item that goes are taken before it, and come back when it stays.
class TakenLinks {
public:
    // name: of the item, for a Failure.
    TakenLinks(const Session& session, DBTools& tools, const GUID& item, const std::string& name)
        : m_session(session), m_tools(tools), m_item(item) {
        const auto links = StoredLinks(tools, item);
        if (!links) throw Failure("cannot remove " + name + ": its tags cannot be read");
        m_tags.assign(links->begin(), links->end());
        if (m_tags.empty()) return;
        UnlinkStored({m_item}, m_tags);
        const auto left = StoredLinks(tools, item);
        if (left && left->empty()) return;
        std::string text = "cannot remove " + name;
        for (const std::string& tag : Settle()) text += "; it may have lost the tag " + tag;
        throw Failure(text);
    }

    ~TakenLinks() {
        try {
            if (!m_isSettled) PutBack();
        } catch (const std::exception&) {  // Already on the way out for what cannot be told any more.
        }
    }
    TakenLinks(const TakenLinks&) = delete;
    TakenLinks& operator=(const TakenLinks&) = delete;

    // Puts them back unless the item is gone. The tags that it may have lost.
    std::vector<std::string> Settle() {
        m_isSettled = true;
        if (IsItemGone(m_tools, m_item) || PutBack()) return {};
        return NamesOf(m_session, m_tags);
    }

private:
    // Tries twice: what kept the item from going may have passed.
    bool PutBack() const { return m_tags.empty() || PutBackOnce() || PutBackOnce(); }
    bool PutBackOnce() const {
        LinkStored({m_item}, m_tags);
        const auto links = StoredLinks(m_tools, m_item);
        return links && std::includes(links->begin(), links->end(), m_tags.begin(), m_tags.end());
    }

    const Session& m_session;
    DBTools& m_tools;
    const GUID m_item;
    std::list<GUID> m_tags;  // Sorted.
    bool m_isSettled = false;
};

// What became of the item itself, and of what still names it.
void LookAtItem(Galleries& galleries, DBTools& tools, const GUID& id, Removed& removed) {
    const std::string guid = GuidToText(id);
    // What still has a place, or may have one, is not left behind.
    if (removed.remains.IsEmpty()) {
        const auto isLeft = IsLeftBehind(galleries, tools, id);
        if (isLeft == true) removed.remains.Note("the item " + guid + ", which no folder holds; check lists it", true);
        if (!isLeft) removed.remains.Note("the item " + guid, std::nullopt);
    }
    removed.remains.Add(ReleaseLinks(tools, {id}));
}

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
    // Before anything changes: afterwards nobody may be in the way of what is told.
    const std::vector<CQGallery*> all = galleries.All();
    const Interrupt interrupt;  // An item that goes takes its links along.
    std::optional<TakenLinks> links;
    if (!here || CountPlacements(all, id) <= 1)
        links.emplace(session, tools, id, PathsOf(*found.gallery, *found.item).front());
    Removed removed;
    if (here) {
        RemoveHere(found, removed);
    } else {
        for (CQGallery* gallery : all) RemoveFromGallery(*gallery, id, removed);
    }
    const std::vector<std::string> lost = links ? links->Settle() : std::vector<std::string>{};
    LookAtItem(galleries, tools, id, removed);
    for (const std::string& path : removed.paths) console.Say("removed " + path);
    for (const std::string& line : removed.remains.Lines()) console.Complain(line);
    for (const std::string& tag : lost) console.Complain("the item " + guid + " may have lost the tag " + tag);
    console.ShowJson({{"guid", guid},
                      {"removed", removed.paths},
                      {"failed", removed.remains.stored},
                      {"unseen", removed.remains.unseen},
                      {"mayHaveLostTags", lost}});
    return removed.remains.IsEmpty() && lost.empty() ? kDone : kFailed;
}

}  // namespace qfc::host
