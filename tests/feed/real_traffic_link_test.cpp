// tests/feed/real_traffic_link_test.cpp
#include "feed/real_traffic_link.h"

#include <array>
#include <chrono>
#include <fmt/format.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <stdexcept>
#include <thread>

#include "core/exit_reason.h"
#include "core/run_flags.h"
#include "platform/clock.h"
#include "tests/support/eventually.h"
#include "tests/support/log_capture.h"
#include "tests/support/test_client.h"
#include "window/window_state.h"

namespace {

using testing::AnyOf;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::StartsWith;
using namespace std::chrono_literals;

constexpr const char* anyPort = "0";
constexpr const char* versionRequest = "Qs999=version\r\n";
constexpr std::size_t receiveBufferBytes = 16384;

/// What startListening throws, or nothing.
std::string listenErrorAt(const std::string& port) {
    try {
        startListening(port);
    } catch (const std::runtime_error& error) {
        return error.what();
    }
    return "";
}

/// The program's side of the link, listening, in the test's own thread.
class RealTrafficLink : public testing::Test {
protected:
    RealTrafficLink() {
        gf_resetExitReason();
        gf_resetRunFlags();
        resetWindowState();
        startListening(anyPort);
    }

    ~RealTrafficLink() override {
        closeRealTrafficLink();
        resetWindowState();
        gf_resetRunFlags();
        gf_resetExitReason();
    }

    void connect(TestClient& other) { other.connect(listenSocket.boundPort()); }

    void connectClient() {
        connect(client);
        ASSERT_TRUE(waitForClient());
    }

