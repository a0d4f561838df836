#include "platform/stream_connection.h"

#include <gtest/gtest.h>

#include <atomic>
#include <condition_variable>
#include <future>
#include <mutex>
#include <string>

#include <fmt/format.h>

#include "platform/sockets.h"
#include "tests/support/eventually.h"
#include "tests/support/temporary_folder.h"

using namespace std::chrono_literals;
using platform::AddressFamily;
using platform::StreamConnection;
using platform::StreamListener;

namespace {

constexpr auto patience = 10s;

/// Collects what arrives.
class Arrivals {
public:
    StreamConnection::Receiver receiver() {
        return [this](std::string_view bytes) {
            const std::lock_guard lock(lock_);
            text_ += bytes;
            ends_ += bytes.empty() ? 1 : 0;
            return !stopping_;
        };
    }
    void stop() { stopping_ = true; }
    std::string text() {
        const std::lock_guard lock(lock_);
        return text_;
    }
    int ends() {
        const std::lock_guard lock(lock_);
        return ends_;
    }

private:
    std::mutex lock_;
    std::string text_; // under lock_
    int ends_ = 0;     // under lock_
    std::atomic<bool> stopping_{false};
};

/// Holds a receiver up, so that the peer takes its bytes slowly.
class Pacer {
public:
    void waitFor(std::chrono::milliseconds pause) {
        std::unique_lock lock(lock_);
        stopped_.wait_for(lock, pause, [this] { return stopping_; });
    }
    void stop() {
        const std::lock_guard lock(lock_);
        stopping_ = true;
        stopped_.notify_all();
    }

private:
    std::mutex lock_;
    std::condition_variable stopped_;
    bool stopping_ = false; // under lock_
};

enum class Road { ipv4, ipv6, pipe };

class StreamConnectionThreads : public ::testing::TestWithParam<Road> {
protected:
    void TearDown() override {
        platform::setLocalPipeFolder({});
        platform::cleanUpSocketLibrary();
    }

    std::string pipe() const {
        return fmt::format("\\\\.\\pipe\\Tarnwing tests\\{}", folder_.path().filename().string());
    }

    int listen() {
        switch (GetParam()) {
        case Road::ipv4: return listener_.listenTcp(AddressFamily::ipv4, 0);
        case Road::ipv6: return listener_.listenTcp(AddressFamily::ipv6, 0);
        case Road::pipe: break;
        }
        return listener_.listenPipe(pipe());
    }

    int connect(StreamConnection& connection) {
        if (const int error = connection.createEvents()) {
            return error;
        }
        switch (GetParam()) {
        case Road::ipv4: return connection.connectTcp(AddressFamily::ipv4, "127.0.0.1", listener_.port(), patience);
        case Road::ipv6: return connection.connectTcp(AddressFamily::ipv6, "::1", listener_.port(), patience);
        case Road::pipe: break;
        }
        return connection.openPipe(pipe());
    }

    void SetUp() override {
        platform::startSocketLibrary();
        platform::setLocalPipeFolder(folder_.path());
        const int error = listen();
        if (error != 0 && GetParam() == Road::ipv6) {
            GTEST_SKIP() << "this machine has no IPv6";
        }
        ASSERT_EQ(error, 0);
    }

    void connectBoth() {
        ASSERT_EQ(connect(client_), 0);
        ASSERT_EQ(listener_.accept(server_, patience), 0);
    }

    TemporaryFolder folder_;
    StreamListener listener_;
    Arrivals atClient_; // outlives the connection that fills it
    StreamConnection client_;
    StreamConnection server_;
};

INSTANTIATE_TEST_SUITE_P(Roads, StreamConnectionThreads, ::testing::Values(Road::ipv4, Road::ipv6, Road::pipe),
                         [](const auto& road) {
                             return road.param == Road::pipe ? "pipe" : road.param == Road::ipv4 ? "ipv4" : "ipv6";
                         });

} // namespace

TEST_P(StreamConnectionThreads, bytesArriveInTheirOrder) {
    connectBoth();
    ASSERT_EQ(client_.startReceiving(atClient_.receiver()), 0);
    std::string sent;
    for (int i = 0; i < 500; ++i) {
        const std::string piece = fmt::format("{:0{}}", i, 1 + i);
        EXPECT_EQ(server_.send(piece, patience), 0);
        sent += piece;
    }
    EXPECT_TRUE(eventually([&] { return atClient_.text().size() >= sent.size(); }));
    EXPECT_EQ(atClient_.text(), sent);
    EXPECT_EQ(atClient_.ends(), 0);
}

TEST_P(StreamConnectionThreads, theEndIsToldOnceAndAfterAllBytes) {
    connectBoth();
    ASSERT_EQ(client_.startReceiving(atClient_.receiver()), 0);
    server_.send("last", patience);
    server_.close();
    EXPECT_TRUE(eventually([&] { return atClient_.ends() != 0; }));
    client_.close();
    EXPECT_EQ(atClient_.text(), "last");
    EXPECT_EQ(atClient_.ends(), 1);
}

TEST_P(StreamConnectionThreads, aReceiverThatHasEnoughIsNotCalledAgain) {
    connectBoth();
    atClient_.stop();
    ASSERT_EQ(client_.startReceiving(atClient_.receiver()), 0);
    server_.send("first", patience);
    EXPECT_TRUE(client_.waitForEnd(patience));
    server_.send("second", patience);
    server_.close();
    client_.close();
    EXPECT_EQ(atClient_.text(), "first");
    EXPECT_EQ(atClient_.ends(), 0);
}

