// engine/air_increments.h
// What an airborne aircraft adds to its attitude and height in each slot of a leg. Engine thread only.
#pragma once

#include <optional>

#include "engine/live_aircraft.h"

/// From the present position to element 1, for as many slots as legSlots tells.
void planWay(LiveAircraft& aircraft);

/// The rest of the leg from element 0 to element 1: phase, speeds, height, pitch, heading, bank, and the lights above
/// 10000 feet.
void airIncrements(LiveAircraft& aircraft);

/// The pitch that goes with a vertical speed in feet per minute; radians, negative is nose up.
double pitchForVerticalSpeed(double fpm);

/// The sample's roll, not beyond what the aircraft's category banks. Throws as limitsOf does.
std::optional<double> believableRoll(const LiveAircraft& aircraft, const Sample& sample);
