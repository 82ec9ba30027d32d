#include "service/operations/UpdateFilterOptionAsync.h"
#include "service/operations/UpdateTransitionAsync.h"
#include "tests/service/EntriesEffectsTest.h"
#include "tests/support/GateOperation.h"
#include "tests/support/ServicePeer.h"

#include <atomic>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <thread>
#include <utility>
#include <vector>

namespace {

using namespace qfc::test;
using qfc::ServicePeer;

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

// An item with all that an update can store; other numbers, other payloads.
void FillItem(CQItem& item, int nNumber) {
    GiveBlackBox(item, static_cast<unsigned>(100 * nNumber));
    GiveBitmapCache(item, 8 * nNumber, 9);
    GiveFilm(item, static_cast<unsigned>(nNumber), 500);
    item.GetCurThumbFrameNum() = static_cast<DWORD>(nNumber);
}

TEST_F(EntriesEffects, Updates_StoreEveryFieldAndPayloadOfTheItem) {
    for (const bool bTransition : {false, true}) {
        SCOPED_TRACE(bTransition ? "transition" : "filter");
        const GUID guid = bTransition ? AddTransition("Fade") : AddFilter("Glow");
        CQItem* const pItem = m_pClips->GetItemByGUID(guid);
        FillItem(*pItem, 1);
        ASSERT_EQ(pItem->UpdateItemDB(), 1);
        CQItem change("Changed");
        FillItem(change, 2);
        const int nUpdated =
            bTransition ? Manager::fnUpdateTransitionAsync(m_hMedia, &change, guid, MakeTransitionRecord("Fade.so"))
                        : Manager::fnUpdateFilterOptionAsync(m_hMedia, &change, guid,
                                                             MakeFilterFile("Glow.so", {GUID_NULL}), 0);
        EXPECT_EQ(nUpdated, 1);
        EXPECT_EQ(StoredItem(), "'Changed 2 1000 500: 0=472 1=200 2=1000'");
        Restart();
        CQItem* const pStored = m_pClips->GetItemByGUID(guid);
        ASSERT_NE(pStored, nullptr);
        EXPECT_TRUE(qfc::test::HoldsPattern(pStored->GetBlackBox(), 200));
        EXPECT_EQ(pStored->GetBitmapCacheSize().cx, 16);
        EXPECT_TRUE(qfc::test::HoldsPattern(pStored->GetFilmFrame(0), 1000));
        Manager::fnDeleteItem(qfc::ToHandle(m_pClips), {guid}, 0);
    }
}

TEST_F(EntriesEffects, UpdateFilterOption_ASingleEntryWithoutItemIsTheUpdatedOnes) {
    const GUID guid = AddFilter("Glow");
    CQItem change("Shine");
    const DS_Filter_File_Record file = MakeFilterFile("Glow.so", {kOther, GUID_NULL});
    EXPECT_EQ(Manager::fnUpdateFilterOptionAsync(m_hMedia, &change, guid, file, 0), 1);
    EXPECT_EQ(file.filters[1].guidItem, GUID_NULL);  // Its own copy was changed, not the caller's record.
    const auto files = FilterFiles();
    ASSERT_EQ(files.size(), 1u);
    std::set<std::string> items;
    for (const auto& filter : files[0].filters) items.insert(qfc::GuidToText(filter.guidItem));
    EXPECT_EQ(items, (std::set<std::string>{qfc::GuidToText(guid), qfc::GuidToText(kOther)}));
    EXPECT_EQ(CountRows("ITEM_TABLE where ITEM_NAME = 'Shine'"), 1);
}

TEST_F(EntriesEffects, UpdateTransition_ARecordThatNamesAnItemKeepsIt) {
    const GUID guid = AddTransition("Fade");
    CQItem change("Melt");
    EXPECT_EQ(Manager::fnUpdateTransitionAsync(m_hMedia, &change, guid, MakeTransitionRecord("melt.so", kOther)), 1);
    std::map<std::string, std::string> items;
    for (const auto& record : TransitionRecords()) {
        items[std::string(record.strFileName.View())] = qfc::GuidToText(record.guidItem);
    }
    EXPECT_EQ(items, (std::map<std::string, std::string>{{"Fade.so", qfc::GuidToText(guid)},
                                                         {"melt.so", qfc::GuidToText(kOther)}}));
    EXPECT_EQ(CountRows("ITEM_TABLE where ITEM_NAME = 'Melt'"), 1);  // The operation's item.
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
    std::optional<Gate> gate(std::in_place);
    for (int number = 0; number < 30; ++number) {
        CQItem* const pItem = NewItem(("f" + std::to_string(number)).c_str(), kFilterType);
        guids.push_back(pItem->GetUniqueID());
        ASSERT_EQ(
            Manager::fnAddItemAsync_Filter(MakeFilterFile("f.so", {guids.back()}), 0, m_hMedia, {"Clips"}, pItem, 0),
            1);
    }
    const std::size_t nAdds = ServicePeer::AsyncWaiting();
    std::vector<int> held;
    std::atomic<bool> bAnswered = false;
    std::thread waiting([&] {
        CQItem dummy("dummy");
        EXPECT_EQ(Manager::fnUpdateTransitionAsync(0, &dummy, GUID_NULL, {}), 0);
        bAnswered = true;
        for (const GUID& guid : guids) held.push_back(m_pClips->HasItem(guid, 0));
    });
    // The worker begins with none of it before all of it waits.
    while (ServicePeer::AsyncWaiting() + ServicePeer::CountSync() == nAdds && !bAnswered) std::this_thread::yield();
    EXPECT_EQ(ServicePeer::AsyncWaiting(), nAdds + 1);
    gate.reset();
    waiting.join();
    EXPECT_EQ(held, std::vector<int>(30, 1));
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

// The record is stored all the same, without an item that it belongs to: hosts look first.
TEST_F(EntriesEffects, Updates_OfAnItemThatTheGalleryDoesNotHave_StoreTheRecordAlone) {
    AddItem("clip");
    const std::string before =
        RawDb(DatabaseFile()).Cell("select group_concat(ITEM_NAME || quote(ITEM_ID)) from ITEM_TABLE");
    CQItem change("Shine");
    EXPECT_EQ(Manager::fnUpdateFilterOptionAsync(m_hMedia, &change, kOther, MakeFilterFile("x.so", {GUID_NULL}), 0), 1);
    EXPECT_EQ(Manager::fnUpdateTransitionAsync(m_hMedia, &change, kOther, MakeTransitionRecord("y.so")), 1);
    ASSERT_EQ(FilterFiles().size(), 1u);
    ASSERT_EQ(FilterFiles()[0].filters.size(), 1u);
    EXPECT_EQ(FilterFiles()[0].filters[0].guidItem, kOther);
    ASSERT_EQ(TransitionRecords().size(), 1u);
    EXPECT_EQ(TransitionRecords()[0].guidItem, kOther);
    EXPECT_EQ(RawDb(DatabaseFile()).Cell("select group_concat(ITEM_NAME || quote(ITEM_ID)) from ITEM_TABLE"), before);
    EXPECT_EQ(m_pClips->HasItem(kOther, 0), 0);
}

}  // namespace
