// rig/simulator/client_configuration.h
// The SimConnect.cfg by which a client finds the stand-in simulator.
// Function without state: usable from any thread.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace rig {

/// The ways in that are open; a pipe without "\\.\pipe\".
struct WaysIn {
    std::optional<std::uint16_t> port;
    std::optional<std::uint16_t> port6;
    std::optional<std::string> pipe;
};

/// A section for each way: the first one is what a client takes that asks for index 0, the next one 1, and so on.
std::string clientConfiguration(const WaysIn& ways);

} // namespace rig
