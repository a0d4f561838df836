// engine/live_update.h
// What each slot does to one live aircraft. Engine thread only.
#pragma once

#include "engine/live_aircraft.h"

/// Steps the aircraft and writes its position down for the next frame. Whether its record is to be dropped. A failure
/// is logged and costs this aircraft this slot; only kvd::UserErrorException is thrown.
bool updateLiveAc(LiveAircraft& aircraft);
