// rig/world/sim_events.cpp
#include "rig/world/sim_events.h"

#include "rig/world/names.h"

namespace rig {

namespace {

/// Axes and levers run from 0 to this.
constexpr double fullAxis = 16383.0;

double axisPercent(DWORD value) {
    return static_cast<double>(static_cast<std::int32_t>(value)) / fullAxis * 100.0;
}

template <Light light>
void setLight(WorldObject& object, DWORD value) {
    object.controls.lights = value != 0 ? object.controls.lights | light : object.controls.lights & ~light;
}

constexpr SimEvent simEvents[] = {
    {"GEAR_SET", [](WorldObject& object, DWORD value) { object.controls.gearDown = value != 0; }},
    {"ENGINE_AUTO_START", [](WorldObject& object, DWORD) { object.controls.enginesRun = true; }},
    {"ENGINE_AUTO_SHUTDOWN", [](WorldObject& object, DWORD) { object.controls.enginesRun = false; }},
    {"THROTTLE_SET",
     [](WorldObject& object, DWORD value) {
         object.controls.throttle1Percent = object.controls.throttle2Percent = axisPercent(value);
     }},
    {"FLAPS_SET", [](WorldObject& object, DWORD value) { object.controls.flapsPercent = axisPercent(value); }},
    {"SPOILERS_SET", [](WorldObject& object, DWORD value) { object.controls.spoilersPercent = axisPercent(value); }},
    {"NAV_LIGHTS_SET", setLight<lightNav>},
    {"BEACON_LIGHTS_SET", setLight<lightBeacon>},
    {"LANDING_LIGHTS_SET", setLight<lightLanding>},
    {"TAXI_LIGHTS_SET", setLight<lightTaxi>},
    {"STROBES_SET", setLight<lightStrobe>},
    {"LOGO_LIGHTS_SET", setLight<lightLogo>},
    {"CABIN_LIGHTS_SET", setLight<lightCabin>},
    {"ALL_LIGHTS_TOGGLE",
     [](WorldObject& object, DWORD) { object.controls.lights = object.controls.lights == 0 ? allLights : 0; }},
    {"FREEZE_LATITUDE_LONGITUDE_SET", [](WorldObject& object, DWORD value) { object.freezes.place = value != 0; }},
    {"FREEZE_ALTITUDE_SET", [](WorldObject& object, DWORD value) { object.freezes.altitude = value != 0; }},
    {"FREEZE_ATTITUDE_SET", [](WorldObject& object, DWORD value) { object.freezes.attitude = value != 0; }},
};

} // namespace

const SimEvent* simEventNamed(std::string_view name) {
    for (const SimEvent& event : simEvents) {
        if (sameName(event.name, name)) {
            return &event;
        }
    }
    return nullptr;
}

} // namespace rig
