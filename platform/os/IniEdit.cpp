#include "platform/os/IniEdit.h"

#include "platform/os/IniDocument.h"

namespace qfc {
namespace {

constexpr std::string_view kLineBreak = "\r\n";

// Puts whole lines behind those that end at `position`; the last line of a file may lack its break.
std::string WithLines(const std::string& text, std::size_t position, std::string_view lines) {
    std::string result = text.substr(0, position);
    if (!result.empty() && result.back() != '\n' && result.back() != '\r') result += kLineBreak;
    result += lines;
    return result += text.substr(position);
}

std::string WithoutLine(const std::string& text, const IniDocument::Line& line) {
    return text.substr(0, line.begin) + text.substr(line.next);
}

std::optional<std::string> WithOtherValue(const std::string& text, std::string_view old, std::string_view value) {
    if (old == value) return std::nullopt;
    const auto position = static_cast<std::size_t>(old.data() - text.data());
    return text.substr(0, position).append(value) + text.substr(position + old.size());
}

}  // namespace

std::optional<std::string> WithValue(const IniDocument& document, std::string_view section, std::string_view key,
                                     std::string_view value) {
    const std::string& text = document.Text();
    const std::string newValue = document.Inward(value);
    const std::string newLine = document.Inward(key) + "=" + newValue + std::string(kLineBreak);
    const IniDocument::Section* found = document.FindSection(section);
    if (found == nullptr) {
        const std::string header = "[" + document.Inward(section) + "]" + std::string(kLineBreak);
        return WithLines(text, text.size(), header + newLine);
    }
    const IniDocument::Entry* entry = document.FindEntry(*found, key);
    if (entry != nullptr) return WithOtherValue(text, entry->value, newValue);
    const std::size_t last = found->entries.empty() ? found->headerLine : found->entries.back().line;
    return WithLines(text, document.Lines()[last].next, newLine);
}

std::optional<std::string> WithoutKey(const IniDocument& document, std::string_view section, std::string_view key) {
    const IniDocument::Section* found = document.FindSection(section);
    const IniDocument::Entry* entry = found != nullptr ? document.FindEntry(*found, key) : nullptr;
    if (entry == nullptr) return std::nullopt;
    return WithoutLine(document.Text(), document.Lines()[entry->line]);
}

std::optional<std::string> WithoutSection(const IniDocument& document, std::string_view section) {
    const IniDocument::Section* found = document.FindSection(section);
    if (found == nullptr) return std::nullopt;
    const std::string& text = document.Text();
    const auto& lines = document.Lines();
    std::string result = text.substr(0, lines[found->headerLine].begin);
    std::size_t kept = lines[found->headerLine].next;
    for (const IniDocument::Entry& entry : found->entries) {
        result += text.substr(kept, lines[entry.line].begin - kept);
        kept = lines[entry.line].next;
    }
    return result += text.substr(kept);
}

}  // namespace qfc
