// rig/flights/script.cpp
#include "rig/flights/script.h"

#include <cmath>
#include <numbers>

namespace rig {

namespace {

using airport::place;

// Speeds, metres a second
constexpr double pushSpeed = 1.5;
constexpr double towSpeed = 5;
constexpr double taxiSpeed = 10;
constexpr double exitSpeed = 12;
constexpr double rotateSpeed = 75;
constexpr double climbSpeed = 128;
constexpr double cruiseSpeed = 230;
constexpr double finalSpeed = 70;
constexpr double lightSpeed = 48;
constexpr double lightTouchSpeed = 28;
constexpr double helicopterSpeed = 55;
constexpr double hoverSpeed = 5;

// Accelerations, metres a second, a second
constexpr double gentle = 0.5;
constexpr double takeOffThrust = 1.8;
constexpr double braking = 1.8;
constexpr double airSlowing = 0.6;

// Radii, metres
constexpr double pushRadius = 25;
constexpr double taxiRadius = 40;
constexpr double lineUpRadius = 45;
constexpr double airlinerRadius = 7000;
constexpr double patternRadius = 2200;
constexpr double lightRadius = 600;
constexpr double helicopterRadius = 1200;

constexpr double tailAlongLane = 70; // metres
constexpr double tugSeconds = 60;
constexpr double lineUpSeconds = 8;
constexpr double engineStartSeconds = 20;

// Along the runway, metres
constexpr double lineUpEnd = 120;
constexpr double liftOff = 1700;
constexpr double touchdown = 350;
constexpr double lightLiftOff = 500;

/// Feet a metre of way: three degrees.
constexpr double feetPerMeter = feetPerNm / metersPerNm;
const double glide = std::tan(3 * radiansPerDegree) * feetPerMeter;
constexpr double climbFeetPerMeter = 0.33; // ten per cent
constexpr double highClimbFeetPerMeter = 0.18;
constexpr double descentFeetPerMeter = 0.16;

constexpr double cruiseHeightFt = 22000;
constexpr double firstClimbFt = 6000;
constexpr double interceptHeightFt = 2500;
constexpr double circuitHeightFt = 1000;
constexpr double goAroundAtFt = 250;
constexpr double goAroundToFt = 2500;
constexpr double helicopterHeightFt = 700;
constexpr double hoverHeightFt = 10;

/// A straight line on the runway's own axis to a way out or in: far out it bends to the wanted direction.
constexpr double straightOut = 40000; // metres, before the first turn

PlanePoint far(const PlanePoint& from, double degrees, double meters) {
    return moved(from, degrees * radiansPerDegree, meters);
}

Leg standing(const PlanePoint& at, double heading, const char* name, double seconds) {
    return {name, Path({at}, 0, heading), 0, 0, gentle, false, {}, seconds, -1};
}

Legs joined(std::initializer_list<Legs> parts) {
    Legs all;
    for (const Legs& part : parts) {
        all.insert(all.end(), part.begin(), part.end());
    }
    return all;
}

PlanePoint pushEnd(const ScriptedStand& stand) {
    return place(stand.along + tailAlongLane, stand.lane);
}

/// From the stand until the nose can go along the taxilane.
Path pushPath(const ScriptedStand& stand) {
    return Path({stand.at, place(stand.along, stand.lane), pushEnd(stand)}, pushRadius);
}

/// Where the nose looks when the aircraft goes to the runway along a taxilane.
double outwardHeading() {
    return airport::runwayHeading() + std::numbers::pi;
}

std::vector<PlanePoint> wayOut(const ScriptedStand& stand) {
    return {pushEnd(stand), place(airport::linkOut, stand.lane), place(airport::linkOut, airport::taxiway),
            place(airport::entry, airport::taxiway), place(airport::entry, airport::holdingPoint)};
}

std::vector<PlanePoint> wayIn(const ScriptedStand& stand) {
    return {place(airport::exit, airport::holdingPoint),
            place(airport::exit, airport::taxiway),
            place(airport::linkIn, airport::taxiway),
            place(airport::linkIn, stand.lane),
            place(stand.along, stand.lane),
            stand.at};
}

/// Onto the runway; ends rolling slowly.
Leg lineUp() {
    return {phase::takeOff,
            Path({place(airport::entry, airport::holdingPoint), place(airport::entry, 0), place(lineUpEnd, 0)},
                 lineUpRadius),
            taxiSpeed,
            0,
            gentle,
            false,
            {},
            lineUpSeconds,
            -1};
}

/// From the touchdown to the exit.
Leg rollOut(double from) {
    return {phase::rollOut,
            Path({place(from, 0), place(airport::exit, 0), place(airport::exit, airport::holdingPoint)}, lineUpRadius),
            exitSpeed,
            exitSpeed / 2,
            braking,
            false,
            {},
            0,
            -1};
}

/// Straight in from a distance before the touchdown, at a glide of three degrees.
Leg finalApproach(double meters, double speed, double endSpeed) {
    return {
        phase::approach, Path({place(touchdown - meters, 0), place(0, 0)}, 0),           speed, endSpeed, airSlowing,
        false,           {{0, meters * glide}, {meters - touchdown, touchdown * glide}}, 0,     -1};
}

/// Over the threshold to the touchdown.
Leg lastMetres(double speed) {
    return {phase::landing,
            Path({place(0, 0), place(touchdown, 0)}, 0),
            speed,
            speed,
            airSlowing,
            false,
            {{touchdown, 0}},
            0,
            -1};
}

} // namespace

Legs parked(const ScriptedStand& stand, double seconds) {
    return {standing(stand.at, stand.heading, phase::parked, seconds)};
}

Legs pushBack(const ScriptedStand& stand) {
    return {{phase::pushBack, pushPath(stand), pushSpeed, 0, gentle, true, {}, tugSeconds, -1}};
}

Legs taxiToRunway(const ScriptedStand& stand, double holdSeconds) {
    const std::vector<PlanePoint> way = wayOut(stand);
    if (holdSeconds == 0) {
        return {{phase::taxiOut, Path(way, taxiRadius), taxiSpeed, 0, gentle, false, {}, 0, -1}};
    }
    const PlanePoint hold = place((airport::linkOut + airport::entry) / 2, airport::taxiway);
    return {{phase::taxiOut, Path({way[0], way[1], way[2], hold}, taxiRadius), taxiSpeed, 0, gentle, false, {}, 0, -1},
            standing(hold, outwardHeading(), phase::holding, holdSeconds),
            {phase::taxiOut, Path({hold, way[3], way[4]}, taxiRadius), taxiSpeed, 0, gentle, false, {}, 0, -1}};
}

Legs departure(double awayDegrees, double cruiseMeters) {
    const double firstClimb = firstClimbFt / climbFeetPerMeter;
    const double highClimb = (cruiseHeightFt - firstClimbFt) / highClimbFeetPerMeter;
    const double runwayDegrees = airport::runwayHeading() * degreesPerRadian;
    const PlanePoint rotate = place(liftOff, 0);
    const PlanePoint turn = far(rotate, runwayDegrees, straightOut);
    const PlanePoint top = far(turn, awayDegrees, highClimb);
    const Path climbPath({rotate, turn, top}, airlinerRadius);
    const Path cruisePath({top, far(top, awayDegrees, cruiseMeters)}, 0);
    return {lineUp(),
            {phase::takeOff,
             Path({place(lineUpEnd, 0), rotate}, 0),
             rotateSpeed,
             rotateSpeed,
             takeOffThrust,
             false,
             {{liftOff - lineUpEnd, 0}},
             0,
             -1},
            {phase::climb,
             climbPath,
             climbSpeed,
             climbSpeed,
             gentle,
             false,
             {{firstClimb, firstClimbFt}, {climbPath.length(), cruiseHeightFt}},
             0,
             -1},
            {phase::cruise,
             cruisePath,
             cruiseSpeed,
             cruiseSpeed,
             gentle,
             false,
             {{cruisePath.length(), cruiseHeightFt}},
             0,
             -1}};
}

Legs arrival(double fromDegrees, double cruiseMeters) {
    const double descentLength = (cruiseHeightFt - interceptHeightFt) / descentFeetPerMeter;
    const double glideLength = interceptHeightFt / glide;
    const double finalLength = glideLength + 4000;
    const PlanePoint gate = place(touchdown - finalLength, 0);
    const PlanePoint turn = place(touchdown - straightOut, 0);
    const PlanePoint top = far(turn, fromDegrees, descentLength);
    const Path cruisePath({far(top, fromDegrees, cruiseMeters), top}, 0);
    const Path descentPath({top, turn, gate}, airlinerRadius);
    const Leg intercept{phase::approach,
                        Path({gate, place(0, 0)}, 0),
                        climbSpeed * 0.75,
                        finalSpeed,
                        airSlowing,
                        false,
                        {{finalLength - glideLength, interceptHeightFt}, {finalLength - touchdown, touchdown * glide}},
                        0,
                        -1};
    return {{phase::cruise,
             cruisePath,
             cruiseSpeed,
             cruiseSpeed,
             gentle,
             false,
             {{0, cruiseHeightFt}, {cruisePath.length(), cruiseHeightFt}},
             0,
             -1},
            {phase::descent,
             descentPath,
             climbSpeed,
             climbSpeed,
             airSlowing,
             false,
             {{descentLength, interceptHeightFt}, {descentPath.length(), interceptHeightFt}},
             0,
             -1},
            intercept,
            lastMetres(finalSpeed),
            rollOut(touchdown)};
}

Legs taxiToStand(const ScriptedStand& stand) {
    return {{phase::taxiIn, Path(wayIn(stand), taxiRadius), taxiSpeed, 0, gentle, false, {}, 0, -1}};
}

Legs wholeDeparture(const ScriptedStand& stand, double parkedSeconds, double awayDegrees, double cruiseMeters,
                    double holdSeconds) {
    return joined({parked(stand, parkedSeconds), pushBack(stand), taxiToRunway(stand, holdSeconds),
                   departure(awayDegrees, cruiseMeters)});
}

Legs wholeArrival(const ScriptedStand& stand, double parkedSeconds, double fromDegrees, double cruiseMeters) {
    return joined({arrival(fromDegrees, cruiseMeters), taxiToStand(stand), parked(stand, parkedSeconds)});
}

Legs tow(const ScriptedStand& from, const ScriptedStand& to, double waitSeconds) {
    const Path way({pushEnd(from), place(airport::linkOut, from.lane), place(airport::linkOut, airport::taxiway),
                    place(airport::linkIn, airport::taxiway), place(airport::linkIn, to.lane), place(to.along, to.lane),
                    to.at},
                   taxiRadius);
    Legs legs = joined({parked(from, waitSeconds), pushBack(from)});
    legs.push_back({phase::towing, way, towSpeed, 0, gentle / 2, false, {}, 0, -1});
    legs.push_back(standing(to.at, to.heading, phase::parked, waitSeconds));
    return legs;
}

Legs touchAndGo(const ScriptedStand& stand, int circuits) {
    constexpr double width = 2000;    // metres from the runway to the downwind leg, on the side without stands
    constexpr double upwind = 3500;   // along the runway
    constexpr double base = -8000;    // the same
    constexpr double climbing = 0.25; // feet a metre
    const double glideLength = circuitHeightFt / glide;
    Legs legs = joined({parked(stand, engineStartSeconds), pushBack(stand), taxiToRunway(stand)});
    legs.push_back(lineUp());
    double from = lineUpEnd;
    for (int i = 0; i < circuits; ++i) {
        const double off = from + lightLiftOff;
        legs.push_back({phase::takeOff,
                        Path({place(from, 0), place(off, 0)}, 0),
                        lightTouchSpeed,
                        lightTouchSpeed,
                        takeOffThrust,
                        false,
                        {{off - from, 0}},
                        0,
                        -1});
        const Path round({place(off, 0), place(upwind, 0), place(upwind, -width), place(base, -width), place(base, 0),
                          place(touchdown - glideLength, 0)},
                         lightRadius);
        const double top = circuitHeightFt / climbing;
        legs.push_back({phase::circuit,
                        round,
                        lightSpeed,
                        lightSpeed,
                        gentle,
                        false,
                        {{top, circuitHeightFt}, {round.length(), circuitHeightFt}},
                        0,
                        -1});
        legs.push_back(finalApproach(glideLength, lightSpeed * 0.8, lightTouchSpeed));
        legs.push_back(lastMetres(lightTouchSpeed));
        from = touchdown + 300;
        const bool last = i + 1 == circuits;
        if (!last) {
            legs.push_back({phase::rollOut,
                            Path({place(touchdown, 0), place(from, 0)}, 0),
                            lightTouchSpeed * 0.8,
                            lightTouchSpeed * 0.8,
                            braking,
                            false,
                            {{from - touchdown, 0}},
                            0,
                            -1});
        }
    }
    legs.push_back(rollOut(touchdown));
    return joined({legs, taxiToStand(stand), parked(stand, engineStartSeconds)});
}

Legs goAround(const ScriptedStand& stand, double parkedSeconds) {
    constexpr double width = 6000;   // metres from the runway to the downwind leg
    constexpr double upwind = 11000; // along the runway
    constexpr double base = -19000;  // the same
    constexpr double from = 15000;   // before the touchdown
    const double glideLength = interceptHeightFt / glide;
    const double low = goAroundAtFt / glide; // before the touchdown
    const Leg broken{phase::approach,
                     Path({place(touchdown - from, 0), place(touchdown - low, 0)}, 0),
                     finalSpeed * 1.1,
                     finalSpeed,
                     airSlowing,
                     false,
                     {{0, interceptHeightFt}, {from - glideLength, interceptHeightFt}, {from - low, goAroundAtFt}},
                     0,
                     -1};
    const Path round({place(touchdown - low, 0), place(upwind, 0), place(upwind, -width), place(base, -width),
                      place(base, 0), place(touchdown - glideLength, 0)},
                     patternRadius);
    const double up = (goAroundToFt - goAroundAtFt) / climbFeetPerMeter;
    Legs legs{broken,
              {phase::goAround,
               round,
               finalSpeed * 1.3,
               finalSpeed * 1.1,
               gentle,
               false,
               {{up, goAroundToFt}, {round.length(), interceptHeightFt}},
               0,
               -1},
              finalApproach(glideLength, finalSpeed, finalSpeed),
              lastMetres(finalSpeed),
              rollOut(touchdown)};
    return joined({legs, taxiToStand(stand), parked(stand, parkedSeconds)});
}

Legs helicopter(const ScriptedStand& stand, double parkedSeconds) {
    constexpr double climbing = 0.5;  // feet a metre
    constexpr double away = 9000;     // metres
    constexpr double crossing = 4000; // metres
    constexpr double hoverTaxi = 150; // metres
    constexpr double riseSeconds = 12;
    const double nose = stand.heading * degreesPerRadian;
    const PlanePoint edge = far(stand.at, nose, hoverTaxi);
    const PlanePoint out = far(edge, nose, away);
    const PlanePoint across = far(out, nose + 90, crossing);
    const PlanePoint back = far(edge, nose + 90, crossing);
    const PlanePoint before = far(back, nose + 180, crossing);
    const PlanePoint home = far(stand.at, nose + 180, crossing);
    const Path round({edge, out, across, back, before, home, stand.at}, helicopterRadius);
    const double up = helicopterHeightFt / climbing;
    Leg rise = standing(stand.at, stand.heading, phase::hover, riseSeconds);
    rise.hoverFt = hoverHeightFt;
    Leg sink = standing(stand.at, stand.heading, phase::hover, riseSeconds);
    sink.hoverFt = 0;
    return {standing(stand.at, stand.heading, phase::parked, parkedSeconds),
            rise,
            {phase::hover, Path({stand.at, edge}, 0), hoverSpeed, hoverSpeed, gentle, false, {{hoverTaxi, 0}}, 0, -1},
            {phase::circuit,
             round,
             helicopterSpeed,
             0,
             gentle,
             false,
             {{up, helicopterHeightFt}, {round.length() - up, helicopterHeightFt}, {round.length() - 300, 0}},
             0,
             -1},
            sink,
            standing(stand.at, stand.heading, phase::parked, parkedSeconds)};
}

Legs overflight(double fromDegrees, double passMeters, double heightFt) {
    constexpr double length = 120000; // metres
    const PlanePoint middle = far({}, fromDegrees + 90, passMeters);
    const Path way({far(middle, fromDegrees, length / 2), far(middle, fromDegrees + 180, length / 2)}, 0);
    return {{phase::cruise, way, cruiseSpeed, cruiseSpeed, gentle, false, {{0, heightFt}}, 0, -1}};
}

} // namespace rig
