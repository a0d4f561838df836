// tests/sim/transport/substitution/stand_in.h
// A library that defines the calls of sim/simconnect.h and does nothing but remember them.
#pragma once

#include <string>
#include <vector>

/// The names of the calls so far, in their order.
extern std::vector<std::string> callsOfStandIn;
