// core/run/run_loop.cpp
#include "core/run/run_loop.h"

#include <algorithm>
#include <atomic>
#include <mutex>

#include <fmt/format.h>

#include "core/exit_reason.h"
#include "core/log.h"
#include "core/run/feed_lamps.h"
#include "core/run/run_time.h"
#include "core/run_flags.h"
#include "engine/aircraft_tables.h"
#include "engine/slot.h"
#include "feed/real_traffic_steps.h"
#include "feed/sample_queue.h"
#include "feed/traffic_reader.h"
#include "liveries/livery_matching.h"
#include "platform/clock.h"
#include "platform/timer_resolution.h"
#include "sim/frame_flush.h"
#include "sim/user_state.h"
#include "window/window_state.h"

using namespace std::chrono_literals;

namespace {

/// A grid that has fallen further behind than this starts anew instead of catching up tick by tick.
constexpr auto worstLag = 100ms;
constexpr int pauseTicks = 100;

// Seconds of gSecondCounter; chosen so that slow jobs fall on different seconds.
constexpr int briskJobs = 5;
constexpr int slowJobs = 15;
constexpr int rematchStep = 30;
constexpr int parkingMinute = 60;
constexpr int feedLampCheck = 59;
constexpr int noMatchReport = 1200;
constexpr int day = 86400;

constexpr int minutesToStaticParking = 20;

int pauseCounter = 0;
int minutesToNextParking = minutesToStaticParking;
std::atomic<bool> staticRefreshWanted{false};
std::atomic<bool> staticRefreshPhase{false};
std::atomic<bool> rematchWanted{false};

void setAcceptSamples(bool accept) {
    const std::lock_guard lock(gTrafficMutex);
    gAcceptSamples = accept;
}

void resumeFlight() {
    gFlightPaused = false;
    log(fmt::format("{} Flight resumed", clockNow()));
    setAcceptSamples(true);
}

void refreshCounters() {
    const auto isInSimulator = [](const LiveAircraft& live) { return live.lifeState == LifeState::active; };
    showLiveAircraft(static_cast<std::size_t>(std::count_if(liveTable.begin(), liveTable.end(), isInSimulator)));
}

void secondStep() {
    if (gFlightPaused) {
        resumeFlight();
    }
    ageMessage();
    refreshCounters();
    gf_setWeekSlot();
    ++gSecondCounter;
}

/// Entered at one 15-second step and left at the next, so that the call signs of 15 seconds are known by then.
void staticRefreshHandshake() {
    if (!staticRefreshWanted) {
        return;
    }
    if (!staticRefreshPhase) {
        staticRefreshPhase = true;
        gTrafficReader.clearSeenCallSigns();
        gTrafficReader.collectCallSigns = true;
        return;
    }
    staticRefreshPhase = false;
    gTrafficReader.collectCallSigns = false;
    clearError();
    staticRefreshWanted = false;
}

void minuteStep() {
    if (--minutesToNextParking < 1) {
        minutesToNextParking = minutesToStaticParking;
    }
}

void fifteenSecondStep(int second) {
    staticRefreshHandshake();
    if (gWindowState.trafficLamp == FeedLamp::noData || gWindowState.weatherLamp == FeedLamp::noData) {
        gf_checkFeedLamps();
    }
    if (second % rematchStep == 0 && rematchWanted.exchange(false)) {
        NoMatchList.clear();
    }
    if (second % parkingMinute == 0) {
        minuteStep();
    }
    if (second % noMatchReport == 0) {
        gf_noMatchReport();
    }
    if (second % day == 0) {
        gSecondCounter = 0;
        gf_matchingSummary();
        hexidLiveries.clear();
    }
    gf_flushLog();
}

void slowJobsOf(int second) {
    if (second % briskJobs != 0) {
        if (second % feedLampCheck == 0) {
            gf_checkFeedLamps();
        }
        return;
    }
    gTrafficReader.setUserLatLon(positionOf(gUserState));
    sendSimTime();
    if (second % slowJobs == 0) {
        fifteenSecondStep(second);
    }
}

void enterPause() {
    setAcceptSamples(false);
    // One that came with the pause would count as the first second of the resumed flight.
    secondPulse = false;
    gFlightPaused = true;
    pauseCounter = pauseTicks;
    dropPositions();
    log(fmt::format("{} Flight not running", clockNow()));
}

void pausedStep() {
    if (!gFlightPaused) {
        enterPause();
    }
    readInbox();
    --pauseCounter;
    if (pauseCounter % pauseTicks == 0) {
        ageMessage();
        sendUserState();
    }
    if (pauseCounter < 1) {
        pauseCounter = pauseTicks;
        refreshCounters();
        gf_setWeekSlot();
    }
}

} // namespace

bool gf_tickStep() {
    if (!simRunning || simFailed) {
        pausedStep();
        return !gf_isStopping();
    }
    lf_handleAddingStack();
    if (!secondPulse.exchange(false)) {
        // A frozen simulator sends no pulse; the flags count all the same.
        return !gf_isStopping();
    }
    secondStep();
    if (gf_isStopping()) {
        return false;
    }
    slowJobsOf(gSecondCounter);
    return true;
}

void gf_runTicks(const std::function<bool()>& step) {
    const platform::TimerResolution oneMillisecond(1);
    platform::SteadyTime deadline = platform::steadyNow() + tickLength;
    while (step()) {
        const platform::SteadyTime now = platform::steadyNow();
        if (now - deadline > worstLag) {
            deadline = now + tickLength;
        }
        if (deadline - now >= 1ms) {
            platform::sleepFor(deadline - now);
        }
        if (secondPulse) {
            deadline = platform::steadyNow();
        }
        deadline += tickLength;
    }
}

void gf_runLoop() {
    gf_checkFeedLamps();
    gSecondCounter = 0;
    gf_setWeekSlot();
    setAcceptSamples(true);
    gf_runTicks(gf_tickStep);
}

void gf_resetRunLoop() {
    pauseCounter = 0;
    minutesToNextParking = minutesToStaticParking;
    staticRefreshWanted = false;
    staticRefreshPhase = false;
    rematchWanted = false;
}

void gf_requestStaticRefresh() {
    staticRefreshWanted = true;
}

bool gf_staticRefreshRuns() {
    return staticRefreshPhase;
}

void gf_requestRematch() {
    rematchWanted = true;
}
