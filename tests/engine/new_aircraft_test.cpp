#include "engine/new_aircraft.h"

#include <gmock/gmock.h>

#include <cmath>
#include <limits>

#include "tests/engine/engine_test.h"

using ::testing::ElementsAre;

namespace {

class NewAircraft : public EngineTest {
protected:
    /// What became of a record of this type; null when it was dropped.
    static LiveAircraft* made(const std::string& type, double altFeet = 5000) {
        liveTable.clear();
        FeedRecord record = recordOf(airSample(0, 0, 3000, altFeet), 1234.5);
        record.type = type;
        newAircraft(std::move(record));
        return liveTable.empty() ? nullptr : &liveTable[0];
    }
};

TEST_F(NewAircraft, itWaitsInTheBufferWithItsIdentityAndItsFirstSample) {
    const LiveAircraft* aircraft = made("A320");
    ASSERT_NE(aircraft, nullptr);
    EXPECT_EQ(aircraft->hexid, testHexid);
    EXPECT_EQ(aircraft->callsign, "KLM123");
    EXPECT_EQ(aircraft->flightCode1, "KLM123");
    EXPECT_EQ(aircraft->flightCode2, "");
    EXPECT_EQ(aircraft->registration, "PH-ABC");
    EXPECT_EQ(aircraft->origin, "AMS");
    EXPECT_EQ(aircraft->destination, "LHR");
    EXPECT_EQ(aircraft->airline, "");
    EXPECT_EQ(aircraft->staticTwinChecked, 0);
    EXPECT_EQ(aircraft->lifeState, LifeState::buffer);
    EXPECT_EQ(aircraft->phase, FlightPhase::birth);
    EXPECT_EQ(aircraft->throttleIndex, 5);
    EXPECT_EQ(aircraft->flapsIndex, 4);
    EXPECT_EQ(aircraft->maxEarlier, 1000);
    EXPECT_EQ(aircraft->maxLater, 1000);
    EXPECT_EQ(aircraft->groundSlots, 1);
    EXPECT_EQ(aircraft->altAboveGround, 2500);
    EXPECT_FALSE(aircraft->curve.exists());
    EXPECT_EQ(aircraft->lastFeedTime, 1234.5);
    ASSERT_EQ(aircraft->stream.size(), 1u);
    EXPECT_EQ(aircraft->stream[0].slot, testSlot + 3000);
}

TEST_F(NewAircraft, itHasTheLimitsOfItsCategory) {
    const LiveAircraft* aircraft = made("B77W");
    EXPECT_EQ(aircraft->category, AircraftCategory::Heavy);
    EXPECT_EQ(aircraft->maxClimbPerSlot, 0.5);
    EXPECT_EQ(aircraft->turnRate, aircraft->baseTurnRate);
}

TEST_F(NewAircraft, theRegistrationKnowsTheTypeBetter) {
    knowRegistration("PH-ABC", "KLM", "B77W");
    const LiveAircraft* aircraft = made("A320");
    EXPECT_EQ(aircraft->model, "B77W");
    EXPECT_EQ(aircraft->category, AircraftCategory::Heavy);
}

TEST_F(NewAircraft, aRegistrationWithoutTypeTellsNothing) {
    knowRegistration("PH-ABC", "KLM", "");
    EXPECT_EQ(made("A320")->model, "A320");
}

TEST_F(NewAircraft, anUnknownTypeIsNotShownAndSaidOnce) {
    EXPECT_EQ(made("XXXX"), nullptr);
    EXPECT_EQ(made("XXXX"), nullptr);
    EXPECT_THAT(log.lines(), ElementsAre("Aircraft of type 'XXXX' are not shown: the type is not known"));
}

TEST_F(NewAircraft, theUserMayDoWithoutSomeCategories) {
    LIGHT_AIRCRAFT.value = false;
    EXPECT_EQ(made("C172"), nullptr);
    EXPECT_NE(made("F16"), nullptr);
    HIGH_PERF_AIRCRAFT.value = false;
    EXPECT_EQ(made("F16"), nullptr);
    EXPECT_NE(made("EC35"), nullptr);
    HELICOPTERS.value = false;
    EXPECT_EQ(made("EC35"), nullptr);
    for (const char* type : {"A320", "B77W", "CRJ2"}) {
        EXPECT_NE(made(type), nullptr) << type;
    }
    EXPECT_TRUE(log.contains("Aircraft of type 'C172' are not shown: its category is switched off"));
}

TEST_F(NewAircraft, justAboveTheAirportNoneBegins) {
    openAirport(500);
    EXPECT_EQ(made("A320", 600), nullptr);
    EXPECT_NE(made("A320", 0), nullptr);
    EXPECT_NE(made("A320", 700), nullptr);
}

TEST_F(NewAircraft, aWingSpanIsTheTypesOrTheCategorysOrTheLargest) {
    gHalfWingspans["A320"] = 0.0097;
    gAverageHalfWingspans[static_cast<std::size_t>(AircraftCategory::Heavy)] = 0.017;
    MaxHalfWingspan = 0.02;
    EXPECT_EQ(made("A320")->halfWingSpan, 0.0097);
    EXPECT_EQ(made("B77W")->halfWingSpan, 0.017);
    EXPECT_EQ(made("C172")->halfWingSpan, 0.02);
}

} // namespace
