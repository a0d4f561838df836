// rig/traffic/traffic_run.h
// The stand-in for the RealTraffic client: it connects to the program, is told where the user is, and broadcasts a
// recording. Runs on the calling thread.
#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <iosfwd>
#include <string>

#include "rig/traffic/player.h"
#include "rig/traffic/server_messages.h"

namespace rig {

struct TrafficOptions {
    std::filesystem::path recording;
    std::string host = "127.0.0.1"; ///< where the program listens
    std::uint16_t port = 10747;
    std::string udpHost = "127.0.0.1"; ///< where the datagrams go, a broadcast address for instance
    std::uint16_t trafficPort = 49005;
    std::uint16_t weatherPort = 49004;
    /// Without it nothing is waited for or connected to, as when the program runs on another machine.
    bool link = true;
    /// From the first connect, or the start without a link, to the first row.
    double delaySeconds = 0;
    int level = 2;
    std::string version = "10.0.240";
    /// "exit" ends it; otherwise it waits for the program to come back, as long as there is something to play.
    bool endsWithGoodbye = false;
    PlayerOptions player;
    /// Called between bunches of datagrams with the number of traffic lines that have gone; without it they are a short
    /// pause apart.
    std::function<void(std::size_t)> betweenBunches;
};

struct TrafficResult {
    PlayerCounts played;
    ServerMessages::Counts heard;
    std::size_t connects = 0;
    std::size_t losses = 0;
    std::size_t failedSends = 0;
};

/// Until the recording is over or the system asks the program to end. Tells on `out` what happens, and the counts at
/// the end. Throws std::runtime_error, with a text for the user, when it cannot begin.
TrafficResult runTraffic(const TrafficOptions& options, std::ostream& out);

} // namespace rig
