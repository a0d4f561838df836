// feed/traffic_line.cpp
#include "feed/traffic_line.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <fmt/format.h>
#include <limits>
#include <stdexcept>

namespace {

using namespace std::string_view_literals;

constexpr std::array unwantedCategories{"B1"sv, "B2"sv, "B4"sv, "C1"sv, "C2"sv};
constexpr std::array unwantedTypes{"BALL"sv, "EMER"sv, "GLID"sv, "GRND"sv, "GND"sv,
                                   "PARA"sv, "SERV"sv, "SHIP"sv, "VENT"sv};
constexpr std::size_t longestType = 4;

/// An aircraft at most so far from the reference elevation, and at most so fast, is on the ground.
struct GroundLimits {
    double heightFt;
    double gsKnots;
};

constexpr std::array<GroundLimits, 3> groundLimits{{
    {42, 120},
    {84, 80},
    {108, 43},
}};
/// The reference elevation counts for nothing from here on.
constexpr double groundCeilingFt = 14000;
/// No aircraft flies as slowly as this.
constexpr double slowestFlightKnots = 35;

struct UsualTas {
    double altitudeAtMostFt;
    double tasKnots;
};

constexpr std::array<UsualTas, 5> usualTasTable{{
    {2000, 180},
    {5000, 220},
    {10000, 250},
    {20000, 350},
    {std::numeric_limits<double>::infinity(), 430},
}};

template <std::size_t size>
bool isOneOf(const std::array<std::string_view, size>& list, std::string_view text) {
    return std::find(list.begin(), list.end(), text) != list.end();
}

} // namespace

void splitTrafficLine(std::string_view line, std::vector<std::string_view>& fields) {
    fields.clear();
    std::size_t begin = 0;
    // The fields are so short that a search for each comma would cost more than this walk.
    for (std::size_t i = 0; i < line.size(); ++i) {
        if (line[i] != ',') {
            continue;
        }
        fields.push_back(line.substr(begin, i - begin));
        if (fields.size() == traffic_field::count) {
            return;
        }
        begin = i + 1;
    }
    fields.push_back(line.substr(begin));
}

std::optional<std::uint32_t> hexidFrom(std::string_view field) {
    std::uint32_t value = 0;
    const std::from_chars_result result = std::from_chars(field.data(), field.data() + field.size(), value);
    if (result.ec != std::errc{}) {
        return std::nullopt;
    }
    return value;
}

std::string_view textFrom(std::string_view field) {
    return field == "null" ? std::string_view{} : field;
}

std::string_view typeFrom(std::string_view field) {
    return field == "0" || field == "ZZZZ" ? std::string_view{} : textFrom(field);
}

bool isPlausible(const LatLon& position) {
    constexpr double nearZero = 0.0001;
    const bool onGlobe = std::abs(position.lat) <= 90 && std::abs(position.lon) <= 180;
    const bool isZero = std::abs(position.lat) <= nearZero && std::abs(position.lon) <= nearZero;
    return onGlobe && !isZero;
}

bool isFartherThan(const LatLon& a, const LatLon& b, double nm) {
    // No great circle is shorter than the difference of the latitudes. The margin is far beyond the rounding of the
    // haversine rule, so that both roads always give the same answer.
    constexpr double nmPerDegree = earthDiameterNm / 2 * radiansPerDegree;
    constexpr double marginNm = 0.001;
    if (std::abs(a.lat - b.lat) * nmPerDegree > nm + marginNm) {
        return true;
    }
    return !(greatCircleNm(a, b) <= nm);
}

bool isWantedKind(std::string_view type, std::string_view category) {
    if (type.empty()) {
        return false;
    }
    if (textFrom(category).empty()) {
        return true;
    }
    return !isOneOf(unwantedCategories, category) && type.size() <= longestType && !isOneOf(unwantedTypes, type);
}

std::optional<double> headingRadFrom(double degrees) {
    if (degrees > 360) {
        throw std::runtime_error(fmt::format("trueheading: {:.2f}", degrees));
    }
    if (degrees < 0) {
        return std::nullopt;
    }
    return degrees == 0 ? twoPi : degrees * radiansPerDegree;
}

double altitudeOrGround(double altitudeFt, double gsKnots, double referenceElevationFt) {
    if (altitudeFt <= 0 || gsKnots <= slowestFlightKnots) {
        return 0;
    }
    if (altitudeFt >= groundCeilingFt) {
        return altitudeFt;
    }
    const double heightFt = altitudeFt - referenceElevationFt;
    const bool onGround =
        heightFt <= 0 || std::any_of(groundLimits.begin(), groundLimits.end(), [&](const GroundLimits& limits) {
            return heightFt <= limits.heightFt && gsKnots <= limits.gsKnots;
        });
    return onGround ? 0 : altitudeFt;
}

double usualTas(double altitudeFt) {
    return std::find_if(usualTasTable.begin(), usualTasTable.end(),
                        [altitudeFt](const UsualTas& row) { return altitudeFt <= row.altitudeAtMostFt; })
        ->tasKnots;
}
