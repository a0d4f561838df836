// tests/rig/traffic/traffic_run_test.cpp
// The stand-in client and the program's own link and readers, over the sockets of this machine.
#include "rig/traffic/traffic_run.h"

#include <filesystem>
#include <fmt/format.h>
#include <functional>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <iostream>
#include <sstream>
#include <stdexcept>
#include <thread>

#include "core/exit_reason.h"
#include "core/injection_radius.h"
#include "core/parameters.h"
#include "core/run_flags.h"
#include "feed/feed_reset.h"
#include "feed/qnh_reader.h"
#include "feed/real_traffic_link.h"
#include "feed/sample_queue.h"
#include "feed/traffic_reader.h"
#include "platform/clock.h"
#include "rig/traffic/expected_outcomes.h"
#include "rig/traffic/gzip_text.h"
#include "rig/traffic/recording.h"
#include "tests/support/eventually.h"
#include "tests/support/log_capture.h"
#include "tests/support/test_client.h"
#include "tests/support/traffic_line_builder.h"
#include "window/window_state.h"

namespace rig {
namespace {

using testing::HasSubstr;

constexpr bool local = true;
constexpr LatLon amsterdam{52.31, 4.76};
constexpr const char* stateAtAmsterdam = "Qs121=0;0;0.000000;0;0;0.912982;0.083078\r\n";

const std::filesystem::path startFolder = std::filesystem::current_path();

/// A thread that is over when this goes.
class Running {
public:
    Running(std::function<void()> body, std::function<void()> stop)
        : stop_(std::move(stop)), thread_(std::move(body)) {}
    ~Running() {
        stop_();
        thread_.join();
    }
    Running(const Running&) = delete;
    Running& operator=(const Running&) = delete;

private:
    std::function<void()> stop_;
    std::thread thread_;
};

/// The program's link and its two readers.
class TrafficRunThreads : public testing::Test {
protected:
    TrafficRunThreads() {
        resetParameters();
        resetWindowState();
        gf_resetExitReason();
        gf_resetRunFlags();
        resetFeed();
        gRadiusNm = 40;
        gAcceptSamples = true;
        gLiveSampleQueue.clear();
        gTrafficReader.setUserLatLon(amsterdam);
        startListening("0");
        options.port = listenSocket.boundPort();
        options.recording = "recording.csv";
        options.player.speed = 20;
    }

    ~TrafficRunThreads() override {
        closeRealTrafficLink();
        gAcceptSamples = false;
        gLiveSampleQueue.clear();
        resetFeed();
        resetWindowState();
        gf_resetRunFlags();
        gf_resetExitReason();
    }

    /// The stand-in's whole life, while `program` does the program's part on the test's thread.
    TrafficResult playWhile(const std::function<void()>& program) {
        Running traffic([] { runTrafficReader(0, local); }, [] { gTrafficReader.stopRequested = true; });
        Running weather([] { runQnhReader(0, local); }, [] { gQnhReader.stopRequested = true; });
        EXPECT_TRUE(eventually([] { return gTrafficReader.boundPort != 0 && gQnhReader.boundPort != 0; }));
        options.trafficPort = gTrafficReader.boundPort;
        options.weatherPort = gQnhReader.boundPort;
        TrafficResult result;
        std::thread standIn([&] { result = runTraffic(options, said); });
        program();
        standIn.join();
        EXPECT_TRUE(eventually([&] { return gTrafficReader.datagramCount == result.played.sentLines; }))
            << gTrafficReader.datagramCount << " of " << result.played.sentLines;
        EXPECT_TRUE(eventually([&] { return gQnhReader.datagramCount == result.played.sentWeather; }));
        return result;
    }

    static std::size_t accepted() {
        const std::lock_guard lock(gTrafficMutex);
        return gLiveSampleQueue.size();
    }

    /// What the program makes of the lines of the recording, from the recording alone.
    static OutcomeCounts expectedOf(const Recording& recording) {
        TrafficSurroundings around;
        around.userLatLon = amsterdam;
        return expectedOutcomes(recording, around, 40);
    }

    /// So that no line is lost to a machine that reads slower than the recording is played; not for ever, if one is.
    static void waitForTheReader(std::size_t sent) {
        constexpr std::size_t mayWait = 100;
        for (int looks = 0; looks < 1000 && gTrafficReader.datagramCount + mayWait < sent; ++looks) {
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        }
    }

