#include "rig/map/world_json.h"

#include <gmock/gmock.h>

#include <nlohmann/json.hpp>

using namespace rig;
using nlohmann::json;
using ::testing::HasSubstr;

namespace {

Scene sceneWithForeignAircraft(const std::string& tailNumber) {
    Scene scene;
    scene.ground.places.push_back({"Airport", scene.user.at, 3, 100});
    ForeignObjectAct act;
    act.title = "Airliner";
    act.tailNumber = tailNumber;
    act.at = {52.31, 4.77};
    act.headingDegrees = 90;
    scene.acts.push_back({0, act});
    return scene;
}

AircraftTitles airliner() {
    AircraftTitles titles;
    titles.addLines({"[fltsim.0]", "title=Airliner", "[General]", "atc_model=B738", "wing_span=117"});
    return titles;
}

} // namespace

TEST(WorldJson, tellsTheUserTheAircraftAndThePlaces) {
    World world(sceneWithForeignAircraft("N1"), airliner());
    for (int i = 0; i < framesUntilSeen; ++i) {
        EXPECT_EQ(json::parse(worldJson(world)).at("aircraft").size(), 1u);
        world.step();
    }
    const json document = json::parse(worldJson(world));
    EXPECT_EQ(document.at("state"), "running");
    EXPECT_EQ(document.at("places").at(0).at("name"), "Airport");
    ASSERT_EQ(document.at("aircraft").size(), 2u);
    EXPECT_EQ(document.at("aircraft").at(0).at("id"), userObjectId);
    const json& foreign = document.at("aircraft").at(1);
    EXPECT_EQ(foreign.at("callSign"), "N1");
    EXPECT_EQ(foreign.at("model"), "B738");
    EXPECT_EQ(foreign.at("lat"), 52.31);
    EXPECT_EQ(foreign.at("heading"), 90);
    EXPECT_EQ(foreign.at("wingSpanFeet"), 117);
    EXPECT_EQ(foreign.at("phase"), "standing");
    EXPECT_EQ(foreign.at("onGround"), true);
    EXPECT_EQ(foreign.at("held"), true);
}

TEST(WorldJson, staysJsonWhateverTextsAClientGives) {
    World world(sceneWithForeignAircraft("\xFF\xFE\"</td>"), airliner());
    for (int i = 0; i < framesUntilSeen; ++i) {
        world.step();
    }
    const json document = json::parse(worldJson(world));
    EXPECT_THAT(document.at("aircraft").at(1).at("callSign").get<std::string>(), HasSubstr("\"</td>"));
}
