// From the feed's lines to aircraft in the simulated world: they appear, fly, and go again.
#include <gmock/gmock.h>

#include <algorithm>
#include <cmath>
#include <optional>
#include <string>
#include <vector>

#include <fmt/format.h>

#include "core/slot_clock.h"
#include "engine/aircraft_tables.h"
#include "engine/angles.h"
#include "engine/engine_state.h"
#include "engine/slot.h"
#include "feed/sample_queue.h"
#include "feed/traffic_line.h"
#include "feed/traffic_reader.h"
#include "liveries/livery_matching.h"
#include "liveries/reference_tables.h"
#include "rig/world_in_process/in_process_world.h"
#include "sim/declarations.h"
#include "sim/dispatch.h"
#include "sim/simulator_link.h"
#include "tests/support/log_capture.h"
#include "tests/support/program_run.h"
#include "tests/support/test_liveries.h"
#include "tests/support/traffic_line_builder.h"

using ::testing::Each;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Not;
using ::testing::SizeIs;

namespace {

constexpr LatLon amsterdam{52.31, 4.76};
constexpr double knots = 300;
constexpr double metresPerSecond = knots * metersPerNm / 3600;
constexpr int framesPerSecond = 30;

rig::Scene overAmsterdam() {
    rig::Scene scene;
    scene.user.at = amsterdam;
    scene.framesPerSecond = framesPerSecond;
    return scene;
}

rig::AircraftTitles airliner() {
    rig::AircraftTitles titles;
    titles.addLines({"[fltsim.0]", "title=Airliner", "[General]", "atc_model=A320"});
    return titles;
}

class LiveTraffic : public ::testing::Test {
protected:
    LiveTraffic() : world(overAmsterdam(), airliner()) {
        reset();
        gAllTypes = {"A320"};
        gCategoryTypes.large = {"A320"};
        RegcodeTable["PH-591"] = "Airliner";
        gAcceptSamples = true;
        reader.setUserLatLon(amsterdam);
        SimConnect_Open(&simHandle, "Tarnwing_P3D", nullptr, 0, nullptr, 0);
        declareToSimulator();
    }
    ~LiveTraffic() override {
        SimConnect_Close(simHandle);
        simHandle = nullptr;
        reset();
    }

    static void reset() {
        resetProgram();
        resetReferenceTables();
        resetLiveryMatching();
        clearLiveryTables();
    }

    /// Where the real aircraft is at that second: flying east past Amsterdam.
    static LatLon realPlace(double seconds) {
        return project({52.25, 4.5}, 90 * radiansPerDegree, metresPerSecond * seconds * feetPerNm / metersPerNm);
    }

    void report(double seconds, const std::string& hexid = "4739591", const std::string& callsign = "KLM1627") {
        const LatLon at = realPlace(seconds);
        reader.processLine(TrafficLineBuilder()
                               .with(traffic_field::hexid, hexid)
                               .with(traffic_field::lat, fmt::format("{:.6f}", at.lat))
                               .with(traffic_field::lon, fmt::format("{:.6f}", at.lon))
                               .with(traffic_field::altitude, "12000")
                               .with(traffic_field::vs, "0")
                               .with(traffic_field::track, "90.0")
                               .with(traffic_field::gs, fmt::format("{:.1f}", knots))
                               .with(traffic_field::callsign, callsign)
                               .with(traffic_field::type, "A320")
                               .with(traffic_field::registration, "PH-" + hexid.substr(4))
                               .with(traffic_field::timestamp, fmt::format("{:.1f}", 1666985865.0 + seconds))
                               .with(traffic_field::tas, fmt::format("{:.0f}", knots))
                               .with(traffic_field::roll, "0.0")
                               .line());
    }

    /// Three frames and ten slots.
    void tenth() {
        for (int frame = 0; frame < 3; ++frame) {
            world.frames(1);
            SimConnect_CallDispatch(simHandle, dispatchProcedure, &failure);
            for (int slot = 0; slot < (frame == 0 ? 4 : 3); ++slot) {
                lf_handleAddingStack();
            }
            if (watches) {
                watch();
            }
        }
        seconds_ += 0.1;
    }

    void watch() {
        const std::vector<rig::Position> now = positions();
        if (now.size() == 1 && before.size() == 1) {
            const double metres = greatCircleNm(before[0].place(), now[0].place()) * metersPerNm;
            longestFrame = std::max(longestFrame, metres);
        }
        before = now;
    }

    /// Lets time go on; an aircraft is reported every three seconds until reportsEnd.
    void fly(double seconds) {
        for (int i = 0; i < seconds * 10; ++i) {
            if (tenths_ % 30 == 0 && seconds_ < reportsEnd) {
                report(seconds_);
            }
            ++tenths_;
            tenth();
        }
    }

