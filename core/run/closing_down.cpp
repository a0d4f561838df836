// core/run/closing_down.cpp
#include "core/run/closing_down.h"

#include <chrono>
#include <filesystem>
#include <mutex>
#include <stdexcept>

#include <fmt/format.h>

#include "core/detached_threads.h"
#include "core/exit_reason.h"
#include "core/log.h"
#include "core/parameter_file.h"
#include "core/parameters.h"
#include "core/program_info.h"
#include "core/run/run_reset.h"
#include "core/run_flags.h"
#include "feed/qnh_reader.h"
#include "feed/real_traffic_link.h"
#include "feed/sample_queue.h"
#include "feed/traffic_reader.h"
#include "liveries/livery_matching.h"
#include "platform/clock.h"
#include "platform/text_encoding.h"
#include "platform/window_system.h"
#include "sim/flight_plan.h"
#include "sim/session.h"
#include "sim/stand_requests.h"
#include "window/window_state.h"

using namespace std::chrono_literals;

namespace {

constexpr auto readersNoticeWithin = 500ms;
/// The readers look at their stop flag once a second.
constexpr auto readersLeaveWithin = 2s;
constexpr auto errorLook = 500ms;
constexpr auto newFlightPause = 10s;
/// The grain of the waits that the close button cuts short.
constexpr auto closeLook = 50ms;

/// Waits, but ends at once when the user closes; whether the full time has passed.
bool waitUnlessUserCloses(std::chrono::milliseconds duration) {
    const platform::SteadyTime end = platform::steadyNow() + duration;
    while (platform::steadyNow() < end) {
        if (gCloseButtonUsed) {
            return false;
        }
        platform::sleepFor(closeLook);
    }
    return !gCloseButtonUsed;
}

void stopReaders() {
    {
        const std::lock_guard lock(gTrafficMutex);
        gAcceptSamples = false;
    }
    stopSimClient();
    gTrafficReader.stopRequested = true;
    gQnhReader.stopRequested = true;
    platform::sleepFor(readersNoticeWithin);
}

void logTrafficLines() {
    if (const OutcomeCounts counts = gTrafficReader.lineCounter.counts(); !counts.empty()) {
        log(fmt::format("Traffic lines: {}", textOf(counts)));
    }
}

/// The error stays on the screen until the user has read it, or has typed the path that it asks for.
void letUserReadTheError() {
    while (!gUserClosing && gf_exitReason() != ExitReason::newSettings) {
        platform::sleepFor(errorLook);
    }
    if (gUserClosing) {
        showMessage(fmt::format("User closed {}", programName), LogCopy::yes);
    }
}

void emptyWhatLastsOneRun() {
    // A run that ended before its parameters were read leaves no file behind that holds these two alone.
    if (std::error_code ignored; !std::filesystem::exists(gf_parameterFile(), ignored)) {
        return;
    }
    for (StringParameter* parameter :
         {static_cast<StringParameter*>(&DESTINATION), static_cast<StringParameter*>(&BLOCK_CALLSIGN)}) {
        parameter->setValue({});
        saveParameter(*parameter);
    }
}

void stopEverything() {
    gf_settleExitReason();
    log(fmt::format("Exiting: {}", gf_exitReasonText(gf_exitReason())));
    refreshClosestStand();
    stopReaders();
    sayGoodbye();
    closeRealTrafficLink();
    logTrafficLines();
    if (gf_exitReason() == ExitReason::systemError) {
        letUserReadTheError();
    }
    hexidLiveries.clear();
    gf_removeFlightPlanFolder();
    emptyWhatLastsOneRun();
    gf_matchingSummary();
    gf_noMatchReport();
}

bool leadsToNewRun(ExitReason reason) {
    return reason == ExitReason::newSettings || reason == ExitReason::simConnectError ||
           reason == ExitReason::readerError;
}

/// A scan that failed is not to be repeated in a loop.
void forgetScans() {
    for (CheckBoxParameter* scan : {&SCAN_LIVERIES, &SCAN_AIRPORTS}) {
        scan->value = false;
        saveParameter(*scan);
    }
}

/// False when the user closed meanwhile.
bool countDownToRestart() {
    const int delay = gf_restartDelaySeconds();
    if (delay < 1) {
        return !gCloseButtonUsed;
    }
    log(fmt::format("Restarting after {} seconds", delay));
    log("------------------------------------------------");
    for (int seconds = delay; seconds >= 1; --seconds) {
        showMessage(fmt::format("Restarting after {} second{}", seconds, seconds == 1 ? "" : "s"), LogCopy::no);
        if (!waitUnlessUserCloses(1s)) {
            return false;
        }
    }
    log("Restart countdown finished");
    return true;
}

/// False when the user closed meanwhile: that wins over the restart.
bool prepareRestart(ExitReason reason) {
    clearError();
    clearMessage();
    showMessage("Prepare for a restart ...", LogCopy::yes);
    if (reason != ExitReason::newSettings) {
        forgetScans();
    }
    if (!countDownToRestart()) {
        return false;
    }
    // A reader still in its last receive, as any thread, would take the next run's cleared stop flag for its own.
    joinSimClient();
    if (!gf_waitForDetachedThreads(readersLeaveWithin, 1)) {
        logError("A thread of the run did not end in time");
    }
    gf_resetRun();
    return !gCloseButtonUsed;
}

void decideWhatFollows() {
    const ExitReason reason = gf_exitReason();
    gRestartWanted = false;
    gRestartWanted = leadsToNewRun(reason) && !gCloseButtonUsed && prepareRestart(reason);
    if (reason == ExitReason::newFlight) {
        showMessage(fmt::format("New flight detected, {} will close, please restart manually ...", programName),
                    LogCopy::yes);
        waitUnlessUserCloses(newFlightPause);
    }
}

template <typename Step>
void guarded(Step step) {
    try {
        step();
    } catch (const std::exception& exception) {
        log(fmt::format("{} exception {}", "lf_closingDown", platform::readableText(exception.what())));
    } catch (...) {
        log(fmt::format("{} exception {}", "lf_closingDown", "Unknown exception"));
    }
}

} // namespace

void lf_closingDown() {
    guarded(stopEverything);
    guarded(decideWhatFollows);
    gf_flushLog();
    if (!window_system::postMessage(gRestartWanted ? WM_TRNW_START : WM_TRNW_EXIT)) {
        logError("The window takes no message");
    }
}