    /// Plays the recording to its end, and compares what the program counted with what the recording alone says.
    void expectTheCountsOfTheRecordingAlone() {
        const Recording recording = loadRecording(options.recording);
        const OutcomeCounts expected = expectedOf(recording);
        options.betweenBunches = waitForTheReader;
        const TrafficResult result = playWhile([] {
            ASSERT_TRUE(waitForClient());
            exchangeVersions();
        });
        EXPECT_EQ(result.played.sentLines + result.played.sentWeather, recording.rows.size());
        EXPECT_EQ(result.failedSends, 0u);
        EXPECT_EQ(gTrafficReader.lineCounter.counts(), expected)
            << "counted: " << textOf(gTrafficReader.lineCounter.counts()) << "\nexpected: " << textOf(expected);
        EXPECT_EQ(accepted(), expected.at(LineOutcome::accepted));
        std::cout << "    " << textOf(expected) << "\n";
    }

    LogCapture log;
    TrafficOptions options;
    std::ostringstream said;
};

/// Ten seconds, ten lines a second, of which some are not for the program; a weather row each second.
std::string mixedRows() {
    std::string text;
    for (int i = 0; i < 100; ++i) {
        TrafficLineBuilder line;
        line.with(traffic_field::hexid, std::to_string(20000 + i % 10));
        line.with(traffic_field::timestamp, fmt::format("{:.1f}", 5000 + i / 10.0));
        if (i % 10 == 3) {
            line.with(traffic_field::lat, "-52.2");
        }
        if (i % 10 == 5) {
            line.with(traffic_field::gs, "fast");
        }
        if (i % 10 == 7) {
            line.with(traffic_field::type, "ZZZZ");
        }
        text += line.line() + "\n";
        text += i % 10 == 0 ? fmt::format("{{\"QNH\": {}}}\n", 1000 + i / 10) : "";
    }
    return text;
}

TEST_F(TrafficRunThreads, theProgramTakesAndDropsWhatTheRecordingAloneSays) {
    writeText("recording.csv", mixedRows());
    expectTheCountsOfTheRecordingAlone();
    EXPECT_EQ(accepted(), 70u);
    EXPECT_EQ(gQnh, 1009);
    EXPECT_EQ(realTrafficEdition(), "RT prof edition: 10.0.240");
    EXPECT_TRUE(gRealTrafficHistoric);
}

TEST_F(TrafficRunThreads, aRealRecordingIsTakenAndDroppedAsItAloneSays) {
    options.recording = startFolder / "../shared/data/traffic/eham_2022-10-28.rttfc.csv.gz";
    if (!std::filesystem::exists(options.recording)) {
        GTEST_SKIP() << "no recorded lines on this machine";
    }
    options.player.speed = 10; // two hundred lines a second, four hundred at once: a busy machine must keep up
    expectTheCountsOfTheRecordingAlone();
}

TEST_F(TrafficRunThreads, theShippedRecordingsAreTakenAndDroppedAsTheyAloneSay) {
    options.player.speed = 1000;
    for (const char* name : {"quiet_half_hour.csv.gz", "busy_ten_minutes.csv.gz"}) {
        SCOPED_TRACE(name);
        gLiveSampleQueue.clear();
        resetFeed();
        clientConnected = false;
        options.recording = startFolder / "data/recordings" / name;
        expectTheCountsOfTheRecordingAlone();
    }
}

TEST_F(TrafficRunThreads, theLinesAreOfThePresentUnlessTheyAreHistoric) {
    writeText("recording.csv", mixedRows());
    playWhile([] { ASSERT_TRUE(waitForClient()); });
    const double now = std::chrono::duration<double>(std::chrono::system_clock::now().time_since_epoch()).count();
    EXPECT_NEAR(gTrafficReader.lastFeedTime, now, 60);

    clientConnected = false;
    resetFeed();
    options.player.historic = true;
    playWhile([] { ASSERT_TRUE(waitForClient()); });
    EXPECT_EQ(gTrafficReader.lastFeedTime, 5009.9);
}

TEST_F(TrafficRunThreads, withARadiusNothingComesBeforeTheUsersPositionIsTold) {
    writeText("recording.csv", mixedRows());
    options.player.radiusNm = 40;
    options.delaySeconds = 1; // or the recording were half over before a busy machine has told the position
    const TrafficResult result = playWhile([] {
        ASSERT_TRUE(waitForClient());
        EXPECT_TRUE(sendDataPacket(stateAtAmsterdam));
    });
    EXPECT_EQ(result.heard.userStates, 1u);
    EXPECT_GT(result.played.sentLines, 0u);
    EXPECT_GE(result.played.beyondRadius, 10u) << "at least those on the other side of the equator";
}

TEST_F(TrafficRunThreads, whatTheProgramSaysIsCountedAndCheckedToTheEnd) {
    writeText("recording.csv", mixedRows());
    options.endsWithGoodbye = true;
    options.player.speed = 0.1;
    const TrafficResult result = [this] {
        TrafficResult got;
        std::thread standIn([&] { got = runTraffic(options, said); });
        EXPECT_TRUE(waitForClient());
        exchangeVersions();
        sendDataPacket(stateAtAmsterdam);
        sendDataPacket("Qs123=5000\r\n");
        sendDataPacket("Qs121=oops\r\n");
        sayGoodbye();
        standIn.join();
        return got;
    }();
    EXPECT_EQ(result.heard.versionRequests, 1u);
    EXPECT_EQ(result.heard.userStates, 1u);
    EXPECT_EQ(result.heard.times, 1u);
    EXPECT_EQ(result.heard.malformed, 1u);
    EXPECT_EQ(result.heard.goodbyes, 1u);
    EXPECT_THAT(said.str(), HasSubstr("malformed message, 1 fields instead of 7: Qs121=oops\n"));
    EXPECT_THAT(said.str(), HasSubstr("heard: version requests 1, user states 1, times 1, goodbyes 1, malformed 1\n"));
}

TEST_F(TrafficRunThreads, itComesBackAfterALoss) {
    writeText("recording.csv", mixedRows());
    options.endsWithGoodbye = true;
    options.player.speed = 0.1;
    TrafficResult result;
    std::thread standIn([&] { result = runTraffic(options, said); });
    ASSERT_TRUE(waitForClient());
    clientConnected = false;
    clientSocket.close();
    EXPECT_TRUE(waitForClient());
    sayGoodbye();
    standIn.join();
    EXPECT_EQ(result.connects, 2u);
    EXPECT_EQ(result.losses, 1u);
}

TEST_F(TrafficRunThreads, withoutALinkItPlaysAtOnce) {
    writeText("recording.csv", mixedRows());
    options.link = false;
    const TrafficResult result = playWhile([] {});
    EXPECT_EQ(result.connects, 0u);
    EXPECT_EQ(result.played.sentLines, 100u);
}

double firstRowIn(const std::string& said) {
    static constexpr std::string_view words = "first row played at ";
    const std::size_t at = said.find(words);
    return at == std::string::npos ? 0 : std::stod(said.substr(at + words.size()));
}

TEST_F(TrafficRunThreads, itTellsWhenTheFirstRowIsPlayed) {
    writeText("recording.csv", mixedRows());
    options.link = false;
    const auto wall = [] { return std::chrono::duration<double>(platform::wallNow().time_since_epoch()).count(); };
    const double before = wall();
    playWhile([] {});
    const double first = firstRowIn(said.str());
    EXPECT_GE(first, before - 0.001);
    EXPECT_LE(first, wall());

    said.str("");
    resetFeed();
    options.player.offsetSeconds = 5;
    options.player.speed = 10;
    playWhile([] {});
    // Half a second of real time before the first that was played.
    EXPECT_GE(firstRowIn(said.str()), first - 0.501);
    EXPECT_LE(firstRowIn(said.str()), wall() - 0.5);
}

TEST_F(TrafficRunThreads, withADelayTheFirstRowWaitsFromTheConnectOn) {
    writeText("recording.csv", mixedRows());
    options.delaySeconds = 0.5;
    std::chrono::steady_clock::time_point connected;
    std::chrono::steady_clock::duration wait{};
    playWhile([&] {
        ASSERT_TRUE(waitForClient());
        connected = std::chrono::steady_clock::now();
        EXPECT_TRUE(eventually([] { return gTrafficReader.datagramCount > 0; }));
        wait = std::chrono::steady_clock::now() - connected;
    });
    // The program may take the connection up to a tenth of a second late.
    EXPECT_GE(wait, std::chrono::milliseconds(350));
}

TEST_F(TrafficRunThreads, aRecordingThatCannotBeReadIsAnError) {
    EXPECT_THROW(runTraffic(options, said), std::runtime_error);
}

} // namespace
} // namespace rig
