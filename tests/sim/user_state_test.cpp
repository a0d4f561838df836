#include "sim/user_state.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <limits>
#include <random>
#include <thread>

#include "tests/sim/record_builder.h"
#include "tests/sim/session_fixture.h"

namespace {

UserState numbered() {
    UserState state;
    state.lat = 1;
    state.lon = 2;
    state.pitch = 3;
    state.bank = 4;
    state.heading = 5;
    state.alt = 6;
    state.altAboveGround = 7;
    state.groundSpeed = 8;
    state.zuluSeconds = 9;
    state.zuluDayOfYear = 10;
    state.zuluYear = 11;
    state.lightStates = 12;
    return state;
}

UserState date(std::int64_t year, std::int64_t dayOfYear, std::int64_t seconds) {
    UserState state;
    state.zuluYear = year;
    state.zuluDayOfYear = dayOfYear;
    state.zuluSeconds = seconds;
    return state;
}

TEST(UserStateRecord, has96BytesInTheOrderOfItsDefinition) {
    const Bytes bytes = dataOf(1.0, 2.0, 3.0, 4.0, 5.0, 6.0, 7.0, 8.0, std::int64_t{9}, std::int64_t{10},
                               std::int64_t{11}, std::int64_t{12});
    ASSERT_EQ(bytes.size(), UserState::recordBytes);
    EXPECT_EQ(readUserState(bytes), numbered());
}

TEST(UserStateRecord, oneByteLessIsNoRecord) {
    Bytes bytes = userPositionData(numbered());
    bytes.pop_back();
    EXPECT_FALSE(readUserState(bytes));
}

TEST(UserStateRecord, aValueThatIsNoNumberMakesItUseless) {
    for (double UserState::*const value :
         {&UserState::lat, &UserState::lon, &UserState::pitch, &UserState::bank, &UserState::heading, &UserState::alt,
          &UserState::altAboveGround, &UserState::groundSpeed}) {
        UserState state = numbered();
        state.*value = std::numeric_limits<double>::quiet_NaN();
        EXPECT_FALSE(readUserState(userPositionData(state)));
        state.*value = std::numeric_limits<double>::infinity();
        EXPECT_FALSE(readUserState(userPositionData(state)));
    }
}

TEST(UserStateRecord, aPlaceThatIsNotOnEarthMakesItUseless) {
    UserState state = numbered();
    state.lat = 90.1;
    EXPECT_FALSE(readUserState(userPositionData(state)));
    state = numbered();
    state.lon = -360.1;
    EXPECT_FALSE(readUserState(userPositionData(state)));
}

TEST(Position, isOneWhenEitherAxisIsBeyondATenThousandthOfADegree) {
    EXPECT_FALSE(isPosition({0, 0}));
    EXPECT_FALSE(isPosition({0.0001, -0.0001}));
    EXPECT_TRUE(isPosition({0.00011, 0}));
    EXPECT_TRUE(isPosition({-0.00011, 0}));
    EXPECT_TRUE(isPosition({0, 0.00011}));
    EXPECT_TRUE(isPosition({0, -0.00011}));
}

TEST(SimulatorTime, isSecondsSince1970) {
    EXPECT_EQ(epochSeconds(date(1970, 1, 0)), 0U);
    EXPECT_EQ(epochSeconds(date(1970, 1, 1)), 1U);
    EXPECT_EQ(epochSeconds(date(1970, 2, 0)), 86400U);
    EXPECT_EQ(epochSeconds(date(2024, 61, 43200)), 1709294400U) << "1 March 2024, noon";
    EXPECT_EQ(epochSeconds(date(2022, 301, 0)), 1666915200U) << "28 October 2022";
}

TEST(SimulatorTime, agreesWithTheCalendar) {
    using namespace std::chrono;
    std::mt19937 random(20221028);
    for (int i = 0; i < 20000; ++i) {
        const sys_days day{days{std::uniform_int_distribution<int>(0, 400000)(random)}};
        const year_month_day calendar(day);
        const sys_days newYear(calendar.year() / January / 1);
        const int second = std::uniform_int_distribution<int>(0, 86399)(random);
        const auto expected = static_cast<std::uint64_t>(day.time_since_epoch().count()) * 86400 + second;
        ASSERT_EQ(epochSeconds(date(static_cast<int>(calendar.year()), (day - newYear).count() + 1, second)), expected);
    }
}

TEST(SimulatorTime, isZeroForWhatIsNoDateOrTooOld) {
    constexpr auto huge = std::numeric_limits<std::int64_t>::max();
    constexpr auto tiny = std::numeric_limits<std::int64_t>::min();
    for (const UserState& state :
         {date(0, 0, 0), date(1950, 1, 0), date(2024, 0, 0), date(2024, 367, 0), date(2024, 1, -1),
          date(2024, 1, 86401), date(huge, 1, 0), date(tiny, 1, 0), date(2024, huge, 0), date(2024, tiny, 0),
          date(2024, 1, huge), date(2024, 1, tiny)}) {
        EXPECT_EQ(epochSeconds(state), 0U) << state.zuluYear << " " << state.zuluDayOfYear << " " << state.zuluSeconds;
    }
}

TEST(UserStateReset, nothingIsKnownOfTheUser) {
    setUserState(numbered());
    gUserState = numbered();
    userOnGround = true;
    userOnGroundKnown = true;
    userObjectId = 3;
    userHalfSpan = 0.01;
    halfSpanKnown = true;
    userCategory = AircraftCategory::Heavy;
    simSeconds = 1;
    userTitle = "title";
    resetUserState();
    EXPECT_EQ(userStateNow(), UserState());
    EXPECT_EQ(gUserState, UserState());
    EXPECT_FALSE(userOnGround);
    EXPECT_FALSE(userOnGroundKnown);
    EXPECT_EQ(userObjectId, 0U);
    EXPECT_EQ(userHalfSpan, 0);
    EXPECT_FALSE(halfSpanKnown);
    EXPECT_EQ(userCategory, AircraftCategory::Light);
    EXPECT_EQ(simSeconds, 0U);
    EXPECT_EQ(userTitle, "");
}

TEST(UserStateThreads, aCopyIsOfOneMoment) {
    resetUserState();
    std::atomic<bool> done{false};
    std::thread writer([&] {
        for (int i = 0; i < 20000; ++i) {
            UserState state;
            state.lat = i;
            state.lightStates = i;
            setUserState(state);
        }
        done = true;
    });
    while (!done) {
        const UserState state = userStateNow();
        ASSERT_EQ(state.lat, static_cast<double>(state.lightStates));
    }
    writer.join();
    resetUserState();
}

} // namespace
