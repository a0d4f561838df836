#include "engine/livery_respawn.h"

#include <gmock/gmock.h>

#include <deque>
#include <optional>
#include <vector>

#include "tests/engine/engine_test.h"
#include "tests/support/allocation_count.h"

using ::testing::ElementsAre;
using ::testing::IsEmpty;

namespace {

class LiveryRespawn : public EngineTest {};

TEST_F(LiveryRespawn, theStreamLeadsOnFromThePresentPosition) {
    LiveAircraft& aircraft = give(flying(), airSample(1, 0, 500, 7000), airSample(2, 0, 900));
    aircraft.bank = 0.2;
    aircraft.heading = 1;
    liveryRespawn(aircraft);
    ASSERT_EQ(aircraft.stream.size(), 3u);
    const Sample& first = aircraft.stream[0];
    EXPECT_EQ(first.lat, testPlace.lat);
    EXPECT_EQ(first.lon, testPlace.lon);
    EXPECT_EQ(first.alt, 5000);
    EXPECT_EQ(first.roll, 0.2);
    EXPECT_EQ(first.slot, testSlot + 1);
    EXPECT_EQ(first.stationary, 0);
    EXPECT_EQ(aircraft.stream[1].stationary, 0);
    EXPECT_EQ(aircraft.stream[1].slot, testSlot + 500);
    EXPECT_EQ(aircraft.lifeState, LifeState::liveryrespawn);
    EXPECT_EQ(aircraft.respawnHeading, 1);
    EXPECT_THAT(removalQueue, ElementsAre(testObject));
}

TEST_F(LiveryRespawn, anAircraftThatIsThereAlreadyStands) {
    LiveAircraft& aircraft = give(taxiing(), groundSample(0, 0, 500));
    liveryRespawn(aircraft);
    EXPECT_EQ(aircraft.stream[0].stationary, 1);
    EXPECT_EQ(aircraft.stream[1].stationary, 1);
}

TEST_F(LiveryRespawn, onAStandNothingButTheStandRemains) {
    LiveAircraft& aircraft = give(taxiing(), groundSample(1, 0, 60000000), groundSample(2, 0, 60000500));
    aircraft.phase = FlightPhase::parked;
    aircraft.heading = 90 * radiansPerDegree;
    liveryRespawn(aircraft);
    ASSERT_EQ(aircraft.stream.size(), 2u);
    for (std::size_t i = 0; i < 2; ++i) {
        EXPECT_EQ(aircraft.stream[i].stationary, 1);
        EXPECT_DOUBLE_EQ(aircraft.stream[i].track, 90);
    }
    EXPECT_EQ(aircraft.stream[0].slot, testSlot + 1);
    EXPECT_EQ(aircraft.stream[0].lat, aircraft.stream[1].lat);
}

TEST_F(LiveryRespawn, withoutAnObjectItOnlySaysSo) {
    LiveAircraft& aircraft = give(flying(), airSample(1, 0, 500));
    aircraft.objectId = 0;
    liveryRespawn(aircraft);
    EXPECT_THAT(removalQueue, IsEmpty());
    EXPECT_TRUE(log.contains("liveryRespawn removing act          KLM123   PH-ABC with objectid=0 ?"));
}

TEST_F(LiveryRespawn, aFailureIsLoggedAndLeavesTheAircraftFlying) {
    LiveAircraft& aircraft = flying();
    constexpr int ringOfFirstSamples = 8;
    for (int i = 0; i < ringOfFirstSamples; ++i) {
        give(aircraft, airSample(i, 0, 100 * i));
    }
    const FailingAllocation noMemoryForALargerRing(2 * ringOfFirstSamples * sizeof(void*));
    liveryRespawn(aircraft);
    EXPECT_THAT(log.lines(), ElementsAre("liveryRespawn: std::bad_alloc"));
    EXPECT_EQ(aircraft.lifeState, LifeState::active);
    EXPECT_EQ(aircraft.stream.size(), 8u);
    EXPECT_THAT(removalQueue, IsEmpty());
}

/// There is no memory to queue a removal.
class FailingRespawn : public LiveryRespawn {
protected:
    FailingRespawn() { removalQueue = std::deque<std::uint32_t>(others.begin(), others.end()); }

    void expectThatItFails(LiveAircraft& aircraft) {
        const FailingAllocation noMemoryForABlockMore(block);
        EXPECT_FALSE(liveryRespawn(aircraft));
        EXPECT_THAT(log.lines(), ElementsAre("liveryRespawn: std::bad_alloc"));
        EXPECT_EQ(removalQueue.size(), others.size());
        EXPECT_EQ(aircraft.lifeState, LifeState::active);
        EXPECT_EQ(aircraft.respawnHeading, std::nullopt);
    }

private:
    // The queue's block of 512 bytes is full but for the last place, which is never left without a next block.
    static constexpr std::size_t block = 512;
    const std::vector<std::uint32_t> others = std::vector<std::uint32_t>(block / sizeof(std::uint32_t) - 1, 4711);
};

TEST_F(FailingRespawn, leavesTheAircraftFlying) {
    LiveAircraft& aircraft = give(flying(), airSample(1, 0, 500), airSample(2, 0, 900));
    aircraft.stream[0].stationary = 1;
    expectThatItFails(aircraft);
    EXPECT_EQ(aircraft.stream.size(), 2u);
    EXPECT_EQ(aircraft.stream[0].stationary, 1);
}

TEST_F(FailingRespawn, leavesTheAircraftOnItsStandWithThePositionsOfItsDeparture) {
    LiveAircraft& aircraft =
        give(taxiing(), groundSample(0, 0, 500), groundSample(0.01, 0, 900), groundSample(0.02, 0, 1300));
    aircraft.phase = FlightPhase::parked;
    aircraft.heading = 3;
    aircraft.stream[0].track = 12;
    expectThatItFails(aircraft);
    EXPECT_EQ(aircraft.stream.size(), 3u);
    EXPECT_EQ(aircraft.stream[0].stationary, 0);
    EXPECT_EQ(aircraft.stream[0].track, 12);
}

TEST_F(LiveryRespawn, withoutSamplesItOnlySaysSo) {
    LiveAircraft& aircraft = flying();
    liveryRespawn(aircraft);
    EXPECT_EQ(aircraft.lifeState, LifeState::active);
    EXPECT_TRUE(log.contains("liveryRespawn empty sz?"));
}

} // namespace
