// What the program itself makes of a scripted flight in the simulated world, reported.
#include <gmock/gmock.h>

#include <memory>
#include <sstream>
#include <string>

#include "core/slot_clock.h"
#include "engine/slot.h"
#include "feed/sample_queue.h"
#include "feed/traffic_reader.h"
#include "liveries/livery_matching.h"
#include "liveries/reference_tables.h"
#include "rig/flights/flights_run.h"
#include "rig/report/report_run.h"
#include "rig/world_in_process/in_process_world.h"
#include "sim/declarations.h"
#include "sim/dispatch.h"
#include "sim/simulator_link.h"
#include "tests/rig/report/flown_trace.h"
#include "tests/support/log_capture.h"
#include "tests/support/program_run.h"
#include "tests/support/temporary_folder.h"

namespace rig {
namespace {

constexpr LatLon amsterdam{52.3086, 4.7639};
constexpr int tenthsOfASecond = 10;

class ProgramFlight : public ::testing::Test {
protected:
    ProgramFlight() { reset(); }
    ~ProgramFlight() override { reset(); }

    static void reset() {
        resetProgram();
        resetReferenceTables();
        resetLiveryMatching();
    }

    static void install(const FeedTracks& tracks) {
        for (const auto& [hexid, aircraft] : tracks) {
            gAllTypes.insert(aircraft.type);
            gCategoryTypes.large.insert(aircraft.type);
            RegcodeTable[aircraft.registration] = "Airliner";
        }
    }

    /// The bytes of the trace.
    std::string fly(const Recording& recording, int seconds) {
        std::ostringstream bytes;
        {
            TraceWriter writer(bytes);
            Scene scene;
            scene.user.at = amsterdam;
            AircraftTitles titles;
            titles.addLines({"[fltsim.0]", "title=Airliner", "[General]", "atc_model=A320"});
            InProcessWorld world(scene, titles, &writer);
            SimConnect_Open(&simHandle, "Tarnwing_P3D", nullptr, 0, nullptr, 0);
            declareToSimulator();
            TrafficReader reader;
            reader.setUserLatLon(amsterdam);
            gAcceptSamples = true;
            std::size_t next = 0;
            for (int tenth = 0; tenth < seconds * tenthsOfASecond; ++tenth) {
                const double now = recording.begin() + tenth * 0.1;
                for (; next < recording.rows.size() && recording.rows[next].due <= now; ++next) {
                    if (recording.rows[next].kind == DatagramKind::traffic) {
                        reader.processLine(recording.rows[next].text);
                    }
                }
                playTenth(world);
            }
            SimConnect_Close(simHandle);
            simHandle = nullptr;
        }
        return bytes.str();
    }

    /// Three frames and ten slots.
    void playTenth(InProcessWorld& world) {
        for (int frame = 0; frame < 3; ++frame) {
            world.frames(1);
            SimConnect_CallDispatch(simHandle, dispatchProcedure, &failure);
            for (int slot = 0; slot < (frame == 0 ? 4 : 3); ++slot) {
                lf_handleAddingStack();
            }
        }
    }

    LogCapture log;
    std::exception_ptr failure;
};

TEST_F(ProgramFlight, isFoundOnItsTrackAndAtItsTime) {
    const WrittenScenario written = writeScenario(makeScenario("arrival", 1), {});
    const Recording recording = recordingFrom(written.recording);
    const FeedTracks truth = truthTracks(written.truth);
    install(truth);
    install(feedTracks(recording));
    std::istringstream bytes(fly(recording, 150));
    const Analysis analysis = analyse({.trace = bytes, .recording = &recording, .truth = &truth, .feedStart = 0});
    ASSERT_EQ(analysis.aircraft.size(), 1u);
    const ObjectFigures& figures = analysis.aircraft[0].figures;
    EXPECT_EQ(figures.air.jumps, 0u);
    EXPECT_GT(figures.air.seconds, 100);
    EXPECT_GT(figures.air.crossTrack.count(), 1000u);
    EXPECT_LT(figures.air.crossTrack.atShare(0.95), 15);
    EXPECT_LT(figures.air.alongTrack.atShare(0.95), 5);
    EXPECT_GT(figures.air.fromTruth.count(), 1000u);
    ASSERT_TRUE(figures.firstSight.has_value());
    EXPECT_NEAR(*figures.firstSight, 30, 3);
    EXPECT_EQ(analysis.inRange.neverShown.size(), 0u);
}

} // namespace
} // namespace rig
