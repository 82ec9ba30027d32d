// A look at the library that fails after effects were changed: what went or came is told all the same, and what nobody
// saw is told as that.
#include "EffectsTest.h"
#include "WithFailingReads.h"

#include <gmock/gmock.h>

namespace {

using namespace qfc::test;
using testing::AnyOf;
using testing::ElementsAre;
using testing::HasSubstr;

using Texts = std::set<std::string>;

class EffectsReadFaults : public WithFailingReads<EffectsTest> {
protected:
    void SetUp() override {
        WithFailingReads<EffectsTest>::SetUp();
        m_glow = Plugin("glow.so", "filter Glow\n");
    }
    // Where effects stand, by their last folder and name, and the folders.
    Texts Places() const {
        return Ids(
            "select FOLDER_NAME || '\\' || ITEM_NAME from RELATION_TABLE join FOLDER_TABLE on "
            "FOLDER_TABLE.ID = RELATION_TABLE.PARENT_ID join ITEM_TABLE on ITEM_TABLE.ITEM_ID = "
            "RELATION_TABLE.ITEM_ID");
    }
    Texts Folders() const { return Ids("select FOLDER_NAME from FOLDER_TABLE where PARENT_ID <> -1"); }
    // Stored, but nowhere.
    Texts Nowhere() const {
        return Ids(
            "select ITEM_NAME from ITEM_TABLE where ITEM_ID not in (select ITEM_ID from RELATION_TABLE join "
            "FOLDER_TABLE on FOLDER_TABLE.ID = RELATION_TABLE.PARENT_ID)");
    }
    static Texts Without(Texts all, const Texts& some) {
        for (const std::string& one : some) all.erase(one);
        return all;
    }
    // Names in SQL are quoted.
    static std::string Plain(const std::string& quoted) { return quoted.substr(1, quoted.size() - 2); }
    static void ExpectNamed(const Texts& quoted, const QfcResult& result) {
        for (const std::string& name : quoted) EXPECT_THAT(result.out + result.err, HasSubstr(Plain(name)));
    }

    // Behind a removal: of what went nothing is missing in what is told, and nothing is told that is not so.
    void ExpectRemovalTold(const Texts& places, const Texts& folders, const QfcResult& result) const {
        const Texts left = Places();
        ExpectNamed(Without(places, left), result);
        ExpectNamed(Without(folders, Folders()), result);
        for (const std::string& place : left) {
            EXPECT_THAT(result.out, testing::Not(HasSubstr("removed " + Plain(place) + "\n")));
        }
        for (const std::string& item : Nowhere()) {
            EXPECT_THAT(result.err,
                        AnyOf(testing::ContainsRegex(Plain(item) + " .* is left without a folder; check lists it"),
                              testing::ContainsRegex("cannot tell whether .*" + Plain(item) + ".* is removed")));
        }
        EXPECT_THAT(result.err, testing::Not(HasSubstr("what cannot be looked at")));
    }

