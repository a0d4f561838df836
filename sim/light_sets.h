// sim/light_sets.h
// Which lights an aircraft shows at which moment of its flight, and how its systems stand on a stand. Engine thread
// only.
#pragma once

#include "engine/live_aircraft.h"
#include "sim/controls.h"

// clang-format off
//                                                 nav beacon landing taxi strobes logo cabin
inline constexpr LightSet startOfPushLights       {1,  1,     0,      1,   0,      1,   0}; ///< also pulling out
inline constexpr LightSet takeOffRollLights       {1,  1,     1,      1,   1,      1,   0};
inline constexpr LightSet below10000FeetLights    {1,  1,     1,      1,   1,      1,   1};
inline constexpr LightSet above10000FeetLights    {1,  1,     0,      0,   0,      0,   1};
inline constexpr LightSet vacatedRunwayLights     {1,  1,     0,      1,   0,      1,   1};
// clang-format on

/// Those of an object that has just been made, by whether its aircraft flies, by phase and heights.
LightSet activationLights(const LiveAircraft& aircraft, bool airborne);

/// Those of an aircraft that has arrived on a stand, and of a static one. The cabin is drawn anew with each call.
LightSet standLights(const AircraftRecord& aircraft);

/// Throttle idle, flaps up, engines off, and then the lights of a stand.
void gf_parkSystems(LiveAircraft& aircraft);
