// engine/livery_respawn.h
// An aircraft that is not who it seemed to be is created again where it is. Engine thread only.
#pragma once

#include "engine/live_aircraft.h"

/// Removes the object of an active aircraft; when the simulator has confirmed it the aircraft goes the way of a new
/// one, from where it is now.
void liveryRespawn(LiveAircraft& aircraft);
