// What a slot of the engine costs with so many active airborne aircraft, while the feed brings 200 records a second:
// time, how the cost grows with the aircraft, and what it takes from the heap. No session is open, so nothing is sent;
// the positions are handed over as to a frame. Prints "name = value unit"; an argument prints only the figures whose
// names contain it.
#include <algorithm>
#include <chrono>
#include <cmath>
#include <mutex>
#include <string>
#include <vector>

#include <fmt/format.h>

#include "bench/measuring.h"
#include "core/injection_radius.h"
#include "core/log.h"
#include "core/slot_clock.h"
#include "engine/aircraft_tables.h"
#include "engine/angles.h"
#include "engine/slot.h"
#include "feed/sample_queue.h"
#include "liveries/aircraft_types.h"
#include "platform/clock.h"
#include "sim/sim_queues.h"
#include "tests/support/allocation_count.h"
#include "tests/support/circling_traffic.h"

using namespace std::chrono;

namespace {

constexpr double recordsPerSecond = 200;

/// One slot, and its length in microseconds; the feed's and the simulator's parts are not counted.
double slotUs(CirclingTraffic& traffic) {
    traffic.feed();
    const platform::SteadyTime begin = platform::steadyNow();
    lf_handleAddingStack();
    const double us = duration<double, std::micro>(platform::steadyNow() - begin).count();
    eventQueue.clear();
    return us;
}

struct Run {
    std::vector<double> us; ///< sorted
    std::size_t allocations = 0;
    std::size_t active = 0;

    double at(double share) const { return us[static_cast<std::size_t>(share * static_cast<double>(us.size() - 1))]; }
    /// Of the median slot, microseconds.
    double perAircraft() const { return at(0.5) / static_cast<double>(active); }
};

Run fly(int aircraft, int warmUpSlots, int slots) {
    CirclingTraffic traffic(aircraft, recordsPerSecond);
    traffic.takeOff();
    for (int i = 0; i < warmUpSlots; ++i) {
        slotUs(traffic);
    }
    Run run;
    run.us.reserve(static_cast<std::size_t>(slots));
    for (int i = 0; i < slots; ++i) {
        traffic.feed();
        const std::size_t before = allocationsOfThisThread();
        const platform::SteadyTime begin = platform::steadyNow();
        lf_handleAddingStack();
        run.us.push_back(duration<double, std::micro>(platform::steadyNow() - begin).count());
        run.allocations += allocationsOfThisThread() - before;
        eventQueue.clear();
    }
    std::sort(run.us.begin(), run.us.end());
    run.active =
        static_cast<std::size_t>(std::count_if(liveTable.begin(), liveTable.end(), [](const LiveAircraft& one) {
            return one.lifeState == LifeState::active;
        }));
    return run;
}

} // namespace

int main(int argc, char** argv) {
    const std::string filter = argc > 1 ? argv[1] : "";
    gCategoryTypes.large = {"A320"};

    // The stream of 500 aircraft, each with a record every 2.5 seconds, is as long as it ever gets after 30 seconds.
    const Run many = fly(500, 7000, 20000);
    print(filter, "slot.median_us_500", fmt::format("{:.2f} us", many.at(0.5)));
    print(filter, "slot.p999_ms_500", fmt::format("{:.4f} ms", many.at(0.999) / 1000));
    print(filter, "slot.allocations", fmt::format("{} allocations", many.allocations));
    print(filter, "slot.active_500", fmt::format("{} aircraft", many.active));

    // Of as many aircraft as there are: the feed's 200 records a second reach each of 50 every quarter of a second,
    // each of 500 every 2.5 seconds, each of 5000 every 25.
    const Run few = fly(50, 4000, 20000);
    const Run most = fly(5000, 4000, 4000);
    const double fewUs = few.perAircraft();
    const double manyUs = many.perAircraft();
    const double mostUs = most.perAircraft();
    print(filter, "slot.per_aircraft_50_us", fmt::format("{:.4f} us", fewUs));
    print(filter, "slot.per_aircraft_500_us", fmt::format("{:.4f} us", manyUs));
    print(filter, "slot.per_aircraft_5000_us", fmt::format("{:.4f} us", mostUs));
    print(filter, "slot.active_5000", fmt::format("{} aircraft", most.active));
    print(filter, "slot.per_aircraft_500_over_50", fmt::format("{:.2f} ratio", manyUs / fewUs));
    print(filter, "slot.per_aircraft_5000_over_50", fmt::format("{:.2f} ratio", mostUs / fewUs));
    return 0;
}