    std::string m_glow;
};

// --- Each read -----------------------------------------------------------------------------------------------------

TEST_F(EffectsReadFaults, RemovedEffectsOfAFileAreTold) {
    const std::string both = Plugin("wipe.so", "filter Blur\ntransition Wipe\n");
    Scan();
    Tag("Blur\\Blur");
    KeepLibrary();
    const Texts places = Places();
    const Texts folders = Folders();
    const auto look = [&](const QfcResult& result) {
        ExpectRemovalTold(places, folders, result);
        if (result.exit != 0) return;
        EXPECT_EQ(Places(), Texts{"'Light\\Glow'"});
        EXPECT_EQ(ItemIds(), RecordIds());
        EXPECT_EQ(Links(), "0");
    };
    WithEachFailingRead({"effects", "remove", both}, look, 7);
}

TEST_F(EffectsReadFaults, AClearingTellsWhatWent_AndCountsWhatWasSeenCleared) {
    Plugin("wipe.so", "transition Wipe\n");
    Scan();
    KeepLibrary();
    const Texts places = Places();
    const Texts folders = Folders();
    const auto look = [&](const QfcResult& result) {
        ExpectRemovalTold(places, folders, result);
        const bool isEmpty = Places().empty() && ItemIds().empty() && RecordIds().empty();
        if (!isEmpty) {
            EXPECT_THAT(result.out, testing::Not(HasSubstr("2 files cleared")));
        }
        if (result.exit == 0) {
            EXPECT_TRUE(isEmpty);
            EXPECT_THAT(result.out, HasSubstr("2 files cleared\n"));
        }
    };
    WithEachFailingRead({"effects", "clear", "--yes"}, look, 7);
}

TEST_F(EffectsReadFaults, AScanTellsWhatItAdded) {
    Scan();
    KeepLibrary();
    const std::string warm = Plugin("warm.so", "filter Warm\n");
    const auto look = [&](const QfcResult& result) {
        const Json report = Json::parse(result.out, nullptr, false);
        ASSERT_TRUE(report.is_object()) << result.out;
        const bool isThere = Places().contains("'Warm colours\\Warm'");
        const Names added = report.contains("added") ? Values(report["added"], "name") : Names{};
        EXPECT_TRUE(added.empty() || isThere);
        EXPECT_TRUE(result.exit == 1 || added == Names{"Warm"});
        if (isThere && added.empty()) {
            EXPECT_THAT(result.err, HasSubstr(warm));
        }
    };
    WithEachFailingRead({"--json", "effects", "scan", m_plugins.Path()}, look, 3);
}

// --- All reads after a change --------------------------------------------------------------------------------------

TEST_F(EffectsReadFaults, AClearingThatCannotBeLookedAtCountsNothing_AndTellsWhatWent) {
    Scan();
    RefuseReads("TRANSITION_TABLE", "not exists (select 1 from ITEM_TABLE)");
    const QfcResult result = Qfc({"effects", "clear", "--yes"});
    EXPECT_EQ(result.exit, 1);
    EXPECT_THAT(result.out, HasSubstr("removed Light\\Glow\n"));
    EXPECT_THAT(result.out, testing::Not(HasSubstr("cleared")));
    EXPECT_THAT(result.err, HasSubstr("qfc: cannot tell whether every effect is removed\n"));
}

TEST_F(EffectsReadFaults, TheCountOfWhatWasSeenClearedIsNoneInADocument) {
    Scan();
    RefuseReads("TRANSITION_TABLE", "not exists (select 1 from ITEM_TABLE)");
    const Json report = Document({"effects", "clear", "--yes"}, 1);
    EXPECT_EQ(report["files"], 0);
    EXPECT_THAT(report["removed"], ElementsAre("Light\\Glow"));
    EXPECT_THAT(report["prunedFolders"], ElementsAre("Light"));
    EXPECT_THAT(report["unseen"], ElementsAre("every effect"));
}

TEST_F(EffectsReadFaults, BothGalleriesAreOpenedBeforeAnythingGoes) {
    const std::string both = Plugin("wipe.so", "filter Blur\ntransition Wipe\n");
    Scan();
    RefuseReads("GALLERY_TABLE", "not exists (select 1 from ITEM_TABLE where ITEM_NAME = 'Blur')");
    const Json report = Document({"effects", "remove", both}, 1);
    EXPECT_THAT(report["removed"], ElementsAre("Blur\\Blur", "Wipes\\Wipe"));
    EXPECT_THAT(report["unseen"], ElementsAre("every record of " + both));
}

TEST_F(EffectsReadFaults, WhatAScanAddedButCouldNotLookAtIsToldAsThat) {
    Scan();
    const std::string warm = Plugin("warm.so", "filter Warm\n");
    RefuseReads("TRANSITION_TABLE", "exists (select 1 from ITEM_TABLE where ITEM_NAME = 'Warm')");
    const QfcResult result = Qfc({"--json", "effects", "scan", m_plugins.Path()});
    EXPECT_EQ(result.exit, 1);
    EXPECT_EQ(result.err, "qfc: cannot tell whether Colour\\Warm colours\\Warm of " + warm + " is added\n");
    const Json report = Json::parse(result.out);
    EXPECT_EQ(report["added"], Json::array());
    EXPECT_EQ(Values(report["unseen"], "file"), Names{warm});
    EXPECT_EQ(report["unchanged"], Json{m_glow});
}

TEST_F(EffectsReadFaults, WhatAScanRemovedIsToldWhenNothingCanBeLookedAtAnyMore) {
    Plugin("glow.so", "filter Glow\nfilter Soft glow\n");
    Scan();
    Plugin("glow.so", "filter Glow\n");
    RefuseReads("TRANSITION_TABLE", "not exists (select 1 from ITEM_TABLE where ITEM_NAME = 'Soft glow')");
    const Json report = Document({"effects", "scan", m_plugins.Path()}, 1);
    EXPECT_THAT(report["removed"], ElementsAre("Light\\Soft glow"));
    EXPECT_EQ(Values(report["unseen"], "name"), Names{"Glow"});
}

TEST_F(EffectsReadFaults, FilesThatWaitForAnotherAreLeftAloneWhenTheLibraryCannotBeLookedAtBetween) {
    Scan();
    m_plugins.MakeFolder("a");
    Junk("a/warm.so");
    const std::string waiting = Plugin("b/warm.so", "filter Warm\n");
    const std::string blur = Plugin("blur.so", "filter Blur\n");
    RefuseReads("TRANSITION_TABLE", "exists (select 1 from FLT_FILE_TABLE where FILTER_COUNT = 0)");
    const Json report = Document({"effects", "scan", m_plugins.Path()}, 1);
    EXPECT_EQ(Values(report["unknown"], "file"), Names{waiting});
    EXPECT_EQ(Values(report["unseen"], "file"), Names{blur});
    EXPECT_EQ(report["failed"].size(), 1U);
}

}  // namespace
