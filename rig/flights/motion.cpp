// rig/flights/motion.cpp
#include "rig/flights/motion.h"

#include <algorithm>
#include <cmath>
#include <iterator>
#include <numbers>
#include <utility>

#include "rig/flights/airport_layout.h"

namespace rig {

namespace {

constexpr int stepsPerSecond = 10;
constexpr double step = 1.0 / stepsPerSecond;
constexpr double knotsPerMps = 3600 / metersPerNm;
constexpr double rollPerSecond = 6; // degrees
constexpr double gravity = 9.80665; // metres a second, a second
/// Half the distance over which a change of the climb is rounded, metres: near the ground, and more of it for each foot
/// of height up to where it is most.
constexpr double roundingAtGround = 200;
constexpr double roundingPerFoot = 0.2;
constexpr double roundingUpToFeet = 10000;
/// Below this it stands on its wheels.
constexpr double groundFeet = 0.5;
/// Sideways, on the ground, where nobody is to spill a coffee.
constexpr double taxiSideways = 0.6; // metres a second, a second
/// Slowing down may be that much harder than the leg's rate, to stay on a limit that was planned with the rate itself.
constexpr double hardest = 1.5;
/// A leg that is this short of its end is over.
constexpr double nearEnd = 0.01; // metres
/// Slower than this it creeps to the end of its leg.
constexpr double creep = 0.3; // metres a second

double turned(double degrees) {
    const double rest = std::fmod(degrees, 360);
    return rest < 0 ? rest + 360 : rest;
}

/// The heights of a whole flight by the distance from its start.
class HeightProfile {
public:
    explicit HeightProfile(const std::vector<Leg>& legs) {
        double begin = 0;
        for (const Leg& leg : legs) {
            for (const HeightPoint& point : leg.heights) {
                points_.push_back({begin + point.meters, point.heightFt});
            }
            begin += leg.path.length();
        }
    }

    /// The mean of the straight lines over the rounding to both sides: smooth wherever they bend.
    double at(double meters) const {
        if (points_.empty()) {
            return 0;
        }
        const double half = roundingAtGround + roundingPerFoot * std::clamp(straightAt(meters), 0.0, roundingUpToFeet);
        return (areaUntil(meters + half) - areaUntil(meters - half)) / (2 * half);
    }

private:
    double straightAt(double meters) const {
        const auto next = std::find_if(points_.begin(), points_.end(),
                                       [meters](const HeightPoint& point) { return point.meters > meters; });
        if (next == points_.begin() || next == points_.end()) {
            return next == points_.end() ? points_.back().heightFt : points_.front().heightFt;
        }
        const HeightPoint& from = *std::prev(next);
        return from.heightFt + (next->heightFt - from.heightFt) * (meters - from.meters) / (next->meters - from.meters);
    }

    double areaUntil(double meters) const {
        double area = points_[0].heightFt * (std::min(meters, points_[0].meters));
        for (std::size_t i = 0; i + 1 < points_.size(); ++i) {
            const HeightPoint& a = points_[i];
            const HeightPoint& b = points_[i + 1];
            if (meters <= a.meters) {
                return area;
            }
            const double to = std::min(meters, b.meters);
            const double length = b.meters - a.meters;
            const double height = length > 0 ? a.heightFt + (b.heightFt - a.heightFt) * (to - a.meters) / length : 0;
            area += (a.heightFt + height) / 2 * (to - a.meters);
        }
        return area + points_.back().heightFt * std::max(meters - points_.back().meters, 0.0);
    }

    std::vector<HeightPoint> points_;
};

/// The fastest that a leg allows at each metre so that its curves and its end are met.
class SpeedLimits {
public:
    explicit SpeedLimits(const Leg& leg) {
        const auto count = static_cast<std::size_t>(leg.path.length()) + 2;
        limits_.assign(count, leg.speed);
        if (isTaxiing(leg)) {
            limitCurves(leg);
        }
        limits_[count - 1] = limits_[count - 2] = std::min(limits_[count - 2], leg.endSpeed);
        for (std::size_t i = count - 1; i > 0; --i) {
            const double reachable = std::sqrt(limits_[i] * limits_[i] + 2 * leg.acceleration);
            limits_[i - 1] = std::min(limits_[i - 1], reachable);
        }
    }

    double at(double meters) const {
        const double place = std::max(meters, 0.0);
        const auto index = std::min(static_cast<std::size_t>(place), limits_.size() - 2);
        const double part = std::min(place - static_cast<double>(index), 1.0);
        return limits_[index] + (limits_[index + 1] - limits_[index]) * part;
    }

private:
    static constexpr double fastestTaxi = 20; // metres a second

