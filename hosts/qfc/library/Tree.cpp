#include "hosts/qfc/library/Tree.h"

#include "api/QFCLib.h"
#include "hosts/qfc/cli/Exit.h"
#include "hosts/qfc/library/Paths.h"
#include "hosts/qfc/library/Text.h"

#include <algorithm>

namespace qfc::host {

std::vector<CQFolder*> SubFolders(CQFolder& folder) {
    std::vector<CQFolder*> folders;
    if (const auto* list = folder.GetFolderList()) {
        for (CQFolder* child : *list) {
            if (child != nullptr) folders.push_back(child);
        }
    }
    return folders;
}

std::vector<CQItem*> Items(CQFolder& folder) {
    std::vector<CQItem*> items;
    if (const auto* array = folder.GetItemArray()) {
        for (CQItem* item : *array) {
            if (item != nullptr) items.push_back(item);
        }
    }
    return items;
}

std::vector<CQFolder*> WholeTree(CQFolder& folder) {
    std::vector<CQFolder*> tree;
    // Depth is whatever the file says, so the walk keeps its own stack.
    std::vector<CQFolder*> waiting{&folder};
    while (!waiting.empty()) {
        CQFolder* next = waiting.back();
        waiting.pop_back();
        tree.push_back(next);
        const std::vector<CQFolder*> children = SubFolders(*next);
        waiting.insert(waiting.end(), children.rbegin(), children.rend());
    }
    return tree;
}

std::vector<CQFolder*> ChildrenNamed(CQFolder& folder, const std::string& name) {
    std::vector<CQFolder*> children = SubFolders(folder);
    std::erase_if(children, [&](const CQFolder* child) { return ToText(child->GetFolderName()) != name; });
    if (!children.empty()) return children;
    children = SubFolders(folder);
    std::erase_if(children, [&](CQFolder* child) { return ShownName(*child) != name; });
    return children;
}

CQFolder* ChildNamed(CQFolder& folder, const std::string& name) {
    const std::vector<CQFolder*> children = ChildrenNamed(folder, name);
    if (children.size() > 1) RefuseSeveral(children, Below(PathOf(folder), name));
    return children.empty() ? nullptr : children.front();
}

void RefuseSeveral(const std::vector<CQFolder*>& folders, const std::string& path) {
    std::string rows;
    for (const CQFolder* folder : folders) rows += (rows.empty() ? "#" : ", #") + std::to_string(folder->GetDBId());
    throw Failure("several folders are called " + path + ": " + rows);
}

std::size_t LevelOf(const CQFolder& folder) {
    std::size_t level = 0;
    for (const CQFolder* above = folder.GetParent(); above != nullptr; above = above->GetParent()) ++level;
    return level;
}

std::size_t LevelsBelow(CQFolder& folder) {
    std::size_t levels = 0;
    for (std::vector<CQFolder*> level = SubFolders(folder); !level.empty(); ++levels) {
        std::vector<CQFolder*> next;
        for (CQFolder* each : level) {
            const std::vector<CQFolder*> children = SubFolders(*each);
            next.insert(next.end(), children.begin(), children.end());
        }
        level = std::move(next);
    }
    return levels;
}

void RequireLevels(std::size_t levels) {
    if (levels > kMostLevels)
        throw Failure("folders cannot lie deeper than " + std::to_string(kMostLevels) + " levels");
}

std::string ShownName(CQFolder& folder) { return ToText(GetFolderDisplayName(&folder, nullptr)); }

std::string ShownName(const CQItem& item) { return ShownAs(item, ToText(item.GetItemName())); }

std::string ShownAs(const CQFolder& folder, const std::string& name) {
    CQFolder copy(folder);
    copy.GetFolderName() = ToCString(name);
    return ShownName(copy);
}

std::string ShownAs(const CQItem& item, const std::string& name) {
    switch (item.GetItemType()) {
        case item_type::kVideo:
        case item_type::kTransition:
        case item_type::kVideoFilter:
        case item_type::kAudioFilter:
        case item_type::kSpeed:
            break;
        default:
            return name;
    }
    CQItem copy(ToCString(name));
    copy.SetItemType(item.GetItemType());
    copy.fnTranslateItemName();
    return ToText(copy.GetItemName());
}

std::vector<std::string> ComponentsOf(const CQFolder& folder) {
    std::vector<std::string> components;
    for (const CQFolder* f = &folder; f->GetParent() != nullptr; f = f->GetParent()) {
        components.push_back(ToText(f->GetFolderName()));
    }
    std::ranges::reverse(components);
    return components;
}

std::string StoredPathOf(const CQFolder& folder) { return JoinPath(ComponentsOf(folder)); }

std::vector<std::string> ShownComponentsOf(const CQFolder& folder) {
    std::vector<std::string> components;
    // Showing a folder keeps its translation in it, and changes nothing else.
    for (auto* f = const_cast<CQFolder*>(&folder); f->GetParent() != nullptr; f = f->GetParent()) {
        components.push_back(ShownName(*f));
    }
    std::ranges::reverse(components);
    return components;
}

std::string PathOf(const CQFolder& folder) { return JoinPath(ShownComponentsOf(folder)); }

std::string PathOf(const CQFolder& folder, const CQItem& item) { return Below(PathOf(folder), ShownName(item)); }

std::vector<CQFolder*> FoldersOf(CQGallery& gallery, const GUID& guid) {
    std::vector<CQFolder*> folders;
    for (const ULONGLONG handle : gallery.GetItemParentList(guid)) {
        // The index may keep the handle of a folder that is gone.
        CQFolder* folder = AsFolder(handle);
        if (gallery.IsSubFolderValid(folder)) folders.push_back(folder);
    }
    return folders;
}

std::vector<std::string> PathsOf(CQGallery& gallery, const CQItem& item) {
    std::vector<std::string> paths;
    for (const CQFolder* folder : FoldersOf(gallery, item.GetUniqueID())) paths.push_back(PathOf(*folder, item));
    return paths;
}

const char* KindOf(const CQItem& item) {
    switch (item.GetItemType()) {
        case 1:
            return "video";
        case 2:
            return "audio";
        case 4:
            return "image";
        case item_type::kTransition:
            return "transition";
        case item_type::kVideoFilter:
            return "filter";
        default:
            return "other";
    }
}

}  // namespace qfc::host
