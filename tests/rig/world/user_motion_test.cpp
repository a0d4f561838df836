// How the user's aircraft moves in the acts of a scene.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <numbers>

#include "tests/rig/world/world_client.h"

using namespace rig;

namespace {

class UserMotionInWorld : public ::testing::Test {
protected:
    bool isOnTheGround() { return isOnGround(user(), world_.groundFeet(user().position.place())); }
    WorldObject& user() { return world_.user(); }
    Position& position() { return world_.user().position; }

    template <typename Look>
    void fly(double seconds, Look look) {
        for (int i = 0; i < seconds * 30; ++i) {
            world_.step();
            look();
        }
    }
    void fly(double seconds) {
        fly(seconds, [] {});
    }

    World world_{groundScene(), {}};
};

double nm(const LatLon& a, const LatLon& b) {
    return greatCircleNm(a, b);
}

} // namespace

TEST_F(UserMotionInWorld, withoutAnActTheUserStandsWhereTheSceneSays) {
    fly(10);
    EXPECT_EQ(position().place(), UserStart().at);
    EXPECT_EQ(position().altFeet, 110);
    EXPECT_EQ(position().trueKnots, 0);
    EXPECT_TRUE(isOnTheGround());
}

TEST_F(UserMotionInWorld, aUserWhoStartsInTheAirFliesOn) {
    Scene scene = groundScene();
    scene.user.altFeet = 5000;
    scene.user.knots = 120;
    scene.user.headingDegrees = 90;
    World world(scene, {});
    for (int i = 0; i < 30 * 60; ++i) {
        world.step();
    }
    EXPECT_NEAR(nm(scene.user.at, world.user().position.place()), 2, 0.001);
    EXPECT_EQ(world.user().position.altFeet, 5000);
}

TEST_F(UserMotionInWorld, taxiPassesEachPointAndStopsAtTheLast) {
    const LatLon start = position().place();
    const std::vector<LatLon> points{{start.lat + 0.002, start.lon}, {start.lat + 0.002, start.lon + 0.003}};
    world_.play(TaxiAct{points, 15});
    double closestToFirst = 1;
    double fastest = 0;
    fly(120, [&] {
        closestToFirst = std::min(closestToFirst, nm(position().place(), points[0]));
        fastest = std::max(fastest, position().trueKnots);
        ASSERT_TRUE(isOnTheGround());
    });
    EXPECT_LT(closestToFirst * 6076, 2);
    EXPECT_NEAR(fastest, 15, 0.01);
    EXPECT_EQ(position().place(), points[1]);
    EXPECT_EQ(position().trueKnots, 0);
    EXPECT_NEAR(position().headingRad, 90 * radiansPerDegree, 0.02);
}

TEST_F(UserMotionInWorld, aTaxiWithoutPointsStops) {
    world_.play(TaxiAct{{{52.4, 4.7639}}, 20});
    fly(20);
    EXPECT_GT(position().trueKnots, 15);
    world_.play(TaxiAct{{}, 20});
    fly(20);
    EXPECT_EQ(position().trueKnots, 0);
}

TEST_F(UserMotionInWorld, takeOffRollsRotatesAndClimbs) {
    const LatLon start = position().place();
    TakeOffAct act;
    act.headingDegrees = 180;
    world_.play(act);
    double liftOffKnots = 0;
    fly(120, [&] {
        if (liftOffKnots == 0 && !isOnTheGround()) {
            liftOffKnots = position().trueKnots;
        }
    });
    EXPECT_NEAR(liftOffKnots, act.rotateKnots, 6);
    EXPECT_GT(position().altFeet, 2000);
    EXPECT_NEAR(position().verticalFeetPerSecond * 60, act.climbFeetPerMinute, 100);
    EXPECT_LT(position().pitchRad, -0.05); // nose up
    EXPECT_NEAR(bearing(start, position().place()), std::numbers::pi, 0.01);
}

TEST_F(UserMotionInWorld, approachComesDownTheGlidePathTouchesDownAndStops) {
    ApproachAct act;
    act.threshold = position().place();
    act.headingDegrees = 90;
    act.fromNm = 3;
    world_.play(act);
    EXPECT_NEAR(nm(position().place(), act.threshold), 3, 0.001);
    double touchdownNm = -1;
    double steepest = 0;
    fly(180, [&] {
        steepest = std::min(steepest, position().verticalFeetPerSecond);
        if (touchdownNm < 0 && isOnTheGround()) {
            touchdownNm = nm(position().place(), act.threshold);
        }
    });
    EXPECT_GE(touchdownNm, 0);
    EXPECT_LT(touchdownNm, 0.1);
    EXPECT_NEAR(steepest * 60, -140 * 6076.0 / 60 * std::tan(3 * radiansPerDegree), 30);
    EXPECT_EQ(position().trueKnots, 0);
    EXPECT_TRUE(isOnTheGround());
}

TEST_F(UserMotionInWorld, flyPassesItsPointsAtTheirHeights) {
    user().position.altFeet = 3000;
    user().position.trueKnots = 200;
    const LatLon to{52.4, 5.0};
    world_.play(FlyAct{{{to, 6000}}, 200});
    double altAtPoint = 0;
    double closest = 1;
    fly(400, [&] {
        const double distance = nm(position().place(), to);
        if (distance < closest) {
            closest = distance;
            altAtPoint = position().altFeet;
        }
    });
    EXPECT_LT(closest, 0.01);
    EXPECT_NEAR(altAtPoint, 6000, 5);
    EXPECT_NEAR(position().altFeet, 6000, 1e-6); // and level from there
}

TEST_F(UserMotionInWorld, aJumpTakesNoTimeAndKeepsTheHeightAboveGround) {
    const LatLon start = position().place();
    user().position.altFeet = 1100;
    world_.play(JumpAct{10.5, 90});
    EXPECT_NEAR(nm(start, position().place()), 10.5, 0.001);
    EXPECT_EQ(position().altFeet, 1000); // the ground is 100 ft lower there
}

TEST_F(UserMotionInWorld, actsOfTheSceneComeAtTheirSeconds) {
    Scene scene = groundScene();
    scene.acts = {{2, JumpAct{5, 0}}, {1, JumpAct{3, 90}}, {3, QuitAct{}}};
    World world(scene, {});
    const auto movedAfter = [&](double seconds) {
        while (world.elapsedSeconds() < seconds - 1e-6) {
            world.step(0.1);
        }
        return nm(scene.user.at, world.user().position.place());
    };
    EXPECT_EQ(movedAfter(0.9), 0);
    EXPECT_NEAR(movedAfter(1.9), 3, 0.001);
    EXPECT_NEAR(movedAfter(2.9), std::hypot(3, 5), 0.01);
    EXPECT_FALSE(world.hasQuit());
    world.step(0.2);
    EXPECT_TRUE(world.hasQuit());
}

TEST_F(UserMotionInWorld, anActThatFallsIntoAStallComesBehindIt) {
    Scene scene = groundScene();
    scene.acts = {{1, StallAct{2}}, {1, JumpAct{5, 0}}};
    World world(scene, {});
    for (int i = 0; i < 25; ++i) {
        world.step(0.1);
    }
    EXPECT_EQ(world.user().position.place(), scene.user.at);
    for (int i = 0; i < 10; ++i) {
        world.step(0.1);
    }
    EXPECT_NE(world.user().position.place(), scene.user.at);
}
