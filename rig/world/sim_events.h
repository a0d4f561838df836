// rig/world/sim_events.h
// The simulator's client events by name, and what each does to an aircraft.
// A constant table: usable from any thread.
#pragma once

#include <string_view>

#include "rig/world/world_object.h"

namespace rig {

struct SimEvent {
    std::string_view name;
    void (*apply)(WorldObject& object, DWORD value);
};

/// Nothing for a name that the simulator does not know.
const SimEvent* simEventNamed(std::string_view name);

} // namespace rig
