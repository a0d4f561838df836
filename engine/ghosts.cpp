// engine/ghosts.cpp
#include "engine/ghosts.h"

#include <algorithm>

#include "engine/aircraft_tables.h"

bool hasPlainTwin(std::string_view ghostCallsign) {
    if (!isGhostCallsign(ghostCallsign)) {
        return false;
    }
    const std::string_view plain = ghostCallsign.substr(0, ghostCallsign.size() - 1);
    return std::any_of(liveTable.begin(), liveTable.end(), [plain](const LiveAircraft& aircraft) {
        return aircraft.callsign == plain && aircraft.lifeState != LifeState::removingfromsim;
    });
}
