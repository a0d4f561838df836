// sim/sim_queues.h
// What waits to be sent to the simulator with its next frame, and what was sent and is not answered yet. All of it is
// under simLock, but for positionFront, which is the engine thread's until it is swapped.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "sim/simconnect.h"

/// The block of definitionAiPosition, in its order, and the object that it is for.
struct PositionUpdate {
    static constexpr DWORD blockBytes = 64;

    double lat = 0;     ///< degrees
    double lon = 0;     ///< degrees
    double pitch = 0;   ///< radians, negative is nose up
    double bank = 0;    ///< radians
    double heading = 0; ///< radians
    double alt = 0;     ///< feet
    double vsFps = 0;   ///< feet per second
    double tas = 0;     ///< knots
    std::uint32_t objectId = 0;
};

struct SimEventRequest {
    std::uint32_t objectId = 0;
    std::uint32_t eventId = 0; ///< a ClientEvent
    std::uint32_t value = 0;
};

struct CreateRequest {
    // The simulator's initial position, in its order.
    double lat = 0;             ///< degrees
    double lon = 0;             ///< degrees
    double alt = 0;             ///< feet
    double pitch = 0;           ///< degrees
    double bank = 0;            ///< degrees
    double heading = 0;         ///< degrees
    std::uint32_t onGround = 0; ///< 1 on the ground
    std::uint32_t airspeed = 0; ///< always 0

    std::string tailNumber; ///< the call sign, by which the new object is known again
    std::string_view title; ///< into the livery table
    std::uint32_t hexid = 0;
};

struct SentCreation {
    std::uint32_t packetId = 0; ///< 0 when the simulator's library could not tell it
    std::uint32_t hexid = 0;
    std::string tailNumber;
};

extern std::vector<PositionUpdate> positionFront; ///< written by the engine thread in a slot
extern std::vector<PositionUpdate> positionBack;  ///< sent by the frame
extern std::vector<SimEventRequest> eventQueue;
extern std::vector<CreateRequest> createRequests;
extern std::vector<std::uint32_t> removeRequests; ///< object ids
extern std::vector<SentCreation> sentList;

/// Appends an event under simLock.
void queueEvent(std::uint32_t objectId, std::uint32_t eventId, std::uint32_t value);
/// For a caller that holds simLock.
void queueEventLocked(std::uint32_t objectId, std::uint32_t eventId, std::uint32_t value);

/// Everything empty, with room for 256 each, and for 512 positions.
void resetSimQueues();
