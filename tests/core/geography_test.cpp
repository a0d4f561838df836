// tests/core/geography_test.cpp
#include "core/geography.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <numbers>
#include <ostream>
#include <random>

void PrintTo(const LatLon& position, std::ostream* out) {
    *out << '(' << position.lat << ", " << position.lon << ')';
}

namespace {

constexpr double pi = std::numbers::pi;
constexpr double halfCircumferenceNm = 10800;
constexpr LatLon northPole{90, 0};
constexpr LatLon southPole{-90, 0};
constexpr LatLon schiphol{52.308056, 4.764167};
constexpr LatLon kennedy{40.639722, -73.778889};

/// Random positions, evenly over the sphere, and numbers; the same ones in every run.
class Random {
public:
    double between(double low, double high) { return std::uniform_real_distribution(low, high)(engine_); }

    LatLon position() { return {std::asin(between(-1, 1)) * degreesPerRadian, between(-180, 180)}; }

    LatLon positionAwayFromPoles() { return {between(-85, 85), between(-180, 180)}; }

private:
    std::mt19937_64 engine_{20221028};
};

constexpr int rounds = 20'000;

/// Close to opposite points the haversine rule keeps half of its digits.
constexpr double nearOppositePointsNm = 2e-4;

double angleBetween(double a, double b) {
    return std::abs(std::remainder(a - b, twoPi));
}

double feetBetween(const LatLon& a, const LatLon& b) {
    return greatCircleNm(a, b) * feetPerNm;
}

} // namespace

TEST(Geography, theConstantsBelongTogether) {
    EXPECT_DOUBLE_EQ(radiansPerDegree * degreesPerRadian, 1);
    EXPECT_DOUBLE_EQ(radiansPerDegree * 360, twoPi);
    EXPECT_NEAR(1 / centralAnglePerFoot, earthDiameterNm / 2 * feetPerNm, 1e-6);
    EXPECT_DOUBLE_EQ(nmPerMeter, 1 / metersPerNm);
}

TEST(GreatCircle, aDegreeOfTheMeridianOrOfTheEquatorIs60Miles) {
    EXPECT_NEAR(greatCircleNm({0, 0}, {1, 0}), 60, 1e-9);
    EXPECT_NEAR(greatCircleNm({50, 8}, {51, 8}), 60, 1e-9);
    EXPECT_NEAR(greatCircleNm({0, 10}, {0, 11}), 60, 1e-9);
}

TEST(GreatCircle, aKnownLongDistanceIsRight) {
    EXPECT_NEAR(greatCircleNm(schiphol, kennedy), 3156, 2);
}

TEST(GreatCircle, theDistanceToThePlaceItselfIsZero) {
    EXPECT_EQ(greatCircleNm(schiphol, schiphol), 0);
    EXPECT_EQ(greatCircleNm(northPole, northPole), 0);
    EXPECT_NEAR(greatCircleNm(northPole, {90, 123}), 0, 1e-9);
    EXPECT_NEAR(greatCircleNm({10, 180}, {10, -180}), 0, 1e-9);
}

TEST(GreatCircle, theWayAcrossTheAntimeridianIsTheShortOne) {
    EXPECT_NEAR(greatCircleNm({0, 179.5}, {0, -179.5}), 60, 1e-9);
}

TEST(GreatCircle, oppositePointsAreHalfTheCircumferenceApart) {
    EXPECT_NEAR(greatCircleNm(northPole, southPole), halfCircumferenceNm, 1e-9);
    Random random;
    for (int i = 0; i < rounds; ++i) {
        const LatLon a = random.position();
        EXPECT_NEAR(greatCircleNm(a, {-a.lat, a.lon + 180}), halfCircumferenceNm, nearOppositePointsNm)
            << a.lat << ", " << a.lon;
    }
}

