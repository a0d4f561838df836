// tests/real_traffic/real_traffic_steps_test.cpp
#include "feed/real_traffic_steps.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <fmt/format.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <numbers>
#include <stdexcept>
#include <thread>

#include "core/exit_reason.h"
#include "core/parameters.h"
#include "core/run_flags.h"
#include "engine/aircraft_tables.h"
#include "feed/qnh_reader.h"
#include "feed/real_traffic_link.h"
#include "feed/sample_queue.h"
#include "feed/traffic_reader.h"
#include "platform/clock.h"
#include "sim/object_queues.h"
#include "sim/session.h"
#include "sim/sim_queues.h"
#include "sim/simulator_link.h"
#include "tests/recording_simulator/recording_simulator.h"
#include "tests/support/eventually.h"
#include "tests/support/log_capture.h"
#include "tests/support/program_run.h"
#include "tests/support/test_client.h"
#include "window/window_state.h"

namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::EndsWith;
using testing::IsEmpty;
using testing::SizeIs;
using namespace std::chrono_literals;

constexpr const char* anyPort = "0";
constexpr const char* professionalReply = R"({ "version":"10.0","level": 2 })";
constexpr const char* versionRequest = "Qs999=version\r\n";
constexpr const char* waitingText = "Waiting for RealTraffic to connect to Tarnwing_P3D ...";

/// "12:34:56 " and the text.
MATCHER_P(isAtAClockTime, text, "") {
    const std::string line = arg;
    constexpr std::size_t clockLength = 9;
    return line.size() > clockLength && line[2] == ':' && line[5] == ':' && line[8] == ' ' &&
           line.substr(clockLength) == text;
}

/// The run thread is the test's own; the simulator's calls are written down.
class RealTraffic : public testing::Test {
protected:
    RealTraffic() {
        reset();
        simHandle = &handle;
        gRealTrafficHere = true;
        PORT_NUMBER.setValue(anyPort);
        gUserState.lat = 52.31;
        gUserState.lon = 4.76;
    }

    ~RealTraffic() override {
        simHandle = nullptr;
        reset();
    }

    static void reset() {
        closeRealTrafficLink();
        resetProgram();
        resetSession();
        resetUserState();
        resetAircraftTables();
        resetObjectQueues();
        resetSimQueues();
    }

    static void connect(TestClient& other) { other.connect(listenSocket.boundPort()); }

    void connectClient(const std::string& reply = professionalReply) {
        openRealTrafficLink();
        connect(client);
        client.send(reply);
        connectRealTraffic();
        ASSERT_TRUE(clientConnected);
        EXPECT_EQ(client.read(15), versionRequest);
    }

    /// The client closes, and a send has told so.
    void loseClient() {
        client.close();
        ASSERT_TRUE(eventually([] { return clientSocket.peerHasGone(); }));
        sendUserState();
        ASSERT_FALSE(clientConnected);
    }

    /// Waits for the client's return until the user closes, which is by the program's own sleeps.
    static void waitInVain(std::chrono::seconds time) {
        const platform::ManualClock clock(platform::WallTime{});
        const platform::SteadyTime end = platform::steadyNow() + time;
        std::thread user([end] {
            eventually([end] { return platform::steadyNow() >= end; });
            gf_userCloses();
        });
        sendUserState();
        user.join();
    }

    static LiveAircraft& addLive(std::uint32_t hexid, LifeState state, std::uint32_t objectId = 0) {
        LiveAircraft aircraft;
        aircraft.hexid = hexid;
        aircraft.lifeState = state;
        aircraft.objectId = objectId;
        liveTable.push_back(aircraft);
        return liveTable.back();
    }

    LogCapture log;
    RecordingSimulatorScope simulator;
    int handle = 0;
    TestClient client;
};

using RealTrafficThreads = RealTraffic;

// The messages

UserState stateOf(double lat, double lon) {
    UserState state;
    state.lat = lat;
    state.lon = lon;
    return state;
}

