// tests/rig/replay/replay_folder.cpp
#include "tests/rig/replay/replay_folder.h"

#include <sstream>
#include <variant>

#include <fmt/format.h>

#include "rig/flights/airport_layout.h"
#include "rig/flights/flights_run.h"

namespace rig {

namespace {

const std::filesystem::path startFolder = std::filesystem::current_path();

std::string overflightName(int number) {
    return fmt::format("KLM{}", 101 + number);
}

} // namespace

Scene sceneAtTheAirport() {
    Scene scene;
    scene.user.at = airport::reference;
    return scene;
}

std::vector<std::string> overflightNames(int count) {
    std::vector<std::string> names;
    names.reserve(static_cast<std::size_t>(count));
    for (int i = 0; i < count; ++i) {
        names.push_back(overflightName(i));
    }
    return names;
}

namespace {

WrittenScenario writtenOverflights(int count) {
    Scenario scenario;
    for (int i = 0; i < count; ++i) {
        ScriptedFlight flight;
        flight.transmission.aircraft.hexid = 0x484000 + static_cast<std::uint32_t>(i);
        flight.transmission.aircraft.callsign = overflightName(i);
        flight.transmission.aircraft.registration = fmt::format("PH-T{}", 10 + i);
        flight.transmission.aircraft.type = "B738";
        flight.transmission.begin = 10 * i;
        flight.legs = overflight(i * 40, 4000 * (i % 5), 18000 + 1000 * i);
        scenario.flights.push_back(std::move(flight));
    }
    scenario.seconds = 180;
    FlightsOptions options;
    options.begin = recordingBegin;
    return writeScenario(scenario, options);
}

} // namespace

std::string overflights(int count) {
    return writtenOverflights(count).recording;
}

std::string truthOfOverflights(int count) {
    return writtenOverflights(count).truth;
}

std::filesystem::path sampleReference() {
    return startFolder / "data" / "dbase.xml";
}

ReplayFolder::ReplayFolder(const std::string& recording) {
    writeFile("flights.csv", recording);
    writeFile("scene.json",
              fmt::format(R"({{"user": {{"position": [{}, {}]}}}})", airport::reference.lat, airport::reference.lon));
    options.recording = "flights.csv";
    options.scene = "scene.json";
    options.trace = "flights.trace";
    options.reference = sampleReference();
}

std::string ReplayFolder::replay() {
    std::ostringstream out;
    result = runReplay(options, out);
    told = out.str();
    return options.trace.empty() ? std::string() : readFile(options.trace);
}

std::vector<TraceEvent> eventsOf(const std::string& trace) {
    std::istringstream in(trace);
    TraceReader reader(in);
    std::vector<TraceEvent> events;
    TraceItem item;
    while (reader.next(item)) {
        if (const auto* event = std::get_if<TraceEvent>(&item)) {
            events.push_back(*event);
        }
    }
    return events;
}

std::vector<std::string> tailNumbers(const std::string& trace, TraceEventKind kind) {
    std::vector<std::string> found;
    for (const TraceEvent& event : eventsOf(trace)) {
        if (event.kind == kind) {
            found.push_back(event.detail);
        }
    }
    return found;
}

} // namespace rig
