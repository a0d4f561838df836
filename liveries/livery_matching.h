// liveries/livery_matching.h
// Which of the user's liveries an aircraft gets: a ladder of ever looser steps through the tables of
// liveries/livery_tables.h, from the very airframe down to any aircraft of its kind. Engine thread only.
#pragma once

#include <array>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <unordered_map>

#include "engine/aircraft_record.h"
#include "liveries/failed_titles.h"
#include "liveries/livery_tables.h"

/// The steps as they are logged and counted.
namespace match_step {
inline constexpr int ownAirframe = 0;       ///< a livery that is this registration's alone
inline constexpr int registration = 1;      ///< any other livery by registration
inline constexpr int airlineAndType = 2;    ///< of the aircraft's airline, or of the data base's
inline constexpr int airlineAndSimilar = 3; ///< the same with a similar type
inline constexpr int genericAndType = 4;
inline constexpr int anyAirlineAndType = 5;
inline constexpr int anyAirlineAndSimilar = 6; ///< or a type of the category at random
inline constexpr std::size_t count = 7;
} // namespace match_step

/// How often lf_acceptTitle said yes, by step, since the start of the process.
extern std::array<std::uint32_t, match_step::count> MatchesAtStep;

/// noMatchKey of the aircraft that hold a registration and for which gf_rematchLivery found nothing: they are not tried
/// again in this run, unless the user chooses a deeper matching. Written by the spawning, emptied by the run loop.
extern TextSet NoMatchList;
std::string noMatchKey(const AircraftRecord& aircraft);

/// The livery last used for a transponder address, so that an aircraft that comes back looks the same. Written by the
/// spawning; the titles are good until the tables are cleared.
extern std::unordered_map<std::uint32_t, std::string_view> hexidLiveries;

/// For static aircraft: sets liveryTitle and answers true, or logs that there is none. Takes isCargo over into the
/// record.
bool gf_matchLivery(AircraftRecord& aircraft, bool isCargo);

/// For live aircraft: sets liveryTitle, and then reverseOnLanding and the step's count, or leaves the title empty.
/// Takes similar types of the aircraft's own category alone.
void gf_rematchLivery(AircraftRecord& aircraft);

/// How many matches there were at each step, and what the simulator refused, to the log. Nothing without a match.
void gf_matchingSummary();
/// NoMatchList to the log, if there is any.
void gf_noMatchReport();

/// No aircraft has met a livery or missed one, as at the start of a run. The tables stay, and the counts of the day.
void forgetLiveMatches();
/// The same without the counts, as at the start of the process.
void resetLiveryMatching();

// The pieces of the ladder. A search sets liveryTitle and answers whether it is set; a title that the simulator has
// refused is cleared by who accepts it.

struct AirlineModelKey {
    std::string_view airline;
    std::string_view model;
};

/// One of the list's candidates: the first, or with RANDOM any. An empty list changes nothing.
void lf_pickTitle(AircraftRecord& aircraft, const TitleList& list);
/// index is passengerIndex or cargoIndex.
bool lf_tableSearch(AircraftRecord& aircraft, const AirlineModelKey& key, std::size_t index);
/// A freighter is content with a passenger livery, but not the other way round.
bool lf_airlineModelSearch(AircraftRecord& aircraft, const AirlineModelKey& key);
/// Of any airline; here a freighter is not content with a passenger livery.
bool lf_modelSearch(AircraftRecord& aircraft, std::string_view type);
/// Without a registration nothing changes; else the title of the registration, or none.
bool gf_liveryByRegcode(AircraftRecord& aircraft);

/// The types of SimilarByAirline, or none; with RANDOM in a new order each time. Good until the next call.
std::span<const CategorizedType> gf_similarForAirline(std::string_view airline, std::string_view type);
/// The types of SimilarWithLiveries in the same way; for a type that is not there, one of RandomTypes if its category
/// has such a list.
std::span<const CategorizedType> gf_similarOfType(std::string_view type);

/// The last steps, for an aircraft without a title; the answer is the step, if the title is set now.
int lf_genericFallback(AircraftRecord& aircraft);
/// False, and the title cleared, when the simulator has refused it. Else it is counted and logged.
bool lf_acceptTitle(AircraftRecord& aircraft, int step);
