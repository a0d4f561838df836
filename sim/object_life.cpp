// sim/object_life.cpp
#include "sim/object_life.h"

#include <algorithm>
#include <filesystem>
#include <mutex>

#include <fmt/format.h>

#include "core/log.h"
#include "core/run_flags.h"
#include "core/week_slot.h"
#include "engine/aircraft_tables.h"
#include "liveries/failed_titles.h"
#include "platform/files.h"
#include "sim/controls.h"
#include "sim/flight_plan.h"
#include "sim/light_sets.h"
#include "sim/object_queues.h"
#include "sim/sim_ids.h"
#include "sim/sim_queues.h"
#include "sim/simulator_link.h"

std::vector<EngineMessage> pendingActivations;

namespace {

constexpr std::uint32_t firstOwnObjectId = 3;

constexpr std::int32_t activationSlots = 200;
constexpr std::int32_t firstLightsToggleSlot = 50;
constexpr std::int32_t secondLightsToggleSlot = 100;
constexpr std::int32_t doneWith = -1;

constexpr std::int32_t idleThrottle = 0;
constexpr std::int32_t rotorThrottle = 4;
constexpr std::int32_t flapsUp = 0;
constexpr std::int32_t taxiFlaps = 1;

/// The parked aircraft's stand is its own now.
void removeStaticsFrom(std::int32_t standId) {
    for (AircraftRecord& parked : staticTable) {
        if (parked.standId == standId && parked.lifeState == LifeState::active) {
            removeAircraftFromSim(parked);
        }
    }
}

void objectOnGround(LiveAircraft& aircraft) {
    aircraft.onGround = 1;
    aircraft.dAlt = 0;
    aircraft.groundSlots = 1;
    if (aircraft.phase != FlightPhase::parked) {
        return;
    }
    const WeekSlot now = unpackedWeekSlot(gWeekSlot);
    aircraft.parkedSince = {now.weekday, now.slot};
    if (aircraft.standId != 0) {
        removeStaticsFrom(aircraft.standId);
    }
}

/// Without a session there is nobody to tell, and that is no failure.
bool sendFlightPlan(std::uint32_t objectId, const std::filesystem::path& file) {
    const std::lock_guard lock(simLock);
    return !canSend() || SimConnect_AISetAircraftFlightPlan(simHandle, objectId, platform::utf8FromPath(file).c_str(),
                                                            requestFlightPlan) >= 0;
}

void removeFlightPlanOf(LiveAircraft& aircraft) {
    if (aircraft.hasFlightPlan != 0) {
        gf_removeFlightPlan(aircraft.hexid);
        aircraft.hasFlightPlan = 0;
    }
}

void attachFlightPlan(LiveAircraft& aircraft) {
    const std::filesystem::path file = gf_flightPlanFor(aircraft);
    if (file.empty()) {
        removeFlightPlanOf(aircraft); // it may have one of before it was made anew
        return;
    }
    aircraft.hasFlightPlan = sendFlightPlan(aircraft.objectId, file) ? 1 : 0;
    if (aircraft.hasFlightPlan == 0) {
        log(fmt::format("{} creating a flight plan failed", aircraft.callsign));
        gf_removeFlightPlan(aircraft.hexid);
    }
}

bool sendStaticDataRequest(std::uint32_t objectId) {
    const std::lock_guard lock(simLock);
    return !canSend() || SimConnect_RequestDataOnSimObject(simHandle, requestStaticData, definitionStaticData, objectId,
                                                           SIMCONNECT_PERIOD_ONCE, 0, 0, 0, 0) >= 0;
}

void askForStaticData(std::uint32_t objectId) {
    if (!sendStaticDataRequest(objectId)) {
        log("SimConnect request StaticCG fails");
        requestFailed();
    }
}

void setUpInTheAir(LiveAircraft& aircraft) {
    gf_startEngines(aircraft.objectId);
    gf_setSpoilers(aircraft, Spoilers::retracted);
    gf_setLights(aircraft.objectId, activationLights(aircraft, true));
}

void setUpOnTheGround(LiveAircraft& aircraft) {
    gf_setSpoilers(aircraft, Spoilers::retracted);
    if (aircraft.phase == FlightPhase::parked) {
        gf_stopEngines(aircraft.objectId);
    } else {
        gf_startEngines(aircraft.objectId);
    }
    gf_setLights(aircraft.objectId, activationLights(aircraft, false));
    gf_setThrottle(aircraft, aircraft.category == AircraftCategory::Rotorcraft ? rotorThrottle : idleThrottle);
    gf_setFlaps(aircraft, aircraft.phase == FlightPhase::taxi ? taxiFlaps : flapsUp);
}

/// A removal that was asked for meanwhile is taken up now; the flag would keep it from being done.
void makeActive(AircraftRecord& aircraft) {
    aircraft.lifeState = LifeState::active;
    if (aircraft.removeWhenAdded != 0) {
        aircraft.removeWhenAdded = 0;
        removeAircraftFromSim(aircraft);
    }
}

/// An aircraft without samples becomes active too: its next slot removes it.
void activateLive(LiveAircraft& aircraft) {
    if (const Sample* first = aircraft.stream.firstOrLog("activateLive")) {
        first->airborne != 0 ? setUpInTheAir(aircraft) : setUpOnTheGround(aircraft);
    }
    makeActive(aircraft);
}

void activateStatic(AircraftRecord& aircraft) {
    gf_setLights(aircraft.objectId, standLights(aircraft));
    makeActive(aircraft);
}

bool isAwaited(const AircraftRecord* aircraft, std::uint32_t objectId) {
    return aircraft != nullptr && aircraft->lifeState == LifeState::adding2sim && aircraft->objectId == objectId;
}

/// An object without a record would stand in the simulator for ever.
void removeIfOrphan(std::uint32_t objectId) {
    if (findAircraftByObjectId(objectId) == nullptr) {
        removalQueue.push_back(objectId);
    }
}

void activate(const EngineMessage& message) {
    LiveAircraft* live = findLiveByHexid(message.id);
    AircraftRecord* parked = findStaticByHexid(message.id);
    if (message.kind == EngineMessageKind::liveObjectExists && isAwaited(live, message.objectId)) {
        activateLive(*live);
    } else if (message.kind == EngineMessageKind::staticObjectExists && isAwaited(parked, message.objectId)) {
        activateStatic(*parked);
    } else {
        removeIfOrphan(message.objectId);
    }
}

/// The simulator does not take every light at creation; switching all of them over twice wakes them.
void wakeLights(const EngineMessage& message) {
    if (message.kind == EngineMessageKind::liveObjectExists &&
        (message.counter == firstLightsToggleSlot || message.counter == secondLightsToggleSlot)) {
        queueEvent(message.objectId, eventAllLightsToggle, 0);
    }
}

void stepActivation(EngineMessage& message) {
    if (message.counter < activationSlots) {
        ++message.counter;
        wakeLights(message);
        return;
    }
    // First, so that an activation that fails is not begun again.
    message.counter = doneWith;
    activate(message);
}

void forgetDoneActivations() {
    std::erase_if(pendingActivations, [](const EngineMessage& message) { return message.counter < 0; });
}

void startActivation(EngineMessage message) {
    message.counter = 0;
    pendingActivations.push_back(message);
}

void prepareForRespawn(LiveAircraft& aircraft) {
    aircraft.lifeState = LifeState::buffer;
    aircraft.throttleIndex = noThrottleIndex;
    aircraft.flapsIndex = initialFlapsIndex;
    aircraft.objectId = 0;
}

void eraseLive(LiveAircraft& aircraft) {
    removeFlightPlanOf(aircraft);
    eraseBySwap(aircraft);
}

} // namespace

