// Scans that meet broken files, files of one name, and libraries that a kill left half done.
#include "EffectsTest.h"

#include <cstdlib>
#include <gmock/gmock.h>

namespace {

using namespace qfc::test;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
namespace fs = std::filesystem;

class EffectsMending : public EffectsTest {
protected:
    // The program in a folder of its own, where it finds no photographs.
    int ScanWithoutPhotographs() const {
        const std::string program = m_folder / "qfc";
        fs::copy_file(QFC_PROGRAM, program, fs::copy_options::overwrite_existing);
        const std::string command = program + " --data-dir '" + m_library + "' effects scan '" + m_plugins.Path() +
                                    "' >'" + m_folder.Path() + "/out' 2>'" + m_folder.Path() + "/err'";
        const int status = std::system(command.c_str());
        return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    }
    // As a kill between two effects of a file leaves it.
    void Lose(const std::string& path, const std::string& gallery) const {
        Done({"rm", path, "--gallery", gallery});
        RawDb db(Database());
        const std::string lost = " where ITEM_ID not in (select ITEM_ID from ITEM_TABLE)";
        db.Exec("delete from TRANSITION_TABLE" + lost + "; delete from FLT_TABLE" + lost);
        db.Exec("delete from FLT_FILE_TABLE where not exists (select 1 from FLT_TABLE)");
    }
};

TEST_F(EffectsMending, AFileThatLostItsTransitionBesideAFilterGetsItBack) {
    const std::string file = Plugin("many.so", "filter Glow\ntransition Wipe\n");
    Scan();
    Lose("Wipes\\Wipe", "Transitions");
    EXPECT_EQ(Values(Scan()["added"], "name"), Names{"Wipe"});
    ExpectWhole();
    EXPECT_THAT(Scan()["unchanged"], ElementsAre(file));
}

TEST_F(EffectsMending, AFileThatLostItsFilterBesideATransitionGetsItBack) {
    const std::string file = Plugin("many.so", "filter Glow\ntransition Wipe\n");
    Scan();
    Lose("Light\\Glow", "Filters");
    EXPECT_EQ(Values(Scan()["added"], "name"), Names{"Glow"});
    ExpectWhole();
    EXPECT_THAT(Scan()["unchanged"], ElementsAre(file));
}

TEST_F(EffectsMending, WhatIsNoPluginsFaultTakesNothingAndFailsTheScan) {
    Plugin("glow.so", "filter Glow\n");
    const std::string bad = Junk("bad.so");
    Scan();
    Plugin("glow.so", "filter Shine\n");
    Junk("bad.so", "changed");
    Plugin("new.so", "filter New\n");
    const std::string before = DumpOf(Database());
    EXPECT_EQ(ScanWithoutPhotographs(), 1);
    EXPECT_EQ(DumpOf(Database()), before);
    EXPECT_THAT(ReadFile(m_folder / "err"), HasSubstr(m_plugins / "new.so"));
    EXPECT_THAT(ReadFile(m_folder / "out"), HasSubstr("3 not looked at"));
    const Json scanned = Scan();
    EXPECT_EQ(Values(scanned["updated"], "name"), Names{"Shine"});
    EXPECT_EQ(Values(scanned["added"], "name"), Names{"New"});
    EXPECT_THAT(scanned["unknown"], IsEmpty());
}

TEST_F(EffectsMending, AFailedFileWhoseRowIsRefused_IsToldAndTriedAgain) {
    Plugin("glow.so", "filter Glow\n");
    Scan();
    const std::string bad = Junk("bad.so");
    RawDb(Database())
        .Exec("create trigger keep before insert on FLT_FILE_TABLE begin select raise(abort, 'kept'); end");
    const Json scanned = Scan({}, 1);
    EXPECT_EQ(scanned["notStored"], Json{bad});
    EXPECT_EQ(Values(scanned["failed"], "file"), Names{bad});
    RawDb(Database()).Exec("drop trigger keep");
    EXPECT_EQ(Values(Scan()["failed"], "file"), Names{bad});
    EXPECT_EQ(Values(Scan()["failedBefore"], "file"), Names{bad});
}

TEST_F(EffectsMending, ARowOfAFileThatMoved_IsToldWhenItStays_AndGoesWithTheNextScan) {
    const std::string file = Plugin("a/glow.so", "filter Glow\n");
    Scan();
    std::filesystem::remove(file);
    const std::string moved = Plugin("b/glow.so", "filter Glow\n");
    RawDb(Database())
        .Exec("create trigger keep before delete on FLT_FILE_TABLE when old.FILE_NAME = '" + file +
              "' begin select raise(abort, 'kept'); end");
    EXPECT_THAT(Scan({}, 1)["notRemoved"], ElementsAre("the row of a file that moved to " + moved));
    EXPECT_EQ(Effect("Light\\Glow")["file"], moved);
    RawDb(Database()).Exec("drop trigger keep");
    Scan();
    EXPECT_EQ(Rows("select FILE_NAME from FLT_FILE_TABLE"), (std::vector<RawDb::Row>{{"'" + moved + "'"}}));
    ExpectWhole();
}

TEST_F(EffectsMending, ABrokenFileDoesNotHideTheGoodOneOfItsName) {
    m_plugins.MakeFolder("a");
    const std::string broken = Junk("a/glow.so");
    const std::string good = Plugin("b/glow.so", "filter Glow\n");
    const std::string third = Plugin("c/glow.so", "filter Glow\n");
    const Json scanned = Scan();
    EXPECT_EQ(Values(scanned["failed"], "file"), Names{broken});
    EXPECT_EQ(Values(scanned["added"], "file"), Names{good});
    EXPECT_EQ(Values(scanned["skipped"], "file"), Names{third});
    EXPECT_THAT(Scan()["unchanged"], ElementsAre(good));
    ExpectWhole();
}

TEST_F(EffectsMending, AFileThatBreaksHandsItsNameToTheGoodOne) {
    Plugin("b/glow.so", "filter Glow\n");
    const std::string good = Plugin("a/glow.so", "filter Glow\n");
    Done({"effects", "scan", m_plugins / "b"});
    Junk("b/glow.so");
    const Json scanned = Scan({}, 1);
    EXPECT_EQ(Values(scanned["added"], "file"), Names{good});
    EXPECT_EQ(Effect("Light\\Glow")["file"], good);
    ExpectWhole();
}

TEST_F(EffectsMending, AFileWithoutAnEffectIsRememberedWithoutARowUntilItChanges) {
    const std::string file = Plugin("noise.so", "generator Noise\n");
    const Json first = Scan()["skipped"];
    EXPECT_EQ(Cell("select count(*) from FLT_FILE_TABLE"), "0");
    // Nothing is run again: without photographs nothing could be.
    EXPECT_EQ(ScanWithoutPhotographs(), 0);
    EXPECT_EQ(Scan()["skipped"], first);
    Plugin("noise.so", "filter Noise\n");
    EXPECT_EQ(Values(Scan()["added"], "file"), Names{file});
}

TEST_F(EffectsMending, EffectsThatVanishAreSaidLoudly) {
    Plugin("glow.so", "filter Glow\n");
    Scan();
    Junk("glow.so");
    const QfcResult result = Qfc({"effects", "scan", m_plugins.Path()});
    EXPECT_EQ(result.exit, 1);
    EXPECT_THAT(result.err, HasSubstr("1 effect of the library vanished"));
}

TEST_F(EffectsMending, AFolderThatFitsTwiceKeepsOnlyItsOwnEffectsOut) {
    const std::string glow = Plugin("glow.so", "filter Glow\n");
    Plugin("warm.so", "filter Warm\n");
    Done({"mkdir", "Light", "--gallery", "Filters"});
    Done({"mkdir", "Twin", "--gallery", "Filters"});
    RawDb(Database()).Exec("update FOLDER_TABLE set FOLDER_NAME = 'Light' where FOLDER_NAME = 'Twin'");
    const Json scanned = Scan({}, 1);
    EXPECT_THAT(scanned["notStored"], ElementsAre(glow));
    EXPECT_EQ(Values(scanned["added"], "name"), Names{"Warm"});
    ExpectWhole();
}

TEST_F(EffectsMending, APathThatIsNoUtf8IsLeftOutAndReported) {
    Plugin("glow.so", "filter Glow\n");
    Plugin("bad\xFF/warm.so", "filter Warm\n");
    const Json scanned = Scan();
    EXPECT_EQ(Values(scanned["added"], "name"), Names{"Glow"});
    ASSERT_EQ(scanned["problems"].size(), 1U);
    EXPECT_EQ(scanned["problems"][0]["reason"], "its path is not UTF-8");
}

}  // namespace
