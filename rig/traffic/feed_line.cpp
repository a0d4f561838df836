// rig/traffic/feed_line.cpp
#include "rig/traffic/feed_line.h"

#include <cmath>

#include <fmt/format.h>

namespace rig {

namespace {

std::string number(double value, int decimals) {
    // No "-0".
    const double scale = std::pow(10.0, decimals);
    const double rounded = std::round(value * scale) / scale;
    return fmt::format("{:.{}f}", rounded == 0 ? 0.0 : rounded, decimals);
}

/// -1 with as many decimals when it is not known.
std::string number(const std::optional<double>& value, int decimals) {
    return number(value.value_or(-1), decimals);
}

} // namespace

std::string textOf(const FeedLine& line) {
    std::string text = fmt::format("RTTFC,{},{},{},{},{},{},", line.hexid, number(line.lat, line.positionDecimals),
                                   number(line.lon, line.positionDecimals), number(line.altFt, 0),
                                   number(line.vsFpm, 0), line.airborne ? 1 : 0);
    text += fmt::format("{},{},{},{},{},{},{},{},", number(line.track, 2), number(line.gs, 2), line.callsign, line.type,
                        line.registration, line.from, line.to, number(line.timestamp, 1));
    text += fmt::format("X2,{},{},{},{},{},{},", line.callsign, line.source, number(line.altGeomFt, 0),
                        number(line.ias, 0), number(line.tas, 0), line.mach ? number(*line.mach, 3) : "-1000");
    text += fmt::format("{},{},{},{},{},{},{},", number(line.trackRate, 1), number(line.roll, 1),
                        number(line.magHeading, 2), number(line.trueHeading, 2), number(line.geomRateFpm, 0),
                        line.emergency, line.category);
    // The autopilot's altitudes and heading, its modes, the signal's age and strength, and the air around are not
    // known.
    text += fmt::format("{},-1,-1,-1.00,,0.0,-1.0,-1,-1,-1,-1,1,0,", number(line.navQnh, 1));
    return text;
}

} // namespace rig
