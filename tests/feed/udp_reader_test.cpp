// tests/feed/udp_reader_test.cpp
#include "feed/udp_reader.h"

#include <chrono>
#include <condition_variable>
#include <functional>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <mutex>
#include <optional>
#include <stdexcept>
#include <thread>
#include <utility>
#include <vector>

#include "core/exit_reason.h"
#include "core/injection_radius.h"
#include "core/parameters.h"
#include "feed/feed_reset.h"
#include "feed/qnh_reader.h"
#include "feed/sample_queue.h"
#include "feed/traffic_reader.h"
#include "tests/support/eventually.h"
#include "tests/support/log_capture.h"
#include "tests/support/traffic_line_builder.h"

namespace {

using testing::AnyOf;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Not;
using testing::StartsWith;

constexpr bool local = true;
constexpr bool overTheNetwork = false;

/// Of an address of this machine that is not the usual 127.0.0.1.
constexpr std::uint8_t otherAddress = 2;

/// Sends to a port of this machine.
class Sender {
public:
    Sender() {
        platform::startSocketLibrary();
        EXPECT_EQ(socket_.create(), 0);
    }
    ~Sender() {
        socket_.shutDownAndClose();
        platform::cleanUpSocketLibrary();
    }

    void send(const UdpReader& reader, std::string_view bytes, std::uint8_t lastByte = 1) {
        sendTo(reader.boundPort, bytes, lastByte);
    }

    void sendTo(std::uint16_t port, std::string_view bytes, std::uint8_t lastByte = 1) {
        EXPECT_EQ(socket_.sendToThisMachine(port, bytes, lastByte).error, 0);
    }

private:
    platform::DatagramSocket socket_;
};

/// A reader's body on a thread of its own, which is over when this goes, however the test ends.
class RunningReader {
public:
    RunningReader(UdpReader& reader, std::function<void()> body) : reader_(reader), thread_(std::move(body)) {}
    ~RunningReader() { stop(); }
    RunningReader(const RunningReader&) = delete;
    RunningReader& operator=(const RunningReader&) = delete;

    void stop() {
        reader_.stopRequested = true;
        if (thread_.joinable()) {
            thread_.join();
        }
    }

private:
    UdpReader& reader_;
    std::thread thread_;
};

/// Keeps what it is given.
class ProbeReader : public UdpReader {
public:
    void onDatagram() override {
        const std::lock_guard lock(mutex_);
        received_.emplace_back(datagram);
        isTerminated_ = isTerminated_ && datagram.data()[datagram.size()] == '\0';
        changed_.notify_all();
        if (onDatagramDoes) {
            onDatagramDoes(*this);
        }
    }

    void onStopped() override { ++stopped; }

    std::vector<std::string> waitForDatagrams(std::size_t count) {
        std::unique_lock lock(mutex_);
        changed_.wait_for(lock, std::chrono::seconds(60), [&] { return received_.size() >= count; });
        return received_;
    }

    bool allWereTerminated() {
        const std::lock_guard lock(mutex_);
        return isTerminated_;
    }

    using UdpReader::resetReader;

    std::atomic<int> stopped{0};
    void (*onDatagramDoes)(UdpReader&) = nullptr;

private:
    std::mutex mutex_;
    std::condition_variable changed_;
    std::vector<std::string> received_;
    bool isTerminated_ = true;
};

/// A probe that receives on a thread of its own until the end of the test.
class UdpReaderThreads : public testing::Test {
protected:
    ~UdpReaderThreads() override {
        stop();
        gf_resetExitReason();
    }

    void start(bool isLocal) {
        probe.open(0, isLocal);
        receiveOnAThread(isLocal);
    }

    void receiveOnAThread(bool isLocal) {
        running_.emplace(probe, [this, isLocal] { probe.receive(isLocal); });
    }

    void stop() { running_.reset(); }

    void send(std::string_view bytes, std::uint8_t lastByte = 1) { sender.send(probe, bytes, lastByte); }

