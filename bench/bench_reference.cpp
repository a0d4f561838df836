// What the reading of the reference data costs, against the opening of the container alone and the parsing of its XML
// alone; what the tables hold; and what a look-up and the closest airport cost. Usage: bench_reference [FILTER]
#include <algorithm>
#include <chrono>
#include <cstddef>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <new>
#include <random>
#include <string>
#include <string_view>
#include <vector>

#include <fmt/format.h>
#include <pugixml.hpp>

#include "bench/measuring.h"
#include "distribution/sealed_file.h"
#include "liveries/reference_data.h"
#include "liveries/reference_tables.h"
#include "parking/airport_directory.h"
#include "parking/closest_airport.h"

namespace fs = std::filesystem;

// --- What is taken from the heap, with what the heap itself needs for each piece ---

namespace {

std::size_t heldBytes = 0;
std::size_t peakBytes = 0;

/// A word before each piece, pieces in steps of 16 bytes, none below 32.
std::size_t withHeapOverhead(std::size_t size) {
    return std::max<std::size_t>(32, (size + sizeof(std::size_t) + 15) / 16 * 16);
}

constexpr std::size_t prefixBytes = 16;

void* countedAllocation(std::size_t size) {
    auto* const block = static_cast<std::size_t*>(std::malloc(size + prefixBytes));
    if (block == nullptr) {
        return nullptr;
    }
    *block = size;
    heldBytes += withHeapOverhead(size);
    peakBytes = std::max(peakBytes, heldBytes);
    return reinterpret_cast<std::byte*>(block) + prefixBytes;
}

void countedRelease(void* memory) {
    if (memory != nullptr) {
        auto* const block = reinterpret_cast<std::size_t*>(static_cast<std::byte*>(memory) - prefixBytes);
        heldBytes -= withHeapOverhead(*block);
        std::free(block);
    }
}

} // namespace

void* operator new(std::size_t size) {
    if (void* memory = countedAllocation(size)) {
        return memory;
    }
    throw std::bad_alloc();
}

void operator delete(void* memory) noexcept {
    countedRelease(memory);
}

void operator delete(void* memory, std::size_t) noexcept {
    countedRelease(memory);
}

