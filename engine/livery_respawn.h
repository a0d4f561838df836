// engine/livery_respawn.h
// An aircraft that is not who it seemed to be is created again where it is. Engine thread only.
#pragma once

#include "engine/live_aircraft.h"

/// What becomes of the place of an aircraft on its stand.
enum class StandOnRespawn { kept, soughtAnew };

/// Removes the object of an active aircraft; when the simulator has confirmed it the aircraft goes the way of a new
/// one, from where it is now. False when that failed, which is logged: the aircraft then flies on as it is.
bool liveryRespawn(LiveAircraft& aircraft, StandOnRespawn stand = StandOnRespawn::kept);
