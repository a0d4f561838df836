// liveries/livery_scan.h
// Walks the user's folders for liveries and leaves them in LiveriesScanned.xml, with reports on what it refused.
// Start-up, run thread.
#pragma once

#include <cstdint>
#include <filesystem>
#include <list>
#include <vector>

#include "liveries/livery.h"
#include "liveries/scan_reports.h"

/// Scans, and takes SCAN_LIVERIES back, but after a stopped scan only if the old LiveriesScanned.xml is gone. Throws
/// kvd::UserErrorException: 243 when a configured folder does not exist, 48 when none is configured, 53 when there are
/// no liveries; std::runtime_error when LiveriesScanned.xml cannot be written.
void gf_scanLiveries();

/// Whether there was a scan since the last call; what was built of the liveries is then out of date.
bool takeNewScan();

/// The configured folders, in the order of the parameters.
void lf_collectLfolders(std::vector<std::filesystem::path>& folders);

/// True when liveries were found, or the scan was stopped, which leaves no LiveriesScanned.xml unless an old one cannot
/// be removed. Where none were found no report is written: the log has its lines.
bool lf_scanFolders(const std::vector<std::filesystem::path>& folders);

/// Corrects the liveries by what is known of their registrations.
void lf_updateFromDbase(std::list<Livery>& liveries, ScanReports& reports);
/// Takes out the liveries of an airline and type that an earlier folder has already.
void prioritize(std::list<Livery>& liveries);
/// By airline, type and title; of equal records one stays.
void sortLiveries(std::list<Livery>& liveries);
