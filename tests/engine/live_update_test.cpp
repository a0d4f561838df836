#include "engine/live_update.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <numeric>

#include "engine/spawning.h"
#include "tests/engine/engine_test.h"

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::SizeIs;

namespace {

class LiveUpdate : public EngineTest {};

TEST_F(LiveUpdate, anActiveAircraftMovesAndItsPositionIsWrittenDown) {
    LiveAircraft& aircraft = give(flying(), airSample(1, 0, 1000));
    aircraft.dLat = 1e-5;
    EXPECT_FALSE(updateLiveAc(aircraft));
    ASSERT_THAT(positionFront, SizeIs(1));
    EXPECT_EQ(positionFront[0].objectId, testObject);
    EXPECT_DOUBLE_EQ(positionFront[0].lat, testPlace.lat + 1e-5);
}

TEST_F(LiveUpdate, atItsSampleTheNextLegBegins) {
    Sample next = airSample(2, 0, 2000);
    next.vs = 600;
    next.tas = 300;
    LiveAircraft& aircraft = give(flying(), airSample(0, 0, 0), next);
    updateLiveAc(aircraft);
    EXPECT_EQ(aircraft.stream.size(), 1u);
    EXPECT_EQ(aircraft.vsFps, 10);
    EXPECT_EQ(aircraft.tas, 300);
    EXPECT_GT(aircraft.lat, testPlace.lat);
}

TEST_F(LiveUpdate, whatStandsHasNoSpeedAndDoesNotMove) {
    Sample still = groundSample(0, 0, 1000);
    still.stationary = 1;
    LiveAircraft& aircraft = give(taxiing(), groundSample(0, 0, 0), still);
    aircraft.tas = aircraft.tasSigned = 7;
    updateLiveAc(aircraft);
    EXPECT_EQ(aircraft.tas, 0);
    EXPECT_EQ(aircraft.lat, testPlace.lat);
    EXPECT_THAT(positionFront, SizeIs(1));
}

/// Its first state has the stand's heading as increment as well: nothing may ever add it.
TEST_F(LiveUpdate, whatIsBornOnAStandKeepsTheStandsHeading) {
    Sample still = groundSample(0, 0, 100, 0);
    still.stationary = 1;
    Sample stillThere = still;
    stillThere.slot += 300;
    LiveAircraft& aircraft = give(taxiing(), still, stillThere);
    aircraft.phase = FlightPhase::parked;
    aircraft.standHeading = 2;
    initialState(aircraft);
    ASSERT_EQ(aircraft.dHeading, 2);
    for (int slot = 0; slot < 1000; ++slot) {
        updateLiveAc(aircraft);
        ++slotClock;
    }
    EXPECT_EQ(aircraft.heading, 2);
    EXPECT_EQ(aircraft.lifeState, LifeState::active);
    EXPECT_EQ(aircraft.extensions, 1) << "both of its samples are passed";
    EXPECT_EQ(positionFront.back().heading, 2);
}

TEST_F(LiveUpdate, whatEndsWritesNoPosition) {
    LiveAircraft& aircraft = give(flying(), airSample(0, 0, 0));
    aircraft.extensions = -1;
    EXPECT_FALSE(updateLiveAc(aircraft));
    EXPECT_EQ(aircraft.lifeState, LifeState::removingfromsim);
    EXPECT_THAT(positionFront, IsEmpty());
}

TEST_F(LiveUpdate, anActiveAircraftWithoutSamplesIsRemoved) {
    LiveAircraft& aircraft = flying();
    aircraft.tas = 250;
    updateLiveAc(aircraft);
    EXPECT_EQ(aircraft.lifeState, LifeState::removingfromsim);
    EXPECT_TRUE(log.contains("updateLiveAc stream empty ?          KLM123   PH-ABC, hexid:4739591, objectid:77, "
                             "alt:5000 ft, lalo:52.000000,4.000000, TAS:250"));
}

TEST_F(LiveUpdate, anActiveAircraftWithoutObjectIsRemoved) {
    LiveAircraft& aircraft = give(flying(), airSample(1, 0, 1000));
    aircraft.objectId = 0;
    updateLiveAc(aircraft);
    EXPECT_EQ(aircraft.lifeState, LifeState::removingfromsim);
    EXPECT_TRUE(log.contains("updateLiveAc objectid=0? hexid: 4739591,cs:KLM123, reg:PH-ABC, aimo:KLM A320 sz:1"));
    EXPECT_THAT(positionFront, IsEmpty());
}

TEST_F(LiveUpdate, anAircraftOnItsWayOutDoesNothing) {
    for (const LifeState state : {LifeState::liveryrespawn, LifeState::removingfromsim, LifeState::adding2sim}) {
        LiveAircraft& aircraft = give(flying(), airSample(0, 0, 0));
        aircraft.lifeState = state;
        EXPECT_FALSE(updateLiveAc(aircraft));
        EXPECT_EQ(aircraft.lifeState, state);
    }
    EXPECT_THAT(positionFront, IsEmpty());
}

TEST_F(LiveUpdate, aRecordThatIsToBeDroppedIsTold) {
    LiveAircraft& aircraft = flying();
    aircraft.lifeState = LifeState::adding2sim;
    EXPECT_FALSE(updateLiveAc(aircraft));
    aircraft.dropRecordQueued = 1;
    EXPECT_TRUE(updateLiveAc(aircraft));
    aircraft.dropRecordQueued = 0;
    aircraft.dropRecord = 1;
    EXPECT_TRUE(updateLiveAc(aircraft));
}

TEST_F(LiveUpdate, whatIsToBeDroppedIsNotTestedForItsCreation) {
    LiveAircraft& aircraft = give(flying(), airSample(0, 0, 0), airSample(1, 0, 1000));
    aircraft.lifeState = LifeState::buffer;
    aircraft.dropRecord = 1;
    EXPECT_TRUE(updateLiveAc(aircraft));
    EXPECT_EQ(aircraft.lifeState, LifeState::buffer);
    EXPECT_THAT(addingStack, IsEmpty());
}

// Handed over late.

/// The simulator has taken so long to create it that its first samples are due already when it begins to fly, north at
/// 200 knots.
class LateHandOver : public LiveUpdate {
protected:
    static constexpr double knots = 200;
    static constexpr double metresPerSlot = knots * metersPerNm / 360000;

