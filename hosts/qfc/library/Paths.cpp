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

std::string Below(const std::string& path, const std::string& name) { return path + (path.empty() ? "" : "\\") + name; }

std::optional<int> RowNumber(const std::string& text) {
    if (text.size() < 2 || text.front() != '#') return std::nullopt;
    int row = 0;
    const char* end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data() + 1, end, row);
    if (error != std::errc() || stop != end || row < 0) return std::nullopt;
    return row;
}

namespace {

struct Utf8Form {
    unsigned char first, last;  // of the leading byte
    std::size_t follow;
    unsigned char low, high;  // of the second byte: no overlong forms, no surrogates, nothing beyond U+10FFFF
};
constexpr Utf8Form kUtf8Forms[] = {
    {0x00, 0x7F, 0, 0x80, 0xBF}, {0xC2, 0xDF, 1, 0x80, 0xBF}, {0xE0, 0xE0, 2, 0xA0, 0xBF},
    {0xE1, 0xEC, 2, 0x80, 0xBF}, {0xED, 0xED, 2, 0x80, 0x9F}, {0xEE, 0xEF, 2, 0x80, 0xBF},
    {0xF0, 0xF0, 3, 0x90, 0xBF}, {0xF1, 0xF3, 3, 0x80, 0xBF}, {0xF4, 0xF4, 3, 0x80, 0x8F},
};

}  // namespace

bool IsUtf8(std::string_view text) {
    const auto byte = [&](std::size_t at) { return static_cast<unsigned char>(text[at]); };
    for (std::size_t i = 0; i < text.size();) {
        const auto* form = std::ranges::find_if(
            kUtf8Forms, [&](const Utf8Form& f) { return byte(i) >= f.first && byte(i) <= f.last; });
        if (form == std::end(kUtf8Forms) || text.size() - i <= form->follow) return false;
        for (std::size_t k = 1; k <= form->follow; ++k) {
            const bool second = k == 1;
            if (byte(i + k) < (second ? form->low : 0x80) || byte(i + k) > (second ? form->high : 0xBF)) return false;
        }
        i += form->follow + 1;
    }
    return true;
}

void RequireUtf8(const std::string& text) {
    if (!IsUtf8(text)) throw WrongUsage("names have to be UTF-8: " + text);
}

void RequireName(const std::string& name) {
    RequireUtf8(name);
    if (name.empty()) throw WrongUsage("a name cannot be empty");
    if (name.find('\\') != std::string::npos) throw WrongUsage("a name cannot hold a backslash: " + name);
}

}  // namespace qfc::host
