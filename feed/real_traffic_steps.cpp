// feed/real_traffic_steps.cpp
#include "feed/real_traffic_steps.h"

#include <array>
#include <charconv>
#include <chrono>
#include <mutex>

#include <fmt/format.h>

#include "core/exit_reason.h"
#include "core/geography.h"
#include "core/log.h"
#include "core/parameters.h"
#include "core/program_info.h"
#include "core/run_flags.h"
#include "engine/aircraft_tables.h"
#include "feed/feed_reset.h"
#include "feed/real_traffic_link.h"
#include "feed/sample_queue.h"
#include "platform/clock.h"
#include "sim/object_life.h"
#include "sim/object_queues.h"
#include "sim/session.h"
#include "window/window_state.h"

using namespace std::chrono_literals;

namespace {

constexpr auto positionInterval = 1s;

constexpr double angleScale = 100000; // of pitch and bank, which are radians
constexpr double thousandths = 1000;  // of feet, of knots, of a second

bool isLinkWanted() {
    return gRealTrafficHere && !AEROWINX.value;
}

void lightLamp(bool lit) {
    gWindowState.realTrafficLit = lit;
    repaintWindow();
}

/// The run's own copy would stay where the user was when the wait began.
void followUser() {
    if (const UserState now = requestUserPosition(); isPosition(positionOf(now))) {
        gUserState = now;
    }
}

/// Nobody takes them: they would grow without end, and be flown an age too late.
void loseFeedRecords() {
    const std::lock_guard lock(gTrafficMutex);
    gLiveSampleQueue.clear();
}

/// Waits for a client. The run stands still meanwhile, but what is to leave the simulator leaves it, and the
/// simulator's session keeps hearing where the user is: after a gap it would take a user in flight for one who has
/// moved elsewhere. The feed may go on without its link; what it brings is lost.
bool waitWhileTheRunStands() {
    platform::SteadyTime nextRequest = platform::steadyNow();
    return waitForClient([&nextRequest] {
        handOnRemoval();
        loseFeedRecords();
        if (platform::steadyNow() >= nextRequest) {
            followUser();
            nextRequest += positionInterval;
        }
    });
}

void awaitReturn() {
    if (gf_exitReason() != ExitReason::notYetSet || !waitWhileTheRunStands()) {
        return;
    }
    lightLamp(true);
    showMessage(fmt::format("{} RealTraffic re-connected", clockNow()), LogCopy::yes);
    clearMessage();
}

void removeAllLiveAircraft() {
    for (LiveAircraft& aircraft : liveTable) {
        removeAircraftFromSim(aircraft);
    }
    eraseDroppedLive();
}

void realTrafficGone() {
    lightLamp(false);
    if (!gUserClosing) {
        removeAllLiveAircraft();
    }
    resetFeed();
    showMessage(fmt::format("{} RealTraffic gone? Wait for RealTraffic to re-connect ...", clockNow()), LogCopy::yes);
}

void meetClient() {
    exchangeVersions();
    if (!clientConnected) {
        realTrafficGone();
        return;
    }
    lightLamp(true);
    gBeforeFirstConnect = false;
    log("RealTraffic connected");
    clearMessage();
}

void sendOrLose(const std::string& text) {
    if (!sendDataPacket(text)) {
        realTrafficGone();
    }
}

/// The shortest text that gives the number back, as the standard formatter writes it: 200000 is "2e+05", which {fmt}
/// never makes of it.
std::string shortestText(double number) {
    std::array<char, 32> text{};
    const auto end = std::to_chars(text.data(), text.data() + text.size(), number).ptr;
    return {text.data(), end};
}

} // namespace

void openRealTrafficLink() {
    if (isLinkWanted()) {
        startListening(PORT_NUMBER.value());
    } else {
        lightLamp(true);
    }
}

void connectRealTraffic() {
    if (isLinkWanted()) {
        showMessage(fmt::format("Waiting for RealTraffic to connect to {} ...", programName), LogCopy::yes);
        gf_flushLog();
        resetFeed();
        if (waitWhileTheRunStands()) {
            meetClient();
        } else {
            clearMessage();
        }
    }
    // Also when the run goes on without a client: it has passed its connect.
    gBeforeFirstConnect = false;
}

void sendUserState() {
    if (!isLinkWanted() || !isPosition(positionOf(gUserState))) {
        return;
    }
    if (clientConnected) {
        dropWhatTheClientSaid();
        sendOrLose(userStateText(gUserState));
    } else {
        awaitReturn();
    }
}

void sendSimTime() {
    if (gRealTrafficHistoric && clientConnected && simSeconds >= 1) {
        sendOrLose(fmt::format("Qs123={}\r\n", simSeconds * static_cast<std::uint64_t>(thousandths)));
    }
}

std::string userStateText(const UserState& state) {
    return fmt::format("Qs121={:.0};{:.0};{:.6f};{:.0};{};{:.6f};{:.6f}\r\n", state.pitch * angleScale,
                       state.bank * angleScale, state.heading, state.alt * thousandths,
                       shortestText(state.groundSpeed * thousandths), state.lat * radiansPerDegree,
                       state.lon * radiansPerDegree);
}
