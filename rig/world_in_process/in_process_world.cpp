// rig/world_in_process/in_process_world.cpp
#include "rig/world_in_process/in_process_world.h"

#include <algorithm>
#include <cstring>
#include <map>
#include <memory>
#include <string_view>

#include "sim/transport/wire_format.h"

namespace rig {

namespace {

/// What a handle stands for. The session goes when the world does.
struct Client {
    std::unique_ptr<ClientSession> session;
    DWORD lastPacketId = 0;
    bool failed = false;
};

std::mutex frontLock;
World* theWorld = nullptr;                         // under frontLock
std::map<HANDLE, std::unique_ptr<Client>> clients; // under frontLock

Client* clientOf(HANDLE handle) {
    const auto found = clients.find(handle);
    return found == clients.end() ? nullptr : found->second.get();
}

/// Only once the client has seen its last records: a simulator that quits is there a little longer than its word.
void noteFailed(HANDLE handle) {
    const std::lock_guard guard(frontLock);
    if (Client* const client = clientOf(handle)) {
        client->failed = true;
    }
}

bool isWorking(const Client& client) {
    return client.session != nullptr && !client.failed;
}

/// Null and too long texts are refused as the client library over the wire does.
bool fits(const char* text, std::size_t maxBytes) {
    return text != nullptr && std::strlen(text) <= maxBytes;
}

constexpr std::size_t maxName = nameBytes - 1;
constexpr std::size_t maxPath = pathBytes - 1;

HRESULT send(HANDLE handle, Request request) {
    const std::lock_guard guard(frontLock);
    Client* client = clientOf(handle);
    if (client == nullptr) {
        return E_INVALIDARG;
    }
    if (!isWorking(*client)) {
        return E_FAIL;
    }
    client->session->receive(++client->lastPacketId, std::move(request));
    return S_OK;
}

/// The size field at the head of a record.
DWORD sizeOf(const std::string& records, std::size_t at) {
    DWORD size = 0;
    for (std::size_t i = 0; i < recordSizeBytes; ++i) {
        size |= DWORD{static_cast<unsigned char>(records[at + i])} << (8 * i);
    }
    return size;
}

void dispatchAll(const std::string& records, DispatchProc procedure, void* context) {
    std::vector<std::uint64_t> aligned; // procedures look at records as at structures
    for (std::size_t at = 0; at < records.size();) {
        const DWORD size = sizeOf(records, at);
        aligned.resize((size + sizeof(std::uint64_t) - 1) / sizeof(std::uint64_t));
        std::memcpy(aligned.data(), records.data() + at, size);
        procedure(reinterpret_cast<SIMCONNECT_RECV*>(aligned.data()), size, context);
        at += size;
    }
}

} // namespace

std::mutex& InProcessWorld::lock() {
    return frontLock;
}

InProcessWorld::InProcessWorld(Scene scene, AircraftTitles titles, TraceWriter* trace)
    : world_(std::move(scene), std::move(titles), trace) {
    const std::lock_guard guard(frontLock);
    theWorld = &world_;
}

InProcessWorld::~InProcessWorld() {
    const std::lock_guard guard(frontLock);
    theWorld = nullptr;
    for (auto& [handle, client] : clients) {
        client->session.reset();
    }
}

void InProcessWorld::step(double seconds) {
    const std::lock_guard guard(frontLock);
    world_.step(seconds);
}

void InProcessWorld::frames(int count) {
    for (int i = 0; i < count; ++i) {
        const std::lock_guard guard(frontLock);
        world_.step();
    }
}

} // namespace rig

using namespace rig;

HRESULT SimConnect_Open(HANDLE* handle, const char* name, HWND, DWORD, HANDLE, DWORD) {
    if (handle == nullptr) {
        return E_INVALIDARG;
    }
    *handle = nullptr;
    if (!fits(name, maxName)) {
        return E_INVALIDARG;
    }
    const std::lock_guard guard(frontLock);
    if (theWorld == nullptr || theWorld->hasQuit()) {
        return E_FAIL;
    }
    auto client = std::make_unique<Client>();
    client->session = std::make_unique<ClientSession>(*theWorld);
    client->session->receive(++client->lastPacketId, OpenRequest{name});
    *handle = client.get();
    clients.emplace(*handle, std::move(client));
    return S_OK;
}

HRESULT SimConnect_Close(HANDLE handle) {
    const std::lock_guard guard(frontLock);
    return clients.erase(handle) == 1 ? S_OK : E_INVALIDARG;
}

