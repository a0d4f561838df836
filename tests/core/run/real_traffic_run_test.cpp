// Whole runs on a PC that has RealTraffic: a simulated world in this process, and the client's two sides over real
// sockets.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <mutex>
#include <sstream>
#include <string>
#include <string_view>
#include <vector>

#include <fmt/format.h>

#include "core/run/start_run.h"
#include "core/slot_clock.h"
#include "feed/line_outcome.h"
#include "feed/qnh_reader.h"
#include "feed/real_traffic_link.h"
#include "feed/sample_queue.h"
#include "feed/traffic_reader.h"
#include "platform/clock.h"
#include "platform/files.h"
#include "platform/sockets.h"
#include "platform/window_system.h"
#include "rig/traffic/expected_outcomes.h"
#include "rig/traffic/gzip_text.h"
#include "rig/traffic/server_messages.h"
#include "rig/traffic/traffic_run.h"
#include "sim/user_state.h"
#include "tests/core/run/running_simulator.h"
#include "tests/support/eventually.h"
#include "tests/support/program_run.h"
#include "tests/support/test_client.h"
#include "tests/support/traffic_line_builder.h"
#include "window/window_state.h"

using namespace std::chrono_literals;
using testing::EndsWith;

namespace {

constexpr const char* versionRequest = "Qs999=version\r\n";
constexpr const char* professionalReply = R"({ "version":"10.0.240","level": 2 })";
constexpr const char* waiting = "Waiting for RealTraffic to connect to Tarnwing_P3D ...";

/// A line of an aircraft at the user's place, high above.
TrafficLineBuilder lineAt(const LatLon& place) {
    TrafficLineBuilder line;
    line.with(traffic_field::lat, fmt::format("{:.5f}", place.lat));
    line.with(traffic_field::lon, fmt::format("{:.5f}", place.lon));
    return line;
}

class RealTrafficRunThreads : public testing::Test {
protected:
    RealTrafficRunThreads() {
        writeFile(run.folder() / "roaming" / "InsideSystems" / "RealTraffic.jar", "");
        listenOn(0);
    }

    void listenOn(std::uint16_t port) {
        run.setParameters({{"SIM_INSTALL_PATH", platform::utf8FromPath(run.folder() / "Sim v5")},
                           {"PORT_NUMBER", std::to_string(port)}});
    }

    void waitForTheWait() { ASSERT_TRUE(run.willLog(waiting)) << run.log(); }

    /// The client connects and tells its version.
    void meet() {
        waitForTheWait();
        client.connect(listenSocket.boundPort());
        ASSERT_EQ(client.read(std::string_view(versionRequest).size()), versionRequest);
        client.send(professionalReply);
        ASSERT_TRUE(run.willLog("RealTraffic connected")) << run.log();
    }

    /// The same while time runs by the program's own sleeps: held back, or the ten seconds for the reply were over at
    /// once.
    void meet(platform::ManualClock& clock) {
        waitForTheWait();
        clock.hold();
        client.connect(listenSocket.boundPort());
        client.send(professionalReply);
        EXPECT_TRUE(eventually([&] {
            clock.advance(1ms);
            return run.logs("RealTraffic connected");
        })) << run.log();
        clock.release();
        ASSERT_EQ(client.read(std::string_view(versionRequest).size()), versionRequest);
    }

    /// The run loop begins with the first line, for which it is too early.
    void sendLine() {
        ASSERT_TRUE(run.willLog("Traffic Reader connected")) << run.log();
        platform::DatagramSocket socket;
        ASSERT_EQ(socket.create(), 0);
        socket.sendToThisMachine(trafficPort, TrafficLineBuilder().line());
        ASSERT_TRUE(eventually([] { return !gTrafficReader.lineCounter.counts().empty(); }));
    }

    void startTheLoop() {
        sendLine();
        ASSERT_TRUE(eventually([] { return slotClock > 10; })) << run.log();
    }

