// rig/world/packet_decoder.cpp
#include "rig/world/packet_decoder.h"

#include <algorithm>
#include <bit>
#include <utility>

#include "sim/transport/wire_format.h"

namespace rig {

namespace {

std::uint64_t littleEndian(std::string_view bytes) {
    std::uint64_t value = 0;
    for (std::size_t i = 0; i < bytes.size(); ++i) {
        value |= std::uint64_t{static_cast<unsigned char>(bytes[i])} << (8 * i);
    }
    return value;
}

/// Reads values one after the other. What is not there is zero or empty, and the packet is not sound then.
class PacketReader {
public:
    explicit PacketReader(std::string_view bytes) : left_(bytes) {}

    std::string_view bytes(std::size_t count) {
        if (left_.size() < count) {
            sound_ = false;
            return {};
        }
        const std::string_view taken = left_.substr(0, count);
        left_.remove_prefix(count);
        return taken;
    }
    DWORD dword() { return static_cast<DWORD>(littleEndian(bytes(sizeof(DWORD)))); }
    float float32() { return std::bit_cast<float>(dword()); }
    double float64() { return std::bit_cast<double>(littleEndian(bytes(sizeof(double)))); }
    /// Up to the first zero of the field.
    std::string text(std::size_t fieldBytes) {
        const std::string_view field = bytes(fieldBytes);
        return std::string(field.substr(0, field.find('\0')));
    }
    std::string rest() { return std::string(bytes(left_.size())); }

    bool sound() const { return sound_; }
    bool atEnd() const { return sound_ && left_.empty(); }

private:
    std::string_view left_;
    bool sound_ = true;
};

// Braces evaluate from left to right, so that the fields are read in the order of the packet.

Request readOpen(PacketReader& packet) {
    OpenRequest request{packet.text(nameBytes)};
    packet.dword();
    packet.bytes(openSignature.size());
    packet.bytes(sizeof clientVersion);
    return request;
}

Request readMapClientEvent(PacketReader& packet) {
    return MapClientEventRequest{packet.dword(), packet.text(nameBytes)};
}

Request readTransmitClientEvent(PacketReader& packet) {
    return TransmitClientEventRequest{packet.dword(), packet.dword(), packet.dword(), packet.dword(), packet.dword()};
}

Request readAddEventToGroup(PacketReader& packet) {
    return AddEventToGroupRequest{packet.dword(), packet.dword(), packet.dword()};
}

Request readGroupPriority(PacketReader& packet) {
    return GroupPriorityRequest{packet.dword(), packet.dword()};
}

Request readAddToDefinition(PacketReader& packet) {
    return AddToDefinitionRequest{packet.dword(), packet.text(nameBytes), packet.text(nameBytes),
                                  packet.dword(), packet.float32(),       packet.dword()};
}

Request readObjectData(PacketReader& packet) {
    return ObjectDataRequest{packet.dword(), packet.dword(), packet.dword(), packet.dword(),
                             packet.dword(), packet.dword(), packet.dword(), packet.dword()};
}

Request readDataByType(PacketReader& packet) {
    return DataByTypeRequest{packet.dword(), packet.dword(), packet.dword(), packet.dword()};
}

Request readSetData(PacketReader& packet) {
    return SetDataRequest{packet.dword(), packet.dword(), packet.dword(),
                          packet.dword(), packet.dword(), packet.rest()};
}

Request readSubscribe(PacketReader& packet) {
    return SubscribeRequest{packet.dword(), packet.text(nameBytes)};
}

SIMCONNECT_DATA_INITPOSITION readPosition(PacketReader& packet) {
    return {packet.float64(), packet.float64(), packet.float64(), packet.float64(),
            packet.float64(), packet.float64(), packet.dword(),   packet.dword()};
}

Request readCreateAircraft(PacketReader& packet) {
    return CreateAircraftRequest{packet.text(nameBytes), packet.text(tailNumberBytes), readPosition(packet),
                                 packet.dword()};
}

Request readReleaseControl(PacketReader& packet) {
    return ReleaseControlRequest{packet.dword(), packet.dword()};
}

Request readRemoveObject(PacketReader& packet) {
    return RemoveObjectRequest{packet.dword(), packet.dword()};
}

Request readFlightPlan(PacketReader& packet) {
    return FlightPlanRequest{packet.dword(), packet.text(pathBytes), packet.dword()};
}

struct OperationReader {
    Operation operation;
    Request (*read)(PacketReader& packet);
};

constexpr OperationReader operationReaders[] = {
    {Operation::open, readOpen},
    {Operation::mapClientEvent, readMapClientEvent},
    {Operation::transmitClientEvent, readTransmitClientEvent},
    {Operation::addEventToNotificationGroup, readAddEventToGroup},
    {Operation::setNotificationGroupPriority, readGroupPriority},
    {Operation::addToDataDefinition, readAddToDefinition},
    {Operation::requestDataOnObject, readObjectData},
    {Operation::requestDataOnObjectType, readDataByType},
    {Operation::setDataOnObject, readSetData},
    {Operation::subscribeToSystemEvent, readSubscribe},
    {Operation::createNonAtcAircraft, readCreateAircraft},
    {Operation::releaseControl, readReleaseControl},
    {Operation::removeObject, readRemoveObject},
    {Operation::setAircraftFlightPlan, readFlightPlan},
};

const OperationReader* readerOf(DWORD markedOperation) {
    for (const OperationReader& reader : operationReaders) {
        if ((operationMark | static_cast<DWORD>(reader.operation)) == markedOperation) {
            return &reader;
        }
    }
    return nullptr;
}

} // namespace

std::optional<SentRequest> decodePacket(std::string_view packet) {
    PacketReader reader(packet);
    const DWORD size = reader.dword();
    const DWORD version = reader.dword();
    const OperationReader* operation = readerOf(reader.dword());
    const DWORD packetId = reader.dword();
    if (!reader.sound() || size != packet.size() || version != protocolVersion || operation == nullptr) {
        return std::nullopt;
    }
    SentRequest sent{packetId, operation->read(reader)};
    return reader.atEnd() ? std::optional(std::move(sent)) : std::nullopt;
}

bool PacketStream::append(std::string_view bytes, std::vector<SentRequest>& requests) {
    constexpr std::size_t sizeBytes = sizeof(DWORD);
    while (sound_ && !bytes.empty()) {
        const bool sizeKnown = begun_.size() >= sizeBytes;
        const std::size_t wanted = sizeKnown ? littleEndian({begun_.data(), sizeBytes}) : sizeBytes;
        const std::size_t taken = std::min(wanted - begun_.size(), bytes.size());
        begun_.append(bytes.substr(0, taken));
        bytes.remove_prefix(taken);
        if (begun_.size() == wanted) {
            sound_ = sizeKnown ? takePacket(requests)
                               : littleEndian(begun_) >= packetHeadBytes && littleEndian(begun_) <= maxPacketBytes;
        }
    }
    return sound_;
}

bool PacketStream::takePacket(std::vector<SentRequest>& requests) {
    std::optional<SentRequest> sent = decodePacket(begun_);
    begun_.clear();
    if (!sent) {
        return false;
    }
    requests.push_back(std::move(*sent));
    return true;
}

} // namespace rig
