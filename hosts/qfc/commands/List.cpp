#include "api/QFCLib.h"
#include "hosts/qfc/cli/Exit.h"
#include "hosts/qfc/commands/Commands.h"
#include "hosts/qfc/commands/Describe.h"
#include "hosts/qfc/commands/SortType.h"
#include "hosts/qfc/library/Find.h"
#include "hosts/qfc/library/Tags.h"
#include "hosts/qfc/library/Tree.h"

#include <nlohmann/json.hpp>

namespace qfc::host {

int Run(const ListOptions& options, const Console& console) {
    const Session session;
    Galleries galleries(session);
    const Tags tags(session);
    const FoundFolder found = FindFolderOrRoot(galleries, options.gallery, options.folder);
    // Only the loaded tree is sorted; the stored order stays.
    if (options.sort) found.folder->SortingAllItem(SortTypeOf(*options.sort), options.descending ? 0 : 1);

    Json json = FolderJson(*found.folder);
    json["folders"] = Json::array();
    json["items"] = Json::array();
    for (CQFolder* child : SubFolders(*found.folder)) {
        json["folders"].push_back(FolderJson(*child));
        console.Show("folder  #" + std::to_string(child->GetDBId()) + "  " + ShownName(*child) + "\\");
    }
    for (const CQItem* item : Items(*found.folder)) {
        json["items"].push_back(ItemJson(*found.gallery, *item, tags));
        // The time that is shown is the one that they are sorted by.
        const std::string names = TagNames(tags.Of(*item));
        const std::string name = ShownName(*item) + (names.empty() ? "" : "  [" + names + "]");
        const bool byDate = options.sort == SortKey::Date;
        console.Show(byDate ? ItemLine(*item, name, SortDate(*item).value_or("-")) : ItemLine(*item, name));
    }
    console.ShowJson(json);
    return kDone;
}

}  // namespace qfc::host
