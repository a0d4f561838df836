// rig/flights/scenarios.cpp
#include "rig/flights/scenarios.h"

#include <algorithm>
#include <array>
#include <iterator>
#include <stdexcept>
#include <string_view>
#include <utility>

#include <fmt/format.h>

namespace rig {

namespace {

using airport::stand;

constexpr std::uint32_t firstHexid = 0x484000;
constexpr double parkedBefore = 120; // seconds
constexpr double parkedAfter = 180;
constexpr double shortCruise = 20000; // metres

// Directions that a flight can take without turning back over the airport, degrees.
constexpr double departureFrom = 60;
constexpr double departureTo = 240;
constexpr double arrivalFrom = 240;
constexpr double arrivalTo = 420;

struct Carrier {
    const char* code;
    const char* type;
    const char* category;
};

constexpr std::array<Carrier, 12> carriers{{{"KLM", "B738", "A3"},
                                            {"KLM", "E190", "A3"},
                                            {"TRA", "B738", "A3"},
                                            {"BAW", "A320", "A3"},
                                            {"BAW", "A319", "A3"},
                                            {"DLH", "A321", "A3"},
                                            {"AFR", "A320", "A3"},
                                            {"EZY", "A20N", "A3"},
                                            {"KLM", "B77W", "A5"},
                                            {"UAE", "A388", "A5"},
                                            {"DAL", "A332", "A5"},
                                            {"KLM", "B788", "A5"}}};

constexpr std::array<const char*, 8> places{"LHR", "CDG", "FRA", "MAD", "JFK", "OSL", "FCO", "DXB"};

/// Hands out aircraft that differ in all that tells them apart.
class Fleet {
public:
    explicit Fleet(Chance& chance) : chance_(chance) {}

    Aircraft airliner() {
        const Carrier& carrier = carriers[chance_.below(carriers.size())];
        Aircraft aircraft = next(carrier.type, carrier.category);
        aircraft.callsign = fmt::format("{}{}", carrier.code, 100 + count_);
        aircraft.from = places[chance_.below(places.size())];
        aircraft.to = "AMS";
        return aircraft;
    }
    Aircraft light() { return withRegistrationForName(next("C172", "A1")); }
    Aircraft helicopter() { return withRegistrationForName(next("EC35", "A7")); }

private:
    Aircraft next(const char* type, const char* category) {
        Aircraft aircraft;
        aircraft.hexid = firstHexid + static_cast<std::uint32_t>(count_);
        aircraft.registration = fmt::format("PH-{}{}{}", letter(count_ / 676), letter(count_ / 26), letter(count_));
        aircraft.type = type;
        aircraft.category = category;
        ++count_;
        return aircraft;
    }
    static char letter(int number) { return static_cast<char>('A' + number % 26); }
    static Aircraft withRegistrationForName(Aircraft aircraft) {
        aircraft.callsign = aircraft.registration;
        std::erase(aircraft.callsign, '-');
        return aircraft;
    }

    Chance& chance_;
    int count_ = 0;
};

Aircraft outbound(Aircraft aircraft) {
    std::swap(aircraft.from, aircraft.to);
    return aircraft;
}

double secondsOf(const Legs& legs) {
    return fly(legs).back().seconds;
}

class ScenarioMaker {
public:
    explicit ScenarioMaker(std::uint32_t seed) : chance_(seed), fleet_(chance_) {}

    Scenario departure() {
        const double to = away();
        return only(outbound(fleet_.airliner()), wholeDeparture(stand("A3"), parkedBefore, to, shortCruise));
    }
    Scenario arrival() {
        const double from = comingFrom();
        return only(fleet_.airliner(), wholeArrival(stand("B20"), parkedAfter, from, shortCruise));
    }
    Scenario towing() { return only(fleet_.airliner(), tow(stand("A8"), stand("D12"), parkedBefore)); }
    Scenario helicopter() { return only(fleet_.helicopter(), rig::helicopter(stand("D30"), parkedBefore)); }
    Scenario touchAndGo() { return only(fleet_.light(), rig::touchAndGo(stand("C2"), 3)); }
    Scenario goAround() { return only(fleet_.airliner(), rig::goAround(stand("A22"), parkedAfter)); }
    Scenario holding() {
        constexpr double holdSeconds = 300;
        const double to = away();
        return only(outbound(fleet_.airliner()),
                    wholeDeparture(stand("B5"), parkedBefore, to, shortCruise, holdSeconds));
    }

