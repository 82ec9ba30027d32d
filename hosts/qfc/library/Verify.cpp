#include "hosts/qfc/library/Verify.h"

#include "api/QFCLib.h"
#include "db/CppSQLite3.h"
#include "db/DbRecords.h"
#include "hosts/qfc/library/Tree.h"

#include <algorithm>

namespace qfc::host {
namespace {

// A damaged library may lack columns, and reading one that is missing throws.
template <class Read>
auto Guarded(Read&& read) -> decltype(read()) {
    try {
        return read();
    } catch (const CppSQLite3Exception&) {
        return {};
    }
}

}  // namespace

std::unique_ptr<CQItem> LoadFresh(DBTools& tools, const GUID& guid) {
    auto item = std::make_unique<CQItem>();
    item->SetUniqueID(guid);
    item->fnSetDbTools(&tools);
    if (!item->fnLoadItemFromDb()) item.reset();
    return item;
}

bool StandsIn(CQFolder& folder, const GUID& guid) {
    const std::vector<CQItem*> items = Items(folder);
    return std::any_of(items.rbegin(), items.rend(), [&](const CQItem* item) { return item->GetUniqueID() == guid; });
}

std::optional<bool> HoldsItem(CQFolder& folder, const GUID& guid) {
    auto* gallery = static_cast<CQGallery*>(folder.GetRoot());
    DBTools* tools = folder.GetDBTools();
    if (gallery == nullptr || tools == nullptr || !StandsIn(folder, guid)) return false;
    const std::vector<CQFolder*> holders = FoldersOf(*gallery, guid);
    if (std::ranges::find(holders, &folder) == holders.end()) return false;
    return IsItemStored(*tools, guid);
}

std::optional<bool> IsItemStored(DBTools& tools, const GUID& guid) {
    CppSQLite3Query query;
    if (!tools.QueryItem(guid, query)) return std::nullopt;
    return !query.eof();
}

std::optional<bool> HasStoredPayload(DBTools& tools, CQItem& item, int kind) {
    if (kind == kFilm && (item.GetAttrib() & kAttribHasFilm) == 0) return false;
    return Guarded([&]() -> std::optional<bool> {
        CppSQLite3Query query;
        if (!tools.QueryCacheData(std::as_const(item).GetUniqueID(), kind, query)) return std::nullopt;
        return !query.eof() && query.getIntField("PRE_COMPRESSED_SIZE", 0) != 0;
    });
}

std::optional<std::set<GUID>> ItemsWithPayload(DBTools& tools, int kind) {
    std::vector<qfc::PayloadSize> rows;
    if (!tools.QueryCacheSizes(kind, rows)) return std::nullopt;
    std::set<GUID> items;
    for (const qfc::PayloadSize& row : rows) items.insert(row.itemId);
    return items;
}

bool IsItemGone(DBTools& tools, const GUID& guid) { return IsItemStored(tools, guid) == false; }

std::optional<std::set<GUID>> StoredLinks(DBTools& tools, const GUID& guid) {
    return Guarded([&]() -> std::optional<std::set<GUID>> {
        CppSQLite3Query query;
        if (!tools.QueryItemTags(guid, query)) return std::nullopt;
        std::set<GUID> tags;
        for (; !query.eof(); query.nextRow()) {
            int length = 0;
            const unsigned char* bytes = query.getBlobField("TAGS_GUID", length);
            if (const auto tag = GuidFromBytes(bytes, static_cast<std::size_t>(length))) tags.insert(*tag);
        }
        return tags;
    });
}

std::optional<std::vector<StoredPlacement>> StoredPlacements(DBTools& tools, int folderRow) {
    return Guarded([&]() -> std::optional<std::vector<StoredPlacement>> {
        CppSQLite3Query query;
        if (!tools.QueryFolderItems(folderRow, query)) return std::nullopt;
        std::vector<StoredPlacement> placements;
        for (; !query.eof(); query.nextRow()) {
            int length = 0;
            const unsigned char* bytes = query.getBlobField("ITEM_ID", length);
            const auto guid = GuidFromBytes(bytes, static_cast<std::size_t>(length));
            if (guid) placements.push_back({*guid, query.getIntField("ITEM_INDEX", -1)});
        }
        return placements;
    });
}

std::optional<std::vector<GUID>> StoredItems(DBTools& tools, int folderRow) {
    const auto placements = StoredPlacements(tools, folderRow);
    if (!placements) return std::nullopt;
    std::vector<GUID> guids;
    for (const StoredPlacement& placement : *placements) guids.push_back(placement.item);
    return guids;
}

std::optional<std::vector<int>> StoredSubFolders(DBTools& tools, int folderRow) {
    return Guarded([&]() -> std::optional<std::vector<int>> {
        CppSQLite3Query query;
        if (!tools.QueryChildFolders(folderRow, query)) return std::nullopt;
        std::vector<int> rows;
        for (; !query.eof(); query.nextRow()) rows.push_back(query.getIntField("ID", -1));
        return rows;
    });
}

std::optional<std::set<GUID>> StoredItemSet(DBTools& tools, int folderRow) {
    const auto stored = StoredItems(tools, folderRow);
    if (!stored) return std::nullopt;
    return std::set<GUID>(stored->begin(), stored->end());
}

std::optional<bool> IsPlaced(DBTools& tools, int folderRow, const GUID& guid) {
    const auto stored = StoredItems(tools, folderRow);
    if (!stored) return std::nullopt;
    return std::ranges::find(*stored, guid) != stored->end();
}

std::optional<StoredFolder> LoadStoredFolder(DBTools& tools, int folderRow) {
    return Guarded([&]() -> std::optional<StoredFolder> {
        CppSQLite3Query query;
        if (!tools.QueryFolder(folderRow, query) || query.eof()) return std::nullopt;
        return StoredFolder{query.getIntField("PARENT_ID", -1), query.getIntField("ORDER_INDEX", -1),
                            query.getStringField("FOLDER_NAME")};
    });
}

bool RestoreTrusty(CQFolder& folder) {
    if (folder.GetDBTools() == nullptr) return true;
    // Alone: another library may be of before folders had all columns.
    const auto trusty = Guarded([&]() -> std::optional<unsigned> {
        CppSQLite3Query query;
        if (!folder.GetDBTools()->QueryFolder(folder.GetDBId(), query) || query.eof()) return std::nullopt;
        return static_cast<unsigned>(query.getIntField("TRUSTY_TYPE", 0));
    });
    if (trusty) folder.SetTrusty(*trusty);
    return trusty.has_value();
}

std::optional<bool> IsFolderStored(DBTools& tools, int folderRow) {
    CppSQLite3Query query;
    if (!tools.QueryFolder(folderRow, query)) return std::nullopt;
    return !query.eof();
}

bool IsFolderGone(DBTools& tools, int folderRow) { return IsFolderStored(tools, folderRow) == false; }

}  // namespace qfc::host
