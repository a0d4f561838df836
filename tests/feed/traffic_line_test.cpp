// tests/feed/traffic_line_test.cpp
#include "feed/traffic_line.h"

#include <algorithm>
#include <cmath>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <random>
#include <stdexcept>
#include <string>
#include <vector>

namespace {

using testing::ElementsAre;

std::vector<std::string_view> split(std::string_view line) {
    std::vector<std::string_view> fields{"left over"};
    splitTrafficLine(line, fields);
    return fields;
}

TEST(TrafficLine, isSplitAtEachCommaAndEmptyFieldsCount) {
    EXPECT_THAT(split("a,,bc,"), ElementsAre("a", "", "bc", ""));
    EXPECT_THAT(split(","), ElementsAre("", ""));
    EXPECT_THAT(split("no comma"), ElementsAre("no comma"));
    EXPECT_THAT(split(""), ElementsAre(""));
}

TEST(TrafficLine, isSplitNoFurtherThanItIsRead) {
    std::string line = "0";
    for (int i = 1; i < 60; ++i) {
        line += "," + std::to_string(i);
    }
    const std::vector<std::string_view> fields = split(line);
    ASSERT_EQ(fields.size(), traffic_field::count);
    for (std::size_t i = 0; i < fields.size(); ++i) {
        EXPECT_EQ(fields[i], std::to_string(i));
    }
}

TEST(TrafficLine, theLastFieldReachesToTheEndOfTheLine) {
    EXPECT_EQ(split(std::string(28, ',') + "A3").back(), "A3");
    EXPECT_EQ(split(std::string(28, ',') + "A3,rest").back(), "A3");
}

TEST(TrafficLine, theIdentityIsTheDigitsUpToTheFirstOtherCharacter) {
    EXPECT_EQ(hexidFrom("4739591"), 4739591u);
    EXPECT_EQ(hexidFrom("12345ABC"), 12345u);
    EXPECT_EQ(hexidFrom("0x4851F7"), 0u);
    EXPECT_EQ(hexidFrom("4294967295"), 4294967295u);
}

TEST(TrafficLine, anIdentityWithoutDigitsOrBeyond32BitsIsNone) {
    for (const char* field : {"", "null", "ABC", "-5", "+5", " 5", "4294967296", "99999999999999999999"}) {
        EXPECT_FALSE(hexidFrom(field).has_value()) << field;
    }
}

TEST(TrafficLine, nullIsNoText) {
    EXPECT_EQ(textFrom("null"), "");
    EXPECT_EQ(textFrom("NULL"), "NULL");
    EXPECT_EQ(textFrom(""), "");
    EXPECT_EQ(textFrom("AMS"), "AMS");
}

TEST(TrafficLine, aTypeThatIsNotKnownIsEmpty) {
    for (const char* field : {"null", "0", "ZZZZ", ""}) {
        EXPECT_EQ(typeFrom(field), "") << field;
    }
    EXPECT_EQ(typeFrom("B738"), "B738");
    EXPECT_EQ(typeFrom("00"), "00");
}

TEST(TrafficLine, aPositionIsPlausibleOnTheGlobeButNotAtZero) {
    EXPECT_TRUE(isPlausible({90, 180}));
    EXPECT_TRUE(isPlausible({-90, -180}));
    EXPECT_TRUE(isPlausible({0.00011, 0.0001}));
    EXPECT_TRUE(isPlausible({0.0001, -0.00011}));
    EXPECT_FALSE(isPlausible({0.0001, -0.0001}));
    EXPECT_FALSE(isPlausible({0, 0}));
    EXPECT_FALSE(isPlausible({90.000001, 0}));
    EXPECT_FALSE(isPlausible({-90.000001, 0}));
    EXPECT_FALSE(isPlausible({50, 180.000001}));
    EXPECT_FALSE(isPlausible({50, -180.000001}));
}

TEST(TrafficLine, rangeIsJudgedAsTheGreatCircleSays) {
    std::mt19937_64 random(3);
    std::uniform_real_distribution<double> lat(-90, 90);
    std::uniform_real_distribution<double> lon(-180, 180);
    std::uniform_real_distribution<double> nearby(-3, 3);
    int farther = 0;
    for (int round = 0; round < 200000; ++round) {
        const LatLon a{lat(random), lon(random)};
        const bool isNearby = round % 2 == 0;
        const LatLon b = isNearby ? LatLon{std::clamp(a.lat + nearby(random), -90.0, 90.0), a.lon + nearby(random)}
                                  : LatLon{lat(random), lon(random)};
        const double nm = isNearby ? 60 : 5000;
        ASSERT_EQ(isFartherThan(a, b, nm), greatCircleNm(a, b) > nm)
            << a.lat << "," << a.lon << " " << b.lat << "," << b.lon;
        farther += isFartherThan(a, b, nm) ? 1 : 0;
    }
    EXPECT_GT(farther, 50000);
    EXPECT_LT(farther, 150000);
}

TEST(TrafficLine, rangeIsJudgedAsTheGreatCircleSaysAtItsVeryEdge) {
    std::mt19937_64 random(4);
    std::uniform_real_distribution<double> lat(-80, 80);
    std::uniform_real_distribution<double> offset(-0.005, 0.005);
    for (int round = 0; round < 100000; ++round) {
        const LatLon a{lat(random), 4.76};
        const LatLon b{a.lat + (40 + offset(random)) / 60, a.lon};
        ASSERT_EQ(isFartherThan(a, b, 40), greatCircleNm(a, b) > 40) << a.lat << " " << b.lat;
    }
}

TEST(TrafficLine, rangeIsJudgedBetweenOppositePoints) {
    EXPECT_TRUE(isFartherThan({52.31, 4.76}, {-52.31, -175.24}, 100));
    EXPECT_TRUE(isFartherThan({0.001, 0}, {-0.001, 180}, 100));
}

TEST(TrafficLine, anEmptyTypeIsNotWantedWhateverTheCategory) {
    EXPECT_FALSE(isWantedKind("", "A3"));
    EXPECT_FALSE(isWantedKind("", ""));
    EXPECT_FALSE(isWantedKind("", "null"));
}

TEST(TrafficLine, theUnwantedCategories) {
    for (const char* category : {"B1", "B2", "B4", "C1", "C2"}) {
        EXPECT_FALSE(isWantedKind("B738", category)) << category;
    }
    for (const char* category : {"A0", "A1", "A2", "A3", "A4", "A5", "A6", "A7", "B0", "B3", "B5", "B6", "B7", "C0",
                                 "C3", "C4", "C5", "D0", "b1"}) {
        EXPECT_TRUE(isWantedKind("B738", category)) << category;
    }
}

TEST(TrafficLine, theUnwantedTypesCountOnlyWithACategory) {
    for (const char* type :
         {"BALL", "EMER", "GLID", "GRND", "GND", "PARA", "SERV", "SHIP", "VENT", "AIRBUS", "B738W"}) {
        EXPECT_FALSE(isWantedKind(type, "A3")) << type;
        EXPECT_TRUE(isWantedKind(type, "")) << type;
        EXPECT_TRUE(isWantedKind(type, "null")) << type;
    }
    EXPECT_TRUE(isWantedKind("GLI", "A3"));
    EXPECT_TRUE(isWantedKind("ball", "A3"));
}

TEST(TrafficLine, trueHeadingsInRadians) {
    EXPECT_EQ(headingRadFrom(0), 6.283185307179586);
    EXPECT_EQ(headingRadFrom(90), 90 * 0.017453292519943295);
    EXPECT_EQ(headingRadFrom(360), 360 * 0.017453292519943295);
    EXPECT_EQ(headingRadFrom(0.01), 0.01 * 0.017453292519943295);
    EXPECT_FALSE(headingRadFrom(-1).has_value());
    EXPECT_FALSE(headingRadFrom(-0.001).has_value());
}

TEST(TrafficLine, aTrueHeadingAbove360IsAnError) {
    try {
        headingRadFrom(360.126);
        FAIL() << "no exception";
    } catch (const std::runtime_error& error) {
        EXPECT_STREQ(error.what(), "trueheading: 360.13");
    }
}

struct GroundCase {
    double altitudeFt;
    double gsKnots;
    double referenceFt;
    double expectedFt;
};

TEST(TrafficLine, lowAndSlowIsOnTheGround) {
    const std::vector<GroundCase> cases{
        {0, 200, -1000, 0},         {-50, 200, -1000, 0},   {1, 200, -1000, 1},      {100, 200, 100, 0},
        {99, 200, 100, 0},          {101, 121, 100, 101},   {142, 120, 100, 0},      {142, 120.1, 100, 142},
        {142.1, 120, 100, 142.1},   {184, 80, 100, 0},      {184, 80.1, 100, 184},   {184.1, 80, 100, 184.1},
        {208, 43, 100, 0},          {208, 43.1, 100, 208},  {208.1, 43, 100, 208.1}, {5000, 35, 100, 0},
        {5000, 35.1, 100, 5000},    {13999, 100, 13999, 0}, {13999, 300, 15000, 0},  {14000, 100, 13999, 14000},
        {14000, 300, 15000, 14000}, {14000, 35, 0, 0},      {41000, 35, 0, 0},       {41000, 35.1, 0, 41000},
    };
    for (const GroundCase& c : cases) {
        EXPECT_EQ(altitudeOrGround(c.altitudeFt, c.gsKnots, c.referenceFt), c.expectedFt)
            << c.altitudeFt << " ft, " << c.gsKnots << " kt, reference " << c.referenceFt;
    }
}

/// The rule step by step as it was drawn up, with its intermediate values.
double altitudeByTheBook(double value, double gs, double reference) {
    double alt = value;
    if (value <= 0) {
        return 0;
    }
    if (value < 14000) {
        const double h = value - reference;
        if (h <= 0) {
            alt = 0;
        } else if ((std::abs(h) <= 42 && gs <= 120) || (std::abs(h) <= 84 && gs <= 80) ||
                   (std::abs(h) <= 108 && gs <= 43)) {
            alt = 0;
        }
    }
    if (gs <= 35 && alt > 0) {
        alt = 0;
    }
    return alt;
}

TEST(TrafficLine, theGroundRuleHoldsForEveryAltitudeSpeedAndReference) {
    std::mt19937_64 random(5);
    std::uniform_real_distribution<double> reference(-1000, 14500);
    std::uniform_real_distribution<double> above(-200, 300);
    std::uniform_real_distribution<double> gs(-10, 160);
    for (int round = 0; round < 200000; ++round) {
        const double referenceFt = std::round(reference(random));
        const double altitudeFt = referenceFt + std::round(above(random));
        const double knots = std::round(gs(random));
        ASSERT_EQ(altitudeOrGround(altitudeFt, knots, referenceFt), altitudeByTheBook(altitudeFt, knots, referenceFt))
            << altitudeFt << " ft, " << knots << " kt, reference " << referenceFt;
    }
}

TEST(TrafficLine, theUsualAirspeedsByAltitude) {
    const std::vector<std::pair<double, double>> rows{
        {0, 180},       {2000, 180},  {2000.1, 220},  {5000, 220},  {5000.1, 250}, {10000, 250},
        {10000.1, 350}, {20000, 350}, {20000.1, 430}, {45000, 430}, {1e300, 430},
    };
    for (const auto& [altitudeFt, tasKnots] : rows) {
        EXPECT_EQ(usualTas(altitudeFt), tasKnots) << altitudeFt;
    }
}

} // namespace
