// tests/platform/sockets_test.cpp
#include "platform/sockets.h"

#include <gtest/gtest.h>

#include <array>
#include <string>
#include <thread>
#include <utility>

#include "tests/support/eventually.h"

using namespace std::chrono_literals;
using platform::BindTo;
using platform::DatagramSocket;
using platform::SocketResult;

namespace {

constexpr int addressInUse = 10048;
/// Of an address of this machine that is not the usual 127.0.0.1.
constexpr std::uint8_t otherAddress = 2;
/// Long enough for any machine, and only waited for when a datagram is lost.
constexpr auto patience = 20s;

class Sockets : public ::testing::Test {
protected:
    void SetUp() override { ASSERT_EQ(platform::startSocketLibrary(), 0); }
    void TearDown() override { platform::cleanUpSocketLibrary(); }

    void listen(DatagramSocket& socket, std::chrono::milliseconds timeout = patience) {
        ASSERT_EQ(socket.create(), 0);
        ASSERT_EQ(socket.bind(BindTo::thisMachine, 0), 0);
        ASSERT_EQ(socket.setReceiveTimeout(timeout), 0);
        ASSERT_NE(socket.boundPort(), 0);
    }

    SocketResult receive(DatagramSocket& socket) { return socket.receive(buffer_.data(), buffer_.size()); }

    std::string received(const SocketResult& result) const { return {buffer_.data(), result.bytes}; }

    std::array<char, 64> buffer_{};
};

using SocketsThreads = Sockets;

} // namespace

TEST_F(Sockets, aSocketIsValidFromItsCreationToItsClosing) {
    DatagramSocket socket;
    EXPECT_FALSE(socket.valid());
    EXPECT_EQ(socket.create(), 0);
    EXPECT_TRUE(socket.valid());
    EXPECT_EQ(socket.boundPort(), 0);
    socket.shutDownAndClose();
    EXPECT_FALSE(socket.valid());
    socket.shutDownAndClose();
    EXPECT_FALSE(socket.valid());
}

TEST_F(Sockets, aDatagramArrivesAsItWasSent) {
    DatagramSocket receiver;
    listen(receiver);
    DatagramSocket sender;
    ASSERT_EQ(sender.create(), 0);

    const SocketResult sent = sender.sendToThisMachine(receiver.boundPort(), std::string_view("RTTFC,\0,\xFF", 9));
    const SocketResult result = receive(receiver);

    EXPECT_EQ(sent.error, 0);
    EXPECT_EQ(sent.bytes, 9u);
    EXPECT_EQ(result.error, 0);
    EXPECT_EQ(received(result), std::string("RTTFC,\0,\xFF", 9));
}

TEST_F(Sockets, aSocketBoundToAllAddressesHearsThemAll) {
    DatagramSocket receiver;
    ASSERT_EQ(receiver.create(), 0);
    ASSERT_EQ(receiver.bind(BindTo::allAddresses, 0), 0);
    ASSERT_EQ(receiver.setReceiveTimeout(patience), 0);
    DatagramSocket sender;
    ASSERT_EQ(sender.create(), 0);

    EXPECT_EQ(sender.sendToThisMachine(receiver.boundPort(), "hello").error, 0);
    EXPECT_EQ(sender.sendToThisMachine(receiver.boundPort(), "elsewhere", otherAddress).error, 0);

    EXPECT_EQ(received(receive(receiver)), "hello");
    EXPECT_EQ(received(receive(receiver)), "elsewhere");
}

TEST_F(Sockets, aSocketBoundToThisMachineHearsItsUsualAddressAlone) {
    DatagramSocket receiver;
    listen(receiver);
    DatagramSocket sender;
    ASSERT_EQ(sender.create(), 0);

    EXPECT_EQ(sender.sendToThisMachine(receiver.boundPort(), "elsewhere", otherAddress).error, 0);
    EXPECT_EQ(sender.sendToThisMachine(receiver.boundPort(), "hello").error, 0);

    EXPECT_EQ(received(receive(receiver)), "hello");
}

TEST_F(Sockets, anEmptyDatagramIsAResultOfNoBytesAndNoError) {
    DatagramSocket receiver;
    listen(receiver);
    DatagramSocket sender;
    ASSERT_EQ(sender.create(), 0);

    sender.sendToThisMachine(receiver.boundPort(), "");
    sender.sendToThisMachine(receiver.boundPort(), "next");

    const SocketResult empty = receive(receiver);
    EXPECT_EQ(empty.bytes, 0u);
    EXPECT_EQ(empty.error, 0);
    EXPECT_EQ(received(receive(receiver)), "next");
}

