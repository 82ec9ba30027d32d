// Who owns what and which thread may do what, as the host guide says it. The sanitizers look on: nothing is destroyed
// twice, nothing is left behind, nothing is raced for.
#include "tests/support/LibraryFixture.h"
#include "tests/support/RawDb.h"

#include <future>
#include <gtest/gtest.h>
#include <memory>
#include <set>
#include <string>
#include <thread>
#include <vector>

namespace {

namespace fs = std::filesystem;
using Manager = QFCLibraryManager;
using qfc::AsGallery;
using qfc::ToHandle;

class Ownership : public qfc::test::LibraryFixture {};

TEST_F(Ownership, AnItemThatAFolderHolds_BelongsToTheGallery) {
    CQItem* const pItem = AddItem("Sunrise");
    EXPECT_EQ(AsGallery(m_hMedia)->GetItemByGUID(pItem->GetUniqueID()), pItem);
    // Closing the gallery destroys it.
}

TEST_F(Ownership, AnItemThatNoFolderTook_StaysTheHosts) {
    const std::unique_ptr<CQItem> item(NewItem("Sunrise"));
    ASSERT_EQ(Manager::fnAddItem(m_hMedia, {"Nowhere"}, item.get()), 1);
    EXPECT_EQ(AsGallery(m_hMedia)->GetItemByGUID(item->GetUniqueID()), nullptr);
}

TEST_F(Ownership, AnItemAddedToAFolderThatHasItAlready_StaysOneObject) {
    CQItem* const pItem = AddItem("Sunrise");
    ASSERT_EQ(Manager::fnAddItem(m_hMedia, {"Clips", "Clips"}, pItem), 1);
    EXPECT_EQ(m_pClips->GetItemArray()->GetSize(), 1);
}

TEST_F(Ownership, AnItemInThreeFolders_IsDestroyedOnce) {
    MakeFolder("", "B");
    MakeFolder("", "C");
    AddItem("Sunrise", {"Clips", "B", "C"});
    Restart();  // Once as added, once as loaded.
    EXPECT_EQ(AsGallery(m_hMedia)->GetAllSubItemArray()->GetSize(), 3);
}

TEST_F(Ownership, ASecondLoad_MakesASecondTreeWithItemsOfItsOwn) {
    const GUID guid = AddItem("Sunrise")->GetUniqueID();
    CQGallery* const pSecond = AsGallery(Manager::fnLoadGallery(kMedia));
    ASSERT_NE(pSecond, nullptr);
    CQItem* const pCopy = pSecond->GetItemByGUID(guid);
    ASSERT_NE(pCopy, nullptr);
    EXPECT_NE(pCopy, m_pClips->GetItemByGUID(guid));
    EXPECT_EQ(GetGalleryDoc()->CloseGallery(pSecond), 1);
    EXPECT_EQ(m_pClips->HasItem(guid, 0), 1);
}

TEST_F(Ownership, InItsCallbackAHostLearnsWhetherTheItemIsStored) {
    qfc::test::RawDb(DatabaseFile())
        .Exec(
            "create trigger REFUSE before insert on ITEM_TABLE when new.ITEM_NAME = 'Bad' "
            "begin select raise(fail, 'refused'); end");
    std::vector<std::unique_ptr<CQItem>> items;
    for (const char* name : {"Good", "Bad", "Better"}) items.emplace_back(NewItem(name));
    std::string stored;
    Listen("acknowledge", [&](QFCLibCallbackParam* pParam) {
        if (pParam->hGallery != m_hMedia) return 1;
        for (auto& item : items) {
            if (item == nullptr || item->GetUniqueID() != pParam->guidItem) continue;
            if (!m_pClips->HasItem(pParam->guidItem, 0)) continue;  // Still ours.
            stored += std::string(item->GetItemName()) + " ";
            static_cast<void>(item.release());
        }
        return 1;
    });
    for (const auto& item : items) Manager::fnAddItemAsync(m_hMedia, {"Clips"}, item.get(), 0);
    Settle();
    EXPECT_EQ(stored, "Good Better ");
}

// Three threads keep adding while the service is being stopped: it is held up, in the middle of its work, by somebody
// else who writes to the file.
TEST_F(Ownership, AddsDroppedAtStop_AreTheHostsAfterwards) {
    std::promise<void> busy;
    std::set<GUID> stored;
    Listen("acknowledge", [&](QFCLibCallbackParam* pParam) {
        if (m_pClips->HasItem(pParam->guidItem, 0)) stored.insert(pParam->guidItem);
        if (stored.size() == 5) busy.set_value();
        return 1;
    });
    std::vector<std::vector<std::unique_ptr<CQItem>>> items(3);
    auto add = [&](std::size_t host) {
        for (int i = 0; i < 30; ++i) {
            items[host].emplace_back(NewItem("item"));
            EXPECT_EQ(Manager::fnAddItemAsync(m_hMedia, {"Clips"}, items[host].back().get(), host == 2), 1);
        }
    };
    auto all = [&] {
        std::vector<std::thread> hosts;
        for (std::size_t host = 0; host < items.size(); ++host) hosts.emplace_back(add, host);
        for (std::thread& host : hosts) host.join();
    };
    all();
    busy.get_future().wait();
    qfc::test::RawDb other(DatabaseFile());
    other.Exec("pragma busy_timeout = 60000; begin immediate");
    std::thread stopping([] { EXPECT_EQ(Manager::fnStopService(), 1); });
    all();
    other.Exec("commit");
    stopping.join();

    int nStored = 0;
    for (auto& host : items) {
        for (auto& item : host) {
            const bool bStored = stored.contains(item->GetUniqueID());
            EXPECT_EQ(m_pClips->HasItem(item->GetUniqueID(), 0) != 0, bStored);
            if (bStored) static_cast<void>(item.release());
            nStored += bStored;
        }
    }
    EXPECT_EQ(CountRows("ITEM_TABLE"), nStored);
    EXPECT_GE(nStored, 5);
}

TEST_F(Ownership, GalleriesOfSeveralThreads_EachWorkedOnByItsOwn) {
    std::vector<std::thread> hosts;
    for (int host = 0; host < 4; ++host) {
        hosts.emplace_back([host] {
            const ULONGLONG hGallery = Manager::fnCreateGallery(100 + host, "Own", 0, 0, 0);
            CQFolder* const pFolder = Manager::fnCreateFolder(hGallery, "", "Folder", 0, 0, 0, 0);
            for (int i = 0; i < 20; ++i) {
                CQItem* const pItem = NewItem("item");
                Manager::fnAddItem(hGallery, {"Folder"}, pItem);
                ASSERT_EQ(pFolder->HasItem(pItem->GetUniqueID(), 0), 1);
            }
        });
    }
    for (std::thread& host : hosts) host.join();
    EXPECT_EQ(CountRows("ITEM_TABLE"), 80);
}

// Every entry function from several threads at once, each on a gallery of its own.
TEST_F(Ownership, EveryEntryFunctionAtOnce_FromSeveralThreads) {
    auto work = [](int host) {
        const CString strName(("host" + std::to_string(host)).c_str());
        const int nGallery = 100 + host;
        const ULONGLONG hGallery = Manager::fnCreateGallery(nGallery, strName, 0, 0, 0);
        ASSERT_NE(hGallery, 0u);
        CQFolder* const pKept = Manager::fnCreateFolder(hGallery, "", "Kept", 0, 0, 0, 0);
        for (int round = 0; round < 8; ++round) {
            CQFolder* const pFolder = Manager::fnCreateFolder(hGallery, "", "Folder", 0, 0, 0, 0);
            CQItem* const pItem = NewItem("item");
            const GUID guid = pItem->GetUniqueID();
            qfc::test::GiveBitmapCache(*pItem, 8, 8);
            Manager::fnRegister_QFCLibCallBack(strName, [](QFCLibCallbackParam*) { return 1; });
            ASSERT_EQ(Manager::fnAddItem(hGallery, {"Folder", "Kept"}, pItem), 1);
            CQItem change("changed");
            EXPECT_EQ(Manager::fnUpdateItem(hGallery, &change, guid, 1), 1);
            EXPECT_EQ(Manager::fnUpdateLibItemThumbnail(pItem), 1);
            EXPECT_EQ(Manager::fnUpdateFolder(ToHandle(pFolder), "Renamed", 0, 0, 0), 1);
            std::vector<_DS_LibItemTunmbnailInfo_> thumbnails;
            EXPECT_EQ(Manager::fnQueryLibItemThumbnailInfo(thumbnails), 1);
            EXPECT_FALSE(thumbnails.empty());
            std::vector<qfc::StoredGallery> galleries;
            EXPECT_EQ(Manager::fnListGalleries(galleries), 1);
            const fs::path file = Scratch() / (std::to_string(host) + ".db");
            EXPECT_EQ(Manager::fnExportDB(file.c_str()), 1);
            const ULONGLONG hSession = Manager::StartDbSession4ImportLib(file.c_str());
            const ULONGLONG hForeign = Manager::fnLoadGallery(nGallery, reinterpret_cast<DBTools*>(hSession));
            EXPECT_EQ(Manager::fnCloseSessionGallery(hForeign), 1);
            EXPECT_EQ(Manager::EndDbSession4ImportLib(hSession), 1);
            Manager::fnDeleteItem(ToHandle(pKept), {guid}, static_cast<int>(round % 2));
            EXPECT_EQ(Manager::fnDeleteFolder(ToHandle(pFolder)), 1);
            EXPECT_EQ(Manager::fnUnRegister_QFCLibCallBack(strName), 1);
            EXPECT_EQ(Manager::fnStartService(), 0);
        }
        EXPECT_EQ(Manager::fnDeleteGallery({nGallery}), 1);
    };
    std::vector<std::thread> hosts;
    for (int host = 0; host < 4; ++host) hosts.emplace_back(work, host);
    for (std::thread& host : hosts) host.join();
    EXPECT_EQ(CountRows("GALLERY_TABLE"), 1);
    EXPECT_EQ(CountRows("ITEM_TABLE"), 0);
}

}  // namespace
