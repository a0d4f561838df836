// tests/feed/posix/udp_reader_test.cpp
// Failures that only this system can be brought to.
#include "feed/udp_reader.h"

#include <gtest/gtest.h>
#include <stdexcept>
#include <string>
#include <sys/resource.h>

namespace {

constexpr bool local = true;

/// While it lives, the process can open nothing more.
class NoMoreHandles {
public:
    NoMoreHandles() {
        EXPECT_EQ(getrlimit(RLIMIT_NOFILE, &former_), 0);
        rlimit none = former_;
        none.rlim_cur = 0;
        EXPECT_EQ(setrlimit(RLIMIT_NOFILE, &none), 0);
    }
    ~NoMoreHandles() { EXPECT_EQ(setrlimit(RLIMIT_NOFILE, &former_), 0); }
    NoMoreHandles(const NoMoreHandles&) = delete;
    NoMoreHandles& operator=(const NoMoreHandles&) = delete;

private:
    rlimit former_{};
};

class SilentReader : public UdpReader {
public:
    void onDatagram() override {}
    void onStopped() override {}
};

TEST(UdpReader, aSocketThatCannotBeCreatedIsAnError) {
    SilentReader reader;
    // The sanitizers open handles of their own when they look at a type for the first time. The reader's is known to
    // them after this, and at the exception the limit is lifted.
    reader.open(0, local);
    try {
        const NoMoreHandles limit;
        reader.open(0, local);
        FAIL() << "no exception";
    } catch (const std::runtime_error& error) {
        EXPECT_EQ(std::string(error.what()), "failed to create the socket, error: 10024 Too many open sockets");
    }
}

} // namespace
