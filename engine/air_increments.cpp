// engine/air_increments.cpp
#include "engine/air_increments.h"

#include <algorithm>
#include <cmath>

#include "core/geography.h"
#include "engine/airport_in_use.h"
#include "engine/angles.h"
#include "engine/retiming.h"
#include "feed/qnh_reader.h"
#include "sim/controls.h"
#include "sim/light_sets.h"

namespace {

constexpr double slotsPerMinute = 6000;

// Height.
constexpr double lowFeet = 1000;              ///< above ground
constexpr double leastClimbPerSlotFeet = 0.2; ///< of an aircraft that is low and does not land
constexpr double levelFpm = 100;              ///< a vertical speed, or a sum of several, up to this is none
constexpr int highQnh = 1014;
constexpr double standardQnhExactly = 1013.25;
constexpr double fpmPerHectopascal = 6;
constexpr double finalFeet = 100; ///< above ground
constexpr double finalDescentFpm = -600;
constexpr double leastDescentFpm = -601;
constexpr double leastClimbFpm = 601;
constexpr std::size_t firstSkip = 3;
constexpr std::size_t lastSkip = 10;

// Pitch.
constexpr double levelPitch = -3 * radiansPerDegree;
constexpr double pitchPerStep = 2.2 * radiansPerDegree;
constexpr double pitchStepFpm = 600;
constexpr double steepestClimbFpm = 2400;
constexpr double steepestDescentFpm = -3000;

// Heading.
constexpr double trueHeadingFeet = 1000; ///< above ground; below it the reported heading counts
constexpr double trueHeadingLandingFeet = 2000;
constexpr double mostBeyondBend = 20 * radiansPerDegree; ///< the noise that a reported track may add to a bend
constexpr double mostBeyondWay = 60 * radiansPerDegree;

constexpr double lowAltitudeFeet = 10000;
constexpr std::int32_t cruiseThrottle = 3;
constexpr std::int32_t rotorThrottle = 4;
constexpr std::int32_t flapsUp = 0;

double altitudeStep(const LiveAircraft& aircraft) {
    return (aircraft.stream[1].alt - aircraft.alt) / legSlots(aircraft);
}

double climbStep(const LiveAircraft& aircraft) {
    return std::clamp(altitudeStep(aircraft), 0.0, aircraft.maxClimbPerSlot);
}

double descentRate(const LiveAircraft& aircraft) {
    if (aircraft.altAboveGround <= finalFeet) {
        return finalDescentFpm;
    }
    const double mean = (aircraft.stream[0].vs + aircraft.stream[1].vs) / 2;
    return std::min(mean - (gQnh - standardQnhExactly) * fpmPerHectopascal, leastDescentFpm);
}

void moveAt(LiveAircraft& aircraft, double fpm) {
    aircraft.stream[1].vs = fpm;
    aircraft.vsFpm = fpm;
    aircraft.dAlt = fpm / slotsPerMinute;
}

void stepInTheAir(LiveAircraft& aircraft) {
    const Sample& from = aircraft.stream[0];
    const Sample& to = aircraft.stream[1];
    const bool isHigh = aircraft.altAboveGround > lowFeet;
    if (aircraft.landing != 0) {
        if (from.alt != to.alt || isHigh || from.vs + to.vs > levelFpm) {
            aircraft.dAlt = altitudeStep(aircraft);
        } else {
            moveAt(aircraft, descentRate(aircraft));
        }
        return;
    }
    const double step = altitudeStep(aircraft);
    aircraft.dAlt = std::min(isHigh ? step : std::max(step, leastClimbPerSlotFeet), aircraft.maxClimbPerSlot);
}

void descendToGround(LiveAircraft& aircraft) {
    if (gQnh >= highQnh) {
        moveAt(aircraft, descentRate(aircraft));
    } else if (!gAirportInUse) {
        moveAt(aircraft, leastDescentFpm);
    } else {
        aircraft.dAlt = (gAirportInUse->altFeet - aircraft.alt) / legSlots(aircraft);
    }
}

/// The element before this one becomes the next target, if it is airborne. The leg is another one then, so its way is
/// planned anew, and whatever it was against the sample before it, the new target is flown to.
bool skipToAirborne(LiveAircraft& aircraft, std::size_t index) {
    SampleStream& stream = aircraft.stream;
    if (stream.size() < index || stream[index - 1].airborne == 0) {
        return false;
    }
    for (std::size_t i = index - 1; i > 1; --i) {
        stream.erase(1);
    }
    stream[1].stationary = 0; // the speeds of this leg stay those of the sample that is left out
    limitToWindow(aircraft, slotsForWay(aircraft, averageSpeed(stream[0], stream[1])));
    planWay(aircraft);
    aircraft.dAlt = climbStep(aircraft);
    return true;
}

double sumOfVerticalSpeeds(const SampleStream& stream) {
    double sum = 0;
    for (std::size_t i = 0; i < stream.size(); ++i) {
        sum += stream[i].vs;
    }
    return sum;
}

/// The samples say ground while the aircraft still flies. With a climb in the samples it is a low pass, and it flies
/// on.
void flyOverGround(LiveAircraft& aircraft) {
    if (aircraft.landing != 0 || sumOfVerticalSpeeds(aircraft.stream) <= levelFpm) {
        moveAt(aircraft, descentRate(aircraft));
        return;
    }
    const std::size_t last = std::min(aircraft.stream.size() - 1, lastSkip);
    for (std::size_t i = firstSkip; i <= last; ++i) {
        if (skipToAirborne(aircraft, i)) {
            return;
        }
    }
    Sample& to = aircraft.stream[1];
    to.vs = std::max(to.vs, leastClimbFpm);
    // A wild report shoots nothing up.
    aircraft.dAlt = std::min(to.vs / slotsPerMinute, aircraft.maxClimbPerSlot);
}

void planAltitude(LiveAircraft& aircraft) {
    const bool fromAir = aircraft.stream[0].airborne != 0;
    if (aircraft.stream[1].airborne != 0) {
        if (fromAir) {
            stepInTheAir(aircraft);
        } else {
            aircraft.dAlt = climbStep(aircraft);
        }
        return;
    }
    fromAir ? descendToGround(aircraft) : flyOverGround(aircraft);
    gf_setGear(aircraft, Gear::down);
}

/// A leg that begins in the flare overwrites the flare's own pitch rate. That is meant to be so.
void planPitch(LiveAircraft& aircraft) {
    const double limit = limitsOf(aircraft.category).maxPitchRateDeg * radiansPerDegree;
    const double change = pitchForVerticalSpeed(aircraft.stream[1].vs) - aircraft.pitch;
    aircraft.dPitch = std::clamp(change / legSlots(aircraft), -limit, limit);
}

bool goesByReportedHeading(const LiveAircraft& aircraft) {
    const Sample& to = aircraft.stream[1];
    const double below = aircraft.landing != 0 ? trueHeadingLandingFeet : trueHeadingFeet;
    return to.hasHeading != 0 && to.roll && to.heading && aircraft.altAboveGround < below;
}

/// From where the aircraft is: behind a gap it may be some way short of the sample at which the leg begins.
double wayToTarget(const LiveAircraft& aircraft) {
    const LatLon here{aircraft.lat, aircraft.lon};
    const LatLon target = positionOf(aircraft.stream[1]);
    return isSamePosition(here, target) ? aircraft.targetHeading : bearing(here, target);
}

/// Where the aircraft heads at the end of a leg that no other is known to follow. In a turn the reported track lies as
/// far beyond the way as the way beyond the heading so far; whatever else a track says of the way is an error of one of
/// the two, and the way counts. So does it where the leg is made up, as its track is.
double headingBehindLastLeg(const LiveAircraft& aircraft) {
    const Sample& to = aircraft.stream[1];
    const double way = wayToTarget(aircraft);
    if (to.track == 0 || aircraft.extensions > 0) {
        return way;
    }
    const double bend = headingDifference(way, aircraft.heading);
    const double beyond = headingDifference(to.track * radiansPerDegree, way);
    const bool turnsOn =
        bend * beyond > 0 && std::abs(beyond) <= std::min(std::abs(bend) + mostBeyondBend, mostBeyondWay);
    return turnsOn ? way + beyond : way;
}

/// Of two samples at one place, as a helicopter reports them that is going to hover, none tells of a leg.
bool isLegAfterNextKnown(const SampleStream& stream) {
    return stream.size() >= 3 && !isSamePosition(positionOf(stream[1]), positionOf(stream[2]));
}

/// On the way to element 1 the aircraft turns to where the leg after it leads. A feed with more than some fifteen
/// seconds from sample to sample hardly ever tells that leg in time: then the aircraft turns into the present one and
/// on with it, or it would keep the heading of its birth and fly sideways and backwards.
double turnAhead(const LiveAircraft& aircraft) {
    const SampleStream& stream = aircraft.stream;
    const double ahead = isLegAfterNextKnown(stream) ? bearing(positionOf(stream[1]), positionOf(stream[2]))
                                                     : headingBehindLastLeg(aircraft);
    return headingDifference(ahead, aircraft.heading);
}

double turnOfLeg(const LiveAircraft& aircraft) {
    return goesByReportedHeading(aircraft) ? headingDifference(*aircraft.stream[1].heading, aircraft.heading)
                                           : turnAhead(aircraft);
}

/// Per slot: towards one degree of bank for each degree to turn; the simulator's bank is negative to the right.
double bankForTurn(const LiveAircraft& aircraft, double turn) {
    const CategoryLimits& limits = limitsOf(aircraft.category);
    const double mostBank = limits.maxBankDeg * radiansPerDegree;
    const double mostRate = limits.maxBankRateDeg * radiansPerDegree;
    const double wanted = std::clamp(-turn, -mostBank, mostBank);
    return std::clamp((wanted - aircraft.bank) / legSlots(aircraft), -mostRate, mostRate);
}

void planBank(LiveAircraft& aircraft, double turn) {
    if (const std::optional<double> roll = believableRoll(aircraft, aircraft.stream[1])) {
        aircraft.dBank = (*roll - aircraft.bank) / legSlots(aircraft);
    } else {
        aircraft.dBank = bankForTurn(aircraft, turn);
    }
}

void cleanUpAbove10000(LiveAircraft& aircraft) {
    if (aircraft.lightsHighSet != 0) {
        return;
    }
    aircraft.lightsHighSet = 1;
    aircraft.lightsLowSet = 0;
    gf_setLights(aircraft.objectId, above10000FeetLights);
    gf_setThrottle(aircraft, aircraft.category == AircraftCategory::Rotorcraft ? rotorThrottle : cruiseThrottle);
    gf_setGear(aircraft, Gear::up);
    gf_setFlaps(aircraft, flapsUp);
}

} // namespace