void objectAdded(const EngineMessage& message) {
    if (message.objectId < firstOwnObjectId) {
        return;
    }
    LiveAircraft* aircraft = findLiveByHexid(message.id);
    if (aircraft == nullptr || aircraft->lifeState != LifeState::adding2sim) {
        removeIfOrphan(message.objectId);
        return;
    }
    aircraft->objectId = message.objectId;
    aircraft->altAboveGround = message.b;
    if (const Sample* first = aircraft->stream.firstOrLog("objectAdded"); first != nullptr && first->airborne == 0) {
        objectOnGround(*aircraft);
    }
    attachFlightPlan(*aircraft);
    askForStaticData(message.objectId);
    startActivation(message);
}

void staticObjectAdded(const EngineMessage& message) {
    AircraftRecord* aircraft = findStaticByHexid(message.id);
    if (aircraft == nullptr || aircraft->lifeState != LifeState::adding2sim) {
        removeIfOrphan(message.objectId);
        return;
    }
    aircraft->objectId = message.objectId; // so that its removal by the simulator finds it also before it is active
    startActivation(message);
}

void objectRemoved(const EngineMessage& message) {
    if (message.objectId == 0) {
        return; // the mark of a record without object
    }
    std::erase_if(pendingActivations,
                  [&message](const EngineMessage& pending) { return pending.objectId == message.objectId; });
    std::erase(removalQueue, message.objectId);
    if (LiveAircraft* live = findLiveByObjectId(message.objectId)) {
        live->lifeState == LifeState::liveryrespawn ? prepareForRespawn(*live) : eraseLive(*live);
    } else if (AircraftRecord* parked = findStaticByObjectId(message.objectId)) {
        eraseStaticBySwap(*parked);
    }
}

void staticDataArrived(const EngineMessage& message) {
    AircraftRecord* aircraft = message.objectId == 0 ? nullptr : findAircraftByObjectId(message.objectId);
    if (aircraft != nullptr) {
        takeCgHeight(*aircraft, message.a);
        takeGroundPitch(*aircraft, message.b);
    }
}

void creationRefused(const EngineMessage& message) {
    if (message.id > highestStaticHexid) {
        if (LiveAircraft* live = findLiveByHexid(message.id)) {
            gf_noteFailedTitle(*live);
            eraseLive(*live);
        }
    } else if (AircraftRecord* parked = findStaticByHexid(message.id)) {
        gf_noteFailedTitle(*parked);
        eraseStaticBySwap(*parked);
    }
}

void creationHadNoRoom(const EngineMessage& message) {
    if (message.id > highestStaticHexid) {
        if (LiveAircraft* live = findLiveByHexid(message.id)) {
            log(fmt::format("          {} goes: the simulator holds too many objects", longLine(*live)));
            eraseLive(*live);
        }
    } else if (AircraftRecord* parked = findStaticByHexid(message.id)) {
        eraseStaticBySwap(*parked);
    }
}

void eraseDroppedLive() {
    for (LiveAircraft& aircraft : liveTable) {
        if (isDropped(aircraft)) {
            removeFlightPlanOf(aircraft);
        }
    }
    compactLiveTable();
}

void stepPendingActivations() {
    forgetDoneActivations(); // what a step that failed has left
    for (EngineMessage& message : pendingActivations) {
        stepActivation(message);
    }
    forgetDoneActivations();
}

void resetObjectLife() {
    pendingActivations.clear();
}
