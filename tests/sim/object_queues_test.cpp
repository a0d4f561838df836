#include "sim/object_queues.h"

#include <gmock/gmock.h>

#include "sim/frame_flush.h"
#include "tests/sim/sim_test.h"

using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

namespace {

CreateRequest requestOf(std::uint32_t hexid, const char* tailNumber = "SWR12") {
    CreateRequest request;
    request.hexid = hexid;
    request.tailNumber = tailNumber;
    return request;
}

LiveAircraft aircraftIn(LifeState state, std::uint32_t objectId = 40) {
    LiveAircraft aircraft;
    aircraft.hexid = 0x4B1234;
    aircraft.callsign = "SWR12";
    aircraft.origin = "LSZH";
    aircraft.destination = "EGLL";
    aircraft.registration = "HB-IJX";
    aircraft.objectId = objectId;
    aircraft.lifeState = state;
    return aircraft;
}

class ObjectQueues : public SimTest {
protected:
    static std::vector<std::uint32_t> hexids(const std::vector<CreateRequest>& requests) {
        std::vector<std::uint32_t> ids;
        for (const CreateRequest& request : requests) {
            ids.push_back(request.hexid);
        }
        return ids;
    }
};

} // namespace

TEST_F(ObjectQueues, anAircraftInTheBufferIsMarkedForDropping) {
    LiveAircraft aircraft = aircraftIn(LifeState::buffer, 0);
    removeAircraftFromSim(aircraft);
    EXPECT_EQ(aircraft.dropRecord, 1);
    EXPECT_EQ(aircraft.lifeState, LifeState::buffer);
    EXPECT_THAT(removalQueue, IsEmpty());
}

TEST_F(ObjectQueues, aCreationThatIsNotRequestedYetIsWithdrawn) {
    LiveAircraft aircraft = aircraftIn(LifeState::adding2sim, 0);
    addingStack = {1, aircraft.hexid, 2};
    removeAircraftFromSim(aircraft);
    EXPECT_EQ(aircraft.dropRecordQueued, 1);
    EXPECT_EQ(aircraft.removeWhenAdded, 0);
    EXPECT_THAT(addingStack, ElementsAre(1, 2));
}

TEST_F(ObjectQueues, aLiveCreationThatStillWaitsIsWithdrawn) {
    LiveAircraft aircraft = aircraftIn(LifeState::adding2sim, 0);
    liveCreateQueue = {requestOf(1), requestOf(aircraft.hexid), requestOf(2)};
    removeAircraftFromSim(aircraft);
    EXPECT_EQ(aircraft.dropRecordQueued, 1);
    EXPECT_EQ(aircraft.removeWhenAdded, 0);
    ASSERT_THAT(liveCreateQueue, SizeIs(2));
    EXPECT_EQ(liveCreateQueue[0].hexid, 1U);
    EXPECT_EQ(liveCreateQueue[1].hexid, 2U);
}

TEST_F(ObjectQueues, aStaticCreationThatStillWaitsIsWithdrawn) {
    AircraftRecord aircraft = aircraftIn(LifeState::adding2sim, 0);
    aircraft.hexid = 7;
    staticCreateQueue = {requestOf(7)};
    removeAircraftFromSim(aircraft);
    EXPECT_EQ(aircraft.dropRecordQueued, 1);
    EXPECT_THAT(staticCreateQueue, IsEmpty());
}

TEST_F(ObjectQueues, theTwinWithTheSameCallSignKeepsItsCreation) {
    AircraftRecord aircraft = aircraftIn(LifeState::adding2sim, 0);
    aircraft.hexid = 7;
    liveCreateQueue = {requestOf(0x4B1234, "SWR12")};
    staticCreateQueue = {requestOf(7, "SWR12")};
    removeAircraftFromSim(aircraft);
    EXPECT_THAT(liveCreateQueue, SizeIs(1));
    EXPECT_THAT(staticCreateQueue, IsEmpty());
}

TEST_F(ObjectQueues, aCreationThatIsWithTheSimulatorIsRemovedWhenItHasComeIntoBeing) {
    LiveAircraft aircraft = aircraftIn(LifeState::adding2sim, 0);
    removeAircraftFromSim(aircraft);
    EXPECT_EQ(aircraft.removeWhenAdded, 1);
    EXPECT_EQ(aircraft.dropRecordQueued, 0);
    EXPECT_EQ(aircraft.lifeState, LifeState::adding2sim);
    EXPECT_THAT(removalQueue, IsEmpty());
}

TEST_F(ObjectQueues, askingAgainForARemovalThatWaitsChangesNothing) {
    LiveAircraft aircraft = aircraftIn(LifeState::adding2sim, 0);
    aircraft.removeWhenAdded = 1;
    liveCreateQueue = {requestOf(aircraft.hexid)};
    removeAircraftFromSim(aircraft);
    EXPECT_THAT(liveCreateQueue, SizeIs(1));
    EXPECT_EQ(aircraft.dropRecordQueued, 0);
}

