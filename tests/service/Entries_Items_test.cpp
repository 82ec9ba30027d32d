#include "items/Handles.h"
#include "platform/os/Sync.h"
#include "service/operations/AddItem.h"
#include "service/operations/DeleteItem.h"
#include "service/operations/UpdateItem.h"
#include "tests/support/GateOperation.h"
#include "tests/support/LibraryFixture.h"
#include "tests/support/RawDb.h"
#include "tests/support/ServicePeer.h"

#include <functional>
#include <gtest/gtest.h>
#include <memory>
#include <optional>
#include <thread>

namespace {

using Manager = QFCLibraryManager;
using qfc::AsGallery;
using qfc::ToHandle;
using qfc::test::RawDb;

class EntriesItems : public qfc::test::LibraryFixture {
protected:
    void SetUp() override {
        LibraryFixture::SetUp();
        m_pOther = MakeFolder("", "Other");
    }
    static void RefuseWrites(const std::string& table) { qfc::test::RefuseWrites(DatabaseFile(), table); }
    // Adds without waiting and answers what the callback got; empty when the operation raised none.
    std::optional<QFCLibCallbackParam> AddAsync(const std::vector<CString>& paths, CQItem* pItem) {
        std::optional<QFCLibCallbackParam> seen;
        Manager::fnRegister_QFCLibCallBack("add", [&](QFCLibCallbackParam* pParam) {
            if (!seen && pItem != nullptr && pParam->guidItem == pItem->GetUniqueID()) seen = *pParam;
            return 1;
        });
        EXPECT_EQ(Manager::fnAddItemAsync(m_hMedia, paths, pItem, 0), 1);
        Settle();
        Manager::fnUnRegister_QFCLibCallBack("add");
        return seen;
    }
    static CQItem* ItemOf(CQFolder* pFolder, const GUID& guid) { return pFolder->GetItemByGUID(guid); }

