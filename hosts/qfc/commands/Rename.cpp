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

#include <nlohmann/json.hpp>

namespace qfc::host {
namespace {

constexpr DWORD kFieldsOnly = 1;  // Names, texts, masks and timestamp; no payload.

Json RenameItem(const FoundItem& found, const std::string& name) {
    CQItem& item = *found.item;
    for (CQFolder* folder : FoldersOf(*found.gallery, item.GetUniqueID())) RefuseItemClash(*folder, item, name);
    // The mask carries more than the name, so the rest of it has to be the item's own.
    CQItem renamed;
    renamed.Copy(&item, kFieldsOnly);
    renamed.SetItemName(ToCString(name));
    QFCLibraryManager::fnUpdateItem(ToHandle(found.gallery), &renamed, item.GetUniqueID(), kFieldsOnly);
    const auto fresh = LoadFresh(*found.gallery->GetDBTools(), item.GetUniqueID());
    if (fresh == nullptr || ToText(fresh->GetItemName()) != name) throw Failure("cannot rename to " + name);
    return ItemJson(*found.gallery, item);
}

Json RenameFolder(CQFolder& folder, const std::string& name) {
    RefuseFolderClash(*folder.GetParent(), folder, name);
    if (folder.GetDBId() == -1) throw Failure(PathOf(folder) + " is not stored in the library");
    RestoreTrusty(folder);
    QFCLibraryManager::fnUpdateFolder(ToHandle(&folder), ToCString(name), folder.GetAdopt(), folder.GetTrusty(),
                                      folder.GetExtra());
    const auto stored = LoadStoredFolder(*folder.GetDBTools(), folder.GetDBId());
    if (!stored || stored->name != name) throw Failure("cannot rename to " + name);
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
