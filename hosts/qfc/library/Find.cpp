#include "hosts/qfc/library/Find.h"

#include "api/QFCLib.h"
#include "hosts/qfc/library/Paths.h"
#include "hosts/qfc/library/Text.h"
#include "hosts/qfc/library/Tree.h"

#include <algorithm>
#include <optional>
#include <span>

namespace qfc::host {
namespace {

// The named gallery, if it is stored, and then the others.
std::vector<CQGallery*> NamedFirst(Galleries& galleries, const std::string& gallery) {
    CQGallery* named = galleries.Find(gallery);
    std::vector<CQGallery*> all = galleries.All();
    std::stable_partition(all.begin(), all.end(), [&](const CQGallery* g) { return g == named; });
    return all;
}

CQFolder* Follow(CQFolder& start, std::span<const std::string> components) {
    CQFolder* folder = &start;
    for (const std::string& component : components) {
        folder = ChildNamed(*folder, component);
        if (folder == nullptr) return nullptr;
    }
    return folder;
}

FoundItem ByGuid(Galleries& galleries, const std::string& gallery, const GUID& guid) {
    for (CQGallery* candidate : NamedFirst(galleries, gallery)) {
        CQItem* item = nullptr;
        if (candidate->IsItemHasParentByGuid(guid, item)) return {candidate, item, nullptr};
    }
    return {};
}

std::vector<CQItem*> ItemsNamed(CQFolder& folder, const std::string& name) {
    std::vector<CQItem*> items = Items(folder);
    std::erase_if(items, [&](const CQItem* item) { return ToText(item->GetItemName()) != name; });
    if (!items.empty()) return items;
    items = Items(folder);
    std::erase_if(items, [&](const CQItem* item) { return ShownName(*item) != name; });
    return items;
}

// Where else in the gallery the name stands: the usual slip is to leave out the folder.
std::string Elsewhere(CQGallery& gallery, const std::string& name) {
    for (CQFolder* folder : WholeTree(gallery)) {
        const auto items = ItemsNamed(*folder, name);
        if (!items.empty()) return "; there is " + PathOf(*folder, *items.front());
    }
    return "";
}

std::string In(const CQGallery& gallery) { return " in the gallery " + Galleries::NameOf(gallery).name; }

std::optional<FoundItem> ItemByPath(CQGallery& gallery, const std::string& text) {
    const std::vector<std::string> components = SplitPath(text);
    if (components.empty()) return std::nullopt;
    CQFolder* folder = Follow(gallery, std::span(components).first(components.size() - 1));
    if (folder == nullptr) return std::nullopt;
    const std::vector<CQItem*> items = ItemsNamed(*folder, components.back());
    if (items.empty()) return std::nullopt;
    if (items.size() == 1) return FoundItem{&gallery, items.front(), folder};
    std::string guids;
    for (const CQItem* item : items) guids += (guids.empty() ? "" : ", ") + GuidToText(item->GetUniqueID());
    throw Ambiguous("several items are called " + text + "; name one by its GUID: " + guids);
}

std::optional<FoundFolder> FolderByPath(CQGallery& gallery, const std::string& text) {
    CQFolder* folder = Follow(gallery, SplitPath(text));
    if (folder == nullptr || folder == &gallery) return std::nullopt;
    return FoundFolder{&gallery, folder};
}

// What may have been meant instead of an item that is not there.
std::string ItemHint(CQGallery& gallery, const std::string& text) {
    try {
        if (FolderByPath(gallery, text)) return "; it is a folder";
    } catch (const Failure&) {  // Several are called so.
        return "; it is a folder";
    }
    const std::vector<std::string> components = SplitPath(text);
    return components.size() == 1 ? Elsewhere(gallery, components.front()) : "";
}

FoundFolder FolderByRow(Galleries& galleries, const std::string& gallery, int row) {
    for (CQGallery* candidate : NamedFirst(galleries, gallery)) {
        for (CQFolder* folder : WholeTree(*candidate)) {
            if (folder != candidate && folder->GetDBId() == row) return {candidate, folder};
        }
    }
    throw Failure("no folder #" + std::to_string(row));
}

CQGallery& Named(Galleries& galleries, const std::string& gallery, const std::string& text) {
    CQGallery* named = galleries.Find(gallery);
    if (named == nullptr) throw Failure("no " + text + ": the gallery has not been used yet");
    return *named;
}

}  // namespace

FoundItem FindItem(Galleries& galleries, const std::string& gallery, const std::string& text) {
    if (const auto guid = GuidFromText(text)) {
        const FoundItem found = ByGuid(galleries, gallery, *guid);
        if (found.item == nullptr) throw Failure("no item " + text);
        return found;
    }
    CQGallery& named = Named(galleries, gallery, "item " + text);
    const auto found = ItemByPath(named, text);
    if (!found) throw Failure("no item " + text + In(named) + ItemHint(named, text));
    return *found;
}

FoundFolder FindFolder(Galleries& galleries, const std::string& gallery, const std::string& text) {
    if (const auto row = RowNumber(text)) return FolderByRow(galleries, gallery, *row);
    CQGallery& named = Named(galleries, gallery, "folder " + text);
    const auto found = FolderByPath(named, text);
    if (!found) throw Failure("no folder " + text + In(named));
    return *found;
}

FoundFolder FindFolderOrRoot(Galleries& galleries, const std::string& gallery, const std::string& text) {
    if (!text.empty() && SplitPath(text).empty()) {
        CQGallery& named = Named(galleries, gallery, "folder " + text);
        return {&named, &named};
    }
    return FindFolder(galleries, gallery, text);
}

std::variant<FoundItem, FoundFolder> FindEither(Galleries& galleries, const std::string& gallery,
                                                const std::string& text) {
    if (GuidFromText(text)) return FindItem(galleries, gallery, text);
    if (RowNumber(text)) return FindFolder(galleries, gallery, text);
    CQGallery& named = Named(galleries, gallery, "item or folder " + text);
    const auto item = ItemByPath(named, text);
    const auto folder = FolderByPath(named, text);
    if (item && folder) {
        throw Failure(text + " is an item and a folder; name the item by its GUID " +
                      GuidToText(item->item->GetUniqueID()) + " or the folder as #" +
                      std::to_string(folder->folder->GetDBId()));
    }
    if (item) return *item;
    if (folder) return *folder;
    throw Failure("no item or folder " + text + In(named));
}

}  // namespace qfc::host
