#include "platform/os/IniFile.h"

#include "platform/os/Files.h"
#include "platform/os/IniDocument.h"
#include "platform/os/IniEdit.h"
#include "platform/os/IniStore.h"
#include "platform/os/LastError.h"
#include "platform/os/Places.h"
#include "platform/text/AnsiText.h"
#include "platform/text/CodePages.h"

#include <algorithm>
#include <charconv>
#include <cstring>
#include <memory>
#include <new>
#include <optional>
#include <string_view>
#include <utility>
#include <vector>

namespace qfc {
namespace {

using Document = std::shared_ptr<const IniDocument>;

// Longer values lose multiples of this length.
constexpr std::size_t kValueLimit = 65536;

std::string_view WithoutTrailingBlanks(std::string_view text) { return text.substr(0, text.find_last_not_of(' ') + 1); }

// Names that callers give lose blanks at both ends, no tabs.
std::string_view Parameter(std::string_view name) {
    name = WithoutTrailingBlanks(name);
    return name.substr(std::min(name.find_first_not_of(' '), name.size()));
}

std::string_view WithoutQuotes(std::string_view value) {
    const bool quoted =
        value.size() >= 2 && value.front() == value.back() && (value.front() == '"' || value.front() == '\'');
    return quoted ? value.substr(1, value.size() - 2) : value;
}

// Texts of the interface end at a NUL, whatever a file holds.
std::string UpToNul(std::string text) {
    text.resize(std::min(text.find('\0'), text.size()));
    return text;
}

// A bare name belongs to no folder of its own; settings of the user are in the data folder.
// Empty, with the last error set, when that one's path is too long.
std::string NativeProfilePath(std::string_view file) {
    std::string path(file);
    if (path.find('/') == std::string::npos && FindInAnsi(path, "\\") == std::string::npos) {
        char folder[MAX_PATH];
        if (GetAppDataFolder(folder, sizeof(folder), 0, 0) == 0) {
            SetLastError(ERROR_PATH_NOT_FOUND);
            return {};
        }
        path.insert(0, folder);
    }
    return NativePath(path.c_str());
}

Document Open(const char* file, ProfileTexts texts = ProfileTexts::Ansi) {
    if (file == nullptr || *file == '\0') {
        SetLastError(ERROR_FILE_NOT_FOUND);
        return nullptr;
    }
    const std::string path = NativeProfilePath(file);
    return !path.empty() ? OpenProfile(path, texts) : nullptr;
}

const IniDocument::Section* SectionOf(const Document& document, const char* name) {
    return document != nullptr ? document->FindSection(Parameter(name)) : nullptr;
}

// The text of the value as it goes out; nothing when there is none.
std::optional<std::string> ValueOf(const char* section, const char* key, const char* file,
                                   ProfileTexts texts = ProfileTexts::Ansi) {
    const Document document = Open(file, texts);
    const IniDocument::Section* found = SectionOf(document, section);
    const IniDocument::Entry* entry = found != nullptr ? document->FindEntry(*found, Parameter(key)) : nullptr;
    if (entry == nullptr) return std::nullopt;
    std::string value = UpToNul(document->Outward(WithoutQuotes(entry->value)));
    value.resize(value.size() % kValueLimit);
    return value;
}

using Texts = std::vector<std::string>;

// An empty name would end the list.
void AddName(Texts& names, const IniDocument& document, std::string_view name) {
    std::string text = UpToNul(document.Outward(name));
    if (!text.empty()) names.push_back(std::move(text));
}

std::optional<Texts> SectionNames(const char* file) {
    const Document document = Open(file);
    if (document == nullptr) return std::nullopt;
    Texts names;
    for (const auto& section : document->Sections()) AddName(names, *document, section.name);
    return names;
}

std::optional<Texts> KeyNames(const char* section, const char* file) {
    const Document document = Open(file);
    const IniDocument::Section* found = SectionOf(document, section);
    if (found == nullptr) return std::nullopt;
    Texts names;
    for (const auto& entry : found->entries) {
        if (entry.hasValue) AddName(names, *document, entry.key);
    }
    return names;
}

Texts SectionLines(const char* section, const char* file) {
    const Document document = Open(file);
    const IniDocument::Section* found = SectionOf(document, section);
    Texts lines;
    if (found == nullptr) return lines;
    for (const auto& entry : found->entries) {
        std::string line(entry.key);
        if (entry.hasValue) line.append("=").append(entry.value);
        AddName(lines, *document, line);
    }
    return lines;
}

DWORD CopyValue(std::string_view value, char* buffer, DWORD size) {
    if (buffer == nullptr || size == 0) return 0;
    const std::size_t length = std::min<std::size_t>(value.size(), size - 1);
    std::memcpy(buffer, value.data(), length);
    buffer[length] = '\0';
    return static_cast<DWORD>(length);
}

// `spare` bytes have to stay free behind the list for it to fit.
DWORD CopyList(const Texts& texts, char* buffer, DWORD size, std::size_t spare = 0) {
    std::string list;
    for (const std::string& text : texts) list.append(text).append(1, '\0');
    const bool cut = list.size() + 1 + spare > size;
    if (cut) list.resize(size < 2 ? 0 : std::min<std::size_t>(list.size(), size - 2));
    const std::size_t length = list.size();
    list.append(cut || list.empty() ? 2 : 1, '\0');
    if (buffer != nullptr) std::memcpy(buffer, list.data(), std::min<std::size_t>(list.size(), size));
    return buffer != nullptr ? static_cast<DWORD>(length) : 0;
}

// The interface throws nothing: what does not fit into memory counts as not there.
template <class Call>
DWORD WithoutThrowing(std::string_view otherwise, char* buffer, DWORD size, const Call& call) {
    try {
        return call();
    } catch (const std::bad_alloc&) {
        SetLastError(ERROR_NOT_ENOUGH_MEMORY);
        return CopyValue(otherwise, buffer, size);
    }
}

DWORD CopyListOr(const std::optional<Texts>& list, std::string_view fallback, char* buffer, DWORD size) {
    return list ? CopyList(*list, buffer, size) : CopyValue(fallback, buffer, size);
}

int Write(const char* section, const char* key, const char* value, const char* file, ProfileTexts texts) {
    const std::string path = NativeProfilePath(file);
    if (path.empty()) return 0;
    const auto changed = [&](const IniDocument& old) {
        if (key == nullptr) return WithoutSection(old, Parameter(section));
        if (value == nullptr) return WithoutKey(old, Parameter(section), Parameter(key));
        return WithValue(old, Parameter(section), Parameter(key), value);
    };
    return ChangeProfile(path, texts, changed) ? 1 : 0;
}

}  // namespace

std::string ReadProfileText(const std::string& section, const std::string& key, const std::string& fallback,
                            const std::string& file, ProfileTexts texts) {
    const auto value = ValueOf(section.c_str(), key.c_str(), file.c_str(), texts);
    return value ? *value : std::string(WithoutTrailingBlanks(fallback));
}

int WriteProfileText(const std::string& section, const std::string& key, const std::string& value,
                     const std::string& file, ProfileTexts texts) {
    return file.empty() ? 0 : Write(section.c_str(), key.c_str(), value.c_str(), file.c_str(), texts);
}

std::vector<std::string> ReadProfileSection(const std::string& section, const std::string& file) {
    return SectionLines(section.c_str(), file.c_str());
}

std::vector<std::string> ReadProfileSectionNames(const std::string& file) {
    return SectionNames(file.c_str()).value_or(Texts());
}

int ReadProfileNumber(const std::string& section, const std::string& key, int fallback, const std::string& file) {
    const auto value = ValueOf(section.c_str(), key.c_str(), file.c_str());
    if (!value) return fallback;
    int number = 0;
    std::from_chars(value->data(), value->data() + value->size(), number);
    return number;
}

}  // namespace qfc

