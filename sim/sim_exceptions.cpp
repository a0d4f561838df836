// sim/sim_exceptions.cpp
#include "sim/sim_exceptions.h"

#include <algorithm>
#include <cstdint>
#include <mutex>
#include <utility>

#include <fmt/format.h>

#include "core/exit_reason.h"
#include "core/log.h"
#include "core/user_error.h"
#include "sim/engine_inbox.h"
#include "sim/sim_queues.h"
#include "sim/simulator_link.h"
#include "sim/user_state.h"
#include "window/window_state.h"

namespace {

constexpr int versionMismatch = 95;

/// While the simulator goes up or down it does not know its own objects.
void onUnrecognizedId() {
    if (isPosition(positionOf(userStateNow())) && !gf_isStopping()) {
        logError("SIMCONNECT_EXCEPTION_UNRECOGNIZED_ID");
    }
}

/// Takes the creation with this packet id out of the sent list; its hexid, 0 when there is none.
std::uint32_t takeRefusedCreation(DWORD packetId) {
    const std::lock_guard lock(simLock);
    const auto sent = std::find_if(sentList.begin(), sentList.end(), [packetId](const SentCreation& creation) {
        return packetId != 0 && creation.packetId == packetId;
    });
    if (sent == sentList.end()) {
        return 0;
    }
    std::swap(*sent, sentList.back());
    const std::uint32_t hexid = sentList.back().hexid;
    sentList.pop_back();
    return hexid;
}

void onCreationRefused(DWORD packetId, EngineMessageKind kind) {
    if (const std::uint32_t hexid = takeRefusedCreation(packetId); hexid != 0) {
        pushEngineMessage({0, hexid, 0, kind, 0, 0});
    }
}

} // namespace

void onSimException(const SIMCONNECT_RECV_EXCEPTION& exception) {
    switch (exception.dwException) {
    case SIMCONNECT_EXCEPTION_UNRECOGNIZED_ID: onUnrecognizedId(); break;
    case SIMCONNECT_EXCEPTION_VERSION_MISMATCH:
        throw kvd::UserErrorException(versionMismatch,
                                      fmt::format("SimConnect Version Mismatch, dwIndex: {}", +exception.dwIndex));
    case SIMCONNECT_EXCEPTION_TOO_MANY_OBJECTS:
        showMessage("SimConnect: too many objects (max 1000)", LogCopy::yes);
        onCreationRefused(exception.dwSendID, EngineMessageKind::tooManyObjects);
        break;
    case SIMCONNECT_EXCEPTION_INVALID_DATA_SIZE: log("SIMCONNECT_EXCEPTION_INVALID_DATA_SIZE"); break;
    case SIMCONNECT_EXCEPTION_CREATE_OBJECT_FAILED:
        onCreationRefused(exception.dwSendID, EngineMessageKind::creationRefused);
        break;
    case SIMCONNECT_EXCEPTION_LOAD_FLIGHTPLAN_FAILED: logError("SimConnect exception: load flight plan failed"); break;
    case SIMCONNECT_EXCEPTION_OPERATION_INVALID_FOR_OBJECT_TYPE:
        log("SIMCONNECT_EXCEPTION_OPERATION_INVALID_FOR_OBJECT_TYPE");
        break;
    default: logError(fmt::format("SIMCONNECT_EXCEPTION #{}", +exception.dwException)); break;
    }
}
