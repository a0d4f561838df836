// sim/transport/wire_format.h
// What the simulator's connection carries, byte for byte: everything that a correction of the protocol would touch.
// Constants: usable from any thread.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

// Towards the simulator: packets. A head, then the call's parameters in their order. Numbers are little-endian.

enum class Operation : std::uint32_t {
    open = 0x01,
    mapClientEvent = 0x04,
    transmitClientEvent = 0x05,
    addEventToNotificationGroup = 0x07,
    setNotificationGroupPriority = 0x09,
    addToDataDefinition = 0x0C,
    requestDataOnObject = 0x0E,
    requestDataOnObjectType = 0x0F,
    setDataOnObject = 0x10,
    subscribeToSystemEvent = 0x17,
    createNonAtcAircraft = 0x29,
    releaseControl = 0x2B,
    removeObject = 0x2C,
    setAircraftFlightPlan = 0x2D,
};

// The packet head:          offset  size
//   size with the head           0     4
//   protocol version             4     4
//   mark and operation           8     4
//   packet id                   12     4   counted up by one, the first is 1
inline constexpr std::size_t packetHeadBytes = 16;
inline constexpr std::uint32_t protocolVersion = 4;
inline constexpr std::uint32_t operationMark = 0xF0000000;

// Texts have fixed sizes, filled with zeros.
inline constexpr std::size_t nameBytes = 256; ///< client, event, datum, unit and title
inline constexpr std::size_t tailNumberBytes = 12;
inline constexpr std::size_t pathBytes = 260;

// The open packet: the client's name, a zero, the signature, the version.
inline constexpr std::array<char, 4> openSignature{'\0', 'X', 'S', 'F'};
inline constexpr std::array<std::uint32_t, 4> clientVersion{10, 0, 61259, 0};

// Towards the client: records. A head of size, version and id; the size counts the head.
inline constexpr std::size_t recordHeadBytes = 12;
inline constexpr std::size_t recordSizeBytes = 4;

/// The largest packet that this client sends, and the largest record that it takes if its settings allow no more.
inline constexpr std::size_t maxPacketBytes = 65536;
inline constexpr std::size_t builtInReceiveLimit = 65536;
