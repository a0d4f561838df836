// sim/stand_requests.h
// What the session wants to have looked up in the stands, which belong to the run thread. Requests that are alike join:
// a request counts until it is taken.
#pragma once

/// The stand under the user is to be found anew and shown. Any thread.
void wantUserStand();
/// Whether that was asked for since the last call. Run thread.
bool takeUserStandRequest();

/// The reserved stand of the park airport in use is to become the one that the user stands on. Counts only for a user
/// who is known to stand or creep. Any thread.
void refreshClosestStand();
/// Whether that was asked for since the last call. Run thread.
bool takeClosestStandRequest();

void resetStandRequests();
