#include "hosts/qfc/library/Translation.h"

#include "api/QFCLib.h"
#include "hosts/qfc/cli/Exit.h"
#include "hosts/qfc/library/Galleries.h"
#include "hosts/qfc/library/Session.h"
#include "hosts/qfc/library/Text.h"
#include "hosts/qfc/library/Tree.h"

#include <cstdlib>
#include <optional>
#include <set>
#include <utility>

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

std::optional<std::string> ReadSwitch(const char* section, const char* key, const std::string& file) {
    constexpr const char* kNone = "\x01";
    const std::string value = Read(section, key, kNone, file);
    return value == kNone ? std::nullopt : std::optional(value);
}

// Sets a switch while it lives. A null text takes the key out again.
class BorrowedSwitch {
public:
    BorrowedSwitch(const char* section, const char* key, const std::string& file)
        : m_section(section), m_key(key), m_file(file), m_before(ReadSwitch(section, key, file)) {
        Write("1");
        if (!IsOn(section, key, file)) throw Failure("cannot write " + file);
    }
    ~BorrowedSwitch() { Write(m_before ? m_before->c_str() : nullptr); }
    BorrowedSwitch(const BorrowedSwitch&) = delete;
    BorrowedSwitch& operator=(const BorrowedSwitch&) = delete;

private:
    void Write(const char* value) const { WritePrivateProfileStringA(m_section, m_key, value, m_file.c_str()); }

    const char* m_section;
    const char* m_key;
    std::string m_file;
    std::optional<std::string> m_before;
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
