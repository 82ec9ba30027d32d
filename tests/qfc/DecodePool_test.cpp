#include "hosts/qfc/media/DecodePool.h"

#include <future>
#include <gtest/gtest.h>
#include <set>

namespace {

using qfc::host::DecodedMedia;
using qfc::host::DecodePool;
using qfc::host::TimeLimit;

std::vector<std::string> Names(int count) {
    std::vector<std::string> names;
    for (int i = 0; i < count; ++i) names.push_back(std::to_string(i));
    return names;
}

DecodedMedia Named(const std::string& path) {
    DecodedMedia media;
    media.path = path;
    return media;
}

std::vector<std::string> TakeAll(DecodePool& pool) {
    std::vector<std::string> taken;
    while (const auto media = pool.Next()) taken.push_back(media->path);
    return taken;
}

TEST(DecodePool, ResultsComeInTheOrderOfTheFilesThoughALaterOneIsReadyFirst) {
    std::promise<void> secondDone;
    std::shared_future<void> second = secondDone.get_future().share();
    const std::atomic<bool> cancelled{false};
    DecodePool pool(Names(20), cancelled, {.threads = 2, .decode = [&](const std::string& path, TimeLimit) {
                                               if (path == "0") second.wait();
                                               if (path == "1") secondDone.set_value();
                                               return Named(path);
                                           }});
    EXPECT_EQ(TakeAll(pool), Names(20));
}

TEST(DecodePool, NoFilesGiveNoResults) {
    const std::atomic<bool> cancelled{false};
    DecodePool pool({}, cancelled, {.threads = 2});
    EXPECT_FALSE(pool.Next());
    EXPECT_FALSE(pool.Next());
}

TEST(DecodePool, NoMoreThanTheWindowIsBegunBeforeAResultIsTaken) {
    std::atomic<int> begun{0};
    std::atomic<int> taken{0};
    std::atomic<int> most{0};
    const std::atomic<bool> cancelled{false};
    DecodePool pool(Names(50), cancelled,
                    {.threads = 3, .window = 4, .decode = [&](const std::string& path, TimeLimit) {
                         const int ahead = ++begun - taken;
                         for (int seen = most; ahead > seen && !most.compare_exchange_weak(seen, ahead);) {
                         }
                         return Named(path);
                     }});
    while (true) {
        // Counted before it is taken: once it is, another may begin.
        ++taken;
        if (!pool.Next()) break;
    }
    EXPECT_LE(most, 4);
    EXPECT_EQ(begun, 50);
}

TEST(DecodePool, ADecoderThatThrowsGivesAnErrorForItsFileAlone) {
    const std::atomic<bool> cancelled{false};
    DecodePool pool(Names(3), cancelled,
                    {.threads = 2, .decode = [](const std::string& path, TimeLimit) -> DecodedMedia {
                         if (path == "1") throw std::runtime_error("broken in a new way");
                         return Named(path);
                     }});
    EXPECT_TRUE(pool.Next()->IsGood());
    const auto broken = pool.Next();
    EXPECT_EQ(broken->error, "broken in a new way");
    EXPECT_EQ(broken->path, "1");
    EXPECT_TRUE(pool.Next()->IsGood());
}

TEST(DecodePool, TheFlagEndsWaitingAndInterruptsWhatIsUnderWay) {
    std::atomic<bool> cancelled{false};
    std::atomic<int> begun{0};
    DecodePool pool(Names(100), cancelled,
                    {.threads = 2, .window = 8, .decode = [&](const std::string& path, TimeLimit limit) {
                         if (++begun == 3) cancelled = true;
                         while (path != "0" && !limit.IsCancelled()) std::this_thread::yield();
                         return Named(path);
                     }});
    TakeAll(pool);
    EXPECT_TRUE(cancelled);
    EXPECT_FALSE(pool.Next());
    EXPECT_LE(begun, 4);
}

TEST(DecodePool, ThePoolMayGoBeforeItsResultsAreTaken) {
    const std::atomic<bool> cancelled{false};
    std::promise<void> begun;
    {
        std::once_flag once;
        DecodePool pool(Names(100), cancelled, {.threads = 2, .decode = [&](const std::string& path, TimeLimit limit) {
                                                    std::call_once(once, [&] { begun.set_value(); });
                                                    while (!limit.IsCancelled()) std::this_thread::yield();
                                                    return Named(path);
                                                }});
        begun.get_future().wait();
    }
    SUCCEED();
}

TEST(DecodePool, EachFileGetsTheTimeThatIsSetForIt) {
    const std::atomic<bool> cancelled{false};
    DecodePool pool(
        Names(2), cancelled,
        {.threads = 1, .timePerFile = std::chrono::seconds(0), .decode = [](const std::string& path, TimeLimit limit) {
             DecodedMedia media = Named(path);
             if (limit.IsOver() && !limit.IsCancelled()) media.error = "out of time";
             return media;
         }});
    EXPECT_EQ(pool.Next()->error, "out of time");
    EXPECT_EQ(pool.Next()->error, "out of time");
}

}  // namespace
