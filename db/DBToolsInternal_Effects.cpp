#include "db/Cells.h"
#include "db/Columns.h"
#include "db/DBToolsInternal.h"
#include "db/EffectRecords.h"
#include "db/Sql.h"
#include "db/Statements.h"

#include <algorithm>
#include <array>
#include <optional>
#include <utility>

// Effect files, filters and transitions.

namespace sql = qfc::sql;
namespace column = qfc::column;

namespace {

std::optional<GUID> ReadItemId(const CppSQLite3Query& row) {
    return qfc::cell::Guid(row, row.fieldIndex(column::kItemId));
}

// Empty for an absent and for an empty cell.
std::vector<BYTE> ReadBlock(const CppSQLite3Query& row, const char* pszColumn) {
    int nLength = 0;
    const unsigned char* const pBytes = row.getBlobField(pszColumn, nLength);
    if (pBytes == nullptr || nLength <= 0) return {};
    return {pBytes, pBytes + nLength};
}

// The block in the size that its column has, whatever size it came in.
template <std::size_t kSize>
std::array<std::byte, kSize> Fitted(const std::vector<BYTE>& block) {
    std::array<std::byte, kSize> bytes{};
    const auto given = std::as_bytes(std::span(block));
    std::copy_n(given.begin(), std::min(given.size(), kSize), bytes.begin());
    return bytes;
}

void AppendItemIds(CppSQLite3Query rows, std::vector<GUID>& items) {
    for (; !rows.eof(); rows.nextRow()) {
        if (const auto guid = ReadItemId(rows)) items.push_back(*guid);
    }
}

void AppendFiles(CppSQLite3Query rows, std::vector<DS_Filter_File_Record>& files) {
    for (; !rows.eof(); rows.nextRow()) {
        DS_Filter_File_Record file;
        file.strFileName = rows.getStringField(column::kFileName);
        file.nFilterCount = rows.getIntField(column::kFilterCount);
        files.push_back(std::move(file));
    }
}

void AppendFilters(CppSQLite3Query rows, std::vector<qfc::FilterEntry>& filters) {
    for (; !rows.eof(); rows.nextRow()) {
        qfc::FilterEntry filter{ReadBlock(rows, column::kFilterDescriptor), ReadBlock(rows, column::kFilterTable), {}};
        const auto guid = ReadItemId(rows);
        if (filter.descriptor.empty() || filter.table.empty() || !guid) continue;
        filter.guidItem = *guid;
        filters.push_back(std::move(filter));
    }
}

void AppendTransitions(CppSQLite3Query rows, std::vector<DS_Transition_Record>& transitions) {
    for (; !rows.eof(); rows.nextRow()) {
        DS_Transition_Record transition;
        transition.strFileName = rows.getStringField(column::kFileName);
        transition.descriptor = ReadBlock(rows, column::kTransitionDescriptor);
        const auto guid = ReadItemId(rows);
        if (transition.descriptor.empty() || !guid) continue;
        transition.guidItem = *guid;
        transitions.push_back(std::move(transition));
    }
}

}  // namespace

bool DBToolsInternal::LoadFilterFiles(std::vector<DS_Filter_File_Record>& files) {
    const auto query = [&](const char* pszSql, const auto&... values) {
        return qfc::statement::Compile(Connection(), pszSql, values...).execQuery();
    };
    files.clear();
    const bool bListed = Attempt([&] {
        files.clear();  // Once more when the first attempt ended behind some rows; so below.
        AppendFiles(query(sql::kQueryFilterFiles), files);
    });
    if (!bListed) return false;
    return std::all_of(files.begin(), files.end(), [&](DS_Filter_File_Record& file) {
        return Attempt([&] {
            file.filters.clear();
            AppendFilters(query(sql::kQueryFiltersOfFile, file.strFileName), file.filters);
        });
    });
}

bool DBToolsInternal::LoadTransitions(std::vector<DS_Transition_Record>& transitions) {
    transitions.clear();
    return Attempt([&] {
        transitions.clear();
        AppendTransitions(qfc::statement::Compile(Connection(), sql::kQueryTransitions).execQuery(), transitions);
    });
}

bool DBToolsInternal::WriteFilterFile(const DS_Filter_File_Record& file) {
    if (!Run(sql::kWriteFilterFile, file.strFileName, file.nFilterCount)) return false;
    return std::all_of(file.filters.begin(), file.filters.end(), [&](const qfc::FilterEntry& filter) {
        return Run(sql::kWriteFilter, Fitted<qfc::kFilterDescriptorSize>(filter.descriptor),
                   Fitted<qfc::kFilterTableSize>(filter.table), file.strFileName, filter.guidItem);
    });
}

bool DBToolsInternal::DeleteFilterFileRows(const CString& fileName) {
    return Run(sql::kDeleteFilterFile, fileName) && Run(sql::kDeleteFiltersOfFile, fileName);
}

bool DBToolsInternal::WriteTransition(const DS_Transition_Record& transition) {
    return Run(sql::kWriteTransition, transition.strFileName, std::as_bytes(std::span(transition.descriptor)),
               transition.guidItem);
}

bool DBToolsInternal::DeleteTransitionRows(const CString& fileName) {
    return Run(sql::kDeleteTransitionsOfFile, fileName);
}

bool DBToolsInternal::ReadEffectItems(std::vector<GUID>& items) {
    return Attempt([&] {
        items.clear();
        AppendItemIds(qfc::statement::Compile(Connection(), sql::kQueryTransitions).execQuery(), items);
        AppendItemIds(qfc::statement::Compile(Connection(), sql::kQueryFilters).execQuery(), items);
    });
}

bool DBToolsInternal::ClearEffects() {
    std::vector<GUID> items;
    if (!ReadEffectItems(items)) return false;
    const bool bGone = std::all_of(items.begin(), items.end(), [&](const GUID& item) {
        return DBToolsInternal::DeleteAllCacheData(item) && DBToolsInternal::DeleteItemRow(item);
    });
    return bGone && Run(sql::kClearTransitions) && Run(sql::kClearFilters) && Run(sql::kClearFilterFiles);
}