    LogCapture log;
    Sender sender;
    ProbeReader probe;

private:
    std::optional<RunningReader> running_;
};

TEST_F(UdpReaderThreads, aDatagramIsDeliveredAndCounted) {
    start(local);
    send("first");
    send("second");
    EXPECT_THAT(probe.waitForDatagrams(2), ElementsAre("first", "second"));
    EXPECT_EQ(probe.datagramCount, 2u);
    EXPECT_TRUE(probe.allWereTerminated());
}

/// As the feed sends them, before the reader gets its turn.
TEST_F(UdpReaderThreads, aBurstThatComesWhileItIsBusyIsNotLost) {
    constexpr std::size_t burst = 300;
    probe.open(0, local);
    for (std::size_t i = 0; i < burst; ++i) {
        send(std::string(300, static_cast<char>('a' + i % 26)));
    }
    receiveOnAThread(local);
    EXPECT_EQ(probe.waitForDatagrams(burst).size(), burst);
}

TEST_F(UdpReaderThreads, aRepetitionOverTheNetworkIsDropped) {
    start(overTheNetwork);
    for (const char* bytes : {"a", "a", "b", "a", "a", "ab", "end"}) {
        send(bytes);
    }
    EXPECT_THAT(probe.waitForDatagrams(5), ElementsAre("a", "b", "a", "ab", "end"));
    EXPECT_EQ(probe.datagramCount, 5u);
}

TEST_F(UdpReaderThreads, aRepetitionFromThisMachineIsDelivered) {
    start(local);
    for (const char* bytes : {"a", "a", "b"}) {
        send(bytes);
    }
    EXPECT_THAT(probe.waitForDatagrams(3), ElementsAre("a", "a", "b"));
}

TEST_F(UdpReaderThreads, aRepetitionIsKnownByAllItsBytes) {
    start(overTheNetwork);
    using namespace std::string_view_literals;
    send("a\0b"sv);
    send("a\0c"sv);
    EXPECT_EQ(probe.waitForDatagrams(2).size(), 2u);
}

TEST_F(UdpReaderThreads, afterAResetNothingIsARepetition) {
    start(overTheNetwork);
    send("a");
    probe.waitForDatagrams(1);
    probe.resetReader();
    EXPECT_EQ(probe.datagramCount, 0u);
    send("a");
    EXPECT_THAT(probe.waitForDatagrams(2), ElementsAre("a", "a"));
    EXPECT_EQ(probe.datagramCount, 1u);
}

TEST_F(UdpReaderThreads, aDatagramOfNoBytesDoesNothing) {
    start(local);
    send("");
    send("next");
    EXPECT_THAT(probe.waitForDatagrams(1), ElementsAre("next"));
    EXPECT_EQ(probe.datagramCount, 1u);
    EXPECT_THAT(log.lines(), IsEmpty());
}

TEST_F(UdpReaderThreads, theLongestLineHasOneByteLessThanTheBuffer) {
    start(local);
    send(std::string(16383, 'x'));
    EXPECT_THAT(probe.waitForDatagrams(1), ElementsAre(std::string(16383, 'x')));
    EXPECT_TRUE(probe.allWereTerminated());
}

TEST_F(UdpReaderThreads, aLongerDatagramIsLostAndTheReaderGoesOn) {
    start(local);
    send(std::string(16384, 'x'));
    send(std::string(16385, 'x'));
    send(std::string(60000, 'x'));
    send("next");
    EXPECT_THAT(probe.waitForDatagrams(1), ElementsAre("next"));
    EXPECT_EQ(probe.datagramCount, 1u);
    EXPECT_THAT(log.lines(), ElementsAre("buffer overrun: 16384 bytes", "buffer overrun: 16384 bytes",
                                         "buffer overrun: 16384 bytes"));
}

TEST_F(UdpReaderThreads, anOverrunIsNoNewsWhileTheRunStops) {
    gf_stopRun(ExitReason::newSettings, 0);
    start(local);
    send(std::string(16384, 'x'));
    send("next");
    probe.waitForDatagrams(1);
    EXPECT_THAT(log.lines(), IsEmpty());
}

TEST_F(UdpReaderThreads, stopsWithinItsTimeOutWithoutAnyDatagram) {
    start(local);
    send("one");
    probe.waitForDatagrams(1);
    const auto begin = std::chrono::steady_clock::now();
    stop();
    EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::milliseconds(1900));
    EXPECT_EQ(probe.stopped, 1);
    EXPECT_EQ(probe.boundPort, 0);
}

