// engine/extension.cpp
#include "engine/extension.h"

#include <algorithm>
#include <array>
#include <limits>

#include "core/injection_radius.h"
#include "core/parameters.h"
#include "core/slot_clock.h"
#include "engine/aircraft_tables.h"
#include "engine/airport_in_use.h"
#include "engine/angles.h"
#include "engine/new_aircraft.h"
#include "engine/retiming.h"
#include "sim/user_state.h"

namespace {

// Holding.
constexpr std::int32_t holdSlots = 300;
constexpr double holdingClearance = 1.2; ///< of the sum of both half wing spans
constexpr std::int32_t slotsPerMinute = 6000;

// How long a stream is extended.
constexpr std::int32_t airExtensions = 8;
constexpr std::int32_t groundExtensions = 10;
constexpr std::int32_t parkedExtensions = 1;
constexpr double rangeMarginNm = 0.5;
constexpr double airborneOnlyFeet = 1000; ///< above the airport in use

constexpr std::int32_t airStepSeconds = 8;
constexpr std::int32_t groundStepSeconds = 3;
constexpr std::int32_t parkedStepSeconds = 604800; // a week

constexpr double flyingSlowdown = 0.95;
constexpr double landingSlowdown = 0.9;
constexpr std::int32_t firstLandingExtensions = 4; ///< as many left or more: the landing slows down
constexpr double leastSpeedKnots = 1;
constexpr double stoppedKnots = 0;

// These two do not agree with each other, and are meant to be so.
constexpr double landingFpm = -667;
constexpr double landingFeetPerSecond = 10.005;
constexpr double takeOffFpm = 1500;
constexpr double takeOffFeetPerSecond = 25;

/// How a take-off roll goes on without samples, by the speed so far. A feed that ends on the roll gains speed and
/// vertical speed here but no height, which changeHeight gives to "take_off" alone: unless it has rotated by then, the
/// aircraft rolls straight on until its extensions are used up. It is meant to be so: it may fly off, but never stops
/// on the runway.
struct TakeOffSpeed {
    double upToKnots;
    double nextKnots;
    double vsFpm; ///< 0: as it was
};
constexpr std::array<TakeOffSpeed, 6> takeOffSpeeds{{
    {30, 40, 0},
    {60, 80, 0},
    {100, 110, 0},
    {140, 150, 600},
    {160, 170, 1200},
    {std::numeric_limits<double>::infinity(), 180, 2400},
}};

/// How a landing roll goes on without samples.
struct RollOutSpeed {
    double fromKnots;
    double nextKnots;
};
constexpr std::array<RollOutSpeed, 5> rollOutSpeeds{{
    {140, 100},
    {100, 80},
    {80, 60},
    {60, 30},
    {-std::numeric_limits<double>::infinity(), 20},
}};

LatLon positionOf(const LiveAircraft& aircraft) {
    return {aircraft.lat, aircraft.lon};
}

bool isTaxiing(const LiveAircraft& aircraft) {
    return aircraft.phase == FlightPhase::pushed_back ||
           (aircraft.phase == FlightPhase::taxi && aircraft.takingOff == 0 && aircraft.rollingOut == 0);
}

bool isInTheWayOf(const LiveAircraft& aircraft, const LiveAircraft& other) {
    return other.lifeState == LifeState::active && other.onGround != 0 && other.phase == FlightPhase::taxi &&
           other.objectId != aircraft.objectId &&
           greatCircleNm(positionOf(aircraft), positionOf(other)) <=
               holdingClearance * (aircraft.halfWingSpan + other.halfWingSpan);
}

SamplesLostTo objectionToHolding(const LiveAircraft& aircraft) {
    if (AIRBORNE_ONLY.value) {
        return SamplesLostTo::airborneOnly;
    }
    const std::int32_t minutes = (slotClock - aircraft.holdStartSlot) / slotsPerMinute;
    return minutes > MAX_HOLDING_MINUTES.value ? SamplesLostTo::longHolding : SamplesLostTo::nothing;
}

/// Whether there is no objection; the log tells it otherwise.
bool isAllowed(LiveAircraft& aircraft, SamplesLostTo objection) {
    aircraft.samplesLostTo = objection;
    return objection == SamplesLostTo::nothing;
}

/// Two that stand in each other's way would stand there for good, so this one ends.
bool hold(LiveAircraft& aircraft) {
    if (std::any_of(liveTable.begin(), liveTable.end(),
                    [&aircraft](const LiveAircraft& other) { return isInTheWayOf(aircraft, other); })) {
        endHolding(aircraft);
        aircraft.samplesLostTo = SamplesLostTo::otherInTheWay;
        return false;
    }
    if (aircraft.holding == 0) {
        aircraft.holdStartSlot = slotClock;
    } else if (!isAllowed(aircraft, objectionToHolding(aircraft))) {
        return false;
    }
    aircraft.holding = 1;
    Sample still = aircraft.stream[0];
    still.slot += holdSlots;
    still.gs = 0;
    still.stationary = 1;
    aircraft.stream.pushBack(still);
    aircraft.extensions = 1;
    return true;
}

bool isBeyondRange(const LiveAircraft& aircraft) {
    const LatLon user = positionOf(gUserState);
    return isPosition(user) && greatCircleNm(user, positionOf(aircraft)) >= gRadiusNm - rangeMarginNm;
}

bool isTooLow(const LiveAircraft& aircraft) {
    return AIRBORNE_ONLY.value && aircraft.alt < airportAltitudeOr(0) + airborneOnlyFeet;
}

SamplesLostTo objectionToExtension(const LiveAircraft& aircraft) {
    if (!isCategoryWanted(aircraft.category)) {
        return SamplesLostTo::unwantedCategory;
    }
    if (aircraft.onGround != 0) {
        return SamplesLostTo::nothing;
    }
    if (isBeyondRange(aircraft)) {
        return SamplesLostTo::rangeEdge;
    }
    return isTooLow(aircraft) ? SamplesLostTo::airborneOnly : SamplesLostTo::nothing;
}

std::int32_t firstExtensions(const LiveAircraft& aircraft) {
    if (aircraft.onGround == 0) {
        return airExtensions;
    }
    return aircraft.phase == FlightPhase::parked ? parkedExtensions : groundExtensions;
}

std::int32_t stepSeconds(const LiveAircraft& aircraft) {
    return aircraft.onGround != 0 ? groundStepSeconds : airStepSeconds;
}

void slowDownInTheAir(const LiveAircraft& aircraft, Sample& next) {
    if (aircraft.landing == 0) {
        next.gs = std::max(next.gs * flyingSlowdown, leastSpeedKnots);
    } else if (aircraft.extensions >= firstLandingExtensions) {
        next.gs = std::max(next.gs * landingSlowdown, leastSpeedKnots);
    }
}

void rollOn(const LiveAircraft& aircraft, Sample& next) {
    if (aircraft.rollingOut != 0) {
        next.gs = std::find_if(rollOutSpeeds.begin(), rollOutSpeeds.end(), [&next](const RollOutSpeed& row) {
                      return next.gs >= row.fromKnots;
                  })->nextKnots;
        next.vs = 0;
        return;
    }
    if (aircraft.takingOff == 0) {
        next.gs = stoppedKnots;
        next.stationary = 1;
        return;
    }
    const TakeOffSpeed& speed = *std::find_if(takeOffSpeeds.begin(), takeOffSpeeds.end(),
                                              [&next](const TakeOffSpeed& row) { return next.gs <= row.upToKnots; });
    next.gs = speed.nextKnots;
    if (speed.vsFpm != 0) {
        next.vs = speed.vsFpm;
    }
}

void changeSpeed(const LiveAircraft& aircraft, Sample& next) {
    if (next.stationary != 0 || aircraft.phase == FlightPhase::parked) {
        next.stationary = 1;
        next.gs = stoppedKnots;
    } else if (aircraft.onGround == 0) {
        slowDownInTheAir(aircraft, next);
    } else {
        rollOn(aircraft, next);
    }
}

void moveAhead(const LiveAircraft& aircraft, Sample& next) {
    if (next.gs <= 0) {
        return;
    }
    const LatLon before = positionOf(next);
    const double slots = stepSeconds(aircraft) * slotsPerSecond;
    const LatLon after = project(before, aircraft.heading, slots * next.gs * feetPerNm / slotsPerHour);
    next.lat = after.lat;
    next.lon = after.lon;
    next.stationary = isSamePosition(before, after) ? 1 : 0;
}

void changeHeight(const LiveAircraft& aircraft, Sample& next) {
    if (aircraft.landing != 0 && aircraft.flareStage == 0) {
        next.vs = landingFpm;
        next.alt -= landingFeetPerSecond * stepSeconds(aircraft);
    } else if (aircraft.phase == FlightPhase::take_off && next.stationary == 0) {
        next.vs = takeOffFpm;
        next.alt += takeOffFeetPerSecond * stepSeconds(aircraft);
    }
    next.airborne = next.alt > 0 ? 1 : 0;
    next.alt = std::max(next.alt, 0.0);
}

/// In the air it flies straight on: what was reported of a turn would keep it banked all the way.
void forgetAttitude(const LiveAircraft& aircraft, Sample& next) {
    if (aircraft.onGround == 0) {
        next.hasHeading = 0;
        next.heading.reset();
        next.roll.reset();
    }
}

/// The slot clock must not run over at the end of a week on a stand.
std::int32_t laterSlot(std::int32_t slot, std::int32_t seconds) {
    const std::int64_t later = std::int64_t{slot} + std::int64_t{seconds} * slotsPerSecond;
    return static_cast<std::int32_t>(std::min<std::int64_t>(later, std::numeric_limits<std::int32_t>::max()));
}

void extendBy(LiveAircraft& aircraft, std::int32_t count) {
    aircraft.extensions = count;
    const bool isParked = aircraft.phase == FlightPhase::parked;
    Sample next = aircraft.stream[0];
    changeSpeed(aircraft, next);
    moveAhead(aircraft, next);
    changeHeight(aircraft, next);
    forgetAttitude(aircraft, next);
    next.slot = laterSlot(next.slot, isParked ? parkedStepSeconds : stepSeconds(aircraft));
    if (isParked) {
        aircraft.seenAtStand = 0;
    }
    aircraft.stream.pushBack(next);
}

} // namespace

bool extendStream(LiveAircraft& aircraft) {
    if (aircraft.stream.firstOrLog("extendStream") == nullptr) {
        return false;
    }
    if (aircraft.onGround != 0 && isTaxiing(aircraft)) {
        return hold(aircraft);
    }
    if (aircraft.extensions < 0) {
        return false;
    }
    if (aircraft.extensions == 1) {
        aircraft.extensions = -1;
        return false;
    }
    if (aircraft.extensions > 1) {
        extendBy(aircraft, aircraft.extensions - 1);
        return true;
    }
    if (!isAllowed(aircraft, objectionToExtension(aircraft))) {
        return false;
    }
    extendBy(aircraft, firstExtensions(aircraft));
    return true;
}

void endExtension(LiveAircraft& aircraft) {
    aircraft.extensions = 0;
    widenWindow(aircraft);
}

void endHolding(LiveAircraft& aircraft) {
    aircraft.holding = 0;
    aircraft.holdStartSlot = 0;
}
