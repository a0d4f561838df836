// tests/rig/traffic/conversion_test.cpp
#include "rig/traffic/conversion.h"

#include <filesystem>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <stdexcept>

#include "core/injection_radius.h"
#include "core/parameters.h"
#include "feed/sample_queue.h"
#include "feed/traffic_line.h"
#include "feed/traffic_reader.h"
#include "rig/traffic/gzip_text.h"
#include "rig/traffic/recording.h"
#include "tests/support/log_capture.h"
#include "tests/support/temporary_folder.h"

namespace rig {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::SizeIs;
using testing::StartsWith;

std::vector<std::string_view> fieldsOf(std::string_view line) {
    std::vector<std::string_view> fields;
    splitTrafficLine(line, fields);
    return fields;
}

const AircraftRegistry registry{{0x4690E2, {"SX-DGB", "A320"}}};

// A list of states

constexpr const char* states = R"([
 {"icao24": "4690e2", "timestamp": 1570260822000, "latitude": 47.5, "longitude": 8.5, "altitude": 1600.0,
  "groundspeed": 121.7537, "track": 137.663, "vertical_rate": -384.0, "callsign": "AEE5ZH", "onground": false},
 {"icao24": "4690e2", "timestamp": 1570260821000, "latitude": 47.4, "longitude": 8.4, "altitude": 1625.0,
  "groundspeed": 120.0, "track": 136.0, "vertical_rate": -400.0, "callsign": "AEE5ZH ", "onground": false}])";

TEST(ConvertStates, aStateBecomesALineOfTheFeed) {
    const std::string text = convertToRecording(states, registry);
    const std::vector<std::string_view> lines = linesOf(text);
    ASSERT_THAT(lines, SizeIs(2));
    EXPECT_EQ(lines[1],
              "RTTFC,4624610,47.50000,8.50000,1600,-384,1,137.66,121.75,AEE5ZH,A320,SX-DGB,,,1570260822.0,X2,AEE5ZH,"
              "adsb_icao,-1,-1,-1,-1000,-1.0,-1.0,-1.00,-1.00,-1,,,-1.0,-1,-1,-1.00,,0.0,-1.0,-1,-1,-1,-1,1,0,");
}

TEST(ConvertStates, linesComeInTheOrderOfTime) {
    const std::string text = convertToRecording(states, {});
    EXPECT_THAT(std::string(linesOf(text)[0]), HasSubstr(",1570260821.0,"));
}

TEST(ConvertStates, anAircraftThatNobodyHasRegisteredHasNoType) {
    const std::string text = convertToRecording(states, {});
    const auto fields = fieldsOf(linesOf(text)[0]);
    EXPECT_EQ(fields[traffic_field::type], "");
    EXPECT_EQ(fields[traffic_field::callsign], "AEE5ZH") << "without the padding";
}

TEST(ConvertStates, onTheGroundTheAltitudeIsZero) {
    const std::string text = convertToRecording(
        R"([{"icao24":"4690e2","timestamp":1000,"latitude":47,"longitude":8,"altitude":1375,"onground":true}])", {});
    const auto fields = fieldsOf(linesOf(text)[0]);
    EXPECT_EQ(fields[traffic_field::altitude], "0");
    EXPECT_EQ(fields[6], "0");
}

TEST(ConvertStates, aMissingSpeedAndTrackFollowFromThePositions) {
    const std::string text = convertToRecording(R"([
      {"icao24":"4690e2","timestamp":1000,"latitude":47.0,"longitude":8,"altitude":null,"groundspeed":null,"track":null,
       "vertical_rate":null,"onground":true},
      {"icao24":"4690e2","timestamp":11000,"latitude":47.001,"longitude":8,"groundspeed":null,"track":null,"onground":true},
      {"icao24":"4690e2","timestamp":21000,"latitude":47.001,"longitude":8,"groundspeed":null,"track":null,"onground":true}
    ])",
                                                {});
    const std::vector<std::string_view> lines = linesOf(text);
    EXPECT_EQ(fieldsOf(lines[0])[traffic_field::gs], "0.00");
    // 0.001 degrees of latitude in ten seconds.
    EXPECT_EQ(fieldsOf(lines[1])[traffic_field::gs], "21.60");
    EXPECT_EQ(fieldsOf(lines[1])[traffic_field::track], "0.00");
    EXPECT_EQ(fieldsOf(lines[2])[traffic_field::gs], "0.00") << "it stands";
}

TEST(ConvertStates, aStateWithoutAPositionOrTimeIsLeftOut) {
    EXPECT_EQ(convertToRecording(R"([{"icao24":"4690e2","timestamp":1000,"latitude":null,"longitude":8}])", {}), "");
    EXPECT_EQ(convertToRecording(R"([{"icao24":"4690e2","latitude":47,"longitude":8}])", {}), "");
}

// A trace

constexpr const char* trace = R"({"icao":"ac671b","r":"N899DN","t":"B739","timestamp":1738703622.619,"trace":[
  [0.00,16.777359,-88.036868,32000,478.6,327.8,1,0,null,"adsb_icao",33825,32,280,0.0],
  [26.89,16.833336,-88.059981,32000,483.3,340.7,0,0,{"flight":"DAL1812 ","category":"A3","tas":460,"mach":0.772,
   "track_rate":-0.03,"mag_heading":338.03,"true_heading":336.63,"nav_qnh":1013.6,"emergency":"none"},
   "adsb_icao",33825,32,279,-0.9],
  [30.91,16.841575,-88.062973,32000,483.6,340.5,0,0,null,"adsb_icao",33825,0,280,-0.7],
  [14323.46,44.880993,-93.218438,"ground",73.0,120.9,0,-128,null,"adsb_icao",775,null,null,null]]})";

