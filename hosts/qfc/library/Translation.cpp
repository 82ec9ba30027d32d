#include "hosts/qfc/library/Translation.h"

#include "api/QFCLib.h"
#include "hosts/qfc/cli/Exit.h"
#include "hosts/qfc/library/Galleries.h"
#include "hosts/qfc/library/Session.h"
#include "hosts/qfc/library/Text.h"
#include "hosts/qfc/library/Tree.h"

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <optional>
#include <set>
#include <utility>
#include <vector>

namespace qfc::host {
namespace {

constexpr const char* kTranslateSection = "Orvel Cinelume Init Project";
constexpr const char* kTranslateKey = "SupportTWTranslateMode";
constexpr const char* kCollectSection = "USERMODE";
constexpr const char* kCollectKey = "CreateTWTranslateData";

std::string Read(const std::string& section, const std::string& key, const char* fallback, const std::string& file) {
    std::vector<char> text(0x10000);
    const DWORD length = GetPrivateProfileStringA(section.c_str(), key.c_str(), fallback, text.data(),
                                                  static_cast<DWORD>(text.size()), file.c_str());
    return {text.data(), length};
}

// As the library understands it.
bool IsOn(const char* section, const char* key, const std::string& file) {
    return std::atoi(Read(section, key, "", file).c_str()) == 1;
}

// The list that such a function of the library fills in: each text ends with a NUL.
template <class Fill>
std::vector<std::string> ReadList(Fill&& fill) {
    std::vector<char> buffer(0x10000);
    const std::string texts(buffer.data(), fill(buffer.data(), static_cast<DWORD>(buffer.size())));
    std::vector<std::string> list;
    for (std::size_t begin = 0; begin < texts.size();) {
        const std::size_t end = std::min(texts.find('\0', begin), texts.size());
        if (end > begin) list.push_back(texts.substr(begin, end - begin));
        begin = end + 1;
    }
    return list;
}

bool IsSameKey(const std::string& left, const std::string& right) {
    return ToCString(left).CompareNoCase(right.c_str()) == 0;
}

bool HasSection(const char* section, const std::string& file) {
    const auto names =
        ReadList([&](char* buffer, DWORD size) { return GetPrivateProfileSectionNamesA(buffer, size, file.c_str()); });
    return std::ranges::any_of(names, [&](const std::string& name) { return IsSameKey(name, section); });
}

// The value as it stands in the file, with its quotes.
std::optional<std::string> WrittenValue(const char* section, const char* key, const std::string& file) {
    const auto lines = ReadList(
        [&](char* buffer, DWORD size) { return GetPrivateProfileSectionA(section, buffer, size, file.c_str()); });
    for (const std::string& line : lines) {
        const std::size_t equals = line.find('=');
        if (equals != std::string::npos && IsSameKey(line.substr(0, equals), key)) return line.substr(equals + 1);
    }
    return std::nullopt;
}

bool IsThere(const std::string& file) {
    std::error_code error;
    return std::filesystem::exists(file, error);
}

// Sets a switch while it lives; then the file is as it was, and gone when it was not there.
class BorrowedSwitch {
public:
    BorrowedSwitch(const char* section, const char* key, const std::string& file)
        : m_section(section),
          m_key(key),
          m_file(file),
          m_hadFile(IsThere(file)),
          m_hadSection(HasSection(section, file)),
          m_before(WrittenValue(section, key, file)),
          m_isBorrowed(!IsOn(section, key, file)) {
        if (!m_isBorrowed) return;
        Write(m_key, "1");
        if (IsOn(section, key, file)) return;
        throw Failure("cannot write " + file + ", where collecting has to be switched on for a moment");
    }
    ~BorrowedSwitch() {
        if (!m_isBorrowed) return;
        Write(m_hadSection ? m_key : nullptr, m_hadSection && m_before ? m_before->c_str() : nullptr);
        std::error_code error;
        if (!m_hadFile && std::filesystem::is_empty(m_file, error) && !error) std::filesystem::remove(m_file, error);
    }
    BorrowedSwitch(const BorrowedSwitch&) = delete;
    BorrowedSwitch& operator=(const BorrowedSwitch&) = delete;

private:
    void Write(const char* key, const char* value) const {
        WritePrivateProfileStringA(m_section, key, value, m_file.c_str());
    }

