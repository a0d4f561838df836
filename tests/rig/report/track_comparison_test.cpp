#include "rig/report/track_comparison.h"

#include <gtest/gtest.h>

#include <initializer_list>

#include "tests/rig/report/flown_trace.h"

namespace rig {
namespace {

/// On its way east, with samples at these seconds of the feed; trace and feed begin together.
class TrackComparisons : public ::testing::Test {
protected:
    void tell(double seconds, const LatLon& at, bool isTaken = true) {
        feed_.points.push_back(
            {.seconds = feedBegin + seconds, .at = at, .onGround = false, .altFeet = 5000, .isTaken = isTaken});
    }
    void tellFlight(std::initializer_list<double> seconds) {
        for (const double one : seconds) {
            tell(one, placeAt(one));
        }
    }
    /// No sample may be told afterwards.
    TrackComparison compared() const { return {feed_, FeedClock{feedBegin}}; }
    Course courseAt(double traceSeconds, const LatLon& at) const { return compared().take(traceSeconds, at).course; }

private:
    FeedAircraft feed_;
};

TEST_F(TrackComparisons, aPlaceIsToldByItsDistanceAndTheTimeOfTheFeedThere) {
    tellFlight({20, 24, 28});
    const TrackPlace place = compared().take(56, shifted(placeAt(25), 0, 7));
    EXPECT_EQ(place.course, Course::onTrack);
    EXPECT_NEAR(place.metres, 7, 0.1);
    EXPECT_NEAR(place.feedSeconds - feedBegin, 25, 0.01);
    EXPECT_TRUE(place.isOnLeg);
    EXPECT_TRUE(place.moves);
}

TEST_F(TrackComparisons, aSampleIsKnownASecondAfterItHasCome) {
    tellFlight({0, 20, 40, 60});
    EXPECT_EQ(courseAt(40.9, placeAt(25)), Course::withoutSamples);
    EXPECT_EQ(courseAt(41.1, placeAt(25)), Course::onTrack);
    EXPECT_EQ(courseAt(40.9, placeAt(15)), Course::onTrack);
}

TEST_F(TrackComparisons, theWayBackEndsWithinFifteenMetresOfANewerSample) {
    tellFlight({0, 20, 40, 60});
    for (const double metresBeside : {14.0, 16.0}) {
        TrackComparison flown = compared();
        const auto fly = [&](double traceSeconds, double place) {
            return flown.take(traceSeconds, shifted(placeAt(place), 0, metresBeside)).course;
        };
        EXPECT_EQ(fly(40, 25), Course::withoutSamples);
        EXPECT_EQ(fly(40.9, 38), Course::withoutSamples);
        EXPECT_EQ(fly(41.1, 38.5), Course::wayBack);
        EXPECT_EQ(fly(42, 41), metresBeside < 15 ? Course::onTrack : Course::wayBack);
    }
}

TEST_F(TrackComparisons, aSampleThatTheProgramDoesNotTakeIsNone) {
    tellFlight({0, 20});
    tell(40, placeAt(40), false);
    tellFlight({60});
    TrackComparison flown = compared();
    EXPECT_EQ(flown.take(45, placeAt(25)).course, Course::withoutSamples);
    EXPECT_EQ(flown.take(46, placeAt(39)).course, Course::withoutSamples);
    EXPECT_EQ(flown.take(47, placeAt(41)).course, Course::withoutSamples);
    EXPECT_EQ(flown.take(62, placeAt(50)).course, Course::wayBack);
}

TEST_F(TrackComparisons, theSamePlaceToldAgainIsNoSampleAhead) {
    tellFlight({0, 20});
    tell(30, placeAt(20));
    tellFlight({60});
    TrackComparison flown = compared();
    EXPECT_EQ(flown.take(25, placeAt(22)).course, Course::withoutSamples);
    EXPECT_EQ(flown.take(35, placeAt(24)).course, Course::withoutSamples);
    EXPECT_EQ(flown.take(62, placeAt(26)).course, Course::wayBack);
}

TEST_F(TrackComparisons, beforeTheFirstSampleBehindTheLastAndInAGapThereIsNoLeg) {
    tellFlight({0, 20, 51, 71});
    EXPECT_FALSE(compared().take(28, placeAt(-2)).isOnLeg);
    EXPECT_TRUE(compared().take(40, placeAt(10)).isOnLeg);
    EXPECT_FALSE(compared().take(65, placeAt(35)).isOnLeg);
    EXPECT_TRUE(compared().take(90, placeAt(60)).isOnLeg);
    EXPECT_FALSE(compared().take(103, placeAt(73)).isOnLeg);
}

TEST_F(TrackComparisons, whoStandsThroughAGapIsOnALegAndDoesNotMove) {
    tell(0, {52, 4});
    tell(100, {52, 4});
    const TrackPlace place = compared().take(80, shifted({52, 4}, 0, 3));
    EXPECT_TRUE(place.isOnLeg);
    EXPECT_FALSE(place.moves);
    EXPECT_NEAR(place.metres, 3, 0.1);
}

TEST_F(TrackComparisons, belowThreeKnotsTheFeedDoesNotMove) {
    const auto movesAt = [](double knots) {
        const LatLon begin{52, 4};
        FeedAircraft feed;
        feed.points = {{.seconds = feedBegin, .at = begin},
                       {.seconds = feedBegin + 20, .at = shifted(begin, 90, 20 * knots * metersPerNm / 3600)}};
        return TrackComparison(feed, FeedClock{feedBegin}).take(40, begin).moves;
    };
    EXPECT_FALSE(movesAt(2.9));
    EXPECT_TRUE(movesAt(3.1));
}

TEST_F(TrackComparisons, whoIsFarFromWhereHeWasIsLookedForWhereHeIsDue) {
    for (int seconds = 0; seconds <= 200; seconds += 2) {
        tell(seconds, placeAt(seconds));
    }
    TrackComparison flown = compared();
    EXPECT_LT(flown.take(40, placeAt(10)).metres, 0.1);
    const TrackPlace place = flown.take(131, placeAt(100));
    EXPECT_LT(place.metres, 0.1);
    EXPECT_NEAR(place.feedSeconds - feedBegin, 100, 0.01);
}

} // namespace
} // namespace rig
