#include "folders/HeldGuids.h"
#include "items/Handles.h"
#include "service/operations/AddItem_Filter.h"
#include "service/operations/AddItem_Transition.h"
#include "service/operations/DeleteFilter.h"
#include "service/operations/DeleteTransition.h"
#include "service/operations/UpdateFilterOptionAsync.h"
#include "service/operations/UpdateTransitionAsync.h"
#include "tests/support/EffectFixture.h"
#include "tests/support/GateOperation.h"
#include "tests/support/RawDb.h"
#include "tests/support/ServicePeer.h"

#include <algorithm>
#include <atomic>
#include <memory>
#include <optional>
#include <thread>

namespace {

using namespace qfc::test;
using Manager = QFCLibraryManager;
using qfc::ServicePeer;
using qfc::ToHandle;

const GUID kOther{9, 9, 9, {}};

class EntriesEffects : public EffectFixture {
protected:
    void SetUp() override {
        EffectFixture::SetUp();
        m_pMore = MakeFolder("", "More");
        Listen("count", [this](QFCLibCallbackParam* pParam) {
            if (pParam->hGallery == m_hMedia) m_seen.push_back(*pParam);
            return 1;
        });
    }
    DBTools* Tools() const { return m_pClips->GetDBTools(); }
    static void RefuseWrites(const std::string& table) { qfc::test::RefuseWrites(DatabaseFile(), table); }
    int AddFilterOf(const DS_Filter_File_Record& file, CQItem* pItem, const std::vector<CString>& paths = {"Clips"}) {
        const int nQueued = Manager::fnAddItemAsync_Filter(file, 5, m_hMedia, paths, pItem, 0);
        Settle();
        return nQueued;
    }
    int AddTransitionOf(const DS_Transition_Record& transition, CQItem* pItem,
                        const std::vector<CString>& paths = {"Clips"}) {
        const int nQueued = Manager::fnAddItemAsync_Transition(transition, m_hMedia, paths, pItem, 0);
        Settle();
        return nQueued;
    }