    const char* m_section;
    const char* m_key;
    std::string m_file;
    bool m_hadFile;
    bool m_hadSection;
    std::optional<std::string> m_before;
    bool m_isBorrowed;
};

// From here on the library collects names in this process; the switches themselves are as they were.
void StartCollecting() {
    const std::string ini = SettingsPath();
    const BorrowedSwitch translate(kTranslateSection, kTranslateKey, ini);
    const BorrowedSwitch collect(kCollectSection, kCollectKey, ini);
    // Both are read by the first question. Names of videos are not collected, so this one asks and writes nothing.
    CQItem question;
    question.SetItemType(item_type::kVideo);
    question.fnTranslateItemName();
}

const char* SectionOf(const CQItem& item) {
    switch (item.GetItemType()) {
        case item_type::kTransition:
            return "TW_ITEMTYPE_TX";
        case item_type::kVideoFilter:
            return "TW_ITEMTYPE_VIDEO_FILTER";
        case item_type::kAudioFilter:
            return "TW_ITEMTYPE_AUDIO_FILTER";
        default:
            return nullptr;
    }
}

// One run over the library: asks about each name once, then looks what the file holds.
class Collector {
public:
    explicit Collector(std::string file) { m_names.file = std::move(file); }

    void Visit(CQFolder& folder) {
        const auto adopt = static_cast<int>(folder.GetAdopt());
        if (IsNew("TW_FOLDER_" + std::to_string(adopt), ToText(folder.GetFolderName()))) {
            folder.GetTranslateFolderName();
        }
    }
    void Visit(const CQItem& item) {
        const char* section = SectionOf(item);
        if (section == nullptr || !IsNew(section, ToText(item.GetItemName()))) return;
        CQItem copy(item.GetItemName());
        copy.SetItemType(item.GetItemType());
        copy.fnTranslateItemName();
    }

    CollectedNames Take() {
        for (const auto& [section, name] : m_asked) {
            const bool written = Read(section, name, "", m_names.file) == name;
            (written ? m_names.written : m_names.refused).push_back(section + ": " + name);
        }
        return std::move(m_names);
    }

private:
    bool IsNew(const std::string& section, const std::string& name) {
        // A folder of a damaged library may have no name; there is nothing to translate.
        if (name.empty() || !m_seen.emplace(section, name).second) return false;
        if (!Read(section, name, "", m_names.file).empty()) {
            ++m_names.already;
            return false;
        }
        m_asked.emplace_back(section, name);
        return true;
    }

    CollectedNames m_names;
    std::set<std::pair<std::string, std::string>> m_seen;
    std::vector<std::pair<std::string, std::string>> m_asked;
};

}  // namespace

void SwitchTranslation(bool on) {
    const std::string ini = SettingsPath();
    // What stands there already need not be written: a library that may only be read can be looked at with it.
    if (IsOn(kTranslateSection, kTranslateKey, ini) == on) return;
    WritePrivateProfileStringA(kTranslateSection, kTranslateKey, on ? "1" : "0", ini.c_str());
    if (IsOn(kTranslateSection, kTranslateKey, ini) != on) throw Failure("cannot write " + ini);
}

std::string CollectingWarning() {
    const std::string ini = SettingsPath();
    if (!IsOn(kTranslateSection, kTranslateKey, ini) || !IsOn(kCollectSection, kCollectKey, ini)) return {};
    return std::string("names that are shown are written over their translations: ") + kCollectKey + " is 1 in " + ini;
}

CollectedNames CollectNames(Galleries& galleries) {
    const std::string file = ToText(TranslationFilePath());
    if (file.empty()) throw Failure("the path of the program's folder is too long");
    StartCollecting();
    Collector collector(file);
    for (CQGallery* gallery : galleries.All()) {
        for (CQFolder* folder : WholeTree(*gallery)) {
            if (folder != gallery) collector.Visit(*folder);
            for (const CQItem* item : Items(*folder)) collector.Visit(*item);
        }
    }
    return collector.Take();
}

}  // namespace qfc::host
