// rig/report/survey.h
// The first look at a trace: who is in it, who of the feed that is, and how its time goes with the feed's.
// Runs on the calling thread.
#pragma once

#include <cstdint>
#include <istream>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "rig/report/feed_tracks.h"
#include "rig/report/object_meter.h"

namespace rig {

enum class ClockSource {
    given,   ///< by whoever asked for the report
    marked,  ///< in the trace
    fitted,  ///< so that in the middle nobody is early or late
    assumed, ///< that recording and trace begin together
};

struct SurveyedObject {
    std::string title;
    std::string tailNumber;
    const FeedAircraft* feed = nullptr;
    std::optional<double> firstSeen; ///< seconds since the begin of the trace
};

struct UserPlace {
    double seconds = 0;
    LatLon at;
    double altFeet = 0;
};

struct Survey {
    double seconds = 0; ///< of the last frame
    std::uint64_t frames = 0;
    bool endedEarly = false;
    std::uint64_t refusedWrites = 0;                 ///< exceptions 20 and 31, whatever they answer
    std::map<std::uint32_t, SurveyedObject> objects; ///< that the program has created, by id
    std::map<std::string, std::string> refused;      ///< tail number to title
    std::vector<UserPlace> user;                     ///< one a second
    FeedClock clock;
    ClockSource clockSource = ClockSource::assumed;

    LatLon userAt(double when) const; ///< seconds since the begin of the trace
};

/// `tracks` must live as long as what is answered. `feedBegin` is the time of the recording's first row, seconds since
/// 1970; `feedStart` when that was sent, if that is known: seconds since the begin of the trace, or a wall clock,
/// seconds since 1970. Throws TraceError, and std::runtime_error for a wall clock when the trace does not tell its own.
Survey surveyTrace(std::istream& trace, const FeedTracks& tracks, double feedBegin, std::optional<double> feedStart);

} // namespace rig
