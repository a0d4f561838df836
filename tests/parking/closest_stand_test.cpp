// tests/parking/closest_stand_test.cpp
#include "parking/closest_stand.h"

#include <gmock/gmock.h>

#include "tests/support/log_capture.h"

using testing::ElementsAre;
using testing::IsEmpty;

namespace {

/// A hundredth of a degree of latitude is 0.6 nm.
constexpr const char* stands = R"(<parkpositions>
    <parkpos id="far" latitude="0.03" longitude="0"/>
    <parkpos id="near" latitude="0.01" longitude="0"/>
    <parkpos id="as near" latitude="-0.01" longitude="0"/>
</parkpositions>)";

ClosestStand closestIn(std::string_view text) {
    writeFile("airport.xml", text);
    return lf_closestStandInFile("airport.xml", {0, 0});
}

const Airport best{"AAAA", "", 0, 0, 0, 0};
const Airport neighbour{"BBBB", "", 0, 0, 0, 0};

} // namespace

TEST(ClosestStand, isTheNearestAndTheEarlierOfATie) {
    const LogCapture log;
    const ClosestStand closest = closestIn(stands);
    EXPECT_EQ(closest.id, "near");
    EXPECT_NEAR(closest.distanceNm, 0.6, 0.001);
}

TEST(ClosestStand, isNotLookedForBelowARoot) {
    const LogCapture log;
    const ClosestStand closest = closestIn(std::string("<root>") + stands + "</root>");
    EXPECT_EQ(closest.distanceNm, noStandNm);
    EXPECT_EQ(closest.id, "");
}

TEST(ClosestStand, isNoneInAFileThatDoesNotLoadOrHasNoStands) {
    const LogCapture log;
    EXPECT_EQ(closestIn("<parkpositions>").distanceNm, noStandNm);
    EXPECT_EQ(closestIn("<parkpositions/>").distanceNm, noStandNm);
    EXPECT_EQ(closestIn("<other/>").distanceNm, noStandNm);
    EXPECT_EQ(lf_closestStandInFile("none.xml", {0, 0}).distanceNm, noStandNm);
}

TEST(ClosestStand, isNoneInAFileThatBreaksOffBehindAStand) {
    const LogCapture log;
    const std::string whole = stands;
    const ClosestStand closest = closestIn(whole.substr(0, whole.rfind("</parkpositions>")));
    EXPECT_EQ(closest.distanceNm, noStandNm);
    EXPECT_EQ(closest.id, "");
}

TEST(ClosestStand, beyondAHundredMilesIsNone) {
    const LogCapture log;
    EXPECT_EQ(closestIn(R"(<parkpositions><parkpos id="x" latitude="2" longitude="0"/></parkpositions>)").id, "");
}

TEST(ClosestStand, leavesTheFileWhereItIs) {
    const LogCapture log;
    closestIn(stands);
    EXPECT_TRUE(std::filesystem::exists("airport.xml"));
}

TEST(CloserByStand, isTheBestUnlessTheNeighboursStandIsNearer) {
    const LogCapture log;
    EXPECT_EQ(&lf_closerByStand(best, {1.0, "A1"}, neighbour, {1.0, "B1"}), &best);
    EXPECT_EQ(&lf_closerByStand(best, {1.0, "A1"}, neighbour, {1.5, "B1"}), &best);
    EXPECT_EQ(&lf_closerByStand(best, {}, neighbour, {}), &best);
    EXPECT_THAT(log.lines(), IsEmpty());
}

TEST(CloserByStand, saysThatTheNeighboursStandIsNearer) {
    const LogCapture log;
    EXPECT_EQ(&lf_closerByStand(best, {1.0, "A1"}, neighbour, {0.5, "B1"}), &neighbour);
    EXPECT_THAT(log.lines(),
                ElementsAre("Airport AAAA is closest, but stand B1 at neighbouring airport BBBB is closer at "
                            "926 meters ..."));
}
