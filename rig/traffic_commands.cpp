// rig/traffic_commands.cpp
#include "rig/traffic_commands.h"

#include <map>
#include <ostream>

#include <fmt/format.h>

#include "rig/path_option.h"

namespace {

constexpr double shortestSpeed = 0.1;
constexpr double longestSpeed = 100;
constexpr double farthestNm = 10000;
constexpr double longestDelay = 86400; // seconds

void addRate(CLI::App& command, const std::string& option, double& rate, const std::string& help) {
    command.add_option(option, rate, help)->check(CLI::Range(0.0, 1.0));
}

} // namespace

TrafficCommands::TrafficCommands(CLI::App& app) {
    addTraffic(app);
    addConvert(app);
    addFlights(app);
    addCount(app);
}

void TrafficCommands::addTraffic(CLI::App& app) {
    traffic_ = app.add_subcommand("traffic", "A stand-in for the RealTraffic client, which plays a recording");
    rig::TrafficOptions& options = trafficOptions_;
    rig::PlayerOptions& player = options.player;
    addPath(*traffic_, "--recording", options.recording, "Recording, packed or not (docs/rig-traffic.md)")->required();
    traffic_->add_option("--host", options.host, "Where the program listens");
    traffic_->add_option("--port", options.port, "Its TCP port");
    traffic_->add_flag("!--without-link", options.link, "Plays at once, and connects to nobody");
    traffic_->add_option("--delay", options.delaySeconds, "Seconds from the connect to the first row")
        ->check(CLI::Range(0.0, longestDelay));
    traffic_->add_option("--udp-host", options.udpHost, "Where the datagrams go; a broadcast address reaches all");
    traffic_->add_option("--traffic-port", options.trafficPort, "UDP port of the traffic lines");
    traffic_->add_option("--weather-port", options.weatherPort, "UDP port of the weather");
    traffic_->add_option("--level", options.level, "Level in the answer to the version request");
    traffic_->add_option("--client-version", options.version, "Version in that answer");
    traffic_->add_flag("--end-with-goodbye", options.endsWithGoodbye, "Ends when the program says goodbye");
    traffic_->add_flag("--historic", player.historic, "Leaves the time stamps as they are");
    traffic_->add_option("--offset", player.offsetSeconds, "Seconds left out at the beginning")
        ->check(CLI::NonNegativeNumber);
    traffic_->add_option("--radius", player.radiusNm, "Only lines within so many nautical miles of the user; 0: all")
        ->check(CLI::Range(0.0, farthestNm));
    addRate(*traffic_, "--loss", player.loss, "Share of the lines that get lost");
    addRate(*traffic_, "--repeat", player.repeat, "Share of the lines that come twice");
    addRate(*traffic_, "--late", player.late, "Share of the lines that come 1 to 30 seconds late");
    addRate(*traffic_, "--out-of-order", player.outOfOrder, "Share of the lines that come behind the next one");
    traffic_->add_option("--loops", player.loops, "How often the recording is played")->check(CLI::PositiveNumber);
    traffic_->add_option("--speed", player.speed, "Recorded seconds in a real one")
        ->check(CLI::Range(shortestSpeed, longestSpeed));
    traffic_->add_option("--seed", player.seed, "Of the rates' chance");
}

void TrafficCommands::addConvert(CLI::App& app) {
    convert_ = app.add_subcommand("convert", "Makes a recording of public ADS-B data");
    addPath(*convert_, "--input", convertOptions_.input,
            "States or a trace (JSON), or lines of the feed; packed or not")
        ->required();
    addPath(*convert_, "--output", convertOptions_.output, "The recording; packed when its name ends in .gz")
        ->required();
    addPath(*convert_, "--registry", convertOptions_.registry,
            "JSON object of transponder addresses with registration and type");
}

void TrafficCommands::addFlights(CLI::App& app) {
    flights_ = app.add_subcommand("flights", "Writes recordings of flights that are scripted, and their truth");
    addPath(*flights_, "--output", flightsOptions_.folder, "Folder for the files")->required();
    flights_->add_option("--scenario", flightsOptions_.scenario, "One of the scenarios; without it all of them");
    flights_->add_option("--fidelity", flightsOptions_.fidelity, "As it was, or as a network of receivers tells it")
        ->transform(CLI::CheckedTransformer(std::map<std::string, rig::Fidelity>{{"exact", rig::Fidelity::exact},
                                                                                 {"network", rig::Fidelity::network}}));
    flights_->add_option("--seed", flightsOptions_.seed, "Of all chance");
    flights_->add_option("--begin", flightsOptions_.begin, "Seconds since 1970 at the first line");
    flights_
        ->add_option("--steady", flightsOptions_.steady,
                     "In place of scenarios: so many aircraft in flight at any time")
        ->check(CLI::Range(0, 10000));
    flights_->add_option("--seconds", flightsOptions_.seconds, "Of the steady sky")->check(CLI::Range(1.0, 86400.0));
}

void TrafficCommands::addCount(CLI::App& app) {
    count_ = app.add_subcommand("count", "Tells what the program would make of the lines of a recording");
    addPath(*count_, "--recording", countOptions_.recording, "Recording, packed or not")->required();
    count_->add_option("--lat", countOptions_.user.lat, "Where the user is, degrees")->required();
    count_->add_option("--lon", countOptions_.user.lon, "The same")->required();
    count_->add_option("--radius", countOptions_.radiusNm, "Injection radius, nautical miles");
    count_->add_flag("--airport", countOptions_.userAirportCounts, "A parking airport is chosen there");
    count_->add_option("--elevation", countOptions_.elevationFt, "Its elevation, feet");
    addPath(*count_, "--log", countOptions_.log, "Log.txt of a run that heard the whole recording, to compare with");
}

void TrafficCommands::run(std::ostream& out) const {
    if (traffic_->parsed()) {
        rig::runTraffic(trafficOptions_, out);
    } else if (convert_->parsed()) {
        const std::size_t rows = rig::convertFile(convertOptions_);
        out << fmt::format("{} rows\n", rows);
    } else if (flights_->parsed()) {
        rig::runFlights(flightsOptions_, out);
    } else if (count_->parsed()) {
        rig::countOutcomes(countOptions_, out);
    }
}
