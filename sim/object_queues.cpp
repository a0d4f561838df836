// sim/object_queues.cpp
#include "sim/object_queues.h"

#include <algorithm>
#include <mutex>
#include <utility>
#include <vector>

#include <fmt/format.h>

#include "core/log.h"
#include "engine/aircraft_tables.h"
#include "sim/simulator_link.h"

std::deque<CreateRequest> liveCreateQueue;
std::deque<CreateRequest> staticCreateQueue;
std::deque<std::uint32_t> removalQueue;

namespace {

constexpr std::int32_t slotsPerRemoval = 10;
constexpr std::int32_t slotsPerCreation = 50;
// What a second may bring. While the frames stand no more piles up, or the first one after a stall would send it all.
constexpr std::size_t mostRemovalsToFrame = 10;
constexpr std::size_t mostCreationsToFrame = 2;

/// By hexid: a live aircraft and its static twin may have the same call sign.
bool withdraw(std::deque<CreateRequest>& queue, const AircraftRecord& aircraft) {
    const auto found = std::find_if(queue.begin(), queue.end(), [&aircraft](const CreateRequest& request) {
        return request.hexid == aircraft.hexid;
    });
    if (found == queue.end()) {
        return false;
    }
    queue.erase(found);
    return true;
}

/// What was not asked for yet need not be: an object would come into being only to be removed.
bool withdrawFromStack(const AircraftRecord& aircraft) {
    return std::erase(addingStack, aircraft.hexid) != 0;
}

void cancelCreation(AircraftRecord& aircraft) {
    if (withdrawFromStack(aircraft) || withdraw(liveCreateQueue, aircraft) || withdraw(staticCreateQueue, aircraft)) {
        aircraft.dropRecordQueued = 1;
    } else {
        aircraft.removeWhenAdded = 1;
    }
}

void queueRemoval(const AircraftRecord& aircraft) {
    if (aircraft.objectId == 0) {
        log(fmt::format("{} removing act {}, with objectid=0 ?", "removeAircraftFromSim", shortLine(aircraft)));
        return;
    }
    removalQueue.push_back(aircraft.objectId);
}

/// Whether there was one.
template <typename Element>
bool handOnFirst(std::deque<Element>& queue, std::vector<Element>& toFrame, std::size_t mostToFrame) {
    if (queue.empty()) {
        return false;
    }
    const std::lock_guard lock(simLock);
    if (toFrame.size() < mostToFrame) {
        toFrame.push_back(std::move(queue.front()));
        queue.pop_front();
    }
    return true;
}

} // namespace

void removeAircraftFromSim(AircraftRecord& aircraft) {
    if (aircraft.lifeState == LifeState::buffer) {
        aircraft.dropRecord = 1;
        return;
    }
    if (aircraft.removeWhenAdded != 0) {
        return;
    }
    if (aircraft.lifeState == LifeState::adding2sim) {
        cancelCreation(aircraft);
        return;
    }
    // In "liveryrespawn" and "removingfromsim" the object's removal is queued already.
    const bool wasActive = aircraft.lifeState == LifeState::active;
    aircraft.lifeState = LifeState::removingfromsim;
    if (wasActive) {
        queueRemoval(aircraft);
    }
}

void stepObjectQueues(std::int32_t slot) {
    if (slot % slotsPerRemoval == 0) {
        handOnRemoval();
    }
    if (slot % slotsPerCreation == 0 && !handOnFirst(liveCreateQueue, createRequests, mostCreationsToFrame)) {
        handOnFirst(staticCreateQueue, createRequests, mostCreationsToFrame);
    }
}

void handOnRemoval() {
    handOnFirst(removalQueue, removeRequests, mostRemovalsToFrame);
}

void resetObjectQueues() {
    liveCreateQueue.clear();
    staticCreateQueue.clear();
    removalQueue.clear();
}