DWORD GetPrivateProfileStringA(const char* section, const char* key, const char* fallback, char* buffer, DWORD size,
                               const char* file) {
    const std::string_view otherwise = qfc::WithoutTrailingBlanks(fallback != nullptr ? fallback : "");
    return qfc::WithoutThrowing(otherwise, buffer, size, [&] {
        if (section == nullptr) return qfc::CopyListOr(qfc::SectionNames(file), otherwise, buffer, size);
        if (key == nullptr) return qfc::CopyListOr(qfc::KeyNames(section, file), otherwise, buffer, size);
        const auto value = qfc::ValueOf(section, key, file);
        return qfc::CopyValue(value ? std::string_view(*value) : otherwise, buffer, size);
    });
}

DWORD GetPrivateProfileSectionA(const char* section, char* buffer, DWORD size, const char* file) {
    return qfc::WithoutThrowing("", buffer, size, [&] {
        return qfc::CopyList(section != nullptr ? qfc::SectionLines(section, file) : qfc::Texts(), buffer, size);
    });
}

DWORD GetPrivateProfileSectionNamesA(char* buffer, DWORD size, const char* file) {
    return qfc::WithoutThrowing("", buffer, size, [&] {
        const auto names = qfc::SectionNames(file);
        // Kept: a buffer that the list fills to the last byte counts as too small.
        return names ? qfc::CopyList(*names, buffer, size, 1) : qfc::CopyValue("", buffer, size);
    });
}

int WritePrivateProfileStringA(const char* section, const char* key, const char* value, const char* file) {
    if (section == nullptr || file == nullptr || *file == '\0') {
        SetLastError(ERROR_INVALID_PARAMETER);
        return 0;
    }
    return static_cast<int>(qfc::WithoutThrowing("", nullptr, 0, [&] {
        return static_cast<DWORD>(qfc::Write(section, key, value, file, qfc::ProfileTexts::Ansi));
    }));
}
