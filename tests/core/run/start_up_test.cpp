#include "core/run/start_up.h"

#include <gtest/gtest.h>

#include <exception>
#include <stdexcept>
#include <thread>

#include <fmt/format.h>

#include "core/exit_reason.h"
#include "core/parameter_file.h"
#include "core/parameters.h"
#include "core/run_flags.h"
#include "core/user_error.h"
#include "core/week_slot.h"
#include "distribution/download.h"
#include "liveries/livery_tables.h"
#include "liveries/reference_tables.h"
#include "parking/airport_directory.h"
#include "platform/files.h"
#include "platform/window_system.h"
#include "rig/server/download_server.h"
#include "sim/stand_requests.h"
#include "sim/user_state.h"
#include "tests/support/code_page.h"
#include "tests/support/eventually.h"
#include "tests/support/log_capture.h"
#include "tests/support/program_run.h"
#include "tests/support/reference_xml.h"
#include "tests/support/scannable_livery.h"
#include "tests/support/sealed_input.h"
#include "window/window_state.h"

namespace fs = std::filesystem;
using namespace std::chrono_literals;

namespace {

TEST(StartUpThreads, makesTheWorkingFoldersAndDeletesOutOfDateFiles) {
    ProgramRun run;
    writeFile(run.folder() / "input" / "AIG-regcodes0.xml", "old");
    writeFile(run.folder() / "input" / "AIG-regcodes00.xml", "old");
    run.start({"--production"});
    ASSERT_TRUE(run.ends()) << run.log();
    for (const char* folder :
         {"output/info", "output/errors", "airports/learned/stock", "airports/learned/simaddon",
          "airports/learned/thirdparty", "airports/my_ORBX", "airports/my_thirdparty", "input/my_regcodes"}) {
        EXPECT_TRUE(fs::is_directory(run.folder() / folder)) << folder;
    }
    EXPECT_FALSE(fs::exists(run.folder() / "input" / "AIG-regcodes0.xml"));
    EXPECT_FALSE(fs::exists(run.folder() / "input" / "AIG-regcodes00.xml"));
}

TEST(StartUpThreads, anOutOfDateFileThatCannotBeDeletedIsAnErrorLineAndCostsNothing) {
    ProgramRun run;
    writeFile(run.folder() / "input" / "AIG-regcodes0.xml" / "inside", "x");
    writeFile(run.folder() / "input" / "AIG-regcodes00.xml", "old");
    run.start({"--production"});
    ASSERT_TRUE(run.ends()) << run.log();
    EXPECT_TRUE(run.logs("==> Failed to remove input\\AIG-regcodes0.xml (")) << run.log();
    EXPECT_FALSE(fs::exists(run.folder() / "input" / "AIG-regcodes00.xml"));
    EXPECT_EQ(run.quitCode(), 0);
}

TEST(StartUpThreads, clearTextThatAKilledProcessLeftIsRemoved) {
    ProgramRun run;
    for (const char* file : {"dbase.xml", "airports.xml", "AIG-regcodes.xml"}) {
        writeFile(run.folder() / "input" / file, "clear");
    }
    run.start({"--production"});
    ASSERT_TRUE(run.ends()) << run.log();
    for (const char* file : {"dbase.xml", "airports.xml", "AIG-regcodes.xml"}) {
        EXPECT_FALSE(fs::exists(run.folder() / "input" / file)) << file;
    }
}

TEST(StartUpThreads, theDataFilesAreReadBeforeTheSimulatorIsLookedFor) {
    ProgramRun run;
    run.setParameters({});
    run.start();
    ASSERT_TRUE(run.willLog("No P3D install path detected.")) << run.log();
    EXPECT_TRUE(gf_isIcaoAirline("KLM"));
    EXPECT_NE(find_airport("LSZH"), nullptr);
}

TEST(StartUpThreads, aDataFileThatCannotBeOpenedEndsAsASystemError) {
    ProgramRun run;
    writeFile(run.folder() / "input" / "dbase.enc", "no container");
    run.start();
    ASSERT_TRUE(run.willLog("Exiting: SYSTEM ERROR")) << run.log();
    EXPECT_EQ(shownError(), "dbase.enc stream decrypt failed");
}

TEST(StartUpThreads, aDataFileThatDoesNotParseEndsAsASystemError) {
    ProgramRun run;
    writeSealed(run.folder() / "input" / "dbase.enc", "<root><aircrafts");
    run.start();
    ASSERT_TRUE(run.willLog("Exiting: SYSTEM ERROR")) << run.log();
    EXPECT_EQ(shownError(), "reading data files failed!");
}

TEST(StartUpThreads, withoutAirportsTheRunEndsAsASystemError) {
    ProgramRun run;
    fs::remove(run.folder() / "input" / "airports.enc");
    run.start();
    ASSERT_TRUE(run.willLog("Exiting: SYSTEM ERROR")) << run.log();
    EXPECT_EQ(shownError(), "reading airports failed!");
}

TEST(StartUpThreads, aNewerDataFileIsFetchedAndReadInTheSameStart) {
    ProgramRun run;
    DownloadServer server(run.folder() / "served");
    setDownloadRoot(server.root());
    writeFile(run.folder() / "served" / "downloads" / "versions.json",
              R"({"dbase": {"major": 2, "minor": 0, "patch": 0}})");
    writeSealed(run.folder() / "served" / "downloads" / "11" / "dbase.enc",
                ReferenceXml().with("ICAO_airlines", R"(<ICAO codes="NEW"/>)").text());
    run.start({"--production"});
    ASSERT_TRUE(run.ends()) << run.log();
    EXPECT_TRUE(run.logs("dbase updated to 2.0.0"));
    EXPECT_TRUE(gf_isIcaoAirline("NEW"));
    EXPECT_FALSE(gf_isIcaoAirline("KLM"));
    EXPECT_EQ(DBASE_VERSION.value(), "2.0.0");
}

TEST(StartUpThreads, theScannedLiveriesAreInTheTablesBeforeTheSimulatorIsWaitedFor) {
    ProgramRun run;
    run.start();
    ASSERT_TRUE(run.willLog("Waiting for Prepar3Dv5 ...")) << run.log();
    EXPECT_TRUE(run.logs("2 liveries read from "));
    EXPECT_EQ(lf_findTitle("KLM A320"), "KLM A320");
}

TEST(StartUpThreads, withoutScannedLiveriesTheRunEndsAsASystemError) {
    ProgramRun run;
    fs::remove(run.folder() / "output" / "LiveriesScanned.xml");
    run.start();
    ASSERT_TRUE(run.willLog("Exiting: SYSTEM ERROR")) << run.log();
    EXPECT_NE(shownError().find("LiveriesScanned.xml not found"), std::string::npos) << shownError();
}

TEST(StartUpThreads, aScanThatIsAskedForReplacesTheScannedLiveries) {
    ProgramRun run;
    writeScannableLivery();
    run.setParameters({{"SIM_INSTALL_PATH", platform::utf8FromPath(run.folder() / "Sim v5")},
                       {"SCAN_LIVERIES", "true"},
                       {"lfolder0", platform::utf8FromPath(run.folder() / "aircraft")}});
    run.start({"--production"});
    ASSERT_TRUE(run.ends()) << run.log();
    EXPECT_EQ(lf_findTitle("Scanned B738"), "Scanned B738") << run.log();
    EXPECT_EQ(lf_findTitle("KLM A320"), "");
    EXPECT_FALSE(SCAN_LIVERIES.value);
}

TEST(StartUpThreads, aScanWithoutAnyFolderEndsAsASystemError) {
    ProgramRun run;
    run.setParameters(
        {{"SIM_INSTALL_PATH", platform::utf8FromPath(run.folder() / "Sim v5")}, {"SCAN_LIVERIES", "true"}});
    run.start();
    ASSERT_TRUE(run.willLog("Exiting: SYSTEM ERROR")) << run.log();
    EXPECT_NE(shownError().find("Then set one or more lfolder parameters"), std::string::npos) << shownError();
}

TEST(StartUpThreads, aFolderThatCannotBeMadeEndsAsASystemError) {
    ProgramRun run;
    fs::remove_all(run.folder() / "output");
    writeFile(run.folder() / "output", "a file where a folder should be");
    run.start();
    ASSERT_TRUE(run.willLog("Exiting: SYSTEM ERROR")) << run.log();
    EXPECT_NE(shownError().find("create_directories"), std::string::npos) << shownError();
    window_system::clickClose();
    EXPECT_TRUE(run.endsWithin(2s));
}

TEST(StartUpThreads, realTrafficIsFoundInTheRoamingFolder) {
    ProgramRun run;
    writeFile(run.folder() / "roaming" / "InsideSystems" / "RealTraffic.jar", "");
    run.start();
    ASSERT_TRUE(run.willLog("RealTraffic detected at this PC")) << run.log();
    EXPECT_TRUE(gRealTrafficHere);
}

TEST(StartUpThreads, missingStockSceneryIsToldAndTheRunGoesOn) {
    ProgramRun run;
    fs::remove(run.folder() / "Sim v5" / "Scenery");
    run.start();
    ASSERT_TRUE(run.willLog("Stock airports path does not exist: ")) << run.log();
    EXPECT_TRUE(run.logs("Sim v5\\Scenery")) << run.log();
    EXPECT_TRUE(run.willLog("Waiting for Prepar3Dv5 ..."));
    EXPECT_FALSE(run.quitCode());
}

TEST(StartUpThreads, theWindowsPositionIsStoredAtTheEnd) {
    ProgramRun run;
    run.setParameters({{"SIM_INSTALL_PATH", platform::utf8FromPath(run.folder() / "Sim v5")},
                       {"MAIN_WINDOW_X", "33"},
                       {"MAIN_WINDOW_Y", "44"}});
    run.start({"--production"});
    ASSERT_TRUE(run.ends()) << run.log();
    EXPECT_EQ(MAIN_WINDOW_X.value, 33);
    EXPECT_EQ(MAIN_WINDOW_Y.value, 44);
    EXPECT_TRUE(run.logs("MAIN_WINDOW_X=33"));
}

TEST(StartUpThreads, theVersionOfTheSimulatorComesFromItsPathOrElseFromTheParameter) {
    struct Case {
        const char* folder;
        const char* parameter;
        int version;
    };
    for (const Case& expected : {Case{"P3D v5", "6", 5}, Case{"P3D V6", "5", 6}, Case{"P3D", "6", 6}}) {
        ProgramRun run;
        run.setParameters({{"SIM_INSTALL_PATH", expected.folder}, {"P3D_VERSION", expected.parameter}});
        run.start({"--production"});
        ASSERT_TRUE(run.ends()) << run.log();
        EXPECT_EQ(gSimulatorVersion, expected.version) << expected.folder;
    }
}

TEST(StartUpThreads, atLeastOneHardwareThreadIsCounted) {
    ProgramRun run;
    run.start({"--production"});
    ASSERT_TRUE(run.ends()) << run.log();
    const unsigned machine = std::thread::hardware_concurrency();
    EXPECT_EQ(gHardwareThreads, machine == 0 ? 2 : static_cast<int>(machine));
    EXPECT_GE(unpackedWeekSlot(gWeekSlot).weekday, 1);
}

TEST(StartUpThreads, destinationAndBlockedCallSignDoNotSurviveARun) {
    ProgramRun run;
    run.setParameters({{"SIM_INSTALL_PATH", "P3D v5"}, {"DESTINATION", "LSZH"}, {"BLOCK_CALLSIGN", "SWR1"}});
    run.start({"--production"});
    ASSERT_TRUE(run.ends()) << run.log();
    EXPECT_EQ(DESTINATION.value(), "");
    EXPECT_EQ(BLOCK_CALLSIGN.value(), "");
    const std::string file = readFile(gf_parameterFile());
    EXPECT_EQ(file.find("LSZH"), std::string::npos);
    EXPECT_EQ(file.find("SWR1"), std::string::npos);
}

TEST(StartUpThreads, theFolderOfFlightPlansLastsAsLongAsTheRun) {
    ProgramRun run;
    const fs::path plans = run.folder() / "roaming" / "Tarnwing_P3D" / "orig_dest";
    run.start();
    ASSERT_TRUE(eventually([&] { return fs::is_directory(plans); })) << run.log();
    window_system::clickClose();
    ASSERT_TRUE(run.ends()) << run.log();
    EXPECT_FALSE(fs::exists(plans));
}

TEST(StartUpThreads, anUnreadableParameterFileStartsFreshAndIsKept) {
    ProgramRun run;
    writeFile(gf_parameterFile(), "<root><parameters");
    run.start();
    ASSERT_TRUE(run.willLog("Exiting: SYSTEM ERROR")) << "the simulator's path is gone with the file";
    EXPECT_EQ(readFile(gf_parameterFolder() / "parameters0.xml"), "<root><parameters");
    EXPECT_TRUE(run.logs("not found, creating new with default values:"));
}

class RunFailure : public testing::Test {
protected:
    RunFailure() { resetProgram(); }
    ~RunFailure() override { resetProgram(); }

