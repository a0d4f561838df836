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
#include "rig/report/cross_track.h"
#include "sim/sim_queues.h"

inline constexpr double secondsPerSlot = 0.01;

struct FlownSlot {
    std::int32_t slot = 0;
    PositionUpdate at;
};

inline double metresBetween(const LatLon& a, const LatLon& b) {
    return greatCircleNm(a, b) * metersPerNm;
}

/// By the rule of the rig's reports.
using rig::CrossTrack;

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
