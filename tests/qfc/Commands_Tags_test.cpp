#include "TagCommandsTest.h"

#include <algorithm>
#include <ctime>
#include <set>
#include <stdlib.h>

namespace qfc::test {
namespace {

class CommandsTags : public TagCommandsTest {
protected:
    // The one listed tag of that name.
    Json TagOf(const std::string& name, const Args& more = {}) const {
        Json found;
        for (const Json& category : Done(Joined({"tag", "list"}, more))) {
            for (const Json& tag : category["tags"]) {
                if (tag["name"] == name) found = tag;
            }
        }
        EXPECT_FALSE(found.is_null()) << name;
        return found;
    }
    std::string GuidOfTag(const std::string& name, const std::string& gallery = "Media") const {
        return TagOf(name, {"--gallery", gallery})["guid"];
    }
};

// --- create, list --------------------------------------------------------------------------------------------------

TEST_F(CommandsTags, CreateUsesMediaAndMyTags_WhichItMakes) {
    const Json made = Done({"tag", "create", "Beach"});
    EXPECT_EQ(made["gallery"], "Media");
    EXPECT_EQ(made["category"], "My tags");
    const Json listed = Done({"tag", "list"});
    ASSERT_EQ(listed.size(), 1u);
    EXPECT_EQ(listed[0]["type"], "plain");
    ASSERT_EQ(listed[0]["tags"].size(), 1u);
    Json expected = made;
    expected["items"] = 0;
    EXPECT_EQ(listed[0]["tags"][0], expected);
}

TEST_F(CommandsTags, CreateTakesAnExistingCategory_InEitherCase) {
    Done({"tag", "create", "Beach", "--category", "Places"});
    Done({"tag", "create", "Hill", "--category", "places"});
    EXPECT_EQ(Sql("select count(*) from LIB_TAG_CATEGORY_TABLE"), "1");
    EXPECT_EQ(TagOf("Hill")["category"], "Places");
}

TEST_F(CommandsTags, CreateRefusesALabelThatLeadsToNoCategory) {
    Done({"gallery", "create", "My: own"});
    Done({"tag", "create", "Hill", "--category", "Places"});
    for (const std::string label : {"Media:Nope", "sounds:Places", "My: own:Places", "Templates H5:"}) {
        const std::string error = Refused({"tag", "create", "X", "--category", label});
        EXPECT_NE(error.find("no category " + label), std::string::npos) << error;
    }
    EXPECT_EQ(Sql("select count(*) from LIB_TAG_CATEGORY_TABLE"), "1");
    Done({"tag", "create", "Dune", "--category", "media:places"});
    Done({"tag", "create", "Early", "--category", "10:30"});
    EXPECT_EQ(TagOf("Dune")["category"], "Places");
    EXPECT_EQ(TagOf("Early")["category"], "10:30");
}

TEST_F(CommandsTags, CreateRefusesTheSameNameInAnyCaseWithinAGallery) {
    Done({"tag", "create", "Straße Ö"});
    const std::string before = DumpOf(Database());
    EXPECT_NE(Refused({"tag", "create", "straße ö", "--category", "Other"}).find("Media:My tags/Straße Ö"),
              std::string::npos);
    EXPECT_EQ(DumpOf(Database()), before);
    Done({"tag", "create", "straße ö", "--gallery", "Sounds"});
}

TEST_F(CommandsTags, CreateRefusesNamesThatCouldNotBeTypedAgain) {
    for (const char* name : {"", "\xFF\xFE", "00112233-4455-6677-8899-AABBCCDDEEFF"}) {
        Refused({"tag", "create", name}, 2);
        Refused({"tag", "category", "create", name}, 2);
    }
    Refused({"tag", "create", "x", "--gallery", "Nowhere"});
}

TEST_F(CommandsTags, OddNamesComeBackAsTheyWere) {
    const Names odd = {"a\\b",   "x/y",   "||5||x", "a--b", "1;drop table 'x'", "[a,b]", "=",
                       "日本語", "-dash", "%s%n",   "@;@"};
    for (const std::string& name : odd) Done({"tag", "create", "--", name});
    Names listed;
    const Json list = Done({"tag", "list"});
    for (const Json& tag : list[0]["tags"]) listed.push_back(tag["name"]);
    EXPECT_EQ(std::set<std::string>(listed.begin(), listed.end()), std::set<std::string>(odd.begin(), odd.end()));
    for (const std::string& name : odd) Done({"tag", "delete", "--", name});
    EXPECT_EQ(Sql("select count(*) from LIB_TAG_TABLE"), "0");
}

TEST_F(CommandsTags, ListOfNoTags_FailsWithAnEmptyDocument) {
    EXPECT_EQ(Document({"tag", "list"}, 1), Json::array());
    Done({"tag", "create", "Beach"});
    EXPECT_EQ(Document({"tag", "list", "--gallery", "Sounds"}, 1), Json::array());
}

TEST_F(CommandsTags, ListCountsLivingItemsOnce) {
    ImportAbc();
    Done({"mkdir", "G"});
    Done({"tag", "create", "Beach"});
    Done({"tag", "add", "Beach", "F\\a.ppm", "F\\b.ppm"});
    const int row = Done({"ls", "G"})["row"];
    Exec("insert into RELATION_TABLE (PARENT_ID, ITEM_ID, ITEM_INDEX) select " + std::to_string(row) +
         ", ITEM_ID, 0 from ITEM_TABLE");
    Exec("insert into TAG_ITEM_RELATION_TABLE select X'00112233445566778899AABBCCDDEEFF', TAG_GUID from LIB_TAG_TABLE");
    EXPECT_EQ(TagOf("Beach")["items"], 2);
}

TEST_F(CommandsTags, ListShowsCategoriesWithoutTags) {
    Done({"tag", "category", "create", "Empty", "--gallery", "Sounds"});
    EXPECT_NE(Qfc({"tag", "list"}).out.find("Sounds:Empty"), std::string::npos);
}

// --- rename, check -------------------------------------------------------------------------------------------------

TEST_F(CommandsTags, RenameKeepsPictureTypeCheckedAndLinks) {
    ImportAbc();
    Done({"tag", "create", "Anna"});
    Done({"tag", "check", "Anna"});
    Done({"tag", "add", "Anna", "F\\a.ppm"});
    Exec("update LIB_TAG_TABLE set TAG_TYPE = 1, TAG_PICTURE_SIZE = 3, TAG_PICTURE_DATA = X'010203'");
    const std::string rest =
        "select TAG_TYPE, TAG_CHECKED, TAG_DELETABLE, hex(TAG_PICTURE_DATA), hex(TAG_GUID), "
        "hex(CATEGORY_GUID) from LIB_TAG_TABLE";
    const auto before = RawDb(Database()).Rows(rest);
    EXPECT_EQ(Done({"tag", "rename", "Anna", "Bella"})["name"], "Bella");
    EXPECT_EQ(RawDb(Database()).Rows(rest), before);
    EXPECT_EQ(TagsOf("F\\a.ppm"), Names{"Bella"});
}

TEST_F(CommandsTags, RenameRefusesAnotherTagsName_ButTakesItsOwnInAnotherCase) {
    Done({"tag", "create", "Beach"});
    Done({"tag", "create", "Sea", "--category", "Other"});
    Refused({"tag", "rename", "Sea", "BEACH"});
    Done({"tag", "rename", "Sea", "SEA"});
    EXPECT_EQ(TagOf("SEA")["category"], "Other");
}

TEST_F(CommandsTags, CheckAndUncheck) {
    Done({"tag", "create", "Beach"});
    Done({"tag", "create", "Sea"});
    Done({"tag", "check", "Beach", "Sea"});
    EXPECT_EQ(TagOf("Beach")["checked"], true);
    Done({"tag", "uncheck", "Beach"});
    EXPECT_EQ(TagOf("Beach")["checked"], false);
    EXPECT_EQ(TagOf("Sea")["checked"], true);
}

// --- Which tag a text means ----------------------------------------------------------------------------------------

TEST_F(CommandsTags, AnAmbiguousNameIsRefused_WithTheNamesThatAreNot) {
    Done({"tag", "create", "Beach"});
    Done({"tag", "create", "Beach", "--gallery", "Sounds"});
    const std::string before = DumpOf(Database());
    const std::string error = Refused({"tag", "delete", "beach"});
    EXPECT_NE(error.find("Media:My tags/Beach"), std::string::npos) << error;
    EXPECT_NE(error.find("Sounds:My tags/Beach"), std::string::npos) << error;
    EXPECT_EQ(DumpOf(Database()), before);
    Done({"tag", "delete", "Sounds:My tags/Beach"});
    EXPECT_EQ(TagOf("Beach")["gallery"], "Media");
    Done({"tag", "delete", "my tags/beach"});
}

TEST_F(CommandsTags, TagsThatNothingTellsApart_AreNamedByGuid) {
    Done({"tag", "create", "Beach"});
    Exec(
        "insert into LIB_TAG_TABLE select TAG_NAME, CATEGORY_GUID, TAG_TYPE, TAG_CHECKED, 1, 0, null, "
        "X'00112233445566778899AABBCCDDEEFF' from LIB_TAG_TABLE");
    const std::string guid = "33221100-5544-7766-8899-AABBCCDDEEFF";
    EXPECT_NE(Refused({"tag", "delete", "Beach"}).find(guid), std::string::npos);
    Done({"tag", "delete", guid});
    Done({"tag", "delete", "Beach"});
}

TEST_F(CommandsTags, AnItemsOwnGalleryComesFirst_ThenAll) {
    ImportAbc();
    Done({"import", Sound("s.wav"), "--folder", "S", "--gallery", "Sounds"});
    Done({"tag", "create", "Beach"});
    Done({"tag", "create", "Beach", "--gallery", "Sounds"});
    Done({"tag", "create", "Only here"});
    const std::string sound = Done({"show", "S\\s.wav", "--gallery", "Sounds"})["guid"];
    Done({"tag", "add", "beach", "only here", "--", "F\\a.ppm", sound});
    const Json mine = Done({"show", "F\\a.ppm"})["tags"], other = Done({"show", sound})["tags"];
    EXPECT_EQ(mine[0]["gallery"], "Media");
    EXPECT_EQ(other[0]["gallery"], "Sounds");
    EXPECT_EQ(other[1]["guid"], mine[1]["guid"]);
}

TEST_F(CommandsTags, AnUnknownTagChangesNothing) {
    ImportAbc();
    Done({"tag", "create", "Beach"});
    const std::string before = DumpOf(Database());
    Refused({"tag", "add", "Beach", "Nowhere", "--", "F\\a.ppm"});
    Refused({"tag", "add", "Beach", "F\\a.ppm", "F\\none.ppm"});
    Refused({"tag", "delete", "Beach", "Nowhere"});
    Refused({"tag", "delete", "00112233-4455-6677-8899-AABBCCDDEEFF"});
    EXPECT_EQ(DumpOf(Database()), before);
}

// --- delete, merge -------------------------------------------------------------------------------------------------

TEST_F(CommandsTags, DeleteTakesTheLinksAlong_AndTheLoadedItemsKnow) {
    ImportAbc();
    Done({"tag", "create", "Beach"});
    Done({"tag", "create", "Sea"});
    Done({"tag", "add", "Beach", "Sea", "--", "F\\a.ppm"});
    const Json report = Done({"tag", "delete", "Beach"});
    ASSERT_EQ(report["items"].size(), 1u);
    EXPECT_EQ(NamesIn(report["items"][0]["tags"]), Names{"Sea"});
    EXPECT_EQ(TagsOf("F\\a.ppm"), Names{"Sea"});
    EXPECT_EQ(Sql("select count(*) from TAG_ITEM_RELATION_TABLE"), "1");
    ExpectSound();
}

TEST_F(CommandsTags, WhatIsNotDeletable_IsNeitherDeletedNorMergedAway) {
    Done({"tag", "create", "Fixed"});
    Done({"tag", "create", "Beach"});
    Exec("update LIB_TAG_TABLE set TAG_DELETABLE = 0 where TAG_NAME = 'Fixed'");
    const std::string before = DumpOf(Database());
    Refused({"tag", "delete", "Beach", "Fixed"});
    Refused({"tag", "merge", "Fixed", "Beach"});
    Refused({"tag", "category", "delete", "My tags"});
    EXPECT_EQ(DumpOf(Database()), before);
    Exec("update LIB_TAG_TABLE set TAG_DELETABLE = 1");
    Exec("update LIB_TAG_CATEGORY_TABLE set CATEGORY_DELETABLE = 0");
    Refused({"tag", "category", "delete", "My tags"});
    EXPECT_EQ(Sql("select count(*) from LIB_TAG_TABLE"), "2");
}

TEST_F(CommandsTags, MergeGivesTheItemsTheTarget_AndTheLoadedItemsKnow) {
    ImportAbc();
    for (const char* tag : {"Beach", "Sea", "Shore"}) Done({"tag", "create", tag});
    Done({"tag", "add", "Sea", "F\\a.ppm"});
    Done({"tag", "add", "Shore", "Beach", "--", "F\\b.ppm"});
    const Json report = Done({"tag", "merge", "Sea", "Beach", "Shore", "Sea", "Beach"});
    for (const Json& item : report["items"]) EXPECT_EQ(NamesIn(item["tags"]), Names{"Beach"});
    EXPECT_EQ(NamesIn(report["items"]), (Names{"a.ppm", "b.ppm"}));
    EXPECT_EQ(NamesIn(report["merged"]), (Names{"Sea", "Shore"}));
    EXPECT_EQ(TagsOf("F\\a.ppm"), Names{"Beach"});
    EXPECT_EQ(TagsOf("F\\b.ppm"), Names{"Beach"});
    EXPECT_EQ(Sql("select count(*) from LIB_TAG_TABLE"), "1");
    ExpectSound();
}

TEST_F(CommandsTags, MergeWantsASourceAndATargetOfOneGallery) {
    Done({"tag", "create", "Beach"});
    Done({"tag", "create", "Noise", "--gallery", "Sounds"});
    Refused({"tag", "merge", "Beach"}, 2);
    Refused({"tag", "merge", "Beach", "Beach"});
    Refused({"tag", "merge", "Noise", "Beach"});
    EXPECT_EQ(Sql("select count(*) from LIB_TAG_TABLE"), "2");
}

// --- Categories ----------------------------------------------------------------------------------------------------

TEST_F(CommandsTags, CategoryRenameKeepsItsTagsAndTheirLinks) {
    ImportAbc();
    Done({"tag", "create", "Beach"});
    Done({"tag", "create", "Sea"});
    Done({"tag", "add", "Beach", "F\\a.ppm"});
    const auto before = RawDb(Database()).Rows("select * from LIB_TAG_TABLE order by TAG_NAME");
    Done({"tag", "category", "rename", "my tags", "Places"});
    EXPECT_EQ(RawDb(Database()).Rows("select * from LIB_TAG_TABLE order by TAG_NAME"), before);
    EXPECT_EQ(TagOf("Beach")["category"], "Places");
    EXPECT_EQ(TagsOf("F\\a.ppm"), Names{"Beach"});
    EXPECT_EQ(Sql("select count(*) from LIB_TAG_CATEGORY_TABLE"), "1");
}

TEST_F(CommandsTags, CategoryNamesAreTakenInAnyCase) {
    Done({"tag", "category", "create", "Places"});
    Done({"tag", "category", "create", "People"});
    Refused({"tag", "category", "create", "PLACES"});
    Refused({"tag", "category", "rename", "People", "places"});
    Done({"tag", "category", "rename", "People", "PEOPLE"});
    Done({"tag", "category", "create", "Places", "--gallery", "Sounds"});
    const std::string error = Refused({"tag", "category", "delete", "Places"});
    EXPECT_NE(error.find("Media:Places, Sounds:Places"), std::string::npos) << error;
    Done({"tag", "category", "delete", "Sounds:Places"});
}

TEST_F(CommandsTags, CreateTakesACategoryAsListingsPrintIt) {
    Done({"tag", "create", "Calm", "--category", "Mood"});
    EXPECT_EQ(Done({"tag", "create", "Wild", "--category", "media:mood"})["category"], "Mood");
    Refused({"tag", "create", "Loud", "--category", "Media:Mood", "--gallery", "Sounds"});
    Done({"tag", "create", "Loud", "--category", "Mood", "--gallery", "Sounds"});
    EXPECT_EQ(Sql("select count(*) from LIB_TAG_CATEGORY_TABLE"), "2");
    EXPECT_EQ(Sql("select count(*) from LIB_TAG_TABLE"), "3");
}

TEST_F(CommandsTags, ACategoryThatBearsTheTextAsItsName_ComesBeforeOneOfThatLabel) {
    Done({"tag", "category", "create", "Mood"});
    Done({"tag", "category", "create", "Media:Mood"});
    Done({"tag", "category", "delete", "Media:Mood"});
    EXPECT_EQ(Sql("select CATEGORY_NAME from LIB_TAG_CATEGORY_TABLE"), "'Mood'");
    Done({"tag", "category", "delete", "Media:Mood"});
    EXPECT_EQ(Sql("select count(*) from LIB_TAG_CATEGORY_TABLE"), "0");
}

TEST_F(CommandsTags, CategoryDeleteTakesItsTagsAndTheirLinks) {
    ImportAbc();
    Done({"tag", "create", "Beach", "--category", "Places"});
    Done({"tag", "create", "Sea", "--category", "Places"});
    Done({"tag", "create", "Anna"});
    Done({"tag", "add", "Beach", "Sea", "Anna", "--", "F\\a.ppm"});
    const Json report = Done({"tag", "category", "delete", "Places"});
    EXPECT_EQ(NamesIn(report["items"]), Names{"a.ppm"});
    EXPECT_EQ(TagsOf("F\\a.ppm"), Names{"Anna"});
    EXPECT_EQ(Sql("select count(*) from LIB_TAG_TABLE"), "1");
    EXPECT_EQ(Sql("select count(*) from TAG_ITEM_RELATION_TABLE"), "1");
    ExpectSound();
}

// --- defaults ------------------------------------------------------------------------------------------------------

TEST_F(CommandsTags, DefaultsTwiceAreTheSameRows) {
    // In a zone where it is about noon: the default tag of a date is another one on the next day.
    const std::string zone = "NOON" + std::to_string(std::time(nullptr) / 3600 % 24 - 12);
    setenv("TZ", zone.c_str(), 1);
    WriteHost("Default_Libtag.ini",
              "[TW_DEFAULT_TAGS_MEDIA_CATEGORY]\r\nPlaces=String@Beach;String@Sea\r\nDate=Date@\r\n"
              "[TW_DEFAULT_TAGS_SOUNDS_CATEGORY]\r\nMood=String@Calm\r\n");
    Done({"tag", "create", "Mine"});
    EXPECT_EQ(Done({"tag", "defaults"}), (Json{{"newCategories", 3}, {"newTags", 4}}));
    const auto rows = [&] {
        auto all = RawDb(Database()).Rows("select * from LIB_TAG_TABLE order by TAG_GUID");
        for (auto& row : RawDb(Database()).Rows("select * from LIB_TAG_CATEGORY_TABLE order by CATEGORY_GUID")) {
            all.push_back(row);
        }
        return all;
    };
    const auto before = rows();
    EXPECT_EQ(before.size(), 9u);
    EXPECT_EQ(Done({"tag", "defaults"}), (Json{{"newCategories", 0}, {"newTags", 0}}));
    EXPECT_EQ(rows(), before);
    EXPECT_EQ(TagOf("Calm")["gallery"], "Sounds");
    EXPECT_EQ(TagOf("Mine")["category"], "My tags");
    Refused({"tag", "category", "delete", "Date"});
}

TEST_F(CommandsTags, WithoutTheFile_NothingIsMadeAndNothingWiped) {
    Done({"tag", "create", "Mine"});
    const std::string before = DumpOf(Database());
    EXPECT_NE(Refused({"tag", "defaults"}).find("no default tags"), std::string::npos);
    WriteHost("Default_Libtag.ini", "[TW_DEFAULT_TAGS_MEDIA_CATEGORY]\r\nno equals sign\r\n");
    Refused({"tag", "defaults"});
    EXPECT_EQ(DumpOf(Database()), before);
}

// --- Help -----------------------------------------------------------------------------------------------------------

TEST_F(CommandsTags, EveryTagCommandHasHelpWithAnExample) {
    const std::vector<Args> commands = {{"tag"},
                                        {"tag", "list"},
                                        {"tag", "create"},
                                        {"tag", "rename"},
                                        {"tag", "delete"},
                                        {"tag", "category"},
                                        {"tag", "category", "create"},
                                        {"tag", "category", "rename"},
                                        {"tag", "category", "delete"},
                                        {"tag", "add"},
                                        {"tag", "remove"},
                                        {"tag", "merge"},
                                        {"tag", "check"},
                                        {"tag", "uncheck"},
                                        {"tag", "defaults"}};
    for (const Args& command : commands) {
        const QfcResult result = Qfc(Joined(command, {"--help"}));
        EXPECT_EQ(result.exit, 0);
        EXPECT_NE(result.out.find("Example:\n  qfc tag"), std::string::npos) << result.out;
    }
}

}  // namespace
}  // namespace qfc::test
