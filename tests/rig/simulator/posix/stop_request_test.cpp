#include <gmock/gmock.h>

#include <csignal>
#include <sstream>

#include "platform/clock.h"
#include "platform/console.h"
#include "rig/simulator/simulator_run.h"
#include "tests/support/temporary_folder.h"

namespace {

class StopRequest : public ::testing::TestWithParam<int> {
protected:
    void SetUp() override { platform::watchStopRequests(); }
    void TearDown() override { platform::forgetStopRequests(); }
};

} // namespace

TEST_P(StopRequest, endsTheSimulatorProperly) {
    const TemporaryFolder folder;
    const platform::ManualClock clock{platform::WallTime()};
    writeFile("scene.json", R"({"user": {"position": [52, 4]}})");
    rig::SimulatorOptions options;
    options.scene = "scene.json";
    options.port = 0;
    std::ostringstream out;
    EXPECT_FALSE(platform::stopRequested());
    std::raise(GetParam());
    EXPECT_TRUE(platform::stopRequested());
    rig::runSimulator(options, out, false);
    EXPECT_THAT(out.str(), ::testing::HasSubstr("end: stopped\n"));
}

INSTANTIATE_TEST_SUITE_P(Signals, StopRequest, ::testing::Values(SIGINT, SIGTERM, SIGHUP));
