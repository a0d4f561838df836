// sim/object_life.h
// What the simulator tells of our objects, from their coming into being to their end, as it reaches the aircraft's
// records. Engine thread only, while it holds inboxLock.
#pragma once

#include <vector>

#include "sim/engine_inbox.h"

/// The objects that exist and are being made active.
extern std::vector<EngineMessage> pendingActivations;

// One routine for each kind of message.

/// The object of a live aircraft exists: takes its id into the record, gives it a flight plan, asks for its static
/// data, and begins the activation. The simulator's own ids, those below 3, are refused.
void objectAdded(const EngineMessage& message);
/// The object of a static aircraft exists.
void staticObjectAdded(const EngineMessage& message);
/// The object is gone, and its record goes with it; unless it is to come back with another livery.
void objectRemoved(const EngineMessage& message);
/// Height of the centre of gravity, and pitch on the ground.
void staticDataArrived(const EngineMessage& message);
/// The simulator cannot create the livery; the record goes. Throws as gf_noteFailedTitle does.
void creationRefused(const EngineMessage& message);
/// The simulator is full; the record goes. Its livery is as good as before, and a live aircraft may come again with its
/// next feed record.
void creationHadNoRoom(const EngineMessage& message);

/// Erases the live aircraft that are marked for dropping as compactLiveTable does, and what one that was to be made
/// anew has left on the disk. Needs no lock.
void eraseDroppedLive();

/// Once a slot: counts each new object on, and makes it active 200 slots after it came into being.
void stepPendingActivations();

void resetObjectLife();
