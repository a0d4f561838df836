// What of the log is on the disk while a step takes its time: nothing but the fixed points writes it there.
#include <gtest/gtest.h>

#include <chrono>
#include <filesystem>
#include <optional>
#include <string>

#include "core/exit_reason.h"
#include "core/log.h"
#include "core/run/closing_down.h"
#include "distribution/download.h"
#include "platform/clock.h"
#include "platform/files.h"
#include "platform/posix/memory_window.h"
#include "platform/window_system.h"
#include "rig/server/download_server.h"
#include "tests/support/eventually.h"
#include "tests/support/log_capture.h"
#include "tests/support/program_run.h"
#include "tests/support/scannable_livery.h"
#include "tests/support/sealed_input.h"
#include "tests/support/slow_file.h"
#include "window/window_state.h"

using namespace std::chrono_literals;

namespace {

class FlushPointThreads : public testing::Test {
protected:
    /// In the file as it lies there: ProgramRun::log would flush.
    bool isOnDisk(const std::string& text) const {
        return readFile(run.folder() / "Log.txt").find(text) != std::string::npos;
    }
    bool willBeOnDisk(const std::string& text) const {
        return eventually([&] { return isOnDisk(text); });
    }

    platform::ManualClock clock{std::chrono::sys_days(std::chrono::year(2026) / 11 / 21)};
    ProgramRun run;
};

TEST_F(FlushPointThreads, theParametersAreOnTheDiskBeforeTheUpdateCheck) {
    writeFile("served/downloads/versions.json", "{}");
    std::optional<DownloadServer> server("served");
    server->setFault(ServerFault::stall);
    setDownloadRoot(server->root());
    run.start();
    ASSERT_TRUE(eventually([&] { return !server->requests().empty(); })) << run.log();
    EXPECT_TRUE(isOnDisk("\nMAX_LIVE_SEL=500\n"));
    server.reset();
}

TEST_F(FlushPointThreads, whetherRealTrafficIsHereIsOnTheDiskBeforeTheScan) {
    writeScannableLivery();
    run.setParameters({{"SIM_INSTALL_PATH", platform::utf8FromPath(run.folder() / "Sim v5")},
                       {"SCAN_LIVERIES", "true"},
                       {"lfolder0", platform::utf8FromPath(run.folder() / "aircraft")}});
    writeSealed("input/AIG-regcodes.enc", "<root><meta/><AIG-regcodes/></root>");
    const SlowFile regcodes("input/AIG-regcodes.enc");
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
