// engine/aircraft_states.h
// The two state machines of an aircraft: what it does, and what its object in the simulator does.
// Value types without state: usable from any thread.
#pragma once

#include <cstdint>
#include <string>

/// The numbers are stored and compared, so they are fixed.
enum class FlightPhase : std::int32_t {
    pushing_back = 0, ///< being pushed off a stand along a prepared curve
    pushed_back = 1,  ///< push finished, waiting for taxi samples
    taxi = 2,         ///< moving on the ground under the control of its samples
    take_off = 3,     ///< take-off roll, rotation and initial climb
    flying = 4,       ///< airborne
    parking = 5,      ///< driving to a chosen stand
    parked = 6,       ///< standing on a stand
    birth = 7,        ///< before the first spawn decision
};

enum class LifeState : std::int32_t {
    buffer = 0,          ///< samples collect, nothing in the simulator
    adding2sim = 1,      ///< a create request is queued or sent, the object does not exist yet
    active = 2,          ///< the object exists and is driven every slot
    liveryrespawn = 3,   ///< the object is being removed in order to be created again with another livery
    removingfromsim = 4, ///< removal is queued or sent; the record goes when the simulator confirms
};

/// The name as logs and window print it. Throws std::out_of_range "invalid unordered_map<K, T> key" for a value outside
/// the table.
const std::string& printedName(FlightPhase phase);
const std::string& printedName(LifeState state);
