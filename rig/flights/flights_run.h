// rig/flights/flights_run.h
// Recordings of flights that are scripted, with the truth beside them. Runs on the calling thread.
#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <iosfwd>
#include <string>

#include "rig/flights/receiver.h"
#include "rig/flights/scenarios.h"

namespace rig {

struct FlightsOptions {
    std::filesystem::path folder;
    std::string scenario; ///< empty: all of them
    Fidelity fidelity = Fidelity::exact;
    std::uint32_t seed = 1;
    double begin = 1780315200; ///< seconds since 1970: 2026-06-01, noon
    int steady = 0;       ///< more than 0: in place of the scenarios a sky with so many aircraft in flight at any time
    double seconds = 600; ///< of that sky
};

/// A scenario as two texts.
struct WrittenScenario {
    std::string recording; ///< rows, weather among them
    /// Lines with "time,hexid,callsign,phase,lat,lon,alt_ft,on_ground,heading,track,gs_kt,vs_fpm,roll", one a second
    /// for each aircraft that moves and one in ten seconds for one that stands; the altitude counts from the sea.
    std::string truth;
};

WrittenScenario writeScenario(const Scenario& scenario, const FlightsOptions& options);

/// Writes "{scenario}.csv.gz", the recording, and "{scenario}.truth.csv.gz"; of a steady sky the recording alone,
/// "steady_{aircraft}.csv.gz". Throws std::runtime_error, with a text for the
/// user, for a scenario that is none and a folder that cannot be written.
void runFlights(const FlightsOptions& options, std::ostream& out);

} // namespace rig
