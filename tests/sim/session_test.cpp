#include "sim/session.h"

#include <atomic>
#include <chrono>
#include <stdexcept>
#include <thread>

#include "core/injection_radius.h"
#include "core/run_flags.h"
#include "platform/clock.h"
#include "sim/object_data.h"
#include "sim/stand_requests.h"
#include "tests/sim/session_fixture.h"
#include "tests/support/eventually.h"
#include "window/window_state.h"

using namespace std::chrono_literals;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::SizeIs;

namespace {

class Requests : public SessionTest {};

TEST_F(Requests, theUsersPositionOnce) {
    placeUser(atParis());
    EXPECT_EQ(requestUserPosition(), atParis());
    EXPECT_THAT(simulator->calls(), ElementsAre("SimConnect_RequestDataOnSimObject(109, 403, 0, 1, 0, 0, 0, 0)"));
}

TEST_F(Requests, theUsersTitleAndModelOnce) {
    requestUserIdentity();
    EXPECT_THAT(simulator->calls(), ElementsAre("SimConnect_RequestDataOnSimObject(106, 407, 0, 1, 0, 0, 0, 0)",
                                                "SimConnect_RequestDataOnSimObject(107, 408, 0, 1, 0, 0, 0, 0)"));
}

TEST_F(Requests, groundOrAirEachSecond) {
    requestUserGroundEachSecond();
    EXPECT_THAT(simulator->calls(), ElementsAre("SimConnect_RequestDataOnSimObject(108, 409, 0, 4, 0, 0, 0, 0)"));
}

TEST_F(Requests, aircraftWithinTheInjectionRadiusInMetres) {
    gf_setInjectionRadius(40);
    requestAircraftInRange();
    EXPECT_THAT(simulator->calls(), ElementsAre("SimConnect_RequestDataOnSimObjectType(101, 404, 74080, 2)"));
}

TEST_F(Requests, afterAFailureNothingIsSentButThePositionStands) {
    placeUser(atParis());
    simFailed = true;
    EXPECT_EQ(requestUserPosition(), atParis());
    requestUserIdentity();
    requestUserGroundEachSecond();
    requestAircraftInRange();
    EXPECT_THAT(simulator->calls(), IsEmpty());
    EXPECT_FALSE(gStopRun);
}

TEST_F(Requests, withoutASessionNothingIsSentAndNothingFails) {
    simHandle = nullptr;
    requestUserPosition();
    requestUserIdentity();
    requestUserGroundEachSecond();
    requestAircraftInRange();
    EXPECT_THAT(simulator->calls(), IsEmpty());
    EXPECT_FALSE(simFailed);
    EXPECT_FALSE(gStopRun);
}

TEST_F(Requests, oneThatFailsEndsTheSession) {
    const std::vector<void (*)()> requests{[] { requestUserPosition(); }, requestUserIdentity,
                                           requestUserGroundEachSecond, requestAircraftInRange};
    simulator->letFail("SimConnect_RequestDataOnSimObject");
    simulator->letFail("SimConnect_RequestDataOnSimObjectType");
    for (const auto request : requests) {
        resetSession();
        gf_resetExitReason();
        request();
        EXPECT_TRUE(simFailed);
        EXPECT_EQ(gf_exitReason(), ExitReason::simConnectError);
        EXPECT_EQ(gf_restartDelaySeconds(), 9);
        EXPECT_EQ(shownMessage(), "SimConnect request error");
    }
}

TEST_F(Requests, thoseOfTheEngineSayWhichOneFailed) {
    simulator->letFail("SimConnect_RequestDataOnSimObject");
    requestUserGroundEachSecond();
    EXPECT_TRUE(log.contains("==> SimConnect request ac gnd/air fails"));
    simFailed = false;
    simulator->letFail("SimConnect_RequestDataOnSimObjectType");
    requestAircraftInRange();
    EXPECT_TRUE(log.contains("SimConnect request ac within range fails"));
}

class SimulatorGone : public SessionTest {
protected:
    template <typename Failure>
    static void endOn(const Failure& failure, const std::stop_token& stop = {}) {
        endSessionOn(std::make_exception_ptr(failure), stop);
    }

