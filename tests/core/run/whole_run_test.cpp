// Whole runs with a simulated world in this process, and datagrams to the real ports.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <filesystem>
#include <future>
#include <mutex>
#include <optional>
#include <string>
#include <thread>

#include <fmt/format.h>

#include "core/detached_threads.h"
#include "core/exit_reason.h"
#include "core/parameter_file.h"
#include "core/parameters.h"
#include "core/run/run_loop.h"
#include "core/run/start_run.h"
#include "core/run_flags.h"
#include "core/slot_clock.h"
#include "distribution/download.h"
#include "feed/qnh_reader.h"
#include "feed/sample_queue.h"
#include "feed/traffic_reader.h"
#include "liveries/failed_titles.h"
#include "liveries/livery_matching.h"
#include "liveries/livery_tables.h"
#include "liveries/reference_tables.h"
#include "platform/clock.h"
#include "platform/sockets.h"
#include "platform/window_system.h"
#include "rig/server/download_server.h"
#include "sim/simulator_link.h"
#include "sim/user_state.h"
#include "tests/core/run/running_simulator.h"
#include "tests/support/eventually.h"
#include "tests/support/program_run.h"
#include "window/window_state.h"

using namespace std::chrono;
using namespace std::chrono_literals;

namespace {

constexpr platform::WallTime noon = sys_days(2026y / November / 21) + 12h;

std::string trafficLine(double feedTime) {
    return fmt::format(
        "RTTFC,4921892,47.46,8.55,12000,0,0,91.5,310.0,SWR38,A320,HB-IJI,ZRH,LHR,{:.1f},X2,LX38,adsb_icao,"
        "12100,300,310,0.5,0.0,-1.0,-1.0,92.0,0,,A3,1013.0,-1,-1,-1,,0,-5,-1,-1,-1,-1,1,1,",
        feedTime);
}

/// Sends datagrams to the program's ports as RealTraffic does.
class Feed {
public:
    Feed() {
        platform::startSocketLibrary();
        socket_.create();
    }
    ~Feed() {
        socket_.shutDownAndClose();
        platform::cleanUpSocketLibrary();
    }
    Feed(const Feed&) = delete;
    Feed& operator=(const Feed&) = delete;

    void traffic(double feedTime) { socket_.sendToThisMachine(trafficPort, trafficLine(feedTime)); }
    void weather(int qnh) { socket_.sendToThisMachine(weatherPort, fmt::format("{{\"QNH\": {}}}", qnh)); }

private:
    platform::DatagramSocket socket_;
};

/// Time runs by the program's own sleeps, so that countdowns and waits cost nothing.
class WholeRunThreads : public testing::Test {
protected:
    WholeRunThreads() { gTrafficReader.setUserLatLon({47.46, 8.55}); }
    ~WholeRunThreads() override { gTrafficReader.setUserLatLon({}); }

