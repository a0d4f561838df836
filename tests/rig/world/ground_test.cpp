#include "rig/world/ground.h"

#include <gtest/gtest.h>

using rig::Ground;

TEST(Ground, isFlatRoundAPlaceAndFlatEverywhereElse) {
    const Ground ground{-10, {{"Hill", {47.46, 8.55}, 3, 1416}}};
    EXPECT_EQ(ground.elevationFeet({47.46, 8.55}), 1416);
    EXPECT_EQ(ground.elevationFeet({47.46 + 2.9 / 60, 8.55}), 1416);
    EXPECT_EQ(ground.elevationFeet({47.46 + 3.1 / 60, 8.55}), -10);
    EXPECT_EQ(ground.elevationFeet({47.46, 8.65}), -10);
    EXPECT_EQ(ground.elevationFeet({-47.46, 8.55}), -10);
}

TEST(Ground, theFirstOfTwoOverlappingPlacesCounts) {
    const Ground ground{0, {{"Small", {50, 8}, 1, 100}, {"Large", {50, 8}, 10, 200}}};
    EXPECT_EQ(ground.elevationFeet({50, 8}), 100);
    EXPECT_EQ(ground.elevationFeet({50.1, 8}), 200);
}
