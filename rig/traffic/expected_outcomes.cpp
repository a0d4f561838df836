// rig/traffic/expected_outcomes.cpp
#include "rig/traffic/expected_outcomes.h"

#include <mutex>
#include <optional>
#include <ostream>
#include <stdexcept>
#include <utility>

#include <fmt/format.h>

#include "core/injection_radius.h"
#include "feed/sample_queue.h"
#include "rig/traffic/gzip_text.h"

namespace rig {

namespace {

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

void compare(const OutcomeCounts& counted, const OutcomeCounts& expected) {
    if (counted != expected) {
        throw std::runtime_error(
            fmt::format("the program counted otherwise: {} instead of {}", textOf(counted), textOf(expected)));
    }
}

} // namespace

OutcomeCounts outcomesFromLog(std::string_view log) {
    constexpr std::string_view mark = "Traffic lines: ";
    std::optional<OutcomeCounts> last;
    for (const std::string_view line : linesOf(log)) {
        if (line.starts_with(mark)) {
            last = outcomeCountsFrom(line.substr(mark.size()));
        }
    }
    if (!last) {
        throw std::runtime_error("the log does not say what became of the traffic lines");
    }
    return *last;
}

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
    for (const auto& [outcome, count] : counts) {
        out << fmt::format("{} {}\n", nameOf(outcome), count);
    }
    if (!options.log.empty()) {
        compare(outcomesFromLog(readText(options.log)), counts);
        out << "the program counted the same\n";
    }
}

} // namespace rig
