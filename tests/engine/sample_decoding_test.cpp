#include "engine/sample_decoding.h"

#include <gmock/gmock.h>

#include <new>

#include "engine/extending_situations.h"
#include "tests/engine/engine_test.h"
#include "tests/support/allocation_count.h"

using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

namespace {

constexpr double hardly = 0.0001 * 60; // nm that a hardly moved aircraft has moved north

class SampleDecoding : public EngineTest {
protected:
    static Sample stationary(Sample sample) {
        sample.stationary = 1;
        return sample;
    }

    static std::vector<int> slotsOf(const LiveAircraft& aircraft) {
        std::vector<int> slots;
        for (std::size_t i = 0; i < aircraft.stream.size(); ++i) {
            slots.push_back(aircraft.stream[i].slot - testSlot);
        }
        return slots;
    }

    /// In "buffer", not yet born, with one sample.
    static LiveAircraft& unborn(const Sample& first) {
        LiveAircraft& aircraft = give(flying(), first);
        aircraft.phase = FlightPhase::birth;
        aircraft.lifeState = LifeState::buffer;
        return aircraft;
    }

    /// Stands since 100 slots, after it moved.
    static LiveAircraft& waiting() {
        return give(taxiing(), groundSample(0, 0, 100), groundSample(0.1, 0, 400),
                    stationary(groundSample(0.1, 0, 700)));
    }
};

// The stream.

TEST_F(SampleDecoding, aSampleJoinsTheStream) {
    LiveAircraft& aircraft = give(flying(), airSample(0, 0, 100));
    decodeExisting(aircraft, airSample(1, 0, 1500));
    EXPECT_THAT(slotsOf(aircraft), ElementsAre(100, 1500));
}

TEST_F(SampleDecoding, samplesStayInOrderOfTime) {
    LiveAircraft& aircraft = give(flying(), airSample(0, 0, 100));
    decodeExisting(aircraft, airSample(1, 0, 100));
    decodeExisting(aircraft, airSample(2, 0, 50));
    EXPECT_THAT(slotsOf(aircraft), ElementsAre(100, 101, 102));
}

TEST_F(SampleDecoding, unbornSamplesStayInOrderOfTime) {
    LiveAircraft& aircraft = unborn(airSample(0, 0, 100));
    decodeExisting(aircraft, airSample(1, 0, 90));
    EXPECT_THAT(slotsOf(aircraft), ElementsAre(100, 101));
}

TEST_F(SampleDecoding, anUnbornAircraftInTheAirTakesNoSampleOfTheSamePosition) {
    LiveAircraft& aircraft = unborn(airSample(0, 0, 100));
    decodeExisting(aircraft, airSample(0, 0, 1500));
    EXPECT_THAT(slotsOf(aircraft), ElementsAre(100));
}

TEST_F(SampleDecoding, anUnbornAircraftOnTheGroundStandsWhereItIsSeenAgain) {
    LiveAircraft& aircraft = unborn(groundSample(0, 0, 100));
    decodeExisting(aircraft, groundSample(0, 0, 1500, 3));
    ASSERT_THAT(slotsOf(aircraft), ElementsAre(100, 1500));
    EXPECT_EQ(aircraft.stream[1].stationary, 1);
    EXPECT_EQ(aircraft.stream[1].gs, 0);
}

TEST_F(SampleDecoding, anUnbornAircraftWithoutSamplesTakesNone) {
    LiveAircraft& aircraft = unborn(airSample(0, 0, 100));
    aircraft.stream.clear();
    decodeExisting(aircraft, airSample(1, 0, 200));
    EXPECT_TRUE(aircraft.stream.empty());
}

TEST_F(SampleDecoding, aBornAircraftWithoutSamplesOnlySaysSo) {
    LiveAircraft& aircraft = flying();
    decodeExisting(aircraft, airSample(1, 0, 1500));
    EXPECT_TRUE(aircraft.stream.empty());
    EXPECT_THAT(log.lines(), ElementsAre("checkExtendingSituations empty sz?"));
}

TEST_F(SampleDecoding, aStreamOf201SamplesEndsTheAircraft) {
    LiveAircraft& aircraft = flying();
    for (int i = 0; i < 200; ++i) {
        give(aircraft, airSample(i, 0, 100 * i));
    }
    decodeExisting(aircraft, airSample(200, 0, 20000));
    EXPECT_EQ(aircraft.lifeState, LifeState::active);
    EXPECT_EQ(aircraft.stream.size(), 201u);
    decodeExisting(aircraft, airSample(201, 0, 20100));
    EXPECT_EQ(aircraft.lifeState, LifeState::removingfromsim);
}

TEST_F(SampleDecoding, aFailureIsLoggedAndPassedUp) {
    LiveAircraft& aircraft = flying();
    constexpr int ringOfFirstSamples = 8;
    for (int i = 0; i < ringOfFirstSamples; ++i) {
        give(aircraft, airSample(i, 0, 100 * i));
    }
    const FailingAllocation noMemoryForALargerRing(2 * ringOfFirstSamples * sizeof(void*));
    EXPECT_THROW(decodeExisting(aircraft, airSample(8, 0, 800)), std::bad_alloc);
    EXPECT_THAT(log.lines(), ElementsAre("decodeExisting exception std::bad_alloc"));
    EXPECT_EQ(aircraft.stream.size(), 8u);
}

TEST_F(SampleDecoding, aStreamThatIsTooLongWhileTheObjectComesIntoBeingIsSaidOnce) {
    LiveAircraft& aircraft = flying();
    aircraft.lifeState = LifeState::adding2sim;
    for (int i = 0; i < 201; ++i) {
        give(aircraft, airSample(i, 0, 100 * i));
    }
    decodeExisting(aircraft, airSample(201, 0, 20100));
    decodeExisting(aircraft, airSample(202, 0, 20200));
    EXPECT_EQ(aircraft.removeWhenAdded, 1);
    EXPECT_THAT(log.lines(), ElementsAre("                   KLM123   PH-ABC KLM A320 goes: too many positions"));
}

// Holding.

TEST_F(SampleDecoding, aHoldingAircraftThatHasMovedOnIsRemoved) {
    LiveAircraft& aircraft = give(taxiing(), stationary(groundSample(0, 0, 100)));
    aircraft.holding = 1;
    aircraft.holdStartSlot = 7;
    const double thresholdNm = HOLDING_THRESHOLD_METERS.value * nmPerMeter;
    decodeExisting(aircraft, groundSample(thresholdNm * 0.99, 0, 400));
    EXPECT_EQ(aircraft.lifeState, LifeState::active);
    aircraft.holding = 1;
    decodeExisting(aircraft, groundSample(thresholdNm * 1.01, 0, 700));
    EXPECT_EQ(aircraft.lifeState, LifeState::removingfromsim);
    EXPECT_EQ(aircraft.holding, 0);
    EXPECT_EQ(aircraft.holdStartSlot, 0);
}

// On a stand.

TEST_F(SampleDecoding, anAircraftOnItsStandTakesNoSamplesUntilItIsActive) {
    LiveAircraft& aircraft = give(taxiing(), stationary(groundSample(0, 0, 100)));
    for (const LifeState state : {LifeState::buffer, LifeState::adding2sim}) {
        for (const FlightPhase phase : {FlightPhase::parked, FlightPhase::parking}) {
            aircraft.lifeState = state;
            aircraft.phase = phase;
            decodeExisting(aircraft, groundSample(0.1, 0, 400));
            EXPECT_EQ(aircraft.stream.size(), 1u);
        }
    }
}

// Waiting.

TEST_F(SampleDecoding, anAircraftThatStandsThroughoutNeedsOneSample) {
    LiveAircraft& aircraft = give(taxiing(), stationary(groundSample(0, 0, 100)), stationary(groundSample(0, 0, 400)),
                                  stationary(groundSample(0, 0, 700)));
    decodeExisting(aircraft, groundSample(0, 0, 1000));
    // The remaining pair need not be waited out either.
    EXPECT_THAT(slotsOf(aircraft), ElementsAre(1, 1000));
}

TEST_F(SampleDecoding, aMovedSampleInTheStreamKeepsItWhole) {
    LiveAircraft& aircraft = waiting();
    decodeExisting(aircraft, groundSample(0.1, 0, 1000));
    EXPECT_THAT(slotsOf(aircraft), ElementsAre(100, 400, 700, 1000));
}

TEST_F(SampleDecoding, aBriefWaitThatHasEndedIsCutOut) {
    LiveAircraft& aircraft = waiting();
    aircraft.stream[2].slot = aircraft.stream[1].slot + 1499;
    decodeExisting(aircraft, groundSample(0.2, 0, 4000));
    EXPECT_THAT(slotsOf(aircraft), ElementsAre(100, 400, 4000));
}

TEST_F(SampleDecoding, aLongWaitStays) {
    LiveAircraft& aircraft = waiting();
    aircraft.stream[2].slot = aircraft.stream[1].slot + 1500;
    decodeExisting(aircraft, groundSample(0.2, 0, 4000));
    EXPECT_EQ(aircraft.stream.size(), 4u);
}

TEST_F(SampleDecoding, aLongWaitIsCutOutWhenItHardlyMovedAfterwards) {
    LiveAircraft& close = waiting();
    close.stream[2].slot = close.stream[1].slot + 1500;
    decodeExisting(close, groundSample(0.1 + 21 * nmPerMeter, 0, 4000));
    EXPECT_EQ(close.stream.size(), 3u);
    LiveAircraft& distant = waiting();
    distant.stream[2].slot = distant.stream[1].slot + 1500;
    decodeExisting(distant, groundSample(0.1 + 23 * nmPerMeter, 0, 4000));
    EXPECT_EQ(distant.stream.size(), 4u);
}

TEST_F(SampleDecoding, aWaitOfUpToFiveReportsIsSeen) {
    for (int reports : {5, 6}) {
        LiveAircraft& aircraft = give(taxiing(), groundSample(0, 0, 100), groundSample(0.1, 0, 400));
        for (int i = 0; i < reports; ++i) {
            give(aircraft, stationary(groundSample(0.1, 0, 500 + 100 * i)));
        }
        decodeExisting(aircraft, groundSample(0.2, 0, 4000));
        EXPECT_EQ(aircraft.stream.size(), reports == 5 ? 3u : 2u + 6u + 1u);
    }
}

TEST_F(SampleDecoding, aWaitThatEndsInTheAirStays) {
    LiveAircraft& aircraft = waiting();
    decodeExisting(aircraft, airSample(0.2, 0, 1000, 300, 140));
    EXPECT_THAT(slotsOf(aircraft), ElementsAre(100, 400, 700, 1000));
}

TEST_F(SampleDecoding, whatHoversThroughoutKeepsItsSamples) {
    LiveAircraft& aircraft = give(flying("EC35"), stationary(airSample(0, 0, 100)), stationary(airSample(0, 0, 400)));
    decodeExisting(aircraft, airSample(0, 0, 1000));
    EXPECT_THAT(slotsOf(aircraft), ElementsAre(100, 400, 1000));
}

TEST_F(SampleDecoding, aPairIsNoWaitingPeriod) {
    LiveAircraft& aircraft = give(taxiing(), groundSample(0, 0, 100), stationary(groundSample(0, 0, 400)));
    decodeExisting(aircraft, groundSample(0.2, 0, 4000));
    EXPECT_EQ(aircraft.stream.size(), 3u);
}

TEST_F(SampleDecoding, aPairThatStandsIsDueAtOnce) {
    LiveAircraft& aircraft = give(taxiing(), stationary(groundSample(0, 0, 2000, 9)));
    decodeExisting(aircraft, groundSample(0, 0, 3000, 0));
    EXPECT_THAT(slotsOf(aircraft), ElementsAre(1, 3000));
    EXPECT_EQ(aircraft.stream[0].gs, 0);
}

// Touch and go.

class TouchAndGo : public SampleDecoding {
protected:
    TouchAndGo() {
        aircraft = &give(taxiing(), airSample(0, 0, 100, 50, 140));
        aircraft->previousPhase = FlightPhase::flying;
        aircraft->rollingOut = 1;
        aircraft->landing = aircraft->landedHere = aircraft->cleanedUp = 1;
    }

