// liveries/livery_tables.h
// The tables that the search for a livery reads, built from the liveries once per process (or after a new scan). Built
// on the start-up thread before traffic starts; afterwards the engine thread reads them.
#pragma once

#include <array>
#include <cstddef>
#include <set>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "engine/aircraft_category.h"
#include "liveries/flat_text_table.h"
#include "liveries/livery.h"
#include "liveries/reference_tables.h"
#include "liveries/similar_models.h"

/// The generic airline, whose liveries carry no real airline's paint.
inline constexpr std::string_view genericAirline = "ZZZ";
/// The airline of private owners.
inline constexpr std::string_view privateAirline = "PVT";

// All titles are views into one arena, and good until clearLiveryTables.

struct AirlineTitle {
    std::string_view title;
    bool isCargo = false;
};

using AirlineTypes = FlatTextTable<std::span<const AirlineTitle>>;
using Titles = std::span<const std::string_view>;

/// The titles of a type.
struct TitleList {
    Titles titles;
    /// Those of them that are not reserved; left empty where that is all of them or none.
    Titles unreserved;

    /// Those that an aircraft may get which is not the owner of one: a reserved title only where there is no other.
    Titles candidates() const { return unreserved.empty() ? titles : unreserved; }
};

using RegcodeSet = std::set<std::string, std::less<>>;

inline constexpr std::size_t passengerIndex = 0;
inline constexpr std::size_t cargoIndex = 1;

/// By airline and type, as the liveries come.
extern FlatTextTable<AirlineTypes> AirlineTable;
/// By passengerIndex or cargoIndex, airline and type; titles ascending.
extern std::array<FlatTextTable<FlatTextTable<TitleList>>, 2> AirlineModelTable;
/// By passengerIndex or cargoIndex, and type: the titles of all airlines, by airline and title ascending.
extern std::array<FlatTextTable<TitleList>, 2> ModelTable;

/// Registration to the title of its own livery.
extern FlatTextTable<std::string_view> RegcodeTable;
/// The registrations whose liveries are not for others; and those of them that share theirs with no other registration.
extern RegcodeSet SpecialRegcodes;
extern RegcodeSet UniqueRegcodes;
/// The titles of SpecialRegcodes, as lf_findTitle gives them.
extern std::vector<std::string_view> ReservedTitles;

/// The types with a livery of Light, Buzjets and Rotorcraft, ascending.
extern std::array<std::vector<CategorizedType>, 3> RandomTypes;
/// The list of a category in RandomTypes; null for one that has none.
std::vector<CategorizedType>* randomTypesOf(AircraftCategory category);

/// AirlineTable and AirlineModelTable, which must be empty, from the liveries, which must be sorted by airline, type
/// and title. Fills the arena that all titles are views of.
void lf_buildAirlineTables(std::span<const LiveryView> liveries);

// The pieces of it, for who has other work to do meanwhile.

/// AirlineTable, and the arena.
void fillAirlineTable(std::span<const LiveryView> liveries);
/// AirlineModelTable, from AirlineTable, which stays as it is.
void fillAirlineModelTables();

/// The title as it stands in AirlineTable; empty if it is not there.
std::string_view lf_findTitle(std::string_view title);
/// The same, without a search where it is the title of the livery of this number among those that the tables are built
/// of.
std::string_view findTitle(std::string_view title, std::size_t number);
/// ModelTable from AirlineTable. From now on ReservedTitles must not change.
void lf_buildModelTables();
/// "N airlines, N pax aircraft models and N cargo aircraft models" to the log.
void logModelTables();
/// What there is of each category, in the order of the categories, and RandomTypes. Switches off the parameters of
/// categories without a livery, and lets the user switch the others only.
void summarizeCategories();
/// How many types have a generic livery.
void summarizeGenericLiveries();
/// The number of entries of RegcodeTable, to the log.
void logRegistrationCodes();

/// All tables, the live aircraft's livery memory, and the arena empty, for building anew; FailedTitles stays.
void clearLiveryTables();
