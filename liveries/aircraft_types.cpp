// liveries/aircraft_types.cpp
#include "liveries/aircraft_types.h"

#include <cstddef>
#include <limits>

namespace {

constexpr double noAverage = std::numeric_limits<double>::quiet_NaN();

std::array<double, aircraftCategoryCount> noAverages() {
    std::array<double, aircraftCategoryCount> averages{};
    averages.fill(noAverage);
    return averages;
}

} // namespace

CategoryTypes gCategoryTypes;
std::map<std::string, double, std::less<>> gHalfWingspans;
double MaxHalfWingspan = 0;
std::array<double, aircraftCategoryCount> gAverageHalfWingspans = noAverages();

AircraftCategory gf_categoryOfType(std::string_view type) {
    if (gCategoryTypes.large.contains(type)) {
        return AircraftCategory::Large;
    }
    if (gCategoryTypes.heavy.contains(type)) {
        return AircraftCategory::Heavy;
    }
    if (gCategoryTypes.buzjet.contains(type)) {
        return AircraftCategory::Buzjets;
    }
    if (gCategoryTypes.rotorcraft.contains(type)) {
        return AircraftCategory::Rotorcraft;
    }
    if (gCategoryTypes.highPerformance.contains(type)) {
        return AircraftCategory::HighPerf;
    }
    return AircraftCategory::Light;
}

double gf_wingspanOfType(std::string_view type) {
    if (const auto known = gHalfWingspans.find(type); known != gHalfWingspans.end()) {
        return known->second;
    }
    return gAverageHalfWingspans.at(static_cast<std::size_t>(gf_categoryOfType(type)));
}

void resetAircraftTypes() {
    gCategoryTypes = {};
    gHalfWingspans.clear();
    MaxHalfWingspan = 0;
    gAverageHalfWingspans = noAverages();
}
