// rig/world/phase.h
// What an aircraft and its world are doing, in words.
// Functions without state.
#pragma once

#include <string_view>

#include "rig/world/world.h"

namespace rig {

/// As far as the motion tells: "parked", "standing", "taxi", "runway", "climb", "descent", "level".
std::string_view phaseText(const WorldObject& object, double groundFeet);

/// "running", "paused", "stalled", "quit".
std::string_view stateText(const World& world);

} // namespace rig
