// What happens when memory ends between two steps. The allocation function of this program can be told to fail.
#include "platform/os/LastError.h"
#include "platform/os/Sync.h"
#include "platform/os/Thread.h"
#include "service/operations/CreateGallery.h"
#include "service/operations/LoadGallery.h"
#include "service/operations/QueryLibItemThumbnailInfo.h"
#include "tests/support/LibraryFixture.h"
#include "tests/support/ServicePeer.h"

#include <atomic>
#include <cstdlib>
#include <gtest/gtest.h>
#include <new>
#include <set>

namespace {

constexpr int kNever = -1;
// How many allocations of this thread still succeed.
thread_local int t_left = kNever;
thread_local bool t_bOnce = false;

void* Allocate(std::size_t size) {
    if (t_left == 0) {
        if (t_bOnce) t_left = kNever;
        return nullptr;
    }
    if (t_left > 0) --t_left;
    return std::malloc(size != 0 ? size : 1);
}

class MemoryEndsAfter {
public:
    explicit MemoryEndsAfter(int nAllocations) { t_left = nAllocations; }
    ~MemoryEndsAfter() { t_left = kNever; }
    MemoryEndsAfter(const MemoryEndsAfter&) = delete;
    MemoryEndsAfter& operator=(const MemoryEndsAfter&) = delete;
};

// The one behind these.
class OneAllocationFails {
public:
    explicit OneAllocationFails(int nAllocations) {
        t_left = nAllocations;
        t_bOnce = true;
    }
    ~OneAllocationFails() {
        t_left = kNever;
        t_bOnce = false;
    }
    OneAllocationFails(const OneAllocationFails&) = delete;
    OneAllocationFails& operator=(const OneAllocationFails&) = delete;
};

}  // namespace

// Out of line, so that the compiler does not look through them.
[[gnu::noinline]] void* operator new(std::size_t size) {
    if (void* const bytes = Allocate(size)) return bytes;
    throw std::bad_alloc();
}
[[gnu::noinline]] void* operator new(std::size_t size, const std::nothrow_t&) noexcept { return Allocate(size); }
[[gnu::noinline]] void operator delete(void* bytes) noexcept { std::free(bytes); }
[[gnu::noinline]] void operator delete(void* bytes, std::size_t) noexcept { std::free(bytes); }
[[gnu::noinline]] void operator delete(void* bytes, const std::nothrow_t&) noexcept { std::free(bytes); }

namespace {

using qfc::EntrySteps;
using qfc::ServicePeer;
using qfc::test::LambdaOperation;

unsigned Nothing(void*) { return 0; }

TEST(OutOfMemory, AThreadThatCannotBeMade_IsReportedWhereverMemoryEnds) {
    int nAllocations = 0;
    for (bool bCreated = false; !bCreated; ++nAllocations) {
        ASSERT_LT(nAllocations, 100);
        const MemoryEndsAfter end(nAllocations);
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
        ASSERT_LT(nAllocations, 5000);
        LibraryOperation_QueryLibItemThumbnailInfo operation(m_pClips->GetDBTools());
        bool bEndedEarly = false;
        try {
            const MemoryEndsAfter end(nAllocations);
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
            const MemoryEndsAfter end(nAllocations);
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
        const MemoryEndsAfter end(0);
        ServicePeer::DropQueuedWork();
    }
    ASSERT_EQ(QFCLibraryManager::fnStartService(), 1);
    Settle();
    EXPECT_EQ(order, "first second ");
}

// What the document did not take would belong to nobody.
template <typename Operation, typename... Args>
void ExpectListedOrNoHandle(ULONGLONG (Operation::*handle)() const, Args... args) {
    constexpr int kMoreThanItTakes = 300;
    const auto& listed = GetGalleryDoc()->GetGalleryList();
    int nRefused = 0;
    for (int nAllocations = 0; nAllocations < kMoreThanItTakes; ++nAllocations) {
        Operation operation(args...);
        const auto before = listed.GetCount();
        int nResult = 0;
        try {
            const OneAllocationFails end(nAllocations);
            nResult = operation.execute();
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

}  // namespace
