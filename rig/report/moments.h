// rig/report/moments.h
// The moments worth looking at, the worst of each kind. Belongs to whoever measures.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "core/geography.h"

namespace rig {

enum class MomentKind {
    jump,         ///< metres of the step
    heightJump,   ///< feet of the step
    crossTrack,   ///< metres beside the recorded track
    headingRate,  ///< degrees a second
    pitchRate,    ///< degrees a second
    bankRate,     ///< degrees a second
    bank,         ///< degrees
    sideways,     ///< degrees between track and heading
    backwards,    ///< knots
    belowGround,  ///< feet
    floating,     ///< feet
    overlap,      ///< seconds
    hardLanding,  ///< feet a minute down at touchdown
    bankedLanding ///< degrees at touchdown
};
inline constexpr std::size_t momentKindCount = 14;

struct MomentKindFacts {
    const char* key;   ///< in figures.json
    const char* title; ///< for readers
    const char* unit;
};
const MomentKindFacts& factsOf(MomentKind kind);

/// Something that lasted from `begin` to `end` and was worst at `seconds`; seconds since the begin of the trace.
struct Moment {
    MomentKind kind = MomentKind::jump;
    std::uint32_t objectId = 0;
    std::uint32_t otherId = 0; ///< of an overlap
    double begin = 0;
    double end = 0;
    double seconds = 0;
    double value = 0;
    /// How many times what is usual: moments of all kinds are sorted by it.
    double weight = 0;
    LatLon at = {};
    double altFeet = 0;
};

/// The weightiest moments of each kind, of which only so many are kept.
class Moments {
public:
    static constexpr std::size_t keptOfKind = 40;

    void add(const Moment& moment);
    std::uint64_t count(MomentKind kind) const { return counts_[static_cast<std::size_t>(kind)]; }

    /// The weightiest first; at most `ofKind` of a kind and `ofObject` of a kind and an object.
    std::vector<Moment> worst(std::size_t ofKind, std::size_t ofObject) const;

private:
    std::array<std::vector<Moment>, momentKindCount> kept_; // the weightiest first
    std::array<std::uint64_t, momentKindCount> counts_{};
};

/// Makes moments of what is told frame by frame: what pauses for less than a second goes on.
class Episode {
public:
    static constexpr double longestPauseSeconds = 1;

    /// `moment` holds kind, object, value, weight and place of one frame at moment.seconds.
    void goesOn(const Moment& moment, Moments& to);
    /// To be called at each frame at which it does not go on, and at the end with a time far behind.
    void ends(double seconds, Moments& to);

    bool isOpen() const { return isOpen_; }

private:
    bool isOpen_ = false;
    Moment worst_;
};

} // namespace rig
