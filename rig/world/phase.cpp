// rig/world/phase.cpp
#include "rig/world/phase.h"

#include <cmath>

namespace rig {

namespace {

constexpr double standingKnots = 0.5;
constexpr double fastestTaxiKnots = 40;
constexpr double levelFeetPerSecond = 5;

} // namespace

std::string_view phaseText(const WorldObject& object, double groundFeet) {
    const Position& position = object.position;
    if (isOnGround(object, groundFeet)) {
        if (position.trueKnots < standingKnots) {
            return object.controls.enginesRun ? "standing" : "parked";
        }
        return position.trueKnots <= fastestTaxiKnots ? "taxi" : "runway";
    }
    if (std::abs(position.verticalFeetPerSecond) <= levelFeetPerSecond) {
        return "level";
    }
    return position.verticalFeetPerSecond > 0 ? "climb" : "descent";
}

std::string_view stateText(const World& world) {
    if (world.hasQuit()) {
        return "quit";
    }
    if (world.isStalled()) {
        return "stalled";
    }
    return world.isRunning() ? "running" : "paused";
}

} // namespace rig
