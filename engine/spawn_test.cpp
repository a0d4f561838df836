// engine/spawn_test.cpp
#include "engine/spawn_test.h"

#include <algorithm>
#include <optional>

#include "core/injection_radius.h"
#include "core/parameters.h"
#include "core/slot_clock.h"
#include "engine/aircraft_log.h"
#include "engine/aircraft_tables.h"
#include "engine/angles.h"
#include "engine/engine_state.h"
#include "engine/ghosts.h"
#include "engine/spawning.h"
#include "liveries/livery_matching.h"
#include "liveries/reference_tables.h"
#include "sim/object_queues.h"
#include "sim/user_state.h"

namespace {

constexpr std::int32_t marginSlots = 100;
constexpr std::int32_t rollingMarginSlots = 300;
constexpr std::size_t busyCreateQueue = 10;
constexpr double fartherNm = 0.1;
/// Seldom more from this test to the first look for the new object: the creations before it, and the looks' second.
constexpr double secondsToFirstLook = 7;
constexpr double secondsPerHour = 3600;

/// What is created must have a future, the more so if it moves on the ground.
bool isDue(const LiveAircraft& aircraft) {
    const Sample& first = aircraft.stream[0];
    const bool rolls = first.airborne == 0 && first.gs != 0;
    return slotClock >= first.slot - (rolls ? rollingMarginSlots : marginSlots);
}

bool isBlockedGhost(const LiveAircraft& aircraft) {
    return isGhostCallsign(aircraft.callsign) &&
           std::find(blockedGhosts.begin(), blockedGhosts.end(), aircraft.callsign) != blockedGhosts.end();
}

bool isPartlyAirborne(const SampleStream& stream) {
    for (std::size_t i = 1; i < stream.size(); ++i) {
        if (stream[i].airborne != stream[0].airborne) {
            return true;
        }
    }
    return false;
}

/// What will be in the queue a few slots later counts as well: in a burst an aircraft would else come into being so
/// late that it had to race after its track, which the recorded flights show as jumps.
bool mustWaitForQueue(const LiveAircraft& aircraft) {
    return addingStack.size() + liveCreateQueue.size() > busyCreateQueue && aircraft.phase == FlightPhase::birth;
}

/// One a slot: no aircraft is created in mid-take-off or mid-landing, and one that has to wait grows older.
void loseHeadTo(SamplesLostTo cause, LiveAircraft& aircraft) {
    aircraft.stream.popFront();
    aircraft.samplesLostTo = cause;
}

bool isActive(const LiveAircraft& aircraft) {
    return aircraft.lifeState == LifeState::active;
}

std::size_t liveCount() {
    return static_cast<std::size_t>(std::count_if(liveTable.begin(), liveTable.end(), isActive)) + addingStack.size() +
           liveCreateQueue.size();
}

double nmFromUser(const LatLon& position) {
    return greatCircleNm(positionOf(gUserState), position);
}

/// The simulator is asked for what is within the range alone. What is created beyond it would never be recognised, and
/// so neither driven nor removed: a fast user may have left it behind since the feed told of it.
bool isLeftBehind(const LiveAircraft& aircraft) {
    const double leavesNm = gUserState.groundSpeed * secondsToFirstLook / secondsPerHour;
    return aircraft.phase == FlightPhase::birth && isPosition(positionOf(gUserState)) &&
           nmFromUser(positionOf(aircraft.stream[0])) + leavesNm > gRadiusNm;
}

/// There is room, or it is made.
bool hasRoom(const LiveAircraft& aircraft) {
    return liveCount() < static_cast<std::size_t>(MAX_LIVE_SEL.value) ||
           removeFarthestActive(nmFromUser(positionOf(aircraft.stream[0])) + fartherNm);
}

bool isBlocked(const LiveAircraft& aircraft) {
    return !aircraft.callsign.empty() && BLOCK_CALLSIGN.value() == aircraft.callsign;
}

void takeAirframe(LiveAircraft& aircraft) {
    const std::optional<DbaseRecord> known = gf_findRegcodeRecord(aircraft.registration);
    if (!known) {
        return;
    }
    if (!known->type.empty()) {
        aircraft.model = known->type;
    }
    if (const std::string_view airline = known->opr.empty() ? known->airl : known->opr; !airline.empty()) {
        aircraft.airline = airline;
    }
    aircraft.isCargo = known->cargo ? 1 : 0;
}

void completeIdentity(LiveAircraft& aircraft) {
    takeAirframe(aircraft);
    if (!hasUsableCallsign(aircraft) && !aircraft.registration.empty()) {
        takeCallsign(aircraft, aircraft.registration);
    }
    if (aircraft.airline.empty()) {
        aircraft.airline = airlineFromCallsign(aircraft.callsign);
    }
}

/// Why the aircraft must not be created; null when it may. Asked in this order, for room is made by another's removal.
const char* objectionTo(LiveAircraft& aircraft) {
    if (MAX_LIVE_SEL.value == 0) {
        return "no live aircraft are wanted";
    }
    if (!hasRoom(aircraft)) {
        return "there are as many live aircraft as wanted, and they are nearer";
    }
    if (isBlocked(aircraft)) {
        return "its call sign is blocked";
    }
    completeIdentity(aircraft);
    if (!hasUsableCallsign(aircraft)) {
        return "it has no usable call sign";
    }
    if (NoMatchList.contains(noMatchKey(aircraft))) {
        return "there is no livery for it";
    }
    if (hasPlainTwin(aircraft.callsign)) {
        return "it is a ghost";
    }
    return nullptr;
}

} // namespace

void lf_spawnTest(LiveAircraft& aircraft) {
    SampleStream& stream = aircraft.stream;
    if (stream.empty()) {
        removeSaying(aircraft, "no positions any more");
    } else if (!isDue(aircraft)) {
        return;
    } else if (stream.size() == 1) {
        // With a single position left nothing can be flown.
        removeSaying(aircraft, whyLost(aircraft.samplesLostTo, "it was not seen again"));
    } else if (isBlockedGhost(aircraft)) {
        removeSaying(aircraft, "it is a ghost that was removed before");
    } else if (isPartlyAirborne(stream)) {
        loseHeadTo(SamplesLostTo::takeOffOrLanding, aircraft);
    } else if (isLeftBehind(aircraft)) {
        loseHeadTo(SamplesLostTo::rangeEdge, aircraft);
    } else if (mustWaitForQueue(aircraft)) {
        loseHeadTo(SamplesLostTo::creationQueue, aircraft);
    } else if (const char* objection = objectionTo(aircraft)) {
        removeSaying(aircraft, objection);
    } else {
        spawnLiveAc(aircraft);
    }
}

bool removeFarthestActive(double fartherThanNm) {
    LiveAircraft* farthest = nullptr;
    double farthestNm = fartherThanNm;
    for (LiveAircraft& aircraft : liveTable) {
        if (!isActive(aircraft)) {
            continue;
        }
        if (const double nm = nmFromUser({aircraft.lat, aircraft.lon}); nm > farthestNm) {
            farthest = &aircraft;
            farthestNm = nm;
        }
    }
    if (farthest != nullptr) {
        removeSaying(*farthest, "it makes room for a nearer one");
    }
    return farthest != nullptr;
}
