// core/week_slot.h
// The half hour of the week that stand statistics go by.
#pragma once

#include <atomic>
#include <cstdint>

#include "platform/clock.h"

/// Weekday and half-hour slot of a moment in UTC.
struct WeekSlot {
    int weekday = -1; ///< 1 to 7, Monday is 1; -1 when the time cannot be broken down
    int slot = 0;     ///< 0 to 47; the second half of an hour counts from 30 seconds before it begins

    friend bool operator==(const WeekSlot&, const WeekSlot&) = default;
};

WeekSlot weekSlotOf(platform::WallTime time);

/// The present week slot: the weekday in the low half, the slot in the high half. Written by the run thread.
extern std::atomic<std::uint64_t> gWeekSlot;

std::uint64_t packedWeekSlot(const WeekSlot& weekSlot);
WeekSlot unpackedWeekSlot(std::uint64_t packed);
