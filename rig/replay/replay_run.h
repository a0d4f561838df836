// rig/replay/replay_run.h
// A recording flown by the engine in a scene, from file to file. Runs on the calling thread.
#pragma once

#include <cstdint>
#include <filesystem>
#include <iosfwd>
#include <optional>
#include <string>

#include "rig/replay/replay.h"

namespace rig {

struct ReplayOptions {
    std::filesystem::path recording;
    std::filesystem::path scene;
    std::filesystem::path trace; ///< empty: none, or with a report "flight.trace" in its folder
    /// Types and registrations, in clear.
    std::filesystem::path reference = std::filesystem::path("data") / "dbase.xml";
    std::filesystem::path logFolder;       ///< gets the Log.txt of the run; empty: none, or with a report its folder
    std::filesystem::path report;          ///< folder that gets the report of what flew; empty: none
    std::filesystem::path truth;           ///< for the report: where the aircraft really were; empty: not known
    std::uint32_t seed = 1;                ///< of the engine's chance, and of what happens to the lines on their way
    double beginSeconds = 0;               ///< of the recording, left out at its beginning
    std::optional<double> durationSeconds; ///< none: until the recording is over and its aircraft have gone
    double radiusNm = 40;                  ///< of injection
    double holdOut = 0;                    ///< share of the traffic lines that the engine is not given, 0 to 1
    std::filesystem::path heldOut;         ///< gets them, as a recording; empty: nothing is held out
    int loops = 1;                         ///< how often the recording is played
    // Shares of the traffic lines, 0 to 1, as the player of recordings knows them.
    double loss = 0;
    double repeat = 0;
    double late = 0;
    double outOfOrder = 0;
};

struct ReplayResult {
    ReplayCounts counts;
    double seconds = 0; ///< replayed
    std::string end;    ///< why it ended
};

/// Where "rig replay" leaves report, trace and log when nobody says where to: "replay-output/NAME", the recording being
/// NAME.csv.gz or NAME.csv; of any other name all of it.
std::filesystem::path defaultReplayFolder(const std::filesystem::path& recording);

/// Tells on `out` what has been replayed, then what the report tells, and at last where all of it lies. Throws
/// std::runtime_error, with a text for the user, when it cannot begin, its files cannot be written or there is no line
/// to hold out, and what ends a run as an error.
ReplayResult runReplay(const ReplayOptions& wanted, std::ostream& out);

} // namespace rig
