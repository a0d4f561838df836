#include "rig/report/overlap.h"

#include <gtest/gtest.h>

#include <random>

#include "tests/rig/report/flown_trace.h"

namespace rig {
namespace {

constexpr LatLon apron{52.3, 4.76};

Footprint airlinerAt(const LatLon& at, double headingDegrees = 0) {
    return {at, 0, headingDegrees * radiansPerDegree, 36};
}

TEST(Overlap, wingsThatTouchOverlapAndWingsThatDoNotDoNot) {
    const Footprint one = airlinerAt(apron);
    EXPECT_TRUE(overlap(one, airlinerAt(shifted(apron, 90, 34))));
    EXPECT_FALSE(overlap(one, airlinerAt(shifted(apron, 90, 37))));
}

TEST(Overlap, aNoseBesideAnotherOnesWingIsFree) {
    // Diagonally behind: nearer than a span, but between body and wing.
    const Footprint one = airlinerAt(apron);
    EXPECT_FALSE(overlap(one, airlinerAt(shifted(apron, 45, 28))));
    EXPECT_TRUE(overlap(one, airlinerAt(shifted(apron, 45, 20))));
}

TEST(Overlap, oneThatPassesAboveDoesNot) {
    Footprint above = airlinerAt(apron);
    above.altFeet = 50;
    EXPECT_FALSE(overlap(airlinerAt(apron), above));
    above.altFeet = 30;
    EXPECT_TRUE(overlap(airlinerAt(apron), above));
}

TEST(Overlap, ofManyTheSearchFindsWhatComparingEachWithEachFinds) {
    std::mt19937 random(11);
    std::uniform_real_distribution<double> metres(0, 1200);
    std::uniform_real_distribution<double> degrees(0, 360);
    std::uniform_real_distribution<double> spans(10, 80);
    OverlapSearch search;
    for (const LatLon& place : {apron, LatLon{-70, 179.999}, LatLon{0, 0}}) {
        std::vector<Footprint> all;
        for (int i = 0; i < 300; ++i) {
            Footprint one = airlinerAt(shifted(shifted(place, 90, metres(random)), 0, metres(random)), degrees(random));
            one.spanMetres = spans(random);
            all.push_back(one);
        }
        std::size_t expected = 0;
        for (std::size_t a = 0; a < all.size(); ++a) {
            for (std::size_t b = a + 1; b < all.size(); ++b) {
                // Those on either side of the date line are not looked for.
                expected += std::abs(all[a].at.lon - all[b].at.lon) < 180 && overlap(all[a], all[b]) ? 1 : 0;
            }
        }
        EXPECT_GT(expected, 20u);
        EXPECT_EQ(search.pairs(all).size(), expected);
    }
}

} // namespace
} // namespace rig
