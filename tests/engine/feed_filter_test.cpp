#include "engine/feed_filter.h"

#include <gmock/gmock.h>

#include <limits>

#include "tests/engine/engine_test.h"

using ::testing::Contains;
using ::testing::EndsWith;

namespace {

constexpr double firstTime = 1000;

class FeedFilter : public EngineTest {
protected:
    /// Active, with one sample of this speed, which the feed told at firstTime.
    static LiveAircraft& known(const Sample& last) {
        LiveAircraft& aircraft = give(last.airborne != 0 ? flying() : taxiing(), last);
        aircraft.lastFeedTime = firstTime;
        aircraft.lastFeedSlot = testSlot;
        aircraft.origin = "AMS";
        aircraft.destination = "LHR";
        return aircraft;
    }

    /// Whether a record of that sample, so many seconds later, joins the stream.
    static bool accepts(LiveAircraft& aircraft, const Sample& sample, double seconds = 20) {
        const std::size_t before = aircraft.stream.size();
        processFeedRecord(recordOf(sample, firstTime + seconds));
        return aircraft.stream.size() > before;
    }

    /// Whether a sample of this speed is accepted after one of that.
    static bool accepts(double lastKnots, double nextKnots) {
        liveTable.clear();
        return accepts(known(airSample(0, 0, 0, 5000, lastKnots)), airSample(1, 0, 1000, 5000, nextKnots));
    }

