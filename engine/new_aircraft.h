// engine/new_aircraft.h
// The first record of an aircraft. Engine thread only.
#pragma once

#include <string>

#include "engine/aircraft_category.h"
#include "feed/feed_record.h"

/// The type of the record's aircraft: the registration table's, or else the feed's.
std::string modelOf(const FeedRecord& record);

/// Makes the record's aircraft, in "buffer", unless its type or height is of no use.
void newAircraft(FeedRecord&& record);

/// Whether the user wants aircraft of this category at all.
bool isCategoryWanted(AircraftCategory category);

/// Forgets which types were named in the log already.
void resetNewAircraft();
