// engine/sample_decoding.h
// What a further sample does to the stream of a known aircraft. Engine thread only.
#pragma once

#include "engine/live_aircraft.h"

/// Takes the sample into the stream, or drops it; may remove the aircraft. What fails is logged and thrown on.
void decodeExisting(LiveAircraft& aircraft, Sample sample);

/// Whether the sample brings something new against the last one. Sets its stationary mark, and turns what is no
/// movement into a copy of the last one that stands still. The stream must not be empty.
bool positionFilter(const LiveAircraft& aircraft, Sample& sample);
