// liveries/livery_scan.cpp
#include "liveries/livery_scan.h"

#include <algorithm>
#include <exception>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <tuple>
#include <utility>

#include <fmt/format.h>

#include "core/folders.h"
#include "core/log.h"
#include "core/parameter_file.h"
#include "core/parameters.h"
#include "core/program_info.h"
#include "core/run_flags.h"
#include "core/user_error.h"
#include "liveries/livery_file.h"
#include "liveries/livery_walk.h"
#include "liveries/reference_tables.h"
#include "liveries/registration_codes.h"
#include "liveries/scan_progress.h"
#include "liveries/scan_state.h"
#include "liveries/scan_tasks.h"
#include "platform/files.h"
#include "platform/text_encoding.h"
#include "window/window_state.h"

namespace fs = std::filesystem;

namespace {

constexpr int noFolderSetError = 48;
constexpr int noLiveriesError = 53;
constexpr int folderMissingError = 243;
constexpr std::size_t folderCount = std::tuple_size_v<decltype(lfolder)>;
constexpr std::uint32_t highestScan = folderCount;

bool isNewScan = false;

/// One scan of all folders.
class Scan {
public:
    Scan()
        : state_(std::make_shared<ScanState>()), progress_(*state_),
          tasks_(std::max(1, gHardwareThreads.load()), [this] { return progress_.goesOn(); }) {
        state_->dontUseTitles.insert(DontUseTitles.begin(), DontUseTitles.end());
    }

    /// Whether the folder is one; else a line in the log says why not. False also when the scan is stopped.
    bool canScan(const fs::path& folder);
    void walk(std::uint32_t scanNumber, const fs::path& folder) {
        lf_walkFolder(scanNumber, folder, {state_, progress_, tasks_});
    }
    ScanReports& reports() { return state_->reports; }

private:
    std::shared_ptr<ScanState> state_;
    ScanProgress progress_;
    ScanTasks tasks_;
};

enum class RootKind { folder, missing, noFolder };

RootKind rootKind(const fs::path& folder) {
    std::error_code ignored;
    if (!fs::exists(folder, ignored)) {
        return RootKind::missing;
    }
    return fs::is_directory(folder, ignored) ? RootKind::folder : RootKind::noFolder;
}

bool Scan::canScan(const fs::path& folder) {
    const std::string text = platform::backslashText(folder);
    progress_.enter(text);
    std::optional<RootKind> kind;
    try {
        kind = tasks_.answerOf([folder] { return rootKind(folder); });
    } catch (const std::exception& error) {
        log(fmt::format("liveries search in {} aborted, cause: {}", text, platform::readableText(error.what())));
    }
    if (kind == RootKind::missing) {
        log(fmt::format("{} does not exist, skipped!", text));
    } else if (kind == RootKind::noFolder) {
        log(fmt::format("{} is not a folder name, skipped!", text));
    }
    return kind == RootKind::folder;
}

void logFound(std::size_t count, const fs::path& folder) {
    const std::string place = fmt::format("found in {}", platform::backslashText(folder));
    log(count == 0 ? fmt::format("No liveries {}", place)
                   : fmt::format("{} liverie{} {}", count, count == 1 ? "" : "s", place));
}

/// False when the scan was stopped.
bool scanEach(Scan& scan, const std::vector<fs::path>& folders) {
    std::uint32_t scanNumber = 0;
    for (const fs::path& folder : folders) {
        if (folder.empty()) {
            continue;
        }
        const bool isThere = scan.canScan(folder);
        if (gf_isScanStopping()) {
            return false;
        }
        if (!isThere) {
            continue;
        }
        scanNumber = std::min(scanNumber + 1, highestScan);
        const std::size_t before = Liveries.size();
        scan.walk(scanNumber, folder);
        if (gf_isScanStopping()) {
            return false;
        }
        logFound(Liveries.size() - before, folder);
    }
    if (folders.size() > 1 && !Liveries.empty()) {
        log(fmt::format("{} in total", Liveries.size()));
    }
    return true;
}

/// The registration's airline: the one that flies it, or else the one that owns it; empty if neither is known.
std::string_view airlineOf(const DbaseRecord& record) {
    return record.opr.empty() ? record.airl : record.opr;
}

void correctText(std::string& text, std::string_view known, std::string_view what, const Livery& livery,
                 ScanReports& reports) {
    if (!known.empty() && text != known) {
        reports.add(ScanReport::corrections,
                    fmt::format("{:80} {} {} {} => {}", livery.title, livery.atcid, what, text, known));
        text = known;
    }
}

/// The list is empty again however the work ends.
class LiveriesEmptied {
public:
    LiveriesEmptied() { Liveries.clear(); }
    ~LiveriesEmptied() { Liveries.clear(); }
    LiveriesEmptied(const LiveriesEmptied&) = delete;
    LiveriesEmptied& operator=(const LiveriesEmptied&) = delete;
};

/// A drive that does not answer is as good as none, but for one that nobody waits for any more.
bool isMissing(const fs::path& folder) {
    ScanTasks looks(1, [] { return !gf_isScanStopping(); });
    try {
        const auto isThere = looks.answerOf([folder] {
            std::error_code ignored;
            return fs::exists(folder, ignored);
        });
        return isThere == false;
    } catch (const std::exception&) {
        return true;
    }
}

} // namespace

