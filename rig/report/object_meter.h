// rig/report/object_meter.h
// Measures one aircraft, frame by frame. Belongs to whoever reads the frames; its memory does not grow with their
// number.
#pragma once

#include <array>
#include <cstddef>
#include <deque>
#include <memory>
#include <optional>

#include "rig/report/moments.h"
#include "rig/report/object_figures.h"
#include "rig/report/series.h"
#include "rig/report/track_comparison.h"
#include "rig/world/world_object.h"

namespace rig {

/// A step of more than three times the speed is a jump, but for one below 5 m.
inline constexpr double jumpShare = 3;
inline constexpr double shortestJumpMetres = 5;

/// How many of the eight values of a position are no number or beyond what an aircraft can have.
int unsoundValuesOf(const Position& position);
/// Whether all of them are numbers.
bool isFinite(const Position& position);

class ObjectMeter {
public:
    struct Frame {
        double seconds = 0; ///< since the begin of the trace
        Position position;
        std::optional<double> groundFeet; ///< below it, above the sea; none: not known
        bool isOverlapping = false;
    };

    /// What `facts` points to must live as long as this.
    ObjectMeter(ObjectFacts facts, FeedClock clock);

    /// A frame with a value that is no number is counted, and otherwise left out.
    void take(const Frame& frame, Moments& moments);
    void finish(Moments& moments);

    const ObjectFacts& facts() const { return facts_; }
    const ObjectFigures& figures() const { return figures_; }
    ObjectFigures& figures() { return figures_; }
    const Series& series() const { return series_; }

private:
    /// How it moved over the last half second.
    struct Motion {
        double seconds = 0;
        double knots = 0;
        double trackRad = 0;
        double feetPerMinute = 0;
        double headingRate = 0; // degrees a second
        double pitchRate = 0;
        double bankRate = 0;
    };

    struct Limit {
        MomentKind kind = MomentKind::headingRate;
        double limit = 0;
        bool isAbove = false;
        Episode episode;
    };

    void judgePlace(const Frame& frame);
    bool isFloating(double wheelsFeet, const Frame& frame) const;
    double knotsOfFeed(const Frame& frame) const;
    void measureStep(const Frame& frame, double frameSeconds, Moments& moments);
    void measureHeightStep(const Frame& frame, double frameSeconds, Moments& moments);
    std::optional<Motion> motionUpTo(const Frame& frame);
    void measureRates(const Frame& frame, const Motion& motion, double frameSeconds, Moments& moments);
    void measureLimit(Limit& limit, RateFigures& figures, double value, const Frame& frame, double frameSeconds,
                      Moments& moments);
    void measureDirection(const Frame& frame, const Motion& motion, double frameSeconds, Moments& moments);
    bool followPush(const Frame& frame, const Motion& motion, bool isBackwards);
    void measureTouchdown(const Frame& frame, double feetPerMinute, Moments& moments);
    void compare(const Frame& frame, Moments& moments);
    void compareWithTrack(const Frame& frame, Moments& moments);
    void compareWithHeldOut(const Frame& frame);
    void remember(const Frame& frame);
    void tell(Episode& episode, MomentKind kind, bool isSo, double value, double usual, const Frame& frame,
              Moments& moments);
    Moment momentAt(const Frame& frame, MomentKind kind, double value, double weight) const;
    StateFigures& state() { return onGround_ ? figures_.ground : figures_.air; }

    ObjectFacts facts_;
    FeedClock clock_;
    ObjectFigures figures_;
    Series series_;

    std::deque<Frame> past_; // the last half second, the oldest first
    bool isNew_ = true;
    bool onGround_ = false;
    bool wasOnGround_ = false;
    double airborneSince_ = 0;
    double belowFeet_ = 0;
    double floatingFeet_ = 0;
    double lastCompared_ = -1;
    bool feedOnGround_ = false;
    std::optional<TrackComparison> track_;
    Course course_ = Course::onTrack; // as it was when last compared
    std::size_t nextHeldOut_ = 0;
    double stoodAt_ = 0;
    bool isPushed_ = false;

    std::array<Limit, 4> limits_; // heading, pitch and bank rate, bank
    Episode crossTrackEpisode_;
    Episode sidewaysEpisode_;
    Episode backwardsEpisode_;
    Episode belowEpisode_;
    Episode floatingEpisode_;
};

} // namespace rig
