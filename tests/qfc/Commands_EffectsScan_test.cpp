// Scanning folders of effect files into the library.
#include "EffectsTest.h"

#include <chrono>
#include <csignal>
#include <filesystem>
#include <gmock/gmock.h>
#include <thread>

namespace {

using namespace qfc::test;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
namespace fs = std::filesystem;

class EffectsScan : public EffectsTest {
protected:
    // A scan stores what it has found while it looks at the next files.
    void AwaitRows(const std::string& table, int rows) const {
        RawDb db(Database());
        db.Exec("pragma busy_timeout = 60000");
        const std::string question = "select count(*) >= " + std::to_string(rows) + " from " + table;
        while (db.Cell(question) != "1") std::this_thread::yield();
    }
};

TEST_F(EffectsScan, EffectsGoIntoTheFoldersOfTheTable_ByFileThenByNameThenByKeyword) {
    Plugin("glow.so", "filter Blur of another name\n");
    Plugin("a.so", "filter Warm\n");
    Plugin("b.so", "filter A BLUR\n");
    Plugin("c.so", "filter Nothing special\n");
    Plugin("deeper/wipe.so", "transition To the left\n");
    Plugin("deeper/e.so", "transition Crossfade\n");
    const Json scanned = Scan();
    EXPECT_EQ(scanned["added"].size(), 6U);
    EXPECT_THAT(Listed(), ElementsAre("Blur\\A BLUR", "Colour\\Warm colours\\Warm", "Fades\\Crossfade",
                                      "Light\\Blur of another name", "Other\\Nothing special", "Wipes\\To the left"));
    EXPECT_EQ(Done({"ls", "Light", "--gallery", "Filters"})["items"][0]["kind"], "filter");
    EXPECT_EQ(Done({"ls", "Wipes", "--gallery", "Transitions"})["items"][0]["kind"], "transition");
    ExpectWhole();
}

TEST_F(EffectsScan, AnItemHasItsTypeAThumbnailAndEverythingInItsBlackBox) {
    const std::string file = Plugin("glow.so", "filter Glow\n");
    Plugin("wipe.so", "transition Wipe\n");
    Scan();
    const Json filter = Done({"show", "Light\\Glow", "--gallery", "Filters"});
    EXPECT_EQ(filter["type"], 128);
    EXPECT_EQ(filter["file"], file);
    EXPECT_GT(filter["bitmapCache"]["bytes"], 40);
    EXPECT_EQ(filter["film"]["frames"], 0);
    EXPECT_EQ(filter["media"]["author"], "Tester");
    EXPECT_EQ(filter["media"]["no_visible_effect_at_defaults"], false);
    const Json transition = Done({"show", "Wipes\\Wipe", "--gallery", "Transitions"});
    EXPECT_EQ(transition["type"], 64);
    EXPECT_EQ(transition["film"]["frames"], 10);
    EXPECT_EQ(transition["media"]["progress"]["mode"], "parameter");
    EXPECT_EQ(transition["media"]["progress"]["parameter"], "position");
}

TEST_F(EffectsScan, AFileOfSeveralFiltersIsOneRecordWithAnItemForEach) {
    const std::string file =
        Plugin("many.so", "filter One\nfilter Two\ntransition Half\ngenerator None\nfilter Three\n");
    EXPECT_EQ(Scan()["added"].size(), 4U);
    EXPECT_EQ(Rows("select FILE_NAME, FILTER_COUNT from FLT_FILE_TABLE"),
              (std::vector<RawDb::Row>{{"'" + file + "'", "3"}}));
    EXPECT_EQ(Cell("select count(*) from FLT_TABLE"), "3");
    EXPECT_EQ(Cell("select count(*) from TRANSITION_TABLE"), "1");
    ExpectWhole();
    EXPECT_THAT(Scan()["unchanged"], ElementsAre(file));
}

TEST_F(EffectsScan, WhatIsNoEffectIsSkippedAndLeavesNothing) {
    const std::string file = Plugin("noise.so", "generator Noise\n");
    m_plugins.Write("readme.txt", "no effect file by its name");
    const Json scanned = Scan();
    EXPECT_EQ(Values(scanned["skipped"], "file"), Names{file});
    EXPECT_THAT(scanned["failed"], IsEmpty());
    EXPECT_EQ(Cell("select count(*) from FLT_FILE_TABLE"), "0");
}

TEST_F(EffectsScan, AFailedFileIsARowWithoutFiltersAndIsTriedAgainOnlyWhenAskedOrChanged) {
    const std::string file = Junk("bad.so");
    EXPECT_EQ(Values(Scan()["failed"], "file"), Names{file});
    EXPECT_EQ(Rows("select FILE_NAME, FILTER_COUNT from FLT_FILE_TABLE"),
              (std::vector<RawDb::Row>{{"'" + file + "'", "0"}}));
    EXPECT_EQ(Values(Scan()["failedBefore"], "file"), Names{file});
    EXPECT_EQ(Values(Scan({"--retry"})["failed"], "file"), Names{file});
    Junk("bad.so", "another content");
    EXPECT_EQ(Values(Scan()["failed"], "file"), Names{file});
    Junk("bad.so", "equal in length");
    std::filesystem::last_write_time(file, std::filesystem::last_write_time(file) + std::chrono::hours(1));
    EXPECT_EQ(Values(Scan()["failed"], "file"), Names{file});
    EXPECT_EQ(Values(Scan()["failedBefore"], "file"), Names{file});
    Plugin("bad.so", "transition Better\n");
    EXPECT_EQ(Values(Scan()["added"], "name"), Names{"Better"});
    EXPECT_EQ(Cell("select count(*) from FLT_FILE_TABLE"), "0");
    EXPECT_EQ(Qfc({"effects", "list", "--failed"}).exit, 1);
}

TEST_F(EffectsScan, AFileThatFailsNowLosesItsEffects) {
    Plugin("glow.so", "filter Glow\n");
    Scan();
    Junk("glow.so");
    const Json scanned = Scan({}, 1);
    EXPECT_EQ(scanned["failed"].size(), 1U);
    EXPECT_THAT(scanned["removed"], ElementsAre("Light\\Glow"));
    EXPECT_THAT(scanned["prunedFolders"], ElementsAre("Light"));
    EXPECT_THAT(ItemIds(), IsEmpty());
    EXPECT_THAT(RecordIds(), IsEmpty());
    EXPECT_EQ(Cell("select FILTER_COUNT from FLT_FILE_TABLE"), "0");
}

TEST_F(EffectsScan, AnUnchangedFileIsLeftAlone) {
    const std::string file = Plugin("glow.so", "filter Glow\n");
    Scan();
    const std::string before = DumpOf(Database());
    const Json again = Scan();
    EXPECT_THAT(again["unchanged"], ElementsAre(file));
    EXPECT_THAT(again["added"], IsEmpty());
    EXPECT_EQ(DumpOf(Database()), before);
}

TEST_F(EffectsScan, AChangedFileChangesItsItemWhichKeepsItsPlaceAndItsOwnName) {
    Plugin("glow.so", "filter Glow\nfilter Second\n");
    Scan();
    const std::string guid = Effect("Light\\Glow")["guid"];
    Done({"mkdir", "Mine", "--gallery", "Filters"});
    Done({"mv", "Light\\Second", "Mine", "--gallery", "Filters"});
    Done({"rename", "Mine\\Second", "Favourite", "--gallery", "Filters"});
    Plugin("glow.so", "filter Shine\nfilter Another\n");
    EXPECT_EQ(Scan()["updated"].size(), 2U);
    EXPECT_THAT(Listed(), ElementsAre("Light\\Shine", "Mine\\Favourite"));
    EXPECT_EQ(Effect("Light\\Shine")["guid"], guid);
    EXPECT_EQ(Done({"show", "Mine\\Favourite", "--gallery", "Filters"})["media"]["name"], "Another");
    ExpectWhole();
}

TEST_F(EffectsScan, AFileThatMovedKeepsItsItemsAndItsOldRowGoes) {
    Plugin("here/many.so", "filter Glow\ntransition Wipe\n");
    Scan();
    const std::set<std::string> before = ItemIds();
    const std::string there = m_plugins.MakeFolder("there") + "/many.so";
    fs::rename(m_plugins / "here/many.so", there);
    const Json scanned = Scan();
    EXPECT_EQ(scanned["moved"].size(), 2U);
    EXPECT_THAT(scanned["removed"], IsEmpty());
    EXPECT_EQ(ItemIds(), before);
    EXPECT_EQ(Rows("select FILE_NAME from FLT_FILE_TABLE"), (std::vector<RawDb::Row>{{"'" + there + "'"}}));
    EXPECT_EQ(Rows("select FILE_NAME from TRANSITION_TABLE"), (std::vector<RawDb::Row>{{"'" + there + "'"}}));
    EXPECT_EQ(Rows("select distinct FILE_NAME from ITEM_TABLE"), (std::vector<RawDb::Row>{{"'" + there + "'"}}));
    ExpectWhole();
    EXPECT_THAT(Scan()["unchanged"], ElementsAre(there));
}

TEST_F(EffectsScan, TheRowOfAFailedFileThatMovedGoes) {
    Junk("bad.so");
    Scan();
    const std::string there = m_plugins.MakeFolder("there") + "/bad.so";
    fs::rename(m_plugins / "bad.so", there);
    Scan();
    EXPECT_EQ(Rows("select FILE_NAME from FLT_FILE_TABLE"), (std::vector<RawDb::Row>{{"'" + there + "'"}}));
}

TEST_F(EffectsScan, OfTwoFilesOfOneNameTheOneThatIsThereStays) {
    const std::string first = Plugin("a/glow.so", "filter Glow\n");
    const std::string second = Plugin("b/glow.so", "filter Glow\n");
    EXPECT_EQ(Values(Scan()["skipped"], "file"), Names{second});
    const Json other = Done({"effects", "scan", m_plugins / "b"});
    EXPECT_EQ(Values(other["skipped"], "file"), Names{second});
    EXPECT_EQ(Effect("Light\\Glow")["file"], first);
}

TEST_F(EffectsScan, EffectsThatAFileLostGoAndTheOthersStay) {
    Plugin("many.so", "filter Glow\nfilter Warm\n");
    Scan();
    Plugin("many.so", "filter Glow\n");
    const Json scanned = Scan({}, 1);
    EXPECT_THAT(scanned["removed"], ElementsAre("Colour\\Warm colours\\Warm"));
    EXPECT_EQ(Values(scanned["updated"], "name"), Names{"Glow"});
    EXPECT_EQ(Cell("select FILTER_COUNT from FLT_FILE_TABLE"), "1");
    ExpectWhole();
}

TEST_F(EffectsScan, AFilterThatBecameATransitionChangesItsGallery) {
    Plugin("wipe.so", "filter Wipe\n");
    Scan();
    Plugin("wipe.so", "transition Wipe\n");
    const Json scanned = Scan({}, 1);
    EXPECT_EQ(scanned["added"][0]["kind"], "transition");
    EXPECT_THAT(Listed(), ElementsAre("Wipes\\Wipe"));
    EXPECT_EQ(Cell("select count(*) from FLT_FILE_TABLE"), "0");
    ExpectWhole();
}

TEST_F(EffectsScan, AnItemWithoutRecordGetsItsRecord) {
    Plugin("glow.so", "filter Glow\n");
    Plugin("wipe.so", "transition Wipe\n");
    Scan();
    const std::set<std::string> before = ItemIds();
    RawDb(Database()).Exec("delete from FLT_TABLE; delete from FLT_FILE_TABLE; delete from TRANSITION_TABLE;");
    EXPECT_EQ(Scan()["updated"].size(), 2U);
    EXPECT_EQ(RecordIds(), before);
    ExpectWhole();
}

TEST_F(EffectsScan, ARecordWithoutItemGetsItsItem) {
    Plugin("glow.so", "filter Glow\n");
    Plugin("wipe.so", "transition Wipe\n");
    Scan();
    const std::set<std::string> before = ItemIds();
    Done({"rm", "Light\\Glow", "--gallery", "Filters"});
    Done({"rm", "Wipes\\Wipe", "--gallery", "Transitions"});
    EXPECT_EQ(Scan()["added"].size(), 2U);
    EXPECT_EQ(ItemIds(), before);
    ExpectWhole();
}

TEST_F(EffectsScan, ATransitionThatIsMissingFromItsFileIsFoundByTheOthers) {
    Plugin("many.so", "transition Wipe\ntransition Fade\n");
    Scan();
    Done({"rm", "Fades\\Fade", "--gallery", "Transitions"});
    RawDb(Database()).Exec("delete from TRANSITION_TABLE where ITEM_ID not in (select ITEM_ID from ITEM_TABLE)");
    EXPECT_EQ(Values(Scan()["added"], "name"), Names{"Fade"});
    ExpectWhole();
}

TEST_F(EffectsScan, ACountThatDiffersFromTheRowsIsMended) {
    Plugin("many.so", "filter Glow\nfilter Warm\n");
    Scan();
    RawDb(Database()).Exec("update FLT_FILE_TABLE set FILTER_COUNT = 5");
    EXPECT_EQ(Scan()["updated"].size(), 2U);
    EXPECT_EQ(Cell("select FILTER_COUNT from FLT_FILE_TABLE"), "2");
}

TEST_F(EffectsScan, ARecordThatCannotBeStoredFailsTheScanAndTheNextOneMendsIt) {
    Plugin("glow.so", "filter Glow\n");
    Plugin("wipe.so", "transition Wipe\n");
    Done({"effects", "scan", m_plugins / "wipe.so"});
    RefuseWrites(Database(), "FLT_TABLE");
    EXPECT_EQ(Scan({}, 1)["notStored"].size(), 1U);
    RawDb db(Database());
    for (const RawDb::Row& row : db.Rows("select name from sqlite_master where type = 'trigger'")) {
        db.Exec("drop trigger " + row.at(0).substr(1, row.at(0).size() - 2));
    }
    Scan();
    ExpectWhole();
    EXPECT_THAT(Listed(), ElementsAre("Light\\Glow", "Wipes\\Wipe"));
}

TEST_F(EffectsScan, WhatIsLeftOfAnEffectThatCannotBeStoredIsTold) {
    const std::string wipe = Plugin("wipe.so", "transition Wipe\n");
    Scan();
    const std::string fade = Plugin("fade.so", "transition Fade\n");
    const std::string glow = Plugin("glow.so", "filter Glow\n");
    RefuseWrites(Database(), "TRANSITION_TABLE");
    RawDb(Database())
        .Exec(
            "create trigger keep before insert on ITEM_TABLE when new.ITEM_NAME = 'Glow' "
            "begin select raise(abort, 'kept'); end");
    const QfcResult result = Qfc({"effects", "scan", m_plugins.Path()});
    EXPECT_EQ(result.exit, 1);
    const std::string refused = ": cannot be stored in the library";
    EXPECT_THAT(result.err,
                HasSubstr(fade + refused + "; Fades\\Fade stands there without its parameters, scan again\n"));
    EXPECT_THAT(result.err, HasSubstr(glow + refused + "; the new folder Light is empty\n"));
}

TEST_F(EffectsScan, KilledAtAnyMoment_TheNextScanMakesItWhole) {
    Names names;
    for (int i = 0; i < 6; ++i) {
        const std::string name = std::string("e") + static_cast<char>('0' + i);
        Plugin(name + ".so", (i % 2 == 0 ? "filter " : "transition ") + name + "\n");
        names.push_back(name);
    }
    Done({"mkdir", "Other", "--gallery", "Filters"});
    for (const int items : {1, 3, 5}) {
        QfcProcess scan(WithLibrary({"effects", "scan", m_plugins.Path()}), {});
        AwaitRows("ITEM_TABLE", items);
        scan.Signal(SIGKILL);
        scan.Wait();
        Scan();
        ExpectWhole();
        EXPECT_EQ(ItemIds().size(), names.size());
        Done({"effects", "clear", "--yes"});
    }
}

TEST_F(EffectsScan, CtrlCEndsItSoonAndWhatIsThereIsWhole) {
    Plugin("a.so", "filter Glow\n");
    Plugin("b.so", "slow\nfilter Late\n");
    Done({"mkdir", "Other", "--gallery", "Filters"});
    QfcProcess scan(WithLibrary({"effects", "scan", m_plugins.Path()}), {});
    AwaitRows("FLT_TABLE", 1);
    scan.Signal(SIGINT);
    const QfcResult result = scan.Wait();
    EXPECT_EQ(result.exit, 1);
    EXPECT_THAT(result.err, HasSubstr("interrupted: "));
    ExpectWhole();
}

TEST_F(EffectsScan, AnOrderThatIsNotStoredIsNotDone) {
    for (const char* name : {"a", "b", "c"}) Plugin(std::string(name) + ".so", std::string("filter ") + name + "\n");
    Scan();
    Done({"rm", "Other\\a", "--gallery", "Filters"});
    RawDb(Database())
        .Exec(
            "create trigger keep before insert on RELATION_TABLE when exists (select 1 from RELATION_TABLE where "
            "PARENT_ID = new.PARENT_ID and ITEM_ID = new.ITEM_ID) begin select raise(abort, 'kept'); end");
    const Json scanned = Scan({}, 1);
    EXPECT_EQ(Values(scanned["added"], "name"), Names{"a"});
    EXPECT_EQ(scanned["notLast"], Json{"Other"});
    ExpectWhole();
}

TEST_F(EffectsScan, HelpSaysWhatIsTriedAgain) {
    EXPECT_THAT(Qfc({"effects", "scan", "--help"}).out, HasSubstr("that failed, or had no effect"));
}

TEST_F(EffectsScan, WithoutTheTableOfFoldersNothingIsScanned) {
    Plugin("glow.so", "filter Glow\n");
    fs::remove_all(m_host / "Orvel.dat");
    EXPECT_THAT(Refused({"effects", "scan", m_plugins.Path()}), HasSubstr("EffectFolders.ini"));
    EXPECT_EQ(Cell("select count(*) from ITEM_TABLE"), "0");
}

TEST_F(EffectsScan, NothingToScanIsAFailure) {
    EXPECT_EQ(Scan({}, 1)["added"].size(), 0U);
    EXPECT_THAT(Refused({"effects", "scan", m_plugins / "nowhere"}), HasSubstr("nowhere"));
}

}  // namespace
