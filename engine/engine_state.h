// engine/engine_state.h
// What the engine remembers beside its tables. Engine thread only.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

/// An aircraft is between the start of its flare and its touchdown, where its height is wanted five times as often.
extern bool flareInProgress;

/// Hexids of aircraft that are still to be compared with the static ones, the next one first. Written by queueTwinCheck
/// and by whoever serves it.
extern std::vector<std::uint32_t> twinCheckQueue;

/// More aircraft than the simulator takes.
inline constexpr std::size_t mostTwinChecks = 1024;

/// At the end of the queue. When it is full the oldest entry goes: the queue never grows within a slot, nor without a
/// reader.
void queueTwinCheck(std::uint32_t hexid);

/// As at the start of a run.
void resetEngineState();
