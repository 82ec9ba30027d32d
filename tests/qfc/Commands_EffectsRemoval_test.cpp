// Removals of effects that are refused, or that somebody wants to end.
#include "EffectsTest.h"

#include <csignal>
#include <gmock/gmock.h>

namespace {

using namespace qfc::test;
using testing::ElementsAre;
using testing::HasSubstr;

class EffectsRemoval : public EffectsTest {
protected:
    void SetUp() override {
        EffectsTest::SetUp();
        m_glow = Plugin("glow.so", "filter Glow\nfilter Soft glow\n");
        Plugin("wipe.so", "transition Wipe\n");
        Scan();
        Tag("Light\\Glow");
    }
    std::string Orphans() const {
        return Cell("select count(*) from RELATION_TABLE where ITEM_ID not in (select ITEM_ID from ITEM_TABLE)");
    }
    // The rows of effects go only when their items are gone.
    void KeepRecords() const {
        for (const char* table : {"FLT_FILE_TABLE", "TRANSITION_TABLE"}) {
            RawDb(Database())
                .Exec(std::string("create trigger keep_") + table + " before delete on " + table +
                      " when exists (select 1 from ITEM_TABLE where ITEM_TYPE in (64, 128))"
                      " begin select raise(abort, 'kept'); end");
        }
    }
    // When it is to go, only its place goes.
    void LoseFolderOf(const std::string& item) const {
        RawDb(Database())
            .Exec("create trigger keep before delete on ITEM_TABLE when old.ITEM_NAME = '" + item +
                  "' begin select raise(ignore); end");
    }
    void LetRecordsGo() const {
        RawDb(Database()).Exec("drop trigger keep_FLT_FILE_TABLE; drop trigger keep_TRANSITION_TABLE");
    }

