// liveries/scan_reports.h
// What a scan refused, fixed and corrected: lists that the tasks fill at the same time, and the files that come of
// them.
#pragma once

#include <array>
#include <cstddef>
#include <mutex>
#include <string>
#include <vector>

enum class ScanReport : std::size_t {
    invalidAirlineCodes,
    invalidModelCodes,
    codeFixes,
    invalidFiles,
    incompleteSections,
    filesWithoutSections,
    corrections,
};
inline constexpr std::size_t scanReportCount = 7;

/// The lists of one scan. Adding is for any thread; reading is for when no task runs any more.
class ScanReports {
public:
    void add(ScanReport report, std::string line);
    /// A copy of the lines, in the order in which they were added.
    std::vector<std::string> lines(ScanReport report) const;

private:
    struct List {
        mutable std::mutex lock;
        std::vector<std::string> lines;
    };
    std::array<List, scanReportCount> lists_;
};

/// Removes LiveriesScanned.xml and what the last scan reported, but for the corrections, and then the folder of the
/// errors if nothing is left in it. A file that stays is an error line in the log.
void removeOldReports();

/// One file per list that is not empty, and the log's summary. A file that cannot be written is a line in the log.
void lf_writeScanReports(const ScanReports& reports);

/// The same lines and counts in the log and in no file: for a scan that leaves none.
void logScanReports(const ScanReports& reports);
