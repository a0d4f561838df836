// engine/engine_state.h
// What the engine remembers beside its tables. Engine thread only.
#pragma once

#include <cstdint>
#include <vector>

/// An aircraft is between the start of its flare and its touchdown, where its height is wanted five times as often.
extern bool flareInProgress;

/// Hexids of aircraft that are still to be compared with the static ones.
extern std::vector<std::uint32_t> twinCheckQueue;

/// As at the start of a run.
void resetEngineState();
