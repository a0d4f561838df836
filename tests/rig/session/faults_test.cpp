// A simulator that stalls, hangs up, floods or lies: the session ends, the process lives.
#include <algorithm>

#include "core/exit_reason.h"
#include "core/run_flags.h"
#include "engine/aircraft_tables.h"
#include "sim/controls.h"
#include "sim/light_sets.h"
#include "sim/object_queues.h"
#include "sim/session.h"
#include "sim/simulator_link.h"
#include "sim/user_state.h"
#include "tests/rig/session/session_run.h"
#include "window/window_state.h"

using ::testing::AnyOf;
using ::testing::Contains;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Not;

namespace {

constexpr std::uint32_t hexid = 0x484001;

class FaultsThreads : public SessionRun {
protected:
    /// By itself: nobody asks it to.
    bool sessionEnds() {
        return pumpUntil([] { return gf_isStopping() && !gWindowState.simConnected; });
    }

    static void isTheEndOfALink() {
        EXPECT_THAT(gf_exitReason(), AnyOf(ExitReason::simulatorClosed, ExitReason::simConnectError));
        EXPECT_FALSE(simRunning);
    }

    /// The same process, the same simulator, another run.
    void anotherRunWorks() {
        endRun();
        openSession();
        knowUser();
        EXPECT_NE(activeAircraft(hexid, "KLM1", Where::inTheAir), 0u);
        EXPECT_FALSE(gf_isStopping());
    }
};

TEST_P(FaultsThreads, aStallOfTwoSecondsLosesNothing) {
    connectAndKnowUser();
    const std::uint32_t object = activeAircraft(hexid, "KLM641", Where::inTheAir);
    const auto isStalled = [this] { return simulator().with([](rig::World& world) { return world.isStalled(); }); };
    fliesAircraft();
    simulator().play(rig::StallAct{2});
    pumpTurns(1);
    ASSERT_TRUE(isStalled());
    const std::uint32_t before = lights(object);
    gf_setLights(object, vacatedRunwayLights);
    gf_setGear(*findLiveByHexid(hexid), Gear::up);
    findLiveByHexid(hexid)->alt = 2222;
    wantLive(hexid + 1, "KLM642", Where::inTheAir);
    removalQueue.push_back(4711);
    while (isStalled()) {
        EXPECT_EQ(lights(object), before);
        pumpTurns(1);
    }
    ASSERT_TRUE(settle());
    EXPECT_EQ(lights(object), rig::lightNav | rig::lightBeacon | rig::lightTaxi | rig::lightLogo | rig::lightCabin);
    EXPECT_FALSE(inWorld(object)->controls.gearDown);
    EXPECT_EQ(inWorld(object)->position.altFeet, 2222);
    EXPECT_TRUE(pumpUntil([this] { return log.contains("==> SIMCONNECT_EXCEPTION_UNRECOGNIZED_ID"); }))
        << "the removal of what is not there";
    EXPECT_TRUE(becomesActive(hexid + 1));
    EXPECT_FALSE(gf_isStopping());
}

TEST_P(FaultsThreads, aSlowAndAFastSimulatorGetTheSame) {
    connectAndKnowUser();
    const std::uint32_t object = activeAircraft(hexid, "KLM641", Where::inTheAir);
    fliesAircraft();
    for (const double rate : {rig::leastFrameRate, rig::mostFrameRate}) {
        simulator().play(rig::FrameRateAct{rate});
        findLiveByHexid(hexid)->alt = 1000 + rate;
        pumpTurns(2);
        ASSERT_TRUE(settle());
        EXPECT_EQ(inWorld(object)->position.altFeet, 1000 + rate);
    }
}

TEST_P(FaultsThreads, aDroppedConnectionEndsTheRunAndTheProcessLives) {
    connectAndKnowUser();
    activeAircraft(hexid, "KLM641", Where::inTheAir);
    simulator().play(rig::DropConnectionAct{});
    ASSERT_TRUE(sessionEnds());
    isTheEndOfALink();
    anotherRunWorks();
}

TEST_P(FaultsThreads, aConnectionThatDropsUnderRequestsEndsTheRun) {
    connectAndKnowUser();
    const std::uint32_t object = activeAircraft(hexid, "KLM641", Where::inTheAir);
    fliesAircraft();
    simulator().play(rig::DropConnectionAct{});
    ASSERT_TRUE(pumpUntil([object] {
        gf_setLights(object, takeOffRollLights);
        requestUserPosition();
        requestAircraftInRange();
        return gf_isStopping();
    }));
    ASSERT_TRUE(sessionEnds());
    isTheEndOfALink();
    anotherRunWorks();
}

TEST_P(FaultsThreads, aRecordThatLiesAboutItsSizeEndsTheSessionAndNothingElse) {
    startSimulator();
    for (const rig::Lie lie : {rig::Lie::badSize, rig::Lie::half, rig::Lie::zeroSize, rig::Lie::huge}) {
        openSession();
        knowUser();
        simulator().play(rig::LyingRecordAct{lie});
        ASSERT_TRUE(sessionEnds()) << static_cast<int>(lie);
        isTheEndOfALink();
        endRun();
    }
    EXPECT_THAT(log.lines(), Not(Contains(HasSubstr("Unknown Dispatch"))));
    EXPECT_THAT(log.lines(), Not(Contains(HasSubstr("too short")))) << "no such record is looked at";
    anotherRunWorks();
}

TEST_P(FaultsThreads, aFloodOfExceptionsIsSurvived) {
    constexpr int flood = 20000;
    connectAndKnowUser();
    simulator().play(rig::ExceptionsAct{flood, SIMCONNECT_EXCEPTION_ERROR});
    ASSERT_TRUE(settle());
    const std::vector<std::string> errors = log.errors();
    EXPECT_EQ(std::count(errors.begin(), errors.end(), "==> SIMCONNECT_EXCEPTION #1"), flood);
    EXPECT_NE(activeAircraft(hexid, "KLM641", Where::inTheAir), 0u);
    EXPECT_FALSE(gf_isStopping());
}

TEST_P(FaultsThreads, refusalsOfNothingThatWasAskedHitNobody) {
    connectAndKnowUser();
    looksAround(false);
    wantLive(hexid, "KLM641", Where::inTheAir);
    ASSERT_TRUE(pumpUntil([] { return sentCreations().size() == 1; }));
    simulator().play(rig::ExceptionsAct{1000, SIMCONNECT_EXCEPTION_CREATE_OBJECT_FAILED});
    ASSERT_TRUE(settle());
    EXPECT_EQ(sentCreations().size(), 1u);
    looksAround(true);
    EXPECT_TRUE(becomesActive(hexid));
}

TEST_P(FaultsThreads, theSimulatorsExceptionsAreLinesAndTheSessionStays) {
    connectAndKnowUser();
    const std::pair<DWORD, const char*> table[] = {
        {SIMCONNECT_EXCEPTION_UNRECOGNIZED_ID, "==> SIMCONNECT_EXCEPTION_UNRECOGNIZED_ID"},
        {SIMCONNECT_EXCEPTION_TOO_MANY_OBJECTS, "SimConnect: too many objects (max 1000)"},
        {SIMCONNECT_EXCEPTION_INVALID_DATA_SIZE, "SIMCONNECT_EXCEPTION_INVALID_DATA_SIZE"},
        {SIMCONNECT_EXCEPTION_LOAD_FLIGHTPLAN_FAILED, "==> SimConnect exception: load flight plan failed"},
        {SIMCONNECT_EXCEPTION_OPERATION_INVALID_FOR_OBJECT_TYPE,
         "SIMCONNECT_EXCEPTION_OPERATION_INVALID_FOR_OBJECT_TYPE"},
        {SIMCONNECT_EXCEPTION_DATA_ERROR, "==> SIMCONNECT_EXCEPTION #20"},
    };
    for (const auto& [exception, line] : table) {
        EXPECT_THAT(log.lines(), Not(Contains(line)));
        simulator().play(rig::ExceptionsAct{1, exception});
        ASSERT_TRUE(settle());
        EXPECT_THAT(log.lines(), Contains(line));
    }
    EXPECT_FALSE(gf_isStopping());
}

TEST_P(FaultsThreads, anotherVersionOfTheInterfaceIsError95) {
    connectAndKnowUser();
    simulator().play(rig::ExceptionsAct{1, SIMCONNECT_EXCEPTION_VERSION_MISMATCH});
    ASSERT_TRUE(pumpUntil([] { return !shownError().empty(); }));
    EXPECT_THAT(shownError(), HasSubstr("SimConnect Version Mismatch, dwIndex: 4294967295"));
}

INSTANTIATE_TEST_SUITE_P(By, FaultsThreads, ::testing::ValuesIn(Front::ways()), wayName);

} // namespace
