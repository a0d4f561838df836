#include "liveries/aircraft_types.h"

#include <gtest/gtest.h>

#include <cmath>

namespace {

class AircraftTypes : public testing::Test {
protected:
    AircraftTypes() { resetAircraftTypes(); }
    ~AircraftTypes() override { resetAircraftTypes(); }
};

TEST_F(AircraftTypes, eachSetGivesItsCategory) {
    gCategoryTypes.large = {"A320"};
    gCategoryTypes.heavy = {"A388"};
    gCategoryTypes.buzjet = {"C56X"};
    gCategoryTypes.rotorcraft = {"EC35"};
    gCategoryTypes.highPerformance = {"F16"};
    EXPECT_EQ(gf_categoryOfType("A320"), AircraftCategory::Large);
    EXPECT_EQ(gf_categoryOfType("A388"), AircraftCategory::Heavy);
    EXPECT_EQ(gf_categoryOfType("C56X"), AircraftCategory::Buzjets);
    EXPECT_EQ(gf_categoryOfType("EC35"), AircraftCategory::Rotorcraft);
    EXPECT_EQ(gf_categoryOfType("F16"), AircraftCategory::HighPerf);
}

TEST_F(AircraftTypes, aTypeInNoSetIsLight) {
    gCategoryTypes.large = {"A320"};
    EXPECT_EQ(gf_categoryOfType("C172"), AircraftCategory::Light);
    EXPECT_EQ(gf_categoryOfType(""), AircraftCategory::Light);
    EXPECT_EQ(gf_categoryOfType("a320"), AircraftCategory::Light);
}

TEST_F(AircraftTypes, ofSeveralSetsTheFirstInTheFixedOrderCounts) {
    gCategoryTypes.highPerformance = {"A", "B", "C", "D", "E"};
    gCategoryTypes.rotorcraft = {"A", "B", "C", "D"};
    gCategoryTypes.buzjet = {"A", "B", "C"};
    gCategoryTypes.heavy = {"A", "B"};
    gCategoryTypes.large = {"A"};
    EXPECT_EQ(gf_categoryOfType("A"), AircraftCategory::Large);
    EXPECT_EQ(gf_categoryOfType("B"), AircraftCategory::Heavy);
    EXPECT_EQ(gf_categoryOfType("C"), AircraftCategory::Buzjets);
    EXPECT_EQ(gf_categoryOfType("D"), AircraftCategory::Rotorcraft);
    EXPECT_EQ(gf_categoryOfType("E"), AircraftCategory::HighPerf);
}

TEST_F(AircraftTypes, aKnownWingSpanIsTheTypesOwn) {
    gHalfWingspans = {{"A320", 0.0097}};
    gAverageHalfWingspans.fill(0.02);
    EXPECT_EQ(gf_wingspanOfType("A320"), 0.0097);
}

TEST_F(AircraftTypes, anUnknownWingSpanIsTheAverageOfTheCategory) {
    gCategoryTypes.heavy = {"B744"};
    gAverageHalfWingspans = {0.003, 0.005, 0.01, 0.017, 0.004, 0.006};
    EXPECT_EQ(gf_wingspanOfType("B744"), 0.017);
    EXPECT_EQ(gf_wingspanOfType("C172"), 0.003);
}

TEST_F(AircraftTypes, aCategoryWithoutSpansHasNoAverage) {
    EXPECT_TRUE(std::isnan(gf_wingspanOfType("C172")));
}

TEST_F(AircraftTypes, nothingIsKnownAfterAReset) {
    gCategoryTypes.large = {"A320"};
    gHalfWingspans = {{"A320", 0.0097}};
    MaxHalfWingspan = 0.0097;
    gAverageHalfWingspans.fill(0.0097);
    resetAircraftTypes();
    EXPECT_EQ(gf_categoryOfType("A320"), AircraftCategory::Light);
    EXPECT_TRUE(std::isnan(gf_wingspanOfType("A320")));
    EXPECT_EQ(MaxHalfWingspan, 0);
}

} // namespace
