// rig/replay/replay_liveries.cpp
#include "rig/replay/replay_liveries.h"

#include <array>

#include "liveries/failed_titles.h"
#include "liveries/livery_matching.h"

namespace rig {

namespace {

struct ReplayLivery {
    AircraftCategory category;
    const char* title;
    const char* model;
    double cgHeightFeet;
    double wingSpanFeet;
};

constexpr std::array<ReplayLivery, aircraftCategoryCount> replayLiveries{{
    {AircraftCategory::Light, "Replay Light", "C172", 4.0, 36},
    {AircraftCategory::Buzjets, "Replay Business Jet", "C56X", 5.5, 56},
    {AircraftCategory::Large, "Replay Large", "A320", 10.0, 112},
    {AircraftCategory::Heavy, "Replay Heavy", "B77W", 16.0, 212},
    {AircraftCategory::HighPerf, "Replay Fighter", "F16", 6.0, 33},
    {AircraftCategory::Rotorcraft, "Replay Helicopter", "EC35", 5.0, 33},
}};

} // namespace

AircraftTitles setUpReplayLiveries() {
    AircraftTitles titles;
    for (const ReplayLivery& livery : replayLiveries) {
        registerLivery(livery.category, livery.title);
        titles.add({livery.title, livery.model, livery.cgHeightFeet, 0, livery.wingSpanFeet});
    }
    return titles;
}

void forgetReplayLiveries() {
    resetLiveryMatching();
    resetFailedTitles();
}

} // namespace rig
