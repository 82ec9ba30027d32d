#pragma once

#include "tags/PredefinedGalleries.h"
#include "tests/support/LibraryFixture.h"
#include "tests/support/RawDb.h"

#include <filesystem>
#include <gtest/gtest.h>
#include <list>
#include <map>
#include <set>
#include <sstream>
#include <string>
#include <vector>

namespace qfc::test {

// What is shipped, as the build has put it together, in the host folder of the test; no library is there yet.
class ShippedTest : public StoppedServiceFixture {
protected:
    using Texts = std::vector<std::string>;

    void SetUp() override {
        StoppedServiceFixture::SetUp();
        std::filesystem::copy(Shipped(), HostFolder() / "Orvel.dat");
    }
    static std::filesystem::path Shipped() { return std::filesystem::path(SHIPPED_FOLDER) / "Orvel.dat"; }
    static std::string File(const char* name) { return (HostFolder() / "Orvel.dat" / name).string(); }
    static std::string Tags() { return File("Default_Libtag.ini"); }
    static std::string Presets() { return File("PresetItemTag.ini"); }
    static std::string EffectFolders() { return File("EffectFolders.ini"); }

    // --- Through the reader's functions, with more room than the readers have. ---
    static Texts Split(const std::string& text, char separator) {
        Texts parts;
        std::istringstream stream(text);
        for (std::string part; std::getline(stream, part, separator);) parts.push_back(part);
        return parts;
    }
    static std::string Value(const std::string& file, const std::string& section, const std::string& key) {
        std::string text(kRoom, '\0');
        text.resize(
            GetPrivateProfileStringA(section.c_str(), key.c_str(), "", text.data(), kRoom, CString(file.c_str())));
        return text;
    }
    static Texts Keys(const std::string& file, const std::string& section) {
        std::string text(kRoom, '\0');
        text.resize(GetPrivateProfileStringA(section.c_str(), nullptr, "", text.data(), kRoom, CString(file.c_str())));
        return Split(text, '\0');
    }
    static Texts Sections(const std::string& file) {
        std::string text(kRoom, '\0');
        text.resize(GetPrivateProfileSectionNamesA(text.data(), kRoom, CString(file.c_str())));
        return Split(text, '\0');
    }
    // All of a section, each line with the NUL behind it, and the last NUL.
    static std::size_t Size(const std::string& file, const std::string& section) {
        std::string text(kRoom, '\0');
        return GetPrivateProfileSectionA(section.c_str(), text.data(), kRoom, CString(file.c_str())) + 1;
    }
    // The names of tags that a list "Type@Tag;Type@Tag" holds.
    static Texts TagNames(const std::string& list) {
        Texts names;
        for (const std::string& specifier : Split(list, ';')) {
            const Texts parts = Split(specifier, '@');
            EXPECT_EQ(parts.size(), 2U) << specifier;
            if (parts.size() == 2) names.push_back(parts[1]);
        }
        return names;
    }

    static std::set<std::string> NamesIn(const std::string& list) {
        const Texts names = TagNames(list);
        return {names.begin(), names.end()};
    }

    // --- A host that starts with what is shipped. ---
    static CLibTagsMgr& Store() { return *CLibTagsMgr::GetLibTagMgr(); }
    static void StartHost() {
        std::map<DWORD, std::vector<CTagCategory>> nothing;
        Store().SetTagsToDefault(nothing);
        ASSERT_EQ(QFCLibraryManager::fnStartService(), 1);
        ASSERT_EQ(QFCLibraryManager::fnLoadLibTag(), 1);
        Store().GeneratePresetTagData();
    }
    // The names of the tags that an item of that name and file gets in the gallery.
    static Texts TagsOfAnImport(int galleryId, const char* name, const char* file) {
        const ULONGLONG gallery = QFCLibraryManager::fnLoadGallery(galleryId);
        QFCLibraryManager::fnCreateFolder(gallery, "", "Imported", 0, 0, 0, 0);
        auto* const item = new CQItem(name);
        item->SetFileName(file);
        QFCLibraryManager::fnAddItem(gallery, {"Imported"}, item);
        std::list<CLibTag> known;
        Store().GetAllTagList(known);
        Texts names;
        for (const CLibTag& tag : known) {
            if (item->IsTagExist(tag.m_guid) != 0) names.emplace_back(tag.m_strName.GetString());
        }
        return names;
    }

private:
    static constexpr DWORD kRoom = 60000;
};

}  // namespace qfc::test
