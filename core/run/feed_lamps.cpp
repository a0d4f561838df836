// core/run/feed_lamps.cpp
#include "core/run/feed_lamps.h"

#include <atomic>
#include <cstdint>

#include "feed/qnh_reader.h"
#include "feed/traffic_reader.h"
#include "window/window_state.h"

namespace {

void checkFeed(UdpReader& reader, std::atomic<FeedLamp>& lamp, std::atomic<bool>& alive) {
    // A reader that has ended is not one without data.
    if (lamp == FeedLamp::notRunning) {
        return;
    }
    const std::uint32_t count = reader.datagramCount;
    if (count == reader.lastCount) {
        lamp = FeedLamp::noData;
        alive = false;
    } else if (!alive) {
        lamp = FeedLamp::flowing;
        alive = true;
    }
    reader.lastCount = count;
}

} // namespace

void gf_checkFeedLamps() {
    if (!gWindowState.realTrafficLit) {
        return;
    }
    checkFeed(gTrafficReader, gWindowState.trafficLamp, gWindowState.trafficAlive);
    checkFeed(gQnhReader, gWindowState.weatherLamp, gWindowState.weatherAlive);
    repaintWindow();
}
