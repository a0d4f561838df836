// What the report tells of a replay.
#include <gmock/gmock.h>
#include <nlohmann/json.hpp>

#include <sstream>

#include <fmt/format.h>

#include "core/geography.h"
#include "feed/traffic_line.h"
#include "platform/files.h"
#include "rig/report/report_run.h"
#include "rig/traffic/recording.h"
#include "tests/rig/replay/replay_folder.h"

using ::testing::AllOf;
using ::testing::EndsWith;
using ::testing::HasSubstr;

namespace rig {
namespace {

/// What the engine itself may be late; a wrong clock would be so by a minute.
constexpr double goodSeconds = 6;
constexpr double fastMetresPerSecond = 250;

nlohmann::json figuresIn(const std::filesystem::path& folder) {
    return nlohmann::json::parse(readFile(folder / "figures.json"));
}

/// Of the trace and the recording of this folder.
nlohmann::json reportOf(const ReplayFolder& folder) {
    ReportOptions options;
    options.trace = folder.options.trace;
    options.recording = folder.options.recording;
    options.output = "report";
    std::ostringstream out;
    runReport(options, out);
    return figuresIn(options.output);
}

TEST(ReplayReport, theClockIsThatOfTheReplay) {
    ReplayFolder folder(overflights(2));
    folder.options.durationSeconds = 120;
    folder.replay();
    const nlohmann::json figures = reportOf(folder);
    EXPECT_EQ(figures["clock"]["source"], "marked in the trace");
    // The world runs for some seconds before the feed begins.
    EXPECT_NEAR(figures["clock"]["feed_time_at_begin"].get<double>(), recordingBegin - 2.5, 2.5);
    EXPECT_LT(figures["all"]["air"]["along_track_s"]["p95"].get<double>(), goodSeconds);
}

TEST(ReplayReport, theClockIsThatOfAPartOfTheRecording) {
    ReplayFolder folder(overflights(4));
    folder.options.beginSeconds = 60;
    folder.options.durationSeconds = 90;
    folder.replay();
    const nlohmann::json figures = reportOf(folder);
    EXPECT_EQ(figures["clock"]["source"], "marked in the trace");
    EXPECT_NEAR(figures["clock"]["feed_time_at_begin"].get<double>(), recordingBegin + 60 - 2.5, 2.5);
    EXPECT_LT(figures["all"]["air"]["along_track_s"]["p95"].get<double>(), goodSeconds);
}

/// Three overflights, and one of a type that nobody knows.
std::string withAStranger() {
    std::istringstream lines(overflights(4));
    std::string text;
    std::string line;
    while (std::getline(lines, line)) {
        if (line.find(overflightNames(4)[3]) != std::string::npos) {
            line.replace(line.find("B738"), 4, "ZEPP");
        }
        text += line + '\n';
    }
    return text;
}

TEST(ReplayReport, comesInTheSameCallWithAllThatTheReplayKnows) {
    ReplayFolder folder(withAStranger());
    folder.options.trace.clear();
    folder.options.report = "report";
    folder.replay();
    const nlohmann::json figures = figuresIn("report");
    EXPECT_EQ(figures["clock"]["source"], "marked in the trace");
    EXPECT_EQ(figures["all"]["aircraft"], 3);
    EXPECT_EQ(figures["aircraft"][0]["category"], "Large");
    EXPECT_EQ(figures["all"]["air"]["jumps"], 0);
    // The scene tells the ground, the replay how high its aircraft stand.
    EXPECT_EQ(figures["ground_known"], true);
    EXPECT_EQ(figures["all"]["air"]["below_ground_s"], 0);
    // The log tells who was not shown.
    ASSERT_EQ(figures["never_appeared"].size(), 1u);
    EXPECT_EQ(figures["never_appeared"][0]["callsign"], overflightNames(4)[3]);
    EXPECT_THAT(figures["never_appeared"][0]["why"].get<std::string>(), HasSubstr("'ZEPP'"));
    EXPECT_THAT(folder.told, AllOf(HasSubstr("the recording is over"), HasSubstr("never appeared: 1")));
    EXPECT_TRUE(std::filesystem::exists("report/report.html"));
    EXPECT_TRUE(std::filesystem::exists("report/flight.trace"));
    EXPECT_TRUE(std::filesystem::exists("report/Log.txt"));
}

TEST(ReplayReport, withoutAWordWhereToAllLiesInAFolderOfTheRecordingsName) {
    EXPECT_EQ(defaultReplayFolder("data/recordings/quiet_half_hour.csv.gz"), "replay-output/quiet_half_hour");
    EXPECT_EQ(defaultReplayFolder("flight.2026-05-01.csv"), "replay-output/flight.2026-05-01");
    EXPECT_EQ(defaultReplayFolder("flight.2026-05-02.csv.gz"), "replay-output/flight.2026-05-02");
    EXPECT_EQ(defaultReplayFolder("flight.gz.txt"), "replay-output/flight.gz.txt");
    ReplayFolder folder(overflights(1));
    folder.options.durationSeconds = 60;
    folder.options.trace.clear();
    folder.options.report = defaultReplayFolder(folder.options.recording);
    folder.replay();
    EXPECT_EQ(figuresIn("replay-output/flights")["all"]["aircraft"], 1);
    EXPECT_TRUE(std::filesystem::exists("replay-output/flights/flight.trace"));
    const std::filesystem::path output = std::filesystem::path("replay-output") / "flights";
    EXPECT_THAT(folder.told, EndsWith(fmt::format(
                                 "trace: {}\nlog: {}\nreport: {}\n", platform::utf8FromPath(output / "flight.trace"),
                                 platform::utf8FromPath(output / "Log.txt"), platform::utf8FromPath(output))));
}

TEST(ReplayReport, traceAndLogLieWhereTheyAreWanted) {
    ReplayFolder folder(overflights(1));
    folder.options.durationSeconds = 60;
    folder.options.report = "report";
    folder.options.logFolder = "logs";
    EXPECT_GT(folder.replay().size(), 1000u);
    EXPECT_EQ(figuresIn("report")["all"]["aircraft"], 1);
    EXPECT_TRUE(std::filesystem::exists("logs/Log.txt"));
    EXPECT_FALSE(std::filesystem::exists("report/flight.trace"));
    EXPECT_FALSE(std::filesystem::exists("report/Log.txt"));
}

nlohmann::json heldOutFigureOf(ReportOptions options) {
    options.output = "alone";
    std::ostringstream out;
    runReport(options, out);
    return figuresIn(options.output)["all"]["air"]["from_held_out_m"];
}

std::string movedNorth(const Recording& recording, double degrees) {
    std::string text;
    for (const RecordedRow& row : recording.rows) {
        std::vector<std::string_view> fields;
        splitTrafficLine(row.text, fields);
        const std::string lat = fmt::format("{:.6f}", positionOf(row.text)->lat + degrees);
        const auto at = static_cast<std::size_t>(fields[traffic_field::lat].data() - row.text.data());
        text += std::string(row.text).replace(at, fields[traffic_field::lat].size(), lat) + '\n';
    }
    return text;
}

TEST(ReplayReport, whatIsHeldOutIsComparedWithTheWayBetweenTheRest) {
    ReplayFolder folder(overflights(3));
    folder.options.report = "report";
    folder.replay();
    EXPECT_TRUE(figuresIn("report")["all"]["air"]["from_held_out_m"].is_null());
    const std::size_t lines = folder.result.counts.allLines();

    folder.options.holdOut = 0.3;
    folder.options.heldOut = "held.csv.gz";
    folder.replay();
    const std::size_t held = loadRecording("held.csv.gz").rows.size();
    EXPECT_EQ(folder.result.counts.allLines() + held, lines);
    EXPECT_NEAR(static_cast<double>(held), 0.3 * static_cast<double>(lines), 0.1 * static_cast<double>(lines));
    const nlohmann::json figure = figuresIn("report")["all"]["air"]["from_held_out_m"];
    ASSERT_FALSE(figure.is_null());
    // But for those that came before the aircraft were there.
    EXPECT_GT(figure["count"], held / 2);
    EXPECT_LE(figure["count"], held);
    EXPECT_LT(figure["median"].get<double>(), goodSeconds * fastMetresPerSecond);

    // The report by itself computes the same of the same files, and something else of samples that lie elsewhere.
    ReportOptions options;
    options.trace = folder.options.trace;
    options.recording = folder.options.recording;
    options.heldOut = "held.csv.gz";
    EXPECT_EQ(heldOutFigureOf(options), figure);
    writeFile("moved.csv", movedNorth(loadRecording("held.csv.gz"), 0.5));
    options.heldOut = "moved.csv";
    EXPECT_NEAR(heldOutFigureOf(options)["median"].get<double>(), 0.5 * metersPerDegreeLatitude,
                goodSeconds * fastMetresPerSecond);
}

TEST(ReplayReport, theRadiusIsThatOfTheReplay) {
    ReplayFolder folder(overflights(2));
    folder.options.radiusNm = 5;
    folder.options.report = "report";
    folder.replay();
    EXPECT_EQ(figuresIn("report")["all"]["in_range_taken"], 0);
    EXPECT_EQ(figuresIn("report")["all"]["never_appeared"], 0);
}

TEST(ReplayReport, theTruthIsComparedWhereItIsKnown) {
    ReplayFolder folder(overflights(2));
    folder.options.report = "report";
    folder.replay();
    EXPECT_TRUE(figuresIn("report")["all"]["air"]["from_truth_m"].is_null());
    writeFile("truth.csv", truthOfOverflights(2));
    folder.options.truth = "truth.csv";
    folder.replay();
    EXPECT_GT(figuresIn("report")["all"]["air"]["from_truth_m"]["count"], 1000);
}

} // namespace
} // namespace rig
