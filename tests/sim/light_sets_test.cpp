#include "sim/light_sets.h"

#include <gmock/gmock.h>

#include "core/random.h"
#include "tests/sim/sim_test.h"

using testing::ElementsAre;

namespace {

class LightSets : public SimTest {
protected:
    LightSets() {
        gf_seedRandom(1);
        aircraft.alt = 3000;
        aircraft.altAboveGround = 0;
        aircraft.phase = FlightPhase::taxi;
    }

    /// How often the cabin of a parked aircraft is lit in so many draws.
    int litCabins(int draws) const {
        int lit = 0;
        for (int i = 0; i < draws; ++i) {
            lit += static_cast<int>(standLights(aircraft)[6]);
        }
        return lit;
    }

    LiveAircraft aircraft;
};

// nav, beacon, landing, taxi, strobes, logo, cabin

TEST_F(LightSets, theFixedOnes) {
    EXPECT_THAT(startOfPushLights, ElementsAre(1, 1, 0, 1, 0, 1, 0));
    EXPECT_THAT(takeOffRollLights, ElementsAre(1, 1, 1, 1, 1, 1, 0));
    EXPECT_THAT(below10000FeetLights, ElementsAre(1, 1, 1, 1, 1, 1, 1));
    EXPECT_THAT(above10000FeetLights, ElementsAre(1, 1, 0, 0, 0, 0, 1));
    EXPECT_THAT(vacatedRunwayLights, ElementsAre(1, 1, 0, 1, 0, 1, 1));
}

TEST_F(LightSets, aNewAircraftInTheAirShowsLandingAndLogoLightsUpTo10000Feet) {
    aircraft.altAboveGround = 9000;
    aircraft.alt = 10000;
    EXPECT_THAT(activationLights(aircraft, true), ElementsAre(1, 1, 1, 0, 1, 1, 1));
    aircraft.alt = 10000.1;
    EXPECT_THAT(activationLights(aircraft, true), ElementsAre(1, 1, 0, 0, 1, 0, 1));
}

TEST_F(LightSets, aNewAircraftInTheAirHasItsCabinLitFrom2000FeetAboveGround) {
    aircraft.altAboveGround = 2000;
    EXPECT_THAT(activationLights(aircraft, true), ElementsAre(1, 1, 1, 0, 1, 1, 1));
    aircraft.altAboveGround = 1999.9;
    EXPECT_THAT(activationLights(aircraft, true), ElementsAre(1, 1, 1, 0, 1, 1, 0));
}

TEST_F(LightSets, aNewParkedAircraftGoesByTheNavLightsOption) {
    aircraft.phase = FlightPhase::parked;
    NAV_LIGHTS_WHILE_PARKED.value = true;
    EXPECT_THAT(activationLights(aircraft, false), ElementsAre(1, 0, 0, 0, 0, 1, 1));
    NAV_LIGHTS_WHILE_PARKED.value = false;
    EXPECT_THAT(activationLights(aircraft, false), ElementsAre(0, 0, 0, 0, 0, 1, 1));
}

TEST_F(LightSets, aNewAircraftOnTheGroundHasTaxiLightsOnlyInTaxi) {
    EXPECT_THAT(activationLights(aircraft, false), ElementsAre(1, 1, 0, 1, 0, 1, 1));
    for (const FlightPhase phase : {FlightPhase::pushing_back, FlightPhase::pushed_back, FlightPhase::take_off,
                                    FlightPhase::flying, FlightPhase::parking, FlightPhase::birth}) {
        aircraft.phase = phase;
        EXPECT_THAT(activationLights(aircraft, false), ElementsAre(1, 1, 0, 0, 0, 1, 1)) << printedName(phase);
    }
}

TEST_F(LightSets, onAStandNavGoesByTheOption) {
    RANDOM.value = false;
    NAV_LIGHTS_WHILE_PARKED.value = true;
    EXPECT_THAT(standLights(aircraft), ElementsAre(1, 0, 0, 0, 0, 1, 1));
    NAV_LIGHTS_WHILE_PARKED.value = false;
    EXPECT_THAT(standLights(aircraft), ElementsAre(0, 0, 0, 0, 0, 1, 1));
}

TEST_F(LightSets, theCabinIsDarkOnACargoStand) {
    aircraft.standCargo = 1;
    RANDOM.value = false;
    EXPECT_EQ(litCabins(100), 0);
    RANDOM.value = true;
    EXPECT_EQ(litCabins(100), 0);
}

TEST_F(LightSets, withoutRandomEveryOtherCabinIsLit) {
    RANDOM.value = false;
    EXPECT_EQ(litCabins(100), 100);
}

TEST_F(LightSets, withRandomNineCabinsOfElevenAreLit) {
    RANDOM.value = true;
    constexpr int draws = 11000;
    EXPECT_NEAR(litCabins(draws), 9000, 200) << "five standard deviations";
}

TEST_F(LightSets, parkingTheSystemsIdlesTheThrottleRaisesTheFlapsStopsTheEnginesAndThenSetsTheLights) {
    RANDOM.value = false;
    NAV_LIGHTS_WHILE_PARKED.value = true;
    aircraft.objectId = 77;
    aircraft.throttleIndex = 1;
    aircraft.flapsIndex = 1;
    gf_parkSystems(aircraft);
    EXPECT_THAT(events(), ElementsAre("77 223 0", "77 218 0", "77 222 0", "77 208 1", "77 207 0", "77 211 0",
                                      "77 209 0", "77 210 0", "77 213 1", "77 212 1"));
}

} // namespace
