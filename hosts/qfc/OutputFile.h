#pragma once

#include <filesystem>
#include <optional>

namespace qfc::host {

// Where a file that is written beside its name and then renamed has to go. A function without state; any thread.

// The path with the links at its end followed, there or not: a link keeps pointing where it did. Nothing when what
// stands there is no regular file (a folder, a device, a pipe) or the links never end: it may not be replaced.
std::optional<std::filesystem::path> FileToReplace(std::filesystem::path path);

}  // namespace qfc::host
