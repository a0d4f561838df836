// liveries/aircraft_types.h
// What is known of aircraft types: their categories and wing spans. The reading of the reference data fills the tables
// before any other thread looks at them; afterwards they do not change, and any thread may read them.
#pragma once

#include <array>
#include <functional>
#include <map>
#include <set>
#include <string>
#include <string_view>

#include "engine/aircraft_category.h"

/// Text keys, compared byte by byte.
using TypeSet = std::set<std::string, std::less<>>;

/// The type codes of each category; Light has none of its own.
struct CategoryTypes {
    TypeSet highPerformance;
    TypeSet heavy;
    TypeSet large;
    TypeSet buzjet;
    TypeSet rotorcraft;
};

extern CategoryTypes gCategoryTypes;

/// Type code to half wing span in nautical miles.
extern std::map<std::string, double, std::less<>> gHalfWingspans;
/// The largest half wing span, nautical miles; 0 while none is known.
extern double MaxHalfWingspan;
/// The average half wing span of each category, nautical miles; not-a-number where no type of the category has one.
extern std::array<double, aircraftCategoryCount> gAverageHalfWingspans;

/// A type that stands in several sets is Large, Heavy, Buzjets, Rotorcraft or HighPerf, whichever comes first in this
/// order; one in none of them is Light.
AircraftCategory gf_categoryOfType(std::string_view type);

/// The half wing span in nautical miles of the type, or else the average of its category, which may be not-a-number.
double gf_wingspanOfType(std::string_view type);

/// No type known.
void resetAircraftTypes();
