#include "engine/slot.h"

#include <gmock/gmock.h>

#include <filesystem>

#include "core/user_error.h"
#include "feed/real_traffic_link.h"
#include "sim/flight_plan.h"
#include "sim/frame_flush.h"
#include "sim/simulator_link.h"
#include "tests/engine/engine_test.h"
#include "tests/support/allocation_count.h"

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::SizeIs;

namespace {

class Slot : public EngineTest {
protected:
    Slot() { simHandle = &handle; }
    ~Slot() override {
        simHandle = nullptr;
        gRealTrafficHere = false;
        clientConnected = false;
        setUserState({});
    }

    static void feed(std::uint32_t hexid, double milesNorth = 0, double feedTime = 1000) {
        FeedRecord record = recordOf(airSample(milesNorth, 0, 3000), feedTime);
        record.hexid = hexid;
        record.callsign = fmt::format("KLM{}", hexid % 10000);
        gLiveSampleQueue.push(std::move(record));
    }

    static void tell(EngineMessageKind kind, std::uint32_t objectId, std::uint32_t id, double a = 0, double b = 0) {
        pushEngineMessage({objectId, id, 0, kind, a, b});
    }

    static void slots(int count) {
        for (int i = 0; i < count; ++i) {
            lf_handleAddingStack();
        }
    }

