// engine/stepping.h
// How an active aircraft gets from sample to sample: a leg is planned when one is reached, and each slot in between
// adds the leg's increments. All that needs the future is decided when a leg is planned; that is why the stream runs
// behind the feed. Engine thread only.
#pragma once

#include "engine/live_aircraft.h"

/// Element 0 is reached: plans the leg to element 1 and removes element 0. An aircraft that has nothing left to fly to
/// is removed from the simulator. What fails is logged and thrown on.
void nextPosMain(LiveAircraft& aircraft);

/// One slot of the present leg. Not for an aircraft whose element 0 is stationary.
void perSlotStep(LiveAircraft& aircraft);