TEST_F(UdpReaderThreads, aDatagramThatComesAfterTheStopIsNotDelivered) {
    probe.open(0, local);
    probe.stopRequested = true;
    send("late");
    probe.receive(local);
    EXPECT_EQ(probe.datagramCount, 0u);
    EXPECT_EQ(probe.stopped, 1);
}

TEST_F(UdpReaderThreads, aDatagramThatEndsTheWaitAfterTheStopIsNotDelivered) {
    // In some rounds the reader sees the stop before it waits; not in all of them.
    for (int round = 0; round < 20; ++round) {
        probe.resetReader();
        start(local);
        const std::uint16_t port = probe.boundPort;
        sender.sendTo(port, "one");
        probe.waitForDatagrams(static_cast<std::size_t>(round) + 1);
        probe.stopRequested = true;
        sender.sendTo(port, "late");
        stop();
        EXPECT_EQ(probe.datagramCount, 1u);
        EXPECT_EQ(probe.stopped, round + 1);
    }
}

TEST_F(UdpReaderThreads, overTheNetworkAllAddressesAreListenedOn) {
    start(overTheNetwork);
    send("elsewhere", otherAddress);
    send("here");
    EXPECT_THAT(probe.waitForDatagrams(2), ElementsAre("elsewhere", "here"));
}

TEST_F(UdpReaderThreads, withALocalSenderOnlyTheUsualAddressIsListenedOn) {
    start(local);
    send("elsewhere", otherAddress);
    send("here");
    EXPECT_THAT(probe.waitForDatagrams(1), ElementsAre("here"));
}

/// Machines differ in what they call a socket that is none.
const auto isErrorOfNoSocket =
    AnyOf("receive error: 10009 Bad file number", "receive error: 10038 Socket operation on non-socket");

/// What receive throws, or nothing.
std::string receiveErrorOf(UdpReader& reader) {
    try {
        reader.receive(local);
    } catch (const std::runtime_error& error) {
        return error.what();
    }
    return "";
}

TEST_F(UdpReaderThreads, aFailedReceiveClosesAndThrows) {
    probe.open(0, local);
    probe.onDatagramDoes = [](UdpReader& reader) { reader.close(); };
    send("one");
    EXPECT_THAT(receiveErrorOf(probe), isErrorOfNoSocket);
    EXPECT_EQ(probe.datagramCount, 1u);
    EXPECT_EQ(probe.stopped, 1);
    EXPECT_EQ(probe.boundPort, 0);
}

TEST_F(UdpReaderThreads, aSocketThatIsGoneIsNoErrorAfterTheStop) {
    probe.open(0, local);
    probe.onDatagramDoes = [](UdpReader& reader) {
        reader.stopRequested = true;
        reader.close();
    };
    send("one");
    EXPECT_EQ(receiveErrorOf(probe), "");
    EXPECT_EQ(probe.stopped, 1);
    EXPECT_EQ(probe.boundPort, 0);
}

TEST_F(UdpReaderThreads, withoutASocketReceivingFailsAtOnce) {
    EXPECT_THAT(receiveErrorOf(probe), isErrorOfNoSocket);
    EXPECT_EQ(probe.stopped, 1);
}

/// The whole thread bodies, with the readers of the program.
class ReaderThreads : public testing::Test {
protected:
    ReaderThreads() {
        resetParameters();
        resetWindowState();
        gf_resetExitReason();
        resetFeed();
        gRadiusNm = 40;
        gAcceptSamples = true;
        gTrafficReader.setUserLatLon({52.31, 4.76});
    }

    ~ReaderThreads() override {
        resetWindowState();
        gf_resetExitReason();
        resetFeed();
        gAcceptSamples = false;
        gLiveSampleQueue.clear();
    }

    static std::size_t queueLength() {
        const std::lock_guard lock(gTrafficMutex);
        return gLiveSampleQueue.size();
    }

    LogCapture log;
    Sender sender;
};

