// The shipped texts as the readers of the library see them.
#include "ShippedTest.h"
#include "tests/support/TempFolder.h"

#include <gmock/gmock.h>
#include <set>

namespace {

using qfc::test::ShippedTest;

class ShippedTexts : public ShippedTest {};

TEST_F(ShippedTexts, NoneBeginsWithAMarkOfItsEncoding) {
    int texts = 0;
    for (const auto& entry : std::filesystem::directory_iterator(Shipped())) {
        if (entry.path().extension() == ".db") continue;
        const std::string text = qfc::test::ReadFile(entry.path());
        EXPECT_TRUE(text[0] == ';' || text[0] == '[') << entry.path();
        ++texts;
    }
    EXPECT_GE(texts, 3);
}

TEST_F(ShippedTexts, EachGalleryHasASectionThatFitsTheReadersBuffer) {
    for (const qfc::PredefinedGallery& gallery : qfc::kPredefinedGalleries) {
        EXPECT_GT(Keys(Tags(), gallery.section).size(), 1U) << gallery.section;
        EXPECT_LE(Size(Tags(), gallery.section), 1000U) << gallery.section;
    }
    EXPECT_EQ(Sections(Tags()).size(), qfc::kPredefinedGalleries.size() - 1);
}

TEST_F(ShippedTexts, TheCategoryTemplateNamesEveryCategory) {
    Store().GenerateCategoryTemplate();
    const auto& read = Store().GetCategoryTemplate();
    EXPECT_EQ(read.size(), qfc::kPredefinedGalleries.size() - 1);
    for (const auto& [gallery, content] : read) EXPECT_EQ(content.second, Keys(Tags(), content.first)) << gallery;
}

TEST_F(ShippedTexts, EveryTagIsWrittenAsTypeAndName) {
    for (const std::string& section : Sections(Tags())) {
        for (const std::string& category : Keys(Tags(), section)) {
            for (const std::string& specifier : Split(Value(Tags(), section, category), ';')) {
                EXPECT_THAT(specifier, testing::MatchesRegex("(String|Static)@[A-Z][a-z -]+")) << section;
            }
        }
    }
}

TEST_F(ShippedTexts, APresetHasItsKeysInTheirPlaces) {
    const Texts sections = Sections(Presets());
    ASSERT_FALSE(sections.empty());
    EXPECT_EQ(std::set<std::string>(sections.begin(), sections.end()).size(), sections.size());
    for (const std::string& section : sections) {
        EXPECT_EQ(Keys(Presets(), section), (Texts{"ItemName", "FilePath", "GalleryID", "TagList"})) << section;
        EXPECT_LE(Size(Presets(), section), 1000U) << section;
        const Texts folders = Split(Value(Presets(), section, "FilePath"), '\\');
        EXPECT_GT(folders.size(), 1U) << section;
        EXPECT_EQ(section, folders.back() + "@" + Value(Presets(), section, "ItemName"));
    }
}

TEST_F(ShippedTexts, TheListOfPresetsFitsTheReadersBuffer) {
    Texts read;
    CLibTagsMgr::GetPresetTagInifileSections(read);
    EXPECT_EQ(read, Sections(Presets()));
}

TEST_F(ShippedTexts, APresetIsReadAsItIsWritten) {
    const std::size_t before = Store().GetPresetTagData().size();
    Store().GeneratePresetTagData();
    const auto& presets = Store().GetPresetTagData();
    ASSERT_EQ(presets.size() - before, Sections(Presets()).size());
    auto preset = std::next(presets.begin(), static_cast<std::ptrdiff_t>(before));
    for (const std::string& section : Sections(Presets())) {
        EXPECT_EQ(preset->m_strItemName.GetString(), Value(Presets(), section, "ItemName"));
        EXPECT_EQ(preset->m_strFilePath.GetString(), Value(Presets(), section, "FilePath"));
        EXPECT_EQ(preset->m_strGalleryId.GetString(), Value(Presets(), section, "GalleryID"));
        EXPECT_EQ(preset->m_tagList.size(), TagNames(Value(Presets(), section, "TagList")).size());
        ++preset;
    }
}

TEST_F(ShippedTexts, EveryTagOfAPresetIsADefaultTagOfItsGallery) {
    for (const std::string& section : Sections(Presets())) {
        const std::string gallery = Value(Presets(), section, "GalleryID");
        const std::string tags = CLibTagsMgr::GetInifileSectionByLibID(std::stoi(gallery)).GetString();
        std::set<std::string> known;
        for (const std::string& category : Keys(Tags(), tags)) known.merge(NamesIn(Value(Tags(), tags, category)));
        const Texts used = TagNames(Value(Presets(), section, "TagList"));
        EXPECT_FALSE(used.empty()) << section;
        for (const std::string& tag : used) EXPECT_TRUE(known.contains(tag)) << section << ": " << tag;
    }
}

TEST_F(ShippedTexts, EachStickerOfThePresetsHasADisplayNameAndNothingElseHas) {
    Texts stickers;
    for (const std::string& section : Sections(Presets())) {
        if (Value(Presets(), section, "GalleryID") != "16") continue;
        stickers.push_back(Value(Presets(), section, "ItemName"));
        EXPECT_NE(Value(File("ARFilter.ini"), stickers.back(), "displayname"), "") << section;
    }
    EXPECT_FALSE(stickers.empty());
    EXPECT_EQ(Sections(File("ARFilter.ini")), stickers);
}

TEST_F(ShippedTexts, EachEffectHasOneFolderAndNoFolderHoldsMostOfThem) {
    for (const char* section : {"FILTERS_BY_NAME", "TRANSITIONS_BY_NAME"}) {
        const Texts names = Keys(EffectFolders(), section);
        EXPECT_EQ(std::set<std::string>(names.begin(), names.end()).size(), names.size()) << section;
        std::map<std::string, std::size_t> folders;
        for (const std::string& name : names) ++folders[Value(EffectFolders(), section, name)];
        EXPECT_GE(folders.size(), 5U) << section;
        for (const auto& [folder, count] : folders) EXPECT_LE(count, names.size() / 4) << section << ": " << folder;
    }
}

TEST_F(ShippedTexts, AKeywordOfEffectsIsWrittenSmallAndOnce) {
    for (const char* section : {"FILTERS_BY_KEYWORD", "TRANSITIONS_BY_KEYWORD"}) {
        const Texts words = Keys(EffectFolders(), section);
        EXPECT_FALSE(words.empty()) << section;
        EXPECT_EQ(std::set<std::string>(words.begin(), words.end()).size(), words.size()) << section;
        for (const std::string& word : words) EXPECT_THAT(word, testing::MatchesRegex("[a-z ]+")) << section;
    }
}

}  // namespace
