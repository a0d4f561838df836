// tests/platform/clock_test.cpp
#include "platform/clock.h"

#include <gtest/gtest.h>

#include <thread>
#include <vector>

#include "platform/timer_resolution.h"

using namespace std::chrono_literals;
using platform::ManualClock;
using platform::steadyNow;
using platform::wallNow;

namespace {

const platform::WallTime someDay{std::chrono::seconds(1'666'955'045)};

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

TEST(Clock, aSleepLastsAtLeastItsLength) {
    const platform::TimerResolution resolution(1);
    const auto before = steadyNow();
    platform::sleepFor(5ms);
    EXPECT_GE(steadyNow() - before, 5ms);
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

TEST(TimerResolution, ofAMillisecondIsGiven) {
    EXPECT_TRUE(platform::TimerResolution(1).given());
}

TEST(TimerResolution, ofNothingIsNotGiven) {
    EXPECT_FALSE(platform::TimerResolution(0).given());
}
