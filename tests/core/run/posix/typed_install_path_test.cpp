#include <gtest/gtest.h>

#include <filesystem>

#include "core/exit_reason.h"
#include "core/parameters.h"
#include "platform/clock.h"
#include "platform/files.h"
#include "platform/posix/memory_registry.h"
#include "platform/posix/memory_window.h"
#include "platform/text_encoding.h"
#include "tests/support/eventually.h"
#include "tests/support/program_run.h"
#include "tests/support/scannable_livery.h"
#include "tests/support/sealed_input.h"
#include "tests/support/slow_file.h"
#include "window/window_state.h"

namespace memory = window_system::memory;

namespace {

/// Without a simulator in the registry and without a path in the settings.
class TypedInstallPathThreads : public testing::Test {
protected:
    TypedInstallPathThreads() {
        memory::reset();
        platform::clearRegistry();
        run.setParameters({{"SIM_INSTALL_PATH", ""}});
        run.start();
    }
    ~TypedInstallPathThreads() override {
        window_system::clickClose();
        EXPECT_TRUE(run.ends()) << run.log();
        memory::reset();
        platform::clearRegistry();
    }

    static bool enter(const std::filesystem::path& path) {
        return memory::enterText(ALL_INSTALL_PATH.controlId, platform::utf16FromUtf8(platform::utf8FromPath(path)));
    }

    platform::ManualClock clock{platform::WallTime{}};
    ProgramRun run;
};

TEST_F(TypedInstallPathThreads, aFolderTypedUnderTheErrorStartsARunThatUsesIt) {
    ASSERT_TRUE(run.willLog("Type the full Install Path above, then press Enter")) << run.log();
    ASSERT_TRUE(run.willLog("Exiting: SYSTEM ERROR")) << run.log();
    const std::filesystem::path sim = run.folder() / "Prepar3D v6";
    std::filesystem::create_directories(sim / "Scenery");
    ASSERT_TRUE(enter(sim));
    ASSERT_TRUE(run.willLog("Waiting for Prepar3Dv6 ...")) << run.log();
    EXPECT_EQ(shownError(), "");
    EXPECT_EQ(memory::control(ALL_INSTALL_PATH.controlId)->text, platform::utf8FromPath(sim));
    EXPECT_FALSE(run.logs("User closed Tarnwing_P3D"));
}

TEST_F(TypedInstallPathThreads, aWrongFolderLeavesTheFieldForAnotherTry) {
    ASSERT_TRUE(run.willLog("Exiting: SYSTEM ERROR")) << run.log();
    ASSERT_TRUE(enter(run.folder() / "nowhere"));
    ASSERT_TRUE(run.willLog("This install path does not exist: ")) << run.log();
    EXPECT_TRUE(eventually([] { return shownError().starts_with("This install path does not exist: "); }));
    EXPECT_FALSE(run.quitCode());
    std::filesystem::create_directories(run.folder() / "P3D v5");
    ASSERT_TRUE(enter(run.folder() / "P3D v5"));
    EXPECT_TRUE(run.willLog("Waiting for Prepar3Dv5 ...")) << run.log();
}

/// A scan that waits in the middle for the registration codes.
class TypedWhileScanningThreads : public testing::Test {
protected:
    TypedWhileScanningThreads() {
        writeScannableLivery();
        std::filesystem::remove("output/LiveriesScanned.xml");
        run.setParameters({{"SIM_INSTALL_PATH", platform::utf8FromPath(run.folder() / "Sim v5")},
                           {"SCAN_LIVERIES", "true"},
                           {"lfolder0", platform::utf8FromPath(run.folder() / "aircraft")}});
        writeSealed("input/AIG-regcodes.enc", "<root><meta/><AIG-regcodes/></root>");
    }

    platform::ManualClock clock{platform::WallTime{}};
    ProgramRun run;
};

TEST_F(TypedWhileScanningThreads, aPathThatCutsTheScanLeadsToARunThatScansAnew) {
    const SlowFile regcodes("input/AIG-regcodes.enc");
    run.start();
    ASSERT_TRUE(run.willLog("liveries scan manual starts")) << run.log();
    std::filesystem::create_directories(run.folder() / "Prepar3D v6");
    ASSERT_TRUE(memory::enterText(ALL_INSTALL_PATH.controlId,
                                  platform::utf16FromUtf8(platform::utf8FromPath(run.folder() / "Prepar3D v6"))));
    ASSERT_TRUE(eventually([] { return gf_exitReason() == ExitReason::newSettings; }));
    EXPECT_TRUE(regcodes.letIn()); // the scan that is cut
    ASSERT_TRUE(run.willLog("Restart countdown finished")) << run.log();
    EXPECT_TRUE(regcodes.letIn()); // the new scan
    ASSERT_TRUE(run.willLog("1 liveries read from output")) << run.log();
    EXPECT_TRUE(regcodes.letIn()); // the building of the tables
    EXPECT_TRUE(run.willLog("Waiting for Prepar3Dv6 ...")) << run.log();
    EXPECT_TRUE(std::filesystem::exists("output/LiveriesScanned.xml"));
    EXPECT_EQ(shownError(), "");
}

} // namespace
