#include "core/run/run_loop.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <mutex>
#include <thread>
#include <vector>

#include "core/exit_reason.h"
#include "core/log.h"
#include "core/run/feed_lamps.h"
#include "core/run_flags.h"
#include "core/slot_clock.h"
#include "core/week_slot.h"
#include "engine/aircraft_tables.h"
#include "feed/qnh_reader.h"
#include "feed/sample_queue.h"
#include "feed/traffic_reader.h"
#include "liveries/livery_matching.h"
#include "platform/clock.h"
#include "tests/support/log_capture.h"
#include "tests/support/program_run.h"
#include "window/window_state.h"

using namespace std::chrono;
using namespace std::chrono_literals;

namespace {

constexpr platform::WallTime noon = sys_days(2026y / November / 21) + 12h;

class RunLoop : public testing::Test {
protected:
    RunLoop() {
        resetProgram();
        simRunning = true;
    }
    ~RunLoop() override { resetProgram(); }

    static bool accepts() {
        const std::lock_guard lock(gTrafficMutex);
        return gAcceptSamples;
    }

    static std::size_t queued() {
        const std::lock_guard lock(gTrafficMutex);
        return gLiveSampleQueue.size();
    }

    static void queue(int records) {
        const std::lock_guard lock(gTrafficMutex);
        for (int i = 0; i < records; ++i) {
            gLiveSampleQueue.push(FeedRecord{});
        }
    }

    /// One second of the simulator.
    static bool second() {
        secondPulse = true;
        return gf_tickStep();
    }

    static void seconds(int count) {
        for (int i = 0; i < count; ++i) {
            ASSERT_TRUE(second());
        }
    }