    LiveAircraft* aircraft;
};

TEST_F(TouchAndGo, twoAirborneSamplesInTheRollOutMakeATakeOffOfIt) {
    decodeExisting(*aircraft, airSample(0.1, 0, 400, 300, 140));
    EXPECT_EQ(aircraft->takingOff, 1);
    EXPECT_EQ(aircraft->phase, FlightPhase::taxi);
    EXPECT_EQ(aircraft->previousPhase, FlightPhase::flying);
    EXPECT_EQ(aircraft->landing + aircraft->landedHere + aircraft->cleanedUp, 0);
    EXPECT_EQ(aircraft->maxLater, 5000);
    EXPECT_EQ(aircraft->maxEarlier, 3000);
    EXPECT_EQ(aircraft->stream.size(), 2u);
    EXPECT_THAT(events(),
                ElementsAre(fmt::format("77 {} 11468", +eventThrottle), fmt::format("77 {} 16383", +eventSpoilers),
                            fmt::format("77 {} 3072", +eventFlaps), "77 208 1", "77 207 1", "77 211 1", "77 209 1",
                            "77 210 1", "77 213 1", "77 212 0"));
}

TEST_F(TouchAndGo, itNeedsBothSamplesAirborne) {
    aircraft->stream[0].airborne = 0;
    decodeExisting(*aircraft, airSample(0.1, 0, 400, 300, 140));
    EXPECT_EQ(aircraft->takingOff, 0);
}

TEST_F(TouchAndGo, itNeedsAnActiveAircraftThatRollsOut) {
    aircraft->rollingOut = 0;
    decodeExisting(*aircraft, airSample(0.1, 0, 400, 300, 140));
    EXPECT_EQ(aircraft->takingOff, 0);
    aircraft->rollingOut = 1;
    aircraft->lifeState = LifeState::adding2sim;
    decodeExisting(*aircraft, airSample(0.2, 0, 700, 600, 140));
    EXPECT_EQ(aircraft->takingOff, 0);
}

TEST_F(TouchAndGo, itNeedsAnAircraftOnTheGround) {
    aircraft->onGround = 0;
    decodeExisting(*aircraft, airSample(0.1, 0, 400, 300, 140));
    EXPECT_EQ(aircraft->stream.size(), 2u);
    EXPECT_EQ(aircraft->takingOff, 0);
    EXPECT_EQ(aircraft->landing, 1);
    EXPECT_THAT(events(), IsEmpty());
}

TEST_F(TouchAndGo, oneThatTakesOffAlreadyIsLeftAlone) {
    aircraft->takingOff = 1;
    decodeExisting(*aircraft, airSample(0.1, 0, 400, 300, 140));
    EXPECT_EQ(aircraft->stream.size(), 2u);
    EXPECT_EQ(aircraft->landing, 1);
    EXPECT_EQ(aircraft->maxLater, 1000);
    EXPECT_THAT(events(), IsEmpty());
}

// The filter of positions.

class PositionFilter : public SampleDecoding {
protected:
    static bool keeps(LiveAircraft& aircraft, Sample sample) { return positionFilter(aircraft, sample); }

