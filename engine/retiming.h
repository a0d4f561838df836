// engine/retiming.h
// When the next sample is to be reached: at a believable speed, and never far from the time of the real aircraft.
// While a leg is planned element 0 of the stream is where the aircraft is, or was on its way to when it was given
// another target, and element 1 is where it goes. Engine thread only.
#pragma once

#include <cstdint>

#include "engine/live_aircraft.h"

inline constexpr double slotsPerHour = 360000;
/// No leg is planned for less.
inline constexpr std::int32_t shortestLegSlots = 25;

/// Knots: the mean of both speeds, or what the samples' times make of the distance when both are 0; then at least 1.
double averageSpeed(const Sample& from, const Sample& to);

/// Slots for the way from where the aircraft is to element 1 at that speed, rounded, at least shortestLegSlots. From
/// element 0 it may be much less: the first sample behind a gap ends a leg to a place that was made up, seconds before
/// it is reached.
std::int32_t slotsForWay(const LiveAircraft& aircraft, double knots);

/// Slots from now to element 1, at least shortestLegSlots.
std::int32_t legSlots(const LiveAircraft& aircraft);

/// Element 1 is to be reached so many slots from now, as far as its window lets it be moved; while the stream is
/// extended there is no window. Never in the past.
void limitToWindow(LiveAircraft& aircraft, std::int32_t wantedSlots);

/// Brings the times of a window that was widened back, a little with each leg.
void shrinkWindow(LiveAircraft& aircraft);
/// For an aircraft that has to find back to its real track.
void widenWindow(LiveAircraft& aircraft);

/// Element 1 of an aircraft in the air.
void retimeAir(LiveAircraft& aircraft);
