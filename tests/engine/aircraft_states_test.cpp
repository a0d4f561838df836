#include "engine/aircraft_states.h"

#include <gtest/gtest.h>

#include <array>
#include <stdexcept>

#include "engine/live_aircraft.h"

namespace {

TEST(AircraftStates, phasesAreNamedInTheOrderOfTheirNumbers) {
    const std::array names{"pushing_back", "pushed_back", "taxi", "take_off", "flying", "parking", "parked", "birth"};
    for (std::size_t i = 0; i < names.size(); ++i) {
        EXPECT_EQ(printedName(static_cast<FlightPhase>(i)), names.at(i));
    }
}

TEST(AircraftStates, lifeStatesAreNamedInTheOrderOfTheirNumbers) {
    const std::array names{"buffer", "adding2sim", "active", "liveryrespawn", "removingfromsim"};
    for (std::size_t i = 0; i < names.size(); ++i) {
        EXPECT_EQ(printedName(static_cast<LifeState>(i)), names.at(i));
    }
}

TEST(AircraftStates, printingPhase8IsOutOfRangeRatherThanAnEmptyName) {
    for (const int phase : {8, -1}) {
        try {
            printedName(static_cast<FlightPhase>(phase));
            FAIL() << phase;
        } catch (const std::out_of_range& exception) {
            EXPECT_STREQ(exception.what(), "invalid unordered_map<K, T> key");
        }
    }
    EXPECT_THROW(printedName(static_cast<LifeState>(5)), std::out_of_range);
}

TEST(AircraftStates, aPhaseChangeKeepsTheFormerPhase) {
    LiveAircraft aircraft;
    changePhase(aircraft, FlightPhase::parked);
    EXPECT_EQ(aircraft.phase, FlightPhase::parked);
    EXPECT_EQ(aircraft.previousPhase, FlightPhase::birth);
    changePhase(aircraft, FlightPhase::pushing_back);
    EXPECT_EQ(aircraft.previousPhase, FlightPhase::parked);
}

TEST(AircraftStates, aPhaseThatDoesNotChangeLeavesTheFormerOneAlone) {
    LiveAircraft aircraft;
    changePhase(aircraft, FlightPhase::taxi);
    changePhase(aircraft, FlightPhase::taxi);
    EXPECT_EQ(aircraft.previousPhase, FlightPhase::birth);
}

} // namespace