    LogCapture log;
    TestClient client;
};

using RealTrafficLinkThreads = RealTrafficLink;

// Listening

TEST_F(RealTrafficLink, listensWithoutAClient) {
    EXPECT_TRUE(listenSocket.valid());
    EXPECT_FALSE(clientSocket.valid());
    EXPECT_FALSE(clientConnected);
}

TEST_F(RealTrafficLink, listensOnThePortThatTheTextNames) {
    const std::uint16_t port = listenSocket.boundPort();
    closeRealTrafficLink();
    startListening(std::to_string(port));
    EXPECT_EQ(listenSocket.boundPort(), port);
}

TEST_F(RealTrafficLink, aTakenPortIsAnErrorThatNamesIt) {
    platform::StreamSocket occupant;
    ASSERT_EQ(occupant.create(), 0);
    ASSERT_EQ(occupant.bind(platform::BindTo::allAddresses, 0), 0);
    ASSERT_EQ(occupant.listen(), 0);
    const std::uint16_t port = occupant.boundPort();

    EXPECT_EQ(listenErrorAt(std::to_string(port)),
              fmt::format("Bind failed at port {} with error 10048 Address already in use", port));
    EXPECT_FALSE(listenSocket.valid());
}

TEST_F(RealTrafficLink, aTextThatIsNoPortIsAnError) {
    EXPECT_EQ(listenErrorAt("no port"), "getaddrinfo failed with error 10109");
    EXPECT_FALSE(listenSocket.valid());
}

TEST_F(RealTrafficLink, afterAFailureListeningCanBeTriedAgain) {
    EXPECT_NE(listenErrorAt("no port"), "");
    EXPECT_EQ(listenErrorAt(anyPort), "");
    connectClient();
    EXPECT_TRUE(clientConnected);
}

TEST_F(RealTrafficLink, aPortCanBeListenedOnAgainRightAfterTheProgramClosedAConnectionOnIt) {
    const std::uint16_t port = listenSocket.boundPort();
    connectClient();
    closeRealTrafficLink();
    EXPECT_EQ(client.readToTheEnd(), "");
    EXPECT_EQ(listenErrorAt(std::to_string(port)), "");
}

// Waiting

TEST_F(RealTrafficLink, aClientThatConnectsIsTaken) {
    connect(client);
    EXPECT_TRUE(waitForClient());
    EXPECT_TRUE(clientConnected);
    EXPECT_TRUE(clientSocket.valid());
    EXPECT_THAT(log.lines(), IsEmpty());
}

TEST_F(RealTrafficLink, whileAClientIsConnectedNoOtherIsWaitedFor) {
    connectClient();
    TestClient second;
    connect(second);
    EXPECT_FALSE(waitForClient());
    EXPECT_TRUE(sendDataPacket("for the first\r\n"));
    EXPECT_EQ(client.read(15), "for the first\r\n");
}

TEST_F(RealTrafficLink, waitingWithoutASocketToListenOnAnswersFalse) {
    closeRealTrafficLink();
    EXPECT_FALSE(waitForClient());
    EXPECT_FALSE(clientConnected);
}

TEST_F(RealTrafficLink, aConnectionThatRefusesTheNoDelaySettingIsNotTaken) {
    EXPECT_FALSE(takeClient(platform::StreamSocket{}));
    EXPECT_FALSE(clientConnected);
    const std::string begin = "waitForClient interrupted: TCP_NODELAY setsockopt failed with error ";
    // Machines differ in what they call a socket that is none.
    EXPECT_THAT(log.lines(),
                ElementsAre(AnyOf(begin + "10009 Bad file number", begin + "10038 Socket operation on non-socket")));
}

TEST_F(RealTrafficLink, anyStopEndsTheWait) {
    gf_stopRun(ExitReason::newFlight, 0);
    EXPECT_FALSE(waitForClient());
}

TEST_F(RealTrafficLink, theWaitPollsTenTimesASecond) {
    const platform::ManualClock clock(platform::WallTime{});
    const platform::SteadyTime begin = platform::steadyNow();
    int polls = 0;
    EXPECT_FALSE(waitForClient([&polls] {
        if (++polls == 31) {
            gf_userCloses();
        }
    }));
    EXPECT_GE(platform::steadyNow() - begin, 3s);
    EXPECT_LE(platform::steadyNow() - begin, 3100ms);
}

TEST_F(RealTrafficLinkThreads, theCloseButtonEndsTheWaitAtOnce) {
    std::atomic<int> polls{0};
    std::thread user([&polls] {
        eventually([&polls] { return polls > 1; });
        gf_userCloses();
    });
    EXPECT_FALSE(waitForClient([&polls] { ++polls; }));
    user.join();
    EXPECT_LE(polls, 20);
}

TEST_F(RealTrafficLinkThreads, aClientThatComesLateIsTaken) {
    std::atomic<int> polls{0};
    std::thread late([this, &polls] {
        eventually([&polls] { return polls > 1; });
        connect(client);
    });
    EXPECT_TRUE(waitForClient([&polls] { ++polls; }));
    late.join();
    EXPECT_TRUE(clientConnected);
}

// Sending

TEST_F(RealTrafficLink, aTextIsSentWhole) {
    connectClient();
    EXPECT_TRUE(sendDataPacket("Qs123=1666985865000\r\n"));
    EXPECT_EQ(client.read(21), "Qs123=1666985865000\r\n");
}

TEST_F(RealTrafficLink, aClientThatHasClosedIsNoticedAtTheNextSend) {
    connectClient();
    client.close();
    ASSERT_TRUE(eventually([] { return clientSocket.peerHasGone(); }));
    EXPECT_TRUE(clientConnected) << "only a send tells";

    EXPECT_FALSE(sendDataPacket("anybody there?\r\n"));
    EXPECT_FALSE(clientConnected);
    EXPECT_FALSE(clientSocket.valid());
    EXPECT_THAT(log.lines(), ElementsAre("sendDataPacket to RealTraffic failed: 10054 Connection reset by peer",
                                         "RealTraffic client socket closed"));
}

TEST_F(RealTrafficLink, aClientThatResetsTheConnectionWhileItIsSentToIsNoticed) {
    connectClient();
    ASSERT_TRUE(sendDataPacket("unread\r\n"));
    client.closeWithoutReading();
    EXPECT_TRUE(eventually([] { return !sendDataPacket("more\r\n"); }));
    EXPECT_FALSE(clientConnected);
    EXPECT_THAT(log.lines(), ElementsAre(StartsWith("sendDataPacket to RealTraffic failed: 100"),
                                         "RealTraffic client socket closed"));
}

TEST_F(RealTrafficLink, withoutAClientSendingFails) {
    EXPECT_FALSE(sendDataPacket("nobody\r\n"));
}

TEST_F(RealTrafficLink, aClientThatTakesNothingForASecondHasGone) {
    connectClient();
    const std::string more(64 * 1024 * 1024, 'x'); // more than the system keeps for a client that does not read
    const auto begin = std::chrono::steady_clock::now();
    EXPECT_FALSE(sendDataPacket(more));
    EXPECT_GE(std::chrono::steady_clock::now() - begin, 900ms);
    EXPECT_FALSE(clientConnected);
    EXPECT_THAT(log.lines(), ElementsAre("sendDataPacket to RealTraffic failed: 10060 Connection timed out",
                                         "RealTraffic client socket closed"));
}

TEST_F(RealTrafficLink, whileTheRunStopsAFailedSendIsNoNews) {
    connectClient();
    client.close();
    ASSERT_TRUE(eventually([] { return clientSocket.peerHasGone(); }));
    gf_userCloses();
    EXPECT_FALSE(sendDataPacket("goodbye"));
    EXPECT_FALSE(clientConnected);
    EXPECT_THAT(log.lines(), IsEmpty());
}

TEST_F(RealTrafficLink, afterALossTheNextClientIsTaken) {
    connectClient();
    client.close();
    ASSERT_TRUE(eventually([] { return !sendDataPacket("x"); }));
    TestClient next;
    connect(next);
    EXPECT_TRUE(waitForClient());
    EXPECT_TRUE(sendDataPacket("hello\r\n"));
    EXPECT_EQ(next.read(7), "hello\r\n");
}

TEST_F(RealTrafficLink, ofTenThatConnectAtOnceTheFirstIsTheClientAndTheOthersTakeOverInTurn) {
    std::array<TestClient, 10> clients;
    for (TestClient& each : clients) {
        connect(each);
    }
    for (std::size_t i = 0; i < clients.size(); ++i) {
        ASSERT_TRUE(waitForClient()) << i;
        const std::string text = fmt::format("you are number {}\r\n", i);
        ASSERT_TRUE(sendDataPacket(text)) << i;
        EXPECT_EQ(clients[i].read(text.size()), text);
        clients[i].close();
        ASSERT_TRUE(eventually([] { return !sendDataPacket("still there?\r\n"); })) << i;
    }
}

TEST_F(RealTrafficLinkThreads, twentyLossesAndReturns) {
    constexpr int rounds = 20;
    const std::uint16_t port = listenSocket.boundPort();
    std::thread other([port] {
        for (int round = 0; round < rounds; ++round) {
            TestClient visitor;
            visitor.connect(port);
            if (round % 2 == 0) {
                visitor.closeWithoutReading();
            } else {
                visitor.read(5);
            }
        }
    });
    for (int round = 0; round < rounds; ++round) {
        ASSERT_TRUE(waitForClient()) << round;
        EXPECT_TRUE(eventually([] { return !sendDataPacket("state\r\n"); })) << round;
    }
    other.join();
    EXPECT_FALSE(clientConnected);
    EXPECT_EQ(log.lines().size(), 2u * rounds);
}

// Receiving

TEST_F(RealTrafficLink, aReplyIsReceived) {
    connectClient();
    client.send(R"({ "version":"10.0.240","level": 2 })");
    EXPECT_EQ(receive(), R"({ "version":"10.0.240","level": 2 })");
}

TEST_F(RealTrafficLink, theLongestReplyHasOneByteLessThanTheBuffer) {
    connectClient();
    client.send(std::string(receiveBufferBytes - 1, 'x'));
    // All of it is there when the socket has as much to show.
    std::string reply;
    ASSERT_TRUE(eventually([&reply] {
        reply += receive();
        return reply.size() == receiveBufferBytes - 1;
    }));
    EXPECT_THAT(log.lines(), IsEmpty());
}

/// Fills the program's side to the brim before it reads.
void sendAndWait(TestClient& client, std::size_t bytes) {
    client.send(std::string(bytes, 'x'));
    std::vector<char> seen(bytes);
    ASSERT_TRUE(eventually([&] { return clientSocket.waitingBytes() >= bytes; }));
}

TEST_F(RealTrafficLink, aReplyThatFillsTheBufferIsRefused) {
    connectClient();
    sendAndWait(client, receiveBufferBytes);
    EXPECT_EQ(receive(), "");
    EXPECT_THAT(log.lines(), ElementsAre("receive: buffer overrun: 16384"));
}

TEST_F(RealTrafficLink, anOverrunIsNoNewsWhileTheRunStops) {
    connectClient();
    sendAndWait(client, receiveBufferBytes);
    gf_userCloses();
    EXPECT_EQ(receive(), "");
    EXPECT_THAT(log.lines(), IsEmpty());
}

TEST_F(RealTrafficLink, aClientThatSaysNothingIsWaitedForTenSecondsAtMost) {
    connectClient();
    const platform::ManualClock clock(platform::WallTime{});
    const platform::SteadyTime begin = platform::steadyNow();
    EXPECT_EQ(receive(), "");
    EXPECT_GE(platform::steadyNow() - begin, 10s);
    EXPECT_LE(platform::steadyNow() - begin, 10100ms);
    EXPECT_THAT(log.lines(), IsEmpty());
}

TEST_F(RealTrafficLink, aStopEndsTheWaitForTheReply) {
    connectClient();
    gf_userCloses();
    const platform::ManualClock clock(platform::WallTime{});
    const platform::SteadyTime begin = platform::steadyNow();
    EXPECT_EQ(receive(), "");
    EXPECT_EQ(platform::steadyNow(), begin);
}

TEST_F(RealTrafficLink, aClientThatClosesWithoutAReplyGivesAnEmptyOne) {
    connectClient();
    client.close();
    EXPECT_EQ(receive(), "");
    EXPECT_THAT(log.lines(), IsEmpty());
}

TEST_F(RealTrafficLink, aConnectionThatBreaksBeforeTheReplyGivesAnEmptyOne) {
    connectClient();
    ASSERT_TRUE(sendDataPacket(versionRequest));
    client.closeWithoutReading();
    EXPECT_EQ(receive(), "");
    // A system may take the break for a close.
    EXPECT_THAT(log.lines(), AnyOf(ElementsAre("receive: 10054 Connection reset by peer"), IsEmpty()));
}

// The version exchange

TEST_F(RealTrafficLink, theVersionIsAskedForInTheClientsOwnWords) {
    connectClient();
    client.send(R"({"version":"10.0","level":2})");
    exchangeVersions();
    EXPECT_EQ(client.read(15), "Qs999=version\r\n");
    EXPECT_EQ(realTrafficEdition(), "RT prof edition: 10.0");
}

TEST_F(RealTrafficLink, aRequestThatCannotBeSentGetsNoReply) {
    exchangeVersions();
    EXPECT_EQ(shownMessage(), "No RealTraffic version received?");
}

class VersionReply : public RealTrafficLink {
protected:
    VersionReply() {
        gRealTrafficHistoric = true;
        showRealTrafficEdition("of before");
    }
};

TEST_F(VersionReply, ofLevelTwoIsTheProfessionalEdition) {
    gRealTrafficHistoric = false;
    lf_processRTVersion(R"({ "version":"10.0.240","level": 2 })");
    EXPECT_TRUE(gRealTrafficHistoric);
    EXPECT_EQ(realTrafficEdition(), "RT prof edition: 10.0.240");
}

TEST_F(VersionReply, withoutALevelIsTheStandardEdition) {
    lf_processRTVersion(R"({"version":"10.0"})");
    EXPECT_FALSE(gRealTrafficHistoric);
    EXPECT_EQ(realTrafficEdition(), "RT stnd edition: 10.0");
}

TEST_F(VersionReply, ofAnyOtherLevelIsTheStandardEdition) {
    for (const char* level : {"0", "1", "3", "-2", "2.5", "4294967298", "18446744073709551614", "1e300"}) {
        gRealTrafficHistoric = true;
        lf_processRTVersion(fmt::format(R"({{"level":{},"version":"9"}})", level));
        EXPECT_FALSE(gRealTrafficHistoric) << level;
        EXPECT_EQ(realTrafficEdition(), "RT stnd edition: 9") << level;
    }
}

TEST_F(VersionReply, withoutAVersionLeavesItsPlaceEmpty) {
    lf_processRTVersion(R"({"level":2})");
    EXPECT_EQ(realTrafficEdition(), "RT prof edition: ");
    lf_processRTVersion("{}");
    EXPECT_EQ(realTrafficEdition(), "RT stnd edition: ");
}

TEST_F(VersionReply, thatIsEmptyIsSaidAndShown) {
    lf_processRTVersion("");
    EXPECT_FALSE(gRealTrafficHistoric);
    EXPECT_EQ(shownMessage(), "No RealTraffic version received?");
    EXPECT_THAT(log.lines(), ElementsAre("No RealTraffic version received?"));
}

TEST_F(VersionReply, thatIsNoObjectEmptiesTheLine) {
    for (const char* reply : {"[]", "2", "\"10.0\"", "null", "true", R"([{"level":2}])"}) {
        gRealTrafficHistoric = true;
        showRealTrafficEdition("of before");
        lf_processRTVersion(reply);
        EXPECT_FALSE(gRealTrafficHistoric) << reply;
        EXPECT_EQ(realTrafficEdition(), "") << reply;
    }
    EXPECT_THAT(log.lines(), IsEmpty());
}

TEST_F(VersionReply, thatDoesNotParseIsLoggedAndEmptiesTheLine) {
    for (const char* reply : {"hello", R"({"level":2)", R"({"level":2,"version":"10.)", "{\"version\":\"\xFF\"}"}) {
        gRealTrafficHistoric = true;
        showRealTrafficEdition("of before");
        lf_processRTVersion(reply);
        EXPECT_FALSE(gRealTrafficHistoric) << reply;
        EXPECT_EQ(realTrafficEdition(), "") << reply;
        EXPECT_THAT(log.lines().back(), StartsWith("lf_processRTVersion: JSON parse failed: ")) << reply;
    }
    EXPECT_EQ(log.lines().size(), 4u);
}

TEST_F(VersionReply, whoseKeysAreOfAnotherKindDoesNotParseEither) {
    for (const char* reply : {R"({"level":"2"})", R"({"level":null})", R"({"level":2,"version":10})"}) {
        gRealTrafficHistoric = true;
        showRealTrafficEdition("of before");
        lf_processRTVersion(reply);
        EXPECT_FALSE(gRealTrafficHistoric) << reply;
        EXPECT_EQ(realTrafficEdition(), "") << reply;
        EXPECT_THAT(log.lines().back(), StartsWith("lf_processRTVersion: JSON parse failed: ")) << reply;
    }
}

TEST_F(VersionReply, ofManyLinesStaysOneLineInTheWindow) {
    lf_processRTVersion(R"({"version":"10\r\n11"})");
    EXPECT_EQ(realTrafficEdition(), "RT stnd edition: 10??11");
}

// The end

TEST_F(RealTrafficLink, theGoodbyeIsTheLastThatTheClientReads) {
    connectClient();
    sayGoodbye();
    closeRealTrafficLink();
    EXPECT_EQ(client.readToTheEnd(), "exit\r\n");
}

TEST_F(RealTrafficLink, withoutAClientNoGoodbyeIsTried) {
    sayGoodbye();
    EXPECT_THAT(log.lines(), IsEmpty());
}

TEST_F(RealTrafficLink, closingLeavesNothingOpen) {
    connectClient();
    closeRealTrafficLink();
    EXPECT_FALSE(listenSocket.valid());
    EXPECT_FALSE(clientSocket.valid());
    EXPECT_FALSE(clientConnected);
    closeRealTrafficLink();
    EXPECT_FALSE(listenSocket.valid());
}

} // namespace