    /// The same flight twice, the second with an underscore behind its name.
    Scenario ghost() {
        constexpr double behindSeconds = 3;
        Scenario scenario = arrival();
        ScriptedFlight twin = scenario.flights[0];
        ++twin.transmission.aircraft.hexid;
        twin.transmission.aircraft.callsign += '_';
        twin.transmission.delaySeconds = behindSeconds;
        scenario.flights.push_back(std::move(twin));
        return scenario;
    }

    /// Two addresses for one aircraft, out of step.
    Scenario twoTransmitters() {
        constexpr double outOfStepSeconds = 30;
        Scenario scenario = arrival();
        ScriptedFlight second = scenario.flights[0];
        second.transmission.aircraft.hexid += 0x100;
        second.transmission.delaySeconds = outOfStepSeconds;
        scenario.flights.push_back(std::move(second));
        return scenario;
    }

    /// A flight for each phase, which goes quiet in the middle of it.
    Scenario quiet() {
        constexpr double holdSeconds = 300;
        const std::array departing{phase::parked,  phase::pushBack, phase::taxiOut, phase::holding,
                                   phase::takeOff, phase::climb,    phase::cruise};
        const std::array arriving{phase::descent, phase::approach, phase::landing,
                                  phase::rollOut, phase::taxiIn,   phase::parked};
        Scenario scenario;
        for (const char* name : departing) {
            const double hold = name == std::string_view(phase::holding) ? holdSeconds : 0;
            const double to = away();
            addQuiet(scenario, name, outbound(fleet_.airliner()),
                     wholeDeparture(quietStand(scenario), parkedBefore, to, shortCruise, hold));
        }
        for (const char* name : arriving) {
            const double from = comingFrom();
            addQuiet(scenario, name, fleet_.airliner(),
                     wholeArrival(quietStand(scenario), parkedAfter, from, shortCruise));
        }
        addQuiet(scenario, phase::goAround, fleet_.airliner(), rig::goAround(quietStand(scenario), parkedAfter));
        addQuiet(scenario, phase::towing, fleet_.airliner(), tow(quietStand(scenario), stand("D12"), parkedBefore));
        addQuiet(scenario, phase::circuit, fleet_.light(), rig::touchAndGo(quietStand(scenario), 2));
        addQuiet(scenario, phase::hover, fleet_.helicopter(), rig::helicopter(stand("D30"), parkedBefore));
        return scenario;
    }

    Scenario quietHalfHour() {
        Scenario scenario;
        scenario.seconds = 1800;
        takeStands();
        for (int i = 0; i < 12; ++i) {
            addParked(scenario);
        }
        for (int i = 0; i < 5; ++i) {
            addDeparture(scenario, 60 + i * 300);
            addLanding(scenario, 200 + i * 300);
        }
        for (int i = 0; i < 6; ++i) {
            addOverflight(scenario, i * 250.0);
        }
        add(scenario, fleet_.light(), 0, rig::touchAndGo(takeStand(), 2));
        add(scenario, fleet_.helicopter(), 700, rig::helicopter(takeStand(), parkedBefore));
        return scenario;
    }

    /// 150 aircraft.
    Scenario busyTenMinutes() {
        Scenario scenario;
        scenario.seconds = 600;
        takeStands();
        for (int i = 0; i < 10; ++i) {
            addDeparture(scenario, -400 + i * 100);
            addLanding(scenario, -30 + i * 90);
        }
        for (int i = 0; i < 28; ++i) {
            addOverflight(scenario, chance_.between(-400, 300));
        }
        const ScriptedStand towedTo = takeStand();
        add(scenario, fleet_.airliner(), 30, tow(takeStand(), towedTo, parkedBefore));
        add(scenario, fleet_.helicopter(), 100, rig::helicopter(takeStand(), parkedBefore));
        while (scenario.flights.size() < 150) {
            addParked(scenario);
        }
        return scenario;
    }

private:
    // One expression draws no two numbers of chance: in which order it would is the compiler's choice.
    double away() { return chance_.between(departureFrom, departureTo); }
    double comingFrom() { return chance_.between(arrivalFrom, arrivalTo); }

