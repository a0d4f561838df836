// engine/new_aircraft.cpp
#include "engine/new_aircraft.h"

#include <cmath>
#include <string>
#include <unordered_set>
#include <utility>

#include <fmt/format.h>

#include "core/log.h"
#include "core/parameters.h"
#include "core/slot_clock.h"
#include "core/text_hash.h"
#include "engine/aircraft_tables.h"
#include "engine/feed_filter.h"
#include "liveries/reference_tables.h"

namespace {

/// Types that are not shown, each of which is said once: the feed brings them with every record.
std::unordered_set<std::string, TextHash, std::equal_to<>> saidTypes;

void sayOnce(const std::string& model, const char* reason) {
    if (saidTypes.insert(model).second) {
        log(fmt::format("Aircraft of type '{}' are not shown: {}", model, reason));
    }
}

bool isModelWanted(const std::string& model) {
    if (!gAllTypes.contains(model)) {
        sayOnce(model, "the type is not known");
        return false;
    }
    if (!isCategoryWanted(gf_categoryOfType(model))) {
        sayOnce(model, "its category is switched off");
        return false;
    }
    return true;
}

double halfWingSpanOf(const std::string& model) {
    const double span = gf_wingspanOfType(model);
    return std::isfinite(span) ? span : MaxHalfWingspan;
}

LiveAircraft aircraftOf(FeedRecord&& record, std::string model) {
    LiveAircraft aircraft;
    aircraft.origin = std::move(record.origin);
    aircraft.destination = std::move(record.destination);
    aircraft.callsign = std::move(record.callsign);
    aircraft.flightCode1 = aircraft.callsign;
    aircraft.registration = std::move(record.registration);
    aircraft.hexid = record.hexid;
    aircraft.category = gf_categoryOfType(model);
    aircraft.halfWingSpan = halfWingSpanOf(model);
    aircraft.model = std::move(model);
    takeCategoryLimits(aircraft);
    aircraft.lastFeedTime = record.feedTime;
    aircraft.lastFeedSlot = slotClock;
    aircraft.stream.pushBack(record.sample);
    return aircraft;
}

} // namespace

std::string modelOf(const FeedRecord& record) {
    const std::optional<DbaseRecord> known = gf_findRegcodeRecord(record.registration);
    return known && !known->type.empty() ? std::string(known->type) : record.type;
}

void newAircraft(FeedRecord&& record) {
    std::string model = modelOf(record);
    if (isModelWanted(model) && !hangsOverRunway(record.sample.alt)) {
        liveTable.push_back(aircraftOf(std::move(record), std::move(model)));
    }
}

bool isCategoryWanted(AircraftCategory category) {
    switch (category) {
    case AircraftCategory::Light: return LIGHT_AIRCRAFT.value;
    case AircraftCategory::HighPerf: return HIGH_PERF_AIRCRAFT.value;
    case AircraftCategory::Rotorcraft: return HELICOPTERS.value;
    default: return true;
    }
}

void resetNewAircraft() {
    saidTypes.clear();
}
