#include "api/names/PathRules.h"

#include "platform/text/AnsiText.h"

#include <algorithm>
#include <string>
#include <string_view>

namespace qfc {

std::vector<CString> SplitFolderPath(const CString& path, bool bInOrder) {
    std::vector<CString> parts;
    std::string_view rest = path.View();
    while (!rest.empty()) {
        const std::size_t end = std::min(FindInAnsi(rest, {&kPathSeparator, 1}), rest.size());
        if (end > 0) parts.emplace_back(rest.substr(0, end));
        rest.remove_prefix(std::min(end + 1, rest.size()));
    }
    if (!bInOrder) std::reverse(parts.begin(), parts.end());
    return parts;
}

CString FileNameTail(const CString& path) {
    const std::string_view text = path.View();
    const std::size_t backslash = FindLastInAnsi(text, kPathSeparator);
    if (backslash != std::string_view::npos) return CString(text.substr(backslash));
    const std::size_t slash = FindLastInAnsi(text, '/');
    if (slash != std::string_view::npos) return CString(kPathSeparator + std::string(text.substr(slash + 1)));
    return path;
}

CString FileNameOf(const CString& path) {
    const CString tail = FileNameTail(path);
    return tail.View().starts_with(kPathSeparator) ? tail.Mid(1) : tail;
}

CString AsFileNameTail(const CString& name) {
    const std::string_view text = name.View();
    if (!text.starts_with('/') || FindInAnsi(text, {&kPathSeparator, 1}) != std::string_view::npos) return name;
    return CString(kPathSeparator + std::string(text.substr(1)));
}

}  // namespace qfc
