// feed/traffic_line.h
// The fields of a traffic line, and the rules that decode or judge one of them.
// Functions without state: usable from any thread.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>
#include <vector>

#include "core/geography.h"

/// The fields that are read, by their place in the line; each may be the literal "null".
namespace traffic_field {
inline constexpr std::size_t hexid = 1;
inline constexpr std::size_t lat = 2;      // degrees
inline constexpr std::size_t lon = 3;      // degrees
inline constexpr std::size_t altitude = 4; // feet
inline constexpr std::size_t vs = 5;       // feet per minute
inline constexpr std::size_t track = 7;    // degrees, may be empty
inline constexpr std::size_t gs = 8;       // knots
inline constexpr std::size_t callsign = 9;
inline constexpr std::size_t type = 10;
inline constexpr std::size_t registration = 11;
inline constexpr std::size_t origin = 12;
inline constexpr std::size_t destination = 13;
inline constexpr std::size_t timestamp = 14; // seconds since 1970
inline constexpr std::size_t source = 17;
inline constexpr std::size_t tas = 20;         // knots, -1.0 when not known
inline constexpr std::size_t roll = 23;        // degrees, right bank positive
inline constexpr std::size_t trueHeading = 25; // degrees
inline constexpr std::size_t category = 28;    // of the emitter, two characters
/// Fields that a line has at least.
inline constexpr std::size_t count = 29;
} // namespace traffic_field

/// Splits off the first traffic_field::count fields at the commas; what follows them is not read. A line with fewer
/// gives fewer. The views point into the line.
void splitTrafficLine(std::string_view line, std::vector<std::string_view>& fields);

/// The digits at the start of the field, or nothing when there are none or they do not fit.
std::optional<std::uint32_t> hexidFrom(std::string_view field);

/// The field, or nothing for "null".
std::string_view textFrom(std::string_view field);

/// textFrom, with the ways that the feed has of not knowing the type taken for empty.
std::string_view typeFrom(std::string_view field);

/// Whether the position lies on the globe, and not where a missing one does: at zero.
bool isPlausible(const LatLon& position);

/// Whether greatCircleNm(a, b) is above nm, decided by the latitudes alone where they suffice.
bool isFartherThan(const LatLon& a, const LatLon& b, double nm);

/// Whether the program wants this kind of aircraft. Without a category every type that is not empty is wanted.
bool isWantedKind(std::string_view type, std::string_view category);

/// True heading in degrees as radians, exactly 0 as 2 pi so that north is not taken for unknown; nothing when negative.
/// Throws std::runtime_error "trueheading: {:.2f}" above 360.
std::optional<double> headingRadFrom(double degrees);

/// The altitude, or 0 when altitude (ft) and ground speed (kt) speak for an aircraft on the ground. The altitude is
/// noisy close to the ground.
double altitudeOrGround(double altitudeFt, double gsKnots, double referenceElevationFt);

/// A usual true airspeed (kt) at an altitude (ft).
double usualTas(double altitudeFt);
