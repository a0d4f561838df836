// The life of an aircraft's object, from its place in a queue to the end of its record, as the world holds it.
#include "sim/object_life.h"

#include <filesystem>

#include "core/exit_reason.h"
#include "core/parameters.h"
#include "core/run_flags.h"
#include "core/slot_clock.h"
#include "engine/aircraft_tables.h"
#include "liveries/failed_titles.h"
#include "platform/files.h"
#include "rig/world/idle_motion.h"
#include "sim/controls.h"
#include "sim/flight_plan.h"
#include "sim/light_sets.h"
#include "sim/object_queues.h"
#include "sim/sim_ids.h"
#include "tests/rig/session/session_run.h"
#include "window/window_state.h"

using rig::TraceEvent;
using rig::TraceEventKind;
using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::SizeIs;

namespace {

constexpr std::uint32_t hexid = 0x484001;
constexpr std::uint32_t serial = 7;
constexpr std::int32_t activationSlots = 200;

class ObjectsThreads : public SessionRun {
protected:
    void SetUp() override { connectAndKnowUser(); }

    bool isGone(std::uint32_t objectId) {
        return pumpUntil([=, this] { return !inWorld(objectId) && findAircraftByObjectId(objectId) == nullptr; });
    }

    rig::Controls controls(std::uint32_t objectId) { return inWorld(objectId).value_or(rig::WorldObject()).controls; }

