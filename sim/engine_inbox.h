// sim/engine_inbox.h
// What the simulator's session has to tell the engine: it touches no aircraft table itself, but leaves a message here,
// which the engine's slot reads.
#pragma once

#include <cstddef>
#include <cstdint>
#include <mutex>
#include <vector>

enum class EngineMessageKind : std::int32_t {
    liveObjectExists = 0,   ///< objectId, id is the hexid, b the altitude above ground in feet
    staticObjectExists = 1, ///< objectId, id is the hexid
    objectRemoved = 2,      ///< objectId
    groundData =
        3, ///< objectId, id is whether it is on the ground, a the ground altitude, b the altitude above it; feet
    staticData = 4,      ///< objectId, a is "Static CG to Ground" in feet, b "Static Pitch" in radians
    blockAircraft = 5,   ///< id is the hexid
    creationRefused = 6, ///< id is the hexid
    tooManyObjects = 7,  ///< id is the hexid; its creation has failed for want of room
};

struct EngineMessage {
    std::uint32_t objectId = 0; ///< in the simulator
    std::uint32_t id = 0;
    std::int32_t counter = 0; ///< slots since the object exists; negative: done with
    EngineMessageKind kind = EngineMessageKind::liveObjectExists;
    double a = 0;
    double b = 0;
};

/// Guards engineInbox. Never taken by a thread that holds simLock.
extern std::mutex inboxLock;
extern std::vector<EngineMessage> engineInbox;

/// Appends one message. Any thread that does not hold simLock or inboxLock.
void pushEngineMessage(const EngineMessage& message);

/// Empty, with room for a busy second.
void resetEngineInbox();
