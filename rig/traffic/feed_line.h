// rig/traffic/feed_line.h
// A traffic line as the RealTraffic client writes it: 43 fields, those that are not known in its own way of saying so.
// Value type.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace rig {

struct FeedLine {
    std::uint32_t hexid = 0;
    double lat = 0; ///< degrees
    double lon = 0;
    int positionDecimals = 5;
    double altFt = 0; ///< 0 on the ground
    double vsFpm = 0;
    bool airborne = true;
    double track = 0; ///< degrees
    double gs = 0;    ///< knots
    std::string callsign;
    std::string type;
    std::string registration;
    std::string from;
    std::string to;
    double timestamp = 0; ///< seconds since 1970
    std::string source = "adsb_icao";
    std::optional<double> altGeomFt;
    std::optional<double> ias; ///< knots
    std::optional<double> tas; ///< knots
    std::optional<double> mach;
    std::optional<double> trackRate;   ///< degrees a second
    std::optional<double> roll;        ///< degrees, right bank positive
    std::optional<double> magHeading;  ///< degrees
    std::optional<double> trueHeading; ///< degrees
    std::optional<double> geomRateFpm;
    std::string emergency;
    std::string category;
    std::optional<double> navQnh; ///< hectopascal
};

std::string textOf(const FeedLine& line);

} // namespace rig
