#include "rig/world/scene_reader.h"

#include <gmock/gmock.h>

#include <chrono>

#include <fmt/format.h>

#include "tests/support/temporary_folder.h"

using namespace rig;
using namespace std::chrono;
using ::testing::SizeIs;

namespace {

Scene scene(std::string_view json) {
    return sceneFrom(json, "scene.json");
}

std::string errorOf(std::string_view json) {
    try {
        scene(json);
        return "no error";
    } catch (const SceneError& error) {
        return error.what();
    }
}

/// A scene with this act at second 3.
std::string withAct(std::string_view act) {
    return fmt::format(R"({{"user": {{"position": [52, 4]}}, "acts": [{{"at": 3, {}}}]}})", act);
}

template <typename Wanted>
Wanted act(std::string_view text) {
    const Scene read = scene(withAct(text));
    if (read.acts.size() != 1 || !std::holds_alternative<Wanted>(read.acts[0].kind)) {
        ADD_FAILURE() << text;
        return {};
    }
    EXPECT_EQ(read.acts[0].atSeconds, 3);
    return std::get<Wanted>(read.acts[0].kind);
}

} // namespace

TEST(SceneReader, aUsersPlaceIsEnough) {
    const Scene read = scene(R"({"user": {"position": [47.4647, 8.5492]}})");
    EXPECT_EQ(read.user.at, (LatLon{47.4647, 8.5492}));
    EXPECT_EQ(read.user.altFeet, std::nullopt);
    EXPECT_EQ(read.simulator.name, "Lockheed Martin Prepar3D v5");
    EXPECT_EQ(read.framesPerSecond, 30);
    EXPECT_EQ(read.zuluStart, sys_days{2026y / June / 1} + 12h);
    EXPECT_TRUE(read.acts.empty());
}

TEST(SceneReader, readsEachPartOfAScene) {
    const Scene read = scene(R"({
        // a comment
        "simulator": {"name": "SunRise", "version": [11, 0, 62651, 3]},
        "frame_rate": 60,
        "time": "2024-12-31T23:59:58",
        "ground": {"default_elevation_ft": 12, "places": [
            {"name": "Zurich", "position": [47.46, 8.55], "radius_nm": 3, "elevation_ft": 1416}]},
        "user": {"title": "My Jet", "model": "E190", "position": [47.46, 8.56], "heading": 137, "altitude_ft": 5000,
                 "knots": 180, "cg_height_ft": 7.5, "wing_span_ft": 94}
    })");
    EXPECT_EQ(read.simulator.name, "SunRise");
    EXPECT_EQ(read.simulator.version, (std::array<DWORD, 4>{11, 0, 62651, 3}));
    EXPECT_EQ(read.framesPerSecond, 60);
    EXPECT_EQ(read.zuluStart, sys_days{2024y / December / 31} + 23h + 59min + 58s);
    EXPECT_EQ(read.ground.defaultElevationFeet, 12);
    ASSERT_THAT(read.ground.places, SizeIs(1));
    EXPECT_EQ(read.ground.places[0].name, "Zurich");
    EXPECT_EQ(read.ground.elevationFeet({47.46, 8.55}), 1416);
    EXPECT_EQ(read.user.type.title, "My Jet");
    EXPECT_EQ(read.user.type.model, "E190");
    EXPECT_EQ(read.user.type.cgHeightFeet, 7.5);
    EXPECT_EQ(read.user.type.wingSpanFeet, 94);
    EXPECT_EQ(read.user.headingDegrees, 137);
    EXPECT_EQ(read.user.altFeet, 5000);
    EXPECT_EQ(read.user.knots, 180);
}

TEST(SceneReader, nowIsTheTimeOfTheClock) {
    const platform::ManualClock clock(sys_days{2026y / November / 21} + 12h);
    EXPECT_EQ(scene(R"({"user": {"position": [0, 0]}, "time": "now"})").zuluStart, platform::wallNow());
}

