// core/run/start_run.cpp
#include "core/run/start_run.h"

#include <chrono>
#include <functional>
#include <mutex>

#include "core/detached_threads.h"
#include "core/exit_reason.h"
#include "core/log.h"
#include "core/parameters.h"
#include "core/run/run_time.h"
#include "core/run_flags.h"
#include "engine/slot.h"
#include "feed/qnh_reader.h"
#include "feed/real_traffic_steps.h"
#include "feed/sample_queue.h"
#include "feed/traffic_reader.h"
#include "platform/clock.h"
#include "sim/session.h"
#include "sim/user_state.h"
#include "window/window_state.h"

using namespace std::chrono_literals;

namespace {

constexpr auto simulatorLook = 100ms;
constexpr auto firstPositionLook = 500ms;
constexpr auto identityLook = 200ms;
/// The weather comes first, so that the first traffic lines find a pressure.
constexpr auto trafficAfterWeather = 2s;
constexpr auto readerLook = 100ms;
constexpr auto trafficLook = 100ms;
constexpr int trafficLooks = 150;

/// Looks at the condition until it holds, with a sleep after each look; false when the run is to stop.
bool waitUntil(const std::function<bool()>& holds, std::chrono::milliseconds look) {
    while (!gf_isStopping()) {
        if (holds()) {
            return true;
        }
        platform::sleepFor(look);
    }
    return false;
}

/// Each look asks for the position, whose answer the next look sees.
bool waitForPosition(bool (*suffices)(), std::chrono::milliseconds look) {
    return waitUntil(
        [suffices] {
            gUserState = requestUserPosition();
            return isPosition(positionOf(gUserState)) && suffices();
        },
        look);
}

/// The simulator's flight runs, and the user's aircraft is known: where it is, whether on the ground, and what it is.
/// False when the run is to stop.
bool waitForSimulator() {
    if (!waitUntil([] { return simRunning && !simFailed; }, simulatorLook)) {
        return false;
    }
    requestUserGroundEachSecond();
    if (!waitForPosition([] { return userOnGroundKnown.load(); }, firstPositionLook)) {
        return false;
    }
    requestUserIdentity();
    return waitForPosition([] { return true; }, identityLook);
}

/// False when the run is to stop: who closes between the two readers does not wait for traffic any more.
bool startReaders() {
    const bool local = gRealTrafficHere;
    gf_startDetached("QNH Reader", [local] { runQnhReader(weatherPort, local); });
    const platform::SteadyTime begin = platform::steadyNow();
    if (!waitUntil([begin] { return platform::steadyNow() - begin >= trafficAfterWeather; }, readerLook)) {
        return false;
    }
    gf_startDetached("Traffic Reader", [local] { runTrafficReader(trafficPort, local); });
    return true;
}

/// The stop flags are not looked at: a region without traffic and a closing user both get the full wait.
void waitForTraffic() {
    for (int look = 0; look < trafficLooks && gTrafficReader.lastFeedTime == 0; ++look) {
        platform::sleepFor(trafficLook);
    }
    if (gTrafficReader.lastFeedTime == 0) {
        log("No traffic in this region?");
    }
}

void darkenLamps() {
    gWindowState.realTrafficLit = false;
    showSimConnected(false);
    showSimFlightRunning(false);
    repaintWindow();
}

void meetRealTraffic() {
    if (AEROWINX.value) {
        gRealTrafficHistoric = false;
    }
    connectRealTraffic();
    sendSimTime();
}

} // namespace

bool lf_startRun() {
    darkenLamps();
    resetEngine();
    startSimClient();
    if (!waitForSimulator()) {
        return false;
    }
    openRealTrafficLink();
    if (gf_isStopping()) {
        return false;
    }
    gWindowState.realTrafficWaiting = false;
    repaintWindow();
    meetRealTraffic();
    if (gf_isStopping()) {
        return false;
    }
    {
        const std::lock_guard lock(gTrafficMutex);
        gAcceptSamples = false;
    }
    if (!startReaders()) {
        return false;
    }
    sendUserState();
    gTrafficReader.setUserLatLon(positionOf(gUserState));
    waitForTraffic();
    gf_setWeekSlot();
    gf_flushLog(); // who the run has connected to is on the disk before the first aircraft
    return true;
}