namespace {

constexpr int registrations = 600'000;
constexpr int airports = 15'000;
constexpr int rounds = 7;
constexpr int lookUps = 1'000'000;

std::size_t sink = 0; // keeps the compiler from leaving work out

// --- The data ---

std::string code(std::mt19937& random, std::size_t length) {
    std::string text(length, 'A');
    for (char& letter : text) {
        letter = static_cast<char>('A' + random() % 26);
    }
    return text;
}

std::vector<std::string> codes(std::mt19937& random, int count, std::size_t length) {
    std::vector<std::string> all;
    all.reserve(static_cast<std::size_t>(count));
    for (int i = 0; i < count; ++i) {
        all.push_back(code(random, length));
    }
    return all;
}

/// Two thirds American, as the world's registrations are; the rest with a hyphen.
std::string registration(std::mt19937& random, int number) {
    if (number % 3 != 0) {
        return fmt::format("N{}{}", 1 + number % 99999, code(random, 2));
    }
    return fmt::format("{}-{}", code(random, 1 + number % 2), code(random, 4));
}

/// The XML of half a million real aircraft is the better part of the file; what else it holds is small.
std::string referenceXml(std::vector<std::string>& keys) {
    std::mt19937 random(1);
    const auto types = codes(random, 2500, 4);
    const auto airlines = codes(random, 6000, 3);
    std::string xml = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<root>\n";
    const auto section = [&xml](const char* name, const char* element, const char* attribute, const auto& all) {
        xml += fmt::format("<{}><{} {}=\"{}\" /></{}>\n", name, element, attribute, fmt::join(all, ","), name);
    };
    const std::vector<std::string> few(types.begin(), types.begin() + 50);
    section("aircrafts", "aircraft", "types", types);
    section("high_performance", "hpf", "types", few);
    section("heavy", "hvy", "types", few);
    section("large", "lar", "types", few);
    section("buzjet", "bzj", "types", few);
    section("rotorcraft", "rot", "types", few);
    section("cargo_types", "cargo_type", "types", few);
    section("ICAO_airlines", "ICAO", "codes", airlines);
    section("cargo_operators", "ICAO", "codes", airlines);
    section("simaddonsP3D", "simaddonP3D", "arpts", few);
    xml += "<dbase>\n";
    std::vector<std::string> all;
    for (int i = 0; i < registrations; ++i) {
        const std::string& airline = airlines[random() % airlines.size()];
        all.push_back(registration(random, i));
        xml += fmt::format("  <db reg=\"{}\" airl=\"{}\" type=\"{}\" opr=\"{}\"{} />\n", all.back(), airline,
                           types[random() % types.size()], airline, i % 20 == 0 ? " cargo=\"true\"" : "");
    }
    for (int i = 0; i < lookUps; ++i) {
        std::string key = all[random() % all.size()];
        std::erase(key, '-'); // as the feed writes it
        keys.push_back(std::move(key));
    }
    return xml + "</dbase>\n</root>\n";
}

void writeReferenceData(std::vector<std::string>& keys) {
    std::ofstream("plain.xml", std::ios::binary) << referenceXml(keys);
    lf_streamSealFile("plain.xml", "input/dbase.enc", gf_dataKey());
}

void makeAirports() {
    std::mt19937 random(2);
    std::uniform_real_distribution<double> latitude(-60, 75);
    std::uniform_real_distribution<double> longitude(-180, 180);
    for (int i = 0; i < airports; ++i) {
        gAirports.push_back({code(random, 4), code(random, 3), latitude(random), longitude(random), 100, 1});
    }
}

// --- The figures ---

/// The three take turns, so that all see the same machine.
void measureLoad(std::string_view filter) {
    std::vector<double> opening;
    std::vector<double> parsing;
    std::vector<double> loading;
    for (int round = 0; round < rounds; ++round) {
        opening.push_back(millisecondsOf([] { gf_streamDecrypt("input/dbase.enc", "opened.xml"); }));
        parsing.push_back(millisecondsOf([] {
            pugi::xml_document document;
            sink += document.load_file("opened.xml") ? 1 : 0;
        }));
        resetReferenceTables();
        loading.push_back(millisecondsOf([] { gf_readDataFiles(); }));
    }
    print(filter, "dbase.open_ms", median(opening), "ms");
    print(filter, "dbase.parse_ms", median(parsing), "ms");
    print(filter, "dbase.load_ms", median(loading), "ms");
    print(filter, "dbase.load_over_parts", median(loading) / (median(opening) + median(parsing)), "x");
}

void measureMemory(std::string_view filter) {
    resetReferenceTables();
    const std::size_t before = heldBytes;
    peakBytes = heldBytes;
    gf_readDataFiles();
    const auto xmlBytes = static_cast<double>(fs::file_size("plain.xml"));
    print(filter, "dbase.xml_bytes", xmlBytes, "bytes");
    print(filter, "dbase.registrations", static_cast<double>(DbaseTable.size()), "rows");
    print(filter, "dbase.bytes_per_registration",
          static_cast<double>(heldBytes - before) / static_cast<double>(DbaseTable.size()), "bytes");
    print(filter, "dbase.peak_over_xml", static_cast<double>(peakBytes - before) / xmlBytes, "x");
}

void measureLookUp(std::string_view filter, const std::vector<std::string>& keys) {
    std::vector<double> times;
    times.reserve(static_cast<std::size_t>(rounds));
    for (int round = 0; round < rounds; ++round) {
        times.push_back(millisecondsOf([&keys] {
            for (const std::string& key : keys) {
                sink += gf_findRegcodeRecord(key) ? 1 : 0;
            }
        }));
    }
    constexpr double nanosecondsPerMillisecond = 1e6;
    print(filter, "dbase.lookup_ns", median(times) * nanosecondsPerMillisecond / lookUps, "ns");
}

void measureClosest(std::string_view filter) {
    makeAirports();
    std::mt19937 random(3);
    std::vector<double> times;
    for (int i = 0; i < 1001; ++i) {
        const Airport& airport = gAirports[random() % gAirports.size()];
        const LatLon position{airport.lat + 0.01, airport.lon + 0.01};
        times.push_back(millisecondsOf([&position] { sink += closest_airport(position) ? 1 : 0; }));
    }
    print(filter, "airports.closest_ms", median(times), "ms");
}

} // namespace

int main(int argc, char** argv) {
    const std::string_view filter = argc > 1 ? argv[1] : "";
    const bool isWanted = filter.empty() || filter.starts_with("reference") || filter.starts_with("dbase") ||
                          filter.starts_with("airports");
    if (!isWanted) {
        return 0;
    }
    const std::string_view figures = filter.starts_with("reference") ? "" : filter;
    pugi::set_memory_management_functions(countedAllocation, countedRelease);
    const WorkFolder folder;
    fs::create_directories("input");
    if (!figures.starts_with("airports")) {
        std::vector<std::string> keys;
        writeReferenceData(keys);
        measureLoad(figures);
        measureMemory(figures);
        if (!figures.starts_with("dbase.load")) {
            measureLookUp(figures, keys);
        }
    }
    measureClosest(figures);
    return sink == 0 ? 1 : 0;
}
