#include "rig/report/feed_tracks.h"

#include <gmock/gmock.h>

#include <stdexcept>
#include <utility>
#include <vector>

#include "liveries/reference_tables.h"
#include "tests/rig/report/flown_trace.h"

using ::testing::SizeIs;

namespace rig {
namespace {

TEST(FeedTracks, oneThatStandsTakesTwoPoints) {
    RowMaker rows;
    rows.tellAll(0, 99, 2, [](double) { return LatLon{52, 4}; });
    const FeedTracks tracks = feedTracks(rows.recording());
    ASSERT_THAT(tracks.at(4734981).points, SizeIs(2));
    EXPECT_EQ(tracks.at(4734981).points[1].seconds, feedBegin + 98);
}

TEST(FeedTracks, anOlderLineThanTheOneBeforeIsLeftOut) {
    RowMaker rows;
    rows.tell(0, placeAt(0));
    rows.tell(10, placeAt(10));
    rows.rows[11] = rows.rows[0];
    rows.rows[12] = "RTTFC,nonsense\n{\"QNH\": 1000}\nRTTFC,4734981,95,4,0,0,0,0,0,A,B,C,D,E,1780315230\n";
    EXPECT_THAT(feedTracks(rows.recording()).at(4734981).points, SizeIs(2));
}

TEST(FeedTracks, betweenTwoPointsItIsOnTheLineAndInAGapNowhere) {
    RowMaker rows;
    rows.tell(0, placeAt(0));
    rows.tell(10, placeAt(10));
    rows.tell(50, placeAt(50));
    const FeedAircraft aircraft = feedTracks(rows.recording()).at(4734981);
    ASSERT_TRUE(aircraft.at(feedBegin + 4).has_value());
    EXPECT_NEAR(greatCircleNm(aircraft.at(feedBegin + 4)->at, placeAt(4)) * metersPerNm, 0, 0.1);
    EXPECT_FALSE(aircraft.at(feedBegin + 20).has_value());
    EXPECT_FALSE(aircraft.at(feedBegin - 1).has_value());
    EXPECT_FALSE(aircraft.at(feedBegin + 51).has_value());
}

TEST(FeedTracks, theSpeedIsTheLesserOfThoseToldBeforeAndAfter) {
    RowMaker rows;
    const std::vector<std::pair<double, double>> told{{0, 150}, {10, 448}, {20, 160}, {30, -1}, {40, 170}, {71, 170}};
    for (const auto& [seconds, knots] : told) {
        rows.line.gs = knots;
        rows.tell(seconds, placeAt(seconds));
    }
    const FeedAircraft aircraft = feedTracks(rows.recording()).at(4734981);
    EXPECT_EQ(aircraft.knotsAt(feedBegin - 1), 0);
    EXPECT_EQ(aircraft.knotsAt(feedBegin + 5), 150);
    EXPECT_EQ(aircraft.knotsAt(feedBegin + 15), 160);
    EXPECT_EQ(aircraft.knotsAt(feedBegin + 25), 0);
    EXPECT_EQ(aircraft.knotsAt(feedBegin + 50), 0) << "in a gap";
    EXPECT_EQ(aircraft.knotsAt(feedBegin + 72), 0);
}

TEST(FeedTracks, theCategoryIsThatOfTheEmitterUnlessTheTypeIsKnown) {
    FeedAircraft aircraft;
    EXPECT_EQ(categoryOf(aircraft), AircraftCategory::Large);
    aircraft.emitter = "A5";
    EXPECT_EQ(categoryOf(aircraft), AircraftCategory::Heavy);
    aircraft.emitter = "A7";
    EXPECT_EQ(categoryOf(aircraft), AircraftCategory::Rotorcraft);
}

/// The program makes no aircraft of the others.
TEST(FeedTracks, ofSeveralTypesTheFirstKnownOneCounts) {
    gAllTypes = {"C172", "P28A"};
    RowMaker rows;
    for (const char* type : {"", "C72R", "C172", "P28A", "C72R"}) {
        rows.line.type = type;
        const double seconds = static_cast<double>(rows.rows.size());
        rows.tell(seconds, placeAt(seconds));
    }
    const FeedTracks tracks = feedTracks(rows.recording());
    gAllTypes.clear();
    EXPECT_EQ(tracks.at(4734981).type, "C172");
    EXPECT_EQ(feedTracks(rows.recording()).at(4734981).type, "C72R") << "none is known";
}

TEST(TruthTracks, whatIsNoTruthIsToldWithItsLine) {
    constexpr const char* head = "time,hexid,callsign,phase,lat,lon,alt_ft,on_ground,heading,track,gs_kt,vs_fpm,roll\n";
    const auto message = [](const std::string& text) {
        try {
            truthTracks(text);
        } catch (const std::runtime_error& error) {
            return std::string(error.what());
        }
        return std::string("nothing");
    };
    EXPECT_EQ(message(""), "no line of a truth file");
    EXPECT_EQ(message("RTTFC,1,2\n"), "line 1: no truth file");
    EXPECT_EQ(message(std::string(head) + "1,2,3\n"), "line 2: not as many fields as the first line names");
    EXPECT_EQ(message(std::string(head) + "1,20000,KLM1,taxi,x,4,0,1,0,0,0,0,0\n"), "line 2: a number that is none");
    EXPECT_EQ(message(std::string(head) + "1,KLM,KLM1,taxi,52,4,0,1,0,0,0,0,0\n"), "line 2: no identity");
    EXPECT_EQ(
        message(std::string(head) + "2,20000,KLM1,taxi,52,4,0,1,0,0,0,0,0\n1,20000,KLM1,taxi,52,4,0,1,0,0,0,0,0\n"),
        "line 3: an earlier time than the line before");
}

} // namespace
} // namespace rig