TEST(UserStateText, holdsTheFieldsInTheirOrderAndUnits) {
    UserState state = stateOf(45, -90);
    state.pitch = -0.03;
    state.bank = 0.00002;
    state.heading = std::numbers::pi;
    state.alt = 300;
    state.groundSpeed = 250.125;
    EXPECT_EQ(userStateText(state), "Qs121=-3e+03;2;3.141593;3e+05;250125;0.785398;-1.570796\r\n");
}

TEST(UserStateText, ofAnAircraftAtRestIsNothingButZeros) {
    EXPECT_EQ(userStateText(UserState{}), "Qs121=0;0;0.000000;0;0;0.000000;0.000000\r\n");
}

TEST(UserStateText, holdsPitchBankAndAltitudeWithOneDigit) {
    UserState state;
    state.alt = 35000;
    EXPECT_EQ(userStateText(state), "Qs121=0;0;0.000000;4e+07;0;0.000000;0.000000\r\n");
    state.alt = 0.5;
    state.pitch = 0.000015;
    state.bank = -0.00096;
    EXPECT_EQ(userStateText(state), "Qs121=2;-1e+02;0.000000;5e+02;0;0.000000;0.000000\r\n");
}

TEST(UserStateText, holdsTheGroundSpeedWithAllItsDigits) {
    UserState state;
    state.groundSpeed = 123.4567891;
    EXPECT_EQ(userStateText(state), "Qs121=0;0;0.000000;0;123456.7891;0.000000;0.000000\r\n");
}

TEST(UserStateText, holdsARoundGroundSpeedInItsShortestForm) {
    UserState state;
    state.groundSpeed = 200;
    EXPECT_EQ(userStateText(state), "Qs121=0;0;0.000000;0;2e+05;0.000000;0.000000\r\n");
    state.groundSpeed = 210;
    EXPECT_EQ(userStateText(state), "Qs121=0;0;0.000000;0;210000;0.000000;0.000000\r\n");
}

// Opening

TEST_F(RealTraffic, thePortOfTheSettingsIsListenedOn) {
    openRealTrafficLink();
    EXPECT_TRUE(listenSocket.valid());
    EXPECT_FALSE(gWindowState.realTrafficLit);
}

TEST_F(RealTraffic, withAerowinxNoPortIsBoundAtAll) {
    AEROWINX.value = true;
    openRealTrafficLink();
    EXPECT_FALSE(listenSocket.valid());
    EXPECT_TRUE(gWindowState.realTrafficLit);
}

TEST_F(RealTraffic, onAnotherPcNoPortIsBoundHere) {
    gRealTrafficHere = false;
    openRealTrafficLink();
    EXPECT_FALSE(listenSocket.valid());
    EXPECT_TRUE(gWindowState.realTrafficLit);
}

TEST_F(RealTraffic, aTakenPortEndsTheOpeningAndNamesThePort) {
    platform::StreamSocket occupant;
    ASSERT_EQ(occupant.create(), 0);
    ASSERT_EQ(occupant.bind(platform::BindTo::allAddresses, 0), 0);
    ASSERT_EQ(occupant.listen(), 0);
    PORT_NUMBER.setValue(std::to_string(occupant.boundPort()));
    try {
        openRealTrafficLink();
        FAIL() << "no exception";
    } catch (const std::runtime_error& error) {
        EXPECT_EQ(error.what(),
                  fmt::format("Bind failed at port {} with error 10048 Address already in use", occupant.boundPort()));
    }
}

// The first connect

TEST_F(RealTraffic, theFirstConnectAsksForTheVersionAndLightsTheLamp) {
    connectClient();
    EXPECT_TRUE(gWindowState.realTrafficLit);
    EXPECT_EQ(realTrafficEdition(), "RT prof edition: 10.0");
    EXPECT_TRUE(gRealTrafficHistoric);
    EXPECT_FALSE(gBeforeFirstConnect);
    EXPECT_EQ(shownMessage(), "");
    EXPECT_THAT(log.lines(), ElementsAre(waitingText, "RealTraffic connected"));
}

