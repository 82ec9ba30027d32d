#include "db/Cells.h"
#include "db/Columns.h"
#include "db/DBToolsInternal.h"
#include "db/Sql.h"
#include "db/Statements.h"
#include "db/TreeRows.h"
#include "platform/framework/GuidHash.h"

#include <unordered_set>

// A whole folder tree in a few scans. It must read exactly what the single queries would; where rows are so odd that
// it might not, it answers false, and the caller asks for them one by one.

namespace sql = qfc::sql;
namespace column = qfc::column;
namespace sqlite = qfc::sqlite;

namespace {

using GuidSet = std::unordered_set<GUID, qfc::GuidHash>;

// One column of a query, found once.
class Column {
public:
    Column(const CppSQLite3Query& query, const char* name) : m_query(query), m_index(qfc::cell::IndexOf(query, name)) {}

    int Int(int missing) const { return qfc::cell::Int(m_query, m_index, missing); }
    CString Text() const { return qfc::cell::Text(m_query, m_index, CString()); }
    CString NameText() const { return qfc::cell::NameText(m_query, m_index, CString()); }
    std::optional<GUID> Guid() const { return qfc::cell::Guid(m_query, m_index); }
    bool IsBlob() const { return m_index >= 0 && m_query.fieldType(m_index) == sqlite::kTypeBlob; }

private:
    const CppSQLite3Query& m_query;
    int m_index;
};

void ReadFolders(CppSQLite3Query& query, std::vector<qfc::TreeRows::Folder>& folders) {
    const Column id(query, column::kId), version(query, column::kVersion), predefined(query, column::kPredefinedId),
        name(query, column::kFolderName), adopt(query, column::kAdoptType), trusty(query, column::kTrustyType),
        extra(query, column::kTypeExtra), parent(query, column::kParentId), expand(query, column::kExpandType),
        order(query, column::kOrderIndex);
    for (; !query.eof(); query.nextRow()) {
        folders.push_back({id.Int(qfc::kNoFolder),
                           {version.Text(), predefined.Int(-1), name.NameText(), adopt.Int(-1), trusty.Int(-1),
                            extra.Int(-1), parent.Int(qfc::kNoFolder), expand.Int(-1), order.Int(-1)}});
    }
}

// False for a text or number that reads like a GUID: the single queries would look for a blob of its bytes.
bool ReadPlacements(CppSQLite3Query& query, std::vector<qfc::TreeRows::Placement>& placements) {
    const Column folder(query, column::kParentId), item(query, column::kItemId);
    for (; !query.eof(); query.nextRow()) {
        const auto guid = item.Guid();
        if (!guid) continue;
        if (!item.IsBlob()) return false;
        placements.push_back({folder.Int(qfc::kNoFolder), *guid});
    }
    return true;
}

void ReadItems(CppSQLite3Query& query, const GuidSet& wanted, std::vector<qfc::ItemRow>& items) {
    const Column id(query, column::kItemId), current(query, column::kCurThumbFrameNum),
        original(query, column::kOrgThumbFrameNum), bbid(query, column::kBbid), type(query, column::kItemType),
        name(query, column::kItemName), description(query, column::kDescription),
        annotation(query, column::kAnnotation), file(query, column::kFileName), attributes(query, column::kAttrib),
        timestamp(query, column::kTimestamp), filmSize(query, column::kFilmSize), frameSize(query, column::kFrameSize),
        deletable(query, column::kDeletable);
    for (; !query.eof(); query.nextRow()) {
        const auto guid = id.Guid();
        if (!guid || !id.IsBlob() || !wanted.contains(*guid)) continue;
        // The template path is stored, but nobody reads it back.
        items.push_back({current.Int(0), original.Int(0), bbid.Int(0), type.Int(0), name.NameText(), description.Text(),
                         annotation.Text(), file.NameText(), attributes.Int(0), CString(), timestamp.Int(0),
                         filmSize.Int(0), frameSize.Int(0), deletable.Int(0), *guid});
    }
}

void ReadItemTags(CppSQLite3Query& query, const GuidSet& wanted, std::vector<qfc::TreeRows::Tag>& tags) {
    const Column item(query, column::kItemGuid), tag(query, column::kTagsGuid);
    for (; !query.eof(); query.nextRow()) {
        const auto itemGuid = item.Guid();
        const auto tagGuid = tag.Guid();
        if (!itemGuid || !tagGuid || !item.IsBlob() || !wanted.contains(*itemGuid)) continue;
        tags.push_back({*itemGuid, *tagGuid});
    }
}

// From this share of all items on, one scan of a table costs less than looking each row up.
constexpr int kScanFromOneIn = 4;

}  // namespace

bool DBToolsInternal::QueryTree(int nRoot, qfc::TreeRows& rows) {
    bool bOdd = true;
    if (!m_bShortcuts || !Look(sql::kProbeOddTreeRows, bOdd) || bOdd) return false;
    bool bSound = false;
    const bool bRead = Attempt([&] {
        rows = {};
        auto query = [this](const char* text, const auto&... values) {
            return qfc::statement::Compile(Connection(), text, values...).execQuery();
        };
        CppSQLite3Query folders = query(sql::kScanFolders);
        ReadFolders(folders, rows.folders);
        CppSQLite3Query placements = query(sql::kQueryTreePlacements, nRoot);
        bSound = ReadPlacements(placements, rows.placements);

        GuidSet wanted;
        for (const auto& placement : rows.placements) wanted.insert(placement.item);
        CppSQLite3Query count = query(sql::kLargestItemRow);
        const bool bScan = !count.eof() && count.getIntField(0) / kScanFromOneIn <= static_cast<int>(wanted.size());
        count.finalize();
        CppSQLite3Query items = bScan ? query(sql::kScanItems) : query(sql::kQueryTreeItems, nRoot);
        ReadItems(items, wanted, rows.items);
        CppSQLite3Query tags = bScan ? query(sql::kScanItemTags) : query(sql::kQueryTreeItemTags, nRoot);
        ReadItemTags(tags, wanted, rows.tags);
    });
    return bRead && bSound;
}
