// tests/rig/traffic/expected_outcomes_test.cpp
#include "rig/traffic/expected_outcomes.h"

#include <gtest/gtest.h>
#include <sstream>

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

} // namespace
} // namespace rig
