// engine/aircraft_log.cpp
#include "engine/aircraft_log.h"

#include <stdexcept>
#include <string>

#include <fmt/format.h>

#include "core/log.h"
#include "sim/object_queues.h"

namespace {

template <typename Enumeration>
std::string nameOrNumber(Enumeration value) {
    try {
        return printedName(value);
    } catch (const std::out_of_range&) {
        return std::to_string(static_cast<int>(value));
    }
}

} // namespace

void logFailure(std::string_view function, const std::exception& failure, const LiveAircraft& aircraft) {
    log(fmt::format("{}: {} {}, sz:{}, fs:{}, st:{}", function, failure.what(), longLine(aircraft),
                    aircraft.stream.size(), nameOrNumber(aircraft.phase), nameOrNumber(aircraft.lifeState)));
}

void removeSaying(LiveAircraft& aircraft, std::string_view reason) {
    if (aircraft.removeWhenAdded != 0) {
        return; // it goes already, as soon as its object is there
    }
    log(fmt::format("          {} goes: {}", longLine(aircraft), reason));
    removeAircraftFromSim(aircraft);
}
