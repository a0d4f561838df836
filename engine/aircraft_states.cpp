// engine/aircraft_states.cpp
#include "engine/aircraft_states.h"

#include "engine/printed_names.h"

namespace {

const PrintedNames<8> phaseNames{"pushing_back", "pushed_back", "taxi",   "take_off",
                                 "flying",       "parking",     "parked", "birth"};
const PrintedNames<5> stateNames{"buffer", "adding2sim", "active", "liveryrespawn", "removingfromsim"};

} // namespace

const std::string& printedName(FlightPhase phase) {
    return phaseNames.at(phase);
}

const std::string& printedName(LifeState state) {
    return stateNames.at(state);
}