double pitchForVerticalSpeed(double fpm) {
    const double effective = fpm > 0 ? std::min(fpm, steepestClimbFpm) : std::max(fpm, steepestDescentFpm) / 2;
    return levelPitch - effective / pitchStepFpm * pitchPerStep;
}

std::optional<double> believableRoll(const LiveAircraft& aircraft, const Sample& sample) {
    if (!sample.roll) {
        return std::nullopt;
    }
    const double most = limitsOf(aircraft.category).maxBankDeg * radiansPerDegree;
    return std::clamp(*sample.roll, -most, most);
}

void planWay(LiveAircraft& aircraft) {
    const Sample& to = aircraft.stream[1];
    const double slots = legSlots(aircraft);
    aircraft.dLat = (to.lat - aircraft.lat) / slots;
    aircraft.dLon = longitudeDifference(to.lon, aircraft.lon) / slots;
}

void airIncrements(LiveAircraft& aircraft) {
    if (aircraft.phase != FlightPhase::take_off) {
        changePhase(aircraft, FlightPhase::flying);
    }
    aircraft.tasSigned = aircraft.stream[1].tas;
    aircraft.vsFpm = aircraft.stream[1].vs;
    if (aircraft.flareStage == 0) {
        planAltitude(aircraft);
    }
    if (aircraft.phase != FlightPhase::take_off) {
        planPitch(aircraft);
    }
    const double turn = turnOfLeg(aircraft);
    aircraft.dHeading = turn / legSlots(aircraft);
    planBank(aircraft, turn);
    if (aircraft.stream[0].alt >= lowAltitudeFeet) {
        cleanUpAbove10000(aircraft);
    }
}
