// sim/session.h
// The connection to the simulator while it lives, on a thread of its own, SimClient; and the questions that others put
// to the simulator through it. The run thread starts, stops and joins SimClient; the window thread may do so once no
// run thread is left.
#pragma once

#include <exception>
#include <stop_token>

#include "sim/user_state.h"

/// Starts SimClient with a fresh session; a former thread is stopped and joined first.
void startSimClient();
/// Asks it to end, without waiting.
void stopSimClient();
/// Waits for its end, if there is one: asked to stop it needs no more than 100 ms, unless the transport holds it up
/// while it connects.
void joinSimClient();

// The requests take simLock. Without a session, or after a failed request, nothing is sent; a call that fails is a
// failed request. Any thread that does not hold simLock.

/// Asks for the user's position, and answers the last one that has come.
UserState requestUserPosition();
/// Asks for title and model of the user's aircraft.
void requestUserIdentity();
/// Asks for the aircraft within the injection radius.
void requestAircraftInRange();
/// Asks to be told, for every second of the simulator, whether the user is on the ground.
void requestUserGroundEachSecond();

/// What an exception at the top of SimClient leads to; the text of a user error stands, and the thread ends with it.
void endSessionOn(const std::exception_ptr& failure, const std::stop_token& stop);

/// Everything that a session leaves behind. While no SimClient runs.
void resetSession();
