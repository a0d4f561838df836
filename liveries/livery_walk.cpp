#include "liveries/livery_walk.h"

#include <exception>
#include <string>
#include <string_view>
#include <utility>

#include <fmt/format.h>

#include "core/log.h"
#include "liveries/aircraft_cfg.h"
#include "liveries/folder_walk.h"
#include "liveries/livery.h"
#include "platform/files.h"
#include "platform/text_encoding.h"

namespace {

std::string logText(const std::exception& error) {
    return platform::readableText(error.what());
}

/// False when the scan was stopped. Throws as ScanTasks does.
bool startTask(std::uint32_t scanNumber, ScannedFile file, const ScanRun& run) {
    const auto search = isIvaoPath(file.text) ? lf_searchLiveriesinIVAOFile : lf_searchLiveriesinFile;
    return run.tasks.start(
        [state = run.state, scanNumber, file = std::move(file), search] { return search(scanNumber, file, *state); },
        Liveries);
}

/// False when the scan was stopped or a task failed.
bool startTaskOrLog(std::uint32_t scanNumber, ScannedFile file, const ScanRun& run) {
    try {
        return startTask(scanNumber, std::move(file), run);
    } catch (const std::exception& error) {
        log(fmt::format("liveries inner search aborted: {}", logText(error)));
        return false;
    }
}

/// False when the walk did not come to its end.
bool startTasks(std::uint32_t scanNumber, const std::filesystem::path& folder, const ScanRun& run) {
    const auto enter = [&run](std::string_view path) {
        run.progress.enter(path);
        return run.progress.goesOn();
    };
    const auto visit = [&](ScannedFile file) { return startTaskOrLog(scanNumber, std::move(file), run); };
    try {
        return walkFolder(folder, enter, visit);
    } catch (const std::exception& error) {
        log(fmt::format("liveries search in {} aborted, cause: {}", platform::backslashText(folder), logText(error)));
        return false;
    }
}

} // namespace

void lf_walkFolder(std::uint32_t scanNumber, const std::filesystem::path& folder, const ScanRun& run) {
    try {
        if (startTasks(scanNumber, folder, run)) {
            run.tasks.collectAll(Liveries);
        }
    } catch (const std::exception& error) {
        log(fmt::format("liveries search aborted, futs outer, {}", logText(error)));
    }
    run.tasks.abandon(Liveries);
}
