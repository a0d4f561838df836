// The whole program under a busy sky, in real time, for as long as the environment variable TARNWING_FLIGHT_SECONDS
// says; not without it, for the first aircraft appears three quarters of a minute after the client.
#include <gtest/gtest.h>

#include <algorithm>
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
#include "rig/flights/steady_sky.h"
#include "rig/traffic/gzip_text.h"
#include "rig/traffic/traffic_run.h"
#include "tests/core/run/running_simulator.h"
#include "tests/support/program_run.h"
#include "tests/support/sealed_input.h"

using namespace std::chrono_literals;

namespace {

const std::filesystem::path startFolder = std::filesystem::current_path();

constexpr int aircraftInFlight = 150;
constexpr auto frameTime = 33ms;

int secondsToFly() {
    const char* wanted = std::getenv("TARNWING_FLIGHT_SECONDS");
    return wanted == nullptr ? 0 : std::atoi(wanted);
}

/// What a user would be told is wrong, from the moment at which the traffic comes.
std::string errorsInFlight(const std::string& log) {
    std::istringstream lines(log.substr(std::min(log.find("Traffic Reader connected"), log.size())));
    std::string errors;
    for (std::string line; std::getline(lines, line);) {
        if (line.starts_with("==> ") || line.find("exception") != std::string::npos) {
            errors += line + '\n';
        }
    }
    return errors;
}

rig::Scene atTheAirport() {
    rig::Scene scene;
    scene.user.at = rig::airport::reference;
    return scene;
}

rig::AircraftTitles whiteAircraft() {
    rig::AircraftTitles titles;
    for (const std::string& type : rig::steadySkyTypes()) {
        titles.add({fmt::format("White {}", type), type});
    }
    return titles;
}

std::string whiteLiveries() {
    std::string rows;
    for (const std::string& type : rig::steadySkyTypes()) {
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
    if (secondsToFly() == 0) {
        GTEST_SKIP() << "TARNWING_FLIGHT_SECONDS=600 lets it fly";
    }
    ASSERT_GE(secondsToFly(), 90) << "so long it takes to see anything";
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
    ASSERT_TRUE(run.logs("Traffic Reader connected")) << run.log();
    EXPECT_EQ(errorsInFlight(run.log()), "");
    EXPECT_EQ(result.heard.malformed, 0u) << said.str();
    EXPECT_EQ(result.connects, 1u) << said.str();
    const std::size_t created = simulator.with([](const rig::World& world) { return world.createdAircraft(); });
    EXPECT_GE(created, static_cast<std::size_t>(aircraftInFlight));
    fmt::print("{} aircraft from {} lines in {} s\n", created, result.played.sentLines, secondsToFly());
}

} // namespace