    int handle = 0;
};

TEST_F(Slot, countsTheClockOn) {
    slots(3);
    EXPECT_EQ(slotClock, testSlot + 3);
}

TEST_F(Slot, takesTwoRecordsAndLeavesTheRestWaiting) {
    for (std::uint32_t i = 0; i < 5; ++i) {
        feed(20000 + i);
    }
    slots(1);
    EXPECT_EQ(liveTable.size(), 2u);
    EXPECT_EQ(gLiveSampleQueue.size(), 3u);
}

TEST_F(Slot, countsADroppedRecordAsTaken) {
    for (std::uint32_t i = 0; i < 3; ++i) {
        feed(20000);
    }
    slots(1);
    EXPECT_EQ(gLiveSampleQueue.size(), 1u);
    EXPECT_EQ(liveTable[0].stream.size(), 1u);
}

TEST_F(Slot, createsTheLastAircraftThatAskedForIt) {
    for (const std::uint32_t hexid : {20001u, 20002u}) {
        LiveAircraft& aircraft = give(flying(), airSample(0, 0, 100), airSample(1, 0, 1000));
        aircraft.hexid = hexid;
        aircraft.lifeState = LifeState::adding2sim;
        aircraft.pitch = -0.1;
        aircraft.bank = 0.2;
        aircraft.heading = 1;
        addingStack.push_back(hexid);
    }
    ++slotClock; // not one of the slots that hand a request on
    slots(1);
    ASSERT_THAT(liveCreateQueue, SizeIs(1));
    const CreateRequest& request = liveCreateQueue[0];
    EXPECT_EQ(request.hexid, 20002u);
    EXPECT_EQ(request.tailNumber, "KLM123");
    EXPECT_EQ(request.title, "Some Livery");
    EXPECT_EQ(request.lat, testPlace.lat);
    EXPECT_EQ(request.lon, testPlace.lon);
    EXPECT_EQ(request.alt, 5000);
    EXPECT_DOUBLE_EQ(request.pitch, -0.1 * degreesPerRadian);
    EXPECT_DOUBLE_EQ(request.bank, 0.2 * degreesPerRadian);
    EXPECT_DOUBLE_EQ(request.heading, degreesPerRadian);
    EXPECT_EQ(request.onGround, 0u);
    EXPECT_EQ(request.airspeed, 0u);
    EXPECT_THAT(addingStack, ElementsAre(20001));
}

TEST_F(Slot, aRequestThatIsNewIsNotHandedOnInTheSameSlot) {
    LiveAircraft& aircraft = give(flying(), airSample(0, 0, 100), airSample(1, 0, 1000));
    aircraft.lifeState = LifeState::adding2sim;
    addingStack.push_back(testHexid);
    slotClock = 10000; // one of the slots that hand a request on
    slots(1);
    EXPECT_THAT(liveCreateQueue, SizeIs(1));
    EXPECT_TRUE(createRequests.empty());
    slots(50);
    EXPECT_THAT(liveCreateQueue, IsEmpty());
}

TEST_F(Slot, createsAGroundAircraftOnTheGround) {
    LiveAircraft& aircraft = give(taxiing(), groundSample(0, 0, 100));
    aircraft.lifeState = LifeState::adding2sim;
    addingStack.push_back(testHexid);
    ++slotClock;
    slots(1);
    EXPECT_EQ(liveCreateQueue.at(0).onGround, 1u);
}

TEST_F(Slot, doesNotCreateWhatHasNoCallSign) {
    LiveAircraft& aircraft = give(flying(), airSample(0, 0, 100));
    aircraft.lifeState = LifeState::adding2sim;
    aircraft.callsign = "";
    addingStack.push_back(testHexid);
    slots(1);
    EXPECT_TRUE(liveCreateQueue.empty());
    EXPECT_TRUE(log.contains("lf_handleAddingStack                   PH-ABC objectid = 0?"));
}

TEST_F(Slot, aRequestForWhichThereIsNoMemoryIsMadeInTheNextSlot) {
    LiveAircraft& aircraft = give(flying(), airSample(0, 0, 100), airSample(1, 0, 1000));
    aircraft.lifeState = LifeState::adding2sim;
    aircraft.callsign = std::string(5000, 'X'); // the request has a copy of it
    addingStack = {4711, testHexid};
    ++slotClock; // nothing is asked of the simulator in these slots
    const FailingAllocation noMemory(5000);
    slots(1);
    EXPECT_THAT(log.lines(), ElementsAre("requestCreation exception: std::bad_alloc"));
    EXPECT_EQ(slotClock, testSlot + 2);
    EXPECT_THAT(addingStack, ElementsAre(4711, testHexid));
    EXPECT_THAT(liveCreateQueue, IsEmpty());
    slots(1);
    EXPECT_THAT(addingStack, ElementsAre(4711));
    ASSERT_THAT(liveCreateQueue, SizeIs(1));
    EXPECT_EQ(liveCreateQueue[0].hexid, testHexid);
}

TEST_F(Slot, forgetsARequestWhoseAircraftIsGone) {
    addingStack.push_back(4711);
    slots(1);
    EXPECT_THAT(addingStack, IsEmpty());
    EXPECT_THAT(log.lines(), IsEmpty());
}

TEST_F(Slot, anAircraftThatIsRemovedBeforeItsRequestIsNeverAskedFor) {
    LiveAircraft& aircraft = give(flying(), airSample(0, 0, 100), airSample(1, 0, 1000));
    aircraft.lifeState = LifeState::adding2sim;
    addingStack = {4711, testHexid};
    removeAircraftFromSim(aircraft);
    EXPECT_THAT(addingStack, ElementsAre(4711));
    slots(1);
    EXPECT_TRUE(liveTable.empty());
    EXPECT_THAT(liveCreateQueue, IsEmpty());
}

TEST_F(Slot, aSingleReportGoes29SecondsLaterWithoutHavingBeenCreated) {
    feed(20000);
    slots(1);
    slotClock = testSlot + 3000 - 100 - 1;
    slots(1);
    EXPECT_EQ(liveTable.size(), 1u);
    slots(1);
    EXPECT_TRUE(liveTable.empty());
    EXPECT_THAT(addingStack, IsEmpty());
    EXPECT_THAT(liveCreateQueue, IsEmpty());
}

TEST_F(Slot, erasesDroppedRecordsAndKeepsTheOrderOfTheOthers) {
    for (const std::uint32_t hexid : {20001u, 20002u, 20003u, 20004u}) {
        LiveAircraft& aircraft = give(flying(), airSample(0, 0, 500));
        aircraft.hexid = hexid;
    }
    liveTable[1].dropRecord = 1;
    liveTable[2].dropRecordQueued = 1;
    slots(1);
    ASSERT_EQ(liveTable.size(), 2u);
    EXPECT_EQ(liveTable[0].hexid, 20001u);
    EXPECT_EQ(liveTable[1].hexid, 20004u);
}

TEST_F(Slot, handsThePositionsToTheFrame) {
    give(flying(), airSample(0, 0, 500));
    slots(1);
    EXPECT_THAT(positionBack, SizeIs(1));
    EXPECT_THAT(positionFront, IsEmpty());
}

TEST_F(Slot, anAircraftThatFailsCostsItsSlotAndNothingElse) {
    LiveAircraft& failing = give(flying(), airSample(0, 0, 0), airSample(1, 0, 1000));
    failing.category = static_cast<AircraftCategory>(9);
    LiveAircraft& other = give(flying(), airSample(0, 0, 500));
    other.objectId = 78;
    feed(20000);
    slots(1);
    ASSERT_THAT(positionBack, SizeIs(1));
    EXPECT_EQ(positionBack[0].objectId, 78u);
    EXPECT_EQ(liveTable.size(), 3u);
    EXPECT_EQ(slotClock, testSlot + 1);
}

TEST_F(Slot, anAircraftWhoseFailureCannotEvenBeLoggedCostsItsSlotAndNothingElse) {
    Sample banked = airSample(0, 0, 0);
    banked.roll = 0.1; // is judged by the category
    LiveAircraft& failing = give(flying(), banked, airSample(1, 0, 1000));
    failing.lifeState = LifeState::buffer;
    failing.category = static_cast<AircraftCategory>(9);
    failing.destination = std::string(5000, 'X'); // there is no memory for the line that names it
    give(flying(), airSample(0, 0, 500)).objectId = 78;
    feed(20000);
    const FailingAllocation noMemory(5000);
    slots(1);
    EXPECT_THAT(log.lines(), ElementsAre("updateLiveAc exception: std::bad_alloc"));
    ASSERT_THAT(positionBack, SizeIs(1));
    EXPECT_EQ(positionBack[0].objectId, 78u);
    EXPECT_EQ(liveTable.size(), 3u);
    EXPECT_EQ(slotClock, testSlot + 1);
}

TEST_F(Slot, aRemovalThatCannotBeHandedOnWaitsAndTheRestOfTheSlotIsDone) {
    removalQueue.push_back(4711);
    removeRequests = std::vector<std::uint32_t>(8); // without room for one more
    feed(20000);
    const FailingAllocation noMemory((removeRequests.size() + 1) * sizeof(removeRequests[0]));
    slots(1);
    EXPECT_THAT(log.lines(), ElementsAre("stepObjectQueues exception: std::bad_alloc"));
    EXPECT_THAT(removalQueue, ElementsAre(4711));
    EXPECT_EQ(liveTable.size(), 1u);
    EXPECT_EQ(slotClock, testSlot + 1);
    slots(10);
    EXPECT_THAT(removalQueue, IsEmpty());
    EXPECT_EQ(removeRequests.back(), 4711u);
}

TEST_F(Slot, aDroppedRecordThatCannotBeErasedGoesInTheNextSlotAndTheRestOfTheSlotIsDone) {
    ASSERT_TRUE(gf_createFlightPlanFolder());
    LiveAircraft& dropped = flying();
    dropped.lifeState = LifeState::buffer;
    dropped.dropRecord = 1;
    dropped.hasFlightPlan = 1;
    feed(20000);
    {
        const FailingAllocation noMemoryForThePathOfThePlan(lf_flightPlanPath(testHexid).native().size());
        slots(1);
    }
    EXPECT_THAT(log.lines(), ElementsAre("eraseDroppedLive exception: std::bad_alloc"));
    EXPECT_EQ(liveTable.size(), 2u);
    EXPECT_EQ(slotClock, testSlot + 1);
    slots(1);
    ASSERT_EQ(liveTable.size(), 1u);
    EXPECT_EQ(liveTable[0].hexid, 20000u);
    gf_removeFlightPlanFolder();
}

TEST_F(Slot, aRecordThatFailsIsLoggedAndTheNextIsTakenInTheSameSlot) {
    // The longest text of the record is copied, for which there is no memory.
    FeedRecord failing = recordOf(airSample(0, 0, 3000));
    failing.hexid = 20000;
    failing.type = std::string(5000, 'X');
    gLiveSampleQueue.push(std::move(failing));
    feed(20001);
    const FailingAllocation noMemory(5000);
    slots(1);
    EXPECT_THAT(log.lines(), ElementsAre("processFeedRecord exception: std::bad_alloc"));
    ASSERT_EQ(liveTable.size(), 1u);
    EXPECT_EQ(liveTable[0].hexid, 20001u);
    EXPECT_TRUE(gLiveSampleQueue.empty());
    EXPECT_EQ(slotClock, testSlot + 1);
}

// What is asked of the simulator.

TEST_F(Slot, asksForTheAircraftInRangeOnceASecond) {
    slots(200);
    EXPECT_THAT(simulator->calls("SimConnect_RequestDataOnSimObjectType"), SizeIs(2));
}

TEST_F(Slot, asksFiveTimesAsOftenDuringAFlare) {
    flareInProgress = true;
    slots(200);
    EXPECT_THAT(simulator->calls("SimConnect_RequestDataOnSimObjectType"), SizeIs(10));
}

TEST_F(Slot, saysThatTheRangeRequestFailed) {
    simulator->letFail("SimConnect_RequestDataOnSimObjectType");
    slots(1);
    EXPECT_TRUE(log.contains("SimConnect request ac within range fails"));
    EXPECT_TRUE(simFailed);
    slots(100);
    EXPECT_THAT(simulator->calls("SimConnect_RequestDataOnSimObjectType"), SizeIs(1));
}

TEST_F(Slot, copiesTheUsersStateOnceASecond) {
    slots(1);
    UserState state;
    state.lat = 12;
    setUserState(state);
    slots(99);
    EXPECT_EQ(gUserState.lat, 0);
    slots(1);
    EXPECT_EQ(gUserState.lat, 12);
}

TEST_F(Slot, tellsRealTrafficWhereTheUserIsOnceASecond) {
    gRealTrafficHere = true;
    UserState state;
    state.lat = testPlace.lat;
    state.lon = testPlace.lon;
    setUserState(state);
    gUserState = state;
    std::vector<std::int32_t> toldIn;
    for (std::int32_t slot = 0; slot <= 250; ++slot) {
        clientConnected = true; // without a connection: telling it fails, which shows that it was tried
        slots(1);
        if (!clientConnected) {
            toldIn.push_back(slot);
        }
    }
    EXPECT_THAT(toldIn, ElementsAre(0, 100, 200));
}

TEST_F(Slot, whatCannotBeAskedOfTheSimulatorCostsNothingElse) {
    UserState state;
    state.lat = 12;
    setUserState(state);
    const FailingAllocation noMemoryToAskForTheAircraftInRange(1);
    slots(1);
    EXPECT_THAT(log.lines(), ElementsAre("requestAircraftInRange exception: std::bad_alloc"));
    EXPECT_EQ(gUserState.lat, 12);
    EXPECT_EQ(slotClock, testSlot + 1);
}

TEST_F(Slot, whatCannotBeToldToRealTrafficCostsNothingElse) {
    gRealTrafficHere = true;
    clientConnected = true;
    UserState state;
    state.lat = 12;
    setUserState(state);
    gUserState = state;
    gUserState.lon = 3;
    simFailed = true; // the simulator is asked nothing
    const FailingAllocation noMemoryForTheReport(40);
    slots(1);
    EXPECT_THAT(log.lines(), ElementsAre("sendUserState exception: std::bad_alloc"));
    EXPECT_EQ(gUserState.lon, 0);
    EXPECT_EQ(slotClock, testSlot + 1);
}

// The inbox.

TEST_F(Slot, onTheGroundTheHeightIsTheSimulatorsOwn) {
    LiveAircraft& aircraft = taxiing();
    aircraft.cgHeight = 9;
    tell(EngineMessageKind::groundData, testObject, 1, 340, 9.5);
    readInbox();
    EXPECT_EQ(aircraft.alt, 349);
    EXPECT_EQ(aircraft.altAboveGround, 9.5);
}

TEST_F(Slot, inFlightTheSimulatorTellsTheHeightAboveGroundOnly) {
    LiveAircraft& aircraft = flying();
    tell(EngineMessageKind::groundData, testObject, 0, 340, 4660);
    readInbox();
    EXPECT_EQ(aircraft.alt, 5000);
    EXPECT_EQ(aircraft.altAboveGround, 4660);
    aircraft.groundSlots = 2;
    tell(EngineMessageKind::groundData, testObject, 0, 340, 4660);
    readInbox();
    EXPECT_EQ(aircraft.alt, 340);
}

TEST_F(Slot, groundDataOfNobodyAreIgnored) {
    tell(EngineMessageKind::groundData, 4711, 1, 340, 0);
    readInbox();
    EXPECT_THAT(log.lines(), IsEmpty());
}

TEST_F(Slot, takesTheHeightAndPitchOnTheGround) {
    LiveAircraft& aircraft = flying();
    tell(EngineMessageKind::staticData, testObject, 0, 12, 0.01);
    readInbox();
    EXPECT_EQ(aircraft.cgHeight, 12);
    EXPECT_EQ(aircraft.groundPitch, 0.01);
    tell(EngineMessageKind::staticData, testObject, 0, 0.5, 3 * radiansPerDegree);
    readInbox();
    EXPECT_EQ(aircraft.cgHeight, 12);
    EXPECT_DOUBLE_EQ(aircraft.groundPitch, 0.012217304763960306);
}

TEST_F(Slot, aBlockedAircraftInTheBufferIsDropped) {
    LiveAircraft& aircraft = flying();
    aircraft.lifeState = LifeState::buffer;
    tell(EngineMessageKind::blockAircraft, 0, testHexid);
    readInbox();
    EXPECT_EQ(aircraft.dropRecord, 1);
    EXPECT_TRUE(log.contains("         KLM123   PH-ABC will be removed from buffer while blocked"));
}

TEST_F(Slot, aBlockedAircraftThatIsDueGoesWithoutMakingRoomForItself) {
    MAX_LIVE_SEL.value = 1;
    LiveAircraft& farther = give(flying(), airSample(5, 0, 500));
    farther.hexid = 20001;
    farther.lat += 1;
    farther.callsign = "KLM9";
    LiveAircraft& due = give(flying(), airSample(0, 0, 100), airSample(1, 0, 1000));
    due.lifeState = LifeState::buffer;
    due.objectId = 0;
    tell(EngineMessageKind::blockAircraft, 0, testHexid);
    slots(1);
    ASSERT_EQ(liveTable.size(), 1u);
    EXPECT_EQ(liveTable[0].hexid, 20001u);
    EXPECT_EQ(liveTable[0].lifeState, LifeState::active);
    EXPECT_THAT(log.lines(), ElementsAre("         KLM123   PH-ABC will be removed from buffer while blocked"));
}

TEST_F(Slot, aBlockedActiveAircraftIsRemoved) {
    LiveAircraft& aircraft = flying();
    tell(EngineMessageKind::blockAircraft, 0, testHexid);
    tell(EngineMessageKind::blockAircraft, 0, 4711);
    readInbox();
    EXPECT_EQ(aircraft.lifeState, LifeState::removingfromsim);
    EXPECT_TRUE(log.contains("         KLM123   PH-ABC removed from simulator immediately while blocked"));
}

TEST_F(Slot, aBlockedAircraftThatIsUnderWayToTheSimulatorOrFromItIsLeftAlone) {
    LiveAircraft& aircraft = flying();
    for (const LifeState state : {LifeState::adding2sim, LifeState::liveryrespawn, LifeState::removingfromsim}) {
        aircraft.lifeState = state;
        tell(EngineMessageKind::blockAircraft, 0, testHexid);
        readInbox();
        EXPECT_EQ(aircraft.lifeState, state);
        EXPECT_EQ(aircraft.dropRecord + aircraft.dropRecordQueued + aircraft.removeWhenAdded, 0);
        EXPECT_THAT(removalQueue, IsEmpty());
        EXPECT_THAT(log.lines(), IsEmpty());
    }
}

TEST_F(Slot, aRemovalThatTheSimulatorConfirmsErasesTheRecord) {
    flying().lifeState = LifeState::removingfromsim;
    tell(EngineMessageKind::objectRemoved, testObject, 0);
    readInbox();
    EXPECT_TRUE(liveTable.empty());
}

TEST_F(Slot, aMessageThatFailsIsLoggedAndTheNextIsServedInTheSameSlot) {
    LiveAircraft& blocked = flying();
    blocked.callsign = std::string(5000, 'X'); // there is no memory for the line that names it
    LiveAircraft& other = flying();
    other.hexid = 20001;
    other.objectId = 78;
    tell(EngineMessageKind::blockAircraft, 0, testHexid);
    tell(EngineMessageKind::staticData, 78, 0, 12, 0.01);
    const FailingAllocation noMemory(5000);
    readInbox();
    EXPECT_THAT(log.lines(), ElementsAre("readInbox exception: std::bad_alloc"));
    EXPECT_EQ(liveTable[0].lifeState, LifeState::active);
    EXPECT_EQ(liveTable[1].cgHeight, 12);
    EXPECT_THAT(engineInbox, IsEmpty());
}

TEST_F(Slot, anActivationThatFailsCostsItselfAndTheNextIsActive) {
    give(flying(), airSample(0, 0, 100), airSample(1, 0, 1000));
    LiveAircraft& other = give(flying(), airSample(0, 0, 100), airSample(1, 0, 1000));
    other.hexid = 20001;
    other.objectId = 78;
    for (LiveAircraft& aircraft : liveTable) {
        aircraft.lifeState = LifeState::adding2sim;
        EngineMessage due;
        due.kind = EngineMessageKind::liveObjectExists;
        due.id = aircraft.hexid;
        due.objectId = aircraft.objectId;
        due.counter = 200;
        pendingActivations.push_back(due);
    }
    // There is no memory for one event more.
    eventQueue.resize(eventQueue.capacity());
    const std::size_t waiting = eventQueue.size();
    const FailingAllocation noMemory(waiting * sizeof(eventQueue[0]));
    readInbox();
    EXPECT_THAT(log.lines(), ElementsAre("readInbox exception: std::bad_alloc"));
    readInbox();
    EXPECT_THAT(pendingActivations, IsEmpty());
    EXPECT_EQ(liveTable[1].lifeState, LifeState::active);
    ASSERT_GT(eventQueue.size(), waiting);
    for (std::size_t i = waiting; i < eventQueue.size(); ++i) {
        EXPECT_EQ(eventQueue[i].objectId, 78u) << "nothing is begun anew with the one that failed";
    }
}

TEST_F(Slot, theInboxIsEmptyAfterwards) {
    tell(EngineMessageKind::objectRemoved, 4711, 0);
    readInbox();
    EXPECT_THAT(engineInbox, IsEmpty());
}

/// Its title is longer than the call can carry.
TEST_F(Slot, aTitleThatTheSimulatorsCallRefusesIsNotedAndTheAircraftGoes) {
    const std::string title(256, 'x');
    LiveAircraft& aircraft = give(flying(), airSample(0, 0, 500), airSample(1, 0, 1500));
    aircraft.lifeState = LifeState::adding2sim;
    aircraft.objectId = 0;
    aircraft.liveryTitle = title;
    addingStack.push_back(testHexid);
    slots(51);
    ASSERT_THAT(createRequests, SizeIs(1));
    flushFrame();
    slots(1);
    EXPECT_THAT(FailedTitles, ElementsAre(title));
    EXPECT_THAT(NoCreateList, ElementsAre("A320 KLM"));
    EXPECT_THAT(liveTable, IsEmpty());
    EXPECT_FALSE(simFailed) << "the session goes on";
}

/// The plan of an aircraft that was to be made anew is of no use when it is dropped in the buffer.
TEST_F(Slot, whatIsDroppedLeavesNoFlightPlanBehind) {
    ASSERT_TRUE(gf_createFlightPlanFolder());
    for (const bool withAll : {false, true}) {
        LiveAircraft& aircraft = flying();
        aircraft.lifeState = LifeState::buffer;
        aircraft.hasFlightPlan = 1;
        ASSERT_TRUE(lf_writeFlightPlan(lf_flightPlanPath(testHexid), aircraft));
        withAll ? removeAllAircraft() : slots(1); // without samples it is dropped
        EXPECT_THAT(liveTable, IsEmpty());
        EXPECT_FALSE(std::filesystem::exists(lf_flightPlanPath(testHexid))) << withAll;
    }
    gf_removeFlightPlanFolder();
}

TEST_F(Slot, anAircraftThatFoundNoRoomMayComeAgain) {
    flying().lifeState = LifeState::adding2sim;
    tell(EngineMessageKind::tooManyObjects, 0, testHexid);
    slots(1);
    EXPECT_THAT(liveTable, IsEmpty());
    feed(testHexid);
    slots(1);
    EXPECT_THAT(liveTable, SizeIs(1));
}

TEST_F(Slot, tooManyRefusedLiveriesReachTheTop) {
    for (int i = 0; i < 19; ++i) {
        FailedTitles.insert(fmt::format("Refused {}", i));
    }
    flying().lifeState = LifeState::adding2sim;
    tell(EngineMessageKind::creationRefused, 0, testHexid);
    EXPECT_THROW(lf_handleAddingStack(), kvd::UserErrorException);
    EXPECT_THAT(engineInbox, IsEmpty());
}

// The end of all.

TEST_F(Slot, allAircraftLeave) {
    flying();
    flying().lifeState = LifeState::buffer;
    LiveAircraft& waiting = flying();
    waiting.lifeState = LifeState::adding2sim;
    waiting.hexid = 20001;
    liveCreateQueue.push_back({.tailNumber = "KLM123", .title = "X", .hexid = 20001});
    LiveAircraft& respawning = flying();
    respawning.lifeState = LifeState::liveryrespawn;
    LiveAircraft& aboutToBeAskedFor = flying();
    aboutToBeAskedFor.lifeState = LifeState::adding2sim;
    aboutToBeAskedFor.hexid = 20002;
    addingStack.push_back(20002);
    removeAllAircraft();
    ASSERT_EQ(liveTable.size(), 2u);
    EXPECT_EQ(liveTable[0].lifeState, LifeState::removingfromsim);
    EXPECT_EQ(liveTable[1].lifeState, LifeState::removingfromsim);
    EXPECT_TRUE(liveCreateQueue.empty());
    EXPECT_TRUE(addingStack.empty());
    EXPECT_THAT(removalQueue, SizeIs(1));
}

TEST_F(Slot, aResetLeavesNothingButTheCountsOfTheDay) {
    flying();
    MatchesAtStep[2] = 5;
    twinCheckQueue.push_back(1);
    NoMatchList.insert("x");
    flareInProgress = true;
    openAirport(5);
    slotClock = 4711;
    resetEngine();
    EXPECT_EQ(slotClock, 4711) << "it goes on as long as the program runs";
    EXPECT_TRUE(liveTable.empty());
    EXPECT_TRUE(twinCheckQueue.empty());
    EXPECT_TRUE(NoMatchList.empty());
    EXPECT_FALSE(flareInProgress);
    EXPECT_FALSE(gAirportInUse);
    EXPECT_EQ(MatchesAtStep[2], 5U);
}

} // namespace
