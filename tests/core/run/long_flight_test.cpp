// The whole program under a busy sky, in real time. The environment variable TARNWING_FLIGHT_SECONDS lets it fly for longer
// than a test of every day may take.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <filesystem>
#include <sstream>
#include <string>
#include <thread>

#include <fmt/format.h>

#include "core/parameters.h"
#include "feed/real_traffic_link.h"
#include "platform/files.h"
#include "platform/sockets.h"
#include "platform/window_system.h"
#include "rig/flights/airport_layout.h"
#include "rig/flights/flights_run.h"
#include "rig/traffic/gzip_text.h"
#include "rig/traffic/traffic_run.h"
#include "tests/core/run/running_simulator.h"
#include "tests/support/program_run.h"
#include "tests/support/sealed_input.h"

using namespace std::chrono_literals;
using testing::HasSubstr;
using testing::Not;

namespace {

const std::filesystem::path startFolder = std::filesystem::current_path();

/// The types of a steady sky.
constexpr std::array types{"A319", "A320", "A321", "A332", "A388", "B738", "B772", "B77W", "B788", "E190"};
constexpr int aircraftInFlight = 150;
constexpr auto frameTime = 33ms;

int secondsToFly() {
    constexpr int usual = 20;
    const char* wanted = std::getenv("TARNWING_FLIGHT_SECONDS");
    return wanted == nullptr ? usual : std::max(usual, std::atoi(wanted));
}

rig::Scene atTheAirport() {
    rig::Scene scene;
    scene.user.at = rig::airport::reference;
    return scene;
}

rig::AircraftTitles whiteAircraft() {
    rig::AircraftTitles titles;
    for (const char* type : types) {
        titles.add({fmt::format("White {}", type), type});
    }
    return titles;
}

std::string whiteLiveries() {
    std::string rows;
    for (const char* type : types) {
        rows += fmt::format("<liv airl=\"ZZZ\" type=\"{0}\" title=\"White {0}\"/>\n", type);
    }
    return "<root><liveries>\n" + rows + "</liveries></root>";
}

class LongFlightThreads : public testing::Test {
protected:
    LongFlightThreads() {
        writeFile(run.folder() / "roaming" / "InsideSystems" / "RealTraffic.jar", "");
        writeFile("output/LiveriesScanned.xml", whiteLiveries());
        writeSealed("input/dbase.enc", rig::readText(startFolder / "data" / "dbase.xml"));
        writeSealed("input/airports.enc", rig::readText(startFolder / "data" / "airports.xml"));
        run.setParameters(
            {{"SIM_INSTALL_PATH", platform::utf8FromPath(run.folder() / "Sim v5")}, {"PORT_NUMBER", "0"}});
    }

    /// Of aircraft that are all in flight; a minute more than is flown.
    std::filesystem::path recording() const {
        rig::FlightsOptions options;
        options.folder = run.folder() / "recording";
        options.steady = aircraftInFlight;
        options.seconds = secondsToFly() + 60;
        std::ostringstream said;
        rig::runFlights(options, said);
        return options.folder / fmt::format("steady_{}.csv.gz", aircraftInFlight);
    }

    ProgramRun run;
};

TEST_F(LongFlightThreads, aBusySkyFliesWithoutAnErrorInTheLog) {
    rig::TrafficOptions options;
    options.recording = recording();
    options.endsWithGoodbye = true;
    run.start();
    RunningSimulator simulator(atTheAirport(), whiteAircraft(), frameTime);
    ASSERT_TRUE(run.willLog("Waiting for RealTraffic to connect")) << run.log();
    options.port = listenSocket.boundPort();
    std::ostringstream said;
    rig::TrafficResult result;
    {
        const std::jthread traffic([&] { result = rig::runTraffic(options, said); });
        std::this_thread::sleep_for(std::chrono::seconds(secondsToFly()));
        window_system::clickClose();
    }
    ASSERT_TRUE(run.ends()) << run.log();
    const std::string log = run.log();
    EXPECT_THAT(log, Not(HasSubstr("==> ")));
    EXPECT_THAT(log, Not(HasSubstr("exception")));
    EXPECT_EQ(result.heard.malformed, 0u) << said.str();
    EXPECT_EQ(result.losses, 0u) << said.str();
    const std::size_t created = simulator.with([](const rig::World& world) { return world.createdAircraft(); });
    EXPECT_GE(created, aircraftInFlight * 2u / 3u);
    RecordProperty("aircraft", static_cast<int>(created));
    RecordProperty("lines", static_cast<int>(result.played.sentLines));
}

} // namespace