TEST(SceneReader, readsEachAct) {
    const auto taxi = act<TaxiAct>(R"("act": "taxi", "points": [[52, 4], [53, 5]], "knots": 20)");
    EXPECT_EQ(taxi.points, (std::vector<LatLon>{{52, 4}, {53, 5}}));
    EXPECT_EQ(taxi.knots, 20);
    const auto fly = act<FlyAct>(R"("act": "fly", "points": [[52, 4, 3000]])");
    ASSERT_THAT(fly.points, SizeIs(1));
    EXPECT_EQ(fly.points[0].altFeet, 3000);
    EXPECT_EQ(fly.knots, 250);
    const auto approach = act<ApproachAct>(
        R"("act": "approach", "threshold": [52, 4], "heading": 90, "from_nm": 5, "knots": 130, "glide_degrees": 3.5)");
    EXPECT_EQ(approach.threshold, (LatLon{52, 4}));
    EXPECT_EQ(approach.headingDegrees, 90);
    EXPECT_EQ(approach.fromNm, 5);
    EXPECT_EQ(approach.knots, 130);
    EXPECT_EQ(approach.glideDegrees, 3.5);
    const auto takeOff = act<TakeOffAct>(
        R"("act": "take_off", "heading": 10, "rotate_knots": 120, "climb_knots": 200, "climb_fpm": 1500)");
    EXPECT_EQ(takeOff.headingDegrees, 10);
    EXPECT_EQ(takeOff.rotateKnots, 120);
    EXPECT_EQ(takeOff.climbKnots, 200);
    EXPECT_EQ(takeOff.climbFeetPerMinute, 1500);
    EXPECT_EQ(act<JumpAct>(R"("act": "jump")").nm, 10.5);
    EXPECT_EQ(act<JumpAct>(R"("act": "jump", "nm": 9, "heading": 45)").headingDegrees, 45);
    EXPECT_EQ(act<LoadFlightAct>(R"("act": "load_flight", "file": "C:\\f.fxml")").file, "C:\\f.fxml");
    act<PositionChangedAct>(R"("act": "position_changed")");
    act<PauseAct>(R"("act": "pause")");
    act<ResumeAct>(R"("act": "resume")");
    act<QuitAct>(R"("act": "quit")");
    EXPECT_EQ(act<StallAct>(R"("act": "stall", "seconds": 4)").seconds, 4);
    EXPECT_EQ(act<FrameRateAct>(R"("act": "frame_rate", "value": 5)").framesPerSecond, 5);
    EXPECT_EQ(act<RefuseTitleAct>(R"("act": "refuse_title", "title": "Bad")").title, "Bad");
    const auto foreign = act<ForeignObjectAct>(
        R"("act": "foreign_object", "title": "T", "tail_number": "N1", "position": [52, 4], "heading": 5, "altitude_ft": 900)");
    EXPECT_EQ(foreign.title, "T");
    EXPECT_EQ(foreign.tailNumber, "N1");
    EXPECT_EQ(foreign.at, (LatLon{52, 4}));
    EXPECT_EQ(foreign.headingDegrees, 5);
    EXPECT_EQ(foreign.altFeet, 900);
    act<DropConnectionAct>(R"("act": "drop_connection")");
    const auto exceptions = act<ExceptionsAct>(R"("act": "exceptions", "count": 7, "exception": 5)");
    EXPECT_EQ(exceptions.count, 7);
    EXPECT_EQ(exceptions.exception, 5u);
    const std::pair<const char*, Lie> lies[] = {
        {"bad_size", Lie::badSize}, {"half", Lie::half}, {"zero_size", Lie::zeroSize}, {"huge", Lie::huge}};
    for (const auto& [name, lie] : lies) {
        EXPECT_EQ(act<LyingRecordAct>(fmt::format(R"("act": "lying_record", "lie": "{}")", name)).lie, lie);
    }
}

