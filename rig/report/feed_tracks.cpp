// rig/report/feed_tracks.cpp
#include "rig/report/feed_tracks.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <stdexcept>

#include <fmt/format.h>

#include "core/number_text.h"
#include "core/text_parts.h"
#include "feed/traffic_line.h"
#include "liveries/reference_tables.h"
#include "rig/traffic/gzip_text.h"

namespace rig {

namespace {

/// What a line of the older form has, too.
constexpr std::size_t fewestFields = traffic_field::timestamp + 1;

struct EmitterCategory {
    std::string_view emitter;
    AircraftCategory category;
};

constexpr std::array<EmitterCategory, 7> emitterCategories{{
    {"A1", AircraftCategory::Light},
    {"A2", AircraftCategory::Buzjets},
    {"A3", AircraftCategory::Large},
    {"A4", AircraftCategory::Large},
    {"A5", AircraftCategory::Heavy},
    {"A6", AircraftCategory::HighPerf},
    {"A7", AircraftCategory::Rotorcraft},
}};

void fill(std::string& stored, std::string_view told) {
    if (stored.empty()) {
        stored = told;
    }
}

/// Of several the first one that is known, for the program leaves out the lines with another one.
void takeType(std::string& stored, std::string_view told) {
    const auto isKnown = [](std::string_view type) { return gAllTypes.contains(type); };
    if (stored.empty() || (!isKnown(stored) && isKnown(told))) {
        stored = told;
    }
}

void takeName(FeedAircraft& aircraft, std::string_view name) {
    if (!name.empty()) {
        aircraft.names.emplace(name);
    }
}

/// Only the first and the last of those that stand at one place are kept.
void takePoint(std::vector<FeedPoint>& points, const FeedPoint& point) {
    const std::size_t size = points.size();
    if (size >= 2 && points[size - 1].at == point.at && points[size - 2].at == point.at &&
        points[size - 1].onGround == point.onGround) {
        points.back() = point;
    } else {
        points.push_back(point);
    }
}

class FeedCollector {
public:
    void take(const RecordedRow& row) {
        splitTrafficLine(row.text, fields_);
        if (fields_.size() < fewestFields) {
            return;
        }
        const std::optional<std::uint32_t> hexid = hexidFrom(fields_[traffic_field::hexid]);
        const std::optional<double> time = parseDouble(fields_[traffic_field::timestamp]);
        const std::optional<LatLon> at = positionOf(row.text);
        if (!hexid || !time || !at || !isPlausible(*at)) {
            return;
        }
        const auto [latest, isNew] = latest_.try_emplace(*hexid, *time);
        if (!isNew && *time <= latest->second) {
            return;
        }
        latest->second = *time;
        FeedAircraft& aircraft = tracks[*hexid];
        aircraft.hexid = *hexid;
        takeWords(aircraft);
        const double alt = parseDouble(fields_[traffic_field::altitude]).value_or(0);
        const double knots = parseDouble(fields_[traffic_field::gs]).value_or(0);
        takePoint(aircraft.points, {row.due, *at, alt <= 0, alt, std::max(knots, 0.0)});
    }

    FeedTracks tracks;

private:
    void takeWords(FeedAircraft& aircraft) const {
        const std::string_view callsign = textFrom(fields_[traffic_field::callsign]);
        const std::string_view registration = textFrom(fields_[traffic_field::registration]);
        takeName(aircraft, callsign);
        takeName(aircraft, registration);
        fill(aircraft.callsign, callsign);
        fill(aircraft.registration, registration);
        takeType(aircraft.type, typeFrom(fields_[traffic_field::type]));
        if (fields_.size() > traffic_field::category) {
            fill(aircraft.emitter, fields_[traffic_field::category]);
        }
    }

