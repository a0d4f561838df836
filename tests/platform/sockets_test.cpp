// tests/platform/sockets_test.cpp
#include "platform/sockets.h"

#include <gtest/gtest.h>

#include <array>
#include <string>
#include <thread>

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
