// bench/bench_feed.cpp
// What a feed line costs, against splitting the same line at its commas into views.
// Prints "name = value unit"; an argument prints only the figures whose names contain it.
#include <algorithm>
#include <charconv>
#include <chrono>
#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <fmt/format.h>
#include <functional>
#include <iterator>
#include <random>
#include <string>
#include <string_view>
#include <vector>

#include "bench/measuring.h"
#include "core/injection_radius.h"
#include "feed/sample_queue.h"
#include "feed/traffic_reader.h"
#include "tests/support/recorded_lines.h"
#include "tests/support/traffic_line_builder.h"

namespace {

using Lines = std::vector<std::string>;

constexpr LatLon amsterdam{52.31, 4.76};
/// So many different lines has each set, that the processor cannot learn them by heart as it does a few hundred.
constexpr std::size_t linesPerSet = 10000;
/// One line in so many of the mixed set is accepted.
constexpr std::size_t acceptedOneIn = 10;
constexpr int rounds = 101;

std::size_t sink = 0; // keeps the compiler from leaving work out

/// The floor: the line in views, and nothing done with them.
void splitOnly(std::string_view line, std::vector<std::string_view>& fields) {
    fields.clear();
    std::size_t begin = 0;
    for (std::size_t i = 0; i < line.size(); ++i) {
        if (line[i] == ',') {
            fields.push_back(line.substr(begin, i - begin));
            begin = i + 1;
        }
    }
    fields.push_back(line.substr(begin));
}

double nanosecondsPerLine(const Lines& lines, const std::function<void(const Lines&)>& pass) {
    const auto begin = std::chrono::steady_clock::now();
    pass(lines);
    const std::chrono::duration<double, std::nano> taken = std::chrono::steady_clock::now() - begin;
    return taken.count() / static_cast<double>(lines.size());
}

struct Cost {
    double floorNs = 0;
    double readerNs = 0;
    double ratio = 0;
};

/// Floor and reader take turns, so that both see the same machine; each figure is the median of its rounds.
Cost measure(const Lines& lines, TrafficReader& reader) {
    std::vector<std::string_view> fields;
    const auto floorPass = [&fields](const Lines& all) {
        for (const std::string& line : all) {
            splitOnly(line, fields);
            sink += fields.size();
        }
    };
    const auto readerPass = [&reader](const Lines& all) {
        for (const std::string& line : all) {
            reader.processLine(line);
            sink += gLiveSampleQueue.size();
            gLiveSampleQueue.clear(); // the engine keeps it about as short
        }
    };
    std::vector<double> floors;
    std::vector<double> costs;
    std::vector<double> ratios;
    for (int round = 0; round < rounds; ++round) {
        floors.push_back(nanosecondsPerLine(lines, floorPass));
        costs.push_back(nanosecondsPerLine(lines, readerPass));
        ratios.push_back(costs.back() / floors.back());
    }
    return {median(floors), median(costs), median(ratios)};
}

std::string shifted(std::string_view number, double by) {
    double value = 0;
    std::from_chars(number.data(), number.data() + number.size(), value);
    return fmt::format("{:.5f}", value + by);
}

/// The line with its position moved: each copy of a line is a line of its own.
std::string movedLine(const std::string& line, double lat, double lon) {
    std::vector<std::string_view> fields;
    splitOnly(line, fields);
    const std::string newLat = shifted(fields[2], lat);
    const std::string newLon = shifted(fields[3], lon);
    fields[2] = newLat;
    fields[3] = newLon;
    return fmt::format("{}", fmt::join(fields, ","));
}

Lines linesWithOutcome(const Lines& lines, TrafficReader& reader, LineOutcome wanted) {
    Lines result;
    std::copy_if(lines.begin(), lines.end(), std::back_inserter(result),
                 [&](const std::string& line) { return reader.processLine(line) == wanted; });
    gLiveSampleQueue.clear();
    return result;
}

/// Different lines of one outcome: lines picked from the source, each moved a little.
Lines variedLines(const Lines& source, std::size_t count, TrafficReader& reader, LineOutcome wanted) {
    std::mt19937 random(1);
    std::uniform_real_distribution<double> shift(-0.03, 0.03);
    const Lines originals = linesWithOutcome(source, reader, wanted);
    if (originals.empty()) {
        fmt::print(stderr, "No line among {} with the outcome that is to be measured\n", source.size());
        std::exit(1);
    }
    Lines lines;
    while (lines.size() < count) {
        std::string line = movedLine(originals[random() % originals.size()], shift(random), shift(random));
        if (reader.processLine(line) == wanted) {
            lines.push_back(std::move(line));
        }
    }
    gLiveSampleQueue.clear();
    return lines;
}

/// The out-of-range lines with every tenth replaced by an accepted one.
Lines mixedLines(const Lines& accepted, const Lines& dropped) {
    Lines lines = dropped;
    for (std::size_t i = 0; i < lines.size(); i += acceptedOneIn) {
        lines[i] = accepted[i];
    }
    std::shuffle(lines.begin(), lines.end(), std::mt19937(3));
    return lines;
}

Lines generatedLines() {
    std::mt19937 random(2);
    std::uniform_real_distribution<double> shift(-3, 3);
    Lines lines;
    for (int i = 0; i < 1400; ++i) {
        lines.push_back(movedLine(TrafficLineBuilder().line(), shift(random), shift(random)));
    }
    return lines;
}

} // namespace

int main(int argc, char** argv) {
    const std::string filter = argc > 1 ? argv[1] : "";
    gRadiusNm = 40;
    gAcceptSamples = true;
    TrafficReader reader;
    reader.setUserLatLon(amsterdam);
    reader.setParkingAirport(ParkingAirport{amsterdam, -11});

    Lines lines = recordedTrafficLines();
    if (lines.empty()) {
        lines = generatedLines();
    }
    const Lines accepted = variedLines(lines, linesPerSet, reader, LineOutcome::accepted);
    const Lines dropped = variedLines(lines, linesPerSet, reader, LineOutcome::outOfRange);

    const Cost acceptedCost = measure(accepted, reader);
    print(filter, "feed.accepted_floor", fmt::format("{:.0f} ns", acceptedCost.floorNs));
    print(filter, "feed.accepted_line", fmt::format("{:.0f} ns", acceptedCost.readerNs));
    print(filter, "feed.accepted_over_floor", fmt::format("{:.2f} ratio", acceptedCost.ratio));
    print(filter, "feed.accepted_lines_per_second", fmt::format("{:.0f} lines/s", 1e9 / acceptedCost.readerNs));

    const Cost droppedCost = measure(dropped, reader);
    print(filter, "feed.dropped_floor", fmt::format("{:.0f} ns", droppedCost.floorNs));
    print(filter, "feed.dropped_line", fmt::format("{:.0f} ns", droppedCost.readerNs));
    print(filter, "feed.dropped_over_floor", fmt::format("{:.2f} ratio", droppedCost.ratio));

    const Cost mixedCost = measure(mixedLines(accepted, dropped), reader);
    print(filter, "feed.mixed_over_floor", fmt::format("{:.2f} ratio", mixedCost.ratio));
    print(filter, "feed.mixed_lines_per_second", fmt::format("{:.0f} lines/s", 1e9 / mixedCost.readerNs));
    return sink == 0 ? 1 : 0;
}
