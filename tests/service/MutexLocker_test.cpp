#include "service/MutexLocker.h"

#include "platform/os/Sync.h"

#include <gtest/gtest.h>
#include <thread>
#include <type_traits>

namespace {

class MutexLockerTest : public testing::Test {
protected:
    ~MutexLockerTest() override {
        CloseHandle(m_hMutex);
        CloseHandle(m_hOther);
    }
    // As another thread finds it.
    static bool IsFree(HANDLE hMutex) {
        bool bFree = false;
        std::thread([&] {
            bFree = WaitForSingleObject(hMutex, 0) == WAIT_OBJECT_0;
            if (bFree) ReleaseMutex(hMutex);
        }).join();
        return bFree;
    }

    HANDLE m_hMutex = CreateMutexA(nullptr, 0, nullptr);
    HANDLE m_hOther = CreateMutexA(nullptr, 0, nullptr);
};

TEST_F(MutexLockerTest, HoldsTheMutexForTheLengthOfItsScope) {
    {
        const MutexLocker lock(m_hMutex);
        EXPECT_FALSE(IsFree(m_hMutex));
    }
    EXPECT_TRUE(IsFree(m_hMutex));
}

TEST_F(MutexLockerTest, TheSameThreadMayLockAgain) {
    const MutexLocker outer(m_hMutex);
    { const MutexLocker inner(m_hMutex); }
    EXPECT_FALSE(IsFree(m_hMutex));
}

TEST_F(MutexLockerTest, ANullHandleDoesNothing) {
    SetLastError(0);
    { const MutexLocker lock(nullptr); }
    EXPECT_EQ(GetLastError(), 0u);
}

TEST_F(MutexLockerTest, Assignment_TakesOverTheHandleWithoutWaitingOrReleasing) {
    {
        MutexLocker first(m_hMutex);
        {
            const MutexLocker second(m_hOther);
            first = second;
        }
        EXPECT_FALSE(IsFree(m_hMutex));  // Not released by the assignment.
        EXPECT_TRUE(IsFree(m_hOther));   // Not taken by it.
    }
    EXPECT_FALSE(IsFree(m_hMutex));  // The locker let go of the other one at the end.
    ReleaseMutex(m_hMutex);
    EXPECT_TRUE(IsFree(m_hMutex));
}

TEST_F(MutexLockerTest, WaitsForTheThreadThatHoldsTheMutex) {
    int guarded = 0;
    auto count = [&] {
        for (int i = 0; i < 2000; ++i) {
            const MutexLocker lock(m_hMutex);
            ++guarded;
        }
    };
    std::thread other(count);
    count();
    other.join();
    EXPECT_EQ(guarded, 4000);
}

}  // namespace
