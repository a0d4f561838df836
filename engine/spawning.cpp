// engine/spawning.cpp
#include "engine/spawning.h"

#include <fmt/format.h>

#include "core/geography.h"
#include "core/log.h"
#include "engine/air_increments.h"
#include "engine/aircraft_log.h"
#include "engine/aircraft_tables.h"
#include "engine/angles.h"
#include "engine/engine_state.h"
#include "liveries/livery_matching.h"

namespace {

constexpr double groundPitchAtBirth = 0.6 * radiansPerDegree;
constexpr double secondsPerMinute = 60;

/// An aircraft that stands at its second position stands at its first.
void settleStart(SampleStream& stream) {
    if (stream[1].stationary == 0) {
        stream[0].stationary = 0;
        return;
    }
    stream[0].stationary = 1;
    stream[0].gs = 0;
    stream[1].gs = 0;
    if (stream.size() > 2 && stream[2].stationary != 0) {
        stream[2].gs = 0;
    }
}

/// A title that the simulator has refused since is of no use, and is forgotten.
void takeRememberedLivery(LiveAircraft& aircraft) {
    const auto remembered = hexidLiveries.find(aircraft.hexid);
    if (remembered == hexidLiveries.end()) {
        return;
    }
    if (FailedTitles.contains(remembered->second)) {
        hexidLiveries.erase(remembered);
    } else {
        aircraft.liveryTitle = remembered->second;
    }
}

void findLivery(LiveAircraft& aircraft) {
    takeRememberedLivery(aircraft);
    if (!aircraft.liveryTitle.empty()) {
        return;
    }
    gf_rematchLivery(aircraft);
    if (!aircraft.liveryTitle.empty()) {
        hexidLiveries[aircraft.hexid] = aircraft.liveryTitle;
    } else if (!aircraft.registration.empty()) {
        NoMatchList.insert(noMatchKey(aircraft));
    }
}

/// Whether the aircraft may go on in its first phase.
bool enterFirstPhase(LiveAircraft& aircraft) {
    if (aircraft.stream[0].airborne != 0) {
        changePhase(aircraft, FlightPhase::flying);
        return true;
    }
    if (aircraft.stream[1].stationary != 0) {
        aircraft.stream.popFront(); // tried again with the next slot
        aircraft.samplesLostTo = SamplesLostTo::missingStand;
        return false;
    }
    changePhase(aircraft, FlightPhase::taxi);
    return true;
}

/// Whether the aircraft may be created.
bool giveBirth(LiveAircraft& aircraft) {
    if (aircraft.liveryTitle.empty()) {
        findLivery(aircraft);
    }
    if (aircraft.liveryTitle.empty()) {
        removeSaying(aircraft, "there is no livery for it");
        return false;
    }
    return enterFirstPhase(aircraft);
}

double initialHeading(const LiveAircraft& aircraft) {
    if (aircraft.respawnHeading) {
        return *aircraft.respawnHeading;
    }
    if (aircraft.phase == FlightPhase::parked) {
        return aircraft.standHeading;
    }
    const Sample& first = aircraft.stream[0];
    const Sample& second = aircraft.stream[1];
    return second.stationary != 0 ? first.track * radiansPerDegree : bearing(positionOf(first), positionOf(second));
}

} // namespace

void spawnLiveAc(LiveAircraft& aircraft) {
    if (aircraft.stream.size() < 2) {
        log(fmt::format("{} sz:{}", "spawnLiveAc", aircraft.stream.size()));
        return;
    }
    settleStart(aircraft.stream);
    if (aircraft.phase == FlightPhase::birth && !giveBirth(aircraft)) {
        return;
    }
    if (aircraft.dropRecord != 0) {
        return;
    }
    initialState(aircraft);
    aircraft.samplesLostTo = SamplesLostTo::nothing;
    aircraft.lifeState = LifeState::adding2sim;
    addingStack.push_back(aircraft.hexid);
}

void initialState(LiveAircraft& aircraft) {
    queueTwinCheck(aircraft.hexid);
    const Sample& first = aircraft.stream[0];
    const bool airborne = first.airborne != 0;
    aircraft.lat = first.lat;
    aircraft.lon = first.lon;
    aircraft.alt = first.alt;
    aircraft.tas = first.tas;
    aircraft.vsFps = first.vs / secondsPerMinute;
    aircraft.pitch = airborne ? pitchForVerticalSpeed(first.vs) : groundPitchAtBirth;
    aircraft.bank = believableRoll(aircraft, first).value_or(0);
    aircraft.heading = normalizedHeading(initialHeading(aircraft));
    // Odd but harmless: the next leg of a moving aircraft sets it anew, and one that stands does not add it.
    aircraft.dHeading = airborne ? 0 : aircraft.heading;
    aircraft.hiddenForUser = 0;
}
