// rig/flights/receiver.h
// What a feed makes of a flight: lines now and then, of a position that is more or less the true one. Functions without
// state: usable from any thread.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "rig/flights/motion.h"
#include "rig/traffic/chance.h"

namespace rig {

enum class Fidelity {
    exact,   ///< the truth, at even intervals
    network, ///< noise, steps, gaps and drop-outs
};

struct Aircraft {
    std::uint32_t hexid = 0;
    std::string callsign;
    std::string registration;
    std::string type;
    std::string category = "A3";
    std::string from;
    std::string to;
};

/// A line and when it is received.
struct ReceivedLine {
    double time = 0; ///< seconds since 1970
    std::uint32_t hexid = 0;
    std::string text;
};

/// The pressure at the airport, hectopascal.
double pressureOf(Fidelity fidelity);

/// How the feed shows an aircraft, apart from what it does.
struct Transmission {
    Aircraft aircraft;
    double begin = 0;        ///< of the flight, seconds since 1970
    double delaySeconds = 0; ///< by which positions are late, with the time stamp of their arrival
    std::string quietIn;     ///< the phase in the middle of which the feed goes quiet for good; empty: none
};

std::vector<ReceivedLine> receive(const std::vector<MotionState>& states, const Transmission& transmission,
                                  Fidelity fidelity, Chance& chance);

} // namespace rig
