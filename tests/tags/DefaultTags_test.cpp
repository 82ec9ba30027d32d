#include "tags/DefaultTags.h"

#include "db/DBTools.h"
#include "tests/support/RawDb.h"
#include "tests/tags/TagTestSupport.h"

#include <unistd.h>

namespace {

using namespace qfc::test;

constexpr qfc::LocalDate kDay{2024, 5, 6};

class DefaultTags : public HostFolderTest {
protected:
    std::map<DWORD, std::vector<CTagCategory>> Build(const qfc::LocalDate& day = kDay) {
        m_pStore->GenerateCategoryTemplate();
        return qfc::BuildDefaultCategories(m_pStore->GetCategoryTemplate(), day);
    }
    // Of the media gallery.
    std::vector<CTagCategory> BuildMedia(const std::string& lines) {
        WriteDefaults("[TW_DEFAULT_TAGS_MEDIA_CATEGORY]\n" + lines);
        return Build()[kMedia];
    }

    static constexpr DWORD kMedia = 1;
};

TEST_F(DefaultTags, CategoriesAndTagsComeInTheOrderOfTheFile) {
    const auto categories = BuildMedia("Places=String@Beach;Static@Home\nMoods=String@Calm\n");
    ASSERT_EQ(NamesOf(categories), "Places, Moods");
    EXPECT_EQ(NamesOf(categories[0].m_tags), "Beach, Home");
    EXPECT_EQ(NamesOf(categories[1].m_tags), "Calm");
    EXPECT_EQ(categories[0].m_nGallery, 1);
    EXPECT_EQ(categories[0].m_nType, qfc::category_type::kPlain);
    for (const CLibTag& tag : categories[0].m_tags) EXPECT_EQ(tag.m_guidCategory, categories[0].m_guid);
    EXPECT_EQ(categories[0].m_tags.front().m_nType, qfc::tag_type::kString);
    EXPECT_EQ(categories[0].m_tags.back().m_nType, qfc::tag_type::kStatic);
    EXPECT_FALSE(categories[0].m_tags.front().m_bChecked);
}

TEST_F(DefaultTags, EveryGalleryHasItsSection) {
    WriteDefaults("[TW_DEFAULT_TAGS_SPEED_CATEGORY]\nPace=String@Slow\n[TW_DEFAULT_TAGS_FILTER_CATEGORY]\nLook=\n");
    const auto built = Build();
    ASSERT_EQ(built.size(), 2U);
    EXPECT_EQ(NamesOf(built.at(6)), "Look");
    EXPECT_EQ(NamesOf(built.at(15)), "Pace");
    EXPECT_EQ(built.at(15)[0].m_nGallery, 15);
}

TEST_F(DefaultTags, GalleryWithoutCategoriesIsNotThere) {
    WriteDefaults("[TW_DEFAULT_TAGS_MEDIA_CATEGORY]\nno key\n=String@nameless\n; none\n");
    EXPECT_TRUE(Build().empty());
}

TEST_F(DefaultTags, KeysOfMeaningGiveTheTypes) {
    const auto categories = BuildMedia("Date=Date@x\nUntagged=\nFace=\nFaces=\nPlaces=\n");
    ASSERT_EQ(NamesOf(categories), "Date, Untagged, Face, Faces, Places");
    EXPECT_EQ(categories[0].m_nType, qfc::category_type::kDate);
    EXPECT_EQ(categories[1].m_nType, qfc::category_type::kUntagged);
    EXPECT_EQ(categories[2].m_nType, qfc::category_type::kFace);
    EXPECT_EQ(categories[3].m_nType, qfc::category_type::kPlain);
    EXPECT_EQ(categories[4].m_nType, qfc::category_type::kPlain);
}

TEST_F(DefaultTags, KeyThatStandsTwiceInAnyCaseIsMadeOnceWithTheFirstValue) {
    const auto categories = BuildMedia("Places=String@Beach\nplaces=String@Lake\nface=String@Emoji\nFACE=\n");
    ASSERT_EQ(NamesOf(categories), "Places, face");
    EXPECT_EQ(NamesOf(categories[0].m_tags), "Beach");
    EXPECT_EQ(NamesOf(categories[1].m_tags), "Emoji");
    EXPECT_EQ(categories[1].m_nType, qfc::category_type::kPlain);
}

TEST_F(DefaultTags, WhatTheProgramMeansCannotBeDeleted) {
    const auto categories = BuildMedia("Date=Date@x\nUntagged=\nFace=\nPlaces=String@Beach;Static@Home\n");
    for (int i = 0; i < 3; ++i) EXPECT_FALSE(categories[static_cast<std::size_t>(i)].m_bDeletable) << i;
    EXPECT_TRUE(categories[3].m_bDeletable);
    EXPECT_TRUE(categories[3].m_tags.front().m_bDeletable);
    EXPECT_FALSE(categories[3].m_tags.back().m_bDeletable);
}

TEST_F(DefaultTags, DateTagIsTodayAndKeepsItsGuidTomorrow) {
    WriteDefaults("[TW_DEFAULT_TAGS_MEDIA_CATEGORY]\nDate=Date@today\n");
    const CLibTag today = Build()[kMedia][0].m_tags.front();
    EXPECT_EQ(today.m_nType, qfc::tag_type::kDate);
    EXPECT_EQ(today.m_strName, CString("2024-05-06~2024-05-06"));
    const CLibTag tomorrow = Build({2024, 5, 7})[kMedia][0].m_tags.front();
    EXPECT_EQ(tomorrow.m_strName, CString("2024-05-07~2024-05-07"));
    EXPECT_EQ(tomorrow.m_guid, today.m_guid);
}

TEST_F(DefaultTags, SpecifierWithoutValueMakesNoTag) {
    const auto categories = BuildMedia("Places=;Beach;String@;String@a@b;String@Lake;\n");
    EXPECT_EQ(NamesOf(categories[0].m_tags), "Lake");
}

TEST_F(DefaultTags, WhatStandsTwiceIsMadeOnce) {
    const auto categories = BuildMedia("Places=String@Beach;Static@Beach\nPlaces=String@Lake\n");
    ASSERT_EQ(NamesOf(categories), "Places");
    EXPECT_EQ(NamesOf(categories[0].m_tags), "Beach");
}

TEST_F(DefaultTags, GuidsAreTheSameEveryTimeAndDifferByGalleryAndCategory) {
    WriteDefaults(
        "[TW_DEFAULT_TAGS_MEDIA_CATEGORY]\nPlaces=String@Beach\nSummer=String@Beach\n"
        "[TW_DEFAULT_TAGS_SOUNDS_CATEGORY]\nPlaces=String@Beach\n");
    const auto first = Build();
    const auto second = Build();
    std::set<GUID> guids;
    for (const auto& [gallery, categories] : first) {
        for (std::size_t i = 0; i < categories.size(); ++i) {
            const CTagCategory& again = second.at(gallery)[i];
            EXPECT_EQ(categories[i].m_guid, again.m_guid);
            EXPECT_EQ(categories[i].m_tags.front().m_guid, again.m_tags.front().m_guid);
            guids.insert(categories[i].m_guid);
            guids.insert(categories[i].m_tags.front().m_guid);
        }
    }
    EXPECT_EQ(guids.size(), 6U);
}

TEST_F(DefaultTags, StoredTwiceTheyAreTheSameRows) {
    WriteDefaults(
        "[TW_DEFAULT_TAGS_MEDIA_CATEGORY]\nDate=Date@x\nPlaces=String@Beach;String@Lake\n"
        "[TW_DEFAULT_TAGS_SOUNDS_CATEGORY]\nPlaces=String@Beach\n");
    const TempFolder folder;
    bool ok = false;
    DBTools tools(CString((folder / "library.db").c_str()), ok);
    ASSERT_TRUE(ok);
    for (const int day : {6, 7}) {
        for (const auto& [gallery, categories] : Build({2024, 5, day})) {
            ASSERT_TRUE(tools.UpdateCategories(categories));
        }
        RawDb db(folder / "library.db");
        EXPECT_EQ(db.Cell("select count(*) from LIB_TAG_CATEGORY_TABLE"), "3");
        EXPECT_EQ(db.Cell("select count(*) from LIB_TAG_TABLE"), "4");
    }
}

// They are stored in libraries: what they are made of may never change.
TEST(DefaultTagGuids, NeverChange) {
    EXPECT_EQ(qfc::GuidToText(qfc::DefaultCategoryGuid(1, "Places")), "428536C8-6108-533A-AAFD-2F53B2DBCE5A");
    EXPECT_EQ(qfc::GuidToText(qfc::DefaultTagGuid(1, "Places", "Beach")), "35C7D61A-33F8-5239-8A3C-42C6B8E59B95");
}

TEST(DefaultTagGuids, PartsOfNamesDoNotRunTogether) {
    EXPECT_NE(qfc::DefaultTagGuid(1, "ab", "c"), qfc::DefaultTagGuid(1, "a", "bc"));
    EXPECT_NE(qfc::DefaultCategoryGuid(1, "1"), qfc::DefaultCategoryGuid(11, ""));
}

TEST_F(DefaultTags, NamesAreTranslatedTypesAndGuidsAreNot) {
    const auto plain = BuildMedia("Face=String@Beach\n");
    WriteTranslation("[TW_TAG_TRANSLATE]\nFace=Gesicht\nBeach=Strand\n");
    const auto categories = BuildMedia("Face=String@Beach\n");
    EXPECT_EQ(NamesOf(categories), "Gesicht");
    EXPECT_EQ(categories[0].m_nType, qfc::category_type::kFace);
    EXPECT_EQ(NamesOf(categories[0].m_tags), "Strand");
    EXPECT_EQ(categories[0].m_guid, plain[0].m_guid);
    EXPECT_EQ(categories[0].m_tags.front().m_guid, plain[0].m_tags.front().m_guid);
}

TEST_F(DefaultTags, ListOfTagsIsReadWhole) {
    std::string list = "Places=";
    for (int i = 0; i < 3000; ++i) list += "String@place" + std::to_string(i) + ";";
    const auto categories = BuildMedia(list + "\n");
    ASSERT_EQ(categories.size(), 1U);
    EXPECT_EQ(categories[0].m_tags.size(), 3000U);
    EXPECT_EQ(categories[0].m_tags.back().m_strName, CString("place2999"));
}

// The names come out of a section that was cut: the last of them has a value all the same.
TEST_F(DefaultTags, CategoryCutInItsValueHasAllItsTags) {
    std::string lines;
    for (int i = 0; i < 7; ++i) lines += "key" + std::to_string(i) + "=" + std::string(122, 'v') + "\n";
    const auto categories = BuildMedia(lines + "Places=String@" + std::string(200, 'b') + ";String@Lake\nbehind=\n");
    ASSERT_EQ(categories.size(), 8U);
    EXPECT_EQ(categories.back().m_strName, CString("Places"));
    EXPECT_EQ(categories.back().m_tags.size(), 2U);
}

TEST_F(DefaultTags, MissingFileGivesNothing) {
    EXPECT_TRUE(Build().empty());
    WriteDefaults("[TW_DEFAULT_TAGS_MEDIA_CATEGORY]\nPlaces=\n");
    EXPECT_EQ(Build().size(), 1U);
    // Even with the names of its categories still in memory.
    std::filesystem::remove(Folder() / "Orvel.dat/Default_Libtag.ini");
    EXPECT_TRUE(qfc::BuildDefaultCategories(m_pStore->GetCategoryTemplate(), kDay).empty());
}

TEST_F(DefaultTags, FileThatIsNoneGivesNothing) {
    Folder().MakeFolder("Orvel.dat/Default_Libtag.ini");
    EXPECT_TRUE(Build().empty());
}

TEST_F(DefaultTags, CharactersThatEndLikeSeparatorsStayWhole) {
    ASSERT_TRUE(qfc::SetAnsiCodePage("CP932"));
    const auto categories = BuildMedia("\x83\x40\x83\x5B=String@\x83\x40;String@\x83\x7C\x83\x5C\n");
    ASSERT_EQ(categories.size(), 1U);
    EXPECT_EQ(categories[0].m_strName, CString("\x83\x40\x83\x5B"));
    EXPECT_EQ(NamesOf(categories[0].m_tags), "\x83\x40, \x83\x7C\x83\x5C");
}

TEST_F(DefaultTags, WesternPageKeepsItsLetters) {
    ASSERT_TRUE(qfc::SetAnsiCodePage("CP1252"));
    const auto categories = BuildMedia(
        "St\xE4"
        "dte=String@K\xF6ln\n");
    EXPECT_EQ(NamesOf(categories),
              "St\xE4"
              "dte");
    EXPECT_EQ(NamesOf(categories[0].m_tags), "K\xF6ln");
}

}  // namespace
