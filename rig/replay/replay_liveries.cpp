// rig/replay/replay_liveries.cpp
#include "rig/replay/replay_liveries.h"

#include <array>
#include <cstddef>
#include <list>
#include <string>

#include "liveries/failed_titles.h"
#include "liveries/livery.h"
#include "liveries/livery_matching.h"
#include "liveries/livery_tables.h"
#include "liveries/reference_tables.h"

namespace rig {

namespace {

struct Shape {
    double cgHeightFeet;
    double wingSpanFeet;
};

constexpr std::array<Shape, aircraftCategoryCount> shapes{{
    /* Light      */ {4.0, 36},
    /* Buzjets    */ {5.5, 56},
    /* Large      */ {10.0, 112},
    /* Heavy      */ {16.0, 212},
    /* HighPerf   */ {6.0, 33},
    /* Rotorcraft */ {5.0, 33},
}};

std::string titleOfType(const std::string& type) {
    return "Replay " + type;
}

/// In the order of the file: by airline, type and title.
void buildTables() {
    std::list<Livery> liveries;
    for (const std::string& type : gAllTypes) {
        liveries.push_back({.airl = "ZZZ", .type = type, .title = titleOfType(type), .atcid = {}});
    }
    lf_buildAirlineTables(viewsOf(liveries));
    lf_buildModelTables();
    lf_buildSimilarModels();
}

} // namespace

AircraftTitles setUpReplayLiveries() {
    buildTables();
    return replayTitles();
}

AircraftTitles replayTitles() {
    AircraftTitles titles;
    for (const std::string& type : gAllTypes) {
        const Shape& shape = shapes.at(static_cast<std::size_t>(gf_categoryOfType(type)));
        titles.add({titleOfType(type), type, shape.cgHeightFeet, 0, shape.wingSpanFeet});
    }
    return titles;
}

void forgetReplayLiveries() {
    clearLiveryTables();
    resetLiveryMatching();
    resetFailedTitles();
}

} // namespace rig
