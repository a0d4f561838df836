// tests/sim/transport/peer.h
// The other end of the simulator's connection: takes one client, reads its packets, sends whatever bytes a test wants.
#pragma once

#include <condition_variable>
#include <cstdint>
#include <mutex>
#include <string>
#include <string_view>

#include "platform/stream_connection.h"

class Peer {
public:
    Peer() = default;
    ~Peer() { closes(); }
    Peer(const Peer&) = delete;
    Peer& operator=(const Peer&) = delete;

    int listensTcp(platform::AddressFamily family) { return listener_.listenTcp(family, 0); }
    int listensPipe(std::string_view name) { return listener_.listenPipe(name); }
    std::uint16_t port() const { return listener_.port(); }

    /// Waits for the client, at most ten seconds.
    bool accepts();
    /// The same, but nothing of what the client sends is read before the other call, if that ever comes.
    bool acceptsWithoutReading();
    bool beginsToRead();

    /// Waits for the next packet as its size field cuts it, at most ten seconds; empty when none comes.
    std::string packet();
    /// Waits for the client to close, at most ten seconds.
    bool seesTheClientClose();
    bool sends(std::string_view bytes);
    void closes();

private:
    bool receive(std::string_view bytes);

    platform::StreamListener listener_;
    std::mutex lock_;
    std::condition_variable changed_;
    std::string received_; // under lock_
    bool ended_ = false;   // under lock_
    platform::StreamConnection connection_;
};

/// Bytes in the order of the wire, built independently of the client's own writer.
class Bytes {
public:
    Bytes& dword(std::uint32_t value);
    Bytes& float32(float value);
    Bytes& float64(double value);
    Bytes& text(std::string_view value, std::size_t fieldBytes);
    Bytes& raw(std::string_view value);
    const std::string& str() const { return bytes_; }
    operator std::string_view() const { return bytes_; } // NOLINT(google-explicit-constructor)

private:
    std::string bytes_;
};

/// A packet as it must go out.
std::string packetBytes(std::uint32_t operation, std::uint32_t packetId, std::string_view parameters);
/// A record of the simulator; the size is that of the body and the head.
std::string recordBytes(std::uint32_t id, std::string_view body);
