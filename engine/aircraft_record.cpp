// engine/aircraft_record.cpp
#include "engine/aircraft_record.h"

#include <algorithm>

#include <fmt/format.h>

#include "core/random.h"

namespace {

constexpr double rotatePitchSpread = 0.025;
constexpr double climbPitchSpread = 0.05;

constexpr double lowestCgHeightFeet = 1;
constexpr double highestCgHeightFeet = 35;

constexpr double steepestNoseUp = -1 * radiansPerDegree;
constexpr double steepestNoseDown = 2.5 * radiansPerDegree;
constexpr double usualGroundPitch = 0.7 * radiansPerDegree;

constexpr std::size_t airlineLength = 3;
constexpr std::string_view noCallsign = "@@@@@@@@";
constexpr std::size_t longestUsableCallsign = 8;

/// Changed by exactly that share of itself: up or down is chance, how much is not.
double spread(double value, double share) {
    return value * (gf_randomCoin() ? 1 + share : 1 - share);
}

bool isLetter(char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
}

char upperCase(char c) {
    return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c;
}

bool isDigit(char c) {
    return c >= '0' && c <= '9';
}

} // namespace

void takeCategoryLimits(AircraftRecord& aircraft) {
    const CategoryLimits& limits = limitsOf(aircraft.category);
    aircraft.flareSlots = limits.flareSlots;
    aircraft.rolloutSlots = limits.rolloutSlots;
    aircraft.rotateSlots = limits.rotateSlots;
    aircraft.climbPitchSlots = limits.climbPitchSlots;
    aircraft.rotatePitch = spread(limits.rotatePitchDeg * radiansPerDegree, rotatePitchSpread);
    aircraft.climbPitch = spread(limits.climbPitchDeg * radiansPerDegree, climbPitchSpread);
    aircraft.baseTurnRate = limits.baseTurnRateDeg * radiansPerDegree;
    aircraft.turnRate = aircraft.baseTurnRate;
    aircraft.maxClimbPerSlot = limits.maxClimbPerSlotFeet;
    aircraft.parkTaxiSpeed = limits.parkTaxiSpeedKnots;
}

std::string airlineOfFlightNumber(std::string_view callsign) {
    const bool isFlightNumber = callsign.size() > airlineLength && isDigit(callsign[airlineLength]) &&
                                std::all_of(callsign.begin(), callsign.begin() + airlineLength, isLetter);
    if (!isFlightNumber) {
        return {};
    }
    std::string airline(callsign.substr(0, airlineLength));
    std::transform(airline.begin(), airline.end(), airline.begin(), upperCase);
    return airline;
}

std::string airlineFromCallsign(std::string_view callsign) {
    std::string airline = airlineOfFlightNumber(callsign);
    return airline.empty() ? "PVT" : airline;
}

void takeCgHeight(AircraftRecord& aircraft, double feet) {
    if (feet >= lowestCgHeightFeet && feet <= highestCgHeightFeet) {
        aircraft.cgHeight = feet;
    }
}

void takeGroundPitch(AircraftRecord& aircraft, double radians) {
    const bool isBelievable = radians > steepestNoseUp && radians <= steepestNoseDown;
    aircraft.groundPitch = isBelievable ? radians : usualGroundPitch;
}

bool isGhostCallsign(std::string_view callsign) {
    return callsign.ends_with('_');
}

bool hasTypeAndAirline(const AircraftRecord& a, const AircraftRecord& b) {
    return a.airline == b.airline && a.model == b.model;
}

bool isUsableCallsign(std::string_view callsign) {
    return !callsign.empty() && callsign != noCallsign && callsign.size() <= longestUsableCallsign;
}

bool hasUsableCallsign(const AircraftRecord& aircraft) {
    return isUsableCallsign(aircraft.callsign);
}

std::string aircraftTag(const AircraftRecord& aircraft) {
    return fmt::format("{:3} {:4}", aircraft.airline, aircraft.model);
}

std::string routeText(const AircraftRecord& aircraft) {
    if (aircraft.origin.empty() && aircraft.destination.empty()) {
        return std::string(8, ' ');
    }
    return fmt::format("{:3}->{:3}", aircraft.origin, aircraft.destination);
}

std::string callsignText(const AircraftRecord& aircraft) {
    return fmt::format("{:8}", aircraft.callsign);
}

std::string shortLine(const AircraftRecord& aircraft) {
    return fmt::format("{} {:8} {}", routeText(aircraft), aircraft.callsign, aircraft.registration);
}

std::string longLine(const AircraftRecord& aircraft) {
    return fmt::format("{} {}", shortLine(aircraft), aircraftTag(aircraft));
}

std::string identityText(const AircraftRecord& aircraft) {
    return fmt::format("{} {} {}", aircraft.callsign, aircraft.registration, aircraftTag(aircraft));
}
