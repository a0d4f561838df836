// engine/angles.h
// Headings, differences of directions, and whether two positions are the same.
// Functions without state: usable from any thread.
#pragma once

#include "core/geography.h"
#include "feed/feed_record.h"

/// 0 up to 2 pi; what rounding leaves just short of a full turn is 0.
double normalizedHeading(double rad);

/// How far it is to turn, -pi to pi.
double headingDifference(double toRad, double fromRad);

/// Degrees eastward, -180 to 180, the shorter way round the earth.
double longitudeDifference(double to, double from);

/// What moves no farther stands.
inline constexpr double hardlyMovedDegrees = 0.00015;

/// Within so many degrees of each other on both axes.
bool isWithinDegrees(const LatLon& a, const LatLon& b, double degrees);

/// Two reports of one position.
bool isSamePosition(const LatLon& a, const LatLon& b);

inline LatLon positionOf(const Sample& sample) {
    return {sample.lat, sample.lon};
}
