#include "platform/os/IniDocument.h"

#include "platform/text/AnsiText.h"
#include "platform/text/CaseFold.h"
#include "platform/text/CodePages.h"
#include "platform/text/Utf8.h"

#include <algorithm>
#include <utility>

namespace qfc {
namespace {

constexpr std::string_view kUtf16Mark = "\xFF\xFE";
constexpr std::string_view kBlanks = " \t\v";

bool IsHighSurrogate(char32_t unit) { return unit >= 0xD800 && unit < 0xDC00; }
bool IsLowSurrogate(char32_t unit) { return unit >= 0xDC00 && unit < 0xE000; }

char32_t UnitAt(std::string_view bytes, std::size_t position) {
    return static_cast<unsigned char>(bytes[position]) |
           static_cast<char32_t>(static_cast<unsigned char>(bytes[position + 1])) << 8;
}

// Halves of pairs that stand alone take three bytes like any other unit, so that the way back finds them.
std::string Utf8OfUnits(std::string_view bytes) {
    std::string text;
    text.reserve(bytes.size());
    for (std::size_t i = 0; i + 1 < bytes.size(); i += 2) {
        char32_t character = UnitAt(bytes, i);
        if (IsHighSurrogate(character) && i + 3 < bytes.size() && IsLowSurrogate(UnitAt(bytes, i + 2))) {
            character = 0x10000 + ((character - 0xD800) << 10) + (UnitAt(bytes, i + 2) - 0xDC00);
            i += 2;
        }
        AppendUtf8(text, character);
    }
    return text;
}

DecodedCharacter DecodeUnit(std::string_view text) {
    const DecodedCharacter decoded = DecodeUtf8(text);
    if (decoded.valid || text.size() < 3 || text[0] != '\xED') return decoded;
    const auto second = static_cast<unsigned char>(text[1]);
    const auto third = static_cast<unsigned char>(text[2]);
    if (second < 0xA0 || second > 0xBF || third < 0x80 || third > 0xBF) return decoded;
    return {0xD000u | (second & 0x3Fu) << 6 | (third & 0x3Fu), 3, true};
}

std::string UnitsOfUtf8(std::string_view text) {
    std::u16string units;
    while (!text.empty()) {
        const DecodedCharacter decoded = DecodeUnit(text);
        AppendUtf16(units, decoded.valid ? decoded.character : U'\uFFFD');
        text.remove_prefix(decoded.length);
    }
    std::string bytes;
    bytes.reserve(units.size() * 2);
    for (const char16_t unit : units) {
        bytes += static_cast<char>(unit & 0xFF);
        bytes += static_cast<char>(unit >> 8);
    }
    return bytes;
}

std::string_view Trimmed(std::string_view text) {
    const std::size_t first = text.find_first_not_of(kBlanks);
    if (first == std::string_view::npos) return text.substr(text.size());
    return text.substr(first, text.find_last_not_of(kBlanks) - first + 1);
}

std::string FoldUtf8(std::string_view text) {
    std::string folded;
    while (!text.empty()) {
        const DecodedCharacter decoded = DecodeUtf8(text);
        if (decoded.valid) {
            AppendUtf8(folded, FoldToLower(decoded.character));
        } else {
            folded.append(text.substr(0, decoded.length));
        }
        text.remove_prefix(decoded.length);
    }
    return folded;
}

}  // namespace

IniDocument::IniDocument(std::string bytes, ProfileTexts texts)
    : m_texts(texts), m_utf16(bytes.starts_with(kUtf16Mark)), m_text(std::move(bytes)) {
    if (m_utf16) {
        if (m_text.size() % 2 != 0) m_oddByte = m_text.back();
        m_text = Utf8OfUnits(std::string_view(m_text).substr(kUtf16Mark.size()));
    }
    for (std::size_t begin = 0; begin < m_text.size();) {
        const std::size_t end = std::min(m_text.find_first_of("\r\n", begin), m_text.size());
        const std::size_t breakLength = m_text.compare(end, 2, "\r\n") == 0 ? 2 : 1;
        m_lines.push_back({begin, end, std::min(end + breakLength, m_text.size()), false});
        ReadLine(m_lines.back());
        begin = m_lines.back().next;
    }
}

void IniDocument::ReadLine(const Line& line) {
    const std::string_view text = Trimmed(std::string_view(m_text).substr(line.begin, line.end - line.begin));
    if (text.empty()) return;
    if (text.front() == ';') {
        m_lines.back().comment = true;
    } else if (text.front() == '[') {
        AddSection(text.substr(1));
    } else if (!m_sections.empty()) {
        AddEntry(text);
    }
}

void IniDocument::AddSection(std::string_view line) {
    const std::string_view name = Trimmed(line.substr(0, FindBracket(line)));
    m_firstByName.emplace(Fold(name), m_sections.size());
    m_sections.push_back({name, m_lines.size() - 1, {}, {}});
}

void IniDocument::AddEntry(std::string_view line) {
    Section& section = m_sections.back();
    const std::size_t equals = line.find('=');
    const bool hasValue = equals != std::string_view::npos;
    const std::string_view key = Trimmed(line.substr(0, equals));
    const std::string_view value = hasValue ? Trimmed(line.substr(equals + 1)) : line.substr(line.size());
    if (hasValue) section.firstByKey.emplace(Fold(key), section.entries.size());
    section.entries.push_back({key, value, hasValue, m_lines.size() - 1});
}

const IniDocument::Section* IniDocument::FindSection(std::string_view name) const {
    const auto found = m_firstByName.find(Fold(Inward(name)));
    return found != m_firstByName.end() ? &m_sections[found->second] : nullptr;
}

const IniDocument::Entry* IniDocument::FindEntry(const Section& section, std::string_view key) const {
    const auto found = section.firstByKey.find(Fold(Inward(key)));
    return found != section.firstByKey.end() ? &section.entries[found->second] : nullptr;
}

std::string IniDocument::Inward(std::string_view asked) const {
    return Converts() ? AnsiToUtf8(asked) : std::string(asked);
}

std::string IniDocument::Outward(std::string_view text) const {
    return Converts() ? Utf8ToAnsi(text) : std::string(text);
}

std::string IniDocument::BytesOf(std::string_view text) const {
    return m_utf16 ? std::string(kUtf16Mark) + UnitsOfUtf8(text) + m_oddByte : std::string(text);
}

bool IniDocument::ComesFrom(std::string_view bytes) const {
    return m_utf16 ? BytesOf(m_text) == bytes : m_text == bytes;
}

std::string IniDocument::Fold(std::string_view text) const {
    std::string folded(text);
    bool ascii = true;
    for (char& c : folded) {
        ascii = ascii && static_cast<unsigned char>(c) < 0x80;
        if (c >= 'A' && c <= 'Z') c = static_cast<char>(c + ('a' - 'A'));
    }
    if (ascii) return folded;
    return IsUtf8() ? FoldUtf8(text) : FoldAnsiToLower(text);
}

std::size_t IniDocument::FindBracket(std::string_view text) const {
    return IsUtf8() ? text.find(']') : FindInAnsi(text, "]");
}

}  // namespace qfc
