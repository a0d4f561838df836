#include "engine/retiming.h"

#include "tests/engine/engine_test.h"

namespace {

class Retiming : public EngineTest {
protected:
    /// On the way to a sample 1 nm north that is due in 1000 slots.
    LiveAircraft& onTheWay(double fromKnots, double toKnots) {
        return give(flying(), airSample(0, 0, 0, 5000, fromKnots), airSample(1, 0, 1000, 5000, toKnots));
    }

    static std::int32_t slotsToTarget(const LiveAircraft& aircraft) { return aircraft.stream[1].slot - testSlot; }
};

TEST_F(Retiming, theSpeedOfALegIsTheMeanOfBothReports) {
    EXPECT_DOUBLE_EQ(averageSpeed(airSample(0, 0, 0, 5000, 200), airSample(1, 0, 100, 5000, 300)), 250);
    EXPECT_DOUBLE_EQ(averageSpeed(airSample(0, 0, 0, 5000, 0), airSample(1, 0, 100, 5000, 300)), 150);
}

TEST_F(Retiming, withoutReportedSpeedsDistanceAndTimesMakeIt) {
    const Sample from = airSample(0, 0, 0, 5000, 0);
    EXPECT_NEAR(averageSpeed(from, airSample(1, 0, 3600, 5000, 0)), 100, 0.1);
    EXPECT_NEAR(averageSpeed(from, airSample(1, 0, -50, 5000, 0)), 14400, 10);
    EXPECT_EQ(averageSpeed(from, airSample(0.0001, 0, 3600, 5000, 0)), 1);
}

TEST_F(Retiming, anAirborneLegTakesAsLongAsItsSpeedSays) {
    LiveAircraft& aircraft = onTheWay(300, 300);
    retimeAir(aircraft);
    EXPECT_NEAR(slotsToTarget(aircraft), 1200, 2);
}

/// The first sample behind a gap comes while the aircraft is on its way to a place that was made up.
TEST_F(Retiming, aLegFromHalfWayToAnotherTargetTakesTheSpeedForAllOfItsWay) {
    LiveAircraft& aircraft = give(flying(), airSample(0.5, 0, 1, 5000, 300), airSample(0.6, 0, 3000, 5000, 300));
    aircraft.maxEarlier = 3000;
    retimeAir(aircraft);
    EXPECT_NEAR(slotsToTarget(aircraft), 720, 2);
}

TEST_F(Retiming, aSampleIsMovedNoFurtherThanItsWindow) {
    LiveAircraft& slow = onTheWay(50, 50);
    retimeAir(slow);
    EXPECT_EQ(slotsToTarget(slow), 2000);
    LiveAircraft& fast = give(flying(), airSample(0, 0, 0, 5000, 800), airSample(1, 0, 2000, 5000, 800));
    retimeAir(fast);
    EXPECT_EQ(slotsToTarget(fast), 1000);
}

TEST_F(Retiming, theSamplesBehindTheTargetKeepTheirTimes) {
    LiveAircraft& aircraft =
        give(flying(), airSample(0, 0, 0, 5000, 50), airSample(1, 0, 1000, 5000, 50), airSample(2, 0, 2000, 5000, 50));
    retimeAir(aircraft);
    EXPECT_EQ(slotsToTarget(aircraft), 2000);
    EXPECT_EQ(aircraft.stream[2].slot, testSlot + 2000);
}

TEST_F(Retiming, anExtendedStreamHasNoWindow) {
    LiveAircraft& aircraft = onTheWay(50, 50);
    aircraft.extensions = 1;
    retimeAir(aircraft);
    EXPECT_NEAR(slotsToTarget(aircraft), 7200, 10);
}

TEST_F(Retiming, noSampleIsMovedIntoThePast) {
    LiveAircraft& aircraft = onTheWay(300, 300);
    aircraft.stream[1].slot = testSlot - 5000;
    limitToWindow(aircraft, 1200);
    EXPECT_EQ(slotsToTarget(aircraft), 0);
}

TEST_F(Retiming, noLegIsShorterThanAQuarterOfASecond) {
    LiveAircraft& aircraft = give(flying(), airSample(0, 0, 0), airSample(0.0001, 0, 10));
    retimeAir(aircraft);
    EXPECT_EQ(slotsToTarget(aircraft), 25);
    aircraft.stream[1].slot = testSlot - 300;
    EXPECT_EQ(legSlots(aircraft), 25);
}

TEST_F(Retiming, aLandingGoesToTheGroundWithTheSpeedItHas) {
    LiveAircraft& aircraft = give(flying(), airSample(0, 0, 0, 500, 150), groundSample(1, 0, 2300, 50));
    aircraft.landing = 1;
    retimeAir(aircraft);
    EXPECT_NEAR(slotsToTarget(aircraft), 2400, 3);
}

TEST_F(Retiming, theMeanCountsUnlessALandingGoesToTheGround) {
    LiveAircraft& toTheGround = give(flying(), airSample(0, 0, 0, 100, 150), groundSample(1, 0, 3500, 50));
    retimeAir(toTheGround);
    EXPECT_NEAR(slotsToTarget(toTheGround), 3600, 2);
    LiveAircraft& inTheAir = give(flying(), airSample(0, 0, 0, 900, 200), airSample(1, 0, 2400, 500, 100));
    inTheAir.landing = 1;
    retimeAir(inTheAir);
    EXPECT_NEAR(slotsToTarget(inTheAir), 2400, 2);
}

/// 2,400.6 slots.
TEST_F(Retiming, theTimeOfALegIsRounded) {
    LiveAircraft& aircraft = give(flying(), airSample(0, 0, 0, 5000, 150), airSample(1, 0, 2400, 5000, 150));
    Sample& target = aircraft.stream[1];
    const double nm = greatCircleNm(testPlace, {target.lat, target.lon});
    const double knots = nm * 360000 / 2400.6;
    aircraft.stream[0].gs = target.gs = knots;
    retimeAir(aircraft);
    EXPECT_EQ(slotsToTarget(aircraft), 2401);
}

TEST_F(Retiming, aLandingWithoutSpeedGoesToTheGroundWithAHundredKnots) {
    LiveAircraft& aircraft = give(flying(), airSample(0, 0, 0, 500, 0), groundSample(1, 0, 3500, 50));
    aircraft.landing = 1;
    retimeAir(aircraft);
    EXPECT_NEAR(slotsToTarget(aircraft), 3600, 5);
}

TEST_F(Retiming, aStationaryTargetKeepsItsTime) {
    LiveAircraft& aircraft = onTheWay(300, 300);
    aircraft.stream[1].stationary = 1;
    retimeAir(aircraft);
    EXPECT_EQ(slotsToTarget(aircraft), 1000);
}

TEST_F(Retiming, aWindowShrinksByAHundredALegDownToAThousand) {
    LiveAircraft& aircraft = flying();
    aircraft.maxEarlier = 1150;
    aircraft.maxLater = 3000;
    shrinkWindow(aircraft);
    EXPECT_EQ(aircraft.maxEarlier, 1050);
    EXPECT_EQ(aircraft.maxLater, 2900);
    shrinkWindow(aircraft);
    shrinkWindow(aircraft);
    EXPECT_EQ(aircraft.maxEarlier, 1000);
    EXPECT_EQ(aircraft.maxLater, 2700);
}

TEST_F(Retiming, aWidenedWindowIsWiderForATakeOff) {
    LiveAircraft& aircraft = flying();
    widenWindow(aircraft);
    EXPECT_EQ(aircraft.maxEarlier, 3000);
    EXPECT_EQ(aircraft.maxLater, 3000);
    aircraft.takingOff = 1;
    widenWindow(aircraft);
    EXPECT_EQ(aircraft.maxEarlier, 3000);
    EXPECT_EQ(aircraft.maxLater, 5000);
}

} // namespace
