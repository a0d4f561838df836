// rig/replay/replay.cpp
#include "rig/replay/replay.h"

#include <algorithm>
#include <chrono>
#include <exception>
#include <mutex>
#include <numeric>
#include <stdexcept>
#include <utility>

#include <fmt/format.h>

#include "core/exit_reason.h"
#include "core/injection_radius.h"
#include "core/parameters.h"
#include "core/program_info.h"
#include "core/random.h"
#include "core/run/run_loop.h"
#include "core/run/run_reset.h"
#include "core/run/run_time.h"
#include "core/run_flags.h"
#include "core/slot_clock.h"
#include "engine/aircraft_tables.h"
#include "feed/qnh_reader.h"
#include "feed/sample_queue.h"
#include "rig/replay/replay_liveries.h"
#include "rig/world/trace_format.h"
#include "sim/declarations.h"
#include "sim/dispatch.h"
#include "sim/session.h"
#include "sim/simulator_link.h"
#include "sim/user_state.h"

namespace rig {

namespace {

constexpr double tickSeconds = 0.01;
constexpr std::int64_t ticksPerSecond = 100;
/// Within which the flight of any scene comes to run.
constexpr std::int64_t startUpTicks = 60 * ticksPerSecond;
/// The pauses between two looks of the start of a run.
constexpr std::int64_t simulatorLookTicks = 10;
constexpr std::int64_t positionLookTicks = 50;
constexpr std::int64_t identityLookTicks = 20;

platform::WallTime wallTimeOf(double secondsSince1970) {
    using namespace std::chrono;
    return platform::WallTime(duration_cast<platform::WallTime::duration>(duration<double>(secondsSince1970)));
}

bool userIsKnown() {
    gUserState = requestUserPosition();
    return isPosition(positionOf(gUserState)) && userOnGroundKnown;
}

void acceptSamples() {
    const std::lock_guard lock(gTrafficMutex);
    gAcceptSamples = true;
}

} // namespace

std::size_t ReplayCounts::allLines() const {
    return std::accumulate(lines.begin(), lines.end(), std::size_t{0});
}

// --- The program's side ----------------------------------------------------------------------------------------------

Replay::ProgramState::ProgramState(const ReplaySettings& settings) {
    reset();
    gf_seedRandom(settings.seed);
    gf_setInjectionRadius(settings.radiusNm);
}

Replay::ProgramState::~ProgramState() {
    reset();
}

void Replay::ProgramState::reset() {
    gf_resetRun();
    resetParameters();
    forgetReplayLiveries();
    gf_setInjectionRadius(RANGE.value);
    gSecondCounter = 0;
    slotClock = 0;
}

Replay::Session::Session() {
    HANDLE handle = nullptr;
    if (SimConnect_Open(&handle, programName, nullptr, 0, nullptr, 0) < 0) {
        throw std::runtime_error("the simulated world takes no client");
    }
    simHandle = handle;
    declareToSimulator();
}

Replay::Session::~Session() {
    SimConnect_Close(simHandle);
    simHandle = nullptr;
}

// --- Its life --------------------------------------------------------------------------------------------------------

Replay::Replay(ReplaySettings settings)
    : program_(settings), clock_(wallTimeOf(settings.begin)),
      world_(std::move(settings.scene), setUpReplayLiveries(), settings.trace), session_(std::make_unique<Session>()) {
    meetSimulator();
    beginFeed(settings.begin);
}

Replay::~Replay() = default;

/// As the start of a run does it, from the open session to the known user.
void Replay::meetSimulator() {
    passTimeUntil([] { return simRunning.load(); }, simulatorLookTicks);
    requestUserGroundEachSecond();
    passTimeUntil(userIsKnown, positionLookTicks);
    requestUserIdentity();
    passTimeUntil([looked = false]() mutable { return std::exchange(looked, true) && userIsKnown(); },
                  identityLookTicks);
}

void Replay::beginFeed(double begin) {
    clock_.setWall(wallTimeOf(begin));
    world_.with([begin](World& world) {
        world.note(TraceEventKind::act, 0, world.elapsedSeconds(), feedBeginsAct, fmt::format("{:.3f}", begin));
    });
    gTrafficReader.setUserLatLon(positionOf(gUserState));
    gSecondCounter = 0;
    secondPulse = false;
    gf_setWeekSlot();
    acceptSamples();
}

void Replay::receive(const Datagram& datagram) {
    if (datagram.kind == DatagramKind::weather) {
        ++counts_.weather;
        gQnhReader.datagram = datagram.text;
        gQnhReader.onDatagram();
        gQnhReader.datagram = {};
    } else {
        ++counts_.lines.at(static_cast<std::size_t>(gTrafficReader.processLine(datagram.text)));
    }
}

void Replay::slot() {
    passTime();
    gf_tickStep();
    ++slots_;
    if (slots_ % ticksPerSecond == 0) {
        countActive();
    }
}

// --- Time ------------------------------------------------------------------------------------------------------------

void Replay::passTime() {
    ++ticks_;
    clock_.advance(tickLength);
    const double now = static_cast<double>(ticks_) * tickSeconds;
    while (nextFrameSeconds_ <= now) {
        world_.frames(1);
        nextFrameSeconds_ += 1 / world_.with([](const World& world) { return world.framesPerSecond(); });
        dispatch();
    }
}

template <typename Holds>
void Replay::passTimeUntil(Holds holds, std::int64_t lookTicks) {
    while (!holds()) {
        if (ticks_ >= startUpTicks || gf_isStopping()) {
            throw std::runtime_error("the scene's flight does not come to run");
        }
        for (std::int64_t i = 0; i < lookTicks; ++i) {
            passTime();
        }
    }
}

void Replay::dispatch() {
    std::exception_ptr failure;
    const HRESULT result = SimConnect_CallDispatch(simHandle, dispatchProcedure, &failure);
    if (failure) {
        std::rethrow_exception(failure);
    }
    if (result < 0) {
        simulatorGone();
    }
}

// --- How it stands ---------------------------------------------------------------------------------------------------

double Replay::seconds() const {
    return static_cast<double>(slots_) * tickSeconds;
}

bool Replay::runHasEnded() const {
    return gf_isStopping();
}

std::size_t Replay::aircraft() const {
    return liveTable.size();
}

void Replay::countActive() {
    const auto active =
        static_cast<std::size_t>(std::count_if(liveTable.begin(), liveTable.end(), [](const LiveAircraft& aircraft) {
            return aircraft.lifeState == LifeState::active;
        }));
    counts_.most = std::max(counts_.most, active);
    ++looks_;
    counts_.mean += (static_cast<double>(active) - counts_.mean) / static_cast<double>(looks_);
}

ReplayCounts Replay::counts() {
    world_.with([this](const World& world) {
        counts_.created = world.createdAircraft();
        counts_.removed = counts_.created - world.aircraft().size();
    });
    return counts_;
}

} // namespace rig
