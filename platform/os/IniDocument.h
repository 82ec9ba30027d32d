#pragma once

#include "platform/os/IniFile.h"

#include <cstddef>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace qfc {

// The text of a profile file and what stands where in it. Names and values are views into the text, trimmed, quotes
// included. The text is what the file holds, or its UTF-8 form when the file is UTF-16. Never changes once made, so any
// thread may read it. `texts` says what the bytes of a file without mark are, and the texts of those who ask.
class IniDocument {
public:
    explicit IniDocument(std::string bytes, ProfileTexts texts = ProfileTexts::Ansi);
    IniDocument(const IniDocument&) = delete;
    IniDocument& operator=(const IniDocument&) = delete;

    // One line that is neither blank nor a comment. Without '=' it is all key.
    struct Entry {
        std::string_view key;
        std::string_view value;
        bool hasValue;
        std::size_t line;
    };
    // `end` is behind the text, `next` behind the line break too.
    struct Line {
        std::size_t begin;
        std::size_t end;
        std::size_t next;
        bool comment;
    };
    struct Section {
        std::string_view name;
        std::size_t headerLine;
        std::vector<Entry> entries;
        std::unordered_map<std::string, std::size_t> firstByKey;  // Folded; entries with a value alone.
    };

    const std::string& Text() const { return m_text; }
    const std::vector<Line>& Lines() const { return m_lines; }
    const std::vector<Section>& Sections() const { return m_sections; }
    // The first one of that name; null when there is none. Names are in any case.
    const Section* FindSection(std::string_view name) const;
    const Entry* FindEntry(const Section& section, std::string_view key) const;

    // Between the texts of those who ask and this text.
    std::string Inward(std::string_view asked) const;
    std::string Outward(std::string_view text) const;

    // The bytes of a file like this one that has another text, and whether those of this one are `bytes`.
    std::string BytesOf(std::string_view text) const;
    bool ComesFrom(std::string_view bytes) const;

private:
    void ReadLine(const Line& line);
    void AddSection(std::string_view line);
    void AddEntry(std::string_view line);
    std::string Fold(std::string_view text) const;
    std::size_t FindBracket(std::string_view text) const;

    bool IsUtf8() const { return m_utf16 || m_texts == ProfileTexts::Utf8; }
    bool Converts() const { return m_utf16 && m_texts == ProfileTexts::Ansi; }

    ProfileTexts m_texts;
    bool m_utf16;
    std::string m_oddByte;  // Behind the last whole unit of a UTF-16 file.
    std::string m_text;
    std::vector<Line> m_lines;
    std::vector<Section> m_sections;
    std::unordered_map<std::string, std::size_t> m_firstByName;
};

}  // namespace qfc
