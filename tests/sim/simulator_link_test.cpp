#include "sim/simulator_link.h"

#include "core/run_flags.h"
#include "tests/sim/session_fixture.h"
#include "window/window_state.h"

namespace {

class SimulatorLink : public SessionTest {};

TEST_F(SimulatorLink, aFailedRequestStopsAllSendingAndAsksForARestart) {
    EXPECT_TRUE(canSend());
    requestFailed();
    EXPECT_FALSE(canSend());
    EXPECT_TRUE(simFailed);
    EXPECT_EQ(shownMessage(), "SimConnect request error");
    EXPECT_TRUE(gStopRun);
    EXPECT_EQ(gf_exitReason(), ExitReason::simConnectError);
    EXPECT_EQ(gf_restartDelaySeconds(), 9);
}

TEST_F(SimulatorLink, aFailedRequestDuringAnExitLeavesItsReason) {
    gf_stopRun(ExitReason::newSettings, 3);
    requestFailed();
    EXPECT_TRUE(simFailed);
    EXPECT_EQ(gf_exitReason(), ExitReason::newSettings);
    EXPECT_EQ(gf_restartDelaySeconds(), 3);
}

TEST_F(SimulatorLink, nothingIsSentWithoutASession) {
    simHandle = nullptr;
    EXPECT_FALSE(canSend());
}

TEST_F(SimulatorLink, aNewFlightStopsTheRun) {
    newFlightBegins();
    EXPECT_TRUE(stopsForNewFlight());
}

} // namespace
