#include "engine/aircraft_states.h"

#include <gtest/gtest.h>

#include <array>
#include <stdexcept>

#include "engine/live_aircraft.h"

namespace {

TEST(AircraftStates, phasesHaveFixedNumbersAndNames) {
    struct Row {
        FlightPhase phase;
        int number;
        const char* name;
    };
    const std::array<Row, 8> rows{{
        {FlightPhase::pushing_back, 0, "pushing_back"},
        {FlightPhase::pushed_back, 1, "pushed_back"},
        {FlightPhase::taxi, 2, "taxi"},
        {FlightPhase::take_off, 3, "take_off"},
        {FlightPhase::flying, 4, "flying"},
        {FlightPhase::parking, 5, "parking"},
        {FlightPhase::parked, 6, "parked"},
        {FlightPhase::birth, 7, "birth"},
    }};
    for (const Row& row : rows) {
        EXPECT_EQ(static_cast<int>(row.phase), row.number);
        EXPECT_EQ(printedName(row.phase), row.name);
    }
}

TEST(AircraftStates, lifeStatesHaveFixedNumbersAndNames) {
    struct Row {
        LifeState state;
        int number;
        const char* name;
    };
    const std::array<Row, 5> rows{{
        {LifeState::buffer, 0, "buffer"},
        {LifeState::adding2sim, 1, "adding2sim"},
        {LifeState::active, 2, "active"},
        {LifeState::liveryrespawn, 3, "liveryrespawn"},
        {LifeState::removingfromsim, 4, "removingfromsim"},
    }};
    for (const Row& row : rows) {
        EXPECT_EQ(static_cast<int>(row.state), row.number);
        EXPECT_EQ(printedName(row.state), row.name);
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
    for (const int state : {5, -1}) {
        try {
            printedName(static_cast<LifeState>(state));
            FAIL() << state;
        } catch (const std::out_of_range& exception) {
            EXPECT_STREQ(exception.what(), "invalid unordered_map<K, T> key");
        }
    }
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
