// tests/liveries/scan_tasks_test.cpp
#include "liveries/scan_tasks.h"

#include <atomic>
#include <future>
#include <list>
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

class ScanTasksThreads : public testing::Test {
protected:
    void TearDown() override { gf_waitForDetachedThreads(std::chrono::seconds(10)); }
};

ScanTasks::Task giving(const std::string& title) {
    return [title] { return FolderFinds{{{"KLM", "A320", title, "", 1, false}}, {}}; };
}

bool goOn() {
    return true;
}

/// What all tasks gave.
std::list<Livery> takeAll(ScanTasks& tasks) {
    std::list<Livery> all;
    while (!tasks.isIdle()) {
        all.splice(all.end(), tasks.takeOldest().value().liveries);
    }
    return all;
}

} // namespace

TEST_F(ScanTasksThreads, giveTheirListsInTheOrderOfTheirStart) {
    ScanTasks tasks(3, goOn);
    std::vector<std::string> expected;
    for (int i = 0; i < 200; ++i) {
        expected.push_back(std::to_string(i));
        ASSERT_TRUE(tasks.start(giving(expected.back())));
    }
    EXPECT_EQ(titlesOf(takeAll(tasks)), expected);
}

TEST_F(ScanTasksThreads, neverMoreOfThemRunThanMay) {
    constexpr int atMost = 2;
    std::atomic<int> running = 0;
    std::atomic<int> most = 0;
    ScanTasks tasks(atMost, goOn);
    for (int i = 0; i < 200; ++i) {
        tasks.start([&] {
            const int now = ++running;
            int seen = most;
            while (now > seen && !most.compare_exchange_weak(seen, now)) {
            }
            std::this_thread::yield();
            --running;
            return FolderFinds{};
        });
    }
    EXPECT_THAT(takeAll(tasks), IsEmpty());
    EXPECT_LE(most, atMost);
    EXPECT_GE(most, 1);
}

TEST_F(ScanTasksThreads, oneThatTakesTooLongIsGivenUp) {
    HeldTask held;
    platform::ManualClock clock(platform::WallTime{});
    int seconds = 0;
    bool isHeld = false;
    ScanTasks tasks(1, [&] {
        if (isHeld) {
            clock.advance(std::chrono::seconds(1));
            ++seconds;
        }
        return true;
    });
    ASSERT_TRUE(tasks.start(held.task()));
    isHeld = true;
    EXPECT_EQ(messageOf([&] { tasks.takeOldest(); }), "Future wait timed out after 10 seconds");
    EXPECT_EQ(seconds, 10);
    EXPECT_THAT(tasks.abandon(), IsEmpty());
    EXPECT_TRUE(tasks.isIdle());
    isHeld = false;
    ASSERT_TRUE(tasks.start(giving("next")));
    EXPECT_THAT(titlesOf(takeAll(tasks)), ElementsAre("next")) << "though the thread is still held";
}

TEST_F(ScanTasksThreads, aWaitEndsWhenItIsTold) {
    HeldTask held;
    bool goesOn = true;
    ScanTasks tasks(1, [&goesOn] { return goesOn; });
    ASSERT_TRUE(tasks.start(held.task()));
    goesOn = false;
    EXPECT_FALSE(tasks.start(giving("never")));
    EXPECT_FALSE(tasks.takeOldest());
    EXPECT_THAT(tasks.abandon(), IsEmpty());
}

TEST_F(ScanTasksThreads, oneThatOutlivesItsScanEndsByItself) {
    HeldTask held;
    {
        ScanTasks tasks(1, goOn);
        ASSERT_TRUE(tasks.start(held.task()));
    }
    held.letGo();
    EXPECT_TRUE(gf_waitForDetachedThreads(std::chrono::seconds(10)));
}

TEST_F(ScanTasksThreads, theyAreHandedOutAheadOfTheThreads) {
    HeldTask held;
    ScanTasks tasks(1, goOn);
    ASSERT_TRUE(tasks.start(held.task()));
    for (const char* title : {"a", "b", "c"}) {
        ASSERT_TRUE(tasks.start(giving(title)));
    }
    held.letGo();
    EXPECT_THAT(titlesOf(takeAll(tasks)), ElementsAre("a", "b", "c"));
}

