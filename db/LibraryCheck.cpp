#include "db/LibraryCheck.h"

#include "db/CachePayload.h"
#include "db/CppSQLite3.h"
#include "db/LibraryCheckRules.h"
#include "db/Schema.h"
#include "db/SqliteCodes.h"
#include "platform/framework/Guid.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdlib>
#include <fmt/format.h>
#include <iterator>
#include <map>
#include <new>
#include <set>
#include <span>
#include <string_view>

namespace qfc {
namespace {

struct KindName {
    LibraryFindingKind kind;
    const char* name;
};

constexpr std::array<KindName, 17> kKindNames{{
    {LibraryFindingKind::kNeedsRecovery, "needs-recovery"},
    {LibraryFindingKind::kDamagedFile, "damaged-file"},
    {LibraryFindingKind::kNoLibrary, "no-library"},
    {LibraryFindingKind::kRelationWithoutItem, "relation-without-item"},
    {LibraryFindingKind::kRelationWithoutFolder, "relation-without-folder"},
    {LibraryFindingKind::kItemWithoutFolder, "item-without-folder"},
    {LibraryFindingKind::kPayloadWithoutItem, "payload-without-item"},
    {LibraryFindingKind::kPayloadUnreadable, "payload-unreadable"},
    {LibraryFindingKind::kFolderWithoutParent, "folder-without-parent"},
    {LibraryFindingKind::kFolderCycle, "folder-cycle"},
    {LibraryFindingKind::kGalleryIdTwice, "gallery-id-twice"},
    {LibraryFindingKind::kBadGuid, "bad-guid"},
    {LibraryFindingKind::kBadRowNumber, "bad-row-number"},
    {LibraryFindingKind::kLinkWithoutTag, "link-without-tag"},
    {LibraryFindingKind::kLinkWithoutItem, "link-without-item"},
    {LibraryFindingKind::kTagWithoutCategory, "tag-without-category"},
    {LibraryFindingKind::kWriteAheadLog, "write-ahead-log"},
}};

// A GUID as text; other values as text, or by their length when they are no text.
std::string Describe(const CppSQLite3Query& query, int field) {
    if (query.fieldType(field) == sqlite::kTypeNull) return "NULL";
    if (query.fieldType(field) != sqlite::kTypeBlob) return query.getStringField(field);
    int length = 0;
    const unsigned char* bytes = query.getBlobField(field, length);
    const auto guid = GuidFromBytes(bytes, static_cast<std::size_t>(length));
    return guid ? GuidToText(*guid) : fmt::format("a blob of {} bytes", length);
}

bool IsReadable(const StoredPayload& row) {
    if (!PayloadIsSound(row)) return false;
    if (row.compressedSize == 0) return row.bytes.size() == static_cast<std::size_t>(row.rawSize);
    std::vector<std::byte> target(static_cast<std::size_t>(row.rawSize));
    return UnpackPayload(row, target);
}

bool IsDamage(int code) { return code == sqlite::kCorrupt || code == sqlite::kNotADatabase || code == sqlite::kError; }

// SQLite's check says of a page that it could not read, with the code, in the same way as of one that is damaged. One
// answer has many lines.
void ThrowIfUnread(std::string_view answer) {
    constexpr std::string_view kCode = "error code=";
    for (auto found = answer.find(kCode); found != std::string_view::npos; found = answer.find(kCode, found + 1)) {
        // The low byte is the plain code; the text ends with a NUL.
        const int code = std::atoi(answer.data() + found + kCode.size()) & 0xFF;
        if (!IsDamage(code)) throw CppSQLite3Exception(code, answer.data());
    }
    // The pages of a chain are named without a code. That they lie in the file was looked at before.
    if (answer.find("failed to get page") != std::string_view::npos) {
        throw CppSQLite3Exception(sqlite::kIoError, answer.data());
    }
}

// One run over one library. Everything is read through a read-only connection.
class Examination {
public:
    Examination(CppSQLite3DB& db, std::vector<LibraryFinding>& findings) : m_db(db), m_findings(findings) {}