    platform::ManualClock clock{noon};
    ProgramRun run;
    Feed feed;
};

TEST_F(WholeRunThreads, realLinesReachTheReadersAndTheLampsLightUp) {
    run.start();
    ASSERT_TRUE(run.willLog("detected at this PC")) << run.log();
    RunningSimulator simulator;
    ASSERT_TRUE(run.willLog("QNH Reader connected")) << run.log();
    ASSERT_TRUE(run.willLog("Traffic Reader connected")) << run.log();
    EXPECT_TRUE(eventually([&] {
        feed.traffic(1800000000.5);
        return gTrafficReader.lastFeedTime == 1800000000.5;
    }));
    EXPECT_TRUE(eventually([&] {
        feed.weather(998);
        return gWindowState.qnh == 998;
    }));
    EXPECT_EQ(gQnh, 998);
    EXPECT_TRUE(gWindowState.realTrafficLit) << "no RealTraffic on this PC: its lamp is lit without a link";
    window_system::clickClose();
    ASSERT_TRUE(run.ends()) << run.log();
    EXPECT_TRUE(run.logs("QNH Reader disconnected"));
    EXPECT_TRUE(run.logs("Traffic Reader disconnected"));
}

TEST_F(WholeRunThreads, theWindowCountsLiveriesAndAirportFilesOfTheUsers) {
    writeFile("airports/my_thirdparty/EHAM.txt", "archive/thirdparty/Some/EHAM.xml");
    writeFile("airports/my_thirdparty/LSZH.xml", "<root/>");
    std::filesystem::create_directories("airports/my_ORBX/a folder");
    run.start();
    ASSERT_TRUE(run.willLog("Waiting for Prepar3Dv5 ...")) << run.log();
    EXPECT_GT(gWindowState.liveries, 0);
    EXPECT_EQ(gWindowState.thirdPartyAirports, 2);
    EXPECT_EQ(gWindowState.simAddonAirports, 0);
}

TEST_F(WholeRunThreads, noTrafficIsNoFailureAndTheLoopRuns) {
    run.start();
    ASSERT_TRUE(run.willLog("detected at this PC")) << run.log();
    RunningSimulator simulator;
    ASSERT_TRUE(run.willLog("No traffic in this region?")) << run.log();
    EXPECT_TRUE(eventually([] { return slotClock > 10; }));
    window_system::clickClose();
    ASSERT_TRUE(run.ends()) << run.log();
    EXPECT_TRUE(run.logs("Exiting: USER CLOSED SIM"));
}

TEST_F(WholeRunThreads, aQuitOfTheSimulatorEndsTheProcess) {
    run.start();
    ASSERT_TRUE(run.willLog("detected at this PC")) << run.log();
    RunningSimulator simulator;
    ASSERT_TRUE(eventually([] { return slotClock > 10; }));
    simulator.play(rig::QuitAct{});
    ASSERT_TRUE(run.ends()) << run.log();
    EXPECT_TRUE(run.logs("Flight Simulator no longer connected, Tarnwing_P3D will stop ..."));
    EXPECT_TRUE(run.logs("Exiting: SIM WAS CLOSED"));
    EXPECT_FALSE(run.logs("Prepare for a restart ..."));
}

TEST_F(WholeRunThreads, theSimulatorIsFoundAndItsUserIsKnownBeforeTheReadersStart) {
    run.start();
    ASSERT_TRUE(run.willLog("Waiting for Prepar3Dv5 ...")) << run.log();
    EXPECT_FALSE(gWindowState.simConnected);
    RunningSimulator simulator;
    ASSERT_TRUE(run.willLog("QNH Reader connected")) << run.log();
    EXPECT_TRUE(run.logs("Lockheed Martin Prepar3D v5 (5.4.9.28482) connected")) << run.log();
    EXPECT_TRUE(gWindowState.simConnected);
    EXPECT_TRUE(gWindowState.simFlightRunning);
    EXPECT_TRUE(userOnGroundKnown);
    EXPECT_TRUE(isPosition(positionOf(userStateNow())));
}

TEST_F(WholeRunThreads, atTheEndTheMatchesAreSummedUpAndTheLiveOnesForgotten) {
    run.start();
    ASSERT_TRUE(run.willLog("Waiting for Prepar3Dv5 ...")) << run.log();
    MatchesAtStep[2] = 77;
    NoMatchList.insert("KLM A320 PH-ABC");
    hexidLiveries[20000] = "Some Livery";
    window_system::clickClose();
    ASSERT_TRUE(run.ends()) << run.log();
    EXPECT_TRUE(run.logs("\n  2: 77\n")) << run.log();
    EXPECT_TRUE(run.logs("\nNo match found for:\nKLM A320 PH-ABC\n")) << run.log();
    EXPECT_LT(run.log().find("  2: 77"), run.log().find("No match found for:"));
    EXPECT_TRUE(hexidLiveries.empty());
}

TEST_F(WholeRunThreads, aWrongSimulatorIsTheErrorLineAndTheReadersDoNotStart) {
    rig::Scene scene;
    scene.simulator.name = "KittyHawk";
    RunningSimulator simulator(scene);
    run.start();
    ASSERT_TRUE(eventually([] { return shownError().find("KittyHawk") != std::string::npos; })) << run.log();
    EXPECT_FALSE(gStopRun);
    EXPECT_FALSE(run.logs("QNH Reader connected"));
    window_system::clickClose();
    ASSERT_TRUE(run.ends()) << run.log();
}

TEST_F(WholeRunThreads, aJumpOfTheUserIsANewFlight) {
    run.start();
    RunningSimulator simulator;
    ASSERT_TRUE(eventually([] { return slotClock > 100; })) << run.log();
    simulator.play(rig::JumpAct{});
    ASSERT_TRUE(run.ends()) << run.log();
    EXPECT_TRUE(run.logs("Teleport"));
    EXPECT_TRUE(run.logs("Exiting: NEW FLIGHT"));
}

TEST_F(WholeRunThreads, aPausedFlightGoesOnWhereItStood) {
    run.start();
    RunningSimulator simulator;
    ASSERT_TRUE(eventually([] { return slotClock > 100; })) << run.log();
    simulator.play(rig::PauseAct{});
    ASSERT_TRUE(run.willLog("Flight not running")) << run.log();
    const int paused = slotClock;
    std::this_thread::sleep_for(50ms); // for slots that must not come
    EXPECT_EQ(slotClock, paused);
    simulator.play(rig::ResumeAct{});
    ASSERT_TRUE(run.willLog("Flight resumed")) << run.log();
    EXPECT_TRUE(eventually([&] { return slotClock > paused; }));
}

TEST_F(WholeRunThreads, aConnectionThatDropsEndsTheRun) {
    run.start();
    RunningSimulator simulator;
    ASSERT_TRUE(eventually([] { return slotClock > 100; })) << run.log();
    simulator.play(rig::DropConnectionAct{});
    ASSERT_TRUE(run.willLog("Exiting: ")) << run.log();
    EXPECT_TRUE(run.logs("Exiting: SIM WAS CLOSED") || run.logs("Exiting: SIMCONNECT ERROR")) << run.log();
}

TEST_F(WholeRunThreads, aNewFlightIsToldAndEndsTheProcessAfter10Seconds) {
    run.start();
    ASSERT_TRUE(run.willLog("detected at this PC")) << run.log();
    gf_stopRun(ExitReason::newFlight, 30);
    ASSERT_TRUE(run.ends()) << run.log();
    EXPECT_TRUE(run.logs("New flight detected, Tarnwing_P3D will close, please restart manually ..."));
    EXPECT_FALSE(run.logs("Restarting after"));
}

/// As the user does it in the window, while the run waits for the simulator.
void askForScans() {
    for (CheckBoxParameter* scan : {&SCAN_LIVERIES, &SCAN_AIRPORTS}) {
        scan->value = true;
        saveParameter(*scan);
    }
}

TEST_F(WholeRunThreads, aSimConnectErrorRestartsTheRunInTheSameProcessWithoutItsScans) {
    run.start();
    ASSERT_TRUE(run.willLog("Waiting for Prepar3Dv5 ...")) << run.log();
    askForScans();
    gf_stopRun(ExitReason::simConnectError, 9);
    ASSERT_TRUE(run.willLog("Restart countdown finished")) << run.log();
    EXPECT_TRUE(run.logs("Exiting: SIMCONNECT ERROR\n"));
    EXPECT_TRUE(run.logs("Prepare for a restart ...\n"));
    EXPECT_TRUE(run.logs("Restarting after 9 seconds\n------------------------------------------------\n"));
    EXPECT_TRUE(eventually([] { return !gStopRun; }));
    EXPECT_FALSE(SCAN_LIVERIES.value);
    EXPECT_FALSE(SCAN_AIRPORTS.value);
    ASSERT_TRUE(eventually([&] {
        const std::string log = run.log();
        return log.find("detected at this PC", log.find("Restart countdown finished")) != std::string::npos;
    })) << "the second run reads and waits as the first did";
    EXPECT_FALSE(run.quitCode());
    window_system::clickClose();
    ASSERT_TRUE(run.ends()) << run.log();
}

TEST_F(WholeRunThreads, aRestartedRunNeitherLooksForUpdatesNorReadsTheDataFilesAgain) {
    writeFile("served/downloads/versions.json", "{}");
    const DownloadServer server("served");
    setDownloadRoot(server.root());
    run.start();
    ASSERT_TRUE(run.willLog("Waiting for Prepar3Dv5 ...")) << run.log();
    ASSERT_THAT(server.requests(), testing::ElementsAre("/downloads/versions.json"));
    std::filesystem::remove("input/dbase.enc"); // who reads it again ends on an error
    gf_stopRun(ExitReason::newSettings, 0);
    EXPECT_TRUE(eventually([&] {
        const std::string log = run.log();
        return log.find("Waiting for Prepar3Dv5 ...", log.find("Prepare for a restart ...")) != std::string::npos;
    })) << run.log();
    EXPECT_THAT(server.requests(), testing::SizeIs(1));
    EXPECT_TRUE(AirlineTable.contains("KLM"));
    EXPECT_EQ(shownError(), "");
}

TEST_F(WholeRunThreads, aThreadThatStaysInIsToldAndTheRestartGoesOn) {
    std::promise<void> mayGo;
    gf_startDetached("Stays in", [goes = mayGo.get_future().share()] { goes.wait(); });
    run.start();
    ASSERT_TRUE(run.willLog("Waiting for Prepar3Dv5 ...")) << run.log();
    gf_stopRun(ExitReason::newSettings, 0);
    EXPECT_TRUE(run.willLog("\n==> A thread of the run did not end in time\n")) << run.log();
    EXPECT_TRUE(eventually([] { return !gStopRun; }));
    mayGo.set_value();
}

TEST_F(WholeRunThreads, newSettingsRestartWithTheScansKept) {
    run.start();
    ASSERT_TRUE(run.willLog("Waiting for Prepar3Dv5 ...")) << run.log();
    askForScans();
    gf_stopRun(ExitReason::newSettings, 3);
    ASSERT_TRUE(run.willLog("Restart countdown finished")) << run.log();
    EXPECT_TRUE(run.logs("Restarting after 3 seconds"));
    EXPECT_TRUE(run.willLog("liveries scan manual starts")) << "the new run scans";
    EXPECT_TRUE(SCAN_AIRPORTS.value);
}

TEST_F(WholeRunThreads, aRestartWithoutADelayShowsAndWaitsNothing) {
    run.start();
    ASSERT_TRUE(run.willLog("detected at this PC")) << run.log();
    gf_stopRun(ExitReason::newSettings, 0);
    ASSERT_TRUE(run.willLog("Prepare for a restart ...")) << run.log();
    ASSERT_TRUE(eventually([] { return !gStopRun; }));
    EXPECT_FALSE(run.logs("Restarting after"));
}

TEST_F(WholeRunThreads, theExitCodeIsTheQuitCode) {
    run.start();
    ASSERT_TRUE(run.willLog("detected at this PC")) << run.log();
    gExitCode = 7;
    window_system::clickClose();
    ASSERT_TRUE(run.ends()) << run.log();
    EXPECT_EQ(run.quitCode(), 7);
    const std::string log = run.log();
    const std::string lastLine = log.substr(log.rfind('\n', log.size() - 2) + 1);
    EXPECT_THAT(lastLine, testing::ContainsRegex("^... ... .. ..:..:.. 20..")) << "the closing time line";
}

TEST_F(WholeRunThreads, aReaderWhosePortIsTakenRestartsTheRunAfter15Seconds) {
    platform::DatagramSocket taken;
    ASSERT_EQ(taken.create(), 0);
    ASSERT_EQ(taken.bind(platform::BindTo::allAddresses, weatherPort), 0);
    run.start();
    ASSERT_TRUE(run.willLog("detected at this PC")) << run.log();
    RunningSimulator simulator;
    ASSERT_TRUE(run.willLog("The QNH Reader has stopped with error: "
                            "bind to stream socket failed, error: 10048 Address already in use"));
    ASSERT_TRUE(run.willLog("Exiting: READER ERROR")) << run.log();
    taken.shutDownAndClose();
    ASSERT_TRUE(run.willLog("Restarting after 15 seconds")) << run.log();
}

TEST_F(WholeRunThreads, aRestartedRunConnectsAgainAndItsLoopRuns) {
    run.start();
    RunningSimulator simulator;
    ASSERT_TRUE(eventually([] { return slotClock > 100; })) << run.log();
    requestFailed();
    ASSERT_TRUE(run.willLog("Restart countdown finished")) << run.log();
    const auto connects = [&] {
        const std::string log = run.log();
        int count = 0;
        for (std::size_t at = log.find("v5 (5.4.9.28482) connected"); at != std::string::npos;
             at = log.find("v5 (5.4.9.28482) connected", at + 1)) {
            ++count;
        }
        return count;
    };
    EXPECT_TRUE(eventually([&] { return connects() == 2; })) << run.log();
    const int before = slotClock;
    EXPECT_TRUE(eventually([&] { return slotClock > before; })) << run.log();
    EXPECT_FALSE(simFailed);
}

TEST_F(WholeRunThreads, theRestartLeavesTheDayAndNothingElseOfTheFormerRun) {
    run.start();
    ASSERT_TRUE(run.willLog("detected at this PC")) << run.log();
    std::optional<RunningSimulator> simulator(std::in_place);
    ASSERT_TRUE(run.willLog("Traffic Reader connected")) << run.log();
    ASSERT_TRUE(eventually([&] {
        feed.traffic(1800000000.5);
        feed.weather(998);
        return gQnh == 998 && gTrafficReader.lastFeedTime > 0;
    }));
    ASSERT_TRUE(eventually([] { return slotClock > 0; }));
    gTrafficReader.collectCallSigns = true;
    gf_requestStaticRefresh();
    gRealTrafficHistoric = true;
    gBeforeFirstConnect = false;
    MatchesAtStep[2] = 77;
    FailedTitles.insert("Broken A320");
    simFailed = true;
    ASSERT_TRUE(run.willLog("Flight not running"));
    const int clockBefore = slotClock;
    clock.hold(); // or the next run would be connected before the simulator is gone
    gf_stopRun(ExitReason::simConnectError, 1);
    simulator.reset();
    clock.release();
    ASSERT_TRUE(run.willLog("Restart countdown finished")) << run.log();
    ASSERT_TRUE(eventually([] { return !gStopRun; }));
    EXPECT_TRUE(run.logs("QNH Reader disconnected")) << "the reset waits for the readers";
    EXPECT_TRUE(run.logs("Traffic Reader disconnected"));
    EXPECT_FALSE(gTrafficReader.collectCallSigns);
    EXPECT_TRUE(gTrafficReader.seenCallSignsNow().empty());
    EXPECT_FALSE(gf_staticRefreshRuns());
    EXPECT_FALSE(gRealTrafficHistoric);
    EXPECT_FALSE(simFailed);
    EXPECT_FALSE(secondPulse);
    EXPECT_FALSE(gFlightPaused);
    EXPECT_EQ(gf_restartDelaySeconds(), 0);
    EXPECT_EQ(MatchesAtStep[2], 77U);
    EXPECT_TRUE(FailedTitles.contains("Broken A320"));
    EXPECT_GE(slotClock, clockBefore);
    EXPECT_LT(slotClock, clockBefore + 6000) << "it goes on from where it was";
    EXPECT_TRUE(AirlineTable.contains("KLM"));
    EXPECT_FALSE(gAllTypes.empty());
    EXPECT_EQ(gWindowState.trafficLamp, FeedLamp::notRunning);
    EXPECT_EQ(gWindowState.weatherLamp, FeedLamp::notRunning);
    {
        const std::lock_guard lock(gTrafficMutex);
        EXPECT_TRUE(gLiveSampleQueue.empty());
        EXPECT_FALSE(gAcceptSamples);
    }
    EXPECT_EQ(gQnh, 1013);
    EXPECT_EQ(gTrafficReader.qnh, 1013);
    EXPECT_EQ(gWindowState.qnh, 1013);
    EXPECT_EQ(gTrafficReader.lastFeedTime, 0.0);
    EXPECT_FALSE(simRunning);
    EXPECT_FALSE(gTrafficReader.stopRequested);
    EXPECT_FALSE(gQnhReader.stopRequested);
    EXPECT_TRUE(gBeforeFirstConnect);
    EXPECT_EQ(gf_exitReason(), ExitReason::notYetSet);
}

/// Holds the clock until it goes, or a failed test would wait for ever for the program's end.
class HeldClock {
public:
    explicit HeldClock(platform::ManualClock& clock) : clock_(clock) { clock_.hold(); }
    ~HeldClock() { clock_.release(); }
    HeldClock(const HeldClock&) = delete;
    HeldClock& operator=(const HeldClock&) = delete;

private:
    platform::ManualClock& clock_;
};

/// Time is the real one: what is tested is how fast the close button is obeyed.
TEST(CloseButtonThreads, endsTheRunLoopWithinTwoSeconds) {
    ProgramRun run;
    Feed feed;
    run.start();
    ASSERT_TRUE(run.willLog("detected at this PC")) << run.log();
    RunningSimulator simulator;
    ASSERT_TRUE(run.willLog("Traffic Reader connected")) << run.log();
    ASSERT_TRUE(eventually([&] {
        feed.traffic(1800000000.5);
        return slotClock > 0;
    }));
    window_system::clickClose();
    EXPECT_TRUE(run.endsWithin(2s));
}

TEST(CloseButtonThreads, endsAPausedFlightWithinTwoSeconds) {
    ProgramRun run;
    Feed feed;
    run.start();
    ASSERT_TRUE(run.willLog("detected at this PC")) << run.log();
    RunningSimulator simulator;
    ASSERT_TRUE(run.willLog("Traffic Reader connected")) << run.log();
    ASSERT_TRUE(eventually([&] {
        feed.traffic(1800000000.5);
        return slotClock > 0;
    }));
    simulator.play(rig::PauseAct{});
    ASSERT_TRUE(run.willLog("Flight not running")) << run.log();
    window_system::clickClose();
    EXPECT_TRUE(run.endsWithin(2s));
}

TEST(CloseButtonThreads, endsThePauseBetweenTheReadersWithinTwoSeconds) {
    ProgramRun run;
    run.start();
    ASSERT_TRUE(run.willLog("detected at this PC")) << run.log();
    RunningSimulator simulator;
    ASSERT_TRUE(run.willLog("QNH Reader connected")) << run.log();
    window_system::clickClose();
    EXPECT_TRUE(run.endsWithin(2s)) << run.log();
    EXPECT_FALSE(run.logs("Traffic Reader connected"));
}

TEST(CloseButtonThreads, endsARestartCountdownAtOnceAndWinsOverTheRestart) {
    ProgramRun run;
    run.start();
    ASSERT_TRUE(run.willLog("detected at this PC")) << run.log();
    gf_stopRun(ExitReason::simConnectError, 9);
    ASSERT_TRUE(run.willLog("Restarting after 9 seconds")) << run.log();
    window_system::clickClose();
    EXPECT_TRUE(run.endsWithin(2s));
    EXPECT_FALSE(run.logs("Restart countdown finished"));
}

TEST(CloseButtonThreads, endsTheWaitAfterANewFlightAtOnce) {
    ProgramRun run;
    run.start();
    ASSERT_TRUE(run.willLog("detected at this PC")) << run.log();
    gf_stopRun(ExitReason::newFlight, 30);
    ASSERT_TRUE(run.willLog("New flight detected")) << run.log();
    window_system::clickClose();
    EXPECT_TRUE(run.endsWithin(2s));
}

TEST(CloseButtonThreads, duringTheWaitForTrafficIsHonouredOnlyAfterThatWait) {
    platform::ManualClock clock(noon);
    ProgramRun run;
    run.start();
    ASSERT_TRUE(run.willLog("detected at this PC"));
    const HeldClock held(clock);
    RunningSimulator simulator;
    ASSERT_TRUE(eventually([&] {
        clock.advance(5ms);
        return run.logs("QNH Reader connected");
    }));
    constexpr auto moreThanThePauseBetweenTheReaders = 3s;
    const platform::SteadyTime weatherReader = platform::steadyNow();
    ASSERT_TRUE(eventually([&] {
        if (platform::steadyNow() - weatherReader < moreThanThePauseBetweenTheReaders) {
            clock.advance(100ms);
        }
        return run.logs("Traffic Reader connected");
    }));
    window_system::clickClose();
    ASSERT_TRUE(run.willLog("Close window button clicked"));
    const platform::SteadyTime clicked = platform::steadyNow();
    ASSERT_TRUE(eventually([&] {
        clock.advance(100ms);
        return run.logs("No traffic in this region?");
    })) << "the wait runs on though the user has closed";
    EXPECT_GE(platform::steadyNow() - clicked, 10s);
    clock.release();
    ASSERT_TRUE(run.ends()) << run.log();
}

TEST(CloseButtonThreads, anErrorOnTheScreenOutlastsAFailingReader) {
    ProgramRun run;
    std::filesystem::remove(run.folder() / "docs");
    run.start();
    ASSERT_TRUE(run.willLog("Exiting: SYSTEM ERROR")) << run.log();
    gf_stopRun(ExitReason::readerError, 15);
    EXPECT_FALSE(run.endsWithin(1200ms)) << run.log();
    EXPECT_NE(shownError(), "");
    EXPECT_FALSE(run.logs("Prepare for a restart"));
    window_system::clickClose();
    EXPECT_TRUE(run.endsWithin(2s));
}

TEST(CloseButtonThreads, aTypedPathEndsTheWaitOfAnErrorAndStartsANewRun) {
    platform::ManualClock clock(noon);
    ProgramRun run;
    std::filesystem::remove(run.folder() / "docs");
    run.start();
    ASSERT_TRUE(run.willLog("Exiting: SYSTEM ERROR")) << run.log();
    std::filesystem::create_directories(run.folder() / "docs");
    gf_stopRun(ExitReason::newSettings, 3);
    ASSERT_TRUE(run.willLog("Restart countdown finished")) << run.log();
    EXPECT_FALSE(run.logs("User closed"));
    EXPECT_TRUE(run.willLog("detected at this PC"));
    EXPECT_EQ(shownError(), "");
}

} // namespace
