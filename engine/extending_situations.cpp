// engine/extending_situations.cpp
#include "engine/extending_situations.h"

#include <cmath>

#include "core/slot_clock.h"
#include "engine/angles.h"
#include "engine/extension.h"
#include "engine/sample_decoding.h"

namespace {

constexpr double behindRad = 100 * radiansPerDegree;

bool liesBehind(const LiveAircraft& aircraft, const Sample& sample) {
    const Sample& last = aircraft.stream[aircraft.stream.size() - 1];
    return std::abs(headingDifference(bearing(positionOf(last), positionOf(sample)), aircraft.heading)) >= behindRad;
}

} // namespace

bool checkExtendingSituations(LiveAircraft& aircraft, Sample& sample) {
    Sample* head = aircraft.stream.firstOrLog("checkExtendingSituations");
    if (head == nullptr || !positionFilter(aircraft, sample)) {
        return false;
    }
    if (aircraft.extensions <= 0) {
        return true;
    }
    if (aircraft.onGround == 0 && liesBehind(aircraft, sample)) {
        return false;
    }
    endExtension(aircraft);
    head->slot = slotClock + 1;
    endHolding(aircraft);
    return true;
}
