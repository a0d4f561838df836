// engine/identity.h
// Who an aircraft is, as the feed tells it anew with each record. Engine thread only.
#pragma once

#include "engine/live_aircraft.h"
#include "feed/feed_record.h"

/// Takes what the record tells of the aircraft's route, registration and call sign. False when the record's sample is
/// not to be used: the aircraft is made anew for it, or the record is that of a ghost.
bool checkIdentity(LiveAircraft& aircraft, const FeedRecord& record);
