// sim/transport/simconnect_client.cpp
// The client of the simulator: the calls of sim/simconnect.h over a connection of our own, where the vendor's own
// library is not linked in.
//
// SimConnect.cfg names one way to the simulator. When that one fails, the open call fails: there is no falling back to
// another. Calls do not wait for the simulator: packets are queued and go out in the background, and the open record
// tells that it has taken the client in. The simulator's window ("FS98MAIN") is not looked for and the window of the
// open call gets no messages: records are fetched with SimConnect_CallDispatch, and the event object of the open call,
// if any, is set when some have arrived.
#include <algorithm>
#include <cstdint>
#include <exception>
#include <memory>
#include <span>

#include "sim/simconnect.h"
#include "sim/transport/configuration.h"
#include "sim/transport/connection.h"
#include "sim/transport/packet_writer.h"
#include "sim/transport/wire_format.h"

namespace {

Connection* connectionOf(HANDLE handle) {
    return static_cast<Connection*>(handle);
}

template <typename Write>
HRESULT send(HANDLE handle, Operation operation, Write write) {
    return handle == nullptr ? E_INVALIDARG : connectionOf(handle)->send(operation, write);
}

template <typename... Values>
HRESULT sendNumbers(HANDLE handle, Operation operation, Values... values) {
    return send(handle, operation, [=](PacketWriter& packet) { (packet.dword(static_cast<DWORD>(values)), ...); });
}

void putText(PacketWriter& packet, const char* text, std::size_t fieldBytes) {
    if (text == nullptr) {
        packet.refuse();
        return;
    }
    packet.terminatedText(text, fieldBytes);
}

/// All of its twelve characters may be used, so that no zero ends it.
void putTailNumber(PacketWriter& packet, const char* text) {
    if (text == nullptr) {
        packet.refuse();
        return;
    }
    packet.text(text, tailNumberBytes);
}

void putPosition(PacketWriter& packet, const SIMCONNECT_DATA_INITPOSITION& position) {
    packet.float64(position.Latitude);
    packet.float64(position.Longitude);
    packet.float64(position.Altitude);
    packet.float64(position.Pitch);
    packet.float64(position.Bank);
    packet.float64(position.Heading);
    packet.dword(position.OnGround);
    packet.dword(position.Airspeed);
}

HRESULT sendOpen(Connection& connection, const char* name) {
    return connection.send(Operation::open, [&](PacketWriter& packet) {
        putText(packet, name, nameBytes);
        packet.dword(0);
        packet.bytes(openSignature);
        for (const std::uint32_t part : clientVersion) {
            packet.dword(part);
        }
    });
}

} // namespace

HRESULT SimConnect_Open(HANDLE* handle, const char* name, HWND, DWORD, HANDLE event, DWORD configIndex) {
    if (handle == nullptr) {
        return E_INVALIDARG;
    }
    *handle = nullptr;
    try {
        std::unique_ptr<Connection> connection = Connection::open(readSettings(configIndex), event);
        if (!connection) {
            return E_FAIL;
        }
        // Queued before anything can arrive: a peer that closes at once fails the calls that come later, and not by
        // chance this one.
        if (const HRESULT result = sendOpen(*connection, name); result < 0) {
            return result;
        }
        if (!connection->start()) {
            return E_FAIL;
        }
        *handle = connection.release();
        return S_OK;
    } catch (const std::exception&) {
        return E_FAIL; // no memory or no thread left: as good as no simulator
    }
}

HRESULT SimConnect_Close(HANDLE handle) {
    if (handle == nullptr) {
        return E_INVALIDARG;
    }
    const std::unique_ptr<Connection> closed(connectionOf(handle));
    return S_OK;
}

HRESULT SimConnect_CallDispatch(HANDLE handle, DispatchProc procedure, void* context) {
    if (handle == nullptr || procedure == nullptr) {
        return E_INVALIDARG;
    }
    return connectionOf(handle)->dispatch(procedure, context);
}

HRESULT SimConnect_GetLastSentPacketID(HANDLE handle, DWORD* packetId) {
    if (handle == nullptr || packetId == nullptr) {
        return E_INVALIDARG;
    }
    return connectionOf(handle)->lastPacketId(*packetId);
}

HRESULT SimConnect_SubscribeToSystemEvent(HANDLE handle, DWORD eventId, const char* name) {
    return send(handle, Operation::subscribeToSystemEvent, [&](PacketWriter& packet) {
        packet.dword(eventId);
        putText(packet, name, nameBytes);
    });
}

