#include "tests/rig/session/session_run.h"

#include <chrono>
#include <filesystem>
#include <mutex>
#include <utility>

#include "core/exit_reason.h"
#include "core/parameters.h"
#include "core/run/run_reset.h"
#include "core/run_flags.h"
#include "core/slot_clock.h"
#include "engine/aircraft_tables.h"
#include "engine/slot.h"
#include "liveries/aircraft_types.h"
#include "liveries/failed_titles.h"
#include "platform/clock.h"
#include "platform/files.h"
#include "platform/sockets.h"
#include "platform/stream_connection.h"
#include "sim/flight_plan.h"
#include "sim/frame_flush.h"
#include "sim/object_queues.h"
#include "sim/session.h"
#include "sim/sim_queues.h"
#include "sim/simulator_link.h"
#include "sim/stand_requests.h"
#include "sim/user_state.h"
#include "tests/support/program_run.h"
#include "window/window_state.h"

using namespace std::chrono_literals;

namespace {

constexpr auto patience = 60s;
/// Leaves the other threads time for what a slot of the program leaves them.
constexpr auto turnPause = 1ms;
/// As when aircraft are about to touch down, so that tests do not wait for it.
constexpr int slotsPerLookAround = 20;

constexpr double halfSpanB738Nm = 0.0096652;
constexpr double halfSpanA321Nm = 0.0096652;
constexpr double largestHalfSpanNm = 0.0215;

rig::AircraftTitles installedTitles() {
    rig::AircraftTitles titles;
    for (const char* title : {airliner, helicopter}) {
        rig::AircraftType type;
        type.title = title;
        type.model = "B738";
        type.cgHeightFeet = airlinerCgFeet;
        type.staticPitchRad = 0.01;
        titles.add(type);
    }
    return titles;
}

void knowAircraftTypes() {
    gHalfWingspans = {{"B738", halfSpanB738Nm}, {"A321", halfSpanA321Nm}};
    MaxHalfWingspan = largestHalfSpanNm;
    gCategoryTypes.large = {"B738", "A321"};
}

Sample sampleOf(const LiveAircraft& aircraft, Where where) {
    Sample sample;
    sample.lat = aircraft.lat;
    sample.lon = aircraft.lon;
    sample.alt = where == Where::inTheAir ? aircraft.alt : 0;
    sample.airborne = where == Where::inTheAir ? 1 : 0;
    return sample;
}

bool queuesAreEmpty() {
    const std::lock_guard lock(simLock);
    return positionBack.empty() && eventQueue.empty() && createRequests.empty() && removeRequests.empty();
}

void resetAll() {
    resetProgram();
    resetFailedTitles();
    resetAircraftTypes();
}

} // namespace

rig::Scene airportScene() {
    rig::Scene scene;
    scene.ground.places.push_back({"Schiphol", scene.user.at, 5, airportFeet});
    return scene;
}

SessionRun::SessionRun() {
    resetAll();
    platform::startSocketLibrary();
    platform::setDocumentsFolders(std::filesystem::current_path() / "documents");
    platform::setLocalPipeFolder(std::filesystem::current_path());
    gSimulatorVersion = 5;
    P3D_VERSION.value = 5;
    SIM_INSTALL_PATH.setValue("C:\\Prepar3D v5\\");
    NAV_LIGHTS_WHILE_PARKED.value = true;
    RANDOM.value = false;
    knowAircraftTypes();
}

SessionRun::~SessionRun() {
    endSession();
    gf_removeFlightPlanFolder();
    stopSimulator();
    resetAll();
    platform::setLocalPipeFolder({});
    platform::setDocumentsFolders({});
    platform::cleanUpSocketLibrary();
}

// --- The session -----------------------------------------------------------------------------------------------------

void SessionRun::startSimulator(rig::Scene scene) {
    stopSimulator();
    front_ = std::make_unique<Front>(std::move(scene), installedTitles(), GetParam());
}

void SessionRun::connect(rig::Scene scene) {
    startSimulator(std::move(scene));
    openSession();
}

void SessionRun::connectAndKnowUser(rig::Scene scene) {
    connect(std::move(scene));
    knowUser();
}

void SessionRun::openSession() {
    startSimClient();
    ASSERT_TRUE(pumpUntil([] { return simRunning.load(); }));
}

void SessionRun::knowUser() {
    requestUserPosition();
    ASSERT_TRUE(pumpUntil(takeUserStandRequest));
    requestUserGroundEachSecond();
    requestUserIdentity();
    ASSERT_TRUE(pumpUntil([] { return userOnGroundKnown && halfSpanKnown; }));
    ASSERT_TRUE(settle());
}

void SessionRun::endSession() {
    stopSimClient();
    joinSimClient();
}

void SessionRun::endRun() {
    endSession();
    gf_resetRun();
}

// --- The run thread --------------------------------------------------------------------------------------------------

