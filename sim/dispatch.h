// sim/dispatch.h
// What each record from the simulator leads to. It changes no aircraft table: the engine reads its inbox for that.
// SimClient only.
#pragma once

#include "sim/simconnect.h"

/// Acts on one record of `bytes` bytes; one that is shorter than its kind is one error line. Throws what ends the
/// session: kvd::UserErrorException 71, 73, 78 or 95. Not for a thread that holds simLock or inboxLock.
void dispatchRecord(const SIMCONNECT_RECV* record, DWORD bytes);

/// The same for SimConnect_CallDispatch; `failure` is a std::exception_ptr. An exception must not pass through the
/// simulator's library: it is kept there, and what follows is not looked at.
void dispatchProcedure(SIMCONNECT_RECV* record, DWORD bytes, void* failure);
