// sim/controls.h
// The controls of an aircraft's object: each call queues events for the next frame. Takes simLock, so its caller must
// not hold it. Engine thread only, but for the calls that take an object id, which any thread may make.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

#include "engine/live_aircraft.h"

// Flaps and throttle go by an index, which the record keeps: what it holds already is not sent again. An index beyond
// the last position sends nothing, and is kept all the same.

/// 0 up, 1 to 3 ever further down, 4 up. Beyond that it is an error line. Not for Rotorcraft.
void gf_setFlaps(LiveAircraft& aircraft, std::int32_t index);
/// 0 idle, to 4 full.
void gf_setThrottle(LiveAircraft& aircraft, std::int32_t index);

/// The numbers are what the simulator's events take.
enum class Spoilers : std::uint32_t { retracted = 0, extended = 16383 };
enum class Gear : std::uint32_t { up = 0, down = 1 };

/// Not for Rotorcraft.
void gf_setSpoilers(const LiveAircraft& aircraft, Spoilers spoilers);
void gf_setGear(const LiveAircraft& aircraft, Gear gear);

void gf_startEngines(std::uint32_t objectId);
void gf_stopEngines(std::uint32_t objectId);

/// 1 or 0 for each of nav, beacon, landing, taxi, strobes, logo and cabin, in this order.
inline constexpr std::size_t lightCount = 7;
using LightSet = std::array<std::uint32_t, lightCount>;

/// All seven under one lock, so that no frame sends half of a set.
void gf_setLights(std::uint32_t objectId, const LightSet& lights);
void gf_setNavLights(std::uint32_t objectId, std::uint32_t value);
void gf_setCabinLights(std::uint32_t objectId, std::uint32_t value);
