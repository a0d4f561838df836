// engine/extension.h
// What an aircraft does when its samples have run out: it holds on the ground, flies or rolls on for a while, or goes.
// Engine thread only.
#pragma once

#include "engine/live_aircraft.h"

/// For a stream of one element: appends one more, or answers false, which ends the aircraft; samplesLostTo tells why
/// then, and is `nothing` when no more may be made up.
bool extendStream(LiveAircraft& aircraft);

/// Real samples are there again: nothing is made up any more, and the aircraft finds back to its track.
void endExtension(LiveAircraft& aircraft);

/// Not held any more.
void endHolding(LiveAircraft& aircraft);
