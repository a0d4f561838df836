// rig/report/object_figures.h
// What is measured of an aircraft: docs/rig-report.md defines each figure. Value types.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "engine/aircraft_category.h"
#include "rig/report/distribution.h"
#include "rig/report/feed_tracks.h"
#include "rig/report/track_comparison.h"

namespace rig {

/// Degrees a second, over half a second.
struct RateFigures {
    Distribution values;
    std::uint64_t passes = 0; ///< how often it went above the limit
    double secondsAbove = 0;

    void add(const RateFigures& other);
};

/// In the air, or on the ground. Times in seconds, distances in metres.
struct StateFigures {
    double seconds = 0;
    Distribution crossTrack; ///< on the way to a sample
    Distribution crossTrackWithoutSamples;
    Distribution crossTrackOnWayBack;
    double withoutSamples = 0; ///< how long, compared or not
    double onWayBack = 0;
    Distribution alongTrack; ///< seconds, positive ahead
    Distribution fromTruth;
    Distribution fromHeldOut;
    double largestStep = 0;
    double largestStepShare = 0; ///< above jumpShare it is a jump
    std::uint64_t jumps = 0;
    double largestHeightStep = 0; ///< feet
    std::uint64_t heightJumps = 0;
    std::uint64_t unsoundValues = 0; ///< that are no number or out of range
    RateFigures headingRate;
    RateFigures pitchRate;
    RateFigures bankRate;
    RateFigures bank; ///< degrees, not a rate
    double sideways = 0;
    double backwards = 0;
    double belowGround = 0;
    double floating = 0;
    double overlapping = 0;

    void add(const StateFigures& other);
    /// unsoundValues, and what else was no number when it was measured.
    std::uint64_t allUnsound() const;
    Distribution& crossTrackOf(Course course);
};

struct Touchdown {
    double seconds = 0;       ///< since the begin of the trace
    double feetPerMinute = 0; ///< negative is down
    double bankDegrees = 0;   ///< right wing down is positive
};

struct ObjectFacts {
    std::uint32_t id = 0;
    std::string title;
    std::string tailNumber;
    const FeedAircraft* feed = nullptr; ///< the recorded track; none: not of the recording
    const FeedAircraft* truth = nullptr;
    const FeedAircraft* heldOut = nullptr;
    AircraftCategory category = AircraftCategory::Large;
    std::optional<double> cgHeightFeet = std::nullopt;
    double spanMetres = 0;
};

struct ObjectFigures {
    StateFigures air;
    StateFigures ground;
    std::vector<Touchdown> touchdowns;
    double firstSeen = 0; ///< seconds since the begin of the trace
    double lastSeen = 0;
    std::optional<double> firstSight; ///< seconds from its first sample in range
};

} // namespace rig
