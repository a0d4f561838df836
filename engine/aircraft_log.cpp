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

const char* whyLost(SamplesLostTo cause, const char* otherwise) {
    switch (cause) {
    case SamplesLostTo::creationQueue: return "too many others were to be created";
    case SamplesLostTo::takeOffOrLanding: return "it was not seen again after it took off or landed";
    case SamplesLostTo::missingStand: return "it stands, and there is no stand for it";
    case SamplesLostTo::otherInTheWay: return "its positions end where another one is in the way";
    case SamplesLostTo::longHolding: return "it held for too long";
    case SamplesLostTo::airborneOnly: return "its positions end, and only what is airborne is wanted";
    case SamplesLostTo::unwantedCategory: return "its positions end, and its category is not wanted";
    case SamplesLostTo::rangeEdge: return "its positions end at the edge of the range";
    case SamplesLostTo::nothing: break;
    }
    return otherwise;
}

void removeSaying(LiveAircraft& aircraft, std::string_view reason) {
    if (aircraft.removeWhenAdded != 0) {
        return; // it goes already, as soon as its object is there
    }
    log(fmt::format("          {} goes: {}", longLine(aircraft), reason));
    removeAircraftFromSim(aircraft);
}
