// engine/engine_state.h
// What the engine remembers beside its tables. Engine thread only.
#pragma once

#include <cstdint>
#include <string>
#include <unordered_set>
#include <vector>

#include "core/text_hash.h"

/// noMatchKey of the aircraft for which no livery was found; they are not tried again in this run.
extern std::unordered_set<std::string, TextHash, std::equal_to<>> noLiveryKeys;

/// An aircraft is between the start of its flare and its touchdown, where its height is wanted five times as often.
extern bool flareInProgress;

/// Hexids of aircraft that are still to be compared with the static ones.
extern std::vector<std::uint32_t> twinCheckQueue;

/// As at the start of a run.
void resetEngineState();
