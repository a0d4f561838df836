// rig/world/idle_motion.h
// What the simulator's own pilot does with an aircraft that nobody holds: it drifts off, sinks and turns away, so that
// a freeze or a release that was forgotten shows. Function without state.
#pragma once

#include "rig/world/world_object.h"

namespace rig {

inline constexpr double driftKnots = 6;          ///< eastwards
inline constexpr double sinkFeetPerSecond = 10;  ///< down to the ground
inline constexpr double turnRadPerSecond = 0.02; ///< to the right

/// A part of the motion stands still only when it is frozen and control is released.
void moveIdly(WorldObject& object, double groundFeet, double seconds);

} // namespace rig
