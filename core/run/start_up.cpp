// core/run/start_up.cpp
#include "core/run/start_up.h"

#include <algorithm>
#include <array>
#include <filesystem>
#include <stdexcept>
#include <thread>

#include <fmt/format.h>

#include "core/exit_reason.h"
#include "core/folders.h"
#include "core/log.h"
#include "core/parameter_file.h"
#include "core/parameters.h"
#include "core/program_info.h"
#include "core/run/closing_down.h"
#include "core/run/run_loop.h"
#include "core/run/run_time.h"
#include "core/run/simulator_detection.h"
#include "core/run/start_run.h"
#include "core/run_flags.h"
#include "core/user_error.h"
#include "distribution/check_versions.h"
#include "distribution/clear_file.h"
#include "liveries/livery_driver.h"
#include "liveries/livery_file.h"
#include "liveries/livery_scan.h"
#include "liveries/reference_data.h"
#include "parking/airport_directory.h"
#include "platform/files.h"
#include "platform/text_encoding.h"
#include "platform/window_system.h"
#include "sim/flight_plan.h"
#include "window/window_state.h"

namespace fs = std::filesystem;

namespace {

constexpr int wrongFolderError = 1;
constexpr int hardwareThreadsIfUnknown = 2;

/// In the order in which they are made: a folder stands before those inside it.
constexpr std::array workingFolders{
    "output",
    "output/info",
    "output/errors",
    "airports",
    "airports/learned",
    "airports/learned/stock",
    "airports/learned/simaddon",
    "airports/learned/thirdparty",
    "airports/my_ORBX",
    "airports/my_thirdparty",
    "input/my_regcodes",
};

constexpr std::array outOfDateFiles{
    "input/AIG-regcodes0.xml",
    "input/AIG-regcodes00.xml",
};

bool dataFilesRead = false;

void requireProgramFolder() {
    if (!fs::is_directory(fileStatus("docs"))) {
        throw kvd::UserErrorException(wrongFolderError,
                                      fmt::format("{} must be run from the {} folder!", programName, programName));
    }
}

void makeWorkingFolders() {
    for (const char* folder : workingFolders) {
        createFolders(folder);
    }
    for (const char* file : outOfDateFiles) {
        removeFileOrLog(file); // what stays costs nobody the run
    }
}

/// A production start has done its work when the files are read: the run ends as if the user had closed it.
void endProductionStart() {
    gExitCode = 0;
    gf_userCloses();
}

void detectRealTraffic() {
    gRealTrafficHere = fileExists(platform::roamingAppDataFolder() / "InsideSystems" / "RealTraffic.jar");
    log(fmt::format("RealTraffic {}detected at this PC", gRealTrafficHere ? "" : "not "));
    gf_flushLog();
}

void testStockAirports() {
    const fs::path folder = platform::pathFromUtf8(SIM_INSTALL_PATH.value()) / "Scenery";
    std::error_code ignored;
    if (!fs::is_directory(folder, ignored)) {
        showMessage(fmt::format("Stock airports path does not exist: {}", platform::backslashText(folder)),
                    LogCopy::yes);
    }
}

void setHardwareThreads() {
    const unsigned count = std::thread::hardware_concurrency();
    gHardwareThreads = count == 0 ? hardwareThreadsIfUnknown : static_cast<int>(count);
}

/// A restarted run has what the first one fetched.
bool isUpToDate() {
    return gRestartWanted || gf_checkVersions();
}

/// Once per process: half a million registrations do not change from run to run.
void readDataFilesOnce() {
    if (!dataFilesRead && !gf_readDataFiles()) {
        throw std::runtime_error("reading data files failed!");
    }
    dataFilesRead = true;
}

void readAirports() {
    if (!gf_readAirports()) {
        throw std::runtime_error("reading airports failed!");
    }
}

/// What the program has to know of the world and of this machine before it can meet them.
void prepare() {
    gf_setWeekSlot();
    readDataFilesOnce();
    readAirports();
    gf_findSimulator();
    if (gProductionMode) {
        endProductionStart();
    } else {
        detectRealTraffic();
    }
}

/// The new settings that cut a scan are those of the simulator's path: the run that follows begins the scan anew.
void askForTheCutScanAgain() {
    if (!fs::exists(scannedLiveriesFile)) {
        SCAN_LIVERIES.value = true;
        saveParameter(SCAN_LIVERIES);
        showParameter(SCAN_LIVERIES);
    }
}

/// From the user's folders, or from what an earlier scan found in them. Who cuts the scan has no use for the complaint
/// that there is no result.
void prepareLiveries() {
    const bool scans = SCAN_LIVERIES.value;
    if (scans) {
        gf_scanLiveries();
    }
    if (gf_exitReason() == ExitReason::newSettings) {
        if (scans) {
            askForTheCutScanAgain();
        }
    } else if (!gCloseButtonUsed) {
        gf_processScannedLiveries();
    }
}

int filesIn(const char* folder) {
    const fs::directory_iterator entries(folder);
    return static_cast<int>(
        std::count_if(begin(entries), end(entries), [](const auto& entry) { return entry.is_regular_file(); }));
}

/// Everything up to the run loop's end. Throws what ends the run.
void runOnce() {
    requireProgramFolder();
    gf_readParameters();
    repaintWindow();
    gf_flushLog();
    makeWorkingFolders();
    gf_removeLeftOverClearFiles();
    if (!isUpToDate()) {
        return; // with nothing read, the liveries that were scanned would be lost
    }
    prepare();
    testStockAirports();
    setHardwareThreads();
    prepareLiveries();
    if (gf_isStopping()) {
        return;
    }
    showAddOnAirports(filesIn("airports/my_ORBX"), filesIn("airports/my_thirdparty"));
    gf_createFlightPlanFolder();
    window_system::setTopMost(ALWAYS_ON_TOP.value);
    if (lf_startRun()) {
        gf_runLoop();
    } else {
        gf_userCloses();
    }
}

void endWithSystemError(std::string_view text) {
    showError(platform::readableText(text));
    gf_stopRun(ExitReason::systemError, 0);
}

} // namespace

void gf_resetStartUp() {
    dataFilesRead = false;
}

void gf_endRunOn(const std::exception_ptr& failure) {
    try {
        std::rethrow_exception(failure);
    } catch (const kvd::UserErrorException& exception) {
        showError(platform::readableText(exception.what()));
        gf_setSystemError();
    } catch (const fmt::format_error& exception) {
        endWithSystemError(fmt::format("std::format error: {}", exception.what()));
    } catch (const std::exception& exception) {
        endWithSystemError(exception.what());
    } catch (...) {
        showError("Unknown exception");
        gf_setSystemError();
    }
}

void lf_startUpTRNW() {
    try {
        runOnce();
    } catch (...) {
        gf_endRunOn(std::current_exception());
    }
    gf_flushLog();
    lf_closingDown();
}
