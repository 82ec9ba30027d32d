// Known effects that a scan must not take away: nothing of what their files are was learned.
#include "EffectsTest.h"

#include <gmock/gmock.h>
#include <thread>

namespace {

using namespace qfc::test;
using testing::ElementsAre;
using testing::IsEmpty;
namespace fs = std::filesystem;

class EffectsKept : public EffectsTest {
protected:
    // A tagged effect in the library.
    std::string Known(const std::string& name) const {
        const std::string file = Plugin(name, "filter Glow\n");
        Scan();
        Tag("Light\\Glow");
        return file;
    }
    // For everybody, all below the folder included.
    static void Open(const std::string& folder) {
        fs::permissions(folder, fs::perms(0777));
        for (const auto& entry : fs::recursive_directory_iterator(folder)) {
            fs::permissions(entry, fs::perms(entry.is_directory() ? 0777 : 0666));
        }
    }
    QfcResult ScanAsNobody() const {
        return Qfc({"--json", "effects", "scan", m_plugins.Path()},
                   {.unprivileged = true, .largestFile = std::nullopt, .narrowPipe = false});
    }
    void ExpectTagged(const std::string& file, bool isMissing) const {
        const Json listed = Done({"effects", "list"});
        EXPECT_THAT(Values(listed, "file"), testing::Contains(file));
        for (const Json& effect : listed) {
            if (effect["file"] != file) continue;
            EXPECT_EQ(effect["missing"], isMissing);
            EXPECT_EQ(effect["paths"], Json{"Light\\Glow"});
        }
        EXPECT_EQ(Links(), "1");
        ExpectWhole();
    }
};

TEST_F(EffectsKept, WhenTheirFileMayNotBeRead) {
    if (!CanRunUnprivileged()) GTEST_SKIP() << "nobody else can start the program here";
    const std::string file = Known("glow.so");
    Plugin("glow.so", "filter Shine\n");
    for (const std::string& folder : {m_folder.Path(), m_host.Path(), m_plugins.Path()}) Open(folder);
    fs::permissions(file, fs::perms::none);
    const std::string before = DumpOf(Database());
    const QfcResult result = ScanAsNobody();
    EXPECT_EQ(result.exit, 1);
    EXPECT_EQ(Values(Json::parse(result.out)["unknown"], "file"), Names{file}) << result.out;
    EXPECT_EQ(DumpOf(Database()), before);
    // Its size and its time are what they were: nothing may be remembered of them.
    fs::permissions(file, fs::perms(0644));
    EXPECT_EQ(Values(Scan()["updated"], "name"), Names{"Shine"});
}

TEST_F(EffectsKept, OfAFileThatMayNotBeReadThereAreNone_SoItHidesNoNamesake) {
    if (!CanRunUnprivileged()) GTEST_SKIP() << "nobody else can start the program here";
    Done({"mkdir", "Other", "--gallery", "Filters"});
    const std::string closed = Plugin("a/glow.so", "filter Glow\n");
    const std::string good = Plugin("b/glow.so", "filter Glow\n");
    const std::string later = Plugin("c/glow.so", "filter Glow\n");
    for (const std::string& folder : {m_folder.Path(), m_host.Path(), m_plugins.Path()}) Open(folder);
    fs::permissions(closed, fs::perms::none);
    const QfcResult result = ScanAsNobody();
    EXPECT_EQ(result.exit, 1);
    const Json scanned = Json::parse(result.out);
    EXPECT_EQ(Values(scanned["unknown"], "file"), Names{closed});
    EXPECT_EQ(Values(scanned["added"], "file"), Names{good});
    EXPECT_EQ(Values(scanned["skipped"], "file"), Names{later});
}

TEST_F(EffectsKept, WhenTheirFileGoesWhileTheScanRuns) {
    const std::string file = Known("glow.so");
    Plugin("glow.so", "filter Shine\n");
    const std::string gate = Plugin("a.so", "gate\nfilter Warm\n");
    Plugin("b.so", "filter Blue\n");
    // Two are looked at at a time, in the order of their names: the third is known to the scan, and not begun.
    QfcProcess scan(WithLibrary({"--json", "effects", "scan", m_plugins.Path()}), {});
    while (!fs::exists(gate + ".begun")) std::this_thread::yield();
    fs::remove(file);
    m_plugins.Write("a.so.go", "");
    const QfcResult result = scan.Wait();
    EXPECT_EQ(result.exit, 1);
    EXPECT_EQ(Values(Json::parse(result.out)["unknown"], "file"), Names{file}) << result.out;
    EXPECT_EQ(Cell("select count(*) from FLT_FILE_TABLE where FILTER_COUNT = 0"), "0");
    ExpectTagged(file, true);
}

TEST_F(EffectsKept, WhenTheirFileGoesWhileItIsLookedAt) {
    const std::string file = Known("glow.so");
    Plugin("glow.so", "gate\ngenerator Noise\n");
    QfcProcess scan(WithLibrary({"--json", "effects", "scan", m_plugins.Path()}), {});
    while (!fs::exists(file + ".begun")) std::this_thread::yield();
    fs::remove(file);
    m_plugins.Write("glow.so.go", "");
    const QfcResult result = scan.Wait();
    EXPECT_EQ(result.exit, 1);
    EXPECT_EQ(Values(Json::parse(result.out)["unknown"], "file"), Names{file}) << result.out;
    ExpectTagged(file, true);
}

TEST_F(EffectsKept, WhenTheirFileIsAwayAndANamesakeHasNone) {
    const std::string file = Known("a/glow.so");
    fs::rename(m_plugins / "a", m_folder / "away");
    m_plugins.MakeFolder("b");
    const std::string broken = Junk("b/glow.so");
    const Json first = Scan();
    EXPECT_EQ(Values(first["failed"], "file"), Names{broken});
    EXPECT_THAT(first["removed"], IsEmpty());
    ExpectTagged(file, true);
    EXPECT_EQ(Values(Scan()["failedBefore"], "file"), Names{broken});
    const std::string empty = Plugin("b/glow.so", "generator Noise\n");
    EXPECT_EQ(Values(Scan()["skipped"], "file"), Names{empty});
    ExpectTagged(file, true);
    fs::rename(m_folder / "away", m_plugins / "a");
    EXPECT_THAT(Scan()["unchanged"], ElementsAre(file));
    ExpectTagged(file, false);
}

TEST_F(EffectsKept, WhenTheyMovedNonethelessTheTagsMoveAlong) {
    Known("a/glow.so");
    const std::string there = m_plugins.MakeFolder("b") + "/glow.so";
    fs::rename(m_plugins / "a/glow.so", there);
    EXPECT_EQ(Scan()["moved"].size(), 1U);
    ExpectTagged(there, false);
}

// The clock ends both, which do nothing but wait.
TEST_F(EffectsKept, WhenTheirFileGotNoTimeToRun_ButANewFileFails) {
    const std::string file = Known("glow.so");
    const std::string slow = "slow\nfilter Glow\nfilter Warm\nfilter Blue\n";
    Plugin("glow.so", slow);
    const std::string fresh = Plugin("new.so", slow);
    const Json scanned = Scan({}, 1);
    EXPECT_EQ(Values(scanned["unknown"], "file"), Names{file});
    EXPECT_EQ(Values(scanned["failed"], "file"), Names{fresh});
    EXPECT_THAT(scanned["removed"], IsEmpty());
    ExpectTagged(file, false);
}

TEST_F(EffectsKept, WhenTheirFileMovedAndGotNoTimeToRun) {
    const std::string file = Known("a/glow.so");
    fs::remove_all(m_plugins / "a");
    const std::string there = Plugin("b/glow.so", "slow\nfilter Glow\nfilter Warm\nfilter Blue\n");
    EXPECT_EQ(Values(Scan({}, 1)["unknown"], "file"), Names{there});
    EXPECT_EQ(Cell("select count(*) from FLT_FILE_TABLE where FILTER_COUNT = 0"), "0");
    ExpectTagged(file, true);
    Plugin("b/glow.so", "filter Glow\n");
    EXPECT_EQ(Scan()["moved"].size(), 1U);
    ExpectTagged(there, false);
}

TEST_F(EffectsKept, OfAFileThatAnotherProgramStored_WhateverBecomesOfIt) {
    const std::string file = Plugin("many.so", "filter Glow\ntransition Wipe\n");
    Scan();
    RawDb db(Database());
    const std::string other = "X'01020304050607080910111213141516'";
    const std::string filter = db.Cell("select ITEM_ID from FLT_TABLE");
    for (const char* table : {"ITEM_TABLE", "RELATION_TABLE", "CACHE_DATA_TABLE", "FLT_TABLE"}) {
        db.Exec(std::string("update ") + table + " set ITEM_ID = " + other + " where ITEM_ID = " + filter);
    }
    db.Exec("update FLT_TABLE set DSVFTABLE_DATA = zeroblob(456), DSORVFT_DATA = X'0000000000000001'");
    Tag("Light\\Glow");
    const std::string before = DumpOf(Database());
    for (const char* script : {"filter Shine\n", "generator Noise\n", "broken\n"}) {
        Plugin("many.so", script);
        EXPECT_EQ(Values(Scan({"--retry"})["skipped"], "file"), Names{file});
        EXPECT_EQ(DumpOf(Database()), before) << script;
    }
    // What a scan stored of it moves with the file, the rest stays.
    const std::string there = m_plugins.MakeFolder("there") + "/many.so";
    fs::remove(file);
    fs::rename(Plugin("many.so", "filter Shine\ntransition Wipe\n"), there);
    const Json moved = Scan();
    EXPECT_EQ(Values(moved["moved"], "name"), Names{"Wipe"});
    EXPECT_EQ(Values(moved["added"], "name"), Names{"Shine"});
    EXPECT_EQ(Rows("select FILE_NAME from FLT_TABLE where ITEM_ID = " + other),
              (std::vector<RawDb::Row>{{"'" + file + "'"}}));
    EXPECT_EQ(Links(), "1");
    ExpectWhole();
    EXPECT_THAT(Scan()["unchanged"], ElementsAre(there));
}

}  // namespace