TEST_F(RealTraffic, theFirstConnectResetsTheFeed) {
    gQnh = 990;
    gTrafficReader.lastFeedTime = 7;
    gTrafficReader.stopRequested = true;
    gTrafficReader.datagramCount = 3;
    gWindowState.weatherAlive = false;
    connectClient();
    EXPECT_EQ(gQnh, 1013);
    EXPECT_EQ(gTrafficReader.lastFeedTime, 0);
    EXPECT_FALSE(gTrafficReader.stopRequested);
    EXPECT_EQ(gTrafficReader.datagramCount, 0u);
    EXPECT_TRUE(gWindowState.weatherAlive);
}

TEST_F(RealTraffic, aClientWithoutAVersionIsConnectedAllTheSame) {
    openRealTrafficLink();
    connect(client);
    const platform::ManualClock clock(platform::WallTime{});
    connectRealTraffic();
    EXPECT_TRUE(clientConnected);
    EXPECT_TRUE(gWindowState.realTrafficLit);
    EXPECT_FALSE(gRealTrafficHistoric);
    EXPECT_EQ(realTrafficEdition(), "");
    EXPECT_THAT(log.lines(), ElementsAre(waitingText, "No RealTraffic version received?", "RealTraffic connected"));
}

TEST_F(RealTraffic, aClientWithHalfAReplyIsConnectedAllTheSame) {
    connectClient(R"({ "version":"10.0","lev)");
    EXPECT_TRUE(gWindowState.realTrafficLit);
    EXPECT_FALSE(gRealTrafficHistoric);
    EXPECT_EQ(realTrafficEdition(), "");
}

TEST_F(RealTraffic, aClientWithAReplyThatFillsTheBufferIsConnectedAllTheSame) {
    openRealTrafficLink();
    connect(client);
    client.send(std::string(16384, 'x'));
    connectRealTraffic();
    EXPECT_TRUE(clientConnected);
    EXPECT_TRUE(gWindowState.realTrafficLit);
    EXPECT_FALSE(gRealTrafficHistoric);
    EXPECT_EQ(realTrafficEdition(), "");
    EXPECT_THAT(log.lines(), Contains("RealTraffic connected"));

    sendUserState();
    const std::string text = versionRequest + userStateText(gUserState);
    EXPECT_EQ(client.read(text.size()), text);
}

TEST_F(RealTraffic, ofTenThatConnectAtOnceOneIsTheClientAndTheNextOnesReplaceIt) {
    openRealTrafficLink();
    std::array<TestClient, 10> clients;
    for (TestClient& each : clients) {
        connect(each);
        each.send(professionalReply);
    }
    connectRealTraffic();
    for (TestClient& each : clients) {
        ASSERT_TRUE(clientConnected);
        EXPECT_TRUE(gWindowState.realTrafficLit);
        sendUserState();
        const std::string first = &each == &clients[0] ? versionRequest : "";
        EXPECT_EQ(each.read(first.size() + 6), first + "Qs121=");
        each.closeWithoutReading();
        ASSERT_TRUE(eventually([] {
            sendUserState();
            return !gWindowState.realTrafficLit;
        }));
        if (&each != &clients.back()) {
            sendUserState();
        }
    }
    EXPECT_FALSE(clientConnected);
    EXPECT_EQ(realTrafficEdition(), "RT prof edition: 10.0");
}

TEST_F(RealTraffic, aClientThatComesAndGoesAtOnceIsWaitedForAgain) {
    openRealTrafficLink();
    connect(client);
    client.close();
    connectRealTraffic();
    EXPECT_FALSE(gWindowState.realTrafficLit && !clientConnected) << "a lit lamp without a client";
    eventually([] {
        if (clientConnected) {
            sendUserState();
        }
        return !clientConnected;
    });
    EXPECT_THAT(shownMessage(), EndsWith("RealTraffic gone? Wait for RealTraffic to re-connect ..."));
    EXPECT_FALSE(gWindowState.realTrafficLit);

    TestClient next;
    connect(next);
    sendUserState();
    EXPECT_TRUE(gWindowState.realTrafficLit);
}

TEST_F(RealTraffic, aStopEndsTheFirstWaitAndClearsTheMessage) {
    openRealTrafficLink();
    gf_userCloses();
    connectRealTraffic();
    EXPECT_FALSE(clientConnected);
    EXPECT_EQ(shownMessage(), "");
    EXPECT_FALSE(gWindowState.realTrafficLit);
    EXPECT_THAT(log.lines(), ElementsAre(waitingText));
}

