// engine/slot.cpp
#include "engine/slot.h"

#include <algorithm>
#include <array>
#include <exception>
#include <mutex>
#include <optional>
#include <utility>

#include <fmt/format.h>

#include "core/geography.h"
#include "core/log.h"
#include "core/run_flags.h"
#include "core/slot_clock.h"
#include "core/user_error.h"
#include "engine/aircraft_tables.h"
#include "engine/airport_in_use.h"
#include "engine/engine_state.h"
#include "engine/feed_filter.h"
#include "engine/live_update.h"
#include "engine/new_aircraft.h"
#include "feed/real_traffic_steps.h"
#include "feed/sample_queue.h"
#include "liveries/livery_matching.h"
#include "sim/engine_inbox.h"
#include "sim/frame_flush.h"
#include "sim/object_life.h"
#include "sim/object_queues.h"
#include "sim/session.h"
#include "sim/sim_queues.h"

namespace {

constexpr int recordsPerSlot = 2;
constexpr std::int32_t rangeRequestSlots = 100;
constexpr std::int32_t flareRangeRequestSlots = 20;
/// From here on the ground script of landing or take-off counts down: the aircraft is on the ground whatever its flag
/// says.
constexpr std::int32_t groundScriptSlots = 2;

/// On the ground the height always comes from the simulator's own ground.
void groundDataArrived(const EngineMessage& message) {
    LiveAircraft* aircraft = findLiveByObjectId(message.objectId);
    if (aircraft == nullptr) {
        return;
    }
    aircraft->altAboveGround = message.b;
    if (aircraft->onGround != 0 || aircraft->groundSlots >= groundScriptSlots) {
        aircraft->alt = message.a + aircraft->cgHeight;
    }
}

void block(const EngineMessage& message) {
    LiveAircraft* aircraft = findLiveByHexid(message.id);
    if (aircraft == nullptr) {
        return;
    }
    if (aircraft->lifeState == LifeState::buffer) {
        log(fmt::format("{} will be removed from buffer while blocked", shortLine(*aircraft)));
        aircraft->dropRecord = 1;
    } else if (aircraft->lifeState == LifeState::active) {
        log(fmt::format("{} removed from simulator immediately while blocked", shortLine(*aircraft)));
        removeAircraftFromSim(*aircraft);
    }
}

void serve(const EngineMessage& message) {
    switch (message.kind) {
    case EngineMessageKind::liveObjectExists: objectAdded(message); break;
    case EngineMessageKind::staticObjectExists: staticObjectAdded(message); break;
    case EngineMessageKind::objectRemoved: objectRemoved(message); break;
    case EngineMessageKind::groundData: groundDataArrived(message); break;
    case EngineMessageKind::staticData: staticDataArrived(message); break;
    case EngineMessageKind::blockAircraft: block(message); break;
    case EngineMessageKind::creationRefused: creationRefused(message); break;
    case EngineMessageKind::tooManyObjects: creationHadNoRoom(message); break;
    }
}

/// Without memory of its own, for it may be want of memory that has failed; what is longer is cut.
void logFailedStep(const char* function, const std::exception& failure) {
    std::array<char, 500> line{};
    const auto end = fmt::format_to_n(line.data(), line.size(), "{} exception: {}", function, failure.what());
    log({line.data(), std::min(end.size, line.size())});
}

/// What fails costs itself; the user's errors alone end the run.
template <typename Action>
void attempt(const char* function, const Action& action) {
    try {
        action();
    } catch (const kvd::UserErrorException&) {
        throw;
    } catch (const std::exception& failure) {
        logFailedStep(function, failure);
    }
}

/// The inbox is empty afterwards also when a user error ends the walk: no message is served twice.
void serveMessages() {
    try {
        for (const EngineMessage& message : engineInbox) {
            attempt("readInbox", [&message] { serve(message); });
        }
    } catch (...) {
        engineInbox.clear();
        throw;
    }
    engineInbox.clear();
}

void updateAll() {
    bool drops = false;
    for (LiveAircraft& aircraft : liveTable) {
        attempt("updateLiveAc", [&aircraft, &drops] { drops = updateLiveAc(aircraft) || drops; });
    }
    if (drops) {
        attempt("eraseDroppedLive", eraseDroppedLive);
    }
}

/// The lock is held for the taking only: what the record leads to must not stop the reader.
std::optional<FeedRecord> oldestRecord() {
    const std::lock_guard lock(gTrafficMutex);
    return gLiveSampleQueue.pop();
}

void takeRecords() {
    for (int i = 0; i < recordsPerSlot; ++i) {
        std::optional<FeedRecord> record = oldestRecord();
        if (!record) {
            return;
        }
        attempt("processFeedRecord", [&record] { processFeedRecord(std::move(*record)); });
    }
}

CreateRequest createRequestFor(const LiveAircraft& aircraft, const Sample& first) {
    return {.lat = aircraft.lat,
            .lon = aircraft.lon,
            .alt = aircraft.alt,
            .pitch = aircraft.pitch * degreesPerRadian,
            .bank = aircraft.bank * degreesPerRadian,
            .heading = aircraft.heading * degreesPerRadian,
            .onGround = first.airborne == 0 ? 1u : 0u,
            .airspeed = 0,
            .tailNumber = aircraft.callsign,
            .title = aircraft.liveryTitle,
            .hexid = aircraft.hexid};
}

void queueCreation(LiveAircraft& aircraft) {
    if (aircraft.callsign.empty()) {
        log(fmt::format("{} {} objectid = 0?", "lf_handleAddingStack", shortLine(aircraft)));
        return;
    }
    if (const Sample* first = aircraft.stream.firstOrLog("lf_handleAddingStack")) {
        liveCreateQueue.push_back(createRequestFor(aircraft, *first));
    }
}

/// It leaves the stack only when it is done: after a failure the next slot tries again.
void requestCreation() {
    if (addingStack.empty()) {
        return;
    }
    if (LiveAircraft* aircraft = findLiveByHexid(addingStack.back())) {
        queueCreation(*aircraft);
    }
    addingStack.pop_back();
}

void askSimulator() {
    if (slotClock % (flareInProgress ? flareRangeRequestSlots : rangeRequestSlots) == 0 && !simFailed) {
        attempt("requestAircraftInRange", requestAircraftInRange);
    }
    if (slotClock % slotsPerSecond == 0) {
        attempt("sendUserState", sendUserState);
        attempt("requestUserPosition", [] { gUserState = requestUserPosition(); });
    }
}

} // namespace

void readInbox() {
    const std::lock_guard lock(inboxLock);
    serveMessages();
    attempt("readInbox", stepPendingActivations);
}

void lf_handleAddingStack() {
    readInbox();
    updateAll();
    swapPositions();
    attempt("stepObjectQueues", [] { stepObjectQueues(slotClock); });
    takeRecords();
    attempt("requestCreation", requestCreation);
    askSimulator();
    ++slotClock;
}

void removeAllAircraft() {
    for (LiveAircraft& aircraft : liveTable) {
        removeAircraftFromSim(aircraft);
    }
    eraseDroppedLive();
}

void resetEngine() {
    resetAircraftTables();
    resetEngineState();
    forgetLiveMatches();
    resetNewAircraft();
    gAirportInUse.reset();
    resetObjectLife();
    resetObjectQueues();
    resetEngineInbox();
    resetSimQueues();
}
