// The engine and the simulated world in one virtual time.
#include "rig/replay/replay.h"

#include <gmock/gmock.h>

#include <sstream>

#include "feed/qnh_reader.h"
#include "liveries/reference_data.h"
#include "liveries/reference_tables.h"
#include "rig/traffic/player.h"
#include "rig/traffic/recording.h"
#include "rig/world/trace_writer.h"
#include "sim/user_state.h"
#include "tests/rig/replay/replay_folder.h"
#include "tests/support/live_memory.h"

namespace rig {
namespace {

class Replays : public ::testing::Test {
protected:
    Replays() {
        lf_readReferenceXml(sampleReference(), [](std::string_view) {});
    }
    void TearDown() override { resetReferenceTables(); }

    ReplaySettings settings() { return {sceneAtTheAirport(), recordingBegin, 40, 1, nullptr}; }
};

void passSeconds(Replay& replay, double seconds) {
    for (int slot = 0; slot < seconds * 100; ++slot) {
        replay.slot();
    }
}

TEST_F(Replays, timeGoesOnTenMillisecondsASlotOnTheWallClockToo) {
    Replay replay(settings());
    EXPECT_EQ(replay.seconds(), 0);
    const auto begin = platform::WallTime(std::chrono::seconds(static_cast<std::int64_t>(recordingBegin)));
    EXPECT_EQ(platform::wallNow(), begin);
    passSeconds(replay, 90);
    EXPECT_DOUBLE_EQ(replay.seconds(), 90);
    EXPECT_EQ(platform::wallNow(), begin + std::chrono::seconds(90));
}

TEST_F(Replays, theUsersAircraftIsKnownFromTheBegin) {
    Replay replay(settings());
    EXPECT_NEAR(gUserState.lat, sceneAtTheAirport().user.at.lat, 1e-9);
    EXPECT_EQ(userTitle, "Boeing 737-800");
    EXPECT_TRUE(userOnGround);
}

TEST_F(Replays, aWeatherRowSetsTheQnh) {
    Replay replay(settings());
    replay.receive({DatagramKind::weather, R"({"QNH": 998.0})"});
    EXPECT_EQ(gQnh, 998);
    EXPECT_EQ(replay.counts().weather, 1u);
}

TEST_F(Replays, aLineIsAccountedForByWhatBecameOfIt) {
    Replay replay(settings());
    replay.receive({DatagramKind::traffic, "nothing"});
    EXPECT_EQ(replay.counts().of(LineOutcome::doesNotParse), 1u);
    EXPECT_EQ(replay.counts().allLines(), 1u);
}

/// Plays the recording and lets all of its aircraft go; what the process holds then.
LiveMemory memoryAfter(Replay& replay, const Recording& recording) {
    const double begin = replay.seconds();
    {
        Player player(recording, {}, recordingBegin + begin);
        while (!player.isOver() || replay.aircraft() > 0) {
            for (const Datagram& datagram : player.advanceTo(replay.seconds() - begin)) {
                replay.receive(datagram);
            }
            replay.slot();
        }
    }
    // What is left to be told to the simulator and by it.
    passSeconds(replay, 5);
    return liveMemory();
}

TEST_F(Replays, aLongReplayEndsWithTheMemoryOfItsFirstPart) {
    std::ostringstream sink;
    sink.setstate(std::ios::badbit); // takes nothing in
    TraceWriter trace(sink);
    ReplaySettings traced = settings();
    traced.trace = &trace;
    Replay replay(traced);
    const Recording recording = recordingFrom(overflights(6));
    memoryAfter(replay, recording);
    const LiveMemory first = memoryAfter(replay, recording);
    memoryAfter(replay, recording);
    memoryAfter(replay, recording);
    const LiveMemory last = memoryAfter(replay, recording);
    EXPECT_EQ(replay.counts().created, 30u);
    EXPECT_EQ(last.blocks, first.blocks);
    EXPECT_EQ(last.bytes, first.bytes);
}

} // namespace
} // namespace rig
