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

/// From here the stream leads on.
Sample presentPlace(const LiveAircraft& aircraft) {
    Sample here = aircraft.stream[0];
    here.stationary = isSamePosition({aircraft.lat, aircraft.lon}, positionOf(here)) ? 1 : 0;
    here.lat = aircraft.lat;
    here.lon = aircraft.lon;
    here.roll = aircraft.bank;
    here.alt = aircraft.alt;
    return here;
}

Sample parkedPlace(const LiveAircraft& aircraft) {
    Sample stand = aircraft.stream[0];
    stand.stationary = 1;
    stand.track = aircraft.heading * degreesPerRadian;
    return stand;
}

/// The first sample, from which the aircraft was created, is that of its stand; there is nothing behind it.
void keepTheStandAlone(SampleStream& stream) {
    while (stream.size() > 2) {
        stream.popBack();
    }
    stream[1].track = stream[0].track;
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
        aircraft.stream[1].stationary = first.stationary;
        if (staysOnStand) {
            keepTheStandAlone(aircraft.stream);
        }
        aircraft.lifeState = LifeState::liveryrespawn;
        aircraft.respawnHeading = aircraft.heading;
        return true;
    } catch (const std::exception& failure) {
        log(fmt::format("{}: {}", "liveryRespawn", failure.what()));
        return false;
    }
}
