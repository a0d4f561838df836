// sim/simulator_link.cpp
#include "sim/simulator_link.h"

#include <atomic>

#include <fmt/format.h>

#include "core/exit_reason.h"
#include "core/log.h"
#include "core/program_info.h"
#include "core/run_flags.h"
#include "window/window_state.h"

std::mutex simLock;
HANDLE simHandle = nullptr;

namespace {

// How long a simulator takes to come back to its senses.
constexpr int delayAfterErrorSeconds = 9;
constexpr int delayAfterNewFlightSeconds = 30;

std::atomic<bool> goneTold{false};

void stopUnlessStopping(ExitReason reason, int restartDelaySeconds) {
    if (!gf_isStopping()) {
        gf_stopRun(reason, restartDelaySeconds);
    }
}

} // namespace

bool canSend() {
    return simHandle != nullptr && !simFailed;
}

void requestFailed() {
    showMessage("SimConnect request error", LogCopy::yes);
    simFailed = true;
    stopUnlessStopping(ExitReason::simConnectError, delayAfterErrorSeconds);
}

void simulatorGone() {
    if (goneTold.exchange(true)) {
        return;
    }
    simRunning = false;
    if (gf_isStopping()) {
        return;
    }
    log(fmt::format("{} Flight Simulator no longer connected, {} will stop ...", clockNow(), programName));
    gf_stopRun(ExitReason::simulatorClosed, 0);
}

void newFlightBegins() {
    stopUnlessStopping(ExitReason::newFlight, delayAfterNewFlightSeconds);
}

void resetSimulatorLink() {
    goneTold = false;
}
