// core/run/run_time.cpp
#include "core/run/run_time.h"

#include <chrono>

#include "core/run_flags.h"
#include "core/week_slot.h"
#include "feed/traffic_reader.h"
#include "platform/clock.h"

namespace {

platform::WallTime timeOfTheFeed() {
    const double feedSeconds = gTrafficReader.lastFeedTime;
    if (!gRealTrafficHistoric || feedSeconds <= 0) {
        return platform::wallNow();
    }
    const std::chrono::duration<double> sinceEpoch(feedSeconds);
    return platform::WallTime(std::chrono::duration_cast<platform::WallTime::duration>(sinceEpoch));
}

} // namespace

void gf_setWeekSlot() {
    gWeekSlot = packedWeekSlot(weekSlotOf(timeOfTheFeed()));
}
