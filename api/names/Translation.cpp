#include "api/names/Translation.h"

#include "platform/os/IniFile.h"
#include "platform/os/Places.h"
#include "platform/text/CodePages.h"

#include <mutex>
#include <set>
#include <string>
#include <string_view>
#include <utility>

namespace qfc {
namespace {

struct TranslatedType {
    DWORD type;
    const char* section;
    bool collected;
};

// Kept: names of videos and speeds are looked up, but not collected.
constexpr TranslatedType kTranslatedTypes[] = {
    {1, "TW_ITEMTYPE_VIDEO", false},         {64, "TW_ITEMTYPE_TX", true},
    {128, "TW_ITEMTYPE_VIDEO_FILTER", true}, {256, "TW_ITEMTYPE_AUDIO_FILTER", true},
    {67108864, "TW_ITEMTYPE_SPEED", false},
};

const TranslatedType* FindType(DWORD dwType) {
    for (const TranslatedType& type : kTranslatedTypes) {
        if (type.type == dwType) return &type;
    }
    return nullptr;
}

// Kept: the number is written as a signed one.
std::string FolderSection(DWORD dwId) { return "TW_FOLDER_" + std::to_string(static_cast<int>(dwId)); }

// Guards all look-up buffers and the names written so far.
std::mutex& TranslationMutex() {
    static std::mutex mutex;
    return mutex;
}

bool ReadSwitch(const char* section, const char* key) {
    char folder[MAX_PATH];
    if (GetAppDataFolder(folder, sizeof(folder), 0, 0) == 0) return false;
    return ReadProfileNumber(section, key, 0, std::string(folder) + "Cinelume.ini") == 1;
}

// What would read back as a section, a comment, another key or other lines is no key.
bool CanBeKey(std::string_view name) {
    constexpr std::string_view kTrimmed = " \t\v";
    if (name.empty() || name.find_first_of("=\r\n") != std::string_view::npos) return false;
    if (kTrimmed.find(name.front()) != std::string_view::npos) return false;
    return name.front() != '[' && name.front() != ';' && kTrimmed.find(name.back()) == std::string_view::npos;
}

int WriteOnce(const std::string& section, const std::string& name) {
    static std::set<std::pair<std::string, std::string>> written;
    const std::lock_guard lock(TranslationMutex());
    const std::pair entry(section, name);
    if (written.contains(entry)) return 1;
    const int result = WriteProfileText(section, name, name, TranslationFilePath().GetString(), ProfileTexts::Utf8);
    if (result != 0) written.insert(entry);
    return result;
}

}  // namespace

const CString& TranslationFilePath() {
    static const CString path(HostDataFile("orvel.dat", "qvTWTranslateData.dat"));
    return path;
}

const CString& ArFilterFilePath() {
    static const CString path(HostDataFile("orvel.dat", "ARFilter.ini"));
    return path;
}

bool IsTranslationOn() {
    static const bool on = ReadSwitch("Orvel Cinelume Init Project", "SupportTWTranslateMode");
    return on;
}

bool IsTranslatedType(DWORD dwItemType) { return FindType(dwItemType) != nullptr; }

bool IsTranslationCollected() {
    static const bool collected = ReadSwitch("USERMODE", "CreateTWTranslateData");
    return collected;
}

CString TranslationBuffer::Read(const CString& file, const char* section, const CString& key) {
    const std::lock_guard lock(TranslationMutex());
    if (!file.IsEmpty()) {
        const std::string text =
            ReadProfileText(section, AnsiToUtf8(key.GetString()), "", file.GetString(), ProfileTexts::Utf8);
        m_text[text.copy(m_text.data(), m_text.size() - 1)] = '\0';
    }
    return CString(m_text.data());
}

bool IsNameless(const CString& key) { return key.View().find_first_not_of(' ') == std::string_view::npos; }

CString LookUpTranslation(const char* section, const CString& key) {
    static TranslationBuffer buffer;
    if (IsNameless(key) || TranslationFilePath().IsEmpty()) return CString();
    return buffer.Read(TranslationFilePath(), section, key);
}

CString LookUpTranslation(DWORD dwIdOrType, const CString& key, bool bFolder) {
    if (bFolder) return LookUpTranslation(FolderSection(dwIdOrType).c_str(), key);
    const TranslatedType* type = FindType(dwIdOrType);
    return type != nullptr ? LookUpTranslation(type->section, key) : CString();
}

int WriteTranslation(DWORD dwIdOrType, const CString& name, bool bFolder) {
    const TranslatedType* type = bFolder ? nullptr : FindType(dwIdOrType);
    if (!bFolder && (type == nullptr || !type->collected)) return 0;
    const std::string utf8Name = AnsiToUtf8(name.GetString());
    if (TranslationFilePath().IsEmpty() || !CanBeKey(utf8Name)) return 0;
    return WriteOnce(bFolder ? FolderSection(dwIdOrType) : type->section, utf8Name);
}

}  // namespace qfc
