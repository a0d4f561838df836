// What a slot of the engine costs with so many active airborne aircraft, while the feed brings 200 records a second: time,
// how the cost grows with the aircraft, and what it takes from the heap. No session is open, so nothing is sent; the positions
// are handed over as to a frame.
// Prints "name = value unit"; an argument prints only the figures whose names contain it.
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

using namespace std::chrono;

namespace {

constexpr std::uint32_t firstHexid = 20000;
constexpr std::uint32_t firstObject = 100;
constexpr double knots = 400;
constexpr std::int32_t firstSlot = 10000;
constexpr std::int32_t delaySlots = 3000;
constexpr int recordsPerSlot = 2;

/// The real aircraft, each on a circle of its own, from which the feed's records are taken.
class RealTraffic {
public:
    explicit RealTraffic(int count) : count_(count) {}

    Sample at(int aircraft, double seconds) const {
        const double phase = aircraft * 0.7;
        const double angle = phase + seconds * turnRadPerSecond;
        Sample sample;
        sample.lat = 40 + aircraft % 50 * 0.2 + radiusDegrees * std::cos(angle);
        const int row = aircraft / 50;
        sample.lon = 5 + row * 0.2 + radiusDegrees * std::sin(angle) / std::cos(sample.lat * radiansPerDegree);
        sample.alt = 20000 + 100 * (aircraft % 100);
        sample.airborne = 1;
        sample.gs = sample.tas = knots;
        sample.track = std::fmod((angle + 1.5707963) * degreesPerRadian, 360);
        return sample;
    }

    /// Two records, each of the next aircraft in turn.
    void feed() {
        const double seconds = (slotClock - firstSlot) / 100.0;
        const std::lock_guard lock(gTrafficMutex);
        for (int i = 0; i < recordsPerSlot; ++i) {
            FeedRecord record;
            record.type = "A320";
            record.origin = "AMS";
            record.destination = "LHR";
            record.callsign = callsign(next_);
            record.registration = "PH-ABC";
            record.sample = at(next_, seconds);
            record.sample.slot = slotClock + delaySlots;
            record.feedTime = seconds;
            record.hexid = firstHexid + static_cast<std::uint32_t>(next_);
            gLiveSampleQueue.push(std::move(record));
            next_ = (next_ + 1) % count_;
        }
    }

    static std::string callsign(int aircraft) { return fmt::format("KLM{}", aircraft); }

    /// Active, at the begin of its circle, with samples for the first 30 seconds.
    LiveAircraft flying(int aircraft) const {
        LiveAircraft flying;
        flying.callsign = callsign(aircraft);
        flying.registration = "PH-ABC";
        flying.origin = "AMS";
        flying.destination = "LHR";
        flying.airline = "KLM";
        flying.model = "A320";
        takeCategoryLimits(flying);
        flying.hexid = firstHexid + static_cast<std::uint32_t>(aircraft);
        flying.objectId = firstObject + static_cast<std::uint32_t>(aircraft);
        flying.lifeState = LifeState::active;
        flying.phase = FlightPhase::flying;
        flying.lightsHighSet = 1;
        flying.lastFeedTime = -1;
        // The legs of the aircraft begin at different slots.
        constexpr int legs = 11;
        for (int leg = -1; leg < legs - 1; ++leg) {
            const double seconds = 3.0 * leg + 3.0 * aircraft / count_;
            Sample sample = at(aircraft, seconds - 30);
            sample.slot = firstSlot + static_cast<std::int32_t>(seconds * 100);
            flying.stream.pushBack(sample);
        }
        flying.lat = flying.stream[0].lat;
        flying.lon = flying.stream[0].lon;
        flying.alt = flying.stream[0].alt;
        return flying;
    }

    int count() const { return count_; }

private:
    static constexpr double turnRadPerSecond = 0.01;
    static constexpr double radiusDegrees = knots / 3600 / turnRadPerSecond / 60;

    int count_;
    int next_ = 0;
};

void takeOff(const RealTraffic& traffic) {
    resetEngine();
    gLiveSampleQueue.clear();
    slotClock = firstSlot;
    gRadiusNm = 10000;
    for (int i = 0; i < traffic.count(); ++i) {
        liveTable.push_back(traffic.flying(i));
    }
}

/// One slot, and its length in microseconds; the feed's and the simulator's parts are not counted.
double slotUs(RealTraffic& traffic) {
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
    double mean() const {
        double sum = 0;
        for (const double value : us) {
            sum += value;
        }
        return sum / static_cast<double>(us.size());
    }
};

Run fly(int aircraft, int warmUpSlots, int slots) {
    RealTraffic traffic(aircraft);
    takeOff(traffic);
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

    // Of as many aircraft as there are: with 5000 the feed's 200 records a second reach each of them every 25 seconds.
    const Run few = fly(50, 4000, 20000);
    const Run most = fly(5000, 4000, 4000);
    const double fewUs = few.at(0.5) / static_cast<double>(few.active);
    const double mostUs = most.at(0.5) / static_cast<double>(most.active);
    print(filter, "slot.per_aircraft_50_us", fmt::format("{:.4f} us", fewUs));
    print(filter, "slot.per_aircraft_5000_us", fmt::format("{:.4f} us", mostUs));
    print(filter, "slot.active_5000", fmt::format("{} aircraft", most.active));
    print(filter, "slot.per_aircraft_5000_over_50", fmt::format("{:.2f} ratio", mostUs / fewUs));
    return 0;
}