    CQFolder* m_pMore = nullptr;
    std::vector<QFCLibCallbackParam> m_seen;  // Written by the worker; read when it is settled.
};

// --- Adding filters -----------------------------------------------------------------------------------------------

TEST_F(EntriesEffects, AddFilter_StoresItemAndRecordAndTellsTheCallback) {
    CQItem* const pItem = NewItem("Glow", kFilterType);
    const GUID guid = pItem->GetUniqueID();
    EXPECT_EQ(AddFilterOf(MakeFilterFile("glow.so", {guid}), pItem, {"More", "Clips"}), 1);
    ASSERT_EQ(m_seen.size(), 1u);
    EXPECT_EQ(m_seen[0].guidItem, guid);
    EXPECT_EQ(m_seen[0].nFolderId, m_pMore->GetDBId());
    Restart();
    ASSERT_EQ(FilterFiles().size(), 1u);
    EXPECT_EQ(FilterFiles()[0].strFileName, "glow.so");
    ASSERT_EQ(FilterFiles()[0].filters.size(), 1u);
    EXPECT_EQ(FilterFiles()[0].filters[0].guidItem, guid);
    ASSERT_NE(m_pClips->GetItemByGUID(guid), nullptr);
    EXPECT_EQ(m_pClips->GetItemByGUID(guid)->GetItemType(), kFilterType);
}

TEST_F(EntriesEffects, AddFilter_ReturnsBeforeItIsDoneAndKeepsACopyOfTheRecord) {
    CQItem* const pItem = NewItem("Glow", kFilterType);
    {
        Gate gate;
        DS_Filter_File_Record file = MakeFilterFile("glow.so", {pItem->GetUniqueID()});
        EXPECT_EQ(Manager::fnAddItemAsync_Filter(file, 0, m_hMedia, {"Clips"}, pItem, 0), 1);
        file = MakeFilterFile("changed.so", {});
        EXPECT_EQ(CountRows("FLT_TABLE"), 0);
    }
    Settle();
    EXPECT_EQ(FilterFiles().at(0).strFileName, "glow.so");
}

TEST_F(EntriesEffects, AddFilter_ASingleEntryWithoutItemIsTheAddedOnes) {
    CQItem* const pItem = NewItem("Glow", kFilterType);
    const GUID guid = pItem->GetUniqueID();
    const DS_Filter_File_Record file = MakeFilterFile("glow.so", {kOther, GUID_NULL});
    EXPECT_EQ(AddFilterOf(file, pItem), 1);
    EXPECT_EQ(file.filters[1].guidItem, GUID_NULL);  // Its own copy was changed, not the caller's record.
    ASSERT_EQ(FilterFiles().at(0).filters.size(), 2u);
    EXPECT_EQ(FilterFiles()[0].filters[0].guidItem, kOther);
    EXPECT_EQ(FilterFiles()[0].filters[1].guidItem, guid);
}

TEST_F(EntriesEffects, AddFilter_TwoEntriesWithoutItemFailAndNothingIsAdded) {
    const std::unique_ptr<CQItem> item(NewItem("Glow", kFilterType));
    EXPECT_EQ(AddFilterOf(MakeFilterFile("glow.so", {GUID_NULL, GUID_NULL}), item.get()), 1);
    EXPECT_TRUE(m_seen.empty());
    EXPECT_EQ(CountRows("ITEM_TABLE"), 0);
    EXPECT_EQ(CountRows("FLT_FILE_TABLE"), 0);
    EXPECT_EQ(m_pClips->HasItem(item->GetUniqueID(), 0), 0);
}

TEST_F(EntriesEffects, AddFilter_WhoseRecordIsRefused_KeepsTheItemAndRaisesNoCallback) {
    RefuseWrites("FLT_TABLE");
    CQItem* const pItem = NewItem("Glow", kFilterType);
    EXPECT_EQ(AddFilterOf(MakeFilterFile("glow.so", {pItem->GetUniqueID()}), pItem), 1);
    EXPECT_TRUE(m_seen.empty());
    EXPECT_EQ(m_pClips->HasItem(pItem->GetUniqueID(), 0), 1);
    EXPECT_EQ(CountRows("ITEM_TABLE"), 1);
    EXPECT_EQ(CountRows("FLT_FILE_TABLE"), 0);
}

TEST_F(EntriesEffects, AddFilter_ToNoExistingFolder_StillStoresTheRecord) {
    const std::unique_ptr<CQItem> item(NewItem("Glow", kFilterType));
    EXPECT_EQ(AddFilterOf(MakeFilterFile("glow.so", {item->GetUniqueID()}), item.get(), {"Nowhere"}), 1);
    ASSERT_EQ(m_seen.size(), 1u);
    EXPECT_EQ(m_seen[0].nFolderId, -1);
    EXPECT_EQ(CountRows("FLT_TABLE"), 1);
    EXPECT_EQ(CountRows("ITEM_TABLE"), 0);
}

TEST_F(EntriesEffects, AddFilter_SeveralFiltersOfAFile_AreOneRecordAndSeveralItems) {
    CQItem* const items[] = {NewItem("Red", kFilterType), NewItem("Blue", kFilterType)};
    for (CQItem* const pItem : items) {
        DS_Filter_File_Record file = MakeFilterFile("tint.so", {pItem->GetUniqueID()});
        file.nFilterCount = 2;
        EXPECT_EQ(AddFilterOf(file, pItem), 1);
    }
    ASSERT_EQ(FilterFiles().size(), 1u);
    EXPECT_EQ(FilterFiles()[0].nFilterCount, 2);
    EXPECT_EQ(FilterFiles()[0].filters.size(), 2u);
    EXPECT_EQ(CountRows("ITEM_TABLE"), 2);
}

TEST_F(EntriesEffects, AddOperations_WithoutDatabaseGalleryPathsOrItem_Fail) {
    const std::unique_ptr<CQItem> item(NewItem("Glow", kFilterType));
    const GUID guid = item->GetUniqueID();
    const auto file = MakeFilterFile("glow.so", {guid});
    const auto transition = MakeTransitionRecord("mix.so", guid);
    using Filter = LibraryOperation_AddItem_Filter;
    using Transition = LibraryOperation_AddItem_Transition;
    EXPECT_EQ(Filter(file, 0, m_hMedia, {"Clips"}, item.get(), nullptr).execute(), 0);
    EXPECT_EQ(Filter(file, 0, 0, {"Clips"}, item.get(), Tools()).execute(), 0);
    EXPECT_EQ(Filter(file, 0, m_hMedia, {}, item.get(), Tools()).execute(), 0);
    EXPECT_EQ(Filter(file, 0, m_hMedia, {"Clips"}, nullptr, Tools()).execute(), 0);
    EXPECT_EQ(Transition(transition, m_hMedia, {"Clips"}, item.get(), nullptr).execute(), 0);
    EXPECT_EQ(Transition(transition, 0, {"Clips"}, item.get(), Tools()).execute(), 0);
    EXPECT_EQ(Transition(transition, m_hMedia, {}, item.get(), Tools()).execute(), 0);
    EXPECT_EQ(Transition(transition, m_hMedia, {"Clips"}, nullptr, Tools()).execute(), 0);
    for (const char* table : {"ITEM_TABLE", "FLT_FILE_TABLE", "FLT_TABLE", "TRANSITION_TABLE"}) {
        EXPECT_EQ(CountRows(table), 0);
    }
}

TEST_F(EntriesEffects, TheOptionValueIsCarried) {
    const LibraryOperation_AddItem_Filter add({}, 0xFFFFFFFF, m_hMedia, {"Clips"}, nullptr, nullptr);
    const LibraryOperation_UpdateFilterOptionAsync update(m_hMedia, {}, 7, nullptr, nullptr, GUID_NULL);
    EXPECT_EQ(add.OptionValue(), 0xFFFFFFFFu);
    EXPECT_EQ(update.OptionValue(), 7u);
}

TEST_F(EntriesEffects, AnAddOfLowPriority_ComesBehindFourOthers) {
    std::string order;
    Listen("order", [&](QFCLibCallbackParam* pParam) {
        const CQItem* const pItem = qfc::AsGallery(m_hMedia)->GetItemByGUID(pParam->guidItem);
        if (pItem != nullptr) order += std::string(pItem->GetItemName()) + " ";
        return 1;
    });
    {
        Gate gate;
        Manager::fnAddItemAsync_Filter({}, 0, m_hMedia, {"Clips"}, NewItem("late"), 1);
        Manager::fnAddItemAsync_Transition(MakeTransitionRecord("x"), m_hMedia, {"Clips"}, NewItem("later"), 1);
        for (const char* name : {"a", "b"}) {
            Manager::fnAddItemAsync_Filter({}, 0, m_hMedia, {"Clips"}, NewItem(name), 0);
        }
        for (const char* name : {"c", "d", "e"}) {
            Manager::fnAddItemAsync_Transition(MakeTransitionRecord("x"), m_hMedia, {"Clips"}, NewItem(name), 0);
        }
    }
    Settle();
    EXPECT_EQ(order, "a b c d late e later ");
}

// --- Adding transitions -------------------------------------------------------------------------------------------

TEST_F(EntriesEffects, AddTransition_StoresItemAndRecordAndTellsTheCallback) {
    CQItem* const pItem = NewItem("Fade", kTransitionType);
    const GUID guid = pItem->GetUniqueID();
    EXPECT_EQ(AddTransitionOf(MakeTransitionRecord("fade.so"), pItem), 1);
    ASSERT_EQ(m_seen.size(), 1u);
    EXPECT_EQ(m_seen[0].guidItem, guid);
    EXPECT_EQ(m_seen[0].nFolderId, m_pClips->GetDBId());
    Restart();
    ASSERT_EQ(TransitionRecords().size(), 1u);
    EXPECT_EQ(TransitionRecords()[0].strFileName, "fade.so");
    EXPECT_EQ(TransitionRecords()[0].descriptor, std::vector<BYTE>(60, 7));
    EXPECT_EQ(TransitionRecords()[0].guidItem, guid);  // The record named none.
    EXPECT_EQ(m_pClips->HasItem(guid, 0), 1);
}

TEST_F(EntriesEffects, AddTransition_ARecordThatNamesAnItemKeepsIt) {
    CQItem* const pItem = NewItem("Fade", kTransitionType);
    EXPECT_EQ(AddTransitionOf(MakeTransitionRecord("fade.so", kOther), pItem), 1);
    EXPECT_EQ(TransitionRecords().at(0).guidItem, kOther);
}

TEST_F(EntriesEffects, AddTransition_SortsEveryNamedFolderByTheBytesOfTheNames) {
    for (const char* name : {"wipe", "Fade", "\xC3\x84rger", "_", "fade"}) {
        CQItem* const pItem = NewItem(name, kTransitionType);
        EXPECT_EQ(AddTransitionOf(MakeTransitionRecord(name), pItem, {"Clips", "Nowhere", "More"}), 1);
    }
    EXPECT_EQ(NamesIn(*m_pClips), "Fade _ fade wipe \xC3\x84rger ");
    EXPECT_EQ(NamesIn(*m_pMore), "Fade _ fade wipe \xC3\x84rger ");
    Restart();
    EXPECT_EQ(NamesIn(*m_pClips), "wipe Fade \xC3\x84rger _ fade ");  // That order is not stored.
}

TEST_F(EntriesEffects, AddTransition_SortsAFolderThatIsInAnotherOrderWhole) {
    for (const char* name : {"c", "a", "d", "b"}) AddItem(name);
    AddTransition("aa");
    EXPECT_EQ(NamesIn(*m_pClips), "a aa b c d ");
}

// What the folder knows of its items outlives the sorting: no add looks at all items before it for its GUID.
TEST_F(EntriesEffects, AddTransition_ManyToOneFolder_DoNotCompareEachWithAllBefore) {
    constexpr int kMany = 600;
    const auto add = [&](int number) {
        CQItem* const pItem = NewItem(("t" + std::to_string(number * 7919 % 997)).c_str(), kTransitionType);
        ASSERT_EQ(Manager::fnAddItemAsync_Transition(MakeTransitionRecord("many.so"), m_hMedia, {"Clips"}, pItem, 0),
                  1);
    };
    for (int number = 0; number < 300; ++number) add(number);
    Settle();
    const std::uint64_t before = qfc::HeldGuids::VisitsSoFar();
    for (int number = 300; number < kMany; ++number) add(number);
    Settle();
    ASSERT_EQ(m_pClips->GetItemsCount(), kMany);
    EXPECT_LT(qfc::HeldGuids::VisitsSoFar() - before, 300u * 100u);
}

TEST_F(EntriesEffects, AddFilter_LeavesTheOrderOfTheItems) {
    for (const char* name : {"c", "a", "b"}) AddFilter(name);
    EXPECT_EQ(NamesIn(*m_pClips), "c a b ");
}

TEST_F(EntriesEffects, AddTransition_WhoseRecordIsRefused_KeepsItemAndOrderAndRaisesNoCallback) {
    AddItem("z");
    RefuseWrites("TRANSITION_TABLE");
    EXPECT_EQ(AddTransitionOf(MakeTransitionRecord("a.so"), NewItem("a", kTransitionType)), 1);
    EXPECT_TRUE(m_seen.empty());
    EXPECT_EQ(NamesIn(*m_pClips), "a z ");
    EXPECT_EQ(CountRows("TRANSITION_TABLE"), 0);
}

// A folder that keeps its items elsewhere, and has none.
class FolderWithoutArray : public CQFolder {
public:
    using CQFolder::CQFolder;
    ItemArray* GetItemArray() override { return nullptr; }
};

TEST_F(EntriesEffects, AddTransition_ToAFolderThatYieldsNoArray_FailsAndStoresNoRecord) {
    CQGallery gallery;
    gallery.AddFolder(new FolderWithoutArray("Bare", 0, 0, 0), 0, 1);
    const std::unique_ptr<CQItem> item(NewItem("a", kTransitionType));
    LibraryOperation_AddItem_Transition operation(MakeTransitionRecord("a.so"), ToHandle(&gallery), {"Bare"},
                                                  item.get(), Tools());
    EXPECT_EQ(operation.execute(), 0);
    EXPECT_EQ(CountRows("TRANSITION_TABLE"), 0);
}

// --- Updating -----------------------------------------------------------------------------------------------------

TEST_F(EntriesEffects, UpdateFilterOption_WaitsStoresItemAndRecordAndRaisesACallback) {
    const GUID guid = AddFilter("Glow");
    m_seen.clear();
    CQItem change("Shine");
    DS_Filter_File_Record file = MakeFilterFile("Glow.so", {GUID_NULL});
    file.filters[0].descriptor.assign(8, 9);
    EXPECT_EQ(Manager::fnUpdateFilterOptionAsync(m_hMedia, &change, guid, file, 3), 1);
    EXPECT_EQ(CountRows("ITEM_TABLE where ITEM_NAME = 'Shine'"), 1);
    EXPECT_EQ(FilterFiles().at(0).filters.at(0).descriptor, std::vector<BYTE>(8, 9));
    EXPECT_EQ(FilterFiles()[0].filters[0].guidItem, guid);
    Settle();
    ASSERT_EQ(m_seen.size(), 1u);
    EXPECT_EQ(m_seen[0].guidItem, GUID_NULL);  // The base fill.
    EXPECT_EQ(m_seen[0].nFolderId, -1);
}

TEST_F(EntriesEffects, UpdateTransition_WaitsStoresItemAndRecordAndRaisesACallback) {
    const GUID guid = AddTransition("Fade");
    m_seen.clear();
    CQItem change("Melt");
    EXPECT_EQ(Manager::fnUpdateTransitionAsync(m_hMedia, &change, guid, MakeTransitionRecord("melt.so")), 1);
    EXPECT_EQ(CountRows("ITEM_TABLE where ITEM_NAME = 'Melt'"), 1);
    ASSERT_EQ(TransitionRecords().size(), 1u);
    EXPECT_EQ(TransitionRecords()[0].strFileName, "melt.so");
    EXPECT_EQ(TransitionRecords()[0].guidItem, guid);
    Settle();
    EXPECT_EQ(m_seen.size(), 1u);
}

TEST_F(EntriesEffects, UpdatesOfANullItem_FailAtOnceAndQueueNothing) {
    Gate gate;  // What was queued could not end.
    EXPECT_EQ(Manager::fnUpdateFilterOptionAsync(m_hMedia, nullptr, kOther, {}, 0), 0);
    EXPECT_EQ(Manager::fnUpdateTransitionAsync(m_hMedia, nullptr, kOther, {}), 0);
    EXPECT_EQ(ServicePeer::Take(), nullptr);
}

TEST_F(EntriesEffects, UpdateFilterOption_TwoEntriesWithoutItemFailAndNothingChanges) {
    const GUID guid = AddFilter("Glow");
    CQItem change("Shine");
    const auto file = MakeFilterFile("x.so", {GUID_NULL, GUID_NULL});
    EXPECT_EQ(Manager::fnUpdateFilterOptionAsync(m_hMedia, &change, guid, file, 0), 0);
    EXPECT_EQ(CountRows("ITEM_TABLE where ITEM_NAME = 'Glow'"), 1);
    EXPECT_EQ(CountRows("FLT_FILE_TABLE"), 1);
}

TEST_F(EntriesEffects, Updates_WhoseItemIsRefused_WriteNoRecord) {
    const GUID filter = AddFilter("Glow");
    const GUID transition = AddTransition("Fade");
    RefuseWrites("ITEM_TABLE");
    CQItem change("Shine");
    EXPECT_EQ(Manager::fnUpdateFilterOptionAsync(m_hMedia, &change, filter, MakeFilterFile("x.so", {}), 0), 0);
    EXPECT_EQ(Manager::fnUpdateTransitionAsync(m_hMedia, &change, transition, MakeTransitionRecord("x.so")), 0);
    EXPECT_EQ(CountRows("FLT_FILE_TABLE where FILE_NAME = 'x.so'"), 0);
    EXPECT_EQ(CountRows("TRANSITION_TABLE where FILE_NAME = 'x.so'"), 0);
}

TEST_F(EntriesEffects, Updates_WhoseRecordIsRefused_FailAndKeepTheItemsUpdate) {
    const GUID filter = AddFilter("Glow");
    const GUID transition = AddTransition("Fade");
    RefuseWrites("FLT_FILE_TABLE");
    RefuseWrites("TRANSITION_TABLE");
    CQItem shine("Shine");
    CQItem melt("Melt");
    EXPECT_EQ(Manager::fnUpdateFilterOptionAsync(m_hMedia, &shine, filter, MakeFilterFile("x.so", {}), 0), 0);
    EXPECT_EQ(Manager::fnUpdateTransitionAsync(m_hMedia, &melt, transition, MakeTransitionRecord("x.so")), 0);
    EXPECT_EQ(CountRows("ITEM_TABLE where ITEM_NAME in ('Shine', 'Melt')"), 2);
}

TEST_F(EntriesEffects, UpdateOperations_WithoutDatabaseItemOrGallery_Fail) {
    CQItem change("Shine");
    using Filter = LibraryOperation_UpdateFilterOptionAsync;
    using Transition = LibraryOperation_UpdateTransitionAsync;
    EXPECT_EQ(Filter(m_hMedia, {}, 0, nullptr, &change, kOther).execute(), 0);
    EXPECT_EQ(Filter(m_hMedia, {}, 0, Tools(), nullptr, kOther).execute(), 0);
    EXPECT_EQ(Filter(0, {}, 0, Tools(), &change, kOther).execute(), 0);
    EXPECT_EQ(Transition(m_hMedia, {}, nullptr, &change, kOther).execute(), 0);
    EXPECT_EQ(Transition(m_hMedia, {}, Tools(), nullptr, kOther).execute(), 0);
    EXPECT_EQ(Transition(0, {}, Tools(), &change, kOther).execute(), 0);
    EXPECT_EQ(CountRows("TRANSITION_TABLE"), 0);
}

// With gallery 0 and an item of its own it changes nothing and answers 0 behind all ordinary asynchronous work.
TEST_F(EntriesEffects, UpdateTransition_WithoutGallery_IsABarrier) {
    std::vector<GUID> guids;
    {
        Gate gate;
        for (int number = 0; number < 30; ++number) {
            CQItem* const pItem = NewItem(("f" + std::to_string(number)).c_str(), kFilterType);
            guids.push_back(pItem->GetUniqueID());
            ASSERT_EQ(Manager::fnAddItemAsync_Filter(MakeFilterFile("f.so", {guids.back()}), 0, m_hMedia, {"Clips"},
                                                     pItem, 0),
                      1);
        }
    }
    CQItem dummy("dummy");
    EXPECT_EQ(Manager::fnUpdateTransitionAsync(0, &dummy, GUID_NULL, {}), 0);
    for (const GUID& guid : guids) EXPECT_EQ(m_pClips->HasItem(guid, 0), 1);
    EXPECT_EQ(CountRows("TRANSITION_TABLE"), 0);
    EXPECT_EQ(CountRows("ITEM_TABLE"), 30);
}

TEST_F(EntriesEffects, CallsThatWait_MadeOnTheWorker_AnswerZeroInsteadOfWaitingForThemselves) {
    AddFilter("Glow");
    CQItem change("Shine");
    std::vector<int> answers;
    Listen("wait", [&](QFCLibCallbackParam* pParam) {
        if (pParam->hGallery != m_hMedia) return 1;
        answers = {Manager::fnUpdateFilterOptionAsync(m_hMedia, &change, kOther, {}, 0),
                   Manager::fnUpdateTransitionAsync(m_hMedia, &change, kOther, {}),
                   Manager::fnDeleteFilter({}, m_hMedia), Manager::fnDeleteTransition({}, m_hMedia)};
        return 1;
    });
    AddFilter("Other");
    EXPECT_EQ(answers, (std::vector<int>{0, 0, 0, 0}));
    EXPECT_EQ(CountRows("FLT_FILE_TABLE"), 2);
}

// --- Stops --------------------------------------------------------------------------------------------------------

TEST_F(EntriesEffects, BothCallsThatWait_EndWithZeroWhenAStopDropsThem) {
    CQItem change("Shine");
    qfc::test::CloseAllGalleries();
    Gate gate;
    int nFilter = -1;
    int nTransition = -1;
    std::thread first([&] { nFilter = Manager::fnUpdateFilterOptionAsync(0, &change, kOther, {}, 0); });
    std::thread second([&] { nTransition = Manager::fnUpdateTransitionAsync(0, &change, kOther, {}); });
    while (ServicePeer::AsyncWaiting() < 2) std::this_thread::yield();
    std::thread stopping([] { EXPECT_EQ(Manager::fnStopService(), 1); });
    while (ServicePeer::Running(ServicePeer::Manager()) != 0) std::this_thread::yield();
    gate.Open();
    first.join();
    second.join();
    stopping.join();
    EXPECT_EQ(nFilter, 0);
    EXPECT_EQ(nTransition, 0);
}

TEST_F(EntriesEffects, ADroppedOperation_IsMarkedAndItsEventStaysUnsignalled) {
    const auto pOperation = std::make_shared<LambdaOperation>([] { return 1; });
    pOperation->SetAsync();
    {
        Gate gate;
        ASSERT_EQ(ServicePeer::AddAsync(pOperation, 1), 1);
        ServicePeer::Clear();
    }
    EXPECT_FALSE(pOperation->AwaitEnd());
    EXPECT_EQ(WaitForSingleObject(pOperation->Event(), 0), WAIT_TIMEOUT);
}

TEST_F(EntriesEffects, OnceAStopHasBegun_WhatNeedsTheDatabaseIsRefused) {
    CloseAllGalleries();
    const std::unique_ptr<CQItem> item(NewItem("Glow", kFilterType));
    Gate gate;
    std::thread stopping([] { EXPECT_EQ(Manager::fnStopService(), 1); });
    while (ServicePeer::Running(ServicePeer::Manager()) != 0) std::this_thread::yield();
    EXPECT_EQ(Manager::fnAddItemAsync_Filter({}, 0, 0, {"Clips"}, item.get(), 0), 0);
    EXPECT_EQ(Manager::fnAddItemAsync_Transition({}, 0, {"Clips"}, item.get(), 0), 0);
    EXPECT_EQ(Manager::fnUpdateFilterOptionAsync(0, item.get(), kOther, {}, 0), 0);
    EXPECT_EQ(Manager::fnUpdateTransitionAsync(0, item.get(), kOther, {}), 0);
    EXPECT_EQ(Manager::fnDeleteFilter({}, 0), 0);
    EXPECT_EQ(Manager::fnDeleteTransition({}, 0), 0);
    gate.Open();
    stopping.join();
}

// Without a database at the time of the call it works on none, also when the service has one by the time it is run.
TEST_F(EntriesEffects, WhatIsQueuedWhileStopped_RunsWithoutDatabaseOnceStarted) {
    CloseAllGalleries();
    ASSERT_EQ(Manager::fnStopService(), 1);
    const std::unique_ptr<CQItem> item(NewItem("Glow", kFilterType));
    CQGallery gallery;
    EXPECT_EQ(Manager::fnAddItemAsync_Filter(MakeFilterFile("a.so", {}), 0, ToHandle(&gallery), {"x"}, item.get(), 0),
              1);
    int nUpdated = -1;
    std::thread host([&] {
        nUpdated = Manager::fnUpdateTransitionAsync(ToHandle(&gallery), item.get(), kOther, MakeTransitionRecord("b"));
    });
    while (ServicePeer::AsyncWaiting() < 2) std::this_thread::yield();
    ASSERT_EQ(Manager::fnStartService(), 1);
    host.join();
    EXPECT_EQ(nUpdated, 0);
    EXPECT_EQ(CountRows("FLT_FILE_TABLE"), 0);
    EXPECT_EQ(CountRows("TRANSITION_TABLE"), 0);
}

TEST_F(EntriesEffects, CallsThatWait_AgainstStopsAndStarts_AlwaysEnd) {
    CloseAllGalleries();
    CQItem change("Shine");
    std::atomic<bool> done = false;
    std::atomic<int> answered = 0;
    std::thread host([&] {
        while (!done) {
            EXPECT_EQ(Manager::fnUpdateTransitionAsync(0, &change, kOther, {}), 0);
            EXPECT_EQ(Manager::fnUpdateFilterOptionAsync(0, &change, kOther, {}, 0), 0);
            ++answered;
        }
    });
    for (int cycle = 0; cycle < 30; ++cycle) {
        const int nBefore = answered;
        while (answered == nBefore) std::this_thread::yield();
        ASSERT_EQ(Manager::fnStopService(), 1);
        ASSERT_EQ(Manager::fnStartService(), 1);
    }
    done = true;
    host.join();
}

// --- Deleting -----------------------------------------------------------------------------------------------------

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
