// platform/sockets.h
// Datagram and stream sockets and the socket library. Error codes are those of the Windows socket library on both
// machines: the native half turns its own into them. A socket belongs to the thread that uses it.
#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <string_view>

namespace platform {

/// Socket error codes that the program tests for by name.
namespace socket_error {
inline constexpr int interrupted = 10004;
inline constexpr int wouldBlock = 10035;
inline constexpr int messageTooLong = 10040;
inline constexpr int connectionReset = 10054;
inline constexpr int timedOut = 10060;
} // namespace socket_error

/// Starts the socket library, version 2.2; 0, or the error code. Starts and clean-ups are counted by the library.
int startSocketLibrary();
void cleanUpSocketLibrary();

/// How a socket operation ended: `error` is 0, or the code of the failure.
struct SocketResult {
    std::size_t bytes = 0;
    int error = 0;
};

enum class BindTo { thisMachine, allAddresses };

/// An IPv4 datagram socket; closed when it goes.
class DatagramSocket {
public:
    DatagramSocket() = default;
    ~DatagramSocket();
    DatagramSocket(const DatagramSocket&) = delete;
    DatagramSocket& operator=(const DatagramSocket&) = delete;

    /// Each of these answers 0, or the error code. A socket that it held already is closed.
    int create();
    int bind(BindTo where, std::uint16_t port);
    int setReceiveTimeout(std::chrono::milliseconds timeout);
    /// Asks the system to hold so many bytes that nobody has received yet; it may hold fewer. What has no room is lost.
    int setReceiveRoom(int bytes);

    /// Waits for one datagram, at most as long as the time-out says: then the error is timedOut. One that does not fit
    /// in `size` bytes is lost and gives messageTooLong.
    SocketResult receive(char* buffer, std::size_t size);

    /// Sends one datagram to a port of this machine. Each address 127.0.0.x is this machine; `lastByte` is the x, and
    /// BindTo::thisMachine hears only that of 1.
    SocketResult sendToThisMachine(std::uint16_t port, std::string_view bytes, std::uint8_t lastByte = 1);

    /// Where send() sends to: one machine, or all of a network by its broadcast address.
    int setDestination(std::string_view host, std::uint16_t port);
    /// Sends one datagram. That nobody listens there may be an error of a later call.
    SocketResult send(std::string_view bytes);

    bool valid() const { return handle_ != invalid; }
    /// The port that it is bound to, 0 when none: with port 0 the system chooses.
    std::uint16_t boundPort() const;
    void shutDownAndClose();

private:
    static constexpr std::intptr_t invalid = -1;
    std::intptr_t handle_ = invalid;
};

struct PortNumber {
    std::uint16_t port = 0;
    int error = 0;
};

/// The TCP port that a text names, for listening on all addresses.
PortNumber resolvePort(std::string_view text);

/// An IPv4 stream socket: one that listens, or one end of a connection; closed when it goes.
class StreamSocket {
public:
    StreamSocket() = default;
    ~StreamSocket();
    StreamSocket(StreamSocket&& other) noexcept;
    StreamSocket& operator=(StreamSocket&& other) noexcept;
    StreamSocket(const StreamSocket&) = delete;
    StreamSocket& operator=(const StreamSocket&) = delete;

    // Each of these answers 0, or the error code.

    /// A socket that it held already is closed.
    int create();
    int setBlocking(bool blocking);
    /// A port whose last connections are still being taken down can be bound; one in use cannot.
    int setAddressReuse();
    int bind(BindTo where, std::uint16_t port);
    /// With the largest backlog.
    int listen();
    /// Makes `peer` the end of a connection, if a peer waits; otherwise the error is wouldBlock.
    int accept(StreamSocket& peer);
    /// Connects to the first address of `host`, waiting at most `limit`.
    int connect(std::string_view host, std::uint16_t port, std::chrono::milliseconds limit);
    /// Small packets are sent at once.
    int setNoDelay();
    /// A send that takes longer gives timedOut.
    int setSendTimeout(std::chrono::milliseconds timeout);

    /// What has come, without waiting: wouldBlock when nothing has, 0 bytes without an error when the peer has closed.
    SocketResult receive(char* buffer, std::size_t size);
    /// All of the bytes, or an error; part may have gone then.
    SocketResult send(std::string_view bytes);
    /// How much receive() could give now.
    std::size_t waitingBytes() const;
    /// Whether the peer has closed or reset the connection, as far as is known by now.
    bool peerHasGone();

    bool valid() const { return handle_ != invalid; }
    /// The port that it is bound to, 0 when none: with port 0 the system chooses.
    std::uint16_t boundPort() const;
    void close();

private:
    static constexpr std::intptr_t invalid = -1;
    std::intptr_t handle_ = invalid;
};

} // namespace platform
