#include "db/LibrarySnapshot.h"

#include "db/CppSQLite3.h"
#include "db/SqliteCodes.h"
#include "db/SqliteFiles.h"
#include "platform/os/Files.h"
#include "platform/os/GuidSource.h"

#include <algorithm>
#include <filesystem>
#include <new>
#include <string>
#include <system_error>

namespace {

bool IsSameFile(const std::string& one, const std::string& other) {
    std::error_code ignored;
    return std::filesystem::equivalent(one, other, ignored);
}

// The copy under its temporary name. What is left of it goes with the object.
class Temporary {
public:
    explicit Temporary(const std::string& path)
        : m_path(path), m_file(path), m_journal(path + qfc::sqlite::kJournalSuffix) {}
    ~Temporary() {
        std::error_code ignored;
        std::filesystem::remove(m_file, ignored);
        std::filesystem::remove(m_journal, ignored);
    }
    Temporary(const Temporary&) = delete;
    Temporary& operator=(const Temporary&) = delete;

    const std::string& Path() const { return m_path; }

private:
    std::string m_path;
    std::filesystem::path m_file;
    std::filesystem::path m_journal;
};

std::string TemporaryNameBeside(const std::string& target) {
    GUID unique{};
    CoCreateGuid(&unique);
    return target + "." + qfc::GuidToText(unique) + ".tmp";
}

// SQLite would take a journal that an interrupted writer of the old target left for unfinished business of the copy,
// and a log for its newest pages. Empty ones mean nothing to it.
bool HasJournal(const std::string& target) {
    constexpr auto kSuffixes = qfc::sqlite::kUnfinishedSuffixes;
    return std::any_of(kSuffixes.begin(), kSuffixes.end(), [&](const char* suffix) {
        std::error_code error;
        const auto bytes = std::filesystem::file_size(target + suffix, error);
        return error ? error != std::errc::no_such_file_or_directory : bytes != 0;
    });
}

// The target's last page is synced by SQLite before it reports success.
bool BackUp(const char* source, const std::string& target) {
    CppSQLite3DB db;
    db.openReadOnly(source);
    // Reading it would leave files beside the source.
    if (db.usesWriteAheadLog()) return false;
    return db.backupTo(target.c_str()) == qfc::sqlite::kOk;
}

bool Snapshot(const char* source, const char* target) {
    const std::string nativeTarget = qfc::NativePath(target);
    if (IsSameFile(qfc::NativePath(source), nativeTarget)) return false;
    const Temporary copy(TemporaryNameBeside(nativeTarget));
    return BackUp(source, copy.Path()) && !HasJournal(nativeTarget) && qfc::RenameDurably(copy.Path(), nativeTarget);
}

}  // namespace

int fnSnapshotLibrary(const char* source, const char* target) {
    if (source == nullptr || target == nullptr || *target == '\0') return 0;
    try {
        return Snapshot(source, target) ? 1 : 0;
    } catch (const CppSQLite3Exception&) {
        return 0;
    } catch (const std::bad_alloc&) {
        return 0;
    }
}
