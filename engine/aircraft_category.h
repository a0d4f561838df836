// engine/aircraft_category.h
// The six kinds of aircraft, and what they can do.
// Value type and tables without state: usable from any thread.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>

/// The numbers are stored and compared, so they are fixed.
enum class AircraftCategory : std::int32_t {
    Light = 0,
    Buzjets = 1,
    Large = 2,
    Heavy = 3,
    HighPerf = 4,
    Rotorcraft = 5,
};

inline constexpr std::size_t aircraftCategoryCount = 6;

/// The name as logs and window print it. Throws std::out_of_range "invalid unordered_map<K, T> key" for a value outside
/// the table.
const std::string& printedName(AircraftCategory category);

/// What an aircraft of a category can do. Angles in degrees, negative pitch is nose up; a slot is 10 ms.
struct CategoryLimits {
    int flareSlots;             ///< over which the pitch goes to the flare attitude
    int rolloutSlots;           ///< over which nose and bank come down after touchdown
    int rotateSlots;            ///< from the start of the pitch to the rotate attitude
    int climbPitchSlots;        ///< from the rotate to the climb attitude
    double rotatePitchDeg;      ///< at lift-off
    double climbPitchDeg;       ///< in the initial climb
    double baseTurnRateDeg;     ///< per slot
    double maxClimbPerSlotFeet; ///< per slot
    double parkTaxiSpeedKnots;  ///< on the last leg to a stand and away from it
    double maxPitchRateDeg;     ///< per slot
    double maxBankDeg;
    double maxBankRateDeg; ///< per slot
    double takeOffGateKnots;
};

/// Throws like printedName.
const CategoryLimits& limitsOf(AircraftCategory category);
