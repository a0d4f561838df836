// rig/replay/replay_liveries.h
// The liveries of a replay: the one place that tells the engine what it may paint its aircraft with, and the simulated
// world what it can create. On the thread of the replay.
#pragma once

#include "rig/world/aircraft_titles.h"

namespace rig {

/// Gives the engine a generic livery for each known type of aircraft, good until the liveries are forgotten, and
/// answers those same titles as the simulated world has to know them.
AircraftTitles setUpReplayLiveries();

/// Those titles alone.
AircraftTitles replayTitles();

/// No livery is known to the engine any more.
void forgetReplayLiveries();

} // namespace rig
