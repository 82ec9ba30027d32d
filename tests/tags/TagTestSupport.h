#pragma once

#include "platform/os/Places.h"
#include "platform/text/CodePages.h"
#include "tags/CLibTagsMgr.h"
#include "tests/support/TagStorePeer.h"
#include "tests/support/TempFolder.h"

#include <filesystem>
#include <gtest/gtest.h>
#include <memory>
#include <string>

namespace qfc {

namespace test {

inline GUID MakeGuid(int number) {
    GUID guid{};
    guid.Data1 = static_cast<std::uint32_t>(number);
    guid.Data4[7] = 0x77;
    return guid;
}

inline CLibTag MakeTag(int number, int category, const char* name, int type = tag_type::kString,
                       bool bChecked = false) {
    CLibTag tag;
    tag.m_guid = MakeGuid(number);
    tag.m_guidCategory = MakeGuid(category);
    tag.m_strName = name;
    tag.m_nType = type;
    tag.m_bChecked = bChecked;
    return tag;
}

inline CTagCategory MakeCategory(int number, int gallery, const char* name, std::list<CLibTag> tags = {},
                                 int type = category_type::kPlain) {
    CTagCategory category;
    category.m_guid = MakeGuid(number);
    category.m_nGallery = gallery;
    category.m_strName = name;
    category.m_tags = std::move(tags);
    category.m_nType = type;
    return category;
}

// Names in one text, as "a, b".
template <typename Records>
std::string NamesOf(const Records& records) {
    std::string names;
    for (const auto& record : records) {
        names += (names.empty() ? "" : ", ") + std::string(record.m_strName.View());
    }
    return names;
}

// A host folder of the test's own. It is the process's until the end: the paths beside it are found out only once, so
// tests that share a process share the folder and find it emptied.
class HostFolderTest : public testing::Test {
protected:
    static void SetUpTestSuite() { SetHostFolder(Folder().Path().c_str()); }
    void SetUp() override {
        SetUpTestSuite();
        std::filesystem::remove_all(Folder() / "Orvel.dat");
        Folder().MakeFolder("Orvel.dat");
    }
    void TearDown() override { SetAnsiCodePage("UTF-8"); }

    static void WriteDefaults(std::string_view text) { Folder().Write("Orvel.dat/Default_Libtag.ini", text); }
    static void WritePresets(std::string_view text) { Folder().Write("Orvel.dat/PresetItemTag.ini", text); }
    static void WriteTranslation(std::string_view text) { Folder().Write("Orvel.dat/qvTWTranslateData.dat", text); }
    static const TempFolder& Folder() {
        static const TempFolder folder;
        return folder;
    }

    std::shared_ptr<CLibTagsMgr> m_pStore = TagStorePeer::NewStore();
};

}  // namespace test
}  // namespace qfc
