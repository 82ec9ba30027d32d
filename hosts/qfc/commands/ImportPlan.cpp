#include "hosts/qfc/commands/ImportPlan.h"

#include "api/QFCLib.h"
#include "hosts/qfc/library/Paths.h"
#include "hosts/qfc/library/Text.h"
#include "hosts/qfc/library/Tree.h"

#include <algorithm>
#include <map>

namespace qfc::host {
namespace {

constexpr const char* kFolderOfSingleFiles = "Imported";

std::map<std::string, const CQItem*> ItemsByFile(CQGallery& gallery) {
    std::map<std::string, const CQItem*> items;
    for (CQFolder* folder : WholeTree(gallery)) {
        for (const CQItem* item : Items(*folder)) items.emplace(ToText(item->GetFileName()), item);
    }
    return items;
}

std::vector<std::string> FolderOf(const WalkedFile& file, const std::vector<std::string>& base) {
    std::vector<std::string> folder = base;
    for (const std::string& name : file.folders) folder.push_back(FolderComponent(name));
    // The gallery itself holds no items.
    if (folder.empty()) folder.emplace_back(kFolderOfSingleFiles);
    return folder;
}

// The library would give such a name back changed, and the next import would not know the file.
bool IsNameUsable(const WalkedFile& file) {
    return IsUtf8(file.path) && IsUtf8(file.name) && std::ranges::all_of(file.folders, IsUtf8);
}

}  // namespace

ImportPlan PlanImport(const Walk& walk, CQGallery& gallery, const std::vector<std::string>& base) {
    ImportPlan plan;
    plan.problems = walk.problems;
    const auto known = ItemsByFile(gallery);
    for (const WalkedFile& file : walk.files) {
        if (const auto item = known.find(file.path); item != known.end()) {
            plan.already.push_back({file.path, PathsOf(gallery, *item->second)});
        } else {
            // A path to the item needs a name without separator.
            plan.files.push_back({file.path, FolderComponent(file.name), FolderOf(file, base), file.folders.empty(),
                                  IsNameUsable(file)});
        }
    }
    return plan;
}

}  // namespace qfc::host
