// core/geography.cpp
#include "core/geography.h"

#include <algorithm>
#include <cmath>

namespace {

double squared(double x) {
    return x * x;
}

/// Only what lies beyond the antimeridian is moved, so that every other longitude keeps its last bit.
double longitudeInRange(double lon) {
    if (lon > 180) {
        return lon - 360;
    }
    return lon < -180 ? lon + 360 : lon;
}

} // namespace

double greatCircleNm(const LatLon& a, const LatLon& b) {
    const double haversine = squared(std::sin((b.lat - a.lat) * radiansPerDegree / 2)) +
                             std::cos(a.lat * radiansPerDegree) * std::cos(b.lat * radiansPerDegree) *
                                 squared(std::sin((b.lon - a.lon) * radiansPerDegree / 2));
    // Between opposite points rounding can carry it past 1.
    return earthDiameterNm * std::atan2(std::sqrt(haversine), std::sqrt(std::max(0.0, 1 - haversine)));
}

double bearing(const LatLon& a, const LatLon& b) {
    const double lat1 = a.lat * radiansPerDegree;
    const double lat2 = b.lat * radiansPerDegree;
    const double dlon = (b.lon - a.lon) * radiansPerDegree;
    const double angle = std::atan2(std::sin(dlon) * std::cos(lat2),
                                    std::cos(lat1) * std::sin(lat2) - std::sin(lat1) * std::cos(lat2) * std::cos(dlon));
    const double heading = angle < 0 ? angle + twoPi : angle;
    return heading > largestHeadingRad ? 0 : heading;
}

// The destination as a vector, seen from the meridian of a: well-conditioned everywhere, also at the poles.
LatLon project(const LatLon& a, double headingRad, double feet) {
    const double lat = a.lat * radiansPerDegree;
    const double angle = feet * centralAnglePerFoot;
    const double northward = std::sin(angle) * std::cos(headingRad);
    const double x = std::cos(lat) * std::cos(angle) - std::sin(lat) * northward;
    const double y = std::sin(angle) * std::sin(headingRad);
    const double z = std::sin(lat) * std::cos(angle) + std::cos(lat) * northward;
    return {std::atan2(z, std::hypot(x, y)) * degreesPerRadian,
            longitudeInRange(a.lon + std::atan2(y, x) * degreesPerRadian)};
}
