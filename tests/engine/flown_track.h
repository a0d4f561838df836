// tests/engine/flown_track.h
// What an aircraft flew, slot by slot, and how that compares with where it should have been.
#pragma once

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "core/geography.h"
#include "engine/angles.h"
#include "sim/sim_queues.h"

inline constexpr double secondsPerSlot = 0.01;

struct FlownSlot {
    std::int32_t slot = 0;
    PositionUpdate at;
};

inline double metresBetween(const LatLon& a, const LatLon& b) {
    return greatCircleNm(a, b) * metersPerNm;
}

/// How far a position lies beside a line of points, metres. It looks near the place where the last position was, so positions
/// are to be given in the order in which they were flown.
class CrossTrack {
public:
    explicit CrossTrack(std::vector<LatLon> points) : points_(std::move(points)) {}

    double metres(const LatLon& position) {
        double best = 1e12;
        std::size_t bestLeg = leg_;
        const std::size_t first = leg_ > reach ? leg_ - reach : 0;
        const std::size_t last = isFirst_ ? points_.size() : leg_ + reach;
        for (std::size_t i = first; i + 1 < points_.size() && i <= last; ++i) {
            if (const double distance = metresFromLeg(i, position); distance < best) {
                best = distance;
                bestLeg = i;
            }
        }
        leg_ = bestLeg;
        isFirst_ = false;
        return best;
    }

private:
    static constexpr std::size_t reach = 12;

    double metresFromLeg(std::size_t leg, const LatLon& position) const {
        const LatLon& a = points_[leg];
        const LatLon& b = points_[leg + 1];
        const double eastPerDegree = metersPerDegreeLatitude * std::cos(a.lat * radiansPerDegree);
        const double bx = longitudeDifference(b.lon, a.lon) * eastPerDegree;
        const double by = (b.lat - a.lat) * metersPerDegreeLatitude;
        const double px = longitudeDifference(position.lon, a.lon) * eastPerDegree;
        const double py = (position.lat - a.lat) * metersPerDegreeLatitude;
        const double squared = bx * bx + by * by;
        const double share = squared == 0 ? 0 : std::clamp((px * bx + py * by) / squared, 0.0, 1.0);
        return std::hypot(px - share * bx, py - share * by);
    }

    std::vector<LatLon> points_;
    std::size_t leg_ = 0;
    bool isFirst_ = true;
};

/// The value that this share of them does not exceed; 0 of none.
inline double atShare(std::vector<double> values, double share) {
    if (values.empty()) {
        return 0;
    }
    std::sort(values.begin(), values.end());
    return values[static_cast<std::size_t>(share * static_cast<double>(values.size() - 1))];
}

/// A slot that moves the aircraft more than three times as far as its speed does, and visibly.
inline bool isJump(double metres, double metresPerSecond) {
    return metres > 5 && metres > 3 * metresPerSecond * secondsPerSlot;
}
