// sim/sim_exceptions.h
// What the simulator complains of. SimClient only.
#pragma once

#include "sim/simconnect.h"

/// Throws kvd::UserErrorException 95 when the simulator's interface is of another version.
void onSimException(const SIMCONNECT_RECV_EXCEPTION& exception);
