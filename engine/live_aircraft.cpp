// engine/live_aircraft.cpp
#include "engine/live_aircraft.h"

#include <utility>

void changePhase(LiveAircraft& aircraft, FlightPhase phase) {
    if (aircraft.phase != phase) {
        aircraft.previousPhase = std::exchange(aircraft.phase, phase);
    }
}
