#include "db/Cells.h"
#include "db/Columns.h"
#include "db/DBToolsInternal.h"
#include "db/EffectRecords.h"
#include "db/Schema.h"
#include "db/Sql.h"
#include "db/Statements.h"
#include "platform/text/Utf8.h"

#include <algorithm>
#include <array>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
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

// Empty for a row that is no filter: without descriptor or table, or of no item.
std::optional<qfc::FilterEntry> ReadFilter(const CppSQLite3Query& row) {
    qfc::FilterEntry filter{ReadBlock(row, column::kFilterDescriptor), ReadBlock(row, column::kFilterTable), {}};
    const auto guid = ReadItemId(row);
    if (filter.descriptor.empty() || filter.table.empty() || !guid) return std::nullopt;
    filter.guidItem = *guid;
    return filter;
}

void AppendFilters(CppSQLite3Query rows, std::vector<qfc::FilterEntry>& filters) {
    for (; !rows.eof(); rows.nextRow()) {
        if (auto filter = ReadFilter(rows)) filters.push_back(std::move(*filter));
    }
}

// Several files may be looked for under one name.
using FilesByName = std::unordered_map<std::string, std::vector<DS_Filter_File_Record*>>;

void AppendFilters(CppSQLite3Query rows, const FilesByName& files) {
    for (; !rows.eof(); rows.nextRow()) {
        const std::vector<BYTE> name = ReadBlock(rows, column::kFileName);  // As UTF-8, zeros in it included.
        const auto found = files.find(std::string(name.begin(), name.end()));
        if (found == files.end()) continue;
        const auto filter = ReadFilter(rows);
        if (!filter) continue;
        for (DS_Filter_File_Record* const pFile : found->second) pFile->filters.push_back(*filter);
    }
}

void ForgetFilters(std::vector<DS_Filter_File_Record>& files) {
    for (DS_Filter_File_Record& file : files) file.filters.clear();
}

CString TextOfMaking(std::string_view table) {
    const auto& tables = qfc::schema::kTables;
    return std::find_if(tables.begin(), tables.end(), [&](const auto& made) { return made.name == table; })->create;
}

template <typename Condition>
bool AllCharacters(std::string_view text, Condition holds) {
    while (!text.empty()) {
        const qfc::DecodedCharacter next = qfc::DecodeUtf8(text);
        if (!next.valid || !holds(next.character)) return false;
        text.remove_prefix(next.length);
    }
    return true;
}

// Whether SQLite takes the text for what it is in any encoding; it substitutes these two.
bool IsCleanText(const CString& text) {
    return AllCharacters(text.GetString(),
                         [](char32_t character) { return character != 0xFFFE && character != 0xFFFF; });
}

// Whether only one text of a file, in any encoding, reads as this one. Characters behind these may also be read from
// UTF-16 that is none.
bool IsPlainText(const CString& text) {
    return AllCharacters(text.GetString(), [](char32_t character) { return character < 0xFFFE; });
}

// "(?, ?, ...)"
std::string Marks(std::size_t count) {
    std::string marks = "(?";
    while (--count > 0) marks += ", ?";
    return marks + ")";
}

// How many names one statement takes; well below SQLite's limit of 32,766.
constexpr std::size_t kNamesAtOnce = 10000;

template <typename Record, typename Work>
bool InBatches(std::span<const Record> records, Work&& work) {
    for (; !records.empty(); records = records.subspan(std::min(records.size(), kNamesAtOnce))) {
        if (!work(records.first(std::min(records.size(), kNamesAtOnce)))) return false;
    }
    return true;
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
    files.clear();
    const bool bListed = Attempt([&] {
        files.clear();  // Once more when the first attempt ended behind some rows; so below.
        AppendFiles(qfc::statement::Compile(Connection(), sql::kQueryFilterFiles).execQuery(), files);
    });
    if (!bListed) return false;
    return (m_bShortcuts && files.size() > 1 && ReadFiltersOfAll(files)) || ReadFiltersOfEach(files);
}

bool DBToolsInternal::ReadFilters(DS_Filter_File_Record& file) {
    return Attempt([&] {
        file.filters.clear();
        AppendFilters(qfc::statement::Compile(Connection(), sql::kQueryFiltersOfFile, file.strFileName).execQuery(),
                      file.filters);
    });
}

bool DBToolsInternal::ReadFiltersOfEach(std::vector<DS_Filter_File_Record>& files) {
    return std::all_of(files.begin(), files.end(), [&](DS_Filter_File_Record& file) { return ReadFilters(file); });
}

// No key leads from a file's name to its filters, so that each single query reads the whole table; one scan reads it
// once. Names that it could find otherwise are asked for one by one. False, with no file filled, where something fails
// or the table is not the one that is known: the single queries tell then.
bool DBToolsInternal::ReadFiltersOfAll(std::vector<DS_Filter_File_Record>& files) {
    bool bKnown = false;
    bool bUtf8 = false;
    if (!Look(sql::kProbePlainFilters, bKnown, TextOfMaking("FLT_TABLE")) || !bKnown) return false;
    if (!Look(sql::kProbeUtf8, bUtf8)) return false;
    std::vector<DS_Filter_File_Record*> odd;
    const bool bScanned = Attempt([&] {
        ForgetFilters(files);
        odd.clear();
        FilesByName named;
        for (DS_Filter_File_Record& file : files) {
            const bool bPlain = bUtf8 || IsPlainText(file.strFileName);
            (bPlain ? named[file.strFileName.GetString()] : odd).push_back(&file);
        }
        AppendFilters(qfc::statement::Compile(Connection(), sql::kScanFilters).execQuery(), named);
    });
    const bool bRead =
        bScanned && std::all_of(odd.begin(), odd.end(), [&](auto* pFile) { return ReadFilters(*pFile); });
    if (!bRead) ForgetFilters(files);
    return bRead;
}

