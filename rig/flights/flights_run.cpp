// rig/flights/flights_run.cpp
#include "rig/flights/flights_run.h"

#include <algorithm>
#include <cmath>
#include <ostream>

#include <fmt/format.h>

#include "rig/flights/airport_layout.h"
#include "rig/flights/steady_sky.h"
#include "rig/traffic/gzip_text.h"

namespace rig {

namespace {

constexpr double weatherEvery = 10;       // seconds
constexpr double standingTruthEvery = 10; // seconds

constexpr const char* truthHeader =
    "time,hexid,callsign,phase,lat,lon,alt_ft,on_ground,heading,track,gs_kt,vs_fpm,roll\n";

/// The part of time that is written, seconds since 1970.
struct Window {
    double begin = 0;
    double end = 0;

    bool holds(double time) const { return time >= begin && time < end; }
};

std::string truthLine(const MotionState& state, const Transmission& transmission) {
    return fmt::format("{:.0f},{},{},{},{:.7f},{:.7f},{:.1f},{},{:.2f},{:.2f},{:.2f},{:.0f},{:.1f}\n",
                       transmission.begin + state.seconds, transmission.aircraft.hexid, transmission.aircraft.callsign,
                       state.phase, state.position.lat, state.position.lon, state.heightFt + airport::elevationFt,
                       state.onGround ? 1 : 0, state.heading, state.track, state.gsKnots, state.vsFpm + 0.0,
                       state.rollDegrees + 0.0);
}

bool isToldInTruth(const MotionState& state) {
    return state.gsKnots > 0 || !state.onGround || std::fmod(state.seconds, standingTruthEvery) == 0;
}

std::string weatherRow(double pressure) {
    return fmt::format(
        R"({{"ICAO": "{}","QNH": {:.1f}, "METAR": "{} 011200Z 20006KT CAVOK 15/08 Q{:04.0f}", "TA": 3000}})",
        airport::code, pressure, airport::code, pressure);
}

std::string rowsOf(std::vector<ReceivedLine> lines, const Window& window, double pressure) {
    std::stable_sort(lines.begin(), lines.end(),
                     [](const ReceivedLine& a, const ReceivedLine& b) { return a.time < b.time; });
    std::string text;
    double nextWeather = window.begin;
    for (const ReceivedLine& line : lines) {
        if (!window.holds(line.time)) {
            continue;
        }
        while (nextWeather <= line.time) {
            text += weatherRow(pressure) + '\n';
            nextWeather += weatherEvery;
        }
        text += line.text + '\n';
    }
    return text;
}

void writeFiles(const std::string& name, const FlightsOptions& options, std::ostream& out) {
    const WrittenScenario written = writeScenario(makeScenario(name, options.seed), options);
    writeText(options.folder / (name + ".csv.gz"), written.recording);
    writeText(options.folder / (name + ".truth.csv.gz"), written.truth);
    out << fmt::format("{}: {} rows\n", name, std::count(written.recording.begin(), written.recording.end(), '\n'));
}

void writeSteadySky(const FlightsOptions& options, std::ostream& out) {
    SteadySky sky(options.steady, options.begin, options.fidelity, options.seed);
    const std::string text = sky.textUntil(options.begin + options.seconds);
    const std::string name = fmt::format("steady_{}", options.steady);
    writeText(options.folder / (name + ".csv.gz"), text);
    out << fmt::format("{}: {} rows, {} aircraft\n", name, std::count(text.begin(), text.end(), '\n'), sky.aircraft());
}

} // namespace

WrittenScenario writeScenario(const Scenario& scenario, const FlightsOptions& options) {
    Chance chance(options.seed);
    std::vector<ReceivedLine> lines;
    std::string truth = truthHeader;
    const double farEnd = 1e12;
    const Window window{options.begin, scenario.seconds > 0 ? options.begin + scenario.seconds : farEnd};
    for (const ScriptedFlight& flight : scenario.flights) {
        const std::vector<MotionState> states = fly(flight.legs);
        Transmission transmission = flight.transmission;
        transmission.begin += options.begin;
        for (const MotionState& state : states) {
            if (isToldInTruth(state) && window.holds(transmission.begin + state.seconds)) {
                truth += truthLine(state, transmission);
            }
        }
        const std::vector<ReceivedLine> received = receive(states, transmission, options.fidelity, chance);
        lines.insert(lines.end(), received.begin(), received.end());
    }
    return {rowsOf(std::move(lines), window, pressureOf(options.fidelity)), truth};
}

void runFlights(const FlightsOptions& options, std::ostream& out) {
    std::filesystem::create_directories(options.folder);
    if (options.steady > 0) {
        writeSteadySky(options, out);
        return;
    }
    if (!options.scenario.empty()) {
        writeFiles(options.scenario, options, out);
        return;
    }
    for (const std::string& name : scenarioNames()) {
        writeFiles(name, options, out);
    }
}

} // namespace rig
