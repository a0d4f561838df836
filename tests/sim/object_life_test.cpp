#include "sim/object_life.h"

#include <gmock/gmock.h>

#include <atomic>
#include <filesystem>
#include <mutex>
#include <numbers>
#include <thread>

#include "core/user_error.h"
#include "platform/files.h"
#include "sim/flight_plan.h"
#include "sim/frame_flush.h"
#include "sim/simulator_link.h"
#include "tests/sim/sim_test.h"

namespace fs = std::filesystem;

using testing::Contains;
using testing::ElementsAre;
using testing::EndsWith;
using testing::IsEmpty;
using testing::SizeIs;

namespace {

constexpr std::uint32_t liveHexid = 0x4B1234;
constexpr std::uint32_t staticHexid = 7;
constexpr std::uint32_t object = 40;

constexpr int slotsToActivation = 200;

EngineMessage liveExists(std::uint32_t objectId = object, double altAboveGround = 0) {
    return {objectId, liveHexid, 0, EngineMessageKind::liveObjectExists, 0, altAboveGround};
}

EngineMessage staticExists(std::uint32_t objectId = object) {
    return {objectId, staticHexid, 0, EngineMessageKind::staticObjectExists, 0, 0};
}

EngineMessage removalOf(std::uint32_t objectId) {
    return {objectId, 0, 0, EngineMessageKind::objectRemoved, 0, 0};
}

EngineMessage staticDataOf(std::uint32_t objectId, double cgHeight, double pitch) {
    return {objectId, 0, 0, EngineMessageKind::staticData, cgHeight, pitch};
}

EngineMessage refusalOf(std::uint32_t hexid) {
    return {0, hexid, 0, EngineMessageKind::creationRefused, 0, 0};
}

void step(int slots) {
    for (int i = 0; i < slots; ++i) {
        stepPendingActivations();
    }
}

class ObjectLife : public SimTest {
protected:
    ~ObjectLife() override { gf_removeFlightPlanFolder(); }

    static LiveAircraft& addLive(FlightPhase phase, std::uint32_t hexid = liveHexid) {
        LiveAircraft& aircraft = liveTable.emplace_back();
        aircraft.hexid = hexid;
        aircraft.callsign = "SWR12";
        aircraft.lifeState = LifeState::adding2sim;
        aircraft.phase = phase;
        Sample sample;
        sample.airborne = phase == FlightPhase::flying ? 1 : 0;
        aircraft.stream.pushBack(sample);
        return aircraft;
    }

    static AircraftRecord& addStatic(std::uint32_t hexid = staticHexid) {
        AircraftRecord& aircraft = staticTable.emplace_back();
        aircraft.hexid = hexid;
        aircraft.callsign = "SWR12*";
        aircraft.lifeState = LifeState::adding2sim;
        return aircraft;
    }

    static LiveAircraft& addActiveLive(std::uint32_t hexid, std::uint32_t objectId) {
        LiveAircraft& aircraft = addLive(FlightPhase::taxi, hexid);
        aircraft.lifeState = LifeState::active;
        aircraft.objectId = objectId;
        return aircraft;
    }

    std::vector<std::string> calls(const char* name = "SimConnect_") { return simulator->calls(name); }

