#include "db/LibraryCheck.h"

#include "db/CachePayload.h"
#include "db/CppSQLite3.h"
#include "db/LibraryCheckRules.h"
#include "db/Schema.h"
#include "db/SqliteCodes.h"
#include "platform/framework/Guid.h"

#include <algorithm>
#include <array>
#include <fmt/format.h>
#include <map>
#include <new>
#include <set>
#include <string_view>

namespace qfc {
namespace {

struct KindName {
    LibraryFindingKind kind;
    const char* name;
};

constexpr std::array<KindName, 12> kKindNames{{
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
    try {
        std::vector<std::byte> target(static_cast<std::size_t>(row.rawSize));
        return UnpackPayload(row, target);
    } catch (const std::bad_alloc&) {
        return false;
    }
}

// One run over one library. Everything is read through a read-only connection.
class Examination {
public:
    Examination(CppSQLite3DB& db, std::vector<LibraryFinding>& findings) : m_db(db), m_findings(findings) {}

    // False when the file is no database or cannot be read.
    bool Run() {
        if (!ReadTableNames()) return m_isDatabase;
        CheckFile();
        CheckLibrary();
        for (const check::Rule& rule : check::kItemRules) Apply(rule);
        CheckPayloads();
        Apply(check::kFolderWithoutParent);
        CheckFolderCycles();
        Apply(check::kGalleryIdTwice);
        for (const check::GuidColumn& guids : check::kGuidColumns) CheckGuids(guids);
        return true;
    }

private:
    void Add(LibraryFindingKind kind, std::string row, std::string sentence) {
        m_findings.push_back({kind, std::move(row), std::move(sentence)});
    }

    bool Has(const char* table) const { return m_tables.count(table) != 0; }

    // The first look at the file; what stops it says what the file is.
    bool ReadTableNames() {
        try {
            for (CppSQLite3Query query = m_db.execQuery(check::kTableNames); !query.eof(); query.nextRow()) {
                m_tables.insert(query.getStringField(0));
            }
            return true;
        } catch (const CppSQLite3Exception& error) {
            m_isDatabase = Explain(error);
            return false;
        }
    }

    bool Explain(const CppSQLite3Exception& error) {
        if (m_db.lastExtendedError() == sqlite::kReadOnlyRollback) {
            Add(LibraryFindingKind::kNeedsRecovery, "",
                "A write was cut off; the file needs recovery, which the next start of the library does.");
            return true;
        }
        if (error.errorCode() != sqlite::kCorrupt && error.errorCode() != sqlite::kError) return false;
        Add(LibraryFindingKind::kDamagedFile, "", fmt::format("The file cannot be read: {}.", error.errorMessage()));
        return true;
    }

    // Rows up to the first error; that one is a finding, and the examination goes on.
    template <typename Look>
    void ForEachRow(const char* table, const char* sql, Look&& look) {
        try {
            for (CppSQLite3Query query = m_db.execQuery(sql); !query.eof(); query.nextRow()) look(query);
        } catch (const CppSQLite3Exception& error) {
            Add(LibraryFindingKind::kDamagedFile, table,
                fmt::format("{} cannot be read to its end: {}.", table, error.errorMessage()));
        }
    }

    void CheckFile() {
        ForEachRow("The file", check::kIntegrity, [&](const CppSQLite3Query& query) {
            const std::string_view answer = query.getStringField(0);
            if (answer != "ok") Add(LibraryFindingKind::kDamagedFile, "", std::string(answer));
        });
    }

    void CheckLibrary() {
        const auto isThere = [&](const schema::Table& table) { return Has(table.name); };
        if (std::any_of(schema::kTables.begin(), schema::kTables.end(), isThere)) return;
        Add(LibraryFindingKind::kNoLibrary, "", "The file is a database without any table of a library.");
    }

    void Apply(const check::Rule& rule) {
        if (!Has(rule.tables[0]) || !Has(rule.tables[1])) return;
        ForEachRow(rule.tables[0], rule.sql, [&](const CppSQLite3Query& query) {
            const std::string row = Describe(query, 0);
            Add(rule.kind, row, fmt::format(fmt::runtime(rule.sentence), row, Describe(query, 1)));
        });
    }

    void CheckPayloads() {
        if (!Has("CACHE_DATA_TABLE")) return;
        ForEachRow("CACHE_DATA_TABLE", check::kPayloads, [&](const CppSQLite3Query& query) {
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
        if (!Has("FOLDER_TABLE")) return;
        std::map<int, int> parents;
        ForEachRow("FOLDER_TABLE", check::kParents, [&](const CppSQLite3Query& query) {
            parents[query.getIntField(0)] = query.getIntField(1, kNoFolder);
        });
        std::map<int, int> walks;
        for (const auto& [start, unused] : parents) {
            int folder = start;
            while (parents.count(folder) != 0 && walks.emplace(folder, start).second) folder = parents[folder];
            const auto met = walks.find(folder);
            if (met != walks.end() && met->second == start) AddCycle(parents, folder);
        }
    }

    void AddCycle(const std::map<int, int>& parents, int folder) {
        int count = 1;
        for (int next = parents.at(folder); next != folder; next = parents.at(next)) ++count;
        Add(LibraryFindingKind::kFolderCycle, std::to_string(folder),
            fmt::format("Following the parents of folder {} comes back to it after {} steps.", folder, count));
    }

    void CheckGuids(const check::GuidColumn& guids) {
        if (!Has(guids.table)) return;
        ForEachRow(guids.table, guids.sql, [&](const CppSQLite3Query& query) {
            Add(LibraryFindingKind::kBadGuid, guids.table,
                fmt::format("Row {} of {} holds in a GUID column: {}.", Describe(query, 0), guids.table,
                            Describe(query, 1)));
        });
    }

    CppSQLite3DB& m_db;
    std::vector<LibraryFinding>& m_findings;
    std::set<std::string, std::less<>> m_tables;
    bool m_isDatabase = true;
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
        return qfc::Examination(db, findings).Run() ? 1 : 0;
    } catch (const CppSQLite3Exception&) {
        return 0;
    }
}
