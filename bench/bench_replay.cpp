// How fast the engine flies a recording in the simulated world: an hour with 100 aircraft at a time, from the files to
// the finished trace. And what a day with 60 aircraft at a time leaves in memory, which takes minutes and is done only
// when the filter begins with "replay.day". Prints "name = value unit"; an argument prints only the figures whose names
// contain it.
#include <chrono>
#include <cstdio>
#include <filesystem>
#include <iostream>
#include <ostream>
#include <random>
#include <streambuf>
#include <string>
#include <utility>

#include <fmt/format.h>

#include "bench/measuring.h"
#include "liveries/livery_matching.h"
#include "liveries/reference_data.h"
#include "platform/clock.h"
#include "rig/flights/airport_layout.h"
#include "rig/flights/steady_sky.h"
#include "rig/replay/replay_run.h"
#include "rig/traffic/gzip_text.h"
#include "tests/support/live_memory.h"

namespace fs = std::filesystem;

namespace {

constexpr double begin = 1780315200; // 1 June 2026, noon
constexpr double hour = 3600;
// In the feed at a time, and so in the simulator: half a minute late, and a minute longer.
constexpr int busy = 100;
constexpr int quiet = 60;
constexpr double radiusNm = 100;
constexpr std::uint32_t seed = 1;

double mebibytes(std::size_t bytes) {
    return static_cast<double>(bytes) / (1 << 20);
}

rig::Scene atTheAirport() {
    rig::Scene scene;
    scene.user.at = rig::airport::reference;
    return scene;
}

void writeHour(const fs::path& recording, const fs::path& scene) {
    rig::SteadySky sky(busy, begin, rig::Fidelity::exact, seed);
    rig::writeText(recording, sky.textUntil(begin + hour));
    rig::writeText(scene, fmt::format(R"({{"user": {{"position": [{}, {}]}}}})", rig::airport::reference.lat,
                                      rig::airport::reference.lon));
}

void measureHour(const std::string& filter) {
    const BenchFolder folder;
    rig::ReplayOptions options;
    options.recording = folder / "hour.csv.gz";
    options.scene = folder / "scene.json";
    options.trace = folder / "hour.trace";
    options.durationSeconds = hour;
    options.radiusNm = radiusNm;
    writeHour(options.recording, options.scene);
    const platform::SteadyTime start = platform::steadyNow();
    const rig::ReplayResult result = rig::runReplay(options, std::cerr);
    const double seconds = std::chrono::duration<double>(platform::steadyNow() - start).count();
    print(filter, "replay.hour_100_aircraft_s", fmt::format("{:.2f} s", seconds));
    print(filter, "replay.hour_mean_aircraft", fmt::format("{:.1f} aircraft", result.counts.mean));
    print(filter, "replay.hour_created", fmt::format("{} aircraft", result.counts.created));
    print(filter, "replay.hour_lines", fmt::format("{} lines", result.counts.allLines()));
    print(filter, "replay.hour_trace_mib", fmt::format("{:.1f} MiB", mebibytes(fs::file_size(options.trace))));
}

/// A trace goes in and nothing is kept.
class Nowhere : public std::streambuf {
    int_type overflow(int_type c) override { return traits_type::not_eof(c); }
    std::streamsize xsputn(const char*, std::streamsize count) override { return count; }
};

class Day {
public:
    Day() : out_(&nowhere_), trace_(out_), replay_({atTheAirport(), begin, radiusNm, seed, &trace_}) {}

    /// So many hours of new aircraft, and until the last of them has gone. Answers how many there were.
    std::uint32_t fly(double hours, std::uint32_t firstAircraft) {
        const double from = replay_.seconds();
        rig::SteadySky sky(quiet, begin + from, rig::Fidelity::exact, seed, firstAircraft);
        while (!sky.isEmpty() || replay_.aircraft() > 0) {
            if (replay_.seconds() >= from + hours * hour) {
                sky.close();
            }
            receive(sky);
            for (int slot = 0; slot < 100; ++slot) {
                replay_.slot();
            }
        }
        return sky.aircraft();
    }

    rig::ReplayCounts counts() { return replay_.counts(); }

private:
    void receive(rig::SteadySky& sky) {
        for (std::string& row : sky.rowsUntil(begin + replay_.seconds())) {
            const bool isWeather = row.starts_with('{');
            replay_.receive({isWeather ? rig::DatagramKind::weather : rig::DatagramKind::traffic, std::move(row)});
        }
    }

    Nowhere nowhere_;
    std::ostream out_;
    rig::TraceWriter trace_;
    rig::Replay replay_;
};

/// What the process holds while the sky is empty.
struct DayMemory {
    LiveMemory afterHour;
    LiveMemory afterDay;
    std::uint32_t othersThanFirst = 0; ///< aircraft behind the first hour
    /// Liveries that are kept for the return of an aircraft, a block each; the day's end forgets them.
    std::size_t rememberedAfterHour = 0;
    std::size_t rememberedAfterDay = 0;
    rig::ReplayCounts counts;
};

/// The aircraft of the rest of the day are all new.
DayMemory flyDay() {
    DayMemory memory;
    Day day;
    const std::uint32_t first = day.fly(1, 0);
    memory.rememberedAfterHour = hexidLiveries.size();
    memory.afterHour = liveMemory();
    memory.othersThanFirst = day.fly(23, first);
    memory.afterDay = liveMemory();
    memory.rememberedAfterDay = hexidLiveries.size();
    memory.counts = day.counts();
    return memory;
}

void measureDay(const std::string& filter) {
    if (!lf_readReferenceXml("data/dbase.xml", [](std::string_view) {})) {
        fmt::print(stderr, "bench_replay: no data/dbase.xml here\n");
        return;
    }
    // The clocks are the replay's own while it lives.
    const platform::SteadyTime start = platform::steadyNow();
    const DayMemory memory = flyDay();
    const double seconds = std::chrono::duration<double>(platform::steadyNow() - start).count();
    const auto difference = [](std::size_t before, std::size_t after) {
        return static_cast<double>(after) - static_cast<double>(before);
    };
    print(filter, "replay.day_after_hour_bytes", fmt::format("{} bytes", memory.afterHour.bytes));
    print(filter, "replay.day_after_day_bytes", fmt::format("{} bytes", memory.afterDay.bytes));
    print(filter, "replay.day_growth_per_new_aircraft",
          fmt::format("{:.1f} bytes",
                      difference(memory.afterHour.bytes, memory.afterDay.bytes) / memory.othersThanFirst));
    print(filter, "replay.day_growth_blocks",
          fmt::format("{:.0f} blocks", difference(memory.afterHour.blocks, memory.afterDay.blocks)));
    print(filter, "replay.day_remembered_after_hour", fmt::format("{} liveries", memory.rememberedAfterHour));
    print(filter, "replay.day_remembered_after_day", fmt::format("{} liveries", memory.rememberedAfterDay));
    print(filter, "replay.day_new_aircraft", fmt::format("{} aircraft", memory.othersThanFirst));
    print(filter, "replay.day_mean_aircraft", fmt::format("{:.1f} aircraft", memory.counts.mean));
    print(filter, "replay.day_s", fmt::format("{:.1f} s", seconds));
}

} // namespace

int main(int argc, char** argv) {
    const std::string filter = argc > 1 ? argv[1] : "";
    if (filter.starts_with("replay.day")) {
        measureDay(filter);
    } else if (filter.empty() || filter.find("replay") != std::string::npos) {
        measureHour(filter);
    }
    return 0;
}
