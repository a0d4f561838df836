// rig/simulator/simulator_run.h
// The stand-in simulator: a world in real time, with clients over the wire, a line that tells how it stands, a trace.
// Runs on the calling thread.
#pragma once

#include <cstdint>
#include <filesystem>
#include <iosfwd>
#include <optional>
#include <string>
#include <vector>

namespace rig {

struct SimulatorOptions {
    std::filesystem::path scene;
    std::optional<std::uint16_t> port;  ///< IPv4; 0: the system chooses
    std::optional<std::uint16_t> port6; ///< IPv6
    /// A pipe's full name, or what follows "\\.\pipe\". Without port, port6 and pipe it is defaultPipe.
    std::optional<std::string> pipe;
    std::vector<std::filesystem::path> titles; ///< folders with aircraft.cfg files
    std::filesystem::path trace;               ///< empty: none
    std::optional<double> seconds;             ///< of real time until it ends by itself
    double speed = 1;                          ///< simulated seconds in a real one
    std::filesystem::path configurationFolder; ///< where to write SimConnect.cfg; empty: nowhere
    std::filesystem::path driveC;              ///< what a client under Wine calls C:
    std::optional<std::uint16_t> mapPort;      ///< of the map in the browser; 0: the system chooses
};

inline constexpr const char* defaultPipe = "Lockheed Martin Prepar3D v5\\SimConnect";

/// Until the time is up, the scene lets the simulator quit, or the system asks the program to end. Tells on `out` how
/// it stands: a line that is refreshed when `out` is a terminal, else lines now and then. Throws std::runtime_error,
/// with a text for the user, when it cannot begin.
void runSimulator(const SimulatorOptions& options, std::ostream& out, bool outIsTerminal);

} // namespace rig
