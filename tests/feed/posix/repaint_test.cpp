// tests/feed/posix/repaint_test.cpp
// When the feed asks for a repaint of the window.
#include <gtest/gtest.h>
#include <string>

#include "feed/feed_reset.h"
#include "feed/qnh_reader.h"
#include "platform/posix/memory_window.h"
#include "tests/support/log_capture.h"

namespace memory = window_system::memory;

namespace {

constexpr bool local = true;

std::size_t repaints() {
    return memory::invalidated().size();
}

class FeedRepaints : public testing::Test {
protected:
    FeedRepaints() {
        resetFeed();
        resetWindowState();
        memory::reset();
        window_system::registerWindowClass("test", {});
        window_system::createWindow("test", 0, {0, 0, 880, 516});
    }

    ~FeedRepaints() override {
        memory::reset();
        resetWindowState();
        resetFeed();
    }

    /// The repaints that a weather datagram brings about.
    std::size_t repaintsFor(const std::string& datagram) {
        const std::size_t before = repaints();
        reader.datagram = datagram;
        reader.onDatagram();
        return repaints() - before;
    }

    LogCapture log;
    QnhReader reader;
};

TEST_F(FeedRepaints, aRepeatedStandardQnhBringsOneEachTimeAndAnyOtherOnlyOnce) {
    EXPECT_EQ(repaintsFor(R"({"QNH": 1013})"), 1u);
    EXPECT_EQ(repaintsFor(R"({"QNH": 1013})"), 1u);
    EXPECT_EQ(repaintsFor(R"({"QNH": 1020})"), 1u);
    EXPECT_EQ(repaintsFor(R"({"QNH": 1020})"), 0u);
    EXPECT_EQ(repaintsFor(R"({"QNH": 1021})"), 1u);
}

TEST_F(FeedRepaints, aDatagramWithoutAQnhBringsNone) {
    EXPECT_EQ(repaintsFor("{}"), 0u);
    EXPECT_EQ(repaintsFor(R"({"QNH": "abc"})"), 0u);
    EXPECT_EQ(repaintsFor("no weather"), 0u);
}

class StoppedReader : public UdpReader {
public:
    StoppedReader() { stopRequested = true; }
    void onDatagram() override {}
    void onStopped() override { repaintsBeforeTheEnd = repaints(); }

    std::size_t repaintsBeforeTheEnd = 0;
};

TEST_F(FeedRepaints, theLampsOfAReaderBringOneWhenTheyGoOnAndOneWhenTheyGoOff) {
    StoppedReader stopped;
    const std::size_t before = repaints();
    runReader(stopped, "Probe", {&gWindowState.trafficLamp, &gWindowState.weatherLamp}, 0, local);
    EXPECT_EQ(stopped.repaintsBeforeTheEnd - before, 1u);
    EXPECT_EQ(repaints() - before, 2u);
}

} // namespace
