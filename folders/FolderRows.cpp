#include "folders/FolderRows.h"

#include "db/Columns.h"
#include "db/CppSQLite3.h"
#include "db/DBTools.h"
#include "db/TreeRows.h"
#include "items/CQItem.h"
#include "items/ItemRows.h"
#include "items/RowReader.h"
#include "platform/framework/GuidHash.h"

#include <algorithm>
#include <unordered_map>
#include <utility>

namespace qfc {

namespace {

std::unique_ptr<CQItem> NewItem(const GUID& guid, DBTools& tools) {
    auto item = std::make_unique<CQItem>(guid);
    item->fnSetDbTools(&tools);
    return item;
}

class SingleRows : public FolderRows {
public:
    explicit SingleRows(DBTools& tools) : m_tools(tools) {}

    std::optional<FolderRow> Folder(int nFolder) override {
        CppSQLite3Query query;
        if (!m_tools.QueryFolder(nFolder, query)) return std::nullopt;
        const RowReader row(query);
        if (row.AtEnd()) return std::nullopt;
        FolderRow folder;
        folder.version = row.Text(column::kVersion, "");
        folder.predefinedId = row.Int(column::kPredefinedId, -1);
        folder.name = row.NameText(column::kFolderName, "");
        folder.adoptType = row.Int(column::kAdoptType, -1);
        folder.trustyType = row.Int(column::kTrustyType, -1);
        folder.typeExtra = row.Int(column::kTypeExtra, -1);
        folder.expandType = row.Int(column::kExpandType, -1);
        folder.orderIndex = row.Int(column::kOrderIndex, -1);
        return folder;
    }

    std::optional<std::vector<int>> Children(int nFolder) override {
        CppSQLite3Query query;
        if (!m_tools.QueryChildFolders(nFolder, query)) return std::nullopt;
        std::vector<int> rows;
        for (RowReader row(query); !row.AtEnd(); row.Next()) rows.push_back(row.RowNumber(column::kId));
        return rows;
    }

    std::vector<GUID> Placements(int nFolder) override {
        std::vector<GUID> guids;
        CppSQLite3Query query;
        if (!m_tools.QueryFolderItems(nFolder, query)) return guids;
        for (RowReader row(query); !row.AtEnd(); row.Next()) {
            if (const auto guid = row.Guid(column::kItemId)) guids.push_back(*guid);
        }
        return guids;
    }

    std::unique_ptr<CQItem> Item(const GUID& guid) override {
        auto item = NewItem(guid, m_tools);
        item->fnLoadItemFromDb();
        item->LoadLibTagFromDB();
        return item;
    }

private:
    DBTools& m_tools;
};

// The rows of a whole tree, joined in memory. A folder without an entry has nothing.
class TreeInMemory : public FolderRows {
public:
    TreeInMemory(DBTools& tools, TreeRows rows) : m_tools(tools), m_rows(std::move(rows)) {
        for (const auto& folder : m_rows.folders) {
            m_folders.try_emplace(folder.id, &folder.row);
            m_children[folder.row.parentId].push_back(folder.id);
        }
        m_items.reserve(m_rows.items.size());
        for (const auto& item : m_rows.items) m_items.try_emplace(item.itemId, &item);
    }

    std::optional<FolderRow> Folder(int nFolder) override {
        const auto found = m_folders.find(nFolder);
        return found != m_folders.end() ? std::optional(*found->second) : std::nullopt;
    }

    std::optional<std::vector<int>> Children(int nFolder) override {
        const auto found = m_children.find(nFolder);
        return found != m_children.end() ? found->second : std::vector<int>{};
    }

    std::vector<GUID> Placements(int nFolder) override {
        std::vector<GUID> guids;
        auto next = std::ranges::lower_bound(m_rows.placements, nFolder, {}, &TreeRows::Placement::folder);
        for (; next != m_rows.placements.end() && next->folder == nFolder; ++next) guids.push_back(next->item);
        return guids;
    }

    std::unique_ptr<CQItem> Item(const GUID& guid) override {
        auto item = NewItem(guid, m_tools);
        if (const auto found = m_items.find(guid); found != m_items.end()) FillFromRow(*item, *found->second);
        const auto before = [](const GUID& left, const GUID& right) { return left < right; };
        auto next = std::ranges::lower_bound(m_rows.tags, guid, before, &TreeRows::Tag::item);
        for (; next != m_rows.tags.end() && next->item == guid; ++next) item->AddLibTag(next->tag);
        return item;
    }

private:
    DBTools& m_tools;
    const TreeRows m_rows;
    std::unordered_map<int, const FolderRow*> m_folders;
    std::unordered_map<int, std::vector<int>> m_children;
    std::unordered_map<GUID, const ItemRow*, GuidHash> m_items;
};

}  // namespace

std::unique_ptr<FolderRows> RowByRow(DBTools& tools) { return std::make_unique<SingleRows>(tools); }

std::unique_ptr<FolderRows> RowsOfTree(DBTools& tools, int nFolder) {
    TreeRows rows;
    if (!tools.QueryTree(nFolder, rows)) return RowByRow(tools);
    return std::make_unique<TreeInMemory>(tools, std::move(rows));
}

}  // namespace qfc
