// A folder of the user's on its way to liveries: its files are found, read by the tasks and collected. Start-up, run
// thread.
#pragma once

#include <cstdint>
#include <filesystem>
#include <memory>
#include <vector>

#include "liveries/scan_progress.h"
#include "liveries/scan_state.h"
#include "liveries/scan_tasks.h"
#include "platform/clock.h"

/// What the folders of one scan have in common.
struct ScanRun {
    const std::shared_ptr<ScanState>& state; ///< shared with tasks that may outlive the scan
    ScanProgress& progress;
    ScanTasks& tasks;
};

/// What one task does: the files of the folders read, and the folders inside them found. What fails costs its folder,
/// with a line in the log. Folders that are left at the end, or when the scan stops, are given back. Any thread.
FolderFinds lf_searchFolders(std::uint32_t scanNumber, const std::vector<FolderToScan>& folders, ScanState& state,
                             platform::SteadyTime end);

/// Appends what the files of the folder hold to Liveries. A failure ends the folder with a line in the log, and so does
/// a stop, without one; what its tasks have not given by then is lost. No exceptions.
void lf_walkFolder(std::uint32_t scanNumber, const std::filesystem::path& folder, const ScanRun& run);