TEST(GreatCircle, isSymmetricAndWithinItsBounds) {
    Random random;
    for (int i = 0; i < rounds; ++i) {
        const LatLon a = random.position();
        const LatLon b = random.position();
        const double distance = greatCircleNm(a, b);
        EXPECT_DOUBLE_EQ(distance, greatCircleNm(b, a));
        EXPECT_GE(distance, 0);
        EXPECT_LE(distance, halfCircumferenceNm + 1e-9);
    }
}

TEST(GreatCircle, noDetourIsShorter) {
    Random random;
    for (int i = 0; i < rounds; ++i) {
        const LatLon a = random.position();
        const LatLon b = random.position();
        const LatLon c = random.position();
        EXPECT_LE(greatCircleNm(a, c), greatCircleNm(a, b) + greatCircleNm(b, c) + nearOppositePointsNm);
    }
}

TEST(Bearing, theFourDirectionsFromTheEquator) {
    EXPECT_DOUBLE_EQ(bearing({0, 0}, {1, 0}), 0);
    EXPECT_DOUBLE_EQ(bearing({0, 0}, {0, 1}), pi / 2);
    EXPECT_DOUBLE_EQ(bearing({0, 0}, {-1, 0}), pi);
    EXPECT_DOUBLE_EQ(bearing({0, 0}, {0, -1}), 3 * pi / 2);
}

TEST(Bearing, isTheInitialOneOfTheGreatCircle) {
    EXPECT_NEAR(bearing(schiphol, kennedy) * degreesPerRadian, 290.5, 0.5);
    EXPECT_NEAR(bearing(kennedy, schiphol) * degreesPerRadian, 48.5, 0.5);
}

TEST(Bearing, goesTheShortWayAcrossTheAntimeridian) {
    EXPECT_DOUBLE_EQ(bearing({0, 179.5}, {0, -179.5}), pi / 2);
    EXPECT_DOUBLE_EQ(bearing({0, -179.5}, {0, 179.5}), 3 * pi / 2);
}

TEST(Bearing, toAPoleIsNorthOrSouthFromEverywhere) {
    Random random;
    for (int i = 0; i < rounds; ++i) {
        const LatLon a = random.positionAwayFromPoles();
        EXPECT_LT(angleBetween(bearing(a, northPole), 0), 1e-9);
        EXPECT_LT(angleBetween(bearing(a, southPole), pi), 1e-9);
    }
}

TEST(Bearing, aHairLeftOfNorthIsNorth) {
    EXPECT_EQ(bearing({0, 0}, {1, -1e-15}), 0);
    EXPECT_EQ(bearing({0, 0}, {50, -1e-20}), 0);
}

TEST(Bearing, toThePlaceItselfIsNorth) {
    EXPECT_EQ(bearing(schiphol, schiphol), 0);
}

TEST(Bearing, isNeverNegativeAndAlwaysBelowAFullTurn) {
    Random random;
    for (int i = 0; i < rounds; ++i) {
        const LatLon a = random.position();
        const LatLon b = random.position();
        for (const LatLon& to : {b, LatLon{b.lat, a.lon}, LatLon{b.lat, std::nextafter(a.lon, -200)}, northPole}) {
            const double heading = bearing(a, to);
            EXPECT_GE(heading, 0);
            EXPECT_LE(heading, largestHeadingRad);
        }
    }
}

TEST(Bearing, awayAndBackAlongAMeridianAreOpposite) {
    Random random;
    for (int i = 0; i < rounds; ++i) {
        const LatLon south{random.between(-89, 0), random.between(-180, 180)};
        const LatLon north{random.between(1, 89), south.lon};
        EXPECT_LT(angleBetween(bearing(south, north), 0), 1e-9);
        EXPECT_LT(angleBetween(bearing(north, south), pi), 1e-9);
    }
}

TEST(Project, theFourDirectionsByOneDegree) {
    const double feet = 60 * feetPerNm;
    const auto expectNear = [](const LatLon& actual, const LatLon& expected) {
        EXPECT_NEAR(actual.lat, expected.lat, 1e-9);
        EXPECT_NEAR(actual.lon, expected.lon, 1e-9);
    };
    expectNear(project({50, 8}, 0, feet), {51, 8});
    expectNear(project({50, 8}, pi, feet), {49, 8});
    expectNear(project({0, 8}, pi / 2, feet), {0, 9});
    expectNear(project({0, 8}, 3 * pi / 2, feet), {0, 7});
}

