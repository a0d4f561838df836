// core/geography.h
// Distances, bearings and destinations on the sphere, and the units of length.
// Functions without state: usable from any thread.
#pragma once

inline constexpr double radiansPerDegree = 0.017453292519943295;
inline constexpr double degreesPerRadian = 57.29577951308232;
inline constexpr double twoPi = 6.283185307179586;
/// A heading above this becomes 0: what rounding leaves just short of a full turn is north.
inline constexpr double largestHeadingRad = 6.283185307178586;

/// Twice the earth radius, as the haversine rule wants it.
inline constexpr double earthDiameterNm = 6875.493541569878;
inline constexpr double centralAnglePerFoot = 4.787404208238998e-8;
inline constexpr double feetPerNm = 6076.11549;
inline constexpr double metersPerNm = 1852.0;
/// Metres are turned into nautical miles with this factor; dividing by 1852 differs in the last bit.
inline constexpr double nmPerMeter = 0.0005399568034557236;
inline constexpr double metersPerDegreeLatitude = 111132.95;

/// A position in degrees, north and east positive.
struct LatLon {
    double lat = 0;
    double lon = 0;

    friend bool operator==(const LatLon&, const LatLon&) = default;
};

/// Great-circle distance in nautical miles by the haversine rule.
double greatCircleNm(const LatLon& a, const LatLon& b);

/// Initial bearing from a to b in radians, 0 up to 2 pi.
double bearing(const LatLon& a, const LatLon& b);

/// The point `feet` away from a along the great circle that leaves it at `headingRad`; its longitude is in -180 to 180
/// if that of a is.
LatLon project(const LatLon& a, double headingRad, double feet);
