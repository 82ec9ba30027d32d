#include "hosts/qfc/library/Verify.h"

#include "api/QFCLib.h"
#include "db/CppSQLite3.h"
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

bool HoldsItem(CQFolder& folder, const GUID& guid) {
    const auto* gallery = static_cast<const CQGallery*>(folder.GetRoot());
    DBTools* tools = folder.GetDBTools();
    if (gallery == nullptr || tools == nullptr || !folder.HasItem(guid, 0)) return false;
    const std::vector<CQFolder*> holders = FoldersOf(*gallery, guid);
    return std::ranges::find(holders, &folder) != holders.end() && LoadFresh(*tools, guid) != nullptr;
}

std::optional<std::vector<GUID>> StoredItems(DBTools& tools, int folderRow) {
    return Guarded([&]() -> std::optional<std::vector<GUID>> {
        CppSQLite3Query query;
        if (!tools.QueryFolderItems(folderRow, query)) return std::nullopt;
        std::vector<GUID> guids;
        for (; !query.eof(); query.nextRow()) {
            int length = 0;
            const unsigned char* bytes = query.getBlobField("ITEM_ID", length);
            if (const auto guid = GuidFromBytes(bytes, static_cast<std::size_t>(length))) guids.push_back(*guid);
        }
        return guids;
    });
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

bool IsFolderGone(DBTools& tools, int folderRow) {
    CppSQLite3Query query;
    return tools.QueryFolder(folderRow, query) && query.eof();
}

}  // namespace qfc::host
