// feed/feed_record.h
// What the traffic reader hands to the engine: positions of aircraft. Value types.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

/// The numbers up to this are the serial numbers of aircraft of our own; no transponder has one of them.
inline constexpr std::uint32_t highestStaticHexid = 10000;

/// One position of an aircraft.
struct Sample {
    double lat = 0;                ///< degrees
    double lon = 0;                ///< degrees
    double alt = 0;                ///< feet, barometric as delivered; 0 means on the ground
    double gs = 0;                 ///< ground speed, knots
    double track = 0;              ///< degrees true; 0 may mean not known
    double vs = 0;                 ///< feet per minute
    double tas = 0;                ///< true airspeed, knots
    std::int32_t slot = 0;         ///< slot at which the aircraft is to reach this position
    std::uint8_t airborne = 0;     ///< 1 when alt is above 0
    std::uint8_t stationary = 0;   ///< 1 when this position equals the previous one within 1e-8 degrees on both axes
    std::uint8_t hasHeading = 0;   ///< 1 when the source gives a true heading
    std::optional<double> roll;    ///< radians, in the simulator's sense
    std::optional<double> heading; ///< true heading, radians
};

/// One accepted feed line.
struct FeedRecord {
    std::string type;
    std::string origin;
    std::string destination;
    std::string callsign;
    std::string registration;
    Sample sample;
    double feedTime = 0; ///< the line's own time stamp, seconds since 1970
    std::uint32_t hexid = 0;
};
