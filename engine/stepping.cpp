// engine/stepping.cpp
#include "engine/stepping.h"

#include <algorithm>
#include <exception>
#include <numbers>

#include "engine/air_increments.h"
#include "engine/aircraft_log.h"
#include "engine/angles.h"
#include "engine/extension.h"
#include "engine/retiming.h"

namespace {

constexpr double flarePitch = -4 * radiansPerDegree; ///< not further nose up than this

/// Whether element 1 is somewhere to go. An aircraft that flies never stops for a stationary report.
bool hasTarget(LiveAircraft& aircraft) {
    while (true) {
        if (aircraft.stream.size() >= 2) {
            if (aircraft.onGround != 0 || aircraft.stream[1].stationary == 0 ||
                aircraft.category == AircraftCategory::Rotorcraft) {
                return true;
            }
            aircraft.stream.erase(1);
        } else if (!extendStream(aircraft)) {
            return false;
        }
    }
}

void planStationaryLeg(LiveAircraft& aircraft) {
    aircraft.dLat = 0;
    aircraft.dLon = 0;
    if (aircraft.rollingOut == 0 && aircraft.takingOff == 0) {
        shrinkWindow(aircraft);
    }
}

void planLeg(LiveAircraft& aircraft) {
    clearCurve(aircraft);
    const Sample& from = aircraft.stream[0];
    Sample& to = aircraft.stream[1];
    to.stationary = isSamePosition(positionOf(from), positionOf(to)) ? 1 : 0;
    if (to.stationary == 0) {
        aircraft.targetHeading = bearing(positionOf(from), positionOf(to));
    }
    if (aircraft.onGround == 0) {
        retimeAir(aircraft);
    }
    if (aircraft.stream[1].stationary != 0) {
        planStationaryLeg(aircraft);
        return;
    }
    planWay(aircraft);
    if (aircraft.onGround == 0) {
        airIncrements(aircraft);
    } else {
        aircraft.dHeading = 0; // what it was born with must not turn it where no leg computes it anew
    }
}

/// At a pole the latitude is folded back and the longitude is that of the other side.
void keepOnEarth(LiveAircraft& aircraft) {
    if (aircraft.lat > 90 || aircraft.lat < -90) {
        aircraft.lat = (aircraft.lat > 0 ? 180 : -180) - aircraft.lat;
        aircraft.lon += 180;
    }
    if (aircraft.lon > 180) {
        aircraft.lon -= 360;
    } else if (aircraft.lon < -180) {
        aircraft.lon += 360;
    }
}

bool turnsWithLeg(FlightPhase phase) {
    return phase == FlightPhase::take_off || phase == FlightPhase::flying || phase == FlightPhase::parked;
}

void stepHorizontally(LiveAircraft& aircraft) {
    if (aircraft.curve.exists()) {
        return;
    }
    if (turnsWithLeg(aircraft.phase)) {
        aircraft.heading = normalizedHeading(aircraft.heading + aircraft.dHeading);
    }
    if (aircraft.phase != FlightPhase::pushed_back) {
        aircraft.lat += aircraft.dLat;
        aircraft.lon += aircraft.dLon;
    }
}

/// The pitch arrives also when it is there already, or does not move at all: else the nose would never come down.
bool hasReachedGroundPitch(const LiveAircraft& aircraft) {
    const double left = aircraft.groundPitch - aircraft.pitch;
    return left == 0 || aircraft.dPitch == 0 || (left < 0) != (aircraft.dPitch < 0);
}

void lowerNose(LiveAircraft& aircraft) {
    aircraft.pitch += aircraft.dPitch;
    if (hasReachedGroundPitch(aircraft)) {
        aircraft.pitch = aircraft.groundPitch;
        aircraft.dPitch = aircraft.bank = aircraft.dBank = 0;
        aircraft.nosewheelDown = 0;
        aircraft.flareStage = 0;
    }
    aircraft.bank += aircraft.dBank;
}

void stepFlare(LiveAircraft& aircraft) {
    aircraft.bank = std::clamp(aircraft.bank + aircraft.dBank, -std::numbers::pi, std::numbers::pi);
    aircraft.pitch = std::max(aircraft.pitch + aircraft.dPitch, flarePitch);
    aircraft.alt += aircraft.dAlt;
}

void stepVertically(LiveAircraft& aircraft) {
    if (aircraft.nosewheelDown != 0) {
        lowerNose(aircraft);
    } else if (aircraft.flareStage != 0) {
        stepFlare(aircraft);
    } else if (aircraft.onGround != 0) {
        aircraft.pitch = aircraft.groundPitch;
        aircraft.bank = 0;
    } else {
        aircraft.bank += aircraft.dBank;
        aircraft.pitch += aircraft.dPitch;
        aircraft.alt += aircraft.dAlt;
    }
}

} // namespace

void nextPosMain(LiveAircraft& aircraft) {
    try {
        if (!hasTarget(aircraft)) {
            removeSaying(aircraft, whyLost(aircraft.samplesLostTo, "no positions any more"));
            return;
        }
        planLeg(aircraft);
        aircraft.stream.popFront();
    } catch (const std::exception& failure) {
        logFailure("nextPosMain", failure, aircraft);
        throw;
    }
}

void perSlotStep(LiveAircraft& aircraft) {
    stepHorizontally(aircraft);
    if (aircraft.phase != FlightPhase::take_off) {
        stepVertically(aircraft);
    }
    keepOnEarth(aircraft);
}
