// engine/aircraft_record.h
// What static and live aircraft have in common: who they are, what they can do, and their object in the simulator.
// Engine thread only.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <utility>

#include "core/geography.h"
#include "engine/aircraft_category.h"
#include "engine/aircraft_states.h"

/// Indices that stand for "nothing sent yet".
inline constexpr std::int32_t noThrottleIndex = 5;
inline constexpr std::int32_t initialFlapsIndex = 4;

struct AircraftRecord {
    std::string airline;                ///< three-letter operator code, or "PVT"
    std::string model;                  ///< ICAO type code
    std::string origin;                 ///< departure code, may be empty
    std::string destination;            ///< may be empty
    std::string callsign;               ///< as delivered; a trailing "_" marks a ghost
    std::string flightCode1;            ///< copy of the call sign at creation and at each accepted change of it
    std::string flightCode2;            ///< a second code of static aircraft
    std::string registration;           ///< tail number, may be empty
    std::uint8_t staticTwinChecked = 0; ///< set once the once-only twin look-up has run

    double halfWingSpan = 0;    ///< nautical miles
    double cgHeight = 0;        ///< feet; 0 until the simulator answers
    double groundPitch = 0;     ///< radians, negative is nose up
    double rotatePitch = 0;     ///< radians, target at lift-off
    double climbPitch = 0;      ///< radians, target in the initial climb
    double baseTurnRate = 0;    ///< radians per slot
    double turnRate = 0;        ///< radians per slot, the rate now in use
    double maxClimbPerSlot = 0; ///< feet per slot
    double parkTaxiSpeed = 0;   ///< knots

    AircraftCategory category = AircraftCategory::Large;
    std::string_view liveryTitle; ///< into the livery table; empty until matched

    std::int32_t flareSlots = 0;
    std::int32_t rolloutSlots = 0;
    std::int32_t rotateSlots = 0;
    std::int32_t climbPitchSlots = 0;

    std::uint8_t isCargo = 0; ///< a freighter, which may stay longer on a stand
    std::uint8_t reverseOnLanding =
        0; ///< its throttle levers go to minus 100 per cent at touchdown instead of plus 100

    LatLon standPos;
    double standHeading = 0;                           ///< radians
    std::pair<std::int32_t, std::int32_t> parkedSince; ///< weekday 1 to 7 and half hour 0 to 47
    std::int32_t standId = 0;                          ///< 0 while none

    std::int32_t throttleIndex = noThrottleIndex; ///< last index sent
    std::int32_t flapsIndex = initialFlapsIndex;  ///< last index sent
    std::uint8_t standCargo = 0;                  ///< cargo attribute of the stand when it was assigned
    std::uint8_t removeWhenAdded = 0;             ///< removal was asked while the create request is with the simulator
    std::uint8_t dropRecord = 0;       ///< erase the record at the end of this tick; nothing is in the simulator
    std::uint8_t dropRecordQueued = 0; ///< the same, when a queued create request was withdrawn

    // Each slot looks at these: they stand together, and beside the position.
    std::uint32_t hexid = 0;    ///< transponder address of a live aircraft, serial number of a static one
    std::uint32_t objectId = 0; ///< in the simulator; 0 while none
    LifeState lifeState = LifeState::buffer;
};

/// Copies what the record's category can do into it; lift-off and climb pitch are spread at random by exactly 2.5 and 5
/// per cent, up or down. Throws as limitsOf does.
void takeCategoryLimits(AircraftRecord& aircraft);

/// The operator code that a call sign of three letters and a digit begins with, in upper case; empty for any other.
std::string airlineOfFlightNumber(std::string_view callsign);
/// The operator code when the feed gives none: that of the flight number, else "PVT".
std::string airlineFromCallsign(std::string_view callsign);

/// Takes the simulator's answer for the height of the centre of gravity (feet); one below 1 or above 35 is ignored.
void takeCgHeight(AircraftRecord& aircraft, double feet);

/// Takes the simulator's answer for the pitch on the ground (radians); one at or below -1 degree or above 2.5 degrees
/// is replaced by 0.7 degree.
void takeGroundPitch(AircraftRecord& aircraft, double radians);

bool isGhostCallsign(std::string_view callsign);
/// Whether airline and model are the same texts.
bool hasTypeAndAirline(const AircraftRecord& a, const AircraftRecord& b);
/// Neither empty nor the placeholder, and of at most 8 characters.
bool isUsableCallsign(std::string_view callsign);
bool hasUsableCallsign(const AircraftRecord& aircraft);

// The printed forms of logs and window.

/// "{:3} {:4}" of airline and model.
std::string aircraftTag(const AircraftRecord& aircraft);
/// "{:3}->{:3}" of origin and destination, or eight blanks when both are empty.
std::string routeText(const AircraftRecord& aircraft);
/// "{:8}" of the call sign.
std::string callsignText(const AircraftRecord& aircraft);
/// Route, call sign and registration.
std::string shortLine(const AircraftRecord& aircraft);
/// The short line and the tag.
std::string longLine(const AircraftRecord& aircraft);
/// Call sign, registration and tag.
std::string identityText(const AircraftRecord& aircraft);
