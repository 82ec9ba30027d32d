#include "hosts/qfc/media/FileWalk.h"

#include <algorithm>
#include <filesystem>
#include <unordered_set>

namespace qfc::host {

namespace fs = std::filesystem;

namespace {

class Walker {
public:
    explicit Walker(const std::atomic<bool>* cancelled) : m_cancelled(cancelled) {}

    void Start(const std::string& named) {
        if (IsCancelled()) return;
        std::error_code error;
        const fs::path path = fs::canonical(named, error);
        if (error) return Report(named, error);
        if (fs::is_directory(path, error)) {
            std::vector<std::string> folders = {FolderComponent(path.filename().string())};
            WalkDirectory(path, folders);
        } else if (fs::is_regular_file(path, error)) {
            Meet(path, fs::path(named).filename().string(), {});
        } else {
            m_walk.problems.push_back({named, "neither a file nor a directory"});
        }
    }

    Walk Take() { return std::move(m_walk); }

private:
    bool IsCancelled() const { return m_cancelled && m_cancelled->load(std::memory_order_relaxed); }

    void Report(const std::string& path, const std::error_code& error) {
        m_walk.problems.push_back({path, error.message()});
    }

    void Meet(const fs::path& canonical, std::string name, const std::vector<std::string>& folders) {
        if (m_met.insert(canonical.string()).second)
            m_walk.files.push_back({canonical.string(), std::move(name), folders});
    }

    std::vector<std::string> Names(const fs::path& directory) {
        std::vector<std::string> names;
        std::error_code error;
        fs::directory_iterator entry(directory, error);
        for (; !error && entry != fs::directory_iterator(); entry.increment(error))
            names.push_back(entry->path().filename().string());
        if (error) Report(directory.string(), error);
        std::ranges::sort(names);
        return names;
    }

    void WalkDirectory(const fs::path& directory, std::vector<std::string>& folders) {
        if (IsCancelled() || !m_met.insert(directory.string()).second) return;
        std::vector<std::pair<fs::path, std::string>> inner;
        for (const std::string& name : Names(directory)) {
            std::error_code error;
            const fs::path path = fs::canonical(directory / name, error);
            if (error) {
                Report((directory / name).string(), error);
            } else if (fs::is_directory(path, error)) {
                inner.emplace_back(path, name);
            } else if (fs::is_regular_file(path, error)) {
                Meet(path, name, folders);
            }
        }
        for (const auto& [path, name] : inner) {
            folders.push_back(FolderComponent(name));
            WalkDirectory(path, folders);
            folders.pop_back();
        }
    }

    const std::atomic<bool>* m_cancelled;
    Walk m_walk;
    std::unordered_set<std::string> m_met;  // canonical paths of files and directories
};

}  // namespace

std::string FolderComponent(std::string name) {
    std::ranges::replace(name, '\\', '_');
    return name.empty() ? "_" : name;
}

Walk WalkFiles(std::span<const std::string> paths, const std::atomic<bool>* cancelled) {
    Walker walker(cancelled);
    for (const std::string& path : paths) walker.Start(path);
    return walker.Take();
}

}  // namespace qfc::host
