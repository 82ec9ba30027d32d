#include "hosts/qfc/library/Paths.h"

#include "hosts/qfc/cli/Exit.h"

#include <algorithm>
#include <charconv>

namespace qfc::host {

std::vector<std::string> SplitPath(const std::string& text) {
    const char separator = text.find('\\') == std::string::npos ? '/' : '\\';
    std::vector<std::string> components;
    for (std::size_t begin = 0; begin <= text.size();) {
        const std::size_t end = std::min(text.find(separator, begin), text.size());
        if (end > begin) components.push_back(text.substr(begin, end - begin));
        begin = end + 1;
    }
    return components;
}

std::string JoinPath(const std::vector<std::string>& components) {
    std::string path;
    for (const std::string& component : components) path += (path.empty() ? "" : "\\") + component;
    return path;
}

std::optional<int> RowNumber(const std::string& text) {
    if (text.size() < 2 || text.front() != '#') return std::nullopt;
    int row = 0;
    const char* end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data() + 1, end, row);
    if (error != std::errc() || stop != end || row < 0) return std::nullopt;
    return row;
}

void RequireName(const std::string& name) {
    if (name.empty()) throw WrongUsage("a name cannot be empty");
    if (name.find('\\') != std::string::npos) throw WrongUsage("a name cannot hold a backslash: " + name);
}

}  // namespace qfc::host
