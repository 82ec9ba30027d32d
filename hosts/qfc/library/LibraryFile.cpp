#include "hosts/qfc/library/LibraryFile.h"

#include "hosts/qfc/cli/Exit.h"
#include "hosts/qfc/library/Session.h"

#include <algorithm>
#include <fmt/format.h>
#include <initializer_list>
#include <random>

namespace qfc::host {
namespace fs = std::filesystem;
namespace {

std::string RandomText() {
    std::random_device random;
    return fmt::format("{:08x}{:08x}", random(), random());
}

// Links and dots resolved as far as the path exists.
fs::path Canonical(const fs::path& path) {
    std::error_code error;
    fs::path canonical = fs::weakly_canonical(fs::absolute(path, error), error);
    return error ? path : canonical;
}

// One of the files that are named after the first, or another name of the first itself.
bool IsOneOf(const fs::path& path, const fs::path& first, std::initializer_list<const char*> suffixes) {
    std::error_code error;
    if (fs::equivalent(path, first, error) && !error) return true;
    const fs::path canonical = Canonical(path);
    return std::ranges::any_of(suffixes,
                               [&](const char* suffix) { return canonical == Canonical(first.string() + suffix); });
}

}  // namespace

bool IsOwnLibrary(const fs::path& path) { return IsOneOf(path, LibraryPath(), {"", "-journal", "-wal", "-shm"}); }

bool IsBesideOwnLibrary(const fs::path& path) {
    return IsOneOf(path, SettingsPath(), {"", ".lock"}) || IsOneOf(path, LibraryPath() + ".lock", {""});
}

TemporaryFolder::TemporaryFolder() {
    std::error_code error;
    m_path = fs::temp_directory_path(error) / ("qfc-" + RandomText());
    if (error || !fs::create_directory(m_path, error)) throw Failure("cannot make a temporary folder");
    fs::permissions(m_path, fs::perms::owner_all, error);
}

TemporaryFolder::~TemporaryFolder() {
    std::error_code error;
    fs::remove_all(m_path, error);
}

fs::path UnusedNameBeside(const fs::path& path) {
    return path.parent_path() / ("." + path.filename().string() + "." + RandomText());
}

}  // namespace qfc::host