TEST_F(ReaderThreads, theTrafficReaderLightsBothLampsReceivesAndPutsThemOut) {
    RunningReader running(gTrafficReader, [] { runTrafficReader(0, local); });
    ASSERT_TRUE(eventually([&] { return log.contains("Traffic Reader connected"); }));
    EXPECT_EQ(gWindowState.trafficLamp, FeedLamp::flowing);
    EXPECT_EQ(gWindowState.weatherLamp, FeedLamp::flowing);

    sender.send(gTrafficReader, TrafficLineBuilder().line());
    EXPECT_TRUE(eventually([] { return queueLength() == 1; }));
    EXPECT_EQ(gTrafficReader.datagramCount, 1u);
    EXPECT_EQ(gTrafficReader.lastFeedTime, 1666985865.8);

    running.stop();
    EXPECT_EQ(gWindowState.trafficLamp, FeedLamp::notRunning);
    EXPECT_EQ(gWindowState.weatherLamp, FeedLamp::notRunning);
    EXPECT_THAT(log.lines(),
                ElementsAre("Traffic Reader connected", "Traffic Reader has stopped", "Traffic Reader disconnected"));
    EXPECT_FALSE(gf_isStopping());
}

TEST_F(ReaderThreads, theQnhReaderTouchesTheWeatherLampAlone) {
    RunningReader running(gQnhReader, [] { runQnhReader(0, overTheNetwork); });
    ASSERT_TRUE(eventually([&] { return log.contains("QNH Reader connected"); }));
    EXPECT_EQ(gWindowState.trafficLamp, FeedLamp::notRunning);
    EXPECT_EQ(gWindowState.weatherLamp, FeedLamp::flowing);

    sender.send(gQnhReader, R"({"ICAO": "EHAM", "QNH": 1019.7})");
    EXPECT_TRUE(eventually([] { return gQnh == 1020; }));
    gWindowState.trafficLamp = FeedLamp::flowing;

    running.stop();
    EXPECT_EQ(gWindowState.trafficLamp, FeedLamp::flowing);
    EXPECT_EQ(gWindowState.weatherLamp, FeedLamp::notRunning);
    EXPECT_THAT(log.lines(), ElementsAre("QNH Reader connected", "QNH Reader has stopped", "QNH Reader disconnected"));
}

TEST_F(ReaderThreads, aRunAfterTheResetUsesTheSameReaderAgain) {
    for (int run = 0; run < 2; ++run) {
        resetFeed();
        RunningReader running(gTrafficReader, [] { runTrafficReader(0, overTheNetwork); });
        ASSERT_TRUE(eventually([] { return gTrafficReader.boundPort != 0; }));
        sender.send(gTrafficReader, TrafficLineBuilder().line());
        EXPECT_TRUE(eventually([run] { return queueLength() == static_cast<std::size_t>(run) + 1; })) << run;
        EXPECT_EQ(gTrafficReader.datagramCount, 1u);
    }
}

TEST_F(ReaderThreads, theLinesOfARunAreCountedByWhatBecameOfThemAlsoAcrossALossOfTheLink) {
    for (int run = 0; run < 2; ++run) {
        resetFeed();
        RunningReader running(gTrafficReader, [] { runTrafficReader(0, local); });
        ASSERT_TRUE(eventually([] { return gTrafficReader.boundPort != 0; }));
        sender.send(gTrafficReader, TrafficLineBuilder().line());
        sender.send(gTrafficReader, "rubbish");
        EXPECT_TRUE(eventually([] { return gTrafficReader.datagramCount == 2; }));
        resetFeed();
        sender.send(gTrafficReader, TrafficLineBuilder().line());
        EXPECT_TRUE(eventually([] {
            return gTrafficReader.lineCounter.counts() ==
                   OutcomeCounts{{LineOutcome::accepted, 2}, {LineOutcome::doesNotParse, 1}};
        })) << run
            << ": " << textOf(gTrafficReader.lineCounter.counts());
    }
}

TEST_F(ReaderThreads, aTakenPortStopsTheRun) {
    platform::DatagramSocket occupant;
    ASSERT_EQ(occupant.create(), 0);
    ASSERT_EQ(occupant.bind(platform::BindTo::thisMachine, 0), 0);

    runTrafficReader(occupant.boundPort(), local);

    const std::string text = "The Traffic Reader has stopped with error: bind to stream socket failed, error: "
                             "10048 Address already in use";
    EXPECT_EQ(shownMessage(), text);
    EXPECT_THAT(log.lines(), ElementsAre(text, "Traffic Reader disconnected"));
    EXPECT_EQ(gf_exitReason(), ExitReason::readerError);
    EXPECT_EQ(gf_restartDelaySeconds(), 15);
    EXPECT_TRUE(gStopRun);
    EXPECT_EQ(gWindowState.trafficLamp, FeedLamp::notRunning);
    EXPECT_EQ(gTrafficReader.boundPort, 0);
}