void SessionRun::turn() {
    front_->frames(1);
    turnWithoutFrame();
}

void SessionRun::turnWithoutFrame() {
    if (readsInbox_) {
        readInbox();
    }
    if (simRunning && !simFailed) {
        slot();
    }
    platform::sleepFor(turnPause);
}

void SessionRun::slot() {
    if (fliesAircraft_) {
        for (const LiveAircraft& aircraft : liveTable) {
            if (aircraft.lifeState == LifeState::active) {
                appendPosition(aircraft);
            }
        }
    }
    swapPositions();
    stepObjectQueues(slotClock);
    if (looksAround_ && slotClock % slotsPerLookAround == 0) {
        requestAircraftInRange();
    }
    ++slotClock;
}

bool SessionRun::pumpUntil(const std::function<bool()>& condition) {
    const auto end = std::chrono::steady_clock::now() + patience;
    while (!condition()) {
        if (std::chrono::steady_clock::now() > end) {
            return false;
        }
        turn();
    }
    return true;
}

void SessionRun::pumpTurns(int count) {
    for (int i = 0; i < count; ++i) {
        turn();
    }
}

/// The simulator answers in the order of the requests.
bool SessionRun::settle() {
    if (!pumpUntil(queuesAreEmpty)) {
        return false;
    }
    takeUserStandRequest();
    requestUserPosition();
    return pumpUntil(takeUserStandRequest);
}

// --- Aircraft --------------------------------------------------------------------------------------------------------

LiveAircraft& SessionRun::wantLive(std::uint32_t hexid, const std::string& callsign, Where where,
                                   std::string_view title, const LatLon& at) {
    LiveAircraft aircraft;
    aircraft.hexid = hexid;
    aircraft.callsign = callsign;
    aircraft.liveryTitle = title;
    aircraft.lifeState = LifeState::adding2sim;
    aircraft.lat = at.lat;
    aircraft.lon = at.lon;
    aircraft.alt = where == Where::inTheAir ? inTheAirFeet : airportFeet + airlinerCgFeet;
    aircraft.phase = where == Where::inTheAir ? FlightPhase::flying : FlightPhase::taxi;
    aircraft.stream.pushBack(sampleOf(aircraft, where));

    CreateRequest request;
    request.lat = aircraft.lat;
    request.lon = aircraft.lon;
    request.alt = aircraft.alt;
    request.onGround = where == Where::onTheGround ? 1 : 0;
    request.tailNumber = callsign;
    request.title = title;
    request.hexid = hexid;
    liveCreateQueue.push_back(request);
    return liveTable.emplace_back(std::move(aircraft));
}

AircraftRecord& SessionRun::wantStatic(std::uint32_t serial, const std::string& callsign, std::string_view title) {
    AircraftRecord aircraft;
    aircraft.hexid = serial;
    aircraft.callsign = callsign;
    aircraft.liveryTitle = title;
    aircraft.lifeState = LifeState::adding2sim;

    CreateRequest request;
    request.lat = nearTheUser.lat;
    request.lon = nearTheUser.lon;
    request.onGround = 1;
    request.tailNumber = callsign;
    request.title = title;
    request.hexid = serial;
    staticCreateQueue.push_back(request);
    return staticTable.emplace_back(std::move(aircraft));
}

bool SessionRun::becomesActive(std::uint32_t hexid) {
    return pumpUntil([hexid] {
        const AircraftRecord* aircraft = findAircraftByHexid(hexid);
        return aircraft != nullptr && aircraft->lifeState == LifeState::active;
    });
}

std::uint32_t SessionRun::activeAircraft(std::uint32_t hexid, const std::string& callsign, Where where) {
    wantLive(hexid, callsign, where);
    EXPECT_TRUE(becomesActive(hexid));
    EXPECT_TRUE(settle());
    const LiveAircraft* aircraft = findLiveByHexid(hexid);
    return aircraft == nullptr ? 0 : aircraft->objectId;
}

std::optional<rig::WorldObject> SessionRun::inWorld(std::uint32_t objectId) {
    return front_->with([objectId](rig::World& world) -> std::optional<rig::WorldObject> {
        const auto found = world.aircraft().find(objectId);
        return found == world.aircraft().end() ? std::nullopt : std::optional(found->second);
    });
}

std::size_t SessionRun::aircraftInWorld() {
    return front_->with([](rig::World& world) { return world.aircraft().size(); });
}

std::uint32_t SessionRun::lights(std::uint32_t objectId) {
    const std::optional<rig::WorldObject> object = inWorld(objectId);
    return object ? object->controls.lights : rig::allLights + 1;
}

std::vector<EngineMessage> SessionRun::inbox() {
    const std::lock_guard lock(inboxLock);
    return engineInbox;
}

std::vector<SentCreation> SessionRun::sentCreations() {
    const std::lock_guard lock(simLock);
    return sentList;
}
