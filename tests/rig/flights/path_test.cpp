// tests/rig/flights/path_test.cpp
#include "rig/flights/path.h"

#include <cmath>
#include <gtest/gtest.h>
#include <numbers>

#include "rig/traffic/chance.h"

namespace rig {
namespace {

constexpr double pi = std::numbers::pi;

TEST(Path, aStraightLineIsAsLongAsItsPointsAreApart) {
    const Path path({{0, 0}, {300, 400}}, 50);
    EXPECT_DOUBLE_EQ(path.length(), 500);
    EXPECT_NEAR(path.at(250).at.x, 150, 1e-9);
    EXPECT_NEAR(path.at(250).at.y, 200, 1e-9);
    EXPECT_NEAR(path.at(250).direction, std::atan2(3, 4), 1e-12);
}

TEST(Path, aCornerIsRoundedWithItsRadius) {
    const Path path({{0, 0}, {0, 100}, {100, 100}}, 30);
    EXPECT_NEAR(path.length(), 200 - 60 + 30 * pi / 2, 1e-9);
    const PathPlace middle = path.at(70 + 30 * pi / 4);
    EXPECT_NEAR(middle.curvature, 1.0 / 30, 1e-12) << "to the right";
    EXPECT_NEAR(middle.direction, pi / 4, 1e-9);
    EXPECT_NEAR(middle.at.x, 30 - 30 * std::sqrt(0.5), 1e-9);
    EXPECT_NEAR(path.at(path.length()).at.x, 100, 1e-9);
}

TEST(Path, aCornerToTheLeftHasNegativeCurvature) {
    const Path path({{0, 0}, {0, 100}, {-100, 100}}, 30);
    EXPECT_LT(path.at(path.length() / 2).curvature, 0);
}

TEST(Path, whereTheLinesAreTooShortTheCornerIsTighter) {
    const Path path({{0, 0}, {0, 20}, {100, 20}}, 30);
    EXPECT_NEAR(path.at(10 + 5).curvature, 1.0 / 10, 1e-9);
}

TEST(Path, onePointHasADirectionAndNoLength) {
    const Path path({{3, 4}, {3, 4}}, 10, 1.5);
    EXPECT_EQ(path.length(), 0);
    EXPECT_EQ(path.at(7).at.x, 3);
    EXPECT_EQ(path.at(7).direction, 1.5);
}

TEST(Path, beyondItsEndsItIsItsEnd) {
    const Path path({{0, 0}, {0, 100}}, 10);
    EXPECT_EQ(path.at(-5).at.y, 0);
    EXPECT_EQ(path.at(105).at.y, 100);
}

TEST(Path, whateverThePointsPositionAndDirectionNeverJump) {
    Chance chance(11);
    for (int round = 0; round < 100; ++round) {
        std::vector<PlanePoint> points;
        for (int i = 0; i < 6; ++i) {
            points.push_back({chance.between(-1000, 1000), chance.between(-1000, 1000)});
        }
        const Path path(points, chance.between(1, 200));
        constexpr double step = 0.25;
        PathPlace former = path.at(0);
        EXPECT_NEAR(distanceBetween(former.at, points.front()), 0, 1e-6);
        for (double along = step; along < path.length(); along += step) {
            const PathPlace now = path.at(along);
            ASSERT_LE(distanceBetween(former.at, now.at), step + 1e-6) << round << " at " << along;
            const double most = step * std::max(std::abs(former.curvature), std::abs(now.curvature));
            ASSERT_LE(std::abs(now.direction - former.direction), most + 1e-6) << round << " at " << along;
            former = now;
        }
        EXPECT_NEAR(distanceBetween(path.at(path.length()).at, points.back()), 0, 1e-6);
    }
}

} // namespace
} // namespace rig
