// rig/map/world_json.h
// A world as the map shows it.
// Function without state; whoever steps the world calls it.
#pragma once

#include <string>

#include "rig/world/world.h"

namespace rig {

/// JSON: time, state, places, and the aircraft that can be seen, the user's first. Angles are degrees, pitch up
/// positive.
std::string worldJson(const World& world);

} // namespace rig
