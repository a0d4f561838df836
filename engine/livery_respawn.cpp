// engine/livery_respawn.cpp
#include "engine/livery_respawn.h"

#include <exception>

#include <fmt/format.h>

#include "core/geography.h"
#include "core/log.h"
#include "core/slot_clock.h"
#include "engine/angles.h"
#include "sim/object_queues.h"

namespace {

/// The stream leads on from the present position.
Sample presentPlace(LiveAircraft& aircraft) {
    Sample& first = aircraft.stream[0];
    first.stationary = isSamePosition({aircraft.lat, aircraft.lon}, positionOf(first)) ? 1 : 0;
    Sample here = first;
    here.lat = aircraft.lat;
    here.lon = aircraft.lon;
    here.roll = aircraft.bank;
    here.alt = aircraft.alt;
    return here;
}

/// Nothing but the stand.
Sample parkedPlace(LiveAircraft& aircraft) {
    SampleStream& stream = aircraft.stream;
    while (stream.size() > 1) {
        stream.popBack();
    }
    stream[0].stationary = 1;
    stream[0].track = aircraft.heading * degreesPerRadian;
    return stream[0];
}

void queueRemoval(const LiveAircraft& aircraft) {
    if (aircraft.objectId == 0) {
        log(fmt::format("{} removing act {} with objectid=0 ?", "liveryRespawn", shortLine(aircraft)));
        return;
    }
    removalQueue.push_back(aircraft.objectId);
}

/// Both or neither.
void leadOnAndLeave(LiveAircraft& aircraft, const Sample& first) {
    aircraft.stream.pushFront(first);
    try {
        queueRemoval(aircraft);
    } catch (...) {
        aircraft.stream.popFront();
        throw;
    }
}

} // namespace

bool liveryRespawn(LiveAircraft& aircraft, StandOnRespawn stand) {
    try {
        if (aircraft.stream.firstOrLog("liveryRespawn") == nullptr) {
            return false;
        }
        const bool staysOnStand = aircraft.phase == FlightPhase::parked && stand == StandOnRespawn::kept;
        Sample first = staysOnStand ? parkedPlace(aircraft) : presentPlace(aircraft);
        first.slot = slotClock + 1;
        leadOnAndLeave(aircraft, first);
        aircraft.lifeState = LifeState::liveryrespawn;
        aircraft.respawnHeading = aircraft.heading;
        return true;
    } catch (const std::exception& failure) {
        log(fmt::format("{}: {}", "liveryRespawn", failure.what()));
        return false;
    }
}
