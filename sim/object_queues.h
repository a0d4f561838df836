// sim/object_queues.h
// The aircraft that wait to be created in the simulator or to be removed from it. The simulator does not cope with
// bursts, so they go to the frame's queues at a fixed pace, the live ones before the static ones. Engine thread only.
#pragma once

#include <cstdint>
#include <deque>

#include "engine/aircraft_record.h"
#include "sim/sim_queues.h"

extern std::deque<CreateRequest> liveCreateQueue;
extern std::deque<CreateRequest> staticCreateQueue;
extern std::deque<std::uint32_t> removalQueue; ///< object ids

/// The one way to take an aircraft away, live or static: it changes the record's state and the queues, and never
/// erases, so that a walk over the aircraft may go on. What is not with the simulator yet is marked for dropping or
/// withdrawn; an object that is just coming into being goes when it would become active.
void removeAircraftFromSim(AircraftRecord& aircraft);

/// Once a slot: hands on one removal every 10 slots, and one creation every 50, but never more than those of a second
/// to one frame.
void stepObjectQueues(std::int32_t slot);
/// One removal, if any waits: for when no slots run.
void handOnRemoval();

void resetObjectQueues();
