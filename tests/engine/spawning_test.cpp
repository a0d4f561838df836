#include "engine/spawning.h"

#include <gmock/gmock.h>

#include "tests/engine/engine_test.h"
#include "tests/support/test_liveries.h"

using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

namespace {

constexpr double degree = radiansPerDegree;

class Spawning : public EngineTest {
protected:
    template <typename... Samples>
    static LiveAircraft& buffered(const Samples&... samples) {
        liveTable.push_back(aircraftOf("A320"));
        return give(liveTable.back(), samples...);
    }

    static Sample stationary(Sample sample) {
        sample.stationary = 1;
        return sample;
    }
};

TEST_F(Spawning, anAirborneAircraftIsBornFlyingAndAskedFor) {
    LiveAircraft& aircraft = buffered(airSample(0, 0, 100), airSample(1, 0, 1000));
    spawnLiveAc(aircraft);
    EXPECT_EQ(aircraft.phase, FlightPhase::flying);
    EXPECT_EQ(aircraft.previousPhase, FlightPhase::birth);
    EXPECT_EQ(aircraft.lifeState, LifeState::adding2sim);
    EXPECT_EQ(aircraft.liveryTitle, "Some Livery");
    EXPECT_THAT(addingStack, ElementsAre(testHexid));
    EXPECT_THAT(twinCheckQueue, ElementsAre(testHexid));
    EXPECT_EQ(aircraft.throttleIndex, 5);
    EXPECT_EQ(aircraft.flapsIndex, 4);
}

TEST_F(Spawning, aMovingGroundAircraftIsBornTaxiing) {
    LiveAircraft& aircraft = buffered(stationary(groundSample(0, 0, 100)), groundSample(0.1, 0, 1000));
    spawnLiveAc(aircraft);
    EXPECT_EQ(aircraft.phase, FlightPhase::taxi);
    EXPECT_EQ(aircraft.stream[0].stationary, 0);
}

TEST_F(Spawning, aStandingGroundAircraftWithoutStandIsTriedAgain) {
    LiveAircraft& aircraft = buffered(groundSample(0, 0, 100), stationary(groundSample(0, 0, 400)),
                                      stationary(groundSample(0, 0, 700)), groundSample(0.1, 0, 1000));
    spawnLiveAc(aircraft);
    EXPECT_EQ(aircraft.lifeState, LifeState::buffer);
    EXPECT_EQ(aircraft.phase, FlightPhase::birth);
    EXPECT_EQ(aircraft.stream.size(), 3u);
    EXPECT_THAT(addingStack, IsEmpty());
}

TEST_F(Spawning, whatStandsAtItsSecondPositionStandsAtItsFirst) {
    LiveAircraft& aircraft = buffered(groundSample(0, 0, 100, 9), stationary(groundSample(0, 0, 400, 9)),
                                      stationary(groundSample(0, 0, 700, 9)), groundSample(0.1, 0, 1000, 9));
    aircraft.phase = FlightPhase::taxi;
    spawnLiveAc(aircraft);
    EXPECT_EQ(aircraft.stream[0].stationary, 1);
    EXPECT_EQ(aircraft.stream[0].gs, 0);
    EXPECT_EQ(aircraft.stream[1].gs, 0);
    EXPECT_EQ(aircraft.stream[2].gs, 0);
    EXPECT_EQ(aircraft.stream[3].gs, 9);
}

TEST_F(Spawning, whatMovesAtItsThirdPositionKeepsItsSpeedThere) {
    LiveAircraft& aircraft =
        buffered(groundSample(0, 0, 100, 9), stationary(groundSample(0, 0, 400, 9)), groundSample(0.1, 0, 700, 9));
    aircraft.phase = FlightPhase::taxi;
    spawnLiveAc(aircraft);
    EXPECT_EQ(aircraft.stream[1].gs, 0);
    EXPECT_EQ(aircraft.stream[2].gs, 9);
}

TEST_F(Spawning, whatIsToBeDroppedIsNotCreated) {
    LiveAircraft& aircraft = buffered(airSample(0, 0, 100), airSample(1, 0, 1000));
    aircraft.dropRecord = 1;
    spawnLiveAc(aircraft);
    EXPECT_EQ(aircraft.lifeState, LifeState::buffer);
    EXPECT_THAT(addingStack, IsEmpty());
    EXPECT_THAT(twinCheckQueue, IsEmpty());
}

TEST_F(Spawning, aShortStreamIsOnlySaid) {
    LiveAircraft& aircraft = buffered(airSample(0, 0, 100));
    spawnLiveAc(aircraft);
    EXPECT_EQ(aircraft.lifeState, LifeState::buffer);
    EXPECT_TRUE(log.contains("spawnLiveAc sz:1"));
}

// Livery.

TEST_F(Spawning, anAircraftThatComesBackLooksTheSame) {
    hexidLiveries[testHexid] = "Former Livery";
    LiveAircraft& aircraft = buffered(airSample(0, 0, 100), airSample(1, 0, 1000));
    spawnLiveAc(aircraft);
    EXPECT_EQ(aircraft.liveryTitle, "Former Livery");
}

TEST_F(Spawning, aFormerLiveryThatTheSimulatorRefusedIsOfNoUse) {
    hexidLiveries[testHexid] = "Former Livery";
    FailedTitles.insert("Former Livery");
    LiveAircraft& aircraft = buffered(airSample(0, 0, 100), airSample(1, 0, 1000));
    spawnLiveAc(aircraft);
    EXPECT_EQ(aircraft.liveryTitle, "Some Livery");
    EXPECT_EQ(hexidLiveries[testHexid], "Some Livery");
}

TEST_F(Spawning, aRefusedFormerLiveryIsForgottenEvenIfThereIsNoOther) {
    RegcodeTable.clear();
    hexidLiveries[testHexid] = "Former Livery";
    FailedTitles.insert("Former Livery");
    LiveAircraft& aircraft = buffered(airSample(0, 0, 100), airSample(1, 0, 1000));
    spawnLiveAc(aircraft);
    EXPECT_EQ(aircraft.dropRecord, 1);
    EXPECT_TRUE(hexidLiveries.empty());
}

TEST_F(Spawning, theLadderFindsALiveryOfItsAirlineAndType) {
    RegcodeTable.clear();
    installLiveries({livery("KLM", "A320", "FSLTL_KLM A320")});
    LiveAircraft& aircraft = buffered(airSample(0, 0, 100), airSample(1, 0, 1000));
    spawnLiveAc(aircraft);
    EXPECT_EQ(aircraft.liveryTitle, "FSLTL_KLM A320");
    EXPECT_EQ(aircraft.reverseOnLanding, 1);
    EXPECT_TRUE(log.contains("          KLM123 PH-ABC KLM A320 =2= FSLTL_KLM A320"));
}

TEST_F(Spawning, aNewLiveryIsRemembered) {
    spawnLiveAc(buffered(airSample(0, 0, 100), airSample(1, 0, 1000)));
    EXPECT_EQ(hexidLiveries[testHexid], "Some Livery");
}

TEST_F(Spawning, withoutLiveryItGoesAndIsNotTriedAgain) {
    RegcodeTable.clear();
    LiveAircraft& aircraft = buffered(airSample(0, 0, 100), airSample(1, 0, 1000));
    spawnLiveAc(aircraft);
    EXPECT_EQ(aircraft.dropRecord, 1);
    EXPECT_EQ(aircraft.lifeState, LifeState::buffer);
    EXPECT_THAT(NoMatchList, ElementsAre("KLM A320 PH-ABC"));
    EXPECT_THAT(addingStack, IsEmpty());
}

TEST_F(Spawning, withoutRegistrationNobodyIsMarkedForWantOfALivery) {
    RegcodeTable.clear();
    LiveAircraft& aircraft = buffered(airSample(0, 0, 100), airSample(1, 0, 1000));
    aircraft.registration = "";
    spawnLiveAc(aircraft);
    EXPECT_EQ(aircraft.dropRecord, 1);
    EXPECT_TRUE(NoMatchList.empty());
}

// The first state.

TEST_F(Spawning, inTheAirItStartsAsItsFirstSampleSays) {
    Sample first = airSample(1, 2, 100, 7000, 300);
    first.vs = -1200;
    first.tas = 333;
    first.roll = 0.1;
    LiveAircraft& aircraft = buffered(first, airSample(1, 3, 1000));
    aircraft.hiddenForUser = 1;
    initialState(aircraft);
    EXPECT_EQ(aircraft.lat, first.lat);
    EXPECT_EQ(aircraft.lon, first.lon);
    EXPECT_EQ(aircraft.alt, 7000);
    EXPECT_EQ(aircraft.tas, 333);
    EXPECT_EQ(aircraft.vsFps, -20);
    EXPECT_DOUBLE_EQ(aircraft.pitch, -0.8 * degree);
    EXPECT_EQ(aircraft.bank, 0.1);
    EXPECT_NEAR(aircraft.heading, 90 * degree, 1e-3);
    EXPECT_EQ(aircraft.dHeading, 0);
    EXPECT_EQ(aircraft.hiddenForUser, 0);
}

TEST_F(Spawning, onTheGroundTheNoseIsALittleDown) {
    LiveAircraft& aircraft = buffered(groundSample(0, 0, 100), groundSample(0, 1, 1000));
    initialState(aircraft);
    EXPECT_DOUBLE_EQ(aircraft.pitch, 0.6 * degree);
    EXPECT_EQ(aircraft.bank, 0);
    EXPECT_EQ(aircraft.dHeading, aircraft.heading);
}

TEST_F(Spawning, whatIsMadeAnewKeepsItsHeading) {
    LiveAircraft& aircraft = buffered(airSample(0, 0, 100), airSample(0, 1, 1000));
    aircraft.respawnHeading = 3;
    aircraft.phase = FlightPhase::parked;
    initialState(aircraft);
    EXPECT_EQ(aircraft.heading, 3);
}

TEST_F(Spawning, onAStandItHasTheStandsHeading) {
    LiveAircraft& aircraft = buffered(groundSample(0, 0, 100));
    aircraft.phase = FlightPhase::parked;
    aircraft.standHeading = 2;
    initialState(aircraft);
    EXPECT_EQ(aircraft.heading, 2);
    EXPECT_EQ(aircraft.dHeading, 2);
}

TEST_F(Spawning, whatStandsHasTheHeadingOfItsTrack) {
    Sample first = groundSample(0, 0, 100);
    first.track = 360;
    LiveAircraft& aircraft = buffered(first, stationary(groundSample(0, 0, 400)));
    initialState(aircraft);
    EXPECT_EQ(aircraft.heading, 0);
    aircraft.stream[0].track = 90;
    initialState(aircraft);
    EXPECT_DOUBLE_EQ(aircraft.heading, 90 * degree);
}

} // namespace
