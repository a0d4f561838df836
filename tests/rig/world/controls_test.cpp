// Controls that clients set by events and by writes.
#include <gmock/gmock.h>

#include "rig/world/sim_events.h"
#include "sim/sim_ids.h"
#include "tests/rig/world/world_client.h"

using namespace rig;

namespace {

WorldObject after(std::string_view event, DWORD value, WorldObject object = {}) {
    const SimEvent* known = simEventNamed(event);
    if (known == nullptr) {
        ADD_FAILURE() << event;
        return object;
    }
    known->apply(object, value);
    return object;
}

} // namespace

TEST(SimEvents, lightsAreBitsOfTheLightStates) {
    const std::pair<const char*, std::uint32_t> table[] = {
        {"NAV_LIGHTS_SET", 0x001},   {"BEACON_LIGHTS_SET", 0x002}, {"LANDING_LIGHTS_SET", 0x004},
        {"TAXI_LIGHTS_SET", 0x008},  {"STROBES_SET", 0x010},       {"LOGO_LIGHTS_SET", 0x100},
        {"CABIN_LIGHTS_SET", 0x200},
    };
    for (const auto& [event, bit] : table) {
        EXPECT_EQ(after(event, 1).controls.lights, bit) << event;
        WorldObject lit;
        lit.controls.lights = allLights;
        EXPECT_EQ(after(event, 0, lit).controls.lights, allLights & ~bit) << event;
    }
}

TEST(SimEvents, allLightsToggle) {
    const WorldObject lit = after("ALL_LIGHTS_TOGGLE", 0);
    EXPECT_EQ(lit.controls.lights, allLights);
    EXPECT_EQ(after("ALL_LIGHTS_TOGGLE", 0, lit).controls.lights, 0u);
}

TEST(SimEvents, gearAndEnginesAreOnOrOff) {
    EXPECT_FALSE(after("GEAR_SET", 0).controls.gearDown);
    EXPECT_TRUE(after("GEAR_SET", 1, after("GEAR_SET", 0)).controls.gearDown);
    EXPECT_FALSE(after("ENGINE_AUTO_SHUTDOWN", 0).controls.enginesRun);
    EXPECT_TRUE(after("ENGINE_AUTO_START", 0, after("ENGINE_AUTO_SHUTDOWN", 0)).controls.enginesRun);
}

TEST(SimEvents, leversCountTo16383) {
    EXPECT_EQ(after("FLAPS_SET", 16383).controls.flapsPercent, 100);
    EXPECT_NEAR(after("FLAPS_SET", 3072).controls.flapsPercent, 18.75, 0.01);
    EXPECT_EQ(after("SPOILERS_SET", 16383).controls.spoilersPercent, 100);
    EXPECT_EQ(after("THROTTLE_SET", 16383).controls.throttle1Percent, 100);
    EXPECT_EQ(after("THROTTLE_SET", 16383).controls.throttle2Percent, 100);
    EXPECT_EQ(after("THROTTLE_SET", static_cast<DWORD>(-16383)).controls.throttle1Percent, -100);
}

TEST(SimEvents, freezesAreSetAndTakenBack) {
    EXPECT_TRUE(after("FREEZE_LATITUDE_LONGITUDE_SET", 1).freezes.place);
    EXPECT_TRUE(after("FREEZE_ALTITUDE_SET", 1).freezes.altitude);
    EXPECT_TRUE(after("FREEZE_ATTITUDE_SET", 1).freezes.attitude);
    EXPECT_FALSE(after("FREEZE_ALTITUDE_SET", 0, after("FREEZE_ALTITUDE_SET", 1)).freezes.altitude);
}

TEST(SimEvents, namesAreKnownInWhateverCase) {
    EXPECT_NE(simEventNamed("gear_set"), nullptr);
    EXPECT_EQ(simEventNamed("GEAR_SE"), nullptr);
    EXPECT_EQ(simEventNamed(""), nullptr);
}

TEST(Controls, anEventReachesItsObjectByTheClientsOwnNumber) {
    World world(groundScene(), airliner());
    WorldClient client(world);
    WorldClient other(world);
    client.declares();
    other.sends(MapClientEventRequest{eventGear, "ENGINE_AUTO_SHUTDOWN"});
    const DWORD id = client.creates("KLM123", inTheAir());
    client.sendsEvent(id, eventGear, 0);
    world.step();
    EXPECT_FALSE(world.aircraft().at(id).controls.gearDown);
    EXPECT_TRUE(world.aircraft().at(id).controls.enginesRun);
    other.sendsEvent(id, eventGear, 0);
    world.step();
    EXPECT_FALSE(world.aircraft().at(id).controls.enginesRun);
}

TEST(Controls, spoilersAndThrottlesAreWrittenInPerCent) {
    World world(groundScene(), airliner());
    WorldClient client(world);
    for (const char* name : {"SPOILERS HANDLE POSITION", "GENERAL ENG THROTTLE LEVER POSITION:1",
                             "GENERAL ENG THROTTLE LEVER POSITION:2"}) {
        client.defines(definitionTouchdownControls, name, "percent", SIMCONNECT_DATATYPE_FLOAT64);
    }
    const DWORD id = client.creates("KLM123", inTheAir());
    client.sends(SetDataRequest{definitionTouchdownControls, id, 0, 0, 24, doubles({100, -100, 50})});
    world.step();
    const Controls& controls = world.aircraft().at(id).controls;
    EXPECT_EQ(controls.spoilersPercent, 100);
    EXPECT_EQ(controls.throttle1Percent, -100);
    EXPECT_EQ(controls.throttle2Percent, 50);
}
