// engine/engine_state.cpp
#include "engine/engine_state.h"

namespace {

std::vector<std::uint32_t> queueWithRoom() {
    std::vector<std::uint32_t> queue;
    queue.reserve(mostTwinChecks);
    return queue;
}

} // namespace

bool flareInProgress = false;
std::vector<std::uint32_t> twinCheckQueue = queueWithRoom();

void queueTwinCheck(std::uint32_t hexid) {
    // Moving so few entries costs nothing, and happens only when nobody serves the queue.
    if (twinCheckQueue.size() >= mostTwinChecks) {
        twinCheckQueue.erase(twinCheckQueue.begin());
    }
    twinCheckQueue.push_back(hexid);
}

void resetEngineState() {
    flareInProgress = false;
    twinCheckQueue.clear();
}
