// The evenness of the 10 ms grid: the run loop with an empty slot for a minute, and how late its ticks come.
#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdio>
#include <string>
#include <thread>
#include <vector>

#include "core/exit_reason.h"
#include "core/run/run_loop.h"
#include "core/run_flags.h"
#include "platform/clock.h"
#include "platform/timer_resolution.h"

using namespace std::chrono;

namespace {

constexpr int ticksPerMinute = 6000;

/// Keeps one core busy while it lives.
class BusyCore {
public:
    BusyCore() = default;
    BusyCore(const BusyCore&) = delete;
    BusyCore& operator=(const BusyCore&) = delete;
    ~BusyCore() {
        stop_ = true;
        thread_.join();
    }

private:
    std::atomic<bool> stop_{false};
    std::thread thread_{[this] {
        while (!stop_) {
        }
    }};
};

/// The lateness of each tick against the grid that the first one begins, milliseconds, sorted.
std::vector<double> latenessOfTicks() {
    std::vector<platform::SteadyTime> ticks;
    ticks.reserve(ticksPerMinute);
    gf_runTicks([&] {
        ticks.push_back(platform::steadyNow());
        return ticks.size() < ticksPerMinute && gf_tickStep();
    });
    std::vector<double> lateness;
    platform::SteadyTime due = ticks.front();
    for (const platform::SteadyTime tick : ticks) {
        lateness.push_back(duration<double, std::milli>(tick - due).count());
        due += tickLength;
    }
    std::sort(lateness.begin(), lateness.end());
    return lateness;
}

void print(const std::string& prefix) {
    const std::vector<double> lateness = latenessOfTicks();
    const auto at = [&](double share) { return lateness[static_cast<std::size_t>(share * (ticksPerMinute - 1))]; };
    std::printf("%s_median_ms = %.3f ms\n", prefix.c_str(), at(0.5));
    std::printf("%s_p99_ms = %.3f ms\n", prefix.c_str(), at(0.99));
    std::printf("%s_worst_ms = %.3f ms\n", prefix.c_str(), at(1.0));
    std::fflush(stdout);
}

} // namespace

/// Two minutes long, so it runs only when its figures are named.
int main(int count, char** arguments) {
    const std::string filter = count > 1 ? arguments[1] : "";
    if (filter.rfind("tick", 0) != 0) {
        return 0;
    }
    simRunning = true;
    if (filter.find("busy") == std::string::npos) {
        print("tick.lateness");
    }
    if (filter.rfind("tick.lateness", 0) != 0) {
        const BusyCore busy;
        print("tick.busy_lateness");
    }
    return 0;
}
