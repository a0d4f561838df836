// sim/simulator_link.h
// The one connection to the simulator, the lock that every call on it is made under, and what a failed call leads to.
#pragma once

#include <mutex>

#include "sim/simconnect.h"

/// Guards the queues to the simulator and every call on the connection, from whatever thread: between a creation and
/// the question for its packet id no other call may be made. Not held while SimConnect_CallDispatch runs. On the engine
/// thread it is taken while inboxLock is held, so nobody takes inboxLock while holding it.
extern std::mutex simLock;

/// Null while no session is open; written by SimClient alone, under simLock.
extern HANDLE simHandle;

/// Whether calls are to be made at all: a session is open, and no request has failed. Under simLock.
bool canSend();

/// A call on the connection has failed: shows "SimConnect request error", sets simFailed so that all sending stops, and
/// asks for a restart after 9 seconds. Any thread that does not hold simLock: it tells the window.
void requestFailed();

/// The simulator has gone: the flight does not run any more, and the run ends with reason "simulator closed", unless an
/// exit is under way. Counts once a session. Any thread.
void simulatorGone();

/// The user has loaded a flight or moved to another place: what the run knows does not hold any more. Asks for a stop
/// with reason "new flight", unless an exit is under way. Any thread.
void newFlightBegins();

/// As before a session.
void resetSimulatorLink();
