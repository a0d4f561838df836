// sim/controls.cpp
#include "sim/controls.h"

#include <mutex>

#include "core/log.h"
#include "sim/sim_ids.h"
#include "sim/sim_queues.h"
#include "sim/simulator_link.h"

namespace {

// By index; 16383 is the whole way.
constexpr std::array<std::uint32_t, 5> flapsValues{0, 3072, 10240, 16383, 0};
constexpr std::array<std::uint32_t, 5> throttleValues{0, 4914, 8191, 11468, 16383};

constexpr std::array<ClientEvent, lightCount> lightEvents{eventNavLights,  eventBeaconLights, eventLandingLights,
                                                          eventTaxiLights, eventStrobes,      eventLogoLights,
                                                          eventCabinLights};

/// Nothing for an index outside the table.
template <typename Table>
const std::uint32_t* valueAt(const Table& values, std::int32_t index) {
    const auto place = static_cast<std::uint32_t>(index);
    return place < values.size() ? &values[place] : nullptr;
}

bool isRotorcraft(const LiveAircraft& aircraft) {
    return aircraft.category == AircraftCategory::Rotorcraft;
}

} // namespace

void gf_setFlaps(LiveAircraft& aircraft, std::int32_t index) {
    if (aircraft.flapsIndex == index || isRotorcraft(aircraft)) {
        return;
    }
    aircraft.flapsIndex = index;
    if (const std::uint32_t* value = valueAt(flapsValues, index)) {
        queueEvent(aircraft.objectId, eventFlaps, *value);
    } else {
        logError("gf_setFlaps: invalid flaps index");
    }
}

void gf_setThrottle(LiveAircraft& aircraft, std::int32_t index) {
    if (aircraft.throttleIndex == index) {
        return;
    }
    aircraft.throttleIndex = index;
    if (const std::uint32_t* value = valueAt(throttleValues, index)) {
        queueEvent(aircraft.objectId, eventThrottle, *value);
    }
}

void gf_setSpoilers(const LiveAircraft& aircraft, Spoilers spoilers) {
    if (!isRotorcraft(aircraft)) {
        queueEvent(aircraft.objectId, eventSpoilers, static_cast<std::uint32_t>(spoilers));
    }
}

void gf_setGear(const LiveAircraft& aircraft, Gear gear) {
    if (!isRotorcraft(aircraft)) {
        queueEvent(aircraft.objectId, eventGear, static_cast<std::uint32_t>(gear));
    }
}

void gf_startEngines(std::uint32_t objectId) {
    queueEvent(objectId, eventEngineStart, 0);
}

void gf_stopEngines(std::uint32_t objectId) {
    queueEvent(objectId, eventEngineShutdown, 0);
}

void gf_setLights(std::uint32_t objectId, const LightSet& lights) {
    const std::lock_guard lock(simLock);
    for (std::size_t light = 0; light < lightCount; ++light) {
        queueEventLocked(objectId, lightEvents[light], lights[light]);
    }
}

void gf_setNavLights(std::uint32_t objectId, std::uint32_t value) {
    queueEvent(objectId, eventNavLights, value);
}

void gf_setCabinLights(std::uint32_t objectId, std::uint32_t value) {
    queueEvent(objectId, eventCabinLights, value);
}
