#pragma once

#include "platform/text/CodePages.h"
#include "tests/support/TagFixture.h"

#include <gtest/gtest.h>
#include <list>
#include <string>

namespace qfc::test {

// A running service with the tags that presets name.
class PresetTags : public TagFixture {
protected:
    static constexpr int kSounds = 2;
    static constexpr int kArStickers = 16;

    void SetUp() override {
        TagFixture::SetUp();
        ASSERT_EQ(QFCLibraryManager::fnUpdateTagCategory(kMedia, {Category(10, "Places", {{1, "Beach"}, {2, "Sunset"}}),
                                                                  Category(20, "Sky", {{3, "Rain"}})}),
                  1);
    }
    void TearDown() override {
        TagFixture::TearDown();
        SetAnsiCodePage("UTF-8");
    }

    static std::string Section(const std::string& name, const std::string& path, const std::string& tags,
                               const std::string& gallery = "1") {
        return "[" + path + "@" + name + "]\nItemName=" + name + "\nFilePath=" + path + "\nGalleryID=" + gallery +
               "\nTagList=" + tags + "\n";
    }
    static void Preset(const std::string& text) {
        WritePresets(text);
        Store().GeneratePresetTagData();
    }
    CQItem* Add(const char* pszName, const char* pszPath, ULONGLONG hGallery = 0) const {
        auto* const pItem = new CQItem(pszName);
        pItem->SetFileName(pszPath);
        EXPECT_EQ(QFCLibraryManager::fnAddItem(hGallery != 0 ? hGallery : m_hMedia, {"Clips"}, pItem), 1);
        return pItem;
    }
    // The tags that an item of this name and path gets, told by memory and database alike.
    std::string TagsGiven(const char* pszName, const char* pszPath, ULONGLONG hGallery = 0) const {
        const CQItem* const pItem = Add(pszName, pszPath, hGallery);
        std::list<GUID> tags;
        pItem->CopyTagVec(tags);
        EXPECT_EQ(CountLinks(*pItem), static_cast<int>(tags.size()));
        for (const GUID& tag : tags) EXPECT_TRUE(IsLinked(*pItem, static_cast<int>(tag.Data1)));
        return TagsOf(*pItem);
    }
    static ULONGLONG MakeGallery(int nId) {
        const ULONGLONG hGallery = QFCLibraryManager::fnCreateGallery(nId, "Other", 0, 0, 0);
        EXPECT_NE(QFCLibraryManager::fnCreateFolder(hGallery, "", "Clips", 0, 0, 0, 0), nullptr);
        return hGallery;
    }
};

}  // namespace qfc::test
