// core/slot_clock.h
// The count of engine slots, nominally 10 ms each.
#pragma once

#include <atomic>
#include <cstdint>

/// Raised by the run thread alone, once a slot; read by any thread.
extern std::atomic<std::int32_t> slotClock;

inline constexpr std::int32_t slotsPerSecond = 100;
