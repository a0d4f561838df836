// engine/spawning.h
// How a buffered aircraft comes into being: its livery, its first phase, its first position. Engine thread only.
#pragma once

#include "engine/live_aircraft.h"

/// The aircraft goes to "adding2sim" and its create request is asked for; or it is marked for dropping, for want of a
/// livery; or it stays as it is and is tried again.
void spawnLiveAc(LiveAircraft& aircraft);

/// Position and attitude at element 0, on the way to element 1.
void initialState(LiveAircraft& aircraft);
