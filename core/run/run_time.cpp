// core/run/run_time.cpp
#include "core/run/run_time.h"

#include <chrono>

#include "core/run_flags.h"
#include "core/week_slot.h"
#include "feed/traffic_reader.h"
#include "platform/clock.h"

namespace {

/// Beyond this (the year 2261) a time stamp does not fit the clock; it comes from outside and may be anything.
constexpr double latestFeedSeconds = 9.2e9;

WeekSlot presentWeekSlot() {
    const double feedSeconds = gTrafficReader.lastFeedTime;
    if (!gRealTrafficHistoric || feedSeconds == 0) {
        return weekSlotOf(platform::wallNow());
    }
    if (feedSeconds < 0 || feedSeconds > latestFeedSeconds) {
        return {};
    }
    const std::chrono::duration<double> sinceEpoch(feedSeconds);
    return weekSlotOf(platform::WallTime(std::chrono::duration_cast<platform::WallTime::duration>(sinceEpoch)));
}

} // namespace

void gf_setWeekSlot() {
    gWeekSlot = packedWeekSlot(presentWeekSlot());
}