    std::string m_glow;
};

TEST_F(EffectsRemoval, AClearingThatTheStoreRefusesLeavesEveryPlaceItsItem) {
    KeepRecords();
    const Json cleared = Document({"effects", "clear", "--yes"}, 1);
    EXPECT_THAT(cleared["removed"], testing::IsEmpty());
    EXPECT_EQ(cleared["files"], 0);
    EXPECT_EQ(Orphans(), "0");
    EXPECT_EQ(Links(), "1");
    ExpectWhole();
    LetRecordsGo();
    EXPECT_EQ(Done({"effects", "clear", "--yes"})["removed"].size(), 3U);
    EXPECT_EQ(Cell("select count(*) from RELATION_TABLE"), "0");
    EXPECT_EQ(Links(), "0");
    ExpectSound();
}

// Of a file that no row names, say.
TEST_F(EffectsRemoval, AClearingThatLeavesRecordsWhichNoFileHas_SaysSo) {
    RawDb(Database())
        .Exec(
            "insert into FLT_TABLE (FILE_NAME, ITEM_ID) values ('stray.so', zeroblob(16));"
            "create trigger keep before delete on FLT_TABLE when old.FILE_NAME = 'stray.so'"
            " begin select raise(abort, 'kept'); end");
    const QfcResult result = Qfc({"effects", "clear", "--yes"});
    EXPECT_EQ(result.exit, 1);
    EXPECT_EQ(result.err, "qfc: cannot remove the rest of the records\n");
    EXPECT_THAT(result.out, HasSubstr("removed Wipes\\Wipe\n"));
    EXPECT_EQ(Cell("select count(*) from ITEM_TABLE"), "0");
    RawDb(Database()).Exec("drop trigger keep");
    EXPECT_EQ(Qfc({"effects", "clear", "--yes"}).err, "");
    EXPECT_EQ(Cell("select count(*) from FLT_TABLE"), "0");
}

TEST_F(EffectsRemoval, OfRecordsThatStayIsSaidSo) {
    KeepRecords();
    const QfcResult result = Qfc({"effects", "remove", m_glow});
    EXPECT_EQ(result.exit, 1);
    EXPECT_THAT(result.err, HasSubstr("cannot remove the records"));
    ExpectWhole();
}

TEST_F(EffectsRemoval, OfAFolderThatStaysIsSaidSo_AndNotThatRecordsDo) {
    RawDb(Database()).Exec("create trigger keep before delete on FOLDER_TABLE begin select raise(abort, 'kept'); end");
    const QfcResult result = Qfc({"effects", "remove", m_glow});
    EXPECT_EQ(result.exit, 1);
    EXPECT_EQ(result.err, "qfc: cannot remove Light\n");
    EXPECT_THAT(result.out, HasSubstr("removed Light\\Glow"));
    EXPECT_EQ(Cell("select count(*) from FLT_TABLE"), "0");
    EXPECT_EQ(Links(), "0");
}

// As a removal leaves it that a fault ended in the middle.
TEST_F(EffectsRemoval, AnItemThatStaysWithoutAFolderIsToldWithWhoListsIt) {
    LoseFolderOf("Glow");
    const QfcResult result = Qfc({"--json", "effects", "remove", m_glow});
    EXPECT_EQ(result.exit, 1);
    const Json report = Json::parse(result.out);
    ASSERT_EQ(report["itemsLeft"].size(), 1U) << result.out;
    const std::string item = report["itemsLeft"][0];
    EXPECT_THAT(item, testing::StartsWith("Light\\Glow "));
    EXPECT_EQ(result.err, "qfc: the item " + item + " is left without a folder; check lists it\n");
    EXPECT_THAT(report["removed"], ElementsAre("Light\\Glow", "Light\\Soft glow"));
    EXPECT_EQ(Links(), "1");
    EXPECT_EQ(Qfc({"check"}).exit, 1);
}

TEST_F(EffectsRemoval, AFileWithAnItemThatStaysIsNotCountedAsCleared) {
    LoseFolderOf("Glow");
    const QfcResult result = Qfc({"effects", "clear", "--yes"});
    EXPECT_EQ(result.exit, 1);
    EXPECT_THAT(result.out, HasSubstr("\n1 file cleared\n"));
    EXPECT_THAT(result.out, HasSubstr("removed Wipes\\Wipe\n"));
}

TEST_F(EffectsRemoval, AVanishedEffectWhoseItemStaysWithoutAFolderIsToldWithWhoListsIt) {
    LoseFolderOf("Soft glow");
    Plugin("glow.so", "filter Glow\n");
    const Json report = Scan({}, 1);
    ASSERT_EQ(report["itemsLeft"].size(), 1U);
    EXPECT_THAT(report["itemsLeft"][0], testing::StartsWith("Light\\Soft glow "));
    EXPECT_THAT(report["removed"], ElementsAre("Light\\Soft glow"));
}

// Ctrl-C and its like.
class EffectsRemovalSignals : public EffectsRemoval, public testing::WithParamInterface<int> {
protected:
    QfcResult Interrupted(const Args& arguments) const { return QfcInterrupted(arguments, GetParam()); }
};

TEST_P(EffectsRemovalSignals, AFileGoesAsAWholeWithItsLinks) {
    const QfcResult result = Interrupted({"effects", "remove", m_glow});
    EXPECT_EQ(result.exit, 0) << result.err;
    EXPECT_THAT(result.out, HasSubstr("removed Light\\Soft glow"));
    EXPECT_EQ(Cell("select count(*) from ITEM_TABLE"), "1");
    EXPECT_EQ(Links(), "0");
    ExpectWhole();
}

TEST_P(EffectsRemovalSignals, AClearingIsFinished) {
    EXPECT_EQ(Interrupted({"effects", "clear", "--yes"}).exit, 0);
    EXPECT_EQ(Cell("select count(*) from ITEM_TABLE"), "0");
    EXPECT_EQ(Links(), "0");
    ExpectWhole();
}

INSTANTIATE_TEST_SUITE_P(Signals, EffectsRemovalSignals, testing::Values(SIGINT, SIGTERM, SIGHUP));

}  // namespace
