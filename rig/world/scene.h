// rig/world/scene.h
// What a simulated world begins with, and what happens in it at which second.
// Value types without state.
#pragma once

#include <array>
#include <optional>
#include <string>
#include <variant>
#include <vector>

#include "core/geography.h"
#include "platform/clock.h"
#include "rig/world/ground.h"
#include "rig/world/world_object.h"
#include "sim/simconnect.h"

namespace rig {

struct Waypoint {
    LatLon at;
    double altFeet = 0;
};

// What the user does. Each replaces what the user did before.

struct TaxiAct {
    std::vector<LatLon> points;
    double knots = 15;
};
struct FlyAct {
    std::vector<Waypoint> points;
    double knots = 250;
};
/// From `fromNm` before the threshold down to it, and a roll to a stop.
struct ApproachAct {
    LatLon threshold;
    double headingDegrees = 0;
    double fromNm = 10;
    double knots = 140;
    double glideDegrees = 3;
};
/// From where the user stands.
struct TakeOffAct {
    double headingDegrees = 0;
    double rotateKnots = 140;
    double climbKnots = 220;
    double climbFeetPerMinute = 2000;
};
/// To another place in no time; the height above ground stays.
struct JumpAct {
    double nm = 10.5;
    double headingDegrees = 0;
};

// What the simulator does.

struct LoadFlightAct {
    std::string file;
};
struct PositionChangedAct {};
struct PauseAct {};
struct ResumeAct {};
struct QuitAct {};
/// No frame and no answer for so long.
struct StallAct {
    double seconds = 2;
};
struct FrameRateAct {
    double framesPerSecond = 30;
};
/// The title cannot be created from now on, whatever the folders hold.
struct RefuseTitleAct {
    std::string title;
};
/// An aircraft of another add-on.
struct ForeignObjectAct {
    std::string title;
    std::string tailNumber;
    LatLon at;
    double headingDegrees = 0;
    std::optional<double> altFeet; ///< none: on the ground
};

// Faults of the link to the clients.

struct DropConnectionAct {};
struct ExceptionsAct {
    int count = 1000;
    DWORD exception = SIMCONNECT_EXCEPTION_ERROR;
};
enum class Lie {
    badSize,  ///< a record whose size is below its own head
    half,     ///< half a record, and the connection closes
    zeroSize, ///< a record of 0 bytes
    huge,     ///< a record of 100 MB, by its size field
};
struct LyingRecordAct {
    Lie lie = Lie::badSize;
};

using ActKind = std::variant<TaxiAct, FlyAct, ApproachAct, TakeOffAct, JumpAct, LoadFlightAct, PositionChangedAct,
                             PauseAct, ResumeAct, QuitAct, StallAct, FrameRateAct, RefuseTitleAct, ForeignObjectAct,
                             DropConnectionAct, ExceptionsAct, LyingRecordAct>;

struct Act {
    double atSeconds = 0; ///< since the world began
    ActKind kind;
};

struct SimulatorIdentity {
    std::string name = "Lockheed Martin Prepar3D v5";
    std::array<DWORD, 4> version{5, 4, 9, 28482}; ///< major, minor, build major, build minor
};

struct UserStart {
    AircraftType type{"Boeing 737-800", "B738", 10.0, 0.0, 117.0};
    LatLon at{52.3086, 4.7639};
    double headingDegrees = 0;
    std::optional<double> altFeet; ///< none: on the ground
    double knots = 0;
};

inline constexpr double leastFrameRate = 5;
inline constexpr double mostFrameRate = 120;

struct Scene {
    SimulatorIdentity simulator;
    double framesPerSecond = 30;
    platform::WallTime zuluStart = platform::WallTime(std::chrono::seconds(1780315200)); ///< 1 June 2026, 12:00
    Ground ground;
    UserStart user;
    std::vector<Act> acts; ///< in any order; those of the same second in the order of this list
};

} // namespace rig
