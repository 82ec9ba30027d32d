#pragma once

#include "tests/support/LibraryFixture.h"
#include "tests/support/RawDb.h"
#include "tests/support/TagStorePeer.h"

#include <cstdio>
#include <fstream>
#include <initializer_list>
#include <list>
#include <map>
#include <string>
#include <utility>
#include <vector>

namespace qfc::test {

// A started service with one gallery, and a tag store that is empty before and after, without what it read of files.
class TagFixture : public LibraryFixture {
protected:
    void SetUp() override {
        LibraryFixture::SetUp();
        EmptyStore();
        TagStorePeer::ForgetFiles(Store());
    }
    void TearDown() override {
        EmptyStore();
        TagStorePeer::ForgetFiles(Store());
        LibraryFixture::TearDown();
    }

    static CLibTagsMgr& Store() { return *CLibTagsMgr::GetLibTagMgr(); }
    static void EmptyStore() {
        std::map<DWORD, std::vector<CTagCategory>> nothing;
        Store().SetTagsToDefault(nothing);
    }

    static GUID TagGuid(int nNumber) { return GUID{static_cast<unsigned>(nNumber), 0x7A6, 0, {}}; }
    static CLibTag Tag(int nNumber, const char* pszName, int nCategory) {
        CLibTag tag;
        tag.m_guid = TagGuid(nNumber);
        tag.m_guidCategory = TagGuid(nCategory);
        tag.m_strName = pszName;
        return tag;
    }
    using Tags = std::initializer_list<std::pair<int, const char*>>;
    static CTagCategory Category(int nNumber, const char* pszName, Tags tags = {}, int nGallery = kMedia) {
        CTagCategory category;
        category.m_guid = TagGuid(nNumber);
        category.m_nGallery = nGallery;
        category.m_strName = pszName;
        for (const auto& [nTag, pszTag] : tags) category.m_tags.push_back(Tag(nTag, pszTag, nNumber));
        return category;
    }

    // The categories of a gallery with their tags: "Places(Beach Sunset) People() ".
    static std::string StoreText(DWORD dwGallery = kMedia) {
        std::string text;
        for (const CTagCategory& category : Store().GetTagsData(dwGallery)) {
            text += category.m_strName.GetString();
            text += "(";
            for (const CLibTag& tag : category.m_tags) {
                text += (text.back() == '(' ? "" : " ") + std::string(tag.m_strName);
            }
            text += ") ";
        }
        return text;
    }
    // The tags of an item as numbers: "1 2 ".
    static std::string TagsOf(const CQItem& item) {
        std::list<GUID> tags;
        item.CopyTagVec(tags);
        std::string text;
        for (const GUID& tag : tags) text += std::to_string(tag.Data1) + " ";
        return text;
    }

    // As the database writes it: X'...'.
    static std::string Literal(const GUID& guid) {
        std::string text = "X'";
        const auto* const bytes = reinterpret_cast<const unsigned char*>(&guid);
        for (std::size_t position = 0; position < sizeof guid; ++position) {
            char digits[3];
            std::snprintf(digits, sizeof digits, "%02X", bytes[position]);
            text += digits;
        }
        return text + "'";
    }
    static int CountLinks(const CQItem& item) {
        return CountRows("TAG_ITEM_RELATION_TABLE where ITEM_GUID = " + Literal(item.GetUniqueID()));
    }
    static bool IsLinked(const CQItem& item, int nTag) {
        return CountRows("TAG_ITEM_RELATION_TABLE where ITEM_GUID = " + Literal(item.GetUniqueID()) +
                         " and TAGS_GUID = " + Literal(TagGuid(nTag))) == 1;
    }

    // Another connection writes a number that means nothing here: all others read the file anew, so that their reads
    // can fail.
    static void ForgetPages() {
        RawDb db(DatabaseFile());
        db.Exec("pragma user_version = " + std::to_string(std::stoi(db.Cell("pragma user_version")) + 1));
    }

    // A file in the folder of the host's data.
    static void WriteData(const char* pszName, const std::string& text) {
        const std::filesystem::path folder = HostFolder() / "Orvel.dat";
        std::filesystem::create_directories(folder);
        std::ofstream(folder / pszName, std::ios::binary) << text;
    }
    static void WriteDefaults(const std::string& text) { WriteData("Default_Libtag.ini", text); }
    static void WritePresets(const std::string& text) { WriteData("PresetItemTag.ini", text); }
};

}  // namespace qfc::test
