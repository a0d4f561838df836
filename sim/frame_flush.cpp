// sim/frame_flush.cpp
#include "sim/frame_flush.h"

#include <cstddef>
#include <mutex>
#include <string>
#include <vector>

#include <fmt/format.h>

#include "core/log.h"
#include "core/run_flags.h"
#include "sim/engine_inbox.h"
#include "sim/sim_ids.h"
#include "sim/sim_queues.h"
#include "sim/simulator_link.h"
#include "sim/user_state.h"
#include "window/window_state.h"

namespace {

static_assert(offsetof(PositionUpdate, objectId) == PositionUpdate::blockBytes, "the block is sent as it lies there");

/// What went wrong while simLock was held; log, window and engine are told of it afterwards.
struct FlushFailures {
    std::vector<std::uint32_t> events; // ids
    std::vector<std::string> lines;
    std::vector<std::uint32_t> userObjects;
    std::vector<std::uint32_t> refusedHexids;
    bool request = false;
};

void report(const FlushFailures& failures) {
    for (const std::uint32_t eventId : failures.events) {
        showMessage(fmt::format("SimConnect TransmitClientEvent: {} fails", eventId), LogCopy::yes);
    }
    for (const std::string& line : failures.lines) {
        log(line);
    }
    for (const std::uint32_t objectId : failures.userObjects) {
        logError(fmt::format("SimConnect call to remove ac with objectid {}", objectId));
    }
    for (const std::uint32_t hexid : failures.refusedHexids) {
        pushEngineMessage({0, hexid, 0, EngineMessageKind::creationRefused, 0, 0});
    }
    if (failures.request) {
        requestFailed();
    }
}

/// A failure needs no word here: the next frame brings a newer position, and the dispatch tells when the connection is
/// gone.
void sendPositions() {
    const std::uint32_t user = userObjectId;
    for (PositionUpdate& update : positionBack) {
        if (update.objectId > user) {
            SimConnect_SetDataOnSimObject(simHandle, definitionAiPosition, update.objectId, 0, 0,
                                          PositionUpdate::blockBytes, &update);
        }
    }
}

void releaseControl(std::uint32_t objectId) {
    SimConnect_AIReleaseControl(simHandle, objectId, requestRelease);
}

/// The simulator's own pilot takes an object back when its flaps move, so it is released on both sides of that event.
void sendEvent(const SimEventRequest& event, FlushFailures& failures) {
    const bool movesFlaps = event.eventId == eventFlaps;
    if (movesFlaps) {
        releaseControl(event.objectId);
    }
    if (SimConnect_TransmitClientEvent(simHandle, event.objectId, event.eventId, event.value, notificationGroup, 0) <
        0) {
        failures.events.push_back(event.eventId);
        return;
    }
    if (movesFlaps) {
        releaseControl(event.objectId);
    }
}

SIMCONNECT_DATA_INITPOSITION initialPosition(const CreateRequest& request) {
    return {request.lat,  request.lon,     request.alt,      request.pitch,
            request.bank, request.heading, request.onGround, request.airspeed};
}

/// 0 when it cannot be told.
DWORD lastSentPacketId(FlushFailures& failures) {
    DWORD packetId = 0;
    if (SimConnect_GetLastSentPacketID(simHandle, &packetId) < 0) {
        failures.lines.emplace_back("GetLastSentPacketID");
        return 0;
    }
    return packetId;
}

void sendCreation(const CreateRequest& request, FlushFailures& failures) {
    // As it is sent: the new object is known again by it.
    const std::string tailNumber = request.tailNumber.substr(0, request.tailNumber.find('\0'));
    const HRESULT result = SimConnect_AICreateNonATCAircraft(
        simHandle, std::string(request.title).c_str(), tailNumber.c_str(), initialPosition(request), requestCreate);
    if (result >= 0) {
        sentList.push_back({lastSentPacketId(failures), request.hexid, tailNumber});
        return;
    }
    failures.lines.push_back(fmt::format("! Simcon call to create ac in sim failed, hexid:{}, liv: '{}', callsign: {})",
                                         request.hexid, request.title, request.tailNumber));
    if (result == E_INVALIDARG) {
        // A text that the call cannot carry says nothing about the connection: it costs this aircraft alone.
        failures.refusedHexids.push_back(request.hexid);
    } else {
        failures.request = true;
    }
}

void sendRemoval(std::uint32_t objectId, FlushFailures& failures) {
    if (objectId <= userObjectId) {
        failures.userObjects.push_back(objectId);
        return;
    }
    if (SimConnect_AIRemoveObject(simHandle, objectId, requestRemove) < 0) {
        failures.lines.push_back(
            fmt::format("{} !SimConnect call to remove AI ac from sim failed, id {}?", clockNow(), objectId));
        failures.request = true;
    }
}

/// All sending stops with the first request that fails.
template <typename Queue, typename Send>
void sendEach(const Queue& queue, Send send, FlushFailures& failures) {
    for (const auto& element : queue) {
        if (simFailed || failures.request) {
            return;
        }
        send(element, failures);
    }
}

void sendAll(FlushFailures& failures) {
    sendPositions();
    sendEach(eventQueue, sendEvent, failures);
    sendEach(createRequests, sendCreation, failures);
    sendEach(removeRequests, sendRemoval, failures);
}

void emptyQueues() {
    positionBack.clear();
    eventQueue.clear();
    createRequests.clear();
    removeRequests.clear();
}

} // namespace

void appendPosition(const LiveAircraft& aircraft) {
    positionFront.push_back({aircraft.lat, aircraft.lon, aircraft.pitch, aircraft.bank, aircraft.heading, aircraft.alt,
                             aircraft.vsFps, aircraft.tas, aircraft.objectId});
}

void swapPositions() {
    if (const std::unique_lock lock(simLock, std::try_to_lock); lock) {
        positionFront.swap(positionBack);
    }
    positionFront.clear();
}

void dropPositions() {
    const std::lock_guard lock(simLock);
    positionFront.clear();
    positionBack.clear();
}

void flushFrame() {
    FlushFailures failures;
    {
        const std::unique_lock lock(simLock, std::try_to_lock);
        if (!lock) {
            return;
        }
        if (!simFailed) {
            sendAll(failures);
        }
        emptyQueues();
    }
    report(failures);
}
