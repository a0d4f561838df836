// engine/aircraft_log.h
// The log's words about an aircraft: what failed in its update, and why it goes. Engine thread only.
#pragma once

#include <exception>
#include <string_view>

#include "engine/live_aircraft.h"

/// "function: what failed" with all that tells the aircraft and its state; states outside their tables as numbers.
void logFailure(std::string_view function, const std::exception& failure, const LiveAircraft& aircraft);

/// Why an aircraft has no samples to go on with, for removeSaying; `otherwise` when they were lost to nothing.
const char* whyLost(SamplesLostTo cause, const char* otherwise);

/// removeAircraftFromSim, with the reason in the log: without it nobody could tell why an aircraft was not seen any
/// more. Nothing for one whose removal only waits for its object.
void removeSaying(LiveAircraft& aircraft, std::string_view reason);
