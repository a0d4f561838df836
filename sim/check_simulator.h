// sim/check_simulator.h
// Whether the simulator that has answered is the one that the user wants. SimClient only.
#pragma once

#include "sim/simconnect.h"

/// Shows and logs the simulator's name and version. Throws kvd::UserErrorException 78 for one that is not wanted; its
/// window control for another install path is enabled then, if a path may help.
void checkSimulator(const SIMCONNECT_RECV_OPEN& open);