    LogCapture log;
    platform::ManualClock clock{noon};
};

TEST_F(RunLoop, aTickRaisesTheSlotClockByOneAndTakesAtMostTwoRecords) {
    queue(5);
    EXPECT_TRUE(gf_tickStep());
    EXPECT_EQ(slotClock, 1);
    EXPECT_EQ(queued(), 3U);
    EXPECT_TRUE(gf_tickStep());
    EXPECT_TRUE(gf_tickStep());
    EXPECT_EQ(queued(), 0U);
    EXPECT_EQ(slotClock, 3);
}

TEST_F(RunLoop, theSecondStepComesWithThePulseAlone) {
    EXPECT_TRUE(gf_tickStep());
    EXPECT_EQ(gSecondCounter, 0);
    EXPECT_TRUE(second());
    EXPECT_EQ(gSecondCounter, 1);
    EXPECT_FALSE(secondPulse) << "the tick takes the pulse";
    EXPECT_TRUE(gf_tickStep());
    EXPECT_EQ(gSecondCounter, 1);
}

TEST_F(RunLoop, aStopFlagEndsTheLoopWithAPulseAndWithout) {
    gf_stopRun(ExitReason::newFlight, 30);
    EXPECT_FALSE(gf_tickStep());
    EXPECT_FALSE(second());
    simRunning = false;
    EXPECT_FALSE(gf_tickStep());
}

TEST_F(RunLoop, aFlightThatStopsIsPausedOnceAndSaysSo) {
    ASSERT_TRUE(second());
    simRunning = false;
    EXPECT_TRUE(gf_tickStep());
    EXPECT_TRUE(gf_tickStep());
    EXPECT_TRUE(gFlightPaused);
    EXPECT_FALSE(accepts());
    const auto lines = log.lines();
    EXPECT_EQ(std::count(lines.begin(), lines.end(), "12:00:00 Flight not running"), 1);
}

TEST_F(RunLoop, aFailedLinkIsAPauseToo) {
    simFailed = true;
    EXPECT_TRUE(gf_tickStep());
    EXPECT_TRUE(gFlightPaused);
    EXPECT_EQ(slotClock, 0);
}

TEST_F(RunLoop, aFlightThatGoesOnIsResumedWithTheNextPulse) {
    simRunning = false;
    ASSERT_TRUE(gf_tickStep());
    simRunning = true;
    ASSERT_TRUE(gf_tickStep());
    EXPECT_TRUE(gFlightPaused) << "records are accepted again with the first pulse, not before";
    EXPECT_FALSE(accepts());
    ASSERT_TRUE(second());
    EXPECT_FALSE(gFlightPaused);
    EXPECT_TRUE(accepts());
    EXPECT_TRUE(log.contains("12:00:00 Flight resumed"));
}

TEST_F(RunLoop, messagesAgeOnceASecondInFlightAndInAPause) {
    showMessage("Waiting", LogCopy::no);
    seconds(12);
    simRunning = false;
    for (int tick = 0; tick < 1200; ++tick) {
        ASSERT_TRUE(gf_tickStep());
    }
    EXPECT_EQ(shownMessage(), "Waiting");
    for (int tick = 0; tick < 100; ++tick) {
        ASSERT_TRUE(gf_tickStep());
    }
    EXPECT_EQ(shownMessage(), "");
}

TEST_F(RunLoop, theAircraftInTheSimulatorAreCountedOnceASecond) {
    gWindowState.liveAircraft = 5;
    gf_tickStep();
    EXPECT_EQ(gWindowState.liveAircraft, 5);
    second();
    EXPECT_EQ(gWindowState.liveAircraft, 0);
}

TEST_F(RunLoop, theAircraftInTheSimulatorAreCountedInAPauseToo) {
    liveTable.resize(3);
    liveTable[0].lifeState = LifeState::active;
    liveTable[1].lifeState = LifeState::adding2sim;
    liveTable[2].lifeState = LifeState::active;
    simRunning = false;
    for (int tick = 0; tick < 100; ++tick) {
        gf_tickStep();
    }
    EXPECT_EQ(gWindowState.liveAircraft, 2);
}

TEST_F(RunLoop, theWeekSlotFollowsTheClock) {
    ASSERT_TRUE(second());
    EXPECT_EQ(unpackedWeekSlot(gWeekSlot), (WeekSlot{6, 24}));
    clock.advance(30min);
    ASSERT_TRUE(second());
    EXPECT_EQ(unpackedWeekSlot(gWeekSlot), (WeekSlot{6, 25}));
}

TEST_F(RunLoop, theWeekSlotFollowsTheFeedWhenThatIsOfAnotherTime) {
    const auto feedTime = sys_days(2026y / November / 16) + 1h;
    gTrafficReader.lastFeedTime = duration<double>(feedTime.time_since_epoch()).count();
    ASSERT_TRUE(second());
    EXPECT_EQ(unpackedWeekSlot(gWeekSlot), (WeekSlot{6, 24}));
    gRealTrafficHistoric = true;
    ASSERT_TRUE(second());
    EXPECT_EQ(unpackedWeekSlot(gWeekSlot), (WeekSlot{1, 2}));
    gTrafficReader.lastFeedTime = 0;
    ASSERT_TRUE(second());
    EXPECT_EQ(unpackedWeekSlot(gWeekSlot), (WeekSlot{6, 24})) << "no time stamp seen yet";
}

TEST_F(RunLoop, theSecondCounterWrapsAtADayOnly) {
    seconds(86399);
    EXPECT_EQ(gSecondCounter, 86399);
    seconds(1);
    EXPECT_EQ(gSecondCounter, 0);
    seconds(1);
    EXPECT_EQ(gSecondCounter, 1);
}

TEST_F(RunLoop, whoFoundNoLiveryIsListedEvery1200Seconds) {
    NoMatchList.insert("KLM A320 PH-ABC");
    seconds(1199);
    EXPECT_FALSE(log.contains("No match found for:"));
    seconds(1);
    EXPECT_TRUE(log.contains("No match found for:"));
    EXPECT_TRUE(log.contains("KLM A320 PH-ABC"));
    NoMatchList = {"DLH A320 D-ABCD"};
    seconds(1200);
    EXPECT_TRUE(log.contains("DLH A320 D-ABCD"));
}

TEST_F(RunLoop, whoFoundNoLiveryMayTryAgainWithin30SecondsOfADeeperMatching) {
    NoMatchList.insert("KLM A320 PH-ABC");
    hexidLiveries[20000] = "Some Livery";
    seconds(29);
    gf_requestRematch();
    EXPECT_EQ(NoMatchList.size(), 1U);
    seconds(1);
    EXPECT_TRUE(NoMatchList.empty());
    EXPECT_EQ(hexidLiveries.size(), 1U) << "who has a livery keeps it";
    NoMatchList.insert("KLM A320 PH-ABC");
    seconds(30);
    EXPECT_EQ(NoMatchList.size(), 1U) << "the wish is used up";
}

TEST_F(RunLoop, aRematchWaitsForAMultipleOf30) {
    NoMatchList.insert("KLM A320 PH-ABC");
    gf_requestRematch();
    seconds(29);
    EXPECT_EQ(NoMatchList.size(), 1U);
    seconds(1);
    EXPECT_TRUE(NoMatchList.empty());
}

TEST_F(RunLoop, aResetForgetsARematch) {
    gf_requestRematch();
    gf_resetRunLoop();
    NoMatchList.insert("KLM A320 PH-ABC");
    seconds(30);
    EXPECT_EQ(NoMatchList.size(), 1U);
}

TEST_F(RunLoop, theMatchesAreSummedUpOnceADayAndTheLiveOnesForgotten) {
    MatchesAtStep[2] = 77;
    hexidLiveries[20000] = "Some Livery";
    gSecondCounter = 86399 - 1200;
    seconds(1200);
    EXPECT_FALSE(log.contains("  2: 77"));
    EXPECT_EQ(hexidLiveries.size(), 1U);
    seconds(1);
    EXPECT_TRUE(log.contains("  2: 77"));
    EXPECT_TRUE(hexidLiveries.empty());
}

TEST_F(RunLoop, theFeedLampsAreCheckedAtSecond59) {
    gWindowState.realTrafficLit = true;
    gWindowState.trafficLamp = FeedLamp::flowing;
    gWindowState.weatherLamp = FeedLamp::flowing;
    seconds(58);
    EXPECT_EQ(gWindowState.trafficLamp, FeedLamp::flowing);
    seconds(1);
    EXPECT_EQ(gWindowState.trafficLamp, FeedLamp::noData);
    EXPECT_EQ(gWindowState.weatherLamp, FeedLamp::noData);
}

TEST_F(RunLoop, aMultipleOf5NeverReachesTheCheckOf59) {
    gSecondCounter = 294;
    gWindowState.realTrafficLit = true;
    gWindowState.trafficLamp = FeedLamp::flowing;
    gWindowState.weatherLamp = FeedLamp::flowing;
    seconds(1);
    ASSERT_EQ(gSecondCounter, 295);
    EXPECT_EQ(gWindowState.trafficLamp, FeedLamp::flowing);
}

TEST_F(RunLoop, aTimeStampThatNoClockCanHoldGivesNoWeekday) {
    gRealTrafficHistoric = true;
    for (const double stamp : {1e300, -1e300, -1.0, 1.8e12}) {
        gTrafficReader.lastFeedTime = stamp;
        ASSERT_TRUE(second());
        EXPECT_EQ(unpackedWeekSlot(gWeekSlot).weekday, -1) << stamp;
    }
}

TEST_F(RunLoop, aYellowLampIsLookedAtEvery15Seconds) {
    gWindowState.realTrafficLit = true;
    gWindowState.trafficLamp = FeedLamp::noData;
    gWindowState.trafficAlive = false;
    gTrafficReader.datagramCount = 7;
    seconds(14);
    EXPECT_EQ(gWindowState.trafficLamp, FeedLamp::noData);
    seconds(1);
    EXPECT_EQ(gWindowState.trafficLamp, FeedLamp::flowing);
    EXPECT_TRUE(gWindowState.trafficAlive);
}

TEST_F(RunLoop, theLogIsOnTheDiskEvery15Seconds) {
    seconds(14);
    log.lines(); // flushes
    ::log("waits");
    const auto isOnDisk = [] { return readFile("Log.txt").find("waits") != std::string::npos; };
    ASSERT_TRUE(gf_tickStep());
    EXPECT_FALSE(isOnDisk());
    seconds(1);
    EXPECT_TRUE(isOnDisk());
}

TEST_F(RunLoop, theStaticRefreshTakesTwo15SecondSteps) {
    seconds(3);
    gf_requestStaticRefresh();
    seconds(11);
    EXPECT_FALSE(gf_staticRefreshRuns());
    seconds(1);
    EXPECT_TRUE(gf_staticRefreshRuns());
    EXPECT_TRUE(gTrafficReader.collectCallSigns);
    showError("shown during the refresh");
    seconds(15);
    EXPECT_FALSE(gf_staticRefreshRuns());
    EXPECT_FALSE(gTrafficReader.collectCallSigns);
    EXPECT_EQ(shownError(), "");
    seconds(30);
    EXPECT_FALSE(gf_staticRefreshRuns()) << "the wish is used up";
}

TEST_F(RunLoop, aResetForgetsAStaticRefresh) {
    gf_requestStaticRefresh();
    seconds(15);
    ASSERT_TRUE(gf_staticRefreshRuns());
    gf_resetRunLoop();
    EXPECT_FALSE(gf_staticRefreshRuns());
    simRunning = true;
    seconds(30);
    EXPECT_FALSE(gf_staticRefreshRuns());
}

class FeedLamps : public RunLoop {
protected:
    FeedLamps() {
        gWindowState.realTrafficLit = true;
        gWindowState.trafficLamp = FeedLamp::flowing;
        gWindowState.weatherLamp = FeedLamp::flowing;
    }
};

TEST_F(FeedLamps, nothingIsCheckedWhileTheRealTrafficLampIsOut) {
    gWindowState.realTrafficLit = false;
    gf_checkFeedLamps();
    EXPECT_EQ(gWindowState.trafficLamp, FeedLamp::flowing);
}

TEST_F(FeedLamps, aFeedThatStandsStillTurnsYellowAndOneThatFlowsStaysGreen) {
    gTrafficReader.datagramCount = 10;
    gf_checkFeedLamps();
    EXPECT_EQ(gWindowState.trafficLamp, FeedLamp::flowing);
    EXPECT_EQ(gWindowState.weatherLamp, FeedLamp::noData);
    EXPECT_FALSE(gWindowState.weatherAlive);
    EXPECT_TRUE(gWindowState.trafficAlive);
}

TEST_F(FeedLamps, aFeedThatFlowsAgainTurnsGreen) {
    gf_checkFeedLamps();
    ASSERT_EQ(gWindowState.trafficLamp, FeedLamp::noData);
    ++gTrafficReader.datagramCount;
    gf_checkFeedLamps();
    EXPECT_EQ(gWindowState.trafficLamp, FeedLamp::flowing);
    EXPECT_TRUE(gWindowState.trafficAlive);
}

using Grid = RunLoop;

/// When each of `count` ticks came, counted from the first; before its end the step does what the test wants at that
/// tick.
template <typename AtTick>
std::vector<milliseconds> ticks(int count, AtTick atTick) {
    std::vector<milliseconds> times;
    const auto start = platform::steadyNow();
    gf_runTicks([&] {
        times.push_back(duration_cast<milliseconds>(platform::steadyNow() - start));
        atTick(static_cast<int>(times.size()));
        return static_cast<int>(times.size()) < count;
    });
    return times;
}

TEST_F(Grid, aTickThatTakesPartOfItsTimeKeepsTheGrid) {
    const auto times = ticks(4, [&](int) { clock.advance(7ms); });
    EXPECT_EQ(times, (std::vector<milliseconds>{0ms, 10ms, 20ms, 30ms}));
}

TEST_F(Grid, theGridLocksToTheSimulatorsPulse) {
    const auto times = ticks(5, [&](int tick) {
        if (tick == 2) {
            clock.advance(4ms);
            secondPulse = true;
        } else if (tick == 3) {
            clock.advance(16ms);
            secondPulse = true;
        } else {
            secondPulse = false;
        }
    });
    // The third tick came late at 36 ms with a pulse: the grid begins anew there.
    EXPECT_EQ(times, (std::vector<milliseconds>{0ms, 10ms, 20ms, 36ms, 46ms}));
}

TEST_F(Grid, ticksThatWereMissedByLessThanATenthOfASecondAreCaughtUp) {
    const auto times = ticks(5, [&](int tick) {
        if (tick == 1) {
            clock.advance(35ms);
        }
    });
    EXPECT_EQ(times, (std::vector<milliseconds>{0ms, 35ms, 35ms, 35ms, 40ms}));
}

TEST_F(Grid, aLongStepIsNotFollowedByABurst) {
    const auto times = ticks(4, [&](int tick) {
        if (tick == 1) {
            clock.advance(500ms);
        }
    });
    EXPECT_EQ(times, (std::vector<milliseconds>{0ms, 510ms, 520ms, 530ms}));
}

TEST_F(Grid, lessThanAMillisecondIsNotSlept) {
    const auto start = platform::steadyNow();
    std::vector<microseconds> times;
    gf_runTicks([&] {
        times.push_back(duration_cast<microseconds>(platform::steadyNow() - start));
        clock.advance(9500us);
        return times.size() < 3;
    });
    EXPECT_EQ(times, (std::vector<microseconds>{0us, 9500us, 20000us}));
}

TEST_F(Grid, theLoopTicksEvery10Milliseconds) {
    const auto start = platform::steadyNow();
    std::thread stopper([&] {
        while (slotClock < 1000) {
            std::this_thread::yield();
        }
        gf_stopRun(ExitReason::newFlight, 0);
    });
    gf_runLoop();
    stopper.join();
    // The first tick comes at once, every later one 10 ms after the one before.
    const auto elapsed = platform::steadyNow() - start;
    EXPECT_EQ(elapsed / 10ms, slotClock - 1);
}

TEST_F(Grid, theLoopBeginsWithSecond0AndAcceptsSamples) {
    gSecondCounter = 77;
    gf_stopRun(ExitReason::newFlight, 0);
    gf_runLoop();
    EXPECT_EQ(gSecondCounter, 0);
    EXPECT_TRUE(accepts());
}

} // namespace
