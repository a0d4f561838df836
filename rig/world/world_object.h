// rig/world/world_object.h
// One aircraft of the simulated world: the user's, or one that a client has put there.
// Records of the world: whoever steps the world owns them.
#pragma once

#include <cstdint>
#include <string>

#include "core/geography.h"
#include "sim/simconnect.h"

namespace rig {

class ClientSession;

/// The eight position values, in the order in which clients write them and the trace holds them.
struct Position {
    double lat = 0;                   ///< degrees
    double lon = 0;                   ///< degrees
    double pitchRad = 0;              ///< negative is nose up
    double bankRad = 0;               ///< negative is right wing down
    double headingRad = 0;            ///< true, 0 up to 2 pi
    double altFeet = 0;               ///< of the centre of gravity, above mean sea level
    double verticalFeetPerSecond = 0; ///< up is positive
    double trueKnots = 0;             ///< true airspeed; there is no wind, so it is the ground speed too

    LatLon place() const { return {lat, lon}; }
};

/// The bits of "LIGHT STATES".
enum Light : std::uint32_t {
    lightNav = 0x001,
    lightBeacon = 0x002,
    lightLanding = 0x004,
    lightTaxi = 0x008,
    lightStrobe = 0x010,
    lightLogo = 0x100,
    lightCabin = 0x200,
};
inline constexpr std::uint32_t allLights =
    lightNav | lightBeacon | lightLanding | lightTaxi | lightStrobe | lightLogo | lightCabin;

struct Controls {
    std::uint32_t lights = 0;
    bool gearDown = true;
    double flapsPercent = 0;
    double spoilersPercent = 0;
    double throttle1Percent = 0; ///< below zero is reverse
    double throttle2Percent = 0;
    bool enginesRun = true;
};

/// Which parts of its motion a client has taken from the simulator.
struct Freezes {
    bool place = false; ///< latitude and longitude
    bool altitude = false;
    bool attitude = false;
};

/// What its aircraft.cfg says of an aircraft.
struct AircraftType {
    std::string title;
    std::string model; ///< the atc_model
    double cgHeightFeet = 8.0;
    double staticPitchRad = 0;
    double wingSpanFeet = 110.0;
};

struct WorldObject {
    DWORD id = 0;
    AircraftType type;
    std::string tailNumber;
    Position position;
    Controls controls;
    Freezes freezes;
    bool released = false;                ///< the simulator's pilot has given up control
    const ClientSession* owner = nullptr; ///< none for the user's aircraft and foreign ones
    int framesUntilSeen = 0;              ///< 0: clients can see it
    std::string flightPlan;               ///< path, as the client gave it

    bool isSeen() const { return framesUntilSeen == 0; }
};

/// On the ground is what stands no higher than its wheels reach, but for this.
inline constexpr double groundContactFeet = 0.5;

inline bool isOnGround(const WorldObject& object, double groundFeet) {
    return object.position.altFeet - groundFeet <= object.type.cgHeightFeet + groundContactFeet;
}

} // namespace rig
