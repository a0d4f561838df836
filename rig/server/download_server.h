// rig/server/download_server.h
// A download server on this machine: serves a folder, and misbehaves on demand. Listens and answers on threads of its
// own; its routines may be called from any thread.
#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

/// What goes wrong with an answer.
enum class ServerFault {
    none,
    notFound,     ///< status 404
    serverError,  ///< status 500
    redirect,     ///< status 302, with a page as a portal's
    halfBody,     ///< the connection ends after half of the promised bytes
    slow,         ///< the whole body, in small pieces with a pause behind each
    stall,        ///< a piece of the body, and no more until the client goes or the server ends
    halfLength,   ///< the whole body, under a length of half of it
    doubleLength, ///< the whole body and the connection's end, under a length of twice as much
    otherPage,    ///< status 200, with a page as a portal's
};

/// The words of the faults, as a user gives them.
std::string faultWords();

/// One of faultWords; nothing for another word.
std::optional<ServerFault> faultOfWord(std::string_view word);

class DownloadServer {
public:
    /// Serves the files of a folder on the loopback address; with port 0 the system chooses. Throws std::runtime_error
    /// when the port is taken.
    explicit DownloadServer(std::filesystem::path folder, std::uint16_t port = 0);
    ~DownloadServer();
    DownloadServer(const DownloadServer&) = delete;
    DownloadServer& operator=(const DownloadServer&) = delete;

    std::uint16_t port() const;
    /// "http://127.0.0.1:port/".
    std::string root() const;

    /// From now on each answer to a path that ends in `pathEnd` has the fault; an empty end means all paths.
    void setFault(ServerFault fault, std::string_view pathEnd = {});

    /// The paths asked for so far, and the user agents that asked.
    std::vector<std::string> requests() const;
    std::vector<std::string> userAgents() const;

    /// How many pieces the slow bodies so far went out in.
    std::size_t slowPieces() const;

private:
    struct State;
    std::unique_ptr<State> state_;
};
