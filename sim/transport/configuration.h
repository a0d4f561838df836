// sim/transport/configuration.h
// How the simulator is reached: SimConnect.cfg, and what the registry and the program know where it is silent.
// Without state: usable from any thread.
#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

enum class Protocol { pipe, ipv4, ipv6 };

struct ConnectionSettings {
    Protocol protocol = Protocol::pipe;
    std::string address; ///< empty: this machine
    std::string port;    ///< a port number, or a pipe's name; may be empty
    std::size_t maxRecordBytes = 0;
    bool disableNagle = false;
};

/// The first SimConnect.cfg of the public documents, the user's documents and the current directory; empty without one.
std::filesystem::path configurationFile();

/// The settings of a section: "SimConnect" for index 0, "SimConnect.n" for others. What is missing there, or without
/// sense, is as without a file.
ConnectionSettings settingsFrom(const std::vector<std::string>& lines, std::uint32_t configIndex);
/// The same from the file that is found; without one, the pipe on this machine. No exceptions.
ConnectionSettings readSettings(std::uint32_t configIndex);

/// The full name of the pipe. The default name carries the number of the wanted simulator's version.
std::string pipeName(const ConnectionSettings& settings);
/// The host of a TCP connection.
std::string hostName(const ConnectionSettings& settings);
/// The port of a TCP connection: that of the settings, else the one that the running simulator has put into the
/// registry. Nothing when there is none, or it does not begin with a port number.
std::optional<std::uint16_t> portNumber(const ConnectionSettings& settings);
