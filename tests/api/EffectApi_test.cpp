#include "tests/support/EffectFixture.h"
#include "tests/support/RawDb.h"

#include <filesystem>
#include <string>
#include <thread>
#include <vector>

namespace {

using namespace qfc::test;
using Manager = QFCLibraryManager;

const GUID kGuid{1, 2, 3, {}};

class EffectApi : public EffectFixture {};

TEST_F(EffectApi, GetFilterRecord_ReplacesWhatIsInTheList) {
    AddFilter("Glow");
    std::vector<DS_Filter_File_Record> files(3);
    EXPECT_TRUE(GetFilterRecord(files));
    ASSERT_EQ(files.size(), 1u);
    EXPECT_EQ(files[0].strFileName, "Glow.so");
}

TEST_F(EffectApi, GetTransitionRecord_ReplacesWhatIsInTheList) {
    AddTransition("Fade");
    std::vector<DS_Transition_Record> transitions(3);
    EXPECT_TRUE(GetTransitionRecord(transitions));
    ASSERT_EQ(transitions.size(), 1u);
    EXPECT_EQ(transitions[0].strFileName, "Fade.so");
}

TEST_F(EffectApi, AFailedRead_IsFalseAndLeavesWhatWasRead) {
    AddFilter("Glow");
    AddFilter("Blur");
    RawDb(DatabaseFile()).Exec("drop table FLT_TABLE; drop table TRANSITION_TABLE");
    std::vector<DS_Filter_File_Record> files;
    std::vector<DS_Transition_Record> transitions(1);
    EXPECT_FALSE(GetFilterRecord(files));
    EXPECT_FALSE(GetTransitionRecord(transitions));
    EXPECT_EQ(files.size(), 2u);
    EXPECT_TRUE(transitions.empty());
}

TEST_F(EffectApi, SaveFilterRecord_WritesARecordWithoutItem) {
    EXPECT_TRUE(SaveFilterRecord(MakeFilterFile("broken.so", {})));
    EXPECT_TRUE(SaveFilterRecord(MakeFilterFile("other.so", {kGuid})));
    EXPECT_EQ(CountRows("FLT_FILE_TABLE"), 2);
    EXPECT_EQ(CountRows("FLT_TABLE"), 1);
    EXPECT_EQ(CountRows("ITEM_TABLE"), 0);
}

TEST_F(EffectApi, SaveFilterRecord_RefusesEntriesThatNameNoItem) {
    EXPECT_FALSE(SaveFilterRecord(MakeFilterFile("a.so", {kGuid, GUID_NULL})));
    EXPECT_EQ(CountRows("FLT_FILE_TABLE"), 0);
    EXPECT_EQ(CountRows("FLT_TABLE"), 0);
}

TEST_F(EffectApi, DeleteFilter_TakesTheRecordsAndLeavesItemsAndFolders) {
    const GUID guid = AddFilter("Glow");
    AddFilter("Blur");
    std::vector<DS_Filter_File_Record> files{MakeFilterFile("Glow.so", {})};
    EXPECT_TRUE(DeleteFilter(files));
    EXPECT_EQ(files.size(), 1u);
    ASSERT_EQ(FilterFiles().size(), 1u);
    EXPECT_EQ(FilterFiles()[0].strFileName, "Blur.so");
    EXPECT_EQ(m_pClips->HasItem(guid, 0), 1);
    EXPECT_EQ(CountRows("ITEM_TABLE"), 2);
}

TEST_F(EffectApi, ClearTransitionAndFilter_LeavesPlacementsBehindAndOtherItemsAlone) {
    AddFilter("Glow");
    AddTransition("Fade");
    AddItem("clip");
    EXPECT_TRUE(ClearTransitionAndFilter());
    EXPECT_TRUE(FilterFiles().empty());
    EXPECT_TRUE(TransitionRecords().empty());
    EXPECT_EQ(CountRows("ITEM_TABLE"), 1);
    EXPECT_EQ(CountRows("RELATION_TABLE"), 3);
}

// The way to be rid of everything: the manager's deletions first, the clearing last.
TEST_F(EffectApi, DeletingAllRecordsBeforeClearing_LeavesNothing) {
    MakeFolder("", "More");
    const GUID filter = AddFilter("Glow");
    const GUID transition = AddTransition("Fade", "More");
    AddItem("clip");
    auto* const pItem = m_pClips->GetItemByGUID(filter);
    GiveBlackBox(*pItem, 100);
    ASSERT_EQ(pItem->UpdateItemDB(), 1);
    EXPECT_EQ(Manager::fnDeleteFilter(FilterFiles(), m_hMedia), 1);
    EXPECT_EQ(Manager::fnDeleteTransition(TransitionRecords(), m_hMedia), 1);
    EXPECT_TRUE(ClearTransitionAndFilter());
    Restart();
    EXPECT_EQ(CountRows("ITEM_TABLE"), 1);
    EXPECT_EQ(CountRows("CACHE_DATA_TABLE"), 0);
    EXPECT_EQ(CountRows("RELATION_TABLE where ITEM_ID not in (select ITEM_ID from ITEM_TABLE)"), 0);
    EXPECT_EQ(Folder("More"), nullptr);
    EXPECT_EQ(NamesIn(*m_pClips), "clip ");
    EXPECT_EQ(m_pClips->HasItem(transition, 0), 0);
}

TEST_F(EffectApi, WhileStopped_EverythingIsFalseAndLeavesListsAlone) {
    CloseAllGalleries();
    ASSERT_EQ(Manager::fnStopService(), 1);
    std::vector<DS_Filter_File_Record> files(2);
    std::vector<DS_Transition_Record> transitions(2);
    EXPECT_FALSE(GetFilterRecord(files));
    EXPECT_FALSE(GetTransitionRecord(transitions));
    EXPECT_FALSE(SaveFilterRecord(files[0]));
    EXPECT_FALSE(DeleteFilter(files));
    EXPECT_FALSE(ClearTransitionAndFilter());
    EXPECT_EQ(files.size(), 2u);
    EXPECT_EQ(transitions.size(), 2u);
}

// --- A database that refuses -----------------------------------------------------------------------------------------

class EffectApiRefused : public EffectApi, public testing::WithParamInterface<const char*> {
protected:
    void SetUp() override {
        EffectApi::SetUp();
        AddFilter("Glow");
        AddFilter("Blur");
        AddTransition("Fade");
        m_before = DumpOf(DatabaseFile());
    }
    void Refuse(const char* pszWhat) {
        RawDb(DatabaseFile())
            .Exec(std::string("create trigger REFUSE before ") + pszWhat + " on " + GetParam() +
                  " begin select raise(fail, 'refused'); end");
    }
    // Takes the refusal back.
    void ExpectUnchanged() {
        RawDb(DatabaseFile()).Exec("drop trigger REFUSE");
        EXPECT_EQ(DumpOf(DatabaseFile()), m_before);
    }

