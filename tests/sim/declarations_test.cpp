#include "sim/declarations.h"

#include "core/run_flags.h"
#include "tests/sim/session_fixture.h"
#include "window/window_state.h"

using testing::ElementsAre;
using testing::SizeIs;

namespace {

class Declarations : public SessionTest {};

TEST_F(Declarations, systemEventsAreSubscribedInTheirOrder) {
    declareToSimulator();
    EXPECT_THAT(simulator->calls("SimConnect_SubscribeToSystemEvent"),
                ElementsAre("SimConnect_SubscribeToSystemEvent(201, 'Sim')",
                            "SimConnect_SubscribeToSystemEvent(202, 'ObjectAdded')",
                            "SimConnect_SubscribeToSystemEvent(203, 'ObjectRemoved')",
                            "SimConnect_SubscribeToSystemEvent(205, 'PositionChanged')",
                            "SimConnect_SubscribeToSystemEvent(206, 'FlightLoaded')",
                            "SimConnect_SubscribeToSystemEvent(204, 'Frame')"));
}

TEST_F(Declarations, dataDefinitionsAreAddedInTheirOrder) {
    declareToSimulator();
    const std::vector<std::string> expected{
        "(407, 'TITLE', null, 11, 0, -1)",
        "(408, 'ATC MODEL', null, 6, 0, -1)",
        "(409, 'SIM ON GROUND', 'Bool', 2, 0, -1)",
        "(402, 'Plane Latitude', 'degree', 4, 0, -1)",
        "(402, 'Plane Longitude', 'degree', 4, 0, -1)",
        "(402, 'Plane Pitch degrees', 'radians', 4, 0, -1)",
        "(402, 'Plane Bank degrees', 'radians', 4, 0, -1)",
        "(402, 'Plane Heading degrees true', 'radians', 4, 0, -1)",
        "(402, 'Plane Altitude', 'feet', 4, 0, -1)",
        "(402, 'Vertical Speed', 'feet per second', 4, 0, -1)",
        "(402, 'Airspeed True', 'knots', 4, 0, -1)",
        "(403, 'Plane Latitude', 'degree', 4, 0, -1)",
        "(403, 'Plane Longitude', 'degree', 4, 0, -1)",
        "(403, 'Plane Pitch degrees', 'radians', 4, 0, -1)",
        "(403, 'Plane Bank degrees', 'radians', 4, 0, -1)",
        "(403, 'Plane Heading degrees true', 'radians', 4, 0, -1)",
        "(403, 'Plane Altitude', 'feet', 4, 0, -1)",
        "(403, 'Plane Alt Above Ground', 'feet', 4, 0, -1)",
        "(403, 'Ground Velocity', 'knots', 4, 0, -1)",
        "(403, 'ZULU TIME', 'Seconds', 2, 0, -1)",
        "(403, 'ZULU DAY OF YEAR', 'Number', 2, 0, -1)",
        "(403, 'ZULU YEAR', 'Number', 2, 0, -1)",
        "(403, 'LIGHT STATES', 'Mask', 2, 0, -1)",
        "(405, 'Static CG to Ground', 'feet', 4, 0, -1)",
        "(405, 'Static Pitch', 'radians', 4, 0, -1)",
        "(406, 'Light On States', 'Mask', 2, 0, -1)",
        "(404, 'Plane Alt Above Ground', 'feet', 4, 0, -1)",
        "(404, 'Ground Altitude', 'feet', 4, 0, -1)",
        "(404, 'SIM ON GROUND', 'Bool', 2, 0, -1)",
        "(404, 'ATC ID', null, 6, 0, -1)",
        "(401, 'SPOILERS HANDLE POSITION', 'percent', 4, 0, -1)",
        "(401, 'GENERAL ENG THROTTLE LEVER POSITION:1', 'percent', 4, 0, -1)",
        "(401, 'GENERAL ENG THROTTLE LEVER POSITION:2', 'percent', 4, 0, -1)",
    };
    const std::vector<std::string> calls = simulator->calls("SimConnect_AddToDataDefinition");
    ASSERT_THAT(calls, SizeIs(expected.size()));
    for (std::size_t i = 0; i < expected.size(); ++i) {
        EXPECT_EQ(calls[i], "SimConnect_AddToDataDefinition" + expected[i]);
    }
}

TEST_F(Declarations, clientEventsAreMappedInTheirOrder) {
    declareToSimulator();
    const std::vector<std::string> expected{
        "(220, 'GEAR_SET')",
        "(221, 'ENGINE_AUTO_START')",
        "(222, 'ENGINE_AUTO_SHUTDOWN')",
        "(223, 'THROTTLE_SET')",
        "(218, 'FLAPS_SET')",
        "(219, 'SPOILERS_SET')",
        "(208, 'NAV_LIGHTS_SET')",
        "(207, 'BEACON_LIGHTS_SET')",
        "(211, 'LANDING_LIGHTS_SET')",
        "(209, 'TAXI_LIGHTS_SET')",
        "(210, 'STROBES_SET')",
        "(213, 'LOGO_LIGHTS_SET')",
        "(212, 'CABIN_LIGHTS_SET')",
        "(214, 'ALL_LIGHTS_TOGGLE')",
        "(215, 'FREEZE_LATITUDE_LONGITUDE_SET')",
        "(216, 'FREEZE_ALTITUDE_SET')",
        "(217, 'FREEZE_ATTITUDE_SET')",
    };
    const std::vector<std::string> calls = simulator->calls("SimConnect_MapClientEventToSimEvent");
    ASSERT_THAT(calls, SizeIs(expected.size()));
    for (std::size_t i = 0; i < expected.size(); ++i) {
        EXPECT_EQ(calls[i], "SimConnect_MapClientEventToSimEvent" + expected[i]);
    }
}

TEST_F(Declarations, theGroupHasAllEventsButTheStartOfEnginesEachMaskable) {
    declareToSimulator();
    std::vector<std::string> expected;
    for (const int event : {208, 207, 211, 209, 210, 213, 212, 214, 218, 219, 220, 222, 223, 215, 216, 217}) {
        expected.push_back("SimConnect_AddClientEventToNotificationGroup(301, " + std::to_string(event) + ", 1)");
    }
    EXPECT_EQ(simulator->calls("SimConnect_AddClientEventToNotificationGroup"), expected);
}

TEST_F(Declarations, theGroupHasTheHighestPriority) {
    declareToSimulator();
    EXPECT_THAT(simulator->calls("SimConnect_SetNotificationGroupPriority"),
                ElementsAre("SimConnect_SetNotificationGroupPriority(301, 1)"));
}

TEST_F(Declarations, comeInTheOrderOfTheTables) {
    declareToSimulator();
    std::vector<std::string> kinds;
    for (const std::string& call : simulator->calls()) {
        const std::string kind = call.substr(0, call.find('('));
        if (kinds.empty() || kinds.back() != kind) {
            kinds.push_back(kind);
        }
    }
    EXPECT_THAT(kinds,
                ElementsAre("SimConnect_SubscribeToSystemEvent", "SimConnect_AddToDataDefinition",
                            "SimConnect_MapClientEventToSimEvent", "SimConnect_AddClientEventToNotificationGroup",
                            "SimConnect_SetNotificationGroupPriority"));
    EXPECT_FALSE(simFailed);
}

TEST_F(Declarations, theFirstCallThatFailsIsAFailedRequestAndTheLast) {
    for (const char* const name :
         {"SimConnect_SubscribeToSystemEvent", "SimConnect_AddToDataDefinition", "SimConnect_MapClientEventToSimEvent",
          "SimConnect_AddClientEventToNotificationGroup", "SimConnect_SetNotificationGroupPriority"}) {
        reset();
        simulator->forgetCalls();
        simulator->letFail(name);
        declareToSimulator();
        EXPECT_THAT(simulator->calls(name), SizeIs(1)) << name;
        EXPECT_TRUE(simFailed) << name;
        EXPECT_EQ(shownMessage(), "SimConnect request error");
        EXPECT_EQ(gf_exitReason(), ExitReason::simConnectError) << name;
        EXPECT_EQ(gf_restartDelaySeconds(), 9) << name;
        simulator->letFail(name, false);
    }
}

TEST(SimulatorNumbers, ofRequests) {
    EXPECT_EQ(requestInRange, 101U);
    EXPECT_EQ(requestStaticData, 102U);
    EXPECT_EQ(requestRelease, 103U);
    EXPECT_EQ(requestCreate, 104U);
    EXPECT_EQ(requestRemove, 105U);
    EXPECT_EQ(requestTitle, 106U);
    EXPECT_EQ(requestModel, 107U);
    EXPECT_EQ(requestOnGround, 108U);
    EXPECT_EQ(requestPosition, 109U);
    EXPECT_EQ(requestFlightPlan, 110U);
}

} // namespace
