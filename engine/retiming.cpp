// engine/retiming.cpp
#include "engine/retiming.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "core/geography.h"
#include "core/slot_clock.h"
#include "engine/angles.h"

namespace {

constexpr double longestLegSlots = 1e9; // some hundred days, far from the end of the slot clock's numbers
constexpr double leastSpeedKnots = 1;
constexpr double touchdownSpeedKnots = 100;

constexpr std::int32_t windowShrinkSlots = 100;
constexpr std::int32_t wideWindowSlots = 3000;
constexpr std::int32_t takeOffWindowSlots = 5000;

void shrink(std::int32_t& shiftSlots) {
    if (shiftSlots > initialTimeShiftSlots) {
        shiftSlots = std::max(shiftSlots - windowShrinkSlots, initialTimeShiftSlots);
    }
}

double airSpeed(const LiveAircraft& aircraft, const Sample& from, const Sample& to) {
    if (aircraft.landing != 0 && to.airborne == 0) {
        return from.gs > 0 ? from.gs : touchdownSpeedKnots;
    }
    return averageSpeed(from, to);
}

} // namespace

double averageSpeed(const Sample& from, const Sample& to) {
    if (from.gs == 0 && to.gs == 0) {
        const std::int64_t gapSlots = std::int64_t{to.slot} - from.slot;
        const auto slots = static_cast<double>(std::max<std::int64_t>(gapSlots, shortestLegSlots));
        return std::max(greatCircleNm(positionOf(from), positionOf(to)) * slotsPerHour / slots, leastSpeedKnots);
    }
    return (from.gs + to.gs) / 2;
}

std::int32_t slotsForWay(const LiveAircraft& aircraft, double knots) {
    if (knots <= 0) {
        return shortestLegSlots;
    }
    const double nm = greatCircleNm({aircraft.lat, aircraft.lon}, positionOf(aircraft.stream[1]));
    const double slots = std::min(nm * slotsPerHour / knots, longestLegSlots);
    return std::max(static_cast<std::int32_t>(std::lround(slots)), shortestLegSlots);
}

std::int32_t legSlots(const LiveAircraft& aircraft) {
    const std::int64_t slots = std::int64_t{aircraft.stream[1].slot} - slotClock;
    return static_cast<std::int32_t>(
        std::clamp<std::int64_t>(slots, shortestLegSlots, std::numeric_limits<std::int32_t>::max()));
}

void limitToWindow(LiveAircraft& aircraft, std::int32_t wantedSlots) {
    Sample& target = aircraft.stream[1];
    const std::int64_t now = slotClock;
    std::int64_t slot = now + wantedSlots;
    if (aircraft.extensions <= 0) {
        slot = std::clamp(slot, std::int64_t{target.slot} - aircraft.maxEarlier,
                          std::int64_t{target.slot} + aircraft.maxLater);
    }
    target.slot =
        static_cast<std::int32_t>(std::clamp<std::int64_t>(slot, now, std::numeric_limits<std::int32_t>::max()));
}

void shrinkWindow(LiveAircraft& aircraft) {
    shrink(aircraft.maxEarlier);
    shrink(aircraft.maxLater);
}

void widenWindow(LiveAircraft& aircraft) {
    aircraft.maxEarlier = wideWindowSlots;
    aircraft.maxLater = aircraft.takingOff != 0 ? takeOffWindowSlots : wideWindowSlots;
}

void retimeAir(LiveAircraft& aircraft) {
    const Sample& from = aircraft.stream[0];
    const Sample& to = aircraft.stream[1];
    if (to.stationary == 0) {
        limitToWindow(aircraft, slotsForWay(aircraft, airSpeed(aircraft, from, to)));
    }
}
