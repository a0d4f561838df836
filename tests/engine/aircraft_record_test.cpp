#include "engine/aircraft_record.h"

#include <gtest/gtest.h>

#include <cmath>
#include <set>

#include "core/random.h"
#include "engine/live_aircraft.h"

namespace {

AircraftRecord flight() {
    AircraftRecord aircraft;
    aircraft.airline = "SWR";
    aircraft.model = "A320";
    aircraft.origin = "LSZH";
    aircraft.destination = "EGLL";
    aircraft.callsign = "SWR38";
    aircraft.registration = "HB-IJI";
    return aircraft;
}

TEST(AircraftRecord, beginsInTheBufferWithNothingSent) {
    const LiveAircraft aircraft;
    EXPECT_EQ(aircraft.phase, FlightPhase::birth);
    EXPECT_EQ(aircraft.previousPhase, FlightPhase::birth);
    EXPECT_EQ(aircraft.lifeState, LifeState::buffer);
    EXPECT_EQ(aircraft.category, AircraftCategory::Large);
    EXPECT_EQ(aircraft.throttleIndex, 5);
    EXPECT_EQ(aircraft.flapsIndex, 4);
    EXPECT_EQ(aircraft.maxEarlier, 1000);
    EXPECT_EQ(aircraft.maxLater, 1000);
    EXPECT_EQ(aircraft.groundSlots, 1);
    EXPECT_EQ(aircraft.altAboveGround, 2500);
    EXPECT_FALSE(aircraft.curve.exists());
    EXPECT_FALSE(aircraft.runwayAlt);
    EXPECT_EQ(aircraft.objectId, 0U);
    EXPECT_EQ(aircraft.standId, 0);
}

TEST(AircraftRecord, aCurveIsClearedWhole) {
    LiveAircraft aircraft;
    aircraft.curve.p1 = aircraft.curve.p2 = {1, 2};
    aircraft.curve.p3 = {3, 4};
    aircraft.curveT = 0.5;
    ASSERT_TRUE(aircraft.curve.exists());
    clearCurve(aircraft);
    EXPECT_FALSE(aircraft.curve.exists());
    for (const Offset& offset : {aircraft.curve.p1, aircraft.curve.p2, aircraft.curve.p3}) {
        EXPECT_TRUE(std::isnan(offset.northMetres) && std::isnan(offset.eastMetres));
    }
    EXPECT_EQ(aircraft.curveT, 0);
}

TEST(AircraftRecord, theAirlineComesFromACallSignOfThreeLettersAndADigit) {
    EXPECT_EQ(airlineFromCallsign("ABC123"), "ABC");
    EXPECT_EQ(airlineFromCallsign("abc1"), "ABC");
    EXPECT_EQ(airlineFromCallsign("Swr38K"), "SWR");
}

TEST(AircraftRecord, anyOtherCallSignIsPrivate) {
    for (const char* callsign : {"1234", "ab1", "", "ABC", "ABCD1", "AB12", "A1C1", "HBIJI",
                                 "\xc3\x84"
                                 "BC1"}) {
        EXPECT_EQ(airlineFromCallsign(callsign), "PVT") << callsign;
        EXPECT_EQ(airlineOfFlightNumber(callsign), "") << callsign;
    }
}

TEST(AircraftRecord, aHeightOfTheCentreOfGravityOutsideItsBoundsIsIgnored) {
    AircraftRecord aircraft;
    takeCgHeight(aircraft, 0.5);
    EXPECT_EQ(aircraft.cgHeight, 0);
    takeCgHeight(aircraft, 1);
    EXPECT_EQ(aircraft.cgHeight, 1);
    takeCgHeight(aircraft, 35);
    EXPECT_EQ(aircraft.cgHeight, 35);
    takeCgHeight(aircraft, 35.01);
    EXPECT_EQ(aircraft.cgHeight, 35);
    takeCgHeight(aircraft, std::nan(""));
    EXPECT_EQ(aircraft.cgHeight, 35);
}

TEST(AircraftRecord, aPitchOnTheGroundOutsideItsBoundsIsReplaced) {
    const auto taken = [](double degrees) {
        AircraftRecord aircraft;
        takeGroundPitch(aircraft, degrees * radiansPerDegree);
        return aircraft.groundPitch / radiansPerDegree;
    };
    EXPECT_DOUBLE_EQ(taken(3), 0.7);
    EXPECT_DOUBLE_EQ(taken(2.5), 2.5);
    EXPECT_DOUBLE_EQ(taken(-1), 0.7);
    EXPECT_DOUBLE_EQ(taken(-0.99), -0.99);
    EXPECT_DOUBLE_EQ(taken(std::nan("")), 0.7);
}

TEST(AircraftRecord, theCategoryGivesTheLimitsInRadians) {
    for (std::size_t i = 0; i < aircraftCategoryCount; ++i) {
        AircraftRecord aircraft;
        aircraft.category = static_cast<AircraftCategory>(i);
        const CategoryLimits& limits = limitsOf(aircraft.category);
        takeCategoryLimits(aircraft);
        EXPECT_EQ(aircraft.flareSlots, limits.flareSlots) << i;
        EXPECT_EQ(aircraft.rolloutSlots, limits.rolloutSlots) << i;
        EXPECT_EQ(aircraft.rotateSlots, limits.rotateSlots) << i;
        EXPECT_EQ(aircraft.climbPitchSlots, limits.climbPitchSlots) << i;
        EXPECT_DOUBLE_EQ(aircraft.baseTurnRate, limits.baseTurnRateDeg * radiansPerDegree) << i;
        EXPECT_EQ(aircraft.turnRate, aircraft.baseTurnRate) << i;
        EXPECT_EQ(aircraft.maxClimbPerSlot, limits.maxClimbPerSlotFeet) << i;
        EXPECT_EQ(aircraft.parkTaxiSpeed, limits.parkTaxiSpeedKnots) << i;
        const double rotate = limits.rotatePitchDeg * radiansPerDegree;
        const double climb = limits.climbPitchDeg * radiansPerDegree;
        EXPECT_NEAR(aircraft.rotatePitch, rotate, std::abs(rotate) * 0.0251) << i;
        EXPECT_NEAR(aircraft.climbPitch, climb, std::abs(climb) * 0.0501) << i;
    }
}

TEST(AircraftRecord, theRandomSpreadIsAlwaysExactlyItsPercentage) {
    gf_seedRandom(1);
    std::set<double> rotate;
    std::set<double> climb;
    for (int i = 0; i < 200; ++i) {
        AircraftRecord aircraft;
        aircraft.category = AircraftCategory::Light;
        takeCategoryLimits(aircraft);
        rotate.insert(aircraft.rotatePitch);
        climb.insert(aircraft.climbPitch);
    }
    const double nominalRotate = -9 * radiansPerDegree;
    const double nominalClimb = -15 * radiansPerDegree;
    EXPECT_EQ(rotate, (std::set<double>{nominalRotate * 1.025, nominalRotate * 0.975}));
    EXPECT_EQ(climb, (std::set<double>{nominalClimb * 1.05, nominalClimb * 0.95}));
}

TEST(AircraftRecord, aTrailingUnderscoreMarksAGhost) {
    EXPECT_TRUE(isGhostCallsign("SWR38_"));
    EXPECT_TRUE(isGhostCallsign("_"));
    EXPECT_FALSE(isGhostCallsign("SWR_38"));
    EXPECT_FALSE(isGhostCallsign(""));
}

TEST(AircraftRecord, typeAndAirlineAreComparedAsTheyStand) {
    const AircraftRecord a = flight();
    AircraftRecord b = flight();
    EXPECT_TRUE(hasTypeAndAirline(a, b));
    b.callsign = "OTHER";
    EXPECT_TRUE(hasTypeAndAirline(a, b));
    b.airline = "swr";
    EXPECT_FALSE(hasTypeAndAirline(a, b));
}

TEST(AircraftRecord, aUsableCallSignIsNeitherEmptyNorPlaceholderNorTooLong) {
    AircraftRecord aircraft;
    const auto usable = [&](const char* callsign) {
        aircraft.callsign = callsign;
        return hasUsableCallsign(aircraft);
    };
    EXPECT_TRUE(usable("SWR38"));
    EXPECT_TRUE(usable("12345678"));
    EXPECT_FALSE(usable("123456789"));
    EXPECT_FALSE(usable(""));
    EXPECT_FALSE(usable("@@@@@@@@"));
}

TEST(AircraftRecord, printedForms) {
    AircraftRecord aircraft = flight();
    EXPECT_EQ(aircraftTag(aircraft), "SWR A320");
    EXPECT_EQ(routeText(aircraft), "LSZH->EGLL");
    EXPECT_EQ(callsignText(aircraft), "SWR38   ");
    EXPECT_EQ(shortLine(aircraft), "LSZH->EGLL SWR38    HB-IJI");
    EXPECT_EQ(longLine(aircraft), "LSZH->EGLL SWR38    HB-IJI SWR A320");
    EXPECT_EQ(identityText(aircraft), "SWR38 HB-IJI SWR A320");
    aircraft.origin = "ZRH";
    aircraft.destination.clear();
    EXPECT_EQ(routeText(aircraft), "ZRH->   ");
    aircraft.origin.clear();
    EXPECT_EQ(routeText(aircraft), "        ");
    aircraft.airline = "A";
    aircraft.model = "B2";
    EXPECT_EQ(aircraftTag(aircraft), "A   B2  ");
}

} // namespace
