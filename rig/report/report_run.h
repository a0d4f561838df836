// rig/report/report_run.h
// "rig report": figures, page and pictures of a trace. Runs on the calling thread.
#pragma once

#include <filesystem>
#include <iosfwd>
#include <optional>
#include <vector>

#include "rig/world/aircraft_titles.h"

namespace rig {

struct ReportOptions {
    std::filesystem::path trace;
    std::filesystem::path output; ///< folder
    // Each may be missing.
    std::filesystem::path recording;
    std::filesystem::path truth;
    std::filesystem::path heldOut; ///< recording of samples that were kept from the program
    std::filesystem::path log;
    std::filesystem::path scene;               ///< tells the ground
    std::vector<std::filesystem::path> titles; ///< folders with aircraft.cfg files
    AircraftTitles installed;                  ///< known without a file
    std::filesystem::path types;               ///< reference data in clear: categories by type
    std::optional<double> feedStart;           ///< of the first row, as surveyTrace() takes it
    double radiusNm = 40;
    bool takesGroundTraffic = true; ///< the program had an airport in use, round which it takes what is on the ground
};

/// Writes figures.json, report.html and the pictures, and prints where they are and the main figures. Throws
/// std::runtime_error, with a text for the user, for a file that cannot be read, is damaged, or cannot be written.
void runReport(const ReportOptions& options, std::ostream& out);

} // namespace rig