TEST_P(StreamConnectionThreads, closingTakesTheReceiverOutWhileItWaits) {
    connectBoth();
    ASSERT_EQ(client_.startReceiving(atClient_.receiver()), 0);
    client_.close();
    EXPECT_EQ(atClient_.ends(), 0);
    client_.close();
}

TEST_P(StreamConnectionThreads, aPeerThatTakesNothingIsAnErrorInTime) {
    connectBoth();
    const std::string block(100000, 'x');
    int error = 0;
    const auto begin = std::chrono::steady_clock::now();
    for (int i = 0; i < 1000 && error == 0; ++i) {
        error = client_.send(block, 50ms);
    }
    EXPECT_NE(error, 0);
    EXPECT_LT(std::chrono::steady_clock::now() - begin, patience);
}

TEST_P(StreamConnectionThreads, aPeerThatTricklesIsAnErrorInTime) {
    constexpr auto limit = 300ms;
    Pacer pacer; // before the connection whose receiver it holds up
    connectBoth();
    ASSERT_EQ(server_.startReceiving([&](std::string_view) {
        pacer.waitFor(10ms);
        return true;
    }),
              0);
    // At 64 kilobytes a time it would take ten seconds or more.
    const std::string bytes(64 << 20, 'x');
    const auto begin = std::chrono::steady_clock::now();
    EXPECT_NE(client_.send(bytes, limit), 0);
    EXPECT_GE(std::chrono::steady_clock::now() - begin, limit);
    EXPECT_LT(std::chrono::steady_clock::now() - begin, patience);
    pacer.stop();
    server_.close();
}

TEST_P(StreamConnectionThreads, aSendIsCancelledFromAnotherThreadAndTheNextOnesAreToo) {
    connectBoth();
    const std::string more(16 << 20, 'x');
    std::future<int> sent = std::async(std::launch::async, [&] { return client_.send(more, 1h); });
    client_.cancelSending();
    EXPECT_NE(sent.get(), 0);
    EXPECT_NE(client_.send("small", patience), 0);
    ASSERT_EQ(client_.startReceiving(atClient_.receiver()), 0);
    server_.send("still received", patience);
    EXPECT_TRUE(eventually([&] { return atClient_.text() == "still received"; }));
}

TEST_P(StreamConnectionThreads, afterShuttingDownItsSendingAConnectionStillReceives) {
    connectBoth();
    Arrivals atServer;
    ASSERT_EQ(client_.startReceiving(atClient_.receiver()), 0);
    ASSERT_EQ(server_.startReceiving(atServer.receiver()), 0);
    EXPECT_EQ(client_.send("last", patience), 0);
    if (client_.shutDownSending() != 0) {
        ASSERT_EQ(GetParam(), Road::pipe);
        GTEST_SKIP() << "this system's pipes end in both directions at once";
    }
    EXPECT_TRUE(server_.waitForEnd(patience));
    EXPECT_EQ(atServer.text(), "last");
    EXPECT_FALSE(client_.waitForEnd(0ms));
    server_.send("answer", patience);
    server_.close();
    EXPECT_TRUE(client_.waitForEnd(patience));
    EXPECT_EQ(atClient_.text(), "answer");
    EXPECT_EQ(atClient_.ends(), 1);
}

TEST_P(StreamConnectionThreads, aPeerThatHasClosedBeforeTheFirstReadIsTheEnd) {
    connectBoth();
    server_.close();
    EXPECT_EQ(client_.startReceiving(atClient_.receiver()), 0);
    EXPECT_TRUE(client_.waitForEnd(patience));
    client_.close();
    EXPECT_EQ(atClient_.text(), "");
    EXPECT_EQ(atClient_.ends(), 1);
}

TEST_P(StreamConnectionThreads, sendingToAPeerThatHasGoneIsAnError) {
    connectBoth();
    server_.close();
    EXPECT_TRUE(eventually([&] { return client_.send("more", patience) != 0; }));
}

TEST_P(StreamConnectionThreads, withoutAListenerThereIsNoConnection) {
    const std::uint16_t port = listener_.port();
    listener_.close();
    ASSERT_EQ(client_.createEvents(), 0);
    if (GetParam() == Road::pipe) {
        EXPECT_NE(client_.openPipe(pipe()), 0);
    } else {
        const bool four = GetParam() == Road::ipv4;
        EXPECT_NE(client_.connectTcp(four ? AddressFamily::ipv4 : AddressFamily::ipv6, four ? "127.0.0.1" : "::1", port,
                                     patience),
                  0);
    }
}

TEST_P(StreamConnectionThreads, waitingForAPeerEndsInTime) {
    EXPECT_NE(listener_.accept(server_, 10ms), 0);
}

TEST_P(StreamConnectionThreads, aListenerTakesSeveralPeers) {
    connectBoth();
    StreamConnection secondClient;
    StreamConnection secondServer;
    EXPECT_EQ(connect(secondClient), 0);
    EXPECT_EQ(listener_.accept(secondServer, patience), 0);
    ASSERT_EQ(secondClient.startReceiving(atClient_.receiver()), 0);
    EXPECT_EQ(secondServer.send("second", patience), 0);
    EXPECT_TRUE(eventually([&] { return atClient_.text() == "second"; }));
    secondClient.close();
}

TEST_P(StreamConnectionThreads, aClosedListenerTakesNobody) {
    listener_.close();
    EXPECT_NE(listener_.accept(server_, 10ms), 0);
}
