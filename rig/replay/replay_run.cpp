// rig/replay/replay_run.cpp
#include "rig/replay/replay_run.h"

#include <chrono>
#include <fstream>
#include <iostream>
#include <memory>
#include <stdexcept>

#include <fmt/format.h>

#include "core/exit_reason.h"
#include "core/log.h"
#include "liveries/reference_data.h"
#include "liveries/reference_tables.h"
#include "platform/clock.h"
#include "platform/console.h"
#include "platform/files.h"
#include "rig/replay/replay_liveries.h"
#include "rig/report/report_run.h"
#include "rig/traffic/gzip_text.h"
#include "rig/traffic/hold_out.h"
#include "rig/traffic/recording.h"
#include "rig/world/scene_reader.h"

namespace fs = std::filesystem;

namespace rig {

namespace {

/// What the last aircraft need after the last line: they fly half a minute behind it and a minute beyond it. Those on
/// the ground may stay for good.
constexpr double mostSecondsAfterwards = 300;

class TraceFile {
public:
    explicit TraceFile(const fs::path& path) : path_(path) {
        if (path_.empty()) {
            return;
        }
        file_.open(path_, std::ios::binary);
        if (!file_) {
            fail();
        }
        writer_ = std::make_unique<TraceWriter>(file_);
    }

    TraceWriter* writer() const { return writer_.get(); }

    void finish() {
        if (writer_ != nullptr) {
            writer_.reset();
            file_.close();
            if (!file_) {
                fail();
            }
        }
    }

private:
    [[noreturn]] void fail() const {
        throw std::runtime_error(fmt::format("cannot write {}", platform::utf8FromPath(path_)));
    }

