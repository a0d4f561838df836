// rig/flights/scenarios.h
// The flights of each scenario. Functions without state: usable from any thread.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "rig/flights/receiver.h"
#include "rig/flights/script.h"

namespace rig {

struct ScriptedFlight {
    Transmission transmission; ///< its begin counts from that of the scenario, and may be negative
    Legs legs;
};

struct Scenario {
    std::vector<ScriptedFlight> flights;
    double seconds = 0; ///< of which a recording is made; 0: until the last flight has ended
};

const std::vector<std::string>& scenarioNames();

/// Throws std::runtime_error, with a text for the user, for a name that is none.
Scenario makeScenario(const std::string& name, std::uint32_t seed);

} // namespace rig