HRESULT SimConnect_CallDispatch(HANDLE handle, DispatchProc procedure, void* context) {
    ClientSession::Output output;
    bool works = false;
    {
        const std::lock_guard guard(frontLock);
        Client* client = clientOf(handle);
        if (client == nullptr || procedure == nullptr) {
            return E_INVALIDARG;
        }
        works = isWorking(*client);
        if (works) {
            output = client->session->takeOutput();
        }
    }
    dispatchAll(output.records, procedure, context);
    if (output.ends) {
        noteFailed(handle);
    }
    return works && !output.ends ? S_OK : E_FAIL;
}

HRESULT SimConnect_GetLastSentPacketID(HANDLE handle, DWORD* packetId) {
    const std::lock_guard guard(frontLock);
    const Client* client = clientOf(handle);
    if (client == nullptr || packetId == nullptr) {
        return E_INVALIDARG;
    }
    if (!isWorking(*client)) {
        return E_FAIL;
    }
    *packetId = client->lastPacketId;
    return S_OK;
}

HRESULT SimConnect_SubscribeToSystemEvent(HANDLE handle, DWORD eventId, const char* name) {
    return fits(name, maxName) ? send(handle, SubscribeRequest{eventId, name}) : E_INVALIDARG;
}

HRESULT SimConnect_MapClientEventToSimEvent(HANDLE handle, DWORD eventId, const char* name) {
    return fits(name, maxName) ? send(handle, MapClientEventRequest{eventId, name}) : E_INVALIDARG;
}

HRESULT SimConnect_AddClientEventToNotificationGroup(HANDLE handle, DWORD groupId, DWORD eventId,
                                                     std::int32_t maskable) {
    return send(handle, AddEventToGroupRequest{groupId, eventId, static_cast<DWORD>(maskable)});
}

HRESULT SimConnect_SetNotificationGroupPriority(HANDLE handle, DWORD groupId, DWORD priority) {
    return send(handle, GroupPriorityRequest{groupId, priority});
}

HRESULT SimConnect_TransmitClientEvent(HANDLE handle, DWORD objectId, DWORD eventId, DWORD data, DWORD groupId,
                                       DWORD flags) {
    return send(handle, TransmitClientEventRequest{objectId, eventId, data, groupId, flags});
}

HRESULT SimConnect_AddToDataDefinition(HANDLE handle, DWORD defineId, const char* datumName, const char* unitsName,
                                       DWORD datumType, float epsilon, DWORD datumId) {
    const char* units = unitsName == nullptr ? "" : unitsName;
    if (!fits(datumName, maxName) || !fits(units, maxName)) {
        return E_INVALIDARG;
    }
    return send(handle, AddToDefinitionRequest{defineId, datumName, units, datumType, epsilon, datumId});
}

HRESULT SimConnect_RequestDataOnSimObject(HANDLE handle, DWORD requestId, DWORD defineId, DWORD objectId, DWORD period,
                                          DWORD flags, DWORD origin, DWORD interval, DWORD limit) {
    return send(handle, ObjectDataRequest{requestId, defineId, objectId, period, flags, origin, interval, limit});
}

HRESULT SimConnect_RequestDataOnSimObjectType(HANDLE handle, DWORD requestId, DWORD defineId, DWORD radiusMeters,
                                              DWORD objectType) {
    return send(handle, DataByTypeRequest{requestId, defineId, radiusMeters, objectType});
}

HRESULT SimConnect_SetDataOnSimObject(HANDLE handle, DWORD defineId, DWORD objectId, DWORD flags, DWORD arrayCount,
                                      DWORD unitSize, void* data) {
    const std::uint64_t bytes = std::uint64_t{std::max(arrayCount, DWORD{1})} * unitSize;
    if (data == nullptr || bytes > maxPacketBytes) {
        return E_INVALIDARG;
    }
    return send(handle, SetDataRequest{defineId, objectId, flags, arrayCount, unitSize,
                                       std::string(static_cast<const char*>(data), bytes)});
}

HRESULT SimConnect_AICreateNonATCAircraft(HANDLE handle, const char* title, const char* tailNumber,
                                          SIMCONNECT_DATA_INITPOSITION initPosition, DWORD requestId) {
    if (!fits(title, maxName) || !fits(tailNumber, tailNumberBytes)) {
        return E_INVALIDARG;
    }
    return send(handle, CreateAircraftRequest{title, tailNumber, initPosition, requestId});
}

HRESULT SimConnect_AIReleaseControl(HANDLE handle, DWORD objectId, DWORD requestId) {
    return send(handle, ReleaseControlRequest{objectId, requestId});
}

HRESULT SimConnect_AIRemoveObject(HANDLE handle, DWORD objectId, DWORD requestId) {
    return send(handle, RemoveObjectRequest{objectId, requestId});
}

HRESULT SimConnect_AISetAircraftFlightPlan(HANDLE handle, DWORD objectId, const char* path, DWORD requestId) {
    return fits(path, maxPath) ? send(handle, FlightPlanRequest{objectId, path, requestId}) : E_INVALIDARG;
}