    LogCapture log;
};

TEST_F(RunFailure, anErrorOfTheUsersIsShownAndLeavesTheStopFlagAlone) {
    gf_endRunOn(std::make_exception_ptr(kvd::UserErrorException(1, "type the path")));
    EXPECT_EQ(shownError(), "type the path");
    EXPECT_TRUE(log.contains("Error type the path"));
    EXPECT_EQ(gf_exitReason(), ExitReason::systemError);
    EXPECT_FALSE(gf_isStopping());
}

TEST_F(RunFailure, anErrorOfTheUsersReplacesAReasonThatIsStored) {
    gf_stopRun(ExitReason::simConnectError, 9);
    gf_endRunOn(std::make_exception_ptr(kvd::UserErrorException(1, "type the path")));
    EXPECT_EQ(gf_exitReason(), ExitReason::systemError);
}

TEST_F(RunFailure, aFormatErrorIsNamedAndStopsTheRunWithoutADelay) {
    gf_endRunOn(std::make_exception_ptr(fmt::format_error("argument not found")));
    EXPECT_EQ(shownError(), "std::format error: argument not found");
    EXPECT_EQ(gf_exitReason(), ExitReason::systemError);
    EXPECT_EQ(gf_restartDelaySeconds(), 0);
    EXPECT_TRUE(gStopRun);
}

TEST_F(RunFailure, anyOtherStandardExceptionIsShownWithItsText) {
    gf_endRunOn(std::make_exception_ptr(std::out_of_range("too far")));
    EXPECT_EQ(shownError(), "too far");
    EXPECT_EQ(gf_exitReason(), ExitReason::systemError);
    EXPECT_TRUE(gStopRun);
}

TEST_F(RunFailure, aTextInTheSystemsCodePageIsShownAsUtf8) {
    if (!isCodePageWestern()) {
        GTEST_SKIP() << "the letters are those of the western European code page";
    }
    gf_endRunOn(std::make_exception_ptr(std::runtime_error("Acc\xe8s refus\xe9")));
    EXPECT_EQ(shownError(), "Acc\xc3\xa8s refus\xc3\xa9");
}

TEST_F(RunFailure, whatIsNoExceptionIsUnknown) {
    gf_endRunOn(std::make_exception_ptr(42));
    EXPECT_EQ(shownError(), "Unknown exception");
    EXPECT_EQ(gf_exitReason(), ExitReason::systemError);
}

/// Of a user who stands at a gate.
TEST(ClosingDownThreads, asksForTheStandNextToTheUser) {
    ProgramRun run;
    run.start();
    ASSERT_TRUE(run.willLog("Waiting for Prepar3D")) << run.log(); // the run has forgotten where the user was
    userOnGroundKnown = true;
    window_system::clickClose();
    ASSERT_TRUE(run.ends()) << run.log();
    EXPECT_TRUE(takeClosestStandRequest());
    resetStandRequests();
}

TEST(ClosingDownThreads, aStepThatThrowsIsLoggedAndTheWindowStillGetsItsLastMessage) {
    ProgramRun run;
    run.start();
    ASSERT_TRUE(run.willLog("detected at this PC")) << run.log();
    gf_stopRun(static_cast<ExitReason>(42), 0);
    ASSERT_TRUE(run.ends()) << run.log();
    EXPECT_TRUE(run.logs("lf_closingDown exception invalid unordered_map<K, T> key"));
    EXPECT_EQ(run.quitCode(), 0);
}

} // namespace