TEST(ConvertTrace, aRowBecomesALineWithAllThatItTells) {
    const std::string text = convertToRecording(trace, {});
    const std::vector<std::string_view> lines = linesOf(text);
    ASSERT_THAT(lines, SizeIs(4));
    EXPECT_EQ(
        lines[1],
        "RTTFC,11298587,16.83334,-88.05998,32000,0,1,340.70,483.30,DAL1812,B739,N899DN,,,1738703649.5,X2,DAL1812,"
        "adsb_icao,33825,279,460,0.772,0.0,-0.9,338.03,336.63,32,none,A3,1013.6,-1,-1,-1.00,,0.0,-1.0,-1,-1,-1,-1,"
        "1,0,");
}

TEST(ConvertTrace, callSignAndCategoryStandUntilTheyAreToldAnew) {
    const std::string text = convertToRecording(trace, {});
    const std::vector<std::string_view> lines = linesOf(text);
    EXPECT_EQ(fieldsOf(lines[0])[traffic_field::callsign], "");
    EXPECT_EQ(fieldsOf(lines[2])[traffic_field::callsign], "DAL1812");
    EXPECT_EQ(fieldsOf(lines[2])[traffic_field::category], "A3");
    EXPECT_EQ(fieldsOf(lines[2])[traffic_field::trueHeading], "-1.00") << "a heading does not stand";
}

TEST(ConvertTrace, theGroundHasAltitudeZero) {
    const std::string text = convertToRecording(trace, {});
    const auto fields = fieldsOf(linesOf(text)[3]);
    EXPECT_EQ(fields[traffic_field::altitude], "0");
    EXPECT_EQ(fields[traffic_field::gs], "73.00");
}

// Lines

TEST(ConvertLines, theOlderFormBecomesTheNewerOne) {
    const std::string text = convertToRecording(
        "{\"QNH\": "
        "\"2996\"}\nAITFC,11231627,34.9619,-116.6734,31174,1088,1,47,493,UAL1136,A319,N832UA,LAX,DEN,1593034598\n",
        {});
    EXPECT_THAT(
        linesOf(text),
        ElementsAre("{\"QNH\": \"2996\"}",
                    "RTTFC,11231627,34.96190,-116.67340,31174,1088,1,47.00,493.00,UAL1136,A319,N832UA,LAX,DEN,"
                    "1593034598.0,X2,UAL1136,adsb_icao,-1,-1,-1,-1000,-1.0,-1.0,-1.00,-1.00,-1,,,-1.0,-1,-1,-1.00,,"
                    "0.0,-1.0,-1,-1,-1,-1,1,0,"));
}

TEST(ConvertLines, theFeedsOwnFormStaysAsItWasReceived) {
    const std::string rows = "RTTFC,4739591,52.2,4.9,rest as it is\n";
    EXPECT_EQ(convertToRecording(rows, {}), rows);
}

TEST(Convert, anythingElseIsRefused) {
    for (const char* text :
         {"", "hello", "{}", "17", "[1]", R"([{"icao24":"xyz","timestamp":1,"latitude":1,"longitude":1}])"}) {
        EXPECT_THROW(convertToRecording(text, {}), std::runtime_error) << text;
    }
}

TEST(ConvertFile, goesFromPackedToPackedWithARegistryBesides) {
    const TemporaryFolder folder;
    writeText("states.json.gz", states);
    writeText("registry.json", R"({"4690E2":["SX-DGB","A320","00"]})");
    EXPECT_EQ(convertFile({"states.json.gz", "out.csv.gz", "registry.json"}), 2u);
    EXPECT_EQ(fieldsOf(loadRecording("out.csv.gz").rows[0].text)[traffic_field::registration], "SX-DGB");
}

TEST(Registry, knowsAircraftByTheirAddress) {
    const AircraftRegistry read = registryFrom(R"({"4690E2":["SX-DGB","A320","00"],"004002":["Z-WPA"],"004003":7})");
    ASSERT_THAT(read, SizeIs(1));
    EXPECT_EQ(read.at(0x4690E2).registration, "SX-DGB");
    EXPECT_EQ(read.at(0x4690E2).type, "A320");
}

// The data that lie beside the project on some machines

const std::filesystem::path startFolder = std::filesystem::current_path();

/// Read once: it is large.
const AircraftRegistry& publicRegistry() {
    static const AircraftRegistry all =
        registryFrom(readText(startFolder / "../shared/data/registry/aircrafts.json.gz"));
    return all;
}

class PublicData : public testing::TestWithParam<const char*> {};

TEST_P(PublicData, becomesARecordingWhoseLinesAllParse) {
    const std::filesystem::path input = startFolder / "../shared/data/traffic" / GetParam();
    if (!std::filesystem::exists(input)) {
        GTEST_SKIP() << "no recorded data on this machine";
    }
    const LogCapture log;
    resetParameters();
    const Recording recording = recordingFrom(convertToRecording(readText(input), publicRegistry()));

    gRadiusNm = 20000;
    TrafficReader reader;
    std::size_t parsed = 0;
    double former = 0;
    for (const RecordedRow& row : recording.rows) {
        EXPECT_GE(row.due, former);
        former = row.due;
        if (row.kind == DatagramKind::traffic) {
            EXPECT_NE(reader.processLine(row.text), LineOutcome::doesNotParse) << row.text;
            ++parsed;
        }
    }
    EXPECT_GT(parsed, 1000u);
}

INSTANTIATE_TEST_SUITE_P(Files, PublicData,
                         testing::Values("klax_2020-06-24.aitfc.csv.gz", "lszh_ground_2019.json.gz",
                                         "switzerland_2018-08-01_2h.json.gz", "n899dn_b739_trace.json.gz"));

} // namespace
} // namespace rig
