// A session from its opening to its end, and what the simulator tells of the user.
#include "sim/session.h"

#include <algorithm>
#include <array>

#include "core/exit_reason.h"
#include "core/geography.h"
#include "core/parameters.h"
#include "core/run_flags.h"
#include "engine/aircraft_tables.h"
#include "sim/sim_ids.h"
#include "sim/simulator_link.h"
#include "sim/stand_requests.h"
#include "sim/user_state.h"
#include "tests/rig/session/session_run.h"
#include "tests/support/eventually.h"
#include "window/window_state.h"

using ::testing::Contains;
using ::testing::Each;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Not;

namespace {

class SessionThreads : public SessionRun {
protected:
    static rig::Scene simulatorNamed(const std::string& name) {
        rig::Scene scene = airportScene();
        scene.simulator.name = name;
        return scene;
    }

    /// The simulator answers, and the session says no.
    void isRefused(rig::Scene scene) {
        startSimulator(std::move(scene));
        startSimClient();
        ASSERT_TRUE(pumpUntil([] { return !shownError().empty(); }));
        EXPECT_TRUE(pumpUntil([] { return !gWindowState.simConnected; })) << "the session ends by itself";
    }

    static bool stopsForNewFlight() {
        return gf_isStopping() && gf_exitReason() == ExitReason::newFlight && gf_restartDelaySeconds() == 30;
    }
};

// --- Opening ---------------------------------------------------------------------------------------------------------

TEST_P(SessionThreads, theSimulatorIsConnectedShownAndRuns) {
    connect();
    EXPECT_EQ(simLampText().simulator, "Lockheed Martin Prepar3D v5 (5.4.9.28482)");
    EXPECT_TRUE(log.contains("Lockheed Martin Prepar3D v5 (5.4.9.28482) connected"));
    EXPECT_TRUE(gWindowState.simConnected);
    EXPECT_TRUE(gWindowState.simFlightRunning);
}

TEST_P(SessionThreads, theSimulatorTakesEveryDeclaration) {
    connectAndKnowUser();
    ASSERT_TRUE(settle());
    for (const rig::TraceEvent& event : simulator().events()) {
        EXPECT_NE(event.kind, rig::TraceEventKind::exception) << event.value;
    }
}

TEST_P(SessionThreads, aSimulatorThatComesLaterIsWaitedFor) {
    startSimClient();
    ASSERT_TRUE(eventually([this] { return log.contains("Waiting for Prepar3Dv5 ..."); }));
    startSimulator();
    EXPECT_TRUE(pumpUntil([] { return simRunning.load(); }));
    EXPECT_FALSE(gf_isStopping());
}

TEST_P(SessionThreads, kittyHawkStopsWithError78AndNoOtherAction) {
    isRefused(simulatorNamed("KittyHawk"));
    EXPECT_THAT(shownError(), HasSubstr("KittyHawk, (MSFS) not being P3D connects ... ?"));
    EXPECT_FALSE(gf_isStopping());
    EXPECT_FALSE(simRunning);
    EXPECT_FALSE(simFailed);
    EXPECT_EQ(simLampText().simulator, "");
    EXPECT_FALSE(takeInstallPathRequest());
}

TEST_P(SessionThreads, sunRiseIsRefusedLikeKittyHawk) {
    isRefused(simulatorNamed("SunRise"));
    EXPECT_THAT(shownError(), HasSubstr("SunRise, (MSFS) not being P3D connects ... ?"));
}

TEST_P(SessionThreads, version5IsAcceptedWhenItIsWantedThoughThePathIsOfVersion6) {
    SIM_INSTALL_PATH.setValue("C:\\Prepar3D v6\\");
    P3D_VERSION.value = 5;
    connect();
    EXPECT_EQ(shownError(), "");
}

TEST_P(SessionThreads, version5IsRefusedWhenVersion6IsWantedAndThePathSaysSo) {
    SIM_INSTALL_PATH.setValue("C:\\Prepar3D v6\\");
    P3D_VERSION.value = 6;
    isRefused(airportScene());
    EXPECT_THAT(shownError(), HasSubstr("wrong P3D version 'Lockheed Martin Prepar3D v5' connects ... ?)"));
    EXPECT_TRUE(takeInstallPathRequest());
}

// --- The user --------------------------------------------------------------------------------------------------------

TEST_P(SessionThreads, theUsersTitleModelSpanAndCategoryArrive) {
    connectAndKnowUser();
    EXPECT_EQ(simLampText().userTitle, "Boeing 737-800");
    EXPECT_EQ(userCategory.load(), AircraftCategory::Large);
    EXPECT_NEAR(userHalfSpan * metersPerNm, 17.9, 0.01);
    EXPECT_THAT(log.lines(), Contains("SimConnect: User aircraft title: Boeing 737-800"));
    EXPECT_THAT(log.lines(), Contains("model raw: B738"));
    EXPECT_THAT(log.lines(),
                Contains("SimConnect: User aircraft model: B738, half wing span: 17.9 meter, category: Large"));
}

TEST_P(SessionThreads, aLongTitleArrivesCutAt48Characters) {
    rig::Scene scene = airportScene();
    scene.user.type.title = std::string(40, 'a') + std::string(300, 'b');
    connectAndKnowUser(std::move(scene));
    EXPECT_EQ(simLampText().userTitle, std::string(40, 'a') + std::string(8, 'b'));
}

TEST_P(SessionThreads, theModelOfAnAddOnIsDeducedFromItsTitle) {
    rig::Scene scene = airportScene();
    scene.user.type.title = "Aerosoft A321 professional";
    scene.user.type.model = "AIRBUS A321-231";
    connectAndKnowUser(std::move(scene));
    EXPECT_THAT(log.lines(), Contains("SimConnect: User aircraft model deduced from title: A321"));
    EXPECT_EQ(userCategory.load(), AircraftCategory::Large);
    EXPECT_TRUE(halfSpanKnown);
}

TEST_P(SessionThreads, anEmptyModelIsError71) {
    rig::Scene scene = airportScene();
    scene.user.type.model = "";
    connect(std::move(scene));
    requestUserIdentity();
    ASSERT_TRUE(pumpUntil([] { return !shownError().empty(); }));
    EXPECT_THAT(shownError(), HasSubstr("atc_model= in [General] section of your aircraft.cfg is empty or missing"));
}

TEST_P(SessionThreads, theUsersPositionAndTimeArrive) {
    rig::Scene scene = airportScene();
    scene.user.headingDegrees = 90;
    connectAndKnowUser(std::move(scene));
    const UserState user = requestUserPosition();
    EXPECT_NEAR(user.lat, 52.3086, 1e-9);
    EXPECT_NEAR(user.lon, 4.7639, 1e-9);
    EXPECT_NEAR(user.heading, 90 * radiansPerDegree, 1e-9);
    EXPECT_NEAR(user.alt, airportFeet + 10, 1e-6);
    EXPECT_NEAR(user.altAboveGround, 10, 1e-6);
    EXPECT_EQ(user.zuluYear, 2026);
    EXPECT_EQ(user.zuluDayOfYear, 152);
    EXPECT_GE(user.zuluSeconds, 12 * 3600);
    EXPECT_LT(user.zuluSeconds, 13 * 3600);
    EXPECT_EQ(userObjectId.load(), rig::userObjectId);
    EXPECT_TRUE(userOnGround);
}

TEST_P(SessionThreads, aUserBelowTheGroundIsAtNoHeightAboveIt) {
    rig::Scene scene = airportScene();
    scene.user.type.cgHeightFeet = -5;
    connectAndKnowUser(std::move(scene));
    EXPECT_EQ(userStateNow().alt, airportFeet - 5);
    EXPECT_EQ(userStateNow().altAboveGround, 0);
}

TEST_P(SessionThreads, anAnswerAboutTheGroundBeforeAnyPositionIsAPulseAndNothingElse) {
    connect();
    requestUserGroundEachSecond();
    ASSERT_TRUE(pumpUntil([] { return secondPulse.load(); }));
    EXPECT_FALSE(userOnGroundKnown);
    requestUserPosition();
    EXPECT_TRUE(pumpUntil([] { return userOnGroundKnown.load(); }));
}

TEST_P(SessionThreads, thePulseComesOnceInEverySecondOfTheSimulator) {
    connectAndKnowUser();
    ASSERT_TRUE(settle());
    const auto nextPulse = [this] { return pumpUntil([] { return secondPulse.exchange(false); }); };
    const auto simulated = [this] { return simulator().with([](rig::World& w) { return w.simulatedSeconds(); }); };
    const auto threePulsesTake = [&] {
        // One may be under way already, and one that has come has waited for who knows how long.
        EXPECT_TRUE(nextPulse() && nextPulse());
        const double begin = simulated();
        EXPECT_TRUE(nextPulse() && nextPulse() && nextPulse());
        return simulated() - begin;
    };
    // Where a thread of a busy machine comes late a pulse does, but not in most of the series.
    constexpr int series = 5;
    std::array<double, series> seconds{};
    std::generate(seconds.begin(), seconds.end(), threePulsesTake);
    std::sort(seconds.begin(), seconds.end());
    EXPECT_NEAR(seconds[series / 2], 3, 0.9) << testing::PrintToString(seconds);
}

TEST_P(SessionThreads, aJumpOf10AndAHalfMilesIsANewFlight) {
    connectAndKnowUser();
    simulator().play(rig::JumpAct{10.5, 45});
    ASSERT_TRUE(settle());
    EXPECT_TRUE(stopsForNewFlight());
    EXPECT_THAT(log.lines(), Contains("Teleport"));
}

TEST_P(SessionThreads, aJumpOf9AndAHalfMilesIsNone) {
    connectAndKnowUser();
    simulator().play(rig::JumpAct{9.5, 45});
    ASSERT_TRUE(settle());
    EXPECT_FALSE(gf_isStopping());
    EXPECT_NEAR(userStateNow().lat, 52.42, 0.01);
}

// --- What happens to the flight --------------------------------------------------------------------------------------

TEST_P(SessionThreads, aLoadedFlightIsANewOneAndTheStandIsLookedUp) {
    connectAndKnowUser();
    simulator().play(rig::LoadFlightAct{"C:\\flights\\evening.fxml"});
    ASSERT_TRUE(pumpUntil(gf_isStopping));
    EXPECT_TRUE(stopsForNewFlight());
    EXPECT_THAT(log.errors(), Contains("==> SimConnect: New file event"));
    EXPECT_TRUE(takeClosestStandRequest());
}

TEST_P(SessionThreads, aFlightThatIsLoadedBeforeTheUserIsKnownLooksUpNoStand) {
    connect();
    // Its answer comes behind all that the session declares at its begin, the loading of flights among it.
    requestUserIdentity();
    ASSERT_TRUE(pumpUntil([] { return halfSpanKnown.load(); }));
    simulator().play(rig::LoadFlightAct{"evening.fxml"});
    ASSERT_TRUE(pumpUntil(gf_isStopping));
    EXPECT_FALSE(takeClosestStandRequest());
}

TEST_P(SessionThreads, aChangedPositionIsANewFlight) {
    connectAndKnowUser();
    simulator().play(rig::PositionChangedAct{});
    ASSERT_TRUE(pumpUntil(gf_isStopping));
    EXPECT_TRUE(stopsForNewFlight());
    EXPECT_THAT(log.errors(), Contains("==> User ac position changed"));
}

TEST_P(SessionThreads, aPausedFlightRunsNotAndGoesOn) {
    connectAndKnowUser();
    simulator().play(rig::PauseAct{});
    ASSERT_TRUE(pumpUntil([] { return !simRunning; }));
    EXPECT_FALSE(gWindowState.simFlightRunning);
    EXPECT_TRUE(gWindowState.simConnected);
    secondPulse = false;
    pumpTurns(100);
    EXPECT_FALSE(secondPulse) << "a paused simulator has no seconds";
    simulator().play(rig::ResumeAct{});
    ASSERT_TRUE(pumpUntil([] { return simRunning.load(); }));
    EXPECT_TRUE(gWindowState.simFlightRunning);
    EXPECT_TRUE(pumpUntil([] { return secondPulse.load(); }));
    EXPECT_FALSE(gf_isStopping());
}

TEST_P(SessionThreads, aSessionThatOpensInAPauseIsToldSo) {
    startSimulator();
    simulator().play(rig::PauseAct{});
    startSimClient();
    ASSERT_TRUE(pumpUntil([] { return simLampText().simulator != ""; }));
    pumpTurns(20);
    EXPECT_FALSE(simRunning);
    simulator().play(rig::ResumeAct{});
    EXPECT_TRUE(pumpUntil([] { return simRunning.load(); }));
}

TEST_P(SessionThreads, aQuitEndsTheRunBecauseTheSimulatorWasClosed) {
    connectAndKnowUser();
    simulator().play(rig::QuitAct{});
    ASSERT_TRUE(pumpUntil(gf_isStopping));
    EXPECT_EQ(gf_exitReason(), ExitReason::simulatorClosed);
    EXPECT_EQ(gf_restartDelaySeconds(), 0);
    EXPECT_TRUE(pumpUntil([] { return !gWindowState.simConnected; })) << "the session ends by itself";
    endSession();
    EXPECT_FALSE(simRunning);
    EXPECT_FALSE(gWindowState.simFlightRunning);
    EXPECT_THAT(log.lines(),
                Contains(HasSubstr("Flight Simulator no longer connected, Tarnwing_P3D will stop ...")).Times(1));
    EXPECT_THAT(log.lines(), Contains("SimConnect closed ok"));
}

TEST_P(SessionThreads, aSessionThatIsStoppedLeavesTheSimulator) {
    connectAndKnowUser();
    activeAircraft(400001, "KLM1", Where::inTheAir);
    endSession();
    EXPECT_THAT(log.lines(), Contains("SimConnect closed ok"));
    EXPECT_FALSE(gWindowState.simConnected);
    EXPECT_FALSE(gf_isStopping());
    EXPECT_TRUE(pumpUntil([this] { return aircraftInWorld() == 0; })) << "its aircraft go with it";
    EXPECT_TRUE(simulator().with([](rig::World& world) { return world.clients().empty(); }));
}

TEST_P(SessionThreads, aSecondSessionFindsEverythingFresh) {
    connectAndKnowUser();
    looksAround(false);
    wantLive(400001, "KLM1", Where::inTheAir);
    ASSERT_TRUE(pumpUntil([this] { return aircraftInWorld() == 1; }));
    simulator().play(rig::DropConnectionAct{});
    ASSERT_TRUE(pumpUntil(gf_isStopping));
    endRun();
    stopSimulator();
    startSimClient();
    EXPECT_FALSE(simRunning);
    EXPECT_FALSE(simFailed);
    EXPECT_FALSE(userOnGroundKnown);
    EXPECT_FALSE(halfSpanKnown);
    EXPECT_EQ(userObjectId.load(), 0u);
    EXPECT_EQ(userStateNow(), UserState());
    EXPECT_THAT(inbox(), IsEmpty());
    EXPECT_TRUE(sentCreations().empty());
    EXPECT_TRUE(liveTable.empty());
    endSession();

    connectAndKnowUser();
    looksAround(true);
    EXPECT_EQ(activeAircraft(400001, "KLM1", Where::inTheAir), rig::firstAircraftId);
    EXPECT_THAT(log.lines(), Contains("SimConnect: User aircraft title: Boeing 737-800").Times(2));
    EXPECT_FALSE(gf_isStopping());
}

// --- Objects of others -----------------------------------------------------------------------------------------------

class ForeignObjectsThreads : public SessionRun {
protected:
    static rig::ForeignObjectAct object(const std::string& tailNumber, const LatLon& at = nearTheUser) {
        return {airliner, tailNumber, at, 90, std::nullopt};
    }

