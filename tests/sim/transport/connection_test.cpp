#include "sim/transport/connection.h"

#include <gtest/gtest.h>

#include "platform/sockets.h"

using platform::AddressFamily;
using platform::StreamConnection;
using platform::StreamListener;

namespace {

class ConnectStream : public ::testing::Test {
protected:
    void SetUp() override { platform::startSocketLibrary(); }
    void TearDown() override { platform::cleanUpSocketLibrary(); }

    ConnectionSettings settingsFor(AddressFamily family) {
        EXPECT_EQ(listener_.listenTcp(family, 0), 0);
        ConnectionSettings settings;
        settings.protocol = family == AddressFamily::ipv4 ? Protocol::ipv4 : Protocol::ipv6;
        settings.port = std::to_string(listener_.port());
        return settings;
    }

    StreamListener listener_;
    StreamConnection stream_;
};

} // namespace

TEST_F(ConnectStream, packetsMayWaitForOthersUnlessNagleIsDisabled) {
    ASSERT_EQ(stream_.createEvents(), 0);
    EXPECT_EQ(connectStream(stream_, settingsFor(AddressFamily::ipv4)), 0);
    EXPECT_FALSE(stream_.nagleDisabled());
}

TEST_F(ConnectStream, disableNagleSendsSmallPacketsAtOnce) {
    ConnectionSettings settings = settingsFor(AddressFamily::ipv4);
    settings.disableNagle = true;
    ASSERT_EQ(stream_.createEvents(), 0);
    EXPECT_EQ(connectStream(stream_, settings), 0);
    EXPECT_TRUE(stream_.nagleDisabled());
}

TEST_F(ConnectStream, aFailureHasACode) {
    ConnectionSettings settings = settingsFor(AddressFamily::ipv4);
    listener_.close();
    ASSERT_EQ(stream_.createEvents(), 0);
    EXPECT_NE(connectStream(stream_, settings), 0);
}
