// sim/sim_queues.cpp
#include "sim/sim_queues.h"

#include <cstddef>
#include <mutex>

#include "sim/simulator_link.h"

std::vector<PositionUpdate> positionFront;
std::vector<PositionUpdate> positionBack;
std::vector<SimEventRequest> eventQueue;
std::vector<CreateRequest> createRequests;
std::vector<std::uint32_t> removeRequests;
std::vector<SentCreation> sentList;

namespace {

constexpr std::size_t queueRoom = 256;
/// The most live aircraft that the user can ask for are 500, and their positions are appended without allocating.
constexpr std::size_t positionRoom = 512;

template <typename Queue>
void empty(Queue& queue, std::size_t room = queueRoom) {
    queue.clear();
    queue.reserve(room);
}

} // namespace

void queueEvent(std::uint32_t objectId, std::uint32_t eventId, std::uint32_t value) {
    const std::lock_guard lock(simLock);
    queueEventLocked(objectId, eventId, value);
}

void queueEventLocked(std::uint32_t objectId, std::uint32_t eventId, std::uint32_t value) {
    eventQueue.push_back({objectId, eventId, value});
}

void resetSimQueues() {
    const std::lock_guard lock(simLock);
    empty(positionFront, positionRoom);
    empty(positionBack, positionRoom);
    empty(eventQueue);
    empty(createRequests);
    empty(removeRequests);
    empty(sentList);
}
