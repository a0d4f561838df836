#include "rig/simulator/status_line.h"

#include <gtest/gtest.h>

#include <sstream>

using namespace rig;

TEST(StatusLine, tellsTimeStateRateClientsAircraftAndUser) {
    Scene scene;
    scene.user.headingDegrees = 183;
    World world(scene, {});
    EXPECT_EQ(statusLine(world, 29.97), "12:00:00Z  running   30.0 fps  clients 0  aircraft 0  "
                                        "user 52.30860 4.76390 heading 183 at 0 kt, on the ground");
    world.user().position.altFeet = 2510;
    world.user().position.trueKnots = 180.4;
    EXPECT_TRUE(statusLine(world, 30).ends_with("at 180 kt, 2510 ft above ground")) << statusLine(world, 30);
}

TEST(StatusLine, tellsWhetherTheSimulatorRuns) {
    World world({}, {});
    world.play(PauseAct{});
    EXPECT_NE(statusLine(world, 30).find("  paused "), std::string::npos);
    world.play(StallAct{1});
    EXPECT_NE(statusLine(world, 30).find("  stalled "), std::string::npos);
    world.play(QuitAct{});
    EXPECT_NE(statusLine(world, 30).find("  quit "), std::string::npos);
}

TEST(StatusDisplay, onATerminalTheLineIsWrittenOver) {
    std::ostringstream out;
    StatusDisplay display(out, true);
    display.say("begin");
    display.show("one");
    display.show("two");
    display.say("end");
    EXPECT_EQ(out.str(), "begin\n\rone\x1b[K\rtwo\x1b[K\nend\n");
}

TEST(StatusDisplay, elsewhereLinesStandBelowEachOther) {
    std::ostringstream out;
    StatusDisplay display(out, false);
    display.show("one");
    display.show("two");
    display.say("end");
    EXPECT_EQ(out.str(), "one\ntwo\nend\n");
}