TEST_F(Sockets, aDatagramThatFitsExactlyArrivesAndALongerOneIsLost) {
    DatagramSocket receiver;
    listen(receiver);
    DatagramSocket sender;
    ASSERT_EQ(sender.create(), 0);
    const std::string fitting(buffer_.size(), 'f');

    sender.sendToThisMachine(receiver.boundPort(), fitting);
    sender.sendToThisMachine(receiver.boundPort(), fitting + 'x');
    sender.sendToThisMachine(receiver.boundPort(), "next");

    EXPECT_EQ(received(receive(receiver)), fitting);
    EXPECT_EQ(receive(receiver).error, platform::socket_error::messageTooLong);
    EXPECT_EQ(received(receive(receiver)), "next");
}

TEST_F(Sockets, withoutADatagramTheTimeoutEndsTheWait) {
    DatagramSocket receiver;
    listen(receiver, 10ms);
    const SocketResult result = receive(receiver);
    EXPECT_EQ(result.error, platform::socket_error::timedOut);
    EXPECT_EQ(result.bytes, 0u);
}

TEST_F(Sockets, aPortThatIsTakenIsRefused) {
    DatagramSocket first;
    listen(first);
    DatagramSocket second;
    ASSERT_EQ(second.create(), 0);
    EXPECT_EQ(second.bind(BindTo::thisMachine, first.boundPort()), addressInUse);
}

TEST_F(Sockets, aClosedSocketFreesItsPort) {
    DatagramSocket first;
    listen(first);
    const std::uint16_t port = first.boundPort();
    first.shutDownAndClose();
    DatagramSocket second;
    ASSERT_EQ(second.create(), 0);
    EXPECT_EQ(second.bind(BindTo::thisMachine, port), 0);
}

TEST_F(Sockets, creatingASocketAgainClosesTheFormerOne) {
    DatagramSocket socket;
    listen(socket);
    const std::uint16_t port = socket.boundPort();
    ASSERT_EQ(socket.create(), 0);
    EXPECT_EQ(socket.bind(BindTo::thisMachine, port), 0);
}

TEST_F(Sockets, whatWasNeverCreatedAnswersWithAnError) {
    DatagramSocket socket;
    EXPECT_NE(socket.bind(BindTo::thisMachine, 0), 0);
    EXPECT_NE(socket.setReceiveTimeout(1s), 0);
    EXPECT_NE(receive(socket).error, 0);
    EXPECT_NE(socket.sendToThisMachine(9, "x").error, 0);
    EXPECT_EQ(socket.boundPort(), 0);
}

TEST_F(SocketsThreads, aWaitingReceiverIsWokenByADatagram) {
    DatagramSocket receiver;
    listen(receiver);
    const std::uint16_t port = receiver.boundPort();
    std::thread other([port] {
        DatagramSocket sender;
        if (sender.create() == 0) {
            sender.sendToThisMachine(port, "wake up");
        }
    });

    const SocketResult result = receive(receiver);
    other.join();

    EXPECT_EQ(received(result), "wake up");
}

namespace {

using platform::StreamSocket;

class StreamSockets : public ::testing::Test {
protected:
    void SetUp() override {
        ASSERT_EQ(platform::startSocketLibrary(), 0);
        ASSERT_EQ(listener.create(), 0);
        ASSERT_EQ(listener.setAddressReuse(), 0);
        ASSERT_EQ(listener.bind(BindTo::thisMachine, 0), 0);
        ASSERT_EQ(listener.listen(), 0);
    }
    void TearDown() override { platform::cleanUpSocketLibrary(); }

    void connect() {
        ASSERT_EQ(client.create(), 0);
        ASSERT_EQ(client.connect("127.0.0.1", listener.boundPort(), patience), 0);
        ASSERT_TRUE(eventually([this] { return listener.accept(server) == 0; }));
    }

    static std::string receivedBy(StreamSocket& socket) {
        std::array<char, 64> buffer{};
        SocketResult result;
        eventually([&] {
            result = socket.receive(buffer.data(), buffer.size());
            return result.error != platform::socket_error::wouldBlock;
        });
        return {buffer.data(), result.bytes};
    }

    StreamSocket listener;
    StreamSocket client;
    StreamSocket server;
};

} // namespace

TEST_F(StreamSockets, withoutAPeerThereIsNothingToAccept) {
    EXPECT_EQ(listener.accept(server), platform::socket_error::wouldBlock);
    EXPECT_FALSE(server.valid());
}

