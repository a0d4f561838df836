// rig/report/track_comparison.cpp
#include "rig/report/track_comparison.h"

#include <algorithm>
#include <cmath>

namespace rig {

namespace {

/// Farther from its track than this, or from its time there, an aircraft is looked for anew.
constexpr double lostMetres = 2000;
constexpr double lostSeconds = 60;

/// What comes in the very moment in which it is needed comes too late.
constexpr double tooLateSeconds = 1;
constexpr double reachedMetres = 15;
constexpr std::size_t reachLegs = 12;
constexpr double movingLegMetresPerSecond = 3 * metersPerNm / 3600;

} // namespace

TrackPlace TrackComparison::take(double seconds, const LatLon& at) {
    for (; received_ < feed_.points.size() &&
           clock_.receivedInTrace(feed_.points[received_].seconds) <= seconds - tooLateSeconds;
         ++received_) {
        const bool isElsewhere = feed_.points[received_].at != feed_.points[known_].at;
        if (feed_.points[received_].isTaken && isElsewhere) {
            known_ = received_;
        }
    }
    const NearestOnLine place = nearest(seconds, at);
    follow(place, at);
    before_ = at;
    const FeedPoint& a = feed_.points[place.leg];
    const FeedPoint& b = feed_.points[place.leg + 1];
    const double legSeconds = b.seconds - a.seconds;
    const double legMetres = greatCircleNm(a.at, b.at) * metersPerNm;
    return {.course = course_,
            .metres = place.metres,
            .feedSeconds = feedSecondsAt(place),
            .isOnLeg = !place.isBeyondEnd && (legSeconds <= longestLegSeconds || a.at == b.at),
            .moves = legSeconds > 0 && legMetres / legSeconds > movingLegMetresPerSecond};
}

NearestOnLine TrackComparison::nearest(double seconds, const LatLon& at) {
    const std::size_t due = feed_.indexAt(clock_.delayed(seconds));
    if (!before_) {
        line_.lookNear(due);
    }
    const NearestOnLine place = line_.nearest(at);
    if (!isLost(place, seconds)) {
        return place;
    }
    line_.lookNear(due);
    return line_.nearest(at);
}

bool TrackComparison::isLost(const NearestOnLine& place, double seconds) const {
    return place.metres > lostMetres || std::abs(feedSecondsAt(place) - clock_.delayed(seconds)) > lostSeconds;
}

double TrackComparison::feedSecondsAt(const NearestOnLine& place) const {
    const FeedPoint& from = feed_.points[place.leg];
    return from.seconds + place.share * (feed_.points[place.leg + 1].seconds - from.seconds);
}

void TrackComparison::follow(const NearestOnLine& place, const LatLon& at) {
    if (course_ != Course::onTrack) {
        course_ = hasReachedNewer(at) ? Course::onTrack : known_ > leftAt_ ? Course::wayBack : Course::withoutSamples;
    } else if (hasPassedLastKnown(place, at)) {
        course_ = Course::withoutSamples;
        leftAt_ = known_;
    }
}

/// Of the known legs alone: a track may cross itself where nobody knows it yet.
bool TrackComparison::hasPassedLastKnown(const NearestOnLine& place, const LatLon& at) const {
    const std::size_t first = place.leg < reachLegs ? 0 : place.leg - reachLegs;
    if (known_ <= first) {
        return known_ > 0;
    }
    const NearestOnLine known = line_.nearestAmong(first, known_, at);
    return known.leg + 1 == known_ && known.share >= 1;
}

/// On the way from where it was compared before.
bool TrackComparison::hasReachedNewer(const LatLon& at) const {
    const CrossTrack step({before_.value_or(at), at});
    for (std::size_t i = leftAt_ + 1; i < received_; ++i) {
        const FeedPoint& sample = feed_.points[i];
        if (sample.isTaken && sample.at != feed_.points[leftAt_].at &&
            step.nearestAmong(0, 1, sample.at).metres <= reachedMetres) {
            return true;
        }
    }
    return false;
}

} // namespace rig