TEST_F(RealTraffic, aRunWithoutALinkHasPassedItsConnectToo) {
    for (const bool aerowinx : {true, false}) {
        gBeforeFirstConnect = true;
        AEROWINX.value = aerowinx;
        gRealTrafficHere = aerowinx;
        connectRealTraffic();
        EXPECT_FALSE(gBeforeFirstConnect);
    }
    EXPECT_THAT(log.lines(), IsEmpty());
}

// Each second

TEST_F(RealTraffic, theClientIsToldTheUsersState) {
    connectClient();
    sendUserState();
    const std::string text = userStateText(gUserState);
    EXPECT_EQ(client.read(text.size()), text);
}

TEST_F(RealTraffic, aPositionThatIsNoneYetIsNotTold) {
    connectClient();
    gUserState = stateOf(0.0001, -0.0001);
    sendUserState();
    gUserState = stateOf(0.00011, 0);
    sendUserState();
    const std::string text = userStateText(gUserState);
    EXPECT_EQ(client.read(text.size()), text) << "the first one that is a position";
}

TEST_F(RealTraffic, withAerowinxTheUsersStateIsNotTold) {
    connectClient();
    AEROWINX.value = true;
    sendUserState();
    closeRealTrafficLink();
    EXPECT_EQ(client.readToTheEnd(), "");
}

TEST_F(RealTraffic, onAnotherPcNobodyIsToldAndNobodyIsWaitedFor) {
    gRealTrafficHere = false;
    sendUserState();
    EXPECT_FALSE(clientConnected);
    EXPECT_THAT(log.lines(), IsEmpty());
}

TEST_F(RealTraffic, theSimulatorsTimeIsToldInMilliseconds) {
    connectClient();
    simSeconds = 1666985865;
    sendSimTime();
    EXPECT_EQ(client.read(21), "Qs123=1666985865000\r\n");
}

TEST_F(RealTraffic, theSimulatorsTimeIsNotToldBeforeItIsKnown) {
    connectClient();
    sendSimTime();
    simSeconds = 1;
    sendSimTime();
    EXPECT_EQ(client.read(12), "Qs123=1000\r\n");
}

TEST_F(RealTraffic, theSimulatorsTimeIsNotToldToAClientThatShowsThePresent) {
    connectClient(R"({"level":1})");
    simSeconds = 1666985865;
    sendSimTime();
    closeRealTrafficLink();
    EXPECT_EQ(client.readToTheEnd(), "");
}

TEST_F(RealTraffic, withoutAClientTheSimulatorsTimeIsNobodysNews) {
    gRealTrafficHistoric = true;
    simSeconds = 1666985865;
    sendSimTime();
    EXPECT_THAT(log.lines(), IsEmpty());
}

// Loss

TEST_F(RealTraffic, aClientThatDisconnectsIsNoticedAtTheNextSend) {
    connectClient();
    client.close();
    ASSERT_TRUE(eventually([] { return clientSocket.peerHasGone(); }));
    EXPECT_TRUE(gWindowState.realTrafficLit);

    sendUserState();

    EXPECT_FALSE(gWindowState.realTrafficLit);
    EXPECT_THAT(shownMessage(), isAtAClockTime("RealTraffic gone? Wait for RealTraffic to re-connect ..."));
    EXPECT_THAT(log.lines(), ElementsAre(waitingText, "RealTraffic connected",
                                         "sendDataPacket to RealTraffic failed: 10054 Connection reset by peer",
                                         "RealTraffic client socket closed",
                                         isAtAClockTime("RealTraffic gone? Wait for RealTraffic to re-connect ...")));
}

TEST_F(RealTraffic, aClientThatDisconnectsBehindLastWordsIsNoticedAtTheNextSend) {
    connectClient();
    client.send("good night");
    client.close();
    ASSERT_TRUE(eventually([] { return clientSocket.waitingBytes() == 10; }));
    sendUserState();
    EXPECT_FALSE(clientConnected);
    EXPECT_FALSE(gWindowState.realTrafficLit);
}

