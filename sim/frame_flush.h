// sim/frame_flush.h
// What the engine wants of the simulator's objects reaches it once per frame: the engine thread appends and swaps, the
// frame event on SimClient sends. Neither waits for the other: who finds simLock taken leaves this turn out.
#pragma once

#include "engine/live_aircraft.h"

/// Engine thread: writes the aircraft's position down for the next frame. Takes no lock, and allocates nothing as long
/// as the aircraft of a slot are no more than there is room for.
void appendPosition(const LiveAircraft& aircraft);

/// Engine thread, once a tick: hands this tick's positions to the frame. Those of a tick that finds simLock taken are
/// thrown away, for the next tick writes anew.
void swapPositions();

/// Engine thread: what was written and not sent yet is of no use any more, for the flight is paused.
void dropPositions();

/// SimClient, with each frame: sends positions, events, creations and removals. While simLock is taken it does nothing,
/// and the next frame sends it all. Once simFailed is set it only empties the queues.
void flushFrame();