    /// What the inbox holds of the ground under objects.
    static std::vector<EngineMessage> groundData() {
        std::vector<EngineMessage> messages = inbox();
        std::erase_if(messages, [](const EngineMessage& m) { return m.kind != EngineMessageKind::groundData; });
        return messages;
    }

    bool isAnswered() {
        requestAircraftInRange();
        return settle();
    }
};

TEST_P(ForeignObjectsThreads, anObjectOfAnotherAddOnIsOneLineAndThenForeign) {
    connectAndKnowUser();
    readsInbox(false);
    simulator().play(object("XYZ1"));
    const std::string line = "just spawned, but not by Tarnwing_P3D, oid: 10, callsign 'XYZ1', altaboveGnd:9 ft, "
                             "onground:1, gnd_alt:100 ft";
    ASSERT_TRUE(pumpUntil([&] { return log.contains(line); }));
    ASSERT_TRUE(pumpUntil([] { return groundData().size() >= 2; }));
    EXPECT_THAT(log.lines(), Contains(line).Times(1));
    const EngineMessage message = groundData().back();
    EXPECT_EQ(message.objectId, 10u);
    EXPECT_EQ(message.id, 1u);
    EXPECT_NEAR(message.a, airportFeet, 1e-6);
    EXPECT_NEAR(message.b, airlinerCgFeet, 1e-6);
    EXPECT_THAT(inbox(), Each(::testing::Field(&EngineMessage::kind, EngineMessageKind::groundData)))
        << "nothing else is told of it";
    EXPECT_EQ(aircraftInWorld(), 1u);
}

TEST_P(ForeignObjectsThreads, theGroundUnderALowObjectIsTold) {
    connectAndKnowUser();
    rig::ForeignObjectAct low = object("LOW1");
    low.altFeet = airportFeet + 2499;
    simulator().play(low);
    readsInbox(false);
    ASSERT_TRUE(pumpUntil([] { return !groundData().empty(); }));
    EXPECT_EQ(groundData()[0].id, 0u) << "not on the ground";
    EXPECT_NEAR(groundData()[0].a, airportFeet, 1e-6);
    EXPECT_NEAR(groundData()[0].b, 2499, 1e-6);
}

TEST_P(ForeignObjectsThreads, highMarkedNamelessAndDistantObjectsHaveNoBusinessWithTheGround) {
    connectAndKnowUser();
    rig::ForeignObjectAct high = object("HIGH");
    high.altFeet = airportFeet + 2501;
    simulator().play(high);
    simulator().play(object("MARKED*"));
    simulator().play(object(""));
    simulator().play(object("DISTANT", outOfRange));
    simulator().play(object("PLAIN"));
    readsInbox(false);
    ASSERT_TRUE(pumpUntil([] { return groundData().size() >= 3; }));
    const DWORD plain = rig::firstAircraftId + 4;
    EXPECT_THAT(groundData(), Each(::testing::Field(&EngineMessage::objectId, plain)));
    EXPECT_THAT(log.lines(), Contains(HasSubstr("just spawned")).Times(4)) << "the distant one is not seen";
}

TEST_P(ForeignObjectsThreads, anObjectThatGoesBeforeItIsDescribedIsForgotten) {
    connectAndKnowUser();
    looksAround(false);
    ASSERT_TRUE(settle());
    simulator().play(object("GOES"));
    pumpTurns(rig::framesUntilSeen + 1);
    simulator().atWorld([](rig::World& world) { world.remove(rig::firstAircraftId); });
    ASSERT_TRUE(isAnswered());
    EXPECT_THAT(log.lines(), Not(Contains(HasSubstr("just spawned"))));
    EXPECT_FALSE(gf_isStopping());
}

INSTANTIATE_TEST_SUITE_P(By, SessionThreads, ::testing::ValuesIn(Front::ways()), wayName);
INSTANTIATE_TEST_SUITE_P(By, ForeignObjectsThreads, ::testing::ValuesIn(Front::ways()), wayName);

} // namespace
