// How fast the engine flies a recording in the simulated world: an hour with 100 aircraft at a time, from the files to the
// finished trace. And what a day with 60 aircraft at a time leaves in memory, which takes minutes and is done only when the
// filter begins with "replay.day".
// Prints "name = value unit"; an argument prints only the figures whose names contain it.
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
/// Some of them are not to be seen yet: every aircraft is shown half a minute late.
constexpr int busy = 110;
constexpr double busyRadiusNm = 100;
constexpr int quiet = 60;
constexpr std::uint32_t seed = 1;

class WorkFolder {
public:
    WorkFolder() : path_(fs::temp_directory_path() / ("bench_replay_" + std::to_string(std::random_device()()))) {
        fs::create_directories(path_);
    }
    ~WorkFolder() {
        std::error_code ignored;
        fs::remove_all(path_, ignored);
    }
    WorkFolder(const WorkFolder&) = delete;
    WorkFolder& operator=(const WorkFolder&) = delete;

    fs::path operator/(const char* name) const { return path_ / name; }

private:
    fs::path path_;
};

void print(const std::string& filter, const std::string& name, const std::string& value) {
    if (name.find(filter) != std::string::npos) {
        fmt::print("{} = {}\n", name, value);
        std::fflush(stdout);
    }
}

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
    std::string text;
    for (const std::string& row : sky.rowsUntil(begin + hour)) {
        text += row + '\n';
    }
    rig::writeText(recording, text);
    rig::writeText(scene, fmt::format(R"({{"user": {{"position": [{}, {}]}}}})", rig::airport::reference.lat,
                                      rig::airport::reference.lon));
}

void measureHour(const std::string& filter) {
    const WorkFolder folder;
    rig::ReplayOptions options;
    options.recording = folder / "hour.csv.gz";
    options.scene = folder / "scene.json";
    options.trace = folder / "hour.trace";
    options.durationSeconds = hour;
    options.radiusNm = busyRadiusNm;
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
    Day() : out_(&nowhere_), trace_(out_), replay_({atTheAirport(), begin, 40, seed, &trace_}) {}

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

/// With an empty sky both times, so that equal things are compared; the aircraft of the rest of the day are all new.
void measureDay(const std::string& filter) {
    if (!lf_readReferenceXml("data/dbase.xml", [](std::string_view) {})) {
        fmt::print(stderr, "bench_replay: no data/dbase.xml here\n");
        return;
    }
    const platform::SteadyTime start = platform::steadyNow();
    Day day;
    const std::uint32_t first = day.fly(1, 0);
    const LiveMemory afterHour = liveMemory();
    const std::uint32_t others = day.fly(23, first);
    const LiveMemory afterDay = liveMemory();
    const rig::ReplayCounts counts = day.counts();
    print(filter, "replay.day_after_hour_bytes", fmt::format("{} bytes", afterHour.bytes));
    print(filter, "replay.day_after_day_bytes", fmt::format("{} bytes", afterDay.bytes));
    print(filter, "replay.day_after_hour_blocks", fmt::format("{} blocks", afterHour.blocks));
    print(filter, "replay.day_after_day_blocks", fmt::format("{} blocks", afterDay.blocks));
    print(filter, "replay.day_growth_per_aircraft",
          fmt::format("{:.1f} bytes",
                      (static_cast<double>(afterDay.bytes) - static_cast<double>(afterHour.bytes)) / others));
    print(filter, "replay.day_aircraft", fmt::format("{} aircraft", first + others));
    print(filter, "replay.day_mean_aircraft", fmt::format("{:.1f} aircraft", counts.mean));
    print(filter, "replay.day_s",
          fmt::format("{:.1f} s", std::chrono::duration<double>(platform::steadyNow() - start).count()));
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
