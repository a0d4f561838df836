#include "engine/aircraft_category.h"

#include <gtest/gtest.h>

#include <array>
#include <stdexcept>

namespace {

constexpr std::array categories{AircraftCategory::Light, AircraftCategory::Buzjets,  AircraftCategory::Large,
                                AircraftCategory::Heavy, AircraftCategory::HighPerf, AircraftCategory::Rotorcraft};

/// One row of the table: the value that `of` picks, for each category in order.
template <typename Pick>
std::array<double, 6> row(Pick of) {
    std::array<double, 6> values{};
    for (std::size_t i = 0; i < categories.size(); ++i) {
        values.at(i) = of(limitsOf(categories.at(i)));
    }
    return values;
}

using Row = std::array<double, 6>;

TEST(AircraftCategory, namesAreInTheOrderOfTheirNumbers) {
    const std::array names{"Light", "Buzjets", "Large", "Heavy", "HighPerf", "Rotorcraft"};
    for (std::size_t i = 0; i < names.size(); ++i) {
        EXPECT_EQ(static_cast<std::size_t>(categories.at(i)), i);
        EXPECT_EQ(printedName(categories.at(i)), names.at(i));
    }
}

TEST(AircraftCategory, aValueOutsideTheTableIsOutOfRange) {
    for (const int value : {-1, 6, 1000}) {
        try {
            printedName(static_cast<AircraftCategory>(value));
            FAIL() << value;
        } catch (const std::out_of_range& exception) {
            EXPECT_STREQ(exception.what(), "invalid unordered_map<K, T> key");
        }
        EXPECT_THROW(limitsOf(static_cast<AircraftCategory>(value)), std::out_of_range);
    }
}

TEST(AircraftCategory, theTableOfLimits) {
    EXPECT_EQ(row([](const auto& l) { return l.flareSlots; }), (Row{250, 300, 400, 450, 150, 100}));
    EXPECT_EQ(row([](const auto& l) { return l.rolloutSlots; }), (Row{250, 300, 350, 450, 150, 100}));
    EXPECT_EQ(row([](const auto& l) { return l.rotateSlots; }), (Row{100, 200, 200, 250, 100, 100}));
    EXPECT_EQ(row([](const auto& l) { return l.climbPitchSlots; }), (Row{200, 250, 300, 400, 200, 100}));
    EXPECT_EQ(row([](const auto& l) { return l.rotatePitchDeg; }), (Row{-9, -8, -6, -5, -6, -20}));
    EXPECT_EQ(row([](const auto& l) { return l.climbPitchDeg; }), (Row{-15, -18, -16.5, -12.5, -20, -30}));
    EXPECT_EQ(row([](const auto& l) { return l.baseTurnRateDeg; }), (Row{0.15, 0.10, 0.07, 0.05, 0.10, 0.20}));
    EXPECT_EQ(row([](const auto& l) { return l.maxClimbPerSlotFeet; }), (Row{0.5, 0.75, 0.6, 0.5, 1.0, 0.75}));
    EXPECT_EQ(row([](const auto& l) { return l.parkTaxiSpeedKnots; }), (Row{5, 4.5, 4, 3, 4.5, 5}));
    EXPECT_EQ(row([](const auto& l) { return l.maxPitchRateDeg; }), (Row{0.01, 0.0085, 0.0075, 0.005, 0.03, 0.03}));
    EXPECT_EQ(row([](const auto& l) { return l.maxBankDeg; }), (Row{40, 35, 30, 20, 90, 75}));
    EXPECT_EQ(row([](const auto& l) { return l.maxBankRateDeg; }), (Row{0.035, 0.0275, 0.02, 0.015, 0.1, 0.06}));
    EXPECT_EQ(row([](const auto& l) { return l.takeOffGateKnots; }), (Row{90, 110, 140, 150, 220, 0}));
}

} // namespace
