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

#include <nlohmann/json.hpp>

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
    Removed removed = here ? RemoveHere(found) : RemoveEverywhere(galleries, id);
    if (removed.kept.empty() && IsLeftBehind(galleries, tools, id)) removed.kept.push_back("the item " + guid);
    if (!ReleaseLinks(tools, {id}).empty()) removed.kept.push_back("the links of tags to the item " + guid);
    for (const std::string& path : removed.paths) console.Say("removed " + path);
    for (const std::string& path : removed.kept) console.Complain("cannot remove " + path);
    console.ShowJson({{"guid", guid}, {"removed", removed.paths}, {"failed", removed.kept}});
    return removed.kept.empty() ? kDone : kFailed;
}

}  // namespace qfc::host
