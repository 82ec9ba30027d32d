#pragma once

#include <atomic>
#include <span>
#include <string>
#include <vector>

namespace qfc::host {

// A file met on a walk.
struct WalkedFile {
    std::string path;                  // canonical and absolute: the file's identity
    std::string name;                  // as met, without folder
    std::vector<std::string> folders;  // from the named directory down; empty for a file named by itself
};

struct WalkProblem {
    std::string path;
    std::string text;
};

struct Walk {
    std::vector<WalkedFile> files;
    std::vector<WalkProblem> problems;  // what was named but is not there, what may not be read
};

// Meets all regular files under the paths: in the order the paths are given, in each directory first its files and then
// its directories, both in the order of their names' bytes. Links are followed; each file is met once, however often it
// is named or linked, and each directory too, so that loops of links end. Ends early when the flag rises. Any thread.
Walk WalkFiles(std::span<const std::string> paths, const std::atomic<bool>* cancelled = nullptr);

// A native name as part of a folder path, where a backslash separates: each becomes '_'.
std::string FolderComponent(std::string name);

}  // namespace qfc::host