    /// From the message to the slot in which the object becomes active; what was queued before that slot is forgotten.
    static void activate(const EngineMessage& message) {
        message.kind == EngineMessageKind::liveObjectExists ? objectAdded(message) : staticObjectAdded(message);
        step(slotsToActivation);
        eventQueue.clear();
        step(1);
    }
};

using ObjectLifeThreads = ObjectLife;

// Coming into being

TEST_F(ObjectLife, theRecordTakesTheObjectAndItsHeight) {
    LiveAircraft& aircraft = addLive(FlightPhase::flying);
    objectAdded(liveExists(object, 3456.5));
    EXPECT_EQ(aircraft.objectId, object);
    EXPECT_EQ(aircraft.altAboveGround, 3456.5);
    EXPECT_EQ(aircraft.lifeState, LifeState::adding2sim);
    ASSERT_THAT(pendingActivations, SizeIs(1));
    EXPECT_EQ(pendingActivations[0].counter, 0);
}

TEST_F(ObjectLife, anObjectIdBelowThreeIsRefused) {
    LiveAircraft& aircraft = addLive(FlightPhase::flying);
    objectAdded(liveExists(2));
    EXPECT_EQ(aircraft.objectId, 0U);
    EXPECT_THAT(pendingActivations, IsEmpty());
    EXPECT_THAT(calls(), IsEmpty());
    objectAdded(liveExists(3));
    EXPECT_EQ(aircraft.objectId, 3U);
}

TEST_F(ObjectLife, anObjectThatNoRecordWaitsForIsRemoved) {
    objectAdded(liveExists());
    EXPECT_THAT(pendingActivations, IsEmpty());
    EXPECT_THAT(calls(), IsEmpty());
    EXPECT_THAT(removalQueue, ElementsAre(object));
}

TEST_F(ObjectLife, itsStaticDataIsAskedForOnce) {
    addLive(FlightPhase::flying);
    objectAdded(liveExists());
    EXPECT_THAT(calls(), ElementsAre("SimConnect_RequestDataOnSimObject(102, 405, 40, 1, 0, 0, 0, 0)"));
}

TEST_F(ObjectLife, staticDataThatCannotBeAskedForEndsTheSession) {
    simulator->letFail("SimConnect_RequestDataOnSimObject");
    addLive(FlightPhase::flying);
    objectAdded(liveExists());
    EXPECT_THAT(log.lines(), ElementsAre("SimConnect request StaticCG fails", "SimConnect request error"));
    EXPECT_TRUE(simFailed);
    EXPECT_EQ(gf_exitReason(), ExitReason::simConnectError);
    EXPECT_EQ(gf_restartDelaySeconds(), 9);
    EXPECT_THAT(pendingActivations, SizeIs(1));
}

TEST_F(ObjectLife, withoutASessionNothingIsAskedAndNothingFails) {
    simHandle = nullptr;
    addLive(FlightPhase::flying);
    objectAdded(liveExists());
    EXPECT_THAT(calls(), IsEmpty());
    EXPECT_FALSE(simFailed);
    EXPECT_FALSE(gStopRun);
}

TEST_F(ObjectLife, onceARequestHasFailedNothingIsAskedAnyMore) {
    simFailed = true;
    LiveAircraft& aircraft = addLive(FlightPhase::flying);
    aircraft.origin = "LSZH";
    aircraft.destination = "EGLL";
    objectAdded(liveExists());
    EXPECT_THAT(calls(), IsEmpty());
    EXPECT_THAT(pendingActivations, SizeIs(1));
}

TEST_F(ObjectLife, anAircraftInTheAirIsNoGroundObject) {
    LiveAircraft& aircraft = addLive(FlightPhase::flying);
    aircraft.dAlt = 0.25;
    objectAdded(liveExists());
    EXPECT_EQ(aircraft.onGround, 0);
    EXPECT_EQ(aircraft.dAlt, 0.25);
}

TEST_F(ObjectLife, anAircraftOnTheGroundIsDrivenThere) {
    LiveAircraft& aircraft = addLive(FlightPhase::taxi);
    aircraft.dAlt = 0.25;
    aircraft.groundSlots = 77;
    gWeekSlot = packedWeekSlot({3, 20});
    objectAdded(liveExists());
    EXPECT_EQ(aircraft.onGround, 1);
    EXPECT_EQ(aircraft.dAlt, 0);
    EXPECT_EQ(aircraft.groundSlots, 1);
    EXPECT_EQ(aircraft.parkedSince, std::pair(0, 0)) << "it does not park";
}

TEST_F(ObjectLife, aParkedAircraftIsStampedWithDayAndHalfHour) {
    LiveAircraft& aircraft = addLive(FlightPhase::parked);
    aircraft.groundSlots = 77;
    gWeekSlot = packedWeekSlot({3, 20});
    objectAdded(liveExists());
    EXPECT_EQ(aircraft.parkedSince, std::pair(3, 20));
    EXPECT_EQ(aircraft.onGround, 1);
    EXPECT_EQ(aircraft.groundSlots, 1);
}

TEST_F(ObjectLife, aParkedAircraftTakesTheStandOfAnActiveStatic) {
    addLive(FlightPhase::parked).standId = 12;
    const std::pair<std::int32_t, LifeState> statics[] = {
        {12, LifeState::active}, {13, LifeState::active}, {12, LifeState::adding2sim}};
    for (const auto& [stand, state] : statics) {
        AircraftRecord& parked = addStatic(static_cast<std::uint32_t>(staticTable.size() + 1));
        parked.standId = stand;
        parked.lifeState = state;
        parked.objectId = 50 + parked.hexid;
    }
    objectAdded(liveExists());
    EXPECT_EQ(staticTable[0].lifeState, LifeState::removingfromsim);
    EXPECT_EQ(staticTable[1].lifeState, LifeState::active) << "another stand";
    EXPECT_EQ(staticTable[2].lifeState, LifeState::adding2sim) << "not active";
    EXPECT_EQ(staticTable[2].removeWhenAdded, 0);
    EXPECT_THAT(removalQueue, ElementsAre(51));
}

TEST_F(ObjectLife, anAircraftThatOnlyPassesAStandRemovesNobody) {
    addLive(FlightPhase::taxi).standId = 12;
    AircraftRecord& parked = addStatic();
    parked.standId = 12;
    parked.lifeState = LifeState::active;
    objectAdded(liveExists());
    EXPECT_EQ(parked.lifeState, LifeState::active);
}

TEST_F(ObjectLife, aParkedAircraftWithoutStandRemovesNobody) {
    addLive(FlightPhase::parked);
    AircraftRecord& parked = addStatic();
    parked.lifeState = LifeState::active;
    objectAdded(liveExists());
    EXPECT_EQ(parked.lifeState, LifeState::active);
}

TEST_F(ObjectLife, anEmptyStreamIsALogLineAndTheObjectStillBecomesActiveToBeRemovedThen) {
    LiveAircraft& aircraft = addLive(FlightPhase::taxi);
    aircraft.stream.clear();
    activate(liveExists());
    EXPECT_THAT(log.lines(), ElementsAre("objectAdded empty sz?", "activateLive empty sz?"));
    EXPECT_THAT(events(), IsEmpty());
    EXPECT_EQ(aircraft.lifeState, LifeState::active);
}

// Flight plans

class FlightPlanOfAnObject : public ObjectLife {
protected:
    FlightPlanOfAnObject() {
        gf_createFlightPlanFolder();
        LiveAircraft& aircraft = addLive(FlightPhase::flying);
        aircraft.origin = "LSZH";
        aircraft.destination = "EGLL";
    }

