// The measure that flown tracks are compared with.
#include "tests/engine/flown_track.h"

#include <gtest/gtest.h>

namespace {

constexpr double degreesPerKilometre = 1000 / metersPerDegreeLatitude;

/// On the equator, where a kilometre is the same to the north and to the east.
LatLon place(double northKm, double eastKm) {
    return {northKm * degreesPerKilometre, eastKm * degreesPerKilometre};
}

TEST(FlownTrack, aPositionOnTheTrackIsNotBesideIt) {
    CrossTrack track({{place(0, 0), 0}, {place(1, 0), 20}, {place(2, 1), 40}}, 60);
    EXPECT_NEAR(track.metres(place(0.5, 0), 10), 0, 0.01);
    EXPECT_NEAR(track.metres(place(1.5, 0.5), 30), 0, 0.01);
    EXPECT_NEAR(track.metres(place(0.5, 0.3), 30), 300, 0.01);
}

TEST(FlownTrack, beyondItsEndsTheDistanceToTheEndCounts) {
    CrossTrack track({{place(0, 0), 0}, {place(1, 0), 20}}, 60);
    EXPECT_NEAR(track.metres(place(-0.4, 0.3), 0), 500, 0.01);
    EXPECT_NEAR(track.metres(place(1.4, 0.3), 300), 500, 0.01);
}

TEST(FlownTrack, aPointIsATrackToo) {
    CrossTrack track({{place(0, 0), 0}}, 60);
    EXPECT_NEAR(track.metres(place(0.3, 0.4), 0), 500, 2);
}

/// A circuit that comes back to where it began, and an aircraft that is late there: what it flew earlier is not where it is.
TEST(FlownTrack, aTrackThatCrossesItselfIsFollowedOnAfterTheCrossing) {
    std::vector<TrackPoint> points;
    for (int i = 0; i <= 20; ++i) {
        points.push_back({place(i, 0), 20.0 * i});
    }
    for (int i = 1; i <= 20; ++i) {
        points.push_back({place(20 + i % 3, i), 400 + 20.0 * i}); // away from the first part,
    }
    points.push_back({place(5, -1), 1000}); // and across it
    points.push_back({place(5, -5), 1200});
    CrossTrack track(points, 60);
    for (const TrackPoint& point : points) {
        ASSERT_NEAR(track.metres(point.at, point.seconds + 30), 0, 0.01) << point.seconds;
    }
}

TEST(FlownTrack, whatIsFlownAtAnotherTimeIsNotNear) {
    CrossTrack track({{place(0, 0), 0}, {place(10, 0), 100}, {place(10, 10), 200}, {place(10, 20), 300}}, 60);
    EXPECT_NEAR(track.metres(place(0, 0), 300), 10000, 1);
}

} // namespace
