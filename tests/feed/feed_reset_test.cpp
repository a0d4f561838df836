// tests/feed/feed_reset_test.cpp
#include "feed/feed_reset.h"

#include <gtest/gtest.h>

#include "feed/qnh_reader.h"
#include "feed/traffic_reader.h"
#include "window/window_state.h"

namespace {

TEST(FeedReset, putsTheWholeFeedBackToItsStart) {
    gQnhReader.datagram = R"({"QNH": 1020})";
    gQnhReader.onDatagram();
    gTrafficReader.lastFeedTime = 1666985865.8;
    gWindowState.trafficAlive = false;
    gWindowState.weatherAlive = false;
    for (UdpReader* reader : {static_cast<UdpReader*>(&gTrafficReader), static_cast<UdpReader*>(&gQnhReader)}) {
        reader->stopRequested = true;
        reader->datagramCount = 9;
        reader->lastCount = 8;
    }

    resetFeed();

    EXPECT_EQ(gQnh, 1013);
    EXPECT_EQ(gTrafficReader.qnh, 1013);
    EXPECT_EQ(gWindowState.qnh, 1013);
    EXPECT_EQ(gTrafficReader.lastFeedTime, 0);
    EXPECT_TRUE(gWindowState.trafficAlive);
    EXPECT_TRUE(gWindowState.weatherAlive);
    for (UdpReader* reader : {static_cast<UdpReader*>(&gTrafficReader), static_cast<UdpReader*>(&gQnhReader)}) {
        EXPECT_FALSE(reader->stopRequested);
        EXPECT_EQ(reader->datagramCount, 0u);
        EXPECT_EQ(reader->lastCount, 0u);
    }
}

} // namespace