TEST_F(ObjectQueues, theObjectOfAnActiveAircraftIsQueuedForRemoval) {
    LiveAircraft aircraft = aircraftIn(LifeState::active);
    removeAircraftFromSim(aircraft);
    EXPECT_EQ(aircraft.lifeState, LifeState::removingfromsim);
    EXPECT_THAT(removalQueue, ElementsAre(40));
}

TEST_F(ObjectQueues, anActiveAircraftWithoutObjectIsALogLine) {
    LiveAircraft aircraft = aircraftIn(LifeState::active, 0);
    removeAircraftFromSim(aircraft);
    EXPECT_EQ(aircraft.lifeState, LifeState::removingfromsim);
    EXPECT_THAT(removalQueue, IsEmpty());
    EXPECT_THAT(log.lines(),
                ElementsAre("removeAircraftFromSim removing act LSZH->EGLL SWR12    HB-IJX, with objectid=0 ?"));
}

TEST_F(ObjectQueues, anAircraftThatIsBeingRemovedIsNotRemovedTwice) {
    LiveAircraft aircraft = aircraftIn(LifeState::active);
    removeAircraftFromSim(aircraft);
    removeAircraftFromSim(aircraft);
    EXPECT_THAT(removalQueue, ElementsAre(40));
}

TEST_F(ObjectQueues, inALiveryRespawnOnlyTheStateChanges) {
    LiveAircraft aircraft = aircraftIn(LifeState::liveryrespawn);
    removeAircraftFromSim(aircraft);
    EXPECT_EQ(aircraft.lifeState, LifeState::removingfromsim);
    EXPECT_THAT(removalQueue, IsEmpty()) << "the respawn has queued it";
}

TEST_F(ObjectQueues, tenRemovalsASecondAreHandedOnInTheirOrder) {
    for (std::uint32_t id = 40; id < 60; ++id) {
        removalQueue.push_back(id);
    }
    for (std::int32_t slot = 1; slot <= 100; ++slot) {
        stepObjectQueues(slot);
        EXPECT_THAT(removeRequests, SizeIs(static_cast<std::size_t>(slot / 10)));
    }
    EXPECT_THAT(removeRequests, ElementsAre(40, 41, 42, 43, 44, 45, 46, 47, 48, 49));
    EXPECT_THAT(removalQueue, SizeIs(10));
}

TEST_F(ObjectQueues, twoCreationsASecondAreHandedOnTheLiveOnesFirst) {
    liveCreateQueue = {requestOf(101), requestOf(102)};
    staticCreateQueue = {requestOf(7), requestOf(8)};
    stepObjectQueues(49);
    EXPECT_THAT(createRequests, IsEmpty());
    for (const std::int32_t slot : {50, 51, 99, 100}) {
        stepObjectQueues(slot);
    }
    EXPECT_THAT(hexids(createRequests), ElementsAre(101, 102));
    createRequests.clear(); // as a frame does it
    stepObjectQueues(150);
    EXPECT_THAT(hexids(createRequests), ElementsAre(7)) << "one static, as no live one waits";
    liveCreateQueue.push_back(requestOf(103));
    stepObjectQueues(200);
    EXPECT_THAT(hexids(createRequests), ElementsAre(7, 103));
    createRequests.clear();
    stepObjectQueues(250);
    stepObjectQueues(300);
    EXPECT_THAT(hexids(createRequests), ElementsAre(8));
}

TEST_F(ObjectQueues, whileNoFrameComesNoMoreThanASecondsWorthPilesUp) {
    for (std::uint32_t id = 40; id < 80; ++id) {
        removalQueue.push_back(id);
        liveCreateQueue.push_back(requestOf(id));
    }
    for (std::int32_t slot = 1; slot <= 2000; ++slot) {
        stepObjectQueues(slot);
    }
    EXPECT_THAT(removeRequests, SizeIs(10));
    EXPECT_THAT(hexids(createRequests), ElementsAre(40, 41));
    EXPECT_THAT(removalQueue, SizeIs(30)) << "nothing is lost";
    EXPECT_THAT(liveCreateQueue, SizeIs(38));
    flushFrame();
    stepObjectQueues(2050);
    EXPECT_THAT(hexids(createRequests), ElementsAre(42));
}

TEST_F(ObjectQueues, aSlotBelowZeroKeepsThePaceToo) {
    removalQueue = {40, 41};
    stepObjectQueues(-11);
    EXPECT_THAT(removeRequests, IsEmpty());
    stepObjectQueues(-10);
    stepObjectQueues(0);
    EXPECT_THAT(removeRequests, ElementsAre(40, 41));
}

TEST_F(ObjectQueues, whatIsHandedOnReachesTheSimulatorWithTheNextFrame) {
    removalQueue = {40};
    liveCreateQueue = {requestOf(0x4B1234)};
    stepObjectQueues(50);
    EXPECT_THAT(simulator->calls(), IsEmpty());
    flushFrame();
    EXPECT_THAT(simulator->calls(), SizeIs(2));
}
