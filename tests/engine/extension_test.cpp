#include "engine/extension.h"

#include <gmock/gmock.h>

#include <cmath>

#include "core/injection_radius.h"
#include "engine/stepping.h"
#include "tests/engine/engine_test.h"

namespace {

class Extension : public EngineTest {
protected:
    Extension() { gRadiusNm = 40; }
    ~Extension() override { gRadiusNm = 40; }

    /// Extends the stream and answers the element that was appended.
    static Sample extended(LiveAircraft& aircraft) {
        EXPECT_TRUE(extendStream(aircraft));
        return aircraft.stream[aircraft.stream.size() - 1];
    }

    static void placeUser(double milesNorth) {
        gUserState.lat = testPlace.lat + milesNorth / 60;
        gUserState.lon = testPlace.lon;
    }

    /// What the log says of an aircraft whose samples end here.
    std::string whyItGoes(LiveAircraft& aircraft) {
        const std::size_t before = log.lines().size();
        nextPosMain(aircraft);
        EXPECT_EQ(aircraft.lifeState, LifeState::removingfromsim);
        const std::vector<std::string> lines = log.lines();
        return lines.size() == before + 1 ? lines.back().substr(lines.back().find("goes: ")) : "not one line";
    }

    static double milesBetween(const Sample& a, const Sample& b) {
        return greatCircleNm({a.lat, a.lon}, {b.lat, b.lon});
    }
};

// Why it goes.

TEST_F(Extension, whatHasFlownOnForAMinuteHasNoPositionsAnyMore) {
    for (const std::int32_t extensions : {1, -1}) {
        LiveAircraft& aircraft = give(flying(), airSample(0, 0, 0));
        aircraft.extensions = extensions;
        EXPECT_EQ(whyItGoes(aircraft), "goes: no positions any more") << extensions;
    }
}

TEST_F(Extension, theLogTellsOfTheEdgeOfTheRange) {
    gRadiusNm = 6;
    placeUser(5.6);
    EXPECT_EQ(whyItGoes(give(flying(), airSample(0, 0, 0))), "goes: its positions end at the edge of the range");
}

TEST_F(Extension, theLogTellsThatTheCategoryIsNotWantedAnyMore) {
    LIGHT_AIRCRAFT.value = false;
    EXPECT_EQ(whyItGoes(give(flying("C172"), airSample(0, 0, 0))),
              "goes: its positions end, and its category is not wanted");
}

TEST_F(Extension, theLogTellsThatOnlyWhatIsAirborneIsWanted) {
    AIRBORNE_ONLY.value = true;
    LiveAircraft& low = give(flying(), airSample(0, 0, 0));
    low.alt = 999;
    EXPECT_EQ(whyItGoes(low), "goes: its positions end, and only what is airborne is wanted");
    LiveAircraft& held = give(taxiing(), groundSample(0, 0, 0));
    held.holding = 1;
    EXPECT_EQ(whyItGoes(held), "goes: its positions end, and only what is airborne is wanted");
}

TEST_F(Extension, theLogTellsThatItHasHeldForTooLong) {
    LiveAircraft& aircraft = give(taxiing(), groundSample(0, 0, 0));
    aircraft.holding = 1;
    aircraft.holdStartSlot = testSlot - 6000 * (MAX_HOLDING_MINUTES.value + 1);
    EXPECT_EQ(whyItGoes(aircraft), "goes: it held for too long");
}

TEST_F(Extension, theLogTellsThatAnotherOneIsInTheWay) {
    LiveAircraft& aircraft = give(taxiing(), groundSample(0, 0, 0));
    taxiing().objectId = testObject + 1;
    EXPECT_EQ(whyItGoes(aircraft), "goes: its positions end where another one is in the way");
}

// In the air.

TEST_F(Extension, aLostAircraftFliesStraightOnSlowingALittle) {
    LiveAircraft& aircraft = give(flying(), airSample(0, 0, 0, 5000, 200));
    const Sample next = extended(aircraft);
    EXPECT_DOUBLE_EQ(next.gs, 190);
    EXPECT_EQ(next.slot, testSlot + 800);
    EXPECT_NEAR(milesBetween(aircraft.stream[0], next), 190 * 8.0 / 3600, 1e-6);
    EXPECT_DOUBLE_EQ(next.lon, testPlace.lon);
    EXPECT_EQ(next.alt, 5000);
    EXPECT_EQ(next.stationary, 0);
    EXPECT_EQ(aircraft.extensions, 8);
}

/// What was reported of the turn, it does not go on with: it flies straight on.
TEST_F(Extension, anAircraftThatIsLostInATurnLevelsOff) {
    Sample last = airSample(0, 0, 0, 900, 200);
    last.roll = -15 * radiansPerDegree;
    last.hasHeading = 1;
    last.heading = 50 * radiansPerDegree;
    LiveAircraft& aircraft = give(flying(), last);
    aircraft.altAboveGround = 900;
    aircraft.bank = -15 * radiansPerDegree;
    aircraft.heading = 40 * radiansPerDegree;
    nextPosMain(aircraft);
    const std::int32_t end = aircraft.stream[0].slot;
    for (; slotClock < end; ++slotClock) {
        perSlotStep(aircraft);
    }
    EXPECT_NEAR(aircraft.bank, 0, 0.001);
    EXPECT_NEAR(aircraft.heading, 40 * radiansPerDegree, 0.001);
}

TEST_F(Extension, itFliesWhereItsNosePointsAndNotWhereItsTrackOrItsLegLed) {
    Sample last = airSample(0, 0, 0, 5000, 200);
    last.track = 10;
    last.hasHeading = 1;
    last.heading = 3;
    LiveAircraft& aircraft = give(flying(), last);
    aircraft.heading = 2;
    aircraft.targetHeading = 1;
    const Sample next = extended(aircraft);
    EXPECT_NEAR(bearing(testPlace, {next.lat, next.lon}), 2, 1e-3);
    EXPECT_NEAR(milesBetween(aircraft.stream[0], next), 190 * 8.0 / 3600, 1e-6);
}

TEST_F(Extension, aSlowOneKeepsOneKnot) {
    EXPECT_EQ(extended(give(flying(), airSample(0, 0, 0, 5000, 1))).gs, 1);
}

TEST_F(Extension, afterEightOfThemThereAreNoMore) {
    LiveAircraft& aircraft = give(flying(), airSample(0, 0, 0, 5000, 200));
    for (int i = 0; i < 8; ++i) {
        extended(aircraft);
        EXPECT_EQ(aircraft.extensions, 8 - i);
        aircraft.stream.popFront();
    }
    EXPECT_FALSE(extendStream(aircraft));
    EXPECT_EQ(aircraft.extensions, -1);
    EXPECT_FALSE(extendStream(aircraft));
}

/// A little less than eight times eight seconds, for each leg is flown at the mean of the speeds at its ends.
TEST_F(Extension, aWholeLostFlightLastsAMinute) {
    LiveAircraft& aircraft = give(flying(), airSample(0, 0, 0, 5000, 200));
    while (aircraft.lifeState == LifeState::active) {
        if (slotClock >= aircraft.stream[0].slot) {
            nextPosMain(aircraft);
        }
        perSlotStep(aircraft);
        ++slotClock;
    }
    EXPECT_NEAR(slotClock - testSlot, 6400, 200);
}

TEST_F(Extension, itEndsWhereTheCategoryIsNotWantedAnyMore) {
    LiveAircraft& aircraft = give(flying("C172"), airSample(0, 0, 0));
    LIGHT_AIRCRAFT.value = false;
    EXPECT_FALSE(extendStream(aircraft));
    LIGHT_AIRCRAFT.value = true;
    EXPECT_TRUE(extendStream(aircraft));
}

TEST_F(Extension, atTheEdgeOfTheRangeItEnds) {
    gRadiusNm = 6;
    LiveAircraft& aircraft = give(flying(), airSample(0, 0, 0));
    placeUser(5.6);
    EXPECT_FALSE(extendStream(aircraft));
    placeUser(5.4);
    EXPECT_TRUE(extendStream(aircraft));
}

/// At the very place half a mile inside the range it ends, a hair further inside it flies on.
TEST_F(Extension, halfAMileInsideTheRangeAnAircraftIsRemovedWhenItsStreamRunsOut) {
    placeUser(5.5);
    const double milesFromUser = greatCircleNm({gUserState.lat, gUserState.lon}, testPlace);
    LiveAircraft& atBound = give(flying(), airSample(0, 0, 0));
    gRadiusNm = milesFromUser + 0.5;
    nextPosMain(atBound);
    EXPECT_EQ(atBound.lifeState, LifeState::removingfromsim);
    EXPECT_EQ(atBound.extensions, 0);
    EXPECT_THAT(removalQueue, testing::ElementsAre(testObject));

    LiveAircraft& inside = give(flying(), airSample(0, 0, 0));
    gRadiusNm = std::nextafter(gRadiusNm, 100);
    nextPosMain(inside);
    EXPECT_EQ(inside.lifeState, LifeState::active);
    EXPECT_EQ(inside.extensions, 8);
}

TEST_F(Extension, withoutAUserThereIsNoRange) {
    gRadiusNm = 2;
    gUserState = {};
    EXPECT_TRUE(extendStream(give(flying(), airSample(0, 0, 0))));
}

TEST_F(Extension, withAirborneOnlyItFliesOnAThousandFeetAboveTheAirport) {
    AIRBORNE_ONLY.value = true;
    LiveAircraft& aircraft = give(flying(), airSample(0, 0, 0));
    aircraft.alt = 1499;
    openAirport(500);
    EXPECT_FALSE(extendStream(aircraft));
    aircraft.alt = 1500;
    EXPECT_TRUE(extendStream(aircraft));
}

TEST_F(Extension, withAirborneOnlyAndNoAirportSeaLevelCounts) {
    AIRBORNE_ONLY.value = true;
    LiveAircraft& aircraft = give(flying(), airSample(0, 0, 0));
    aircraft.alt = 999;
    EXPECT_FALSE(extendStream(aircraft));
    aircraft.alt = 1000;
    EXPECT_TRUE(extendStream(aircraft));
}

TEST_F(Extension, aLandingSlowsDownAndSinks) {
    LiveAircraft& aircraft = give(flying(), airSample(0, 0, 0, 500, 140));
    aircraft.landing = 1;
    const Sample next = extended(aircraft);
    EXPECT_DOUBLE_EQ(next.gs, 126);
    EXPECT_EQ(next.vs, -667);
    EXPECT_DOUBLE_EQ(next.alt, 500 - 80.04);
    EXPECT_EQ(next.airborne, 1);
}

TEST_F(Extension, aLandingSlowsDownAsLongAsFourAreLeftAndKeepsItsSpeedInTheLastThree) {
    for (const auto& [before, knots] : {std::pair{5, 126.0}, std::pair{4, 140.0}, std::pair{2, 140.0}}) {
        LiveAircraft& aircraft = give(flying(), airSample(0, 0, 0, 500, 140));
        aircraft.landing = 1;
        aircraft.extensions = before;
        EXPECT_DOUBLE_EQ(extended(aircraft).gs, knots) << before;
        EXPECT_EQ(aircraft.extensions, before - 1);
    }
}

TEST_F(Extension, aSlowLandingKeepsOneKnot) {
    LiveAircraft& aircraft = give(flying(), airSample(0, 0, 0, 500, 1));
    aircraft.landing = 1;
    EXPECT_EQ(extended(aircraft).gs, 1);
}

TEST_F(Extension, aLandingSinksToTheGroundAtMost) {
    LiveAircraft& aircraft = give(flying(), airSample(0, 0, 0, 50, 140));
    aircraft.landing = 1;
    const Sample next = extended(aircraft);
    EXPECT_EQ(next.alt, 0);
    EXPECT_EQ(next.airborne, 0);
}

TEST_F(Extension, aFlareKeepsItsHeight) {
    LiveAircraft& aircraft = give(flying(), airSample(0, 0, 0, 50, 140));
    aircraft.landing = 1;
    aircraft.flareStage = 1;
    EXPECT_EQ(extended(aircraft).alt, 50);
}

// On the ground.

TEST_F(Extension, anAircraftThatRollsOutSlowsDownStepByStep) {
    const std::pair<double, double> speeds[]{{150, 100}, {140, 100}, {139, 80}, {100, 80}, {99, 60},
                                             {80, 60},   {79, 30},   {60, 30},  {59, 20},  {10, 20}};
    for (const auto& [before, after] : speeds) {
        LiveAircraft& aircraft = give(taxiing(), groundSample(0, 0, 0, before));
        aircraft.rollingOut = 1;
        const Sample next = extended(aircraft);
        EXPECT_EQ(next.gs, after) << before;
        EXPECT_EQ(next.vs, 0);
        EXPECT_EQ(next.slot, testSlot + 300);
        EXPECT_EQ(aircraft.extensions, 10);
    }
}

TEST_F(Extension, aRollLastsThreeSecondsAndTheWayIsThatOfTheSpeedThen) {
    LiveAircraft& aircraft = give(taxiing(), groundSample(0, 0, 0, 150));
    aircraft.rollingOut = 1;
    aircraft.heading = 0;
    const Sample next = extended(aircraft);
    EXPECT_NEAR(milesBetween(aircraft.stream[0], next), 100 * 3.0 / 3600, 1e-5);
    EXPECT_GT(next.lat, aircraft.stream[0].lat);
    EXPECT_EQ(next.stationary, 0);
    EXPECT_EQ(next.airborne, 0);
}

TEST_F(Extension, whatIsMadeUpGoesOnFromTheLastSamplesTime) {
    LiveAircraft& aircraft = give(taxiing(), groundSample(0, 0, -200, 150));
    aircraft.rollingOut = 1;
    EXPECT_EQ(extended(aircraft).slot, testSlot - 200 + 300);
}

TEST_F(Extension, onTheGroundNeitherRangeNorAirborneOnlyEndsIt) {
    gRadiusNm = 5;
    placeUser(5);
    AIRBORNE_ONLY.value = true;
    LiveAircraft& aircraft = give(taxiing(), groundSample(0, 0, 0, 150));
    aircraft.rollingOut = 1;
    EXPECT_TRUE(extendStream(aircraft));
    EXPECT_EQ(aircraft.extensions, 10);
    LiveAircraft& parked = give(taxiing(), groundSample(0, 0, 0, 0));
    parked.phase = FlightPhase::parked;
    EXPECT_TRUE(extendStream(parked));
    EXPECT_EQ(parked.extensions, 1);
}

TEST_F(Extension, anAircraftThatTakesOffGoesFasterStepByStep) {
    struct Row {
        double before, after, vs;
    };
    for (const Row& row :
         {Row{30, 40, 7}, Row{31, 80, 7}, Row{60, 80, 7}, Row{61, 110, 7}, Row{100, 110, 7}, Row{101, 150, 600},
          Row{140, 150, 600}, Row{141, 170, 1200}, Row{160, 170, 1200}, Row{161, 180, 2400}}) {
        LiveAircraft& aircraft = give(taxiing(), groundSample(0, 0, 0, row.before));
        aircraft.stream[0].vs = 7;
        aircraft.takingOff = 1;
        const Sample next = extended(aircraft);
        EXPECT_EQ(next.gs, row.after) << row.before;
        EXPECT_EQ(next.vs, row.vs) << row.before;
    }
}

TEST_F(Extension, inTakeOffItClimbs) {
    LiveAircraft& aircraft = give(flying(), airSample(0, 0, 0, 100, 150));
    aircraft.phase = FlightPhase::take_off;
    aircraft.takingOff = 1;
    const Sample next = extended(aircraft);
    EXPECT_EQ(next.vs, 1500);
    EXPECT_EQ(next.alt, 300);
}

TEST_F(Extension, inTakeOffItClimbsOnlyWhileItMoves) {
    LiveAircraft& aircraft = give(flying(), airSample(0, 0, 0, 100, 150));
    aircraft.stream[0].stationary = 1;
    aircraft.stream[0].vs = 7;
    aircraft.phase = FlightPhase::take_off;
    aircraft.takingOff = 1;
    const Sample next = extended(aircraft);
    EXPECT_EQ(next.vs, 7);
    EXPECT_EQ(next.alt, 100);
    EXPECT_EQ(next.gs, 0);
    EXPECT_EQ(next.stationary, 1);
}

/// On its way to the stand it neither holds nor rolls on: it waits where the feed left it.
TEST_F(Extension, anAircraftOnItsWayOntoAStandStandsWhereItsSamplesEnd) {
    LiveAircraft& aircraft = give(taxiing(), groundSample(0, 0, 0, 12));
    aircraft.phase = FlightPhase::parking;
    const Sample next = extended(aircraft);
    EXPECT_EQ(next.gs, 0);
    EXPECT_EQ(next.stationary, 1);
    EXPECT_EQ(next.slot, testSlot + 300);
    EXPECT_EQ(milesBetween(aircraft.stream[0], next), 0);
    EXPECT_EQ(aircraft.extensions, 10);
    EXPECT_EQ(aircraft.holding, 0);
}

TEST_F(Extension, aStandstillOnTheRunwayGoesOn) {
    for (const bool rollsOut : {true, false}) {
        LiveAircraft& aircraft = give(taxiing(), groundSample(0, 0, 0, 12));
        aircraft.stream[0].stationary = 1;
        (rollsOut ? aircraft.rollingOut : aircraft.takingOff) = 1;
        const Sample next = extended(aircraft);
        EXPECT_EQ(next.gs, 0) << rollsOut;
        EXPECT_EQ(next.stationary, 1) << rollsOut;
        EXPECT_EQ(milesBetween(aircraft.stream[0], next), 0) << rollsOut;
    }
}

TEST_F(Extension, aParkedAircraftStaysForAWeek) {
    LiveAircraft& aircraft = give(taxiing(), groundSample(0, 0, 0, 5));
    aircraft.phase = FlightPhase::parked;
    aircraft.seenAtStand = 1;
    const Sample next = extended(aircraft);
    EXPECT_EQ(next.slot, testSlot + 60480000);
    EXPECT_EQ(next.stationary, 1);
    EXPECT_EQ(next.gs, 0);
    EXPECT_EQ(milesBetween(aircraft.stream[0], next), 0);
    EXPECT_EQ(aircraft.extensions, 1);
    EXPECT_EQ(aircraft.seenAtStand, 0);
    aircraft.stream.popFront();
    EXPECT_FALSE(extendStream(aircraft));
}

// Holding.

TEST_F(Extension, aTaxiingAircraftHolds) {
    LiveAircraft& aircraft = give(taxiing(), groundSample(0, 0, 0, 15));
    const Sample next = extended(aircraft);
    EXPECT_EQ(next.gs, 0);
    EXPECT_EQ(next.stationary, 1);
    EXPECT_EQ(next.slot, testSlot + 300);
    EXPECT_EQ(aircraft.holding, 1);
    EXPECT_EQ(aircraft.holdStartSlot, testSlot);
    EXPECT_EQ(aircraft.extensions, 1);
}

TEST_F(Extension, itHoldsForTheLongestTimeAndNotAMinuteMore) {
    LiveAircraft& aircraft = give(taxiing(), groundSample(0, 0, 0, 15));
    extended(aircraft);
    slotClock = testSlot + 6000 * (MAX_HOLDING_MINUTES.value + 1) - 1;
    EXPECT_TRUE(extendStream(aircraft));
    ++slotClock;
    EXPECT_FALSE(extendStream(aircraft));
}

TEST_F(Extension, withAirborneOnlyItDoesNotHoldOn) {
    LiveAircraft& aircraft = give(taxiing(), groundSample(0, 0, 0, 15));
    extended(aircraft);
    AIRBORNE_ONLY.value = true;
    EXPECT_FALSE(extendStream(aircraft));
}

TEST_F(Extension, twoThatTaxiIntoEachOtherDoNotBothHold) {
    LiveAircraft& aircraft = give(taxiing(), groundSample(0, 0, 0, 15));
    LiveAircraft& other = taxiing();
    other.objectId = testObject + 1;
    other.lat += 0.0239 / 60;
    aircraft.holding = 1;
    aircraft.holdStartSlot = 5;
    EXPECT_FALSE(extendStream(aircraft));
    EXPECT_EQ(aircraft.holding, 0);
    EXPECT_EQ(aircraft.holdStartSlot, 0);
    other.lat = testPlace.lat + 0.0241 / 60;
    EXPECT_TRUE(extendStream(aircraft));
}

TEST_F(Extension, onlyAnotherTaxiingObjectIsInTheWay) {
    LiveAircraft& aircraft = give(taxiing(), groundSample(0, 0, 0, 15));
    taxiing(); // of the same object
    LiveAircraft& parked = taxiing();
    parked.objectId = testObject + 1;
    parked.phase = FlightPhase::parked;
    LiveAircraft& airborne = taxiing();
    airborne.objectId = testObject + 2;
    airborne.onGround = 0;
    LiveAircraft& leaving = taxiing();
    leaving.objectId = testObject + 3;
    leaving.lifeState = LifeState::removingfromsim;
    EXPECT_TRUE(extendStream(aircraft));
}

TEST_F(Extension, whatIsPushedBackHolds) {
    LiveAircraft& aircraft = give(taxiing(), groundSample(0, 0, 0, 15));
    aircraft.phase = FlightPhase::pushed_back;
    extended(aircraft);
    EXPECT_EQ(aircraft.holding, 1);
}

TEST_F(Extension, whatRollsOutOrTakesOffDoesNotHold) {
    LiveAircraft& aircraft = give(taxiing(), groundSample(0, 0, 0, 50));
    aircraft.rollingOut = 1;
    extended(aircraft);
    EXPECT_EQ(aircraft.holding, 0);
    aircraft.rollingOut = 0;
    aircraft.takingOff = 1;
    extended(aircraft);
    EXPECT_EQ(aircraft.holding, 0);
}

TEST_F(Extension, anAirborneAircraftInTaxiDoesNotHold) {
    LiveAircraft& aircraft = give(taxiing(), airSample(0, 0, 0));
    aircraft.onGround = 0;
    nextPosMain(aircraft);
    EXPECT_EQ(aircraft.holding, 0);
    EXPECT_EQ(aircraft.extensions, 8);
}

TEST_F(Extension, anEmptyStreamIsNotExtended) {
    EXPECT_FALSE(extendStream(flying()));
    EXPECT_TRUE(log.contains("extendStream empty sz?"));
}

TEST_F(Extension, realSamplesEndItAndWidenTheWindow) {
    LiveAircraft& aircraft = give(flying(), airSample(0, 0, 0));
    aircraft.extensions = 5;
    endExtension(aircraft);
    EXPECT_EQ(aircraft.extensions, 0);
    EXPECT_EQ(aircraft.maxEarlier, 3000);
    EXPECT_EQ(aircraft.maxLater, 3000);
}

} // namespace
