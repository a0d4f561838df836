#include "core/detached_threads.h"

#include <gtest/gtest.h>

#include <atomic>
#include <future>

#include "tests/support/eventually.h"

using namespace std::chrono_literals;

namespace {

TEST(DetachedThreads, theEndWaitsForAllOfThem) {
    std::atomic<int> done{0};
    for (int i = 0; i < 5; ++i) {
        gf_startDetached("test", [&] { ++done; });
    }
    EXPECT_TRUE(gf_waitForDetachedThreads(10s));
    EXPECT_EQ(done, 5);
}

TEST(DetachedThreads, theWaitEndsThoughOneIsStillIn) {
    std::promise<void> release;
    gf_startDetached("test", [&] { release.get_future().wait(); });
    EXPECT_FALSE(gf_waitForDetachedThreads(20ms));
    release.set_value();
    EXPECT_TRUE(gf_waitForDetachedThreads(10s));
}

TEST(DetachedThreads, oneOfThemWaitsForTheOthers) {
    std::promise<void> release;
    std::promise<bool> early;
    std::promise<bool> late;
    gf_startDetached("other", [&] { release.get_future().wait(); });
    gf_startDetached("waiting", [&] {
        early.set_value(gf_waitForDetachedThreads(20ms, 1));
        late.set_value(gf_waitForDetachedThreads(10s, 1));
    });
    EXPECT_FALSE(early.get_future().get());
    release.set_value();
    EXPECT_TRUE(late.get_future().get());
    EXPECT_TRUE(gf_waitForDetachedThreads(10s));
}

TEST(DetachedThreads, ofManyThatEndAtOnceEachRunsOnce) {
    constexpr int bunches = 100;
    constexpr int threadsOfEach = 20;
    std::atomic<int> runs = 0;
    for (int bunch = 0; bunch < bunches; ++bunch) {
        for (int i = 0; i < threadsOfEach; ++i) {
            gf_startDetached("short", [&runs] { ++runs; });
        }
        ASSERT_TRUE(gf_waitForDetachedThreads(testPatience)) << bunch;
        ASSERT_EQ(runs, (bunch + 1) * threadsOfEach);
    }
}

} // namespace
