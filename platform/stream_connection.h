// platform/stream_connection.h
// A stream of bytes between two programs: TCP, or a named pipe (natively a local socket in its place); and the other
// end. A connection belongs to the thread that opens and closes it; its receiver runs on a thread of the system's, and
// one thread may send beside it.
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
    /// Gets the peer's bytes in their order, one call at a time. A call without bytes says that the stream has ended,
    /// and is the last one. With false it asks for no more. It must let no exception out, and must not close the
    /// connection.
    using Receiver = std::function<bool(std::string_view bytes)>;

    StreamConnection();
    ~StreamConnection();
    StreamConnection(const StreamConnection&) = delete;
    StreamConnection& operator=(const StreamConnection&) = delete;

    /// Makes what the connection waits on: event objects on Windows. Comes first.
    int createEvents();

    /// Connects to the first address of `host` that takes the connection. All of them together have `limit`; finding
    /// the addresses comes before and takes as long as the system's own look-up does.
    int connectTcp(AddressFamily family, std::string_view host, std::uint16_t port, std::chrono::milliseconds limit);
    /// Opens a pipe that exists, by its full name ("\\.\pipe\..."). The pipe's owner learns who opened it, but cannot
    /// act for him.
    int openPipe(std::string_view name);

    /// Small packets are sent at once. For TCP alone.
    int disableNagle();
    bool nagleDisabled() const;

    /// A peer that has closed already is no error: the receiver is told of the end, perhaps before this returns.
    int startReceiving(Receiver receiver);
    /// Whether the receiver is out, has had enough or the end, or comes to be so within `limit`.
    bool waitForEnd(std::chrono::milliseconds limit) const;

    /// Hands all of the bytes to the system. A peer that has not made room for all of them within `limit` is an error;
    /// part may have gone then, and the connection is good for receiving alone.
    int send(std::string_view bytes, std::chrono::milliseconds limit);
    /// The send that goes on, and every later one, ends with an error at once. From any thread.
    void cancelSending();
    /// Tells the peer that no more bytes come, while receiving goes on. An error for the system's own pipes, which
    /// cannot.
    int shutDownSending();

    /// When this returns, the receiver is out and will not be called again. Over TCP what has been sent is lost to a
    /// peer that has not read it yet, if bytes of its own lie here unread: shut down sending and wait for its end
    /// before.
    void close();

private:
    friend class StreamListener;
    struct State;
    std::shared_ptr<State> state_;
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

/// Sets an event object of the system's that another part of the program waits for; nothing for a null one. Natively
/// there are none.
void signalEvent(void* event);

/// The folder of the local sockets that stand for pipes; an empty path takes the system's own back ($XDG_RUNTIME_DIR,
/// or the temporary folder). For tests; on Windows, where pipes are no files, it does nothing.
void setLocalPipeFolder(const std::filesystem::path& folder);

} // namespace platform
