// rig/report/object_meter.cpp
#include "rig/report/object_meter.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "core/geography.h"
#include "rig/world/trace_format.h"

namespace rig {

namespace {

constexpr double metresPerSecondPerKnot = metersPerNm / 3600;
constexpr double feetPerMetre = feetPerNm / metersPerNm;
constexpr double secondsPerMinute = 60;
constexpr double secondsPerHour = 3600;

/// Rates are taken over so long: frames and slots do not keep the same step.
constexpr double rateSeconds = 0.5;
/// A limit is passed when it is exceeded by so much, for half a second holds 49, 50 or 51 slots.
constexpr double limitTolerance = 1.05;
constexpr double slotsPerSecond = 100;

constexpr double compareEverySeconds = 0.1;
/// In figures of time and rounding.
constexpr double frameTolerance = 1e-6;

constexpr double sidewaysDegrees = 20;
constexpr double backwardsDegrees = 160;
constexpr double sidewaysKnots = 3;
constexpr double standingKnots = 0.5;
constexpr double fastestPushKnots = 10;
/// So long after standing a move backwards may begin and be a push.
constexpr double pushBeginSeconds = 3;

constexpr double flyingKnots = 30;
constexpr double highestFloatFeet = 100;
/// The feed must tell the ground for so long before and after.
constexpr double groundAroundSeconds = 5;
/// Without knowledge of the ground.
constexpr double slowestFlightKnots = 40;

/// A bounce is no touchdown of its own.
constexpr double shortestFlightSeconds = 3;

// Beyond these no aircraft is: below the Dead Sea, above all but rockets, faster than any fighter climbs or flies. An
// aircraft that is pushed back has a negative speed.
constexpr double lowestFeet = -1500;
constexpr double highestFeet = 100000;
constexpr double fastestFeetPerSecond = 1000;
constexpr double slowestKnots = -50;
constexpr double fastestKnots = 2000;

// What is usual, for the weight of moments.
constexpr double usualCrossTrackMetres = 15;
constexpr double usualHeightFaultFeet = 2;
constexpr double usualSinkFpm = 600;
constexpr double usualTouchdownBankDegrees = 5;

double degreesBetween(double fromRad, double toRad) {
    return std::remainder(toRad - fromRad, twoPi) * degreesPerRadian;
}

double knotsOf(const Position& position) {
    return std::abs(position.trueKnots);
}

/// What a value may be. Angles are told in steps of 1e-7 radian.
struct ValueRange {
    double Position::*value;
    double least;
    double most;
};
constexpr double angleStep = 1e-6;
constexpr double quarterTurn = twoPi / 4 + angleStep;
constexpr double halfTurn = twoPi / 2 + angleStep;
constexpr std::array<ValueRange, positionValues> ranges{{
    {&Position::lat, -90, 90},
    {&Position::lon, -180, 180},
    {&Position::pitchRad, -quarterTurn, quarterTurn},
    {&Position::bankRad, -halfTurn, halfTurn},
    {&Position::headingRad, 0, twoPi + angleStep},
    {&Position::altFeet, lowestFeet, highestFeet},
    {&Position::verticalFeetPerSecond, -fastestFeetPerSecond, fastestFeetPerSecond},
    {&Position::trueKnots, slowestKnots, fastestKnots},
}};

} // namespace

int unsoundValuesOf(const Position& position) {
    return static_cast<int>(std::count_if(ranges.begin(), ranges.end(), [&position](const ValueRange& range) {
        const double value = position.*range.value;
        return !(value >= range.least && value <= range.most);
    }));
}

bool isFinite(const Position& position) {
    return std::all_of(ranges.begin(), ranges.end(),
                       [&position](const ValueRange& range) { return std::isfinite(position.*range.value); });
}

ObjectMeter::ObjectMeter(ObjectFacts facts, FeedClock clock) : facts_(std::move(facts)), clock_(clock) {
    const CategoryLimits& limits = limitsOf(facts_.category);
    limits_[0] = {MomentKind::headingRate, limits.baseTurnRateDeg * slotsPerSecond, false, {}};
    limits_[1] = {MomentKind::pitchRate, limits.maxPitchRateDeg * slotsPerSecond, false, {}};
    limits_[2] = {MomentKind::bankRate, limits.maxBankRateDeg * slotsPerSecond, false, {}};
    limits_[3] = {MomentKind::bank, limits.maxBankDeg, false, {}};
    if (facts_.feed != nullptr && facts_.feed->points.size() >= 2) {
        track_.emplace(*facts_.feed, clock_);
    }
}

void ObjectMeter::take(const Frame& frame, Moments& moments) {
    state().unsoundValues += static_cast<std::uint64_t>(unsoundValuesOf(frame.position));
    if (!isFinite(frame.position)) {
        return;
    }
    const double frameSeconds = isNew_ ? 0 : frame.seconds - past_.back().seconds;
    if (isNew_) {
        figures_.firstSeen = stoodAt_ = airborneSince_ = frame.seconds;
    }
    figures_.lastSeen = frame.seconds;
    const bool compares = isNew_ || frame.seconds - lastCompared_ >= compareEverySeconds - frameTolerance;
    if (compares && facts_.feed != nullptr) {
        feedOnGround_ = facts_.feed->isOnGround(clock_.delayed(frame.seconds), groundAroundSeconds);
    }
    judgePlace(frame);
    state().seconds += frameSeconds;
    if (!isNew_) {
        measureStep(frame, frameSeconds, moments);
        measureHeightStep(frame, frameSeconds, moments);
        compareWithHeldOut(frame);
    }
    const std::optional<Motion> motion = motionUpTo(frame);
    if (motion) {
        measureRates(frame, *motion, frameSeconds, moments);
        measureDirection(frame, *motion, frameSeconds, moments);
    }
    if (!isNew_) {
        measureTouchdown(frame, motion ? motion->feetPerMinute : 0, moments);
    }
    if (compares) {
        lastCompared_ = frame.seconds;
        compare(frame, moments);
    }
    StateFigures& here = state();
    here.withoutSamples += course_ == Course::withoutSamples ? frameSeconds : 0;
    here.onWayBack += course_ == Course::wayBack ? frameSeconds : 0;
    here.belowGround += belowFeet_ > 0 ? frameSeconds : 0;
    here.floating += floatingFeet_ > 0 ? frameSeconds : 0;
    here.overlapping += frame.isOverlapping ? frameSeconds : 0;
    tell(belowEpisode_, MomentKind::belowGround, belowFeet_ > 0, belowFeet_, usualHeightFaultFeet, frame, moments);
    tell(floatingEpisode_, MomentKind::floating, floatingFeet_ > 0, floatingFeet_, usualHeightFaultFeet, frame,
         moments);
    remember(frame);
    wasOnGround_ = onGround_;
    isNew_ = false;
}

void ObjectMeter::finish(Moments& moments) {
    constexpr double never = 1e18;
    for (Limit& limit : limits_) {
        limit.episode.ends(never, moments);
    }
    for (Episode* episode :
         {&crossTrackEpisode_, &sidewaysEpisode_, &backwardsEpisode_, &belowEpisode_, &floatingEpisode_}) {
        episode->ends(never, moments);
    }
}

Moment ObjectMeter::momentAt(const Frame& frame, MomentKind kind, double value, double weight) const {
    return {kind,          facts_.id, 0,      frame.seconds,          frame.seconds,
            frame.seconds, value,     weight, frame.position.place(), frame.position.altFeet};
}

void ObjectMeter::tell(Episode& episode, MomentKind kind, bool isSo, double value, double usual, const Frame& frame,
                       Moments& moments) {
    if (isSo) {
        episode.goesOn(momentAt(frame, kind, value, value / usual), moments);
    } else {
        episode.ends(frame.seconds, moments);
    }
}

/// Where it is above the ground, by the simulator's own rule, and where it should be.
void ObjectMeter::judgePlace(const Frame& frame) {
    belowFeet_ = floatingFeet_ = 0;
    if (!frame.groundFeet || !facts_.cgHeightFeet) {
        onGround_ = facts_.feed != nullptr ? feedOnGround_ : knotsOf(frame.position) < slowestFlightKnots;
        return;
    }
    const double wheelsFeet = frame.position.altFeet - *frame.groundFeet - *facts_.cgHeightFeet;
    onGround_ = wheelsFeet <= groundContactFeet;
    if (wheelsFeet < -groundContactFeet) {
        belowFeet_ = -wheelsFeet;
    } else if (!onGround_ && isFloating(wheelsFeet, frame)) {
        floatingFeet_ = wheelsFeet;
        onGround_ = true;
    }
}

bool ObjectMeter::isFloating(double wheelsFeet, const Frame& frame) const {
    const bool cannotFly = facts_.category != AircraftCategory::Rotorcraft && knotsOf(frame.position) < flyingKnots;
    return feedOnGround_ || (cannotFly && wheelsFeet < highestFloatFeet);
}

/// What is written is the speed that suits engines and flaps, and may be well below that over the ground. The one that
/// the feed tells counts as far as the aircraft has moved with it.
double ObjectMeter::knotsOfFeed(const Frame& frame) const {
    const double told = facts_.feed != nullptr ? facts_.feed->knotsAt(clock_.delayed(frame.seconds)) : 0;
    const Frame& from = past_.front();
    const Frame& to = past_.back();
    const double hours = (to.seconds - from.seconds) / secondsPerHour;
    return hours > 0 ? std::min(told, greatCircleNm(from.position.place(), to.position.place()) / hours) : told;
}

void ObjectMeter::measureStep(const Frame& frame, double frameSeconds, Moments& moments) {
    const Position& before = past_.back().position;
    const double metres = greatCircleNm(before.place(), frame.position.place()) * metersPerNm;
    const double knots = std::max({knotsOf(before), knotsOf(frame.position), knotsOfFeed(frame)});
    const double speed = knots * metresPerSecondPerKnot;
    const double share = metres / std::max(speed * frameSeconds, shortestJumpMetres / jumpShare);
    StateFigures& here = state();
    here.largestStep = std::max(here.largestStep, metres);
    here.largestStepShare = std::max(here.largestStepShare, share);
    if (share > jumpShare) {
        ++here.jumps;
        moments.add(momentAt(frame, MomentKind::jump, metres, share / jumpShare));
    }
}

void ObjectMeter::measureHeightStep(const Frame& frame, double frameSeconds, Moments& moments) {
    const Position& before = past_.back().position;
    const double feet = std::abs(frame.position.altFeet - before.altFeet);
    const double feetPerSecond =
        std::max(std::abs(before.verticalFeetPerSecond), std::abs(frame.position.verticalFeetPerSecond));
    const double share = feet / std::max(feetPerSecond * frameSeconds, shortestJumpMetres * feetPerMetre / jumpShare);
    StateFigures& here = state();
    here.largestHeightStep = std::max(here.largestHeightStep, feet);
    if (share > jumpShare) {
        ++here.heightJumps;
        moments.add(momentAt(frame, MomentKind::heightJump, feet, share / jumpShare));
    }
}

std::optional<ObjectMeter::Motion> ObjectMeter::motionUpTo(const Frame& frame) {
    while (past_.size() >= 2 && frame.seconds - past_[1].seconds >= rateSeconds - frameTolerance) {
        past_.pop_front();
    }
    if (past_.empty() || frame.seconds - past_.front().seconds < rateSeconds - frameTolerance) {
        return std::nullopt;
    }
    const Position& from = past_.front().position;
    const Position& to = frame.position;
    Motion motion;
    motion.seconds = frame.seconds - past_.front().seconds;
    const double north = (to.lat - from.lat) * metersPerDegreeLatitude;
    const double east =
        std::remainder(to.lon - from.lon, 360.0) * metersPerDegreeLatitude * std::cos(from.lat * radiansPerDegree);
    motion.knots = std::hypot(north, east) / motion.seconds / metresPerSecondPerKnot;
    motion.trackRad = std::atan2(east, north);
    motion.feetPerMinute = (to.altFeet - from.altFeet) / motion.seconds * secondsPerMinute;
    motion.headingRate = degreesBetween(from.headingRad, to.headingRad) / motion.seconds;
    motion.pitchRate = degreesBetween(from.pitchRad, to.pitchRad) / motion.seconds;
    motion.bankRate = degreesBetween(from.bankRad, to.bankRad) / motion.seconds;
    return motion;
}

void ObjectMeter::measureRates(const Frame& frame, const Motion& motion, double frameSeconds, Moments& moments) {
    StateFigures& here = state();
    measureLimit(limits_[0], here.headingRate, motion.headingRate, frame, frameSeconds, moments);
    measureLimit(limits_[1], here.pitchRate, motion.pitchRate, frame, frameSeconds, moments);
    measureLimit(limits_[2], here.bankRate, motion.bankRate, frame, frameSeconds, moments);
    measureLimit(limits_[3], here.bank, frame.position.bankRad * degreesPerRadian, frame, frameSeconds, moments);
}

void ObjectMeter::measureLimit(Limit& limit, RateFigures& figures, double value, const Frame& frame,
                               double frameSeconds, Moments& moments) {
    figures.values.add(value);
    const double magnitude = std::abs(value);
    const bool isAbove = magnitude > limit.limit * limitTolerance;
    if (isAbove) {
        figures.passes += limit.isAbove ? 0 : 1;
        figures.secondsAbove += frameSeconds;
    }
    limit.isAbove = isAbove;
    tell(limit.episode, limit.kind, isAbove, magnitude, limit.limit, frame, moments);
}

/// Whether it is being pushed back: backwards, slowly, from a stand.
bool ObjectMeter::followPush(const Frame& frame, const Motion& motion, bool isBackwards) {
    const bool stands = onGround_ && motion.knots < standingKnots;
    if (stands) {
        stoodAt_ = frame.seconds;
    } else if (!onGround_ || motion.knots > fastestPushKnots || !isBackwards) {
        isPushed_ = false;
    } else if (frame.seconds - stoodAt_ <= pushBeginSeconds) {
        isPushed_ = true;
    }
    return isPushed_;
}

void ObjectMeter::measureDirection(const Frame& frame, const Motion& motion, double frameSeconds, Moments& moments) {
    const double apart = std::abs(degreesBetween(frame.position.headingRad, motion.trackRad));
    const bool isPushed = followPush(frame, motion, apart > 90);
    const bool moves = motion.knots > sidewaysKnots;
    const double askew = isPushed ? 180 - apart : apart;
    const bool isBackwards = moves && !isPushed && apart > backwardsDegrees;
    const bool isSideways = moves && !isBackwards && askew > sidewaysDegrees;
    StateFigures& here = state();
    here.sideways += isSideways ? frameSeconds : 0;
    here.backwards += isBackwards ? frameSeconds : 0;
    tell(sidewaysEpisode_, MomentKind::sideways, isSideways, askew, sidewaysDegrees, frame, moments);
    tell(backwardsEpisode_, MomentKind::backwards, isBackwards, motion.knots, sidewaysKnots, frame, moments);
}

void ObjectMeter::measureTouchdown(const Frame& frame, double feetPerMinute, Moments& moments) {
    if (!onGround_) {
        airborneSince_ = wasOnGround_ ? frame.seconds : airborneSince_;
        return;
    }
    if (wasOnGround_ || frame.seconds - airborneSince_ < shortestFlightSeconds) {
        return;
    }
    const double bank = -frame.position.bankRad * degreesPerRadian;
    figures_.touchdowns.push_back({frame.seconds, feetPerMinute, bank});
    if (-feetPerMinute > usualSinkFpm) {
        moments.add(momentAt(frame, MomentKind::hardLanding, -feetPerMinute, -feetPerMinute / usualSinkFpm));
    }
    if (std::abs(bank) > usualTouchdownBankDegrees) {
        moments.add(
            momentAt(frame, MomentKind::bankedLanding, std::abs(bank), std::abs(bank) / usualTouchdownBankDegrees));
    }
}

void ObjectMeter::compare(const Frame& frame, Moments& moments) {
    if (track_) {
        compareWithTrack(frame, moments);
    }
    if (facts_.truth != nullptr) {
        if (const std::optional<FeedPoint> truth = facts_.truth->at(clock_.delayed(frame.seconds))) {
            state().fromTruth.add(greatCircleNm(truth->at, frame.position.place()) * metersPerNm);
        }
    }
    series_.add({frame.seconds, frame.position.place(), frame.position.altFeet, frame.position.trueKnots,
                 frame.position.headingRad * degreesPerRadian, onGround_});
}

void ObjectMeter::compareWithTrack(const Frame& frame, Moments& moments) {
    const TrackPlace place = track_->take(frame.seconds, frame.position.place());
    course_ = place.course;
    tell(crossTrackEpisode_, MomentKind::crossTrack, place.isOnLeg && place.metres > usualCrossTrackMetres,
         place.metres, usualCrossTrackMetres, frame, moments);
    if (!place.isOnLeg) {
        return;
    }
    StateFigures& here = state();
    here.crossTrackOf(place.course).add(place.metres);
    if (place.moves) {
        here.alongTrack.add(place.feedSeconds - clock_.delayed(frame.seconds));
    }
}

/// At the very moment of each sample, between two frames.
void ObjectMeter::compareWithHeldOut(const Frame& frame) {
    if (facts_.heldOut == nullptr) {
        return;
    }
    const std::vector<FeedPoint>& points = facts_.heldOut->points;
    const Frame& before = past_.back();
    for (; nextHeldOut_ < points.size() && clock_.dueInTrace(points[nextHeldOut_].seconds) <= frame.seconds;
         ++nextHeldOut_) {
        const FeedPoint& sample = points[nextHeldOut_];
        const double due = clock_.dueInTrace(sample.seconds);
        if (due <= before.seconds) {
            continue;
        }
        const double share = (due - before.seconds) / (frame.seconds - before.seconds);
        const Position& from = before.position;
        const LatLon at{from.lat + share * (frame.position.lat - from.lat),
                        from.lon + share * std::remainder(frame.position.lon - from.lon, 360.0)};
        state().fromHeldOut.add(greatCircleNm(at, sample.at) * metersPerNm);
    }
}

void ObjectMeter::remember(const Frame& frame) {
    past_.push_back(frame);
}

} // namespace rig