    static bool runEnds() {
        return gStopRun && gf_exitReason() == ExitReason::simulatorClosed && gf_restartDelaySeconds() == 0;
    }
};

TEST_F(SimulatorGone, endsTheRunAndSaysSo) {
    const platform::ManualClock clock{platform::WallTime(std::chrono::seconds(1666958400 + 3661))};
    simRunning = true;
    simulatorGone();
    EXPECT_FALSE(simRunning);
    EXPECT_TRUE(runEnds());
    EXPECT_THAT(log.lines(), ElementsAre("13:01:01 Flight Simulator no longer connected, Tarnwing_P3D will stop ..."));
}

TEST_F(SimulatorGone, isToldOnce) {
    simulatorGone();
    gf_resetExitReason();
    simRunning = true;
    simulatorGone();
    EXPECT_TRUE(simRunning);
    EXPECT_FALSE(gStopRun);
    EXPECT_THAT(log.lines(), SizeIs(1));
}

TEST_F(SimulatorGone, isToldAgainInTheNextSession) {
    simulatorGone();
    gf_resetExitReason();
    resetSession();
    simulatorGone();
    EXPECT_TRUE(runEnds());
}

TEST_F(SimulatorGone, duringAnExitItsReasonStays) {
    simRunning = true;
    gf_stopRun(ExitReason::newFlight, 30);
    simulatorGone();
    EXPECT_FALSE(simRunning);
    EXPECT_EQ(gf_exitReason(), ExitReason::newFlight);
    EXPECT_THAT(log.lines(), IsEmpty());
}

TEST_F(SimulatorGone, aUserErrorStandsAndTheRunWaitsForTheUser) {
    endOn(kvd::UserErrorException(78, "wrong P3D version"));
    EXPECT_EQ(shownError(), "wrong P3D version");
    EXPECT_FALSE(gStopRun);
}

TEST_F(SimulatorGone, aUserErrorThatBegins791EndsTheRunAfterTenSeconds) {
    const platform::ManualClock clock{platform::WallTime()};
    const auto begin = platform::steadyNow();
    endOn(kvd::UserErrorException(1, "791 has gone"));
    EXPECT_EQ(platform::steadyNow() - begin, 10s);
    EXPECT_EQ(shownError(), "791 has gone");
    EXPECT_TRUE(runEnds());
}

TEST_F(SimulatorGone, a791ElsewhereInTheTextIsNoMark) {
    endOn(kvd::UserErrorException(791, "error 791"));
    EXPECT_FALSE(gStopRun);
}

TEST_F(SimulatorGone, aStopCutsTheTenSeconds) {
    const platform::ManualClock clock{platform::WallTime()};
    const auto begin = platform::steadyNow();
    std::stop_source stop;
    stop.request_stop();
    endOn(kvd::UserErrorException(1, "791 has gone"), stop.get_token());
    EXPECT_EQ(platform::steadyNow(), begin);
}

TEST_F(SimulatorGone, aStandardExceptionShowsItsTextAndEndsTheRun) {
    endOn(std::runtime_error("out of luck"));
    EXPECT_EQ(shownError(), "out of luck");
    EXPECT_TRUE(runEnds());
}

TEST_F(SimulatorGone, anythingElseNamesTheThreadAndEndsTheRun) {
    endOn(42);
    EXPECT_EQ(shownError(), "Exception in SimClient");
    EXPECT_TRUE(runEnds());
}

class SessionReset : public SessionTest {};

TEST_F(SessionReset, leavesNothingOfTheFormerOne) {
    placeUser(atParis());
    dispatchAnswer(requestOnGround, dataOf(std::int64_t{1}));
    dispatch(eventRecord(eventSim, 1));
    dispatch(objectRecord(eventObjectRemoved, 7));
    dispatch(objectRecord(eventObjectAdded, 8));
    queueEvent(1, 2, 3);
    refreshClosestStand();
    simFailed = true;
    resetSession();
    EXPECT_FALSE(simRunning);
    EXPECT_FALSE(simFailed);
    EXPECT_FALSE(secondPulse);
    EXPECT_EQ(userStateNow(), UserState());
    EXPECT_FALSE(userOnGroundKnown);
    EXPECT_THAT(inbox(), IsEmpty());
    EXPECT_THAT(addedObjects, IsEmpty());
    EXPECT_THAT(eventQueue, IsEmpty());
    EXPECT_FALSE(takeUserStandRequest());
    EXPECT_FALSE(takeClosestStandRequest());
    UserState far = atParis();
    far.lat = 10;
    placeUser(far);
    EXPECT_FALSE(gStopRun) << "the last position of the former session is no place to jump from";
}

TEST_F(SessionReset, hasRoomFor256OfEach) {
    resetSession();
    EXPECT_GE(positionFront.capacity(), 256U);
    EXPECT_GE(positionBack.capacity(), 256U);
    EXPECT_GE(createRequests.capacity(), 256U);
    EXPECT_GE(removeRequests.capacity(), 256U);
    EXPECT_GE(sentList.capacity(), 256U);
    EXPECT_GE(engineInbox.capacity(), 256U);
}

class SimClientThreads : public SessionTest {
protected:
    SimClientThreads() {
        simHandle = nullptr;
        gSimulatorVersion = 5;
    }
    ~SimClientThreads() override { end(); }

