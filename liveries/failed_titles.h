// liveries/failed_titles.h
// The liveries that the simulator has refused to create; they are not tried again while the process lives, not even
// after a restart of the run. Engine thread only.
#pragma once

#include <functional>
#include <string>
#include <unordered_set>

#include "core/text_hash.h"
#include "engine/aircraft_record.h"

using TextSet = std::unordered_set<std::string, TextHash, std::equal_to<>>;

extern TextSet FailedTitles;
/// "model airline" of each refused aircraft, for the summary.
extern TextSet NoCreateList;

/// Takes note that the simulator refused this aircraft's livery, and tells the user unless the run stops. When there
/// are twenty titles it throws kvd::UserErrorException 81.
void gf_noteFailedTitle(const AircraftRecord& aircraft);

/// Both sets empty, as at the start of the process.
void resetFailedTitles();
