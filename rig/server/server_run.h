// rig/server/server_run.h
// The download server as a command: serves a folder until it is told to end, and tells what it was asked for. Runs on
// the calling thread.
#pragma once

#include <cstdint>
#include <filesystem>
#include <iosfwd>
#include <optional>
#include <string>

namespace rig {

/// The port of the address that a build asks which names no server of its own.
inline constexpr std::uint16_t defaultDownloadPort = 47480;

struct ServerOptions {
    std::filesystem::path root;               ///< the folder that holds "downloads"
    std::uint16_t port = defaultDownloadPort; ///< 0: the system chooses
    std::string fault = "none";    ///< a word of faultOfWord, and behind a colon the end of the paths it is for
    std::optional<double> seconds; ///< of real time until it ends by itself
};

/// Until the time is up or the system asks the program to end; a line on `out` for the address and for each path that
/// was asked for. Throws std::runtime_error, with a text for the user, when it cannot begin.
void runServer(const ServerOptions& options, std::ostream& out);

} // namespace rig
