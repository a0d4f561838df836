// platform/sockets.h
// Datagram sockets and the socket library. Error codes are those of the Windows socket library on both machines: the
// native half turns its own into them. A socket belongs to the thread that uses it.
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

    /// Waits for one datagram, at most as long as the time-out says: then the error is timedOut. One that does not fit
    /// in `size` bytes is lost and gives messageTooLong.
    SocketResult receive(char* buffer, std::size_t size);

    /// Sends one datagram to a port of this machine. Each address 127.0.0.x is this machine; `lastByte` is the x, and
    /// BindTo::thisMachine hears only that of 1.
    SocketResult sendToThisMachine(std::uint16_t port, std::string_view bytes, std::uint8_t lastByte = 1);

    bool valid() const { return handle_ != invalid; }
    /// The port that it is bound to, 0 when none: with port 0 the system chooses.
    std::uint16_t boundPort() const;
    void shutDownAndClose();

private:
    static constexpr std::intptr_t invalid = -1;
    std::intptr_t handle_ = invalid;
};

} // namespace platform
