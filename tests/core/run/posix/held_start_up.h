// A whole program whose start-up is held up in one of its steps. Time runs by the program's own sleeps.
#pragma once

#include <gtest/gtest.h>

#include <chrono>
#include <memory>

#include "distribution/download.h"
#include "platform/clock.h"
#include "platform/files.h"
#include "rig/server/download_server.h"
#include "tests/support/program_run.h"
#include "tests/support/scannable_livery.h"
#include "tests/support/sealed_input.h"
#include "tests/support/slow_file.h"

class HeldStartUp : public testing::Test {
protected:
    /// The look for new data gets no answer for as long as the server is there.
    static std::unique_ptr<DownloadServer> heldAtVersions() {
        writeFile("served/downloads/versions.json", "{}");
        auto server = std::make_unique<DownloadServer>("served");
        server->setFault(ServerFault::stall);
        setDownloadRoot(server->root());
        return server;
    }

    /// The scan looks into the file for titles that are not to be used, and later the tables are built with its
    /// registrations: each waits until it is let in.
    std::unique_ptr<SlowFile> heldAtScan() {
        writeScannableLivery();
        run.setParameters({{"SIM_INSTALL_PATH", platform::utf8FromPath(run.folder() / "Sim v5")},
                           {"SCAN_LIVERIES", "true"},
                           {"lfolder0", platform::utf8FromPath(run.folder() / "aircraft")}});
        writeSealed("input/AIG-regcodes.enc", "<root><meta/><AIG-regcodes/></root>");
        return std::make_unique<SlowFile>("input/AIG-regcodes.enc");
    }

    platform::ManualClock clock{std::chrono::sys_days(std::chrono::year(2026) / 11 / 21)};
    ProgramRun run;
};