    ProgramRun run;
    TestClient client;
};

TEST_F(RealTrafficRunThreads, theCloseButtonEndsTheWaitForTheClientWithinTwoSeconds) {
    run.start();
    const RunningSimulator simulator;
    waitForTheWait();
    window_system::clickClose();
    EXPECT_TRUE(run.endsWithin(2s)) << run.log();
    EXPECT_TRUE(run.logs("Exiting: USER CLOSED SIM"));
    EXPECT_FALSE(listenSocket.valid());
}

TEST_F(RealTrafficRunThreads, theCloseButtonEndsTheWaitForTheReplyWithinTwoSeconds) {
    run.start();
    const RunningSimulator simulator;
    waitForTheWait();
    client.connect(listenSocket.boundPort());
    ASSERT_EQ(client.read(std::string_view(versionRequest).size()), versionRequest);
    window_system::clickClose();
    EXPECT_TRUE(run.endsWithin(2s)) << run.log();
    EXPECT_EQ(client.readToTheEnd(), "exit\r\n");
}

TEST_F(RealTrafficRunThreads, theCloseButtonEndsTheWaitForTheReturnWithinTwoSeconds) {
    run.start();
    const RunningSimulator simulator;
    meet();
    client.close();
    ASSERT_TRUE(run.willLog("RealTraffic gone? Wait for RealTraffic to re-connect ...")) << run.log();
    sendLine();
    // The first slot of the loop waits for the return.
    ASSERT_TRUE(eventually([] {
        const std::lock_guard lock(gTrafficMutex);
        return gAcceptSamples;
    }));
    window_system::clickClose();
    EXPECT_TRUE(run.endsWithin(2s)) << run.log();
    EXPECT_FALSE(run.logs("re-connected"));
}

TEST_F(RealTrafficRunThreads, aLossIsNoticedInFlightAndTheRunGoesOnWithTheReturn) {
    platform::ManualClock clock(platform::WallTime{std::chrono::hours(24 * 20000)});
    run.start();
    const RunningSimulator simulator;
    meet(clock);
    startTheLoop();
    client.close();
    ASSERT_TRUE(run.willLog("RealTraffic gone? Wait for RealTraffic to re-connect ...")) << run.log();
    EXPECT_FALSE(gWindowState.realTrafficLit);
    const int lost = slotClock;
    client.connect(listenSocket.boundPort());
    ASSERT_TRUE(run.willLog("RealTraffic re-connected")) << run.log();
    EXPECT_TRUE(eventually([&] { return slotClock > lost + 10; })) << "the run goes on";
    EXPECT_EQ(client.read(3), "Qs1") << "nobody is asked for his version again";
    EXPECT_TRUE(gWindowState.realTrafficLit);
    window_system::clickClose();
    EXPECT_TRUE(run.ends()) << run.log();
}

TEST_F(RealTrafficRunThreads, aTakenPortIsTheErrorLineThatNamesItUntilTheUserCloses) {
    platform::StreamSocket occupant;
    ASSERT_EQ(occupant.create(), 0);
    ASSERT_EQ(occupant.bind(platform::BindTo::allAddresses, 0), 0);
    ASSERT_EQ(occupant.listen(), 0);
    listenOn(occupant.boundPort());
    run.start();
    const RunningSimulator simulator;
    ASSERT_TRUE(run.willLog("Exiting: SYSTEM ERROR")) << run.log();
    EXPECT_EQ(shownError(),
              fmt::format("Bind failed at port {} with error 10048 Address already in use", occupant.boundPort()));
    EXPECT_FALSE(run.logs(waiting));
    EXPECT_FALSE(run.quitCode());
    window_system::clickClose();
    EXPECT_TRUE(run.endsWithin(2s)) << run.log();
}

TEST_F(RealTrafficRunThreads, whatTheClientIsToldIsWellFormedInFlightAndInAPauseAndEndsWithTheGoodbye) {
    platform::ManualClock clock(platform::WallTime{std::chrono::hours(24 * 20000)});
    run.start();
    RunningSimulator simulator;
    meet(clock);
    startTheLoop();
    std::string told;
    EXPECT_TRUE(eventually([&] {
        told += client.read(500);
        return told.find("Qs123=") != std::string::npos;
    }));
    simulator.play(rig::PauseAct{});
    ASSERT_TRUE(run.willLog("Flight not running")) << run.log();
    told += client.read(500);
    window_system::clickClose();
    ASSERT_TRUE(run.ends()) << run.log();
    told += client.readToTheEnd();

    rig::ServerMessages messages;
    for (const rig::ServerMessage& message : messages.take(told)) {
        EXPECT_NE(message.kind, rig::ServerMessage::Kind::malformed) << message.fault << ": " << message.text;
    }
    EXPECT_EQ(messages.counts().versionRequests, 0u) << "it was asked for at the meeting";
    EXPECT_GE(messages.counts().userStates, 10u);
    EXPECT_GE(messages.counts().times, 1u);
    EXPECT_EQ(messages.counts().goodbyes, 1u);
    EXPECT_THAT(told, EndsWith("\r\nexit\r\n"));
}

/// A hundred lines of ten seconds, of which some are not for the program.
std::string mixedRows(const LatLon& place) {
    std::string text;
    for (int i = 0; i < 100; ++i) {
        TrafficLineBuilder line = lineAt(place);
        line.with(traffic_field::hexid, std::to_string(20000 + i % 10));
        line.with(traffic_field::timestamp, fmt::format("{:.1f}", 5000 + i / 10.0));
        if (i % 10 == 3) {
            line.with(traffic_field::lat, fmt::format("{:.5f}", -place.lat));
        }
        if (i % 10 == 5) {
            line.with(traffic_field::gs, "fast");
        }
        if (i % 10 == 7) {
            line.with(traffic_field::altitude, "0");
        }
        text += line.line() + "\n";
        text += i % 10 == 0 ? fmt::format("{{\"QNH\": {}}}\n", 1000 + i / 10) : "";
    }
    return text;
}

TEST_F(RealTrafficRunThreads, theLogCountsTheLinesAsTheRecordingAloneSays) {
    platform::ManualClock clock(platform::WallTime{std::chrono::hours(24 * 20000)});
    run.start();
    const RunningSimulator simulator;
    meet(clock);
    startTheLoop();
    const LatLon user = positionOf(userStateNow());
    const OutcomeCounts before = gTrafficReader.lineCounter.counts();
    rig::writeText("recording.csv", mixedRows(user));
    rig::TrafficOptions options;
    options.recording = "recording.csv";
    options.link = false;
    std::ostringstream said;
    const rig::TrafficResult result = rig::runTraffic(options, said);
    EXPECT_EQ(result.played.sentLines, 100u);
    EXPECT_TRUE(eventually([] { return gQnh == 1009; }));
    EXPECT_TRUE(eventually([&] {
        std::size_t lines = 0;
        for (const auto& [outcome, count] : gTrafficReader.lineCounter.counts()) {
            lines += count - (before.contains(outcome) ? before.at(outcome) : 0);
        }
        return lines == 100;
    })) << textOf(gTrafficReader.lineCounter.counts());
    window_system::clickClose();
    ASSERT_TRUE(run.ends()) << run.log();

    TrafficSurroundings around;
    around.userLatLon = user;
    OutcomeCounts expected = rig::expectedOutcomes(rig::loadRecording("recording.csv"), around, 40);
    EXPECT_EQ(expected[LineOutcome::accepted], 70u);
    for (const auto& [outcome, count] : before) {
        expected[outcome] += count;
    }
    EXPECT_EQ(textOf(rig::outcomesFromLog(run.log())), textOf(expected));
}

} // namespace
