// liveries/scan_progress.h
// Where a scan is, in the window's message line. Start-up, run thread.
#pragma once

#include <string>
#include <string_view>

#include "liveries/scan_state.h"
#include "platform/clock.h"

/// What the user reads at the start of a scan, and in front of where it is.
std::string scanningText();

class ScanProgress {
public:
    /// The state must outlive this object.
    explicit ScanProgress(const ScanState& state) : state_(state) {}

    void enter(std::string_view folder) { folder_ = folder; }

    /// To be called again and again; shows the folder and what was read and found so far, twice a second. False when
    /// the scan is to end.
    bool goesOn();

private:
    const ScanState& state_;
    std::string folder_;
    platform::SteadyTime shownAt_ = platform::steadyNow();
};
