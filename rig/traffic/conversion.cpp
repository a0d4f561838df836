// rig/traffic/conversion.cpp
#include "rig/traffic/conversion.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <optional>
#include <stdexcept>
#include <vector>

#include <fmt/format.h>
#include <nlohmann/json.hpp>

#include "core/geography.h"
#include "core/number_text.h"
#include "core/text_parts.h"
#include "rig/traffic/feed_line.h"
#include "rig/traffic/gzip_text.h"

namespace rig {

namespace {

using nlohmann::json;

constexpr double secondsPerHour = 3600;
/// Positions closer than this are the same place, as far as a direction goes.
constexpr double samePlaceNm = 0.002;

/// A position whose speed and track may not be known.
struct Report {
    FeedLine line;
    std::optional<double> gs;
    std::optional<double> track;
};

std::optional<double> numberAt(const json& object, const char* key) {
    const auto found = object.find(key);
    return found != object.end() && found->is_number() ? std::optional(found->get<double>()) : std::nullopt;
}

std::optional<double> numberAt(const json& list, std::size_t index) {
    return index < list.size() && list[index].is_number() ? std::optional(list[index].get<double>()) : std::nullopt;
}

std::string textAt(const json& object, const char* key) {
    const auto found = object.find(key);
    if (found == object.end() || !found->is_string()) {
        return {};
    }
    std::string text = found->get<std::string>();
    // Call signs are padded with blanks; a comma would move the fields behind it.
    std::erase_if(text, [](char c) { return c == ' ' || c == ',' || c == '\n' || c == '\r'; });
    return text;
}

std::uint32_t addressFrom(std::string_view hex) {
    std::uint32_t address = 0;
    const auto [end, error] = std::from_chars(hex.data(), hex.data() + hex.size(), address, 16);
    if (error != std::errc{} || end != hex.data() + hex.size()) {
        throw std::runtime_error(fmt::format("'{}' is no transponder address", hex));
    }
    return address;
}

void addRegistered(FeedLine& line, const AircraftRegistry& registry) {
    const auto found = registry.find(line.hexid);
    if (found != registry.end()) {
        line.registration = line.registration.empty() ? found->second.registration : line.registration;
        line.type = line.type.empty() ? found->second.type : line.type;
    }
}

// Speed and track from the positions

/// Knots from one report to another.
std::optional<double> speedBetween(const Report& a, const Report& b) {
    const double seconds = b.line.timestamp - a.line.timestamp;
    if (seconds <= 0) {
        return std::nullopt;
    }
    return greatCircleNm({a.line.lat, a.line.lon}, {b.line.lat, b.line.lon}) * secondsPerHour / seconds;
}

/// The reports of one aircraft, in the order of time.
void fillSpeedAndTrack(const std::vector<Report*>& reports) {
    double track = 0;
    for (std::size_t i = 0; i < reports.size(); ++i) {
        Report& report = *reports[i];
        const Report& former = *reports[i > 0 ? i - 1 : 0];
        const LatLon from{former.line.lat, former.line.lon};
        const LatLon to{report.line.lat, report.line.lon};
        if (report.track) {
            track = *report.track;
        } else if (greatCircleNm(from, to) > samePlaceNm) {
            track = bearing(from, to) * degreesPerRadian;
        }
        report.line.track = track;
        report.line.gs = report.gs.value_or(speedBetween(former, report).value_or(i > 0 ? former.line.gs : 0));
    }
}

std::string textOfReports(std::vector<Report> reports) {
    std::stable_sort(reports.begin(), reports.end(),
                     [](const Report& a, const Report& b) { return a.line.timestamp < b.line.timestamp; });
    std::map<std::uint32_t, std::vector<Report*>> byAircraft;
    for (Report& report : reports) {
        byAircraft[report.line.hexid].push_back(&report);
    }
    for (const auto& [hexid, ofOne] : byAircraft) {
        fillSpeedAndTrack(ofOne);
    }
    std::string text;
    for (const Report& report : reports) {
        text += textOf(report.line) + '\n';
    }
    return text;
}

// A list of states

std::optional<Report> reportFromState(const json& state, const AircraftRegistry& registry) {
    const std::optional<double> lat = numberAt(state, "latitude");
    const std::optional<double> lon = numberAt(state, "longitude");
    const std::optional<double> time = numberAt(state, "timestamp");
    if (!lat || !lon || !time) {
        return std::nullopt;
    }
    Report report;
    FeedLine& line = report.line;
    line.hexid = addressFrom(textAt(state, "icao24"));
    line.lat = *lat;
    line.lon = *lon;
    line.timestamp = *time / 1000;
    const auto onGround = state.find("onground");
    line.airborne = onGround == state.end() || !onGround->is_boolean() || !onGround->get<bool>();
    line.altFt = line.airborne ? numberAt(state, "altitude").value_or(0) : 0;
    line.vsFpm = numberAt(state, "vertical_rate").value_or(0);
    line.callsign = textAt(state, "callsign");
    report.gs = numberAt(state, "groundspeed");
    report.track = numberAt(state, "track");
    addRegistered(line, registry);
    return report;
}

std::string convertStates(const json& states, const AircraftRegistry& registry) {
    std::vector<Report> reports;
    for (const json& state : states) {
        if (!state.is_object()) {
            throw std::runtime_error("a state that is no object");
        }
        if (std::optional<Report> report = reportFromState(state, registry)) {
            reports.push_back(std::move(*report));
        }
    }
    return textOfReports(std::move(reports));
}

// A trace

namespace trace_column {
constexpr std::size_t seconds = 0;
constexpr std::size_t lat = 1;
constexpr std::size_t lon = 2;
constexpr std::size_t altitude = 3;
constexpr std::size_t gs = 4;
constexpr std::size_t track = 5;
constexpr std::size_t vs = 7;
constexpr std::size_t details = 8;
constexpr std::size_t source = 9;
constexpr std::size_t altGeom = 10;
constexpr std::size_t geomRate = 11;
constexpr std::size_t ias = 12;
constexpr std::size_t roll = 13;
} // namespace trace_column

/// What a row says beside position and motion; what it does not say again stands.
void takeDetails(FeedLine& line, const json& details) {
    if (const std::string callsign = textAt(details, "flight"); !callsign.empty()) {
        line.callsign = callsign;
    }
    if (const std::string category = textAt(details, "category"); !category.empty()) {
        line.category = category;
    }
    line.emergency = textAt(details, "emergency");
    line.navQnh = numberAt(details, "nav_qnh");
    line.tas = numberAt(details, "tas");
    line.mach = numberAt(details, "mach");
    line.trackRate = numberAt(details, "track_rate");
    line.magHeading = numberAt(details, "mag_heading");
    line.trueHeading = numberAt(details, "true_heading");
}

void forgetDetails(FeedLine& line) {
    takeDetails(line, json::object());
}

std::optional<Report> reportFromTraceRow(const json& row, double begin, FeedLine& aircraft) {
    namespace column = trace_column;
    const std::optional<double> seconds = numberAt(row, column::seconds);
    const std::optional<double> lat = numberAt(row, column::lat);
    const std::optional<double> lon = numberAt(row, column::lon);
    if (!seconds || !lat || !lon) {
        return std::nullopt;
    }
    if (row.size() > column::details && row[column::details].is_object()) {
        takeDetails(aircraft, row[column::details]);
    } else {
        forgetDetails(aircraft);
    }
    Report report{aircraft, numberAt(row, column::gs), numberAt(row, column::track)};
    FeedLine& line = report.line;
    line.timestamp = begin + *seconds;
    line.lat = *lat;
    line.lon = *lon;
    line.airborne = row.size() > column::altitude && row[column::altitude] != "ground";
    line.altFt = line.airborne ? numberAt(row, column::altitude).value_or(0) : 0;
    line.vsFpm = numberAt(row, column::vs).value_or(0);
    line.altGeomFt = numberAt(row, column::altGeom);
    line.geomRateFpm = numberAt(row, column::geomRate);
    line.ias = numberAt(row, column::ias);
    line.roll = numberAt(row, column::roll);
    if (row.size() > column::source && row[column::source].is_string()) {
        line.source = row[column::source].get<std::string>();
    }
    return report;
}

std::string convertTrace(const json& trace, const AircraftRegistry& registry) {
    FeedLine aircraft;
    aircraft.hexid = addressFrom(textAt(trace, "icao"));
    aircraft.registration = textAt(trace, "r");
    aircraft.type = textAt(trace, "t");
    addRegistered(aircraft, registry);
    const double begin = numberAt(trace, "timestamp").value_or(0);
    std::vector<Report> reports;
    for (const json& row : trace.at("trace")) {
        if (!row.is_array()) {
            throw std::runtime_error("a row of the trace that is no list");
        }
        if (std::optional<Report> report = reportFromTraceRow(row, begin, aircraft)) {
            reports.push_back(std::move(*report));
        }
    }
    return textOfReports(std::move(reports));
}

// Lines of the feed

namespace older_field {
constexpr std::size_t hexid = 1;
constexpr std::size_t lat = 2;
constexpr std::size_t lon = 3;
constexpr std::size_t altitude = 4;
constexpr std::size_t vs = 5;
constexpr std::size_t airborne = 6;
constexpr std::size_t track = 7;
constexpr std::size_t gs = 8;
constexpr std::size_t callsign = 9;
constexpr std::size_t type = 10;
constexpr std::size_t registration = 11;
constexpr std::size_t from = 12;
constexpr std::size_t to = 13;
constexpr std::size_t timestamp = 14;
constexpr std::size_t count = 15;
} // namespace older_field

/// A line of the older form in the newer one; as it is when it is none.
std::string newerLine(std::string_view older, const AircraftRegistry& registry) {
    namespace field = older_field;
    const std::vector<std::string_view> fields = partsOf(older, ',');
    if (fields.size() < field::count) {
        return std::string(older);
    }
    const auto number = [&fields](std::size_t index) { return parseDouble(fields[index]).value_or(0); };
    FeedLine line;
    line.hexid = static_cast<std::uint32_t>(std::clamp(number(field::hexid), 0.0, 4294967295.0));
    line.lat = number(field::lat);
    line.lon = number(field::lon);
    line.altFt = number(field::altitude);
    line.vsFpm = number(field::vs);
    line.airborne = number(field::airborne) != 0;
    line.track = number(field::track);
    line.gs = number(field::gs);
    line.callsign = fields[field::callsign];
    line.type = fields[field::type];
    line.registration = fields[field::registration];
    line.from = fields[field::from];
    line.to = fields[field::to];
    line.timestamp = number(field::timestamp);
    addRegistered(line, registry);
    return textOf(line);
}

std::string convertLines(std::string_view text, const AircraftRegistry& registry) {
    std::string result;
    bool known = false;
    for (const std::string_view line : linesOf(text)) {
        const bool older = line.starts_with("AITFC,");
        known = known || older || line.starts_with("RTTFC,");
        if (!line.empty()) {
            result += (older ? newerLine(line, registry) : std::string(line)) + '\n';
        }
    }
    if (!known) {
        throw std::runtime_error("no known form of ADS-B data");
    }
    return result;
}

} // namespace

AircraftRegistry registryFrom(std::string_view text) {
    AircraftRegistry registry;
    const json entries = json::parse(text);
    for (const auto& [address, entry] : entries.items()) {
        if (entry.is_array() && entry.size() >= 2 && entry[0].is_string() && entry[1].is_string()) {
            registry[addressFrom(address)] = {entry[0].get<std::string>(), entry[1].get<std::string>()};
        }
    }
    return registry;
}

std::string convertToRecording(std::string_view text, const AircraftRegistry& registry) {
    const json whole = json::parse(text, nullptr, false);
    if (whole.is_array()) {
        return convertStates(whole, registry);
    }
    if (whole.is_object() && whole.contains("trace")) {
        return convertTrace(whole, registry);
    }
    return convertLines(text, registry);
}

std::size_t convertFile(const ConvertOptions& options) {
    const AircraftRegistry registry =
        options.registry.empty() ? AircraftRegistry{} : registryFrom(readText(options.registry));
    const std::string rows = convertToRecording(readText(options.input), registry);
    writeText(options.output, rows);
    return static_cast<std::size_t>(std::count(rows.begin(), rows.end(), '\n'));
}

} // namespace rig