    std::string m_before;
};

std::string TableOf(const testing::TestParamInfo<const char*>& info) { return info.param; }

class EffectApiRefusedClearing : public EffectApiRefused {};

INSTANTIATE_TEST_SUITE_P(Tables, EffectApiRefusedClearing,
                         testing::Values("ITEM_TABLE", "TRANSITION_TABLE", "FLT_TABLE", "FLT_FILE_TABLE"), TableOf);

TEST_P(EffectApiRefusedClearing, ClearTransitionAndFilter_IsFalseAndKeepsEveryRow) {
    Refuse("delete");
    EXPECT_FALSE(ClearTransitionAndFilter());
    ExpectUnchanged();
    EXPECT_TRUE(ClearTransitionAndFilter());
}

class EffectApiRefusedRecord : public EffectApiRefused {};

INSTANTIATE_TEST_SUITE_P(Tables, EffectApiRefusedRecord, testing::Values("FLT_TABLE", "FLT_FILE_TABLE"), TableOf);

TEST_P(EffectApiRefusedRecord, DeleteFilter_IsFalseAndKeepsTheRowsOfEveryFile) {
    Refuse("delete");
    std::vector<DS_Filter_File_Record> one{MakeFilterFile("Glow.so", {})};
    std::vector<DS_Filter_File_Record> both{MakeFilterFile("Glow.so", {}), MakeFilterFile("Blur.so", {})};
    EXPECT_FALSE(DeleteFilter(one));
    EXPECT_FALSE(DeleteFilter(both));
    EXPECT_EQ(both.size(), 2u);
    ExpectUnchanged();
    EXPECT_TRUE(DeleteFilter(both));
}

TEST_P(EffectApiRefusedRecord, SaveFilterRecord_IsFalseAndStoresNoRowOfIt) {
    Refuse("insert");
    EXPECT_FALSE(SaveFilterRecord(MakeFilterFile("new.so", {kGuid})));
    EXPECT_FALSE(SaveFilterRecord(MakeFilterFile("Glow.so", {kGuid})));  // One that is there already.
    ExpectUnchanged();
    EXPECT_TRUE(SaveFilterRecord(MakeFilterFile("new.so", {kGuid})));
}

// --- Threads ---------------------------------------------------------------------------------------------------------

TEST_F(EffectApi, FromInsideACallback_TheyWork) {
    bool bRead = false;
    Listen("read", [&](QFCLibCallbackParam* pParam) {
        std::vector<DS_Filter_File_Record> files;
        if (pParam->hGallery == m_hMedia) bRead = GetFilterRecord(files) && files.size() == 1;
        return 1;
    });
    AddFilter("Glow");
    EXPECT_TRUE(bRead);
}

TEST_F(EffectApi, ReadsOnSeveralThreadsBesideTheWorker_SeeWholeRecords) {
    std::vector<std::thread> hosts;
    for (int host = 0; host < 3; ++host) {
        hosts.emplace_back([] {
            for (int round = 0; round < 30; ++round) {
                for (const auto& file : FilterFiles()) {
                    ASSERT_EQ(file.filters.size(), 2u);
                    EXPECT_EQ(file.filters[0].table.size(), 456u);
                }
            }
        });
    }
    for (unsigned number = 1; number <= 40; ++number) {
        CQItem* const pItem = NewItem("Tint", kFilterType);
        const auto file =
            MakeFilterFile(std::to_string(number).c_str(), {pItem->GetUniqueID(), GUID{number, 0, 0, {}}});
        ASSERT_EQ(Manager::fnAddItemAsync_Filter(file, 0, m_hMedia, {"Clips"}, pItem, 0), 1);
    }
    for (std::thread& host : hosts) host.join();
    Settle();
    EXPECT_EQ(FilterFiles().size(), 40u);
}

}  // namespace
