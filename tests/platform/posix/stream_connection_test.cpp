#include "platform/stream_connection.h"

#include <gtest/gtest.h>

#include <sys/resource.h>

#include <atomic>
#include <optional>

using namespace std::chrono_literals;
using platform::StreamConnection;

namespace {

constexpr auto patience = 10s;

/// While one lives, waiting for two descriptors at once is more than the process may do.
class NoWaitingForTwo {
public:
    NoWaitingForTwo() {
        getrlimit(RLIMIT_NOFILE, &former_);
        rlimit one = former_;
        one.rlim_cur = 1;
        setrlimit(RLIMIT_NOFILE, &one);
    }
    ~NoWaitingForTwo() { setrlimit(RLIMIT_NOFILE, &former_); }
    NoWaitingForTwo(const NoWaitingForTwo&) = delete;
    NoWaitingForTwo& operator=(const NoWaitingForTwo&) = delete;

private:
    rlimit former_{};
};

} // namespace

TEST(PollFailureThreads, waitingThatFailsIsTheEndOfTheStream) {
    std::optional<NoWaitingForTwo> failing;
    std::atomic<int> ends{0};
    platform::StreamListener listener;
    StreamConnection client;
    StreamConnection server;
    ASSERT_EQ(listener.listenTcp(platform::AddressFamily::ipv4, 0), 0);
    ASSERT_EQ(client.createEvents(), 0);
    ASSERT_EQ(client.connectTcp(platform::AddressFamily::ipv4, "127.0.0.1", listener.port(), patience), 0);
    ASSERT_EQ(listener.accept(server, patience), 0);
    const auto receiver = [&](std::string_view bytes) {
        if (bytes.empty()) {
            failing.reset();
            ++ends;
        } else {
            failing.emplace();
        }
        return true;
    };
    ASSERT_EQ(client.startReceiving(receiver), 0);

    ASSERT_EQ(server.send("x", patience), 0);

    EXPECT_TRUE(client.waitForEnd(patience));
    EXPECT_EQ(ends, 1);
}
