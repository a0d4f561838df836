// rig/flights/receiver.cpp
#include "rig/flights/receiver.h"

#include <algorithm>
#include <cmath>

#include "core/geography.h"
#include "rig/flights/airport_layout.h"
#include "rig/traffic/feed_line.h"

namespace rig {

namespace {

constexpr double standardPressure = 1013.25; // hectopascal
constexpr double pressureOfTheDay = 998;
constexpr double feetPerHectopascal = 27.3; // near the ground
constexpr double altitudeStepFt = 25;
constexpr double positionNoiseFt = 20; // standard deviation in each direction
constexpr double shortestGap = 1;      // seconds
constexpr double longestGap = 30;
constexpr double exactGapMoving = 2;
constexpr double exactGapStanding = 10;
/// Below this height a receiver may lose sight of an aircraft.
constexpr double sightFt = 600;
constexpr double dropOutRate = 0.1; // of the lines there
constexpr double shortestDropOut = 10;
constexpr double longestDropOut = 25;

constexpr double halfTurn = 3.14159265358979;
constexpr double quarterTurn = halfTurn / 2;

LatLon displaced(const LatLon& position, Chance& chance) {
    const double north = chance.normal() * positionNoiseFt;
    const double east = chance.normal() * positionNoiseFt;
    const LatLon moved = project(position, north < 0 ? halfTurn : 0, std::abs(north));
    return project(moved, east < 0 ? halfTurn + quarterTurn : quarterTurn, std::abs(east));
}

FeedLine trueLine(const MotionState& state, const Aircraft& aircraft) {
    FeedLine line;
    line.hexid = aircraft.hexid;
    line.callsign = aircraft.callsign;
    line.registration = aircraft.registration;
    line.type = aircraft.type;
    line.category = aircraft.category;
    line.from = aircraft.from;
    line.to = aircraft.to;
    line.lat = state.position.lat;
    line.lon = state.position.lon;
    line.positionDecimals = 6;
    line.airborne = !state.onGround;
    line.altFt = state.onGround ? 0 : state.heightFt + airport::elevationFt;
    line.vsFpm = state.vsFpm;
    line.track = state.track;
    line.gs = state.gsKnots;
    line.roll = state.rollDegrees;
    line.trueHeading = state.heading;
    line.navQnh = pressureOf(Fidelity::exact);
    return line;
}

/// As the transmitters and receivers round and blur it.
void blur(FeedLine& line, Chance& chance) {
    const LatLon seen = displaced({line.lat, line.lon}, chance);
    line.lat = seen.lat;
    line.lon = seen.lon;
    line.positionDecimals = 5;
    if (line.airborne) {
        const double standard = line.altFt + (standardPressure - pressureOfTheDay) * feetPerHectopascal;
        line.altFt = std::round(standard / altitudeStepFt) * altitudeStepFt;
    }
    line.vsFpm = std::round(line.vsFpm / 64) * 64;
    line.track = std::round(line.track);
    line.gs = std::round(line.gs);
    line.navQnh = pressureOfTheDay;
}

double nextGap(const MotionState& state, Fidelity fidelity, Chance& chance) {
    if (fidelity == Fidelity::exact) {
        return state.gsKnots > 0 || !state.onGround ? exactGapMoving : exactGapStanding;
    }
    // Mostly short ones.
    const double shortness = chance.fraction();
    const double gap = shortestGap + (longestGap - shortestGap) * shortness * shortness * shortness;
    const bool dropsOut = state.heightFt < sightFt && chance.happens(dropOutRate);
    return gap + (dropsOut ? chance.between(shortestDropOut, longestDropOut) : 0);
}

/// When the feed goes quiet, seconds since the start of the flight.
double quietFrom(const std::vector<MotionState>& states, const std::string& phase) {
    const auto isOfPhase = [&phase](const MotionState& state) { return state.phase == phase; };
    const auto first = std::find_if(states.begin(), states.end(), isOfPhase);
    if (phase.empty() || first == states.end()) {
        return states.back().seconds + 1;
    }
    const auto end = std::find_if_not(first, states.end(), isOfPhase);
    return (first->seconds + std::prev(end)->seconds) / 2;
}

} // namespace

double pressureOf(Fidelity fidelity) {
    return fidelity == Fidelity::exact ? 1013 : pressureOfTheDay;
}

std::vector<ReceivedLine> receive(const std::vector<MotionState>& states, const Transmission& transmission,
                                  Fidelity fidelity, Chance& chance) {
    const double end = std::min(quietFrom(states, transmission.quietIn), states.back().seconds);
    std::vector<ReceivedLine> lines;
    double due = fidelity == Fidelity::exact ? 0 : chance.between(0, shortestGap + longestGap / 4);
    while (due <= end) {
        // The states are one of each second; a line tells a moment that it has a state of.
        const double second = std::floor(due);
        const MotionState& state = states[static_cast<std::size_t>(second)];
        FeedLine line = trueLine(state, transmission.aircraft);
        if (fidelity == Fidelity::network) {
            blur(line, chance);
        }
        line.timestamp = transmission.begin + second + transmission.delaySeconds;
        lines.push_back({line.timestamp, line.hexid, textOf(line)});
        due = std::max(due + nextGap(state, fidelity, chance), second + 1);
    }
    return lines;
}

} // namespace rig
