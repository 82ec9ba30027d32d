// The example of a language: everything that is shipped has a name in it, and a host with translation on shows it.
#include "ShippedTest.h"
#include "tests/support/TempFolder.h"

#include <fstream>

namespace {

using qfc::test::ShippedTest;

class German : public ShippedTest {
protected:
    void SetUp() override {
        ShippedTest::SetUp();
        std::ofstream(DataFolder() / "Cinelume.ini") << "[Orvel Cinelume Init Project]\r\nSupportTWTranslateMode=1\r\n";
    }
    static std::string Names() { return File("qvTWTranslateData.dat"); }
    static std::string TagName(const std::string& name) { return Value(Names(), "TW_TAG_TRANSLATE", name); }
};

TEST_F(German, EveryDefaultCategoryAndTagHasAName) {
    for (const std::string& section : Sections(Tags())) {
        for (const std::string& category : Keys(Tags(), section)) {
            EXPECT_NE(TagName(category), "") << category;
            for (const std::string& tag : TagNames(Value(Tags(), section, category)))
                EXPECT_NE(TagName(tag), "") << tag;
        }
    }
}

TEST_F(German, EveryPredefinedGalleryHasANameInBothSections) {
    for (const qfc::PredefinedGallery& gallery : qfc::kPredefinedGalleries) {
        if (gallery.name == nullptr) continue;
        EXPECT_NE(Value(Names(), "Predefined_Folder", gallery.name), "") << gallery.name;
        EXPECT_EQ(Value(Names(), "TW_FOLDER_0", gallery.name), Value(Names(), "Predefined_Folder", gallery.name));
    }
}

TEST_F(German, EveryFolderOfThePresetsHasAName) {
    for (const std::string& section : Sections(Presets())) {
        Texts folders = Split(Value(Presets(), section, "FilePath"), '\\');
        folders.pop_back();
        for (const std::string& folder : folders) EXPECT_NE(Value(Names(), "TW_FOLDER_0", folder), "") << folder;
    }
}

TEST_F(German, EveryFolderOfEffectsHasANameWhateverItHolds) {
    for (const std::string& section : Sections(EffectFolders())) {
        const char* full = section.starts_with("FILTERS") ? "TW_FOLDER_128" : "TW_FOLDER_64";
        std::set<std::string> folders{"Other"};
        for (const std::string& name : Keys(EffectFolders(), section)) {
            folders.insert(Value(EffectFolders(), section, name));
        }
        for (const std::string& folder : folders) {
            EXPECT_NE(Value(Names(), full, folder), "") << folder;
            EXPECT_EQ(Value(Names(), "TW_FOLDER_0", folder), Value(Names(), full, folder));
        }
    }
}

TEST_F(German, FoldersHaveTheSameNameWhateverTheyHold) {
    for (int mask = 0; mask <= 7; ++mask) {
        const std::string section = "TW_FOLDER_" + std::to_string(mask);
        EXPECT_NE(Value(Names(), section, "Imported"), "") << section;
        for (const std::string& folder : Keys(Names(), section)) {
            EXPECT_EQ(Value(Names(), section, folder), Value(Names(), "TW_FOLDER_0", folder)) << section << folder;
        }
    }
}

TEST_F(German, EachKindOfItemsThatHasNamesIsThere) {
    for (const char* kind : {"VIDEO", "TX", "VIDEO_FILTER", "AUDIO_FILTER", "SPEED"}) {
        EXPECT_FALSE(Keys(Names(), std::string("TW_ITEMTYPE_") + kind).empty()) << kind;
    }
}

TEST_F(German, NoKeyIsWithoutAName) {
    for (const std::string& section : Sections(Names())) {
        for (const std::string& key : Keys(Names(), section)) {
            EXPECT_NE(Value(Names(), section, key), "") << section << ": " << key;
        }
    }
}

TEST_F(German, TheTemplateHoldsTheNames) {
    StartHost();
    CLibTag tag;
    EXPECT_EQ(Store().GetTagByName(qfc::kGalleryMedia, "GEBÄUDE", tag), 1);
    EXPECT_EQ(Store().GetTagByName(qfc::kGalleryMedia, "Buildings", tag), 0);
}

TEST_F(German, GalleriesAndFoldersAreShownByTheirNames) {
    StartHost();
    const ULONGLONG sounds = QFCLibraryManager::fnLoadGallery(qfc::kGallerySounds);
    EXPECT_STREQ(GetFolderDisplayName(qfc::AsGallery(sounds), nullptr), "Klänge");
    QFCLibraryManager::fnCreateFolder(sounds, "", "Loops", 2, 0, 0, 0);
    EXPECT_STREQ(GetFolderDisplayName(qfc::AsGallery(sounds)->GetFolderByPath("Loops"), nullptr), "Schleifen");
}

}  // namespace