TEST(Project, noDistanceLeadsNowhere) {
    const LatLon there = project(schiphol, 1.5, 0);
    EXPECT_NEAR(there.lat, schiphol.lat, 1e-12);
    EXPECT_NEAR(there.lon, schiphol.lon, 1e-12);
}

TEST(Project, distanceAndBearingOfTheDestinationAreThoseThatWereAskedFor) {
    Random random;
    for (int i = 0; i < rounds; ++i) {
        const LatLon a = random.positionAwayFromPoles();
        const double heading = random.between(0, twoPi);
        const double feet = std::exp(random.between(std::log(100.0), std::log(4000 * feetPerNm)));

        const LatLon b = project(a, heading, feet);

        EXPECT_NEAR(feetBetween(a, b), feet, 1e-6 + feet * 1e-9) << testing::PrintToString(a);
        EXPECT_LT(angleBetween(bearing(a, b), heading), 1e-7) << testing::PrintToString(a) << " by " << feet;
    }
}

TEST(Project, distanceAndBearingOfAnotherPlaceLeadThere) {
    Random random;
    for (int i = 0; i < rounds; ++i) {
        const LatLon a = random.position();
        const LatLon b = random.position();
        if (greatCircleNm(a, b) > halfCircumferenceNm - 60) {
            continue; // every bearing leads to the opposite point
        }
        EXPECT_LT(feetBetween(project(a, bearing(a, b), feetBetween(a, b)), b), 0.01)
            << testing::PrintToString(a) << " to " << testing::PrintToString(b);
    }
}

TEST(Project, oneSlotOfSlowTaxiingIsNotLostInRounding) {
    const double feet = 0.05;
    EXPECT_NEAR(feetBetween(schiphol, project(schiphol, 1, feet)), feet, 1e-7);
}

TEST(Project, acrossTheAntimeridianTheLongitudeChangesItsSign) {
    const double feet = 12 * feetPerNm;
    EXPECT_NEAR(project({0, 179.9}, pi / 2, feet).lon, -179.9, 1e-9);
    EXPECT_NEAR(project({0, -179.9}, 3 * pi / 2, feet).lon, 179.9, 1e-9);
}

TEST(Project, overAPoleTheWayGoesOnDownTheOtherSide) {
    const LatLon beyondNorth = project({89.9, 20}, 0, 12 * feetPerNm);
    EXPECT_NEAR(beyondNorth.lat, 89.9, 1e-9);
    EXPECT_NEAR(beyondNorth.lon, -160, 1e-6);
    const LatLon beyondSouth = project({-89.9, -20}, pi, 12 * feetPerNm);
    EXPECT_NEAR(beyondSouth.lat, -89.9, 1e-9);
    EXPECT_NEAR(beyondSouth.lon, 160, 1e-6);
}

TEST(Project, fromAPoleTheDistanceIsRightWhateverTheHeading) {
    Random random;
    for (int i = 0; i < rounds; ++i) {
        const double heading = random.between(0, twoPi);
        EXPECT_NEAR(project(northPole, heading, 600 * feetPerNm).lat, 80, 1e-9);
        EXPECT_NEAR(project(southPole, heading, 600 * feetPerNm).lat, -80, 1e-9);
    }
}

TEST(Project, staysWithinTheRangesOfLatitudeAndLongitude) {
    Random random;
    for (int i = 0; i < rounds; ++i) {
        const LatLon a = random.position();
        for (const LatLon& from : {a, northPole, southPole, LatLon{a.lat, 180}, LatLon{a.lat, -180}}) {
            const LatLon to = project(from, random.between(0, twoPi), random.between(0, 25000 * feetPerNm));
            EXPECT_LE(std::abs(to.lat), 90);
            EXPECT_LE(std::abs(to.lon), 180);
        }
    }
}
