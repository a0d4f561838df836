#include "core/week_slot.h"

#include <gtest/gtest.h>

#include <chrono>

using namespace std::chrono;
using namespace std::chrono_literals;

namespace {

platform::WallTime at(year_month_day date, seconds timeOfDay) {
    return sys_days(date) + timeOfDay;
}

constexpr year_month_day saturday = 2026y / November / 21;

TEST(WeekSlot, mondayIsOneAndSundaySeven) {
    for (unsigned day = 0; day < 7; ++day) {
        const auto date = year_month_day(sys_days(2026y / November / 16) + days(day));
        EXPECT_EQ(weekSlotOf(at(date, 12h)).weekday, static_cast<int>(day) + 1);
    }
}

TEST(WeekSlot, theSecondHalfBeginsThirtySecondsEarly) {
    EXPECT_EQ(weekSlotOf(at(saturday, 7h)).slot, 14);
    EXPECT_EQ(weekSlotOf(at(saturday, 7h + 29min + 29s)).slot, 14);
    EXPECT_EQ(weekSlotOf(at(saturday, 7h + 29min + 30s)).slot, 15);
    EXPECT_EQ(weekSlotOf(at(saturday, 7h + 30min)).slot, 15);
    EXPECT_EQ(weekSlotOf(at(saturday, 7h + 59min + 59s)).slot, 15);
}

TEST(WeekSlot, everyMinuteOfADayHasASlotOf0To47) {
    int last = 0;
    for (minutes minute{0}; minute < 24h; ++minute) {
        const int slot = weekSlotOf(at(saturday, minute)).slot;
        EXPECT_GE(slot, last);
        EXPECT_LE(slot, 47);
        last = slot;
    }
    EXPECT_EQ(last, 47);
}

TEST(WeekSlot, aTimeThatCannotBeBrokenDownHasWeekdayMinusOne) {
    EXPECT_EQ(weekSlotOf(at(1960y / January / 1, 0s)).weekday, -1);
}

TEST(WeekSlot, packsTheWeekdayLowAndTheSlotHigh) {
    EXPECT_EQ(packedWeekSlot({6, 31}), (std::uint64_t{31} << 32 | 6));
    EXPECT_EQ(packedWeekSlot({-1, 5}), (std::uint64_t{5} << 32 | 0xFFFFFFFF));
    for (const WeekSlot& slot : {WeekSlot{-1, 0}, WeekSlot{1, 47}, WeekSlot{7, 3}}) {
        EXPECT_EQ(unpackedWeekSlot(packedWeekSlot(slot)), slot);
    }
}

} // namespace