HRESULT SimConnect_MapClientEventToSimEvent(HANDLE handle, DWORD eventId, const char* name) {
    return send(handle, Operation::mapClientEvent, [&](PacketWriter& packet) {
        packet.dword(eventId);
        putText(packet, name, nameBytes);
    });
}

HRESULT SimConnect_AddClientEventToNotificationGroup(HANDLE handle, DWORD groupId, DWORD eventId,
                                                     std::int32_t maskable) {
    return sendNumbers(handle, Operation::addEventToNotificationGroup, groupId, eventId, maskable);
}

HRESULT SimConnect_SetNotificationGroupPriority(HANDLE handle, DWORD groupId, DWORD priority) {
    return sendNumbers(handle, Operation::setNotificationGroupPriority, groupId, priority);
}

HRESULT SimConnect_TransmitClientEvent(HANDLE handle, DWORD objectId, DWORD eventId, DWORD data, DWORD groupId,
                                       DWORD flags) {
    return sendNumbers(handle, Operation::transmitClientEvent, objectId, eventId, data, groupId, flags);
}

HRESULT SimConnect_AddToDataDefinition(HANDLE handle, DWORD defineId, const char* datumName, const char* unitsName,
                                       DWORD datumType, float epsilon, DWORD datumId) {
    return send(handle, Operation::addToDataDefinition, [&](PacketWriter& packet) {
        packet.dword(defineId);
        putText(packet, datumName, nameBytes);
        putText(packet, unitsName == nullptr ? "" : unitsName, nameBytes);
        packet.dword(datumType);
        packet.float32(epsilon);
        packet.dword(datumId);
    });
}

HRESULT SimConnect_RequestDataOnSimObject(HANDLE handle, DWORD requestId, DWORD defineId, DWORD objectId, DWORD period,
                                          DWORD flags, DWORD origin, DWORD interval, DWORD limit) {
    return sendNumbers(handle, Operation::requestDataOnObject, requestId, defineId, objectId, period, flags, origin,
                       interval, limit);
}

HRESULT SimConnect_RequestDataOnSimObjectType(HANDLE handle, DWORD requestId, DWORD defineId, DWORD radiusMeters,
                                              DWORD objectType) {
    return sendNumbers(handle, Operation::requestDataOnObjectType, requestId, defineId, radiusMeters, objectType);
}

HRESULT SimConnect_SetDataOnSimObject(HANDLE handle, DWORD defineId, DWORD objectId, DWORD flags, DWORD arrayCount,
                                      DWORD unitSize, void* data) {
    if (data == nullptr) {
        return E_INVALIDARG;
    }
    const DWORD elements = std::max(arrayCount, DWORD{1});
    return send(handle, Operation::setDataOnObject, [&](PacketWriter& packet) {
        packet.dword(defineId);
        packet.dword(objectId);
        packet.dword(flags);
        packet.dword(elements);
        packet.dword(unitSize);
        packet.bytes(std::span(static_cast<const char*>(data), std::size_t{elements} * unitSize));
    });
}

HRESULT SimConnect_AICreateNonATCAircraft(HANDLE handle, const char* title, const char* tailNumber,
                                          SIMCONNECT_DATA_INITPOSITION initPosition, DWORD requestId) {
    return send(handle, Operation::createNonAtcAircraft, [&](PacketWriter& packet) {
        putText(packet, title, nameBytes);
        putTailNumber(packet, tailNumber);
        putPosition(packet, initPosition);
        packet.dword(requestId);
    });
}

HRESULT SimConnect_AIReleaseControl(HANDLE handle, DWORD objectId, DWORD requestId) {
    return sendNumbers(handle, Operation::releaseControl, objectId, requestId);
}

HRESULT SimConnect_AIRemoveObject(HANDLE handle, DWORD objectId, DWORD requestId) {
    return sendNumbers(handle, Operation::removeObject, objectId, requestId);
}

HRESULT SimConnect_AISetAircraftFlightPlan(HANDLE handle, DWORD objectId, const char* path, DWORD requestId) {
    return send(handle, Operation::setAircraftFlightPlan, [&](PacketWriter& packet) {
        packet.dword(objectId);
        putText(packet, path, pathBytes);
        packet.dword(requestId);
    });
}