    /// Its steps in the first half minute, metres.
    static std::vector<double> steps(std::int32_t lateSlots, std::int32_t gapSlots) {
        LiveAircraft& aircraft = flying();
        for (std::int32_t slot = 0; slot <= 6000; slot += gapSlots) {
            give(aircraft, airSample(slot * knots / 360000, 0, slot - lateSlots, 5000, knots));
        }
        std::vector<double> metres;
        for (int i = 0; i < 3000; ++i) {
            const LatLon before{aircraft.lat, aircraft.lon};
            updateLiveAc(aircraft);
            metres.push_back(greatCircleNm(before, {aircraft.lat, aircraft.lon}) * metersPerNm);
            ++slotClock;
        }
        return metres;
    }
};

TEST_F(LateHandOver, tenSecondsLateItFliesOnAtItsSpeedAndStaysLate) {
    for (const double step : steps(1000, 500)) {
        ASSERT_NEAR(step, metresPerSlot, 0.001);
    }
}

/// Its first target lies ten seconds in the past, as far as the window reaches, so no time is left for the way there.
/// It is planned for a quarter of a second, and the next slot plans the leg behind it already: the target is not reached
/// but left aside after a single large step, and the next leg makes up for what is left of the five seconds.
TEST_F(LateHandOver, fifteenSecondsLateItMakesOneLargeStepAndIsTenSecondsLateAfterTheNextLeg) {
    const std::vector<double> metres = steps(1500, 500);
    EXPECT_NEAR(metres[0], 500 * metresPerSlot / 25, 0.01);
    EXPECT_NEAR(metres[0], 20.6, 0.05);
    for (std::size_t slot = 1; slot < metres.size(); ++slot) {
        ASSERT_NEAR(metres[slot] / metresPerSlot, slot <= 499 ? 1.96 : 1.0, 0.01) << slot;
    }
    EXPECT_NEAR(std::accumulate(metres.begin(), metres.end(), 0.0), (3000 + 500) * metresPerSlot, 0.1);
}

/// One second after the other is passed by a larger step, as the place that was to be reached lies farther ahead.
TEST_F(LateHandOver, fifteenSecondsLateWithASampleEachSecondItsStepsGrow) {
    const std::vector<double> metres = steps(1500, 100);
    const auto largest = std::max_element(metres.begin(), metres.end());
    EXPECT_EQ(largest - metres.begin(), 4);
    EXPECT_TRUE(std::is_sorted(metres.begin(), largest));
    EXPECT_NEAR(*largest, 19.0, 0.05);
    EXPECT_NEAR(metres[5] / metresPerSlot, 5.72, 0.01);
    EXPECT_NEAR(std::accumulate(metres.begin(), metres.end(), 0.0), (3000 + 500) * metresPerSlot, 0.1);
}

/// The first target is still within its window, so there is time for the way.
TEST_F(LateHandOver, fifteenSecondsLateWithASampleEveryTenSecondsItFliesTheFirstLegTwiceAsFast) {
    const std::vector<double> metres = steps(1500, 1000);
    EXPECT_NEAR(*std::max_element(metres.begin(), metres.end()), 2 * metresPerSlot, 0.01);
    EXPECT_NEAR(metres[500], metresPerSlot, 0.001);
}

// Without an answer of the simulator.

TEST_F(LiveUpdate, aCreationWithoutAnswerIsGivenUp30SecondsAfterItsLastSample) {
    LiveAircraft& aircraft = give(flying(), airSample(0, 0, -3100), airSample(1, 0, -3000));
    aircraft.lifeState = LifeState::adding2sim;
    updateLiveAc(aircraft);
    EXPECT_EQ(aircraft.removeWhenAdded, 0);
    ++slotClock;
    updateLiveAc(aircraft);
    EXPECT_EQ(aircraft.removeWhenAdded, 1);
    updateLiveAc(aircraft);
    EXPECT_THAT(log.lines(), SizeIs(1));
    EXPECT_EQ(aircraft.lifeState, LifeState::adding2sim);
}

TEST_F(LiveUpdate, aRequestThatStillWaitsIsWithdrawnThen) {
    LiveAircraft& aircraft = give(flying(), airSample(0, 0, -3001));
    aircraft.lifeState = LifeState::adding2sim;
    liveCreateQueue.push_back({.tailNumber = "KLM123", .title = "X", .hexid = testHexid});
    EXPECT_TRUE(updateLiveAc(aircraft));
    EXPECT_TRUE(liveCreateQueue.empty());
}

TEST_F(LiveUpdate, onAStandTheAnswerIsWaitedFor) {
    LiveAircraft& aircraft = give(taxiing(), groundSample(0, 0, -9000));
    aircraft.lifeState = LifeState::adding2sim;
    aircraft.phase = FlightPhase::parked;
    updateLiveAc(aircraft);
    EXPECT_EQ(aircraft.removeWhenAdded, 0);
}

// Failures.

TEST_F(LiveUpdate, aFailureIsLoggedAndCostsTheSlot) {
    LiveAircraft& aircraft = give(flying(), airSample(0, 0, 0), airSample(1, 0, 1000));
    aircraft.category = static_cast<AircraftCategory>(9);
    EXPECT_FALSE(updateLiveAc(aircraft));
    EXPECT_TRUE(log.contains("updateLiveAc: invalid unordered_map<K, T> key          KLM123   PH-ABC KLM A320, sz:2, "
                             "fs:flying, st:active"));
    EXPECT_THAT(positionFront, IsEmpty());
    aircraft.category = AircraftCategory::Large;
    updateLiveAc(aircraft);
    EXPECT_THAT(positionFront, SizeIs(1));
}

TEST_F(LiveUpdate, aFailureWithAStateOutsideItsTableIsLoggedToo) {
    LiveAircraft& aircraft = give(flying(), airSample(0, 0, 0), airSample(1, 0, 1000));
    aircraft.category = static_cast<AircraftCategory>(9);
    aircraft.phase = FlightPhase::take_off;
    aircraft.previousPhase = static_cast<FlightPhase>(8);
    aircraft.phase = static_cast<FlightPhase>(8);
    aircraft.flareStage = 1;
    EXPECT_FALSE(updateLiveAc(aircraft));
    EXPECT_THAT(log.lines(), SizeIs(2));
}

} // namespace
