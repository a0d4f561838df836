#include "sim/dispatch.h"

#include <cmath>
#include <exception>
#include <random>

#include "core/run_flags.h"
#include "sim/object_data.h"
#include "sim/stand_requests.h"
#include "tests/sim/session_fixture.h"
#include "window/window_state.h"

using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

namespace {

class Dispatch : public SessionTest {
protected:
    static void parkUser() {
        placeUser(atParis());
        dispatchAnswer(requestOnGround, dataOf(std::int64_t{1}));
        takeUserStandRequest();
        takeClosestStandRequest();
    }
};

TEST_F(Dispatch, theSimulatorRunsWhenItSaysSo) {
    dispatch(eventRecord(eventSim, 1));
    EXPECT_TRUE(simRunning);
    EXPECT_TRUE(gWindowState.simFlightRunning);
    dispatch(eventRecord(eventSim, 0));
    EXPECT_FALSE(simRunning);
    EXPECT_FALSE(gWindowState.simFlightRunning);
}

TEST_F(Dispatch, onlyA1IsRunning) {
    dispatch(eventRecord(eventSim, 2));
    EXPECT_FALSE(simRunning);
}

TEST_F(Dispatch, quitEndsTheFlightAndTheRun) {
    dispatch(eventRecord(eventSim, 1));
    dispatch(quitRecord());
    EXPECT_FALSE(simRunning);
    EXPECT_FALSE(gWindowState.simFlightRunning);
    EXPECT_TRUE(gStopRun);
    EXPECT_EQ(gf_exitReason(), ExitReason::simulatorClosed);
    EXPECT_EQ(gf_restartDelaySeconds(), 0);
}

TEST_F(Dispatch, aChangedPositionIsANewFlight) {
    parkUser();
    dispatch(eventRecord(eventPositionChanged));
    EXPECT_TRUE(stopsForNewFlight());
    EXPECT_THAT(log.errors(), ElementsAre("==> User ac position changed"));
    EXPECT_FALSE(takeClosestStandRequest());
}

TEST_F(Dispatch, aLoadedFlightIsANewFlightAndRefreshesTheStand) {
    parkUser();
    dispatch(eventRecord(eventFlightLoaded));
    EXPECT_TRUE(stopsForNewFlight());
    EXPECT_TRUE(log.contains("SimConnect: flight loaded event"));
    EXPECT_TRUE(takeClosestStandRequest());
}

TEST_F(Dispatch, aFileNameIsANewFlightAndRefreshesTheStand) {
    parkUser();
    dispatch(fileNameRecord());
    EXPECT_TRUE(stopsForNewFlight());
    EXPECT_THAT(log.errors(), ElementsAre("==> SimConnect: New file event"));
    EXPECT_TRUE(takeClosestStandRequest());
}

TEST_F(Dispatch, aNewFlightDuringAnExitLeavesItsReason) {
    gf_stopRun(ExitReason::simConnectError, 9);
    dispatch(eventRecord(eventPositionChanged));
    dispatch(eventRecord(eventFlightLoaded));
    dispatch(fileNameRecord());
    EXPECT_EQ(gf_exitReason(), ExitReason::simConnectError);
}

TEST_F(Dispatch, aNewFlightAfterTheUsersCloseIsNoReason) {
    gUserClosing = true;
    dispatch(eventRecord(eventPositionChanged));
    EXPECT_FALSE(gStopRun);
}

TEST_F(Dispatch, otherEventsAreIgnored) {
    dispatch(eventRecord(eventFrame, 1));
    dispatch(eventRecord(eventGear, 1));
    dispatch(eventRecord(9999, 1));
    EXPECT_FALSE(simRunning);
    EXPECT_FALSE(gStopRun);
    EXPECT_THAT(log.lines(), IsEmpty());
}

TEST_F(Dispatch, anAddedAircraftWaitsForItsDescription) {
    userObjectId = 10;
    dispatch(objectRecord(eventObjectAdded, 11));
    dispatch(objectRecord(eventObjectAdded, 12));
    EXPECT_THAT(addedObjects, ElementsAre(11U, 12U));
    EXPECT_THAT(inbox(), IsEmpty());
}

TEST_F(Dispatch, theUsersAircraftAndThoseBeforeItAreNotWaitedFor) {
    userObjectId = 10;
    dispatch(objectRecord(eventObjectAdded, 10));
    dispatch(objectRecord(eventObjectAdded, 9));
    EXPECT_THAT(addedObjects, IsEmpty());
}

TEST_F(Dispatch, objectsThatAreNoAircraftAreIgnored) {
    for (const SIMCONNECT_SIMOBJECT_TYPE type :
         {SIMCONNECT_SIMOBJECT_TYPE_USER, SIMCONNECT_SIMOBJECT_TYPE_ALL, SIMCONNECT_SIMOBJECT_TYPE_HELICOPTER,
          SIMCONNECT_SIMOBJECT_TYPE_BOAT, SIMCONNECT_SIMOBJECT_TYPE_GROUND}) {
        dispatch(objectRecord(eventObjectAdded, 11, type));
        dispatch(objectRecord(eventObjectRemoved, 11, type));
    }
    EXPECT_THAT(addedObjects, IsEmpty());
    EXPECT_THAT(inbox(), IsEmpty());
}

TEST_F(Dispatch, aRemovedAircraftIsTold) {
    dispatch(objectRecord(eventObjectRemoved, 11));
    EXPECT_THAT(inbox(), ElementsAre(EngineMessage{11, 0, 0, EngineMessageKind::objectRemoved, 0, 0}));
}

TEST_F(Dispatch, anAircraftRemovedBeforeItsDescriptionIsNotWaitedForAnyMore) {
    for (const DWORD objectId : {11U, 12U, 13U}) {
        dispatch(objectRecord(eventObjectAdded, objectId));
    }
    dispatch(objectRecord(eventObjectRemoved, 11));
    EXPECT_THAT(addedObjects, ElementsAre(13U, 12U));
}

TEST_F(Dispatch, aFrameSendsWhatWaits) {
    eventQueue.push_back({11, eventGear, 1});
    dispatch(recordOf(SIMCONNECT_RECV_EVENT_FRAME{}, SIMCONNECT_RECV_ID_EVENT_FRAME));
    EXPECT_THAT(simulator->calls("SimConnect_TransmitClientEvent"), SizeIs(1));
    EXPECT_THAT(log.lines(), IsEmpty());
}

TEST_F(Dispatch, kinds12And16AreIgnored) {
    dispatch(recordOf(SIMCONNECT_RECV_ASSIGNED_OBJECT_ID{}, SIMCONNECT_RECV_ID_ASSIGNED_OBJECT_ID));
    dispatch(recordOf(SIMCONNECT_RECV{}, static_cast<SIMCONNECT_RECV_ID>(16)));
    EXPECT_THAT(log.lines(), IsEmpty());
}

TEST_F(Dispatch, anUnknownKindIsALogLine) {
    for (const DWORD id : {0U, 10U, 11U, 13U, 15U, 17U, 4000000000U}) {
        dispatch(recordOf(SIMCONNECT_RECV{}, static_cast<SIMCONNECT_RECV_ID>(id)));
        EXPECT_TRUE(log.contains("! Unknown Dispatch dwID " + std::to_string(id)));
    }
    EXPECT_THAT(log.lines(), SizeIs(7));
}

TEST_F(Dispatch, aRecordThatIsOneByteShortCostsItself) {
    simRunning = true;
    for (Bytes bytes :
         {exceptionRecord(5), openRecord("KittyHawk"), eventRecord(eventSim, 0), objectRecord(eventObjectRemoved, 11),
          fileNameRecord(), recordOf(SIMCONNECT_RECV_EVENT_FRAME{}, SIMCONNECT_RECV_ID_EVENT_FRAME),
          answerRecord(requestTitle, 1, {}),
          answerRecord(requestInRange, 1, {}, SIMCONNECT_RECV_ID_SIMOBJECT_DATA_BYTYPE)}) {
        bytes.pop_back();
        EXPECT_NO_THROW(dispatch(bytes));
    }
    EXPECT_THAT(
        log.lines(),
        ElementsAre(
            "==> SimConnect: record 1 of 23 bytes is too short", "==> SimConnect: record 2 of 307 bytes is too short",
            "==> SimConnect: record 4 of 23 bytes is too short", "==> SimConnect: record 5 of 27 bytes is too short",
            "==> SimConnect: record 6 of 287 bytes is too short", "==> SimConnect: record 7 of 31 bytes is too short",
            "==> SimConnect: record 8 of 39 bytes is too short", "==> SimConnect: record 9 of 39 bytes is too short"));
    EXPECT_TRUE(simRunning);
    EXPECT_THAT(inbox(), IsEmpty());
    EXPECT_FALSE(gStopRun);
}

TEST_F(Dispatch, aRecordWithoutAHeadCostsItself) {
    for (std::size_t size = 1; size < 12; ++size) {
        dispatch(Bytes(size));
    }
    EXPECT_NO_THROW(dispatchRecord(nullptr, 0));
    EXPECT_THAT(log.errors(), SizeIs(11));
    EXPECT_TRUE(log.contains("==> SimConnect: record of 11 bytes is too short"));
}

TEST_F(Dispatch, aRecordMayBeLongerThanItsKind) {
    dispatch(eventRecord(eventSim, 1) + Bytes(9));
    EXPECT_TRUE(simRunning);
}

TEST_F(Dispatch, randomRecordsOfEveryKindAndLengthDoNoHarm) {
    std::mt19937 random(3);
    for (int i = 0; i < 20000; ++i) {
        Bytes bytes(std::uniform_int_distribution<std::size_t>(12, 150)(random));
        for (std::byte& byte : bytes) {
            byte = static_cast<std::byte>(random());
        }
        const DWORD id = random() % 18;
        const DWORD request = 100 + random() % 12;
        std::memcpy(&bytes[8], &id, sizeof id);
        if (bytes.size() >= 16) {
            std::memcpy(&bytes[12], &request, sizeof request);
        }
        userErrorOf([&] { dispatch(bytes); });
    }
    for (const EngineMessage& message : inbox()) {
        ASSERT_TRUE(std::isfinite(message.a) && std::isfinite(message.b));
    }
}

class DispatchProcedure : public SessionTest {
protected:
    static void run(Bytes bytes, std::exception_ptr& failure) {
        dispatchProcedure(reinterpret_cast<SIMCONNECT_RECV*>(bytes.data()), static_cast<DWORD>(bytes.size()), &failure);
    }
};

TEST_F(DispatchProcedure, keepsTheFirstUserErrorAndLooksAtNothingBehindIt) {
    std::exception_ptr failure;
    EXPECT_NO_THROW(run(openRecord("KittyHawk"), failure));
    EXPECT_NO_THROW(run(exceptionRecord(5), failure));
    EXPECT_NO_THROW(run(eventRecord(eventSim, 1), failure));
    ASSERT_TRUE(failure);
    EXPECT_EQ(userErrorOf([&] { std::rethrow_exception(failure); }).first, 78);
    EXPECT_FALSE(simRunning);
}

TEST_F(DispatchProcedure, actsLikeDispatchWhenNothingFails) {
    std::exception_ptr failure;
    run(eventRecord(eventSim, 1), failure);
    EXPECT_TRUE(simRunning);
    EXPECT_FALSE(failure);
}

} // namespace
