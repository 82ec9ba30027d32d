#include "api/QFCLib.h"
#include "hosts/qfc/cli/Exit.h"
#include "hosts/qfc/commands/Commands.h"
#include "hosts/qfc/commands/Describe.h"
#include "hosts/qfc/library/ChangeLock.h"
#include "hosts/qfc/library/Paths.h"
#include "hosts/qfc/library/Placement.h"
#include "hosts/qfc/library/Text.h"
#include "hosts/qfc/library/Tree.h"
#include "hosts/qfc/library/Verify.h"

#include <functional>
#include <nlohmann/json.hpp>
#include <optional>

namespace qfc::host {
namespace {

constexpr DWORD kFieldsOnly = 1;  // Names, texts, masks and timestamp; no payload.

// Writes a name and looks what is stored then; nothing when the library does not tell. What cannot be seen is taken
// back, so that a failure leaves everything as it was.
void StoreName(const std::string& old, const std::string& name, const std::function<void(const std::string&)>& write,
               const std::function<std::optional<std::string>()>& stored) {
    write(name);
    const auto now = stored();
    if (now == name) return;
    if (now) throw Failure("cannot rename to " + name);
    write(old);
    const std::string unseen = ": the library cannot be looked at";
    if (stored() == old) throw Failure("cannot rename to " + name + unseen);
    throw Failure(old + " may now be called " + name + unseen);
}

std::optional<std::string> StoredItemName(const CQGallery& gallery, const GUID& guid) {
    if (IsItemGone(*gallery.GetDBTools(), guid)) throw Failure("the item is gone");
    const auto fresh = LoadFresh(*gallery.GetDBTools(), guid);
    return fresh != nullptr ? std::optional(ToText(fresh->GetItemName())) : std::nullopt;
}

std::optional<std::string> StoredFolderName(const CQFolder& folder) {
    if (IsFolderGone(*folder.GetDBTools(), folder.GetDBId())) throw Failure("the folder is gone");
    const auto stored = LoadStoredFolder(*folder.GetDBTools(), folder.GetDBId());
    return stored ? std::optional(stored->name) : std::nullopt;
}

Json RenameItem(const FoundItem& found, const std::string& name) {
    CQItem& item = *found.item;
    const GUID guid = item.GetUniqueID();
    for (CQFolder* folder : FoldersOf(*found.gallery, guid)) RefuseItemClash(*folder, item, name);
    // The mask carries more than the name, so the rest of it has to be the item's own.
    CQItem renamed;
    renamed.Copy(&item, kFieldsOnly);
    const auto write = [&](const std::string& text) {
        renamed.SetItemName(ToCString(text));
        QFCLibraryManager::fnUpdateItem(ToHandle(found.gallery), &renamed, guid, kFieldsOnly);
    };
    StoreName(ToText(item.GetItemName()), name, write, [&] { return StoredItemName(*found.gallery, guid); });
    return ItemJson(*found.gallery, item);
}

Json RenameFolder(CQFolder& folder, const std::string& name) {
    RefuseFolderClash(*folder.GetParent(), folder, name);
    if (folder.GetDBId() == -1) throw Failure(PathOf(folder) + " is not stored in the library");
    if (!RestoreTrusty(folder)) throw Failure("cannot read the folder " + PathOf(folder));
    const auto write = [&](const std::string& text) {
        QFCLibraryManager::fnUpdateFolder(ToHandle(&folder), ToCString(text), folder.GetAdopt(), folder.GetTrusty(),
                                          folder.GetExtra());
    };
    StoreName(ToText(folder.GetFolderName()), name, write, [&] { return StoredFolderName(folder); });
    return FolderJson(folder);
}

}  // namespace

int Run(const RenameOptions& options, const Console& console) {
    RequireName(options.name);
    const ChangeLock lock;
    const Session session;
    Galleries galleries(session);
    const auto what = FindEither(galleries, options.gallery, options.what);
    Json json;
    if (const auto* item = std::get_if<FoundItem>(&what)) {
        json["item"] = RenameItem(*item, options.name);
    } else {
        json["folder"] = RenameFolder(*std::get<FoundFolder>(what).folder, options.name);
    }
    console.Say("renamed to " + options.name);
    console.ShowJson(json);
    return kDone;
}

}  // namespace qfc::host