    CQFolder* m_pOther = nullptr;
};

// --- Adding ------------------------------------------------------------------------------------------------------

TEST_F(EntriesItems, AddItem_IsFoundAfterARestart) {
    const GUID guid = AddItem("Sunrise")->GetUniqueID();
    Restart();
    CQItem* const pItem = ItemOf(m_pClips, guid);
    ASSERT_NE(pItem, nullptr);
    EXPECT_EQ(pItem->GetItemName(), "Sunrise");
    EXPECT_EQ(pItem->GetFileName(), "C:\\media\\Sunrise.avi");
}

TEST_F(EntriesItems, AddItem_ToSeveralFolders_IsOneItem) {
    CQItem* const pItem = AddItem("Sunrise", {"Clips", "Other"});
    EXPECT_EQ(m_pClips->GetItemArray()->GetAt(0), pItem);
    EXPECT_EQ(m_pOther->GetItemArray()->GetAt(0), pItem);
    EXPECT_EQ(pItem->GetParentFolder(), m_pOther);
    EXPECT_EQ(CountRows("ITEM_TABLE"), 1);
    EXPECT_EQ(CountRows("RELATION_TABLE"), 2);
}

TEST_F(EntriesItems, AddItem_SkipsPathsThatNameNoFolder) {
    CQItem* const pItem = NewItem("Sunrise");
    EXPECT_EQ(Manager::fnAddItem(m_hMedia, {"Nowhere", "Clips", "", "Other"}, pItem), 1);
    EXPECT_EQ(m_pClips->HasItem(pItem->GetUniqueID(), 0), 1);
    EXPECT_EQ(m_pOther->HasItem(pItem->GetUniqueID(), 0), 1);
}

TEST_F(EntriesItems, AddItem_ToNoExistingFolder_StillReportsSuccessAndTheItemStaysTheCallers) {
    const std::unique_ptr<CQItem> item(NewItem("Sunrise"));
    EXPECT_EQ(Manager::fnAddItem(m_hMedia, {"Nowhere"}, item.get()), 1);
    EXPECT_EQ(CountRows("ITEM_TABLE"), 0);
}

TEST_F(EntriesItems, AddItem_ThatTheDatabaseRefuses_StillReportsSuccessAndTheItemStaysTheCallers) {
    RefuseWrites("RELATION_TABLE");
    const std::unique_ptr<CQItem> item(NewItem("Sunrise"));
    EXPECT_EQ(Manager::fnAddItem(m_hMedia, {"Clips", "Other"}, item.get()), 1);
    EXPECT_EQ(m_pClips->HasItem(item->GetUniqueID(), 0), 0);
    EXPECT_EQ(CountRows("ITEM_TABLE"), 0);
}

TEST_F(EntriesItems, AddItem_ThatTheFirstFolderRefuses_GoesToTheNext) {
    RawDb(DatabaseFile())
        .Exec("create trigger REFUSE before insert on RELATION_TABLE when new.PARENT_ID = " +
              std::to_string(m_pClips->GetDBId()) + " begin select raise(fail, 'refused'); end");
    CQItem* const pItem = NewItem("Sunrise");
    EXPECT_EQ(Manager::fnAddItem(m_hMedia, {"Clips", "Other"}, pItem), 1);
    EXPECT_EQ(m_pClips->HasItem(pItem->GetUniqueID(), 0), 0);
    EXPECT_EQ(m_pOther->HasItem(pItem->GetUniqueID(), 0), 1);
    EXPECT_EQ(CountRows("RELATION_TABLE"), 1);
}

TEST_F(EntriesItems, AddItem_WithoutGalleryPathsOrItem_Fails) {
    const std::unique_ptr<CQItem> item(NewItem("Sunrise"));
    EXPECT_EQ(Manager::fnAddItem(0, {"Clips"}, item.get()), 0);
    EXPECT_EQ(Manager::fnAddItem(m_hMedia, {}, item.get()), 0);
    EXPECT_EQ(Manager::fnAddItem(m_hMedia, {"Clips"}, nullptr), 0);
    EXPECT_EQ(CountRows("ITEM_TABLE"), 0);
}

TEST_F(EntriesItems, AddItem_LeavesTheCallersPathsAlone) {
    const std::vector<CString> paths{"Clips", "Other"};
    AddItem("Sunrise", paths);
    EXPECT_EQ(paths, (std::vector<CString>{"Clips", "Other"}));
}

TEST_F(EntriesItems, AddItemAsync_TellsTheCallbackGalleryItemAndRowOfTheFirstFolder) {
    CQItem* const pItem = NewItem("Sunrise");
    const auto seen = AddAsync({"Other", "Clips"}, pItem);
    ASSERT_TRUE(seen);
    EXPECT_EQ(seen->hGallery, m_hMedia);
    EXPECT_EQ(seen->guidItem, pItem->GetUniqueID());
    EXPECT_EQ(seen->nFolderId, m_pOther->GetDBId());
    EXPECT_EQ(m_pClips->HasItem(pItem->GetUniqueID(), 0), 1);
}

TEST_F(EntriesItems, AddItemAsync_WhoseFirstPathNamesNoFolder_TellsFolderMinusOne) {
    CQItem* const pItem = NewItem("Sunrise");
    const auto seen = AddAsync({"Nowhere", "Clips"}, pItem);
    ASSERT_TRUE(seen);
    EXPECT_EQ(seen->nFolderId, -1);
    EXPECT_EQ(m_pClips->HasItem(pItem->GetUniqueID(), 0), 1);
}

TEST_F(EntriesItems, AddItemAsync_ToNoExistingFolder_StillRaisesTheCallback) {
    const std::unique_ptr<CQItem> item(NewItem("Sunrise"));
    const auto seen = AddAsync({"Nowhere"}, item.get());
    ASSERT_TRUE(seen);
    EXPECT_EQ(seen->nFolderId, -1);
}

TEST_F(EntriesItems, AddItemAsync_ReportsTheQueueingEvenIfTheAddFails) {
    EXPECT_FALSE(AddAsync({}, nullptr));
    const std::unique_ptr<CQItem> item(NewItem("Sunrise"));
    EXPECT_FALSE(AddAsync({}, item.get()));
}

TEST_F(EntriesItems, AddItemAsync_ReturnsBeforeTheItemIsAdded) {
    qfc::test::Gate gate;
    CQItem* const pItem = NewItem("Sunrise");
    EXPECT_EQ(Manager::fnAddItemAsync(m_hMedia, {"Clips"}, pItem, 0), 1);
    EXPECT_EQ(CountRows("ITEM_TABLE"), 0);
    gate.Open();
    Settle();
    EXPECT_EQ(m_pClips->HasItem(pItem->GetUniqueID(), 0), 1);
}

TEST_F(EntriesItems, AddItemAsync_OfLowPriority_ComesBehindFourOthers) {
    std::string order;
    Listen("order", [&](QFCLibCallbackParam* pParam) {
        const CQItem* const pItem = AsGallery(m_hMedia)->GetItemByGUID(pParam->guidItem);
        if (pItem != nullptr) order += std::string(pItem->GetItemName()) + " ";
        return 1;
    });
    {
        qfc::test::Gate gate;
        Manager::fnAddItemAsync(m_hMedia, {"Clips"}, NewItem("late"), 1);
        for (const char* name : {"a", "b", "c", "d", "e"}) {
            Manager::fnAddItemAsync(m_hMedia, {"Clips"}, NewItem(name), 0);
        }
    }
    Settle();
    EXPECT_EQ(order, "a b c d late e ");
}

// --- Deleting ----------------------------------------------------------------------------------------------------

TEST_F(EntriesItems, DeleteItem_ModeZero_TakesTheItemOutOfEveryFolderAndReportsZero) {
    const GUID guid = AddItem("Sunrise", {"Clips", "Other"})->GetUniqueID();
    EXPECT_EQ(Manager::fnDeleteItem(ToHandle(m_pClips), {guid}, 0), 0);
    EXPECT_EQ(m_pClips->HasItem(guid, 0), 0);
    EXPECT_EQ(m_pOther->HasItem(guid, 0), 0);
    EXPECT_EQ(CountRows("ITEM_TABLE"), 0);
    EXPECT_EQ(CountRows("RELATION_TABLE"), 0);
}

TEST_F(EntriesItems, DeleteItem_AnotherMode_TakesItOutOfThisFolderOnlyAndReportsZero) {
    CQItem* const pItem = AddItem("Sunrise", {"Clips", "Other"});
    qfc::test::GiveBlackBox(*pItem, 100);
    ASSERT_EQ(pItem->UpdateItemDB(), 1);
    const GUID guid = pItem->GetUniqueID();
    EXPECT_EQ(Manager::fnDeleteItem(ToHandle(m_pClips), {guid}, 1), 0);
    EXPECT_EQ(m_pClips->HasItem(guid, 0), 0);
    EXPECT_EQ(m_pOther->HasItem(guid, 0), 1);
    EXPECT_EQ(CountRows("ITEM_TABLE"), 1);
    EXPECT_EQ(CountRows("CACHE_DATA_TABLE"), 1);
    EXPECT_EQ(Manager::fnDeleteItem(ToHandle(m_pOther), {guid}, 1), 0);
    EXPECT_EQ(CountRows("ITEM_TABLE"), 0);
    EXPECT_EQ(CountRows("CACHE_DATA_TABLE"), 0);
}

// The root of a gallery is the gallery itself.
TEST_F(EntriesItems, DeleteItem_ModeZero_OfTheGalleryItself_TakesTheItemOutOfEveryFolder) {
    const GUID guid = AddItem("Sunrise", {"Clips", "Other"})->GetUniqueID();
    EXPECT_EQ(Manager::fnDeleteItem(m_hMedia, {guid}, 0), 0);
    EXPECT_EQ(m_pClips->HasItem(guid, 0), 0);
    EXPECT_EQ(m_pOther->HasItem(guid, 0), 0);
    EXPECT_EQ(CountRows("ITEM_TABLE"), 0);
    EXPECT_EQ(CountRows("RELATION_TABLE"), 0);
}

TEST_F(EntriesItems, DeleteItem_TakesSeveralAndPassesOverUnknownOnes) {
    const GUID first = AddItem("First")->GetUniqueID();
    const GUID second = AddItem("Second", {"Other"})->GetUniqueID();
    const GUID kept = AddItem("Kept")->GetUniqueID();
    Manager::fnDeleteItem(ToHandle(m_pClips), {first, GUID{1, 2, 3, {}}, second}, 0);
    EXPECT_EQ(m_pClips->HasItem(first, 0), 0);
    EXPECT_EQ(m_pOther->HasItem(second, 0), 0);
    EXPECT_EQ(m_pClips->HasItem(kept, 0), 1);
}

TEST_F(EntriesItems, DeleteItem_WithoutFolderGalleryOrItems_ChangesNothing) {
    const GUID guid = AddItem("Sunrise")->GetUniqueID();
    CQFolder loose("Loose", 0, 0, 0);
    EXPECT_EQ(Manager::fnDeleteItem(0, {guid}, 0), 0);
    EXPECT_EQ(Manager::fnDeleteItem(ToHandle(&loose), {guid}, 0), 0);
    EXPECT_EQ(Manager::fnDeleteItem(ToHandle(m_pClips), {}, 0), 0);
    EXPECT_EQ(m_pClips->HasItem(guid, 0), 1);
}

// A folder may be gone while the gallery's index still names it: RemoveItem without deletion leaves its handle there.
TEST_F(EntriesItems, DeleteItem_ModeZero_PassesOverFoldersThatAreGone) {
    const GUID guid = AddItem("Sunrise", {"Clips", "Other"})->GetUniqueID();
    ASSERT_EQ(m_pClips->RemoveItem(guid, 0), 1);
    ASSERT_EQ(Manager::fnDeleteFolder(ToHandle(m_pClips)), 1);
    EXPECT_EQ(Manager::fnDeleteItem(ToHandle(m_pOther), {guid}, 0), 0);
    EXPECT_EQ(m_pOther->HasItem(guid, 0), 0);
    EXPECT_EQ(CountRows("RELATION_TABLE where PARENT_ID = " + std::to_string(m_pOther->GetDBId())), 0);
}

// --- Updating ----------------------------------------------------------------------------------------------------

TEST_F(EntriesItems, UpdateItem_StoresTheFieldsOfTheMask) {
    const GUID guid = AddItem("Sunrise")->GetUniqueID();
    CQItem change("Sunset");
    change.GetDescription() = "in the evening";
    EXPECT_EQ(Manager::fnUpdateItem(m_hMedia, &change, guid, 1), 1);
    Restart();
    CQItem* const pItem = ItemOf(m_pClips, guid);
    ASSERT_NE(pItem, nullptr);
    EXPECT_EQ(pItem->GetItemName(), "Sunset");
    EXPECT_EQ(pItem->GetDescription(), "in the evening");
}

TEST_F(EntriesItems, UpdateItem_StoresTheGroupsOfEveryMaskAndNoOthers) {
    CQItem change("Sunset");
    change.GetCurThumbFrameNum() = 3;
    qfc::test::GiveBlackBox(change, 100);
    qfc::test::GiveBitmapCache(change, 16, 9);
    qfc::test::GiveFilm(change, 2, 500);
    for (const bool bFields : {false, true}) {
        for (const DWORD dwPayloads : {0u, 2u, 8u, 10u, 16u, 18u, 24u, 26u}) {
            const DWORD dwMask = dwPayloads | (bFields ? 1u : 0u);
            const GUID guid = AddItem("Sunrise")->GetUniqueID();
            EXPECT_EQ(Manager::fnUpdateItem(m_hMedia, &change, guid, dwMask), 1);
            std::string expected = bFields ? "Sunset" : "Sunrise";
            expected += (dwMask & 8) != 0 ? " 3" : " 0";
            expected += (dwMask & 16) != 0 ? " 1000" : " 0";
            expected += bFields ? " 500:" : " 0:";
            if ((dwMask & 8) != 0) expected += " 0=472";
            if ((dwMask & 2) != 0) expected += " 1=100";
            if ((dwMask & 16) != 0) expected += " 2=1000";
            EXPECT_EQ(StoredItem(), "'" + expected + "'") << "mask " << dwMask;
            Manager::fnDeleteItem(ToHandle(m_pClips), {guid}, 0);
        }
    }
}

TEST_F(EntriesItems, UpdateItem_OfTheFieldsAlone_KeepsThePayloadsInMemoryAndStored) {
    CQItem* const pItem = AddItem("Sunrise");
    qfc::test::GiveBlackBox(*pItem, 3000);
    qfc::test::GiveBitmapCache(*pItem, 16, 9);
    qfc::test::GiveFilm(*pItem, 10, 500);
    ASSERT_EQ(pItem->UpdateItemDB(), 1);
    CQItem change("Sunset");
    change.GetCurThumbFrameNum() = 3;
    qfc::test::GiveBlackBox(change, 50);
    change.ChangeFilm(nullptr, 0, 500);  // No film and no bitmap.
    EXPECT_EQ(Manager::fnUpdateItem(m_hMedia, &change, pItem->GetUniqueID(), 1), 1);
    EXPECT_EQ(StoredItem(), "'Sunset 0 5000 500: 0=472 1=3000 2=5000'");
    EXPECT_EQ(pItem->PayloadInMemory(qfc::kBlackBox).size(), 3000u);
    EXPECT_EQ(pItem->PayloadInMemory(qfc::kBitmapCache).size(), 472u);
    EXPECT_EQ(pItem->PayloadInMemory(qfc::kFilm).size(), 5000u);
}

TEST_F(EntriesItems, UpdateItem_OfAVideoAfterARestart_KeepsItsPayloads) {
    CQItem* const pVideo = NewItem("Sunrise");
    qfc::test::GiveBlackBox(*pVideo, 3000);
    qfc::test::GiveBitmapCache(*pVideo, 16, 9);
    qfc::test::GiveFilm(*pVideo, 10, 500);
    const GUID guid = pVideo->GetUniqueID();
    ASSERT_EQ(Manager::fnAddItem(m_hMedia, {"Clips"}, pVideo), 1);
    Restart();
    {
        CQItem* const pStored = ItemOf(m_pClips, guid);
        ASSERT_NE(pStored, nullptr);
        CQItem renamed(*pStored);
        renamed.SetItemName("Sunset");
        EXPECT_EQ(Manager::fnUpdateItem(m_hMedia, &renamed, guid, 1), 1);
    }
    Restart();
    CQItem* const pItem = ItemOf(m_pClips, guid);
    ASSERT_NE(pItem, nullptr);
    EXPECT_EQ(pItem->GetItemName(), "Sunset");
    ASSERT_EQ(pItem->GetTotalFilmFrame(), 10u);
    EXPECT_TRUE(qfc::test::HoldsPattern(pItem->GetFilmFrame(0), 5000));
    EXPECT_TRUE(qfc::test::HoldsPattern(pItem->GetBlackBox(), 3000));
    EXPECT_EQ(pItem->GetBitmapCacheSize().cx, 16);
}

// Kept: 1 says nothing about the update.
TEST_F(EntriesItems, UpdateItem_ReportsSuccessWhateverBecameOfIt) {
    const GUID guid = AddItem("Sunrise")->GetUniqueID();
    CQItem change("Sunset");
    EXPECT_EQ(Manager::fnUpdateItem(m_hMedia, &change, GUID{1, 2, 3, {}}, 1), 1);
    RefuseWrites("ITEM_TABLE");
    EXPECT_EQ(Manager::fnUpdateItem(m_hMedia, &change, guid, 1), 1);
    EXPECT_EQ(CountRows("ITEM_TABLE where ITEM_NAME = 'Sunrise'"), 1);
}

TEST_F(EntriesItems, UpdateItem_WithoutGalleryOrItem_Fails) {
    CQItem change("Sunset");
    EXPECT_EQ(Manager::fnUpdateItem(0, &change, change.GetUniqueID(), 1), 0);
    EXPECT_EQ(Manager::fnUpdateItem(m_hMedia, nullptr, change.GetUniqueID(), 1), 0);
}

// Without a database at the time of the call it works on none, also when the service has one by the time it is run.
TEST_F(EntriesItems, CallsMadeWhileStopped_RunWithoutDatabaseOnceStarted) {
    const auto pItem = std::make_unique<CQItem>("Sunrise");
    qfc::test::GiveBitmapCache(*pItem, 8, 8);
    std::vector<_DS_LibItemTunmbnailInfo_> thumbnails(3);
    const std::function<int()> calls[] = {[] { return Manager::fnDeleteGallery({kMedia}); },
                                          [&] { return Manager::fnUpdateLibItemThumbnail(pItem.get()); },
                                          [&] { return Manager::fnQueryLibItemThumbnailInfo(thumbnails); }};
    const int nExpected[] = {0, 0, 1};
    qfc::test::CloseAllGalleries();
    for (int call = 0; call < 3; ++call) {
        ASSERT_EQ(Manager::fnStopService(), 1);
        std::thread host([&] { EXPECT_EQ(calls[call](), nExpected[call]) << call; });
        while (qfc::ServicePeer::IsSyncEmpty() != 0) std::this_thread::yield();
        EXPECT_EQ(Manager::fnStartService(), 1);
        host.join();
    }
    EXPECT_TRUE(thumbnails.empty());
    EXPECT_EQ(CountRows("GALLERY_TABLE"), 1);
    EXPECT_EQ(CountRows("CACHE_DATA_TABLE"), 0);
}

}  // namespace
