// tests/feed/posix/failing_calls_test.cpp
// Failures of single socket calls: this executable's own versions of them fail when a test says so.
#include <cerrno>
#include <cstdarg>
#include <dlfcn.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <stdexcept>
#include <string>
#include <string_view>
#include <sys/ioctl.h>
#include <sys/socket.h>

#include "core/exit_reason.h"
#include "feed/real_traffic_link.h"
#include "tests/support/log_capture.h"
#include "tests/support/test_client.h"

namespace {

std::string_view failingCall;

/// While it lives, the named call fails with EINVAL.
class LetFail {
public:
    explicit LetFail(std::string_view call) { failingCall = call; }
    ~LetFail() { failingCall = {}; }
    LetFail(const LetFail&) = delete;
    LetFail& operator=(const LetFail&) = delete;
};

bool fails(std::string_view call) {
    if (failingCall != call) {
        return false;
    }
    errno = EINVAL;
    return true;
}

template <typename Call>
Call systemsOwn(const char* name) {
    return reinterpret_cast<Call>(dlsym(RTLD_NEXT, name));
}

} // namespace

extern "C" {

int socket(int domain, int type, int protocol) noexcept {
    static const auto call = systemsOwn<int (*)(int, int, int)>("socket");
    return fails("socket") ? -1 : call(domain, type, protocol);
}

int setsockopt(int fd, int level, int option, const void* value, socklen_t size) noexcept {
    static const auto call = systemsOwn<int (*)(int, int, int, const void*, socklen_t)>("setsockopt");
    return fails("setsockopt") ? -1 : call(fd, level, option, value, size);
}

int listen(int fd, int backlog) noexcept {
    static const auto call = systemsOwn<int (*)(int, int)>("listen");
    return fails("listen") ? -1 : call(fd, backlog);
}

ssize_t recv(int fd, void* buffer, size_t size, int flags) {
    static const auto call = systemsOwn<ssize_t (*)(int, void*, size_t, int)>("recv");
    return fails("recv") ? -1 : call(fd, buffer, size, flags);
}

int ioctl(int fd, unsigned long request, ...) noexcept {
    static const auto call = systemsOwn<int (*)(int, unsigned long, void*)>("ioctl");
    va_list arguments;
    va_start(arguments, request);
    void* argument = va_arg(arguments, void*);
    va_end(arguments);
    return fails("ioctl") ? -1 : call(fd, request, argument);
}
}

namespace {

/// What listening throws while the call fails, or nothing.
std::string listenErrorWhileFails(std::string_view call) {
    const LetFail failing(call);
    try {
        startListening("0");
    } catch (const std::runtime_error& error) {
        return error.what();
    }
    return "";
}

class ListeningStep : public testing::Test {
protected:
    ~ListeningStep() override { closeRealTrafficLink(); }

    void expectNothingOpenAndAnotherTryToSucceed() {
        EXPECT_FALSE(listenSocket.valid());
        startListening("0");
        EXPECT_TRUE(listenSocket.valid());
    }
};

class FailingReceive : public testing::Test {
protected:
    FailingReceive() { gf_resetExitReason(); }
    ~FailingReceive() override {
        closeRealTrafficLink();
        gf_resetExitReason();
    }

    LogCapture log;
};

TEST_F(ListeningStep, withoutASocketIsAnError) {
    EXPECT_EQ(listenErrorWhileFails("socket"), "socket failed with error 10022 Invalid argument");
    expectNothingOpenAndAnotherTryToSucceed();
}

TEST_F(ListeningStep, withoutBlockingModeIsAnError) {
    EXPECT_EQ(listenErrorWhileFails("ioctl"), "ioctlsocket failed with error 10022 Invalid argument");
    expectNothingOpenAndAnotherTryToSucceed();
}

TEST_F(ListeningStep, withoutAddressReuseIsAnError) {
    EXPECT_EQ(listenErrorWhileFails("setsockopt"), "setsockopt(SO_REUSEADDR) failed");
    expectNothingOpenAndAnotherTryToSucceed();
}

TEST_F(ListeningStep, withoutABacklogIsAnError) {
    EXPECT_EQ(listenErrorWhileFails("listen"), "listen failed with error 10022 Invalid argument");
    expectNothingOpenAndAnotherTryToSucceed();
}

TEST_F(FailingReceive, givesAnEmptyReplyAndAWordInTheLog) {
    startListening("0");
    TestClient client;
    client.connect(listenSocket.boundPort());
    ASSERT_TRUE(waitForClient());
    {
        const LetFail failing("recv");
        EXPECT_EQ(receive(), "");
    }
    EXPECT_THAT(log.lines(), testing::ElementsAre("receive: 10022 Invalid argument"));
}

TEST_F(FailingReceive, isNoNewsWhileTheRunStops) {
    startListening("0");
    TestClient client;
    client.connect(listenSocket.boundPort());
    ASSERT_TRUE(waitForClient());
    gf_userCloses();
    {
        const LetFail failing("recv");
        EXPECT_EQ(receive(), "");
    }
    EXPECT_THAT(log.lines(), testing::IsEmpty());
}

} // namespace
