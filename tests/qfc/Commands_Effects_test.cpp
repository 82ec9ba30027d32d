// Listing, showing, drawing, removing and clearing effects, and probing one file.
#include "EffectsTest.h"

#include <gmock/gmock.h>

namespace {

using namespace qfc::test;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
namespace fs = std::filesystem;

class Effects : public EffectsTest {
protected:
    void SetUp() override {
        EffectsTest::SetUp();
        m_glow = Plugin("glow.so", "filter Glow\nfilter Soft glow\n");
        m_warm = Plugin("warm.so", "filter Warm\n");
        m_wipe = Plugin("wipe.so", "transition Wipe\n");
    }
    Json Shown(const std::string& effect) const { return Done({"effects", "show", effect}); }

    std::string m_glow, m_warm, m_wipe;
};

TEST_F(Effects, AreListedWithoutOpeningTheirFilesAndMarkedWhenTheseAreGone) {
    Scan();
    Junk("warm.so");
    fs::remove(m_glow);
    const Json listed = Done({"effects", "list"});
    ASSERT_EQ(listed.size(), 4U);
    EXPECT_EQ(Values(listed, "name"), (Names{"Glow", "Soft glow", "Warm", "Wipe"}));
    for (const Json& effect : listed) {
        EXPECT_EQ(effect["missing"], effect["file"] == m_glow) << effect;
        EXPECT_EQ(effect["author"], "Tester");
        EXPECT_EQ(effect["version"], "1.2");
    }
    EXPECT_THAT(Qfc({"effects", "list"}).out, HasSubstr(m_glow + "  [missing]"));
}

TEST_F(Effects, AreNoneInANewLibrary) {
    EXPECT_THAT(Refused({"effects", "list"}), HasSubstr("no effects"));
    EXPECT_THAT(Refused({"effects", "list", "--failed"}), HasSubstr("no effect file has failed"));
    EXPECT_EQ(Cell("select count(*) from FOLDER_TABLE"), "0");
}

TEST_F(Effects, ThatFailedAreListedWithTheReason) {
    const std::string file = Junk("bad.so");
    Scan();
    const Json failed = Done({"effects", "list", "--failed"});
    ASSERT_EQ(failed.size(), 1U);
    EXPECT_EQ(failed[0]["file"], file);
    EXPECT_EQ(failed[0]["missing"], false);
    EXPECT_THAT(std::string(failed[0]["reason"]), HasSubstr("cannot be loaded"));
    EXPECT_EQ(Done({"effects", "list"}).size(), 4U);
    EXPECT_THAT(std::string(Shown(file)[0]["failed"]), HasSubstr("cannot be loaded"));
}

TEST_F(Effects, AreShownByPathByGuidAndByFile) {
    Scan();
    const Json byPath = Shown("Wipes\\Wipe");
    ASSERT_EQ(byPath.size(), 1U);
    EXPECT_EQ(byPath[0]["kind"], "transition");
    EXPECT_EQ(byPath[0]["explanation"], "Made for tests");
    EXPECT_EQ(byPath[0]["parameters"][0]["name"], "position");
    EXPECT_EQ(Shown(byPath[0]["guid"]), byPath);
    EXPECT_EQ(Shown(m_wipe), byPath);
    EXPECT_EQ(Values(Shown(m_glow), "name"), (Names{"Glow", "Soft glow"}));
    EXPECT_THAT(Refused({"effects", "show", "Light\\Nothing"}), HasSubstr("no effect Light\\Nothing"));
}

TEST_F(Effects, AreShownWithTheDefaultsOfAllParametersAndTheirProgress) {
    Scan();
    const Json wipe = Shown("Wipes\\Wipe")[0];
    ASSERT_EQ(wipe["parameters"].size(), 1U);
    EXPECT_EQ(wipe["parameters"][0]["default"], 0.0);
    EXPECT_EQ(wipe["parameters"][0]["explanation"], "How far it is");
    EXPECT_EQ(wipe["progress"]["mode"], "parameter");
    EXPECT_EQ(Shown("Light\\Glow")[0]["no_visible_effect_at_defaults"], false);
    EXPECT_THAT(Qfc({"effects", "show", "Wipes\\Wipe"}).out, HasSubstr("position (number, 0.0)"));
}

TEST_F(Effects, OfOneNameInOneFolderAreToldApartByANumber) {
    const std::string twins = Plugin("twins.so", "filter Twin\nfilter Twin\n");
    Scan();
    const std::string first = Shown("Other\\Twin")[0]["guid"];
    const std::string second = Shown("Other\\Twin (2)")[0]["guid"];
    EXPECT_NE(first, second);
    // The number is no name that the user gave.
    Plugin("twins.so", "filter Brother\nfilter Brother\n");
    Scan();
    EXPECT_EQ(Shown("Other\\Brother")[0]["guid"], first);
    EXPECT_EQ(Shown("Other\\Brother (2)")[0]["guid"], second);
    Plugin("twins.so", "filter Brother\nfilter Brother\ntransition More\n");
    Scan();
    EXPECT_EQ(Shown("Other\\Brother (2)")[0]["guid"], second);
    ExpectWhole();
}

TEST_F(Effects, HaveNumbersOnlyBesideANamesake) {
    Plugin("x.so", "filter Foo\n");
    Scan();
    Plugin("x.so", "filter Bar\nfilter Foo\n");
    Scan();
    EXPECT_THAT(Done({"ls", "Other", "--gallery", "Filters"})["items"].size(), 2);
    EXPECT_EQ(Shown("Other\\Bar")[0]["kind"], "filter");
    const std::string second = Shown("Other\\Foo")[0]["guid"];
    Plugin("x.so", "filter Foo\nfilter Bar\n");
    Scan();
    EXPECT_EQ(Shown("Other\\Bar")[0]["guid"], second);
    EXPECT_NE(Shown("Other\\Foo")[0]["guid"], second);
    // A name that the user gave stays, so the other one has to give way.
    Done({"rename", "Other\\Bar", "Mine", "--gallery", "Filters"});
    Plugin("x.so", "filter Mine\nfilter Other\n");
    Scan();
    EXPECT_EQ(Shown("Other\\Mine")[0]["guid"], second);
    EXPECT_EQ(Shown("Other\\Mine (2)")[0]["name"], "Mine (2)");
    ExpectWhole();
}

TEST_F(Effects, OfOneNameInOneFolderAreRefusedWithTheirGuids) {
    Scan();
    const std::string guid = Shown("Light\\Glow")[0]["guid"];
    RawDb(Database()).Exec("update ITEM_TABLE set ITEM_NAME = 'Glow' where ITEM_NAME = 'Soft glow'");
    const std::string refusal = Refused({"effects", "show", "Light\\Glow"});
    EXPECT_THAT(refusal, HasSubstr("several items"));
    EXPECT_THAT(refusal, HasSubstr(guid));
}

TEST_F(Effects, OfOneNameInBothGalleriesAreRefusedWithTheirGuids) {
    Plugin("same.so", "filter Same\ntransition Same\n");
    const Json added = Scan()["added"];
    const std::string refusal = Refused({"effects", "show", "Other\\Same"});
    EXPECT_THAT(refusal, HasSubstr("several effects are called Other\\Same"));
    int named = 0;
    for (const Json& effect : added) {
        if (effect["name"] != "Same") continue;
        ++named;
        EXPECT_THAT(refusal, HasSubstr(std::string(effect["guid"])));
        EXPECT_EQ(Shown(effect["guid"])[0]["kind"], effect["kind"]);
    }
    EXPECT_EQ(named, 2);
    // One that several of a gallery have is not shown as that of the other.
    Plugin("same.so", "filter Same\ntransition Same\nfilter Next\n");
    Scan();
    RawDb(Database()).Exec("update ITEM_TABLE set ITEM_NAME = 'Same' where ITEM_NAME = 'Next'");
    EXPECT_THAT(Refused({"effects", "show", "Other\\Same"}), HasSubstr("several items"));
}

TEST_F(Effects, WithNamesThatTheLibraryReadsMoreIntoAreFoundByTheirPaths) {
    Plugin("odd.so", "filter Fast--forward\nfilter One || two\nfilter a/b\\c\n");
    Scan();
    int found = 0;
    for (const Json& effect : Done({"effects", "list"})) {
        EXPECT_EQ(Shown(effect["paths"][0])[0]["guid"], effect["guid"]) << effect;
        ++found;
    }
    EXPECT_EQ(found, 7);
}

TEST_F(Effects, ATransitionSaysWhatWasMovedForItsFilm) {
    Plugin("turned.so", "turned Half\n");
    Scan();
    const Json half = Shown("Other\\Half")[0];
    EXPECT_EQ(half["progress"]["mode"], "mix");
    EXPECT_EQ(half["progress"]["plain_blend"], false);
    ASSERT_EQ(half["thumbnail_made_with"].size(), 1U);
    EXPECT_EQ(half["thumbnail_made_with"][0]["parameter"], "position");
}

TEST_F(Effects, ATransitionThatShowsNothingOfItsOwnSaysThatItsFilmIsAPlainBlend) {
    Plugin("still.so", "still Half\n");
    Scan();
    const Json half = Shown("Other\\Half")[0];
    EXPECT_EQ(half["progress"]["plain_blend"], true);
    EXPECT_THAT(half["thumbnail_made_with"], IsEmpty());
}

TEST_F(Effects, KindsAreFound) {
    Scan();
    EXPECT_EQ(Values(Done({"find", "--kind", "filter"}), "name"), (Names{"Glow", "Soft glow", "Warm"}));
    EXPECT_EQ(Values(Done({"find", "--kind", "transition"}), "name"), Names{"Wipe"});
    EXPECT_EQ(Qfc({"find", "--kind", "other"}).exit, 1);
}

TEST_F(Effects, ATransitionHasAFilmAndAFilterHasNone) {
    Scan();
    const std::string strip = m_folder / "strip.png";
    const Json drawn = Done({"film", "Wipes\\Wipe", strip, "--gallery", "Transitions"});
    EXPECT_EQ(drawn["frames"], 10);
    EXPECT_EQ(drawn["moments"][0], "0 %");
    EXPECT_EQ(drawn["moments"][1], "11 %");
    EXPECT_EQ(drawn["moments"][9], "100 %");
    EXPECT_EQ(ReadFile(strip).substr(1, 3), "PNG");
    Refused({"film", "Light\\Glow", strip, "--gallery", "Filters"});
}

TEST_F(Effects, ASheetOfAGalleryShowsThem) {
    Scan();
    const Json drawn = Done({"sheet", m_folder / "sheet.png", "--gallery", "Filters"});
    EXPECT_EQ(drawn["items"], 3);
}

TEST_F(Effects, OfAFileAreRemovedWithTheFoldersThatAreEmptyThen) {
    Scan();
    Done({"mkdir", "A\\B", "--gallery", "Filters"});
    const Json removed = Done({"effects", "remove", m_glow});
    EXPECT_THAT(removed["removed"], ElementsAre("Light\\Glow", "Light\\Soft glow"));
    EXPECT_EQ(removed["file"], m_glow);
    EXPECT_THAT(removed["prunedFolders"], testing::UnorderedElementsAre("Light", "A", "A\\B"));
    EXPECT_THAT(Listed(), ElementsAre("Colour\\Warm colours\\Warm", "Wipes\\Wipe"));
    EXPECT_THAT(Refused({"effects", "remove", m_glow}), HasSubstr(m_glow));
    ExpectWhole();
}

TEST_F(Effects, OfAFileThatIsGoneAreRemovedByAnyPathThatLedThere) {
    Scan();
    fs::remove(m_wipe);
    fs::create_directory_symlink(m_plugins.Path(), m_folder / "link");
    EXPECT_EQ(Done({"effects", "remove", m_folder / "link/./wipe.so"})["file"], m_wipe);
    EXPECT_EQ(Cell("select count(*) from TRANSITION_TABLE"), "0");
    ExpectWhole();
}

TEST_F(Effects, ARemovalTakesTheTagsOfTheItems) {
    Scan();
    Done({"tag", "create", "Best", "--gallery", "Filters"});
    Done({"tag", "add", "Best", "--gallery", "Filters", "--", "Light\\Glow", "Colour\\Warm colours\\Warm"});
    Done({"effects", "remove", m_glow});
    EXPECT_EQ(Cell("select count(*) from TAG_ITEM_RELATION_TABLE"), "1");
    ExpectSound();
}

TEST_F(Effects, AFailedFileIsRemovedAndForgotten) {
    const std::string file = Junk("bad.so");
    Scan();
    EXPECT_THAT(Done({"effects", "remove", file})["prunedFolders"], IsEmpty());
    EXPECT_EQ(Cell("select count(*) from FLT_FILE_TABLE where FILTER_COUNT = 0"), "0");
    EXPECT_EQ(Scan()["failed"].size(), 1U);
}

TEST_F(Effects, AreClearedWithoutARest) {
    Junk("bad.so");
    Scan();
    RawDb(Database()).Exec("delete from FLT_TABLE where rowid = 1");
    Refused({"effects", "clear"}, 2);
    Refused({"effects", "clear", "--yes=no"}, 2);
    const std::string media = Image("photograph.ppm");
    Done({"import", media});
    const Json cleared = Done({"effects", "clear", "--yes"});
    EXPECT_EQ(cleared["removed"].size(), 4U);
    for (const char* table : {"FLT_FILE_TABLE", "FLT_TABLE", "TRANSITION_TABLE"}) {
        EXPECT_EQ(Cell(std::string("select count(*) from ") + table), "0") << table;
    }
    EXPECT_EQ(Cell("select count(*) from ITEM_TABLE"), "1");
    EXPECT_EQ(Cell("select count(*) from RELATION_TABLE"), "1");
    EXPECT_EQ(Cell("select count(distinct ITEM_ID) from CACHE_DATA_TABLE"), "1");
    EXPECT_EQ(Done({"ls", "Imported"})["items"].size(), 1U);
    ExpectSound();
    // Nothing is remembered either: the failed file is looked at again.
    const Json again = Scan();
    EXPECT_EQ(again["failed"].size(), 1U);
    EXPECT_EQ(again["added"].size(), 4U);
}

TEST_F(Effects, AreClearedWithoutTouchingOtherFolders) {
    Done({"import", Image("photograph.ppm")});
    Done({"mkdir", "Mine"});
    Scan();
    const std::string folders = "select ID, PREDEFINED_ID, FOLDER_NAME, PARENT_ID from FOLDER_TABLE where FOLDER_NAME ";
    const auto others = Rows(folders + "not in ('Light', 'Colour', 'Warm colours', 'Wipes') order by ID");
    ASSERT_GE(others.size(), 4U);
    Done({"effects", "clear", "--yes"});
    EXPECT_EQ(Rows(folders + "is not null order by ID"), others);
}

TEST_F(Effects, AreProbedWithoutALibrary) {
    const Json probed = Done({"effects", "probe", m_glow});
    EXPECT_EQ(Values(probed["effects"], "name"), (Names{"Glow", "Soft glow"}));
    EXPECT_THAT(Refused({"effects", "probe", Junk("bad.so")}), HasSubstr("cannot be loaded"));
    EXPECT_FALSE(fs::exists(Database()));
}

TEST_F(Effects, ComeBackWithTheSameGuids) {
    Scan();
    const std::string guid = Shown("Light\\Glow")[0]["guid"];
    Done({"effects", "clear", "--yes"});
    Scan();
    EXPECT_EQ(Shown("Light\\Glow")[0]["guid"], guid);
}

}  // namespace
