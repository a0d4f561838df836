// feed/feed_reset.cpp
#include "feed/feed_reset.h"

#include "feed/qnh_reader.h"
#include "feed/traffic_reader.h"
#include "window/window_state.h"

void resetFeed() {
    gTrafficReader.reset();
    gQnhReader.reset();
    gQnh = standardQnh;
    gWindowState.qnh = standardQnh;
    gWindowState.trafficAlive = true;
    gWindowState.weatherAlive = true;
}
