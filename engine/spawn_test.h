// engine/spawn_test.h
// Whether the time has come to create a buffered aircraft, and whether it may be created at all. Engine thread only.
#pragma once

#include "engine/live_aircraft.h"

/// For an aircraft in "buffer", once a slot: creates it, lets it wait, shortens its stream or marks it for dropping.
void lf_spawnTest(LiveAircraft& aircraft);

/// Removes the active aircraft that is farthest from the user, if one is farther than that; whether there was one.
bool removeFarthestActive(double fartherThanNm);
