#pragma once

#include <filesystem>
#include <string>

namespace qfc::host {

// Files that hold a library. Main thread.

// True for the file of this library and for those that its database keeps beside it, however the path is spelt.
bool IsOwnLibrary(const std::filesystem::path& path);

// The same for the settings and the locks, there or not.
bool IsBesideOwnLibrary(const std::filesystem::path& path);

// A folder for temporary files that goes with everything in it. Throws Failure when it cannot be made.
class TemporaryFolder {
public:
    TemporaryFolder();
    ~TemporaryFolder();
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;

    const std::filesystem::path& Path() const { return m_path; }

private:
    std::filesystem::path m_path;
};

// A name beside the path that nobody uses: what is made under it can be renamed over the path.
std::filesystem::path UnusedNameBeside(const std::filesystem::path& path);

}  // namespace qfc::host
