#include "hosts/qfc/OutputFile.h"

namespace qfc::host {
namespace fs = std::filesystem;

std::optional<fs::path> FileToReplace(fs::path path) {
    constexpr int kMostLinks = 40;
    std::error_code error;
    for (int links = 0; fs::is_symlink(fs::symlink_status(path, error)); ++links) {
        const fs::path next = fs::read_symlink(path, error);
        if (error || links == kMostLinks) return std::nullopt;
        path = path.parent_path() / next;
    }
    const fs::file_status status = fs::status(path, error);
    if (fs::exists(status) && !fs::is_regular_file(status)) return std::nullopt;
    return path;
}

}  // namespace qfc::host
