#include "sim/transport/connection.h"

#include <gmock/gmock.h>

#include <chrono>
#include <string>

#include "platform/sockets.h"
#include "tests/sim/transport/client_test.h"
#include "tests/support/eventually.h"
#include "tests/support/temporary_folder.h"

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

namespace {

HRESULT queue(Connection& connection, std::size_t dataBytes) {
    return connection.send(Operation::removeObject,
                           [&](PacketWriter& packet) { packet.bytes(std::string(dataBytes, 'd')); });
}

} // namespace

TEST(StandstillThreads, aPeerThatTakesNothingForTooLongFailsTheConnectionOnceItsRecordsAreDispatched) {
    const TemporaryFolder folder;
    platform::setLocalPipeFolder(folder.path());
    ConnectionSettings settings;
    settings.port = "Tarnwing tests\\" + folder.path().filename().string();
    settings.maxRecordBytes = 65536;
    const std::string record = recordBytes(4, "before");
    Peer peer;
    ASSERT_EQ(peer.listensPipe(pipeName(settings)), 0);
    const std::unique_ptr<Connection> connection = Connection::open(settings, nullptr, std::chrono::milliseconds(50));
    ASSERT_NE(connection, nullptr);
    ASSERT_TRUE(connection->start());
    ASSERT_TRUE(peer.acceptsWithoutReading());
    ASSERT_TRUE(peer.sends(record));

    // More than a pipe holds, less than may wait.
    for (int i = 0; i < 40; ++i) {
        queue(*connection, 50000);
    }

    EXPECT_TRUE(eventually([&] { return queue(*connection, 0) == E_FAIL; }));
    Dispatched dispatched;
    EXPECT_TRUE(eventually([&] { return connection->dispatch(keepRecord, &dispatched) == E_FAIL; }));
    EXPECT_THAT(dispatched.records, ::testing::ElementsAre(record));
    platform::setLocalPipeFolder({});
}

TEST_F(ConnectStream, aFailureHasACode) {
    ConnectionSettings settings = settingsFor(AddressFamily::ipv4);
    listener_.close();
    ASSERT_EQ(stream_.createEvents(), 0);
    EXPECT_NE(connectStream(stream_, settings), 0);
}
