// rig/traffic/expected_outcomes.cpp
#include "rig/traffic/expected_outcomes.h"

#include <array>
#include <mutex>
#include <ostream>
#include <utility>

#include <fmt/format.h>

#include "core/injection_radius.h"
#include "feed/sample_queue.h"

namespace rig {

namespace {

struct OutcomeName {
    LineOutcome outcome;
    const char* name;
};

constexpr std::array<OutcomeName, 12> outcomeNames{{
    {LineOutcome::accepted, "accepted"},
    {LineOutcome::groundVehicle, "ground vehicle"},
    {LineOutcome::doesNotParse, "does not parse"},
    {LineOutcome::outOfRange, "out of range"},
    {LineOutcome::registrationTooLong, "registration too long"},
    {LineOutcome::unwantedKind, "unwanted kind"},
    {LineOutcome::hexidTooLow, "identity too low"},
    {LineOutcome::notAirborneEnough, "not airborne enough"},
    {LineOutcome::unwantedCallSign, "unwanted call sign"},
    {LineOutcome::nameless, "neither call sign nor registration"},
    {LineOutcome::groundNotWanted, "on the ground elsewhere"},
    {LineOutcome::refused, "refused"},
}};

/// The queue takes records, and is as empty as it was.
class OpenQueue {
public:
    OpenQueue() : accepted_(set(true)) {}
    ~OpenQueue() {
        const std::lock_guard lock(gTrafficMutex);
        gLiveSampleQueue.clear();
        gAcceptSamples = accepted_;
    }
    OpenQueue(const OpenQueue&) = delete;
    OpenQueue& operator=(const OpenQueue&) = delete;

private:
    static bool set(bool accept) {
        const std::lock_guard lock(gTrafficMutex);
        return std::exchange(gAcceptSamples, accept);
    }

    bool accepted_;
};

} // namespace

OutcomeCounts expectedOutcomes(const Recording& recording, const TrafficSurroundings& around, int radiusNm) {
    const OpenQueue queue;
    gf_setInjectionRadius(radiusNm);
    TrafficReader reader;
    reader.setUserLatLon(around.userLatLon);
    reader.setParkingAirport(around.parkingAirport);
    if (around.hasReferenceElevation) {
        reader.setReferenceElevation(around.referenceElevation);
    }
    OutcomeCounts counts;
    for (const RecordedRow& row : recording.rows) {
        if (row.kind == DatagramKind::traffic) {
            ++counts[reader.processLine(row.text)];
        }
    }
    return counts;
}

void countOutcomes(const CountOptions& options, std::ostream& out) {
    TrafficSurroundings around;
    around.userLatLon = options.user;
    if (options.userAirportCounts) {
        around.parkingAirport = ParkingAirport{options.user, options.elevationFt};
        around.hasReferenceElevation = true;
        around.referenceElevation = options.elevationFt;
    }
    const OutcomeCounts counts = expectedOutcomes(loadRecording(options.recording), around, options.radiusNm);
    for (const auto& [outcome, name] : outcomeNames) {
        if (const auto found = counts.find(outcome); found != counts.end()) {
            out << fmt::format("{} {}\n", name, found->second);
        }
    }
}

} // namespace rig
