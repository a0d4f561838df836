// rig/report/cross_track.h
// How far a position lies beside a line of points, and where along it.
// Belongs to whoever follows the line; without a library of its own, so that tests of the engine measure by the same
// rule.
#pragma once

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <vector>

#include "core/geography.h"

namespace rig {

struct NearestOnLine {
    double metres = 0;        ///< from the line
    std::size_t leg = 0;      ///< the leg from point `leg` to the next one
    double share = 0;         ///< of that leg, 0 to 1
    bool isBeyondEnd = false; ///< the position lies before the first point or behind the last
};

/// It looks near the place where the last position was, so positions are to be given in the order in which they were
/// flown; the first one is looked for along the whole line.
class CrossTrack {
public:
    static constexpr std::size_t reach = 12; ///< legs before and after

    explicit CrossTrack(const std::vector<LatLon>& points) {
        for (std::size_t i = 0; i + 1 < points.size(); ++i) {
            legs_.push_back(legBetween(points[i], points[i + 1]));
        }
    }

    bool isEmpty() const { return legs_.empty(); }

    /// The next position is looked for near this leg.
    void lookNear(std::size_t leg) {
        leg_ = leg;
        isFirst_ = false;
    }

    /// There must be two points at least.
    NearestOnLine nearest(const LatLon& position) {
        const std::size_t first = isFirst_ || leg_ < reach ? 0 : leg_ - reach;
        const std::size_t end = isFirst_ ? legs_.size() : std::min(legs_.size(), leg_ + reach + 1);
        const NearestOnLine best = nearestAmong(first, end, position);
        leg_ = best.leg;
        isFirst_ = false;
        return best;
    }

    /// Of the legs from `first` up to the one before `end`, of which there must be one.
    NearestOnLine nearestAmong(std::size_t first, std::size_t end, const LatLon& position) const {
        NearestOnLine best{.metres = 1e12, .leg = first};
        for (std::size_t i = first; i < end; ++i) {
            if (const NearestOnLine here = nearestOnLeg(i, position); here.metres < best.metres) {
                best = here;
            }
        }
        return best;
    }

    double metres(const LatLon& position) { return nearest(position).metres; }

private:
    /// Metres east and north of its first point.
    struct Leg {
        LatLon from;
        double eastPerDegree = 0;
        double east = 0;
        double north = 0;
        double squared = 0;
    };

    static double longitudeBetween(double from, double to) { return std::remainder(to - from, 360.0); }

    static Leg legBetween(const LatLon& from, const LatLon& to) {
        Leg leg{.from = from, .eastPerDegree = metersPerDegreeLatitude * std::cos(from.lat * radiansPerDegree)};
        leg.east = longitudeBetween(from.lon, to.lon) * leg.eastPerDegree;
        leg.north = (to.lat - from.lat) * metersPerDegreeLatitude;
        leg.squared = leg.east * leg.east + leg.north * leg.north;
        return leg;
    }

    NearestOnLine nearestOnLeg(std::size_t index, const LatLon& position) const {
        const Leg& leg = legs_[index];
        const double east = longitudeBetween(leg.from.lon, position.lon) * leg.eastPerDegree;
        const double north = (position.lat - leg.from.lat) * metersPerDegreeLatitude;
        const double along = leg.squared == 0 ? 0 : (east * leg.east + north * leg.north) / leg.squared;
        const double share = std::clamp(along, 0.0, 1.0);
        const bool isBefore = index == 0 && along < 0;
        const bool isBehind = index + 1 == legs_.size() && along > 1;
        return {std::hypot(east - share * leg.east, north - share * leg.north), index, share, isBefore || isBehind};
    }

    std::vector<Leg> legs_;
    std::size_t leg_ = 0;
    bool isFirst_ = true;
};

} // namespace rig