    std::vector<rig::Position> positions() {
        return world.with([](const rig::World& w) {
            std::vector<rig::Position> all;
            for (const auto& [id, object] : w.aircraft()) {
                if (object.isSeen()) {
                    all.push_back(object.position);
                }
            }
            return all;
        });
    }

    double seconds_ = 0;
    double reportsEnd = 60;
    bool watches = false;
    double longestFrame = 0; ///< metres
    std::vector<rig::Position> before;
    rig::InProcessWorld world;
    LogCapture log;
    TrafficReader reader;
    std::exception_ptr failure;

private:
    int tenths_ = 0;
};

TEST_F(LiveTraffic, anAircraftAppearsThirtySecondsAfterItsFirstReport) {
    fly(28);
    EXPECT_THAT(positions(), IsEmpty());
    fly(5);
    EXPECT_THAT(positions(), SizeIs(1));
    EXPECT_EQ(liveTable.size(), 1u);
}

TEST_F(LiveTraffic, itFliesTheRealTrackLaterAndWithoutAJump) {
    fly(36);
    watches = true;
    fly(30);
    ASSERT_THAT(positions(), SizeIs(1));
    const rig::Position at = positions()[0];
    const double alongMetres = greatCircleNm(realPlace(0), at.place()) * metersPerNm;
    const double delaySeconds = seconds_ - alongMetres / metresPerSecond;
    EXPECT_GT(delaySeconds, 29);
    EXPECT_LT(delaySeconds, 40.5);
    EXPECT_LT(greatCircleNm(realPlace(alongMetres / metresPerSecond), at.place()) * metersPerNm, 5);
    EXPECT_NEAR(at.altFeet, 12000, 1);
    EXPECT_NEAR(at.headingRad, 90 * radiansPerDegree, 0.02);
    EXPECT_NEAR(at.bankRad, 0, 0.02);
    EXPECT_NEAR(at.trueKnots, knots, 1);
    EXPECT_LT(longestFrame, 1.5 * metresPerSecond / framesPerSecond);
    EXPECT_GT(longestFrame, 0.5 * metresPerSecond / framesPerSecond);
}

TEST_F(LiveTraffic, aMinuteAfterItsLastPositionItIsGone) {
    reportsEnd = 30;
    fly(60);
    EXPECT_THAT(positions(), SizeIs(1));
    fly(80);
    EXPECT_THAT(positions(), IsEmpty());
    EXPECT_TRUE(liveTable.empty());
    EXPECT_THAT(log.errors(), IsEmpty());
    EXPECT_THAT(log.lines(), ::testing::Contains(HasSubstr("goes: no positions any more")));
}

TEST_F(LiveTraffic, aTitleThatTheSimulatorDoesNotKnowCostsThatAircraft) {
    RegcodeTable["PH-591"] = "Not Installed";
    fly(45);
    EXPECT_THAT(positions(), IsEmpty());
    EXPECT_THAT(log.lines(), ::testing::Contains(HasSubstr("'Not Installed' could not be created by your Sim!")));
}

TEST_F(LiveTraffic, aRefusedTitleIsFollowedByAnotherStepOfTheLadder) {
    installLiveries({livery("KLM", "A320", "Airliner")});
    RegcodeTable["PH-591"] = "Not Installed";
    fly(75); // known again from its next report on, thirty seconds behind
    EXPECT_THAT(positions(), SizeIs(1));
    EXPECT_THAT(log.lines(), ::testing::Contains(HasSubstr("PH-591 KLM A320 =2= Airliner")));
}

TEST_F(LiveTraffic, anotherCallSignInFlightMakesItAnewWhereItIs) {
    fly(45);
    ASSERT_THAT(positions(), SizeIs(1));
    report(seconds_, "4739591", "KLM99");
    tenth();
    EXPECT_EQ(liveTable[0].lifeState, LifeState::liveryrespawn);
    const LatLon left = positions()[0].place();
    // Its old call sign is not reported any more.
    reportsEnd = seconds_;
    for (int i = 0; i < 60; ++i) {
        if (i % 30 == 0) {
            report(seconds_, "4739591", "KLM99");
        }
        tenth();
    }
    ASSERT_THAT(positions(), SizeIs(1));
    EXPECT_EQ(liveTable[0].lifeState, LifeState::active);
    EXPECT_EQ(liveTable[0].callsign, "KLM99");
    EXPECT_LT(greatCircleNm(left, positions()[0].place()) * metersPerNm, 6 * metresPerSecond);
}

TEST_F(LiveTraffic, allLeaveWhenTheyAreTold) {
    fly(40);
    removeAllAircraft();
    fly(1);
    EXPECT_THAT(positions(), IsEmpty());
}

} // namespace
