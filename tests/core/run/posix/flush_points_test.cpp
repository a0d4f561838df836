// What of the log is on the disk while a step takes its time: nothing but the fixed points writes it there.
#include <gtest/gtest.h>

#include <chrono>
#include <filesystem>
#include <string>

#include "core/exit_reason.h"
#include "core/log.h"
#include "core/run/closing_down.h"
#include "platform/clock.h"
#include "platform/posix/memory_window.h"
#include "platform/window_system.h"
#include "tests/core/run/posix/held_start_up.h"
#include "tests/support/eventually.h"
#include "tests/support/log_capture.h"
#include "window/window_state.h"

using namespace std::chrono_literals;

namespace {

class FlushPointThreads : public HeldStartUp {
protected:
    /// In the file as it lies there: ProgramRun::log would flush.
    bool isOnDisk(const std::string& text) const {
        return readFile(run.folder() / "Log.txt").find(text) != std::string::npos;
    }
    bool willBeOnDisk(const std::string& text) const {
        return eventually([&] { return isOnDisk(text); });
    }
};

TEST_F(FlushPointThreads, theParametersAreOnTheDiskBeforeTheUpdateCheck) {
    auto server = heldAtVersions();
    run.start();
    ASSERT_TRUE(eventually([&] { return !server->requests().empty(); })) << run.log();
    EXPECT_TRUE(isOnDisk("\nMAX_LIVE_SEL=500\n"));
    server.reset();
}

TEST_F(FlushPointThreads, whetherRealTrafficIsHereIsOnTheDiskBeforeTheScan) {
    const auto regcodes = heldAtScan();
    run.start();
    ASSERT_TRUE(eventually([] { return shownMessage() == "Scanning prioritized for liveries ..."; })) << run.log();
    EXPECT_TRUE(isOnDisk("\nRealTraffic not detected at this PC\n"));
}

/// The clock stands, so that the closing down stays in its first wait.
TEST_F(FlushPointThreads, whatTheRunLoggedIsOnTheDiskBeforeItClosesDown) {
    run.start();
    ASSERT_TRUE(willBeOnDisk("Waiting for Prepar3Dv5 ...")) << run.log();
    clock.hold();
    log("the last word of the run");
    window_system::clickClose();
    ASSERT_TRUE(eventually([&] {
        clock.advance(1ms);
        return isOnDisk("the last word of the run");
    }));
    EXPECT_FALSE(isOnDisk("Exiting: USER CLOSED SIM"));
    clock.release();
    EXPECT_TRUE(run.ends());
}

/// Without a message loop nothing comes after the last message.
TEST(FlushPoint, theEndOfARunIsOnTheDiskWhenTheWindowIsToldOfIt) {
    const LogCapture log;
    const platform::ManualClock clock(std::chrono::sys_days(std::chrono::year(2026) / 11 / 21));
    resetProgram();
    window_system::memory::reset();
    ASSERT_TRUE(window_system::registerWindowClass("Tarnwing_P3D", {}));
    ASSERT_TRUE(window_system::createWindow("Tarnwing_P3D", 0, {}));
    gf_stopRun(ExitReason::simulatorClosed, 0);
    lf_closingDown();
    EXPECT_NE(readFile("Log.txt").find("\nExiting: SIM WAS CLOSED\n"), std::string::npos);
    window_system::memory::reset();
    resetProgram();
}

} // namespace
