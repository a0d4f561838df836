// sim/light_sets.cpp
#include "sim/light_sets.h"

#include "core/parameters.h"
#include "core/random.h"

namespace {

/// At and below this altitude landing and logo lights are on.
constexpr double lowAltitudeFeet = 10000;
/// From this height on the cabin is lit.
constexpr double cabinLitAboveGroundFeet = 2000;

// Nine draws of eleven light the cabin of a parked aircraft.
constexpr int lastCabinDraw = 10;
constexpr int lastLitCabinDraw = 8;

std::uint32_t onWhen(bool condition) {
    return condition ? 1 : 0;
}

std::uint32_t parkedNavLight() {
    return onWhen(NAV_LIGHTS_WHILE_PARKED.value);
}

std::uint32_t parkedCabinLight(const AircraftRecord& aircraft) {
    if (aircraft.standCargo != 0) {
        return 0;
    }
    return onWhen(!RANDOM.value || gf_randomInt(0, lastCabinDraw) <= lastLitCabinDraw);
}

} // namespace

// clang-format off
LightSet activationLights(const LiveAircraft& aircraft, bool airborne) {
    const std::uint32_t low = onWhen(aircraft.alt <= lowAltitudeFeet);
    const std::uint32_t taxi = onWhen(aircraft.phase == FlightPhase::taxi);
    const std::uint32_t cabin = onWhen(aircraft.altAboveGround >= cabinLitAboveGroundFeet);
    if (airborne) {
        //      nav               beacon landing taxi  strobes logo cabin
        return {1,                1,     low,    0,    1,      low, cabin};
    }
    if (aircraft.phase == FlightPhase::parked) {
        return {parkedNavLight(), 0,     0,      0,    0,      1,   1};
    }
    return     {1,                1,     0,      taxi, 0,      1,   1};
}

LightSet standLights(const AircraftRecord& aircraft) {
    //      nav               beacon landing taxi  strobes logo cabin
    return {parkedNavLight(), 0,     0,      0,    0,      1,   parkedCabinLight(aircraft)};
}
// clang-format on

void gf_parkSystems(LiveAircraft& aircraft) {
    gf_setThrottle(aircraft, 0);
    gf_setFlaps(aircraft, 0);
    gf_stopEngines(aircraft.objectId);
    gf_setLights(aircraft.objectId, standLights(aircraft));
}