TEST_F(StreamSockets, bytesGoBothWays) {
    connect();
    EXPECT_EQ(server.setNoDelay(), 0);
    EXPECT_EQ(server.send("hello").bytes, 5u);
    EXPECT_EQ(receivedBy(client), "hello");
    EXPECT_EQ(client.send("and back").error, 0);
    EXPECT_EQ(receivedBy(server), "and back");
}

TEST_F(StreamSockets, receivingDoesNotWait) {
    connect();
    std::array<char, 8> buffer{};
    EXPECT_EQ(client.receive(buffer.data(), buffer.size()).error, platform::socket_error::wouldBlock);
    EXPECT_EQ(client.waitingBytes(), 0u);
    EXPECT_FALSE(client.peerHasGone());
}

TEST_F(StreamSockets, aPeerThatClosesIsKnownToHaveGone) {
    connect();
    server.close();
    EXPECT_TRUE(eventually([this] { return client.peerHasGone(); }));
    EXPECT_EQ(receivedBy(client), "");
}

TEST_F(StreamSockets, aPeerThatHasMoreToSayHasNotGone) {
    connect();
    server.send("last words");
    server.close();
    ASSERT_TRUE(eventually([this] { return client.waitingBytes() == 10; }));
    EXPECT_FALSE(client.peerHasGone());
    EXPECT_EQ(receivedBy(client), "last words");
}

TEST_F(StreamSockets, aSendThatThePeerDoesNotTakeEndsWithItsTime) {
    connect();
    ASSERT_EQ(server.setSendTimeout(50ms), 0);
    const std::string much(64 * 1024 * 1024, 'x');
    EXPECT_EQ(server.send(much).error, platform::socket_error::timedOut);
}

TEST_F(StreamSockets, whereNobodyListensAConnectIsRefused) {
    const std::uint16_t port = listener.boundPort();
    listener.close();
    ASSERT_EQ(client.create(), 0);
    EXPECT_EQ(client.connect("127.0.0.1", port, patience), 10061);
}

TEST_F(StreamSockets, aPortThatIsListenedOnIsRefused) {
    StreamSocket second;
    ASSERT_EQ(second.create(), 0);
    ASSERT_EQ(second.setAddressReuse(), 0);
    EXPECT_EQ(second.bind(BindTo::thisMachine, listener.boundPort()), addressInUse);
}

TEST_F(StreamSockets, theConnectionMovesWithItsOwner) {
    connect();
    StreamSocket other = std::move(server);
    EXPECT_EQ(other.send("hello").error, 0);
    EXPECT_EQ(receivedBy(client), "hello");
    server = std::move(other);
    server.close();
    EXPECT_TRUE(eventually([this] { return client.peerHasGone(); }));
}

TEST_F(StreamSockets, whatWasNeverCreatedAnswersWithAnError) {
    StreamSocket socket;
    std::array<char, 8> buffer{};
    EXPECT_NE(socket.setBlocking(true), 0);
    EXPECT_NE(socket.bind(BindTo::thisMachine, 0), 0);
    EXPECT_NE(socket.listen(), 0);
    EXPECT_NE(socket.setNoDelay(), 0);
    EXPECT_NE(socket.setSendTimeout(1s), 0);
    EXPECT_NE(socket.receive(buffer.data(), buffer.size()).error, 0);
    EXPECT_NE(socket.send("x").error, 0);
    EXPECT_TRUE(socket.peerHasGone());
    EXPECT_EQ(socket.waitingBytes(), 0u);
    EXPECT_EQ(socket.boundPort(), 0);
    StreamSocket peer;
    EXPECT_NE(socket.accept(peer), 0);
}

TEST_F(StreamSockets, aTextThatIsAPortNamesIt) {
    EXPECT_EQ(platform::resolvePort("10747").port, 10747);
    EXPECT_EQ(platform::resolvePort("10747").error, 0);
    EXPECT_NE(platform::resolvePort("no port").error, 0);
}

TEST_F(Sockets, aDatagramGoesToTheDestinationThatWasSet) {
    DatagramSocket receiver;
    listen(receiver);
    DatagramSocket sender;
    ASSERT_EQ(sender.create(), 0);
    ASSERT_EQ(sender.setDestination("127.0.0.1", receiver.boundPort()), 0);
    EXPECT_EQ(sender.send("hello").bytes, 5u);
    EXPECT_EQ(received(receive(receiver)), "hello");
}

TEST_F(Sockets, aDestinationThatIsNoHostIsRefused) {
    DatagramSocket sender;
    ASSERT_EQ(sender.create(), 0);
    EXPECT_NE(sender.setDestination("256.0.0.1.5", 9), 0);
}
