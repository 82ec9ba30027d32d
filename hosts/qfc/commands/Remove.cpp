#include "api/QFCLib.h"
#include "hosts/qfc/cli/Exit.h"
#include "hosts/qfc/commands/Commands.h"
#include "hosts/qfc/library/ChangeLock.h"
#include "hosts/qfc/library/Find.h"
#include "hosts/qfc/library/LinkRelease.h"
#include "hosts/qfc/library/Removal.h"
#include "hosts/qfc/library/Text.h"
#include "hosts/qfc/library/Tree.h"
#include "hosts/qfc/library/Verify.h"

#include <algorithm>
#include <iterator>
#include <nlohmann/json.hpp>

namespace qfc::host {
namespace {

struct Removed {
    std::vector<std::string> paths;
    std::vector<std::string> kept;  // What is still stored.
};

Removed RemoveHere(Galleries& galleries, const FoundItem& found) {
    const std::string path = PathOf(*found.folder, *found.item);
    DBTools& tools = *found.gallery->GetDBTools();
    LinkRelease links(galleries, {found.folder}, {found.item});
    if (!links.IsComplete()) return {{}, {path}};
    const bool removed = RemovePlacement(*found.folder, found.item->GetUniqueID());
    links.GiveBack(tools);
    if (removed) return {{path}, {}};
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

Removed RemoveEverywhere(Galleries& galleries, const FoundItem& found) {
    const GUID guid = found.item->GetUniqueID();
    Removed removed;
    std::vector<CQFolder*> leaving;
    std::vector<CQItem*> items;
    std::vector<std::string> paths;
    for (CQGallery* gallery : galleries.All()) {
        for (CQFolder* folder : FoldersOf(*gallery, guid)) leaving.push_back(folder);
        CQItem* item = nullptr;
        if (!gallery->IsItemHasParentByGuid(guid, item)) continue;
        items.push_back(item);
        std::ranges::copy(PathsOf(*gallery, *item), std::back_inserter(paths));
    }
    LinkRelease links(galleries, leaving, items);
    if (!links.IsComplete()) return {{}, paths};
    DBTools& tools = *found.gallery->GetDBTools();
    for (CQGallery* gallery : galleries.All()) RemoveFromGallery(*gallery, guid, removed);
    links.GiveBack(tools);
    return removed;
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
    Removed removed = here ? RemoveHere(galleries, found) : RemoveEverywhere(galleries, found);
    if (removed.kept.empty() && IsLeftBehind(galleries, *found.gallery->GetDBTools(), id)) {
        removed.kept.push_back("the item " + guid);
    }
    for (const std::string& path : removed.paths) console.Say("removed " + path);
    for (const std::string& path : removed.kept) console.Complain("cannot remove " + path);
    console.ShowJson({{"guid", guid}, {"removed", removed.paths}, {"failed", removed.kept}});
    return removed.kept.empty() ? kDone : kFailed;
}

}  // namespace qfc::host
