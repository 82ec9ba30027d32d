#include "hosts/qfc/library/Removal.h"

#include "api/QFCLib.h"
#include "hosts/qfc/cli/Exit.h"
#include "hosts/qfc/library/LinkRelease.h"
#include "hosts/qfc/library/Tree.h"
#include "hosts/qfc/library/Verify.h"

#include <algorithm>
#include <fmt/format.h>
#include <map>
#include <set>

namespace qfc::host {
namespace {

// What a folder is made of, as it was before.
struct Parts {
    struct Part {
        std::string path;
        std::set<GUID> items;
    };
    std::map<int, Part> folders;        // By row.
    std::map<GUID, std::string> items;  // One path each.
};

Parts PartsOf(CQFolder& folder) {
    Parts parts;
    for (CQFolder* each : WholeTree(folder)) {
        Parts::Part& part = parts.folders[each->GetDBId()];
        part.path = PathOf(*each);
        for (const CQItem* item : Items(*each)) {
            part.items.insert(item->GetUniqueID());
            parts.items.emplace(item->GetUniqueID(), PathOf(*each, *item));
        }
    }
    return parts;
}

constexpr const char* kInterrupted = "interrupted";

// How far a removal went.
struct Way {
    std::string halt;         // Why it was left at that; empty when it went to its end.
    std::set<int> untouched;  // Rows of the folders left alone.
};

// A folder whose row may stay keeps those above it: they would leave it without a parent.
Way TakeFromBelow(DBTools& tools, CQFolder& folder, const RemovalStep& step, const std::atomic<bool>& stop) {
    std::vector<CQFolder*> tree = WholeTree(folder);
    std::ranges::reverse(tree);
    Way way;
    for (const CQFolder* each : tree) way.untouched.insert(each->GetDBId());
    for (CQFolder* each : tree) {
        const std::string path = PathOf(*each);
        const int row = each->GetDBId();
        if (stop && each != tree.front()) way.halt = kInterrupted;
        if (!way.halt.empty()) break;
        way.untouched.erase(row);
        step(path);
        QFCLibraryManager::fnDeleteFolder(ToHandle(each));
        Remains remains;
        auto isStored = IsFolderStored(tools, row);
        if (!isStored) isStored = IsFolderStored(tools, row);  // What kept it from being seen may have passed.
        remains.Note(path, isStored);
        if (!remains.IsEmpty()) way.halt = remains.Lines().front();
    }
    return way;
}

std::vector<GUID> GuidsOf(const std::map<GUID, std::string>& items) {
    std::vector<GUID> guids;
    for (const auto& [guid, path] : items) guids.push_back(guid);
    return guids;
}

class Looking {
public:
    Looking(DBTools& tools, const Parts& parts, FolderRemoval& removal)
        : m_tools(tools), m_parts(parts), m_removal(removal) {}

    // root: the row of the folder that was to go.
    void LookAtFolders(int root, const std::set<int>& untouched) {
        m_removal.foldersBefore = m_parts.folders.size();
        m_removal.itemsBefore = m_parts.items.size();
        for (const auto& [row, part] : m_parts.folders) {
            const auto isStored = LookAtFolder(row, part);
            if (isStored == false) ++m_removal.foldersGone;
            if (!untouched.contains(row)) m_removal.folders.Note(part.path, isStored);
            if (row == root) m_removal.isStored = isStored;
        }
        m_removal.itemsPlaced = m_placed.size();
    }
    // Those that are still placed in these folders go or stay with them.
    void LookAtItems(Galleries& galleries) {
        for (const auto& [guid, path] : m_parts.items) {
            if (m_placed.contains(guid)) continue;
            const auto isStored = IsItemStored(m_tools, guid);
            if (isStored == false) m_removal.isBegun = true;
            if (isStored == false) continue;
            const bool isUnseen = m_unread.contains(guid);
            m_removal.items.Note(NameOf(guid), isUnseen ? std::nullopt : IsLeftBehind(galleries, m_tools, guid));
        }
    }

private:
    // Whether its row is stored; nothing when that, or what is placed in it, cannot be told.
    std::optional<bool> LookAtFolder(int row, const Parts::Part& part) {
        const auto isStored = IsFolderStored(m_tools, row);
        const auto placed = StoredItems(m_tools, row);
        if (isStored == false) m_removal.isBegun = true;
        if (!placed) {
            m_unread.insert(part.items.begin(), part.items.end());
            return isStored == false ? std::nullopt : isStored;
        }
        const std::set<GUID> now(placed->begin(), placed->end());
        if (!std::includes(now.begin(), now.end(), part.items.begin(), part.items.end())) m_removal.isBegun = true;
        for (const GUID& guid : now) {
            if (m_placed.insert(guid).second && isStored == false) m_removal.items.stored.push_back(NameOf(guid));
        }
        return isStored;
    }
    std::string NameOf(const GUID& guid) const {
        const auto known = m_parts.items.find(guid);
        return known != m_parts.items.end() ? known->second + " " + GuidToText(guid) : GuidToText(guid);
    }