    /// What was done to the object, by name; releases are "released".
    std::vector<std::string> doneTo(std::uint32_t objectId) {
        std::vector<std::string> done;
        for (const TraceEvent& event : simulator().events()) {
            if (event.objectId != objectId) {
                continue;
            }
            if (event.kind == TraceEventKind::clientEvent) {
                done.push_back(event.name);
            } else if (event.kind == TraceEventKind::released) {
                done.emplace_back("released");
            }
        }
        return done;
    }
};

// --- Coming into being -----------------------------------------------------------------------------------------------

TEST_P(ObjectsThreads, aQueuedAircraftIsCreatedAsItsRecordSays) {
    const auto simulated = [this] { return simulator().with([](rig::World& w) { return w.simulatedSeconds(); }); };
    const double begin = simulated();
    wantLive(hexid, "KLM641", Where::inTheAir);
    EXPECT_EQ(aircraftInWorld(), 0u) << "it waits for its turn";
    ASSERT_TRUE(pumpUntil([] { return findLiveByHexid(hexid)->objectId != 0; }));
    EXPECT_THAT(liveCreateQueue, IsEmpty());
    EXPECT_THAT(sentCreations(), IsEmpty());
    EXPECT_EQ(findLiveByHexid(hexid)->lifeState, LifeState::adding2sim);
    EXPECT_EQ(findLiveByHexid(hexid)->objectId, rig::firstAircraftId);
    const auto object = inWorld(rig::firstAircraftId);
    ASSERT_TRUE(object);
    EXPECT_EQ(object->type.title, airliner);
    EXPECT_EQ(object->tailNumber, "KLM641");
    EXPECT_NEAR(object->position.lat, nearTheUser.lat, 1e-3);
    EXPECT_NEAR(object->position.lon, nearTheUser.lon, 1e-3);
    // Until the program holds it, it sinks.
    EXPECT_LE(object->position.altFeet, inTheAirFeet);
    EXPECT_GE(object->position.altFeet, inTheAirFeet - rig::sinkFeetPerSecond * (simulated() - begin) - 1);
}

TEST_P(ObjectsThreads, anAircraftOnTheGroundStandsOnIt) {
    wantLive(hexid, "KLM641", Where::onTheGround);
    ASSERT_TRUE(becomesActive(hexid));
    const LiveAircraft& aircraft = *findLiveByHexid(hexid);
    EXPECT_EQ(aircraft.onGround, 1);
    EXPECT_NEAR(aircraft.altAboveGround, airlinerCgFeet, 0.01);
    EXPECT_NEAR(inWorld(aircraft.objectId)->position.altFeet, airportFeet + airlinerCgFeet, 0.01);
}

TEST_P(ObjectsThreads, itsStaticDataArrive) {
    const std::uint32_t object = activeAircraft(hexid, "KLM641", Where::onTheGround);
    EXPECT_NE(object, 0u);
    EXPECT_NEAR(findLiveByHexid(hexid)->cgHeight, airlinerCgFeet, 1e-6);
    EXPECT_NEAR(findLiveByHexid(hexid)->groundPitch, 0.01, 1e-6);
}

TEST_P(ObjectsThreads, creationsGoAtTheirPaceAndLiveAircraftBeforeStaticOnes) {
    looksAround(false);
    wantStatic(serial, "STATIC");
    wantLive(hexid, "LIVE1", Where::inTheAir);
    wantLive(hexid + 1, "LIVE2", Where::inTheAir);
    const std::int32_t begin = slotClock;
    ASSERT_TRUE(pumpUntil([this] { return aircraftInWorld() == 3; }));
    EXPECT_GE(slotClock - begin, 100) << "one in fifty slots";
    std::vector<std::string> created;
    for (const TraceEvent& event : simulator().events()) {
        if (event.kind == TraceEventKind::created) {
            created.push_back(event.detail);
        }
    }
    EXPECT_THAT(created, ElementsAre("LIVE1", "LIVE2", "STATIC"));
}

TEST_P(ObjectsThreads, oursStaysWhereItIsPutAndWouldDriftAndSinkIfItWereNotFrozen) {
    const std::uint32_t object = activeAircraft(hexid, "KLM641", Where::inTheAir);
    const rig::Position put = inWorld(object)->position;
    pumpTurns(90);
    const rig::Position later = inWorld(object)->position;
    EXPECT_EQ(later.lat, put.lat);
    EXPECT_EQ(later.lon, put.lon);
    EXPECT_EQ(later.altFeet, put.altFeet);
    EXPECT_EQ(later.headingRad, put.headingRad);
    for (const ClientEvent freeze : {eventFreezeLatLon, eventFreezeAltitude, eventFreezeAttitude}) {
        queueEvent(object, freeze, 0);
    }
    ASSERT_TRUE(settle());
    pumpTurns(90);
    const rig::Position let = inWorld(object)->position;
    EXPECT_GT(let.lon, put.lon);
    EXPECT_LT(let.altFeet, put.altFeet - 20);
    EXPECT_NE(let.headingRad, put.headingRad);
}

TEST_P(ObjectsThreads, itBecomesActive200SlotsAfterItCameIntoBeing) {
    wantLive(hexid, "KLM641", Where::inTheAir);
    ASSERT_TRUE(pumpUntil([] { return findLiveByHexid(hexid)->objectId != 0; }));
    const std::int32_t born = slotClock;
    ASSERT_TRUE(becomesActive(hexid));
    EXPECT_EQ(slotClock - born, activationSlots);
    EXPECT_THAT(pendingActivations, IsEmpty());
}

TEST_P(ObjectsThreads, itsLightsAreWokenTwiceBeforeItIsActive) {
    const std::uint32_t object = activeAircraft(hexid, "KLM641", Where::inTheAir);
    EXPECT_THAT(doneTo(object), Contains("ALL_LIGHTS_TOGGLE").Times(2));
}

TEST_P(ObjectsThreads, itIsReleasedAndFrozenBeforeAnythingElse) {
    const std::uint32_t object = activeAircraft(hexid, "KLM641", Where::inTheAir);
    std::vector<std::string> done = doneTo(object);
    ASSERT_GE(done.size(), 4u);
    done.resize(4);
    EXPECT_THAT(done,
                ElementsAre("released", "FREEZE_LATITUDE_LONGITUDE_SET", "FREEZE_ALTITUDE_SET", "FREEZE_ATTITUDE_SET"));
    const auto held = inWorld(object);
    EXPECT_TRUE(held->released && held->freezes.place && held->freezes.altitude && held->freezes.attitude);
}

// --- Activation ------------------------------------------------------------------------------------------------------

TEST_P(ObjectsThreads, anAirborneAircraftIsActivatedWithTheLightsOfALowFlight) {
    const std::uint32_t object = activeAircraft(hexid, "KLM641", Where::inTheAir);
    EXPECT_EQ(lights(object), rig::lightNav | rig::lightBeacon | rig::lightLanding | rig::lightStrobe | rig::lightLogo |
                                  rig::lightCabin);
    EXPECT_TRUE(controls(object).enginesRun);
    EXPECT_EQ(controls(object).spoilersPercent, 0);
}

TEST_P(ObjectsThreads, anAircraftAbove10000FeetIsActivatedWithoutLandingAndLogoLights) {
    wantLive(hexid, "KLM641", Where::inTheAir).alt = 30000;
    ASSERT_TRUE(becomesActive(hexid) && settle());
    EXPECT_EQ(lights(findLiveByHexid(hexid)->objectId),
              rig::lightNav | rig::lightBeacon | rig::lightStrobe | rig::lightCabin);
}

TEST_P(ObjectsThreads, aParkedAircraftIsActivatedWithItsEnginesOff) {
    wantLive(hexid, "KLM641", Where::onTheGround).phase = FlightPhase::parked;
    ASSERT_TRUE(becomesActive(hexid) && settle());
    const std::uint32_t object = findLiveByHexid(hexid)->objectId;
    EXPECT_EQ(lights(object), rig::lightNav | rig::lightLogo | rig::lightCabin);
    EXPECT_FALSE(controls(object).enginesRun);
    EXPECT_EQ(controls(object).throttle1Percent, 0);
    EXPECT_EQ(controls(object).flapsPercent, 0);
}

TEST_P(ObjectsThreads, theNavLightsOfAParkedAircraftAreTheUsersChoice) {
    NAV_LIGHTS_WHILE_PARKED.value = false;
    wantLive(hexid, "KLM641", Where::onTheGround).phase = FlightPhase::parked;
    ASSERT_TRUE(becomesActive(hexid) && settle());
    EXPECT_EQ(lights(findLiveByHexid(hexid)->objectId), rig::lightLogo | rig::lightCabin);
}

TEST_P(ObjectsThreads, aTaxiingAircraftIsActivatedWithTaxiLightsAndFlaps) {
    const std::uint32_t object = activeAircraft(hexid, "KLM641", Where::onTheGround);
    EXPECT_EQ(lights(object), rig::lightNav | rig::lightBeacon | rig::lightTaxi | rig::lightLogo | rig::lightCabin);
    EXPECT_TRUE(controls(object).enginesRun);
    EXPECT_NEAR(controls(object).flapsPercent, 100.0 * 3072 / 16383, 1e-6);
}

TEST_P(ObjectsThreads, anAircraftThatIsPushedBackIsActivatedWithoutTaxiLights) {
    wantLive(hexid, "KLM641", Where::onTheGround).phase = FlightPhase::pushed_back;
    ASSERT_TRUE(becomesActive(hexid) && settle());
    EXPECT_EQ(lights(findLiveByHexid(hexid)->objectId),
              rig::lightNav | rig::lightBeacon | rig::lightLogo | rig::lightCabin);
}

TEST_P(ObjectsThreads, aRotorcraftOnTheGroundIsActivatedWithFullThrottleAndNeitherFlapsNorSpoilers) {
    wantLive(hexid, "PHHEL", Where::onTheGround, helicopter).category = AircraftCategory::Rotorcraft;
    ASSERT_TRUE(becomesActive(hexid) && settle());
    const std::uint32_t object = findLiveByHexid(hexid)->objectId;
    EXPECT_NEAR(controls(object).throttle1Percent, 100, 1e-6);
    EXPECT_THAT(doneTo(object), testing::Not(Contains("FLAPS_SET")));
    EXPECT_THAT(doneTo(object), testing::Not(Contains("SPOILERS_SET")));
}

// --- Controls --------------------------------------------------------------------------------------------------------

TEST_P(ObjectsThreads, everyNamedLightSetShowsAtTheObject) {
    using namespace rig;
    const std::uint32_t object = activeAircraft(hexid, "KLM641", Where::onTheGround);
    const std::tuple<const char*, LightSet, std::uint32_t> table[] = {
        {"start of push", startOfPushLights, lightNav | lightBeacon | lightTaxi | lightLogo},
        {"take-off roll", takeOffRollLights,
         lightNav | lightBeacon | lightLanding | lightTaxi | lightStrobe | lightLogo},
        {"below 10000 feet", below10000FeetLights, allLights},
        {"above 10000 feet", above10000FeetLights, lightNav | lightBeacon | lightCabin},
        {"vacated the runway", vacatedRunwayLights, lightNav | lightBeacon | lightTaxi | lightLogo | lightCabin},
        {"on a stand", standLights(*findLiveByHexid(hexid)), lightNav | lightLogo | lightCabin},
    };
    for (const auto& [moment, set, shown] : table) {
        gf_setLights(object, set);
        ASSERT_TRUE(settle());
        EXPECT_EQ(lights(object), shown) << moment;
    }
}

TEST_P(ObjectsThreads, navAndCabinLightsGoOnAndOffAlone) {
    const std::uint32_t object = activeAircraft(hexid, "KLM641", Where::onTheGround);
    gf_setLights(object, takeOffRollLights);
    gf_setNavLights(object, 0);
    gf_setCabinLights(object, 1);
    ASSERT_TRUE(settle());
    EXPECT_EQ(lights(object), rig::allLights & ~rig::lightNav);
    gf_setNavLights(object, 1);
    gf_setCabinLights(object, 0);
    ASSERT_TRUE(settle());
    EXPECT_EQ(lights(object), rig::allLights & ~rig::lightCabin);
}

TEST_P(ObjectsThreads, theGearGoesUpAndDown) {
    const std::uint32_t object = activeAircraft(hexid, "KLM641", Where::inTheAir);
    gf_setGear(*findLiveByHexid(hexid), Gear::up);
    ASSERT_TRUE(settle());
    EXPECT_FALSE(controls(object).gearDown);
    gf_setGear(*findLiveByHexid(hexid), Gear::down);
    ASSERT_TRUE(settle());
    EXPECT_TRUE(controls(object).gearDown);
}

TEST_P(ObjectsThreads, everyFlapsPositionIsSetBetweenTwoReleases) {
    const std::uint32_t object = activeAircraft(hexid, "KLM641", Where::inTheAir);
    const std::pair<int, double> table[] = {{1, 3072}, {2, 10240}, {3, 16383}, {0, 0}, {3, 16383}, {4, 0}};
    for (const auto& [index, value] : table) {
        const std::size_t before = doneTo(object).size();
        gf_setFlaps(*findLiveByHexid(hexid), index);
        ASSERT_TRUE(settle());
        EXPECT_NEAR(controls(object).flapsPercent, 100 * value / 16383, 1e-6) << index;
        std::vector<std::string> done = doneTo(object);
        done.erase(done.begin(), done.begin() + static_cast<std::ptrdiff_t>(before));
        EXPECT_THAT(done, ElementsAre("released", "FLAPS_SET", "released")) << index;
    }
}

TEST_P(ObjectsThreads, everyThrottlePositionIsSetOnce) {
    const std::uint32_t object = activeAircraft(hexid, "KLM641", Where::inTheAir);
    const std::pair<int, double> table[] = {{0, 0}, {1, 4914}, {2, 8191}, {3, 11468}, {4, 16383}};
    for (const auto& [index, value] : table) {
        gf_setThrottle(*findLiveByHexid(hexid), index);
        gf_setThrottle(*findLiveByHexid(hexid), index);
        ASSERT_TRUE(settle());
        EXPECT_NEAR(controls(object).throttle1Percent, 100 * value / 16383, 1e-6) << index;
        EXPECT_NEAR(controls(object).throttle2Percent, 100 * value / 16383, 1e-6) << index;
    }
    EXPECT_THAT(doneTo(object), Contains("THROTTLE_SET").Times(5));
}

TEST_P(ObjectsThreads, spoilersComeOutAndGoIn) {
    const std::uint32_t object = activeAircraft(hexid, "KLM641", Where::inTheAir);
    gf_setSpoilers(*findLiveByHexid(hexid), Spoilers::extended);
    ASSERT_TRUE(settle());
    EXPECT_NEAR(controls(object).spoilersPercent, 100, 1e-6);
    gf_setSpoilers(*findLiveByHexid(hexid), Spoilers::retracted);
    ASSERT_TRUE(settle());
    EXPECT_EQ(controls(object).spoilersPercent, 0);
}

TEST_P(ObjectsThreads, enginesStopAndStart) {
    const std::uint32_t object = activeAircraft(hexid, "KLM641", Where::inTheAir);
    gf_stopEngines(object);
    ASSERT_TRUE(settle());
    EXPECT_FALSE(controls(object).enginesRun);
    gf_startEngines(object);
    ASSERT_TRUE(settle());
    EXPECT_TRUE(controls(object).enginesRun);
}

TEST_P(ObjectsThreads, aStandTakesThrottleFlapsEnginesAndLightsBack) {
    const std::uint32_t object = activeAircraft(hexid, "KLM641", Where::onTheGround);
    gf_setThrottle(*findLiveByHexid(hexid), 2);
    gf_setLights(object, takeOffRollLights);
    findLiveByHexid(hexid)->standCargo = 1;
    gf_parkSystems(*findLiveByHexid(hexid));
    ASSERT_TRUE(settle());
    EXPECT_EQ(controls(object).throttle1Percent, 0);
    EXPECT_EQ(controls(object).flapsPercent, 0);
    EXPECT_FALSE(controls(object).enginesRun);
    EXPECT_EQ(lights(object), rig::lightNav | rig::lightLogo) << "the cabin of a freighter is dark";
}

TEST_P(ObjectsThreads, allEightValuesOfThePositionAreWrittenWithTheFrame) {
    const std::uint32_t object = activeAircraft(hexid, "KLM641", Where::inTheAir);
    fliesAircraft();
    LiveAircraft& aircraft = *findLiveByHexid(hexid);
    aircraft.lat = 52.25;
    aircraft.lon = 4.5;
    aircraft.pitch = -0.05;
    aircraft.bank = 0.1;
    aircraft.heading = 1.5;
    aircraft.alt = 4321;
    aircraft.vsFps = -12;
    aircraft.tas = 210;
    pumpTurns(2);
    ASSERT_TRUE(settle());
    const rig::Position position = inWorld(object)->position;
    EXPECT_EQ(position.lat, 52.25);
    EXPECT_EQ(position.lon, 4.5);
    EXPECT_EQ(position.pitchRad, -0.05);
    EXPECT_EQ(position.bankRad, 0.1);
    EXPECT_EQ(position.headingRad, 1.5);
    EXPECT_EQ(position.altFeet, 4321);
    EXPECT_EQ(position.verticalFeetPerSecond, -12);
    EXPECT_EQ(position.trueKnots, 210);
}

TEST_P(ObjectsThreads, theUsersAircraftIsNeverWritten) {
    const LatLon at = simulator().with([](rig::World& world) { return world.user().position.place(); });
    wantLive(hexid, "KLM641", Where::inTheAir);
    LiveAircraft& aircraft = *findLiveByHexid(hexid);
    aircraft.objectId = rig::userObjectId;
    aircraft.lifeState = LifeState::active;
    fliesAircraft();
    pumpTurns(5);
    ASSERT_TRUE(settle());
    const LatLon now = simulator().with([](rig::World& world) { return world.user().position.place(); });
    EXPECT_EQ(now.lat, at.lat);
    EXPECT_EQ(now.lon, at.lon);
}

// --- The end ---------------------------------------------------------------------------------------------------------

TEST_P(ObjectsThreads, aRemovedAircraftLeavesTheSimulatorAndThenItsTable) {
    const std::uint32_t object = activeAircraft(hexid, "KLM641", Where::inTheAir);
    removeAircraftFromSim(*findLiveByHexid(hexid));
    EXPECT_EQ(findLiveByHexid(hexid)->lifeState, LifeState::removingfromsim);
    EXPECT_TRUE(isGone(object));
    EXPECT_THAT(liveTable, IsEmpty());
    EXPECT_FALSE(gf_isStopping());
}

TEST_P(ObjectsThreads, removalsGoOneInTenSlots) {
    looksAround(false);
    for (int i = 0; i < 4; ++i) {
        simulator().play(rig::ForeignObjectAct{airliner, "F", nearTheUser, 0, std::nullopt});
        removalQueue.push_back(rig::firstAircraftId + static_cast<std::uint32_t>(i));
    }
    const std::int32_t begin = slotClock;
    ASSERT_TRUE(pumpUntil([] { return removalQueue.empty(); }));
    EXPECT_GE(slotClock - begin, 30);
}

TEST_P(ObjectsThreads, anAircraftThatIsToComeBackWithAnotherLiveryKeepsItsRecord) {
    activeAircraft(hexid, "KLM641", Where::inTheAir);
    LiveAircraft& aircraft = *findLiveByHexid(hexid);
    aircraft.lifeState = LifeState::liveryrespawn;
    removalQueue.push_back(aircraft.objectId);
    ASSERT_TRUE(pumpUntil([] { return findLiveByHexid(hexid)->objectId == 0; }));
    EXPECT_EQ(findLiveByHexid(hexid)->lifeState, LifeState::buffer);
    EXPECT_EQ(findLiveByHexid(hexid)->throttleIndex, noThrottleIndex);
    EXPECT_EQ(findLiveByHexid(hexid)->flapsIndex, initialFlapsIndex);
    EXPECT_EQ(aircraftInWorld(), 0u);
}

TEST_P(ObjectsThreads, anObjectThatTheSimulatorRemovesTakesItsRecordWithIt) {
    const std::uint32_t object = activeAircraft(hexid, "KLM641", Where::inTheAir);
    simulator().atWorld([object](rig::World& world) { world.remove(object); });
    EXPECT_TRUE(pumpUntil([] { return liveTable.empty(); }));
}

TEST_P(ObjectsThreads, anObjectWithoutARecordIsRemoved) {
    wantLive(hexid, "KLM641", Where::inTheAir);
    ASSERT_TRUE(pumpUntil([this] { return aircraftInWorld() == 1; }));
    eraseBySwap(*findLiveByHexid(hexid));
    EXPECT_TRUE(pumpUntil([this] { return aircraftInWorld() == 0; }));
}

// --- Refusals --------------------------------------------------------------------------------------------------------

TEST_P(ObjectsThreads, anUnknownTitleIsRefusedNotedAndItsRecordGoes) {
    readsInbox(false);
    wantLive(hexid, "KLM641", Where::inTheAir, "Not installed");
    ASSERT_TRUE(pumpUntil([] { return !inbox().empty(); }));
    ASSERT_THAT(inbox(), SizeIs(1));
    EXPECT_EQ(inbox()[0].kind, EngineMessageKind::creationRefused);
    EXPECT_EQ(inbox()[0].id, hexid);
    EXPECT_THAT(sentCreations(), IsEmpty());
    readsInbox(true);
    pumpTurns(1);
    EXPECT_THAT(liveTable, IsEmpty());
    EXPECT_THAT(FailedTitles, ElementsAre("Not installed"));
    EXPECT_TRUE(log.contains("KLM641 'Not installed' could not be created by your Sim!"));
    EXPECT_FALSE(gf_isStopping());
}

TEST_P(ObjectsThreads, aRefusalHitsTheAircraftThatWasRefused) {
    wantLive(hexid, "GOOD1", Where::inTheAir);
    wantLive(hexid + 1, "BAD1", Where::inTheAir, "Not installed");
    wantLive(hexid + 2, "GOOD2", Where::inTheAir);
    ASSERT_TRUE(becomesActive(hexid) && becomesActive(hexid + 2));
    EXPECT_EQ(findLiveByHexid(hexid + 1), nullptr);
    EXPECT_EQ(inWorld(findLiveByHexid(hexid)->objectId)->tailNumber, "GOOD1");
    EXPECT_EQ(inWorld(findLiveByHexid(hexid + 2)->objectId)->tailNumber, "GOOD2");
}

TEST_P(ObjectsThreads, aTitleThatTheSimulatorRefusesFromNowOnIsNoted) {
    simulator().play(rig::RefuseTitleAct{helicopter});
    wantLive(hexid, "PHHEL", Where::inTheAir, helicopter);
    ASSERT_TRUE(pumpUntil([] { return liveTable.empty(); }));
    EXPECT_THAT(FailedTitles, ElementsAre(helicopter));
}

TEST_P(ObjectsThreads, moreThan1000ObjectsAreTooMany) {
    simulator().atWorld([](rig::World& world) {
        for (std::size_t i = 0; i < rig::maxAircraft; ++i) {
            world.play(rig::ForeignObjectAct{airliner, "FAR", outOfRange, 0, std::nullopt});
        }
    });
    wantLive(hexid, "KLM641", Where::inTheAir);
    ASSERT_TRUE(pumpUntil([this] { return log.contains("SimConnect: too many objects (max 1000)"); }));
    EXPECT_EQ(shownMessage(), "SimConnect: too many objects (max 1000)");
    EXPECT_EQ(aircraftInWorld(), rig::maxAircraft);
    EXPECT_TRUE(pumpUntil([] { return liveTable.empty(); })) << "with its next feed record it may come again";
    EXPECT_THAT(sentCreations(), IsEmpty());
    EXPECT_THAT(FailedTitles, IsEmpty());
    EXPECT_FALSE(gf_isStopping());
}

// --- Static aircraft -------------------------------------------------------------------------------------------------

TEST_P(ObjectsThreads, aStaticAircraftIsLitStandsStillAndGoes) {
    wantStatic(serial, "KLM1S");
    ASSERT_TRUE(becomesActive(serial) && settle());
    const std::uint32_t object = findStaticByHexid(serial)->objectId;
    EXPECT_EQ(lights(object), rig::lightNav | rig::lightLogo | rig::lightCabin);
    EXPECT_EQ(inWorld(object)->tailNumber, "KLM1S");
    const rig::Position put = inWorld(object)->position;
    pumpTurns(90);
    EXPECT_EQ(inWorld(object)->position.lon, put.lon);
    EXPECT_EQ(inWorld(object)->position.altFeet, airportFeet + airlinerCgFeet);
    removeAircraftFromSim(*findStaticByHexid(serial));
    EXPECT_TRUE(isGone(object));
    EXPECT_THAT(staticTable, IsEmpty());
}

TEST_P(ObjectsThreads, aParkedAircraftTakesTheStandOfAStaticOne) {
    wantStatic(serial, "KLM1S").standId = 33;
    ASSERT_TRUE(becomesActive(serial));
    const std::uint32_t object = findStaticByHexid(serial)->objectId;
    LiveAircraft& aircraft = wantLive(hexid, "KLM641", Where::onTheGround);
    aircraft.phase = FlightPhase::parked;
    aircraft.standId = 33;
    EXPECT_TRUE(isGone(object));
    EXPECT_TRUE(becomesActive(hexid));
}

TEST_P(ObjectsThreads, aRefusedStaticAircraftLeavesItsTable) {
    wantStatic(serial, "KLM1S", "Not installed");
    EXPECT_TRUE(pumpUntil([] { return staticTable.empty(); }));
    EXPECT_THAT(FailedTitles, ElementsAre("Not installed"));
}

// --- Flight plans ----------------------------------------------------------------------------------------------------

TEST_P(ObjectsThreads, anAircraftWithBothAirportsGetsAFlightPlanThatGoesWithIt) {
    ASSERT_TRUE(gf_createFlightPlanFolder());
    LiveAircraft& wanted = wantLive(hexid, "KLM641", Where::inTheAir);
    wanted.origin = "EHAM";
    wanted.destination = "KJFK";
    ASSERT_TRUE(becomesActive(hexid) && settle());
    const LiveAircraft& aircraft = *findLiveByHexid(hexid);
    const std::uint32_t object = aircraft.objectId;
    const std::filesystem::path file = lf_flightPlanPath(hexid);
    EXPECT_EQ(aircraft.hasFlightPlan, 1);
    EXPECT_EQ(inWorld(object)->flightPlan, platform::utf8FromPath(file));
    EXPECT_TRUE(std::filesystem::exists(file));
    removeAircraftFromSim(*findLiveByHexid(hexid));
    ASSERT_TRUE(isGone(object));
    EXPECT_FALSE(std::filesystem::exists(file));
}

TEST_P(ObjectsThreads, aFlightPlanThatTheSimulatorCannotLoadIsALineAndTheAircraftFlies) {
    ASSERT_TRUE(gf_createFlightPlanFolder());
    simulator().play(rig::StallAct{0.5});
    LiveAircraft& wanted = wantLive(hexid, "KLM641", Where::inTheAir);
    wanted.origin = "EHAM";
    wanted.destination = "KJFK";
    ASSERT_TRUE(pumpUntil([] { return findLiveByHexid(hexid)->objectId != 0; }));
    std::filesystem::remove(lf_flightPlanPath(hexid));
    ASSERT_TRUE(pumpUntil([this] { return log.contains("==> SimConnect exception: load flight plan failed"); }));
    EXPECT_TRUE(becomesActive(hexid));
}

TEST_P(ObjectsThreads, anAircraftWithoutAirportsGetsNoFlightPlan) {
    ASSERT_TRUE(gf_createFlightPlanFolder());
    const std::uint32_t object = activeAircraft(hexid, "KLM641", Where::inTheAir);
    EXPECT_EQ(inWorld(object)->flightPlan, "");
    EXPECT_FALSE(std::filesystem::exists(lf_flightPlanPath(hexid)));
}

// --- Pauses ----------------------------------------------------------------------------------------------------------

TEST_P(ObjectsThreads, inAPauseNothingNewComesAndWhatGoesIsServed) {
    const std::uint32_t object = activeAircraft(hexid, "KLM641", Where::inTheAir);
    simulator().play(rig::PauseAct{});
    ASSERT_TRUE(pumpUntil([] { return !simRunning; }));
    wantLive(hexid + 1, "KLM642", Where::inTheAir);
    simulator().atWorld([object](rig::World& world) { world.remove(object); });
    ASSERT_TRUE(pumpUntil([] { return findLiveByHexid(hexid) == nullptr; }));
    pumpTurns(100);
    EXPECT_EQ(aircraftInWorld(), 0u);
    simulator().play(rig::ResumeAct{});
    EXPECT_TRUE(becomesActive(hexid + 1));
}

INSTANTIATE_TEST_SUITE_P(By, ObjectsThreads, ::testing::ValuesIn(Front::ways()), wayName);

} // namespace
