// sim/stand_requests.cpp
#include "sim/stand_requests.h"

#include <atomic>

#include "sim/user_state.h"

namespace {

constexpr double creepKnots = 2;

std::atomic<bool> userStandWanted{false};
std::atomic<bool> closestStandWanted{false};

} // namespace

void wantUserStand() {
    userStandWanted = true;
}

bool takeUserStandRequest() {
    return userStandWanted.exchange(false);
}

void refreshClosestStand() {
    if (userOnGroundKnown && userStateNow().groundSpeed <= creepKnots) {
        closestStandWanted = true;
    }
}

bool takeClosestStandRequest() {
    return closestStandWanted.exchange(false);
}

void resetStandRequests() {
    userStandWanted = false;
    closestStandWanted = false;
}
