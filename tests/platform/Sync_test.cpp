#include "platform/os/Sync.h"

#include <gtest/gtest.h>
#include <latch>
#include <thread>
#include <vector>

namespace {

// What another thread gets from a wait that does not wait; it gives the mutex back when it got it.
DWORD WaitElsewhere(HANDLE object) {
    DWORD result = WAIT_FAILED;
    std::thread([&] {
        result = WaitForSingleObject(object, 0);
        if (result == WAIT_OBJECT_0 || result == WAIT_ABANDONED) ReleaseMutex(object);
    }).join();
    return result;
}

TEST(Mutex, IsRecursive_AndFreeOnlyAfterAsManyReleases) {
    const HANDLE mutex = CreateMutexA(nullptr, 0, nullptr);
    ASSERT_NE(mutex, nullptr);
    EXPECT_EQ(WaitForSingleObject(mutex, INFINITE), WAIT_OBJECT_0);
    EXPECT_EQ(WaitForSingleObject(mutex, 0), WAIT_OBJECT_0);
    EXPECT_EQ(WaitElsewhere(mutex), WAIT_TIMEOUT);
    EXPECT_EQ(ReleaseMutex(mutex), 1);
    EXPECT_EQ(WaitElsewhere(mutex), WAIT_TIMEOUT);
    EXPECT_EQ(ReleaseMutex(mutex), 1);
    EXPECT_EQ(WaitElsewhere(mutex), WAIT_OBJECT_0);
    EXPECT_EQ(CloseHandle(mutex), 1);
}

TEST(Mutex, CanBelongToItsMakerFromTheStart) {
    const HANDLE mutex = CreateMutexA(nullptr, 1, nullptr);
    EXPECT_EQ(WaitElsewhere(mutex), WAIT_TIMEOUT);
    EXPECT_EQ(ReleaseMutex(mutex), 1);
    EXPECT_EQ(WaitElsewhere(mutex), WAIT_OBJECT_0);
    CloseHandle(mutex);
}

TEST(Mutex, ReleaseByANonOwnerFailsWith288AndChangesNothing) {
    const HANDLE mutex = CreateMutexA(nullptr, 1, nullptr);
    int released = 1;
    DWORD error = 0;
    std::thread([&] {
        released = ReleaseMutex(mutex);
        error = GetLastError();
    }).join();
    EXPECT_EQ(released, 0);
    EXPECT_EQ(error, 288u);
    EXPECT_EQ(WaitElsewhere(mutex), WAIT_TIMEOUT);
    EXPECT_EQ(ReleaseMutex(mutex), 1);
    CloseHandle(mutex);
}

TEST(Mutex, OneReleaseTooManyFails) {
    const HANDLE mutex = CreateMutexA(nullptr, 1, nullptr);
    EXPECT_EQ(ReleaseMutex(mutex), 1);
    SetLastError(0);
    EXPECT_EQ(ReleaseMutex(mutex), 0);
    EXPECT_EQ(GetLastError(), ERROR_NOT_OWNER);
    CloseHandle(mutex);
}

TEST(Mutex, OfAThreadThatEndedIsAbandoned_OnceAndOwned) {
    const HANDLE mutex = CreateMutexA(nullptr, 0, nullptr);
    std::thread([&] {
        WaitForSingleObject(mutex, INFINITE);
        WaitForSingleObject(mutex, INFINITE);
    }).join();
    EXPECT_EQ(WaitForSingleObject(mutex, INFINITE), WAIT_ABANDONED);
    EXPECT_EQ(WaitElsewhere(mutex), WAIT_TIMEOUT);
    EXPECT_EQ(ReleaseMutex(mutex), 1);
    EXPECT_EQ(WaitForSingleObject(mutex, INFINITE), WAIT_OBJECT_0);
    EXPECT_EQ(ReleaseMutex(mutex), 1);
    CloseHandle(mutex);
}

TEST(Mutex, WaiterGetsTheAbandonedMutex) {
    const HANDLE mutex = CreateMutexA(nullptr, 0, nullptr);
    std::latch taken(1);
    std::latch waiting(1);
    std::thread owner([&] {
        WaitForSingleObject(mutex, INFINITE);
        taken.count_down();
        waiting.wait();
    });
    taken.wait();
    waiting.count_down();
    EXPECT_EQ(WaitForSingleObject(mutex, INFINITE), WAIT_ABANDONED);
    owner.join();
    EXPECT_EQ(ReleaseMutex(mutex), 1);
    CloseHandle(mutex);
}

TEST(Mutex, EndingThreadAbandonsAllItOwns) {
    std::vector<HANDLE> mutexes;
    for (int i = 0; i < 3; ++i) mutexes.push_back(CreateMutexA(nullptr, 0, nullptr));
    std::thread([&] {
        for (const HANDLE mutex : mutexes) WaitForSingleObject(mutex, INFINITE);
        ReleaseMutex(mutexes[1]);
    }).join();
    EXPECT_EQ(WaitForSingleObject(mutexes[0], 0), WAIT_ABANDONED);
    EXPECT_EQ(WaitForSingleObject(mutexes[1], 0), WAIT_OBJECT_0);
    EXPECT_EQ(WaitForSingleObject(mutexes[2], 0), WAIT_ABANDONED);
    for (const HANDLE mutex : mutexes) {
        ReleaseMutex(mutex);
        CloseHandle(mutex);
    }
}

TEST(Mutex, ClosedWhileOwned_ThreadEndsCleanly) {
    std::thread([] {
        const HANDLE mutex = CreateMutexA(nullptr, 1, nullptr);
        EXPECT_EQ(CloseHandle(mutex), 1);
        EXPECT_EQ(ReleaseMutex(mutex), 0);
        EXPECT_EQ(GetLastError(), ERROR_INVALID_HANDLE);
    }).join();
}

TEST(Mutex, KeepsThreadsApart) {
    const HANDLE mutex = CreateMutexA(nullptr, 0, nullptr);
    int counter = 0;
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i) {
        threads.emplace_back([&] {
            for (int n = 0; n < 1000; ++n) {
                WaitForSingleObject(mutex, INFINITE);
                WaitForSingleObject(mutex, INFINITE);
                ++counter;
                ReleaseMutex(mutex);
                ReleaseMutex(mutex);
            }
        });
    }
    for (std::thread& thread : threads) thread.join();
    EXPECT_EQ(counter, 4000);
    CloseHandle(mutex);
}

