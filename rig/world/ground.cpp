// rig/world/ground.cpp
#include "rig/world/ground.h"

#include <cmath>

namespace rig {

namespace {

constexpr double nmPerDegreeLatitude = metersPerDegreeLatitude / metersPerNm;

bool liesWithin(const Place& place, const LatLon& at) {
    // Latitudes alone rule most places out, and cost little.
    return std::abs(place.at.lat - at.lat) * nmPerDegreeLatitude <= 1.01 * place.radiusNm &&
           greatCircleNm(place.at, at) <= place.radiusNm;
}

} // namespace

double Ground::elevationFeet(const LatLon& at) const {
    for (const Place& place : places) {
        if (liesWithin(place, at)) {
            return place.elevationFeet;
        }
    }
    return defaultElevationFeet;
}

} // namespace rig
