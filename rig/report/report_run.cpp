// rig/report/report_run.cpp
#include "rig/report/report_run.h"

#include <fstream>
#include <ostream>
#include <stdexcept>
#include <string>

#include <fmt/format.h>

#include "liveries/reference_data.h"
#include "platform/files.h"
#include "rig/report/analysis.h"
#include "rig/report/figures_json.h"
#include "rig/report/pictures.h"
#include "rig/traffic/gzip_text.h"
#include "rig/traffic/hold_out.h"
#include "rig/world/scene_reader.h"
#include "rig/world/trace_reader.h"

namespace rig {

namespace {

using std::filesystem::path;

/// What is said of a file names it.
template <typename Read>
auto ofFile(const path& file, Read read) {
    try {
        return read();
    } catch (const std::exception& error) {
        const std::string name = platform::utf8FromPath(file);
        const std::string what = error.what();
        throw std::runtime_error(what.find(name) == std::string::npos ? fmt::format("{}: {}", name, what) : what);
    }
}

template <typename Read>
auto ifThere(const path& file, Read read) -> std::optional<decltype(read())> {
    return file.empty() ? std::nullopt : std::optional(ofFile(file, read));
}

template <typename Value>
const Value* pointerTo(const std::optional<Value>& value) {
    return value ? &*value : nullptr;
}

void readTypes(const path& file) {
    std::string firstFault;
    const bool isRead = ofFile(file, [&] {
        return lf_readReferenceXml(file, [&firstFault](std::string_view row) {
            firstFault = firstFault.empty() ? std::string(row) : firstFault;
        });
    });
    if (!isRead) {
        throw std::runtime_error(fmt::format("{}: no reference data", platform::utf8FromPath(file)));
    }
}

/// Nothing when nobody tells of any.
std::optional<AircraftTitles> titlesOf(const ReportOptions& options) {
    if (options.titles.empty() && options.installed.count() == 0) {
        return std::nullopt;
    }
    AircraftTitles titles = options.installed;
    for (const path& folder : options.titles) {
        titles.addFolder(folder);
    }
    return titles;
}

FeedTracks heldOutTracks(const path& file, const std::optional<Recording>& recording) {
    Recording heldOut = loadRecording(file);
    if (recording) {
        takeDueTimes(heldOut, *recording);
    }
    return feedTracks(heldOut);
}

void write(const path& file, const std::string& text, std::ostream& out) {
    std::ofstream to(file, std::ios::binary | std::ios::trunc);
    to << text;
    to.close();
    const std::string name = platform::utf8FromPath(file);
    if (!to) {
        throw std::runtime_error("cannot write " + name);
    }
    out << fmt::format("{}\n", name);
}

void printAstray(const char* name, double seconds, const Distribution& metres, std::ostream& out) {
    if (metres.count() > 0) {
        out << fmt::format("    {} {:.0f} s, beside the track median {:.1f} m, 95th {:.1f} m, worst {:.1f} m\n", name,
                           seconds, metres.atShare(0.5), metres.atShare(0.95), metres.worst());
    }
}

void printState(const char* name, const StateFigures& figures, std::ostream& out) {
    if (figures.seconds == 0) {
        return;
    }
    out << fmt::format("{}: {:.0f} s, {} jumps, largest step {:.2f} m ({:.2f} times the speed)\n", name,
                       figures.seconds, figures.jumps, figures.largestStep, figures.largestStepShare);
    out << fmt::format("    largest step of the height {:.1f} ft, {} of them jumps; {} unsound values\n",
                       figures.largestHeightStep, figures.heightJumps, figures.allUnsound());
    if (figures.crossTrack.count() > 0) {
        out << fmt::format(
            "    cross-track median {:.1f} m, 95th {:.1f} m, worst {:.1f} m; along-track 95th {:.1f} s\n",
            figures.crossTrack.atShare(0.5), figures.crossTrack.atShare(0.95), figures.crossTrack.worst(),
            figures.alongTrack.atShare(0.95));
    }
    printAstray("without samples ahead", figures.withoutSamples, figures.crossTrackWithoutSamples, out);
    printAstray("on the way back", figures.onWayBack, figures.crossTrackOnWayBack, out);
}

void printFigures(const Analysis& analysis, std::ostream& out) {
    out << fmt::format("aircraft: {}, never appeared: {}\n", analysis.aircraft.size(),
                       analysis.inRange.neverShown.size());
    printState("in the air", analysis.all.air, out);
    printState("on the ground", analysis.all.ground, out);
    for (const DetailedMoment& detailed : analysis.worst) {
        const Moment& moment = detailed.moment;
        out << fmt::format("worst moment: {} {}, {}, at {}\n", nameOf(analysis, moment.objectId),
                           factsOf(moment.kind).title, valueText(moment), timeText(moment.seconds));
        break;
    }
    if (analysis.survey.endedEarly) {
        out << "the trace ends within a record\n";
    }
}

} // namespace

void runReport(const ReportOptions& options, std::ostream& out) {
    std::ifstream trace(options.trace, std::ios::binary);
    const std::string traceName = platform::utf8FromPath(options.trace);
    if (!trace) {
        throw std::runtime_error("cannot read " + traceName);
    }
    if (!options.types.empty()) {
        readTypes(options.types); // the tracks are made with them
    }
    const auto recording = ifThere(options.recording, [&] { return loadRecording(options.recording); });
    const auto truth = ifThere(options.truth, [&] { return truthTracks(readText(options.truth)); });
    const auto heldOut = ifThere(options.heldOut, [&] { return heldOutTracks(options.heldOut, recording); });
    const std::string log = ifThere(options.log, [&] { return readText(options.log); }).value_or("");
    const auto scene = ifThere(options.scene, [&] { return readScene(options.scene); });
    const auto titles = titlesOf(options);
    const AnalysisInputs inputs{.trace = trace,
                                .recording = pointerTo(recording),
                                .truth = pointerTo(truth),
                                .heldOut = pointerTo(heldOut),
                                .log = log,
                                .ground = scene ? &scene->ground : nullptr,
                                .titles = pointerTo(titles),
                                .feedStart = options.feedStart,
                                .radiusNm = options.radiusNm,
                                .takesGroundTraffic = options.takesGroundTraffic};
    const Analysis analysis = ofFile(options.trace, [&inputs] { return analyse(inputs); });
    std::filesystem::create_directories(options.output);
    write(options.output / "figures.json", figuresText(analysis), out);
    write(options.output / "report.html", reportPage(analysis, platform::utf8FromPath(options.trace.filename())), out);
    const std::vector<path> pictures = drawPictures(analysis, options.output);
    for (const path& picture : pictures) {
        out << fmt::format("{}\n", platform::utf8FromPath(picture));
    }
    if (pictures.empty()) {
        out << "no pictures: they are drawn by the native rig only\n";
    }
    printFigures(analysis, out);
}

} // namespace rig
