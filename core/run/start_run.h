// core/run/start_run.h
// From the finished start-up to the first second of the run loop: simulator, RealTraffic, readers. Run thread only.
#pragma once

#include <cstdint>

/// The ports that the RealTraffic client broadcasts to.
inline constexpr std::uint16_t weatherPort = 49004;
inline constexpr std::uint16_t trafficPort = 49005;

/// False when the run is to stop.
bool lf_startRun();
