#include "hosts/qfc/library/Tree.h"

#include "api/QFCLib.h"
#include "hosts/qfc/cli/Exit.h"
#include "hosts/qfc/commands/Commands.h"
#include "hosts/qfc/commands/Describe.h"
#include "hosts/qfc/library/Galleries.h"
#include "hosts/qfc/library/Text.h"

#include <nlohmann/json.hpp>

namespace qfc::host {
namespace {

Json TreeJson(CQFolder& folder, CQGallery& gallery) {
    Json json = FolderJson(folder);
    json["items"] = Json::array();
    json["folders"] = Json::array();
    for (const CQItem* item : Items(folder)) json["items"].push_back(ItemJson(gallery, *item));
    for (CQFolder* child : SubFolders(folder)) json["folders"].push_back(TreeJson(*child, gallery));
    return json;
}

void ShowBranch(CQFolder& folder, const std::string& indent, const Console& console) {
    const std::vector<CQFolder*> folders = SubFolders(folder);
    const std::vector<CQItem*> items = Items(folder);
    std::size_t left = folders.size() + items.size();
    for (const CQItem* item : items) {
        console.Show(indent + (--left > 0 ? "├── " : "└── ") + ShownName(*item) + "  (" + KindOf(*item) + ")");
    }
    for (CQFolder* child : folders) {
        const bool last = --left == 0;
        console.Show(indent + (last ? "└── " : "├── ") + ShownName(*child) + "  #" + std::to_string(child->GetDBId()));
        ShowBranch(*child, indent + (last ? "    " : "│   "), console);
    }
}

}  // namespace

int Run(const TreeOptions& options, const Console& console) {
    const Session session;
    Galleries galleries(session);
    const GalleryName name = galleries.Resolve(options.gallery);
    // A predefined gallery that nobody has used yet is empty; looking does not make it.
    CQGallery unused(ToCString(name.name), 0, 0, 0);
    CQGallery* found = galleries.Find(options.gallery);
    CQGallery& gallery = found != nullptr ? *found : unused;

    Json json = TreeJson(gallery, gallery);
    json["id"] = name.id;
    console.ShowJson(json);
    console.Show(name.name);
    ShowBranch(gallery, "", console);
    std::size_t placements = 0;
    const std::vector<CQFolder*> folders = WholeTree(gallery);
    for (CQFolder* folder : folders) placements += Items(*folder).size();
    console.Say(Counted(folders.size() - 1, "folder") + ", " + Counted(placements, "item"));
    return kDone;
}

}  // namespace qfc::host
