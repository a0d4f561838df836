#include "engine/identity.h"

#include <gmock/gmock.h>

#include <new>

#include "tests/engine/engine_test.h"
#include "tests/support/allocation_count.h"

using ::testing::ElementsAre;
using ::testing::IsEmpty;

namespace {

class Identity : public EngineTest {
protected:
    Identity() {
        aircraft = &give(flying(), airSample(0, 0, 500));
        aircraft->origin = "AMS";
        aircraft->destination = "LHR";
        hexidLiveries[testHexid] = "Some Livery";
        record = recordOf(airSample(1, 0, 1500));
        RegcodeTable.clear();
    }

    /// Whether the record's sample goes on.
    bool check() { return checkIdentity(*aircraft, record); }

    bool respawned() const { return aircraft->lifeState == LifeState::liveryrespawn; }
    bool hasDroppedLivery() const {
        return aircraft->liveryTitle.empty() && !hexidLiveries.contains(testHexid) &&
               aircraft->phase == FlightPhase::birth;
    }

    LiveAircraft* aircraft;
    FeedRecord record;
};

TEST_F(Identity, theSameIdentityChangesNothing) {
    EXPECT_TRUE(check());
    EXPECT_FALSE(respawned());
    EXPECT_THAT(log.lines(), IsEmpty());
}

TEST_F(Identity, inTheBufferWhatIsToldIsFilledIn) {
    aircraft->lifeState = LifeState::buffer;
    record.origin = "CDG";
    record.destination = "";
    record.callsign = "AFR1";
    record.registration = "F-ABCD";
    EXPECT_TRUE(check());
    EXPECT_EQ(aircraft->origin, "CDG");
    EXPECT_EQ(aircraft->destination, "LHR");
    EXPECT_EQ(aircraft->callsign, "AFR1");
    EXPECT_EQ(aircraft->registration, "F-ABCD");
    EXPECT_EQ(aircraft->lifeState, LifeState::buffer);
}

TEST_F(Identity, inTheBufferTheFlightCodesFollowTheCallSign) {
    aircraft->lifeState = LifeState::buffer;
    aircraft->flightCode1 = "KLM123";
    aircraft->flightCode2 = "KL5";
    EXPECT_TRUE(check());
    EXPECT_EQ(aircraft->flightCode1, "KLM123");
    EXPECT_EQ(aircraft->flightCode2, "KL5") << "the call sign is the same";
    record.callsign = "AFR1";
    EXPECT_TRUE(check());
    EXPECT_EQ(aircraft->flightCode1, "AFR1");
    EXPECT_EQ(aircraft->flightCode2, "");
    aircraft->flightCode2 = "AF5";
    record.callsign = "";
    EXPECT_TRUE(check());
    EXPECT_EQ(aircraft->flightCode1, "AFR1");
    EXPECT_EQ(aircraft->flightCode2, "AF5") << "nothing was told";
}

TEST_F(Identity, duringTakeOffAndLandingNothingChanges) {
    record.callsign = "AFR1";
    aircraft->takingOff = 1;
    EXPECT_TRUE(check());
    aircraft->takingOff = 0;
    aircraft->landing = 1;
    EXPECT_TRUE(check());
    EXPECT_EQ(aircraft->callsign, "KLM123");
}

TEST_F(Identity, onlyAnActiveAircraftOutOfPushAndExtensionIsChecked) {
    record.callsign = "AFR1";
    aircraft->lifeState = LifeState::adding2sim;
    EXPECT_TRUE(check());
    aircraft->lifeState = LifeState::active;
    aircraft->phase = FlightPhase::pushing_back;
    EXPECT_TRUE(check());
    aircraft->phase = FlightPhase::flying;
    aircraft->extensions = 1;
    EXPECT_TRUE(check());
    EXPECT_EQ(aircraft->callsign, "KLM123");
}

// The route.

TEST_F(Identity, anEmptyRouteIsFilledWithoutAChange) {
    aircraft->origin = aircraft->destination = "";
    EXPECT_TRUE(check());
    EXPECT_EQ(aircraft->origin, "AMS");
    EXPECT_EQ(aircraft->destination, "LHR");
    EXPECT_FALSE(respawned());
}

TEST_F(Identity, anotherRouteMakesItAnew) {
    record.origin = "LHR";
    record.destination = "JFK";
    EXPECT_FALSE(check());
    EXPECT_TRUE(respawned());
    EXPECT_EQ(aircraft->origin, "LHR");
    EXPECT_EQ(aircraft->destination, "JFK");
    EXPECT_EQ(aircraft->liveryTitle, "Some Livery");
    EXPECT_EQ(aircraft->phase, FlightPhase::flying);
    EXPECT_TRUE(log.contains("          LHR->JFK KLM123   PH-ABC respawns"));
}

TEST_F(Identity, anotherEndAloneIsNoOtherRoute) {
    record.destination = "JFK";
    EXPECT_TRUE(check());
    EXPECT_EQ(aircraft->destination, "LHR");
}

TEST_F(Identity, aRouteThatIsNotToldIsNoOtherRoute) {
    record.origin = record.destination = "";
    EXPECT_TRUE(check());
    EXPECT_EQ(aircraft->destination, "LHR");
}

TEST_F(Identity, aReturnLegAnnouncedEarlyIsNoOtherRoute) {
    openAirport(0);
    record.origin = "LHR";
    record.destination = "AMS";
    EXPECT_TRUE(check());
    EXPECT_EQ(aircraft->destination, "LHR");
}

TEST_F(Identity, onTheGroundAnotherRouteLetsItTaxiOn) {
    record.origin = "LHR";
    record.destination = "JFK";
    aircraft->onGround = 1;
    aircraft->phase = FlightPhase::pushed_back;
    aircraft->heading = 1;
    EXPECT_FALSE(check());
    EXPECT_EQ(aircraft->phase, FlightPhase::taxi);
    EXPECT_EQ(aircraft->targetHeading, 1);
}

TEST_F(Identity, onAStandOrOnItsWayToItAnotherRouteLeavesItThere) {
    record.origin = "LHR";
    record.destination = "JFK";
    aircraft->onGround = 1;
    aircraft->heading = 1;
    for (const FlightPhase phase : {FlightPhase::parked, FlightPhase::parking}) {
        aircraft->phase = phase;
        aircraft->lifeState = LifeState::active;
        aircraft->destination = "CDG";
        aircraft->origin = "AMS";
        EXPECT_FALSE(check());
        EXPECT_TRUE(respawned());
        EXPECT_EQ(aircraft->phase, phase);
        EXPECT_EQ(aircraft->targetHeading, 0);
    }
}

// The registration.

TEST_F(Identity, aFirstRegistrationOfAnotherOperatorChangesTheLivery) {
    aircraft->registration = "";
    knowRegistration("PH-ABC", "TRA", "B77W");
    EXPECT_FALSE(check());
    EXPECT_TRUE(respawned());
    EXPECT_TRUE(hasDroppedLivery());
    EXPECT_EQ(aircraft->registration, "PH-ABC");
    EXPECT_EQ(aircraft->airline, "TRA");
    EXPECT_EQ(aircraft->model, "B77W");
}

TEST_F(Identity, theThirdCodeOfARegistrationComesBeforeItsAirline) {
    aircraft->registration = "";
    knowRegistration("PH-ABC", "TRA", "B77W", "MPH");
    EXPECT_FALSE(check());
    EXPECT_EQ(aircraft->airline, "MPH");
}

TEST_F(Identity, aThirdCodeThatItHasAlreadyIsNoChange) {
    aircraft->registration = "";
    knowRegistration("PH-ABC", "TRA", "B77W", "KLM");
    EXPECT_TRUE(check());
    EXPECT_EQ(aircraft->registration, "PH-ABC");
    EXPECT_EQ(aircraft->model, "A320");
}

TEST_F(Identity, aFirstRegistrationOfTheSameAircraftIsNoChange) {
    aircraft->registration = "";
    knowRegistration("PH-ABC", "KLM", "A320");
    EXPECT_TRUE(check());
    EXPECT_EQ(aircraft->registration, "PH-ABC");
}

TEST_F(Identity, anUnknownRegistrationIsOnlyTaken) {
    aircraft->registration = "";
    EXPECT_TRUE(check());
    EXPECT_EQ(aircraft->registration, "PH-ABC");
    EXPECT_EQ(aircraft->liveryTitle, "Some Livery");
}

TEST_F(Identity, aRegistrationThatIsTheCallSignIsAPlaceholder) {
    aircraft->registration = aircraft->callsign;
    knowRegistration("PH-ABC", "TRA", "B77W");
    EXPECT_FALSE(check());
    EXPECT_EQ(aircraft->airline, "TRA");
}

TEST_F(Identity, aLiveryOfItsOwnComesFirst) {
    aircraft->registration = "";
    RegcodeTable["PH-ABC"] = "Own Livery";
    knowRegistration("PH-ABC", "TRA", "B77W", "MPH");
    EXPECT_FALSE(check());
    EXPECT_TRUE(hasDroppedLivery());
    EXPECT_EQ(aircraft->airline, "TRA");
    EXPECT_EQ(aircraft->model, "B77W");
}

TEST_F(Identity, aLiveryOfItsOwnThatItHasAlreadyIsNoChange) {
    aircraft->registration = "";
    RegcodeTable["PH-ABC"] = "Some Livery";
    knowRegistration("PH-ABC", "TRA", "B77W");
    EXPECT_TRUE(check());
    EXPECT_EQ(aircraft->airline, "KLM");
}

TEST_F(Identity, aLiveryOfItsOwnWithoutTitleIsNone) {
    aircraft->registration = "";
    RegcodeTable["PH-ABC"] = "";
    knowRegistration("PH-ABC", "TRA", "B77W", "MPH");
    EXPECT_FALSE(check());
    EXPECT_TRUE(hasDroppedLivery());
    EXPECT_EQ(aircraft->airline, "MPH");
    EXPECT_EQ(aircraft->model, "B77W");
}

TEST_F(Identity, aLiveryOfItsOwnOfAnUnknownRegistrationChangesTheLiveryAlone) {
    aircraft->registration = "";
    RegcodeTable["PH-ABC"] = "Own Livery";
    EXPECT_FALSE(check());
    EXPECT_TRUE(respawned());
    EXPECT_TRUE(hasDroppedLivery());
    EXPECT_EQ(aircraft->airline, "KLM");
    EXPECT_EQ(aircraft->model, "A320");
}

TEST_F(Identity, anotherRegistrationMustGoWithTheCallSign) {
    aircraft->registration = "PH-XYZ";
    knowRegistration("PH-ABC", "TRA", "B77W");
    EXPECT_TRUE(check());
    EXPECT_EQ(aircraft->registration, "PH-ABC");
    EXPECT_EQ(aircraft->model, "A320");
}

TEST_F(Identity, anotherRegistrationGoesWithNoCallSignThatTellsNoAirline) {
    aircraft->registration = "PH-XYZ";
    knowRegistration("PH-ABC", "TRA", "B77W"); // of which no operator is known
    for (const char* callsign : {"", "1234"}) {
        aircraft->callsign = record.callsign = callsign;
        EXPECT_TRUE(check()) << callsign;
        EXPECT_FALSE(respawned()) << callsign;
        EXPECT_EQ(aircraft->model, "A320") << callsign;
        aircraft->registration = "PH-XYZ";
    }
}

TEST_F(Identity, anotherRegistrationThatGoesWithTheCallSignChangesTheLivery) {
    aircraft->registration = "PH-XYZ";
    knowRegistration("PH-ABC", "KLM", "B77W", "MPH");
    EXPECT_FALSE(check());
    EXPECT_TRUE(hasDroppedLivery());
    EXPECT_EQ(aircraft->airline, "MPH");
    EXPECT_EQ(aircraft->model, "B77W");
}

TEST_F(Identity, anotherRegistrationMayGoWithTheCallSignByItsThirdCode) {
    aircraft->airline = "TRA";
    aircraft->registration = "PH-XYZ";
    knowRegistration("PH-ABC", "MPH", "B77W", "KLM");
    EXPECT_FALSE(check());
    EXPECT_EQ(aircraft->airline, "KLM");
}

TEST_F(Identity, anotherRegistrationOfTheSameAirlineAndModelIsNoChange) {
    aircraft->registration = "PH-XYZ";
    knowRegistration("PH-ABC", "KLM", "A320");
    EXPECT_TRUE(check());
    EXPECT_FALSE(respawned());
    EXPECT_EQ(aircraft->registration, "PH-ABC");
    EXPECT_EQ(aircraft->liveryTitle, "Some Livery");
}

TEST_F(Identity, anotherRegistrationWhoseThirdCodeItHasAlreadyIsNoChange) {
    aircraft->registration = "PH-XYZ";
    knowRegistration("PH-ABC", "TRA", "B77W", "KLM");
    EXPECT_TRUE(check());
    EXPECT_FALSE(respawned());
    EXPECT_EQ(aircraft->registration, "PH-ABC");
    EXPECT_EQ(aircraft->airline, "KLM");
    EXPECT_EQ(aircraft->model, "A320");
}

TEST_F(Identity, anotherRegistrationThatIsUnknownIsOnlyTaken) {
    aircraft->registration = "PH-XYZ";
    RegcodeTable["PH-ABC"] = "Own Livery"; // is asked for the first real registration alone
    EXPECT_TRUE(check());
    EXPECT_FALSE(respawned());
    EXPECT_EQ(aircraft->registration, "PH-ABC");
    EXPECT_EQ(aircraft->liveryTitle, "Some Livery");
}

TEST_F(Identity, anEmptyRegistrationTellsNothing) {
    record.registration = "";
    EXPECT_TRUE(check());
    EXPECT_EQ(aircraft->registration, "PH-ABC");
}

TEST_F(Identity, onAStandAnotherLiveryLeavesWhatIsToComeAndItsPlaceIsSoughtAnew) {
    give(*aircraft, airSample(1, 0, 900));
    aircraft->phase = FlightPhase::parked;
    aircraft->registration = "";
    knowRegistration("PH-ABC", "TRA", "B77W");
    EXPECT_FALSE(check());
    EXPECT_TRUE(hasDroppedLivery());
    EXPECT_EQ(aircraft->previousPhase, FlightPhase::parked);
    EXPECT_EQ(aircraft->stream.size(), 3u);
}

// The call sign.

TEST_F(Identity, anotherCallSignMakesItAnew) {
    aircraft->flightCode2 = "KL5";
    record.callsign = "KLM456";
    EXPECT_FALSE(check());
    EXPECT_TRUE(respawned());
    EXPECT_EQ(aircraft->callsign, "KLM456");
    EXPECT_EQ(aircraft->flightCode1, "KLM456");
    EXPECT_EQ(aircraft->flightCode2, "");
    EXPECT_EQ(aircraft->liveryTitle, "Some Livery");
}

TEST_F(Identity, aCallSignThatIsTheRegistrationTellsNothing) {
    record.callsign = "PH-ABC";
    EXPECT_TRUE(check());
    EXPECT_EQ(aircraft->callsign, "KLM123");
}

TEST_F(Identity, aCallSignThatCannotBeUsedTellsNothing) {
    // It would go by its registration when it is made anew, and be made anew with each record from then on.
    record.callsign = "KLM123456";
    EXPECT_TRUE(check());
    EXPECT_EQ(aircraft->callsign, "KLM123");
    EXPECT_FALSE(respawned());
}

TEST_F(Identity, aGhostOfAnAircraftThatIsThereIsDropped) {
    LiveAircraft& twin = flying();
    twin.callsign = "KLM9";
    record.callsign = "KLM9_";
    EXPECT_FALSE(check());
    EXPECT_EQ(aircraft->callsign, "KLM123");
    EXPECT_FALSE(respawned());
    twin.lifeState = LifeState::removingfromsim;
    EXPECT_FALSE(check());
    EXPECT_EQ(aircraft->callsign, "KLM9_");
    EXPECT_TRUE(respawned());
}

TEST_F(Identity, aGhostMayHaveALongerCallSignThanItsRealSelf) {
    flying().callsign = "KLM12345";
    record.callsign = "KLM12345_";
    EXPECT_FALSE(check());
    EXPECT_EQ(aircraft->callsign, "KLM123");
}

TEST_F(Identity, whatAGhostsRecordHasChangedBesidesIsCarriedOut) {
    flying().callsign = "KLM9";
    record.callsign = "KLM9_";
    record.origin = "LHR";
    record.destination = "JFK";
    aircraft->registration = "";
    aircraft->onGround = 1;
    aircraft->heading = 1;
    knowRegistration("PH-ABC", "TRA", "B77W");
    EXPECT_FALSE(check());
    EXPECT_TRUE(respawned());
    EXPECT_TRUE(hasDroppedLivery());
    EXPECT_EQ(aircraft->targetHeading, 1) << "it would taxi on, had it kept its livery";
    EXPECT_EQ(aircraft->destination, "JFK");
    EXPECT_EQ(aircraft->model, "B77W");
    EXPECT_EQ(aircraft->callsign, "KLM123");
}

TEST_F(Identity, withoutGuidChangesAGhostsRecordIsDroppedAsWell) {
    GUID_CHANGES.value = false;
    flying().callsign = "KLM9";
    record.callsign = "KLM9_";
    record.origin = "LHR";
    record.destination = "JFK";
    EXPECT_FALSE(check());
    EXPECT_FALSE(respawned());
    EXPECT_EQ(aircraft->destination, "JFK");
}

// A respawn that fails.

/// As full as its ring: one sample more needs a larger one.
constexpr int ringOfFirstSamples = 8;
constexpr std::size_t largerRing = 2 * ringOfFirstSamples * sizeof(void*);

TEST_F(Identity, aChangeOfLiveryWhoseRespawnFailsLeavesTheAircraftFlyingInItsOwn) {
    for (int i = 1; i < ringOfFirstSamples; ++i) {
        give(*aircraft, airSample(i, 0, 500 + 100 * i));
    }
    aircraft->previousPhase = FlightPhase::take_off;
    aircraft->registration = "";
    knowRegistration("PH-ABC", "TRA", "B77W");
    const FailingAllocation noMemory(largerRing);
    EXPECT_FALSE(check());
    EXPECT_THAT(log.lines(),
                ElementsAre("          AMS->LHR KLM123   PH-ABC respawns", "liveryRespawn: std::bad_alloc"));
    EXPECT_EQ(aircraft->lifeState, LifeState::active);
    EXPECT_EQ(aircraft->phase, FlightPhase::flying);
    EXPECT_EQ(aircraft->previousPhase, FlightPhase::take_off);
    EXPECT_EQ(aircraft->liveryTitle, "Some Livery");
    EXPECT_TRUE(hexidLiveries.contains(testHexid));
}

TEST_F(Identity, aChangeOfLiveryThatCannotEvenBeSaidLeavesTheAircraftFlyingInItsOwn) {
    aircraft->destination = std::string(5000, 'X'); // there is no memory for the line that names it
    record.destination = "";
    aircraft->registration = "";
    knowRegistration("PH-ABC", "TRA", "B77W");
    const FailingAllocation noMemory(5000);
    EXPECT_THROW(check(), std::bad_alloc);
    EXPECT_EQ(aircraft->lifeState, LifeState::active);
    EXPECT_EQ(aircraft->phase, FlightPhase::flying);
    EXPECT_EQ(aircraft->liveryTitle, "Some Livery");
    EXPECT_TRUE(hexidLiveries.contains(testHexid));
}

// Without changes of objects.

TEST_F(Identity, withoutGuidChangesOnlyTheTextsChange) {
    GUID_CHANGES.value = false;
    aircraft->registration = "";
    aircraft->onGround = 1;
    knowRegistration("PH-ABC", "TRA", "B77W");
    record.origin = "LHR";
    record.destination = "JFK";
    record.callsign = "TRA456";
    EXPECT_TRUE(check());
    EXPECT_EQ(aircraft->callsign, "TRA456");
    EXPECT_EQ(aircraft->airline, "TRA");
    EXPECT_EQ(aircraft->model, "B77W");
    EXPECT_EQ(aircraft->destination, "JFK");
    EXPECT_EQ(aircraft->liveryTitle, "Some Livery");
    EXPECT_EQ(aircraft->phase, FlightPhase::flying);
    EXPECT_TRUE(hexidLiveries.contains(testHexid));
    EXPECT_EQ(aircraft->lifeState, LifeState::active);
    EXPECT_THAT(log.lines(), IsEmpty());
}

} // namespace
