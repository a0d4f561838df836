#include "rig/world/phase.h"

#include <gtest/gtest.h>

using namespace rig;

namespace {

WorldObject flying(double altFeet, double verticalFeetPerSecond, double knots) {
    WorldObject object;
    object.position.altFeet = altFeet;
    object.position.verticalFeetPerSecond = verticalFeetPerSecond;
    object.position.trueKnots = knots;
    return object;
}

} // namespace

TEST(PhaseText, isWhatTheMotionTells) {
    EXPECT_EQ(phaseText(flying(0, 0, 0), 0), "standing");
    WorldObject parked = flying(0, 0, 0);
    parked.controls.enginesRun = false;
    EXPECT_EQ(phaseText(parked, 0), "parked");
    EXPECT_EQ(phaseText(flying(0, 0, 15), 0), "taxi");
    EXPECT_EQ(phaseText(flying(0, 0, 90), 0), "runway");
    EXPECT_EQ(phaseText(flying(5000, 20, 250), 0), "climb");
    EXPECT_EQ(phaseText(flying(5000, -20, 250), 0), "descent");
    EXPECT_EQ(phaseText(flying(5000, 1, 250), 0), "level");
}
