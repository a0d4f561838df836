// platform/stream_connection.h
// A stream of bytes between two programs: TCP, or a named pipe (natively a local socket in its place); and the other end.
// A connection belongs to the thread that uses it; its receiver runs on a thread of the system's, beside send().
#pragma once

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <memory>
#include <string_view>

namespace platform {

enum class AddressFamily { ipv4, ipv6 };

/// Errors are the system's own codes, and 0 is success.
class StreamConnection {
public:
    /// Gets the peer's bytes in their order, one call at a time. A call without bytes says that the stream has ended, and is
    /// the last one. With false it asks for no more. It must let no exception out, and must not close the connection.
    using Receiver = std::function<bool(std::string_view bytes)>;

    StreamConnection();
    ~StreamConnection();
    StreamConnection(const StreamConnection&) = delete;
    StreamConnection& operator=(const StreamConnection&) = delete;

    /// Makes what the connection waits on: event objects on Windows. Comes first.
    int createEvents();

    /// Connects to the first address of `host` that takes the connection, waiting at most `limit` for each.
    int connectTcp(AddressFamily family, std::string_view host, std::uint16_t port, std::chrono::milliseconds limit);
    /// Opens a pipe that exists, by its full name ("\\.\pipe\...").
    int openPipe(std::string_view name);

    /// Small packets are sent at once. For TCP alone.
    int disableNagle();
    bool nagleDisabled() const;

    int startReceiving(Receiver receiver);
    /// Sends all of the bytes. A peer that takes none of them for `limit` is an error; part may have gone then.
    int send(std::string_view bytes, std::chrono::milliseconds limit);

    /// When this returns, the receiver is out and will not be called again.
    void close();

private:
    friend class StreamListener;
    struct State;
    std::unique_ptr<State> state_;
};

/// The end that waits for peers, on this machine's own addresses: for what stands in for a simulator.
class StreamListener {
public:
    StreamListener();
    ~StreamListener();
    StreamListener(const StreamListener&) = delete;
    StreamListener& operator=(const StreamListener&) = delete;

    /// With port 0 the system chooses.
    int listenTcp(AddressFamily family, std::uint16_t port);
    int listenPipe(std::string_view name);
    /// The TCP port.
    std::uint16_t port() const;

    /// Waits for a peer, at most `limit`, and makes `connection` the connection to it.
    int accept(StreamConnection& connection, std::chrono::milliseconds limit);
    void close();

private:
    struct State;
    std::unique_ptr<State> state_;
};

/// Sets an event object of the system's that another part of the program waits for; nothing for a null one. Natively there
/// are none.
void signalEvent(void* event);

/// The folder of the local sockets that stand for pipes; an empty path takes the system's own back ($XDG_RUNTIME_DIR, or
/// the temporary folder). For tests; on Windows, where pipes are no files, it does nothing.
void setLocalPipeFolder(const std::filesystem::path& folder);

} // namespace platform
