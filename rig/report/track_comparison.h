// rig/report/track_comparison.h
// Where an aircraft is beside the recorded track, and whether the program knew at that moment where the track leads.
// Belongs to whoever follows the aircraft.
#pragma once

#include <cstddef>
#include <optional>

#include "rig/report/cross_track.h"
#include "rig/report/feed_clock.h"
#include "rig/report/feed_tracks.h"

namespace rig {

enum class Course {
    onTrack,        ///< towards a sample
    withoutSamples, ///< past the last one that the program had received
    wayBack,        ///< the next one has come, and none that came since then is reached
};

struct TrackPlace {
    Course course = Course::onTrack;
    double metres = 0;      ///< from the nearest point of the track
    double feedSeconds = 0; ///< when the feed was there
    bool isOnLeg = true;    ///< false before the first sample, behind the last, and where there was a gap
    bool moves = false;     ///< the feed, there
};

class TrackComparison {
public:
    /// `feed` has two points at least, and must live as long as this.
    TrackComparison(const FeedAircraft& feed, FeedClock clock) : feed_(feed), clock_(clock), line_(feed.line()) {}

    /// The moments are to be given in the order in which they were flown; seconds since the begin of the trace.
    TrackPlace take(double seconds, const LatLon& at);

private:
    NearestOnLine nearest(double seconds, const LatLon& at);
    bool isLost(const NearestOnLine& place, double seconds) const;
    void follow(const NearestOnLine& place, const LatLon& at);
    bool hasPassedLastKnown(const NearestOnLine& place, const LatLon& at) const;
    bool hasReachedNewer(const LatLon& at) const;
    double feedSecondsAt(const NearestOnLine& place) const;

    const FeedAircraft& feed_;
    FeedClock clock_;
    CrossTrack line_;
    std::optional<LatLon> before_;
    std::size_t known_ = 0;    // the point beyond which the program knows nothing: the first of those at that place
    std::size_t received_ = 0; // points that have been received
    std::size_t leftAt_ = 0;   // the point at which the aircraft had none ahead
    Course course_ = Course::onTrack;
};

} // namespace rig
