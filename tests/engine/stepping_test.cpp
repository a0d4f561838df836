#include "engine/stepping.h"

#include <gmock/gmock.h>

#include <cmath>
#include <numbers>

#include "tests/engine/engine_test.h"

using ::testing::ElementsAre;

namespace {

constexpr double degree = radiansPerDegree;
constexpr double legDegrees = 1.0 / 60;

class Stepping : public EngineTest {
protected:
    static Sample stationary(Sample sample) {
        sample.stationary = 1;
        return sample;
    }
};

// The planning of a leg.

TEST_F(Stepping, aLegLeadsToTheNextSampleWhichIsElementZeroThen) {
    LiveAircraft& aircraft = give(flying(), airSample(0, 0, 0), airSample(1, 0, 1440));
    nextPosMain(aircraft);
    ASSERT_EQ(aircraft.stream.size(), 1u);
    const int slots = aircraft.stream[0].slot - testSlot;
    EXPECT_NEAR(slots, 1440, 2);
    EXPECT_NEAR(aircraft.dLat, legDegrees / slots, 1e-12);
    EXPECT_EQ(aircraft.dLon, 0);
    EXPECT_EQ(aircraft.targetHeading, 0);
}

TEST_F(Stepping, aSampleInThePastIsFlownToAsIfItWereAQuarterOfASecondAway) {
    LiveAircraft& aircraft = give(flying(), airSample(0, 0, -3000), airSample(1, 0, -2000, 5010), airSample(2, 1, 0));
    nextPosMain(aircraft);
    EXPECT_NEAR(aircraft.dLat, legDegrees / 25, 1e-12);
    EXPECT_DOUBLE_EQ(aircraft.dAlt, 10.0 / 25);
    EXPECT_GT(aircraft.dHeading, 0.5 / 25);
    for (int slot = 0; slot < 25; ++slot) {
        perSlotStep(aircraft);
    }
    EXPECT_NEAR(aircraft.lat, testPlace.lat + legDegrees, 1e-9);
    EXPECT_NEAR(aircraft.alt, 5010, 1e-9);
}

TEST_F(Stepping, aLegAcrossTheAntimeridianTakesTheShortWay) {
    LiveAircraft& aircraft = flying();
    aircraft.lat = 0;
    aircraft.lon = 179.99;
    Sample from;
    from.lon = 179.99;
    from.alt = 5000;
    from.airborne = 1;
    from.slot = testSlot;
    Sample to = from;
    to.lon = -179.99;
    to.slot = testSlot + 100;
    to.gs = from.gs = 4300;
    give(aircraft, from, to);
    nextPosMain(aircraft);
    EXPECT_NEAR(aircraft.dLon, 0.02 / (aircraft.stream[0].slot - testSlot), 1e-12);
    for (int i = 0; i < aircraft.stream[0].slot - testSlot; ++i) {
        perSlotStep(aircraft);
        ASSERT_LE(std::abs(aircraft.lon), 180);
    }
    EXPECT_NEAR(aircraft.lon, -179.99, 1e-9);
}

TEST_F(Stepping, anAirborneAircraftNeverStopsForAStationaryReport) {
    LiveAircraft& aircraft = give(flying(), airSample(0, 0, 0), stationary(airSample(0, 0, 300)),
                                  stationary(airSample(0, 0, 600)), airSample(1, 0, 1440));
    nextPosMain(aircraft);
    ASSERT_EQ(aircraft.stream.size(), 1u);
    EXPECT_NEAR(aircraft.stream[0].lat, testPlace.lat + legDegrees, 1e-12);
    EXPECT_GT(aircraft.dLat, 0);
}

TEST_F(Stepping, aRotorcraftThatReportsOnePositionKeepsIt) {
    LiveAircraft& aircraft =
        give(flying("EC35"), airSample(0, 0, 0), stationary(airSample(0, 0, 300)), airSample(1, 0, 1440));
    nextPosMain(aircraft);
    ASSERT_EQ(aircraft.stream.size(), 2u);
    EXPECT_EQ(aircraft.stream[0].stationary, 1);
    EXPECT_EQ(aircraft.dLat, 0);
}

TEST_F(Stepping, aGroundAircraftStopsForAStationaryReport) {
    LiveAircraft& aircraft = give(taxiing(), groundSample(0, 0, 0), stationary(groundSample(0, 0, 300)));
    aircraft.dLat = 1;
    nextPosMain(aircraft);
    EXPECT_EQ(aircraft.stream[0].stationary, 1);
    EXPECT_EQ(aircraft.dLat, 0);
    EXPECT_EQ(aircraft.dLon, 0);
}

TEST_F(Stepping, whoStaysWhereItIsKeepsTheHeadingThatItTurnsTo) {
    LiveAircraft& onTheGround = give(taxiing(), groundSample(0, 0, 0), stationary(groundSample(0, 0, 300)));
    LiveAircraft& hovering = give(flying("EC35"), airSample(0, 0, 0), stationary(airSample(0, 0, 300)));
    for (LiveAircraft* aircraft : {&onTheGround, &hovering}) {
        aircraft->targetHeading = 2;
        nextPosMain(*aircraft);
        EXPECT_EQ(aircraft->targetHeading, 2) << aircraft->model;
    }
}

TEST_F(Stepping, theStationaryMarkIsSetAnewBothWays) {
    LiveAircraft& moved = give(taxiing(), groundSample(0, 0, 0), stationary(groundSample(0.01, 0, 300)));
    nextPosMain(moved);
    EXPECT_EQ(moved.stream[0].stationary, 0);
    EXPECT_GT(moved.dLat, 0);
    LiveAircraft& still = give(taxiing(), groundSample(0, 0, 0), groundSample(0, 0, 300));
    nextPosMain(still);
    EXPECT_EQ(still.stream[0].stationary, 1);
}

TEST_F(Stepping, standingShrinksAWidenedWindowUnlessItRollsOutOrTakesOff) {
    LiveAircraft& aircraft = give(taxiing(), groundSample(0, 0, 0), groundSample(0, 0, 300), groundSample(0, 0, 600),
                                  groundSample(0, 0, 900));
    aircraft.maxLater = 3000;
    nextPosMain(aircraft);
    EXPECT_EQ(aircraft.maxLater, 2900);
    aircraft.rollingOut = 1;
    nextPosMain(aircraft);
    aircraft.rollingOut = 0;
    aircraft.takingOff = 1;
    nextPosMain(aircraft);
    EXPECT_EQ(aircraft.maxLater, 2900);
}

TEST_F(Stepping, aNewLegHasNoCurve) {
    LiveAircraft& aircraft = give(taxiing(), groundSample(0, 0, 0), groundSample(0.01, 0, 300));
    aircraft.curve.p1 = aircraft.curve.p2 = aircraft.curve.p3 = {1, 1};
    aircraft.curveT = 0.5;
    nextPosMain(aircraft);
    EXPECT_FALSE(aircraft.curve.exists());
    for (const Offset& offset : {aircraft.curve.p1, aircraft.curve.p2, aircraft.curve.p3}) {
        EXPECT_TRUE(std::isnan(offset.northMetres));
        EXPECT_TRUE(std::isnan(offset.eastMetres));
    }
    EXPECT_EQ(aircraft.curveT, 0);
}

TEST_F(Stepping, whatHasNothingLeftIsRemoved) {
    LiveAircraft& aircraft = give(flying(), airSample(0, 0, 0));
    aircraft.extensions = -1;
    nextPosMain(aircraft);
    EXPECT_EQ(aircraft.lifeState, LifeState::removingfromsim);
    EXPECT_THAT(removalQueue, ElementsAre(testObject));
    EXPECT_TRUE(log.contains("                   KLM123   PH-ABC KLM A320 goes: no positions any more"));
}

TEST_F(Stepping, aFailureIsLoggedAndThrownOn) {
    LiveAircraft& aircraft = give(flying(), airSample(0, 0, 0), airSample(1, 0, 1440));
    aircraft.category = static_cast<AircraftCategory>(9);
    EXPECT_THROW(nextPosMain(aircraft), std::out_of_range);
    EXPECT_TRUE(log.contains("nextPosMain: invalid unordered_map<K, T> key          KLM123   PH-ABC KLM A320, sz:2, "
                             "fs:flying, st:active"));
}

// The slots of a leg.

TEST_F(Stepping, inFlightASlotAddsAllIncrements) {
    LiveAircraft& aircraft = flying();
    aircraft.heading = 1;
    aircraft.dLat = 1e-5;
    aircraft.dLon = 2e-5;
    aircraft.dHeading = 0.01;
    aircraft.dPitch = 0.001;
    aircraft.dBank = -0.002;
    aircraft.dAlt = 0.5;
    perSlotStep(aircraft);
    EXPECT_DOUBLE_EQ(aircraft.lat, testPlace.lat + 1e-5);
    EXPECT_DOUBLE_EQ(aircraft.lon, testPlace.lon + 2e-5);
    EXPECT_DOUBLE_EQ(aircraft.heading, 1.01);
    EXPECT_DOUBLE_EQ(aircraft.pitch, 0.001);
    EXPECT_DOUBLE_EQ(aircraft.bank, -0.002);
    EXPECT_DOUBLE_EQ(aircraft.alt, 5000.5);
}

/// Made anew on its last leg to the runway it is still "flying".
TEST_F(Stepping, onTheGroundTheHeadingThatItWasBornWithDoesNotTurnIt) {
    LiveAircraft& aircraft = give(taxiing(), groundSample(0, 0, 0), groundSample(0.1, 0, 1000));
    aircraft.phase = FlightPhase::flying;
    aircraft.heading = aircraft.dHeading = 2;
    nextPosMain(aircraft);
    perSlotStep(aircraft);
    EXPECT_EQ(aircraft.heading, 2);
}

TEST_F(Stepping, theHeadingStaysWithinATurn) {
    LiveAircraft& aircraft = flying();
    aircraft.dHeading = -0.01;
    perSlotStep(aircraft);
    EXPECT_DOUBLE_EQ(aircraft.heading, twoPi - 0.01);
    aircraft.dHeading = 0.02;
    perSlotStep(aircraft);
    EXPECT_NEAR(aircraft.heading, 0.01, 1e-12);
}

TEST_F(Stepping, theHeadingTurnsWithTheLegInSomePhasesOnly) {
    for (const FlightPhase phase : {FlightPhase::take_off, FlightPhase::flying, FlightPhase::parked}) {
        LiveAircraft& aircraft = taxiing();
        aircraft.phase = phase;
        aircraft.dHeading = 0.1;
        perSlotStep(aircraft);
        EXPECT_EQ(aircraft.heading, 0.1) << printedName(phase);
    }
    for (const FlightPhase phase : {FlightPhase::taxi, FlightPhase::pushed_back, FlightPhase::birth}) {
        LiveAircraft& aircraft = taxiing();
        aircraft.phase = phase;
        aircraft.dHeading = 0.1;
        perSlotStep(aircraft);
        EXPECT_EQ(aircraft.heading, 0) << printedName(phase);
    }
}

TEST_F(Stepping, onTheGroundItKeepsTheGroundsAttitude) {
    LiveAircraft& aircraft = taxiing();
    aircraft.pitch = -0.1;
    aircraft.bank = 0.1;
    aircraft.dPitch = aircraft.dBank = aircraft.dAlt = aircraft.dHeading = 1;
    aircraft.dLat = 1e-6;
    perSlotStep(aircraft);
    EXPECT_EQ(aircraft.pitch, aircraft.groundPitch);
    EXPECT_EQ(aircraft.bank, 0);
    EXPECT_EQ(aircraft.alt, 10);
    EXPECT_EQ(aircraft.heading, 0);
    EXPECT_GT(aircraft.lat, testPlace.lat);
}

TEST_F(Stepping, whatIsPushedBackAndWaitsDoesNotMove) {
    LiveAircraft& aircraft = taxiing();
    aircraft.phase = FlightPhase::pushed_back;
    aircraft.dLat = 1e-6;
    perSlotStep(aircraft);
    EXPECT_EQ(aircraft.lat, testPlace.lat);
}

TEST_F(Stepping, aTakeOffMovesHorizontallyOnly) {
    LiveAircraft& aircraft = flying();
    aircraft.phase = FlightPhase::take_off;
    aircraft.dLat = 1e-6;
    aircraft.dHeading = 0.1;
    aircraft.dPitch = aircraft.dBank = aircraft.dAlt = 1;
    perSlotStep(aircraft);
    EXPECT_GT(aircraft.lat, testPlace.lat);
    EXPECT_EQ(aircraft.heading, 0.1);
    EXPECT_EQ(aircraft.pitch, 0);
    EXPECT_EQ(aircraft.bank, 0);
    EXPECT_EQ(aircraft.alt, 5000);
}

TEST_F(Stepping, theFlareLiftsTheNoseToFourDegrees) {
    LiveAircraft& aircraft = flying();
    aircraft.flareStage = 1;
    aircraft.pitch = -3.9 * degree;
    aircraft.bank = 3.1;
    aircraft.dPitch = -0.2 * degree;
    aircraft.dBank = 0.1;
    aircraft.dAlt = -0.1;
    perSlotStep(aircraft);
    EXPECT_DOUBLE_EQ(aircraft.pitch, -4 * degree);
    EXPECT_DOUBLE_EQ(aircraft.bank, std::numbers::pi);
    EXPECT_DOUBLE_EQ(aircraft.alt, 4999.9);
}

TEST_F(Stepping, afterTouchdownTheNoseComesDownToTheGroundsPitch) {
    LiveAircraft& aircraft = taxiing();
    aircraft.nosewheelDown = 1;
    aircraft.flareStage = 4;
    aircraft.pitch = -2 * degree;
    aircraft.bank = 0.2;
    aircraft.dPitch = 1 * degree;
    aircraft.dBank = -0.05;
    perSlotStep(aircraft);
    EXPECT_DOUBLE_EQ(aircraft.pitch, -1 * degree);
    EXPECT_DOUBLE_EQ(aircraft.bank, 0.15);
    EXPECT_EQ(aircraft.nosewheelDown, 1);
    perSlotStep(aircraft);
    perSlotStep(aircraft);
    EXPECT_EQ(aircraft.pitch, aircraft.groundPitch);
    EXPECT_EQ(aircraft.bank, 0);
    EXPECT_EQ(aircraft.dPitch, 0);
    EXPECT_EQ(aircraft.dBank, 0);
    EXPECT_EQ(aircraft.nosewheelDown, 0);
    EXPECT_EQ(aircraft.flareStage, 0);
}

TEST_F(Stepping, theNoseMayComeUpToTheGroundsPitchAsWell) {
    LiveAircraft& aircraft = taxiing();
    aircraft.nosewheelDown = 1;
    aircraft.pitch = 2 * degree;
    aircraft.dPitch = -1 * degree;
    perSlotStep(aircraft);
    EXPECT_EQ(aircraft.nosewheelDown, 1);
    perSlotStep(aircraft);
    EXPECT_EQ(aircraft.nosewheelDown, 0);
    EXPECT_EQ(aircraft.pitch, aircraft.groundPitch);
}

TEST_F(Stepping, aNoseThatDoesNotMoveIsDown) {
    LiveAircraft& aircraft = taxiing();
    aircraft.nosewheelDown = 1;
    aircraft.pitch = -2 * degree;
    perSlotStep(aircraft);
    EXPECT_EQ(aircraft.nosewheelDown, 0);
    EXPECT_EQ(aircraft.pitch, aircraft.groundPitch);
}

TEST_F(Stepping, aLongitudeIsWrapped) {
    LiveAircraft& aircraft = flying();
    aircraft.lon = 179.9;
    aircraft.dLon = 0.2;
    perSlotStep(aircraft);
    EXPECT_NEAR(aircraft.lon, -179.9, 1e-9);
    aircraft.dLon = -0.2;
    perSlotStep(aircraft);
    EXPECT_NEAR(aircraft.lon, 179.9, 1e-9);
}

TEST_F(Stepping, acrossAPoleTheAircraftGoesOnOnTheOtherSide) {
    LiveAircraft& aircraft = flying();
    aircraft.lat = 89.9;
    aircraft.lon = 30;
    aircraft.dLat = 0.2;
    perSlotStep(aircraft);
    EXPECT_NEAR(aircraft.lat, 89.9, 1e-9);
    EXPECT_NEAR(aircraft.lon, -150, 1e-9);
    aircraft.lat = -89.9;
    aircraft.dLat = -0.2;
    perSlotStep(aircraft);
    EXPECT_NEAR(aircraft.lat, -89.9, 1e-9);
    EXPECT_NEAR(aircraft.lon, 30, 1e-9);
}

} // namespace
