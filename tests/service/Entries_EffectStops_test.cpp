#include "tests/service/EntriesEffectsTest.h"
#include "tests/support/GateOperation.h"
#include "tests/support/ServicePeer.h"
#include "tests/support/StopsAndStarts.h"

#include <memory>
#include <string>
#include <thread>

namespace {

using namespace qfc::test;
using qfc::ServicePeer;
using qfc::ToHandle;

TEST_F(EntriesEffects, BothCallsThatWait_EndWithZeroWhenAStopDropsThem) {
    CQItem change("Shine");
    qfc::test::CloseAllGalleries();
    // It has no such item, so that the record alone is stored when the call is run.
    CQGallery gallery;
    const ULONGLONG hGallery = ToHandle(&gallery);
    const auto updateFilter = [&](const char* pszFile) {
        return Manager::fnUpdateFilterOptionAsync(hGallery, &change, kOther, MakeFilterFile(pszFile, {GUID_NULL}), 0);
    };
    const auto updateTransition = [&](const char* pszFile) {
        return Manager::fnUpdateTransitionAsync(hGallery, &change, kOther, MakeTransitionRecord(pszFile));
    };
    ASSERT_EQ(updateFilter("run.so"), 1);
    ASSERT_EQ(updateTransition("run.so"), 1);
    Gate gate;
    int nFilter = -1;
    int nTransition = -1;
    std::thread first([&] { nFilter = updateFilter("dropped.so"); });
    std::thread second([&] { nTransition = updateTransition("dropped.so"); });
    while (ServicePeer::AsyncWaiting() < 2) std::this_thread::yield();
    std::thread stopping([] { EXPECT_EQ(Manager::fnStopService(), 1); });
    while (ServicePeer::Running(ServicePeer::Manager()) != 0) std::this_thread::yield();
    gate.Open();
    first.join();
    second.join();
    stopping.join();
    EXPECT_EQ(nFilter, 0);
    EXPECT_EQ(nTransition, 0);
    for (const char* pszTable : {"FLT_FILE_TABLE", "FLT_TABLE", "TRANSITION_TABLE"}) {
        EXPECT_EQ(CountRows(std::string(pszTable) + " where FILE_NAME = 'run.so'"), 1) << pszTable;
        EXPECT_EQ(CountRows(std::string(pszTable) + " where FILE_NAME = 'dropped.so'"), 0) << pszTable;
    }
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
    qfc::test::CallAgainstStopsAndStarts([&] {
        EXPECT_EQ(Manager::fnUpdateTransitionAsync(0, &change, kOther, {}), 0);
        EXPECT_EQ(Manager::fnUpdateFilterOptionAsync(0, &change, kOther, {}, 0), 0);
    });
}

}  // namespace
