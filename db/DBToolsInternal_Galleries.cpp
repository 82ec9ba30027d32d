#include "db/Columns.h"
#include "db/DBToolsInternal.h"
#include "db/RowNumber.h"
#include "db/Sql.h"
#include "db/Statements.h"
#include "platform/text/CodePages.h"

#include <optional>
#include <unordered_set>
#include <utility>

// Galleries and the folders below them.

namespace sql = qfc::sql;
namespace column = qfc::column;

namespace {

bool IsNull(const CppSQLite3Query& query, const char* name) {
    return query.fieldType(query.fieldIndex(name)) == qfc::sqlite::kTypeNull;
}

}  // namespace

bool DBToolsInternal::InsertGallery(int nGalleryId, int nRootFolder) {
    return Run(sql::kInsertGallery, nGalleryId, nRootFolder);
}

int DBToolsInternal::GetGalleryIdByFolder(int nGalleryId) {
    if (!HasConnection()) return 0;
    int nRootFolder = qfc::kNoFolder;
    Attempt([&] {
        CppSQLite3Query query = qfc::statement::Compile(Connection(), sql::kQueryGallery, nGalleryId).execQuery();
        if (!query.eof()) nRootFolder = qfc::RowNumber(query, column::kGalleryId).value_or(qfc::kNoFolder);
    });
    return nRootFolder;
}

bool DBToolsInternal::QueryGalleries(std::vector<qfc::StoredGallery>& galleries) {
    return Attempt([&] {
        std::vector<qfc::StoredGallery> found;
        for (CppSQLite3Query query = Connection().execQuery(sql::kListGalleries); !query.eof(); query.nextRow()) {
            const auto galleryId = qfc::RowNumber(query, column::kGalleryFolderId);
            // No gallery can be loaded under what is no number.
            if (!galleryId || IsNull(query, column::kGalleryFolderId)) continue;
            found.push_back({*galleryId, qfc::RowNumber(query, column::kGalleryId).value_or(qfc::kNoFolder),
                             CDBStringHelper::UTF_82ASCII(query.getStringField(column::kFolderName))});
        }
        galleries = std::move(found);
    });
}

bool DBToolsInternal::QueryFolder(int nFolder, CppSQLite3Query& query) {
    return Select(sql::kQueryFolder, query, nFolder);
}

bool DBToolsInternal::QueryChildFolders(int nParent, CppSQLite3Query& query) {
    return Select(sql::kQueryChildFolders, query, nParent);
}

bool DBToolsInternal::DeleteFolderRow(int nFolder) { return Run(sql::kDeleteFolder, nFolder); }

bool DBToolsInternal::InsertOrUpdateFolder(const qfc::FolderRow& row, int& nFolder) {
    const CString name = CDBStringHelper::ASCII2UTF_8(row.name);
    if (nFolder != qfc::kNoFolder) {
        return Run(sql::kUpdateFolder, row.version, row.predefinedId, name, row.adoptType, row.trustyType,
                   row.typeExtra, row.parentId, row.expandType, row.orderIndex, nFolder);
    }
    if (!Run(sql::kInsertFolder, row.version, row.predefinedId, name, row.adoptType, row.trustyType, row.typeExtra,
             row.parentId, row.expandType, row.orderIndex)) {
        return false;
    }
    std::optional<int> nInserted;
    const bool bRead = Attempt([&] {
        const CppSQLite3Query query = Connection().execQuery(sql::kLastFolder);
        nInserted = query.eof() ? qfc::kNoFolder : qfc::RowNumber(query, 0);
    });
    if (!bRead || !nInserted) return false;
    nFolder = *nInserted;
    return true;
}

bool DBToolsInternal::DeleteFolderTrees(std::span<const int> galleryIds) {
    if (!HasConnection()) return false;
    if (galleryIds.empty()) return true;  // Needs no turn.
    std::vector<int> folders;
    if (!TakeTurn(sql::kTakeTurnAtGalleries) || !GatherTrees(galleryIds, folders)) return false;
    for (const int nGalleryId : galleryIds) {
        if (!Run(sql::kDeleteGallery, nGalleryId)) return false;
    }
    for (const int nFolder : folders) {
        if (!Run(sql::kDeleteFolder, nFolder) || !Run(sql::kDeleteFolderRelations, nFolder)) return false;
    }
    return true;
}

// Breadth first, each folder once: a parent chain that closes on itself ends here. A negative number is never gathered,
// for -1 is the parent of every root, and its children are the whole library.
bool DBToolsInternal::GatherTrees(std::span<const int> galleryIds, std::vector<int>& folders) {
    std::unordered_set<int> seen;
    const auto append = [&](int nFolder) {
        if (seen.insert(nFolder).second) folders.push_back(nFolder);
        return nFolder >= 0;
    };
    for (const int nGalleryId : galleryIds) {
        if (!append(DBToolsInternal::GetGalleryIdByFolder(nGalleryId))) return false;
    }
    for (std::size_t next = 0; next < folders.size(); ++next) {
        std::vector<int> children;
        if (!ReadChildren(folders[next], children)) return false;
        for (const int nChild : children) {
            if (!append(nChild)) return false;
        }
    }
    return true;
}

// A number that cannot be told reads as none, which ends the gathering.
bool DBToolsInternal::ReadChildren(int nParent, std::vector<int>& children) {
    return Attempt([&] {
        children.clear();
        CppSQLite3Query query = qfc::statement::Compile(Connection(), sql::kQueryChildFolders, nParent).execQuery();
        for (; !query.eof(); query.nextRow()) {
            children.push_back(qfc::RowNumber(query, column::kId).value_or(qfc::kNoFolder));
        }
    });
}
