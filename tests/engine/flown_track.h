// tests/engine/flown_track.h
// What an aircraft flew, slot by slot, and how that compares with where it should have been.
#pragma once

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <utility>
#include <vector>

#include "core/geography.h"
#include "engine/angles.h"
#include "rig/report/cross_track.h"
#include "rig/report/object_meter.h"
#include "sim/sim_queues.h"

inline constexpr double secondsPerSlot = 0.01;

struct FlownSlot {
    std::int32_t slot = 0;
    PositionUpdate at;
};

inline double metresBetween(const LatLon& a, const LatLon& b) {
    return greatCircleNm(a, b) * metersPerNm;
}

/// A point of a track, and when it is passed.
struct TrackPoint {
    LatLon at;
    double seconds = 0;
};

/// How far a position lies beside a track, metres. Only that part of the track is looked at which is flown at about
/// that time, for a track may cross itself. Positions are to be given in the order in which they were flown.
class CrossTrack {
public:
    /// So many seconds a flight may be before or behind the times of its track, which has at least one point.
    CrossTrack(std::vector<TrackPoint> points, double reachSeconds)
        : line_(placesOf(points)), points_(std::move(points)), reachSeconds_(reachSeconds) {}

    double metres(const LatLon& position, double seconds) {
        while (first_ + 2 < points_.size() && points_[first_ + 1].seconds < seconds - reachSeconds_) {
            ++first_;
        }
        std::size_t end = first_;
        while (end + 1 < points_.size() && points_[end].seconds <= seconds + reachSeconds_) {
            ++end;
        }
        return end == first_ ? metresBetween(points_[first_].at, position)
                             : line_.nearestAmong(first_, end, position).metres;
    }

private:
    static std::vector<LatLon> placesOf(const std::vector<TrackPoint>& points) {
        std::vector<LatLon> places;
        for (const TrackPoint& point : points) {
            places.push_back(point.at);
        }
        return places;
    }

    rig::CrossTrack line_;
    std::vector<TrackPoint> points_;
    double reachSeconds_;
    std::size_t first_ = 0;
};

/// The value that this share of them does not exceed; 0 of none.
inline double atShare(std::vector<double> values, double share) {
    if (values.empty()) {
        return 0;
    }
    std::sort(values.begin(), values.end());
    return values[static_cast<std::size_t>(share * static_cast<double>(values.size() - 1))];
}

/// When the real aircraft was where the flown one is at that slot: it flies 30 seconds behind. Seconds from the slot at
/// which the feed began.
inline double secondsInFeed(std::int32_t slot, std::int32_t firstSlot) {
    return (slot - firstSlot) * secondsPerSlot - 30;
}

/// About what the simulator displays: every third slot, thirty frames a second. In a single slot 5 m would be 500 m a
/// second, and nothing would ever be seen to jump.
inline constexpr std::int32_t slotsPerFrame = 3;
inline constexpr double secondsPerFrame = slotsPerFrame * secondsPerSlot;

/// How far on a frame shows the aircraft, against what its speed makes of the time; a step that is hardly seen counts
/// little.
inline double stepShare(double metresInFrame, double metresPerSecond) {
    return metresInFrame / std::max(metresPerSecond * secondsPerFrame, rig::shortestJumpMetres / rig::jumpShare);
}

/// As "rig report" has it.
inline bool isJump(double metresInFrame, double metresPerSecond) {
    return stepShare(metresInFrame, metresPerSecond) > rig::jumpShare;
}

/// The same of a change of height, against the vertical speed.
inline double heightStepShare(double feetInFrame, double feetPerSecond) {
    constexpr double leastFeet = rig::shortestJumpMetres / rig::jumpShare * feetPerNm / metersPerNm;
    return std::abs(feetInFrame) / std::max(std::abs(feetPerSecond) * secondsPerFrame, leastFeet);
}

inline bool isHeightJump(double feetInFrame, double feetPerSecond) {
    return heightStepShare(feetInFrame, feetPerSecond) > rig::jumpShare;
}

/// Whether each of the eight values is one that an aircraft in the air can have.
inline bool isSound(const PositionUpdate& at) {
    constexpr double rounding = 1e-9; // a fighter banks by a right angle
    const auto lies = [](double value, double least, double most) {
        return value >= least - rounding && value <= most + rounding;
    };
    return lies(at.lat, -90, 90) && lies(at.lon, -180, 180) && lies(at.alt, -1500, 60000) &&
           lies(at.heading, 0, largestHeadingRad) && lies(at.pitch, -twoPi / 4, twoPi / 4) &&
           lies(at.bank, -twoPi / 4, twoPi / 4) && lies(at.vsFps, -500, 500) && lies(at.tas, 0, 1500);
}
