#include "core/run/process_entry.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "core/exit_reason.h"
#include "core/run_flags.h"
#include "platform/single_instance.h"
#include "platform/window_system.h"
#include "tests/support/eventually.h"
#include "tests/support/program_run.h"
#include "window/window_state.h"

namespace fs = std::filesystem;
using namespace std::chrono_literals;

namespace {

TEST(CommandLine, onlyTheLastOfTheTwoWordsCounts) {
    EXPECT_FALSE(gf_asksForProduction({"program"}));
    EXPECT_TRUE(gf_asksForProduction({"program", "--production"}));
    EXPECT_TRUE(gf_asksForProduction({"program", "/production"}));
    EXPECT_FALSE(gf_asksForProduction({"program", "--no-production"}));
    EXPECT_FALSE(gf_asksForProduction({"program", "--production", "/no-production"}));
    EXPECT_TRUE(gf_asksForProduction({"program", "--no-production", "--production"}));
}

TEST(CommandLine, caseDoesNotCount) {
    EXPECT_TRUE(gf_asksForProduction({"program", "--PRODUCTION"}));
    EXPECT_FALSE(gf_asksForProduction({"program", "--production", "/No-Production"}));
}

TEST(CommandLine, nothingElseHasAMeaning) {
    EXPECT_FALSE(gf_asksForProduction({"program", "production", "-production", "--productions", ""}));
    EXPECT_TRUE(gf_asksForProduction({"program", "--production", "junk"}));
}

TEST(CommandLine, theProgramsOwnNameIsNoArgument) {
    EXPECT_FALSE(gf_asksForProduction({"--production"}));
    EXPECT_FALSE(gf_asksForProduction({}));
}

TEST(StartThreads, aSecondStartReturnsMinusOneWithoutAWindowOrALog) {
    ProgramRun run;
    const platform::SingleInstance first("Local\\$TRNW_P3D$");
    ASSERT_FALSE(first.alreadyRuns());
    run.start();
    ASSERT_TRUE(run.ends()) << run.log();
    EXPECT_EQ(run.quitCode(), -1);
    EXPECT_FALSE(fs::exists(run.folder() / "Log.txt"));
}

TEST(StartThreads, aProductionStartEndsWithCode0AndNeverWaitsForTheSimulator) {
    ProgramRun run;
    run.start({"--production"});
    ASSERT_TRUE(run.ends()) << run.log();
    EXPECT_EQ(run.quitCode(), 0);
    EXPECT_TRUE(run.logs("Exiting: USER CLOSED SIM"));
    EXPECT_FALSE(run.logs("detected at this PC")) << "the look for RealTraffic is skipped";
    EXPECT_TRUE(fs::is_directory(run.folder() / "airports" / "learned" / "stock")) << "the folders are made";
}

TEST(StartThreads, noProductionBehindProductionIsAPlainStart) {
    ProgramRun run;
    run.start({"--production", "--no-production"});
    ASSERT_TRUE(run.willLog("RealTraffic not detected at this PC")) << run.log();
    EXPECT_FALSE(run.quitCode());
    window_system::clickClose();
    ASSERT_TRUE(run.ends()) << run.log();
    EXPECT_EQ(run.quitCode(), 0);
}

TEST(StartThreads, withoutDocsTheErrorStandsUntilTheWindowIsClosed) {
    ProgramRun run;
    fs::remove(run.folder() / "docs");
    run.start();
    const std::string error = "Tarnwing_P3D must be run from the Tarnwing_P3D folder!";
    ASSERT_TRUE(run.willLog("Exiting: SYSTEM ERROR")) << run.log();
    EXPECT_EQ(shownError(), error);
    EXPECT_TRUE(run.logs("Error " + error));
    EXPECT_FALSE(run.quitCode());
    window_system::clickClose();
    ASSERT_TRUE(run.endsWithin(2s));
    EXPECT_TRUE(run.logs("User closed Tarnwing_P3D"));
}

TEST(StartThreads, withoutASimulatorTheRunWaitsAndTheCloseButtonEndsItWithinTwoSeconds) {
    ProgramRun run;
    run.start();
    ASSERT_TRUE(run.willLog("detected at this PC")) << run.log();
    EXPECT_FALSE(run.quitCode());
    window_system::clickClose();
    ASSERT_TRUE(run.endsWithin(2s));
    EXPECT_TRUE(run.logs("Close window button clicked, closing Tarnwing_P3D ..."));
    EXPECT_TRUE(run.logs("Exiting: USER CLOSED SIM"));
}

TEST(StartThreads, theFirstLogLineNamesProgramVersionAndSimulator) {
    ProgramRun run;
    run.start({"--production"});
    ASSERT_TRUE(run.ends()) << run.log();
    const std::string text = run.log();
    EXPECT_THAT(text.substr(0, text.find('\n')),
                testing::EndsWith("(utc) Tarnwing_P3D version 11.10.8 for Prepar3D v5/v6"));
}

TEST(StartThreads, aParameterFolderThatCannotBeMadeEndsTheStart) {
    ProgramRun run;
    fs::remove_all(run.folder() / "roaming");
    writeFile(run.folder() / "roaming", "a file where a folder should be");
    run.start();
    ASSERT_TRUE(run.ends()) << run.log();
    EXPECT_EQ(run.quitCode(), 0);
    EXPECT_TRUE(run.logs("Failed to create directory: "));
}

} // namespace