TEST_F(RealTraffic, aClientThatTalksIsToldWhereTheUserIsAllTheSame) {
    connectClient();
    client.send(std::string(100000, 'x'));
    const std::string text = userStateText(gUserState);
    for (int i = 0; i < 5; ++i) {
        sendUserState();
        EXPECT_EQ(client.read(text.size()), text);
    }
}

TEST_F(RealTraffic, aLossThatTheSimulatorsTimeNoticesIsALossToo) {
    connectClient();
    addLive(20001, LifeState::buffer);
    simSeconds = 1666985865;
    client.close();
    ASSERT_TRUE(eventually([] { return clientSocket.peerHasGone(); }));
    sendSimTime();
    EXPECT_FALSE(gWindowState.realTrafficLit);
    EXPECT_THAT(liveTable, IsEmpty());
}

TEST_F(RealTraffic, aLossResetsTheFeed) {
    connectClient();
    gQnh = 990;
    gTrafficReader.lastFeedTime = 7;
    loseClient();
    EXPECT_EQ(gQnh, 1013);
    EXPECT_EQ(gTrafficReader.lastFeedTime, 0);
}

TEST_F(RealTraffic, aLossTakesAllLiveAircraftOut) {
    connectClient();
    addLive(20001, LifeState::buffer);
    addLive(20002, LifeState::active, 71);
    addLive(20003, LifeState::adding2sim); // its request is with the simulator
    addLive(20004, LifeState::adding2sim); // its request waits
    CreateRequest waiting;
    waiting.hexid = 20004;
    liveCreateQueue.push_back(waiting);
    addLive(20005, LifeState::removingfromsim, 72);

    loseClient();

    ASSERT_THAT(liveTable, SizeIs(3));
    EXPECT_EQ(liveTable[0].hexid, 20002u);
    EXPECT_EQ(liveTable[0].lifeState, LifeState::removingfromsim);
    EXPECT_EQ(liveTable[1].hexid, 20003u);
    EXPECT_EQ(liveTable[1].removeWhenAdded, 1);
    EXPECT_EQ(liveTable[2].hexid, 20005u);
    EXPECT_THAT(removalQueue, ElementsAre(71u));
    EXPECT_THAT(liveCreateQueue, IsEmpty());
}

TEST_F(RealTraffic, aClosingUserLeavesTheAircraftToTheClosingDown) {
    connectClient();
    addLive(20001, LifeState::active, 71);
    gf_userCloses();
    loseClient();
    EXPECT_EQ(liveTable[0].lifeState, LifeState::active);
    EXPECT_THAT(removalQueue, IsEmpty());
    EXPECT_FALSE(gWindowState.realTrafficLit);
}

// Return

TEST_F(RealTraffic, aClientThatReturnsLightsTheLampAndIsNotAskedForItsVersion) {
    connectClient();
    loseClient();
    TestClient returned;
    connect(returned);

    sendUserState();

    EXPECT_TRUE(clientConnected);
    EXPECT_TRUE(gWindowState.realTrafficLit);
    EXPECT_EQ(realTrafficEdition(), "RT prof edition: 10.0");
    EXPECT_EQ(shownMessage(), "");
    EXPECT_THAT(log.lines().back(), isAtAClockTime("RealTraffic re-connected"));

    sendUserState();
    const std::string text = userStateText(gUserState);
    EXPECT_EQ(returned.read(text.size()), text) << "the first that it hears";
}

TEST_F(RealTraffic, onceTheRunEndsNobodyIsWaitedFor) {
    connectClient();
    loseClient();
    // The reason alone: the flags would end the wait by themselves.
    gf_setSystemError();
    TestClient returned;
    connect(returned);
    sendUserState();
    EXPECT_FALSE(clientConnected);
}

TEST_F(RealTraffic, whileItWaitsOneObjectLeavesTheSimulatorWithEachPoll) {
    connectClient();
    loseClient();
    removalQueue = {71, 72, 73, 74};
    waitInVain(2s);
    EXPECT_THAT(removeRequests, ElementsAre(71u, 72u, 73u, 74u));
    EXPECT_THAT(removalQueue, IsEmpty());
}

