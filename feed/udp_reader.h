// feed/udp_reader.h
// Receives datagrams on one port and hands each to the class derived from it; and the life of the thread that does so.
// The reader thread owns the object, but for the fields that say otherwise.
#pragma once

#include <array>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <string>
#include <string_view>

#include "platform/sockets.h"
#include "window/window_state.h"

class UdpReader {
public:
    UdpReader() = default;
    virtual ~UdpReader() = default;
    UdpReader(const UdpReader&) = delete;
    UdpReader& operator=(const UdpReader&) = delete;

    /// Takes `datagram`.
    virtual void onDatagram() = 0;
    /// The receive loop has ended.
    virtual void onStopped() = 0;

    /// Binds to the port, of this machine alone when `local`; with port 0 the system chooses. The socket library is
    /// started. Throws std::runtime_error with the socket error text.
    void open(std::uint16_t port, bool local);

    /// Receives until stopRequested, at most a second longer; then closes the socket and calls onStopped. A datagram
    /// that comes twice in a row is delivered once, but for a `local` sender, whose datagrams all count.
    /// Throws std::runtime_error "receive error: {}", after closing and onStopped, when the socket fails.
    void receive(bool local);

    void close();

    /// The received bytes, valid during onDatagram.
    std::string_view datagram;
    /// Ends the receive loop. Set by any thread.
    std::atomic<bool> stopRequested{false};
    /// Datagrams delivered. Read by any thread.
    std::atomic<std::uint32_t> datagramCount{0};
    /// datagramCount at the last look of the feed-lamp check. Run thread.
    std::uint32_t lastCount = 0;
    /// The port that the socket is bound to, 0 while there is none. Read by any thread.
    std::atomic<std::uint16_t> boundPort{0};

protected:
    /// Stop flag and counts as at the start; the next datagram is no repetition, whatever came before. Run thread.
    void resetReader();

private:
    static constexpr std::size_t bufferSize = 16384;

    void receiveUntilStopped(bool local);
    bool isRepetition(std::string_view bytes);
    void deliver(std::string_view bytes);

    std::array<char, bufferSize + 1> buffer{};
    std::string previous;
    std::atomic<bool> previousIsVoid{false};
    platform::DatagramSocket socket;
};

/// The body of a reader thread: starts the socket library, opens, lights its lamps, receives, and at the end puts the
/// lamps out. An exception on the way is shown and stops the run.
void runReader(UdpReader& reader, std::string_view name, std::initializer_list<std::atomic<FeedLamp>*> lamps,
               std::uint16_t port, bool local);
