// engine/aircraft_category.cpp
#include "engine/aircraft_category.h"

#include "engine/printed_names.h"

namespace {

// clang-format off
constexpr std::array<CategoryLimits, aircraftCategoryCount> categoryLimits{{
    //               flare  rollout  rotate  climb  rotate  climb   turn  climb  park  pitch   bank  bank    gate
    //               slots  slots    slots   slots  deg     deg     rate  ft     kt    rate    deg   rate    kt
    /* Light      */ {250,  250,     100,    200,   -9,     -15,    0.15, 0.5,   5,    0.01,   40,   0.035,  90},
    /* Buzjets    */ {300,  300,     200,    250,   -8,     -18,    0.10, 0.75,  4.5,  0.0085, 35,   0.0275, 110},
    /* Large      */ {400,  350,     200,    300,   -6,     -16.5,  0.07, 0.6,   4,    0.0075, 30,   0.02,   140},
    /* Heavy      */ {450,  450,     250,    400,   -5,     -12.5,  0.05, 0.5,   3,    0.005,  20,   0.015,  150},
    /* HighPerf   */ {150,  150,     100,    200,   -6,     -20,    0.10, 1.0,   4.5,  0.03,   90,   0.1,    220},
    /* Rotorcraft */ {100,  100,     100,    100,   -20,    -30,    0.20, 0.75,  5,    0.03,   75,   0.06,   0},
}};
// clang-format on

const PrintedNames<aircraftCategoryCount> names{"Light", "Buzjets", "Large", "Heavy", "HighPerf", "Rotorcraft"};

} // namespace

const std::string& printedName(AircraftCategory category) {
    return names.at(category);
}

const CategoryLimits& limitsOf(AircraftCategory category) {
    requireIndex<aircraftCategoryCount>(category);
    return categoryLimits[static_cast<std::size_t>(category)];
}
