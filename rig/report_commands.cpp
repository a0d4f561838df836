// rig/report_commands.cpp
#include "rig/report_commands.h"

#include <string>
#include <vector>

#include "rig/path_option.h"

namespace {

constexpr double leastNm = 1;
constexpr double farthestNm = 1000;

} // namespace

ReportCommands::ReportCommands(CLI::App& app) {
    report_ = app.add_subcommand("report", "Figures, a page and pictures of what flew (docs/rig-report.md)");
    addPath(*report_, "--trace", options_.trace, "The trace")->required();
    addPath(*report_, "--output", options_.output, "Folder for figures.json, report.html and the pictures")->required();
    addPath(*report_, "--recording", options_.recording, "The recording that the trace was made from");
    addPath(*report_, "--truth", options_.truth, "Where the aircraft of the recording really were");
    addPath(*report_, "--held-out", options_.heldOut, "Recording of samples that the program was not given");
    addPath(*report_, "--log", options_.log, "The program's Log.txt");
    addPath(*report_, "--scene", options_.scene, "Scene of the simulator: tells the ground");
    addPaths(*report_, "--titles", options_.titles,
             "Folders below which aircraft.cfg files tell wing spans and how high aircraft stand");
    addPath(*report_, "--types", options_.types, "Reference data in clear: categories of the types");
    report_->add_option_function<double>(
        "--feed-start", [this](double seconds) { options_.feedStart = seconds; },
        "When the recording's first row was sent: seconds since the begin of the trace, or since 1970");
    report_->add_option("--radius", options_.radiusNm, "Within which aircraft are shown, nautical miles")
        ->check(CLI::Range(leastNm, farthestNm));
    report_->add_flag("!--without-airport", options_.takesGroundTraffic,
                      "The program had no airport in use and took nothing on the ground");
}

void ReportCommands::run(std::ostream& out) const {
    if (report_->parsed()) {
        rig::runReport(options_, out);
    }
}