    static void add(Scenario& scenario, const Aircraft& aircraft, double begin, Legs legs) {
        scenario.flights.push_back({{aircraft, begin, 0, {}}, std::move(legs)});
    }
    static Scenario only(const Aircraft& aircraft, Legs legs) {
        Scenario scenario;
        add(scenario, aircraft, 0, std::move(legs));
        return scenario;
    }

    /// One behind the other.
    static void addQuiet(Scenario& scenario, const char* quietIn, const Aircraft& aircraft, Legs legs) {
        constexpr double between = 240; // seconds
        add(scenario, aircraft, between * static_cast<double>(scenario.flights.size()), std::move(legs));
        scenario.flights.back().transmission.quietIn = quietIn;
    }
    /// A stand for the next flight, apart from those of the others.
    static const ScriptedStand& quietStand(const Scenario& scenario) {
        return stand(fmt::format("B{}", 2 + 2 * scenario.flights.size()));
    }

    /// All stands but the user's, in an order of chance.
    void takeStands() {
        for (const ScriptedStand& each : airport::stands()) {
            if (each.name != airport::userStand) {
                free_.push_back(each);
            }
        }
        for (std::size_t i = free_.size(); i > 1; --i) {
            std::swap(free_[i - 1], free_[chance_.below(i)]);
        }
    }
    ScriptedStand takeStand() {
        ScriptedStand taken = free_.back();
        free_.pop_back();
        return taken;
    }

    void addParked(Scenario& scenario) { add(scenario, fleet_.airliner(), 0, parked(takeStand(), scenario.seconds)); }
    /// Off its stand at `pushAt`; it stood there since the beginning.
    void addDeparture(Scenario& scenario, double pushAt) {
        const double stands = std::max(pushAt, 0.0);
        const double to = away();
        add(scenario, outbound(fleet_.airliner()), pushAt - stands,
            wholeDeparture(takeStand(), stands, to, shortCruise));
    }
    /// Touches down at `landAt`, and stays until the end.
    void addLanding(Scenario& scenario, double landAt) {
        const double from = comingFrom();
        Legs inbound = rig::arrival(from, shortCruise);
        inbound.pop_back(); // what comes behind the touchdown
        const double until = secondsOf(inbound);
        add(scenario, fleet_.airliner(), landAt - until,
            wholeArrival(takeStand(), scenario.seconds, from, shortCruise));
    }
    void addOverflight(Scenario& scenario, double begin) {
        const double from = chance_.between(0, 360);
        const double pass = chance_.between(-30000, 30000);
        const double height = 20000 + 1000 * static_cast<double>(chance_.below(20));
        add(scenario, fleet_.airliner(), begin, overflight(from, pass, height));
    }

    Chance chance_;
    Fleet fleet_;
    std::vector<ScriptedStand> free_;
};

using Maker = Scenario (ScenarioMaker::*)();

const std::array<std::pair<const char*, Maker>, 12> makers{{
    {"departure", &ScenarioMaker::departure},
    {"arrival", &ScenarioMaker::arrival},
    {"towing", &ScenarioMaker::towing},
    {"helicopter", &ScenarioMaker::helicopter},
    {"touch_and_go", &ScenarioMaker::touchAndGo},
    {"go_around", &ScenarioMaker::goAround},
    {"holding", &ScenarioMaker::holding},
    {"ghost", &ScenarioMaker::ghost},
    {"two_transmitters", &ScenarioMaker::twoTransmitters},
    {"quiet_phases", &ScenarioMaker::quiet},
    {"quiet_half_hour", &ScenarioMaker::quietHalfHour},
    {"busy_ten_minutes", &ScenarioMaker::busyTenMinutes},
}};

} // namespace

const std::vector<std::string>& scenarioNames() {
    static const std::vector<std::string> names = [] {
        std::vector<std::string> result;
        result.reserve(std::size(makers));
        for (const auto& [name, maker] : makers) {
            result.emplace_back(name);
        }
        return result;
    }();
    return names;
}

Scenario makeScenario(const std::string& name, std::uint32_t seed) {
    for (const auto& [known, maker] : makers) {
        if (known == name) {
            ScenarioMaker scenarios(seed);
            return (scenarios.*maker)();
        }
    }
    throw std::runtime_error(fmt::format("no scenario {}", name));
}

} // namespace rig