    static LiveAircraft& takingOff(double lastKnots) {
        LiveAircraft& aircraft = give(taxiing(), groundSample(0, 0, 100, lastKnots));
        aircraft.takingOff = 1;
        return aircraft;
    }
};

TEST_F(PositionFilter, inFlightAReportOfTheSamePositionIsDropped) {
    EXPECT_FALSE(keeps(give(flying(), airSample(0, 0, 100)), airSample(0, 0, 400)));
    EXPECT_FALSE(keeps(give(flying(), groundSample(0, 0, 100)), groundSample(0, 0, 400)));
}

TEST_F(PositionFilter, inFlightAReportOfHardlyAnyMovementIsDropped) {
    EXPECT_FALSE(keeps(give(flying(), airSample(0, 0, 100)), airSample(hardly, 0, 400)));
    EXPECT_FALSE(keeps(give(flying(), groundSample(0, 0, 100)), groundSample(hardly, 0, 400)));
}

TEST_F(PositionFilter, aRotorcraftMayStand) {
    LiveAircraft& aircraft = give(flying("EC35"), airSample(0, 0, 100));
    Sample same = airSample(0, 0, 400);
    EXPECT_TRUE(positionFilter(aircraft, same));
    EXPECT_EQ(same.stationary, 1);
    EXPECT_TRUE(keeps(aircraft, airSample(hardly, 0, 400)));
}

TEST_F(PositionFilter, onTheGroundTheSamePositionMeansNoSpeed) {
    LiveAircraft& aircraft = give(taxiing(), groundSample(0, 0, 100));
    Sample same = groundSample(0, 0, 400, 3);
    ASSERT_TRUE(positionFilter(aircraft, same));
    EXPECT_EQ(same.gs, 0);
    EXPECT_EQ(same.stationary, 1);
    EXPECT_EQ(same.slot, testSlot + 400);
}

TEST_F(PositionFilter, onTheGroundHardlyAnyMovementIsACopyOfTheLastThatStands) {
    LiveAircraft& aircraft = give(taxiing(), groundSample(0, 0, 100));
    Sample close = groundSample(hardly, 0, 400);
    ASSERT_TRUE(positionFilter(aircraft, close));
    EXPECT_EQ(close.lat, testPlace.lat);
    EXPECT_EQ(close.gs, 0);
    EXPECT_EQ(close.stationary, 1);
    EXPECT_EQ(close.slot, testSlot + 100);
    decodeExisting(aircraft, groundSample(hardly, 0, 400));
    EXPECT_THAT(slotsOf(aircraft), ElementsAre(100, 101));
}

TEST_F(PositionFilter, aBufferedAircraftOnTheGroundMayStand) {
    EXPECT_TRUE(keeps(unborn(groundSample(0, 0, 100)), groundSample(0, 0, 400)));
    EXPECT_FALSE(keeps(unborn(airSample(0, 0, 100)), airSample(0, 0, 400)));
}

TEST_F(PositionFilter, aTakeOffRollDoesNotStopFromThirtyKnots) {
    EXPECT_FALSE(keeps(takingOff(30), groundSample(0, 0, 400, 40)));
    EXPECT_TRUE(keeps(takingOff(29), groundSample(0, 0, 400, 40)));
    EXPECT_TRUE(keeps(takingOff(30), groundSample(0, 0, 400, 0)));
}

TEST_F(PositionFilter, aTakeOffRollDoesNotCreepFromFiftyKnots) {
    EXPECT_FALSE(keeps(takingOff(50), groundSample(hardly, 0, 400, 40)));
    EXPECT_TRUE(keeps(takingOff(49), groundSample(hardly, 0, 400, 40)));
    EXPECT_TRUE(keeps(takingOff(50), groundSample(hardly, 0, 400, 0)));
}

TEST_F(PositionFilter, aMovementWithoutSpeedIsDroppedInFastMotion) {
    EXPECT_FALSE(keeps(give(flying(), airSample(0, 0, 100, 5000, 50)), airSample(1, 0, 400, 5000, 0)));
    EXPECT_TRUE(keeps(give(flying(), airSample(0, 0, 100, 5000, 49)), airSample(1, 0, 400, 5000, 0)));
    EXPECT_TRUE(keeps(give(flying(), airSample(0, 0, 100, 5000, 50)), airSample(1, 0, 400, 5000, 1)));
    EXPECT_FALSE(keeps(takingOff(50), groundSample(1, 0, 400, 0)));
    EXPECT_TRUE(keeps(give(taxiing(), groundSample(0, 0, 100, 50)), groundSample(1, 0, 400, 0)));
}

// After a gap.

class AfterAGap : public SampleDecoding {
protected:
    static LiveAircraft& extended(LiveAircraft& aircraft) {
        aircraft.extensions = 3;
        aircraft.holding = 1;
        aircraft.holdStartSlot = 5;
        return aircraft;
    }
};

TEST_F(AfterAGap, aSampleAheadEndsTheExtension) {
    LiveAircraft& aircraft = extended(give(flying(), airSample(0.5, 0, 800)));
    aircraft.holding = 0;
    decodeExisting(aircraft, airSample(2, 0, 3000));
    EXPECT_THAT(slotsOf(aircraft), ElementsAre(1, 3000));
    EXPECT_EQ(aircraft.extensions, 0);
    EXPECT_EQ(aircraft.maxLater, 3000);
}

TEST_F(AfterAGap, aSampleBehindAFlyingAircraftIsDropped) {
    LiveAircraft& aircraft = extended(give(flying(), airSample(0.5, 0, 800)));
    aircraft.holding = 0;
    decodeExisting(aircraft, airSample(0.4, 0, 3000));
    EXPECT_THAT(slotsOf(aircraft), ElementsAre(800));
    EXPECT_EQ(aircraft.extensions, 3);
    decodeExisting(aircraft, airSample(0.5 + std::cos(101 * radiansPerDegree), std::sin(101 * radiansPerDegree), 3000));
    EXPECT_EQ(aircraft.extensions, 3);
    decodeExisting(aircraft, airSample(0.5 + std::cos(99 * radiansPerDegree), std::sin(99 * radiansPerDegree), 3000));
    EXPECT_EQ(aircraft.extensions, 0);
}

TEST_F(AfterAGap, onTheGroundItEndsTheHoldingToo) {
    LiveAircraft& aircraft = extended(give(taxiing(), groundSample(0, 0, 800)));
    Sample next = groundSample(-0.1, 0, 3000);
    EXPECT_TRUE(checkExtendingSituations(aircraft, next));
    EXPECT_EQ(aircraft.holding, 0);
    EXPECT_EQ(aircraft.holdStartSlot, 0);
    EXPECT_EQ(aircraft.stream[0].slot, testSlot + 1);
}

TEST_F(AfterAGap, anAircraftWithoutSamplesTakesNoneAndSaysSo) {
    LiveAircraft& aircraft = flying();
    aircraft.extensions = 5;
    decodeExisting(aircraft, airSample(1, 0, 3000));
    EXPECT_TRUE(aircraft.stream.empty());
    EXPECT_EQ(aircraft.extensions, 5);
    EXPECT_TRUE(log.contains("checkExtendingSituations empty sz?"));
}

TEST_F(AfterAGap, whatTheFilterDropsEndsNothing) {
    LiveAircraft& aircraft = extended(give(flying(), airSample(0.5, 0, 800)));
    Sample same = airSample(0.5, 0, 3000);
    EXPECT_FALSE(checkExtendingSituations(aircraft, same));
    EXPECT_EQ(aircraft.extensions, 3);
}

} // namespace
