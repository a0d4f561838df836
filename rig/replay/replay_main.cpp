// rig/replay/replay_main.cpp
// The command line of "rig replay", which is a program of its own because the engine in it sees a simulated world where
// that of "rig objects" sees a connection.
#include <exception>
#include <iostream>

#include <CLI/CLI.hpp>

#include "platform/console.h"
#include "platform/program_entry.h"
#include "rig/path_option.h"
#include "rig/replay/replay_run.h"

namespace {

constexpr int failed = 1;
constexpr double farthestNm = 100;
constexpr double leastNm = 2;

void addRate(CLI::App& command, const std::string& option, double& rate, const std::string& help) {
    command.add_option(option, rate, help)->check(CLI::Range(0.0, 1.0));
}

void addOptions(CLI::App& app, rig::ReplayOptions& options, bool& withoutReport) {
    addPath(app, "--recording", options.recording, "Recording, packed or not (docs/rig-traffic.md)")->required();
    addPath(app, "--scene", options.scene, "Scene file (docs/rig.md)")->required();
    addPath(app, "--output", options.trace, "Trace file that gets all motion and events");
    addPath(app, "--reference", options.reference, "Types and registrations (data/dbase.xml)");
    addPath(app, "--log", options.logFolder, "Folder that gets the Log.txt of the run");
    CLI::Option* const report = addPath(app, "--report", options.report,
                                        "Folder that gets the report (docs/rig-report.md); trace and log lie there, "
                                        "too, unless said otherwise. replay-output/NAME of the recording's name");
    app.add_flag("--no-report", withoutReport, "Without --output only the counts at the end")->excludes(report);
    addPath(app, "--truth", options.truth, "Where the aircraft of the recording really were, for the report");
    CLI::Option* const heldOut =
        addPath(app, "--held-out", options.heldOut, "Recording that gets the lines that are held out");
    CLI::Option* const share =
        app.add_option("--hold-out", options.holdOut, "Share of the lines that the engine is not given")
            ->check(CLI::Range(0.0, 1.0))
            ->needs(heldOut);
    heldOut->needs(share);
    app.add_option("--seed", options.seed, "Of all chance");
    app.add_option("--begin", options.beginSeconds, "Seconds of the recording left out at its beginning")
        ->check(CLI::NonNegativeNumber);
    app.add_option("--duration", options.durationSeconds,
                   "Ends after so many seconds of the recording; otherwise when all of its aircraft have gone")
        ->check(CLI::NonNegativeNumber);
    app.add_option("--radius", options.radiusNm, "Injection radius, nautical miles")
        ->check(CLI::Range(leastNm, farthestNm));
    addRate(app, "--loss", options.loss, "Share of the lines that get lost");
    addRate(app, "--repeat", options.repeat, "Share of the lines that come twice");
    addRate(app, "--late", options.late, "Share of the lines that come 1 to 30 seconds late");
    addRate(app, "--out-of-order", options.outOfOrder, "Share of the lines that come behind the next one");
    app.add_option("--loops", options.loops, "How often the recording is played")->check(CLI::PositiveNumber);
}

} // namespace

int programMain(const std::vector<std::string>& arguments) {
    CLI::App app("A recording flown by the engine in a simulated world, as fast as the machine goes.", "rig replay");
    rig::ReplayOptions options;
    bool withoutReport = false;
    addOptions(app, options, withoutReport);
    try {
        app.parse(std::vector<std::string>(arguments.rbegin(), arguments.rend() - 1));
        if (options.report.empty() && !withoutReport) {
            options.report = rig::defaultReplayFolder(options.recording);
        }
        platform::watchStopRequests();
        rig::runReplay(options, std::cout);
    } catch (const CLI::ParseError& error) {
        return app.exit(error);
    } catch (const std::exception& error) {
        std::cerr << "rig replay: " << error.what() << '\n';
        return failed;
    }
    return 0;
}
