// engine/feed_filter.h
// What of the feed reaches an aircraft: each record begins an aircraft, goes on to its aircraft's stream, or is
// dropped. Engine thread only.
#pragma once

#include "engine/live_aircraft.h"
#include "feed/feed_record.h"

/// Acts on one record. Throws what the decoding of its sample throws.
void processFeedRecord(FeedRecord&& record);

/// Whether an aircraft at this height is neither truly airborne nor on the ground: just above the airport in use.
bool hangsOverRunway(double altFeet);
