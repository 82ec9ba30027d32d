#include "platform/os/IniFile.h"
#include "platform/os/LastError.h"
#include "platform/text/AnsiText.h"
#include "tags/CLibTagsMgr.h"
#include "tags/PredefinedGalleries.h"
#include "tags/TagFiles.h"
#include "tags/TagFilesRollback.h"
#include "tags/TagWords.h"

#include <algorithm>
#include <array>
#include <new>
#include <string_view>

// What the store reads of the files of default and preset tags. The sizes of the buffers are part of what is read: a
// longer section is cut.

namespace {

using SectionBuffer = std::array<char, 1024>;
using SectionNamesBuffer = std::array<char, 10240>;

// Each text up to its NUL, none of them reaching beyond the length.
std::vector<std::string_view> EntriesOf(const char* pszBuffer, int nLength) {
    std::vector<std::string_view> entries;
    if (pszBuffer == nullptr || nLength < 1) return entries;
    std::string_view rest(pszBuffer, static_cast<std::size_t>(nLength));
    while (!rest.empty()) {
        const std::size_t end = std::min(rest.find('\0'), rest.size());
        entries.push_back(rest.substr(0, end));
        rest.remove_prefix(std::min(end + 1, rest.size()));
    }
    return entries;
}

// To the profile functions what does not fit into memory is not there; here it would pass for fewer tags.
template <typename Read>
int ReadOrThrow(const Read& read) {
    SetLastError(0);
    const auto nLength = static_cast<int>(read());
    if (GetLastError() == ERROR_NOT_ENOUGH_MEMORY) throw std::bad_alloc();
    return nLength;
}

int ReadSection(const char* pszSection, SectionBuffer& buffer, const CString& strFile) {
    buffer.fill('\0');
    return ReadOrThrow([&] {
        return GetPrivateProfileSectionA(pszSection, buffer.data(), static_cast<DWORD>(buffer.size()), strFile);
    });
}

// The value of an entry is what stands behind its last '='; an entry without one is all value.
std::string_view ValueOf(std::string_view entry) {
    const std::size_t equals = qfc::FindLastInAnsi(entry, '=');
    return equals != std::string_view::npos ? entry.substr(equals + 1) : entry;
}

std::list<CString> ReadTagList(std::string_view text) {
    std::list<CString> specifiers;
    if (text.empty()) return specifiers;
    for (const std::string_view part : qfc::SplitAnsi(text, ';')) specifiers.emplace_back(part);
    return specifiers;
}

}  // namespace

CString CLibTagsMgr::GetInifileSectionByLibID(int nGalleryId) { return qfc::DefaultTagSection(nGalleryId); }

void CLibTagsMgr::GenerateCategoryTemplate() {
    qfc::TagFilesRollback read(*this);
    const CString strFile = qfc::DefaultTagFilePath();
    for (const qfc::PredefinedGallery& gallery : qfc::kPredefinedGalleries) {
        if (gallery.id == qfc::kGalleryWithoutName) continue;
        const CString strSection = GetInifileSectionByLibID(gallery.id);
        SectionBuffer buffer;
        std::vector<std::string> keys;
        const int nLength = ReadSection(strSection, buffer, strFile);
        GetIniFileSectionContent(buffer.data(), nLength, keys);
        m_categoryTemplate[static_cast<DWORD>(gallery.id)] = {strSection.GetString(), std::move(keys)};
    }
    read.Keep();
}

void CLibTagsMgr::GetIniFileSectionContent(const char* pszBuffer, int nLength, std::vector<std::string>& keys) {
    // An entry passes through a buffer of 256 bytes, the last of which is its NUL.
    constexpr std::size_t kEntryLimit = 255;
    for (const std::string_view entry : EntriesOf(pszBuffer, nLength)) {
        const std::string_view copied = entry.substr(0, kEntryLimit);
        const std::size_t equals = qfc::FindInAnsi(copied, "=");
        if (equals != std::string_view::npos) keys.emplace_back(copied.substr(0, equals));
    }
}

void CLibTagsMgr::GetPresetTagInifileSections(std::vector<std::string>& sections) {
    SectionNamesBuffer buffer{};
    const int nLength = ReadOrThrow([&] {
        return GetPrivateProfileSectionNamesA(buffer.data(), static_cast<DWORD>(buffer.size()),
                                              qfc::PresetTagFilePath());
    });
    for (const std::string_view name : EntriesOf(buffer.data(), nLength)) {
        sections.emplace_back(name);
    }
}

void CLibTagsMgr::GeneratePresetTagData() {
    qfc::TagFilesRollback read(*this);
    std::vector<std::string> sections;
    GetPresetTagInifileSections(sections);
    const CString strFile = qfc::PresetTagFilePath();
    for (const std::string& section : sections) {
        SectionBuffer buffer;
        const int nLength = ReadSection(section.c_str(), buffer, strFile);
        GetPresetTagIniFileContent(buffer.data(), nLength);
    }
    read.Keep();
}

void CLibTagsMgr::GetPresetTagIniFileContent(const char* pszBuffer, int nLength) {
    std::array<std::string_view, 4> values;
    const auto entries = EntriesOf(pszBuffer, nLength);
    const auto nEnd = static_cast<std::ptrdiff_t>(std::min(entries.size(), values.size()));
    std::transform(entries.begin(), entries.begin() + nEnd, values.begin(), ValueOf);
    m_presets.push_back({CString(values[0]), CString(values[1]), CString(values[2]), ReadTagList(values[3])});
}
