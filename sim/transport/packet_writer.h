// sim/transport/packet_writer.h
// Puts the packets of the simulator's calls together, in one buffer that all packets of a connection share.
// A writer belongs to whoever holds the connection's send lock.
#pragma once

#include <array>
#include <cstdint>
#include <span>
#include <string_view>

#include "sim/transport/wire_format.h"

/// begin() starts a packet; the values follow in their order. What does not fit makes the whole packet invalid.
class PacketWriter {
public:
    void begin(Operation operation, std::uint32_t packetId);

    void dword(std::uint32_t value);
    void float32(float value);
    void float64(double value);
    /// A text field of this size. A text that is longer than the field makes the packet invalid.
    void text(std::string_view value, std::size_t fieldBytes);
    /// The same, with room for a zero behind the text.
    void terminatedText(std::string_view value, std::size_t fieldBytes);
    void bytes(std::span<const char> value);

    /// Makes the packet invalid.
    void refuse() { valid_ = false; }

    bool valid() const { return valid_; }
    /// The packet with its size in its head; stands until the next begin().
    std::string_view packet();

private:
    char* room(std::size_t size);

    std::array<char, maxPacketBytes> buffer_{};
    std::size_t size_ = 0;
    bool valid_ = true;
};
