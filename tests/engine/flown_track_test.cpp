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

/// North, and back three kilometres to the east. The aircraft misses the way back and flies along the first part for a
/// while.
TEST(FlownTrack, anAircraftThatComesNearAnEarlierPartIsFoundOnItsTrackAgain) {
    std::vector<TrackPoint> points;
    for (int i = 0; i <= 20; ++i) {
        points.push_back({place(i, 0), 20.0 * i});
    }
    for (int i = 0; i <= 20; ++i) {
        points.push_back({place(20 - i, 3), 420 + 20.0 * i});
    }
    CrossTrack track(points, 60);
    for (int i = 0; i <= 12; ++i) {
        track.metres(place(20 - i, i == 0 ? 3 : 0.2), 420 + 20.0 * i);
    }
    for (int i = 13; i <= 20; ++i) {
        EXPECT_NEAR(track.metres(place(20 - i, 3), 420 + 20.0 * i), 0, 0.01) << i;
    }
}

TEST(FlownTrack, whatIsFlownAtAnotherTimeIsNotNear) {
    CrossTrack track({{place(0, 0), 0}, {place(10, 0), 100}, {place(10, 10), 200}, {place(10, 20), 300}}, 60);
    EXPECT_NEAR(track.metres(place(0, 0), 300), 14142, 1);
}

TEST(FlownTrack, aJumpIsMoreThanThreeTimesTheSpeedInAFrame) {
    EXPECT_FALSE(isJump(8.9, 100));
    EXPECT_TRUE(isJump(9.1, 100));
    EXPECT_TRUE(isJump(30, 250));
    EXPECT_FALSE(isJump(7.5, 250)) << "what it flies in a frame";
}

TEST(FlownTrack, whatCannotBeSeenIsNoJump) {
    EXPECT_FALSE(isJump(4.9, 0));
    EXPECT_TRUE(isJump(5.1, 0));
}

} // namespace
