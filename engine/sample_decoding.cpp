// engine/sample_decoding.cpp
#include "engine/sample_decoding.h"

#include <algorithm>
#include <exception>
#include <optional>

#include <fmt/format.h>

#include "core/log.h"
#include "core/parameters.h"
#include "core/slot_clock.h"
#include "engine/aircraft_log.h"
#include "engine/angles.h"
#include "engine/extending_situations.h"
#include "engine/extension.h"
#include "sim/controls.h"
#include "sim/light_sets.h"

namespace {

constexpr std::size_t longestStream = 200;

constexpr double rollingKnots = 30; ///< a take-off roll does not stop from this speed
constexpr double fastKnots = 50;    ///< nor does a report of no speed mean anything after this one

// A waiting period that is cut out when it ends.
constexpr std::size_t leastWaitingElements = 3;
constexpr std::size_t lookBack = 6;
constexpr std::int32_t briefWaitSlots = 1500;
constexpr double hardlyLeftNm = 22 * nmPerMeter;

constexpr std::int32_t takeOffMaxLater = 5000;
constexpr std::int32_t takeOffMaxEarlier = 3000;

const Sample& lastOf(const LiveAircraft& aircraft) {
    return aircraft.stream[aircraft.stream.size() - 1];
}

void shrinkTo(SampleStream& stream, std::size_t size) {
    while (stream.size() > size) {
        stream.popBack();
    }
}

/// An aircraft that waits for another one has moved on in the real world.
bool hasLeftHoldingPoint(const LiveAircraft& aircraft, const Sample& sample) {
    if (aircraft.holding == 0 || aircraft.stream.empty()) {
        return false;
    }
    const double thresholdNm = HOLDING_THRESHOLD_METERS.value * nmPerMeter;
    return greatCircleNm(positionOf(aircraft.stream[0]), positionOf(sample)) > thresholdNm;
}

void keepOrder(const LiveAircraft& aircraft, Sample& sample) {
    const std::int32_t last = lastOf(aircraft).slot;
    if (last >= sample.slot) {
        sample.slot = last + 1;
    }
}

/// What it has on its stand must stay until it is active there: with more it would drive off at its activation.
bool waitsOnStand(const LiveAircraft& aircraft) {
    const bool isOnStand = aircraft.phase == FlightPhase::parking || aircraft.phase == FlightPhase::parked;
    return isOnStand && (aircraft.lifeState == LifeState::buffer || aircraft.lifeState == LifeState::adding2sim);
}

void decodeBirth(LiveAircraft& aircraft, Sample& sample) {
    if (!aircraft.stream.empty() && positionFilter(aircraft, sample)) {
        keepOrder(aircraft, sample);
        aircraft.stream.pushBack(sample);
    }
}

bool isStationaryThroughout(const SampleStream& stream) {
    for (std::size_t i = 0; i < stream.size(); ++i) {
        if (stream[i].stationary == 0) {
            return false;
        }
    }
    return true;
}

/// The index of the last element that moved, if it is near the end.
std::optional<std::size_t> lastMoved(const SampleStream& stream) {
    for (std::size_t distance = 2; distance <= lookBack && distance <= stream.size(); ++distance) {
        if (const std::size_t i = stream.size() - distance; stream[i].stationary == 0) {
            return i;
        }
    }
    return std::nullopt;
}

/// The samples come 30 seconds before they are due: without the cut the aircraft would wait twice.
void cutWaiting(SampleStream& stream, const Sample& sample) {
    if (stream.size() < leastWaitingElements) {
        return;
    }
    const std::optional<std::size_t> moved = lastMoved(stream);
    if (!moved) {
        return;
    }
    const std::int32_t waitSlots = stream[stream.size() - 1].slot - stream[*moved].slot;
    if (waitSlots < briefWaitSlots || greatCircleNm(positionOf(stream[*moved]), positionOf(sample)) <= hardlyLeftNm) {
        shrinkTo(stream, *moved + 1);
    }
}

void shortenWaiting(SampleStream& stream, const Sample& sample) {
    if (sample.airborne != 0 || stream[stream.size() - 1].stationary == 0) {
        return;
    }
    if (sample.stationary == 0) {
        cutWaiting(stream, sample);
    } else if (isStationaryThroughout(stream)) {
        shrinkTo(stream, 1);
    }
}

void touchAndGo(LiveAircraft& aircraft) {
    aircraft.phase = FlightPhase::taxi; // directly: previousPhase keeps what it was before the landing
    aircraft.takingOff = 1;
    gf_setThrottle(aircraft, 3);
    gf_setSpoilers(aircraft, Spoilers::extended);
    gf_setFlaps(aircraft, 1);
    aircraft.landing = 0;
    aircraft.landedHere = 0;
    aircraft.cleanedUp = 0;
    gf_setLights(aircraft.objectId, takeOffRollLights);
    aircraft.maxLater = takeOffMaxLater;
    aircraft.maxEarlier = takeOffMaxEarlier;
}

bool goesAround(const LiveAircraft& aircraft, const Sample& sample) {
    return aircraft.lifeState == LifeState::active && aircraft.onGround != 0 && aircraft.takingOff == 0 &&
           aircraft.rollingOut != 0 && lastOf(aircraft).airborne != 0 && sample.airborne != 0;
}

/// An aircraft that stands need not wait out what is left of the 30 seconds when it is about to move.
void endWaitingOfPair(SampleStream& stream) {
    if (stream.size() == 2 && stream[0].stationary != 0 && stream[1].stationary != 0) {
        stream[0].slot = slotClock + 1;
        stream[0].gs = stream[1].gs;
    }
}

void decodeMoving(LiveAircraft& aircraft, Sample& sample) {
    if (waitsOnStand(aircraft) || !checkExtendingSituations(aircraft, sample)) {
        return;
    }
    shortenWaiting(aircraft.stream, sample);
    keepOrder(aircraft, sample);
    if (goesAround(aircraft, sample)) {
        touchAndGo(aircraft);
    }
    aircraft.stream.pushBack(sample);
    endWaitingOfPair(aircraft.stream);
}

void decode(LiveAircraft& aircraft, Sample& sample) {
    if (aircraft.stream.size() > longestStream) {
        removeSaying(aircraft, "too many positions");
    } else if (hasLeftHoldingPoint(aircraft, sample)) {
        endHolding(aircraft);
        removeSaying(aircraft, "it held here, and has moved on");
    } else if (aircraft.phase == FlightPhase::birth) {
        decodeBirth(aircraft, sample);
    } else {
        decodeMoving(aircraft, sample);
    }
}

bool maySlowTo(const LiveAircraft& aircraft, const Sample& sample, double knots) {
    return aircraft.takingOff == 0 || sample.gs <= 0 || lastOf(aircraft).gs < knots;
}

/// In flight a report without movement is an error.
bool mayStand(const LiveAircraft& aircraft, const Sample& sample) {
    return sample.airborne == 0 && !(aircraft.lifeState == LifeState::active && aircraft.onGround == 0);
}

} // namespace

