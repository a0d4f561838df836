// feed/feed_reset.cpp
#include "feed/feed_reset.h"

#include "feed/qnh_reader.h"
#include "feed/traffic_reader.h"
#include "window/window_state.h"

void resetFeed() {
    gTrafficReader.reset();
    gQnh = standardQnh;
    gWindowState.qnh = standardQnh;
    gWindowState.trafficAlive = true;
    gWindowState.weatherAlive = true;
    // Last: a value that the reader takes meanwhile is then not known to it, and comes again with the next datagram.
    gQnhReader.reset();
}
