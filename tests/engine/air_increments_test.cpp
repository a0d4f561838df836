#include "engine/air_increments.h"

#include <gmock/gmock.h>

#include "engine/retiming.h"
#include "tests/engine/engine_test.h"

using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::Not;

namespace {

constexpr double degree = radiansPerDegree;

class AirIncrements : public EngineTest {
protected:
    AirIncrements() {
        aircraft = &flying();
        aircraft->lightsHighSet = 1;
    }

    /// Plans a leg between these samples; the aircraft has the height of the first.
    LiveAircraft& plan(const Sample& from, const Sample& to) {
        give(*aircraft, from, to);
        aircraft->alt = from.alt;
        return replan();
    }

    LiveAircraft& replan() {
        airIncrements(*aircraft);
        return *aircraft;
    }

    static Sample withVs(Sample sample, double fpm) {
        sample.vs = fpm;
        return sample;
    }

    bool setsGearDown() const {
        const std::vector<std::string> sent = events();
        return std::find(sent.begin(), sent.end(), fmt::format("{} {} 1", testObject, +eventGear)) != sent.end();
    }

    LiveAircraft* aircraft;
};

// Height.

TEST_F(AirIncrements, aCruiseClimbsToTheNextHeightWithinTheLegUpToTheCategorysLimit) {
    EXPECT_DOUBLE_EQ(plan(airSample(0, 0, 0), airSample(1, 0, 1000, 5100)).dAlt, 0.1);
    aircraft->stream[1].alt = 9000;
    EXPECT_DOUBLE_EQ(replan().dAlt, 0.6);
}

TEST_F(AirIncrements, aCruiseDescendsWithinTheLeg) {
    EXPECT_DOUBLE_EQ(plan(airSample(0, 0, 0), airSample(1, 0, 1000, 4000)).dAlt, -1);
    EXPECT_FALSE(setsGearDown());
}

TEST_F(AirIncrements, aLowAircraftThatDoesNotLandClimbsInAnyCase) {
    aircraft->altAboveGround = 1000;
    EXPECT_DOUBLE_EQ(plan(airSample(0, 0, 0), airSample(1, 0, 1000, 4000)).dAlt, 0.2);
    aircraft->stream[1].alt = 9000;
    EXPECT_DOUBLE_EQ(replan().dAlt, 0.6);
}

TEST_F(AirIncrements, aLandingFollowsItsHeights) {
    aircraft->landing = 1;
    aircraft->altAboveGround = 900;
    EXPECT_DOUBLE_EQ(plan(airSample(0, 0, 0), airSample(1, 0, 1000, 4900)).dAlt, -0.1);
}

TEST_F(AirIncrements, aLandingAtOneHeightDescendsWhenItIsLowAndDoesNotClimb) {
    aircraft->landing = 1;
    aircraft->altAboveGround = 900;
    EXPECT_DOUBLE_EQ(plan(airSample(0, 0, 0), airSample(1, 0, 1000)).dAlt, -601.0 / 6000);
    EXPECT_EQ(aircraft->stream[1].vs, -601);
    EXPECT_EQ(aircraft->vsFpm, -601);
}

TEST_F(AirIncrements, aLandingAtOneHeightStaysThereWhileItIsHighOrClimbs) {
    aircraft->landing = 1;
    aircraft->altAboveGround = 1001;
    EXPECT_EQ(plan(airSample(0, 0, 0), airSample(1, 0, 1000)).dAlt, 0);
    aircraft->altAboveGround = 900;
    aircraft->stream[0].vs = 60;
    aircraft->stream[1].vs = 41;
    EXPECT_EQ(replan().dAlt, 0);
}

TEST_F(AirIncrements, fromGroundToAirTheAircraftClimbsOnly) {
    EXPECT_DOUBLE_EQ(plan(groundSample(0, 0, 0), airSample(1, 0, 1000, 100)).dAlt, 0.1);
    aircraft->alt = 200;
    EXPECT_EQ(replan().dAlt, 0);
    aircraft->stream[1].alt = 9000;
    EXPECT_DOUBLE_EQ(replan().dAlt, 0.6);
    EXPECT_FALSE(setsGearDown());
}

TEST_F(AirIncrements, fromAirToGroundItReachesTheAirportsHeightInTime) {
    openAirport(500);
    EXPECT_DOUBLE_EQ(plan(airSample(0, 0, 0, 1500), groundSample(1, 0, 1000)).dAlt, -1);
    EXPECT_TRUE(setsGearDown());
}

TEST_F(AirIncrements, fromAirToGroundWithoutAirportItDescendsSlowly) {
    EXPECT_DOUBLE_EQ(plan(airSample(0, 0, 0, 1500), groundSample(1, 0, 1000)).dAlt, -601.0 / 6000);
    EXPECT_EQ(aircraft->vsFpm, -601);
    EXPECT_TRUE(setsGearDown());
}

TEST_F(AirIncrements, fromAirToGroundWithoutAirportNoReportMakesItFaster) {
    gQnh = 1013;
    plan(withVs(airSample(0, 0, 0, 1500), -2000), withVs(groundSample(1, 0, 1000), -2000));
    EXPECT_EQ(aircraft->vsFpm, -601);
    aircraft->altAboveGround = 100;
    EXPECT_EQ(replan().vsFpm, -601);
}

TEST_F(AirIncrements, aHighQnhMakesTheFinalDescentSteeper) {
    openAirport(500);
    gQnh = 1020;
    plan(withVs(airSample(0, 0, 0, 1500), -700), withVs(groundSample(1, 0, 1000), -800));
    EXPECT_DOUBLE_EQ(aircraft->vsFpm, -750 - 40.5);
    EXPECT_DOUBLE_EQ(aircraft->dAlt, -790.5 / 6000);
    EXPECT_EQ(aircraft->stream[1].vs, aircraft->vsFpm);
}

TEST_F(AirIncrements, theFinalDescentIsAtLeast601FeetPerMinute) {
    gQnh = 1014;
    plan(withVs(airSample(0, 0, 0, 1500), 200), withVs(groundSample(1, 0, 1000), 0));
    EXPECT_EQ(aircraft->vsFpm, -601);
}

TEST_F(AirIncrements, aLowQnhMakesTheDescentOverTheRunwayFlatter) {
    openAirport(500);
    gQnh = 990;
    aircraft->landing = 1;
    aircraft->altAboveGround = 900;
    plan(withVs(airSample(0, 0, 0, 1500), -800), withVs(airSample(1, 0, 1000, 1500), -1000));
    EXPECT_DOUBLE_EQ(aircraft->vsFpm, -760.5);
    EXPECT_DOUBLE_EQ(aircraft->stream[1].vs, -760.5);
    EXPECT_DOUBLE_EQ(aircraft->dAlt, -760.5 / 6000);
    aircraft->stream[0] = withVs(groundSample(0, 0, 0), -800);
    aircraft->stream[1] = withVs(groundSample(1, 0, 1000), -1000);
    EXPECT_DOUBLE_EQ(replan().vsFpm, -760.5);
}

TEST_F(AirIncrements, fromAHundredFeetAboveGroundTheDescentIs600FeetPerMinute) {
    gQnh = 1014;
    aircraft->altAboveGround = 100;
    plan(withVs(airSample(0, 0, 0, 1500), -2000), withVs(groundSample(1, 0, 1000), -2000));
    EXPECT_EQ(aircraft->vsFpm, -600);
}

TEST_F(AirIncrements, overGroundSamplesWithoutAClimbItDescends) {
    plan(withVs(groundSample(0, 0, 0), 50), withVs(groundSample(1, 0, 1000), 50));
    EXPECT_EQ(aircraft->vsFpm, -601);
    EXPECT_TRUE(setsGearDown());
}

TEST_F(AirIncrements, aLowPassIsFlownOn) {
    plan(withVs(groundSample(0, 0, 0), 50), withVs(groundSample(1, 0, 1000), 51));
    EXPECT_DOUBLE_EQ(aircraft->dAlt, 601.0 / 6000);
    EXPECT_EQ(aircraft->stream[1].vs, 601);
    EXPECT_TRUE(setsGearDown());
}

/// The climb may be told far behind the next sample, and so may what makes up for it.
TEST_F(AirIncrements, theVerticalSpeedsOfAllSamplesTellALowPass) {
    give(*aircraft, withVs(groundSample(0, 0, 0), 50), withVs(groundSample(1, 0, 1000), 50),
         withVs(groundSample(2, 0, 2000), 0), withVs(groundSample(3, 0, 3000), 0));
    EXPECT_EQ(replan().vsFpm, -601);
    aircraft->stream[1].vs = 50;
    aircraft->stream[3].vs = 1;
    EXPECT_DOUBLE_EQ(replan().dAlt, 601.0 / 6000);
    aircraft->stream[1].vs = 500;
    aircraft->stream[3].vs = -450;
    EXPECT_EQ(replan().vsFpm, -601);
}

TEST_F(AirIncrements, aLowPassKeepsTheVerticalSpeedOfItsReport) {
    plan(withVs(groundSample(0, 0, 0), 200), withVs(groundSample(1, 0, 1000), 300));
    EXPECT_EQ(aircraft->vsFpm, 300);
    EXPECT_EQ(aircraft->stream[1].vs, 601);
}

TEST_F(AirIncrements, aLowPassClimbsAsReportedUpToTheCategorysLimit) {
    plan(withVs(groundSample(0, 0, 0), 0), withVs(groundSample(1, 0, 1000), 1200));
    EXPECT_DOUBLE_EQ(aircraft->dAlt, 0.2);
    aircraft->stream[1].vs = 20000;
    EXPECT_DOUBLE_EQ(replan().dAlt, 0.6);
}

TEST_F(AirIncrements, aLandingIsNeverALowPass) {
    aircraft->landing = 1;
    plan(withVs(groundSample(0, 0, 0), 500), withVs(groundSample(1, 0, 1000), 500));
    EXPECT_EQ(aircraft->vsFpm, -601);
}

TEST_F(AirIncrements, aLowPassGoesStraightToTheNextAirborneSample) {
    give(*aircraft, withVs(groundSample(0, 0, 0, 250), 600), groundSample(0.2, 0, 300, 250),
         groundSample(0.4, 0, 600, 250), airSample(1, 0, 1440, 144), airSample(2, 0, 2880, 144));
    aircraft->alt = 0;
    planWay(*aircraft);
    replan();
    ASSERT_EQ(aircraft->stream.size(), 3u);
    EXPECT_EQ(aircraft->stream[1].airborne, 1);
    EXPECT_NEAR(aircraft->stream[1].slot - testSlot, 1440, 3);
    EXPECT_NEAR(aircraft->dAlt, 0.1, 1e-3);
    EXPECT_NEAR(aircraft->lat + aircraft->dLat * legSlots(*aircraft), aircraft->stream[1].lat, 1e-9);
    EXPECT_TRUE(setsGearDown());
}

/// A low pass over so many samples, one of them in the air.
class LowPassTo : public AirIncrements {
protected:
    /// How many samples are left.
    std::size_t samplesLeft(std::size_t samples, std::size_t airborneIndex) {
        while (!aircraft->stream.empty()) {
            aircraft->stream.popFront();
        }
        for (std::size_t i = 0; i < samples; ++i) {
            const auto miles = static_cast<double>(i);
            const auto slots = static_cast<std::int32_t>(1440 * i);
            give(*aircraft, i == airborneIndex ? airSample(miles, 0, slots) : groundSample(miles, 0, slots, 250));
        }
        aircraft->stream[0].vs = 600;
        aircraft->alt = 0;
        replan();
        return aircraft->stream.size();
    }
};

TEST_F(LowPassTo, anAirborneSampleAtTheEndOfThreeIsNotGoneToAtOnce) {
    EXPECT_EQ(samplesLeft(3, 2), 3u);
    EXPECT_EQ(samplesLeft(4, 2), 3u);
}

TEST_F(LowPassTo, theLastSampleIsNeverGoneToAtOnce) {
    EXPECT_EQ(samplesLeft(10, 9), 10u);
    EXPECT_EQ(samplesLeft(11, 9), 3u);
}

TEST_F(LowPassTo, theTenthSampleIsTheLastOneThatItGoesTo) {
    EXPECT_EQ(samplesLeft(13, 9), 5u);
    EXPECT_EQ(aircraft->stream[1].airborne, 1);
    EXPECT_EQ(samplesLeft(13, 10), 13u);
    EXPECT_EQ(aircraft->stream[1].airborne, 0);
    EXPECT_DOUBLE_EQ(aircraft->dAlt, 601.0 / 6000);
}

/// A Rotorcraft reports that it hovers where it was in a sample that is passed over.
TEST_F(AirIncrements, whereALowPassGoesStraightToIsFlownTo) {
    LiveAircraft& helicopter = flying("EC35");
    Sample hovers = airSample(0.4, 0, 600, 100, 50);
    hovers.stationary = 1;
    give(helicopter, withVs(groundSample(0, 0, 0, 50), 600), airSample(0.4, 0, 300, 100, 50), hovers,
         airSample(1, 0, 1440, 144));
    helicopter.stream[1].airborne = 0;
    airIncrements(helicopter);
    ASSERT_EQ(helicopter.stream.size(), 3u);
    EXPECT_DOUBLE_EQ(helicopter.stream[1].lat, hovers.lat);
    EXPECT_EQ(helicopter.stream[1].stationary, 0);
}

TEST_F(AirIncrements, aRunningFlareKeepsItsHeight) {
    aircraft->flareStage = 1;
    aircraft->dAlt = -0.1;
    EXPECT_EQ(plan(airSample(0, 0, 0), airSample(1, 0, 1000, 9000)).dAlt, -0.1);
}

// Speeds and phase.

TEST_F(AirIncrements, theLegHasTheSpeedsOfItsTarget) {
    Sample target = withVs(airSample(1, 0, 1000), 1234);
    target.tas = 321;
    plan(airSample(0, 0, 0), target);
    EXPECT_EQ(aircraft->tasSigned, 321);
    EXPECT_EQ(aircraft->vsFpm, 1234);
}

TEST_F(AirIncrements, whatFliesIsFlyingUnlessItTakesOff) {
    aircraft->phase = FlightPhase::taxi;
    plan(airSample(0, 0, 0), airSample(1, 0, 1000));
    EXPECT_EQ(aircraft->phase, FlightPhase::flying);
    EXPECT_EQ(aircraft->previousPhase, FlightPhase::taxi);
    aircraft->phase = FlightPhase::take_off;
    EXPECT_EQ(replan().phase, FlightPhase::take_off);
}

// Pitch.

TEST_F(AirIncrements, thePitchFollowsTheVerticalSpeed) {
    EXPECT_DOUBLE_EQ(pitchForVerticalSpeed(0), -3 * degree);
    EXPECT_DOUBLE_EQ(pitchForVerticalSpeed(600), -5.2 * degree);
    EXPECT_DOUBLE_EQ(pitchForVerticalSpeed(9000), -11.8 * degree);
    EXPECT_DOUBLE_EQ(pitchForVerticalSpeed(-1200), -0.8 * degree);
    EXPECT_DOUBLE_EQ(pitchForVerticalSpeed(-9000), 2.5 * degree);
}

TEST_F(AirIncrements, thePitchChangesNoFasterThanTheCategoryAllows) {
    aircraft->pitch = -3 * degree;
    EXPECT_NEAR(plan(airSample(0, 0, 0), withVs(airSample(1, 0, 1000), 600)).dPitch, -2.2 * degree / 1000, 1e-12);
    aircraft->stream[1].slot = testSlot + 100;
    EXPECT_DOUBLE_EQ(replan().dPitch, -0.0075 * degree);
    aircraft->pitch = -30 * degree;
    EXPECT_DOUBLE_EQ(replan().dPitch, 0.0075 * degree);
}

TEST_F(AirIncrements, aTakeOffKeepsItsOwnPitchRate) {
    aircraft->phase = FlightPhase::take_off;
    aircraft->dPitch = 0.001;
    EXPECT_EQ(plan(airSample(0, 0, 0), airSample(1, 0, 1000)).dPitch, 0.001);
}

// Heading and bank.

TEST_F(AirIncrements, onItsWayItTurnsToTheLegAfterTheNext) {
    give(*aircraft, airSample(0, 0, 0), airSample(1, 0, 1000), airSample(2, 1, 2000));
    const double turn =
        bearing({aircraft->stream[1].lat, aircraft->stream[1].lon}, {aircraft->stream[2].lat, aircraft->stream[2].lon});
    EXPECT_DOUBLE_EQ(replan().dHeading, turn / 1000);
}

TEST_F(AirIncrements, whileTheLegAfterTheNextIsNotKnownItTurnsIntoThePresentOne) {
    aircraft->heading = 0.25;
    plan(airSample(0, 0, 0), airSample(1, 1, 1000));
    const double way = bearing(testPlace, {aircraft->stream[1].lat, aircraft->stream[1].lon});
    EXPECT_DOUBLE_EQ(aircraft->dHeading, (way - 0.25) / 1000);
    aircraft->heading = way;
    EXPECT_EQ(replan().dHeading, 0);
}

/// There is no way then, but there was one to it.
TEST_F(AirIncrements, whereItIsAlreadyItTurnsToTheHeadingOfItsLeg) {
    aircraft->heading = 0.25;
    aircraft->targetHeading = 0.75;
    EXPECT_DOUBLE_EQ(plan(airSample(-1, 0, 0), airSample(0, 0, 1000)).dHeading, 0.5 / 1000);
}

/// A helicopter that reports one position after it has come to it: nothing tells of a leg there.
TEST_F(AirIncrements, towardsAPlaceWhereItHoversItTurnsIntoThePresentLeg) {
    LiveAircraft& helicopter = give(flying("EC35"), airSample(0, 0, 0, 500, 60), airSample(-1, 0, 6000, 500, 60),
                                    airSample(-1, 0, 6300, 500, 0));
    helicopter.heading = 175 * degree;
    helicopter.targetHeading = 180 * degree;
    airIncrements(helicopter);
    EXPECT_NEAR(helicopter.dHeading * 6000, 5 * degree, 1e-9);
    EXPECT_NEAR(helicopter.dBank * 6000, -5 * degree, 1e-9);
}

/// A leg to the north-east, and the heading at its end, degrees.
class LastKnownLeg : public AirIncrements {
protected:
    double headingAtEnd(double headingDeg, double trackDeg, std::int32_t extensions = 0) {
        Sample target = airSample(1, 1, 1000);
        target.track = trackDeg;
        aircraft->extensions = extensions;
        aircraft->heading = headingDeg * degree;
        aircraft->targetHeading = 45 * degree;
        while (!aircraft->stream.empty()) {
            aircraft->stream.popFront();
        }
        plan(airSample(0, 0, 0), target);
        return (aircraft->heading + aircraft->dHeading * 1000) / degree;
    }
};

TEST_F(LastKnownLeg, aTurnIsFlownOnToTheReportedTrack) {
    EXPECT_NEAR(headingAtEnd(20, 70), 70, 1e-9);
    EXPECT_NEAR(headingAtEnd(20, 89), 89, 1e-9);
    EXPECT_NEAR(headingAtEnd(75, 10), 10, 1e-9);
}

TEST_F(LastKnownLeg, aTrackThatIsNoneOfThisTurnDoesNotCount) {
    EXPECT_NEAR(headingAtEnd(20, 91), 45, 0.02) << "turns more than the leg bends";
    EXPECT_NEAR(headingAtEnd(20, 30), 45, 0.02) << "turns the other way";
    EXPECT_NEAR(headingAtEnd(-60, 106), 45, 0.02) << "too far from the way";
    EXPECT_NEAR(headingAtEnd(20, 0), 45, 0.02) << "not known";
}

/// The leg begins at a sample that was made up, and the aircraft is not there yet when a real one comes.
TEST_F(AirIncrements, behindAGapItTurnsIntoTheWayFromWhereItIs) {
    aircraft->heading = 0;
    aircraft->targetHeading = 89 * degree; // from the sample that was made up
    plan(airSample(0.175, 0, 1), airSample(0.18, 0.25, 1000));
    const double turn = bearing(testPlace, {aircraft->stream[1].lat, aircraft->stream[1].lon});
    EXPECT_NEAR(turn / degree, 54, 1);
    EXPECT_NEAR(aircraft->dHeading * 1000, turn, 1e-9);
}

TEST_F(LastKnownLeg, aLegThatIsMadeUpHasNoTrackOfItsOwn) {
    EXPECT_NEAR(headingAtEnd(20, 70, 8), 45, 0.02);
}

TEST_F(AirIncrements, closeToTheGroundTheReportedHeadingCounts) {
    Sample target = airSample(1, 0, 1000);
    target.hasHeading = 1;
    target.heading = 0.2;
    target.roll = 0.0;
    give(*aircraft, airSample(0, 0, 0), target, airSample(2, 1, 2000));
    aircraft->altAboveGround = 999;
    EXPECT_DOUBLE_EQ(replan().dHeading, 0.2 / 1000);
    aircraft->altAboveGround = 1000;
    EXPECT_GT(replan().dHeading, 0.5 / 1000);
    aircraft->landing = 1;
    EXPECT_DOUBLE_EQ(replan().dHeading, 0.2 / 1000);
    aircraft->altAboveGround = 2000;
    EXPECT_GT(replan().dHeading, 0.5 / 1000);
}

TEST_F(AirIncrements, closeToTheGroundAHeadingThatIsNotReportedWholeDoesNotCount) {
    Sample whole = airSample(1, 0, 1000);
    whole.hasHeading = 1;
    whole.heading = 0.2;
    whole.roll = 0.0;
    Sample unmarked = whole;
    unmarked.hasHeading = 0;
    Sample unknown = whole;
    unknown.heading.reset();
    Sample withoutRoll = whole;
    withoutRoll.roll.reset();
    give(*aircraft, airSample(0, 0, 0), whole, airSample(2, 1, 2000));
    aircraft->altAboveGround = 100;
    EXPECT_DOUBLE_EQ(replan().dHeading, 0.2 / 1000);
    for (const Sample& target : {unmarked, unknown, withoutRoll}) {
        aircraft->stream[1] = target;
        EXPECT_GT(replan().dHeading, 0.5 / 1000);
    }
}

TEST_F(AirIncrements, aTurnIsBankedByItsSizeTowardsItsInside) {
    aircraft->heading = 0.2;
    give(*aircraft, airSample(0, 0, 0), airSample(1, 0, 1000), airSample(2, 0, 2000));
    EXPECT_NEAR(replan().dBank, 0.2 / 1000, 1e-12);
}

TEST_F(AirIncrements, aSharpTurnIsBankedUpToTheCategorysLimits) {
    aircraft->heading = 3;
    give(*aircraft, airSample(0, 0, 0), airSample(1, 0, 100000), airSample(2, 0, 200000));
    EXPECT_NEAR(replan().dBank, 30 * degree / 100000, 1e-12);
    aircraft->stream[1].slot = testSlot + 100;
    EXPECT_DOUBLE_EQ(replan().dBank, 0.02 * degree);
}

TEST_F(AirIncrements, aKnownRollIsTakenWithinTheLeg) {
    Sample target = airSample(1, 0, 1000);
    target.roll = 0.3;
    aircraft->bank = 0.1;
    EXPECT_DOUBLE_EQ(plan(airSample(0, 0, 0), target).dBank, 0.2 / 1000);
}

TEST_F(AirIncrements, noRollBanksFurtherThanTheCategoryDoes) {
    Sample target = airSample(1, 0, 1000);
    target.roll = 2.0;
    EXPECT_DOUBLE_EQ(plan(airSample(0, 0, 0), target).dBank, 30 * degree / 1000);
}

// Above 10000 feet.

TEST_F(AirIncrements, at10000FeetItCleansUpOnce) {
    aircraft->lightsHighSet = 0;
    aircraft->lightsLowSet = 1;
    aircraft->flapsIndex = 2;
    plan(airSample(0, 0, 0, 10000), airSample(1, 0, 1000, 10000));
    EXPECT_EQ(aircraft->lightsHighSet, 1);
    EXPECT_EQ(aircraft->lightsLowSet, 0);
    EXPECT_EQ(aircraft->throttleIndex, 3);
    EXPECT_EQ(aircraft->flapsIndex, 0);
    EXPECT_THAT(events(), ElementsAre("77 208 1", "77 207 1", "77 211 0", "77 209 0", "77 210 0", "77 213 0",
                                      "77 212 1", fmt::format("77 {} 11468", +eventThrottle),
                                      fmt::format("77 {} 0", +eventGear), fmt::format("77 {} 0", +eventFlaps)));
    eventQueue.clear();
    replan();
    EXPECT_THAT(events(), IsEmpty());
}

TEST_F(AirIncrements, aRotorcraftKeepsItsFullThrottle) {
    LiveAircraft& helicopter = flying("EC35");
    give(helicopter, airSample(0, 0, 0, 10000), airSample(1, 0, 1000, 10000));
    airIncrements(helicopter);
    EXPECT_EQ(helicopter.throttleIndex, 4);
}

TEST_F(AirIncrements, below10000FeetNothingIsCleanedUp) {
    aircraft->lightsHighSet = 0;
    plan(airSample(0, 0, 0, 9999), airSample(1, 0, 1000, 11000));
    EXPECT_EQ(aircraft->lightsHighSet, 0);
    EXPECT_THAT(events(), IsEmpty());
}

} // namespace
