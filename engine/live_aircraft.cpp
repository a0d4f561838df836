// engine/live_aircraft.cpp
#include "engine/live_aircraft.h"

#include <type_traits>

// A table that grows moves its records; a copy would copy every stream.
static_assert(std::is_nothrow_move_constructible_v<LiveAircraft> && std::is_nothrow_move_assignable_v<LiveAircraft>);

#include <utility>

void takeCallsign(LiveAircraft& aircraft, const std::string& callsign) {
    aircraft.callsign = callsign;
    aircraft.flightCode1 = callsign;
    aircraft.flightCode2.clear();
}

void changePhase(LiveAircraft& aircraft, FlightPhase phase) {
    if (aircraft.phase != phase) {
        aircraft.previousPhase = std::exchange(aircraft.phase, phase);
    }
}

void clearCurve(LiveAircraft& aircraft) {
    aircraft.curve.p1 = aircraft.curve.p2 = aircraft.curve.p3 = {GroundCurve::none, GroundCurve::none};
    aircraft.curveT = 0;
}
