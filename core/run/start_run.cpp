// core/run/start_run.cpp
#include "core/run/start_run.h"

#include <chrono>
#include <mutex>

#include "core/detached_threads.h"
#include "core/exit_reason.h"
#include "core/log.h"
#include "core/parameters.h"
#include "core/run/run_time.h"
#include "core/run_flags.h"
#include "feed/qnh_reader.h"
#include "feed/sample_queue.h"
#include "feed/traffic_reader.h"
#include "platform/clock.h"
#include "window/window_state.h"

using namespace std::chrono_literals;

namespace {

constexpr auto simulatorLook = 100ms;
/// The weather comes first, so that the first traffic lines find a pressure.
constexpr auto trafficAfterWeather = 2s;
constexpr auto trafficLook = 100ms;
constexpr int trafficLooks = 150;

/// False when the run is to stop.
bool waitForSimulator() {
    while (!gf_isStopping()) {
        if (simRunning && !simFailed) {
            return true;
        }
        platform::sleepFor(simulatorLook);
    }
    return false;
}

void startReaders() {
    const bool local = gRealTrafficHere;
    gf_startDetached("QNH Reader", [local] { runQnhReader(weatherPort, local); });
    platform::sleepFor(trafficAfterWeather);
    gf_startDetached("Traffic Reader", [local] { runTrafficReader(trafficPort, local); });
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
    repaintWindow();
}

} // namespace

bool lf_startRun() {
    darkenLamps();
    if (!waitForSimulator()) {
        return false;
    }
    if (!gRealTrafficHere || AEROWINX.value) {
        gWindowState.realTrafficLit = true;
    }
    if (gf_isStopping()) {
        return false;
    }
    gWindowState.realTrafficWaiting = false;
    repaintWindow();
    if (AEROWINX.value) {
        gRealTrafficHistoric = false;
    }
    if (gf_isStopping()) {
        return false;
    }
    {
        const std::lock_guard lock(gTrafficMutex);
        gAcceptSamples = false;
    }
    startReaders();
    waitForTraffic();
    gf_setWeekSlot();
    return true;
}
