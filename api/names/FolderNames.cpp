#include "api/names/FolderNames.h"

#include "api/names/PathRules.h"
#include "platform/text/AnsiText.h"

#include <algorithm>
#include <charconv>
#include <cstddef>
#include <string>
#include <string_view>

namespace qfc {
namespace {

constexpr std::string_view kFieldMark = "||";
constexpr std::string_view kKeyMark = "--";
// A path repeats the names above in each name: a name of many short texts would otherwise fill all memory.
constexpr std::size_t kLongestPath = 64 << 20;

// As many bytes as the text says, but never more than `left`. What is no number, or below zero, is none.
std::size_t ReadLength(std::string_view text, std::size_t left) {
    text.remove_prefix(std::min(text.find_first_not_of(" +"), text.size()));
    std::size_t length = 0;
    const auto read = std::from_chars(text.data(), text.data() + text.size(), length);
    if (read.ec == std::errc::result_out_of_range) length = left;
    return std::min(length, left);
}

std::string_view KeyFormDisplay(std::string_view name) {
    const std::size_t mark = FindInAnsi(name, kKeyMark);
    return mark == std::string_view::npos || mark == 0 ? name : name.substr(mark + kKeyMark.size());
}

std::string_view EncodedDisplay(std::string_view name) {
    std::string_view display = name;
    std::size_t start = kFieldMark.size();
    for (std::size_t mark = FindInAnsi(name, kFieldMark, start); mark != std::string_view::npos;
         mark = FindInAnsi(name, kFieldMark, start)) {
        const std::size_t text = mark + kFieldMark.size();
        display = name.substr(text);
        start = text + ReadLength(name.substr(start, mark - start), display.size());
    }
    return display;
}

// Takes one segment off the front; false when there is none, or none that is whole.
bool TakeSegment(std::string_view& rest, std::vector<CString>& texts) {
    if (!rest.starts_with(kFieldMark)) return false;
    std::string_view text = rest.substr(kFieldMark.size());
    std::size_t length = 0;
    const auto read = std::from_chars(text.data(), text.data() + text.size(), length);
    if (read.ec != std::errc()) return false;
    text.remove_prefix(static_cast<std::size_t>(read.ptr - text.data()));
    if (!text.starts_with(kFieldMark) || text.size() - kFieldMark.size() < length) return false;
    texts.emplace_back(text.substr(kFieldMark.size(), length));
    rest = text.substr(kFieldMark.size() + length);
    return true;
}

// Where each text's segment ends in the encoded name.
std::vector<std::size_t> SegmentEnds(const std::vector<CString>& texts) {
    std::vector<std::size_t> ends;
    ends.reserve(texts.size());
    std::size_t end = 0;
    for (const CString& text : texts) {
        end += kFieldMark.size() * 2 + std::to_string(text.GetLength()).size() + text.View().size();
        ends.push_back(end);
    }
    return ends;
}

}  // namespace

CString DisplayNameOf(const CString& name) {
    const std::string_view text = name.View();
    return CString(text.starts_with(kFieldMark) ? EncodedDisplay(text) : KeyFormDisplay(text));
}

CString EncodeFolderName(const std::vector<CString>& texts) {
    std::string name;
    for (const CString& text : texts) {
        name.append(kFieldMark).append(std::to_string(text.GetLength())).append(kFieldMark).append(text.View());
    }
    return CString(name);
}

std::vector<CString> DecodeFolderName(const CString& name) {
    std::vector<CString> texts;
    std::string_view rest = name.View();
    while (TakeSegment(rest, texts)) continue;
    if (!rest.empty()) texts.clear();
    return texts;
}

CString PathOfEncodedName(const CString& name) {
    const std::vector<CString> texts = DecodeFolderName(name);
    if (!texts.empty()) return PathOfEncodedTexts(texts);
    return name.IsEmpty() ? CString() : CString(kPathSeparator, 1) + name;
}

CString PathOfEncodedTexts(const std::vector<CString>& texts, std::size_t first) {
    const std::vector<std::size_t> ends = SegmentEnds(texts);
    const std::string name = EncodeFolderName(texts).GetString();
    std::size_t length = 0;
    for (std::size_t i = first; i < ends.size() && length <= kLongestPath; ++i) length += 1 + ends[i];
    std::string path;
    if (length > kLongestPath) return CString(path.append(1, kPathSeparator).append(name));
    path.reserve(length);
    for (std::size_t i = first; i < ends.size(); ++i) path.append(1, kPathSeparator).append(name, 0, ends[i]);
    return CString(path);
}

CString DisplayPathOf(const CString& nameOrPath) {
    std::vector<CString> texts = DecodeFolderName(nameOrPath);
    if (!texts.empty()) {
        texts.erase(texts.begin());
        return JoinDisplayPath(texts);
    }
    for (const CString& name : SplitFolderPath(nameOrPath)) texts.push_back(DisplayNameOf(name));
    return JoinDisplayPath(texts);
}

CString JoinDisplayPath(const std::vector<CString>& texts) {
    CString path;
    for (std::size_t i = 0; i < texts.size(); ++i) {
        if (i > 0) path += kPathSeparator;
        path += texts[i];
    }
    return path;
}

}  // namespace qfc