    static void end() {
        stopSimClient();
        joinSimClient();
    }

    void connect() {
        startSimClient();
        ASSERT_TRUE(eventually([&] {
            return !simulator->calls("SimConnect_SetNotificationGroupPriority").empty() && gWindowState.simConnected;
        }));
    }

    void send(const Bytes& record) {
        simulator->send(record);
        ASSERT_TRUE(eventually([&] { return simulator->isDrained(); }));
    }
};

TEST_F(SimClientThreads, opensDeclaresAndPumps) {
    connect();
    EXPECT_EQ(simulator->calls().front(), "SimConnect_Open('Tarnwing_P3D', null, 0, null, 0)");
    EXPECT_THAT(simulator->calls(), SizeIs(1 + 6 + 33 + 17 + 16 + 1));
    send(eventRecord(eventSim, 1));
    EXPECT_TRUE(simRunning);
}

TEST_F(SimClientThreads, waitsSilentlyForASimulatorThatIsNotThereYet) {
    simulator->letFail("SimConnect_Open");
    startSimClient();
    ASSERT_TRUE(eventually([&] { return simulator->calls("SimConnect_Open").size() >= 3; }));
    EXPECT_EQ(shownMessage(), "Waiting for Prepar3Dv5 ...");
    EXPECT_THAT(log.lines(), ElementsAre("Waiting for Prepar3Dv5 ..."));
    EXPECT_FALSE(gWindowState.simConnected);
    simulator->letFail("SimConnect_Open", false);
    EXPECT_TRUE(eventually([&] { return gWindowState.simConnected.load(); }));
    EXPECT_FALSE(gStopRun);
}

TEST_F(SimClientThreads, aStopClosesTheSession) {
    connect();
    end();
    EXPECT_FALSE(simulator->isOpen());
    EXPECT_EQ(simHandle, nullptr);
    EXPECT_FALSE(gWindowState.simConnected);
    EXPECT_FALSE(simRunning);
    EXPECT_TRUE(log.contains("SimConnect closed ok"));
    EXPECT_FALSE(gStopRun);
}

TEST_F(SimClientThreads, aCloseThatFailsIsALogLine) {
    connect();
    simulator->letFail("SimConnect_Close");
    end();
    EXPECT_TRUE(log.contains("Closing SimConnect failed?!"));
    EXPECT_EQ(simHandle, nullptr);
}

TEST_F(SimClientThreads, aStopEndsTheWaitForTheSimulatorToo) {
    simulator->letFail("SimConnect_Open");
    startSimClient();
    ASSERT_TRUE(eventually([&] { return !simulator->calls("SimConnect_Open").empty(); }));
    const auto begin = std::chrono::steady_clock::now();
    end();
    EXPECT_LT(std::chrono::steady_clock::now() - begin, 1s);
    EXPECT_THAT(simulator->calls("SimConnect_Close"), IsEmpty());
}

TEST_F(SimClientThreads, theEndOfTheRunEndsTheWaitForTheSimulator) {
    simulator->letFail("SimConnect_Open");
    startSimClient();
    ASSERT_TRUE(eventually([&] { return !simulator->calls("SimConnect_Open").empty(); }));
    gf_userCloses();
    joinSimClient();
    EXPECT_THAT(simulator->calls("SimConnect_Open"), Not(IsEmpty()));
}

TEST_F(SimClientThreads, aSimulatorThatGoesEndsTheRun) {
    connect();
    send(eventRecord(eventSim, 1));
    send(quitRecord());
    EXPECT_FALSE(simRunning);
    simulator->letFail("SimConnect_CallDispatch");
    ASSERT_TRUE(eventually([] { return gStopRun.load(); }));
    EXPECT_EQ(gf_exitReason(), ExitReason::simulatorClosed);
    joinSimClient();
    EXPECT_FALSE(gWindowState.simConnected);
    EXPECT_TRUE(log.contains("SimConnect closed ok"));
}

TEST_F(SimClientThreads, recordsFromBeforeTheEndOfTheConnectionStillCount) {
    simulator->send(objectRecord(eventObjectRemoved, 77));
    simulator->letFail("SimConnect_CallDispatch");
    startSimClient();
    joinSimClient();
    EXPECT_THAT(inbox(), ElementsAre(EngineMessage{77, 0, 0, EngineMessageKind::objectRemoved, 0, 0}));
    EXPECT_EQ(gf_exitReason(), ExitReason::simulatorClosed);
}

TEST_F(SimClientThreads, aDeclarationThatFailsEndsTheRunWithARestart) {
    simulator->letFail("SimConnect_MapClientEventToSimEvent");
    startSimClient();
    ASSERT_TRUE(eventually([] { return gStopRun.load(); }));
    EXPECT_EQ(gf_exitReason(), ExitReason::simConnectError);
    EXPECT_TRUE(simFailed);
    end();
}

TEST_F(SimClientThreads, theWrongSimulatorIsLeftAloneAndItsErrorStands) {
    connect();
    simulator->send(openRecord("KittyHawk"));
    joinSimClient();
    EXPECT_EQ(shownError(), "KittyHawk, (MSFS) not being P3D connects ... ?");
    EXPECT_FALSE(simulator->isOpen());
    EXPECT_FALSE(gStopRun);
    EXPECT_FALSE(simRunning);
}

TEST_F(SimClientThreads, anEmptyModelEndsTheFlightWithItsError) {
    connect();
    send(eventRecord(eventSim, 1));
    simulator->send(answerRecord(requestModel, 1, Bytes(32)));
    joinSimClient();
    EXPECT_EQ(shownError(), "atc_model= in [General] section of your aircraft.cfg is empty or missing");
    EXPECT_FALSE(simRunning) << "no simulator is connected any more";
    requestUserPosition();
    EXPECT_FALSE(simFailed) << "what is asked without a session does not take the error from the screen";
}

TEST_F(SimClientThreads, aNewStartEndsTheFormerSessionFirst) {
    connect();
    simulator->forgetCalls();
    connect();
    const std::vector<std::string> calls = simulator->calls();
    EXPECT_EQ(calls[0], "SimConnect_Close()");
    EXPECT_THAT(calls[1], HasSubstr("SimConnect_Open"));
    EXPECT_TRUE(simulator->isOpen());
}

TEST_F(SimClientThreads, theNextSessionRunsAfterAFailedOne) {
    connect();
    simulator->letFail("SimConnect_CallDispatch");
    joinSimClient();
    simulator->letFail("SimConnect_CallDispatch", false);
    gf_resetExitReason();
    simulator->forgetCalls();
    connect();
    send(eventRecord(eventSim, 1));
    EXPECT_TRUE(simRunning);
    EXPECT_FALSE(gStopRun);
}

TEST_F(SimClientThreads, stoppingWithoutASessionIsNoFault) {
    end();
    end();
    EXPECT_THAT(simulator->calls(), IsEmpty());
}

TEST_F(SimClientThreads, theRunAsksWhileTheSessionPumps) {
    connect();
    std::atomic<bool> done{false};
    std::thread run([&] {
        while (!done) {
            gUserState = requestUserPosition();
            requestAircraftInRange();
            queueEvent(70, eventGear, 1);
            takeUserStandRequest();
            simLampText();
            std::this_thread::yield();
        }
    });
    for (int i = 0; i < 300; ++i) {
        UserState state = atParis();
        state.alt = i;
        simulator->send(answerRecord(requestPosition, 1, userPositionData(state)));
        simulator->send(answerRecord(requestOnGround, 1, dataOf(std::int64_t{1})));
        simulator->send(objectRecord(eventObjectAdded, 70));
        simulator->send(inRangeRecord(70, 10, 300, 1, "KLM1"));
        simulator->send(objectRecord(eventObjectRemoved, 70));
    }
    EXPECT_TRUE(eventually([&] { return userStateNow().alt == 299; }));
    done = true;
    run.join();
    EXPECT_TRUE(eventually([&] { return simulator->isDrained(); }));
    EXPECT_FALSE(simFailed);
}

} // namespace
