// sim/user_state.h
// The user's aircraft: where it is, what it is, and the simulator's time. SimClient writes it; each value says who
// reads it.
#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>

#include "core/geography.h"
#include "engine/aircraft_category.h"
#include "sim/record_reader.h"

/// The data of definitionUserPosition, in its order.  offset
struct UserState {
    static constexpr std::size_t recordBytes = 96;

    double lat = 0;                 ///<  0: degrees
    double lon = 0;                 ///<  8: degrees
    double pitch = 0;               ///< 16: radians, negative is nose up
    double bank = 0;                ///< 24: radians
    double heading = 0;             ///< 32: radians, true
    double alt = 0;                 ///< 40: feet
    double altAboveGround = 0;      ///< 48: feet, not below 0
    double groundSpeed = 0;         ///< 56: knots
    std::int64_t zuluSeconds = 0;   ///< 64: of the simulator's day
    std::int64_t zuluDayOfYear = 0; ///< 72: from 1
    std::int64_t zuluYear = 0;      ///< 80
    std::int64_t lightStates = 0;   ///< 88: mask

    friend bool operator==(const UserState&, const UserState&) = default;
};

/// Nothing when the data are too short, or no aircraft can be in such a state.
std::optional<UserState> readUserState(RecordBytes data);

LatLon positionOf(const UserState& state);
/// Whether this is a position: without an aircraft the simulator reports 0,0, or next to it.
bool isPosition(const LatLon& position);

/// The last position that the simulator has told; a copy, so that it is always of one moment. Any thread.
UserState userStateNow();
/// SimClient alone.
void setUserState(const UserState& state);

/// The run's own copy of it, taken once a second, so that nothing changes in the middle of a slot. Run thread only.
extern UserState gUserState;

// Read by any thread.

extern std::atomic<bool> userOnGround;
extern std::atomic<bool> userOnGroundKnown; ///< the simulator has told so for a position that is one
/// The simulator numbers its objects upwards: those at or below this one are never ours.
extern std::atomic<std::uint32_t> userObjectId;
extern std::atomic<double> userHalfSpan; ///< nautical miles
extern std::atomic<bool> halfSpanKnown;  ///< false: userHalfSpan is the largest that there is
extern std::atomic<AircraftCategory> userCategory;
/// The simulator's time of day and date as seconds since 1970, kept while the feed is of another time than now; 0 until
/// it is known.
extern std::atomic<std::uint64_t> simSeconds;

/// At most 48 characters. SimClient only; the window has a copy.
extern std::string userTitle;

/// Seconds since 1970 of a moment of the simulator; 0 for one before 1970 or a date that is none.
std::uint64_t epochSeconds(const UserState& state);

/// Nothing known of the user. While no SimClient runs.
void resetUserState();
