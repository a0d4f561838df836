// tests/support/test_client.h
// A program that connects to a TCP port of this machine, as a client would.
#pragma once

#include <array>
#include <chrono>
#include <gtest/gtest.h>
#include <string>
#include <string_view>

#include "platform/sockets.h"
#include "tests/support/eventually.h"

class TestClient {
public:
    TestClient() { platform::startSocketLibrary(); }
    ~TestClient() {
        close();
        platform::cleanUpSocketLibrary();
    }
    TestClient(const TestClient&) = delete;
    TestClient& operator=(const TestClient&) = delete;

    void connect(std::uint16_t port) {
        ASSERT_EQ(socket_.create(), 0);
        ASSERT_EQ(socket_.connect("127.0.0.1", port, std::chrono::seconds(60)), 0);
    }

    void send(std::string_view bytes) { EXPECT_EQ(socket_.send(bytes).error, 0); }

    /// Waits for this many bytes; fewer when the other side closes before.
    std::string read(std::size_t count) {
        received_.clear();
        eventually([&] { return takeMore(count) || received_.size() >= count; });
        return received_;
    }

    /// Reads until the other side closes.
    std::string readToTheEnd() {
        received_.clear();
        eventually([&] { return takeMore(SIZE_MAX); });
        return received_;
    }

    void close() { socket_.close(); }

    /// The connection breaks: what had come and was not read makes a reset of the close.
    void closeWithoutReading() {
        std::array<char, 1> byte{};
        EXPECT_TRUE(eventually([&] { return socket_.receive(byte.data(), 1).error == 0; }));
        close();
    }

private:
    /// Whether the other side has closed.
    bool takeMore(std::size_t count) {
        std::array<char, 4096> block{};
        const platform::SocketResult result =
            socket_.receive(block.data(), std::min(block.size(), count - received_.size()));
        received_.append(block.data(), result.bytes);
        return result.error == 0 ? result.bytes == 0 : result.error != platform::socket_error::wouldBlock;
    }

    platform::StreamSocket socket_;
    std::string received_;
};
