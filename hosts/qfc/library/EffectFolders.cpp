#include "hosts/qfc/library/EffectFolders.h"

#include "api/QFCLib.h"
#include "hosts/qfc/cli/Exit.h"
#include "hosts/qfc/effects/ProbeReport.h"
#include "hosts/qfc/library/Paths.h"
#include "hosts/qfc/library/Text.h"

#include <algorithm>

namespace qfc::host {
namespace {

constexpr const char* kOther = "Other";

using Lines = std::vector<std::pair<std::string, std::string>>;

// Names of files and effects are English, or not words at all.
std::string Lower(std::string text) {
    for (char& c : text) c = c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
    return text;
}

// Beside the file of translated names, which lies with all that is shipped.
std::string TablePath() {
    const std::string beside = ToText(TranslationFilePath());
    return beside.substr(0, beside.rfind('\\') + 1) + "EffectFolders.ini";
}

std::string ReadSection(const char* section, const std::string& file) {
    constexpr std::size_t kMost = std::size_t{1} << 24;
    for (std::size_t room = std::size_t{1} << 16;; room *= 4) {
        std::string text(room, '\0');
        text.resize(GetPrivateProfileSectionA(section, text.data(), static_cast<DWORD>(room), file.c_str()));
        if (text.size() + 2 < room || room >= kMost) return text;
    }
}

// Keys in lower case, in their order.
Lines ReadLines(const char* section, const std::string& file) {
    Lines lines;
    const std::string text = ReadSection(section, file);
    for (std::size_t begin = 0; begin < text.size();) {
        const std::size_t end = std::min(text.find('\0', begin), text.size());
        const std::string line = text.substr(begin, end - begin);
        const std::size_t equals = line.find('=');
        if (equals != std::string::npos) lines.emplace_back(Lower(line.substr(0, equals)), line.substr(equals + 1));
        begin = end + 1;
    }
    return lines;
}

std::string Stem(const std::string& baseName) { return baseName.substr(0, baseName.rfind('.')); }

}  // namespace

EffectFolders::EffectFolders() {
    const std::string file = TablePath();
    const auto read = [&](const char* names, const char* keywords) {
        const Lines lines = ReadLines(names, file);
        return Table{{lines.begin(), lines.end()}, ReadLines(keywords, file)};
    };
    m_filters = read("FILTERS_BY_NAME", "FILTERS_BY_KEYWORD");
    m_transitions = read("TRANSITIONS_BY_NAME", "TRANSITIONS_BY_KEYWORD");
    if (m_filters.names.empty() || m_transitions.names.empty()) throw Failure("cannot read " + file);
}

std::vector<std::string> EffectFolders::FolderOf(const ProbedEffect& effect, const std::string& baseName) const {
    const Table& table = effect.isTransition ? m_transitions : m_filters;
    for (const std::string& name : {Stem(baseName), effect.name}) {
        const auto named = table.names.find(Lower(name));
        if (named != table.names.end()) return SplitPath(named->second);
    }
    const std::string words = Lower(Stem(baseName) + " " + effect.name + " " + effect.explanation);
    const auto met = std::ranges::find_if(
        table.keywords, [&](const auto& keyword) { return words.find(keyword.first) != std::string::npos; });
    return met != table.keywords.end() ? SplitPath(met->second) : std::vector<std::string>{kOther};
}

}  // namespace qfc::host