    std::map<std::uint32_t, double> latest_; // time stamp by hexid
    std::vector<std::string_view> fields_;
};

namespace truth_field {
constexpr std::size_t time = 0;
constexpr std::size_t hexid = 1;
constexpr std::size_t callsign = 2;
constexpr std::size_t lat = 4;
constexpr std::size_t lon = 5;
constexpr std::size_t alt = 6;
constexpr std::size_t onGround = 7;
constexpr std::size_t count = 13;
} // namespace truth_field

constexpr std::string_view truthBeginning = "time,hexid,callsign,phase,lat,lon,alt_ft,on_ground,";

void takeTruth(FeedTracks& tracks, std::string_view line, std::size_t number) {
    const std::vector<std::string_view> fields = partsOf(line, ',');
    const auto fail = [number](const char* what) {
        throw std::runtime_error(fmt::format("line {}: {}", number, what));
    };
    if (fields.size() != truth_field::count) {
        fail("not as many fields as the first line names");
    }
    const auto value = [&fields, &fail](std::size_t index) {
        const std::optional<double> read = parseDouble(fields[index]);
        if (!read) {
            fail("a number that is none");
        }
        return read.value_or(0);
    };
    const std::optional<std::uint32_t> hexid = hexidFrom(fields[truth_field::hexid]);
    if (!hexid) {
        fail("no identity");
    }
    FeedAircraft& aircraft = tracks[hexid.value_or(0)];
    aircraft.hexid = hexid.value_or(0);
    takeName(aircraft, fields[truth_field::callsign]);
    fill(aircraft.callsign, fields[truth_field::callsign]);
    const FeedPoint point{value(truth_field::time),
                          {value(truth_field::lat), value(truth_field::lon)},
                          fields[truth_field::onGround] == "1",
                          value(truth_field::alt)};
    if (!aircraft.points.empty() && point.seconds <= aircraft.points.back().seconds) {
        fail("an earlier time than the line before");
    }
    aircraft.points.push_back(point);
}

} // namespace

std::vector<LatLon> FeedAircraft::line() const {
    std::vector<LatLon> places;
    places.reserve(points.size());
    for (const FeedPoint& point : points) {
        places.push_back(point.at);
    }
    return places;
}

std::size_t FeedAircraft::indexAt(double seconds) const {
    const auto later = std::upper_bound(points.begin(), points.end(), seconds,
                                        [](double time, const FeedPoint& point) { return time < point.seconds; });
    return later == points.begin() ? 0 : static_cast<std::size_t>(later - points.begin()) - 1;
}

std::optional<FeedPoint> FeedAircraft::at(double seconds) const {
    const std::size_t index = indexAt(seconds);
    if (index + 1 >= points.size() || seconds < points[index].seconds) {
        return std::nullopt;
    }
    const FeedPoint& a = points[index];
    const FeedPoint& b = points[index + 1];
    const double span = b.seconds - a.seconds;
    if (span > longestLegSeconds && a.at != b.at) {
        return std::nullopt;
    }
    const double share = span == 0 ? 0 : (seconds - a.seconds) / span;
    const double lon = a.at.lon + share * std::remainder(b.at.lon - a.at.lon, 360.0);
    return FeedPoint{seconds,
                     {a.at.lat + share * (b.at.lat - a.at.lat), std::remainder(lon, 360.0)},
                     a.onGround && b.onGround,
                     a.altFeet + share * (b.altFeet - a.altFeet),
                     a.knots + share * (b.knots - a.knots)};
}

double FeedAircraft::knotsAt(double seconds) const {
    const std::size_t index = indexAt(seconds);
    const bool isBetween = index + 1 < points.size() && seconds >= points[index].seconds;
    if (!isBetween || points[index + 1].seconds - points[index].seconds > longestLegSeconds) {
        return 0;
    }
    return std::min(points[index].knots, points[index + 1].knots);
}

bool FeedAircraft::isOnGround(double seconds, double around) const {
    if (points.empty()) {
        return false;
    }
    for (std::size_t i = indexAt(seconds - around); i < points.size() && points[i].seconds <= seconds + around; ++i) {
        if (!points[i].onGround) {
            return false;
        }
    }
    // At least the one before the moment and the one behind it.
    const std::size_t last = std::min(indexAt(seconds + around) + 1, points.size() - 1);
    return points.front().seconds <= seconds && points[last].onGround;
}

FeedTracks feedTracks(const Recording& recording) {
    FeedCollector collector;
    for (const RecordedRow& row : recording.rows) {
        if (row.kind == DatagramKind::traffic) {
            collector.take(row);
        }
    }
    return std::move(collector.tracks);
}

FeedTracks truthTracks(std::string_view text) {
    FeedTracks tracks;
    std::size_t number = 0;
    for (const std::string_view line : linesOf(text)) {
        ++number;
        if (number == 1) {
            if (!line.starts_with(truthBeginning)) {
                throw std::runtime_error("line 1: no truth file");
            }
        } else if (!line.empty()) {
            takeTruth(tracks, line, number);
        }
    }
    if (tracks.empty()) {
        throw std::runtime_error("no line of a truth file");
    }
    return tracks;
}

AircraftCategory categoryOf(const FeedAircraft& aircraft) {
    if (gAllTypes.contains(aircraft.type)) {
        return gf_categoryOfType(aircraft.type);
    }
    const auto found =
        std::find_if(emitterCategories.begin(), emitterCategories.end(),
                     [&aircraft](const EmitterCategory& row) { return row.emitter == aircraft.emitter; });
    return found == emitterCategories.end() ? AircraftCategory::Large : found->category;
}

} // namespace rig
