// engine/live_update.cpp
#include "engine/live_update.h"

#include <exception>

#include <fmt/format.h>

#include "core/log.h"
#include "core/slot_clock.h"
#include "core/user_error.h"
#include "engine/aircraft_log.h"
#include "engine/spawn_test.h"
#include "engine/stepping.h"
#include "sim/frame_flush.h"
#include "sim/object_queues.h"

namespace {

constexpr double secondsPerMinute = 60;
constexpr std::int32_t answerSlots = 3000;

/// The simulator may never answer a creation. An aircraft whose samples have long run out is not waited for; one on its
/// stand has time.
void checkAnswer(LiveAircraft& aircraft) {
    if (aircraft.removeWhenAdded != 0 || aircraft.phase == FlightPhase::parked || aircraft.stream.empty()) {
        return;
    }
    const Sample& last = aircraft.stream[aircraft.stream.size() - 1];
    if (slotClock - answerSlots > last.slot) {
        removeSaying(aircraft, "the simulator has not created it");
    }
}

void removeEmptied(LiveAircraft& aircraft) {
    log(fmt::format("{} stream empty ? {}, hexid:{}, objectid:{}, alt:{:.0f} ft, lalo:{}, TAS:{:.0f}", "updateLiveAc",
                    shortLine(aircraft), aircraft.hexid, aircraft.objectId, aircraft.alt,
                    fmt::format("{:.6f},{:.6f}", aircraft.lat, aircraft.lon), aircraft.tas));
    removeAircraftFromSim(aircraft);
}

void removeWithoutObject(LiveAircraft& aircraft) {
    log(fmt::format("{} objectid=0? hexid: {},cs:{}, reg:{}, aimo:{} sz:{}", "updateLiveAc", aircraft.hexid,
                    aircraft.callsign, aircraft.registration, aircraftTag(aircraft), aircraft.stream.size()));
    removeAircraftFromSim(aircraft);
}

void beginNextLeg(LiveAircraft& aircraft) {
    nextPosMain(aircraft);
    aircraft.vsFps = aircraft.vsFpm / secondsPerMinute;
    aircraft.tas = aircraft.stream[0].stationary != 0 ? 0 : aircraft.tasSigned;
}

void drive(LiveAircraft& aircraft) {
    if (aircraft.stream.empty()) {
        removeEmptied(aircraft);
        return;
    }
    if (slotClock >= aircraft.stream[0].slot) {
        beginNextLeg(aircraft);
    }
    if (aircraft.lifeState != LifeState::active) {
        return;
    }
    if (aircraft.stream[0].stationary == 0) {
        perSlotStep(aircraft);
    }
    if (aircraft.objectId == 0) {
        removeWithoutObject(aircraft);
        return;
    }
    appendPosition(aircraft);
}

/// One that goes at the end of this walk must not make room for itself before.
void testBuffered(LiveAircraft& aircraft) {
    if (aircraft.dropRecord == 0) {
        lf_spawnTest(aircraft);
    }
}

void update(LiveAircraft& aircraft) {
    switch (aircraft.lifeState) {
    case LifeState::buffer: testBuffered(aircraft); break;
    case LifeState::adding2sim: checkAnswer(aircraft); break;
    case LifeState::active: drive(aircraft); break;
    case LifeState::liveryrespawn:
    case LifeState::removingfromsim: break;
    }
}

} // namespace

bool updateLiveAc(LiveAircraft& aircraft) {
    try {
        update(aircraft);
    } catch (const kvd::UserErrorException&) {
        throw;
    } catch (const std::exception& failure) {
        logFailure("updateLiveAc", failure, aircraft);
    }
    return aircraft.dropRecord != 0 || aircraft.dropRecordQueued != 0;
}
