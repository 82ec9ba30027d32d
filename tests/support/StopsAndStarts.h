#pragma once

#include "service/QFCLibraryManager.h"

#include <atomic>
#include <gtest/gtest.h>
#include <thread>

namespace qfc::test {

// Makes the call again and again on a thread of its own while the running service is stopped and started; returns when
// the last call has ended. At least one call ends in each turn, so one that hangs hangs the test.
template <typename Call>
void CallAgainstStopsAndStarts(const Call& call) {
    constexpr int kTurns = 30;
    std::atomic<bool> done = false;
    std::atomic<int> answered = 0;
    std::thread host([&] {
        for (; !done; ++answered) call();
    });
    for (int turn = 0; turn < kTurns; ++turn) {
        const int nBefore = answered;
        while (answered == nBefore) std::this_thread::yield();
        EXPECT_EQ(QFCLibraryManager::fnStopService(), 1);
        EXPECT_EQ(QFCLibraryManager::fnStartService(), 1);
    }
    done = true;
    host.join();
}

}  // namespace qfc::test