bool takeNewScan() {
    return std::exchange(isNewScan, false);
}

void lf_collectLfolders(std::vector<fs::path>& folders) {
    folders.reserve(folderCount);
    for (const StringParameter& parameter : lfolder) {
        const std::string value = parameter.value();
        if (value.empty()) {
            continue;
        }
        const fs::path folder = platform::pathFromUtf8(value);
        if (isMissing(folder)) {
            logError(fmt::format("{}: '{}' does not exist", parameter.key, value));
            throw kvd::UserErrorException(
                folderMissingError,
                fmt::format("the path pointed to by parameter '{}' does not exist, see Log.txt!", parameter.key));
        }
        folders.push_back(folder);
    }
}

void lf_updateFromDbase(std::list<Livery>& liveries, ScanReports& reports) {
    for (Livery& livery : liveries) {
        const auto record = gf_findRegcodeRecord(livery.atcid);
        if (!record) {
            continue;
        }
        if (livery.cargo != record->cargo) {
            reports.add(ScanReport::corrections, fmt::format("{:80} {} cargo {} => {}", livery.title, livery.atcid,
                                                             livery.cargo, record->cargo));
            livery.cargo = record->cargo;
        }
        correctText(livery.airl, airlineOf(*record), "airl", livery, reports);
        correctText(livery.type, record->type, "model", livery, reports);
    }
}

void prioritize(std::list<Livery>& liveries) {
    std::map<std::pair<std::string, std::string>, std::uint32_t> lowestScans; // so far, by airline and type
    liveries.remove_if([&lowestScans](const Livery& livery) {
        const auto [lowest, isFirst] = lowestScans.try_emplace({livery.airl, livery.type}, livery.scan);
        const bool isLower = lowest->second < livery.scan;
        lowest->second = std::min(lowest->second, livery.scan);
        return isLower;
    });
}

void sortLiveries(std::list<Livery>& liveries) {
    liveries.sort([](const Livery& a, const Livery& b) {
        return std::tie(a.airl, a.type, a.title) < std::tie(b.airl, b.type, b.title);
    });
    const auto identity = [](const Livery& livery) {
        return std::tie(livery.title, livery.airl, livery.type, livery.atcid, livery.cargo);
    };
    liveries.unique([&identity](const Livery& a, const Livery& b) { return identity(a) == identity(b); });
}

namespace {

enum class ScanEnd { written, nothingFound, stopped };

/// A list that cannot be written is to be scanned for again, but why liveries were refused is known by now.
void writeLiveriesOrLogReports(const ScanReports& reports) {
    try {
        lf_writeLiveries();
    } catch (const std::exception&) {
        logScanReports(reports);
        throw;
    }
}

ScanEnd scanFolders(const std::vector<fs::path>& folders) {
    const LiveriesEmptied emptied;
    removeOldReports();
    gf_loadDontUseTitles();
    Scan scan;
    if (!scanEach(scan, folders)) {
        return ScanEnd::stopped;
    }
    if (Liveries.empty()) {
        logScanReports(scan.reports());
        return ScanEnd::nothingFound;
    }
    lf_updateFromDbase(Liveries, scan.reports());
    if (LIG_PRIORITIZE.value) {
        prioritize(Liveries);
    }
    sortLiveries(Liveries);
    writeLiveriesOrLogReports(scan.reports());
    Liveries.clear();
    lf_writeScanReports(scan.reports());
    repaintWindow();
    return ScanEnd::written;
}

/// A stopped scan is done with, unless it could not remove the old result, which the next start would take for its own.
bool isDone(ScanEnd end) {
    std::error_code ignored;
    return end != ScanEnd::stopped || !fs::exists(scannedLiveriesFile, ignored);
}

void switchScanOff() {
    SCAN_LIVERIES.value = false;
    saveParameter(SCAN_LIVERIES);
    showParameter(SCAN_LIVERIES);
    repaintWindow();
}

} // namespace

bool lf_scanFolders(const std::vector<fs::path>& folders) {
    return scanFolders(folders) != ScanEnd::nothingFound;
}

void gf_scanLiveries() {
    isNewScan = true;
    showMessage(scanningText(), LogCopy::no);
    log("\n++++++++++++++++++++++++ liveries scan manual starts ++++++++++++++++++++++++++++++++");
    std::vector<fs::path> folders;
    lf_collectLfolders(folders);
    if (folders.empty()) {
        throw kvd::UserErrorException(
            noFolderSetError,
            fmt::format("Exit {} first!   Then set one or more lfolder parameters to your liveries, see Manual 5.3",
                        programName));
    }
    const ScanEnd end = scanFolders(folders);
    if (end == ScanEnd::nothingFound) {
        throw kvd::UserErrorException(noLiveriesError, "no liveries found");
    }
    if (isDone(end)) {
        switchScanOff();
    }
    if (shownMessage().starts_with(scanningText())) {
        clearMessage(); // else the window says that it scans until the next long step
    }
    log("\n++++++++++++++++++++++++ liveries scan ends ++++++++++++++++++++++++++++++++\n");
}
