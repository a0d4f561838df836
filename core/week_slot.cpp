// core/week_slot.cpp
#include "core/week_slot.h"

#include <chrono>

std::atomic<std::uint64_t> gWeekSlot{0};

namespace {

/// The system cannot break down what lies before its epoch.
constexpr std::chrono::year firstYear{1970};

} // namespace

WeekSlot weekSlotOf(platform::WallTime time) {
    using namespace std::chrono;
    const auto day = floor<days>(time);
    const year_month_day date(day);
    if (date.year() < firstYear) {
        return {};
    }
    const hh_mm_ss clock(floor<seconds>(time - day));
    const auto minutesOfHour = clock.minutes().count();
    const bool secondHalf = minutesOfHour > 29 || (minutesOfHour == 29 && clock.seconds().count() >= 30);
    WeekSlot result;
    result.weekday = static_cast<int>(weekday(day).iso_encoding());
    result.slot = static_cast<int>((clock.hours().count() * 2 + (secondHalf ? 1 : 0)) % 48);
    return result;
}

std::uint64_t packedWeekSlot(const WeekSlot& weekSlot) {
    return static_cast<std::uint64_t>(static_cast<std::uint32_t>(weekSlot.slot)) << 32 |
           static_cast<std::uint32_t>(weekSlot.weekday);
}

WeekSlot unpackedWeekSlot(std::uint64_t packed) {
    return {static_cast<std::int32_t>(packed & 0xFFFFFFFF), static_cast<std::int32_t>(packed >> 32)};
}