    static bool isTaxiing(const Leg& leg) { return leg.speed <= fastestTaxi; }

    void limitCurves(const Leg& leg) {
        for (std::size_t i = 0; i < limits_.size(); ++i) {
            const double curvature = std::abs(leg.path.at(static_cast<double>(i)).curvature);
            if (curvature > 0) {
                limits_[i] = std::min(limits_[i], std::sqrt(taxiSideways / curvature));
            }
        }
    }

    std::vector<double> limits_;
};

class Flier {
public:
    explicit Flier(const std::vector<Leg>& legs) : profile_(legs) {}

    void fly(const Leg& leg) {
        const SpeedLimits limits(leg);
        // What the step that ended the leg before had left, so that no way is lost between them.
        double along = std::exchange(left_, 0);
        for (;;) {
            speed_ = nextSpeed(leg, limits, along);
            along += speed_ * step;
            if (along >= leg.path.length() - nearEnd) {
                break;
            }
            advance(leg, along);
        }
        left_ = leg.endSpeed > 0 ? along - speed_ * step - leg.path.length() : 0;
        wait(leg);
        flown_ += leg.path.length();
    }

    std::vector<MotionState> take() { return std::move(states_); }

    /// The state before anything has moved.
    void begin(const Leg& leg) {
        height_ = profile_.at(0);
        speed_ = leg.heights.empty() ? 0 : leg.speed;
        add(leg, 0, 0);
    }

private:
    double nextSpeed(const Leg& leg, const SpeedLimits& limits, double along) const {
        const double change = leg.acceleration * step;
        const double wanted = limits.at(along);
        const double next = std::clamp(wanted, speed_ - change * hardest, speed_ + change);
        return std::max(next, creep);
    }

    void wait(const Leg& leg) {
        const double from = hover_;
        const double to = leg.hoverFt < 0 ? from : leg.hoverFt;
        const auto steps = static_cast<int>(std::lround(leg.waitSeconds * stepsPerSecond));
        for (int i = 1; i <= steps; ++i) {
            speed_ = 0;
            // Slowly off, slowly on.
            const double part = (1 - std::cos(std::numbers::pi * i / steps)) / 2;
            hover_ = from + (to - from) * part;
            advance(leg, leg.path.length());
        }
    }

    /// Once a second: towards the roll that the turn asks for.
    double nextRoll(double curvature) const {
        const double wanted = std::atan(speed_ * speed_ * curvature / gravity) * degreesPerRadian;
        return std::clamp(wanted, roll_ - rollPerSecond, roll_ + rollPerSecond);
    }

    void advance(const Leg& leg, double along) {
        const double height = hover_ + profile_.at(flown_ + along);
        const double climb = (height - height_) / step; // feet a second
        height_ = height;
        if (++steps_ % stepsPerSecond == 0) {
            add(leg, along, climb);
        }
    }

    void add(const Leg& leg, double along, double climbFps) {
        const PathPlace place = leg.path.at(along);
        MotionState state;
        state.seconds = static_cast<double>(steps_) / stepsPerSecond;
        state.phase = leg.phase;
        state.position = airport::latLon(place.at);
        state.onGround = height_ < groundFeet;
        state.heightFt = state.onGround ? 0 : height_;
        const double way = place.direction * degreesPerRadian;
        state.heading = turned(leg.backwards ? way + 180 : way);
        state.track = speed_ > 0 ? turned(way) : state.heading;
        state.gsKnots = speed_ * knotsPerMps;
        state.vsFpm = state.onGround ? 0 : climbFps * 60;
        state.rollDegrees = roll_ = nextRoll(state.onGround ? 0 : place.curvature);
        states_.push_back(state);
    }

    const HeightProfile profile_;
    double speed_ = 0;
    double height_ = 0; // feet
    double hover_ = 0;  // feet of it
    double left_ = 0;   // metres, below 0: of the leg before, still to go
    double roll_ = 0;   // degrees
    double flown_ = 0;  // metres, by the legs that are over
    long steps_ = 0;
    std::vector<MotionState> states_;
};

} // namespace

std::vector<MotionState> fly(const std::vector<Leg>& legs) {
    Flier flier(legs);
    flier.begin(legs.front());
    for (const Leg& leg : legs) {
        flier.fly(leg);
    }
    return flier.take();
}

} // namespace rig
