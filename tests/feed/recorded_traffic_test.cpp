// tests/feed/recorded_traffic_test.cpp
// The real feed through the whole filter chain.
#include <cmath>
#include <gtest/gtest.h>
#include <iostream>
#include <string>

#include "core/injection_radius.h"
#include "core/parameters.h"
#include "feed/sample_queue.h"
#include "feed/traffic_reader.h"
#include "tests/support/log_capture.h"
#include "tests/support/recorded_lines.h"

namespace {

constexpr LatLon amsterdam{52.31, 4.76};

class RecordedTraffic : public testing::Test {
protected:
    RecordedTraffic() : lines(recordedTrafficLines()) {
        resetParameters();
        gRadiusNm = 40;
        gAcceptSamples = true;
        gLiveSampleQueue.clear();
        reader.setUserLatLon(amsterdam);
    }

    ~RecordedTraffic() override {
        gAcceptSamples = false;
        gLiveSampleQueue.clear();
    }

    void SetUp() override {
        if (lines.empty()) {
            GTEST_SKIP() << "no recorded lines on this machine";
        }
    }

    /// What became of the lines, by cause; a cause that took none is left out.
    OutcomeCounts playAll(const std::string& title) {
        OutcomeCounts tally;
        for (const std::string& line : lines) {
            ++tally[reader.processLine(line)];
        }
        std::cout << title << ": " << lines.size() << " lines\n";
        for (const auto& [outcome, count] : tally) {
            std::cout << "    " << count << " " << nameOf(outcome) << "\n";
        }
        return tally;
    }

    void expectSoundRecords(std::size_t count) {
        EXPECT_EQ(gLiveSampleQueue.size(), count);
        while (const std::optional<FeedRecord> r = gLiveSampleQueue.pop()) {
            const Sample& s = r->sample;
            EXPECT_LE(greatCircleNm(amsterdam, {s.lat, s.lon}), 40);
            EXPECT_EQ(s.airborne, s.alt > 0 ? 1 : 0);
            EXPECT_EQ(s.hasHeading == 1, s.heading.has_value());
            EXPECT_GT(r->hexid, 10000u);
            EXPECT_FALSE(r->type.empty());
            EXPECT_FALSE(r->callsign.empty() && r->registration.empty());
            EXPECT_TRUE(std::isfinite(s.track + s.vs + s.gs + s.tas + s.roll.value_or(0)));
        }
    }

    const std::vector<std::string> lines; // read before the log moves the working directory
    LogCapture log;
    TrafficReader reader;
};

TEST_F(RecordedTraffic, withoutAParkingAirportOnlyTheAirbornePass) {
    EXPECT_EQ(playAll("Amsterdam, 40 nm, no parking airport"), (OutcomeCounts{{LineOutcome::accepted, 102},
                                                                              {LineOutcome::groundNotWanted, 109},
                                                                              {LineOutcome::outOfRange, 1122},
                                                                              {LineOutcome::groundVehicle, 48},
                                                                              {LineOutcome::doesNotParse, 12}}));
    EXPECT_EQ(log.lines().size(), 12u);
    expectSoundRecords(102);
}

TEST_F(RecordedTraffic, withAParkingAirportItsGroundTrafficPassesToo) {
    reader.setParkingAirport(ParkingAirport{amsterdam, -11});
    reader.setReferenceElevation(-11);
    EXPECT_EQ(playAll("Amsterdam, 40 nm, parking airport with its elevation"),
              (OutcomeCounts{{LineOutcome::accepted, 211},
                             {LineOutcome::outOfRange, 1122},
                             {LineOutcome::groundVehicle, 48},
                             {LineOutcome::doesNotParse, 12}}));
    expectSoundRecords(211);
}

} // namespace
