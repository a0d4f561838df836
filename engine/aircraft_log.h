// engine/aircraft_log.h
// The log's words about an aircraft: what failed in its update, and why it goes. Engine thread only.
#pragma once

#include <exception>
#include <string_view>

#include "engine/live_aircraft.h"

/// "function: what failed" with all that tells the aircraft and its state; states outside their tables as numbers.
void logFailure(std::string_view function, const std::exception& failure, const LiveAircraft& aircraft);

/// removeAircraftFromSim, with the reason in the log: without it nobody could tell why an aircraft was not seen any
/// more. Nothing for one whose removal only waits for its object.
void removeSaying(LiveAircraft& aircraft, std::string_view reason);
