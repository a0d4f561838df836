// core/run/process_entry.cpp
#include "core/run/process_entry.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdlib>

#include <fmt/format.h>

#include "core/detached_threads.h"
#include "core/exit_reason.h"
#include "core/log.h"
#include "core/parameter_file.h"
#include "core/program_info.h"
#include "core/run/start_up.h"
#include "core/run_flags.h"
#include "platform/files.h"
#include "platform/single_instance.h"
#include "platform/window_system.h"
#include "sim/session.h"
#include "window/controls.h"
#include "window/main_window.h"
#include "window/status_display.h"
#include "window/window_layout.h"
#include "window/window_state.h"

namespace {

constexpr const char* instanceName = "Local\\$TRNW_P3D$";
constexpr int titleResource = 101;
constexpr int alreadyRunsCode = -1;
/// The readers look at their stop flag once a second, so all threads are out well before this.
constexpr std::chrono::milliseconds threadsLeaveWithin{2000};

std::string lowerCase(std::string text) {
    std::transform(text.begin(), text.end(), text.begin(),
                   [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; });
    return text;
}

void onCloseRequested() {
    log(fmt::format("Close window button clicked, closing {} ...", programName));
    gCloseButtonUsed = true;
    gf_userCloses();
}

void onExitMessage() {
    storeWindowPosition();
    log(timeLine(platform::wallNow()));
    window_system::postQuit(gExitCode);
}

void onPosted(unsigned message) {
    switch (message) {
    case WM_TRNW_START: gf_startDetached("Run", lf_startUpTRNW); break;
    case WM_TRNW_EXIT: onExitMessage(); break;
    case WM_TRNW_REPAINT_MESSAGE: repaintMessageLine(); break;
    default: break;
    }
}

/// False, with the reason in the log, when the folder of parameters.xml is missing and cannot be made.
bool makeParameterFolder() {
    const std::filesystem::path folder = gf_parameterFolder();
    std::error_code error;
    std::filesystem::create_directories(folder, error);
    if (error || platform::roamingAppDataFolder().empty()) {
        log(fmt::format("Failed to create directory: {}", platform::utf8FromPath(folder)));
        return false;
    }
    return true;
}

/// However the message loop ends, a thread that does not come out must not find the program's globals destroyed.
class ThreadsOutAtTheEnd {
public:
    ThreadsOutAtTheEnd() = default;
    ~ThreadsOutAtTheEnd() {
        gf_userCloses();
        if (!gf_waitForDetachedThreads(threadsLeaveWithin)) {
            logError("A thread did not end in time");
            gf_closeLog();
            std::_Exit(exitCode);
        }
        // No run thread is left that could start it anew.
        stopSimClient();
        joinSimClient();
    }
    ThreadsOutAtTheEnd(const ThreadsOutAtTheEnd&) = delete;
    ThreadsOutAtTheEnd& operator=(const ThreadsOutAtTheEnd&) = delete;

    int exitCode = 1;
};

int runUntilQuit() {
    ThreadsOutAtTheEnd threads;
    threads.exitCode = window_system::runMessageLoop();
    return threads.exitCode;
}

/// The window stands and the first run is asked for, or the log tells why not.
bool bringUp(const std::vector<std::string>& arguments) {
    const bool production = gf_asksForProduction(arguments);
    const std::string title = window_system::resourceString(titleResource);
    if (title.empty()) {
        log("Failed to load application title");
        return false;
    }
    const window_system::WindowHandlers handlers{createControls, paintWindow, onCloseRequested, onPosted, enterPressed};
    if (!window_system::registerWindowClass(title, handlers, lightBlue)) {
        log("Failed to register window class");
        return false;
    }
    if (!makeParameterFolder()) {
        return false;
    }
    if (!initInstance(title)) {
        logError("initInstance failed");
        return false;
    }
    gProductionMode = production;
    if (!window_system::postMessage(WM_TRNW_START)) {
        logError("The window takes no message");
        return false;
    }
    return true;
}

} // namespace

bool gf_asksForProduction(const std::vector<std::string>& arguments) {
    bool production = false;
    for (std::size_t i = 1; i < arguments.size(); ++i) {
        const std::string word = lowerCase(arguments[i]);
        if (word == "--production" || word == "/production") {
            production = true;
        } else if (word == "--no-production" || word == "/no-production") {
            production = false;
        }
    }
    return production;
}

int gf_processEntry(const std::vector<std::string>& arguments) {
    const platform::SingleInstance instance(instanceName);
    if (instance.alreadyRuns()) {
        return alreadyRunsCode;
    }
    gf_openLog();
    int code = 0;
    if (bringUp(arguments)) {
        code = runUntilQuit();
    }
    gf_closeLog();
    return code;
}
