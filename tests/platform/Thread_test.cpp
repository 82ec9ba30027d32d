#include "platform/os/Thread.h"

#include "platform/os/LastError.h"
#include "platform/os/Sync.h"
#include "tests/support/NoMoreThreads.h"

#include <atomic>
#include <gtest/gtest.h>

namespace {

struct Work {
    std::atomic<int> runs{0};
    HANDLE mayEnd = CreateEventA(nullptr, 1, 0, nullptr);
    ~Work() { CloseHandle(mayEnd); }

    static unsigned Count(void* work) {
        ++static_cast<Work*>(work)->runs;
        return 0;
    }
    static unsigned CountAndWait(void* work) {
        ++static_cast<Work*>(work)->runs;
        WaitForSingleObject(static_cast<Work*>(work)->mayEnd, INFINITE);
        return 0;
    }
    static unsigned TakeMutex(void* mutex) { return WaitForSingleObject(*static_cast<HANDLE*>(mutex), INFINITE); }
};

TEST(WorkerThread, RunsNothingBeforeResume) {
    Work work;
    qfc::WorkerThread thread(&Work::Count, &work);
    ASSERT_TRUE(thread.IsCreated());
    EXPECT_EQ(WaitForSingleObject(thread.Handle(), 1), WAIT_TIMEOUT);
    EXPECT_EQ(work.runs, 0);
    EXPECT_EQ(thread.Resume(), 1u);
    EXPECT_EQ(WaitForSingleObject(thread.Handle(), INFINITE), WAIT_OBJECT_0);
    EXPECT_EQ(work.runs, 1);
}

TEST(WorkerThread, ResumeTellsTheCountBefore_AndRunsOnce) {
    Work work;
    qfc::WorkerThread thread(&Work::Count, &work);
    EXPECT_EQ(thread.Resume(), 1u);
    EXPECT_EQ(thread.Resume(), 0u);
    WaitForSingleObject(thread.Handle(), INFINITE);
    EXPECT_EQ(work.runs, 1);
}

TEST(WorkerThread, HandleIsSignalledOnlyWhenTheProcedureHasReturned) {
    Work work;
    qfc::WorkerThread thread(&Work::CountAndWait, &work);
    thread.Resume();
    EXPECT_EQ(WaitForSingleObject(thread.Handle(), 1), WAIT_TIMEOUT);
    SetEvent(work.mayEnd);
    EXPECT_EQ(WaitForSingleObject(thread.Handle(), INFINITE), WAIT_OBJECT_0);
    EXPECT_EQ(WaitForSingleObject(thread.Handle(), INFINITE), WAIT_OBJECT_0);
}

TEST(WorkerThread, DestructorJoins) {
    Work work;
    {
        qfc::WorkerThread thread(&Work::Count, &work);
        thread.Resume();
    }
    EXPECT_EQ(work.runs, 1);
}

TEST(WorkerThread, NeverResumed_EndsWithoutRunning) {
    Work work;
    { const qfc::WorkerThread thread(&Work::Count, &work); }
    EXPECT_EQ(work.runs, 0);
}

TEST(WorkerThread, WithoutProcedure_IsNotCreated) {
    qfc::WorkerThread thread(nullptr, nullptr);
    EXPECT_FALSE(thread.IsCreated());
    EXPECT_EQ(thread.Handle(), nullptr);
    EXPECT_EQ(thread.Resume(), 0xFFFFFFFFu);
    EXPECT_EQ(WaitForSingleObject(thread.Handle(), INFINITE), WAIT_FAILED);
}

TEST(WorkerThread, HandleIsNoEvent) {
    Work work;
    const qfc::WorkerThread thread(&Work::Count, &work);
    EXPECT_EQ(SetEvent(thread.Handle()), 0);
    EXPECT_EQ(GetLastError(), ERROR_INVALID_HANDLE);
}

TEST(WorkerThread, HasAbandonedItsMutexesWhenItsHandleIsSignalled) {
    HANDLE mutex = CreateMutexA(nullptr, 0, nullptr);
    qfc::WorkerThread thread(&Work::TakeMutex, &mutex);
    thread.Resume();
    WaitForSingleObject(thread.Handle(), INFINITE);
    EXPECT_EQ(WaitForSingleObject(mutex, 0), WAIT_ABANDONED);
    ReleaseMutex(mutex);
    CloseHandle(mutex);
}

TEST(WorkerThread, ThatTheSystemDoesNotGive_IsNotCreated) {
    Work work;
    const qfc::test::NoMoreThreads none;
    qfc::WorkerThread thread(&Work::Count, &work);
    EXPECT_EQ(GetLastError(), ERROR_NOT_ENOUGH_MEMORY);
    EXPECT_FALSE(thread.IsCreated());
    EXPECT_EQ(thread.Handle(), nullptr);
    EXPECT_EQ(thread.Resume(), 0xFFFFFFFFu);
}

}  // namespace