    DBTools& m_tools;
    const Parts& m_parts;
    FolderRemoval& m_removal;
    std::set<GUID> m_placed;  // In one of these folders still.
    std::set<GUID> m_unread;  // Of folders that do not tell.
};

}  // namespace

void RefuseUnseenFolders(CQFolder& folder) {
    const std::vector<CQFolder*> parts = WholeTree(folder);
    std::set<int> rows;
    for (const CQFolder* part : parts) rows.insert(part->GetDBId());
    for (const CQFolder* part : parts) {
        if (part->GetDBId() == -1 || part->GetDBTools() == nullptr) continue;  // The number above every gallery.
        const auto children = StoredSubFolders(*part->GetDBTools(), part->GetDBId());
        if (!children) throw Failure("cannot look below " + PathOf(*part));
        if (std::ranges::all_of(*children, [&](int row) { return rows.contains(row); })) continue;
        throw Failure("cannot remove the folder #" + std::to_string(part->GetDBId()) +
                      ": below it are others that were not loaded, maybe too deep; move it up first");
    }
}

bool FolderRemoval::IsInterrupted() const { return halt == kInterrupted; }

std::string FolderRemoval::CountsGone() const {
    std::string text;
    if (foldersGone > 0) text = fmt::format("{} of {} folders", foldersGone, foldersBefore);
    if (itemsPlaced >= itemsBefore) return text;
    return text + fmt::format("{}{} of {} items", text.empty() ? "" : " and ", itemsBefore - itemsPlaced, itemsBefore);
}

std::vector<std::string> FolderRemoval::Lines() const {
    std::vector<std::string> lines;
    if (!isBegun && !folders.stored.empty()) {
        lines.push_back("cannot remove " + path);
    } else {
        lines = folders.Lines();
        for (std::string& line : lines) line += isStored == false ? "; check lists what is left" : "";
        if (!halt.empty() && std::ranges::find(lines, halt) == lines.end()) lines.insert(lines.begin(), halt);
    }
    for (const std::string& item : items.stored) {
        lines.push_back("the item " + item + " is left without a folder; check lists it");
    }
    for (const std::string& item : items.unseen) lines.push_back("cannot tell whether " + item + " is removed");
    if (isStored == true && isBegun) {
        const std::string went = CountsGone();
        if (!went.empty()) lines.push_back(went + " are not seen in " + path + " any more");
    }
    if (!links.stored.empty()) {
        lines.push_back((isStored == false ? path + " is removed, but links of tags to its items are left"
                                           : "links of tags to items of " + path + " are left") +
                        "; check lists them");
    }
    if (!links.unseen.empty()) lines.push_back("cannot tell whether links of tags to items of " + path + " are left");
    return lines;
}

std::string FolderRemoval::Text() const {
    std::string text;
    for (const std::string& line : Lines()) text += (text.empty() ? "" : "; ") + line;
    return text;
}

FolderRemoval RemoveFolder(Galleries& galleries, CQFolder& folder, const RemovalStep& step,
                           const std::atomic<bool>& stop) {
    FolderRemoval removal;
    removal.path = PathOf(folder);
    // A folder without a row may not be given to the library: it would take the last one of its parent instead.
    if (folder.GetDBId() == -1 || folder.GetDBTools() == nullptr) {
        removal.isStored = true;
        removal.folders.stored.push_back(removal.path);
        return removal;
    }
    RefuseUnseenFolders(folder);
    DBTools& tools = *folder.GetDBTools();
    const int row = folder.GetDBId();
    const Parts parts = PartsOf(folder);
    Way way = TakeFromBelow(tools, folder, step, stop);
    removal.halt = std::move(way.halt);
    removal.links = ReleaseLinks(tools, GuidsOf(parts.items));
    Looking looking(tools, parts, removal);
    looking.LookAtFolders(row, way.untouched);
    looking.LookAtItems(galleries);
    if (removal.isStored == false) removal.halt.clear();
    removal.isWhole = removal.halt.empty() && removal.folders.IsEmpty() && removal.items.IsEmpty();
    return removal;
}

std::optional<bool> RemovePlacement(CQFolder& folder, const GUID& guid) {
    if (folder.GetDBTools() == nullptr) return true;
    const GUID removed = guid;  // The reference may point into the item.
    QFCLibraryManager::fnDeleteItem(ToHandle(&folder), {removed}, 1);
    if (StandsIn(folder, removed)) return true;
    return IsPlaced(*folder.GetDBTools(), folder.GetDBId(), removed);
}

std::optional<bool> IsLeftBehind(Galleries& galleries, DBTools& tools, const GUID& guid) {
    // Most are gone, which one look tells; only for the others every gallery is loaded.
    const auto isStored = IsItemStored(tools, guid);
    if (isStored != true) return isStored;
    try {
        return std::ranges::none_of(galleries.All(),
                                    [&](CQGallery* gallery) { return !FoldersOf(*gallery, guid).empty(); });
    } catch (const Failure&) {
        return std::nullopt;
    }
}

}  // namespace qfc::host
