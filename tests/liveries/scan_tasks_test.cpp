// tests/liveries/scan_tasks_test.cpp
#include "liveries/scan_tasks.h"

#include <atomic>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include <gmock/gmock.h>

#include "core/detached_threads.h"
#include "platform/clock.h"
#include "tests/liveries/held_task.h"
#include "tests/liveries/scan_test.h"
#include "tests/support/message_of.h"

using testing::ElementsAre;
using testing::IsEmpty;

namespace {

ScanTasks::Task giving(const std::string& title) {
    return [title] { return std::list<Livery>{{"KLM", "A320", title, "", 1, false}}; };
}

bool goOn() {
    return true;
}

} // namespace

TEST(ScanTasksThreads, giveTheirListsInTheOrderOfTheirStart) {
    ScanTasks tasks(3, goOn);
    std::list<Livery> all;
    std::vector<std::string> expected;
    for (int i = 0; i < 200; ++i) {
        expected.push_back(std::to_string(i));
        ASSERT_TRUE(tasks.start(giving(expected.back()), all));
    }
    EXPECT_TRUE(tasks.collectAll(all));
    EXPECT_EQ(titlesOf(all), expected);
}

TEST(ScanTasksThreads, neverMoreOfThemRunThanMay) {
    constexpr int atMost = 2;
    std::atomic<int> running = 0;
    std::atomic<int> most = 0;
    ScanTasks tasks(atMost, goOn);
    std::list<Livery> all;
    for (int i = 0; i < 200; ++i) {
        tasks.start(
            [&] {
                const int now = ++running;
                int seen = most;
                while (now > seen && !most.compare_exchange_weak(seen, now)) {
                }
                std::this_thread::yield();
                --running;
                return std::list<Livery>{};
            },
            all);
    }
    EXPECT_TRUE(tasks.collectAll(all));
    EXPECT_LE(most, atMost);
    EXPECT_GE(most, 1);
}

TEST(ScanTasksThreads, oneThatTakesTooLongIsGivenUp) {
    HeldTask held;
    platform::ManualClock clock(platform::WallTime{});
    int seconds = 0;
    ScanTasks tasks(1, [&] {
        clock.advance(std::chrono::seconds(1));
        ++seconds;
        return true;
    });
    std::list<Livery> all;
    ASSERT_TRUE(tasks.start(held.task(), all));
    seconds = 0;
    EXPECT_EQ(messageOf([&] { tasks.collectAll(all); }), "Future wait timed out after 10 seconds");
    EXPECT_EQ(seconds, 10);
    tasks.abandon(all);
    EXPECT_TRUE(tasks.collectAll(all));
    EXPECT_THAT(all, IsEmpty());
}

TEST(ScanTasksThreads, aWaitEndsWhenItIsTold) {
    HeldTask held;
    bool goesOn = true;
    ScanTasks tasks(1, [&goesOn] { return goesOn; });
    std::list<Livery> all;
    ASSERT_TRUE(tasks.start(held.task(), all));
    goesOn = false;
    EXPECT_FALSE(tasks.start(giving("never"), all));
    EXPECT_FALSE(tasks.collectAll(all));
    EXPECT_THAT(all, IsEmpty());
}

TEST(ScanTasksThreads, oneThatOutlivesItsScanEndsByItself) {
    HeldTask held;
    std::list<Livery> all;
    {
        ScanTasks tasks(1, goOn);
        ASSERT_TRUE(tasks.start(held.task(), all));
    }
    held.letGo();
    EXPECT_TRUE(gf_waitForDetachedThreads(std::chrono::seconds(10)));
}

TEST(ScanTasksThreads, theyAreHandedOutAheadOfTheThreads) {
    HeldTask held;
    ScanTasks tasks(1, goOn);
    std::list<Livery> all;
    ASSERT_TRUE(tasks.start(held.task(), all));
    for (const char* title : {"a", "b", "c"}) {
        ASSERT_TRUE(tasks.start(giving(title), all));
    }
    held.letGo();
    EXPECT_TRUE(tasks.collectAll(all));
    EXPECT_THAT(titlesOf(all), ElementsAre("a", "b", "c"));
}

TEST(ScanTasksThreads, noneBeginsAfterItsScan) {
    HeldTask held;
    std::atomic<int> begun = 0;
    std::list<Livery> all;
    {
        ScanTasks tasks(1, goOn);
        ASSERT_TRUE(tasks.start(held.task(), all));
        held.waitUntilBegun();
        for (int i = 0; i < 3; ++i) {
            ASSERT_TRUE(tasks.start([&begun] { return ++begun, std::list<Livery>{}; }, all));
        }
    }
    held.letGo();
    EXPECT_TRUE(gf_waitForDetachedThreads(std::chrono::seconds(10)));
    EXPECT_EQ(begun, 0);
}