bool DBToolsInternal::LoadTransitions(std::vector<DS_Transition_Record>& transitions) {
    transitions.clear();
    return Attempt([&] {
        transitions.clear();
        AppendTransitions(qfc::statement::Compile(Connection(), sql::kQueryTransitions).execQuery(), transitions);
    });
}

// A file whose texts are UTF-16 puts a substitute for each byte that forms no character, and two names may become one.
// Only texts that are not clean are asked about, so that all others send the given statements alone.
bool DBToolsInternal::AskWhetherKept(const CString& text, bool& bKept) {
    bKept = IsCleanText(text);
    return bKept || Attempt([&] {
               const auto row = qfc::statement::Compile(Connection(), sql::kGiveBackText, text).execQuery();
               bKept = std::string_view(row.getStringField(0)) == text.GetString();
           });
}

bool DBToolsInternal::KeepsText(const CString& text) {
    bool bKept = false;
    return AskWhetherKept(text, bKept) && bKept;
}

bool DBToolsInternal::WriteFilterFile(const DS_Filter_File_Record& file) {
    if (!KeepsText(file.strFileName)) return false;
    if (!Run(sql::kWriteFilterFile, file.strFileName, file.nFilterCount)) return false;
    return std::all_of(file.filters.begin(), file.filters.end(), [&](const qfc::FilterEntry& filter) {
        return Run(sql::kWriteFilter, Fitted<qfc::kFilterDescriptorSize>(filter.descriptor),
                   Fitted<qfc::kFilterTableSize>(filter.table), file.strFileName, filter.guidItem);
    });
}

bool DBToolsInternal::WriteTransition(const DS_Transition_Record& transition) {
    return KeepsText(transition.strFileName) &&
           Run(sql::kWriteTransition, transition.strFileName, std::as_bytes(std::span(transition.descriptor)),
               transition.guidItem);
}

// A name that the file does not keep has no record, but its substitute may be the name of another one.
template <typename Record>
bool DBToolsInternal::RunForNames(const char* sql, std::span<const Record> records) {
    std::vector<const CString*> names;
    bool bAsked = true;
    const bool bGathered = Attempt([&] {
        names.clear();
        for (const Record& record : records) {
            bool bKept = false;
            bAsked = bAsked && AskWhetherKept(record.strFileName, bKept);
            if (bKept) names.push_back(&record.strFileName);
        }
    });
    if (!bGathered || !bAsked || names.empty()) return bGathered && bAsked;
    return Attempt([&] {
        CppSQLite3Statement compiled = Connection().compileStatement((sql + Marks(names.size())).c_str());
        int parameter = 0;
        for (const CString* const pName : names) qfc::statement::Bind(compiled, ++parameter, *pName);
        compiled.execDML();
    });
}

bool DBToolsInternal::DeleteFilterFileRows(const CString& fileName) {
    bool bKept = false;
    if (!HasConnection() || !AskWhetherKept(fileName, bKept)) return false;
    return !bKept || (Run(sql::kDeleteFilterFile, fileName) && Run(sql::kDeleteFiltersOfFile, fileName));
}

bool DBToolsInternal::DeleteTransitionRows(const CString& fileName) {
    bool bKept = false;
    if (!HasConnection() || !AskWhetherKept(fileName, bKept)) return false;
    return !bKept || Run(sql::kDeleteTransitionsOfFile, fileName);
}

// Each single deletion reads its whole table, having no key to use; one for many names reads it once.
bool DBToolsInternal::DeleteFilterFileRows(std::span<const DS_Filter_File_Record> files) {
    if (!HasConnection()) return false;
    if (!m_bShortcuts || files.size() < 2) {
        return std::all_of(files.begin(), files.end(), [&](const DS_Filter_File_Record& file) {
            return DBToolsInternal::DeleteFilterFileRows(file.strFileName);
        });
    }
    return InBatches(files, [&](std::span<const DS_Filter_File_Record> batch) {
        return RunForNames(sql::kDeleteFilterFilesIn, batch) && RunForNames(sql::kDeleteFiltersOfFilesIn, batch);
    });
}

bool DBToolsInternal::DeleteTransitionRows(std::span<const DS_Transition_Record> transitions) {
    if (!HasConnection()) return false;
    if (!m_bShortcuts || transitions.size() < 2) {
        return std::all_of(transitions.begin(), transitions.end(), [&](const DS_Transition_Record& transition) {
            return DBToolsInternal::DeleteTransitionRows(transition.strFileName);
        });
    }
    return InBatches(transitions, [&](std::span<const DS_Transition_Record> batch) {
        return RunForNames(sql::kDeleteTransitionsOfFilesIn, batch);
    });
}

bool DBToolsInternal::ReadEffectItems(std::vector<GUID>& items) {
    return Attempt([&] {
        items.clear();
        AppendItemIds(qfc::statement::Compile(Connection(), sql::kQueryTransitions).execQuery(), items);
        AppendItemIds(qfc::statement::Compile(Connection(), sql::kQueryFilters).execQuery(), items);
    });
}

bool DBToolsInternal::ClearEffects() {
    if (!TakeTurn(sql::kTakeTurnAtEffects)) return false;
    std::vector<GUID> items;
    if (!ReadEffectItems(items)) return false;
    const bool bGone = std::all_of(items.begin(), items.end(), [&](const GUID& item) {
        return DBToolsInternal::DeleteAllCacheData(item) && DBToolsInternal::DeleteItemRow(item);
    });
    return bGone && Run(sql::kClearTransitions) && Run(sql::kClearFilters) && Run(sql::kClearFilterFiles);
}
