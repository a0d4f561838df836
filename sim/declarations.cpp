// sim/declarations.cpp
#include "sim/declarations.h"

#include <algorithm>
#include <array>
#include <mutex>

#include "sim/sim_ids.h"
#include "sim/simulator_link.h"

namespace {

struct NamedId {
    DWORD id;
    const char* name;
};

struct Datum {
    DataDefinition definition;
    const char* variable;
    const char* unit;
    SIMCONNECT_DATATYPE type;
};

constexpr std::array<NamedId, 6> systemEvents{{
    {eventSim, "Sim"},
    {eventObjectAdded, "ObjectAdded"},
    {eventObjectRemoved, "ObjectRemoved"},
    {eventPositionChanged, "PositionChanged"},
    {eventFlightLoaded, "FlightLoaded"},
    {eventFrame, "Frame"},
}};

constexpr auto float64 = SIMCONNECT_DATATYPE_FLOAT64;
constexpr auto int64 = SIMCONNECT_DATATYPE_INT64;
constexpr auto string32 = SIMCONNECT_DATATYPE_STRING32;
constexpr auto stringV = SIMCONNECT_DATATYPE_STRINGV;

constexpr std::array<Datum, 33> data{{
    {definitionUserTitle, "TITLE", nullptr, stringV},
    {definitionUserModel, "ATC MODEL", nullptr, string32},
    {definitionUserOnGround, "SIM ON GROUND", "Bool", int64},
    {definitionAiPosition, "Plane Latitude", "degree", float64},
    {definitionAiPosition, "Plane Longitude", "degree", float64},
    {definitionAiPosition, "Plane Pitch degrees", "radians", float64},
    {definitionAiPosition, "Plane Bank degrees", "radians", float64},
    {definitionAiPosition, "Plane Heading degrees true", "radians", float64},
    {definitionAiPosition, "Plane Altitude", "feet", float64},
    {definitionAiPosition, "Vertical Speed", "feet per second", float64},
    {definitionAiPosition, "Airspeed True", "knots", float64},
    {definitionUserPosition, "Plane Latitude", "degree", float64},
    {definitionUserPosition, "Plane Longitude", "degree", float64},
    {definitionUserPosition, "Plane Pitch degrees", "radians", float64},
    {definitionUserPosition, "Plane Bank degrees", "radians", float64},
    {definitionUserPosition, "Plane Heading degrees true", "radians", float64},
    {definitionUserPosition, "Plane Altitude", "feet", float64},
    {definitionUserPosition, "Plane Alt Above Ground", "feet", float64},
    {definitionUserPosition, "Ground Velocity", "knots", float64},
    {definitionUserPosition, "ZULU TIME", "Seconds", int64},
    {definitionUserPosition, "ZULU DAY OF YEAR", "Number", int64},
    {definitionUserPosition, "ZULU YEAR", "Number", int64},
    {definitionUserPosition, "LIGHT STATES", "Mask", int64},
    {definitionStaticData, "Static CG to Ground", "feet", float64},
    {definitionStaticData, "Static Pitch", "radians", float64},
    {definitionLights, "Light On States", "Mask", int64},
    {definitionObjectInRange, "Plane Alt Above Ground", "feet", float64},
    {definitionObjectInRange, "Ground Altitude", "feet", float64},
    {definitionObjectInRange, "SIM ON GROUND", "Bool", int64},
    {definitionObjectInRange, "ATC ID", nullptr, string32},
    {definitionTouchdownControls, "SPOILERS HANDLE POSITION", "percent", float64},
    {definitionTouchdownControls, "GENERAL ENG THROTTLE LEVER POSITION:1", "percent", float64},
    {definitionTouchdownControls, "GENERAL ENG THROTTLE LEVER POSITION:2", "percent", float64},
}};

constexpr std::array<NamedId, 17> clientEvents{{
    {eventGear, "GEAR_SET"},
    {eventEngineStart, "ENGINE_AUTO_START"},
    {eventEngineShutdown, "ENGINE_AUTO_SHUTDOWN"},
    {eventThrottle, "THROTTLE_SET"},
    {eventFlaps, "FLAPS_SET"},
    {eventSpoilers, "SPOILERS_SET"},
    {eventNavLights, "NAV_LIGHTS_SET"},
    {eventBeaconLights, "BEACON_LIGHTS_SET"},
    {eventLandingLights, "LANDING_LIGHTS_SET"},
    {eventTaxiLights, "TAXI_LIGHTS_SET"},
    {eventStrobes, "STROBES_SET"},
    {eventLogoLights, "LOGO_LIGHTS_SET"},
    {eventCabinLights, "CABIN_LIGHTS_SET"},
    {eventAllLightsToggle, "ALL_LIGHTS_TOGGLE"},
    {eventFreezeLatLon, "FREEZE_LATITUDE_LONGITUDE_SET"},
    {eventFreezeAltitude, "FREEZE_ALTITUDE_SET"},
    {eventFreezeAttitude, "FREEZE_ATTITUDE_SET"},
}};

/// The start of engines stays out on purpose; it is sent with the group's number all the same.
constexpr std::array<ClientEvent, 16> groupedEvents{
    eventNavLights,   eventBeaconLights,    eventLandingLights,  eventTaxiLights,     eventStrobes, eventLogoLights,
    eventCabinLights, eventAllLightsToggle, eventFlaps,          eventSpoilers,       eventGear,    eventEngineShutdown,
    eventThrottle,    eventFreezeLatLon,    eventFreezeAltitude, eventFreezeAttitude,
};

constexpr std::int32_t maskable = 1;
constexpr DWORD highestPriority = 1;
constexpr float everyChange = 0; // epsilon
constexpr DWORD noDatumId = SIMCONNECT_UNUSED;

bool succeeded(HRESULT result) {
    return result >= 0;
}

bool subscribe(const NamedId& event) {
    return succeeded(SimConnect_SubscribeToSystemEvent(simHandle, event.id, event.name));
}

bool define(const Datum& datum) {
    return succeeded(SimConnect_AddToDataDefinition(simHandle, datum.definition, datum.variable, datum.unit, datum.type,
                                                    everyChange, noDatumId));
}

bool map(const NamedId& event) {
    return succeeded(SimConnect_MapClientEventToSimEvent(simHandle, event.id, event.name));
}

bool addToGroup(ClientEvent event) {
    return succeeded(SimConnect_AddClientEventToNotificationGroup(simHandle, notificationGroup, event, maskable));
}

bool setGroupPriority() {
    return succeeded(SimConnect_SetNotificationGroupPriority(simHandle, notificationGroup, highestPriority));
}

bool declareAll() {
    const std::lock_guard lock(simLock);
    return std::all_of(systemEvents.begin(), systemEvents.end(), subscribe) &&
           std::all_of(data.begin(), data.end(), define) &&
           std::all_of(clientEvents.begin(), clientEvents.end(), map) &&
           std::all_of(groupedEvents.begin(), groupedEvents.end(), addToGroup) && setGroupPriority();
}

} // namespace

void declareToSimulator() {
    if (!declareAll()) {
        requestFailed();
    }
}
