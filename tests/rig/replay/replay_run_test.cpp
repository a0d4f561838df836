// A recording from file to trace.
#include "rig/replay/replay_run.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <sstream>
#include <stdexcept>

#include <fmt/format.h>

#include "core/slot_clock.h"
#include "engine/aircraft_tables.h"
#include "platform/clock.h"
#include "rig/flights/steady_sky.h"
#include "sim/simulator_link.h"
#include "tests/rig/replay/replay_folder.h"
#include "tests/support/message_of.h"

namespace rig {
namespace {

using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::SizeIs;
using ::testing::UnorderedElementsAreArray;

std::string aSky(int aircraft, double seconds) {
    SteadySky sky(aircraft, recordingBegin, Fidelity::network, 3);
    std::string text;
    for (const std::string& row : sky.rowsUntil(recordingBegin + seconds)) {
        text += row + '\n';
    }
    return text;
}

/// With a line after each fifth that no reader can take.
std::string withBadLines(const std::string& recording, std::size_t& bad) {
    const std::vector<std::string> faults{
        "RTTFC,",
        "no line of any feed",
        "RTTFC,123,abc,def,0,0,1,0,0,X,B738,PH-X,A,B,",
        std::string("RTTFC\0\xFF\xFE,1", 10),
        R"({"QNH": )",
        R"({"QNH": "much"})",
        std::string(3000, ','),
    };
    std::istringstream lines(recording);
    std::string text;
    std::string line;
    for (std::size_t number = 0; std::getline(lines, line); ++number) {
        text += line + '\n';
        if (number % 5 == 4) {
            text += faults[number / 5 % faults.size()] + '\n';
            ++bad;
        }
    }
    return text;
}

TEST(ReplayRun, theSameSeedGivesTheSameTraceByteForByte) {
    ReplayFolder folder(aSky(12, 150));
    folder.options.durationSeconds = 200;
    folder.options.loss = 0.2;
    folder.options.late = 0.1;
    const std::string first = folder.replay();
    folder.options.seed = 2;
    const std::string other = folder.replay();
    folder.options.seed = 1;
    const std::string second = folder.replay();
    EXPECT_GT(first.size(), 100000u);
    EXPECT_TRUE(first == second) << first.size() << " and " << second.size() << " bytes";
    EXPECT_FALSE(first == other);
}

TEST(ReplayRun, everyAircraftOfARecordingAppearsAndIsRemoved) {
    ReplayFolder folder(overflights(9));
    const std::string trace = folder.replay();
    EXPECT_THAT(tailNumbers(trace, TraceEventKind::appeared), UnorderedElementsAreArray(overflightNames(9)));
    EXPECT_THAT(tailNumbers(trace, TraceEventKind::removed), UnorderedElementsAreArray(overflightNames(9)));
    EXPECT_EQ(folder.result.end, "the recording is over");
    EXPECT_EQ(folder.result.counts.created, 9u);
    EXPECT_EQ(folder.result.counts.removed, 9u);
    EXPECT_EQ(folder.result.counts.most, 9u);
    EXPECT_GT(folder.result.seconds, 180 + 30);
    EXPECT_LT(folder.result.seconds, 180 + 150);
}

TEST(ReplayRun, badLinesCostThemselvesAlone) {
    const std::string recording = overflights(3);
    std::size_t bad = 0;
    const std::string disturbed = withBadLines(recording, bad);
    ReplayFolder clean(recording);
    clean.options.durationSeconds = 150;
    const std::string trace = clean.replay();
    const std::size_t lines = clean.result.counts.allLines();
    EXPECT_EQ(clean.result.counts.of(LineOutcome::accepted), lines);
    ReplayFolder folder(disturbed);
    folder.options.durationSeconds = 150;
    EXPECT_TRUE(folder.replay() == trace);
    const ReplayCounts& counts = folder.result.counts;
    EXPECT_EQ(counts.of(LineOutcome::accepted), lines);
    EXPECT_GT(counts.of(LineOutcome::doesNotParse), lines / 10);
    EXPECT_EQ(counts.allLines() - lines, counts.of(LineOutcome::doesNotParse));
    EXPECT_GT(counts.weather, clean.result.counts.weather);
}

TEST(ReplayRun, theFramesOfTheSceneAreInTheTraceWithTheBeginOfTheFeed) {
    ReplayFolder folder(overflights(1));
    folder.options.durationSeconds = 20;
    const std::string trace = folder.replay();
    const std::vector<TraceEvent> events = eventsOf(trace);
    const auto feed =
        std::find_if(events.begin(), events.end(), [](const TraceEvent& event) { return event.name == feedBeginsAct; });
    ASSERT_NE(feed, events.end());
    EXPECT_EQ(feed->detail, fmt::format("{:.3f}", recordingBegin));
    EXPECT_LT(feed->value, 5);
    std::istringstream in(trace);
    TraceReader reader(in);
    TraceItem item;
    int frames = 0;
    while (reader.next(item)) {
        frames += std::holds_alternative<TraceFrame>(item) ? 1 : 0;
    }
    EXPECT_NEAR(frames, 30 * (20 + feed->value), 2);
}

TEST(ReplayRun, aPartOfTheRecordingIsReplayed) {
    ReplayFolder folder(overflights(4));
    folder.options.beginSeconds = 60;
    folder.options.durationSeconds = 45;
    const std::string trace = folder.replay();
    EXPECT_EQ(folder.result.end, "time is up");
    EXPECT_NEAR(folder.result.seconds, 45, 0.011);
    // Each of the four tells a line every two seconds.
    EXPECT_NEAR(static_cast<double>(folder.result.counts.allLines()), 4 * 45 / 2.0, 4);
}

TEST(ReplayRun, aRecordingIsPlayedSeveralTimes) {
    ReplayFolder folder(overflights(2));
    folder.replay();
    const std::size_t lines = folder.result.counts.allLines();
    folder.options.loops = 2;
    folder.replay();
    EXPECT_EQ(folder.result.counts.allLines(), 2 * lines);
}

TEST(ReplayRun, withoutATraceItTellsTheCountsAlone) {
    ReplayFolder folder(overflights(1));
    folder.options.trace.clear();
    folder.options.durationSeconds = 50;
    folder.replay();
    EXPECT_THAT(folder.told, HasSubstr("aircraft created 1, removed 0, most at a time 1"));
    EXPECT_FALSE(std::filesystem::exists("flights.trace"));
}

TEST(ReplayRun, theRadiusIsThatOfTheInjection) {
    ReplayFolder folder(overflights(2));
    folder.options.durationSeconds = 30;
    folder.options.radiusNm = 5;
    folder.replay();
    EXPECT_EQ(folder.result.counts.of(LineOutcome::accepted), 0u);
    EXPECT_EQ(folder.result.counts.of(LineOutcome::outOfRange), folder.result.counts.allLines());
}

TEST(ReplayRun, theLogOfTheRunLiesInItsFolder) {
    ReplayFolder folder(overflights(2));
    folder.options.logFolder = "logs";
    const std::filesystem::path here = std::filesystem::current_path();
    folder.replay();
    EXPECT_EQ(std::filesystem::current_path(), here);
    EXPECT_THAT(readFile(std::filesystem::path("logs") / "Log.txt"), HasSubstr("KLM101"));
}

TEST(ReplayRun, aSimulatorThatQuitsEndsIt) {
    ReplayFolder folder(overflights(2));
    writeFile("scene.json", R"({"user": {"position": [52.3078, 4.7616]}, "acts": [{"at": 20, "act": "quit"}]})");
    folder.replay();
    EXPECT_EQ(folder.result.end, "SIM WAS CLOSED");
    EXPECT_LT(folder.result.seconds, 20);
}

TEST(ReplayRun, aPausedFlightGoesOnAfterwards) {
    ReplayFolder folder(overflights(2));
    writeFile("scene.json", R"({"user": {"position": [52.3078, 4.7616]},
                                "acts": [{"at": 60, "act": "pause"}, {"at": 80, "act": "resume"}]})");
    const std::string trace = folder.replay();
    EXPECT_EQ(folder.result.end, "the recording is over");
    EXPECT_THAT(tailNumbers(trace, TraceEventKind::removed), SizeIs(folder.result.counts.created));
    EXPECT_GE(folder.result.counts.created, 2u);
}

TEST(ReplayRun, aFlightThatNeverRunsIsAnError) {
    ReplayFolder folder(overflights(1));
    writeFile("scene.json", R"({"user": {"position": [52.3078, 4.7616]}, "acts": [{"at": 0, "act": "pause"}]})");
    EXPECT_EQ(messageOf([&] { folder.replay(); }), "the scene's flight does not come to run");
}

TEST(ReplayRun, filesThatCannotBeReadOrWrittenAreNamed) {
    ReplayFolder folder(overflights(1));
    const ReplayOptions good = folder.options;
    folder.options.reference = "missing.xml";
    EXPECT_THAT(messageOf([&] { folder.replay(); }), HasSubstr("missing.xml"));
    folder.options = good;
    folder.options.recording = "missing.csv";
    EXPECT_THAT(messageOf([&] { folder.replay(); }), HasSubstr("missing.csv"));
    folder.options = good;
    folder.options.scene = "missing.json";
    EXPECT_THAT(messageOf([&] { folder.replay(); }), HasSubstr("missing.json"));
    folder.options = good;
    folder.options.trace = "no such folder/flights.trace";
    EXPECT_THAT(messageOf([&] { folder.replay(); }), HasSubstr("flights.trace"));
}

TEST(ReplayRun, theProgramIsAsBeforeAfterwards) {
    const platform::WallTime before = platform::wallNow();
    ReplayFolder folder(overflights(2));
    folder.options.durationSeconds = 50;
    folder.replay();
    EXPECT_THAT(liveTable, IsEmpty());
    EXPECT_EQ(slotClock, 0);
    EXPECT_EQ(simHandle, nullptr);
    EXPECT_LT(platform::wallNow() - before, std::chrono::hours(1));
}

} // namespace
} // namespace rig
