// tests/rig/flights/flights_test.cpp
#include "rig/flights/flights_run.h"

#include <algorithm>
#include <cmath>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <map>
#include <set>
#include <sstream>
#include <stdexcept>

#include "core/injection_radius.h"
#include "core/number_text.h"
#include "core/parameters.h"
#include "feed/sample_queue.h"
#include "feed/traffic_line.h"
#include "feed/traffic_reader.h"
#include "rig/flights/airport_layout.h"
#include "rig/traffic/gzip_text.h"
#include "rig/traffic/recording.h"
#include "tests/support/log_capture.h"
#include "tests/support/temporary_folder.h"

namespace rig {
namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::SizeIs;

// What no real aircraft exceeds.
constexpr double fastestKnots = 460;
constexpr double hardestKnotsPerSecond = 6;
constexpr double groundTurn = 10; // degrees a second
constexpr double airTurn = 5;
constexpr double steepestClimbFps = 50;
constexpr double climbChangeFpm = 350; // in a second
constexpr double steepestRoll = 35;    // degrees

double turnBetween(double a, double b) {
    return std::remainder(b - a, 360);
}

class EveryFlight : public testing::TestWithParam<std::string> {
protected:
    /// Calls the check with each second and the one after it.
    template <typename Check>
    static void forEachSecond(Check check) {
        for (const ScriptedFlight& flight : makeScenario(GetParam(), 1).flights) {
            const std::vector<MotionState> states = fly(flight.legs);
            for (std::size_t i = 1; i < states.size(); ++i) {
                SCOPED_TRACE(testing::Message() << flight.transmission.aircraft.callsign << " " << states[i].phase
                                                << " at " << states[i].seconds);
                check(states[i - 1], states[i]);
                if (testing::Test::HasFailure()) {
                    return;
                }
            }
        }
    }
};

TEST_P(EveryFlight, theSecondsFollowOneAnother) {
    forEachSecond([](const MotionState& a, const MotionState& b) { EXPECT_EQ(b.seconds, a.seconds + 1); });
}

TEST_P(EveryFlight, thePositionMovesAsTheSpeedSays) {
    forEachSecond([](const MotionState& a, const MotionState& b) {
        const double knots = greatCircleNm(a.position, b.position) * 3600;
        EXPECT_NEAR(knots, (a.gsKnots + b.gsKnots) / 2, 2 + hardestKnotsPerSecond / 2);
        EXPECT_LE(b.gsKnots, fastestKnots);
    });
}

TEST_P(EveryFlight, speedChangesAsWheelsAndEnginesAllow) {
    forEachSecond([](const MotionState& a, const MotionState& b) {
        EXPECT_LE(std::abs(b.gsKnots - a.gsKnots), hardestKnotsPerSecond);
    });
}

TEST_P(EveryFlight, theNoseTurnsNoFasterThanAnAircraftCan) {
    forEachSecond([](const MotionState& a, const MotionState& b) {
        const double most = a.onGround || b.onGround ? groundTurn : airTurn;
        EXPECT_LE(std::abs(turnBetween(a.heading, b.heading)), most);
        EXPECT_LE(std::abs(b.rollDegrees), steepestRoll);
    });
}

TEST_P(EveryFlight, theAltitudeNeverJumps) {
    forEachSecond([](const MotionState& a, const MotionState& b) {
        EXPECT_LE(std::abs(b.heightFt - a.heightFt), steepestClimbFps);
        EXPECT_LE(std::abs(b.vsFpm - a.vsFpm), climbChangeFpm);
        EXPECT_GE(b.heightFt, 0);
        EXPECT_EQ(b.onGround, b.heightFt == 0);
    });
}

TEST_P(EveryFlight, onTheGroundNoseAndWayAgreeButForThePushBack) {
    forEachSecond([](const MotionState&, const MotionState& b) {
        const double apart = std::abs(turnBetween(b.heading, b.track));
        if (b.phase == phase::pushBack && b.gsKnots > 0) {
            EXPECT_NEAR(apart, 180, 0.01);
        } else {
            EXPECT_NEAR(apart, 0, 0.01);
        }
    });
}

TEST_P(EveryFlight, theSameSeedGivesTheSameBytes) {
    for (const Fidelity fidelity : {Fidelity::exact, Fidelity::network}) {
        FlightsOptions options;
        options.fidelity = fidelity;
        options.seed = 5;
        const WrittenScenario first = writeScenario(makeScenario(GetParam(), 5), options);
        const WrittenScenario second = writeScenario(makeScenario(GetParam(), 5), options);
        EXPECT_EQ(gzip(first.recording), gzip(second.recording));
        EXPECT_EQ(first.truth, second.truth);
    }
}

TEST_P(EveryFlight, theProgramCanReadEveryLine) {
    const LogCapture log;
    resetParameters();
    gRadiusNm = 20000;
    for (const Fidelity fidelity : {Fidelity::exact, Fidelity::network}) {
        FlightsOptions options;
        options.fidelity = fidelity;
        TrafficReader reader;
        reader.setParkingAirport(ParkingAirport{airport::reference, airport::elevationFt});
        reader.setReferenceElevation(airport::elevationFt);
        gAcceptSamples = true;
        for (const RecordedRow& row :
             recordingFrom(writeScenario(makeScenario(GetParam(), 1), options).recording).rows) {
            if (row.kind == DatagramKind::traffic) {
                ASSERT_EQ(reader.processLine(row.text), LineOutcome::accepted) << row.text;
            }
        }
        gAcceptSamples = false;
        gLiveSampleQueue.clear();
    }
}

INSTANTIATE_TEST_SUITE_P(Scenarios, EveryFlight, testing::ValuesIn(scenarioNames()),
                         [](const auto& scenario) { return scenario.param; });

// What they do

std::vector<std::string> phasesOf(const Legs& legs) {
    std::vector<std::string> phases;
    for (const MotionState& state : fly(legs)) {
        if (phases.empty() || phases.back() != state.phase) {
            phases.push_back(state.phase);
        }
    }
    return phases;
}

Legs legsOf(const std::string& scenario) {
    return makeScenario(scenario, 1).flights.at(0).legs;
}

TEST(Flight, aDepartureGoesFromItsStandToTheCruise) {
    EXPECT_THAT(phasesOf(legsOf("departure")),
                ElementsAre("parked", "push-back", "taxi out", "take-off", "climb", "cruise"));
}

TEST(Flight, anArrivalGoesFromTheCruiseToItsStand) {
    EXPECT_THAT(phasesOf(legsOf("arrival")),
                ElementsAre("cruise", "descent", "approach", "landing", "roll-out", "taxi in", "parked"));
}

TEST(Flight, aDepartureBeginsOnItsStandWithItsHeading) {
    const MotionState begin = fly(legsOf("departure")).front();
    const ScriptedStand& stand = airport::stand("A3");
    EXPECT_LT(greatCircleNm(begin.position, airport::latLon(stand.at)), 1e-6);
    EXPECT_NEAR(turnBetween(begin.heading, stand.heading * degreesPerRadian), 0, 1e-6);
    EXPECT_TRUE(begin.onGround);
    EXPECT_EQ(begin.gsKnots, 0);
}

TEST(Flight, anArrivalEndsOnItsStandWithItsHeading) {
    const MotionState end = fly(legsOf("arrival")).back();
    const ScriptedStand& stand = airport::stand("B20");
    EXPECT_LT(greatCircleNm(end.position, airport::latLon(stand.at)), 1e-6);
    EXPECT_NEAR(turnBetween(end.heading, stand.heading * degreesPerRadian), 0, 1e-6);
    EXPECT_EQ(end.gsKnots, 0);
}

TEST(Flight, anArrivalTouchesDownOnTheRunway) {
    const std::vector<MotionState> states = fly(legsOf("arrival"));
    const auto down = std::find_if(states.begin(), states.end(), [](const MotionState& s) { return s.onGround; });
    ASSERT_NE(down, states.end());
    const LatLon threshold = airport::latLon(airport::place(0, 0));
    EXPECT_LT(greatCircleNm(down->position, threshold) * metersPerNm, 700);
    EXPECT_NEAR(turnBetween(down->heading, airport::runwayHeading() * degreesPerRadian), 0, 0.01);
    EXPECT_NEAR(down->gsKnots, 130, 15);
    EXPECT_GT(down[-1].vsFpm, -700) << "it flares";
}

TEST(Flight, aTowMovesSlowlyFromStandToStand) {
    const std::vector<MotionState> states = fly(legsOf("towing"));
    EXPECT_THAT(phasesOf(legsOf("towing")), ElementsAre("parked", "push-back", "towing", "parked"));
    for (const MotionState& state : states) {
        EXPECT_LE(state.gsKnots, 10);
        EXPECT_TRUE(state.onGround);
    }
    EXPECT_LT(greatCircleNm(states.back().position, airport::latLon(airport::stand("D12").at)), 1e-6);
}

TEST(Flight, aGoAroundComesLowWithoutTouchingAndLandsAfterwards) {
    const std::vector<MotionState> states = fly(legsOf("go_around"));
    double lowest = 1e9;
    for (const MotionState& state : states) {
        if (state.phase == phase::goAround) {
            lowest = std::min(lowest, state.heightFt);
        }
    }
    EXPECT_GT(lowest, 150);
    EXPECT_LT(lowest, 400);
    EXPECT_EQ(states.back().phase, phase::parked);
}

TEST(Flight, aTouchAndGoTouchesTheGroundOnceACircuit) {
    const std::vector<MotionState> states = fly(legsOf("touch_and_go"));
    int landings = 0;
    for (std::size_t i = 1; i < states.size(); ++i) {
        landings += !states[i - 1].onGround && states[i].onGround ? 1 : 0;
    }
    EXPECT_EQ(landings, 3);
    EXPECT_TRUE(states.back().onGround);
}

TEST(Flight, aHelicopterRisesWhereItStandsAndComesBack) {
    const std::vector<MotionState> states = fly(legsOf("helicopter"));
    const auto up = std::find_if(states.begin(), states.end(), [](const MotionState& s) { return s.heightFt > 5; });
    ASSERT_NE(up, states.end());
    EXPECT_LT(greatCircleNm(up->position, states.front().position) * metersPerNm, 1);
    EXPECT_LT(greatCircleNm(states.back().position, states.front().position) * metersPerNm, 1);
    EXPECT_TRUE(states.back().onGround);
}

TEST(Flight, oneThatHoldsStandsOnTheTaxiwayForMinutes) {
    const std::vector<MotionState> states = fly(legsOf("holding"));
    const auto still = std::count_if(states.begin(), states.end(),
                                     [](const MotionState& s) { return s.phase == phase::holding && s.gsKnots == 0; });
    EXPECT_GE(still, 299);
}

// How the feed shows them

std::vector<std::string_view> fieldsOf(const std::string& line) {
    std::vector<std::string_view> fields;
    splitTrafficLine(line, fields);
    return fields;
}

/// Traffic lines by address.
std::map<std::string, std::vector<std::string>> linesOfScenario(const std::string& name, Fidelity fidelity) {
    FlightsOptions options;
    options.fidelity = fidelity;
    std::map<std::string, std::vector<std::string>> lines;
    for (const RecordedRow& row : recordingFrom(writeScenario(makeScenario(name, 1), options).recording).rows) {
        if (row.kind == DatagramKind::traffic) {
            lines[std::string(fieldsOf(row.text)[traffic_field::hexid])].push_back(row.text);
        }
    }
    return lines;
}

TEST(Feed, aGhostHasTheNameOfItsOriginalWithAnUnderscoreBehind) {
    const auto lines = linesOfScenario("ghost", Fidelity::exact);
    ASSERT_THAT(lines, SizeIs(2));
    const std::string name(fieldsOf(lines.begin()->second[0])[traffic_field::callsign]);
    EXPECT_EQ(fieldsOf(lines.rbegin()->second[0])[traffic_field::callsign], name + "_");
}

TEST(Feed, twoTransmittersAreOneAircraftThirtySecondsApart) {
    const auto lines = linesOfScenario("two_transmitters", Fidelity::exact);
    ASSERT_THAT(lines, SizeIs(2));
    const auto first = fieldsOf(lines.begin()->second[10]);
    const auto second = fieldsOf(lines.rbegin()->second[10]);
    EXPECT_EQ(first[traffic_field::registration], second[traffic_field::registration]);
    EXPECT_EQ(first[traffic_field::callsign], second[traffic_field::callsign]);
    EXPECT_EQ(first[traffic_field::lat], second[traffic_field::lat]);
    EXPECT_EQ(*parseDouble(second[traffic_field::timestamp]) - *parseDouble(first[traffic_field::timestamp]), 30);
}

TEST(Feed, eachOfTheQuietOnesIsLastHeardOfInItsPhase) {
    const FlightsOptions options;
    std::set<std::string> phases;
    for (const ScriptedFlight& flight : makeScenario("quiet_phases", 1).flights) {
        const std::vector<MotionState> states = fly(flight.legs);
        Chance chance(1);
        const auto lines = receive(states, flight.transmission, Fidelity::exact, chance);
        const double last = lines.back().time - flight.transmission.begin;
        EXPECT_EQ(states[static_cast<std::size_t>(last)].phase, flight.transmission.quietIn);
        EXPECT_LT(last, states.back().seconds - 1);
        phases.insert(flight.transmission.quietIn);
    }
    for (const char* each :
         {phase::parked, phase::pushBack, phase::taxiOut, phase::holding, phase::takeOff, phase::climb, phase::cruise,
          phase::descent, phase::approach, phase::landing, phase::rollOut, phase::taxiIn, phase::towing, phase::circuit,
          phase::goAround, phase::hover}) {
        EXPECT_THAT(phases, Contains(each));
    }
}

TEST(Feed, oneGoesQuietOnTheStandThatItHasComeTo) {
    for (const ScriptedFlight& flight : makeScenario("quiet_phases", 1).flights) {
        const std::vector<std::string> phases = phasesOf(flight.legs);
        if (flight.transmission.quietIn == phase::parked && phases.front() == phase::cruise) {
            return;
        }
    }
    FAIL() << "no arrival goes quiet on its stand";
}

TEST(Feed, exactLinesComeEveryTwoSecondsAndTellTheTruth) {
    Scenario scenario = makeScenario("arrival", 1);
    const std::vector<MotionState> states = fly(scenario.flights[0].legs);
    Chance chance(1);
    const auto lines = receive(states, scenario.flights[0].transmission, Fidelity::exact, chance);
    for (std::size_t i = 1; i < lines.size() && states[static_cast<std::size_t>(lines[i].time)].gsKnots > 0; ++i) {
        ASSERT_EQ(lines[i].time - lines[i - 1].time, 2);
        const MotionState& truth = states[static_cast<std::size_t>(lines[i].time)];
        ASSERT_LT(greatCircleNm(*positionOf(lines[i].text), truth.position) * metersPerNm, 0.2);
    }
}

TEST(Feed, theNetworkLeavesUnevenGapsOfOneToThirtySecondsInSight) {
    Scenario scenario = makeScenario("arrival", 1);
    const std::vector<MotionState> states = fly(scenario.flights[0].legs);
    Chance chance(1);
    const auto lines = receive(states, scenario.flights[0].transmission, Fidelity::network, chance);
    std::set<double> gaps;
    double longestLow = 0;
    for (std::size_t i = 1; i < lines.size(); ++i) {
        const double gap = lines[i].time - lines[i - 1].time;
        const bool high = states[static_cast<std::size_t>(lines[i - 1].time)].heightFt > 600;
        ASSERT_GE(gap, 1);
        ASSERT_LE(gap, high ? 30 : 55);
        gaps.insert(gap);
        longestLow = high ? longestLow : std::max(longestLow, gap);
    }
    EXPECT_GT(gaps.size(), 15u);
    EXPECT_GT(longestLow, 30) << "it drops out near the ground";
}

TEST(Feed, theNetworkTellsAltitudesByStandardPressureInStepsOfTwentyFiveFeet) {
    const auto lines = linesOfScenario("arrival", Fidelity::network);
    Scenario scenario = makeScenario("arrival", 1);
    const std::vector<MotionState> states = fly(scenario.flights[0].legs);
    const double begin = FlightsOptions{}.begin;
    for (const std::string& line : lines.begin()->second) {
        const auto fields = fieldsOf(line);
        const auto altitude = static_cast<int>(*parseDouble(fields[traffic_field::altitude]));
        const double second = *parseDouble(fields[traffic_field::timestamp]) - begin;
        const MotionState& truth = states[static_cast<std::size_t>(second)];
        EXPECT_EQ(altitude % 25, 0);
        if (truth.onGround) {
            EXPECT_EQ(altitude, 0);
        } else {
            EXPECT_NEAR(altitude, truth.heightFt + airport::elevationFt + 416, 13) << second;
        }
    }
}

TEST(Feed, theNetworkPlacesAircraftSomeMetresOff) {
    Scenario scenario = makeScenario("arrival", 1);
    const std::vector<MotionState> states = fly(scenario.flights[0].legs);
    Chance chance(1);
    double sum = 0;
    const auto lines = receive(states, scenario.flights[0].transmission, Fidelity::network, chance);
    for (const ReceivedLine& line : lines) {
        const MotionState& truth = states[static_cast<std::size_t>(line.time)];
        const double meters = greatCircleNm(*positionOf(line.text), truth.position) * metersPerNm;
        EXPECT_LT(meters, 60);
        sum += meters;
    }
    EXPECT_NEAR(sum / static_cast<double>(lines.size()), 7.6, 2);
}

TEST(Feed, weatherComesEveryTenSeconds) {
    for (const auto& [fidelity, text] :
         {std::pair(Fidelity::exact, "\"QNH\": 1013.0"), {Fidelity::network, "\"QNH\": 998.0"}}) {
        FlightsOptions options;
        options.fidelity = fidelity;
        const Recording recording =
            recordingFrom(writeScenario(makeScenario("busy_ten_minutes", 1), options).recording);
        const auto weather = std::count_if(recording.rows.begin(), recording.rows.end(),
                                           [](const RecordedRow& row) { return row.kind == DatagramKind::weather; });
        EXPECT_EQ(weather, 60);
        EXPECT_THAT(recording.rows.front().text, HasSubstr(text));
    }
}

// The scenarios for demonstrations

TEST(Scenario, theBusyTenMinutesHaveAHundredAndFiftyAircraft) {
    const auto lines = linesOfScenario("busy_ten_minutes", Fidelity::network);
    EXPECT_THAT(lines, SizeIs(150));
    const Recording recording =
        recordingFrom(writeScenario(makeScenario("busy_ten_minutes", 1), FlightsOptions{}).recording);
    EXPECT_NEAR(recording.end() - recording.begin(), 600, 5);
}

TEST(Scenario, theQuietHalfHourLastsHalfAnHour) {
    const Recording recording =
        recordingFrom(writeScenario(makeScenario("quiet_half_hour", 1), FlightsOptions{}).recording);
    EXPECT_NEAR(recording.end() - recording.begin(), 1800, 5);
}

TEST(Scenario, noTwoAircraftShareAnAddressANameOrAStand) {
    for (const char* name : {"busy_ten_minutes", "quiet_half_hour"}) {
        std::set<std::uint32_t> addresses;
        std::set<std::string> callsigns;
        std::set<std::pair<long, long>> stands;
        for (const ScriptedFlight& flight : makeScenario(name, 3).flights) {
            EXPECT_TRUE(addresses.insert(flight.transmission.aircraft.hexid).second);
            EXPECT_TRUE(callsigns.insert(flight.transmission.aircraft.callsign).second);
            const std::vector<MotionState> states = fly(flight.legs);
            const MotionState& standing = states.front().onGround ? states.front() : states.back();
            if (standing.onGround) {
                const LatLon at = standing.position;
                EXPECT_TRUE(stands.insert({std::lround(at.lat * 1e5), std::lround(at.lon * 1e5)}).second)
                    << flight.transmission.aircraft.callsign;
            }
        }
    }
}

TEST(Scenario, theUsersStandStaysFree) {
    for (const std::string& name : scenarioNames()) {
        for (const ScriptedFlight& flight : makeScenario(name, 2).flights) {
            for (const MotionState& end : {fly(flight.legs).front(), fly(flight.legs).back()}) {
                EXPECT_GT(greatCircleNm(end.position, airport::reference) * metersPerNm, 30) << name;
            }
        }
    }
}

TEST(Scenario, anUnknownOneIsNamed) {
    try {
        makeScenario("loop_the_loop", 1);
        FAIL() << "no exception";
    } catch (const std::runtime_error& error) {
        EXPECT_STREQ(error.what(), "no scenario loop_the_loop");
    }
}

// The files

TEST(RunFlights, writesTheRecordingAndTheTruthBesideIt) {
    const TemporaryFolder folder;
    FlightsOptions options;
    options.folder = "made";
    options.scenario = "arrival";
    std::ostringstream out;
    runFlights(options, out);
    EXPECT_THAT(out.str(), HasSubstr("arrival: "));
    EXPECT_GT(loadRecording("made/arrival.csv.gz").rows.size(), 500u);
    const std::string truth = readText("made/arrival.truth.csv.gz");
    EXPECT_THAT(truth, testing::StartsWith(
                           "time,hexid,callsign,phase,lat,lon,alt_ft,on_ground,heading,track,gs_kt,vs_fpm,roll\n"));
    EXPECT_EQ(std::filesystem::exists("made/departure.csv.gz"), false);
}

TEST(RunFlights, writesASkyWithSoManyAircraftAtAnyTime) {
    const TemporaryFolder folder;
    FlightsOptions options;
    options.folder = "made";
    options.steady = 20;
    options.seconds = 120;
    std::ostringstream out;
    runFlights(options, out);
    EXPECT_THAT(out.str(), testing::StartsWith("steady_20: "));
    const std::string recording = readText("made/steady_20.csv.gz");
    const Recording rows = loadRecording("made/steady_20.csv.gz");
    EXPECT_GT(rows.rows.size(), 20u * 120 / 4);
    EXPECT_LE(rows.end() - rows.begin(), 120);
    options.folder = "made again";
    runFlights(options, out);
    EXPECT_TRUE(readText("made again/steady_20.csv.gz") == recording) << "the same seed gives the same rows";
}

} // namespace
} // namespace rig