TEST_F(RealTraffic, whileItWaitsWhatTheFeedBringsIsLost) {
    connectClient();
    loseClient();
    gLiveSampleQueue.push(FeedRecord{});
    waitInVain(1s);
    EXPECT_TRUE(gLiveSampleQueue.empty());
}

TEST_F(RealTraffic, whileItWaitsTheUsersPositionIsAskedForOnceASecond) {
    connectClient();
    loseClient();
    simulator->forgetCalls();
    const platform::ManualClock clock(platform::WallTime{});
    const platform::SteadyTime begin = platform::steadyNow();
    std::thread user([begin] {
        eventually([begin] { return platform::steadyNow() >= begin + 10s; });
        gf_userCloses();
    });
    sendUserState();
    user.join();
    const auto seconds = static_cast<std::size_t>((platform::steadyNow() - begin) / 1s);
    const auto requests = simulator->calls("SimConnect_RequestDataOnSimObject");
    EXPECT_GE(requests.size(), seconds);
    EXPECT_LE(requests.size(), seconds + 1);
    EXPECT_EQ(requests.front(), "SimConnect_RequestDataOnSimObject(109, 403, 0, 1, 0, 0, 0, 0)");
}

TEST_F(RealTraffic, whileItWaitsTheRunsOwnCopyFollowsTheUser) {
    connectClient();
    loseClient();
    setUserState(stateOf(53, 5));
    waitInVain(1s);
    EXPECT_EQ(positionOf(gUserState), (LatLon{53, 5}));
}

TEST_F(RealTraffic, whileItWaitsAPlaceThatIsNoneDoesNotReplaceTheUsers) {
    connectClient();
    loseClient();
    setUserState({});
    waitInVain(1s);
    EXPECT_EQ(positionOf(gUserState), (LatLon{52.31, 4.76}));
}

TEST_F(RealTrafficThreads, theCloseButtonEndsTheWaitForTheReturnAtOnce) {
    connectClient();
    loseClient();
    std::thread user([] { gf_userCloses(); });
    sendUserState();
    user.join();
    EXPECT_FALSE(clientConnected);
    EXPECT_THAT(shownMessage(), EndsWith("Wait for RealTraffic to re-connect ..."));
}

TEST_F(RealTrafficThreads, theCloseButtonEndsTheFirstWaitAtOnce) {
    openRealTrafficLink();
    std::thread user([] {
        eventually([] { return shownMessage() == waitingText; });
        gf_userCloses();
    });
    connectRealTraffic();
    user.join();
    EXPECT_FALSE(clientConnected);
    EXPECT_EQ(shownMessage(), "");
}

TEST_F(RealTrafficThreads, twentyLossesAndReturnsWhileTheUserFlies) {
    constexpr int losses = 20;
    openRealTrafficLink();
    const std::uint16_t port = listenSocket.boundPort();
    std::thread other([port] {
        for (int visit = 0; visit <= losses; ++visit) {
            TestClient visitor;
            visitor.connect(port);
            visitor.send(professionalReply);
            // The last one comes back and is not told anything any more.
            visitor.read(visit == losses ? 0 : 30);
            if (visit < losses && visit % 2 == 0) {
                visitor.closeWithoutReading();
            }
        }
    });
    connectRealTraffic();
    int lost = 0;
    int returned = 0;
    while (lost + returned < 2 * losses) {
        const bool before = clientConnected;
        addLive(30000 + static_cast<std::uint32_t>(lost), LifeState::active, 500);
        sendUserState();
        lost += before && !clientConnected ? 1 : 0;
        returned += !before && clientConnected ? 1 : 0;
        EXPECT_EQ(gWindowState.realTrafficLit, clientConnected);
    }
    other.join();
    EXPECT_EQ(lost, losses);
    EXPECT_EQ(returned, losses);
    EXPECT_TRUE(clientConnected);
    const std::vector<std::string> lines = log.lines();
    EXPECT_EQ(std::count_if(lines.begin(), lines.end(),
                            [](const std::string& line) { return line.ends_with("RealTraffic re-connected"); }),
              losses);
}

} // namespace
