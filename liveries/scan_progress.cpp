// liveries/scan_progress.cpp
#include "liveries/scan_progress.h"

#include <chrono>

#include <fmt/format.h>

#include "core/exit_reason.h"
#include "core/parameters.h"
#include "core/run_flags.h"
#include "window/window_state.h"

namespace {

constexpr std::chrono::milliseconds interval{500};

} // namespace

bool gf_isScanStopping() {
    return gProductionMode ? gCloseButtonUsed.load() : gf_isStopping();
}

std::string scanningText() {
    return fmt::format("Scanning {}for liveries ...", LIG_PRIORITIZE.value ? "prioritized " : "");
}

bool ScanProgress::goesOn() {
    if (gf_isScanStopping()) {
        return false;
    }
    if (const platform::SteadyTime now = platform::steadyNow(); now - shownAt_ >= interval) {
        shownAt_ = now;
        showMessage(fmt::format("{} {}: {} files read, {} liveries found", scanningText(), folder_,
                                state_.filesRead.load(), state_.liveriesFound.load()),
                    LogCopy::no);
    }
    return true;
}