    static Sample onTrack(Sample sample, double track) {
        sample.track = track;
        return sample;
    }
};

// Who it is.

TEST_F(FeedFilter, anUnknownHexidBeginsAnAircraft) {
    processFeedRecord(recordOf(airSample(0, 0, 3000)));
    ASSERT_EQ(liveTable.size(), 1u);
    EXPECT_EQ(liveTable[0].hexid, testHexid);
}

TEST_F(FeedFilter, twoTransmittersOfOneCallSignAndTypeAreOneAircraft) {
    processFeedRecord(recordOf(airSample(0, 0, 3000)));
    FeedRecord second = recordOf(airSample(0, 0, 3000));
    second.hexid = testHexid + 1;
    processFeedRecord(std::move(second));
    EXPECT_EQ(liveTable.size(), 1u);
}

TEST_F(FeedFilter, twoTransmittersAreOneAircraftThoughTheRegistrationTellsAnotherType) {
    knowRegistration("PH-ABC", "KLM", "B77W");
    FeedRecord first = recordOf(airSample(0, 0, 3000));
    FeedRecord second = first;
    second.hexid = testHexid + 1;
    processFeedRecord(std::move(first));
    processFeedRecord(std::move(second));
    ASSERT_EQ(liveTable.size(), 1u);
    EXPECT_EQ(liveTable[0].model, "B77W");
}

TEST_F(FeedFilter, twoTransmittersAreOneAircraftThoughOnlyTheSecondOnesRegistrationTellsAnotherType) {
    knowRegistration("PH-ABC", "KLM", "B77W");
    FeedRecord first = recordOf(airSample(0, 0, 3000));
    FeedRecord second = first;
    first.registration = "PH-XYZ";
    second.hexid = testHexid + 1;
    processFeedRecord(std::move(first));
    processFeedRecord(std::move(second));
    EXPECT_EQ(liveTable.size(), 1u);
}

TEST_F(FeedFilter, oneCallSignOnTwoTypesIsTwoAircraft) {
    processFeedRecord(recordOf(airSample(0, 0, 3000)));
    FeedRecord second = recordOf(airSample(0, 0, 3000));
    second.hexid = testHexid + 1;
    second.type = "B77W";
    processFeedRecord(std::move(second));
    EXPECT_EQ(liveTable.size(), 2u);
}

TEST_F(FeedFilter, aircraftWithoutCallSignAreNotTakenForOneAnother) {
    FeedRecord first = recordOf(airSample(0, 0, 3000));
    first.callsign.clear();
    FeedRecord second = first;
    second.hexid = testHexid + 1;
    processFeedRecord(std::move(first));
    processFeedRecord(std::move(second));
    EXPECT_EQ(liveTable.size(), 2u);
}

TEST_F(FeedFilter, anAircraftOnItsWayOutTakesNothing) {
    LiveAircraft& aircraft = known(airSample(0, 0, 0));
    for (const LifeState state : {LifeState::liveryrespawn, LifeState::removingfromsim}) {
        aircraft.lifeState = state;
        EXPECT_FALSE(accepts(aircraft, airSample(1, 0, 1000)));
    }
    EXPECT_EQ(aircraft.lastFeedTime, firstTime);
    EXPECT_EQ(liveTable.size(), 1u);
}

// Time.

TEST_F(FeedFilter, anAcceptedRecordMovesTheFeedTime) {
    LiveAircraft& aircraft = known(airSample(0, 0, 0));
    EXPECT_TRUE(accepts(aircraft, airSample(1, 0, 1000), 20));
    EXPECT_EQ(aircraft.lastFeedTime, firstTime + 20);
}

TEST_F(FeedFilter, withinASecondNothingIsTaken) {
    LiveAircraft& aircraft = known(onTrack(airSample(0, 0, 0), 0));
    const Sample turned = onTrack(airSample(1, 0, 1000), 90);
    EXPECT_FALSE(accepts(aircraft, turned, 0));
    EXPECT_FALSE(accepts(aircraft, turned, 1));
    EXPECT_FALSE(accepts(aircraft, turned, -30));
    EXPECT_EQ(aircraft.lastFeedTime, firstTime);
    EXPECT_TRUE(accepts(aircraft, turned, 1.1));
}

TEST_F(FeedFilter, anEmptyStreamHasNothingToCompareWith) {
    LiveAircraft& aircraft = known(airSample(0, 0, 0));
    aircraft.stream.clear();
    processFeedRecord(recordOf(airSample(1, 0, 1000), firstTime));
    EXPECT_TRUE(aircraft.stream.empty());
    EXPECT_EQ(aircraft.lastFeedTime, firstTime);
}

// Another time: the feed has gone on without the slots.

TEST_F(FeedFilter, afterAGapWithoutSlotsAnAircraftInFlightGoesAndIsBegunAnew) {
    LiveAircraft& aircraft = known(airSample(0, 0, 0));
    for (int i = 0; i < 15; ++i) {
        EXPECT_FALSE(accepts(aircraft, airSample(40 + i, 0, 1000), 300 + i));
        EXPECT_EQ(aircraft.lifeState, LifeState::active) << i;
        slotClock += slotsPerSecond;
    }
    EXPECT_FALSE(accepts(aircraft, airSample(55, 0, 1000), 315));
    EXPECT_EQ(aircraft.lifeState, LifeState::removingfromsim);
    EXPECT_THAT(log.lines(), Contains(EndsWith(" goes: the time of its feed has jumped")));

    liveTable.clear(); // as the simulator's answer does it
    processFeedRecord(recordOf(airSample(43, 0, 1000), firstTime + 330));
    ASSERT_EQ(liveTable.size(), 1u);
    EXPECT_EQ(liveTable[0].lastFeedSlot, slotClock);
}

TEST_F(FeedFilter, afterSuchAGapABufferedAircraftIsDroppedAndBegunAnew) {
    LiveAircraft& aircraft = known(airSample(0, 0, 0));
    aircraft.lifeState = LifeState::buffer;
    for (int i = 0; i < 3; ++i) {
        EXPECT_FALSE(accepts(aircraft, airSample(40 + i, 0, 1000), 300 + 10 * i));
        slotClock += 10 * slotsPerSecond;
    }
    EXPECT_EQ(aircraft.dropRecord, 1);
}

TEST_F(FeedFilter, aGapThatTheSlotsSoonMakeUpForCostsNoAircraftHoweverDenseTheFeed) {
    LiveAircraft& aircraft = known(airSample(0, 0, 0));
    int accepted = 0;
    for (int i = 0; i < 30; ++i) {
        accepted += accepts(aircraft, airSample(4 + 0.125 * i, 0, 1000 + slotsPerSecond * i), 34 + i) ? 1 : 0;
        slotClock += slotsPerSecond;
    }
    EXPECT_EQ(aircraft.lifeState, LifeState::active);
    EXPECT_GT(accepted, 0);
}

TEST_F(FeedFilter, aSecondSourceThatLagsFarBehindCostsNoAircraft) {
    LiveAircraft& aircraft = known(airSample(0, 0, 0));
    for (int second = 1; second <= 100; ++second) {
        slotClock += slotsPerSecond;
        if (second % 3 == 0) {
            EXPECT_FALSE(accepts(aircraft, airSample(-10, 0, 100 * second), second - 120.0)) << second;
        }
        if (second % 10 == 0) {
            EXPECT_TRUE(accepts(aircraft, airSample(0.1 * second, 0, 100 * second), second)) << second;
        }
    }
    EXPECT_EQ(aircraft.lifeState, LifeState::active);
}

TEST_F(FeedFilter, anOldLineThatComesAgainAndAgainCostsNoAircraft) {
    LiveAircraft& aircraft = known(airSample(0, 0, 0));
    for (int i = 0; i < 10; ++i) {
        EXPECT_FALSE(accepts(aircraft, airSample(-10, 0, 1000), -5000));
        slotClock += 5 * slotsPerSecond;
    }
    EXPECT_EQ(aircraft.lifeState, LifeState::active);
}

TEST_F(FeedFilter, aGapThatTheSlotsHaveFilledIsNone) {
    LiveAircraft& aircraft = known(airSample(0, 0, 0));
    slotClock += 70 * slotsPerSecond;
    EXPECT_TRUE(accepts(aircraft, airSample(5, 0, 10000), 70));
    EXPECT_EQ(aircraft.lastFeedSlot, testSlot + 70 * slotsPerSecond);
}

TEST_F(FeedFilter, aBriefGapWithoutSlotsIsFlown) {
    slotClock += 10 * slotsPerSecond;
    EXPECT_TRUE(accepts(known(airSample(0, 0, 0)), airSample(3, 0, 1000), 40));
    liveTable.clear();
    EXPECT_FALSE(accepts(known(airSample(0, 0, 0)), airSample(3, 0, 1000), 40.1));
}

TEST_F(FeedFilter, oneStampFromTheFutureCostsItsRecordAlone) {
    LiveAircraft& aircraft = known(airSample(0, 0, 0));
    for (int i = 1; i <= 4; ++i) {
        slotClock += 10 * slotsPerSecond;
        EXPECT_FALSE(accepts(aircraft, airSample(i - 0.5, 0, 1000 * i - 500), 1e12));
        EXPECT_TRUE(accepts(aircraft, airSample(i, 0, 1000 * i), 10 * i)) << i;
    }
    EXPECT_EQ(aircraft.lastFeedTime, firstTime + 40);
}

TEST_F(FeedFilter, afterTheFeedWasWoundBackAnAircraftInFlightGoes) {
    LiveAircraft& aircraft = known(airSample(0, 0, 0));
    for (int i = 0; i < 3; ++i) {
        EXPECT_EQ(aircraft.lifeState, LifeState::active);
        EXPECT_FALSE(accepts(aircraft, airSample(-40 + i, 0, 1000), -7200 + 10 * i));
        slotClock += 10 * slotsPerSecond;
    }
    EXPECT_EQ(aircraft.lifeState, LifeState::removingfromsim);
}

TEST_F(FeedFilter, anAircraftThatBeganWithAStampFromTheFutureIsBegunAnew) {
    processFeedRecord(recordOf(airSample(0, 0, 3000), 1000 * firstTime)); // in milliseconds
    for (int i = 1; i <= 4; ++i) {
        slotClock += 5 * slotsPerSecond;
        processFeedRecord(recordOf(airSample(i, 0, 3000 + 500 * i), firstTime + 5 * i));
    }
    ASSERT_EQ(liveTable.size(), 1u);
    EXPECT_EQ(liveTable[0].dropRecord, 1);
}

TEST_F(FeedFilter, aFeedThatIsALittleBehindIsWaitedFor) {
    LiveAircraft& aircraft = known(airSample(0, 0, 0));
    for (int i = 0; i < 9; ++i) {
        EXPECT_FALSE(accepts(aircraft, airSample(-9 + i, 0, 1000), -90 + 10 * i));
    }
    EXPECT_EQ(aircraft.lifeState, LifeState::active);
    EXPECT_TRUE(accepts(aircraft, airSample(1, 0, 1000), 10));
}

TEST_F(FeedFilter, aLineFromLongAgoCostsItselfAlone) {
    LiveAircraft& aircraft = known(airSample(0, 0, 0));
    for (int i = 1; i <= 4; ++i) {
        EXPECT_FALSE(accepts(aircraft, airSample(i - 0.5, 0, 1000 * i - 500), -5000));
        EXPECT_TRUE(accepts(aircraft, airSample(i, 0, 1000 * i), 10 * i)) << i;
    }
    EXPECT_EQ(aircraft.lifeState, LifeState::active);
}

TEST_F(FeedFilter, whatStandsStaysInAnotherTime) {
    LiveAircraft& aircraft = known(groundSample(0, 0, 0, 0));
    for (int i = 0; i < 3; ++i) {
        EXPECT_FALSE(accepts(aircraft, groundSample(0, 0, 1000, 0), 300 + 10 * i));
        slotClock += 10 * slotsPerSecond;
    }
    EXPECT_EQ(aircraft.lifeState, LifeState::active);
    EXPECT_TRUE(accepts(aircraft, groundSample(0.1, 0, 3000, 10), 360));
}

// Speed.

TEST_F(FeedFilter, aSpeedThatGrowsTenfoldIsAnError) {
    EXPECT_TRUE(accepts(6, 59.9));
    EXPECT_FALSE(accepts(6, 60));
}

TEST_F(FeedFilter, aSpeedThatFallsToATenthIsAnError) {
    EXPECT_TRUE(accepts(59.9, 6));
    EXPECT_FALSE(accepts(60, 6));
}

TEST_F(FeedFilter, fromRollingToEightyKnotsIsAnError) {
    EXPECT_TRUE(accepts(5, 79.9));
    EXPECT_FALSE(accepts(5, 80));
    EXPECT_FALSE(accepts(0, 80));
}

TEST_F(FeedFilter, fromEightyKnotsToRollingIsAnError) {
    EXPECT_TRUE(accepts(79.9, 5));
    EXPECT_FALSE(accepts(80, 5));
}

// Dense data.

TEST_F(FeedFilter, inCruiseRecordsLieMoreThan450MetresApart) {
    const double seconds = 450 / 1852.0 / 250 * 3600;
    LiveAircraft& aircraft = known(airSample(0, 0, 0));
    EXPECT_FALSE(accepts(aircraft, airSample(1, 0, 1000), seconds - 0.01));
    EXPECT_TRUE(accepts(aircraft, airSample(1, 0, 1000), seconds + 0.01));
}

TEST_F(FeedFilter, aTurnOrASlowFlightIsNotThinnedOut) {
    LiveAircraft& straight = known(onTrack(airSample(0, 0, 0), 50));
    EXPECT_FALSE(accepts(straight, onTrack(airSample(1, 0, 1000), 51), 2));
    EXPECT_TRUE(accepts(straight, onTrack(airSample(1, 0, 1000), 51.1), 2));
    liveTable.clear();
    EXPECT_TRUE(accepts(known(airSample(0, 0, 0, 5000, 120)), airSample(1, 0, 1000, 5000, 120), 2));
}

TEST_F(FeedFilter, atNorthTheTracksDifferenceIsTakenAsItStands) {
    EXPECT_TRUE(accepts(known(onTrack(airSample(0, 0, 0), 359.9)), onTrack(airSample(1, 0, 1000), 0.1), 2));
}

TEST_F(FeedFilter, onTheGroundRecordsLieMoreThanTwentyMetresApart) {
    const double seconds = 20 / 1852.0 / 20 * 3600;
    EXPECT_FALSE(accepts(known(groundSample(0, 0, 0, 20)), groundSample(0.1, 0, 1000, 20), seconds - 0.01));
    liveTable.clear();
    EXPECT_TRUE(accepts(known(groundSample(0, 0, 0, 20)), groundSample(0.1, 0, 1000, 20), seconds + 0.01));
}

TEST_F(FeedFilter, onTheGroundNoGapNeedsMoreThan15Seconds) {
    for (const double knots : {0.0, 0.1}) {
        liveTable.clear();
        EXPECT_FALSE(accepts(known(groundSample(0, 0, 0, 1)), groundSample(0.1, 0, 1000, knots), 15)) << knots;
        liveTable.clear();
        EXPECT_TRUE(accepts(known(groundSample(0, 0, 0, 1)), groundSample(0.1, 0, 1000, knots), 15.1)) << knots;
    }
}

TEST_F(FeedFilter, onTheGroundATurnOrAFastRollIsNotThinnedOut) {
    EXPECT_FALSE(
        accepts(known(onTrack(groundSample(0, 0, 0, 30), 10)), onTrack(groundSample(0.1, 0, 1000, 30), 12), 1.2));
    liveTable.clear();
    EXPECT_TRUE(
        accepts(known(onTrack(groundSample(0, 0, 0, 30), 10)), onTrack(groundSample(0.1, 0, 1000, 30), 12.1), 1.2));
    liveTable.clear();
    EXPECT_TRUE(accepts(known(groundSample(0, 0, 0, 31)), groundSample(0.1, 0, 1000, 31), 1.2));
}

TEST_F(FeedFilter, anExtendedStreamTakesDenseData) {
    LiveAircraft& aircraft = known(airSample(0, 0, 0));
    aircraft.extensions = 1;
    EXPECT_TRUE(accepts(aircraft, airSample(1, 0, 1000), 2));
}

// Height.

TEST_F(FeedFilter, justAboveTheAirportABufferedAircraftTakesNothing) {
    openAirport(500);
    LiveAircraft& aircraft = known(airSample(0, 0, 0));
    aircraft.lifeState = LifeState::buffer;
    EXPECT_FALSE(accepts(aircraft, airSample(1, 0, 1000, 608)));
    EXPECT_FALSE(accepts(aircraft, airSample(1, 0, 1000, 392)));
    EXPECT_TRUE(accepts(aircraft, airSample(1, 0, 1000, 609)));
    aircraft.lifeState = LifeState::active;
    EXPECT_TRUE(accepts(aircraft, airSample(2, 0, 2000, 608), 40));
}

TEST_F(FeedFilter, onTheGroundAndFromTenThousandFeetTheAirportIsNoMatter) {
    openAirport(10000);
    EXPECT_FALSE(hangsOverRunway(0));
    EXPECT_TRUE(hangsOverRunway(9999));
    EXPECT_FALSE(hangsOverRunway(10000));
    openAirport(50);
    EXPECT_TRUE(hangsOverRunway(1));
    gAirportInUse.reset();
    EXPECT_FALSE(hangsOverRunway(1));
}

// What cannot be.

TEST_F(FeedFilter, aRecordOfNoPossibleStateCostsItself) {
    const double nan = std::numeric_limits<double>::quiet_NaN();
    const double infinity = std::numeric_limits<double>::infinity();
    LiveAircraft& aircraft = known(airSample(0, 0, 0));
    for (double Sample::*field :
         {&Sample::lat, &Sample::lon, &Sample::alt, &Sample::gs, &Sample::track, &Sample::vs, &Sample::tas}) {
        for (const double value : {nan, infinity, -infinity, 1e9}) {
            Sample sample = airSample(1, 0, 1000);
            sample.*field = value;
            EXPECT_FALSE(accepts(aircraft, sample));
        }
    }
    Sample rolled = airSample(1, 0, 1000);
    rolled.roll = 4.0;
    EXPECT_FALSE(accepts(aircraft, rolled));
    rolled.roll.reset();
    rolled.heading = nan;
    EXPECT_FALSE(accepts(aircraft, rolled));
    processFeedRecord(recordOf(airSample(1, 0, 1000), nan));
    EXPECT_EQ(aircraft.stream.size(), 1u);
    EXPECT_TRUE(accepts(aircraft, airSample(1, 0, 1000)));
}

} // namespace
