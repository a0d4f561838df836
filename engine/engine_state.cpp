// engine/engine_state.cpp
#include "engine/engine_state.h"

std::unordered_set<std::string, TextHash, std::equal_to<>> noLiveryKeys;
bool flareInProgress = false;
std::vector<std::uint32_t> twinCheckQueue;

namespace {

constexpr std::size_t usualTwinChecks = 256;

} // namespace

void resetEngineState() {
    noLiveryKeys.clear();
    flareInProgress = false;
    twinCheckQueue.clear();
    twinCheckQueue.reserve(usualTwinChecks);
}
