// rig/world/requests.h
// What a client asks of the simulated world, decoded: one record per call of the interface, fields in the call's order.
// Value types without state: usable from any thread.
#pragma once

#include <cstdint>
#include <string>
#include <variant>

#include "sim/simconnect.h"

namespace rig {

struct OpenRequest {
    std::string clientName;
};
struct MapClientEventRequest {
    DWORD eventId = 0;
    std::string name;
};
struct TransmitClientEventRequest {
    DWORD objectId = 0;
    DWORD eventId = 0;
    DWORD data = 0;
    DWORD groupId = 0;
    DWORD flags = 0;
};
struct AddEventToGroupRequest {
    DWORD groupId = 0;
    DWORD eventId = 0;
    DWORD maskable = 0;
};
struct GroupPriorityRequest {
    DWORD groupId = 0;
    DWORD priority = 0;
};
struct AddToDefinitionRequest {
    DWORD defineId = 0;
    std::string datumName;
    std::string unitsName; ///< may be empty
    DWORD datumType = 0;
    float epsilon = 0;
    DWORD datumId = 0;
};
struct ObjectDataRequest {
    DWORD requestId = 0;
    DWORD defineId = 0;
    DWORD objectId = 0;
    DWORD period = 0;
    DWORD flags = 0;
    DWORD origin = 0;
    DWORD interval = 0;
    DWORD limit = 0;
};
struct DataByTypeRequest {
    DWORD requestId = 0;
    DWORD defineId = 0;
    DWORD radiusMeters = 0;
    DWORD objectType = 0;
};
struct SetDataRequest {
    DWORD defineId = 0;
    DWORD objectId = 0;
    DWORD flags = 0;
    DWORD arrayCount = 0; ///< 0 means one
    DWORD unitSize = 0;
    std::string data;
};
struct SubscribeRequest {
    DWORD eventId = 0;
    std::string name;
};
struct CreateAircraftRequest {
    std::string title;
    std::string tailNumber;
    SIMCONNECT_DATA_INITPOSITION position{};
    DWORD requestId = 0;
};
struct ReleaseControlRequest {
    DWORD objectId = 0;
    DWORD requestId = 0;
};
struct RemoveObjectRequest {
    DWORD objectId = 0;
    DWORD requestId = 0;
};
struct FlightPlanRequest {
    DWORD objectId = 0;
    std::string path;
    DWORD requestId = 0;
};

using Request = std::variant<OpenRequest, MapClientEventRequest, TransmitClientEventRequest, AddEventToGroupRequest,
                             GroupPriorityRequest, AddToDefinitionRequest, ObjectDataRequest, DataByTypeRequest,
                             SetDataRequest, SubscribeRequest, CreateAircraftRequest, ReleaseControlRequest,
                             RemoveObjectRequest, FlightPlanRequest>;

struct SentRequest {
    DWORD packetId = 0;
    Request request;
};

} // namespace rig
