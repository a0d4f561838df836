// liveries/livery_matching.h
// Which of the user's liveries an aircraft gets. Engine thread only.
// For now it only knows titles by category, which somebody has to register; the ladder of ever looser matches takes its place.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <unordered_map>

#include "engine/aircraft_record.h"
#include "liveries/failed_titles.h"
#include "liveries/reference_tables.h"

/// Registration to the title of its own livery.
extern TextTable<std::string_view> RegcodeTable;

/// noMatchKey of the aircraft that hold a registration and for which gf_rematchLivery found nothing; written by the spawning.
extern TextSet NoMatchList;
std::string noMatchKey(const AircraftRecord& aircraft);

/// The livery last used for a transponder address, so that an aircraft that comes back looks the same. Written by the
/// spawning; the titles are good until the reset.
extern std::unordered_map<std::uint32_t, std::string_view> hexidLiveries;

/// Sets liveryTitle, or leaves it empty.
void gf_rematchLivery(AircraftRecord& aircraft);

/// Temporary: the title stands for every aircraft of its category. It must stay valid until the reset.
void registerLivery(AircraftCategory category, std::string_view title);

/// No title known.
void resetLiveryMatching();
