// rig/report/never_shown.cpp
#include "rig/report/never_shown.h"

#include <algorithm>
#include <array>
#include <optional>
#include <set>
#include <utility>

#include <fmt/format.h>

#include "core/injection_radius.h"
#include "core/text_parts.h"
#include "engine/aircraft_record.h"
#include "feed/traffic_line.h"
#include "feed/traffic_reader.h"
#include "rig/traffic/gzip_text.h"

namespace rig {

namespace {

/// From its first sample an aircraft is to be seen after the delay, the creation and the activation.
constexpr double latestSightSeconds = 45;

struct OutcomeWords {
    LineOutcome outcome;
    const char* words;
};

constexpr std::array<OutcomeWords, 8> outcomeWords{{
    {LineOutcome::groundVehicle, "it is a ground vehicle"},
    {LineOutcome::registrationTooLong, "its registration is too long"},
    {LineOutcome::unwantedKind, "it is of no kind that is shown"},
    {LineOutcome::hexidTooLow, "its identity is that of no transponder"},
    {LineOutcome::notAirborneEnough, "it is not high enough"},
    {LineOutcome::unwantedCallSign, "its call sign is that of no aircraft"},
    {LineOutcome::nameless, "it has neither call sign nor registration"},
    {LineOutcome::groundNotWanted, "it is on the ground elsewhere"},
}};

/// Nothing for what says that a line is not in range at all.
const char* wordsFor(LineOutcome outcome) {
    const auto found = std::find_if(outcomeWords.begin(), outcomeWords.end(),
                                    [outcome](const OutcomeWords& row) { return row.outcome == outcome; });
    return found == outcomeWords.end() ? nullptr : found->words;
}

/// The width of the route at the begin of a line on an aircraft: "AMS->LHR", wider with longer codes, blanks when
/// unknown.
std::size_t routeWidth(std::string_view line) {
    constexpr std::size_t usual = 8;
    const std::size_t arrow = line.find("->");
    if (line.starts_with(std::string(usual, ' ')) || arrow == std::string_view::npos) {
        return usual;
    }
    return std::min(line.find(' ', std::max(arrow + 5, usual)), line.size());
}

/// Who is meant by a line that begins with shortLine() of an aircraft: its call sign, or its registration when it has
/// none that is its own. Whatever else stands there, such as airports and airlines, may be a call sign of another one.
std::string_view nameIn(std::string_view line) {
    constexpr std::size_t callsignWidth = 8;
    line.remove_prefix(std::min(routeWidth(line) + 1, line.size()));
    const std::size_t end = std::min(line.find(' ', callsignWidth), line.size());
    const std::string_view callsign = trimmed(line.substr(0, end));
    if (isUsableCallsign(callsign)) {
        return callsign;
    }
    line.remove_prefix(std::min(end + 1, line.size()));
    return line.substr(0, line.find(' '));
}

/// The text between two marks; nothing when they do not stand there.
std::optional<std::string_view> between(std::string_view text, std::string_view before, std::string_view behind) {
    const std::size_t begin = text.find(before);
    if (begin == std::string_view::npos) {
        return std::nullopt;
    }
    const std::size_t from = begin + before.size();
    const std::size_t end = text.find(behind, from);
    return end == std::string_view::npos ? std::nullopt : std::optional(text.substr(from, end - from));
}

} // namespace

LogReasons::LogReasons(std::string_view log) {
    constexpr std::string_view indent = "          ";
    constexpr std::string_view goes = " goes: ";
    constexpr std::string_view notShown = "' are not shown: ";
    constexpr std::string_view notCreated = " could not be created by your Sim!";
    constexpr std::string_view blocked = " while blocked";
    const auto tell = [this](std::string_view name, std::string reason) {
        if (!name.empty()) {
            byName_[std::string(name)] = std::move(reason);
        }
    };
    for (const std::string_view line : linesOf(log)) {
        if (const std::size_t at = line.find(goes); at != std::string_view::npos && line.starts_with(indent)) {
            tell(nameIn(line.substr(indent.size(), at - indent.size())), std::string(line.substr(at + goes.size())));
        } else if (const auto type = between(line, "Aircraft of type '", notShown)) {
            const std::size_t reasonAt = line.find(notShown) + notShown.size();
            byType_[std::string(*type)] = fmt::format("aircraft of type '{}': {}", *type, line.substr(reasonAt));
        } else if (const auto title = between(line, " '", "'"); title && line.ends_with(notCreated)) {
            tell(line.substr(0, line.find(" '")), fmt::format("the simulator cannot create '{}'", *title));
        } else if (line.ends_with(blocked)) {
            tell(nameIn(line), "it was blocked");
        }
    }
}

std::string LogReasons::reasonFor(const FeedAircraft& aircraft) const {
    for (const std::string& name : aircraft.names) {
        if (const auto found = byName_.find(name); found != byName_.end()) {
            return found->second;
        }
    }
    const auto found = byType_.find(aircraft.type);
    return found == byType_.end() ? "" : found->second;
}

namespace {

struct Heard {
    std::optional<double> firstTaken;
    std::optional<double> firstInRange;
    std::vector<double> takenAt;   ///< seconds since 1970
    const char* dropped = nullptr; ///< why, of the last line that was not taken
};

/// What the program's own reader makes of each line, with the user where the trace shows him at that moment.
std::map<std::uint32_t, Heard> hear(const Recording& recording, const Survey& survey, const ProgramReach& reach) {
    gf_setInjectionRadius(reach.radiusNm);
    TrafficReader reader;
    std::map<std::uint32_t, Heard> heard;
    std::vector<std::string_view> fields;
    for (const RecordedRow& row : recording.rows) {
        const double seconds = survey.clock.receivedInTrace(row.due);
        if (row.kind != DatagramKind::traffic || seconds < 0 || seconds > survey.seconds) {
            continue;
        }
        const LatLon user = survey.userAt(seconds);
        reader.setUserLatLon(user);
        if (reach.takesGroundTraffic) {
            reader.setParkingAirport(ParkingAirport{user, 0});
        }
        // Nobody takes records here, so what would be accepted is refused.
        const LineOutcome outcome = reader.processLine(row.text);
        const bool isTaken = outcome == LineOutcome::refused || outcome == LineOutcome::accepted;
        const char* const dropped = wordsFor(outcome);
        if (!isTaken && dropped == nullptr) {
            continue;
        }
        splitTrafficLine(row.text, fields);
        const std::optional<std::uint32_t> hexid =
            fields.size() > 1 ? hexidFrom(fields[traffic_field::hexid]) : std::nullopt;
        if (!hexid) {
            continue;
        }
        Heard& one = heard[*hexid];
        if (!one.firstInRange) {
            one.firstInRange = seconds;
        }
        if (!isTaken) {
            one.dropped = dropped;
            continue;
        }
        one.takenAt.push_back(row.due);
        if (!one.firstTaken) {
            one.firstTaken = seconds;
        }
    }
    return heard;
}

std::string whyNot(const FeedAircraft& aircraft, const Heard& heard, const Survey& survey, const LogReasons& reasons) {
    if (std::string told = reasons.reasonFor(aircraft); !told.empty()) {
        return told;
    }
    for (const std::string& name : aircraft.names) {
        if (const auto refused = survey.refused.find(name); refused != survey.refused.end()) {
            return fmt::format("the simulator cannot create '{}'", refused->second);
        }
    }
    if (!heard.firstTaken && heard.dropped != nullptr) {
        return heard.dropped;
    }
    return "the log does not tell";
}

} // namespace

FeedInRange feedInRange(const Recording& recording, const FeedTracks& tracks, const Survey& survey,
                        const LogReasons& reasons, const ProgramReach& reach) {
    std::set<std::uint32_t> shown;
    for (const auto& [id, object] : survey.objects) {
        if (object.feed != nullptr && object.firstSeen) {
            shown.insert(object.feed->hexid);
        }
    }
    FeedInRange result;
    for (auto& [hexid, heard] : hear(recording, survey, reach)) {
        if (heard.firstTaken) {
            result.firstSample[hexid] = *heard.firstTaken;
            result.takenAt[hexid] = std::move(heard.takenAt);
        }
        const double first = heard.firstTaken.value_or(heard.firstInRange.value_or(0));
        const auto aircraft = tracks.find(hexid);
        if (shown.contains(hexid) || aircraft == tracks.end() || first > survey.seconds - latestSightSeconds) {
            continue;
        }
        const FeedAircraft& known = aircraft->second;
        result.neverShown.push_back(
            {hexid, known.callsign, known.registration, known.type, first, whyNot(known, heard, survey, reasons)});
    }
    return result;
}

} // namespace rig