    fs::path path_;
    std::ofstream file_;
    std::unique_ptr<TraceWriter> writer_;
};

/// The program's log lies in the working directory, so that is where the replay goes for its time.
class RunLog {
public:
    explicit RunLog(const fs::path& folder) : former_(fs::current_path()), wanted_(!folder.empty()) {
        if (wanted_) {
            fs::create_directories(folder);
            fs::current_path(folder);
            gf_openLog();
        }
    }
    ~RunLog() {
        if (wanted_) {
            gf_closeLog();
            std::error_code ignored;
            fs::current_path(former_, ignored);
        }
    }
    RunLog(const RunLog&) = delete;
    RunLog& operator=(const RunLog&) = delete;

private:
    fs::path former_;
    bool wanted_;
};

class ReferenceData {
public:
    explicit ReferenceData(const fs::path& path) {
        std::string fault;
        if (!lf_readReferenceXml(path, [&fault](std::string_view text) { fault = text; })) {
            throw std::runtime_error(fmt::format("cannot read {}: {}", platform::utf8FromPath(path), fault));
        }
    }
    ~ReferenceData() { resetReferenceTables(); }
    ReferenceData(const ReferenceData&) = delete;
    ReferenceData& operator=(const ReferenceData&) = delete;
};

PlayerOptions playerOptions(const ReplayOptions& options) {
    PlayerOptions player;
    player.historic = true;
    player.offsetSeconds = options.beginSeconds;
    player.loops = options.loops;
    player.seed = options.seed;
    player.loss = options.loss;
    player.repeat = options.repeat;
    player.late = options.late;
    player.outOfOrder = options.outOfOrder;
    return player;
}

/// Empty while it goes on.
std::string endOf(const ReplayOptions& options, const Replay& replay, const Player& player, double overAt) {
    if (replay.runHasEnded()) {
        return gf_exitReasonText(gf_exitReason());
    }
    if (platform::stopRequested()) {
        return "stopped";
    }
    if (options.durationSeconds) {
        return replay.seconds() >= *options.durationSeconds ? "time is up" : "";
    }
    const bool allGone = replay.aircraft() == 0 || replay.seconds() >= overAt + mostSecondsAfterwards;
    return player.isOver() && allGone ? "the recording is over" : "";
}

ReplayResult play(const ReplayOptions& options, Scene scene, const Recording& recording, TraceWriter* trace) {
    Player player(recording, playerOptions(options), 0);
    Replay replay({std::move(scene), recording.begin() + options.beginSeconds, options.radiusNm, options.seed, trace});
    double overAt = 0;
    ReplayResult result;
    while ((result.end = endOf(options, replay, player, overAt)).empty()) {
        if (!player.isOver()) {
            for (const Datagram& datagram : player.advanceTo(replay.seconds())) {
                replay.receive(datagram);
            }
            overAt = replay.seconds();
        }
        replay.slot();
    }
    result.seconds = replay.seconds();
    result.counts = replay.counts();
    return result;
}

void tell(const ReplayResult& result, double realSeconds, std::ostream& out) {
    const ReplayCounts& counts = result.counts;
    out << fmt::format("{}: {:.0f} s replayed in {:.2f} s\n", result.end, result.seconds, realSeconds)
        << fmt::format(
               "lines {}, accepted {}, out of range {}, on the ground {}, unreadable {}, others {}; weather {}\n",
               counts.allLines(), counts.of(LineOutcome::accepted), counts.of(LineOutcome::outOfRange),
               counts.of(LineOutcome::groundNotWanted), counts.of(LineOutcome::doesNotParse),
               counts.allLines() - counts.of(LineOutcome::accepted) - counts.of(LineOutcome::outOfRange) -
                   counts.of(LineOutcome::groundNotWanted) - counts.of(LineOutcome::doesNotParse),
               counts.weather)
        << fmt::format("aircraft created {}, removed {}, most at a time {}, {:.1f} on average\n", counts.created,
                       counts.removed, counts.most, counts.mean)
        << std::flush;
}

/// What is held out of it is written down.
Recording givenPart(const ReplayOptions& options) {
    Recording recording = loadRecording(options.recording);
    if (options.heldOut.empty()) {
        return recording;
    }
    HoldOut parts = holdOut(recording, options.holdOut, options.seed);
    if (parts.heldOut.rows.empty()) {
        throw std::runtime_error("the share to hold out is too small: it leaves no line out");
    }
    writeText(options.heldOut, textOf(parts.heldOut));
    return std::move(parts.given);
}

/// The same, with a place for all that a report needs.
ReplayOptions withReportFiles(ReplayOptions options) {
    if (!options.report.empty()) {
        fs::create_directories(options.report);
        options.trace = options.trace.empty() ? options.report / "flight.trace" : options.trace;
        options.logFolder = options.logFolder.empty() ? options.report : options.logFolder;
    }
    return options;
}

/// The types are known. How the times go the trace itself tells.
void report(const ReplayOptions& options, std::ostream& out) {
    ReportOptions wanted;
    wanted.trace = options.trace;
    wanted.output = options.report;
    wanted.recording = options.recording;
    wanted.truth = options.truth;
    wanted.heldOut = options.heldOut;
    wanted.log = options.logFolder / "Log.txt";
    wanted.scene = options.scene;
    wanted.installed = replayTitles();
    wanted.radiusNm = options.radiusNm;
    wanted.takesGroundTraffic = false; // a replay has no airport in use
    runReport(wanted, out);
}

} // namespace

fs::path defaultReplayFolder(const fs::path& recording) {
    fs::path name = recording.filename();
    for (const char* const extension : {".gz", ".csv"}) {
        name = name.extension() == extension ? name.stem() : name;
    }
    return fs::path("replay-output") / name;
}

ReplayResult runReplay(const ReplayOptions& wanted, std::ostream& out) {
    const platform::SteadyTime begin = platform::steadyNow();
    const ReplayOptions options = withReportFiles(wanted);
    Scene scene = readScene(options.scene);
    const Recording recording = givenPart(options);
    TraceFile trace(options.trace);
    const ReferenceData reference(options.reference);
    ReplayResult result;
    {
        const RunLog log(options.logFolder);
        result = play(options, std::move(scene), recording, trace.writer());
    }
    trace.finish();
    tell(result, std::chrono::duration<double>(platform::steadyNow() - begin).count(), out);
    if (!options.report.empty()) {
        report(options, out);
        out << fmt::format("trace: {}\nlog: {}\nreport: {}\n", platform::utf8FromPath(options.trace),
                           platform::utf8FromPath(options.logFolder / "Log.txt"),
                           platform::utf8FromPath(options.report));
    }
    return result;
}

} // namespace rig
