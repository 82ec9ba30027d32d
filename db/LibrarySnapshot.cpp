#include "db/LibrarySnapshot.h"

#include "db/CppSQLite3.h"
#include "db/SqliteCodes.h"
#include "platform/os/Files.h"
#include "platform/os/GuidSource.h"

#include <filesystem>
#include <string>
#include <system_error>

namespace {

bool IsSameFile(const std::string& one, const std::string& other) {
    std::error_code ignored;
    return std::filesystem::equivalent(one, other, ignored);
}

void Remove(const std::string& path) {
    std::error_code ignored;
    std::filesystem::remove(path, ignored);
}

std::string TemporaryNameBeside(const std::string& target) {
    GUID unique{};
    CoCreateGuid(&unique);
    return target + "." + qfc::GuidToText(unique) + ".tmp";
}

// The target's last page is synced by SQLite before it reports success.
bool BackUp(const char* source, const std::string& target) {
    try {
        CppSQLite3DB db;
        db.openReadOnly(source);
        return db.backupTo(target.c_str()) == qfc::sqlite::kOk;
    } catch (const CppSQLite3Exception&) {
        return false;
    }
}

}  // namespace

int fnSnapshotLibrary(const char* source, const char* target) {
    if (source == nullptr || target == nullptr || *target == '\0') return 0;
    const std::string nativeTarget = qfc::NativePath(target);
    if (IsSameFile(qfc::NativePath(source), nativeTarget)) return 0;
    const std::string temporary = TemporaryNameBeside(nativeTarget);
    if (BackUp(source, temporary) && qfc::RenameDurably(temporary, nativeTarget)) return 1;
    Remove(temporary);
    Remove(temporary + "-journal");
    return 0;
}
