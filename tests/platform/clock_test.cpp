// tests/platform/clock_test.cpp
#include "platform/clock.h"

#include <gtest/gtest.h>

#include <atomic>
#include <thread>
#include <vector>

#include "platform/timer_resolution.h"
#include "tests/support/eventually.h"

using namespace std::chrono_literals;
using platform::ManualClock;
using platform::steadyNow;
using platform::wallNow;

namespace {

const platform::WallTime someDay{std::chrono::seconds(1'666'955'045)};

/// A thread that sleeps once.
class Sleeper {
public:
    explicit Sleeper(std::chrono::steady_clock::duration length)
        : thread_([this, length] {
              const auto begin = steadyNow();
              platform::sleepFor(length);
              slept_ = steadyNow() - begin;
              awake_ = true;
          }) {}
    ~Sleeper() { thread_.join(); }
    Sleeper(const Sleeper&) = delete;
    Sleeper& operator=(const Sleeper&) = delete;

    bool isAwake() const { return awake_; }
    /// By the clock; once it is awake.
    std::chrono::steady_clock::duration slept() const { return slept_; }

private:
    std::chrono::steady_clock::duration slept_{};
    std::atomic<bool> awake_{false};
    std::thread thread_; // last: it uses the others
};

} // namespace

TEST(Clock, theWallClockIsTheSystems) {
    const auto before = std::chrono::system_clock::now();
    const auto now = wallNow();
    const auto after = std::chrono::system_clock::now();
    EXPECT_LE(before, now);
    EXPECT_LE(now, after);
}

TEST(Clock, theSteadyClockNeverGoesBack) {
    auto last = steadyNow();
    for (int i = 0; i < 1000; ++i) {
        const auto now = steadyNow();
        EXPECT_LE(last, now);
        last = now;
    }
}

TEST(Clock, aSleepLastsItsLengthToTheGrainOfTheTimer) {
    const platform::TimerResolution resolution(1);
    const auto before = steadyNow();
    platform::sleepFor(5ms);
    EXPECT_GE(steadyNow() - before, 4ms);
}

TEST(ManualClock, standsAtItsTimeUntilItIsMoved) {
    const ManualClock clock(someDay);
    const auto steady = steadyNow();
    EXPECT_EQ(wallNow(), someDay);
    EXPECT_EQ(wallNow(), someDay);
    EXPECT_EQ(steadyNow(), steady);
}

TEST(ManualClock, advancesBothClocks) {
    ManualClock clock(someDay);
    const auto steady = steadyNow();
    clock.advance(90s);
    EXPECT_EQ(wallNow(), someDay + 90s);
    EXPECT_EQ(steadyNow(), steady + 90s);
}

TEST(ManualClock, settingTheWallClockLeavesTheSteadyOne) {
    ManualClock clock(someDay);
    const auto steady = steadyNow();
    clock.setWall(someDay - 24h);
    EXPECT_EQ(wallNow(), someDay - 24h);
    EXPECT_EQ(steadyNow(), steady);
}

TEST(ManualClock, aSleepMovesBothClocksByItsLength) {
    const ManualClock clock(someDay);
    const auto steady = steadyNow();
    platform::sleepFor(250h);
    EXPECT_EQ(wallNow(), someDay + 250h);
    EXPECT_EQ(steadyNow(), steady + 250h);
}

TEST(ManualClock, aSleepOfNothingOrLessMovesNothing) {
    const ManualClock clock(someDay);
    platform::sleepFor(0ms);
    platform::sleepFor(-5s);
    EXPECT_EQ(wallNow(), someDay);
}

TEST(ManualClock, theSystemsTimeIsBackWhenItIsGone) {
    { const ManualClock clock(someDay); }
    EXPECT_GT(wallNow(), someDay + 24h);
}

TEST(ManualClockThreads, everySleepOfEveryThreadMovesTheTime) {
    const ManualClock clock(someDay);
    const auto steady = steadyNow();
    std::vector<std::thread> sleepers;
    for (int i = 0; i < 4; ++i) {
        sleepers.emplace_back([] {
            for (int round = 0; round < 1000; ++round) {
                platform::sleepFor(1ms);
            }
        });
    }
    for (std::thread& sleeper : sleepers) {
        sleeper.join();
    }
    EXPECT_EQ(wallNow(), someDay + 4s);
    EXPECT_EQ(steadyNow(), steady + 4s);
}

TEST(ManualClockThreads, aHeldSleepLastsUntilTheClockWasMovedPastItsEnd) {
    ManualClock clock(someDay);
    clock.hold();
    const Sleeper brief(1s);
    const Sleeper longer(1000h);
    EXPECT_TRUE(eventually([&] {
        clock.advance(100ms);
        return brief.isAwake();
    }));
    EXPECT_GE(brief.slept(), 1s);
    EXPECT_FALSE(longer.isAwake());
    EXPECT_TRUE(eventually([&] {
        clock.advance(400h);
        return longer.isAwake();
    }));
    EXPECT_GE(longer.slept(), 1000h);
    clock.release();
}

TEST(ManualClockThreads, aReleaseEndsEverySleepAndTheNextOnesMoveTheClockAgain) {
    ManualClock clock(someDay);
    clock.hold();
    {
        const Sleeper one(1h);
        const Sleeper other(2h);
        clock.release();
        EXPECT_TRUE(eventually([&] { return one.isAwake() && other.isAwake(); }));
        clock.advance(2h); // where the release failed, so that the threads end
    }
    const auto before = wallNow();
    platform::sleepFor(5s);
    EXPECT_EQ(wallNow(), before + 5s);
}

TEST(TimerResolution, ofAMillisecondIsGiven) {
    EXPECT_TRUE(platform::TimerResolution(1).given());
}

TEST(TimerResolution, ofNothingIsNotGiven) {
    EXPECT_FALSE(platform::TimerResolution(0).given());
}
