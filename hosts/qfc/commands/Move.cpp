#include "api/QFCLib.h"
#include "hosts/qfc/cli/Exit.h"
#include "hosts/qfc/commands/Commands.h"
#include "hosts/qfc/commands/Describe.h"
#include "hosts/qfc/commands/Interrupt.h"
#include "hosts/qfc/library/ChangeLock.h"
#include "hosts/qfc/library/Placement.h"
#include "hosts/qfc/library/Removal.h"
#include "hosts/qfc/library/Text.h"
#include "hosts/qfc/library/Tree.h"
#include "hosts/qfc/library/Verify.h"

#include <algorithm>
#include <limits>
#include <nlohmann/json.hpp>

namespace qfc::host {
namespace {

// Where the target's path counts from: the named gallery, else that of what is moved.
CQFolder& Target(Galleries& galleries, const MoveOptions& options, const CQGallery& gallery) {
    const std::string named = options.gallery.empty() ? std::to_string(Galleries::NameOf(gallery).id) : options.gallery;
    const FoundFolder target = FindFolderOrRoot(galleries, named, options.target);
    if (target.gallery != &gallery) throw Failure("nothing moves from one gallery to another");
    return *target.folder;
}

// --- Items --------------------------------------------------------------------------------------------------------

void RefuseItemTarget(CQGallery& gallery, CQFolder& target, const CQItem& item) {
    if (&target == &gallery) throw Failure("the gallery itself holds no items; name a folder");
    if (target.HasItem(item.GetUniqueID(), 0)) throw Failure("the item is in " + PathOf(target) + " already");
    RefuseItemClash(target, item, ToText(item.GetItemName()));
    RequireReachable(gallery, target);
}

bool AddPlacement(CQGallery& gallery, CQFolder& target, CQItem& item) {
    QFCLibraryManager::fnAddItem(ToHandle(&gallery), {ToCString(StoredPathOf(target))}, &item);
    return HoldsItem(target, item.GetUniqueID()) == true &&
           IsPlaced(*gallery.GetDBTools(), target.GetDBId(), item.GetUniqueID()) == true;
}

// Only an item that surely stands at the source is taken from the target: with its last placement it would go itself.
std::string TakeBack(CQFolder& source, CQFolder& target, const GUID& guid) {
    DBTools& tools = *source.GetDBTools();
    if (IsPlaced(tools, target.GetDBId(), guid) == false) return {};
    const bool isAtSource = IsPlaced(tools, source.GetDBId(), guid) == true;
    if (isAtSource && RemovePlacement(target, guid) == false) return {};
    return "; it may now also be in " + PathOf(target);
}

Json MoveItem(const FoundItem& found, CQFolder& target) {
    CQFolder& source = PlacementOf(found);
    CQItem& item = *found.item;
    const GUID guid = item.GetUniqueID();
    const std::string from = PathOf(source, item);
    RefuseItemTarget(*found.gallery, target, item);
    if (!AddPlacement(*found.gallery, target, item)) {
        throw Failure("cannot move " + from + " to " + PathOf(target) + TakeBack(source, target, guid));
    }
    auto isAtSource = RemovePlacement(source, guid);
    if (!isAtSource) isAtSource = IsPlaced(*source.GetDBTools(), source.GetDBId(), guid);
    if (isAtSource == true) throw Failure("cannot move " + from + TakeBack(source, target, guid));
    if (isAtSource == false) return ItemJson(*found.gallery, item);
    throw Failure(from + " is now in " + PathOf(target) +
                  ", but the library does not say whether it left its old place");
}

// --- Folders ------------------------------------------------------------------------------------------------------

void RefuseFolderTarget(CQFolder& folder, CQFolder& target) {
    const std::string path = PathOf(folder);
    if (target.IsSubfolderOf(&folder)) throw Failure(path + " cannot be moved into itself");
    if (folder.GetParent() == &target) throw Failure(path + " is there already");
    RefuseFolderClash(target, folder, ToText(folder.GetFolderName()));
    RequireLevels(LevelOf(target) + 1 + LevelsBelow(folder));
    if (folder.GetDBId() == -1) throw Failure(path + " is not stored in the library");
}

int IndexBehindLast(CQFolder& parent) {
    int index = 0;
    for (const CQFolder* child : SubFolders(parent)) index = std::max(index, child->GetIndex());
    if (index < std::numeric_limits<int>::max()) return index + 1;
    throw Failure("no folder can be put last in " + PathOf(parent) + "; reorder its folders first");
}

Json MoveFolder(CQFolder& folder, CQFolder& target) {
    RefuseFolderTarget(folder, target);
    CQFolder& parent = *folder.GetParent();
    CQFolder* next = folder.GetNextSib();
    const int index = folder.GetIndex();
    const std::string from = PathOf(folder);

    const int newIndex = IndexBehindLast(target);
    folder.DetachParent(0);
    if (target.AddFolder(&folder, 0, 1)) {
        folder.SetIndex(newIndex);
        if (StoreFolder(folder)) return FolderJson(folder);
        folder.DetachParent(0);
    }
    if (next == nullptr || !parent.Insert(next, &folder, 0)) parent.AddFolder(&folder, 0, 1);
    folder.SetIndex(index);
    const bool undone = StoreFolder(folder);
    throw Failure("cannot move " + from + (undone ? "" : "; look at the library with check"));
}

}  // namespace

int Run(const MoveOptions& options, const Console& console) {
    const ChangeLock lock;
    const Session session;
    Galleries galleries(session);
    const auto what = FindEither(galleries, options.gallery, options.what);
    const Interrupt interrupt;  // Nothing ends up in two places.
    Json json;
    bool isLast = true;
    if (const auto* item = std::get_if<FoundItem>(&what)) {
        CQFolder& target = Target(galleries, options, *item->gallery);
        json["item"] = MoveItem(*item, target);
        isLast = MendItemOrder(target);
        console.Say("moved to " + PathOf(target, *item->item));
        if (!isLast) console.Complain("cannot put the item last in " + PathOf(target));
    } else {
        const FoundFolder folder = std::get<FoundFolder>(what);
        CQFolder& target = Target(galleries, options, *folder.gallery);
        json["folder"] = MoveFolder(*folder.folder, target);
        console.Say("moved to " + PathOf(*folder.folder));
    }
    console.ShowJson(json);
    return isLast ? kDone : kFailed;
}

}  // namespace qfc::host
