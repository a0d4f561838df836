#include "rig/report/cross_track.h"

#include <gtest/gtest.h>

#include "tests/rig/report/flown_trace.h"

namespace rig {
namespace {

std::vector<LatLon> eastward() {
    std::vector<LatLon> points;
    points.reserve(100);
    for (int i = 0; i < 100; ++i) {
        points.push_back(placeAt(i));
    }
    return points;
}

TEST(CrossTrack, tellsHowFarBesideAndWhereAlong) {
    CrossTrack track(eastward());
    const NearestOnLine nearest = track.nearest(shifted(placeAt(50.25), 180, 10));
    EXPECT_NEAR(nearest.metres, 10, 0.1);
    EXPECT_NEAR(static_cast<double>(nearest.leg) + nearest.share, 50.25, 0.01);
    EXPECT_FALSE(nearest.isBeyondEnd);
}

TEST(CrossTrack, knowsWhatLiesBeyondItsEnds) {
    CrossTrack before(eastward());
    EXPECT_TRUE(before.nearest(placeAt(-1)).isBeyondEnd);
    CrossTrack behind(eastward());
    EXPECT_TRUE(behind.nearest(placeAt(100)).isBeyondEnd);
}

TEST(CrossTrack, whereALineCrossesItselfItStaysOnItsWay) {
    // North, and back over the same places a hundred seconds later, 30 m beside.
    std::vector<LatLon> points;
    points.reserve(100);
    for (int i = 0; i < 50; ++i) {
        points.push_back(shifted({52, 4}, 0, 100.0 * i));
    }
    for (int i = 49; i >= 0; --i) {
        points.push_back(shifted(shifted({52, 4}, 0, 100.0 * i), 90, 30));
    }
    CrossTrack track(points);
    track.lookNear(75);
    EXPECT_NEAR(track.metres(shifted({52, 4}, 0, 2400)), 30, 0.5);
}

TEST(CrossTrack, goesOverTheDateLine) {
    CrossTrack track({{10, 179.99}, {10, -179.99}});
    EXPECT_NEAR(track.metres({10.001, 180}), 111.1, 0.5);
}

} // namespace
} // namespace rig
