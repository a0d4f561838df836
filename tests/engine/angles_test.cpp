#include "engine/angles.h"

#include <gtest/gtest.h>

#include <cmath>
#include <numbers>
#include <random>

using std::numbers::pi;

TEST(Angles, aHeadingIsBroughtIntoOneTurn) {
    EXPECT_DOUBLE_EQ(normalizedHeading(1), 1);
    EXPECT_DOUBLE_EQ(normalizedHeading(-1), twoPi - 1);
    EXPECT_NEAR(normalizedHeading(twoPi + 1), 1, 1e-15);
    EXPECT_NEAR(normalizedHeading(1e9), std::fmod(1e9, twoPi), 1e-6);
}

TEST(Angles, aHeadingJustShortOfAFullTurnIsNorth) {
    EXPECT_EQ(normalizedHeading(largestHeadingRad), largestHeadingRad);
    EXPECT_EQ(normalizedHeading(std::nextafter(largestHeadingRad, 7)), 0);
    EXPECT_EQ(normalizedHeading(-1e-18), 0);
    EXPECT_EQ(normalizedHeading(twoPi), 0);
}

TEST(Angles, aDifferenceIsTheShorterWayRound) {
    EXPECT_NEAR(headingDifference(0.1, twoPi - 0.1), 0.2, 1e-15);
    EXPECT_NEAR(headingDifference(twoPi - 0.1, 0.1), -0.2, 1e-15);
    EXPECT_NEAR(std::abs(headingDifference(pi, 0)), pi, 1e-15);
}

TEST(Angles, anyHeadingEndsInItsRange) {
    std::mt19937 random(1);
    std::uniform_real_distribution<double> values(-1e6, 1e6);
    for (int i = 0; i < 10000; ++i) {
        const double heading = normalizedHeading(values(random));
        ASSERT_GE(heading, 0);
        ASSERT_LE(heading, largestHeadingRad);
        const double difference = headingDifference(values(random), values(random));
        ASSERT_LE(std::abs(difference), pi);
    }
}

TEST(Angles, longitudesMeetAtTheAntimeridian) {
    EXPECT_NEAR(longitudeDifference(-179.9, 179.9), 0.2, 1e-12);
    EXPECT_NEAR(longitudeDifference(179.9, -179.9), -0.2, 1e-12);
    EXPECT_TRUE(isSamePosition({10, 180}, {10, -180}));
}

TEST(Angles, twoReportsWithinAHundredMillionthDegreeAreOnePosition) {
    EXPECT_TRUE(isSamePosition({52, 4}, {52 + 0.9e-8, 4 - 0.9e-8}));
    EXPECT_FALSE(isSamePosition({52, 4}, {52 + 1.1e-8, 4}));
    EXPECT_FALSE(isSamePosition({52, 4}, {52, 4 + 1.1e-8}));
}
