#include "service/operations/DeleteFilter.h"
#include "service/operations/DeleteTransition.h"
#include "tests/service/EntriesEffectsTest.h"

#include <string>
#include <vector>

namespace {

using namespace qfc::test;

TEST_F(EntriesEffects, DeleteFilter_TakesRecordItemAndEmptyFolders) {
    const GUID gone = AddFilter("Glow", "More");
    const GUID kept = AddFilter("Blur");
    EXPECT_EQ(Manager::fnDeleteFilter({MakeFilterFile("Glow.so", {gone})}, m_hMedia), 1);
    ASSERT_EQ(FilterFiles().size(), 1u);
    EXPECT_EQ(FilterFiles()[0].strFileName, "Blur.so");
    EXPECT_EQ(Folder("More"), nullptr);
    EXPECT_EQ(m_pClips->HasItem(kept, 0), 1);
    EXPECT_EQ(CountRows("ITEM_TABLE"), 1);
    EXPECT_EQ(CountRows("RELATION_TABLE"), 1);
    Restart();
    EXPECT_EQ(Folder("More"), nullptr);
    EXPECT_EQ(m_pClips->HasItem(kept, 0), 1);
}

TEST_F(EntriesEffects, DeleteTransition_TakesRecordItemAndEmptyFolders) {
    const GUID gone = AddTransition("Fade", "More");
    const GUID kept = AddTransition("Wipe");
    EXPECT_EQ(Manager::fnDeleteTransition({MakeTransitionRecord("Fade.so", gone)}, m_hMedia), 1);
    ASSERT_EQ(TransitionRecords().size(), 1u);
    EXPECT_EQ(TransitionRecords()[0].guidItem, kept);
    EXPECT_EQ(Folder("More"), nullptr);
    EXPECT_EQ(CountRows("ITEM_TABLE"), 1);
    EXPECT_EQ(CountRows("RELATION_TABLE"), 1);
}

TEST_F(EntriesEffects, Deleting_TakesAnItemOutOfEveryFolderThatHoldsIt) {
    CQItem* const pFilter = NewItem("Glow", kFilterType);
    const GUID filter = pFilter->GetUniqueID();
    CQItem* const pTransition = NewItem("Fade", kTransitionType);
    const GUID transition = pTransition->GetUniqueID();
    AddItem("kept", {"Clips", "More"});
    AddFilterOf(MakeFilterFile("a.so", {filter}), pFilter, {"Clips", "More"});
    AddTransitionOf(MakeTransitionRecord("b.so"), pTransition, {"Clips", "More"});
    EXPECT_EQ(Manager::fnDeleteFilter({MakeFilterFile("a.so", {filter})}, m_hMedia), 1);
    EXPECT_EQ(Manager::fnDeleteTransition({MakeTransitionRecord("b.so", transition)}, m_hMedia), 1);
    EXPECT_EQ(NamesIn(*m_pClips), "kept ");
    EXPECT_EQ(NamesIn(*m_pMore), "kept ");
    EXPECT_EQ(CountRows("ITEM_TABLE"), 1);
}

TEST_F(EntriesEffects, Deleting_RecordsThatAreNotInTheLibrary_LeavesTheirItems) {
    const GUID filter = AddFilter("Glow");
    const GUID transition = AddTransition("Fade");
    DS_Filter_File_Record file = MakeFilterFile("Glow.so", {filter});
    DS_Transition_Record record = MakeTransitionRecord("Fade.so", transition);
    file.bInLibrary = record.bInLibrary = 0;
    EXPECT_EQ(Manager::fnDeleteFilter({file}, m_hMedia), 1);
    EXPECT_EQ(Manager::fnDeleteTransition({record}, m_hMedia), 1);
    EXPECT_TRUE(FilterFiles().empty());
    EXPECT_TRUE(TransitionRecords().empty());
    EXPECT_EQ(m_pClips->HasItem(filter, 0), 1);
    EXPECT_EQ(m_pClips->HasItem(transition, 0), 1);
    EXPECT_EQ(CountRows("ITEM_TABLE"), 2);
}

TEST_F(EntriesEffects, DeleteFilter_TakesEveryEntryOfTheRecordAndPassesOverUnknownOnes) {
    const GUID first = AddFilter("Red");
    const GUID second = AddFilter("Blue", "More");
    EXPECT_EQ(Manager::fnDeleteFilter({MakeFilterFile("both.so", {first, kOther, second})}, m_hMedia), 1);
    EXPECT_EQ(CountRows("ITEM_TABLE"), 0);
    EXPECT_EQ(CountRows("FLT_FILE_TABLE"), 2);  // Their files have other names.
}

TEST_F(EntriesEffects, Deleting_WhatTheStoreRefuses_ChangesNothing) {
    const GUID filter = AddFilter("Glow");
    const GUID transition = AddTransition("Fade");
    for (const std::string table : {"FLT_TABLE", "TRANSITION_TABLE"}) {
        RawDb(DatabaseFile())
            .Exec("create trigger REFUSE_" + table + " before delete on " + table +
                  " begin select raise(fail, 'refused'); end");
    }
    EXPECT_EQ(Manager::fnDeleteFilter({MakeFilterFile("Glow.so", {filter})}, m_hMedia), 0);
    EXPECT_EQ(Manager::fnDeleteTransition({MakeTransitionRecord("Fade.so", transition)}, m_hMedia), 0);
    EXPECT_EQ(FilterFiles().size(), 1u);
    EXPECT_EQ(m_pClips->HasItem(filter, 0), 1);
    EXPECT_EQ(m_pClips->HasItem(transition, 0), 1);
    EXPECT_NE(Folder("More"), nullptr);  // Nothing was pruned either.
}

// Kept: as with fnDeleteFolder.
TEST_F(EntriesEffects, Deleting_AnswersOneAlsoWhenAnEmptyFolderStaysStored) {
    const GUID filter = AddFilter("Glow", "More");
    const GUID transition = AddTransition("Fade", "Clips");
    RawDb(DatabaseFile())
        .Exec("create trigger keep before delete on FOLDER_TABLE begin select raise(abort, 'kept'); end");
    EXPECT_EQ(Manager::fnDeleteFilter({MakeFilterFile("Glow.so", {filter})}, m_hMedia), 1);
    EXPECT_EQ(Folder("More"), nullptr);
    EXPECT_EQ(Manager::fnDeleteTransition({MakeTransitionRecord("Fade.so", transition)}, m_hMedia), 1);
    EXPECT_EQ(Folder("Clips"), nullptr);
    EXPECT_TRUE(FilterFiles().empty());
    EXPECT_TRUE(TransitionRecords().empty());
    EXPECT_EQ(CountRows("ITEM_TABLE"), 0);
    Restart();
    EXPECT_NE(Folder("More"), nullptr);
    EXPECT_NE(Folder("Clips"), nullptr);
}

TEST_F(EntriesEffects, DeleteOperations_WithoutGalleryRecordsOrDatabase_Fail) {
    const std::vector<DS_Filter_File_Record> files{MakeFilterFile("a.so", {})};
    const std::vector<DS_Transition_Record> transitions;
    ASSERT_TRUE(SaveFilterRecord(files[0]));
    using Filter = LibraryOperation_DeleteFilter;
    using Transition = LibraryOperation_DeleteTransition;
    EXPECT_EQ(Filter(0, &files, Tools()).execute(), 0);
    EXPECT_EQ(Filter(m_hMedia, nullptr, Tools()).execute(), 0);
    EXPECT_EQ(Filter(m_hMedia, &files, nullptr).execute(), 0);
    EXPECT_EQ(Transition(0, &transitions, Tools()).execute(), 0);
    EXPECT_EQ(Transition(m_hMedia, nullptr, Tools()).execute(), 0);
    EXPECT_EQ(Transition(m_hMedia, &transitions, nullptr).execute(), 0);
    EXPECT_EQ(CountRows("FLT_FILE_TABLE"), 1);
    EXPECT_NE(Folder("More"), nullptr);
}

}  // namespace
