// sim/sim_ids.h
// The numbers by which the simulator and the program name events, data definitions and requests to each other. They are
// of the program's own choosing; logs show them.
#pragma once

#include "sim/simconnect.h"

enum SystemEvent : DWORD {
    eventSim = 201,
    eventObjectAdded = 202,
    eventObjectRemoved = 203,
    eventFrame = 204,
    eventPositionChanged = 205,
    eventFlightLoaded = 206,
};

enum ClientEvent : DWORD {
    eventBeaconLights = 207,
    eventNavLights = 208,
    eventTaxiLights = 209,
    eventStrobes = 210,
    eventLandingLights = 211,
    eventCabinLights = 212,
    eventLogoLights = 213,
    eventAllLightsToggle = 214,
    eventFreezeLatLon = 215,
    eventFreezeAltitude = 216,
    eventFreezeAttitude = 217,
    eventFlaps = 218,
    eventSpoilers = 219,
    eventGear = 220,
    eventEngineStart = 221,
    eventEngineShutdown = 222,
    eventThrottle = 223,
};

enum DataDefinition : DWORD {
    definitionTouchdownControls = 401,
    definitionAiPosition = 402,
    definitionUserPosition = 403,
    definitionObjectInRange = 404,
    definitionStaticData = 405,
    definitionLights = 406,
    definitionUserTitle = 407,
    definitionUserModel = 408,
    definitionUserOnGround = 409,
};

enum SimRequest : DWORD {
    requestInRange = 101,
    requestStaticData = 102,
    requestRelease = 103,
    requestCreate = 104,
    requestRemove = 105,
    requestTitle = 106,
    requestModel = 107,
    requestOnGround = 108,
    requestPosition = 109,
    requestFlightPlan = 110,
};

inline constexpr DWORD notificationGroup = 301;