TEST(Mutex, NamedOnesAreRefused) {
    EXPECT_EQ(CreateMutexA(nullptr, 0, "name"), nullptr);
    EXPECT_EQ(GetLastError(), ERROR_NOT_SUPPORTED);
    EXPECT_EQ(CreateEventA(nullptr, 1, 0, "name"), nullptr);
}

TEST(Event, ManualOneStaysSignalledUntilReset) {
    const HANDLE event = CreateEventA(nullptr, 1, 0, nullptr);
    EXPECT_EQ(WaitForSingleObject(event, 0), WAIT_TIMEOUT);
    EXPECT_EQ(SetEvent(event), 1);
    EXPECT_EQ(SetEvent(event), 1);
    EXPECT_EQ(WaitForSingleObject(event, 0), WAIT_OBJECT_0);
    EXPECT_EQ(WaitForSingleObject(event, INFINITE), WAIT_OBJECT_0);
    EXPECT_EQ(ResetEvent(event), 1);
    EXPECT_EQ(WaitForSingleObject(event, 1), WAIT_TIMEOUT);
    CloseHandle(event);
}

TEST(Event, AutomaticOneLetsASingleWaitPass) {
    const HANDLE event = CreateEventA(nullptr, 0, 1, nullptr);
    EXPECT_EQ(WaitForSingleObject(event, 0), WAIT_OBJECT_0);
    EXPECT_EQ(WaitForSingleObject(event, 0), WAIT_TIMEOUT);
    SetEvent(event);
    EXPECT_EQ(WaitForSingleObject(event, 0), WAIT_OBJECT_0);
    CloseHandle(event);
}

TEST(Event, WakesAllThatWait) {
    const HANDLE event = CreateEventA(nullptr, 1, 0, nullptr);
    std::vector<std::thread> threads;
    std::vector<DWORD> results(4, WAIT_FAILED);
    for (DWORD& result : results) threads.emplace_back([&] { result = WaitForSingleObject(event, INFINITE); });
    SetEvent(event);
    for (std::thread& thread : threads) thread.join();
    EXPECT_EQ(results, std::vector<DWORD>(4, WAIT_OBJECT_0));
    CloseHandle(event);
}

TEST(Event, ClosingItLeavesWaitsUnderWayAlone) {
    const HANDLE event = CreateEventA(nullptr, 1, 0, nullptr);
    std::latch started(1);
    DWORD result = WAIT_TIMEOUT;
    std::thread waiter([&] {
        started.count_down();
        result = WaitForSingleObject(event, 20);
    });
    started.wait();
    CloseHandle(event);
    waiter.join();
    // The thread may have come too late for a handle that is gone, but never touches a dead object.
    EXPECT_TRUE(result == WAIT_TIMEOUT || result == WAIT_FAILED) << result;
}

TEST(Handles, NullAndClosedOnesFailEverywhere) {
    const HANDLE closed = CreateEventA(nullptr, 1, 1, nullptr);
    EXPECT_EQ(CloseHandle(closed), 1);
    for (const HANDLE handle : {HANDLE{nullptr}, closed}) {
        SetLastError(0);
        EXPECT_EQ(WaitForSingleObject(handle, 0), WAIT_FAILED);
        EXPECT_EQ(GetLastError(), ERROR_INVALID_HANDLE);
        EXPECT_EQ(SetEvent(handle), 0);
        EXPECT_EQ(ResetEvent(handle), 0);
        EXPECT_EQ(ReleaseMutex(handle), 0);
        EXPECT_EQ(CloseHandle(handle), 0);
    }
}

TEST(Handles, OfTheOtherKindFail) {
    const HANDLE event = CreateEventA(nullptr, 1, 0, nullptr);
    const HANDLE mutex = CreateMutexA(nullptr, 0, nullptr);
    EXPECT_EQ(ReleaseMutex(event), 0);
    EXPECT_EQ(GetLastError(), ERROR_INVALID_HANDLE);
    EXPECT_EQ(SetEvent(mutex), 0);
    EXPECT_EQ(ResetEvent(mutex), 0);
    CloseHandle(event);
    CloseHandle(mutex);
}

TEST(LastError, BelongsToItsThread) {
    SetLastError(5);
    DWORD elsewhere = 5;
    std::thread([&] {
        elsewhere = GetLastError();
        SetLastError(6);
    }).join();
    EXPECT_EQ(elsewhere, 0u);
    EXPECT_EQ(GetLastError(), 5u);
}

}  // namespace
