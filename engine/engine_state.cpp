// engine/engine_state.cpp
#include "engine/engine_state.h"

bool flareInProgress = false;
std::vector<std::uint32_t> twinCheckQueue;

namespace {

constexpr std::size_t usualTwinChecks = 256;

} // namespace

void resetEngineState() {
    flareInProgress = false;
    twinCheckQueue.clear();
    twinCheckQueue.reserve(usualTwinChecks);
}
