// sim/object_data.cpp
#include "sim/object_data.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>

#include <fmt/format.h>

#include "core/log.h"
#include "core/program_info.h"
#include "feed/feed_record.h"
#include "platform/text_encoding.h"
#include "sim/engine_inbox.h"
#include "sim/sim_ids.h"
#include "sim/sim_queues.h"
#include "sim/simulator_link.h"
#include "sim/user_aircraft.h"
#include "sim/user_state.h"

std::vector<std::uint32_t> addedObjects;

namespace {

constexpr std::size_t string32Bytes = 32;
/// Above it an object has no business with the ground.
constexpr double groundInterestFeet = 2500;
/// Ends the ATC ID of objects that are none of ours.
constexpr char foreignMark = '*';

using Answer = SIMCONNECT_RECV_SIMOBJECT_DATA;

/// The data of definitionObjectInRange, in its order.
struct ObjectInRange {
    double altAboveGround = 0; ///<  0: feet
    double groundAltitude = 0; ///<  8: feet
    std::int64_t onGround = 0; ///< 16
    std::string atcId;         ///< 24: 32 characters
};

void logUnusable(const Answer& answer, RecordBytes data) {
    logError(fmt::format("SimConnect: answer {} with {} bytes of data is of no use", +answer.dwRequestID, data.size()));
}

void onStaticData(const Answer& answer, RecordBytes data) {
    RecordReader reader(data);
    const double cgToGround = reader.float64();
    const double pitch = reader.float64();
    if (!reader.isWhole() || !std::isfinite(cgToGround) || !std::isfinite(pitch)) {
        logUnusable(answer, data);
        return;
    }
    pushEngineMessage({answer.dwObjectID, 0, 0, EngineMessageKind::staticData, cgToGround, pitch});
}

void onTitleData(const Answer& answer, RecordBytes data) {
    if (data.empty()) {
        logUnusable(answer, data);
        return;
    }
    onUserTitle(textOfField(data));
}

void onModelData(const Answer& answer, RecordBytes data) {
    RecordReader reader(data);
    const std::string model = reader.text(string32Bytes);
    if (!reader.isWhole()) {
        logUnusable(answer, data);
        return;
    }
    onUserModel(model);
}

void onGroundData(const Answer& answer, RecordBytes data) {
    RecordReader reader(data);
    const std::int64_t onGround = reader.int64();
    if (!reader.isWhole()) {
        logUnusable(answer, data);
        return;
    }
    onUserOnGround(onGround != 0);
}

void onPositionData(const Answer& answer, RecordBytes data) {
    const std::optional<UserState> state = readUserState(data);
    if (!state) {
        logUnusable(answer, data);
        return;
    }
    onUserPosition(answer.dwObjectID, *state);
}

std::optional<ObjectInRange> readObjectInRange(RecordBytes data) {
    RecordReader reader(data);
    ObjectInRange object;
    object.altAboveGround = reader.float64();
    object.groundAltitude = reader.float64();
    object.onGround = reader.int64();
    object.atcId = reader.text(string32Bytes);
    if (!reader.isWhole() || !std::isfinite(object.altAboveGround) || !std::isfinite(object.groundAltitude)) {
        return std::nullopt;
    }
    return object;
}

/// Takes the creation that was sent with this tail number out of the sent list; its hexid.
std::optional<std::uint32_t> takeSentCreation(std::string_view tailNumber) {
    const std::lock_guard lock(simLock);
    const auto sent = std::find_if(sentList.begin(), sentList.end(), [tailNumber](const SentCreation& creation) {
        return creation.tailNumber == tailNumber;
    });
    if (sent == sentList.end()) {
        return std::nullopt;
    }
    const std::uint32_t hexid = sent->hexid;
    sentList.erase(sent); // the order stays, so that of two creations with one tail number the older is matched first
    return hexid;
}

/// The simulator is not to fly it: it goes where it is put. Whether the simulator takes the call.
bool takeControlOf(std::uint32_t objectId) {
    const std::lock_guard lock(simLock);
    for (const ClientEvent freeze : {eventFreezeLatLon, eventFreezeAltitude, eventFreezeAttitude}) {
        queueEventLocked(objectId, freeze, 1);
    }
    return !canSend() || SimConnect_AIReleaseControl(simHandle, objectId, requestRelease) >= 0;
}

void onNewObject(std::uint32_t objectId, const ObjectInRange& object) {
    const std::optional<std::uint32_t> hexid = takeSentCreation(object.atcId);
    if (!hexid) {
        log(fmt::format("just spawned, but not by {}, oid: {}, callsign '{}', altaboveGnd:{:.0f} ft, onground:{}, "
                        "gnd_alt:{:.0f} ft",
                        programName, objectId, platform::readableText(object.atcId), object.altAboveGround,
                        object.onGround, object.groundAltitude));
        return;
    }
    if (!takeControlOf(objectId)) {
        requestFailed();
    }
    if (*hexid > highestStaticHexid) {
        pushEngineMessage({objectId, *hexid, 0, EngineMessageKind::liveObjectExists, 0, object.altAboveGround});
    } else {
        pushEngineMessage({objectId, *hexid, 0, EngineMessageKind::staticObjectExists, 0, 0});
    }
}

void onKnownObject(std::uint32_t objectId, const ObjectInRange& object) {
    if (object.altAboveGround > groundInterestFeet || object.atcId.empty() || object.atcId.back() == foreignMark) {
        return;
    }
    const auto onGround = static_cast<std::uint32_t>(object.onGround != 0);
    pushEngineMessage(
        {objectId, onGround, 0, EngineMessageKind::groundData, object.groundAltitude, object.altAboveGround});
}

} // namespace

bool takeAddedObject(std::uint32_t objectId) {
    const auto added = std::find(addedObjects.begin(), addedObjects.end(), objectId);
    if (added == addedObjects.end()) {
        return false;
    }
    *added = addedObjects.back();
    addedObjects.pop_back();
    return true;
}

void onObjectData(const SIMCONNECT_RECV_SIMOBJECT_DATA& answer, RecordBytes data) {
    switch (answer.dwRequestID) {
    case requestStaticData: onStaticData(answer, data); break;
    case requestTitle: onTitleData(answer, data); break;
    case requestModel: onModelData(answer, data); break;
    case requestOnGround: onGroundData(answer, data); break;
    case requestPosition: onPositionData(answer, data); break;
    default: break;
    }
}

void onObjectDataByType(const SIMCONNECT_RECV_SIMOBJECT_DATA_BYTYPE& answer, RecordBytes data) {
    // A request that finds nothing is answered too, without data.
    if (answer.dwRequestID != requestInRange || answer.dwObjectID <= userObjectId || data.empty()) {
        return;
    }
    const std::optional<ObjectInRange> object = readObjectInRange(data);
    if (!object) {
        logUnusable(answer, data);
        return;
    }
    if (takeAddedObject(answer.dwObjectID)) {
        onNewObject(answer.dwObjectID, *object);
    } else {
        onKnownObject(answer.dwObjectID, *object);
    }
}

void resetObjectData() {
    addedObjects.clear();
}
