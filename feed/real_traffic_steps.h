// feed/real_traffic_steps.h
// RealTraffic in the course of a run: its first connect, what it is told each second, its loss and its return. A wait
// for it blocks the run, and any stop of the run ends the wait. Run thread only.
#pragma once

#include <string>

#include "sim/user_state.h"

/// Begins to listen on PORT_NUMBER. Without RealTraffic on this PC, or with AEROWINX, there is no link, and the lamp is
/// lit for good. Throws as startListening does.
void openRealTrafficLink();

/// Waits for the client's first connect, and asks for its version. Does nothing without a link.
void connectRealTraffic();

/// Tells the client where the user is, as soon as that is known; every second. Without a client it waits for its
/// return.
void sendUserState();

/// Tells a client that follows the simulator's clock the time, as soon as that is known; every five seconds.
void sendSimTime();

/// The message for a state of the user's aircraft.
std::string userStateText(const UserState& state);
