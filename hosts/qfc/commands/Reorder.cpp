#include "api/QFCLib.h"
#include "hosts/qfc/cli/Exit.h"
#include "hosts/qfc/commands/Commands.h"
#include "hosts/qfc/commands/Describe.h"
#include "hosts/qfc/commands/SortType.h"
#include "hosts/qfc/library/ChangeLock.h"
#include "hosts/qfc/library/Placement.h"
#include "hosts/qfc/library/Tree.h"
#include "hosts/qfc/library/Verify.h"

#include <algorithm>
#include <nlohmann/json.hpp>

namespace qfc::host {
namespace {

// Stores the whole order: after removals positions may be missing or stand twice, so a part would not do.
void StoreItemOrder(CQFolder& folder) {
    folder.ReOrderItemsDb(0, -1);
    std::vector<GUID> wanted;
    for (const CQItem* item : Items(folder)) wanted.push_back(item->GetUniqueID());
    auto stored = StoredItems(*folder.GetDBTools(), folder.GetDBId());
    // A damaged library may place items that do not exist; the tree leaves them out.
    const auto unknown = [&](const GUID& guid) { return std::ranges::find(wanted, guid) == wanted.end(); };
    if (!stored) throw Failure("cannot tell whether the order of " + PathOf(folder) + " is stored");
    std::erase_if(*stored, unknown);
    if (stored != wanted) throw Failure("cannot store the order of " + PathOf(folder));
}

void StoreFolderOrder(CQFolder& parent) {
    const std::vector<CQFolder*> folders = SubFolders(parent);
    for (std::size_t i = 0; i < folders.size(); ++i) folders[i]->SetIndex(static_cast<int>(i) + 1);
    // The whole tree below is written.
    for (CQFolder* folder : WholeTree(parent)) {
        if (!RestoreTrusty(*folder)) throw Failure("cannot read the folder " + PathOf(*folder));
    }
    parent.UpdateSubFolderIndexDB();
    for (const CQFolder* folder : folders) {
        const auto stored = LoadStoredFolder(*parent.GetDBTools(), folder->GetDBId());
        if (folders.size() < 2 || (stored && stored->index == folder->GetIndex())) continue;
        if (stored) throw Failure("cannot store the place of " + PathOf(*folder));
        throw Failure("cannot tell whether the place of " + PathOf(*folder) + " is stored");
    }
}

std::size_t PlaceAmong(std::size_t count, int to) {
    const auto place = static_cast<std::size_t>(to);
    if (place > count) throw Failure("there are only " + std::to_string(count) + " places");
    return place - 1;
}

void MoveItemTo(const FoundItem& found, int to) {
    CQFolder& folder = PlacementOf(found);
    CQFolder::ItemArray& array = *folder.GetItemArray();
    const std::size_t place = PlaceAmong(static_cast<std::size_t>(array.GetSize()), to);
    const auto at = std::find(array.begin(), array.end(), found.item);
    if (at == array.end()) throw Failure("the item is not where its path says");
    int index = 0;
    for (auto step = array.begin(); step != at; ++step) ++index;
    array.RemoveAt(index);
    array.InsertAt(static_cast<int>(place), found.item);
    StoreItemOrder(folder);
}

void MoveFolderTo(CQFolder& folder, int to) {
    CQFolder& parent = *folder.GetParent();
    std::vector<CQFolder*> siblings = SubFolders(parent);
    const std::size_t place = PlaceAmong(siblings.size(), to);
    std::erase(siblings, &folder);
    folder.DetachParent(0);
    if (place == siblings.size() || !parent.Insert(siblings[place], &folder, 0)) parent.AddFolder(&folder, 0, 1);
    StoreFolderOrder(parent);
}

Json FolderOrder(CQFolder& folder) {
    Json json = FolderJson(folder);
    json["items"] = Json::array();
    for (const CQItem* item : Items(folder)) json["items"].push_back(GuidToText(item->GetUniqueID()));
    return json;
}

}  // namespace

int Run(const ReorderOptions& options, const Console& console) {
    const ChangeLock lock;
    const Session session;
    Galleries galleries(session);
    Json json;
    if (options.by) {
        CQFolder& folder = *FindFolder(galleries, options.gallery, options.what).folder;
        if (Items(folder).empty()) throw Failure(PathOf(folder) + " holds no items to order");
        folder.SortingAllItem(SortTypeOf(*options.by), options.descending ? 0 : 1);
        StoreItemOrder(folder);
        json["folder"] = FolderOrder(folder);
    } else {
        const auto what = FindEither(galleries, options.gallery, options.what);
        if (const auto* item = std::get_if<FoundItem>(&what)) {
            MoveItemTo(*item, *options.to);
            json["folder"] = FolderOrder(PlacementOf(*item));
        } else {
            MoveFolderTo(*std::get<FoundFolder>(what).folder, *options.to);
            json["folder"] = FolderJson(*std::get<FoundFolder>(what).folder);
        }
    }
    console.Say("stored the new order");
    console.ShowJson(json);
    return kDone;
}

}  // namespace qfc::host
