// What a match costs at each step of the ladder with 60,000 liveries, and what the building of all tables from
// LiveriesScanned.xml costs against the XML library's own load of that file. Usage: bench_liveries_match [FILTER]
// Prints "name = value unit"; an argument prints only the figures whose names contain it.
#include <algorithm>
#include <filesystem>
#include <fstream>
#include <functional>
#include <map>
#include <random>
#include <string>
#include <string_view>
#include <tuple>
#include <vector>

#include <fmt/format.h>
#include <pugixml.hpp>

#include "bench/measuring.h"
#include "core/log.h"
#include "core/parameters.h"
#include "core/random.h"
#include "liveries/livery.h"
#include "liveries/livery_driver.h"
#include "liveries/livery_file.h"
#include "liveries/livery_matching.h"
#include "liveries/livery_tables.h"
#include "liveries/reference_tables.h"

namespace fs = std::filesystem;

namespace {

constexpr int liveryCount = 60'000;
constexpr int airlineCount = 1'500;
constexpr int groupCount = 64;
constexpr int groupSize = 8;
constexpr int typeCount = 600;
constexpr int registrationCount = 500'000;
constexpr int reservedCount = 500;
constexpr int rounds = 9;
constexpr int tableRounds = 51;
constexpr int aircraftPerStep = 5'000;

std::size_t sink = 0; // keeps the compiler from leaving work out

// --- The data ---

std::string airlineCode(int number) {
    return {static_cast<char>('A' + number / 676 % 26), static_cast<char>('A' + number / 26 % 26),
            static_cast<char>('A' + number % 26)};
}

std::string typeCode(int number) {
    return fmt::format("{}{:03}", static_cast<char>('A' + number % 26), number);
}

std::string registration(int number) {
    return fmt::format("PH-{:06}", number);
}

/// A sixth of the types in each category; the similar groups go across them.
void makeReferenceData() {
    for (int i = 0; i < typeCount; ++i) {
        const std::string type = typeCode(i);
        gAllTypes.insert(type);
        TypeSet* const sets[] = {nullptr,
                                 &gCategoryTypes.buzjet,
                                 &gCategoryTypes.large,
                                 &gCategoryTypes.heavy,
                                 &gCategoryTypes.highPerformance,
                                 &gCategoryTypes.rotorcraft};
        if (TypeSet* const set = sets[i / (typeCount / 6)]) {
            set->insert(type);
        }
    }
    for (int group = 0; group < groupCount; ++group) {
        SimilarGroup types;
        for (int i = 0; i < groupSize; ++i) {
            types.push_back(typeCode(group * groupSize + i));
        }
        std::sort(types.begin(), types.end());
        gSimilarGroups.push_back(std::move(types));
    }
    for (int i = 0; i < registrationCount; ++i) {
        const std::string airline = airlineCode(i % airlineCount);
        DbaseTable.insert(registration(i), {airline, typeCode(i % typeCount), airline, i % 20 == 0});
    }
}

/// The low numbers come more often than the high ones.
int drawn(std::mt19937& random, int count) {
    const double share = std::uniform_real_distribution<double>(0, 1)(random);
    return static_cast<int>(share * share * count);
}

/// The types of each airline: few airlines have a large fleet.
std::vector<std::vector<int>> makeFleets(std::mt19937& random) {
    std::vector<std::vector<int>> fleets(airlineCount);
    for (std::vector<int>& fleet : fleets) {
        for (int types = 2 + drawn(random, 20); types > 0; --types) {
            fleet.push_back(drawn(random, typeCount));
        }
    }
    return fleets;
}

std::vector<Livery> makeLiveries() {
    std::mt19937 random(1);
    const std::vector<std::vector<int>> fleets = makeFleets(random);
    std::vector<Livery> liveries;
    for (int i = 0; i < liveryCount; ++i) {
        Livery livery;
        const int airline = drawn(random, airlineCount);
        const std::vector<int>& fleet = fleets[static_cast<std::size_t>(airline)];
        const bool isGeneric = i % 50 == 0;
        livery.airl = isGeneric ? "ZZZ" : airlineCode(airline);
        livery.type = typeCode(isGeneric ? drawn(random, typeCount) : fleet[random() % fleet.size()]);
        livery.title = fmt::format("Maker {} {} operated by somebody {}", livery.type, livery.airl, i);
        livery.atcid = i % 2 == 0 ? registration(i) : "";
        livery.cargo = i % 12 == 0;
        liveries.push_back(std::move(livery));
    }
    std::sort(liveries.begin(), liveries.end(), [](const Livery& a, const Livery& b) {
        return std::tie(a.airl, a.type, a.title) < std::tie(b.airl, b.type, b.title);
    });
    return liveries;
}

/// So many liveries are their owners' alone.
void writeReservations(const std::vector<Livery>& liveries) {
    fs::create_directories("input/my_regcodes");
    std::ofstream file("input/my_regcodes/reserved.txt", std::ios::binary);
    int count = 0;
    for (const Livery& livery : liveries) {
        if (!livery.atcid.empty() && count++ < reservedCount) {
            file << livery.title << ';' << livery.atcid << '\n';
        }
    }
}

/// As at a start of the program.
void buildTables() {
    resetLiveryDriver();
    gf_processScannedLiveries();
}

// --- The figures ---

/// The two take turns, so that both see the same machine.
void measureTables(std::string_view filter, std::string_view what) {
    std::vector<double> loads;
    std::vector<double> builds;
    for (int round = 0; round < tableRounds; ++round) {
        loads.push_back(millisecondsOf([] {
            pugi::xml_document document;
            sink += document.load_file(scannedLiveriesFile) ? 1 : 0;
        }));
        clearLiveryTables();
        builds.push_back(millisecondsOf(buildTables));
    }
    print(filter, fmt::format("{}.xml_load_ms", what), median(loads), "ms");
    print(filter, fmt::format("{}.build_ms", what), median(builds), "ms");
    print(filter, fmt::format("{}.over_xml_load", what), median(builds) / median(loads), "x");
}

/// Live aircraft of all kinds: some find their own livery, some nothing at all.
std::vector<AircraftRecord> makeAircraft() {
    std::mt19937 random(2);
    std::vector<AircraftRecord> aircraft;
    for (int i = 0; i < 40 * aircraftPerStep; ++i) {
        AircraftRecord one;
        one.callsign = fmt::format("KLM{}", i % 1000);
        one.airline = i % 5 == 0 ? "PVT" : airlineCode(drawn(random, airlineCount + 200));
        one.model = typeCode(static_cast<int>(random() % (typeCount + 40)));
        one.registration = i % 9 == 0 ? "" : registration(static_cast<int>(random() % registrationCount));
        one.isCargo = i % 15 == 0 ? 1 : 0;
        one.category = gf_categoryOfType(one.model);
        aircraft.push_back(std::move(one));
    }
    return aircraft;
}

using ByStep = std::map<std::string, std::vector<AircraftRecord>>;

/// What the aircraft end with, by a first walk up the ladder.
ByStep sortedByStep(const std::vector<AircraftRecord>& aircraft) {
    ByStep steps;
    for (const AircraftRecord& one : aircraft) {
        const auto before = MatchesAtStep;
        AircraftRecord matched = one;
        gf_rematchLivery(matched);
        const auto differs = std::mismatch(before.begin(), before.end(), MatchesAtStep.begin());
        const std::string step =
            differs.first == before.end() ? "none" : std::to_string(std::distance(before.begin(), differs.first));
        if (std::vector<AircraftRecord>& list = steps["step_" + step]; list.size() < aircraftPerStep) {
            list.push_back(one);
        }
    }
    return steps;
}

double usPerMatch(const std::vector<AircraftRecord>& aircraft, const std::function<void(AircraftRecord&)>& match) {
    std::vector<double> times;
    for (int round = 0; round < rounds; ++round) {
        std::vector<AircraftRecord> fresh = aircraft;
        times.push_back(millisecondsOf([&fresh, &match] {
            for (AircraftRecord& one : fresh) {
                match(one);
                sink += one.liveryTitle.size();
            }
        }));
    }
    constexpr double usPerMs = 1000;
    return median(times) * usPerMs / static_cast<double>(aircraft.size());
}

void measureMatches(std::string_view filter, std::string_view kind, const std::vector<AircraftRecord>& aircraft,
                    const std::function<void(AircraftRecord&)>& match, double& worstUs) {
    for (const auto& [step, list] : sortedByStep(aircraft)) {
        const double us = usPerMatch(list, match);
        print(filter, fmt::format("match.{}_{}_us", kind, step), us, "us");
        print(filter, fmt::format("match.{}_{}_aircraft", kind, step), static_cast<double>(list.size()), "aircraft");
        worstUs = std::max(worstUs, us);
    }
}

void measureLadder(std::string_view filter) {
    const std::vector<AircraftRecord> aircraft = makeAircraft();
    double worstUs = 0;
    for (const bool random : {false, true}) {
        RANDOM.value = random;
        const char* const order = random ? "random" : "first";
        measureMatches(filter, fmt::format("live_{}", order), aircraft, gf_rematchLivery, worstUs);
        measureMatches(
            filter, fmt::format("static_{}", order), aircraft,
            [](AircraftRecord& one) { gf_matchLivery(one, one.isCargo != 0); }, worstUs);
    }
    print(filter, "match.worst_us", worstUs, "us");
}

} // namespace

int main(int argc, char** argv) {
    const std::string_view wanted = argc > 1 ? argv[1] : "";
    const bool isWanted = wanted.empty() || wanted.starts_with("liveries_match") || wanted.starts_with("match") ||
                          wanted.starts_with("tables");
    if (!isWanted) {
        return 0;
    }
    const std::string_view filter = wanted.starts_with("liveries_match") ? "" : wanted;
    const WorkFolder folder;
    gf_openLog();
    gf_seedRandom(1);
    makeReferenceData();
    const std::vector<Livery> liveries = makeLiveries();
    Liveries.assign(liveries.begin(), liveries.end());
    lf_writeLiveries();
    measureTables(filter, "tables");
    writeReservations(liveries);
    measureTables(filter, "tables.own_registrations");
    if (!filter.starts_with("tables")) {
        buildTables();
        measureLadder(filter);
    }
    gf_closeLog();
    return sink == 0 ? 1 : 0;
}
