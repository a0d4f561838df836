// rig/world/sim_variables.h
// The simulation variables that the world knows, by name, with their units: what clients read and write of an aircraft.
// Constant tables: usable from any thread.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "rig/world/world_object.h"

namespace rig {

/// Universal time as the simulator shows it.
struct ZuluTime {
    double seconds = 0; ///< of the day
    int dayOfYear = 1;  ///< 1 to 366
    int year = 1970;
};

/// An aircraft with what is round it.
struct ObjectView {
    const WorldObject& object;
    double groundFeet = 0;
    ZuluTime zulu;
};

enum class Dimension { plain, angle, length, speed, fraction };

struct NumberVariable {
    std::string_view name;
    Dimension dimension;
    double storedUnit; ///< the unit that read() and write() count in, in units of the dimension
    double (*read)(const ObjectView& view);
    void (*write)(WorldObject& object, double value); ///< null for one that clients only read
};

struct TextVariable {
    std::string_view name;
    std::string (*read)(const ObjectView& view);
};

/// Nothing for a name that the simulator does not know.
const NumberVariable* numberVariableNamed(std::string_view name);
const TextVariable* textVariableNamed(std::string_view name);

/// How many of the named unit the variable's stored unit is; exactly 1 for the same unit. Nothing for a unit that does
/// not exist or does not measure this.
std::optional<double> unitsPerStored(const NumberVariable& variable, std::string_view unitsName);

} // namespace rig
