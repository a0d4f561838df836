// sim/user_state.cpp
#include "sim/user_state.h"

#include <algorithm>
#include <cmath>
#include <mutex>

UserState gUserState;
std::atomic<bool> userOnGround{false};
std::atomic<bool> userOnGroundKnown{false};
std::atomic<std::uint32_t> userObjectId{0};
std::atomic<double> userHalfSpan{0};
std::atomic<bool> halfSpanKnown{false};
std::atomic<AircraftCategory> userCategory{AircraftCategory::Light};
std::atomic<std::uint64_t> simSeconds{0};
std::string userTitle;

namespace {

constexpr double nowhereDegrees = 0.0001;
constexpr double poleDegrees = 90;
constexpr double fullTurnDegrees = 360;

constexpr std::int64_t latestYear = 9999;
constexpr std::int64_t longestYearDays = 366;
constexpr std::int64_t secondsPerDay = 86400;
/// From the day before the first one of the year 1 to the first one of 1970.
constexpr std::int64_t daysBefore1970 = 719163;
constexpr std::int64_t daysPerFourYears = 1461;

std::mutex userStateLock; // a leaf
UserState sessionState;   // under userStateLock

bool isDate(const UserState& state) {
    return state.zuluYear >= 1 && state.zuluYear <= latestYear && state.zuluDayOfYear >= 1 &&
           state.zuluDayOfYear <= longestYearDays && state.zuluSeconds >= 0 && state.zuluSeconds <= secondsPerDay;
}

bool isFinite(const UserState& state) {
    const auto values = {state.lat,     state.lon, state.pitch,          state.bank,
                         state.heading, state.alt, state.altAboveGround, state.groundSpeed};
    return std::all_of(values.begin(), values.end(), [](double value) { return std::isfinite(value); });
}

bool isOnEarth(const UserState& state) {
    return std::abs(state.lat) <= poleDegrees && std::abs(state.lon) <= fullTurnDegrees;
}

} // namespace

std::optional<UserState> readUserState(RecordBytes data) {
    RecordReader reader(data);
    UserState state;
    state.lat = reader.float64();
    state.lon = reader.float64();
    state.pitch = reader.float64();
    state.bank = reader.float64();
    state.heading = reader.float64();
    state.alt = reader.float64();
    state.altAboveGround = reader.float64();
    state.groundSpeed = reader.float64();
    state.zuluSeconds = reader.int64();
    state.zuluDayOfYear = reader.int64();
    state.zuluYear = reader.int64();
    state.lightStates = reader.int64();
    if (!reader.isWhole() || !isFinite(state) || !isOnEarth(state)) {
        return std::nullopt;
    }
    return state;
}

LatLon positionOf(const UserState& state) {
    return {state.lat, state.lon};
}

bool isPosition(const LatLon& position) {
    return std::abs(position.lat) > nowhereDegrees || std::abs(position.lon) > nowhereDegrees;
}

UserState userStateNow() {
    const std::lock_guard lock(userStateLock);
    return sessionState;
}

void setUserState(const UserState& state) {
    const std::lock_guard lock(userStateLock);
    sessionState = state;
}

std::uint64_t epochSeconds(const UserState& state) {
    if (!isDate(state)) {
        return 0;
    }
    const std::int64_t yearsBefore = state.zuluYear - 1;
    const std::int64_t centuries = yearsBefore / 100;
    const std::int64_t days =
        state.zuluDayOfYear - daysBefore1970 + yearsBefore * daysPerFourYears / 4 + centuries / 4 - centuries;
    return static_cast<std::uint64_t>(std::max<std::int64_t>(days * secondsPerDay + state.zuluSeconds, 0));
}

void resetUserState() {
    setUserState({});
    gUserState = {};
    userOnGround = false;
    userOnGroundKnown = false;
    userObjectId = 0;
    userHalfSpan = 0;
    halfSpanKnown = false;
    userCategory = AircraftCategory::Light;
    simSeconds = 0;
    userTitle.clear();
}
