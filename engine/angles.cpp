// engine/angles.cpp
#include "engine/angles.h"

#include <cmath>

namespace {

constexpr double fullTurnDegrees = 360;
constexpr double samePositionDegrees = 1e-8;

} // namespace

double normalizedHeading(double rad) {
    if (rad < 0 || rad >= twoPi) {
        rad = std::fmod(rad, twoPi);
        rad = rad < 0 ? rad + twoPi : rad;
    }
    return rad > largestHeadingRad ? 0 : rad;
}

double headingDifference(double toRad, double fromRad) {
    return std::remainder(toRad - fromRad, twoPi);
}

double longitudeDifference(double to, double from) {
    return std::remainder(to - from, fullTurnDegrees);
}

bool isWithinDegrees(const LatLon& a, const LatLon& b, double degrees) {
    return std::abs(a.lat - b.lat) <= degrees && std::abs(longitudeDifference(a.lon, b.lon)) <= degrees;
}

bool isSamePosition(const LatLon& a, const LatLon& b) {
    return isWithinDegrees(a, b, samePositionDegrees);
}
