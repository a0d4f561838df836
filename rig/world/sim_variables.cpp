// rig/world/sim_variables.cpp
#include "rig/world/sim_variables.h"

#include "rig/world/names.h"

namespace rig {

namespace {

// Units are counted in radians, feet, feet per second and per cent.
constexpr double degree = radiansPerDegree;
constexpr double radian = 1.0;
constexpr double foot = 1.0;
constexpr double meter = feetPerNm / metersPerNm;
constexpr double footPerSecond = 1.0;
constexpr double secondsPerMinute = 60.0;
constexpr double secondsPerHour = 3600.0;
constexpr double knot = feetPerNm / secondsPerHour;
constexpr double percent = 1.0;
constexpr double plain = 1.0;

struct Unit {
    std::string_view name;
    Dimension dimension;
    double size;
};

constexpr Unit units[] = {
    {"degree", Dimension::angle, degree},
    {"degrees", Dimension::angle, degree},
    {"radian", Dimension::angle, radian},
    {"radians", Dimension::angle, radian},
    {"feet", Dimension::length, foot},
    {"foot", Dimension::length, foot},
    {"meter", Dimension::length, meter},
    {"meters", Dimension::length, meter},
    {"feet per second", Dimension::speed, footPerSecond},
    {"feet per minute", Dimension::speed, footPerSecond / secondsPerMinute},
    {"meters per second", Dimension::speed, meter},
    {"knot", Dimension::speed, knot},
    {"knots", Dimension::speed, knot},
    {"percent", Dimension::fraction, percent},
    {"percent over 100", Dimension::fraction, 100 * percent},
    {"bool", Dimension::plain, plain},
    {"mask", Dimension::plain, plain},
    {"number", Dimension::plain, plain},
    {"seconds", Dimension::plain, plain},
};

double heightFeet(const ObjectView& view) {
    return view.object.position.altFeet - view.groundFeet;
}

double lightStates(const ObjectView& view) {
    return view.object.controls.lights;
}

// clang-format off
constexpr NumberVariable numberVariables[] = {
    {"PLANE LATITUDE", Dimension::angle, degree,
     [](const ObjectView& view) { return view.object.position.lat; },
     [](WorldObject& object, double value) { object.position.lat = value; }},
    {"PLANE LONGITUDE", Dimension::angle, degree,
     [](const ObjectView& view) { return view.object.position.lon; },
     [](WorldObject& object, double value) { object.position.lon = value; }},
    {"PLANE PITCH DEGREES", Dimension::angle, radian,
     [](const ObjectView& view) { return view.object.position.pitchRad; },
     [](WorldObject& object, double value) { object.position.pitchRad = value; }},
    {"PLANE BANK DEGREES", Dimension::angle, radian,
     [](const ObjectView& view) { return view.object.position.bankRad; },
     [](WorldObject& object, double value) { object.position.bankRad = value; }},
    {"PLANE HEADING DEGREES TRUE", Dimension::angle, radian,
     [](const ObjectView& view) { return view.object.position.headingRad; },
     [](WorldObject& object, double value) { object.position.headingRad = value; }},
    {"PLANE ALTITUDE", Dimension::length, foot,
     [](const ObjectView& view) { return view.object.position.altFeet; },
     [](WorldObject& object, double value) { object.position.altFeet = value; }},
    {"PLANE ALT ABOVE GROUND", Dimension::length, foot, heightFeet, nullptr},
    {"GROUND ALTITUDE", Dimension::length, foot,
     [](const ObjectView& view) { return view.groundFeet; }, nullptr},
    {"VERTICAL SPEED", Dimension::speed, footPerSecond,
     [](const ObjectView& view) { return view.object.position.verticalFeetPerSecond; },
     [](WorldObject& object, double value) { object.position.verticalFeetPerSecond = value; }},
    {"AIRSPEED TRUE", Dimension::speed, knot,
     [](const ObjectView& view) { return view.object.position.trueKnots; },
     [](WorldObject& object, double value) { object.position.trueKnots = value; }},
    {"GROUND VELOCITY", Dimension::speed, knot,
     [](const ObjectView& view) { return view.object.position.trueKnots; }, nullptr},
    {"SIM ON GROUND", Dimension::plain, plain,
     [](const ObjectView& view) { return isOnGround(view.object, view.groundFeet) ? 1.0 : 0.0; }, nullptr},
    {"STATIC CG TO GROUND", Dimension::length, foot,
     [](const ObjectView& view) { return view.object.type.cgHeightFeet; }, nullptr},
    {"STATIC PITCH", Dimension::angle, radian,
     [](const ObjectView& view) { return view.object.type.staticPitchRad; }, nullptr},
    {"LIGHT STATES", Dimension::plain, plain, lightStates, nullptr},
    {"LIGHT ON STATES", Dimension::plain, plain, lightStates, nullptr},
    {"SPOILERS HANDLE POSITION", Dimension::fraction, percent,
     [](const ObjectView& view) { return view.object.controls.spoilersPercent; },
     [](WorldObject& object, double value) { object.controls.spoilersPercent = value; }},
    {"GENERAL ENG THROTTLE LEVER POSITION:1", Dimension::fraction, percent,
     [](const ObjectView& view) { return view.object.controls.throttle1Percent; },
     [](WorldObject& object, double value) { object.controls.throttle1Percent = value; }},
    {"GENERAL ENG THROTTLE LEVER POSITION:2", Dimension::fraction, percent,
     [](const ObjectView& view) { return view.object.controls.throttle2Percent; },
     [](WorldObject& object, double value) { object.controls.throttle2Percent = value; }},
    {"GEAR HANDLE POSITION", Dimension::plain, plain,
     [](const ObjectView& view) { return view.object.controls.gearDown ? 1.0 : 0.0; }, nullptr},
    {"TRAILING EDGE FLAPS LEFT PERCENT", Dimension::fraction, percent,
     [](const ObjectView& view) { return view.object.controls.flapsPercent; }, nullptr},
    {"ENG COMBUSTION:1", Dimension::plain, plain,
     [](const ObjectView& view) { return view.object.controls.enginesRun ? 1.0 : 0.0; }, nullptr},
    {"ZULU TIME", Dimension::plain, plain,
     [](const ObjectView& view) { return view.zulu.seconds; }, nullptr},
    {"ZULU DAY OF YEAR", Dimension::plain, plain,
     [](const ObjectView& view) { return static_cast<double>(view.zulu.dayOfYear); }, nullptr},
    {"ZULU YEAR", Dimension::plain, plain,
     [](const ObjectView& view) { return static_cast<double>(view.zulu.year); }, nullptr},
};

constexpr TextVariable textVariables[] = {
    {"TITLE", [](const ObjectView& view) { return view.object.type.title; }},
    {"ATC MODEL", [](const ObjectView& view) { return view.object.type.model; }},
    {"ATC ID", [](const ObjectView& view) { return view.object.tailNumber; }},
};
// clang-format on

template <typename Row, std::size_t count>
const Row* rowNamed(const Row (&rows)[count], std::string_view name) {
    for (const Row& row : rows) {
        if (sameName(row.name, name)) {
            return &row;
        }
    }
    return nullptr;
}

} // namespace

const NumberVariable* numberVariableNamed(std::string_view name) {
    return rowNamed(numberVariables, name);
}

const TextVariable* textVariableNamed(std::string_view name) {
    return rowNamed(textVariables, name);
}

std::optional<double> unitsPerStored(const NumberVariable& variable, std::string_view unitsName) {
    const Unit* unit = rowNamed(units, unitsName);
    if (unit == nullptr || unit->dimension != variable.dimension) {
        return std::nullopt;
    }
    return variable.storedUnit / unit->size;
}

} // namespace rig
