// What the message line holds while a step of the start-up takes its time: each data file is a pipe here, whose reader
// waits until the test has something for it.
#include <gtest/gtest.h>

#include <optional>
#include <string>

#include "distribution/download.h"
#include "rig/server/download_server.h"
#include "tests/core/run/posix/held_start_up.h"
#include "tests/support/eventually.h"
#include "tests/support/sealed_input.h"
#include "tests/support/slow_file.h"
#include "window/window_state.h"

namespace {

bool willShow(const std::string& message) {
    return eventually([&] { return shownMessage() == message; });
}

class StartUpMessageThreads : public HeldStartUp {};

TEST_F(StartUpMessageThreads, saysThatItLooksForNewData) {
    auto server = heldAtVersions();
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
    const auto regcodes = heldAtScan();
    run.start();
    EXPECT_TRUE(willShow("Scanning prioritized for liveries ..."));
    EXPECT_TRUE(regcodes->letIn());
    EXPECT_TRUE(willShow("Building the livery tables ..."));
    EXPECT_TRUE(regcodes->letIn());
    EXPECT_TRUE(willShow("Waiting for Prepar3Dv5 ..."));
}

} // namespace
