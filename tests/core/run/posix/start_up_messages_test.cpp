// What the message line holds while a step of the start-up takes its time: each data file is a pipe here, whose reader
// waits until the test has something for it.
#include <gtest/gtest.h>

#include <chrono>
#include <filesystem>
#include <optional>
#include <string>

#include "distribution/download.h"
#include "platform/clock.h"
#include "platform/files.h"
#include "rig/server/download_server.h"
#include "tests/support/eventually.h"
#include "tests/support/program_run.h"
#include "tests/support/scannable_livery.h"
#include "tests/support/sealed_input.h"
#include "tests/support/slow_file.h"
#include "window/window_state.h"

namespace fs = std::filesystem;

namespace {

bool willShow(const std::string& message) {
    return eventually([&] { return shownMessage() == message; });
}

/// Time runs by the program's own sleeps.
class StartUpMessageThreads : public testing::Test {
protected:
    platform::ManualClock clock{std::chrono::sys_days(std::chrono::year(2026) / 11 / 21)};
    ProgramRun run;
};

TEST_F(StartUpMessageThreads, saysThatItLooksForNewData) {
    writeFile("served/downloads/versions.json", "{}");
    std::optional<DownloadServer> server("served");
    server->setFault(ServerFault::stall);
    setDownloadRoot(server->root());
    run.start();
    EXPECT_TRUE(willShow("Looking for new data ..."));
    server.reset();
    EXPECT_TRUE(willShow("Waiting for Prepar3Dv5 ..."));
}

TEST_F(StartUpMessageThreads, saysWhatItDownloads) {
    writeFile("served/downloads/versions.json", R"({"dbase": {"major": 2, "minor": 0, "patch": 0}})");
    writeSealed("served/downloads/11/dbase.enc", "data");
    std::optional<DownloadServer> server("served");
    server->setFault(ServerFault::stall, "dbase.enc");
    setDownloadRoot(server->root());
    run.start();
    EXPECT_TRUE(willShow("Downloading dbase.enc ..."));
    server.reset();
    EXPECT_TRUE(willShow("Waiting for Prepar3Dv5 ..."));
}

TEST_F(StartUpMessageThreads, saysWhatItReads) {
    const SlowFile dbase("input/dbase.enc");
    const SlowFile airports("input/airports.enc");
    run.start();
    EXPECT_TRUE(willShow("Reading the aircraft data ..."));
    EXPECT_TRUE(dbase.letIn());
    EXPECT_TRUE(willShow("Reading the airports ..."));
    EXPECT_TRUE(airports.letIn());
    EXPECT_TRUE(willShow("Waiting for Prepar3Dv5 ..."));
}

TEST_F(StartUpMessageThreads, saysThatItScansAndThenThatItBuildsItsTables) {
    writeScannableLivery();
    run.setParameters({{"SIM_INSTALL_PATH", platform::utf8FromPath(run.folder() / "Sim v5")},
                       {"SCAN_LIVERIES", "true"},
                       {"lfolder0", platform::utf8FromPath(run.folder() / "aircraft")}});
    // The scan looks into it for titles that are not to be used, the tables are built with its registrations.
    writeSealed("input/AIG-regcodes.enc", "<root><meta/><AIG-regcodes/></root>");
    const SlowFile regcodes("input/AIG-regcodes.enc");
    run.start();
    EXPECT_TRUE(willShow("Scanning prioritized for liveries ..."));
    EXPECT_TRUE(regcodes.letIn());
    EXPECT_TRUE(willShow("Building the livery tables ..."));
    EXPECT_TRUE(regcodes.letIn());
    EXPECT_TRUE(willShow("Waiting for Prepar3Dv5 ..."));
}

} // namespace
