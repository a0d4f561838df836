// rig/traffic/expected_outcomes.h
// What the program's own rules make of a recording, computed from the recording alone: to compare with what a run counted.
// It uses a traffic reader, the queue and the settings of this process: nothing else may use them meanwhile.
#pragma once

#include <cstddef>
#include <filesystem>
#include <iosfwd>
#include <map>
#include <optional>

#include "feed/traffic_reader.h"
#include "rig/traffic/recording.h"

namespace rig {

using OutcomeCounts = std::map<LineOutcome, std::size_t>;

/// A cause that took no line is left out.
OutcomeCounts expectedOutcomes(const Recording& recording, const TrafficSurroundings& around, int radiusNm);

struct CountOptions {
    std::filesystem::path recording;
    LatLon user;
    int radiusNm = 40;
    bool userAirportCounts = false; ///< the user's place is a parking airport
    double elevationFt = 0;         ///< of that
};

/// One line per cause, "accepted 102".
void countOutcomes(const CountOptions& options, std::ostream& out);

} // namespace rig
