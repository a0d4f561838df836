// rig/traffic/expected_outcomes.h
// What the program's own rules make of a recording, computed from the recording alone: to compare with what a run
// counted. It uses a traffic reader, the queue and the settings of this process: nothing else may use them meanwhile.
#pragma once

#include <filesystem>
#include <iosfwd>
#include <string_view>

#include "feed/line_outcome.h"
#include "feed/traffic_reader.h"
#include "rig/traffic/recording.h"

namespace rig {

OutcomeCounts expectedOutcomes(const Recording& recording, const TrafficSurroundings& around, int radiusNm);

struct CountOptions {
    std::filesystem::path recording;
    LatLon user;
    int radiusNm = 40;
    bool userAirportCounts = false; ///< the user's place is a parking airport
    double elevationFt = 0;         ///< of that
    std::filesystem::path log;      ///< of the program; empty: none
};

/// What the program's log says of the lines of its last run. Throws std::runtime_error, with a text for the user, when
/// it says nothing.
OutcomeCounts outcomesFromLog(std::string_view log);

/// One line per cause, "accepted 102". With a log it compares too, and throws std::runtime_error, with a text for the
/// user, when the program counted otherwise.
void countOutcomes(const CountOptions& options, std::ostream& out);

} // namespace rig
