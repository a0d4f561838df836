// liveries/scan_state.h
// What the tasks of one scan share. A task that is given up may outlive its scan; it then holds the state alone.
#pragma once

#include <atomic>
#include <cstddef>
#include <functional>
#include <memory_resource>
#include <mutex>
#include <string>
#include <string_view>
#include <unordered_set>

#include "core/text_hash.h"
#include "liveries/scan_reports.h"

using ScanTexts = std::unordered_set<std::string, TextHash, std::equal_to<>>;

/// The titles that stand in the scan so far. Any thread.
class ScannedTitles {
public:
    ScannedTitles() { titles_.reserve(usualTitles); }

    /// False when the title was there already.
    bool insert(std::string_view title) {
        const std::lock_guard lock(lock_);
        return titles_.emplace(title).second;
    }

private:
    static constexpr std::size_t usualTitles = 60'000; // of a big collection; to grow step by step takes twice as long

    std::mutex lock_;
    std::pmr::monotonic_buffer_resource memory_; // under lock_; the titles come by ten thousands and go together
    std::pmr::unordered_set<std::pmr::string, TextHash, std::equal_to<>> titles_{&memory_};
};

struct ScanState {
    ScanTexts dontUseTitles; ///< filled before the first task starts
    ScanReports reports;
    ScannedTitles titles;
    std::atomic<int> filesRead = 0;
    std::atomic<int> liveriesFound = 0;
};

/// Whether the scan is to end: the run is stopping, or, in production mode, where a run is stopped from its start on,
/// the user has pressed the close button. Any thread.
bool gf_isScanStopping();