    // False when the file is no database. Throws when it cannot be read for a reason that lies outside of it.
    bool Run() {
        if (m_db.usesWriteAheadLog()) {
            AddAlone(LibraryFindingKind::kWriteAheadLog,
                     "The file writes ahead to a log, which no library does; it was not looked at.");
            return true;
        }
        try {
            return Examine();
        } catch (const CppSQLite3Exception&) {
            if (m_db.lastExtendedError() != sqlite::kReadOnlyRollback) throw;
        }
        AddAlone(LibraryFindingKind::kNeedsRecovery,
                 "A write was cut off; the file needs recovery, which the next start of the library does.");
        return true;
    }

private:
    using Parents = std::map<std::int64_t, std::int64_t>;

    void Add(LibraryFindingKind kind, std::string row, std::string sentence) {
        m_findings.push_back({kind, std::move(row), std::move(sentence)});
    }

    bool Has(const char* table) const { return m_tables.count(table) != 0; }

    // For what makes every other finding worthless.
    void AddAlone(LibraryFindingKind kind, std::string sentence) {
        m_findings.clear();
        Add(kind, "", std::move(sentence));
    }

    bool Examine() {
        try {
            for (CppSQLite3Query query = m_db.execQuery(check::kTableNames); !query.eof(); query.nextRow()) {
                m_tables.insert(query.getStringField(0));
            }
        } catch (const CppSQLite3Exception& error) {
            if (error.errorCode() == sqlite::kNotADatabase) return false;
            AddDamage("", "The file", error);
            return true;
        }
        ExamineTables();
        return true;
    }

    void ExamineTables() {
        CheckFile();
        CheckLibrary();
        for (const check::Rule& rule : check::kItemRules) Apply(rule);
        CheckPayloads();
        Apply(check::kFolderWithoutParent);
        CheckFolderCycles();
        Apply(check::kGalleryIdTwice);
        for (const check::GuidColumn& guids : check::kGuidColumns) CheckGuids(guids);
        for (const check::Rule& rule : check::kRowNumberRules) Apply(rule);
        for (const check::Rule& rule : check::kTagRules) Apply(rule);
    }

    // Inside a handler. Only what lies in the file itself is damage; anything else ends the examination.
    void AddDamage(const char* table, const char* what, const CppSQLite3Exception& error) {
        if (!IsDamage(error.errorCode())) throw;
        // A table that fails one rule fails others.
        if (!m_damaged.insert(table).second) return;
        Add(LibraryFindingKind::kDamagedFile, table,
            fmt::format("{} cannot be read to its end: {}.", what, error.errorMessage()));
    }

    // Rows up to the first error; where that one is damage, it is a finding, and the examination goes on.
    template <typename Look>
    void ForEachRow(std::span<const char* const> tables, const char* sql, Look&& look) {
        try {
            for (CppSQLite3Query query = m_db.execQuery(sql); !query.eof(); query.nextRow()) look(query);
        } catch (const CppSQLite3Exception& error) {
            if (!IsDamage(error.errorCode())) throw;
            if (!Blame(tables)) AddDamage(tables.front(), tables.front(), error);
        }
    }

    // Reads each table for itself, to find out which one the error of a text about several lies in.
    bool Blame(std::span<const char* const> tables) {
        bool found = false;
        for (const check::TableScan& scan : check::kTableScans) {
            if (std::find(tables.begin(), tables.end(), std::string_view(scan.table)) == tables.end()) continue;
            try {
                for (CppSQLite3Query query = m_db.execQuery(scan.sql); !query.eof(); query.nextRow()) continue;
            } catch (const CppSQLite3Exception& error) {
                AddDamage(scan.table, scan.table, error);
                found = true;
            }
        }
        return found;
    }

    void CheckFile() {
        try {
            for (CppSQLite3Query query = m_db.execQuery(check::kIntegrity); !query.eof(); query.nextRow()) {
                const std::string_view answer = query.getStringField(0);
                ThrowIfUnread(answer);
                if (answer != "ok") Add(LibraryFindingKind::kDamagedFile, "", std::string(answer));
            }
        } catch (const CppSQLite3Exception& error) {
            AddDamage("", "The file", error);
        }
    }

