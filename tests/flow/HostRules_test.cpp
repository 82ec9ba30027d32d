// Rules of the host guide that need a story of their own: releasing payloads, closing behind the stop, folders that are
// taken out, adds that wait for a start, galleries that come and go on several threads.
#include "tests/support/LibraryFixture.h"

#include <atomic>
#include <cstdint>
#include <future>
#include <gtest/gtest.h>
#include <memory>
#include <set>
#include <string>
#include <thread>
#include <vector>

namespace {

using Manager = QFCLibraryManager;
using qfc::AsGallery;

DBTools* AsTools(ULONGLONG hSession) { return reinterpret_cast<DBTools*>(static_cast<std::uintptr_t>(hSession)); }

class HostRules : public qfc::test::LibraryFixture {
protected:
    ULONGLONG SessionOnACopy() {
        m_foreign = (Scratch() / "foreign.db").string();
        EXPECT_EQ(Manager::fnExportDB(m_foreign.c_str()), 1);
        const ULONGLONG hSession = Manager::StartDbSession4ImportLib(m_foreign.c_str());
        EXPECT_NE(hSession, 0u);
        return hSession;
    }

    std::string m_foreign;
};

// --- Payloads --------------------------------------------------------------------------------------------------------

// As the guide says it: the film keeps its sizes, the other two go together.
void ReleasePayloads(CQItem& item) {
    item.ChangeFilm(nullptr, item.GetFilmSize(), item.GetFrameSize());
    item.ChangeBlackBox(nullptr, 0);
    item.ChangeCache(nullptr, 0);
}

enum Payload : unsigned { kBox = 1, kBitmap = 2, kFilm = 4, kAllSets = 8 };

class ReleasedPayloads : public HostRules, public testing::WithParamInterface<unsigned> {
protected:
    CQItem* NewItemWithPayloads() {
        CQItem* const pItem = NewItem("Sunrise");
        if (GetParam() & kBox) qfc::test::GiveBlackBox(*pItem, 700);
        if (GetParam() & kBitmap) qfc::test::GiveBitmapCache(*pItem, 12, 8);
        if (GetParam() & kFilm) qfc::test::GiveFilm(*pItem, 3, 90);
        return pItem;
    }
    // Of an item whose payloads are still where they are stored.
    static void ExpectPayloads(CQItem& item) {
        for (const DWORD dwKind : {1u, 0u, 2u}) item.LoadCacheDataFromDb(dwKind);
        const unsigned nBox = GetParam() & kBox ? 700 : 0;
        EXPECT_EQ(item.GetBlackBoxSize(), nBox);
        if (nBox != 0) {
            EXPECT_TRUE(qfc::test::HoldsPattern(item.GetBlackBox(), nBox));
        }
        EXPECT_EQ(item.GetBitmapCacheSize().cx, GetParam() & kBitmap ? 12 : -1);
        ASSERT_EQ(item.GetTotalFilmFrame(), GetParam() & kFilm ? 3u : 0u);
        if (GetParam() & kFilm) {
            EXPECT_TRUE(qfc::test::HoldsPattern(item.GetFilmFrame(0), 270));
        }
    }
};

TEST_P(ReleasedPayloads, SurviveASecondFolderTwoUpdatesAndARestart) {
    MakeFolder("", "Second");
    CQItem* const pItem = NewItemWithPayloads();
    const GUID guid = pItem->GetUniqueID();
    ASSERT_EQ(Manager::fnAddItem(m_hMedia, {"Clips"}, pItem), 1);
    ASSERT_EQ(m_pClips->HasItem(guid, 0), 1);

    ReleasePayloads(*pItem);
    ASSERT_EQ(Manager::fnAddItem(m_hMedia, {"Second"}, pItem), 1);
    ReleasePayloads(*pItem);
    pItem->SetItemName("Dawn");
    ASSERT_EQ(pItem->UpdateItemDB(), 1);
    ReleasePayloads(*pItem);
    {
        CQItem renamed(*pItem);
        renamed.SetItemName("Morning");
        ASSERT_EQ(Manager::fnUpdateItem(m_hMedia, &renamed, guid, 1), 1);
    }
    Restart();
    ASSERT_EQ(Folder("Second")->HasItem(guid, 0), 1);
    CQItem* const pStored = m_pClips->GetItemByGUID(guid);
    ASSERT_NE(pStored, nullptr);
    EXPECT_EQ(pStored->GetItemName(), "Morning");
    ExpectPayloads(*pStored);
}

INSTANTIATE_TEST_SUITE_P(Sets, ReleasedPayloads, testing::Range(0u, static_cast<unsigned>(kAllSets)));

// --- Stops and starts ------------------------------------------------------------------------------------------------

// With adds still queued: in between the tree is only looked at.
TEST_F(HostRules, StoppedFirstAndClosedThen_LosesNothingThatWasStored) {
    MakeFolder("", "Second");
    CQItem* const pStored = NewItem("Stored");
    qfc::test::GiveBlackBox(*pStored, 500);
    const GUID guid = pStored->GetUniqueID();
    ASSERT_EQ(Manager::fnAddItem(m_hMedia, {"Clips", "Second"}, pStored), 1);
    std::vector<std::unique_ptr<CQItem>> queued;
    for (int i = 0; i < 20; ++i) {
        queued.emplace_back(NewItem("queued"));
        Manager::fnAddItemAsync(m_hMedia, {"Second"}, queued.back().get(), i % 2);
    }
    ASSERT_EQ(Manager::fnStopService(), 1);
    int nStored = 1;
    for (auto& item : queued) {
        if (Folder("Second")->HasItem(item->GetUniqueID(), 0) == 0) continue;  // Dropped: still ours.
        static_cast<void>(item.release());
        ++nStored;
    }
    EXPECT_EQ(GetGalleryDoc()->CloseGallery(AsGallery(m_hMedia)), 1);
    EXPECT_EQ(CountRows("ITEM_TABLE"), nStored);

    ASSERT_EQ(Manager::fnStartService(), 1);
    CQGallery* const pGallery = AsGallery(Manager::fnLoadGallery(kMedia));
    ASSERT_NE(pGallery, nullptr);
    EXPECT_EQ(pGallery->GetFolderByName("Second")->GetItemArray()->GetSize(), nStored);
    EXPECT_TRUE(qfc::test::HoldsPattern(pGallery->GetItemByGUID(guid)->GetBlackBox(), 500));
}

TEST_F(HostRules, AnAddQueuedWhileStopped_IsRunByTheNextStart) {
    const ULONGLONG hSession = SessionOnACopy();
    const ULONGLONG hForeign = Manager::fnLoadGallery(kMedia, AsTools(hSession));
    ASSERT_NE(hForeign, 0u);
    qfc::test::CloseAllGalleries();
    ASSERT_EQ(Manager::fnStopService(), 1);
    CQItem* const pItem = NewItem("Late");
    std::promise<void> called;
    Listen("late", [&](QFCLibCallbackParam* pParam) {
        if (pParam->guidItem == pItem->GetUniqueID()) called.set_value();
        return 1;
    });
    EXPECT_EQ(Manager::fnAddItemAsync(hForeign, {"Clips"}, pItem, 0), 1);
    EXPECT_EQ(AsGallery(hForeign)->GetItemByGUID(pItem->GetUniqueID()), nullptr);
    ASSERT_EQ(Manager::fnStartService(), 1);
    called.get_future().wait();
    EXPECT_EQ(AsGallery(hForeign)->GetFolderByName("Clips")->HasItem(pItem->GetUniqueID(), 0), 1);
    EXPECT_EQ(Manager::fnCloseSessionGallery(hForeign), 1);
    EXPECT_EQ(Manager::EndDbSession4ImportLib(hSession), 1);
}

// --- Folders that are taken out --------------------------------------------------------------------------------------

TEST_F(HostRules, AFolderTakenOut_IsDestroyedBeforeItsGallery) {
    CQFolder* const pLoose = MakeFolder("", "Loose");
    const GUID own = AddItem("Own", {"Loose"})->GetUniqueID();
    const GUID shared = AddItem("Shared", {"Loose", "Clips"})->GetUniqueID();
    ASSERT_EQ(pLoose->DetachParent(0), 1);
    EXPECT_EQ(Folder("Loose"), nullptr);
    delete pLoose;
    EXPECT_EQ(m_pClips->HasItem(shared, 0), 1);
    EXPECT_EQ(GetGalleryDoc()->CloseGallery(AsGallery(m_hMedia)), 1);

    // Only the tree in memory was touched.
    m_hMedia = Manager::fnLoadGallery(kMedia);
    ASSERT_NE(m_hMedia, 0u);
    EXPECT_EQ(Folder("Loose")->HasItem(own, 0), 1);
    EXPECT_EQ(Folder("Loose")->HasItem(shared, 0), 1);
}

TEST_F(HostRules, AFolderTakenOutAndPutBack_BelongsToTheGalleryAgain) {
    CQFolder* const pLoose = MakeFolder("", "Loose");
    const GUID own = AddItem("Own", {"Loose"})->GetUniqueID();
    ASSERT_EQ(pLoose->DetachParent(0), 1);
    ASSERT_EQ(m_pClips->AddFolder(pLoose, 1, 1), 1);
    EXPECT_EQ(Folder("Clips\\Loose")->HasItem(own, 0), 1);
    // Closing the gallery destroys it.
}

// --- Galleries on several threads ------------------------------------------------------------------------------------

// The worker adds galleries to the document while other threads take theirs out.
TEST_F(HostRules, GalleriesComeAndGoOnSeveralThreads) {
    const ULONGLONG hSession = SessionOnACopy();
    const auto keepMaking = [](int nFirstId) {
        for (int i = 0; i < 25; ++i) {
            const ULONGLONG hMade = Manager::fnCreateGallery(nFirstId + i, "Made", 0, 0, 0);
            const ULONGLONG hLoaded = Manager::fnLoadGallery(kMedia);
            ASSERT_TRUE(hMade != 0 && hLoaded != 0);
            GetGalleryDoc()->ChangeGallery(AsGallery(hMade));
            GetGalleryDoc()->NoteCurrentFolder(AsGallery(hMade));
            for (const ULONGLONG h : {hLoaded, hMade}) EXPECT_EQ(GetGalleryDoc()->CloseGallery(AsGallery(h)), 1);
        }
    };
    const auto keepImporting = [hSession] {
        for (int i = 0; i < 25; ++i) {
            const ULONGLONG hLoaded = Manager::fnLoadGallery(kMedia, AsTools(hSession));
            const ULONGLONG hMade = Manager::fnCreateGallery(100 + i, "Made", 0, 0, 0, AsTools(hSession));
            ASSERT_TRUE(hMade != 0 && hLoaded != 0);
            for (const ULONGLONG h : {hLoaded, hMade}) EXPECT_EQ(Manager::fnCloseSessionGallery(h), 1);
        }
    };
    std::vector<std::thread> hosts;
    hosts.emplace_back(keepMaking, 100);
    hosts.emplace_back(keepMaking, 200);
    hosts.emplace_back(keepImporting);
    std::atomic<bool> bMade = false;
    // What is current, an address, may be asked for while the current gallery is closed.
    std::thread looking([&bMade] {
        std::set<const void*> seen;
        const auto look = [&seen] {
            seen.insert(GetGalleryDoc()->GetCurrentGallery());
            seen.insert(GetGalleryDoc()->GetNotedFolder());
        };
        while (!bMade) look();
        look();
        EXPECT_TRUE(seen.contains(nullptr));
    });
    for (std::thread& host : hosts) host.join();
    bMade = true;
    looking.join();
    EXPECT_EQ(GetGalleryDoc()->GetGalleryList().GetCount(), 1);
    EXPECT_EQ(Manager::EndDbSession4ImportLib(hSession), 1);
}

}  // namespace
