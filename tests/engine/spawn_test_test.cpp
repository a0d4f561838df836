#include "engine/spawn_test.h"

#include <gmock/gmock.h>

#include "core/injection_radius.h"
#include "tests/engine/engine_test.h"

using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

namespace {

/// Of an aircraft that is due now: one second before its first position.
constexpr std::int32_t due = 100;

class SpawnTest : public EngineTest {
protected:
    SpawnTest() { gUserState.lat = testPlace.lat, gUserState.lon = testPlace.lon; }

    template <typename... Samples>
    static LiveAircraft& buffered(const Samples&... samples) {
        LiveAircraft aircraft = aircraftOf("A320");
        liveTable.push_back(std::move(aircraft));
        return give(liveTable.back(), samples...);
    }

    static LiveAircraft& bufferedInTheAir() { return buffered(airSample(0, 0, due), airSample(1, 0, due + 1000)); }

    static bool isCreated(const LiveAircraft& aircraft) { return aircraft.lifeState == LifeState::adding2sim; }

    /// Whether the aircraft is created when asked now.
    static bool creates(LiveAircraft& aircraft) {
        lf_spawnTest(aircraft);
        return isCreated(aircraft);
    }

    static LiveAircraft& activeAt(double milesNorth, std::uint32_t objectId) {
        LiveAircraft& aircraft = flying();
        aircraft.lat += milesNorth / 60;
        aircraft.objectId = objectId;
        return aircraft;
    }
};

// When.

TEST_F(SpawnTest, anAirborneAircraftIsCreatedASecondBeforeItsFirstPosition) {
    LiveAircraft& aircraft = bufferedInTheAir();
    --slotClock;
    EXPECT_FALSE(creates(aircraft));
    EXPECT_EQ(aircraft.dropRecord, 0);
    ++slotClock;
    EXPECT_TRUE(creates(aircraft));
}

TEST_F(SpawnTest, anAircraftThatMovesOnTheGroundIsCreatedThreeSecondsBefore) {
    LiveAircraft& aircraft = buffered(groundSample(0, 0, 301), groundSample(0.1, 0, 1000));
    EXPECT_FALSE(creates(aircraft));
    ++slotClock;
    EXPECT_TRUE(creates(aircraft));
}

TEST_F(SpawnTest, anAircraftThatStandsOnTheGroundIsCreatedASecondBefore) {
    LiveAircraft& aircraft = buffered(groundSample(0, 0, 101, 0), groundSample(0.1, 0, 1000));
    EXPECT_FALSE(creates(aircraft));
    ++slotClock;
    EXPECT_TRUE(creates(aircraft));
}

// Which not.

TEST_F(SpawnTest, anAircraftWithoutSamplesGoes) {
    LiveAircraft& aircraft = buffered();
    lf_spawnTest(aircraft);
    EXPECT_EQ(aircraft.dropRecord, 1);
}

TEST_F(SpawnTest, anAircraftThatWasSeenOnceGoesWhenItIsDue) {
    LiveAircraft& aircraft = buffered(airSample(0, 0, due + 1));
    lf_spawnTest(aircraft);
    EXPECT_EQ(aircraft.dropRecord, 0);
    ++slotClock;
    lf_spawnTest(aircraft);
    EXPECT_EQ(aircraft.dropRecord, 1);
    EXPECT_TRUE(log.contains("                   KLM123   PH-ABC KLM A320 goes: it was not seen again"));
}

TEST_F(SpawnTest, aGhostThatWasRemovedNeverComesBack) {
    LiveAircraft& aircraft = bufferedInTheAir();
    aircraft.callsign = "KLM123_";
    blockedGhosts.push_back("KLM123_");
    EXPECT_FALSE(creates(aircraft));
    EXPECT_EQ(aircraft.dropRecord, 1);
}

TEST_F(SpawnTest, aGhostGoesWhileItsRealSelfIsThere) {
    LiveAircraft& aircraft = bufferedInTheAir();
    aircraft.callsign = "KLM123_";
    LiveAircraft& real = flying();
    EXPECT_FALSE(creates(aircraft));
    EXPECT_EQ(aircraft.dropRecord, 1);
    real.lifeState = LifeState::removingfromsim;
    aircraft.dropRecord = 0;
    EXPECT_TRUE(creates(aircraft));
}

TEST_F(SpawnTest, whatLiesBeyondTheRangeIsNotCreated) {
    LiveAircraft& within = buffered(airSample(gRadiusNm - 0.01, 0, due), airSample(gRadiusNm + 1, 0, due + 1000));
    EXPECT_TRUE(creates(within));
    LiveAircraft& beyond = buffered(airSample(gRadiusNm + 0.01, 0, due), airSample(gRadiusNm + 1, 0, due));
    EXPECT_FALSE(creates(beyond));
    lf_spawnTest(beyond);
    EXPECT_EQ(beyond.dropRecord, 1);
    EXPECT_TRUE(
        log.contains("                   KLM123   PH-ABC KLM A320 goes: its positions end at the edge of the range"));
}

TEST_F(SpawnTest, whatComesIntoTheRangeIsCreatedThere) {
    LiveAircraft& aircraft = buffered(airSample(gRadiusNm + 0.5, 0, due), airSample(gRadiusNm - 0.5, 0, due + 1000),
                                      airSample(gRadiusNm - 1.5, 0, due + 2000));
    EXPECT_FALSE(creates(aircraft));
    EXPECT_FALSE(creates(aircraft)) << "its first position within is still to come";
    slotClock += 1000;
    EXPECT_TRUE(creates(aircraft));
}

TEST_F(SpawnTest, aFastUserLeavesWhatIsAtTheEdgeBehind) {
    LiveAircraft& aircraft = buffered(airSample(gRadiusNm - 0.9, 0, due), airSample(gRadiusNm, 0, due + 1000));
    gUserState.groundSpeed = 480;
    EXPECT_FALSE(creates(aircraft));
    gUserState.groundSpeed = 0;
    aircraft.stream.pushFront(airSample(gRadiusNm - 0.9, 0, due));
    EXPECT_TRUE(creates(aircraft));
}

TEST_F(SpawnTest, whatIsMadeAnewMayLieAtTheEdge) {
    LiveAircraft& aircraft = buffered(airSample(gRadiusNm - 0.1, 0, due), airSample(gRadiusNm, 0, due + 1000));
    gUserState.groundSpeed = 480;
    aircraft.phase = FlightPhase::flying;
    EXPECT_TRUE(creates(aircraft));
}

TEST_F(SpawnTest, withoutAUserNothingIsBeyondTheRange) {
    gUserState = {};
    EXPECT_TRUE(creates(bufferedInTheAir()));
}

TEST_F(SpawnTest, aMixOfGroundAndAirIsWornOffASampleASlot) {
    LiveAircraft& aircraft = buffered(groundSample(0, 0, -500, 0), groundSample(0.1, 0, -300),
                                      airSample(1, 0, -100, 1500), airSample(2, 0, 1000, 2000));
    EXPECT_FALSE(creates(aircraft));
    EXPECT_EQ(aircraft.stream.size(), 3u);
    EXPECT_FALSE(creates(aircraft));
    EXPECT_EQ(aircraft.stream.size(), 2u);
    EXPECT_TRUE(creates(aircraft));
    EXPECT_EQ(aircraft.alt, 1500);
}

TEST_F(SpawnTest, behindElevenRequestsANewAircraftGrowsOlder) {
    LiveAircraft& aircraft = bufferedInTheAir();
    give(aircraft, airSample(2, 0, due + 2000));
    for (std::uint32_t i = 0; i < 11; ++i) {
        liveCreateQueue.push_back({.tailNumber = "X", .title = "X", .hexid = i});
    }
    EXPECT_FALSE(creates(aircraft));
    EXPECT_EQ(aircraft.stream.size(), 2u);
    liveCreateQueue.pop_back();
    slotClock = aircraft.stream[0].slot;
    EXPECT_TRUE(creates(aircraft));
}

// Why it goes in the end.

TEST_F(SpawnTest, anAircraftThatLostItsSamplesWhileOthersWereCreatedGoesBecauseOfThem) {
    LiveAircraft& aircraft = bufferedInTheAir();
    for (std::uint32_t i = 0; i < 11; ++i) {
        liveCreateQueue.push_back({.tailNumber = "X", .title = "X", .hexid = i});
    }
    EXPECT_FALSE(creates(aircraft));
    slotClock = aircraft.stream[0].slot;
    EXPECT_FALSE(creates(aircraft));
    EXPECT_EQ(aircraft.dropRecord, 1);
    EXPECT_THAT(log.lines(),
                ElementsAre("                   KLM123   PH-ABC KLM A320 goes: too many others were to be created"));
}

TEST_F(SpawnTest, whatAnAircraftLostBeforeItWasCreatedIsNotWhyItGoesAfterwards) {
    LiveAircraft& aircraft = bufferedInTheAir();
    give(aircraft, airSample(2, 0, due + 2000));
    for (std::uint32_t i = 0; i < 11; ++i) {
        liveCreateQueue.push_back({.tailNumber = "X", .title = "X", .hexid = i});
    }
    EXPECT_FALSE(creates(aircraft));
    liveCreateQueue.clear();
    slotClock = aircraft.stream[0].slot;
    ASSERT_TRUE(creates(aircraft));
    aircraft.lifeState = LifeState::buffer; // as behind a respawn, for which the feed has gone silent
    aircraft.stream.popBack();
    EXPECT_FALSE(creates(aircraft));
    EXPECT_THAT(log.lines(), Contains(HasSubstr("goes: it was not seen again")));
}

TEST_F(SpawnTest, anAircraftOfWhichALandingLeavesOnePositionGoesBecauseOfIt) {
    LiveAircraft& aircraft = buffered(airSample(0, 0, -500, 100), groundSample(0.1, 0, due));
    EXPECT_FALSE(creates(aircraft));
    EXPECT_FALSE(creates(aircraft));
    EXPECT_EQ(aircraft.dropRecord, 1);
    EXPECT_THAT(log.lines(), ElementsAre("                   KLM123   PH-ABC KLM A320 goes: "
                                         "it was not seen again after it took off or landed"));
}

TEST_F(SpawnTest, anAircraftThatStandsWhereNoStandIsGoesBecauseOfIt) {
    Sample standing = groundSample(0, 0, due, 0);
    standing.stationary = 1;
    LiveAircraft& aircraft = buffered(groundSample(0, 0, due, 0), standing);
    EXPECT_FALSE(creates(aircraft));
    EXPECT_FALSE(creates(aircraft));
    EXPECT_EQ(aircraft.dropRecord, 1);
    EXPECT_EQ(log.lines().back(),
              "                   KLM123   PH-ABC KLM A320 goes: it stands, and there is no stand for it");
}

TEST_F(SpawnTest, inABurstThoseThatAreAboutToBeRequestedCountAsWell) {
    for (std::uint32_t i = 0; i < 11; ++i) {
        addingStack.push_back(20000 + i);
    }
    LiveAircraft& aircraft = bufferedInTheAir();
    EXPECT_FALSE(creates(aircraft));
    EXPECT_EQ(aircraft.dropRecord, 0);
    EXPECT_EQ(aircraft.stream.size(), 1u);
}

TEST_F(SpawnTest, anAircraftThatIsMadeAnewDoesNotWaitBehindRequests) {
    LiveAircraft& aircraft = bufferedInTheAir();
    aircraft.phase = FlightPhase::flying;
    aircraft.liveryTitle = "Some Livery";
    for (std::uint32_t i = 0; i < 11; ++i) {
        liveCreateQueue.push_back({.tailNumber = "X", .title = "X", .hexid = i});
    }
    EXPECT_TRUE(creates(aircraft));
}

TEST_F(SpawnTest, aMaximumOfZeroLetsNoneIn) {
    MAX_LIVE_SEL.value = 0;
    LiveAircraft& aircraft = bufferedInTheAir();
    EXPECT_FALSE(creates(aircraft));
    EXPECT_EQ(aircraft.dropRecord, 1);
}

TEST_F(SpawnTest, withAMaximumOfZeroNobodyGoesForAnother) {
    MAX_LIVE_SEL.value = 0;
    const std::uint32_t farObject = 101;
    activeAt(5, farObject);
    LiveAircraft& aircraft = bufferedInTheAir();
    EXPECT_FALSE(creates(aircraft));
    EXPECT_EQ(aircraft.dropRecord, 1);
    EXPECT_EQ(findLiveByObjectId(farObject)->lifeState, LifeState::active);
    EXPECT_THAT(removalQueue, IsEmpty());
}

TEST_F(SpawnTest, aBlockedCallSignGoes) {
    BLOCK_CALLSIGN.setValue("KLM123");
    LiveAircraft& aircraft = bufferedInTheAir();
    EXPECT_FALSE(creates(aircraft));
    EXPECT_EQ(aircraft.dropRecord, 1);
}

TEST_F(SpawnTest, noBlockedCallSignBlocksNobody) {
    LiveAircraft& aircraft = bufferedInTheAir();
    aircraft.callsign = "";
    EXPECT_TRUE(creates(aircraft));
}

/// What it is called when it has no call sign is not asked.
TEST_F(SpawnTest, aRegistrationThatWillStandInForTheCallSignIsNotBlocked) {
    BLOCK_CALLSIGN.setValue("PH-ABC");
    LiveAircraft& aircraft = bufferedInTheAir();
    aircraft.callsign = "";
    EXPECT_TRUE(creates(aircraft));
    EXPECT_EQ(aircraft.callsign, "PH-ABC");
}

TEST_F(SpawnTest, whatGotNoLiveryIsNotTriedAgainWhenTheAirlineIsThatOfItsCallSign) {
    LiveAircraft& aircraft = bufferedInTheAir();
    aircraft.airline = "KLM";
    NoMatchList.insert(noMatchKey(aircraft));
    aircraft.airline = "";
    EXPECT_FALSE(creates(aircraft));
    EXPECT_EQ(aircraft.dropRecord, 1);
}

TEST_F(SpawnTest, whatGotNoLiveryIsNotTriedAgain) {
    LiveAircraft& aircraft = bufferedInTheAir();
    NoMatchList.insert(noMatchKey(aircraft));
    EXPECT_FALSE(creates(aircraft));
    EXPECT_EQ(aircraft.dropRecord, 1);
}

// Room.

TEST_F(SpawnTest, aNearerAircraftMakesTheFarthestGo) {
    MAX_LIVE_SEL.value = 2;
    activeAt(0.5, 101);
    LiveAircraft& farthest = activeAt(1.2, 102);
    LiveAircraft& aircraft = buffered(airSample(1, 0, due), airSample(2, 0, due + 1000));
    EXPECT_TRUE(creates(aircraft));
    EXPECT_EQ(farthest.lifeState, LifeState::removingfromsim);
    EXPECT_THAT(removalQueue, ElementsAre(102));
}

TEST_F(SpawnTest, aNearlyAsFarAircraftGoesItself) {
    MAX_LIVE_SEL.value = 1;
    LiveAircraft& farthest = activeAt(1.05, 102);
    LiveAircraft& aircraft = buffered(airSample(1, 0, due), airSample(2, 0, due + 1000));
    EXPECT_FALSE(creates(aircraft));
    EXPECT_EQ(aircraft.dropRecord, 1);
    EXPECT_EQ(farthest.lifeState, LifeState::active);
}

TEST_F(SpawnTest, whatIsUnderWayToTheSimulatorCounts) {
    MAX_LIVE_SEL.value = 3;
    activeAt(0.1, 101);
    addingStack.push_back(1);
    LiveAircraft& aircraft = bufferedInTheAir();
    EXPECT_TRUE(creates(aircraft));
    LiveAircraft& next = bufferedInTheAir();
    next.callsign = "KLM9";
    EXPECT_FALSE(creates(next));
    EXPECT_EQ(next.dropRecord, 1);
}

TEST_F(SpawnTest, aRequestThatWaitsCountsToo) {
    MAX_LIVE_SEL.value = 1;
    liveCreateQueue.push_back({.tailNumber = "X", .title = "X", .hexid = 5});
    EXPECT_FALSE(creates(bufferedInTheAir()));
}

TEST_F(SpawnTest, theFarthestActiveAircraftGoesFirst) {
    activeAt(1, 101);
    activeAt(3, 102);
    activeAt(2, 103);
    EXPECT_TRUE(removeFarthestActive(0));
    EXPECT_TRUE(removeFarthestActive(0));
    EXPECT_THAT(removalQueue, ElementsAre(102, 103));
    EXPECT_FALSE(removeFarthestActive(1.1));
}

// Identity.

TEST_F(SpawnTest, theRegistrationTellsAirlineTypeAndFreight) {
    knowRegistration("PH-ABC", "TRA", "B77W", "", true);
    LiveAircraft& aircraft = bufferedInTheAir();
    EXPECT_TRUE(creates(aircraft));
    EXPECT_EQ(aircraft.airline, "TRA");
    EXPECT_EQ(aircraft.model, "B77W");
    EXPECT_EQ(aircraft.isCargo, 1);
}

TEST_F(SpawnTest, theThirdCodeReplacesTheAirline) {
    knowRegistration("PH-ABC", "TRA", "B77W", "MPH");
    LiveAircraft& aircraft = bufferedInTheAir();
    EXPECT_TRUE(creates(aircraft));
    EXPECT_EQ(aircraft.airline, "MPH");
}

TEST_F(SpawnTest, withoutUsableCallSignTheRegistrationStandsInForIt) {
    for (const char* callsign : {"", "@@@@@@@@", "TOOLONG12"}) {
        LiveAircraft& aircraft = bufferedInTheAir();
        aircraft.callsign = aircraft.flightCode1 = callsign;
        aircraft.flightCode2 = "KL5";
        EXPECT_TRUE(creates(aircraft)) << callsign;
        EXPECT_EQ(aircraft.callsign, "PH-ABC");
        EXPECT_EQ(aircraft.flightCode1, "PH-ABC");
        EXPECT_EQ(aircraft.flightCode2, "");
    }
}

TEST_F(SpawnTest, withoutAnyNameItGoes) {
    LiveAircraft& aircraft = bufferedInTheAir();
    aircraft.callsign = aircraft.registration = "";
    EXPECT_FALSE(creates(aircraft));
    EXPECT_EQ(aircraft.dropRecord, 1);
}

TEST_F(SpawnTest, theCallSignTellsTheAirlineOfAFlight) {
    LiveAircraft& aircraft = bufferedInTheAir();
    aircraft.airline = "";
    EXPECT_TRUE(creates(aircraft));
    EXPECT_EQ(aircraft.airline, "KLM");
    LiveAircraft& own = bufferedInTheAir();
    own.airline = "";
    own.callsign = "1234";
    EXPECT_TRUE(creates(own));
    EXPECT_EQ(own.airline, "PVT");
}

} // namespace
