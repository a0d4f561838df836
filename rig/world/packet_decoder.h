// rig/world/packet_decoder.h
// Turns the bytes that a client sends over the wire into its requests.
// A PacketStream belongs to whoever reads the client's connection.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "rig/world/requests.h"

namespace rig {

/// One packet, whole. Nothing when it is malformed: another protocol version, an operation that does not exist,
/// parameters that are too short or too long for it.
std::optional<SentRequest> decodePacket(std::string_view packet);

class PacketStream {
public:
    /// Takes the next bytes, and appends the requests of the packets that have become whole. False from the first
    /// malformed packet on: what follows it means nothing any more.
    bool append(std::string_view bytes, std::vector<SentRequest>& requests);

private:
    bool takePacket(std::vector<SentRequest>& requests);

    std::string begun_; // what is not a whole packet yet
    bool sound_ = true;
};

} // namespace rig