    fs::path file = platform::roamingAppDataFolder() / "Tarnwing_P3D" / "orig_dest" / "4919860.pln";
};

TEST_F(FlightPlanOfAnObject, isWrittenAndAttachedBeforeTheStaticDataIsAskedFor) {
    objectAdded(liveExists());
    EXPECT_TRUE(fs::exists(file));
    EXPECT_THAT(calls(), ElementsAre(fmt::format("SimConnect_AISetAircraftFlightPlan(40, '{}', 110)",
                                                 platform::utf8FromPath(file)),
                                     "SimConnect_RequestDataOnSimObject(102, 405, 40, 1, 0, 0, 0, 0)"));
    EXPECT_EQ(liveTable[0].hasFlightPlan, 1);
}

TEST_F(FlightPlanOfAnObject, needsBothAirports) {
    liveTable[0].destination.clear();
    objectAdded(liveExists());
    EXPECT_FALSE(fs::exists(file));
    EXPECT_THAT(calls("SimConnect_AISetAircraftFlightPlan"), IsEmpty());
    EXPECT_EQ(liveTable[0].hasFlightPlan, 0);
    EXPECT_THAT(log.lines(), IsEmpty());
}

TEST_F(FlightPlanOfAnObject, thatCannotBeWrittenIsNotAttached) {
    fs::create_directory(file);
    objectAdded(liveExists());
    EXPECT_THAT(calls("SimConnect_AISetAircraftFlightPlan"), IsEmpty());
    EXPECT_EQ(liveTable[0].hasFlightPlan, 0);
    EXPECT_THAT(pendingActivations, SizeIs(1));
    fs::remove(file);
}

TEST_F(FlightPlanOfAnObject, thatTheSimulatorDoesNotTakeIsALogLineAndNoMore) {
    simulator->letFail("SimConnect_AISetAircraftFlightPlan");
    liveTable[0].hasFlightPlan = 1;
    objectAdded(liveExists());
    EXPECT_THAT(log.lines(), ElementsAre("SWR12 creating a flight plan failed"));
    EXPECT_EQ(liveTable[0].hasFlightPlan, 0);
    EXPECT_FALSE(fs::exists(file));
    EXPECT_FALSE(simFailed);
    EXPECT_THAT(pendingActivations, SizeIs(1));
}

TEST_F(FlightPlanOfAnObject, isNotSentOnceARequestHasFailedOrWithoutASession) {
    simFailed = true;
    objectAdded(liveExists());
    EXPECT_THAT(calls(), IsEmpty());
    EXPECT_THAT(log.lines(), IsEmpty());
    simFailed = false;
    simHandle = nullptr;
    liveTable[0].lifeState = LifeState::adding2sim;
    objectAdded(liveExists());
    EXPECT_THAT(calls(), IsEmpty());
    EXPECT_THAT(log.lines(), IsEmpty());
}

TEST_F(FlightPlanOfAnObject, goesAlsoWhenTheSimulatorRefusesItsAircraft) {
    objectAdded(liveExists());
    ASSERT_TRUE(fs::exists(file));
    creationRefused(refusalOf(liveHexid));
    EXPECT_FALSE(fs::exists(file));
}

TEST_F(ObjectLife, anObjectOfARecordThatWaitsForNoneIsRemoved) {
    for (const LifeState state :
         {LifeState::buffer, LifeState::active, LifeState::removingfromsim, LifeState::liveryrespawn}) {
        LiveAircraft& aircraft = addLive(FlightPhase::flying);
        aircraft.lifeState = state;
        aircraft.objectId = 39;
        objectAdded(liveExists());
        EXPECT_EQ(liveTable[0].objectId, 39U) << printedName(state);
        EXPECT_THAT(removalQueue, ElementsAre(object)) << printedName(state);
        EXPECT_THAT(pendingActivations, IsEmpty());
        removalQueue.clear();
        liveTable.clear();
    }
}

TEST_F(ObjectLife, aRemovalThatStillWaitsIsForgottenWhenTheObjectIsGone) {
    removalQueue.push_back(object);
    removalQueue.push_back(41);
    objectRemoved(removalOf(object));
    EXPECT_THAT(removalQueue, ElementsAre(41U));
}

TEST_F(FlightPlanOfAnObject, goesWithTheObject) {
    objectAdded(liveExists());
    objectRemoved(removalOf(object));
    EXPECT_FALSE(fs::exists(file));
    EXPECT_THAT(liveTable, IsEmpty());
}

TEST_F(FlightPlanOfAnObject, thatCannotBeDeletedIsALogLineAndTheRecordGoes) {
    liveTable[0].objectId = object;
    liveTable[0].hasFlightPlan = 1;
    writeFile(file / "inside", "x");
    objectRemoved(removalOf(object));
    ASSERT_THAT(log.lines(), SizeIs(1));
    EXPECT_EQ(log.lines()[0].find("gf_removeFlightPlan: "), 0U);
    EXPECT_THAT(liveTable, IsEmpty());
    fs::remove_all(file);
}

/// An aircraft that was with the simulator and is to be made anew, back in the buffer.
class FlightPlanOfARespawn : public FlightPlanOfAnObject {
protected:
    FlightPlanOfARespawn() {
        objectAdded(liveExists());
        liveTable[0].lifeState = LifeState::liveryrespawn;
        objectRemoved(removalOf(object));
    }
};

TEST_F(FlightPlanOfARespawn, waitsForTheNewObject) {
    ASSERT_THAT(liveTable, SizeIs(1));
    EXPECT_TRUE(fs::exists(file));
    eraseDroppedLive();
    ASSERT_THAT(liveTable, SizeIs(1));
    EXPECT_TRUE(fs::exists(file));
}

TEST_F(FlightPlanOfARespawn, goesWithARespawnThatIsDropped) {
    for (std::uint8_t AircraftRecord::*mark : {&AircraftRecord::dropRecord, &AircraftRecord::dropRecordQueued}) {
        liveTable[0].*mark = 1;
        const LiveAircraft again = liveTable[0];
        eraseDroppedLive();
        EXPECT_FALSE(fs::exists(file));
        EXPECT_THAT(liveTable, IsEmpty());
        liveTable.push_back(again);
        liveTable[0].dropRecord = 0;
        writeFile(file, "of another time");
    }
}

TEST_F(FlightPlanOfARespawn, goesWhenTheNewObjectHasNone) {
    liveTable[0].lifeState = LifeState::adding2sim;
    liveTable[0].destination.clear();
    objectAdded(liveExists(41));
    EXPECT_FALSE(fs::exists(file));
    EXPECT_EQ(liveTable[0].hasFlightPlan, 0);
}

TEST_F(FlightPlanOfAnObject, thatWasNotAttachedIsLeftAloneWhenItsRecordIsDropped) {
    liveTable[0].dropRecord = 1;
    writeFile(file, "of somebody else");
    eraseDroppedLive();
    EXPECT_TRUE(fs::exists(file));
    EXPECT_THAT(liveTable, IsEmpty());
}

TEST_F(FlightPlanOfAnObject, thatWasNotAttachedIsLeftAlone) {
    liveTable[0].objectId = object;
    writeFile(file, "of somebody else");
    objectRemoved(removalOf(object));
    EXPECT_TRUE(fs::exists(file));
}

// Activation

TEST_F(ObjectLife, anObjectBecomesActiveTwoSecondsAfterItCameIntoBeing) {
    LiveAircraft& aircraft = addLive(FlightPhase::flying);
    objectAdded(liveExists());
    step(slotsToActivation);
    EXPECT_EQ(aircraft.lifeState, LifeState::adding2sim);
    step(1);
    EXPECT_EQ(aircraft.lifeState, LifeState::active);
    EXPECT_THAT(pendingActivations, IsEmpty());
}

TEST_F(ObjectLife, allLightsAreSwitchedOverAfterFiftySlotsAndAfterAHundred) {
    addLive(FlightPhase::flying);
    objectAdded(liveExists());
    std::vector<int> slots;
    for (int slot = 1; slot <= slotsToActivation; ++slot) {
        step(1);
        if (!eventQueue.empty()) {
            EXPECT_THAT(events(), ElementsAre("40 214 0"));
            slots.push_back(slot);
        }
        eventQueue.clear();
    }
    EXPECT_THAT(slots, ElementsAre(50, 100));
}

TEST_F(ObjectLife, anAircraftInTheAirGetsEnginesSpoilersAndLightsButKeepsThrottleAndFlaps) {
    LiveAircraft& aircraft = addLive(FlightPhase::flying);
    aircraft.alt = 20000;
    activate(liveExists(object, 18000));
    EXPECT_THAT(events(), ElementsAre("40 221 0", "40 219 0", "40 208 1", "40 207 1", "40 211 0", "40 209 0",
                                      "40 210 1", "40 213 0", "40 212 1"));
    EXPECT_EQ(aircraft.throttleIndex, noThrottleIndex);
    EXPECT_EQ(aircraft.flapsIndex, initialFlapsIndex);
}

TEST_F(ObjectLife, aTaxiingAircraftGetsEnginesLightsIdleThrottleAndFlaps) {
    addLive(FlightPhase::taxi);
    activate(liveExists());
    EXPECT_THAT(events(), ElementsAre("40 219 0", "40 221 0", "40 208 1", "40 207 1", "40 211 0", "40 209 1",
                                      "40 210 0", "40 213 1", "40 212 1", "40 223 0", "40 218 3072"));
}

TEST_F(ObjectLife, aParkedAircraftStandsWithEnginesOff) {
    NAV_LIGHTS_WHILE_PARKED.value = false;
    addLive(FlightPhase::parked);
    activate(liveExists());
    EXPECT_THAT(events(), ElementsAre("40 219 0", "40 222 0", "40 208 0", "40 207 0", "40 211 0", "40 209 0",
                                      "40 210 0", "40 213 1", "40 212 1", "40 223 0", "40 218 0"));
}

TEST_F(ObjectLife, aRotorcraftOnTheGroundTurnsItsRotorAtFullThrottle) {
    addLive(FlightPhase::taxi).category = AircraftCategory::Rotorcraft;
    activate(liveExists());
    EXPECT_THAT(events(), Contains("40 223 16383"));
    EXPECT_THAT(events(), Not(Contains(testing::HasSubstr(" 218 ")))) << "no flaps";
    EXPECT_THAT(events(), Not(Contains(testing::HasSubstr(" 219 ")))) << "no spoilers";
}

TEST_F(ObjectLife, aStaticAircraftBecomesActiveWithTheLightsOfAStandAndNothingElse) {
    RANDOM.value = false;
    NAV_LIGHTS_WHILE_PARKED.value = true;
    AircraftRecord& parked = addStatic();
    staticObjectAdded(staticExists());
    step(slotsToActivation);
    EXPECT_THAT(events(), IsEmpty()) << "its lights are not switched over";
    EXPECT_EQ(parked.lifeState, LifeState::adding2sim);
    step(1);
    EXPECT_EQ(parked.lifeState, LifeState::active);
    EXPECT_EQ(parked.objectId, object);
    EXPECT_THAT(events(),
                ElementsAre("40 208 1", "40 207 0", "40 211 0", "40 209 0", "40 210 0", "40 213 1", "40 212 1"));
    EXPECT_THAT(pendingActivations, IsEmpty());
    EXPECT_THAT(calls(), IsEmpty());
}

TEST_F(ObjectLife, aRemovalAskedAfterTheRequestLeftTheQueueIsDoneAtActivation) {
    LiveAircraft& aircraft = addLive(FlightPhase::flying);
    liveCreateQueue.emplace_back().hexid = liveHexid;
    stepObjectQueues(0);
    removeAircraftFromSim(aircraft);
    EXPECT_EQ(aircraft.removeWhenAdded, 1);

    objectAdded(liveExists());
    step(slotsToActivation);
    EXPECT_THAT(removalQueue, IsEmpty());
    EXPECT_EQ(aircraft.lifeState, LifeState::adding2sim);

    step(1);
    EXPECT_EQ(aircraft.lifeState, LifeState::removingfromsim);
    EXPECT_EQ(aircraft.removeWhenAdded, 0);
    EXPECT_THAT(removalQueue, ElementsAre(object));
}

TEST_F(ObjectLife, theSameHoldsForAStaticAircraft) {
    AircraftRecord& parked = addStatic();
    removeAircraftFromSim(parked);
    activate(staticExists());
    EXPECT_EQ(parked.lifeState, LifeState::removingfromsim);
    EXPECT_EQ(parked.removeWhenAdded, 0);
    EXPECT_THAT(removalQueue, ElementsAre(object));
}

TEST_F(ObjectLife, aRecordThatDoesNotWaitForItsObjectIsNotActivated) {
    LiveAircraft& aircraft = addLive(FlightPhase::flying);
    objectAdded(liveExists());
    aircraft.lifeState = LifeState::liveryrespawn;
    step(slotsToActivation);
    eventQueue.clear();
    step(1);
    EXPECT_EQ(aircraft.lifeState, LifeState::liveryrespawn);
    EXPECT_THAT(events(), IsEmpty());
    EXPECT_THAT(pendingActivations, IsEmpty());
    EXPECT_THAT(removalQueue, IsEmpty()) << "the object has its record";
}

TEST_F(ObjectLife, aRecordThatHasAnotherObjectIsNotActivatedAndTheFirstObjectIsRemoved) {
    LiveAircraft& aircraft = addLive(FlightPhase::flying);
    objectAdded(liveExists(40));
    step(1);
    objectAdded(liveExists(41));
    step(slotsToActivation);
    EXPECT_EQ(aircraft.lifeState, LifeState::adding2sim);
    EXPECT_THAT(removalQueue, ElementsAre(40));
    step(1);
    EXPECT_EQ(aircraft.lifeState, LifeState::active);
    EXPECT_EQ(aircraft.objectId, 41U);
}

TEST_F(ObjectLife, anObjectWhoseRecordIsGoneIsRemoved) {
    addLive(FlightPhase::flying);
    addStatic();
    objectAdded(liveExists(40));
    staticObjectAdded(staticExists(41));
    liveTable.clear();
    staticTable.clear();
    step(slotsToActivation + 1);
    EXPECT_THAT(removalQueue, ElementsAre(40, 41));
    EXPECT_THAT(pendingActivations, IsEmpty());
}

TEST_F(ObjectLife, entriesThatAreDoneLeaveTheOthersTheirCount) {
    addLive(FlightPhase::flying);
    addStatic();
    objectAdded(liveExists(40));
    step(100);
    staticObjectAdded(staticExists(41));
    step(slotsToActivation + 1 - 100);
    ASSERT_THAT(pendingActivations, SizeIs(1));
    EXPECT_EQ(pendingActivations[0].objectId, 41U);
    EXPECT_EQ(pendingActivations[0].counter, slotsToActivation + 1 - 100);
}

// Removal

TEST_F(ObjectLife, theRecordGoesWithItsObjectAndTheLastOneTakesItsPlace) {
    addActiveLive(0x4B1111, 40);
    addActiveLive(0x4B2222, 41);
    addActiveLive(0x4B3333, 42);
    objectRemoved(removalOf(40));
    ASSERT_THAT(liveTable, SizeIs(2));
    EXPECT_EQ(liveTable[0].hexid, 0x4B3333U);
    EXPECT_EQ(liveTable[1].hexid, 0x4B2222U);
}

TEST_F(ObjectLife, aStaticRecordGoesWithItsObjectToo) {
    addActiveLive(0x4B1111, 39);
    for (std::uint32_t i = 1; i <= 3; ++i) {
        addStatic(i).objectId = 39 + i;
    }
    objectRemoved(removalOf(40));
    ASSERT_THAT(staticTable, SizeIs(2));
    EXPECT_EQ(staticTable[0].hexid, 3U);
    EXPECT_EQ(staticTable[1].hexid, 2U);
    EXPECT_THAT(liveTable, SizeIs(1));
}

TEST_F(ObjectLife, inALiveryRespawnTheRecordStaysAndIsAsNew) {
    LiveAircraft& aircraft = addActiveLive(liveHexid, object);
    aircraft.lifeState = LifeState::liveryrespawn;
    aircraft.throttleIndex = 2;
    aircraft.flapsIndex = 1;
    objectRemoved(removalOf(object));
    ASSERT_THAT(liveTable, SizeIs(1));
    EXPECT_EQ(aircraft.lifeState, LifeState::buffer);
    EXPECT_EQ(aircraft.throttleIndex, 5);
    EXPECT_EQ(aircraft.flapsIndex, 4);
    EXPECT_EQ(aircraft.objectId, 0U);
}

TEST_F(ObjectLife, anAircraftRemovedDuringItsRespawnDoesNotComeBack) {
    LiveAircraft& aircraft = addActiveLive(liveHexid, object);
    aircraft.lifeState = LifeState::liveryrespawn;
    removeAircraftFromSim(aircraft);
    objectRemoved(removalOf(object));
    EXPECT_THAT(liveTable, IsEmpty());
}

TEST_F(ObjectLife, theRemovalOfAnUnknownObjectChangesNothing) {
    addActiveLive(liveHexid, object);
    addStatic().objectId = 41;
    objectRemoved(removalOf(99));
    EXPECT_THAT(liveTable, SizeIs(1));
    EXPECT_THAT(staticTable, SizeIs(1));
}

TEST_F(ObjectLife, theRemovalOfObjectZeroTakesNoRecordThatHasNone) {
    addLive(FlightPhase::flying);
    addStatic();
    objectRemoved(removalOf(0));
    EXPECT_THAT(liveTable, SizeIs(1));
    EXPECT_THAT(staticTable, SizeIs(1));
}

TEST_F(ObjectLife, anObjectThatGoesBeforeItIsActiveIsForgotten) {
    addLive(FlightPhase::flying);
    addStatic();
    objectAdded(liveExists(40));
    staticObjectAdded(staticExists(41));
    objectRemoved(removalOf(40));
    objectRemoved(removalOf(41));
    step(slotsToActivation + 1);
    EXPECT_THAT(liveTable, IsEmpty());
    EXPECT_THAT(staticTable, IsEmpty());
    EXPECT_THAT(pendingActivations, IsEmpty());
    EXPECT_THAT(removalQueue, IsEmpty()) << "there is nothing left to remove";
}

// Static data

TEST_F(ObjectLife, staticDataReachesTheLiveAircraft) {
    LiveAircraft& aircraft = addActiveLive(liveHexid, object);
    staticDataArrived(staticDataOf(object, 11.5, -0.01));
    EXPECT_EQ(aircraft.cgHeight, 11.5);
    EXPECT_EQ(aircraft.groundPitch, -0.01);
}

TEST_F(ObjectLife, staticDataOutOfBoundsIsIgnoredOrReplaced) {
    LiveAircraft& aircraft = addActiveLive(liveHexid, object);
    staticDataArrived(staticDataOf(object, 0.5, 3 * std::numbers::pi / 180));
    EXPECT_EQ(aircraft.cgHeight, 0);
    EXPECT_EQ(aircraft.groundPitch, 0.012217304763960306);
}

TEST_F(ObjectLife, staticDataForNoObjectOfOursChangesNothing) {
    LiveAircraft& aircraft = addLive(FlightPhase::flying);
    staticDataArrived(staticDataOf(99, 11.5, -0.01));
    staticDataArrived(staticDataOf(0, 11.5, -0.01));
    EXPECT_EQ(aircraft.cgHeight, 0);
}

// Refusal

TEST_F(ObjectLife, aRefusedLiveAircraftGoesAndItsTitleIsNoted) {
    LiveAircraft& aircraft = addLive(FlightPhase::flying);
    aircraft.liveryTitle = "FSX A320 Swiss";
    aircraft.model = "A320";
    aircraft.airline = "SWR";
    addActiveLive(0x4B3333, 42);
    creationRefused(refusalOf(liveHexid));
    EXPECT_EQ(shownMessage(), "SWR12 'FSX A320 Swiss' could not be created by your Sim!");
    EXPECT_THAT(FailedTitles, ElementsAre("FSX A320 Swiss"));
    EXPECT_THAT(NoCreateList, ElementsAre("A320 SWR"));
    ASSERT_THAT(liveTable, SizeIs(1));
    EXPECT_EQ(liveTable[0].hexid, 0x4B3333U);
}

TEST_F(ObjectLife, aRefusedStaticAircraftGoesAndItsTitleIsNoted) {
    addStatic().liveryTitle = "FSX A320 Swiss";
    addStatic(8);
    creationRefused(refusalOf(staticHexid));
    EXPECT_THAT(FailedTitles, ElementsAre("FSX A320 Swiss"));
    ASSERT_THAT(staticTable, SizeIs(1));
    EXPECT_EQ(staticTable[0].hexid, 8U);
}

TEST_F(ObjectLife, aHexidAbove10000IsLiveAndOneUpToItStatic) {
    addLive(FlightPhase::flying, 10000);
    addStatic(10001);
    creationRefused(refusalOf(10000));
    creationRefused(refusalOf(10001));
    EXPECT_THAT(liveTable, SizeIs(1));
    EXPECT_THAT(staticTable, SizeIs(1));
    EXPECT_THAT(FailedTitles, IsEmpty());
}

TEST_F(ObjectLife, duringAnExitARefusedRecordGoesWithoutAWordAndItsTitleIsNoted) {
    addLive(FlightPhase::flying).liveryTitle = "FSX A320 Swiss";
    gf_stopRun(ExitReason::newFlight, 0);
    creationRefused(refusalOf(liveHexid));
    EXPECT_THAT(liveTable, IsEmpty());
    EXPECT_THAT(FailedTitles, ElementsAre("FSX A320 Swiss"));
    EXPECT_EQ(shownMessage(), "");
}

TEST_F(ObjectLife, anAircraftThatFoundNoRoomGoesAndItsTitleIsAsGoodAsBefore) {
    addLive(FlightPhase::flying).liveryTitle = "FSX A320 Swiss";
    addStatic().liveryTitle = "FSX A320 Swiss";
    creationHadNoRoom({0, liveHexid, 0, EngineMessageKind::tooManyObjects, 0, 0});
    creationHadNoRoom({0, staticHexid, 0, EngineMessageKind::tooManyObjects, 0, 0});
    EXPECT_THAT(liveTable, IsEmpty());
    EXPECT_THAT(staticTable, IsEmpty());
    EXPECT_THAT(FailedTitles, IsEmpty());
    EXPECT_THAT(log.lines(), Contains(EndsWith(" goes: the simulator holds too many objects")));
}

TEST_F(ObjectLife, twentyRefusedLiveriesEndTheProgramWithError81) {
    std::vector<std::string> titles;
    for (int i = 0; i < 20; ++i) {
        titles.push_back(fmt::format("Livery {}", i));
    }
    const auto refuse = [&](std::size_t i) {
        addLive(FlightPhase::flying).liveryTitle = titles[i];
        creationRefused(refusalOf(liveHexid));
    };
    for (std::size_t i = 0; i < 19; ++i) {
        EXPECT_NO_THROW(refuse(i));
        EXPECT_THAT(liveTable, IsEmpty());
    }
    try {
        refuse(19);
        FAIL() << "no error";
    } catch (const kvd::UserErrorException& error) {
        EXPECT_EQ(error.code(), 81);
    }
}

// With the frame on its own thread

TEST_F(ObjectLifeThreads, objectsComeAndGoWhileFramesAreFlushed) {
    constexpr std::uint32_t objects = 60;
    std::atomic<bool> engineDone{false};
    std::thread frames([&] {
        while (!engineDone) {
            flushFrame();
        }
    });
    for (std::uint32_t i = 0; i < objects; ++i) {
        LiveAircraft& aircraft = addLive(FlightPhase::taxi, liveHexid + i);
        liveCreateQueue.emplace_back().hexid = aircraft.hexid;
    }
    // What waits for a late frame goes with the slots after it.
    for (std::int32_t slot = 0; slot < 7000 || !liveCreateQueue.empty() || !removalQueue.empty(); ++slot) {
        const std::lock_guard inbox(inboxLock);
        if (slot % 50 == 25 && slot / 50 < static_cast<std::int32_t>(objects)) {
            EngineMessage message = liveExists(100 + static_cast<std::uint32_t>(slot) / 50);
            message.id = liveHexid + static_cast<std::uint32_t>(slot) / 50;
            objectAdded(message);
        }
        stepPendingActivations();
        for (LiveAircraft& aircraft : liveTable) {
            if (aircraft.lifeState == LifeState::active) {
                appendPosition(aircraft);
            }
            if (slot > 5000 && aircraft.lifeState == LifeState::active) {
                removeAircraftFromSim(aircraft);
            }
        }
        swapPositions();
        stepObjectQueues(slot);
    }
    engineDone = true;
    frames.join();
    flushFrame();
    EXPECT_THAT(simulator->calls("SimConnect_AICreateNonATCAircraft"), SizeIs(objects));
    EXPECT_THAT(simulator->calls("SimConnect_AIRemoveObject"), SizeIs(objects));
    EXPECT_THAT(simulator->calls("SimConnect_RequestDataOnSimObject"), SizeIs(objects));
    EXPECT_THAT(sentList, SizeIs(objects));
    for (const SentCreation& creation : sentList) {
        EXPECT_NE(creation.packetId, 0U);
    }
}

} // namespace
