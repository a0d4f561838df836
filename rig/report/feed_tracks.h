// rig/report/feed_tracks.h
// Where the feed told each aircraft to be, or the truth beside it. Value types; the functions are for any thread once
// the types are read: gAllTypes must be complete before, and not change meanwhile.
#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "core/geography.h"
#include "engine/aircraft_category.h"
#include "rig/traffic/recording.h"

namespace rig {

struct FeedPoint {
    double seconds = 0; ///< since 1970, when it was received; of the truth, when it was so
    LatLon at;
    bool onGround = false;
    double altFeet = 0;  ///< as delivered
    double knots = 0;    ///< over the ground, as delivered; 0 when it is not told
    bool isTaken = true; ///< false: the program's reader leaves it out, or it was held out and never came
};

struct FeedAircraft {
    std::uint32_t hexid = 0;
    std::set<std::string> names; ///< call signs and registrations: a tail number in the simulator is one of them
    std::string callsign;        ///< the first one that was told
    std::string registration;
    std::string type;    ///< the first one told that gAllTypes has; when it has none of them, the first one
    std::string emitter; ///< category of the emitter, such as "A3"
    std::vector<FeedPoint> points;

    std::vector<LatLon> line() const;
    /// Index of the last point that is not later; 0 when all are.
    std::size_t indexAt(double seconds) const;
    /// The place at that time, between two points on the straight line; nothing before the first, behind the last, and
    /// in a gap longer than longestLegSeconds in which it has moved.
    std::optional<FeedPoint> at(double seconds) const;
    /// Over the ground, knots: the lesser of what the points on both sides of the moment tell, for one alone may be wrong.
    /// 0 before the first, behind the last, in a gap longer than longestLegSeconds, and where one does not tell it.
    double knotsAt(double seconds) const;
    /// On the ground at all points from `seconds` minus `around` to `seconds` plus `around`, of which there must be
    /// one.
    bool isOnGround(double seconds, double around) const;
};

/// A feed that tells nothing for longer has no track in between.
inline constexpr double longestLegSeconds = 30;

using FeedTracks = std::map<std::uint32_t, FeedAircraft>; // by hexid

/// All lines that tell an identity and a plausible position. Of lines of one aircraft with the same position only the
/// first and the last count; one with an older time stamp than that before it is left out, as the program leaves it
/// out.
FeedTracks feedTracks(const Recording& recording);

/// From the text of a truth file (docs/rig-traffic.md). Throws std::runtime_error with the line's number for text that
/// is none.
FeedTracks truthTracks(std::string_view text);

/// What the program takes an aircraft for: by its type when the types are known, otherwise by the category of its
/// emitter; Large when that tells nothing.
AircraftCategory categoryOf(const FeedAircraft& aircraft);

} // namespace rig
