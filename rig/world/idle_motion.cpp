// rig/world/idle_motion.cpp
#include "rig/world/idle_motion.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace rig {

namespace {

constexpr double secondsPerHour = 3600.0;
constexpr double eastRad = std::numbers::pi / 2;

void drift(Position& position, double seconds) {
    const LatLon drifted = project(position.place(), eastRad, driftKnots * feetPerNm / secondsPerHour * seconds);
    position.lat = drifted.lat;
    position.lon = drifted.lon;
}

void sink(Position& position, double standingFeet, double seconds) {
    if (position.altFeet > standingFeet) {
        position.altFeet = std::max(position.altFeet - sinkFeetPerSecond * seconds, standingFeet);
    }
}

void turn(Position& position, double seconds) {
    const double heading = std::fmod(position.headingRad + turnRadPerSecond * seconds, twoPi);
    position.headingRad = heading > largestHeadingRad ? 0 : heading;
}

} // namespace

void moveIdly(WorldObject& object, double groundFeet, double seconds) {
    if (!object.released || !object.freezes.place) {
        drift(object.position, seconds);
    }
    if (!object.released || !object.freezes.altitude) {
        sink(object.position, groundFeet + object.type.cgHeightFeet, seconds);
    }
    if (!object.released || !object.freezes.attitude) {
        turn(object.position, seconds);
    }
}

} // namespace rig
