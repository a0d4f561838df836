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
    // Its aircraft has been there the longest, and is the likeliest to have gone. Moving so few entries costs nothing.
    if (twinCheckQueue.size() >= mostTwinChecks) {
        twinCheckQueue.erase(twinCheckQueue.begin());
    }
    twinCheckQueue.push_back(hexid);
}

void resetEngineState() {
    flareInProgress = false;
    twinCheckQueue.clear();
    twinCheckQueue.reserve(mostTwinChecks);
}
