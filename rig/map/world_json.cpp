// rig/map/world_json.cpp
#include "rig/map/world_json.h"

#include <nlohmann/json.hpp>

#include "rig/world/phase.h"

namespace rig {

namespace {

using nlohmann::json;

struct LightName {
    Light light;
    const char* name;
};

constexpr LightName lightNames[] = {
    {lightNav, "nav"},       {lightBeacon, "beacon"}, {lightLanding, "landing"}, {lightTaxi, "taxi"},
    {lightStrobe, "strobe"}, {lightLogo, "logo"},     {lightCabin, "cabin"},
};

json lightsJson(std::uint32_t lights) {
    json names = json::array();
    for (const LightName& known : lightNames) {
        if ((lights & known.light) != 0) {
            names.push_back(known.name);
        }
    }
    return names;
}

json aircraftJson(const WorldObject& object, double groundFeet) {
    const Position& position = object.position;
    const Controls& controls = object.controls;
    return {
        {"id", object.id},
        {"callSign", object.tailNumber},
        {"title", object.type.title},
        {"model", object.type.model},
        {"wingSpanFeet", object.type.wingSpanFeet},
        {"lat", position.lat},
        {"lon", position.lon},
        {"pitch", -position.pitchRad * degreesPerRadian},
        {"bank", position.bankRad * degreesPerRadian},
        {"heading", position.headingRad * degreesPerRadian},
        {"altFeet", position.altFeet},
        {"heightFeet", position.altFeet - groundFeet},
        {"feetPerMinute", position.verticalFeetPerSecond * 60},
        {"knots", position.trueKnots},
        {"onGround", isOnGround(object, groundFeet)},
        {"phase", phaseText(object, groundFeet)},
        {"lights", lightsJson(controls.lights)},
        {"gearDown", controls.gearDown},
        {"flaps", controls.flapsPercent},
        {"spoilers", controls.spoilersPercent},
        {"throttle", controls.throttle1Percent},
        {"enginesRun", controls.enginesRun},
        {"held", object.released && object.freezes.place && object.freezes.altitude && object.freezes.attitude},
    };
}

} // namespace

std::string worldJson(const World& world) {
    json aircraft = json::array();
    aircraft.push_back(aircraftJson(world.user(), world.groundFeet(world.user().position.place())));
    for (const auto& [id, object] : world.aircraft()) {
        if (object.isSeen()) {
            aircraft.push_back(aircraftJson(object, world.groundFeet(object.position.place())));
        }
    }
    json places = json::array();
    for (const Place& place : world.scene().ground.places) {
        places.push_back(
            {{"name", place.name}, {"lat", place.at.lat}, {"lon", place.at.lon}, {"radiusNm", place.radiusNm}});
    }
    const json document{
        {"simulator", world.scene().simulator.name},
        {"zuluSeconds", world.zulu().seconds},
        {"state", stateText(world)},
        {"framesPerSecond", world.framesPerSecond()},
        {"clients", world.clients().size()},
        {"userId", userObjectId},
        {"places", places},
        {"aircraft", aircraft},
    };
    // A client may give texts that are no UTF-8.
    return document.dump(-1, ' ', false, json::error_handler_t::replace);
}

} // namespace rig
