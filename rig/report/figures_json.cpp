// rig/report/figures_json.cpp
#include "rig/report/figures_json.h"

#include <algorithm>
#include <cmath>

#include <fmt/format.h>
#include <nlohmann/json.hpp>

#include "rig/report/report_page_template.h"

namespace rig {

namespace {

using nlohmann::json;

constexpr int jsonIndent = 1;

// Of the page: so many points in all, and of one aircraft.
constexpr std::size_t pagePoints = 120000;
constexpr std::size_t fewestPoints = 40;
constexpr std::size_t detailRecordedPoints = 60;
constexpr double detailRecordedSeconds = 12;

constexpr int coordinateDecimals = 7;

double rounded(double value, int decimals) {
    const double scale = std::pow(10.0, decimals);
    return std::round(value * scale) / scale;
}

json numberOf(double value, int decimals) {
    return std::isfinite(value) ? json(rounded(value, decimals)) : json(nullptr);
}

const char* nameOf(ClockSource source) {
    switch (source) {
    case ClockSource::given: return "given";
    case ClockSource::marked: return "marked in the trace";
    case ClockSource::fitted: return "fitted";
    case ClockSource::assumed: break;
    }
    return "assumed";
}

json spreadOf(const Distribution& values) {
    if (values.count() == 0) {
        return nullptr;
    }
    return {{"count", values.count()},
            {"median", numberOf(values.atShare(0.5), 3)},
            {"p95", numberOf(values.atShare(0.95), 3)},
            {"worst", numberOf(values.worst(), 3)}};
}

json signedSpreadOf(const Distribution& values) {
    json spread = spreadOf(values);
    if (!spread.is_null()) {
        spread["mean"] = numberOf(values.meanSigned(), 3);
    }
    return spread;
}

json rateOf(const RateFigures& figures) {
    json rate = spreadOf(figures.values);
    if (!rate.is_null()) {
        rate["passes"] = figures.passes;
        rate["seconds_above"] = numberOf(figures.secondsAbove, 2);
    }
    return rate;
}

json stateOf(const StateFigures& figures, bool knowsGround) {
    const auto height = [knowsGround](double seconds) { return knowsGround ? numberOf(seconds, 2) : json(nullptr); };
    return {{"seconds", numberOf(figures.seconds, 2)},
            {"cross_track_m", spreadOf(figures.crossTrack)},
            {"without_samples_s", numberOf(figures.withoutSamples, 2)},
            {"without_samples_m", spreadOf(figures.crossTrackWithoutSamples)},
            {"way_back_s", numberOf(figures.onWayBack, 2)},
            {"way_back_m", spreadOf(figures.crossTrackOnWayBack)},
            {"along_track_s", signedSpreadOf(figures.alongTrack)},
            {"from_truth_m", spreadOf(figures.fromTruth)},
            {"from_held_out_m", spreadOf(figures.fromHeldOut)},
            {"largest_step_m", numberOf(figures.largestStep, 3)},
            {"largest_step_share", numberOf(figures.largestStepShare, 3)},
            {"jumps", figures.jumps},
            {"largest_height_step_ft", numberOf(figures.largestHeightStep, 3)},
            {"height_jumps", figures.heightJumps},
            {"unsound_values", figures.allUnsound()},
            {"heading_rate_deg_s", rateOf(figures.headingRate)},
            {"pitch_rate_deg_s", rateOf(figures.pitchRate)},
            {"bank_rate_deg_s", rateOf(figures.bankRate)},
            {"bank_deg", rateOf(figures.bank)},
            {"sideways_s", numberOf(figures.sideways, 2)},
            {"backwards_s", numberOf(figures.backwards, 2)},
            {"below_ground_s", height(figures.belowGround)},
            {"floating_s", height(figures.floating)},
            {"overlapping_s", numberOf(figures.overlapping, 2)}};
}

json touchdownsOf(const ObjectFigures& figures) {
    json touchdowns = json::array();
    for (const Touchdown& touchdown : figures.touchdowns) {
        touchdowns.push_back({{"time_s", numberOf(touchdown.seconds, 2)},
                              {"vertical_speed_fpm", numberOf(touchdown.feetPerMinute, 0)},
                              {"bank_deg", numberOf(touchdown.bankDegrees, 2)}});
    }
    return touchdowns;
}

json touchdownSpread(const ObjectFigures& figures) {
    Distribution sink;
    Distribution bank;
    for (const Touchdown& touchdown : figures.touchdowns) {
        sink.add(touchdown.feetPerMinute);
        bank.add(touchdown.bankDegrees);
    }
    return {{"count", figures.touchdowns.size()},
            {"vertical_speed_fpm", signedSpreadOf(sink)},
            {"bank_deg", signedSpreadOf(bank)}};
}

json aircraftOf(const MeasuredAircraft& aircraft, bool knowsGround) {
    const ObjectFacts& facts = aircraft.facts;
    const ObjectFigures& figures = aircraft.figures;
    return {{"object", facts.id},
            {"title", facts.title},
            {"tail_number", facts.tailNumber},
            {"hexid", facts.feed == nullptr ? json(nullptr) : json(facts.feed->hexid)},
            {"type", facts.feed == nullptr ? json(nullptr) : json(facts.feed->type)},
            {"category", printedName(facts.category)},
            {"first_seen_s", numberOf(figures.firstSeen, 2)},
            {"last_seen_s", numberOf(figures.lastSeen, 2)},
            {"first_sight_s", figures.firstSight ? numberOf(*figures.firstSight, 2) : json(nullptr)},
            {"air", stateOf(figures.air, knowsGround)},
            {"ground", stateOf(figures.ground, knowsGround)},
            {"touchdowns", touchdownsOf(figures)}};
}

json momentOf(const Analysis& analysis, const Moment& moment) {
    const MomentKindFacts& kind = factsOf(moment.kind);
    return {{"kind", kind.key},
            {"what", kind.title},
            {"value", numberOf(moment.value, 3)},
            {"unit", kind.unit},
            {"weight", numberOf(moment.weight, 2)},
            {"object", moment.objectId},
            {"aircraft", nameOf(analysis, moment.objectId)},
            {"other_object", moment.otherId == 0 ? json(nullptr) : json(moment.otherId)},
            {"other_aircraft", moment.otherId == 0 ? json(nullptr) : json(nameOf(analysis, moment.otherId))},
            {"begin_s", numberOf(moment.begin, 3)},
            {"time_s", numberOf(moment.seconds, 3)},
            {"end_s", numberOf(moment.end, 3)},
            {"lat", numberOf(moment.at.lat, coordinateDecimals)},
            {"lon", numberOf(moment.at.lon, coordinateDecimals)},
            {"altitude_ft", numberOf(moment.altFeet, 1)}};
}

json neverShownOf(const NeverShown& one) {
    return {{"hexid", one.hexid},
            {"callsign", one.callsign},
            {"registration", one.registration},
            {"type", one.type},
            {"first_sample_s", numberOf(one.firstSample, 1)},
            {"why", one.why}};
}

json figuresOf(const Analysis& analysis) {
    const Survey& survey = analysis.survey;
    const auto ofFeed = std::count_if(analysis.aircraft.begin(), analysis.aircraft.end(),
                                      [](const MeasuredAircraft& one) { return one.facts.feed != nullptr; });
    json figures{{"trace",
                  {{"seconds", numberOf(survey.seconds, 2)},
                   {"frames", survey.frames},
                   {"ends_within_a_record", survey.endedEarly}}},
                 {"clock",
                  {{"source", nameOf(survey.clockSource)},
                   {"feed_time_at_begin", numberOf(survey.clock.feedAtBegin, 3)},
                   {"delay_s", feedDelaySeconds}}},
                 {"ground_known", analysis.knowsGround}};
    json& all = figures["all"];
    all = {{"aircraft", analysis.aircraft.size()},
           {"aircraft_of_the_recording", ofFeed},
           {"air", stateOf(analysis.all.air, analysis.knowsGround)},
           {"ground", stateOf(analysis.all.ground, analysis.knowsGround)},
           {"touchdowns", touchdownSpread(analysis.all)},
           {"refused_writes", analysis.survey.refusedWrites},
           {"overlap_s", numberOf(analysis.overlapSeconds, 2)},
           {"first_sight_s", signedSpreadOf(analysis.firstSight)},
           {"in_range_taken", analysis.inRange.firstSample.size()},
           {"never_appeared", analysis.inRange.neverShown.size()}};
    for (std::size_t kind = 0; kind < momentKindCount; ++kind) {
        all["moments"][factsOf(static_cast<MomentKind>(kind)).key] =
            analysis.moments.count(static_cast<MomentKind>(kind));
    }
    json& worst = figures["worst_moments"] = json::array();
    for (const DetailedMoment& detailed : analysis.worst) {
        worst.push_back(momentOf(analysis, detailed.moment));
    }
    json& never = figures["never_appeared"] = json::array();
    for (const NeverShown& one : analysis.inRange.neverShown) {
        never.push_back(neverShownOf(one));
    }
    json& each = figures["aircraft"] = json::array();
    for (const MeasuredAircraft& aircraft : analysis.aircraft) {
        each.push_back(aircraftOf(aircraft, analysis.knowsGround));
    }
    return figures;
}

/// What is no UTF-8 is shown as U+FFFD.
std::string textOf(const json& value, int indent) {
    return value.dump(indent, ' ', false, json::error_handler_t::replace);
}

json lineOf(const std::vector<FeedPoint>& points) {
    json lat = json::array();
    json lon = json::array();
    for (const FeedPoint& point : points) {
        lat.push_back(rounded(point.at.lat, coordinateDecimals));
        lon.push_back(rounded(point.at.lon, coordinateDecimals));
    }
    return {{"lat", lat}, {"lon", lon}};
}

json courseOf(const MeasuredAircraft& aircraft, std::size_t most) {
    json course{{"t", json::array()},  {"lat", json::array()},     {"lon", json::array()},   {"alt", json::array()},
                {"kt", json::array()}, {"heading", json::array()}, {"ground", json::array()}};
    for (const SeriesPoint& point : aircraft.series.points(most)) {
        course["t"].push_back(rounded(point.seconds, 1));
        course["lat"].push_back(rounded(point.at.lat, 6));
        course["lon"].push_back(rounded(point.at.lon, 6));
        course["alt"].push_back(rounded(point.altFeet, 0));
        course["kt"].push_back(rounded(point.knots, 1));
        course["heading"].push_back(rounded(point.headingDegrees, 1));
        course["ground"].push_back(point.onGround ? 1 : 0);
    }
    return course;
}

json framesOf(const std::vector<DetailPoint>& points) {
    json frames = json::array();
    for (const DetailPoint& point : points) {
        const Position& at = point.position;
        frames.push_back({rounded(point.seconds, 3), rounded(at.lat, 8), rounded(at.lon, 8), rounded(at.altFeet, 2),
                          rounded(at.trueKnots, 1), rounded(at.headingRad * degreesPerRadian, 2),
                          rounded(at.pitchRad * degreesPerRadian, 2), rounded(at.bankRad * degreesPerRadian, 2)});
    }
    return frames;
}

json detailOf(const Analysis& analysis, const DetailedMoment& detailed) {
    json detail{{"course", framesOf(detailed.course)}, {"other", framesOf(detailed.other)}};
    const MeasuredAircraft* aircraft = findAircraft(analysis, detailed.moment.objectId);
    if (aircraft != nullptr && aircraft->facts.feed != nullptr) {
        const double at = detailed.moment.seconds;
        detail["recorded"] =
            lineOf(recordedPart(*aircraft->facts.feed, analysis.survey.clock, at - detailRecordedSeconds,
                                at + detailRecordedSeconds, detailRecordedPoints));
    }
    return detail;
}

json pageDataOf(const Analysis& analysis, std::string_view name) {
    json data{{"name", name}, {"figures", figuresOf(analysis)}};
    const std::size_t shared = pagePoints / std::max<std::size_t>(analysis.aircraft.size(), 1);
    const std::size_t most = std::clamp(shared, fewestPoints, Series::mostPoints);
    json& courses = data["courses"] = json::array();
    for (const MeasuredAircraft& aircraft : analysis.aircraft) {
        json course = courseOf(aircraft, most);
        if (const FeedAircraft* feed = aircraft.facts.feed) {
            course["recorded"] = lineOf(recordedPart(*feed, analysis.survey.clock, aircraft.figures.firstSeen,
                                                     aircraft.figures.lastSeen, most));
        }
        courses.push_back(std::move(course));
    }
    json& details = data["details"] = json::array();
    for (const DetailedMoment& detailed : analysis.worst) {
        details.push_back(detailOf(analysis, detailed));
    }
    json& user = data["user"] = {{"lat", json::array()}, {"lon", json::array()}};
    const std::size_t step = analysis.survey.user.size() / 300 + 1;
    for (std::size_t i = 0; i < analysis.survey.user.size(); i += step) {
        user["lat"].push_back(rounded(analysis.survey.user[i].at.lat, 6));
        user["lon"].push_back(rounded(analysis.survey.user[i].at.lon, 6));
    }
    return data;
}

} // namespace

std::string figuresText(const Analysis& analysis) {
    return textOf(figuresOf(analysis), jsonIndent) + '\n';
}

std::string reportPage(const Analysis& analysis, std::string_view name) {
    constexpr std::string_view place = "/*DATA*/";
    std::string data = textOf(pageDataOf(analysis, name), -1);
    // A title must not end the script.
    for (std::size_t at = data.find("</"); at != std::string::npos; at = data.find("</", at)) {
        data.replace(at, 2, "<\\/");
    }
    const std::size_t at = reportPageTemplate.find(place);
    return fmt::format("{}{}{}", reportPageTemplate.substr(0, at), data, reportPageTemplate.substr(at + place.size()));
}

std::vector<FeedPoint> recordedPart(const FeedAircraft& feed, const FeedClock& clock, double begin, double end,
                                    std::size_t most) {
    if (feed.points.empty()) {
        return {};
    }
    const std::size_t first = feed.indexAt(clock.delayed(begin));
    const std::size_t last = std::min(feed.indexAt(clock.delayed(end)) + 1, feed.points.size() - 1);
    const std::size_t step = (last - first) / most + 1;
    std::vector<FeedPoint> part;
    for (std::size_t i = first; i <= last; i += step) {
        part.push_back(feed.points[i]);
    }
    return part;
}

std::string nameOf(const MeasuredAircraft& aircraft) {
    if (!aircraft.facts.tailNumber.empty()) {
        return aircraft.facts.tailNumber;
    }
    return fmt::format("object {}", aircraft.facts.id);
}

const MeasuredAircraft* findAircraft(const Analysis& analysis, std::uint32_t objectId) {
    const auto found =
        std::lower_bound(analysis.aircraft.begin(), analysis.aircraft.end(), objectId,
                         [](const MeasuredAircraft& one, std::uint32_t id) { return one.facts.id < id; });
    return found != analysis.aircraft.end() && found->facts.id == objectId ? &*found : nullptr;
}

std::string nameOf(const Analysis& analysis, std::uint32_t objectId) {
    if (objectId == 1) {
        return "the user";
    }
    const MeasuredAircraft* aircraft = findAircraft(analysis, objectId);
    return aircraft == nullptr ? fmt::format("object {}", objectId) : nameOf(*aircraft);
}

std::string valueText(const Moment& moment) {
    return fmt::format("{:.1f} {}", moment.value, factsOf(moment.kind).unit);
}

std::string timeText(double seconds) {
    const auto tenths = static_cast<long long>(std::round(seconds * 10));
    return fmt::format("{}:{:02}:{:02}.{}", tenths / 36000, tenths / 600 % 60, tenths / 10 % 60, tenths % 10);
}

} // namespace rig