TEST_F(ReaderThreads, whileTheRunStopsAnErrorIsNoNews) {
    platform::DatagramSocket occupant;
    ASSERT_EQ(occupant.create(), 0);
    ASSERT_EQ(occupant.bind(platform::BindTo::thisMachine, 0), 0);
    gf_userCloses();

    runQnhReader(occupant.boundPort(), local);

    EXPECT_EQ(shownMessage(), "");
    EXPECT_THAT(log.lines(), ElementsAre("QNH Reader disconnected"));
    EXPECT_EQ(gf_exitReason(), ExitReason::userClosed);
}

/// Runs a probe whose onDatagram does this, until it ends by itself.
void runProbeThat(void (*does)(UdpReader&), Sender& sender) {
    ProbeReader probe;
    probe.onDatagramDoes = does;
    RunningReader running(probe, [&probe] { runReader(probe, "Probe", {&gWindowState.trafficLamp}, 0, local); });
    ASSERT_TRUE(eventually([&probe] { return probe.boundPort != 0; }));
    sender.send(probe, "x");
    EXPECT_TRUE(eventually([&probe] { return probe.stopped == 1; }));
}

TEST_F(ReaderThreads, anExceptionEndsTheReaderAndTheRun) {
    runProbeThat([](UdpReader&) { throw std::runtime_error("no more room"); }, sender);
    EXPECT_EQ(shownMessage(), "The Probe has stopped with error: no more room");
    EXPECT_EQ(gf_exitReason(), ExitReason::readerError);
    EXPECT_EQ(gWindowState.trafficLamp, FeedLamp::notRunning);
    EXPECT_EQ(log.lines().back(), "Probe disconnected");
}

TEST_F(ReaderThreads, anExceptionOfNoKnownTypeEndsTheReaderAndTheRun) {
    runProbeThat([](UdpReader&) { throw 7; }, sender);
    EXPECT_EQ(shownMessage(), "The Probe has stopped with error: Unknown exception");
    EXPECT_EQ(gf_exitReason(), ExitReason::readerError);
    EXPECT_EQ(gf_restartDelaySeconds(), 15);
}

TEST_F(ReaderThreads, aFailedReceiveEndsTheReaderAndTheRun) {
    runProbeThat([](UdpReader& reader) { reader.close(); }, sender);
    EXPECT_THAT(shownMessage(), AnyOf("The Probe has stopped with error: receive error: 10009 Bad file number",
                                      "The Probe has stopped with error: receive error: 10038 Socket operation on "
                                      "non-socket"));
    EXPECT_EQ(gf_exitReason(), ExitReason::readerError);
    EXPECT_EQ(gWindowState.trafficLamp, FeedLamp::notRunning);
}

TEST_F(ReaderThreads, theRunThreadMayChangeTheSurroundingsWhileLinesCome) {
    gTrafficReader.collectCallSigns = true;
    RunningReader running(gTrafficReader, [] { runTrafficReader(0, local); });
    ASSERT_TRUE(eventually([] { return gTrafficReader.boundPort != 0; }));
    const std::string line = TrafficLineBuilder().line();
    for (int round = 0; round < 200; ++round) {
        sender.send(gTrafficReader, line);
        gTrafficReader.setUserLatLon({52.31, 4.76 + round * 1e-4});
        gTrafficReader.setReferenceElevation(round);
        gTrafficReader.setParkingAirport(ParkingAirport{{52.31, 4.76}, -11});
        gTrafficReader.seenCallSignsNow();
        gTrafficReader.clearSeenCallSigns();
        gTrafficReader.clearReferenceElevation();
        gTrafficReader.setParkingAirport(std::nullopt);
    }
    EXPECT_TRUE(eventually([] { return queueLength() >= 1; }));
    running.stop();
    gTrafficReader.collectCallSigns = false;
    EXPECT_THAT(log.lines(), Not(testing::Contains(StartsWith("exception"))));
}

} // namespace
