// sim/dispatch.cpp
#include "sim/dispatch.h"

#include <cstddef>
#include <exception>
#include <optional>

#include <fmt/format.h>

#include "core/log.h"
#include "core/run_flags.h"
#include "sim/check_simulator.h"
#include "sim/engine_inbox.h"
#include "sim/frame_flush.h"
#include "sim/object_data.h"
#include "sim/record_reader.h"
#include "sim/sim_exceptions.h"
#include "sim/sim_ids.h"
#include "sim/simulator_link.h"
#include "sim/stand_requests.h"
#include "sim/user_state.h"
#include "window/window_state.h"

namespace {

constexpr DWORD simRuns = 1;
/// A kind of record that the program never asks for and the simulator sends all the same.
constexpr DWORD unaskedRecord = 16;

void onSimState(bool running) {
    showSimFlightRunning(running); // first, for who waits for the other looks at the window then
    simRunning = running;
}

void onQuit() {
    onSimState(false);
    simulatorGone();
}

void onEvent(const SIMCONNECT_RECV_EVENT& event) {
    switch (event.uEventID) {
    case eventSim: onSimState(event.dwData == simRuns); break;
    case eventPositionChanged:
        logError("User ac position changed");
        newFlightBegins();
        break;
    case eventFlightLoaded:
        log("SimConnect: flight loaded event");
        refreshClosestStand();
        newFlightBegins();
        break;
    default: break;
    }
}

void onObjectAddedOrRemoved(const SIMCONNECT_RECV_EVENT_OBJECT_ADDREMOVE& event) {
    if (event.eObjType != SIMCONNECT_SIMOBJECT_TYPE_AIRCRAFT) {
        return;
    }
    const DWORD objectId = event.dwData;
    if (event.uEventID == eventObjectAdded && objectId > userObjectId) {
        addedObjects.push_back(objectId);
    } else if (event.uEventID == eventObjectRemoved) {
        takeAddedObject(objectId);
        pushEngineMessage({objectId, 0, 0, EngineMessageKind::objectRemoved, 0, 0});
    }
}

void onFileName(const SIMCONNECT_RECV_EVENT_FILENAME&) {
    logError("SimConnect: New file event");
    refreshClosestStand();
    newFlightBegins();
}

void onFrame(const SIMCONNECT_RECV_EVENT_FRAME&) {
    flushFrame();
}

void logTooShort(DWORD id, RecordBytes bytes) {
    logError(fmt::format("SimConnect: record {} of {} bytes is too short", id, bytes.size()));
}

template <typename Record>
void handle(RecordBytes bytes, void (*handler)(const Record&)) {
    if (const std::optional<Record> record = recordFrom<Record>(bytes)) {
        handler(*record);
    } else {
        logTooShort(recordFrom<SIMCONNECT_RECV>(bytes)->dwID, bytes);
    }
}

using DataHandler = void (*)(const SIMCONNECT_RECV_SIMOBJECT_DATA& answer, RecordBytes data);

void handleData(RecordBytes bytes, DataHandler handler) {
    if (const auto answer = recordFrom<SIMCONNECT_RECV_SIMOBJECT_DATA>(bytes)) {
        handler(*answer, bytes.subspan(sizeof *answer));
    } else {
        logTooShort(recordFrom<SIMCONNECT_RECV>(bytes)->dwID, bytes);
    }
}

void dispatchWithHead(const SIMCONNECT_RECV& head, RecordBytes bytes) {
    switch (head.dwID) {
    case SIMCONNECT_RECV_ID_EXCEPTION: handle<SIMCONNECT_RECV_EXCEPTION>(bytes, onSimException); break;
    case SIMCONNECT_RECV_ID_OPEN: handle<SIMCONNECT_RECV_OPEN>(bytes, checkSimulator); break;
    case SIMCONNECT_RECV_ID_QUIT: onQuit(); break;
    case SIMCONNECT_RECV_ID_EVENT: handle<SIMCONNECT_RECV_EVENT>(bytes, onEvent); break;
    case SIMCONNECT_RECV_ID_EVENT_OBJECT_ADDREMOVE:
        handle<SIMCONNECT_RECV_EVENT_OBJECT_ADDREMOVE>(bytes, onObjectAddedOrRemoved);
        break;
    case SIMCONNECT_RECV_ID_EVENT_FILENAME: handle<SIMCONNECT_RECV_EVENT_FILENAME>(bytes, onFileName); break;
    case SIMCONNECT_RECV_ID_EVENT_FRAME: handle<SIMCONNECT_RECV_EVENT_FRAME>(bytes, onFrame); break;
    case SIMCONNECT_RECV_ID_SIMOBJECT_DATA: handleData(bytes, onObjectData); break;
    case SIMCONNECT_RECV_ID_SIMOBJECT_DATA_BYTYPE: handleData(bytes, onObjectDataByType); break;
    case SIMCONNECT_RECV_ID_ASSIGNED_OBJECT_ID:
    case unaskedRecord: break;
    default: log(fmt::format("! Unknown Dispatch dwID {}", +head.dwID)); break;
    }
}

} // namespace

void dispatchRecord(const SIMCONNECT_RECV* record, DWORD bytes) {
    if (record == nullptr) {
        return;
    }
    const RecordBytes all(reinterpret_cast<const std::byte*>(record), bytes);
    if (const auto head = recordFrom<SIMCONNECT_RECV>(all)) {
        dispatchWithHead(*head, all);
    } else {
        logError(fmt::format("SimConnect: record of {} bytes is too short", bytes));
    }
}

void dispatchProcedure(SIMCONNECT_RECV* record, DWORD bytes, void* failure) {
    std::exception_ptr& kept = *static_cast<std::exception_ptr*>(failure);
    if (kept) {
        return;
    }
    try {
        dispatchRecord(record, bytes);
    } catch (...) {
        kept = std::current_exception();
    }
}
