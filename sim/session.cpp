// sim/session.cpp
#include "sim/session.h"

#include <atomic>
#include <chrono>
#include <cmath>
#include <mutex>
#include <string_view>
#include <thread>

#include <fmt/format.h>

#include "core/exit_reason.h"
#include "core/injection_radius.h"
#include "core/log.h"
#include "core/program_info.h"
#include "core/run_flags.h"
#include "core/user_error.h"
#include "platform/clock.h"
#include "platform/text_encoding.h"
#include "platform/threads.h"
#include "platform/timer_resolution.h"
#include "sim/declarations.h"
#include "sim/dispatch.h"
#include "sim/engine_inbox.h"
#include "sim/object_data.h"
#include "sim/sim_ids.h"
#include "sim/sim_queues.h"
#include "sim/simulator_link.h"
#include "sim/stand_requests.h"
#include "sim/user_aircraft.h"
#include "window/window_state.h"

using namespace std::chrono_literals;

namespace {

constexpr const char* threadName = "SimClient";

constexpr auto reconnectPause = 100ms;
constexpr auto pumpPeriod = 1ms;
/// Of the waits that a stop cuts short.
constexpr auto stopLook = 100ms;

/// A user error whose text begins so takes the simulator for gone, once the user has had time to read it.
constexpr std::string_view goneMark = "791";
constexpr auto goneReadingTime = 10s;

std::jthread simClient; // run thread

void announceWait() {
    showMessage(fmt::format("Waiting for Prepar3Dv{} ...", gSimulatorVersion.load()), LogCopy::yes);
    gf_flushLog();
}

bool openHandle() {
    HANDLE handle = nullptr;
    if (SimConnect_Open(&handle, programName, nullptr, 0, nullptr, 0) < 0) {
        return false;
    }
    const std::lock_guard lock(simLock);
    simHandle = handle;
    return true;
}

void closeHandle() {
    const std::lock_guard lock(simLock);
    log(SimConnect_Close(simHandle) < 0 ? "Closing SimConnect failed?!" : "SimConnect closed ok");
    simHandle = nullptr;
}

/// An open session, as the others see it.
class OpenSession {
public:
    OpenSession() { showSimConnected(true); }
    ~OpenSession() {
        simRunning = false;
        showSimConnected(false);
        showSimFlightRunning(false);
        closeHandle();
    }
    OpenSession(const OpenSession&) = delete;
    OpenSession& operator=(const OpenSession&) = delete;
};

/// A simulator that is not there yet is no fault. False when the run is to stop.
bool connect(const std::stop_token& stop) {
    for (bool first = true; !stop.stop_requested() && !gf_isStopping(); first = false) {
        if (first) {
            announceWait();
        }
        if (openHandle()) {
            return true;
        }
        platform::sleepFor(reconnectPause);
    }
    return false;
}

/// Dispatches what has arrived; whether the connection stands.
bool dispatchWaiting() {
    std::exception_ptr failure;
    const HRESULT result = SimConnect_CallDispatch(simHandle, dispatchProcedure, &failure);
    if (failure) {
        std::rethrow_exception(failure);
    }
    return result >= 0;
}

void pump(const std::stop_token& stop) {
    const platform::TimerResolution oneMillisecond(1);
    while (!stop.stop_requested()) {
        const platform::SteadyTime next = platform::steadyNow() + pumpPeriod;
        if (!dispatchWaiting()) {
            simulatorGone();
            return;
        }
        platform::sleepFor(next - platform::steadyNow());
    }
}

void runSession(const std::stop_token& stop) {
    if (!connect(stop)) {
        return;
    }
    const OpenSession session;
    declareToSimulator();
    pump(stop);
}

void runSimClient(const std::stop_token& stop) {
    platform::nameThisThread(threadName);
    try {
        runSession(stop);
    } catch (...) {
        endSessionOn(std::current_exception(), stop);
    }
}

void waitUnlessStopped(std::chrono::seconds duration, const std::stop_token& stop) {
    const platform::SteadyTime end = platform::steadyNow() + duration;
    while (platform::steadyNow() < end && !stop.stop_requested()) {
        platform::sleepFor(stopLook);
    }
}

/// Puts the question under simLock, if it can be put; false when the call fails.
template <typename Question>
bool ask(Question question) {
    const std::lock_guard lock(simLock);
    return !canSend() || question() >= 0;
}

bool askForUser(SimRequest request, DataDefinition definition, SIMCONNECT_PERIOD period) {
    return ask([=] {
        return SimConnect_RequestDataOnSimObject(simHandle, request, definition, SIMCONNECT_OBJECT_ID_USER, period, 0,
                                                 0, 0, 0);
    });
}

} // namespace

void startSimClient() {
    stopSimClient();
    joinSimClient();
    resetSession();
    simClient = std::jthread(runSimClient);
}

void stopSimClient() {
    simClient.request_stop();
}

void joinSimClient() {
    if (simClient.joinable()) {
        simClient.join();
    }
}

UserState requestUserPosition() {
    if (!askForUser(requestPosition, definitionUserPosition, SIMCONNECT_PERIOD_ONCE)) {
        requestFailed();
    }
    return userStateNow();
}

void requestUserIdentity() {
    if (!askForUser(requestTitle, definitionUserTitle, SIMCONNECT_PERIOD_ONCE) ||
        !askForUser(requestModel, definitionUserModel, SIMCONNECT_PERIOD_ONCE)) {
        requestFailed();
    }
}

void requestAircraftInRange() {
    const auto radiusMeters = static_cast<DWORD>(std::lround(gRadiusMeters));
    if (!ask([radiusMeters] {
            return SimConnect_RequestDataOnSimObjectType(simHandle, requestInRange, definitionObjectInRange,
                                                         radiusMeters, SIMCONNECT_SIMOBJECT_TYPE_AIRCRAFT);
        })) {
        log("SimConnect request ac within range fails");
        requestFailed();
    }
}

void requestUserGroundEachSecond() {
    if (!askForUser(requestOnGround, definitionUserOnGround, SIMCONNECT_PERIOD_SECOND)) {
        logError("SimConnect request ac gnd/air fails");
        requestFailed();
    }
}

void endSessionOn(const std::exception_ptr& failure, const std::stop_token& stop) {
    try {
        std::rethrow_exception(failure);
    } catch (const kvd::UserErrorException& error) {
        showError(error.what());
        if (!std::string_view(error.what()).starts_with(goneMark)) {
            return;
        }
        waitUnlessStopped(goneReadingTime, stop);
    } catch (const std::exception& error) {
        showError(platform::readableText(error.what()));
    } catch (...) {
        showError(fmt::format("Exception in {}", threadName));
    }
    simulatorGone();
}

void resetSession() {
    resetSimulatorLink();
    simRunning = false;
    simFailed = false;
    secondPulse = false;
    resetSimQueues();
    resetEngineInbox();
    resetUserState();
    resetUserAircraft();
    resetObjectData();
    resetStandRequests();
}
