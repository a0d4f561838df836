// rig/world/user_motion.cpp
#include "rig/world/user_motion.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace rig {

namespace {

constexpr double secondsPerHour = 3600.0;
constexpr double secondsPerMinute = 60.0;
constexpr double feetPerSecondPerKnot = feetPerNm / secondsPerHour;

constexpr double accelerationKnotsPerSecond = 4.0;
constexpr double brakingKnotsPerSecond = 3.0;
constexpr double groundTurnRadPerSecond = 20 * radiansPerDegree;
constexpr double airTurnRadPerSecond = 5 * radiansPerDegree;
/// A wing at work stands a little against the wind.
constexpr double angleOfAttackRad = 2.5 * radiansPerDegree;
constexpr double initialClimbFeet = 10000;

double rollFeet(double knots, double knotsPerSecond) {
    return knots * knots / (2 * knotsPerSecond) * feetPerSecondPerKnot;
}

double towards(double value, double wanted, double step) {
    return value + std::clamp(wanted - value, -step, step);
}

double turnedTowards(double heading, double wanted, double step) {
    const double difference = std::remainder(wanted - heading, twoPi);
    const double turned = std::fmod(heading + std::clamp(difference, -step, step) + twoPi, twoPi);
    return turned > largestHeadingRad ? 0 : turned;
}

/// The pitch of a flight path; negative is nose up.
double pitchFor(double verticalFeetPerSecond, double knots) {
    const double pathFeetPerSecond = std::max(knots, 1.0) * feetPerSecondPerKnot;
    return -std::asin(std::clamp(verticalFeetPerSecond / pathFeetPerSecond, -0.3, 0.3)) - angleOfAttackRad;
}

double standingAltFeet(const WorldObject& user, const Ground& ground, const LatLon& at) {
    return ground.elevationFeet(at) + user.type.cgHeightFeet;
}

} // namespace

void UserMotion::begin(const TaxiAct& act, WorldObject&) {
    legs_.clear();
    for (const LatLon& point : act.points) {
        legs_.push_back({point, true, 0, act.knots});
    }
}

void UserMotion::begin(const FlyAct& act, WorldObject&) {
    legs_.clear();
    for (const Waypoint& point : act.points) {
        legs_.push_back({point.at, false, point.altFeet, act.knots});
    }
}

void UserMotion::begin(const ApproachAct& act, WorldObject& user, const Ground& ground) {
    const double heading = act.headingDegrees * radiansPerDegree;
    const double runwayFeet = standingAltFeet(user, ground, act.threshold);
    const double outFeet = act.fromNm * feetPerNm;
    const LatLon start = project(act.threshold, heading + std::numbers::pi, outFeet);
    user.position = {start.lat,
                     start.lon,
                     user.position.pitchRad,
                     0,
                     std::fmod(heading + twoPi, twoPi),
                     runwayFeet + outFeet * std::tan(act.glideDegrees * radiansPerDegree),
                     0,
                     act.knots};
    const LatLon end = project(act.threshold, heading, rollFeet(act.knots, brakingKnotsPerSecond));
    legs_ = {{act.threshold, false, runwayFeet, act.knots}, {end, true, 0, act.knots}};
}

void UserMotion::begin(const TakeOffAct& act, WorldObject& user, const Ground& ground) {
    const double heading = act.headingDegrees * radiansPerDegree;
    const LatLon start = user.position.place();
    const double roll = rollFeet(act.rotateKnots, accelerationKnotsPerSecond);
    const double climbSeconds = initialClimbFeet / act.climbFeetPerMinute * secondsPerMinute;
    const double climbDistance = climbSeconds * act.climbKnots * feetPerSecondPerKnot;
    user.position.headingRad = std::fmod(heading + twoPi, twoPi);
    legs_ = {{project(start, heading, roll), true, 0, act.rotateKnots},
             {project(start, heading, roll + climbDistance), false,
              standingAltFeet(user, ground, start) + initialClimbFeet, act.climbKnots}};
}

void UserMotion::advance(WorldObject& user, const Ground& ground, double seconds) {
    Position& position = user.position;
    const Position before = position;
    const bool ranOnGround =
        legs_.empty() ? isOnGround(user, ground.elevationFeet(position.place())) : legs_.front().onGround;
    const double rate = wantedKnots(user) < position.trueKnots ? brakingKnotsPerSecond : accelerationKnotsPerSecond;
    position.trueKnots = legs_.empty() && !ranOnGround ? position.trueKnots
                                                       : towards(position.trueKnots, wantedKnots(user), rate * seconds);
    moveAlongLegs(user, seconds);
    if (ranOnGround) {
        position.altFeet = standingAltFeet(user, ground, position.place());
        position.verticalFeetPerSecond = 0;
        position.pitchRad = user.type.staticPitchRad;
        return;
    }
    position.verticalFeetPerSecond = (position.altFeet - before.altFeet) / seconds;
    position.pitchRad = pitchFor(position.verticalFeetPerSecond, position.trueKnots);
}

/// On the ground the last point is where the aircraft comes to stand.
double UserMotion::wantedKnots(const WorldObject& user) const {
    if (legs_.empty()) {
        return 0;
    }
    const Leg& leg = legs_.front();
    if (!leg.onGround || legs_.size() > 1) {
        return leg.knots;
    }
    constexpr double creepingKnots = 1;
    const double leftNm = greatCircleNm(user.position.place(), leg.to);
    const double stillStops = std::sqrt(2 * brakingKnotsPerSecond * leftNm * secondsPerHour);
    return std::clamp(stillStops, creepingKnots, leg.knots);
}

void UserMotion::moveAlongLegs(WorldObject& user, double seconds) {
    Position& position = user.position;
    double feet = position.trueKnots * feetPerSecondPerKnot * seconds;
    while (feet > 0) {
        if (legs_.empty()) {
            const LatLon next = project(position.place(), position.headingRad, feet);
            position.lat = next.lat;
            position.lon = next.lon;
            return;
        }
        const Leg& leg = legs_.front();
        const double leftFeet = greatCircleNm(position.place(), leg.to) * feetPerNm;
        const bool arrives = leftFeet <= feet;
        const double wanted = bearing(position.place(), leg.to);
        const double turn = (leg.onGround ? groundTurnRadPerSecond : airTurnRadPerSecond) * seconds;
        if (!arrives) {
            position.headingRad = turnedTowards(position.headingRad, wanted, turn);
        }
        const LatLon next = arrives ? leg.to : project(position.place(), wanted, feet);
        if (!leg.onGround) {
            position.altFeet +=
                arrives ? leg.altFeet - position.altFeet : (leg.altFeet - position.altFeet) * feet / leftFeet;
        }
        position.lat = next.lat;
        position.lon = next.lon;
        feet -= leftFeet;
        if (arrives) {
            const bool stops = leg.onGround && legs_.size() == 1;
            legs_.pop_front();
            if (stops) {
                position.trueKnots = 0;
                return;
            }
        }
    }
}

} // namespace rig
