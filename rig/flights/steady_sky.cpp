// rig/flights/steady_sky.cpp
#include "rig/flights/steady_sky.h"

#include <algorithm>
#include <array>
#include <utility>

#include <fmt/format.h>

#include "rig/flights/airport_layout.h"
#include "rig/flights/script.h"

namespace rig {

namespace {

constexpr std::uint32_t firstHexid = 0x500000;
constexpr double farthestPassMeters = 30000;
constexpr double cruiseMeters = 20000;
constexpr double weatherEvery = 10; // seconds
/// Out of so many aircraft one takes off and one lands.
constexpr std::size_t oneOf = 6;

struct Operator {
    const char* code;
    const char* type;
};

constexpr std::array<Operator, 8> operators{{{"KLM", "B738"},
                                             {"BAW", "A320"},
                                             {"DLH", "A321"},
                                             {"EZY", "A20N"},
                                             {"KLM", "E190"},
                                             {"UAE", "A388"},
                                             {"DAL", "A332"},
                                             {"KLM", "B77W"}}};

char letter(std::uint32_t number) {
    return static_cast<char>('A' + number % 26);
}

Legs someLegs(Chance& chance) {
    switch (chance.below(oneOf)) {
    case 0: return departure(chance.between(60, 240), cruiseMeters);
    case 1: return arrival(chance.between(240, 420), cruiseMeters);
    default: {
        const double height = 15000 + 1000 * static_cast<double>(chance.below(25));
        const double pass = chance.between(-farthestPassMeters, farthestPassMeters);
        return overflight(chance.between(0, 360), pass, height);
    }
    }
}

} // namespace

SteadySky::SteadySky(int aircraft, double begin, Fidelity fidelity, std::uint32_t seed, std::uint32_t firstNumber)
    : fidelity_(fidelity), chance_(seed), first_(firstNumber), next_(firstNumber), nextWeather_(begin) {
    // The first ones are under way already, each at some other point of its flight.
    constexpr double shortestFlight = 500; // seconds
    for (int i = 0; i < aircraft; ++i) {
        addFlight(begin - shortestFlight * i / aircraft, begin);
    }
}

Aircraft SteadySky::nextAircraft() {
    const std::uint32_t number = next_++;
    const Operator& carrier = operators[chance_.below(operators.size())];
    Aircraft aircraft;
    aircraft.hexid = firstHexid + number;
    aircraft.callsign = fmt::format("{}{}", carrier.code, 100 + number % 9900);
    aircraft.registration = fmt::format("PH-{}{}{}", letter(number / 676), letter(number / 26), letter(number));
    aircraft.type = carrier.type;
    aircraft.from = "LHR";
    aircraft.to = "AMS";
    return aircraft;
}

void SteadySky::addFlight(double begin, double notBefore) {
    Transmission transmission;
    transmission.aircraft = nextAircraft();
    transmission.begin = begin;
    Flight flight = receive(fly(someLegs(chance_)), transmission, fidelity_, chance_);
    std::erase_if(flight, [notBefore](const ReceivedLine& line) { return line.time < notBefore; });
    std::reverse(flight.begin(), flight.end());
    if (!flight.empty()) {
        add(std::move(flight));
    }
}

void SteadySky::add(Flight flight) {
    const std::pair next(flight.back().time, flight.back().hexid);
    waiting_.emplace(next, std::move(flight));
}

std::vector<std::string> SteadySky::rowsUntil(double time) {
    std::vector<std::string> rows;
    while (!waiting_.empty() && waiting_.begin()->first.first <= time) {
        Flight flight = std::move(waiting_.extract(waiting_.begin()).mapped());
        ReceivedLine line = std::move(flight.back());
        flight.pop_back();
        while (nextWeather_ <= line.time) {
            nextWeather_ += weatherEvery;
            rows.push_back(fmt::format(R"({{"ICAO": "{}","QNH": {:.1f}}})", airport::code, pressureOf(fidelity_)));
        }
        rows.push_back(std::move(line.text));
        if (!flight.empty()) {
            add(std::move(flight));
        } else if (open_) {
            addFlight(line.time, line.time);
        }
    }
    return rows;
}

std::string SteadySky::textUntil(double time) {
    std::string text;
    for (const std::string& row : rowsUntil(time)) {
        text += row + '\n';
    }
    return text;
}

std::set<std::string> steadySkyTypes() {
    std::set<std::string> types;
    for (const Operator& carrier : operators) {
        types.insert(carrier.type);
    }
    return types;
}

} // namespace rig
