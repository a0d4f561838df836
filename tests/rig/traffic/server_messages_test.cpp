// tests/rig/traffic/server_messages_test.cpp
#include "rig/traffic/server_messages.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "feed/real_traffic_steps.h"

namespace rig {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;
using Kind = ServerMessage::Kind;

constexpr const char* goodState = "Qs121=-3e+03;2;3.141593;3e+05;250125;0.785398;-1.570796";

std::vector<Kind> kinds(const std::vector<ServerMessage>& messages) {
    std::vector<Kind> result;
    for (const ServerMessage& message : messages) {
        result.push_back(message.kind);
    }
    return result;
}

TEST(ServerMessage, theKnownOnesAreToldApart) {
    EXPECT_EQ(readServerMessage("Qs999=version").kind, Kind::versionRequest);
    EXPECT_EQ(readServerMessage("exit").kind, Kind::goodbye);
    EXPECT_EQ(readServerMessage("Qs123=1666985865000").kind, Kind::time);
    EXPECT_EQ(readServerMessage("Qs123=1666985865000").milliseconds, 1666985865000);
    EXPECT_EQ(readServerMessage(goodState).kind, Kind::userState);
}

TEST(ServerMessage, aUserStateTellsThePositionInDegrees) {
    const ServerMessage message = readServerMessage(goodState);
    EXPECT_NEAR(message.position.lat, 45, 0.0001);
    EXPECT_NEAR(message.position.lon, -90, 0.0001);
}

TEST(ServerMessage, whatTheProgramWritesPasses) {
    UserState state;
    state.lat = 52.3086;
    state.lon = 4.7639;
    state.alt = 35000;
    state.heading = 6.28;
    state.pitch = -0.05;
    state.groundSpeed = 451.23456;
    const std::string text = userStateText(state);
    EXPECT_EQ(readServerMessage(text.substr(0, text.size() - 2)).kind, Kind::userState);
}

TEST(ServerMessage, aFaultIsNamed) {
    const std::pair<const char*, const char*> faults[] = {
        {"Qs121=0;0;0.000000;0;0;0.000000", "6 fields instead of 7"},
        {"Qs121=0;0;0.000000;0;0;0.000000;0.000000;", "8 fields instead of 7"},
        {"Qs121=x;0;0.000000;0;0;0.000000;0.000000", "pitch is no number"},
        {"Qs121=0;;0.000000;0;0;0.000000;0.000000", "bank is no number"},
        {"Qs121=0;0;0.0000;0;0;0.000000;0.000000", "heading has not six decimals"},
        {"Qs121=0;0;1e-6;0;0;0.000000;0.000000", "heading has not six decimals"},
        {"Qs121=-3000;0;0.000000;0;0;0.000000;0.000000", "pitch has not one digit"},
        {"Qs121=0;2.0;0.000000;0;0;0.000000;0.000000", "bank has not one digit"},
        {"Qs121=0;0;0.000000;35000000;0;0.000000;0.000000", "altitude has not one digit"},
        {"Qs121=0;0;0.000000;0;250125.0;0.000000;0.000000", "speed has not all its digits"},
        {"Qs121=0;0;180.000000;0;0;0.000000;0.000000", "heading is out of range"},
        {"Qs121=0;0;0.000000;nan;0;0.000000;0.000000", "altitude is no number"},
        {"Qs121=0;0;0.000000;0;inf;0.000000;0.000000", "speed is no number"},
        {"Qs121=0;0;0.000000;0;0;52.310000;0.000000", "latitude is out of range"},
        {"Qs121=0;0;0.000000;0;0;0.000000;180.000000", "longitude is out of range"},
        {"Qs123=", "the time is no whole number"},
        {"Qs123=12.5", "the time is no whole number"},
        {"Qs123=0", "the time is not known"},
        {"Qs999=", "unknown"},
        {"", "unknown"},
        {"exit ", "unknown"},
    };
    for (const auto& [text, fault] : faults) {
        const ServerMessage message = readServerMessage(text);
        EXPECT_EQ(message.kind, Kind::malformed) << text;
        EXPECT_EQ(message.fault, fault) << text;
        EXPECT_EQ(message.text, text);
    }
}

TEST(ServerMessages, comeInWhateverPieces) {
    const std::string all = std::string("Qs999=version\r\n") + goodState + "\r\nexit\r\n";
    for (std::size_t piece = 1; piece <= all.size(); ++piece) {
        ServerMessages messages;
        std::vector<Kind> got;
        for (std::size_t at = 0; at < all.size(); at += piece) {
            const std::vector<Kind> now = kinds(messages.take(std::string_view(all).substr(at, piece)));
            got.insert(got.end(), now.begin(), now.end());
        }
        EXPECT_THAT(got, ElementsAre(Kind::versionRequest, Kind::userState, Kind::goodbye)) << piece;
    }
}

TEST(ServerMessages, areCountedByKind) {
    ServerMessages messages;
    messages.take("Qs999=version\r\nQs123=1\r\nQs123=2\r\nhello\r\nexit\r\n");
    messages.take(std::string(goodState) + "\r\n");
    EXPECT_EQ(messages.counts().versionRequests, 1u);
    EXPECT_EQ(messages.counts().times, 2u);
    EXPECT_EQ(messages.counts().malformed, 1u);
    EXPECT_EQ(messages.counts().goodbyes, 1u);
    EXPECT_EQ(messages.counts().userStates, 1u);
}

TEST(ServerMessages, oneWithoutAnEndIsMalformedAndDoesNotPileUp) {
    ServerMessages messages;
    const std::vector<ServerMessage> got = messages.take(std::string(10000, 'x'));
    ASSERT_THAT(got, SizeIs(1));
    EXPECT_EQ(got[0].fault, "without an end");
    EXPECT_THAT(kinds(messages.take("exit\r\n")), ElementsAre(Kind::goodbye));
}

TEST(ServerMessages, aNewConnectionBeginsAfresh) {
    ServerMessages messages;
    EXPECT_THAT(messages.take("Qs12"), IsEmpty());
    messages.forgetRest();
    EXPECT_THAT(kinds(messages.take("exit\r\n")), ElementsAre(Kind::goodbye));
}

} // namespace
} // namespace rig