    void CheckLibrary() {
        const auto isThere = [&](const schema::Table& table) { return Has(table.name); };
        if (std::any_of(schema::kTables.begin(), schema::kTables.end(), isThere)) return;
        Add(LibraryFindingKind::kNoLibrary, "", "The file is a database without any table of a library.");
    }

    void Apply(const check::Rule& rule) {
        if (!Has(rule.tables[0]) || !Has(rule.tables[1])) return;
        ForEachRow(rule.tables, rule.sql, [&](const CppSQLite3Query& query) {
            const std::string row = Describe(query, 0);
            Add(rule.kind, row, fmt::format(fmt::runtime(rule.sentence), row, Describe(query, 1)));
        });
    }

    void CheckPayloads() {
        constexpr std::array kTable{"CACHE_DATA_TABLE"};
        if (!Has(kTable[0])) return;
        ForEachRow(kTable, check::kPayloads, [&](const CppSQLite3Query& query) {
            StoredPayload payload{query.getIntField(2), query.getIntField(3), {}};
            int length = 0;
            const auto* bytes = reinterpret_cast<const std::byte*>(query.getBlobField(4, length));
            payload.bytes = {bytes, static_cast<std::size_t>(length)};
            if (IsReadable(payload)) return;
            const std::string row = Describe(query, 0);
            Add(LibraryFindingKind::kPayloadUnreadable, row,
                fmt::format("The payload of kind {} of the item {} does not unpack to its {} bytes.",
                            Describe(query, 1), row, payload.rawSize));
        });
    }

    // Follows each folder's parents until they end, or meet a folder that was walked before; meeting one of the same
    // walk closes a cycle, which is so reported once.
    void CheckFolderCycles() {
        constexpr std::array kTable{"FOLDER_TABLE"};
        if (!Has(kTable[0])) return;
        Parents parents;
        ForEachRow(kTable, check::kParents, [&](const CppSQLite3Query& query) {
            parents[query.getInt64Field(0)] = query.getInt64Field(1, kNoFolder);
        });
        std::map<std::int64_t, std::int64_t> walks;
        for (const auto& [start, unused] : parents) {
            std::int64_t folder = start;
            while (parents.count(folder) != 0 && walks.emplace(folder, start).second) folder = parents[folder];
            const auto met = walks.find(folder);
            if (met != walks.end() && met->second == start) AddCycle(parents, folder);
        }
    }

    void AddCycle(const Parents& parents, std::int64_t folder) {
        int count = 1;
        for (std::int64_t next = parents.at(folder); next != folder; next = parents.at(next)) ++count;
        Add(LibraryFindingKind::kFolderCycle, std::to_string(folder),
            fmt::format("Following the parents of folder {} comes back to it after {} steps.", folder, count));
    }

    void CheckGuids(const check::GuidColumn& guids) {
        if (!Has(guids.table)) return;
        ForEachRow({&guids.table, 1}, guids.sql, [&](const CppSQLite3Query& query) {
            Add(LibraryFindingKind::kBadGuid, guids.table,
                fmt::format("Row {} of {} holds in a GUID column: {}.", Describe(query, 0), guids.table,
                            Describe(query, 1)));
        });
    }

    CppSQLite3DB& m_db;
    std::vector<LibraryFinding>& m_findings;
    std::set<std::string, std::less<>> m_tables;
    std::set<std::string, std::less<>> m_damaged;  // Named in a finding already.
};

}  // namespace

const char* LibraryFindingName(LibraryFindingKind kind) {
    for (const KindName& entry : kKindNames) {
        if (entry.kind == kind) return entry.name;
    }
    return "unknown";
}

}  // namespace qfc

int fnCheckLibrary(const char* path, std::vector<qfc::LibraryFinding>& findings) {
    try {
        CppSQLite3DB db;
        db.openReadOnly(path);
        std::vector<qfc::LibraryFinding> found;
        if (!qfc::Examination(db, found).Run()) return 0;
        findings.reserve(findings.size() + found.size());
        std::move(found.begin(), found.end(), std::back_inserter(findings));
        return 1;
    } catch (const CppSQLite3Exception&) {
        return 0;
    } catch (const std::bad_alloc&) {
        return 0;
    }
}
