// tests/rig/traffic/expected_outcomes_test.cpp
#include "rig/traffic/expected_outcomes.h"

#include <gtest/gtest.h>
#include <sstream>
#include <stdexcept>

#include "core/parameters.h"
#include "feed/sample_queue.h"
#include "rig/traffic/gzip_text.h"
#include "tests/support/log_capture.h"
#include "tests/support/traffic_line_builder.h"

namespace rig {
namespace {

constexpr LatLon amsterdam{52.31, 4.76};

class ExpectedOutcomes : public testing::Test {
protected:
    ExpectedOutcomes() {
        resetParameters();
        const std::string good = TrafficLineBuilder().line();
        const std::string ground = TrafficLineBuilder().with(traffic_field::altitude, "0").line();
        const std::string far = TrafficLineBuilder().with(traffic_field::lat, "-52").line();
        text = good + "\n{\"QNH\": 1020}\n" + far + "\n" + ground + "\nrubbish\n" + good + "\n";
    }

    LogCapture log;
    std::string text;
};

TEST_F(ExpectedOutcomes, eachLineIsCountedByItsEnd) {
    TrafficSurroundings around;
    around.userLatLon = amsterdam;
    EXPECT_EQ(expectedOutcomes(recordingFrom(text), around, 40), (OutcomeCounts{{LineOutcome::accepted, 2},
                                                                                {LineOutcome::doesNotParse, 1},
                                                                                {LineOutcome::outOfRange, 1},
                                                                                {LineOutcome::groundNotWanted, 1}}));
    EXPECT_TRUE(gLiveSampleQueue.empty());
    EXPECT_FALSE(gAcceptSamples);
}

TEST_F(ExpectedOutcomes, aParkingAirportAndTheRadiusCount) {
    writeText("recording.csv", text);
    CountOptions options;
    options.recording = "recording.csv";
    options.user = {52.25382, 4.92249};
    options.radiusNm = 10;
    options.userAirportCounts = true;
    std::ostringstream out;
    countOutcomes(options, out);
    EXPECT_EQ(out.str(), "accepted 3\ndoes not parse 1\nout of range 1\n");
}

// What the program has counted

/// What countOutcomes throws, or nothing.
std::string errorOf(const CountOptions& options, std::ostream& out) {
    try {
        countOutcomes(options, out);
    } catch (const std::runtime_error& error) {
        return error.what();
    }
    return "";
}

TEST_F(ExpectedOutcomes, aLogThatSaysTheSameAgrees) {
    writeText("recording.csv", text);
    writeText("Log.txt", "Traffic lines: accepted 17\r\nother words\r\n"
                         "Traffic lines: accepted 2, does not parse 1, out of range 1, on the ground elsewhere 1\r\n");
    CountOptions options{.recording = "recording.csv", .user = amsterdam, .log = "Log.txt"};
    std::ostringstream out;
    EXPECT_EQ(errorOf(options, out), "");
    EXPECT_EQ(out.str(), "accepted 2\ndoes not parse 1\nout of range 1\non the ground elsewhere 1\n"
                         "the program counted the same\n");
}

TEST_F(ExpectedOutcomes, aLogThatSaysOtherwiseIsAnErrorThatNamesBoth) {
    writeText("recording.csv", TrafficLineBuilder().line() + "\n");
    writeText("Log.txt", "Traffic lines: refused 1\n");
    CountOptions options{.recording = "recording.csv", .user = amsterdam, .log = "Log.txt"};
    std::ostringstream out;
    EXPECT_EQ(errorOf(options, out), "the program counted otherwise: refused 1 instead of accepted 1");
}

TEST_F(ExpectedOutcomes, aLogWithoutAWordOfTheLinesIsAnError) {
    for (const char* silent : {"", "SimConnect closed ok\n", "Traffic lines: a few\n"}) {
        EXPECT_THROW(outcomesFromLog(silent), std::runtime_error) << silent;
    }
}

} // namespace
} // namespace rig
