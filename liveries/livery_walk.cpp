#include "liveries/livery_walk.h"

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <deque>
#include <exception>
#include <iterator>
#include <list>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include <fmt/format.h>

#include "core/log.h"
#include "liveries/aircraft_cfg.h"
#include "liveries/folder_walk.h"
#include "liveries/livery.h"
#include "platform/clock.h"
#include "platform/files.h"
#include "platform/text_encoding.h"

namespace {

std::string logText(const std::exception& error) {
    return platform::readableText(error.what());
}

/// Folders searched by one task: handing a task out takes longer than looking into a folder that holds no aircraft.
constexpr std::size_t foldersPerTask = 32;

/// How long a task searches before it gives back the folders that are left.
constexpr std::chrono::milliseconds longestTask{100};

std::list<Livery> searchFile(std::uint32_t scanNumber, const ScannedFile& file, ScanState& state) {
    return isIvaoPath(file.text) ? lf_searchLiveriesinIVAOFile(scanNumber, file, state)
                                 : lf_searchLiveriesinFile(scanNumber, file, state);
}

void searchFolder(std::uint32_t scanNumber, const FolderToScan& folder, ScanState& state, FolderFinds& finds) {
    FolderContents contents = contentsOf(folder);
    for (const ScannedFile& file : contents.cfgFiles) {
        finds.liveries.splice(finds.liveries.end(), searchFile(scanNumber, file, state));
    }
    std::move(contents.folders.begin(), contents.folders.end(), std::back_inserter(finds.folders));
}

void searchFolderOrLog(std::uint32_t scanNumber, const FolderToScan& folder, ScanState& state, FolderFinds& finds) {
    try {
        searchFolder(scanNumber, folder, state, finds);
    } catch (const std::exception& error) {
        log(fmt::format("liveries inner search aborted: {}", logText(error)));
    }
}

} // namespace

FolderFinds lf_searchFolders(std::uint32_t scanNumber, const std::vector<FolderToScan>& folders, ScanState& state,
                             platform::SteadyTime end) {
    FolderFinds finds;
    for (const FolderToScan& folder : folders) {
        if (gf_isScanStopping() || platform::steadyNow() >= end) {
            finds.folders.push_back(folder);
        } else {
            searchFolderOrLog(scanNumber, folder, state, finds);
        }
    }
    return finds;
}

namespace {

/// The way through one of the user's folders. Folders that wait are taken from the end of a list, so that it stays
/// short: the insides of one folder come before the next one.
class FolderWalk {
public:
    FolderWalk(std::uint32_t scanNumber, FolderToScan root, const ScanRun& run)
        : scanNumber_(scanNumber), run_(run), open_{std::move(root)} {}

    /// Until all is searched or the scan is stopped.
    void run() {
        bool goesOn = true;
        while (goesOn && (!open_.empty() || !run_.tasks.isIdle())) {
            goesOn = open_.empty() || run_.tasks.isFull() ? takeOldest() : startNext();
        }
    }

    /// Whether there is nothing left to hand out.
    bool isHandedOut() const { return open_.empty(); }

    /// The first one of the oldest task whose finds have not been taken.
    std::string oldestFolder() const { return begun_.empty() ? std::string() : begun_.front(); }

private:
    void take(FolderFinds finds) {
        Liveries.splice(Liveries.end(), finds.liveries);
        std::move(finds.folders.rbegin(), finds.folders.rend(), std::back_inserter(open_));
    }

    bool takeOldest() {
        std::optional<FolderFinds> finds = run_.tasks.takeOldest();
        if (finds) {
            take(std::move(*finds));
            if (!begun_.empty()) {
                begun_.pop_front();
            }
        }
        return finds.has_value();
    }

    bool startNext() {
        std::vector<FolderToScan> folders = takeOpen();
        run_.progress.enter(folders.front().text);
        begun_.push_back(folders.front().text);
        return run_.tasks.start([state = run_.state, scanNumber = scanNumber_, folders = std::move(folders)] {
            return lf_searchFolders(scanNumber, folders, *state, platform::steadyNow() + longestTask);
        });
    }

    /// A few, but no more than leave something for each thread.
    std::vector<FolderToScan> takeOpen() {
        const std::size_t count = std::clamp<std::size_t>(open_.size() / run_.tasks.threads(), 1, foldersPerTask);
        std::vector<FolderToScan> folders(count);
        for (FolderToScan& folder : folders) {
            folder = std::move(open_.back());
            open_.pop_back();
        }
        return folders;
    }

    std::uint32_t scanNumber_;
    const ScanRun& run_;
    std::vector<FolderToScan> open_; ///< still to be handed out
    std::deque<std::string> begun_;  ///< the first folder of each task that waits to be taken
};

void runOrLog(FolderWalk walk) {
    try {
        walk.run();
    } catch (const std::exception& error) {
        log(walk.isHandedOut() ? fmt::format("liveries search aborted, futs outer, {}", logText(error))
                               : fmt::format("liveries inner search aborted: {}", logText(error)));
        log(fmt::format("  left out is what was not finished from {} on", walk.oldestFolder()));
    }
}

void searchAll(std::uint32_t scanNumber, const std::filesystem::path& folder, const ScanRun& run) {
    try {
        if (const auto root = run.tasks.answerOf([folder] { return rootToScan(folder); })) {
            runOrLog(FolderWalk(scanNumber, *root, run));
        }
    } catch (const std::exception& error) {
        log(fmt::format("liveries search in {} aborted, cause: {}", platform::backslashText(folder), logText(error)));
    }
}

} // namespace

void lf_walkFolder(std::uint32_t scanNumber, const std::filesystem::path& folder, const ScanRun& run) {
    searchAll(scanNumber, folder, run);
    Liveries.splice(Liveries.end(), run.tasks.abandon());
}