TEST_F(ScanTasksThreads, noneBeginsAfterItsScan) {
    HeldTask held;
    std::atomic<int> begun = 0;
    {
        ScanTasks tasks(1, goOn);
        ASSERT_TRUE(tasks.start(held.task()));
        held.waitUntilBegun();
        for (int i = 0; i < 3; ++i) {
            ASSERT_TRUE(tasks.start([&begun] { return ++begun, FolderFinds{}; }));
        }
    }
    held.letGo();
    EXPECT_TRUE(gf_waitForDetachedThreads(std::chrono::seconds(10)));
    EXPECT_EQ(begun, 0);
}

TEST_F(ScanTasksThreads, whatIsFinishedIsNotLostWhenTheRestIsGivenUp) {
    std::promise<void> isLast;
    ScanTasks tasks(1, goOn);
    ASSERT_TRUE(tasks.start(giving("first")));
    ASSERT_TRUE(tasks.start(giving("second")));
    ASSERT_TRUE(tasks.start([&isLast] { return isLast.set_value(), FolderFinds{}; }));
    isLast.get_future().wait();
    EXPECT_THAT(titlesOf(tasks.abandon()), ElementsAre("first", "second"));
    EXPECT_TRUE(tasks.isIdle());
}

TEST_F(ScanTasksThreads, fourForEachThreadAreEnoughAhead) {
    ScanTasks tasks(2, goOn);
    for (int i = 0; i < 8; ++i) {
        EXPECT_FALSE(tasks.isFull());
        ASSERT_TRUE(tasks.start(giving("one")));
    }
    EXPECT_TRUE(tasks.isFull());
    ASSERT_TRUE(tasks.takeOldest());
    EXPECT_FALSE(tasks.isFull());
}

TEST_F(ScanTasksThreads, aSleepOfTheMachineIsNoTimeThatATaskHad) {
    HeldTask held;
    platform::ManualClock clock(platform::WallTime{});
    int looks = 0;
    ScanTasks tasks(1, [&] {
        if (++looks <= 3) {
            clock.advance(std::chrono::hours(8));
        }
        if (looks == 3) {
            held.letGo();
        }
        return true;
    });
    ASSERT_TRUE(tasks.start(held.task()));
    looks = 0;
    EXPECT_TRUE(tasks.takeOldest());
    EXPECT_GE(looks, 3);
}

TEST_F(ScanTasksThreads, aQuestionIsAnsweredBesideTheWaiting) {
    ScanTasks tasks(1, goOn);
    const auto asking = std::this_thread::get_id();
    EXPECT_EQ(tasks.answerOf([asking] { return std::this_thread::get_id() != asking; }), true);
    EXPECT_TRUE(tasks.isIdle());
}

TEST_F(ScanTasksThreads, aQuestionThatNobodyAnswersIsGivenUp) {
    HeldTask held;
    platform::ManualClock clock(platform::WallTime{});
    ScanTasks tasks(1, [&clock] {
        clock.advance(std::chrono::seconds(1));
        return true;
    });
    EXPECT_EQ(messageOf([&] { tasks.answerOf(held.task()); }), "Future wait timed out after 10 seconds");
}

TEST_F(ScanTasksThreads, aQuestionIsNotWaitedForOnceItIsTold) {
    HeldTask held;
    ScanTasks tasks(1, [] { return false; });
    EXPECT_FALSE(tasks.answerOf(held.task()));
}

/// Without the thread sanitizer, which does not see how the library counts who holds an exception.
class FailingScanTask : public ScanTasksThreads {};

TEST_F(FailingScanTask, costsItself) {
    const auto fail = []() -> FolderFinds { throw std::runtime_error("no memory"); };
    ScanTasks tasks(1, goOn);
    ASSERT_TRUE(tasks.start(fail));
    ASSERT_TRUE(tasks.start(giving("next")));
    EXPECT_EQ(messageOf([&] { tasks.takeOldest(); }), "no memory");
    EXPECT_THAT(titlesOf(takeAll(tasks)), ElementsAre("next"));
    std::promise<void> isLast;
    ASSERT_TRUE(tasks.start(fail));
    ASSERT_TRUE(tasks.start(giving("kept")));
    ASSERT_TRUE(tasks.start([&isLast] { return isLast.set_value(), FolderFinds{}; }));
    isLast.get_future().wait();
    EXPECT_THAT(titlesOf(tasks.abandon()), ElementsAre("kept"));
}
