// What happens when memory ends between two steps.
#include "items/CQGallery.h"
#include "items/CQItem.h"
#include "items/Handles.h"
#include "platform/os/LastError.h"
#include "platform/os/Sync.h"
#include "platform/os/Thread.h"
#include "service/operations/CreateGallery.h"
#include "service/operations/LoadGallery.h"
#include "service/operations/QueryLibItemThumbnailInfo.h"
#include "tests/support/LibraryFixture.h"
#include "tests/support/MemoryFaults.h"
#include "tests/support/ServicePeer.h"

#include <atomic>
#include <gtest/gtest.h>
#include <new>
#include <set>

namespace {

using qfc::EntrySteps;
using qfc::ServicePeer;
using qfc::test::LambdaOperation;
using qfc::test::MemoryFaults;

constexpr bool kFromThenOn = true;

unsigned Nothing(void*) { return 0; }

TEST(OutOfMemory, AThreadThatCannotBeMade_IsReportedWhereverMemoryEnds) {
    int nAllocations = 0;
    for (bool bCreated = false; !bCreated; ++nAllocations) {
        ASSERT_LT(nAllocations, 100);
        const MemoryFaults end(nAllocations + 1, kFromThenOn);
        SetLastError(0);
        qfc::WorkerThread thread(&Nothing, nullptr);
        bCreated = thread.IsCreated();
        EXPECT_EQ(thread.Handle() != nullptr, bCreated);
        EXPECT_EQ(GetLastError(), bCreated ? 0u : ERROR_NOT_ENOUGH_MEMORY);
    }
    EXPECT_GT(nAllocations, 3);
}

class OutOfMemoryService : public qfc::test::LibraryFixture {};

// Kept: the caller gets the rows that were gathered until then, and 1.
TEST_F(OutOfMemoryService, AThumbnailQueryThatEndsEarly_KeepsTheRowsItHas) {
    for (const char* pszName : {"First", "Second", "Third"}) {
        CQItem* const pItem = NewItem(pszName);
        qfc::test::GiveBitmapCache(*pItem, 8, 8);
        ASSERT_EQ(QFCLibraryManager::fnAddItem(m_hMedia, {"Clips"}, pItem), 1);
    }
    std::set<std::size_t> gathered;
    for (int nAllocations = 0; !gathered.contains(3); ++nAllocations) {
        ASSERT_LT(nAllocations, 20000);
        LibraryOperation_QueryLibItemThumbnailInfo operation(m_pClips->GetDBTools());
        bool bEndedEarly = false;
        try {
            const MemoryFaults end(nAllocations + 1, kFromThenOn);
            operation.execute();
        } catch (const std::bad_alloc&) {
            bEndedEarly = true;
        }
        if (bEndedEarly || operation.Thumbnails().size() == 3) gathered.insert(operation.Thumbnails().size());
    }
    EXPECT_EQ(gathered, (std::set<std::size_t>{0, 1, 2, 3}));
}

// An operation that nobody could wait for must not run behind the back of a caller who was told that it failed.
TEST_F(OutOfMemoryService, ASyncCallThatIsRefused_IsNeverExecuted) {
    std::atomic<int> executed = 0;
    const auto work = [&executed] { return ++executed; };
    int nSucceeded = 0;
    int nRefused = 0;
    for (int nAllocations = 0; nSucceeded == 0; ++nAllocations) {
        ASSERT_LT(nAllocations, 100);
        std::shared_ptr<LambdaOperation> pOperation;
        try {
            const MemoryFaults end(nAllocations + 1, kFromThenOn);
            pOperation = EntrySteps::RunSync<LambdaOperation>(work);
            (pOperation != nullptr ? nSucceeded : nRefused) += 1;
        } catch (const std::bad_alloc&) {
        }
    }
    Settle();
    EXPECT_EQ(executed, nSucceeded);
    EXPECT_GE(nRefused, 1);
}

TEST_F(OutOfMemoryService, TheClearOfAStop_NeedsNoMemory) {
    ASSERT_EQ(QFCLibraryManager::fnStopService(), 1);
    std::string order;
    for (const char* pszMark : {"first ", "second "}) {
        ServicePeer::Add(std::make_shared<LambdaOperation>([&order, pszMark] {
            order += pszMark;
            return 1;
        }));
    }
    {
        const MemoryFaults end(1, kFromThenOn);
        ServicePeer::DropQueuedWork();
    }
    ASSERT_EQ(QFCLibraryManager::fnStartService(), 1);
    Settle();
    EXPECT_EQ(order, "first second ");
}

// What the document did not take would belong to nobody.
template <typename Operation, typename... Args>
void ExpectListedOrNoHandle(ULONGLONG (Operation::*handle)() const, Args... args) {
    const auto& listed = GetGalleryDoc()->GetGalleryList();
    int nRefused = 0;
    bool bFailed = true;
    for (int nAllocations = 0; bFailed; ++nAllocations) {
        ASSERT_LT(nAllocations, 5000);
        Operation operation(args...);
        const auto before = listed.GetCount();
        int nResult = 0;
        bFailed = true;
        try {
            const MemoryFaults end(nAllocations + 1);
            nResult = operation.execute();
            bFailed = end.HasFailed();
        } catch (const std::bad_alloc&) {
        } catch (CException* pException) {
            pException->Delete();
        }
        EXPECT_EQ((operation.*handle)() != 0, nResult != 0) << nAllocations;
        EXPECT_EQ(static_cast<int>(listed.GetCount() - before), nResult) << nAllocations;
        nRefused += nResult == 0 ? 1 : 0;
    }
    EXPECT_GE(nRefused, 1);
}

TEST_F(OutOfMemoryService, AGalleryThatIsMade_IsTheDocumentsOrThereIsNone) {
    ExpectListedOrNoHandle(&LibraryOperation_CreateGallery::Created, 5, "Titles", 0, 0, 0, m_pClips->GetDBTools());
}

TEST_F(OutOfMemoryService, AGalleryThatIsLoaded_IsTheDocumentsOrThereIsNone) {
    ExpectListedOrNoHandle(&LibraryOperation_LoadGallery::Loaded, kMedia, m_pClips->GetDBTools());
}

// Nobody else knows the items that were loaded until then: the leak sanitizer looks.
TEST_F(OutOfMemoryService, AGalleryThatASessionLoads_LeavesNoItemBehind) {
    for (const char* pszName : {"First", "Second", "Third"}) {
        ASSERT_EQ(QFCLibraryManager::fnAddItem(m_hMedia, {"Clips"}, NewItem(pszName)), 1);
    }
    const CString strForeign((Scratch() / "foreign.db").c_str());
    ASSERT_EQ(QFCLibraryManager::fnExportDB(strForeign), 1);
    const ULONGLONG hSession = QFCLibraryManager::StartDbSession4ImportLib(strForeign);
    int nRefused = 0;
    for (int nAllocations = 0;; ++nAllocations) {
        ASSERT_LT(nAllocations, 5000);
        LibraryOperation_LoadGallery operation(kMedia, reinterpret_cast<DBTools*>(hSession));
        bool bFailed = false;
        try {
            const MemoryFaults end(nAllocations + 1);
            operation.execute();
            bFailed = end.HasFailed();
        } catch (const std::bad_alloc&) {
            bFailed = true;
        } catch (CException* pException) {
            pException->Delete();
            bFailed = true;
        }
        nRefused += operation.Loaded() == 0 ? 1 : 0;
        if (operation.Loaded() == 0) continue;
        // Kept: a folder whose rows could not be read is left out, and the gallery counts as loaded.
        CQFolder* const pClips = qfc::AsGallery(operation.Loaded())->GetFolderByName("Clips");
        if (!bFailed) {
            EXPECT_EQ(pClips != nullptr ? pClips->GetItemArray()->GetSize() : -1, 3);
        }
        EXPECT_EQ(QFCLibraryManager::fnCloseSessionGallery(operation.Loaded()), 1);
        if (!bFailed) break;
    }
    EXPECT_GT(nRefused, 10);
    EXPECT_EQ(QFCLibraryManager::EndDbSession4ImportLib(hSession), 1);
}

}  // namespace
