// rig/flights/script.h
// What the scripted aircraft do, put together from legs. Functions without state: usable from any thread.
#pragma once

#include <string>
#include <vector>

#include "rig/flights/airport_layout.h"
#include "rig/flights/motion.h"

namespace rig {

using Legs = std::vector<Leg>;

// The names of the phases.

namespace phase {
inline constexpr const char* parked = "parked";
inline constexpr const char* pushBack = "push-back";
inline constexpr const char* taxiOut = "taxi out";
inline constexpr const char* holding = "holding";
inline constexpr const char* takeOff = "take-off";
inline constexpr const char* climb = "climb";
inline constexpr const char* cruise = "cruise";
inline constexpr const char* descent = "descent";
inline constexpr const char* approach = "approach";
inline constexpr const char* landing = "landing";
inline constexpr const char* rollOut = "roll-out";
inline constexpr const char* taxiIn = "taxi in";
inline constexpr const char* towing = "towing";
inline constexpr const char* circuit = "circuit";
inline constexpr const char* goAround = "go-around";
inline constexpr const char* hover = "hover";
} // namespace phase

// Building blocks; each begins where the one before it ends.

Legs parked(const ScriptedStand& stand, double seconds);
/// Off the stand, with the tail along the taxilane, and a pause for the tug to leave.
Legs pushBack(const ScriptedStand& stand);
/// From the end of the push-back to the holding point; it stands on the taxiway for so long on its way.
Legs taxiToRunway(const ScriptedStand& stand, double holdSeconds = 0);
/// Line-up, take-off and climb, and the cruise towards `awayDegrees` for so far.
Legs departure(double awayDegrees, double cruiseMeters);
/// From the cruise, out of the direction `fromDegrees`, to the exit of the runway.
Legs arrival(double fromDegrees, double cruiseMeters);
/// From the exit of the runway to the stand.
Legs taxiToStand(const ScriptedStand& stand);

// Whole flights

Legs wholeDeparture(const ScriptedStand& stand, double parkedSeconds, double awayDegrees, double cruiseMeters,
                    double holdSeconds = 0);
Legs wholeArrival(const ScriptedStand& stand, double parkedSeconds, double fromDegrees, double cruiseMeters);
/// Off one stand and on another, by a tug.
Legs tow(const ScriptedStand& from, const ScriptedStand& to, double waitSeconds);
/// A light aircraft's circuits with a touch-and-go between them, from and to a stand.
Legs touchAndGo(const ScriptedStand& stand, int circuits);
/// An approach that is broken off low, and a second one that is not.
Legs goAround(const ScriptedStand& stand, double parkedSeconds);
/// A helicopter rises, flies away low, turns, comes back and lands.
Legs helicopter(const ScriptedStand& stand, double parkedSeconds);
/// High above, straight through.
Legs overflight(double fromDegrees, double passMeters, double heightFt);

} // namespace rig