TEST(SceneReader, aBadSceneNamesFileAndPlace) {
    const struct {
        std::string json;
        const char* error;
    } table[] = {
        {"", "scene.json: line 1, column 1: is no JSON"},
        {"{\n  \"user\": {\n    \"position\" [52, 4]}}", "scene.json: line 3, column 16: is no JSON"},
        {R"({"frame_rate": 1e999})", "scene.json: holds a number that is too large"},
        {"[]", "scene.json: must be an object"},
        {"{}", "scene.json: 'user' is missing"},
        {R"({"user": 5})", "scene.json: user: must be an object"},
        {R"({"user": {}})", "scene.json: user: 'position' is missing"},
        {R"({"user": {"position": [52]}})", "scene.json: user.position: must be [latitude, longitude]"},
        {R"({"user": {"position": [91, 4]}})", "scene.json: user.position[0]: must be from -90 to 90"},
        {R"({"user": {"position": [52, "4"]}})", "scene.json: user.position[1]: must be a number"},
        {R"({"user": {"position": [52, 4]}, "frame_rate": 4})", "scene.json: frame_rate: must be from 5 to 120"},
        {R"({"user": {"position": [52, 4]}, "frame_rate": 121})", "scene.json: frame_rate: must be from 5 to 120"},
        {R"({"user": {"position": [52, 4]}, "framerate": 30})", "scene.json: unknown key 'framerate'"},
        {R"({"user": {"position": [52, 4], "title": 5}})", "scene.json: user.title: must be a text"},
        {R"({"user": {"position": [52, 4]}, "acts": {}})", "scene.json: acts: must be a list"},
        {R"({"user": {"position": [52, 4]}, "simulator": {"version": [5]}})",
         "scene.json: simulator.version: must be four numbers"},
        {R"({"user": {"position": [52, 4]}, "simulator": {"version": [5, 4, 9, 0.5]}})",
         "scene.json: simulator.version[3]: must be a whole number"},
        {R"({"user": {"position": [52, 4]}, "time": "noon"})",
         "scene.json: time: must be \"now\" or like \"2026-06-01T12:00:00\""},
        {R"({"user": {"position": [52, 4]}, "time": "2026-02-29T12:00:00"})",
         "scene.json: time: is no time of a year from 1970 to 2200"},
        {R"({"user": {"position": [52, 4]}, "time": "2026-02-28T24:00:00"})",
         "scene.json: time: is no time of a year from 1970 to 2200"},
        {R"({"user": {"position": [52, 4]}, "ground": {"places": [{"position": [1, 2], "radius_nm": 3}]}})",
         "scene.json: ground.places[0]: 'elevation_ft' is missing"},
        {withAct(R"("act": "dance")"), "scene.json: acts[0].act: unknown act 'dance'"},
        {withAct(R"("knots": 5)"), "scene.json: acts[0]: 'act' is missing"},
        {R"({"user": {"position": [52, 4]}, "acts": [{"act": "quit"}]})", "scene.json: acts[0]: 'at' is missing"},
        {R"({"user": {"position": [52, 4]}, "acts": [{"at": -1, "act": "quit"}]})",
         "scene.json: acts[0].at: must be from 0 to 10000000"},
        {withAct(R"("act": "quit", "why": 1)"), "scene.json: acts[0]: unknown key 'why'"},
        {withAct(R"("act": "taxi")"), "scene.json: acts[0]: 'points' is missing"},
        {withAct(R"("act": "fly", "points": [[52, 4]])"),
         "scene.json: acts[0].points[0]: must be [latitude, longitude, feet]"},
        {withAct(R"("act": "lying_record", "lie": "white")"), "scene.json: acts[0].lie: unknown lie 'white'"},
        {withAct(R"("act": "exceptions", "count": 0)"), "scene.json: acts[0].count: must be from 1 to 100000"},
    };
    for (const auto& row : table) {
        EXPECT_EQ(errorOf(row.json), row.error) << row.json;
    }
}

TEST(SceneReader, aFileThatIsNotThereIsNamed) {
    const TemporaryFolder folder;
    EXPECT_THROW(
        {
            try {
                readScene("missing.json");
            } catch (const SceneError& error) {
                EXPECT_STREQ(error.what(), "missing.json: cannot be read");
                throw;
            }
        },
        SceneError);
    std::filesystem::create_directory("folder.json");
    EXPECT_THROW(readScene("folder.json"), SceneError);
}

TEST(SceneReader, theScenesThatComeWithTheRigAreGood) {
    int count = 0;
    for (const auto& entry : std::filesystem::directory_iterator("rig/scenes")) {
        EXPECT_NO_THROW(readScene(entry.path())) << entry.path();
        ++count;
    }
    EXPECT_GE(count, 4);
}