void decodeExisting(LiveAircraft& aircraft, Sample sample) {
    try {
        decode(aircraft, sample);
    } catch (const std::exception& failure) {
        log(fmt::format("{} exception {}", "decodeExisting", failure.what()));
        throw;
    }
}

bool positionFilter(const LiveAircraft& aircraft, Sample& sample) {
    const Sample& last = lastOf(aircraft);
    sample.stationary = isSamePosition(positionOf(last), positionOf(sample)) ? 1 : 0;
    if (aircraft.category == AircraftCategory::Rotorcraft) {
        return true;
    }
    if (sample.stationary != 0) {
        if (!mayStand(aircraft, sample) || !maySlowTo(aircraft, sample, rollingKnots)) {
            return false;
        }
        sample.gs = std::min(sample.gs, 0.0);
        return true;
    }
    if (isWithinDegrees(positionOf(last), positionOf(sample), hardlyMovedDegrees)) {
        if (!mayStand(aircraft, sample) || !maySlowTo(aircraft, sample, fastKnots)) {
            return false;
        }
        sample = last;
        sample.gs = 0;
        sample.stationary = 1;
        return true;
    }
    const bool isInMotion = aircraft.takingOff != 0 || sample.airborne != 0;
    return sample.gs != 0 || !isInMotion || last.gs < fastKnots;
}
